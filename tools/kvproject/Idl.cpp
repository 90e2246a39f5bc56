#include "Idl.h"

#include "Failure.h"
#include "TypeRecords.h"
#include "platform/com/Activation.h"

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <vector>

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
        Require(info.GetRefTypeInfo(type.hreftype, referred.Put()), "the type library is damaged");
        return NameOf(*referred);
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

bool IsDual(const TYPEATTR& interface)
{
    return interface.wTypeFlags & TYPEFLAG_FDUAL;
}

bool IsEventsOnly(const TYPEATTR& interface)
{
    return interface.typekind == TKIND_DISPATCH && !IsDual(interface);
}

const char* Keyword(const TYPEATTR& interface)
{
    return IsEventsOnly(interface) ? "dispinterface" : "interface";
}

void PrintInterface(ITypeInfo& info, const TYPEATTR& attributes, std::ostream& out)
{
    const bool eventsOnly = IsEventsOnly(attributes);
    out << "    [" << (eventsOnly ? "" : "object, ") << "uuid(" << Guid(attributes.guid) << ")"
        << (IsDual(attributes) ? ", dual" : "") << "]\n    " << Keyword(attributes) << ' ' << NameOf(info);
    if (eventsOnly) {
        out << " {\n        properties:\n        methods:\n";
    } else {
        HREFTYPE base = 0;
        ComPtr<ITypeInfo> baseInfo;
        Require(info.GetRefTypeOfImplType(0, &base), "the type library is damaged");
        Require(info.GetRefTypeInfo(base, baseInfo.Put()), "the type library is damaged");
        out << " : " << NameOf(*baseInfo) << " {\n";
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

std::vector<ComPtr<ITypeInfo>> TypesOf(ITypeLib& library)
{
    std::vector<ComPtr<ITypeInfo>> types(library.GetTypeInfoCount());
    for (ULONG i = 0; i < types.size(); ++i)
        Require(library.GetTypeInfo(i, types[i].Put()), "the type library is damaged");
    return types;
}

/// Names with identities.
using Interfaces = std::map<std::string, GUID>;

/// Adds the interface that a parameter or a field is of, unless the library itself has it.
void AddForeign(ITypeInfo& info, const TYPEDESC& type, Interfaces& found)
{
    if (type.vt == VT_PTR) return AddForeign(info, *type.lptdesc, found);
    if (type.vt != VT_USERDEFINED) return;
    ComPtr<ITypeInfo> referred;
    ComPtr<ITypeLib> home;
    Require(info.GetRefTypeInfo(type.hreftype, referred.Put()), "the type library is damaged");
    if (FAILED(referred->GetContainingTypeLib(home.Put(), nullptr))) {
        found.emplace(NameOf(*referred), AttributesOf(*referred)->guid);
    }
}

Interfaces ForeignInterfaces(const std::vector<ComPtr<ITypeInfo>>& types)
{
    Interfaces found;
    for (const auto& info : types) {
        const auto attributes = AttributesOf(*info);
        for (WORD i = 0; i < attributes->cFuncs; ++i) {
            const auto function = FunctionOf(*info, i);
            for (SHORT k = 0; k < function->cParams; ++k)
                AddForeign(*info, function->lprgelemdescParam[k].tdesc, found);
        }
        for (WORD i = 0; i < attributes->cVars; ++i)
            AddForeign(*info, VariableOf(*info, i)->elemdescVar.tdesc, found);
    }
    return found;
}

/// Declares every interface that records and interfaces may name before it is described, or that is described
/// elsewhere.
void PrintForwardDeclarations(const std::vector<ComPtr<ITypeInfo>>& types, std::ostream& out)
{
    for (const auto& [name, identity] : ForeignInterfaces(types))
        out << "    interface " << name << "; // elsewhere, uuid(" << Guid(identity) << ")\n";
    for (const auto& info : types) {
        const auto attributes = AttributesOf(*info);
        if (attributes->typekind != TKIND_INTERFACE && attributes->typekind != TKIND_DISPATCH) continue;
        out << "    " << Keyword(*attributes) << ' ' << NameOf(*info) << ";\n";
    }
    out << '\n';
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
    const auto types = TypesOf(*library);
    PrintForwardDeclarations(types, out);
    for (const auto& info : types)
        PrintType(*info, out);
    out << "};\n";
}

} // namespace kvproject
