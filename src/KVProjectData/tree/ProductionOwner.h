#pragma once
// Nodes that own productions of the storyboard engine, which project files hold.

#include "platform/com/ComPtr.h"

#include <string_view>
#include <vector>

namespace kv {

struct OwnedProduction {
    /// Which of its owner's productions it is; the same in every file.
    std::string_view name;
    /// Null where there is none.
    ComPtr<IUnknown> production;
    /// Made because somebody looked at it, and told of no edit since: the same would be made again.
    bool isMere = false;
};

/// Implemented by the class of a node (CProjectNode::Owner).
class ProductionOwner {
public:
    /// One for each name, in the order of the names; none is created.
    virtual std::vector<OwnedProduction> Productions() = 0;

    /// Takes over a production in the place of the one of that name, which is closed. E_INVALIDARG for a name that none
    /// of its productions has, or why the one before cannot be left; then nothing has changed. When the new one cannot
    /// be connected there is none, and that failure is returned. Tells nobody.
    virtual HRESULT TakeProduction(std::string_view name, IUnknown* production) = 0;

protected:
    ~ProductionOwner() = default;
};

} // namespace kv
