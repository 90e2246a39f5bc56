#include "support/Productions.h"
#include "KVProjectData/Engine.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/com/ConnectionPoint.h"
#include "platform/system/ErrorReporter.h"
#include "platform/system/Registry.h"
#include "platform/xml/Element.h"
#include "support/Host.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kv::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What the engine fails at.
enum class Fault { None, Create, Initialise, Offer, Load, Connect, Save };

struct EngineState {
    Fault fault = Fault::None;
    int open = 0;
};

/// A production that holds sources.
class SmallProduction final : public Object<BareProduction, IZXEProductionPersist, ConnectionPointContainer> {
public:
    explicit SmallProduction(EngineState& engine) : m_engine(engine) {}

    HRESULT Initialise() override
    {
        if (m_engine.fault == Fault::Initialise) return E_FAIL;
        m_engine.open += std::exchange(m_isOpen, true) ? 0 : 1;
        return S_OK;
    }
    HRESULT Close() override
    {
        m_engine.open -= std::exchange(m_isOpen, false) ? 1 : 0;
        return S_OK;
    }
    HRESULT GetSourceList(LONG, LONG, LONG, SAFEARRAY** list) override
    {
        *list = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(sources.size()));
        for (LONG i = 0; i < static_cast<LONG>(sources.size()); ++i)
            SafeArrayPutElement(*list, &i, sources[i].Get());
        return S_OK;
    }
    HRESULT Save(IXMLDOMElement* place, IZXEContentPaths* paths) override
    {
        if (m_engine.fault == Fault::Save) return E_ACCESSDENIED;
        XmlElement element(place);
        for (const Bstr& source : sources) {
            Bstr text;
            ThrowIfFailed(paths->ToDocument(source.Get(), text.Put()));
            element.Add("Panel").SetAttribute("source", ToUtf8(text.View()));
        }
        return S_OK;
    }
    HRESULT Load(IXMLDOMElement* place, IZXEContentPaths* paths) override
    {
        if (m_engine.fault == Fault::Load || XmlElement(place).HasAttribute("odd")) return ZXE_E_NOT_PRODUCTION;
        sources.clear();
        for (const XmlElement& panel : XmlElement(place).Children("Panel")) {
            Bstr path;
            ThrowIfFailed(paths->FromDocument(Bstr(ToUtf16(panel.Attribute("source"))).Get(), path.Put()));
            sources.push_back(std::move(path));
        }
        return S_OK;
    }
    HRESULT FindConnectionPoint(REFIID iid, IConnectionPoint** point) override
    {
        return m_engine.fault == Fault::Connect ? E_FAIL : ConnectionPointContainer::FindConnectionPoint(iid, point);
    }

    std::vector<Bstr> sources;

protected:
    HRESULT FindInterface(REFIID iid, void** out) override
    {
        if (iid == IZXEProductionPersist::IID && m_engine.fault == Fault::Offer) return E_NOINTERFACE;
        return Object::FindInterface(iid, out);
    }

private:
    EngineState& m_engine;
    bool m_isOpen = false;
    ConnectionPoint m_point{*this, IZXEProductionDataEvents::IID};
};

class SmallEngine final : public Object<IClassFactory> {
public:
    explicit SmallEngine(EngineState& state) : m_state(state) {}

    HRESULT CreateInstance(IUnknown*, REFIID iid, void** object) override
    {
        *object = nullptr;
        if (m_state.fault == Fault::Create) return CLASS_E_CLASSNOTAVAILABLE;
        return Make<SmallProduction>(m_state)->QueryInterface(iid, object);
    }
    HRESULT LockServer(BOOL) override { return S_OK; }

private:
    EngineState& m_state;
};

Bstr SourceOf(IKVTitle& title)
{
    Bstr source;
    EXPECT_EQ(S_OK, title.GetSourceFromProd(source.Put()));
    return source;
}

/// Project files whose productions are of a small engine.
class ProductionsTest : public testing::Test {
protected:
    ProductionsTest()
    {
        RegisterServers();
        EXPECT_EQ(S_OK, CoRegisterClassObject(CLSID_ZXEProduction, Make<SmallEngine>(engine).Get(),
                                              CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie));
    }
    ~ProductionsTest() override { CoRevokeClassObject(cookie); }

    ComPtr<IKVTitle> AddTitle(std::initializer_list<std::u16string_view> sources)
    {
        ComPtr<IKVTitle> title;
        EXPECT_EQ(S_OK, project->AddTitle(0, title.Put()));
        const auto production = Make<SmallProduction>(engine);
        production->Initialise();
        for (const std::u16string_view source : sources)
            production->sources.emplace_back(source);
        EXPECT_EQ(S_OK, title->SetProduction(Query<IUnknown>(production).Get()));
        return title;
    }
    ComPtr<IKVTitle> Title(LONG position)
    {
        ComPtr<IKVTitle> title;
        EXPECT_EQ(S_OK, project->GetTitle(position, title.Put()));
        return title;
    }

    HRESULT Save() { return files->SaveProject(folder.File("p.xml").Get(), project.Get()); }
    HRESULT Load() { return files->LoadProject(folder.File("p.xml").Get(), project.Get()); }
    /// Writes a file with two titles, 5 and 6, and loads it.
    HRESULT Load(std::string_view productions)
    {
        folder.Write("p.xml", "<Root><Project Version='900'><Titles><Title ID='5'/><Title ID='6'/></Titles></Project>" +
                                  std::string(productions) + "</Root>");
        return Load();
    }
    /// The productions of the saved file.
    std::string Saved()
    {
        EXPECT_EQ(S_OK, Save());
        const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
        VARIANT_BOOL parsed = VARIANT_FALSE;
        EXPECT_EQ(S_OK, document->load(Variant(folder.File("p.xml").View()), &parsed));
        ComPtr<IXMLDOMNode> productions;
        document->selectSingleNode(Str(u"/Root/Productions").Get(), productions.Put());
        return productions ? ToUtf8(XmlOf(*productions)) : "none";
    }

    static std::string Entry(int owner, std::string_view content, std::string_view more = {})
    {
        return "<Production ownerID=\"" + std::to_string(owner) + "\" name=\"Storyboard\"" + std::string(more) + ">" +
               std::string(content) + "</Production>";
    }
    static std::string Within(const std::string& entries) { return "<Productions>" + entries + "</Productions>"; }

    TemporaryFolder folder;
    EngineState engine;
    ULONG cookie = 0;
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVFileService> files = Create<IKVFileService>(CLSID_KVFileService);
};

const std::string kSea = "<Storyboard><Panel source=\"sea.mpg\"/></Storyboard>";
const std::string kSky = "<Storyboard><Panel source=\"sky.mpg\"/></Storyboard>";

TEST_F(ProductionsTest, TitlesHaveTheirProductionsAgain)
{
    const std::u16string content = (folder.Path() / "share" / "Content").u16string();
    std::filesystem::create_directories(content);
    constexpr std::u16string_view kKey = u"SOFTWARE\\KORVA\\ZENDA\\Zenda\\Paths";
    Registry::Set(Hive::LocalMachine, kKey, u"AlternateContent", content);
    files = Create<IKVFileService>(CLSID_KVFileService);

    AddTitle({content + u"/a.mpg", content + u"2/b.mpg", u"c.mpg"});
    project->AddTitle(0, nullptr);
    AddTitle({});
    const auto id = [&](LONG position) { return ValueOf(*Title(position), &IKVTitle::get_ID); };
    const std::string saved = Saved();
    EXPECT_EQ(Within(Entry(id(1), "<Storyboard><Panel source=\"%CONTENT%/a.mpg\"/><Panel source=\"" + ToUtf8(content) +
                                      "2/b.mpg\"/><Panel source=\"c.mpg\"/></Storyboard>") +
                     Entry(id(3), "<Storyboard/>")),
              saved);

    // Another installation.
    Registry::Set(Hive::LocalMachine, kKey, u"AlternateContent", folder.Path().u16string());
    files = Create<IKVFileService>(CLSID_KVFileService);
    const auto sink = Make<RecordingSink>();
    const Connection connection(*project, *sink);
    ASSERT_EQ(S_OK, Load());
    EXPECT_EQ(2, engine.open) << "of the titles that have one";
    EXPECT_EQ((folder.Path() / "a.mpg").u16string(), SourceOf(*Title(1)).View());
    for (const ReceivedEvent& event : Delivered(*project, *sink)) {
        EXPECT_NE(EVENT_TitlePropChanged, event.id);
        EXPECT_NE(EVENT_TitleProductionEvent, event.id);
    }
    project->Clear();
    EXPECT_EQ(0, engine.open);
    Registry::DeleteValue(Hive::LocalMachine, kKey, u"AlternateContent");
}

TEST_F(ProductionsTest, WhatCannotBeLoadedIsToldKeptAndLoadedLater)
{
    const std::string productions = Within(Entry(5, kSea) + Entry(6, kSky));
    for (const auto& [fault, told] : {std::pair{Fault::Create, "0x80040111 = CreateInstance(CLSID_ZXEProduction)"},
                                      {Fault::Initialise, "0x80004005 = Initialise()"},
                                      {Fault::Offer, "0x80004002 = Query<IZXEProductionPersist>"},
                                      {Fault::Load, "0xC2000019 = Load()"},
                                      {Fault::Connect, "0x80004005 = TakeProduction()"}}) {
        engine.fault = fault;
        EXPECT_EQ(S_OK, Load(productions)) << told;
        const std::string end = std::string(": *** Error ") + told + "\n";
        const auto isTold = [&](const std::string& line) {
            return line.starts_with("ProjectProductions(") && line.ends_with(end);
        };
        EXPECT_EQ(2, std::ranges::count_if(ZXUErrorStack(), isTold)) << told;
        EXPECT_EQ(0, engine.open) << told;
        EXPECT_EQ(productions, Saved()) << told;
        engine.fault = Fault::None;
        // Created when it is asked for; it holds nothing that the one that is kept would have to give way to.
        EXPECT_TRUE(SourceOf(*Title(1)).Empty()) << told;
        EXPECT_EQ(productions, Saved()) << told;
        EXPECT_EQ(S_OK, Load()) << told;
        EXPECT_EQ(u"sea.mpg", SourceOf(*Title(1)).View()) << told;
        EXPECT_EQ(u"sky.mpg", SourceOf(*Title(2)).View()) << told;
        EXPECT_EQ(productions, Saved()) << told;
    }
}

TEST_F(ProductionsTest, WhatTheLibraryDidNotWriteSurvives)
{
    constexpr std::string_view kOddID = "<Production ownerID=\"five\" name=\"Storyboard\"><Storyboard/></Production>";
    const std::vector<std::string> foreign{
        "<Productions by=\"host\"/>",
        Within("<!--a note--><Host><Storyboard a=\"1\"/></Host>text"),
        Within("<Production/>"),
        Within(std::string(kOddID)),
        Within(Entry(7, kSea)),
        Within(Entry(-5, kSea)),
        Within(Entry(2147483647, kSea)),
        Within("<Production ownerID=\"5\" name=\"Background\">" + kSea + "</Production>"),
        Within(Entry(5, "<Other/>")),
        Within(Entry(5, "<Storyboard odd=\"1\">" + kSea + "</Storyboard>")),
        Within(Entry(5, kSea + "<Chapters n=\"2\"/><!--and a note-->", " author=\"me\"")),
        Within(Entry(5, kSea) + Entry(5, kSky)),
        Within(Entry(5, kSea) + "<Production name=\"Storyboard\">" + kSea + "</Production>" + Entry(6, kSky)),
    };
    for (const std::string& productions : foreign) {
        ASSERT_EQ(S_OK, Load(productions)) << productions;
        const std::string saved = Saved();
        EXPECT_EQ(productions.size(), saved.size()) << productions << "\n" << saved;
        EXPECT_EQ(S_OK, Load()) << productions;
        EXPECT_EQ(saved, Saved()) << "the order settles";
        // An undo of everything brings a project that has these, too.
        EXPECT_EQ(S_OK, project->TakeUndoSnapshot(nullptr));
        EXPECT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(saved, Saved()) << "undone";
    }
    ComPtr<IKVTitle> title;
    project->AddTitle(0, title.Put());
    EXPECT_LT(7, ValueOf(*title, &IKVTitle::get_ID)) << "no title becomes the owner of what was kept";
    EXPECT_GT(1'000'000'000, ValueOf(*title, &IKVTitle::get_ID));

    const auto document = ParseXml(u"<Root><Project/></Root>");
    EXPECT_EQ(S_OK, project->loadXML(document.Get()));
    EXPECT_EQ("<Productions/>", Saved()) << "another project";
    ASSERT_EQ(S_OK, Load(Within(Entry(7, kSea))));
    EXPECT_EQ(S_OK, project->Clear());
    EXPECT_EQ("<Productions/>", Saved());
    ASSERT_EQ(S_OK, Load(Within(Entry(7, kSea))));
    ASSERT_EQ(S_OK, Load(""));
    EXPECT_EQ("<Productions/>", Saved());
}

TEST_F(ProductionsTest, WhatWasKeptStandsBehindWhatWasMadeSince)
{
    const std::string odd = Entry(5, "<Storyboard odd=\"1\"/>");
    ASSERT_EQ(S_OK, Load(Within(odd)));
    const auto production = Make<SmallProduction>(engine);
    production->sources.emplace_back(u"new.mpg");
    ASSERT_EQ(S_OK, Title(1)->SetProduction(Query<IUnknown>(production).Get()));
    const std::string made = Entry(5, "<Storyboard><Panel source=\"new.mpg\"/></Storyboard>");
    EXPECT_EQ(Within(made + odd), Saved());
    EXPECT_EQ(S_OK, Load());
    EXPECT_EQ(u"new.mpg", SourceOf(*Title(1)).View());
    EXPECT_EQ(Within(made + odd), Saved());
}

TEST_F(ProductionsTest, TitlesOfOneIDHaveTheirOwn)
{
    const std::string file = "<Root><Project Version='900'><Titles><Title ID='5'/><Title ID='5'/></Titles></Project>" +
                             Within(Entry(5, kSea) + Entry(5, kSky) + Entry(5, kSea)) + "</Root>";
    folder.Write("p.xml", file);
    ASSERT_EQ(S_OK, Load());
    EXPECT_EQ(u"sea.mpg", SourceOf(*Title(1)).View());
    EXPECT_EQ(u"sky.mpg", SourceOf(*Title(2)).View());
}

TEST_F(ProductionsTest, ASaveThatTheEngineFailsLeavesTheFile)
{
    AddTitle({u"a.mpg"});
    const std::string saved = Saved();
    const std::string before = folder.Read("p.xml");
    project->put_Label(Str(u"changed").Get());
    engine.fault = Fault::Save;
    EXPECT_EQ(E_ACCESSDENIED, Save());
    EXPECT_THAT(ZXUErrorStack(), ElementsAre(HasSubstr("0x80070005 = Save()")));
    EXPECT_EQ(before, folder.Read("p.xml"));
    engine.fault = Fault::Offer;
    EXPECT_EQ(S_OK, Save()) << "of another make, which is the host's to save";
    EXPECT_THAT(ZXUErrorStack(), ElementsAre(HasSubstr("0x80004002 = Query<IZXEProductionPersist>")));
    engine.fault = Fault::None;
    EXPECT_EQ(saved, Saved());
    EXPECT_THAT(ZXUErrorStack(), IsEmpty());
}

TEST_F(ProductionsTest, ManyAndDeepOnesTakeTheirTimeAlone)
{
    std::string many;
    for (int i = 0; i < 100'000; ++i)
        many += Entry(i % 3 == 0 ? 5 : 1000 + i, i % 2 ? kSea : "");
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(S_OK, Load(Within(many)));
    ASSERT_EQ(S_OK, Save());
    ASSERT_EQ(S_OK, Load());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_EQ(u"sea.mpg", SourceOf(*Title(1)).View());

    const auto nested = [](int levels) {
        std::string text = "x";
        for (int i = 0; i < levels; ++i)
            text = "<a>" + text + "</a>";
        return Within("<Production ownerID=\"5\" name=\"Storyboard\">" + text + "</Production>");
    };
    EXPECT_EQ(KV_E_FILE_DOES_NOT_PARSE, Load(nested(300)));
    for (const int levels : {100, 252, 253}) {
        ASSERT_EQ(S_OK, Load(nested(levels))) << levels;
        EXPECT_EQ(nested(levels).size(), Saved().size()) << levels;
    }
}

} // namespace
} // namespace kv::test
