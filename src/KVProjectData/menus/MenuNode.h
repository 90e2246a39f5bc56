#pragma once
// What menu elements ask of the menu that they stand in.

#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/ComPtr.h"

namespace kv {

/// Implemented by the menu, which is above its elements. Called while the menu's section is held (LineageLock).
class CMenuNode : public CProjectNode {
public:
    /// The production that elements have their effects in; empty without one, as in a native menu.
    virtual ComPtr<IUnknown> MenuProduction() = 0;
    /// The menu has background, audio and duration of its own, and its elements have no effects.
    virtual bool IsNativeMenu() = 0;
    /// The display aspect: 16/9, or else 4/3.
    virtual bool IsWide() = 0;
    /// Notes in the menu's flags that a person moved buttons; tells of it when they did not say so yet.
    virtual HRESULT MarkButtonsMoved() = 0;

protected:
    CMenuNode() : CProjectNode(typeMenu) {}
};

/// The menu that a node stands in, directly or in a button; null without one.
CMenuNode* MenuOf(const CProjectNode& node);
/// The button in whose element list a node stands; null for every other.
CProjectNode* ButtonOf(const CProjectNode& element);

} // namespace kv
