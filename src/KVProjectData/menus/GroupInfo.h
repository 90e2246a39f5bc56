#pragma once
// The groups of a menu: elements that the host moves, scales and rotates together.

#include "KVProjectData/IGroupInfoNode.h"
#include "KVProjectData/tree/NodeList.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

#include <vector>

namespace kv {

class CGroupInfoNode final : public CProjectNode, public Object<Dual<IGroupInfoNode>> {
public:
    /// Has an ID from the start. Throws Error where none is left.
    explicit CGroupInfoNode(IUnknown* outer = nullptr) : CProjectNode(typeGroupInfo), Object(outer) { AssignID(); }

    KV_GETTER(LONG, ID, ID())
    HRESULT GetGroupSize(LONG* nSize) override;
    HRESULT GetElementIDInGroup(LONG nIndex, LONG* nEleId) override;
    HRESULT GetGroupRect(tagPOINTF* ptCenter, tagPOINTF* ptSize) override;
    HRESULT SetGroupRect(tagPOINTF ptCenter, tagPOINTF ptSize) override;
    HRESULT GetGroupRotation(double* dRotation) override { return Get(dRotation, m_rotation); }
    HRESULT SetGroupRotation(double dRotation) override;
    HRESULT SetGroupOriginAspect(double dAspect) override;
    HRESULT GetGroupOriginAspect(double* dAspect) override { return Get(dAspect, m_originAspect); }

    /// S_FALSE for an element that is in the group already.
    HRESULT AddElementID(LONG id);
    bool Holds(LONG elementID);
    /// In the order in which they were added.
    std::vector<LONG> ElementIDs();

    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive& archive) override;

private:
    std::vector<LONG> m_elementIDs;
    double m_rotation = 0.0;
    tagPOINTF m_center{};
    tagPOINTF m_size{};
    double m_originAspect = 0.0;
};

/// A plain member of its menu.
class CGroupInfoListNode final : public CNodeList {
public:
    CGroupInfoListNode() : CNodeList(typeGroupInfoList) {}

    /// The menu, which it is part of.
    IUnknown* Identity() override { return Parent()->Identity(); }

    void Attributes(AttributeArchive&) override {}
    CProjectNode* CreateItem(NodeType type) override;
};

} // namespace kv
