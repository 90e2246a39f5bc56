#include "KVProjectData/menus/ElementFactory.h"

#include "KVProjectData/menus/MenuButton.h"

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
    default:
        return {};
    }
}

} // namespace kv
