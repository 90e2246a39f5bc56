// A production in a document and back.

#include "engine/storyboard/StoryboardSupport.h"

#include <set>

namespace kv::test {
namespace {

/// Of everything something; in the order and form of a saved production.
constexpr const char* kEverything =
    R"(<Production aspectRatio="1.7777777777777777" stereoscopic="1" useSourceAspectRatio="1" duration="30" host="a&amp;b">
  <Panel source="/gone/sea.mpg" length="12.5" frameRate="25" sourceAspect="1.5" in="1" out="5.25" repeat="1" rotation="90" useNativeAudio="0" shelf="2">
    <Sound level="0.5" mute="1" fadeIn="3" fadeOut="2" fadeInGain="0.75" fadeOutGain="0.25" balance="-1">
      <Echo/>
    </Sound>
    <PanZoom speed="fast">
      <ZXFPanZoom>
        <CropMode>1</CropMode>
      </ZXFPanZoom>
      <Second/>
    </PanZoom>
    <Note>kept <b>as</b> it is</Note>
  </Panel>
  <Panel source="title:3" out="3"/>
  <Effect layer="-4" type="7" end="2" length="short" frameRate="24" sourceAspect="2">
    <Parameters>
      <effect>
        <plugin_data/>
      </effect>
    </Parameters>
  </Effect>
  <Effect layer="12" type="2" start="0.02" end="5" group="4" mask="/gone/mask.png" source="/gone/sun.png" sourceAspect="0.75" in="1" out="2" repeat="1" rotation="-90" useNativeAudio="0">
    <Sound mute="1"/>
    <PanZoom>
      <ZXFPanZoom/>
    </PanZoom>
    <Mask in="1" out="2" repeat="1" rotation="180">
      <PanZoom>
        <ZXFPanZoom/>
      </PanZoom>
    </Mask>
    <Parameters>
      <effect>text&#13;</effect>
    </Parameters>
  </Effect>
  <Effect layer="12" type="0" start="1"/>
  <Effect layer="12" type="1" start="1">
    <Parameters later="1"/>
  </Effect>
  <Audio source="title:5" kind="1" start="1" end="5">
    <Sound level="2"/>
  </Audio>
  <Audio source="/gone/waves.wav" length="60" kind="1" in="1"/>
  <Chapters>
    <Chapter at="3"/>
  </Chapters>
</Production>)";

/// Moves files to another root, and back. Names in `refused` are refused.
class MovedPaths final : public Object<IZXEContentPaths> {
public:
    std::set<std::u16string> refused;
    std::vector<std::u16string> asked;

    HRESULT ToDocument(BSTR path, BSTR* text) override { return Move(path, u"/gone/", u"%CONTENT%\\", text); }
    HRESULT FromDocument(BSTR text, BSTR* path) override { return Move(text, u"%CONTENT%\\", u"/found/", path); }

private:
    HRESULT Move(BSTR name, std::u16string_view from, std::u16string_view to, BSTR* out)
    {
        asked.emplace_back(View(name));
        if (refused.contains(asked.back())) return E_ACCESSDENIED;
        std::u16string moved = asked.back();
        if (moved.starts_with(from)) moved.replace(0, from.size(), to);
        *out = Bstr(moved).Detach();
        return S_OK;
    }
};

class PersistTest : public StoryboardTest {
protected:
    static HRESULT Load(const ComPtr<IUnknown>& into, const std::string& text, IZXEContentPaths* paths = nullptr)
    {
        const XmlElement element = XmlElement::Parse(text);
        const HRESULT result = Call(into, &IZXEProductionPersist::Load, element.Element().Get(), paths);
        EXPECT_EQ(XmlElement::Parse(text).Markup(), element.Markup());
        return result;
    }

    ComPtr<IUnknown> Panel(LONG index)
    {
        ComPtr<IUnknown> panel;
        EXPECT_EQ(S_OK, production->GetPanelBaseObject(index, panel.Put()));
        return panel;
    }

    ComPtr<MovedPaths> paths = Make<MovedPaths>();
};

TEST_F(PersistTest, WhatIsLoadedIsSavedAsItWas)
{
    ASSERT_EQ(S_OK, Load(production, kEverything));
    EXPECT_EQ(kEverything, Saved(production));

    const auto second = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
    second->Initialise();
    ASSERT_EQ(S_OK, Load(second, Saved(production)));
    EXPECT_EQ(kEverything, Saved(second));

    // It holds nothing of what it held before.
    ASSERT_EQ(S_OK, Load(production, "<Production/>"));
    EXPECT_EQ("<Production/>", Saved(production));
}

TEST_F(PersistTest, ItemsAnswerWhatWasLoaded)
{
    ASSERT_EQ(S_OK, Load(production, kEverything));
    EXPECT_EQ(4.25 + 3, Get(production, &IProductionInfo::get_Duration));
    EXPECT_EQ(25, Get(production, &IProductionInfo::get_EditingFrameRate));
    EXPECT_EQ(16.0 / 9.0, Get(production, &IProductionInfo::get_AspectRatio));
    EXPECT_EQ(VARIANT_TRUE, Get(production, &IProductionInfo::get_Stereoscopic));

    const ComPtr<IUnknown> panel = Panel(0);
    EXPECT_EQ(12.5, Get(panel, &ISourceFile::get_Length));
    EXPECT_EQ(1.5, Get(panel, &ISourceFile::get_AspectRatio));
    EXPECT_EQ(E_FAIL, Call(panel, &ISourceFile::put_OutPoint, 13.0));

    const ComPtr<IUnknown> effect = EffectAt(12, 0.02);
    EXPECT_EQ(u"/gone/mask.png", Text(effect, &IEffectInfo::get_MaskFile));
    EXPECT_EQ(4, Get(effect, &IEffectInfo::get_GroupID));
    ComPtr<IXMLDOMNode> document;
    ComPtr<IXMLDOMNode> again;
    EXPECT_EQ(S_OK, Call(effect, &IEffectInfo::GetParameterDocument, document.Put()));
    EXPECT_EQ(S_OK, Call(effect, &IEffectInfo::GetParameterDocument, again.Put()));
    EXPECT_EQ("text\r", XmlNode(document.Get()).Text());
    EXPECT_EQ(document, again);
    EXPECT_FALSE(XmlNode(document.Get()).Parent());
    EXPECT_EQ(kEverything, Saved(production)) << "as a tree like as markup";

    // Of two that start together the newer one is shown.
    EXPECT_EQ(1, Get(EffectAt(12, 1.5), &IEffectInfo::get_Type));
    ComPtr<IUnknown> audio;
    EXPECT_EQ(S_OK, objects->GetObject(ZXE_KIND_BACKGROUND_AUDIO, 0, audio.Put()));
    EXPECT_EQ(u"title:5", Text(audio, &ISmartAudio::get_Moniker));
}

TEST_F(PersistTest, EditsAreSavedAndInitialValuesAreNot)
{
    AddPanel(Bstr(u"title:1"), 0.0, 4.0);
    const ComPtr<IUnknown> effect = AddEffect(3, ZXE_EFFECT_TEXT);
    AddEffect(2);
    Call(effect, &ISubObject::put_StartOffset, 0.5);
    Call(effect, &IEffectInfo::SetGroupID, 9);
    Call(AddAudio(Bstr(u"title:2")), &IAudioProps::put_Level, 0.1);
    Call(production, &IProductionInfo::put_Stereoscopic, VARIANT_TRUE);
    production->Close();
    EXPECT_EQ(R"(<Production stereoscopic="1">
  <Panel source="title:1" out="4"/>
  <Effect layer="2" type="2"/>
  <Effect layer="3" type="0" start="0.5" group="9"/>
  <Audio source="title:2" kind="1">
    <Sound level="0.1"/>
  </Audio>
</Production>)",
              Saved(production));
}

TEST_F(PersistTest, WhatWasFoundInASourceCountsWhileItIsGone)
{
    const TemporaryFolder folder;
    const auto clip = folder.Path() / "pal.mpg";
    std::filesystem::copy_file(Clips().Path() / "pal.mpg", clip);
    AddPanel(Bstr(clip.u16string()), 0.0, 0.5);
    const double rate = Get(production, &IProductionInfo::get_EditingFrameRate);
    const double length = Get(Panel(0), &ISourceFile::get_Length);
    const double aspect = Get(Panel(0), &ISourceFile::get_AspectRatio);
    ASSERT_GT(rate, 0);
    ASSERT_GT(length, 0);
    const std::string saved = Saved(production);

    std::filesystem::remove(clip);
    ASSERT_EQ(S_OK, Load(production, saved));
    EXPECT_EQ(rate, Get(production, &IProductionInfo::get_EditingFrameRate));
    EXPECT_EQ(length, Get(Panel(0), &ISourceFile::get_Length));
    EXPECT_EQ(aspect, Get(Panel(0), &ISourceFile::get_AspectRatio));
    EXPECT_EQ(saved, Saved(production));
    EXPECT_EQ(saved, (Load(production, saved), Saved(production))) << "also when nobody looked";
}

TEST_F(PersistTest, FilesStandAsTheCallerTellsAndMonikersAsTheyAre)
{
    ASSERT_EQ(S_OK, Load(production, kEverything));
    const std::string saved = Saved(production, paths.Get());
    const std::vector<std::u16string> files{u"/gone/sea.mpg", u"/gone/mask.png", u"/gone/sun.png", u"/gone/waves.wav"};
    EXPECT_EQ(files, std::exchange(paths->asked, {}));
    EXPECT_NE(saved.npos, saved.find(R"(source="%CONTENT%\sea.mpg")"));

    ASSERT_EQ(S_OK, Load(production, saved, paths.Get()));
    EXPECT_EQ(u"/found/sea.mpg", SourcesOf(production.Get())[0]);
    EXPECT_EQ(u"title:3", SourcesOf(production.Get())[1]);
    EXPECT_EQ(4u, paths->asked.size());
    TakeHeard();

    // A failure ends the save with an empty element, the load with the production as it was.
    const std::string before = Saved(production);
    paths->refused = {u"/found/waves.wav", u"%CONTENT%\\waves.wav"};
    const XmlElement element = XmlElement::New("Production");
    EXPECT_EQ(E_ACCESSDENIED, Call(production, &IZXEProductionPersist::Save, element.Element().Get(), paths.Get()));
    EXPECT_EQ("<Production/>", element.Markup());
    EXPECT_EQ(E_ACCESSDENIED, Load(production, saved, paths.Get()));
    EXPECT_EQ(before, Saved(production));
    EXPECT_TRUE(TakeHeard().empty());
}

TEST_F(PersistTest, WhatIsNoProductionIsRefused)
{
    ASSERT_EQ(S_OK, Load(production, kEverything));
    TakeHeard();
    for (const char* part : {R"(<Panel/>)",
                             R"(<Panel source=""/>)",
                             R"(<Panel source="a" in="-1"/>)",
                             R"(<Panel source="a" in="1 "/>)",
                             R"(<Panel source="a" out="nan"/>)",
                             R"(<Panel source="a" out="inf"/>)",
                             R"(<Panel source="a" out="1e999"/>)",
                             R"(<Panel source="a" rotation="1.5"/>)",
                             R"(<Panel source="a" rotation="3000000000"/>)",
                             R"(<Panel source="a" repeat="yes"/>)",
                             R"(<Panel source="a" length="long"/>)",
                             R"(<Panel source="a"><Sound level="loud"/></Panel>)",
                             R"(<Panel source="a"><Sound mute=""/></Panel>)",
                             R"(<Panel source="a"><Sound/><Sound/></Panel>)",
                             R"(<Effect layer="1"/>)",
                             R"(<Effect type="1"/>)",
                             R"(<Effect layer="1" type="-1"/>)",
                             R"(<Effect layer="1" type="0" source="a"/>)",
                             R"(<Effect layer="1" type="2" mask=""/>)",
                             R"(<Effect layer="1" type="2"><Mask in="x"/></Effect>)",
                             R"(<Effect layer="1" type="2"><Parameters/><Parameters/></Effect>)",
                             R"(<Audio kind="1"/>)",
                             R"(<Audio source="a"/>)",
                             R"(<Audio source="a" kind="2"/>)",
                             R"(<Audio source="a" kind="1" start="-1"/>)"}) {
        const std::string text = R"(<Production><Panel source="b"/>)" + std::string(part) + "</Production>";
        EXPECT_EQ(ZXE_E_NOT_PRODUCTION, Load(production, text)) << part;
    }
    for (const char* attribute :
         {R"(aspectRatio="0")", R"(aspectRatio="-1")", R"(aspectRatio="wide")", R"(stereoscopic="2")"})
        EXPECT_EQ(ZXE_E_NOT_PRODUCTION, Load(production, "<Production " + std::string(attribute) + "/>")) << attribute;
    EXPECT_EQ(kEverything, Saved(production));
    EXPECT_TRUE(TakeHeard().empty());
}

TEST_F(PersistTest, APlaceThatCannotTakeItIsRefusedAndStaysAsItWas)
{
    ASSERT_EQ(S_OK, Load(production, kEverything));
    EXPECT_EQ(E_POINTER, Call(production, &IZXEProductionPersist::Save, nullptr, nullptr));
    EXPECT_EQ(E_POINTER, Call(production, &IZXEProductionPersist::Load, nullptr, nullptr));
    struct : ZXEMarkupTarget {
        void Take(std::string_view) override { ADD_FAILURE(); }
    } unused;
    const auto markup = [&](IXMLDOMElement* element, ZXEMarkupTarget* target) {
        return Call(production, &IZXEProductionMarkup::SaveMarkup, element, nullptr, target);
    };
    EXPECT_EQ(E_POINTER, markup(nullptr, &unused));
    EXPECT_EQ(E_POINTER, markup(XmlElement::New("P").Element().Get(), nullptr));
    EXPECT_EQ(E_INVALIDARG, markup(XmlElement::Parse("<P a='1'/>").Element().Get(), &unused));
    const auto save = [&](const XmlElement& element) {
        const std::string before = element.Markup();
        EXPECT_EQ(E_INVALIDARG, Call(production, &IZXEProductionPersist::Save, element.Element().Get(), nullptr));
        EXPECT_EQ(before, element.Markup());
    };
    for (const char* text : {"<P a='1'/>", "<P><a/></P>", "<P>text</P>", "<P><!-- --></P>"})
        save(XmlElement::Parse(text));

    XmlElement deep = XmlElement::New("P");
    for (int level = 1; level < 253; ++level)
        deep = deep.Add("P");
    save(deep);

    AddPanel(Bstr(u"title:\x01"));
    save(XmlElement::New("P"));
    EXPECT_EQ(E_INVALIDARG, markup(XmlElement::New("P").Element().Get(), &unused));
}

TEST_F(PersistTest, LoadingNeedsAProductionInUseWithoutAnOpenBlock)
{
    InBlock([&] { AddPanel(Bstr(u"title:1"), 0.0, 4.0); });
    const auto refuses = [&] { EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, Load(production, kEverything)); };
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    refuses();
    ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_FALSE));
    sink->hook = [&] {
        if (std::get<0>(sink->heard.back()) == 1) refuses();
    };
    EXPECT_EQ(S_OK, production->Undo());
    sink->hook = nullptr;
    production->Close();
    EXPECT_EQ(ZXE_E_NOT_OPEN, Load(production, kEverything));
}

TEST_F(PersistTest, SinksAreToldAndNothingIsLeftToUndo)
{
    InBlock([&] { AddPanel(Bstr(u"title:1"), 0.0, 4.0); });
    const ComPtr<IUnknown> old = Panel(0);
    sink->heard.clear();
    ASSERT_EQ(S_OK, Load(production, kEverything));
    const std::vector<Heard> all{{8, {}}, {9, {}}, {10, {}}, {11, {0}}, {18, {0}}, {7, {}}};
    EXPECT_EQ(all, std::exchange(sink->heard, {}));
    VARIANT_BOOL can = VARIANT_TRUE;
    EXPECT_EQ(S_OK, production->CanUndo(&can, nullptr));
    EXPECT_EQ(VARIANT_FALSE, can);
    EXPECT_EQ(0u, Get(production, &IZXEProductionData::get_Flags));
    EXPECT_EQ(ZXE_E_NOT_OPEN, Call(old, &ISourceFile::put_Rotation, 90));
    EXPECT_EQ(u"title:1", Text(old, &ISourceFile::get_FileName));

    ASSERT_EQ(S_OK, Load(production, kEverything));
    const std::vector<Heard> unmodified{{8, {}}, {9, {}}, {10, {}}, {7, {}}};
    EXPECT_EQ(unmodified, sink->heard);
}

} // namespace
} // namespace kv::test
