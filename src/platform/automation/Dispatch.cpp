#include "platform/automation/Dispatch.h"

#include "platform/com/Error.h"
#include "platform/system/Case.h"

#include <algorithm>

namespace kv {
namespace {

constexpr WORD kKnownFlags = DISPATCH_METHOD | DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;

const MemberDescription* FindOwnMember(const InterfaceDescription& description, DISPID id, WORD flags)
{
    const auto byId = [&](std::uint16_t position, DISPID wanted) { return description.members[position].id < wanted; };
    auto at = std::lower_bound(description.byId.begin(), description.byId.end(), id, byId);
    for (; at != description.byId.end() && description.members[*at].id == id; ++at) {
        const MemberDescription& member = description.members[*at];
        if (member.thunk && (member.kind & flags)) return &member;
    }
    return nullptr;
}

/// Finds a member of the interface or of one that it extends, which `self` is then a pointer to.
const MemberDescription* FindMember(const InterfaceDescription& description, DISPID id, WORD flags, void*& self)
{
    for (const InterfaceDescription* owner = &description; owner; owner = owner->inherited) {
        if (const MemberDescription* found = FindOwnMember(*owner, id, flags)) return found;
        if (owner->toBase) self = owner->toBase(self);
    }
    return nullptr;
}

const MemberDescription* FindMemberNamed(const InterfaceDescription& description, std::u16string_view name)
{
    for (const InterfaceDescription* owner = &description; owner; owner = owner->inherited) {
        const auto& members = owner->members;
        const auto found =
            std::ranges::find_if(members, [name](const MemberDescription& row) { return SameText(row.name, name); });
        if (found != members.end()) return &*found;
    }
    return nullptr;
}

/// A caller marks an argument that it leaves out by this error value.
bool IsOmitted(const VARIANT& value)
{
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

/// Sorts the caller's arguments by parameter.
HRESULT Arrange(const MemberDescription& member, DISPPARAMS& params, ArgumentList& list, ULONG* badArgument)
{
    const bool put = member.kind == DISPATCH_PROPERTYPUT;
    for (ULONG i = 0; i < params.cArgs; ++i) {
        std::size_t position = params.cArgs - 1 - i;
        if (i < params.cNamedArgs) {
            const DISPID named = params.rgdispidNamedArgs[i];
            if (put && named == DISPID_PROPERTYPUT) {
                position = member.parameterCount - 1u;
            } else if (named >= 0 && named < member.parameterCount) {
                position = static_cast<std::size_t>(named);
            } else {
                if (badArgument) *badArgument = i;
                return DISP_E_PARAMNOTFOUND;
            }
        }
        VARIANT*& slot = list.values[position];
        if (slot) {
            if (badArgument) *badArgument = i;
            return DISP_E_PARAMNOTFOUND;
        }
        if (!IsOmitted(params.rgvarg[i])) slot = &params.rgvarg[i];
    }
    return S_OK;
}

} // namespace

HRESULT InvokeMember(const InterfaceDescription& description, void* self, DISPID member, REFIID reserved, WORD flags,
                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, ULONG* badArgument)
{
    return Guarded([&] {
        if (result) VariantInit(result);
        if (exception) *exception = {};
        if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        if (!params || (params->cArgs && !params->rgvarg) || (params->cNamedArgs && !params->rgdispidNamedArgs)) {
            return E_POINTER;
        }
        if (!(flags & kKnownFlags)) return E_INVALIDARG;
        const MemberDescription* found = FindMember(description, member, flags, self);
        if (!found) return DISP_E_MEMBERNOTFOUND;
        if (params->cArgs > found->parameterCount || params->cNamedArgs > params->cArgs) return DISP_E_BADPARAMCOUNT;

        ArgumentList list{*found};
        HRESULT outcome = Arrange(*found, *params, list, badArgument);
        if (FAILED(outcome)) return outcome;

        outcome = found->thunk(self, list, result);
        if (list.bad != ArgumentList::kNone) {
            // Too few arguments, as opposed to one that was left out on purpose.
            if (outcome == DISP_E_PARAMNOTOPTIONAL && params->cNamedArgs == 0 && list.bad >= params->cArgs) {
                return DISP_E_BADPARAMCOUNT;
            }
            if (badArgument && list.values[list.bad]) {
                *badArgument = static_cast<ULONG>(list.values[list.bad] - params->rgvarg);
            }
            return outcome;
        }
        if (FAILED(outcome) && exception) {
            exception->scode = outcome;
            return DISP_E_EXCEPTION;
        }
        return outcome;
    });
}

HRESULT FindMemberNames(const InterfaceDescription& description, OLECHAR** names, ULONG count, DISPID* ids)
{
    if (!names || !ids) return E_POINTER;
    if (count == 0) return E_INVALIDARG;
    std::fill_n(ids, count, DISPID_UNKNOWN);
    if (!names[0]) return E_POINTER;

    const MemberDescription* member = FindMemberNamed(description, names[0]);
    if (!member) return DISP_E_UNKNOWNNAME;
    ids[0] = member->id;

    HRESULT outcome = S_OK;
    for (ULONG i = 1; i < count; ++i) {
        const auto parameters = member->Parameters();
        const auto named = std::find_if(parameters.begin(), parameters.end(), [&](const ParameterDescription& row) {
            return names[i] && SameText(row.name, names[i]);
        });
        if (named == parameters.end()) {
            outcome = DISP_E_UNKNOWNNAME;
        } else {
            ids[i] = static_cast<DISPID>(named - parameters.begin());
        }
    }
    return outcome;
}

} // namespace kv
