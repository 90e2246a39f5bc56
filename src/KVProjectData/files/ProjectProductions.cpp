#include "KVProjectData/files/ProjectProductions.h"

#include "KVProjectData/Engine/Persist.h"
#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/content/DocumentPaths.h"
#include "KVProjectData/content/FilePlace.h"
#include "KVProjectData/content/ParameterPaths.h"
#include "KVProjectData/persistence/XMLPersistor.h"
#include "KVProjectData/project/ProjectStoryboards.h"
#include "KVProjectData/tree/AttributeTexts.h"
#include "KVProjectData/tree/ObjectID.h"
#include "KVProjectData/tree/ProductionOwner.h"
#include "KVProjectData/tree/Visitor.h"
#include "SbdUtils/EngineCalls.h"
#include "platform/com/Activation.h"

#include <deque>
#include <map>
#include <optional>
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

/// Which production an element stands for; owners that share an ID share it.
struct Key {
    LONG ownerID;
    std::string name;

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
        return Key{ParseID(*id), std::string(*name)};
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

/// Whether an entry with a key holds nothing else.
bool IsBare(const XmlElement& productions, const XmlView& entry)
{
    constexpr LONG kOwnAttributes = 2;
    return !entry.FirstChild() && AttributeCount(XmlElement(productions.At(entry))) == kOwnAttributes;
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
    /// What stands in an owner owns nothing.
    HRESULT Visit(CProjectNode& node, ULONG flags) override
    {
        return node.Owner() ? VisitNode(node, flags) : CVisitor::Visit(node, flags);
    }
    HRESULT VisitNode(CProjectNode& node, ULONG) override
    {
        if (ProductionOwner* owner = node.Owner()) items.push_back({node.ID(), owner, node.Identity()});
        return S_OK;
    }
};

// Saving

/// Adds productions to what was kept of them. The entries of owners that share an ID stand in the order of the owners:
/// an owner without a production leaves its place to what was kept, or to an entry that holds nothing.
class Saver {
public:
    Saver(XmlElement productions, XmlStandIns& standIns) : m_productions(std::move(productions)), m_standIns(standIns)
    {
        for (XmlView entry = m_productions.View().FirstChild(); entry; entry = entry.Next()) {
            if (const auto key = KeyOf(entry)) m_turns[*key].kept.push_back(entry);
        }
    }

    /// In the order of the document, for owners without a production, too.
    void Save(LONG ownerID, const OwnedProduction& owned)
    {
        const Key key{ownerID, std::string(owned.name)};
        Turns& turns = m_turns[key];
        const XmlView kept = turns.next < turns.kept.size() ? turns.kept[turns.next] : XmlView();
        ++turns.next;
        XmlElement entry = owned.production ? Written(key, owned) : XmlElement();
        if (kept) {
            if (entry) Join(entry, kept);
        } else if (entry) {
            for (; turns.owed > 0; --turns.owed)
                m_productions.Insert(Add(key), entry);
        } else {
            ++turns.owed;
        }
    }

    /// What gave way stands behind, and takes nobody's turn.
    void Finish()
    {
        for (const XmlView& entry : m_gaveWay)
            m_productions.Move(entry, m_productions.View());
        for (const auto& [key, turns] : m_turns) {
            for (std::size_t i = turns.next; i < turns.kept.size(); ++i) {
                if (IsBare(m_productions, turns.kept[i])) m_productions.Remove(turns.kept[i]);
            }
        }
    }

private:
    /// Of the owners of one ID.
    struct Turns {
        std::vector<XmlView> kept;
        std::size_t next = 0;
        /// Those who had their turn and left no entry.
        std::size_t owed = 0;
    };

    XmlElement Add(const Key& key)
    {
        XmlElement entry = m_productions.Add(kProduction);
        std::string id;
        AppendNumber(static_cast<ULONG>(key.ownerID), id);
        entry.SetAttribute(kOwnerID, id);
        entry.SetAttribute(kName, key.name);
        return entry;
    }

    /// The last entry; empty where there is nothing to save.
    XmlElement Written(const Key& key, const OwnedProduction& owned)
    {
        const auto markup = Query<IZXEProductionMarkup>(owned.production);
        const auto persist = markup ? nullptr : Query<IZXEProductionPersist>(owned.production);
        if (!markup && !persist) {
            kEngine.Checked(E_NOINTERFACE, "Query<IZXEProductionPersist>");
            return {};
        }
        XmlElement entry = Add(key);
        const XmlElement storyboard = entry.Add(kStoryboard);
        if (markup) {
            Write(*markup, storyboard);
        } else {
            kEngine.Need(persist->Save(storyboard.Element().Get(), m_paths.Get()), "Save()");
            ParameterPathsToDocument(storyboard, *m_paths);
        }
        if (owned.isMere && !HasContent(storyboard)) {
            Remove(entry);
            return {};
        }
        return entry;
    }

    void Write(IZXEProductionMarkup& production, const XmlElement& storyboard)
    {
        struct : ZXEMarkupTarget {
            void Take(std::string_view text) override { markup = text; }
            std::string markup;
        } target;
        kEngine.Need(production.SaveMarkup(storyboard.Element().Get(), m_paths.Get(), &target), "SaveMarkup()");
        kEngine.Reporting([&] {
            ParameterPathsToDocument(target.markup, *m_paths);
            m_standIns.Put(storyboard, std::move(target.markup));
        });
    }

    bool HasContent(const XmlElement& storyboard) const
    {
        return storyboard.View().FirstChild() || m_standIns.HasContent(storyboard);
    }

    void Remove(XmlElement& entry)
    {
        m_standIns.Drop(entry.Child(kStoryboard));
        entry.Remove();
    }

    /// Of what was kept for the same production either the storyboard had been loaded, and the rest is joined to it
    /// again; or all of it is still there, and gives way only to a storyboard that holds anything.
    void Join(XmlElement& entry, const XmlView& kept)
    {
        XmlElement place(m_productions.At(kept));
        const XmlElement storyboard = entry.Child(kStoryboard);
        if (StoryboardOf(kept)) {
            if (HasContent(storyboard)) {
                m_gaveWay.push_back(kept);
                return m_productions.Insert(entry, place);
            }
        } else {
            place.Insert(storyboard, place.At(kept.FirstChild()));
        }
        Remove(entry);
    }

    XmlElement m_productions;
    XmlStandIns& m_standIns;
    std::map<Key, Turns> m_turns;
    std::vector<XmlView> m_gaveWay;
    const ComPtr<DocumentPaths> m_paths = Make<DocumentPaths>();
};

/// Writes a project as markup, and saves the productions of each owner inside the section that it is written in: both
/// are of one time.
class Writer final : public CMarkupPersistor {
public:
    Writer(XmlMarkup& target, Saver& saver) : CMarkupPersistor(target), m_saver(saver) {}

    HRESULT VisitNode(CProjectNode& node, ULONG flags) override
    {
        const HRESULT written = CMarkupPersistor::VisitNode(node, flags);
        if (ProductionOwner* owner = SUCCEEDED(written) ? node.Owner() : nullptr) {
            for (const OwnedProduction& owned : owner->Productions())
                m_saver.Save(node.ID(), owned);
        }
        return written;
    }

private:
    Saver& m_saver;
};

// Loading

class Loader {
public:
    Loader(CProjectNode& project, const XmlElement& productions) : m_owners(project), m_productions(productions)
    {
        for (const Owners::Item& item : m_owners.items) {
            for (const OwnedProduction& owned : item.owner->Productions()) {
                Turns& turns = m_turns[{item.id, std::string(owned.name)}];
                turns.waiting.push_back(item.owner);
                ++turns.owners;
            }
        }
    }

    /// Takes out what is loaded.
    void Run()
    {
        XmlView next;
        for (XmlView entry = m_productions.View().FirstChild(); entry; entry = next) {
            next = entry.Next();
            if (entry.Name() == kProduction) Load(entry);
        }
    }

private:
    /// Of the owners of one ID, in the order of the document: each entry takes one, also one that cannot be loaded. Who
    /// got nothing by it has another turn after the others.
    struct Turns {
        std::deque<ProductionOwner*> waiting;
        std::size_t owners = 0;
        std::size_t taken = 0;
    };

    void Load(const XmlView& entry)
    {
        const auto key = KeyOf(entry);
        const XmlView storyboard = StoryboardOf(entry);
        const auto turns = key ? m_turns.find(*key) : m_turns.end();
        if (turns != m_turns.end() && !turns->second.waiting.empty()) return Load(entry, *key, turns->second);
        kEngine.Report(key && storyboard ? "a production without an owner: " + std::to_string(key->ownerID)
                                         : "an element that holds no production");
    }

    void Load(const XmlView& entry, const Key& key, Turns& turns)
    {
        const XmlView storyboard = StoryboardOf(entry);
        ProductionOwner* owner = turns.waiting.front();
        turns.waiting.pop_front();
        // The first entries of owners that share an ID stand for one of them each, also when they hold nothing.
        const bool isPlace = turns.owners > 1 && ++turns.taken <= turns.owners;
        const bool isBare = !storyboard && isPlace && IsBare(m_productions, entry);
        if (!storyboard && !isBare) kEngine.Report("an element that holds no production");
        if (!storyboard || FAILED(LoadInto(*owner, key.name, XmlElement(m_productions.At(storyboard))))) {
            turns.waiting.push_back(owner);
            return;
        }
        m_productions.Remove(storyboard);
        if (!isPlace && IsBare(m_productions, entry)) m_productions.Remove(entry);
    }

    HRESULT LoadInto(ProductionOwner& owner, std::string_view name, const XmlElement& storyboard)
    {
        ParameterTexts written = ParameterPathsFromDocument(storyboard, *m_paths);
        const HRESULT result = LoadTranslated(owner, name, storyboard);
        // What is not loaded stays as it was written.
        if (FAILED(result)) ExchangeTexts(storyboard, written);
        return result;
    }

    HRESULT LoadTranslated(ProductionOwner& owner, std::string_view name, const XmlElement& storyboard)
    {
        for (const OwnedProduction& owned : owner.Productions()) {
            if (owned.name == name && owned.production) return LoadProduction(owned.production.Get(), storyboard);
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
        return kEngine.Checked(persist->Load(storyboard.Element().Get(), m_paths.Get()), "Load()");
    }

    const Owners m_owners;
    XmlElement m_productions;
    std::map<Key, Turns> m_turns;
    const ComPtr<DocumentPaths> m_paths = Make<DocumentPaths>();
};

/// What is not loaded names its files as documents do, but for those that relative paths lead to: they are named by
/// full paths between reading and writing.
class KeptPaths final : public Object<IZXEContentPaths> {
public:
    using Translate = std::optional<std::u16string> (FilePlace::*)(std::u16string_view);

    KeptPaths(FilePlace& file, Translate translate) : m_file(file), m_translate(translate) {}

    HRESULT ToDocument(BSTR bstrPath, BSTR* pbstrText) override
    {
        if (!pbstrText) return E_POINTER;
        return Guarded([&] {
            *pbstrText = Bstr((m_file.*m_translate)(View(bstrPath)).value_or(std::u16string(View(bstrPath)))).Detach();
            return S_OK;
        });
    }
    HRESULT FromDocument(BSTR bstrText, BSTR* pbstrPath) override { return ToDocument(bstrText, pbstrPath); }

private:
    FilePlace& m_file;
    const Translate m_translate;
};

void TranslateKept(const XmlElement& productions, KeptPaths::Translate translate)
{
    FilePlace* const file = FilePlace::Current();
    if (!file) return;
    const auto paths = Make<KeptPaths>(*file, translate);
    for (XmlView entry = productions.View().Child(kProduction); entry; entry = entry.Next(kProduction)) {
        const XmlView storyboard = StoryboardOf(entry);
        if (!storyboard) continue;
        ParameterPathsToDocument(XmlElement(productions.At(storyboard)), *paths);
        for (XmlView place = storyboard; place; place = place.Following(storyboard)) {
            if (!place.IsElement()) continue;
            for (const char* name : {"source", "mask"}) {
                const auto text = place.Attribute(name);
                const auto other = text ? (file->*translate)(ToUtf16(*text)) : std::nullopt;
                if (other) XmlElement(productions.At(place)).SetAttribute(name, ToUtf8(*other));
            }
        }
    }
}

} // namespace

void SaveWithProductions(IKVProjectData& project, XmlElement root, XmlMarkup& markup, XmlStandIns& productions)
{
    const auto storyboards = Query<IProjectStoryboards>(&project);
    if (!storyboards) {
        ThrowIfFailed(project.SaveXML(root.Get()));
        root.Add(kProductions);
        return;
    }
    EngineCalls::Begin();
    CProjectNode& node = storyboards->Node();
    const SectionLock lock(node.Section());
    const XmlElement kept = storyboards->KeptProductions();
    for (const XmlElement& each : kept.Children(kProductions))
        root.AddCopy(each);
    if (!kept) root.Add(kProductions);
    TranslateKept(root.Child(kProductions), &FilePlace::ToFile);
    Saver saver(root.Child(kProductions), productions);
    ThrowIfFailed(Writer(markup, saver).Visit(node, 0));
    saver.Finish();
}

void ReserveOwners(const XmlElement& root)
{
    for (const XmlElement& productions : root.Children(kProductions)) {
        for (XmlView entry = productions.View().FirstChild(); entry; entry = entry.Next()) {
            if (const auto key = KeyOf(entry)) PassOverID(key->ownerID);
        }
    }
}

void LoadProductions(IKVProjectData& project, const XmlElement& root)
{
    const auto storyboards = Query<IProjectStoryboards>(&project);
    const XmlElement productions = root.Child(kProductions);
    if (!storyboards || !productions) return;
    try {
        if (productions.View().FirstChild()) {
            storyboards->LeaveStep();
            Loader(storyboards->Node(), productions).Run();
            kEngine.Checked(Guarded([&] { return storyboards->JoinStep(); }), "JoinStep()");
        }
        TranslateKept(productions, &FilePlace::Read);
        const std::vector<XmlElement> all = root.Children(kProductions);
        const bool isEmpty = all.size() == 1 && !productions.View().FirstChild() && AttributeCount(productions) == 0;
        XmlElement kept = isEmpty ? XmlElement() : XmlElement::New(root.Name());
        if (kept) {
            for (const XmlElement& each : all)
                kept.AddCopy(each);
        }
        // Whoever saves meanwhile reads what is kept: it is handed over when it does not change any more.
        storyboards->KeepProductions(std::move(kept));
    } catch (...) {
        // What was not taken out of it stays, whatever happened on the way.
        storyboards->KeepProductions(root);
        throw;
    }
}

} // namespace kv
