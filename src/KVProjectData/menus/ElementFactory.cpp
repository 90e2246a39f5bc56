#include "KVProjectData/menus/ElementFactory.h"

#include "KVProjectData/menus/MenuButton.h"
#include "KVProjectData/menus/MenuOverlay.h"

namespace kv {
namespace {

template <class Element>
NewElement Create()
{
    const auto element = Make<Element>();
    return {ComPtr<IUnknown>(element->Controlling()), element.Get()};
}

} // namespace

NewElement CreateElement(NodeType type)
{
    switch (type) {
    case typeButton:
        return Create<CKVMenuButton>();
    case typeOverlay:
        return Create<CKVMenuOverlay>();
    default:
        return {};
    }
}

} // namespace kv
