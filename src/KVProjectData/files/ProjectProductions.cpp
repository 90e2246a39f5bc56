#include "KVProjectData/files/ProjectProductions.h"

#include "KVProjectData/Engine/Persist.h"
#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/content/DocumentPaths.h"
#include "KVProjectData/content/ParameterPaths.h"
#include "KVProjectData/persistence/XMLPersistor.h"
#include "KVProjectData/project/ProjectStoryboards.h"
#include "KVProjectData/tree/AttributeTexts.h"
#include "KVProjectData/tree/ObjectID.h"
#include "KVProjectData/tree/ProductionOwner.h"
#include "KVProjectData/tree/Visitor.h"
#include "SbdUtils/EngineCalls.h"
#include "platform/com/Activation.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>

namespace kv {
namespace {

constexpr EngineCalls kEngine("ProjectProductions");

constexpr const char* kProductions = "Productions";
constexpr const char* kProduction = "Production";
constexpr const char* kStoryboard = "Storyboard";
constexpr const char* kOwnerID = "ownerID";
constexpr const char* kName = "name";

/// Which production an element stands for.
struct Key {
    LONG ownerID;
    std::string_view name;

    friend bool operator<(const Key& left, const Key& right)
    {
        return std::tie(left.ownerID, left.name) < std::tie(right.ownerID, right.name);
    }
};

std::optional<Key> KeyOf(const XmlView& entry)
{
    const auto id = entry.Attribute(kOwnerID);
    const auto name = entry.Attribute(kName);
    if (entry.Name() != kProduction || !id || !name) return std::nullopt;
    try {
        return Key{ParseID(*id), *name};
    } catch (const Error&) {
        return std::nullopt;
    }
}

XmlView StoryboardOf(const XmlView& entry)
{
    XmlView child = entry.FirstChild();
    while (child && child.Name() != kStoryboard)
        child = child.Next();
    return child;
}

LONG AttributeCount(const XmlElement& element)
{
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    LONG count = 0;
    ThrowIfFailed(element.Get()->get_attributes(attributes.Put()));
    ThrowIfFailed(attributes->get_length(&count));
    return count;
}

/// The nodes of a project that own productions, in the order of the document.
class Owners final : private CVisitor {
public:
    struct Item {
        LONG id;
        ProductionOwner* owner;
        /// Keeps the owner alive; dropped outside of all sections.
        ComPtr<IUnknown> object;
    };

    explicit Owners(CProjectNode& project)
    {
        const SectionLock lock(project.Section());
        Visit(project, 0);
    }

    std::vector<Item> items;

private:
    HRESULT VisitNode(CProjectNode& node, ULONG) override
    {
        if (ProductionOwner* owner = node.Owner()) items.push_back({node.ID(), owner, node.Identity()});
        return S_OK;
    }
};

// Saving

/// Adds productions to what was kept of them.
class Saver {
public:
    explicit Saver(XmlElement productions) : m_productions(std::move(productions))
    {
        for (XmlView entry = m_productions.View().FirstChild(); entry; entry = entry.Next()) {
            if (const auto key = KeyOf(entry)) m_kept.emplace(*key, entry);
        }
    }

    void Save(LONG ownerID, const OwnedProduction& owned)
    {
        const auto persist = Query<IZXEProductionPersist>(owned.production);
        if (!persist) {
            kEngine.Checked(E_NOINTERFACE, "Query<IZXEProductionPersist>");
            return;
        }
        XmlElement entry = m_productions.Add(kProduction);
        std::string id;
        AppendNumber(static_cast<ULONG>(ownerID), id);
        entry.SetAttribute(kOwnerID, id);
        entry.SetAttribute(kName, owned.name);
        const XmlElement storyboard = entry.Add(kStoryboard);
        kEngine.Need(persist->Save(storyboard.Element().Get(), m_paths.Get()), "Save()");
        ParameterPathsToDocument(storyboard, *m_paths);
        if (const auto kept = m_kept.find({ownerID, owned.name}); kept != m_kept.end()) {
            Join(entry, storyboard, kept->second);
            m_kept.erase(kept);
        }
    }

private:
    /// Of what was kept for the same production either the storyboard had been loaded, and the rest is joined to it
    /// again; or all of it is still there, and gives way only to a storyboard that holds anything.
    void Join(XmlElement& entry, const XmlElement& storyboard, const XmlView& kept)
    {
        XmlElement place(m_productions.At(kept));
        if (StoryboardOf(kept)) {
            if (storyboard.View().FirstChild()) return m_productions.Insert(entry, place);
        } else {
            place.Insert(storyboard, place.At(kept.FirstChild()));
        }
        entry.Remove();
    }

    XmlElement m_productions;
    std::multimap<Key, XmlView> m_kept;
    const ComPtr<DocumentPaths> m_paths = Make<DocumentPaths>();
};

// Loading

class Loader {
public:
    Loader(CProjectNode& project, const XmlElement& productions) : m_owners(project), m_productions(productions)
    {
        for (const Owners::Item& item : m_owners.items)
            m_ownersByID.emplace(item.id, item.owner);
    }

    /// Takes out what is loaded. False where nothing was.
    bool Run()
    {
        bool loadedAny = false;
        XmlView next;
        for (XmlView entry = m_productions.View().FirstChild(); entry; entry = next) {
            next = entry.Next();
            if (entry.Name() == kProduction && Load(entry)) loadedAny = true;
        }
        return loadedAny;
    }

private:
    bool Load(const XmlView& entry)
    {
        const auto key = KeyOf(entry);
        const XmlView storyboard = StoryboardOf(entry);
        if (!key || !storyboard) {
            kEngine.Report("an element that holds no production");
            return false;
        }
        ProductionOwner* owner = FindOwner(*key);
        if (!owner) {
            kEngine.Report("a production without an owner: " + std::to_string(key->ownerID));
            return false;
        }
        if (FAILED(LoadInto(*owner, key->name, XmlElement(m_productions.At(storyboard))))) return false;
        m_loaded.emplace(owner, key->name);
        m_productions.Remove(storyboard);
        const bool isEmpty =
            !entry.FirstChild() && AttributeCount(XmlElement(m_productions.At(entry))) == kOwnAttributes;
        if (isEmpty) m_productions.Remove(entry);
        return true;
    }

    /// Where an ID is used more than once its owners get their productions in the order of the document.
    ProductionOwner* FindOwner(const Key& key) const
    {
        const auto [first, last] = m_ownersByID.equal_range(key.ownerID);
        for (auto item = first; item != last; ++item) {
            if (!m_loaded.contains({item->second, std::string(key.name)})) return item->second;
        }
        return nullptr;
    }

    HRESULT LoadInto(ProductionOwner& owner, std::string_view name, const XmlElement& storyboard)
    {
        for (const OwnedProduction& owned : owner.Productions()) {
            if (owned.name == name) return LoadProduction(owned.production.Get(), storyboard);
        }
        ComPtr<IUnknown> production;
        HRESULT result =
            kEngine.Checked(CreateInstance(CLSID_ZXEProduction, production), "CreateInstance(CLSID_ZXEProduction)");
        const auto data = Query<IZXEProductionData>(production);
        if (FAILED(result)) return result;
        result = kEngine.Checked(data ? data->Initialise() : E_NOINTERFACE, "Initialise()");
        if (SUCCEEDED(result)) result = LoadProduction(production.Get(), storyboard);
        if (SUCCEEDED(result))
            result = kEngine.Checked(owner.TakeProduction(name, production.Get()), "TakeProduction()");
        if (FAILED(result) && data) data->Close();
        return result;
    }

    HRESULT LoadProduction(IUnknown* production, const XmlElement& storyboard)
    {
        const auto persist = Query<IZXEProductionPersist>(production);
        if (!persist) return kEngine.Checked(E_NOINTERFACE, "Query<IZXEProductionPersist>");
        const XmlElement resolved = ParameterPathsFromDocument(storyboard, *m_paths);
        return kEngine.Checked(persist->Load(resolved.Element().Get(), m_paths.Get()), "Load()");
    }

    static constexpr LONG kOwnAttributes = 2;

    const Owners m_owners;
    XmlElement m_productions;
    std::multimap<LONG, ProductionOwner*> m_ownersByID;
    std::set<std::pair<ProductionOwner*, std::string>> m_loaded;
    const ComPtr<DocumentPaths> m_paths = Make<DocumentPaths>();
};

} // namespace

void SaveWithProductions(IKVProjectData& project, XmlElement root, XmlMarkup& markup)
{
    const auto storyboards = Query<IProjectStoryboards>(&project);
    if (!storyboards) {
        ThrowIfFailed(project.SaveXML(root.Get()));
        root.Add(kProductions);
        return;
    }
    std::optional<Owners> owners;
    XmlElement kept;
    std::vector<std::pair<LONG, OwnedProduction>> productions;
    {
        CProjectNode& node = storyboards->Node();
        const SectionLock lock(node.Section());
        ThrowIfFailed(CMarkupPersistor(markup).Visit(node, 0));
        kept = storyboards->KeptProductions();
        owners.emplace(node);
        for (const Owners::Item& item : owners->items) {
            for (OwnedProduction& owned : item.owner->Productions())
                productions.emplace_back(item.id, std::move(owned));
        }
    }
    EngineCalls::Begin();
    if (kept) {
        root.Insert(kept.Copy());
    } else {
        root.Add(kProductions);
    }
    Saver saver(root.Child(kProductions));
    for (const auto& [ownerID, owned] : productions)
        saver.Save(ownerID, owned);
}

void ReserveOwners(const XmlElement& root)
{
    const XmlElement productions = root.Child(kProductions);
    for (XmlView entry = productions.View().FirstChild(); entry; entry = entry.Next()) {
        if (const auto key = KeyOf(entry)) PassOverID(key->ownerID);
    }
}

void LoadProductions(IKVProjectData& project, const XmlElement& root)
{
    const auto storyboards = Query<IProjectStoryboards>(&project);
    const XmlElement productions = root.Child(kProductions);
    if (!storyboards || !productions) return;
    EngineCalls::Begin();
    // What is not taken out of it stays, whatever happens on the way.
    storyboards->KeepProductions(productions);
    const bool holdsAny = static_cast<bool>(productions.View().FirstChild());
    const bool loadedAny = holdsAny && Loader(storyboards->Node(), productions).Run();
    const bool isEmpty = !productions.View().FirstChild() && AttributeCount(productions) == 0;
    if (isEmpty) {
        storyboards->KeepProductions({});
    } else if (loadedAny) {
        // Without the room that the others took.
        storyboards->KeepProductions(productions.Copy());
    }
}

} // namespace kv
