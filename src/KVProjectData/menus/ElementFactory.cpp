#include "KVProjectData/menus/ElementFactory.h"

#include "KVProjectData/menus/MenuButton.h"
#include "KVProjectData/menus/MenuOverlay.h"
#include "KVProjectData/menus/MenuText.h"

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
    case typeText:
        return Create<CKVMenuText>();
    default:
        return {};
    }
}

} // namespace kv
