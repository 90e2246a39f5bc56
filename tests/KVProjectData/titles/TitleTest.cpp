#include "KVProjectData/Engine.h"
#include "platform/system/ErrorReporter.h"
#include "support/Contents.h"
#include "support/Productions.h"
#include "support/Script.h"

#include <gmock/gmock.h>

#include <limits>

namespace kv::test {
namespace {

class TitleTest : public testing::Test {
protected:
    LONG ID() { return IdOf(title); }
    std::vector<ReceivedEvent> Events() { return Delivered(*project, *sink); }
    ComPtr<IUnknown> Production()
    {
        ComPtr<IUnknown> production;
        EXPECT_EQ(S_OK, title->GetProduction(production.Put()));
        return production;
    }
    ComPtr<IProductionInfo> Info()
    {
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(Production())->GetProductionObj(object.Put()));
        return Query<IProductionInfo>(object);
    }
    double Ratio() { return ValueOf(*Info().Get(), &IProductionInfo::get_AspectRatio); }
    /// Appends a clip to what the title shows.
    void AddSource(std::u16string_view name)
    {
        ASSERT_EQ(S_OK, Query<IEditData>(Production())->AddSourceFile(0, Str(name).Get(), 0, 0, -1, nullptr));
    }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title = AddTitle(*project.Get());
    ComPtr<RecordingSink> sink = Make<RecordingSink>();
    Connection connection{*project, *sink};
};

TEST_F(TitleTest, StartsWithItsDefaults)
{
    EXPECT_EQ("Tag=1 Source=<null> StillWaitTime=5 Flags=0 IsDirty=0 DiscIndex=0 Label=<null> VOBDuration=0 VOBSize=0 "
              "IsResolved=0 ",
              ScriptHost(title.Get()).Properties<IKVTitle>({"ID"}));
    ComPtr<IKVProjectData> owner;
    EXPECT_EQ(S_OK, title->GetProject(owner.Put()));
    EXPECT_EQ(project, owner);
    EXPECT_EQ(E_POINTER, title->GetProject(nullptr));
    EXPECT_EQ(E_POINTER, title->get_Tag(nullptr));
    EXPECT_EQ(E_POINTER, title->GetProduction(nullptr));
    EXPECT_EQ(E_POINTER, title->GetSourceFromProd(nullptr));
}

TEST_F(TitleTest, SettersValidateStoreAndTell)
{
    Events();
    project->ClearDirtyFlag();
    Events();
    for (const HRESULT refused : {title->put_StillWaitTime(-1), title->put_DiscIndex(-1),
                                  title->put_VOBSize(std::numeric_limits<double>::infinity()),
                                  title->put_VOBSize(std::numeric_limits<double>::quiet_NaN())})
        EXPECT_EQ(E_INVALIDARG, refused);
    for (const HRESULT put : {title->put_Source(Str(u"s").Get()), title->put_DiscIndex(3), title->put_IsResolved(1)})
        EXPECT_EQ(S_OK, put);
    EXPECT_TRUE(Events().empty()) << "neither told nor recorded";

    for (const HRESULT put : {title->put_Label(Str(u"L").Get()), title->put_VOBDuration(9), title->put_VOBSize(2.5)})
        EXPECT_EQ(S_OK, put);
    EXPECT_EQ((std::vector{Event(EVENT_VolumePropChanged, {11})}), Events()) << "recorded, not told";

    for (const HRESULT put :
         {title->put_Tag(2), title->put_Flags(4), title->put_StillWaitTime(0), title->put_IsDirty(VARIANT_FALSE)})
        EXPECT_EQ(S_OK, put);
    EXPECT_EQ((std::vector{Event(EVENT_TitlePropChanged, {ID(), 2}), Event(EVENT_TitlePropChanged, {ID(), 3}),
                           Event(EVENT_TitlePropChanged, {ID(), 202}), Event(EVENT_TitlePropChanged, {ID(), 11})}),
              Events());
    EXPECT_EQ("Tag=2 Source=s StillWaitTime=0 Flags=4 IsDirty=0 DiscIndex=3 Label=L VOBDuration=9 VOBSize=2.5 "
              "IsResolved=-1 ",
              ScriptHost(title.Get()).Properties<IKVTitle>({"ID"}));
}

TEST_F(TitleTest, CreatesItsProductionOnce)
{
    const auto stereoscopic = [&] {
        return ValueOf(*Info().Get(), &IProductionInfo::get_Stereoscopic) == VARIANT_TRUE;
    };
    Query<IKVEncodingParams>(title)->put_AspectRatio(AspectRatio_16x9);
    const auto production = Production();
    EXPECT_EQ(production, Production());
    EXPECT_DOUBLE_EQ(16.0 / 9.0, Ratio());
    EXPECT_FALSE(stereoscopic());
    project->put_DiscVideoType(Anaglyph_3D);
    title = AddTitle(*project.Get());
    EXPECT_DOUBLE_EQ(4.0 / 3.0, Ratio());
    EXPECT_TRUE(stereoscopic());
}

TEST_F(TitleTest, SharesItsAspectRatioWithTheProduction)
{
    const auto encoding = Query<IKVEncodingParams>(title);
    const auto info = Info();
    Events();
    EXPECT_EQ(S_OK, info->put_AspectRatio(1.78));
    EXPECT_EQ(AspectRatio_16x9, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio));
    EXPECT_EQ(S_OK, info->put_AspectRatio(1.77));
    EXPECT_EQ(AspectRatio_4x3, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio));
    Events();
    EXPECT_EQ(S_OK, encoding->put_AspectRatio(AspectRatio_4x3));
    EXPECT_TRUE(Events().empty()) << "no change";
    EXPECT_EQ(S_OK, encoding->put_AspectRatio(AspectRatio_16x9));
    EXPECT_DOUBLE_EQ(16.0 / 9.0, Ratio());
    EXPECT_EQ((std::vector{Event(EVENT_TitleProductionEvent, {ID(), 9, 0}),
                           Event(EVENT_TitleEncodingParamChanged, {ID(), 101})}),
              Events());
}

TEST_F(TitleTest, PassesOnWhatTheProductionTells)
{
    const auto notify = Query<IZXEProductionNotify>(Production());
    Events();
    std::vector<ReceivedEvent> expected;
    for (LONG position = 0; position < static_cast<LONG>(ZXE_EVENT_COUNT); ++position) {
        EXPECT_EQ(S_OK, notify->Notify(static_cast<ULONG>(position), 70 + position, 0));
        if (position <= 5 || position == 11 || position == 18) {
            expected.push_back(Event(EVENT_TitleProductionEvent, {ID(), position, 70 + position}));
        } else if (position >= 8 && position <= 10) {
            expected.push_back(Event(EVENT_TitleProductionEvent, {ID(), position, 0}));
        }
    }
    EXPECT_EQ(expected, Events());
}

TEST_F(TitleTest, ReplacesItsProduction)
{
    EXPECT_EQ(E_POINTER, title->SetProduction(nullptr));
    EXPECT_EQ(E_INVALIDARG, title->SetProduction(title.Get())) << "would never end";
    EXPECT_EQ(E_INVALIDARG, title->SetProduction(project.Get()));
    const auto old = Production();
    const auto next = Create<IZXEProductionData>(CLSID_ZXEProduction);
    ASSERT_EQ(S_OK, next->Initialise());
    Events();
    EXPECT_EQ(S_OK, title->SetProduction(next.Get()));
    EXPECT_EQ(Query<IUnknown>(next), Production());
    EXPECT_EQ((std::vector{Event(EVENT_TitlePropChanged, {ID(), 203})}), Events());
    EXPECT_EQ(ZXE_E_NOT_OPEN, Query<IZXEProductionData>(old)->OpenUndoBlock()) << "the old one is closed";
    Query<IZXEProductionNotify>(old)->Notify(0, 1, 0);
    EXPECT_TRUE(Events().empty()) << "the old one is not heard any more";
    EXPECT_EQ(S_OK, title->SetProduction(next.Get())) << "the one that is held";
    EXPECT_EQ(S_OK, next->OpenUndoBlock()) << "stays in use";
    EXPECT_EQ(S_OK, next->CloseUndoBlock(VARIANT_TRUE));
    Query<IZXEProductionNotify>(next)->Notify(0, 1, 0);
    EXPECT_EQ(Event(EVENT_TitleProductionEvent, {ID(), 0, 1}), Events().back());
}

TEST_F(TitleTest, ADetachedTitleStaysUsableAndIsNotKeptAliveByItsProduction)
{
    const auto production = Production();
    ASSERT_EQ(S_OK, project->RemoveTitle(ID(), nullptr));
    // The worker holds a first title while it looks at its clip.
    Events();
    EXPECT_EQ(S_OK, title->put_Tag(2));
    EXPECT_EQ(2u, ValueOf(*title.Get(), &IKVTitle::get_Tag));
    EXPECT_EQ(KV_E_CANNOT_FOLLOW_PROJECT, Query<IKVEncodingParams>(title)->put_SyncToProject(VARIANT_TRUE));
    EXPECT_TRUE(Events().empty());
    title.Reset();
    // The title closed the production and left it when it went.
    EXPECT_EQ(ZXE_E_NOT_OPEN, Query<IZXEProductionData>(production)->OpenUndoBlock());
    EXPECT_EQ(S_OK, Query<IZXEProductionNotify>(production)->Notify(0, 1, 0));
}

TEST_F(TitleTest, TakesItsSourceFromTheProduction)
{
    BSTR untouched = nullptr;
    EXPECT_EQ(S_OK, title->GetSourceFromProd(&untouched));
    EXPECT_EQ(nullptr, untouched);
    AddSource(u"first.mpg");
    AddSource(u"second.mpg");
    EXPECT_EQ(u"first.mpg", Text(*title.Get(), &IKVTitle::GetSourceFromProd));
}

/// A production without a connection point, whose list of sources is what a test says.
class OddProduction final : public Object<BareProduction> {
public:
    explicit OddProduction(VARTYPE sources) : m_sources(sources) {}

    HRESULT GetSourceList(LONG, LONG, LONG, SAFEARRAY** sources) override
    {
        *sources = SafeArrayCreateVector(m_sources, 0, 1);
        return *sources ? S_OK : E_FAIL;
    }

private:
    const VARTYPE m_sources;
};

TEST_F(TitleTest, ReportsWhatTheEngineFails)
{
    const auto reported = [](std::string_view end, const char* source = "KVTitle(") {
        return testing::ElementsAre(
            testing::AllOf(testing::StartsWith(source), testing::EndsWith("): *** Error " + std::string(end) + "\n")));
    };
    title->GetProduction(nullptr);
    EXPECT_THAT(ZXUErrorStack(), reported("NULL = ppProduction"));
    for (const auto& [type, result] : {std::pair{VT_I4, S_OK}, {VT_UNKNOWN, S_OK}, {VT_EMPTY, E_FAIL}}) {
        const auto odd = Make<OddProduction>(static_cast<VARTYPE>(type));
        EXPECT_EQ(E_NOINTERFACE, title->SetProduction(odd.Get()));
        EXPECT_THAT(ZXUErrorStack(), reported("0x80004002 = Query<IConnectionPointContainer>"));
        EXPECT_EQ(Query<IUnknown>(odd.Get()), Production()) << "kept without its events";
        BSTR source = nullptr;
        EXPECT_EQ(result, title->GetSourceFromProd(&source));
        EXPECT_EQ(nullptr, source) << "no strings, no source";
        EXPECT_EQ(FAILED(result) ? 1u : 0u, ZXUErrorStack().size());
    }
    EXPECT_THAT(ZXUErrorStack(), reported("0x80004005 = GetSourceList()"));
    EXPECT_TRUE(IsDirty(*project.Get()));
    EXPECT_THAT(ZXUErrorStack(), reported("0x80004001 = get_Flags()", "KVProjectData("));
    EXPECT_EQ(S_OK, project->ClearDirtyFlag());
    EXPECT_THAT(ZXUErrorStack(), testing::IsEmpty());
    EXPECT_EQ(E_POINTER, project->BeginStoryboardUndo(nullptr, 1));
    EXPECT_THAT(ZXUErrorStack(), reported("NULL = pUnkSbd", "KVProjectData("));
}

TEST_F(TitleTest, AModifiedProductionMakesTheProjectDirty)
{
    AddSource(u"a.mpg");
    project->ClearDirtyFlag();
    EXPECT_FALSE(IsDirty(*project.Get())) << "cleared in the production, too";
    AddSource(u"b.mpg");
    EXPECT_TRUE(IsDirty(*project.Get()));
    title->put_Tag(TitleType_Private);
    project->ClearDirtyFlag();
    AddSource(u"c.mpg");
    EXPECT_FALSE(IsDirty(*project.Get())) << "private titles are not asked";
}

TEST_F(TitleTest, DataFilesNameExistingSources)
{
    TemporaryFolder folder;
    folder.Write("a.txt", "x");
    const auto file = AddDataFile(*project.Get());
    Events();
    for (const Bstr& missing : {Bstr(), Bstr(u""), folder.File("b.txt")})
        EXPECT_EQ(KV_E_NO_SOURCE_FILE, file->put_SourcePath(missing.Get()));
    EXPECT_EQ(u"<null>", Text(*file.Get(), &IKVDataFile::get_SourcePath));
    EXPECT_TRUE(Events().empty());
    const LONG id = IdOf(file);
    EXPECT_EQ(S_OK, file->put_SourcePath(folder.File("a.txt").Get()));
    EXPECT_EQ(S_OK, file->put_SourcePath(Bstr(folder.Path().u16string()).Get())) << "a folder will do";
    EXPECT_EQ(S_OK, file->put_DestPath(nullptr));
    EXPECT_EQ(S_OK, file->put_Tag(7));
    EXPECT_EQ((std::vector{Event(EVENT_DataFilePropChanged, {id, 400}), Event(EVENT_DataFilePropChanged, {id, 400}),
                           Event(EVENT_DataFilePropChanged, {id, 401}), Event(EVENT_DataFilePropChanged, {id, 2})}),
              Events());
}

} // namespace
} // namespace kv::test
