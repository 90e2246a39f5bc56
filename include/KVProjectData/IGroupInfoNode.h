#pragma once
// A group of elements of a menu, which the host moves, scales and rotates together, and the frame around them.
//
// IKVMenu adds elements and removes groups. E_POINTER for a null out-pointer. Groups do not look at locks and have no
// events; their changes are recorded for undo.

#include "KVProjectData/Geometry.h"
#include "platform/automation/Members.h"

struct IGroupInfoNode : IDispatch {
    static constexpr GUID IID = "9c92cd14-3268-4777-8981-3af5f562c023"_guid;
    using Base = IDispatch;

    /// Unique in the process; kept in the document.
    virtual HRESULT get_ID(LONG* pVal) = 0;

    /// How many elements the group has.
    virtual HRESULT GetGroupSize(LONG* nSize) = 0;

    /// Counts from 0. S_FALSE for an index that is none.
    virtual HRESULT GetElementIDInGroup(LONG nIndex, LONG* nEleId) = 0;

    /// The centre and the size of the frame.
    virtual HRESULT GetGroupRect(tagPOINTF* ptCenter, tagPOINTF* ptSize) = 0;
    virtual HRESULT SetGroupRect(tagPOINTF ptCenter, tagPOINTF ptSize) = 0;
    virtual HRESULT GetGroupRotation(double* dRotation) = 0;
    virtual HRESULT SetGroupRotation(double dRotation) = 0;

    /// Not recorded.
    virtual HRESULT SetGroupOriginAspect(double dAspect) = 0;
    virtual HRESULT GetGroupOriginAspect(double* dAspect) = 0;
};

template <>
struct kv::InterfaceTable<IGroupInfoNode> {
    static constexpr auto members = Members(
        Get<&IGroupInfoNode::get_ID>("ID", 0x1), Method<&IGroupInfoNode::GetGroupSize>("GetGroupSize", 0x144, "nSize"),
        Method<&IGroupInfoNode::GetElementIDInGroup>("GetElementIDInGroup", 0x145, "nIndex", "nEleId"),
        Method<&IGroupInfoNode::GetGroupRect>("GetGroupRect", 0x146, Out("ptCenter"), Out("ptSize")),
        Method<&IGroupInfoNode::SetGroupRect>("SetGroupRect", 0x147, "ptCenter", "ptSize"),
        Method<&IGroupInfoNode::GetGroupRotation>("GetGroupRotation", 0x148, "dRotation"),
        Method<&IGroupInfoNode::SetGroupRotation>("SetGroupRotation", 0x149, "dRotation"),
        Method<&IGroupInfoNode::SetGroupOriginAspect>("SetGroupOriginAspect", 0x16d, "dAspect"),
        Method<&IGroupInfoNode::GetGroupOriginAspect>("GetGroupOriginAspect", 0x16c, "dAspect"));
};
