#include "TypeRecords.h"

#include "Failure.h"

namespace kvproject {
namespace {

constexpr std::string_view kDamaged = "the type library is damaged";

} // namespace

Owned<TYPEATTR> AttributesOf(ITypeInfo& info)
{
    TYPEATTR* attributes = nullptr;
    Require(info.GetTypeAttr(&attributes), kDamaged);
    return {attributes, [&info](TYPEATTR* record) { info.ReleaseTypeAttr(record); }};
}

Owned<FUNCDESC> FunctionOf(ITypeInfo& info, WORD index)
{
    FUNCDESC* function = nullptr;
    Require(info.GetFuncDesc(index, &function), kDamaged);
    return {function, [&info](FUNCDESC* record) { info.ReleaseFuncDesc(record); }};
}

Owned<VARDESC> VariableOf(ITypeInfo& info, WORD index)
{
    VARDESC* variable = nullptr;
    Require(info.GetVarDesc(index, &variable), kDamaged);
    return {variable, [&info](VARDESC* record) { info.ReleaseVarDesc(record); }};
}

std::string NameOf(ITypeInfo& info)
{
    kv::Bstr name;
    info.GetDocumentation(DISPID_UNKNOWN, name.Put(), nullptr);
    return kv::ToUtf8(name.View());
}

std::vector<std::string> MemberNames(ITypeInfo& info, DISPID member)
{
    constexpr ULONG kRoom = 16;
    BSTR names[kRoom]{};
    ULONG count = 0;
    Require(info.GetNames(member, names, kRoom, &count), kDamaged);
    std::vector<std::string> result;
    for (ULONG i = 0; i < count; ++i)
        result.push_back(kv::ToUtf8(kv::Bstr::Attach(names[i]).View()));
    return result;
}

} // namespace kvproject
