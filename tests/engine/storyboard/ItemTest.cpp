#include "engine/storyboard/StoryboardSupport.h"

#include <cmath>
#include <limits>

namespace kv::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

class ItemTest : public StoryboardTest {};

TEST_F(ItemTest, AnEffectStandsOnItsLayerForTheFramesOfItsSpan)
{
    // Without a panel that shows video, a frame takes 1/29.97 s.
    const auto first = AddEffect(7);
    const auto second = AddEffect(7);
    const auto other = AddEffect(8, ZXE_EFFECT_TEXT);
    EXPECT_TRUE(IsSameObject(second.Get(), EffectAt(7, 100.0).Get())) << "the newest of those that start last";
    ASSERT_EQ(S_OK, Call(first, &ISubObject::put_StartOffset, 2.0));
    ASSERT_EQ(S_OK, Call(first, &ISubObject::put_EndOffset, 4.0));
    struct Case {
        double time;
        const ComPtr<IUnknown>& found;
    };
    const Case cases[] = {{0.0, second}, {1.95, second}, {1.99, first}, {2.0, first}, {4.003, first}, {4.1, second}};
    for (const Case& item : cases)
        EXPECT_TRUE(IsSameObject(item.found.Get(), EffectAt(7, item.time).Get())) << item.time;
    EXPECT_FALSE(EffectAt(-9, 0.0));
    ComPtr<IUnknown> effect;
    for (const double bad : {-1.0, kNaN, kInfinite})
        EXPECT_EQ(E_INVALIDARG, objects->GetEffect(7, bad, effect.Put()));

    // An end before the start shows nothing, and what starts later is found before it does.
    ASSERT_EQ(S_OK, Call(second, &ISubObject::put_StartOffset, 50.0));
    ASSERT_EQ(S_OK, Call(second, &ISubObject::put_EndOffset, 40.0));
    EXPECT_TRUE(IsSameObject(second.Get(), EffectAt(7, 45.0).Get()));
    EXPECT_FALSE(EffectAt(-7, 55.0));

    LONG index = 0;
    for (const auto& drawn : {first, second, other}) {
        EXPECT_EQ(S_OK, objects->GetObject(ZXE_KIND_EFFECT, index++, effect.Put()));
        EXPECT_TRUE(IsSameObject(drawn.Get(), effect.Get())) << index;
    }
    for (const LONG none : {-1, index})
        EXPECT_EQ(S_FALSE, objects->GetObject(ZXE_KIND_EFFECT, none, effect.Put()));

    const LONG id = Get(second, &IEffectInfo::get_EffectID);
    EXPECT_NE(id, Get(first, &IEffectInfo::get_EffectID));
    EXPECT_EQ(7, Get(second, &IEffectInfo::get_Layer));
    EXPECT_EQ(E_INVALIDARG, edit->DeleteProductionEffect(8, id));
    EXPECT_EQ(S_OK, edit->DeleteProductionEffect(7, id));
    EXPECT_EQ(E_INVALIDARG, edit->DeleteProductionEffect(7, id));
    EXPECT_EQ(ZXE_E_NOT_OPEN, Call(second, &IEffectInfo::SetGroupID, 1)) << "it was deleted";
    ComPtr<IUnknown> parent;
    EXPECT_EQ(S_OK, Call(second, &IParentProduction::get_ParentProduction, parent.Put()));
    EXPECT_TRUE(IsSameObject(production.Get(), parent.Get()));
}

TEST_F(ItemTest, AnItemAnswersForWhatItIs)
{
    struct Case {
        ComPtr<IUnknown> item;
        std::vector<GUID> yes;
        std::vector<GUID> no;
    };
    const Case cases[] = {
        {AddPanel(Bstr(u"moniker:a")),
         {ISourceFile::IID, IBaseObject::IID, INativeInfo::IID},
         {ISubObject::IID, IEffectInfo::IID}},
        {AddEffect(1),
         {IEffectInfo::IID, ISubObject::IID, IParentProduction::IID, ISourceFile::IID, INativeInfo::IID},
         {IAudioProps::IID}},
        {AddEffect(1, ZXE_EFFECT_TEXT),
         {IEffectInfo::IID, ISubObject::IID, IParentProduction::IID},
         {ISourceFile::IID, INativeInfo::IID}},
        {AddAudio(Bstr(u"C:\\a.wav")), {ISubObject::IID, IAudioProps::IID, ISourceFile::IID}, {ISmartAudio::IID}},
        {AddAudio(Bstr(u"title:3")), {ISubObject::IID, IAudioProps::IID, ISmartAudio::IID}, {ISourceFile::IID}},
    };
    const auto answers = [](const ComPtr<IUnknown>& item, REFIID iid) {
        ComPtr<IUnknown> found;
        return item->QueryInterface(iid, found.PutVoid()) == S_OK && IsSameObject(item.Get(), found.Get());
    };
    for (const Case& item : cases) {
        const auto index = &item - cases;
        for (const GUID& iid : item.yes)
            EXPECT_TRUE(answers(item.item, iid)) << index << " " << &iid - item.yes.data();
        for (const GUID& iid : item.no)
            EXPECT_FALSE(answers(item.item, iid)) << index << " " << &iid - item.no.data();
    }
    EXPECT_EQ(ZXE_KIND_MEDIA, Get(cases[1].item, &IEffectInfo::get_Kind));
    EXPECT_EQ(0, Get(cases[2].item, &IEffectInfo::get_Kind));
    EXPECT_EQ(u"title:3", Text(cases[4].item, &ISmartAudio::get_Moniker));
    EXPECT_EQ(E_INVALIDARG, Call(cases[3].item, &ISourceFile::put_FileName, Bstr(u"title:3").Get()));
}

TEST_F(ItemTest, ADocumentIsKeptItself)
{
    const auto first = Document("<a/>");
    const auto second = Document("<b/>");
    const auto effect = AddEffect(1, ZXE_EFFECT_TEXT, first);
    const auto live = [&] {
        ComPtr<IXMLDOMNode> document;
        EXPECT_EQ(S_OK, Call(effect, &IEffectInfo::GetParameterDocument, document.Put()));
        return document;
    };
    EXPECT_EQ(first, live());
    InBlock([&] {
        ASSERT_EQ(S_OK, Call(effect, &IEffectInfo::SetParameterDocument, Document("<c/>").Get(), VARIANT_TRUE));
        ASSERT_EQ(S_OK, Call(effect, &IEffectInfo::SetParameterDocument, second.Get(), VARIANT_FALSE));
    });
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(second, live());
        ASSERT_EQ(S_OK, production->Undo());
        EXPECT_EQ(first, live());
        ASSERT_EQ(S_OK, production->Redo());
    }

    std::string deep = "<a/>";
    for (int level = 0; level < 250; ++level)
        deep = "<a>" + deep + "</a>";
    ComPtr<IXMLDOMNode> text;
    XmlElement::Parse("<a>text</a>").Get()->get_firstChild(text.Put());
    EXPECT_EQ(E_POINTER, Call(effect, &IEffectInfo::SetParameterDocument, nullptr, VARIANT_TRUE));
    EXPECT_EQ(E_INVALIDARG, Call(effect, &IEffectInfo::SetParameterDocument, text.Get(), VARIANT_TRUE));
    EXPECT_EQ(E_INVALIDARG, Call(effect, &IEffectInfo::SetParameterDocument, Document(deep).Get(), VARIANT_TRUE));
    EXPECT_EQ(E_INVALIDARG, edit->AddProductionEffect(1, 0, text.Get(), nullptr, 0, 0.0, nullptr));
    EXPECT_EQ(second, live());

    ComPtr<IXMLDOMNode> none;
    EXPECT_EQ(S_FALSE, Call(AddEffect(2), &IEffectInfo::GetParameterDocument, none.Put()));
    EXPECT_FALSE(none);
}

TEST_F(ItemTest, AMaskIsSetEvenWhereItsFileCannotBeRead)
{
    const auto effect = AddEffect(1);
    const auto source = [&](HRESULT expected) {
        ComPtr<IUnknown> object;
        EXPECT_EQ(expected, Call(effect, &IEffectInfo::GetSourceObject, object.Put()));
        return object;
    };
    EXPECT_FALSE(source(S_FALSE));
    const auto set = [&](const Bstr& file, LONG kind) {
        return Call(effect, &IEffectInfo::SetMaskFile, file.Get(), kind);
    };
    EXPECT_EQ(E_INVALIDARG, set(Clips().File("still.png"), 3));
    EXPECT_EQ(ZXE_E_MASK_NOT_READ, set(Bstr(u"/no/such/file"), ZXE_MASK_ALPHA));
    EXPECT_EQ(u"/no/such/file", Text(effect, &IEffectInfo::get_MaskFile));
    EXPECT_EQ(ZXE_E_MASK_NOT_READ, set(Clips().File("sound.wav"), ZXE_MASK_ALPHA));
    EXPECT_EQ(S_OK, set(Clips().File("still.png"), ZXE_MASK_ALPHA));
    const auto mask = source(S_OK);
    EXPECT_TRUE(IsSameObject(mask.Get(), source(S_OK).Get()));
    EXPECT_FALSE(IsSameObject(mask.Get(), effect.Get()));
    EXPECT_EQ(Clips().File("still.png").View(), Text(mask, &ISourceFile::get_FileName));
    EXPECT_NEAR(4.0 / 3.0, Get(mask, &ISourceFile::get_AspectRatio), 1e-6);
    EXPECT_EQ(u"", Text(effect, &ISourceFile::get_FileName)) << "the mask is not the source";
    EXPECT_EQ(S_OK, set(Bstr(), ZXE_MASK_ALPHA));
    EXPECT_FALSE(source(S_FALSE));
}

TEST_F(ItemTest, APanelPlaysBetweenItsPoints)
{
    const auto clip = AddPanel(Clips().File("sound.wav"));
    const double length = Get(clip, &ISourceFile::get_Length);
    EXPECT_NEAR(2.0, length, 0.1);
    EXPECT_EQ(length, Get(clip, &IBaseObject::get_Duration));
    EXPECT_EQ(E_NOTIMPL, Call(clip, &IBaseObject::put_Duration, 1.0));
    EXPECT_EQ(E_FAIL, Call(clip, &ISourceFile::put_OutPoint, length + 1.0));
    EXPECT_EQ(E_FAIL, Call(clip, &ISourceFile::put_InPoint, length + 1.0));
    EXPECT_EQ(S_OK, Call(clip, &ISourceFile::put_OutPoint, 1.5));
    EXPECT_EQ(S_OK, Call(clip, &ISourceFile::put_InPoint, 0.5));
    EXPECT_EQ(1.0, Get(clip, &IBaseObject::get_Duration));
    EXPECT_EQ(S_OK, Call(clip, &ISourceFile::put_InPoint, 1.75));
    EXPECT_EQ(0.0, Get(clip, &IBaseObject::get_Duration));
    EXPECT_EQ(S_OK, Call(clip, &ISourceFile::put_OutPoint, 0.0));
    EXPECT_EQ(length, Get(clip, &ISourceFile::get_OutPoint)) << "0 takes the out point away";

    const auto still = AddPanel(Clips().File("still.png"));
    EXPECT_EQ(0.0, Get(still, &IBaseObject::get_Duration));
    EXPECT_EQ(S_OK, Call(still, &IBaseObject::put_Duration, 12.5));
    EXPECT_EQ(12.5, Get(still, &IBaseObject::get_Duration));
    EXPECT_EQ(S_OK, Call(still, &ISourceFile::put_FileName, Clips().File("pal.mpg").Get()));
    EXPECT_NEAR(1.0, Get(still, &ISourceFile::get_Length), 0.1);
    EXPECT_NEAR(25.0, Get(ComPtr<IUnknown>(production), &IProductionInfo::get_EditingFrameRate), 0.001);

    EXPECT_EQ(S_OK, Call(still, &ISourceFile::put_Repeat, VARIANT_BOOL{1}));
    EXPECT_EQ(VARIANT_TRUE, Get(still, &ISourceFile::get_Repeat));
    EXPECT_EQ(S_OK, Call(still, &ISourceFile::put_Rotation, -450));
    EXPECT_EQ(-450, Get(still, &ISourceFile::get_Rotation));
    const auto panZoom = XmlElement::New("ZXFPanZoom");
    EXPECT_EQ(S_OK, Call(still, &ISourceFile::SetPanZoom, panZoom.Get()));
    ComPtr<IXMLDOMNode> kept;
    EXPECT_EQ(S_OK, Call(still, &ISourceFile::GetPanZoom, kept.Put()));
    EXPECT_EQ(panZoom.Get(), kept.Get());
    EXPECT_EQ(S_OK, Call(still, &ISourceFile::SetPanZoom, nullptr));
    EXPECT_EQ(S_FALSE, Call(still, &ISourceFile::GetPanZoom, kept.Put()));
}

TEST_F(ItemTest, BadAmountsChangeNothing)
{
    const auto panel = AddPanel(Bstr(u"moniker:a"), 1.0, 2.0);
    const auto audio = AddAudio(Bstr(u"title:3"));
    sink->heard.clear();
    for (const double bad : {-1.0, kNaN, kInfinite, -kInfinite}) {
        for (const auto put : {&ISourceFile::put_InPoint, &ISourceFile::put_OutPoint})
            EXPECT_EQ(E_INVALIDARG, Call(panel, put, bad));
        for (const auto put : {&ISubObject::put_StartOffset, &ISubObject::put_EndOffset})
            EXPECT_EQ(E_INVALIDARG, Call(audio, put, bad));
        for (const auto put : {&IAudioProps::put_Level, &IAudioProps::put_FadeIn})
            EXPECT_EQ(E_INVALIDARG, Call(audio, put, bad));
        EXPECT_EQ(E_INVALIDARG, Call(panel, &IBaseObject::put_Duration, bad));
        EXPECT_EQ(E_INVALIDARG, edit->AddProductionEffect(1, 2, nullptr, nullptr, 0, bad, nullptr));
        EXPECT_EQ(E_INVALIDARG, edit->AddProductionAudio(Bstr(u"a").Get(), 1, bad, nullptr));
    }
    EXPECT_EQ(E_INVALIDARG, Call(panel, &IBaseObject::put_Duration, 0.0));
    EXPECT_EQ(E_INVALIDARG, Call(panel, &ISourceFile::put_FileName, nullptr));
    EXPECT_EQ(E_INVALIDARG, edit->AddProductionAudio(nullptr, 1, 0.0, nullptr));
    EXPECT_EQ(E_INVALIDARG, edit->AddProductionAudio(Bstr(u"a").Get(), 2, 0.0, nullptr));
    EXPECT_EQ(E_INVALIDARG, edit->AddProductionEffect(1, -1, nullptr, nullptr, 0, 0.0, nullptr));
    EXPECT_EQ(E_INVALIDARG, edit->AddProductionEffect(1, 0, nullptr, Bstr(u"a").Get(), 0, 0.0, nullptr));
    EXPECT_EQ(E_INVALIDARG, edit->AddProductionEffect(1, 2, nullptr, nullptr, 1, 0.0, nullptr));
    EXPECT_EQ(E_INVALIDARG, edit->DeleteProductionAudio(0));
    EXPECT_EQ(E_POINTER, Call(panel, &IBaseObject::get_Duration, nullptr));
    EXPECT_EQ(E_POINTER, Call(panel, &ISourceFile::get_FileName, nullptr));
    EXPECT_TRUE(TakeHeard().empty());

    ASSERT_EQ(S_OK, production->Close());
    EXPECT_EQ(ZXE_E_NOT_OPEN, Call(panel, &ISourceFile::put_InPoint, 0.0));
    EXPECT_EQ(ZXE_E_NOT_OPEN, edit->AddProductionEffect(1, 2, nullptr, nullptr, 0, 0.0, nullptr));
    EXPECT_EQ(ZXE_E_NOT_OPEN, edit->AddProductionAudio(Bstr(u"a").Get(), 1, 0.0, nullptr));
    EXPECT_EQ(1.0, Get(panel, &ISourceFile::get_InPoint));
}

TEST_F(ItemTest, SoundsHaveAPlaceALevelAndFades)
{
    AddPanel(Bstr(u"moniker:a"), 0.0, 3.0);
    const auto panel = AddPanel(Bstr(u"moniker:b"), 1.0, 6.0);
    ComPtr<IUnknown> sound;
    ASSERT_EQ(S_OK, Call(panel, &INativeInfo::GetNativeAudio, sound.Put()));
    ComPtr<IUnknown> again;
    ASSERT_EQ(S_OK, Call(panel, &INativeInfo::GetNativeAudio, again.Put()));
    EXPECT_TRUE(IsSameObject(sound.Get(), again.Get()));
    EXPECT_FALSE(IsSameObject(sound.Get(), panel.Get()));
    EXPECT_EQ(3.0, Get(sound, &ISubObject::get_StartOffset));
    EXPECT_EQ(8.0, Get(sound, &ISubObject::get_EndOffset));
    EXPECT_EQ(E_NOTIMPL, Call(sound, &ISubObject::put_StartOffset, 1.0));
    EXPECT_EQ(E_NOTIMPL, Call(sound, &ISubObject::put_EndOffset, 1.0));
    EXPECT_EQ(VARIANT_TRUE, Get(panel, &INativeInfo::get_UseNativeAudio));
    EXPECT_EQ(S_OK, Call(panel, &INativeInfo::put_UseNativeAudio, VARIANT_FALSE));
    EXPECT_EQ(VARIANT_FALSE, Get(panel, &INativeInfo::get_UseNativeAudio));

    const auto audio = AddAudio(Clips().File("sound.wav"));
    EXPECT_NEAR(2.0, Get(audio, &ISubObject::get_EndOffset), 0.1) << "the end of the source";
    ASSERT_EQ(S_OK, Call(audio, &ISourceFile::put_Repeat, VARIANT_TRUE));
    EXPECT_EQ(8.0, Get(audio, &ISubObject::get_EndOffset)) << "the end of the production";
    ASSERT_EQ(S_OK, Call(audio, &ISubObject::put_EndOffset, 5.0));
    EXPECT_EQ(5.0, Get(audio, &ISubObject::get_EndOffset));
    for (const auto& object : {sound, audio}) {
        const auto puts = [&object]<class I, class V>(HRESULT (I::*get)(V*), HRESULT (I::*put)(V), V initial, V value) {
            EXPECT_EQ(initial, Get(object, get));
            EXPECT_EQ(S_OK, Call(object, put, value));
            EXPECT_EQ(value, Get(object, get));
        };
        puts(&ISubObject::get_Mute, &ISubObject::put_Mute, VARIANT_FALSE, VARIANT_TRUE);
        puts(&IAudioProps::get_Level, &IAudioProps::put_Level, 1.0, 0.5);
        puts(&IAudioProps::get_FadeIn, &IAudioProps::put_FadeIn, 0.1, 2.0);
        puts(&IAudioProps::get_FadeOut, &IAudioProps::put_FadeOut, 0.1, 3.0);
        puts(&IAudioProps::get_FadeInGain, &IAudioProps::put_FadeInGain, 1.0, 0.25);
        puts(&IAudioProps::get_FadeOutGain, &IAudioProps::put_FadeOutGain, 1.0, 0.75);
    }

    const auto second = AddAudio(Bstr(u"title:1"));
    ComPtr<IUnknown> found;
    EXPECT_EQ(S_OK, objects->GetObject(ZXE_KIND_BACKGROUND_AUDIO, 0, found.Put()));
    EXPECT_TRUE(IsSameObject(audio.Get(), found.Get()));
    EXPECT_EQ(S_OK, edit->DeleteProductionAudio(Get(audio, &ISubObject::get_ID)));
    EXPECT_EQ(S_OK, objects->GetObject(ZXE_KIND_BACKGROUND_AUDIO, 0, found.Put()));
    EXPECT_TRUE(IsSameObject(second.Get(), found.Get()));
    EXPECT_EQ(S_FALSE, objects->GetObject(ZXE_KIND_BACKGROUND_AUDIO, 1, found.Put()));
    EXPECT_EQ(S_FALSE, objects->GetObject(3, 0, found.Put()));
    EXPECT_FALSE(found);
}

TEST_F(ItemTest, EditsAreQuietForEffectsAndUndoTellsOfThem)
{
    const auto effect = AddEffect(7);
    const LONG id = Get(effect, &IEffectInfo::get_EffectID);
    const auto audio = AddAudio(Bstr(u"title:3"));
    const LONG audioID = Get(audio, &ISubObject::get_ID);
    const auto panel = AddPanel(Bstr(u"moniker:a"));
    EXPECT_EQ((std::vector<Heard>{{12, {7, id}}, {3, {audioID}}, {0, {0}}}), TakeHeard());

    InBlock([&] {
        ASSERT_EQ(S_OK, Call(effect, &IEffectInfo::SetGroupID, 4));
        ASSERT_EQ(S_OK, Call(effect, &ISubObject::put_StartOffset, 1.0));
        ASSERT_EQ(S_OK, Call(effect, &ISubObject::put_StartOffset, 1.0));
        ASSERT_EQ(S_OK, Call(audio, &IAudioProps::put_Level, 2.0));
        ASSERT_EQ(S_OK, Call(panel, &ISourceFile::put_OutPoint, 3.0));
    });
    EXPECT_EQ((std::vector<Heard>{{5, {audioID}}, {2, {0}}, {10, {}}}), TakeHeard());
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ((std::vector<Heard>{{2, {0}}, {10, {}}, {5, {audioID}}, {6, {7, 0}}}), TakeHeard());
    ASSERT_EQ(S_OK, production->Redo());
    EXPECT_EQ((std::vector<Heard>{{6, {7, 4}}, {5, {audioID}}, {2, {0}}, {10, {}}}), TakeHeard());

    InBlock([&] {
        ASSERT_EQ(S_OK, edit->DeleteProductionEffect(7, id));
        ASSERT_EQ(S_OK, edit->DeleteProductionAudio(audioID));
        ASSERT_EQ(S_OK, production->DeletePanel(0));
    });
    EXPECT_EQ((std::vector<Heard>{{13, {7, id}}, {4, {audioID}}, {1, {0}}, {10, {}}}), TakeHeard());
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ((std::vector<Heard>{{0, {0}}, {10, {}}, {3, {audioID}}, {12, {7, id}}, {7, {}}}), TakeHeard());
    EXPECT_TRUE(IsSameObject(effect.Get(), EffectAt(7, 1.0).Get()));
    EXPECT_EQ(4, Get(effect, &IEffectInfo::get_GroupID));

    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    ASSERT_EQ(S_OK, Call(effect, &IEffectInfo::SetGroupID, 5));
    ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_FALSE));
    EXPECT_EQ((std::vector<Heard>{{6, {7, 4}}}), TakeHeard());
}

TEST_F(ItemTest, UndoCopesWithEditsThatItDoesNotKnow)
{
    const auto effect = AddEffect(7);
    const LONG id = Get(effect, &IEffectInfo::get_EffectID);
    InBlock([&] { ASSERT_EQ(S_OK, Call(effect, &ISubObject::put_StartOffset, 1.0)); });
    ASSERT_EQ(S_OK, edit->DeleteProductionEffect(7, id));
    TakeHeard();
    EXPECT_EQ(S_OK, production->Undo());
    EXPECT_TRUE(TakeHeard().empty());
    EXPECT_EQ(0.0, Get(effect, &ISubObject::get_StartOffset));
    EXPECT_FALSE(EffectAt(-7, 0.0));

    ComPtr<IUnknown> added;
    InBlock([&] { added = AddEffect(8); });
    ASSERT_EQ(S_OK, edit->DeleteProductionEffect(8, Get(added, &IEffectInfo::get_EffectID)));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(S_OK, production->Undo());
        EXPECT_FALSE(EffectAt(-8, 0.0));
        EXPECT_EQ(S_OK, production->Redo());
        EXPECT_FALSE(EffectAt(-8, 0.0)) << "what a person deleted does not come back";
    }
    TakeHeard();
}

TEST_F(ItemTest, ItemsOutliveTheirProduction)
{
    const auto effect = AddEffect(7);
    const auto panel = AddPanel(Bstr(u"moniker:a"), 1.0, 2.0);
    // The sink drops the last reference to the production from inside a call.
    sink->hook = [&] {
        production.Reset();
        edit.Reset();
        objects.Reset();
    };
    EXPECT_EQ(S_OK, Call(panel, &ISourceFile::put_OutPoint, 3.0));
    EXPECT_FALSE(production);
    EXPECT_EQ(3.0, Get(panel, &ISourceFile::get_OutPoint));
    EXPECT_EQ(0.0, Get(effect, &ISubObject::get_EndOffset));
    EXPECT_EQ(ZXE_E_NOT_OPEN, Call(panel, &ISourceFile::put_OutPoint, 4.0));
    ComPtr<IUnknown> parent;
    EXPECT_EQ(ZXE_E_NOT_OPEN, Call(effect, &IParentProduction::get_ParentProduction, parent.Put()));
}

TEST_F(ItemTest, ASinkMayDropTheProductionFromInsideAnyOfItsCalls)
{
    const std::function<void(IZXEProductionData&)> calls[] = {
        [](IZXEProductionData& board) { AddSource(&board, Bstr(u"moniker:b")); },
        [](IZXEProductionData& board) { board.DeletePanel(0); },
        [](IZXEProductionData& board) { board.put_UseSourceAspectRatio(VARIANT_TRUE); },
        [](IZXEProductionData& board) { board.Undo(); },
        [](IZXEProductionData& board) { board.ClearModified(); },
        [](IZXEProductionData& board) { board.Close(); },
        [](IZXEProductionData& board) {
            IZXEProductionPersist* const persist = Query<IZXEProductionPersist>(&board).Get();
            EXPECT_EQ(S_OK, persist->Load(XmlElement::New("P").Element().Get(), nullptr));
        },
    };
    for (const auto& call : calls) {
        auto board = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
        ASSERT_EQ(S_OK, board->Initialise());
        ASSERT_EQ(S_OK, board->OpenUndoBlock());
        ASSERT_EQ(S_OK, AddSource(board.Get(), Bstr(u"moniker:a")));
        ASSERT_EQ(S_OK, board->CloseUndoBlock(VARIANT_TRUE));
        const auto dropper = Make<RecordingProductionSink>();
        DWORD cookie = 0;
        ASSERT_EQ(S_OK, EventsOf(board.Get())->Advise(dropper.Get(), &cookie));
        dropper->hook = [&board] { board.Reset(); };
        call(*board.Get());
        EXPECT_FALSE(board) << &call - calls;
    }
}

} // namespace
} // namespace kv::test
