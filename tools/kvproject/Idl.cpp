#include "Idl.h"

#include "Failure.h"
#include "TypeRecords.h"
#include "platform/com/Activation.h"

#include <cstdio>

namespace kvproject {
namespace {

using kv::ComPtr;

std::string Hex(ULONG value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", value);
    return text;
}

std::string Guid(const GUID& guid)
{
    const std::string braced = kv::ToUtf8(kv::GuidText(guid));
    return braced.substr(1, braced.size() - 2);
}

std::string TypeName(ITypeInfo& info, const TYPEDESC& type)
{
    switch (type.vt) {
    case VT_PTR:
        return TypeName(info, *type.lptdesc) + "*";
    case VT_USERDEFINED: {
        ComPtr<ITypeInfo> referred;
        // A type of another library is known by its interface alone.
        return SUCCEEDED(info.GetRefTypeInfo(type.hreftype, referred.Put())) ? NameOf(*referred) : "IUnknown";
    }
    case VT_UI1:
        return "BYTE";
    case VT_UI2:
        return "unsigned short";
    case VT_I4:
        return "long";
    case VT_UI4:
        return "unsigned long";
    case VT_I8:
        return "int64";
    case VT_UI8:
        return "uint64";
    case VT_R4:
        return "float";
    case VT_R8:
        return "double";
    case VT_BSTR:
        return "BSTR";
    case VT_BOOL:
        return "VARIANT_BOOL";
    case VT_VARIANT:
        return "VARIANT";
    case VT_UNKNOWN:
        return "IUnknown*";
    case VT_DISPATCH:
        return "IDispatch*";
    case VT_VOID:
        return "void";
    case VT_HRESULT:
        return "HRESULT";
    default:
        return "vt" + std::to_string(type.vt);
    }
}

std::string Direction(WORD flags)
{
    std::string text = "[";
    const auto add = [&](WORD flag, const char* word) {
        if (flags & flag) text += (text.size() > 1 ? ", " : "") + std::string(word);
    };
    add(PARAMFLAG_FIN, "in");
    add(PARAMFLAG_FOUT, "out");
    add(PARAMFLAG_FRETVAL, "retval");
    add(PARAMFLAG_FOPT, "optional");
    return text + "] ";
}

void PrintFunctions(ITypeInfo& info, WORD count, std::ostream& out)
{
    for (WORD i = 0; i < count; ++i) {
        const auto function = FunctionOf(info, i);
        const auto names = MemberNames(info, function->memid);
        out << "        [";
        if (function->invkind == DISPATCH_PROPERTYGET) out << "propget, ";
        if (function->invkind == DISPATCH_PROPERTYPUT) out << "propput, ";
        out << "id(" << Hex(static_cast<ULONG>(function->memid)) << ")] "
            << TypeName(info, function->elemdescFunc.tdesc) << ' ' << names.at(0) << '(';
        for (SHORT k = 0; k < function->cParams; ++k) {
            const ELEMDESC& parameter = function->lprgelemdescParam[k];
            const std::size_t position = static_cast<std::size_t>(k) + 1;
            const char* property = function->invkind == DISPATCH_PROPERTYGET ? "pVal" : "newVal";
            out << (k ? ", " : "") << Direction(parameter.wParamFlags) << TypeName(info, parameter.tdesc) << ' '
                << (position < names.size() ? names[position] : property);
        }
        out << ");\n";
    }
}

void PrintVariables(ITypeInfo& info, const TYPEATTR& attributes, std::ostream& out)
{
    for (WORD i = 0; i < attributes.cVars; ++i) {
        const auto variable = VariableOf(info, i);
        const std::string name = MemberNames(info, variable->memid).at(0);
        if (variable->lpvarValue) {
            out << "        " << name << " = " << variable->lpvarValue->lVal << (i + 1 < attributes.cVars ? "," : "")
                << '\n';
        } else {
            out << "        " << TypeName(info, variable->elemdescVar.tdesc) << ' ' << name << ";\n";
        }
    }
}

void PrintInterface(ITypeInfo& info, const TYPEATTR& attributes, std::ostream& out)
{
    const bool dual = attributes.wTypeFlags & TYPEFLAG_FDUAL;
    const bool eventsOnly = attributes.typekind == TKIND_DISPATCH && !dual;
    out << "    [" << (eventsOnly ? "" : "object, ") << "uuid(" << Guid(attributes.guid) << ")"
        << (dual ? ", dual" : "") << "]\n    ";
    if (eventsOnly) {
        out << "dispinterface " << NameOf(info) << " {\n        properties:\n        methods:\n";
    } else {
        HREFTYPE base = 0;
        ComPtr<ITypeInfo> baseInfo;
        Require(info.GetRefTypeOfImplType(0, &base), "the type library is damaged");
        Require(info.GetRefTypeInfo(base, baseInfo.Put()), "the type library is damaged");
        out << "interface " << NameOf(info) << " : " << NameOf(*baseInfo) << " {\n";
    }
    PrintFunctions(info, attributes.cFuncs, out);
    out << "    };\n\n";
}

void PrintClass(ITypeInfo& info, const TYPEATTR& attributes, std::ostream& out)
{
    out << "    [uuid(" << Guid(attributes.guid) << ")]\n    coclass " << NameOf(info) << " {\n";
    for (WORD i = 0; i < attributes.cImplTypes; ++i) {
        LONG flags = 0;
        HREFTYPE type = 0;
        ComPtr<ITypeInfo> implemented;
        info.GetImplTypeFlags(i, &flags);
        Require(info.GetRefTypeOfImplType(i, &type), "the type library is damaged");
        Require(info.GetRefTypeInfo(type, implemented.Put()), "the type library is damaged");
        const bool source = flags & IMPLTYPEFLAG_FSOURCE;
        out << "        [default" << (source ? ", source] dispinterface " : "] interface ") << NameOf(*implemented)
            << ";\n";
    }
    out << "    };\n\n";
}

void PrintType(ITypeInfo& info, std::ostream& out)
{
    const auto attributes = AttributesOf(info);
    switch (attributes->typekind) {
    case TKIND_ENUM:
        out << "    typedef enum {\n";
        PrintVariables(info, *attributes, out);
        out << "    } " << NameOf(info) << ";\n\n";
        break;
    case TKIND_RECORD:
        out << "    typedef struct {\n";
        PrintVariables(info, *attributes, out);
        out << "    } " << NameOf(info) << ";\n\n";
        break;
    case TKIND_COCLASS:
        PrintClass(info, *attributes, out);
        break;
    default:
        PrintInterface(info, *attributes, out);
    }
}

} // namespace

void PrintIdl(const std::string& serverLibrary, std::ostream& out)
{
    ComPtr<ITypeLib> library;
    Require(LoadTypeLib(kv::ToUtf16(serverLibrary).c_str(), library.Put()),
            "cannot read the type library of " + serverLibrary);
    TLIBATTR* record = nullptr;
    Require(library->GetLibAttr(&record), "the type library is damaged");
    const Owned<TLIBATTR> attributes(record, [&](TLIBATTR* owned) { library->ReleaseTLibAttr(owned); });
    kv::Bstr name;
    kv::Bstr help;
    library->GetDocumentation(-1, name.Put(), help.Put());
    out << "[\n    uuid(" << Guid(attributes->guid) << "),\n    version(" << attributes->wMajorVerNum << '.'
        << attributes->wMinorVerNum << "),\n    lcid(" << attributes->lcid << "),\n    helpstring(\""
        << kv::ToUtf8(help.View()) << "\")\n]\nlibrary " << kv::ToUtf8(name.View()) << "\n{\n";
    for (ULONG i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info;
        Require(library->GetTypeInfo(i, info.Put()), "the type library is damaged");
        PrintType(*info, out);
    }
    out << "};\n";
}

} // namespace kvproject
