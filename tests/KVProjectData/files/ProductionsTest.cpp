#include "support/Productions.h"
#include "KVProjectData/Engine.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/com/ConnectionPoint.h"
#include "platform/system/ErrorReporter.h"
#include "platform/xml/Element.h"
#include "support/Host.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ctime>
#include <functional>

namespace kv::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What the engine fails at.
enum class Fault { None, Create, Initialise, Offer, Load, Connect, Save };

struct EngineState {
    Fault fault = Fault::None;
    bool offersMarkup = false;
    int open = 0;
};

/// A production that holds sources.
class SmallProduction final
    : public Object<BareProduction, IZXEProductionPersist, IZXEProductionMarkup, ConnectionPointContainer> {
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
            SafeArrayPutElement(*list, &i, Bstr(ToUtf16(sources[i])).Get());
        return S_OK;
    }
    HRESULT Save(IXMLDOMElement* place, IZXEContentPaths*) override
    {
        if (m_engine.fault == Fault::Save) return E_ACCESSDENIED;
        for (const std::string& source : sources)
            XmlElement(place).Add("Panel").SetAttribute("source", source);
        return S_OK;
    }
    HRESULT SaveMarkup(IXMLDOMElement* place, IZXEContentPaths* paths, ZXEMarkupTarget* target) override
    {
        const XmlElement copy = XmlElement(place).Copy();
        const HRESULT saved = Save(copy.Element().Get(), paths);
        if (SUCCEEDED(saved)) target->Take(copy.View().CompactMarkup());
        return saved;
    }
    HRESULT Load(IXMLDOMElement* place, IZXEContentPaths*) override
    {
        if (m_engine.fault == Fault::Load || XmlElement(place).HasAttribute("odd")) return ZXE_E_NOT_PRODUCTION;
        sources.clear();
        for (const XmlElement& panel : XmlElement(place).Children("Panel"))
            sources.emplace_back(panel.Attribute("source"));
        return S_OK;
    }
    HRESULT FindConnectionPoint(REFIID iid, IConnectionPoint** point) override
    {
        return m_engine.fault == Fault::Connect ? E_FAIL : ConnectionPointContainer::FindConnectionPoint(iid, point);
    }

    std::vector<std::string> sources;

protected:
    HRESULT FindInterface(REFIID iid, void** out) override
    {
        const bool hidesAll = m_engine.fault == Fault::Offer;
        const bool isHidden = (iid == IZXEProductionPersist::IID && hidesAll) ||
                              (iid == IZXEProductionMarkup::IID && (hidesAll || !m_engine.offersMarkup));
        return isHidden ? E_NOINTERFACE : Object::FindInterface(iid, out);
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

std::string Storyboard(const std::string& source)
{
    return "<Storyboard><Panel source=\"" + source + "\"/></Storyboard>";
}

std::string Entry(int owner, const std::string& content, const std::string& more = {})
{
    return "<Production ownerID=\"" + std::to_string(owner) + "\" name=\"Storyboard\"" + more + ">" + content +
           "</Production>";
}

std::string Within(const std::string& entries)
{
    return "<Productions>" + entries + "</Productions>";
}

const std::string kSea = Storyboard("sea.mpg");
const std::string kSky = Storyboard("sky.mpg");
const std::string kTwoTitles = "<Title ID='5'/><Title ID='6'/>";

/// Project files whose productions are of a small engine, which may save them as markup.
class ProductionsTest : public testing::TestWithParam<bool> {
protected:
    ProductionsTest()
    {
        engine.offersMarkup = GetParam();
        RegisterServers();
        EXPECT_EQ(S_OK, CoRegisterClassObject(CLSID_ZXEProduction, Make<SmallEngine>(engine).Get(),
                                              CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie));
    }
    ~ProductionsTest() override { CoRevokeClassObject(cookie); }

    HRESULT Load() { return files->LoadProject(folder.File("p.xml").Get(), project.Get()); }
    HRESULT Save() { return files->SaveProject(folder.File("p.xml").Get(), project.Get()); }
    /// Writes a file and loads it.
    HRESULT Load(const std::string& productions, const std::string& titles = kTwoTitles)
    {
        folder.Write("p.xml", "<Root><Project Version='900'><Titles>" + titles + "</Titles></Project>" + productions +
                                  "</Root>");
        return Load();
    }
    /// The productions of the saved file.
    std::string Saved()
    {
        EXPECT_EQ(S_OK, Save());
        const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
        VARIANT_BOOL parsed = VARIANT_FALSE;
        EXPECT_EQ(S_OK, document->load(Variant(folder.File("p.xml").View()), &parsed));
        ComPtr<IXMLDOMElement> root;
        document->get_documentElement(root.Put());
        std::string text;
        for (const XmlElement& productions : XmlElement(root.Get()).Children("Productions"))
            text += productions.View().CompactMarkup();
        return text;
    }
    ComPtr<IKVTitle> Title(LONG position)
    {
        ComPtr<IKVTitle> title;
        EXPECT_EQ(S_OK, project->GetTitle(position, title.Put()));
        return title;
    }
    /// What the title at a position shows first.
    std::string Source(LONG position)
    {
        Bstr source;
        EXPECT_EQ(S_OK, Title(position)->GetSourceFromProd(source.Put()));
        return ToUtf8(source.View());
    }
    void Show(LONG position, const char* source)
    {
        const auto production = Make<SmallProduction>(engine);
        production->sources.emplace_back(source);
        EXPECT_EQ(S_OK, Title(position)->SetProduction(Query<IUnknown>(production).Get()));
    }

    TemporaryFolder folder;
    EngineState engine;
    ULONG cookie = 0;
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVFileService> files = Create<IKVFileService>(CLSID_KVFileService);
};

INSTANTIATE_TEST_SUITE_P(Engines, ProductionsTest, testing::Bool());

TEST_P(ProductionsTest, TitlesHaveTheirProductionsAgainAndNobodyIsTold)
{
    const auto sink = Make<RecordingSink>();
    const Connection connection(*project, *sink);
    const std::string productions = Within(Entry(5, kSea) + Entry(6, "<Storyboard/>"));
    ASSERT_EQ(S_OK, Load(productions));
    EXPECT_EQ(2, engine.open);
    EXPECT_EQ("sea.mpg", Source(1));
    EXPECT_EQ(productions, Saved());
    for (const ReceivedEvent& event : Delivered(*project, *sink))
        EXPECT_TRUE(event.id != EVENT_TitlePropChanged && event.id != EVENT_TitleProductionEvent);
    project->Clear();
    EXPECT_EQ(0, engine.open);
}

TEST_P(ProductionsTest, WhatCannotBeLoadedIsToldKeptAndLoadedLater)
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
        EXPECT_EQ("", Source(1)) << "made when it is asked for; what is kept does not give way to it";
        EXPECT_EQ(productions, Saved()) << told;
        EXPECT_EQ(S_OK, Load()) << told;
        EXPECT_EQ("sea.mpg sky.mpg", Source(1) + " " + Source(2)) << told;
        EXPECT_EQ(productions, Saved()) << told;
    }
}

TEST_P(ProductionsTest, WhatTheLibraryDidNotWriteSurvives)
{
    for (const std::string& productions :
         {std::string("<Productions by=\"host\"/>"), Within("<!--a note--><Host><Storyboard a=\"1\"/></Host>text"),
          Within("<Production/>"),
          Within("<Production ownerID=\"five\" name=\"Storyboard\"><Storyboard/></Production>"), Within(Entry(7, kSea)),
          Within(Entry(-5, kSea)), Within(Entry(2147483647, kSea)),
          Within("<Production ownerID=\"5\" name=\"Background\">" + kSea + "</Production>"),
          Within(Entry(5, "<Other/>")), Within(Entry(5, "<Storyboard odd=\"1\">" + kSea + "</Storyboard>")),
          Within(Entry(5, kSea + "<Chapters n=\"2\"/><!--and a note-->", " author=\"me\"")),
          Within(Entry(5, kSea) + Entry(5, kSky)), Within(Entry(5, kSea)) + Within(Entry(7, kSky) + "text"),
          std::string("<Productions/><Productions by=\"host\"/>"),
          Within(Entry(5, kSea) + "<Production name=\"Storyboard\">" + kSea + "</Production>" + Entry(6, kSky))}) {
        ASSERT_EQ(S_OK, Load(productions)) << productions;
        const std::string saved = Saved();
        EXPECT_EQ(productions.size(), saved.size()) << productions << "\n" << saved;
        EXPECT_EQ(S_OK, Load()) << productions;
        EXPECT_EQ(saved, Saved()) << "the order settles";
        EXPECT_EQ(S_OK, project->TakeUndoSnapshot(nullptr));
        EXPECT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(saved, Saved()) << "undone";
    }
    ComPtr<IKVTitle> title;
    project->AddTitle(0, title.Put());
    EXPECT_LT(7, ValueOf(*title, &IKVTitle::get_ID)) << "no title becomes the owner of what was kept";
    EXPECT_GT(1'000'000'000, ValueOf(*title, &IKVTitle::get_ID));

    const std::vector<std::function<HRESULT()>> others{
        [&] { return project->loadXML(ParseXml(u"<Root><Project/></Root>").Get()); }, [&] { return project->Clear(); },
        [&] { return Load(""); }};
    for (const auto& other : others) {
        ASSERT_EQ(S_OK, Load(Within(Entry(7, kSea))));
        EXPECT_EQ(S_OK, other());
        EXPECT_EQ("<Productions/>", Saved()) << "another project";
    }
}

TEST_P(ProductionsTest, SeveralForOneOwnerFindTheirPlace)
{
    const std::string odd = Entry(5, "<Storyboard odd=\"1\"/>");
    ASSERT_EQ(S_OK, Load(Within(odd)));
    Show(1, "new.mpg");
    EXPECT_EQ(Within(Entry(5, Storyboard("new.mpg")) + odd), Saved()) << "what was kept stands behind";
    EXPECT_EQ(S_OK, Load());
    EXPECT_EQ("new.mpg", Source(1));

    ASSERT_EQ(S_OK, Load(Within(Entry(5, kSea) + Entry(5, kSky) + Entry(5, kSea)), "<Title ID='5'/><Title ID='5'/>"));
    EXPECT_EQ("sea.mpg sky.mpg", Source(1) + " " + Source(2)) << "titles of one ID have their own";
}

TEST_P(ProductionsTest, TitlesOfOneIdKeepTheirOwn)
{
    const std::string none = "<Production ownerID=\"5\" name=\"Storyboard\"/>";
    const std::string odd = Entry(5, "<Storyboard odd=\"1\"/>");
    const std::string note = Entry(5, kSky + "<Note/>");
    for (const auto& [productions, sources] : {std::pair{Entry(5, kSea) + note, "sea.mpg sky.mpg "},
                                               {none + note + Entry(6, kSea), " sky.mpg sea.mpg"},
                                               {none + none, "  "},
                                               {odd + note + odd, " sky.mpg "},
                                               {odd + Entry(5, kSea) + Entry(5, kSky), "sky.mpg sea.mpg "}}) {
        ASSERT_EQ(S_OK, Load(Within(productions), "<Title ID='5'/><Title ID='5'/><Title ID='6'/>"));
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(sources, Source(1) + " " + Source(2) + " " + Source(3)) << productions << i;
            EXPECT_EQ(Within(productions).size(), Saved().size()) << productions << Saved();
            ASSERT_EQ(S_OK, Load());
        }
    }
    ASSERT_EQ(S_OK, Load("", "<Title ID='5'/><Title ID='5'/><Title ID='5'/><Title ID='5'/>"));
    Show(3, "new.mpg");
    EXPECT_EQ("", Source(1)) << "looked at";
    EXPECT_EQ(Within(none + none + Entry(5, Storyboard("new.mpg"))), Saved());
    ASSERT_EQ(S_OK, Load());
    EXPECT_EQ("new.mpg", Source(3));
}

TEST_P(ProductionsTest, WhatLoadingTellsStandsTogether)
{
    engine.fault = Fault::Load;
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(S_OK, Load(Within(Entry(5, kSea)), "<Title ID='5' colour='red'/>"));
        EXPECT_THAT(ZXUErrorStack(), ElementsAre(HasSubstr("/Title/@colour"), HasSubstr("0xC2000019 = Load()")));
    }
}

TEST_P(ProductionsTest, ASaveThatTheEngineFailsLeavesTheFile)
{
    ASSERT_EQ(S_OK, Load(Within(Entry(5, kSea))));
    const std::string saved = Saved();
    const std::string before = folder.Read("p.xml");
    project->put_Label(Str(u"changed").Get());
    engine.fault = Fault::Save;
    EXPECT_EQ(E_ACCESSDENIED, Save());
    EXPECT_THAT(ZXUErrorStack(), ElementsAre(HasSubstr("0x80070005 = Save")));
    EXPECT_EQ(before, folder.Read("p.xml"));
    engine.fault = Fault::Offer;
    EXPECT_EQ(S_OK, Save()) << "of another make, which is the host's to save";
    EXPECT_THAT(ZXUErrorStack(), ElementsAre(HasSubstr("0x80004002 = Query<IZXEProductionPersist>")));
    engine.fault = Fault::None;
    EXPECT_EQ(saved, Saved());
    EXPECT_THAT(ZXUErrorStack(), IsEmpty());
}

TEST_P(ProductionsTest, ManyAndDeepOnesTakeTheirTimeAlone)
{
    std::string many;
    std::string titles = kTwoTitles;
    for (int i = 0; i < 100'000; ++i) {
        many += Entry(i % 3 == 0 ? 5 : 1000 + i, i % 2 ? kSea : "");
        if (i < 10'000) titles += "<Title ID='5'/>";
    }
    const std::clock_t start = std::clock();
    ASSERT_EQ(S_OK, Load(Within(many), titles));
    ASSERT_EQ(S_OK, Save());
    ASSERT_EQ(S_OK, Load());
    EXPECT_LT(std::clock() - start, 20 * CLOCKS_PER_SEC);
    EXPECT_EQ("sea.mpg", Source(1));

    const auto nested = [](int levels) {
        std::string text = "x";
        for (int i = 0; i < levels; ++i)
            text = "<a>" + text + "</a>";
        return Within(Entry(5, text));
    };
    EXPECT_EQ(KV_E_FILE_DOES_NOT_PARSE, Load(nested(300)));
    for (const int levels : {100, 252, 253}) {
        ASSERT_EQ(S_OK, Load(nested(levels))) << levels;
        EXPECT_EQ(nested(levels).size(), Saved().size()) << levels;
    }
}

} // namespace
} // namespace kv::test
