#pragma once
// A production in use, and short ways to what it holds.

#include "engine/EngineSupport.h"
#include "platform/xml/Element.h"

namespace kv::test {

/// What a getter answers, which has to succeed.
template <class Interface, class Value>
Value Get(const ComPtr<IUnknown>& object, HRESULT (Interface::*getter)(Value*))
{
    Value value{};
    const auto asked = Query<Interface>(object);
    EXPECT_TRUE(asked);
    if (asked) {
        EXPECT_EQ(S_OK, (asked.Get()->*getter)(&value));
    }
    return value;
}

/// The text that a getter answers.
template <class Interface>
std::u16string Text(const ComPtr<IUnknown>& object, HRESULT (Interface::*getter)(BSTR*))
{
    Bstr text;
    EXPECT_EQ(S_OK, (Query<Interface>(object).Get()->*getter)(text.Put()));
    return std::u16string(text.View());
}

/// The result of a setter or another call.
template <class Interface, class... Parameters>
HRESULT Call(const ComPtr<IUnknown>& object, HRESULT (Interface::*method)(Parameters...),
             std::type_identity_t<Parameters>... arguments)
{
    const auto asked = Query<Interface>(object);
    EXPECT_TRUE(asked);
    return asked ? (asked.Get()->*method)(arguments...) : E_NOINTERFACE;
}

/// A production in one line.
inline std::string SavedMarkup(const ComPtr<IUnknown>& production)
{
    struct : ZXEMarkupTarget {
        void Take(std::string_view text) override { markup += text; }
        std::string markup;
    } target;
    const XmlElement element = XmlElement::New("Production");
    EXPECT_EQ(S_OK, Call(production, &IZXEProductionMarkup::SaveMarkup, element.Element().Get(), nullptr, &target));
    EXPECT_EQ("<Production/>", element.Markup());
    return target.markup;
}

/// A production as a document holds it.
inline std::string Saved(const ComPtr<IUnknown>& production, IZXEContentPaths* paths = nullptr)
{
    const XmlElement element = XmlElement::New("Production");
    EXPECT_EQ(S_OK, Call(production, &IZXEProductionPersist::Save, element.Element().Get(), paths));
    // Paths that are asked for are counted.
    if (!paths) {
        EXPECT_EQ(element.View().CompactMarkup(), SavedMarkup(production));
    }
    return element.Markup();
}

class StoryboardTest : public testing::Test {
protected:
    StoryboardTest()
    {
        EXPECT_EQ(S_OK, production->Initialise());
        DWORD cookie = 0;
        EXPECT_EQ(S_OK, EventsOf(production.Get())->Advise(sink.Get(), &cookie));
    }

    static ComPtr<IXMLDOMNode> Document(const std::string& text)
    {
        return XmlElement::Parse("<effect><plugin_data>" + text + "</plugin_data></effect>").Get();
    }

    ComPtr<IUnknown> AddEffect(LONG layer, LONG type = ZXE_EFFECT_OVERLAY, const ComPtr<IXMLDOMNode>& document = {})
    {
        ComPtr<IUnknown> effect;
        EXPECT_EQ(S_OK, edit->AddProductionEffect(layer, type, document.Get(), nullptr, 0, 0.0, effect.Put()));
        return effect;
    }

    ComPtr<IUnknown> AddPanel(const Bstr& source, double in = 0.0, double out = 0.0)
    {
        ComPtr<IUnknown> panel;
        EXPECT_EQ(S_OK, edit->AddSourceFile(0, source.Get(), in, out, -1, panel.Put()));
        return panel;
    }

    ComPtr<IUnknown> AddAudio(const Bstr& source)
    {
        ComPtr<IUnknown> audio;
        EXPECT_EQ(S_OK, edit->AddProductionAudio(source.Get(), ZXE_KIND_BACKGROUND_AUDIO, 0.0, audio.Put()));
        return audio;
    }

    ComPtr<IUnknown> EffectAt(LONG layer, double time)
    {
        ComPtr<IUnknown> effect;
        EXPECT_EQ(layer >= 0 ? S_OK : S_FALSE, objects->GetEffect(std::abs(layer), time, effect.Put()));
        return effect;
    }

    template <class Edits>
    void InBlock(Edits&& edits)
    {
        ASSERT_EQ(S_OK, production->OpenUndoBlock());
        edits();
        ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    }

    /// What the sink heard, without what is said of the undo state and the modified state.
    std::vector<Heard> TakeHeard()
    {
        auto heard = std::exchange(sink->heard, {});
        std::erase_if(heard, [](const auto& event) { return std::get<0>(event) == 11 || std::get<0>(event) == 18; });
        return heard;
    }

    ComPtr<IZXEProductionData> production = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
    ComPtr<IEditData> edit = Query<IEditData>(production);
    ComPtr<IProductionObjects> objects = Query<IProductionObjects>(production);
    ComPtr<RecordingProductionSink> sink = Make<RecordingProductionSink>();
};

} // namespace kv::test
