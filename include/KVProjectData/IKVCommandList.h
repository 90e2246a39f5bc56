#pragma once
// The ordered disc commands of a project, a title, a menu or a button.

#include "KVProjectData/Enumerations.h"
#include "platform/automation/Members.h"
#include "platform/xml/Dom.h"

/// One disc command. What the parameters mean is the player's business.
struct DiscCommandParams {
    DiscCommand cmd;
    LONG lParam1;
    LONG lParam2;
    /// An element, or null. Documents bring back "file" and "effect" elements alone.
    IXMLDOMNode* pXMLData;
};

template <>
struct kv::RecordTable<DiscCommandParams> {
    static constexpr std::array fields{
        Field<&DiscCommandParams::cmd>("cmd"), Field<&DiscCommandParams::lParam1>("lParam1"),
        Field<&DiscCommandParams::lParam2>("lParam2"), Field<&DiscCommandParams::pXMLData>("pXMLData")};
};

struct IKVCommandList : IDispatch {
    static constexpr GUID IID = "004498f4-b987-47c1-8c9c-26a813678d7a"_guid;
    using Base = IDispatch;

    /// The array is in task memory; the caller frees it and releases each pXMLData. These are copies without a
    /// parent, in a document that the array's copies share with each other and with nothing else: calls on several
    /// threads do not meet. Null for an empty list.
    virtual HRESULT GetCommandList(LONG* plCount, DiscCommandParams** ppCmdList) = 0;

    /// Replaces the commands by `lCount` records, whose XML is copied; none for a count below 1.
    /// E_POINTER for null with a positive count, KV_E_LOCKED when locked. E_INVALIDARG for XML that is no element, or
    /// that a project's document could not hold (248 levels of elements at most); the list then holds the commands
    /// before that record.
    virtual HRESULT SetCommandList(LONG lCount, DiscCommandParams* pCmdList) = 0;
};

template <>
struct kv::InterfaceTable<IKVCommandList> {
    static constexpr auto members =
        Members(Method<&IKVCommandList::GetCommandList>("GetCommandList", 0x3e8, "plCount", Counted("ppCmdList", 0)),
                Method<&IKVCommandList::SetCommandList>("SetCommandList", 0x3e9, "lCount", Counted("pCmdList", 0)));
};
