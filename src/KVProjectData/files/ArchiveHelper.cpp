#include "KVProjectData/files/ArchiveHelper.h"

#include "KVProjectData/IKVDataFile.h"
#include "KVProjectData/menus/Menu.h"
#include "KVProjectData/menus/MenuOverlay.h"
#include "KVProjectData/titles/Title.h"

namespace kv {

void MediaProperty::Replace(const Bstr& from, const Bstr& by) const
{
    Bstr current;
    if (SUCCEEDED(get(*object.Get(), current.Put())) && current.View() == from.View()) put(*object.Get(), by.Get());
}

template <class Interface, auto Getter, auto Setter>
void CArchiveHelper::Add(CProjectNode& node, bool isShown)
{
    const auto put = [](IUnknown& object, BSTR path) { return (Query<Interface>(&object).Get()->*Setter)(path); };
    Add<Interface, Getter>(node, put, isShown);
}

template <class Interface, auto Getter>
void CArchiveHelper::Add(CProjectNode& node, std::function<HRESULT(IUnknown&, BSTR)> put, bool isShown)
{
    MediaProperty property;
    property.object = node.Identity();
    property.get = [](IUnknown& object, BSTR* path) { return (Query<Interface>(&object).Get()->*Getter)(path); };
    property.put = std::move(put);
    property.isShown = isShown;
    if (FAILED(property.get(*property.object.Get(), property.path.Put())) || property.path.Empty()) return;
    properties.push_back(std::move(property));
}

HRESULT CArchiveHelper::VisitNode(CProjectNode& node, ULONG)
{
    switch (node.Type()) {
    case typeTitle:
        Add<IKVTitle, &IKVTitle::get_Source, &IKVTitle::put_Source>(node);
        break;
    case typeMenu: {
        auto& menu = static_cast<CKVMenu&>(node);
        const auto put = [&menu](IUnknown&, BSTR path) { return menu.NameBackground(path); };
        Add<IKVMenu, &IKVMenu::get_Background>(node, put, !menu.IsNativeMenu());
        break;
    }
    case typeFile:
        Add<IKVDataFile, &IKVDataFile::get_SourcePath, &IKVDataFile::put_SourcePath>(node);
        break;
    case typeOverlay: {
        const bool isShown = static_cast<CKVMenuOverlay&>(node).HasEffect();
        Add<IKVMenuOverlay, &IKVMenuOverlay::get_Source, &IKVMenuOverlay::put_Source>(node, isShown);
        Add<IKVMenuOverlay, &IKVMenuOverlay::get_AlphaMask, &IKVMenuOverlay::put_AlphaMask>(node, isShown);
        break;
    }
    default:
        break;
    }
    return S_OK;
}

} // namespace kv
