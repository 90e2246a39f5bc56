// Random edits of all kinds, undone and redone: what is saved of the production tells every difference.

#include "engine/storyboard/StoryboardSupport.h"

#include <random>

namespace kv::test {
namespace {

using Edit = std::function<void(const ComPtr<IUnknown>&, LONG)>;

/// An edit of an item that answers for the interface.
template <class Interface, class Body>
Edit Of(Body body)
{
    return [body](const ComPtr<IUnknown>& item, LONG number) {
        if (const auto asked = Query<Interface>(item)) body(*asked.Get(), number);
    };
}

/// Calls a setter with a number.
template <class Interface, class Value>
Edit Put(HRESULT (Interface::*setter)(Value))
{
    return Of<Interface>([setter](Interface& item, LONG n) { (item.*setter)(static_cast<Value>(n)); });
}

/// The same, of the sound that an item brings along.
Edit OfSound(const Edit& edit)
{
    return [edit](const ComPtr<IUnknown>& item, LONG number) {
        ComPtr<IUnknown> sound;
        const auto native = Query<INativeInfo>(item);
        if (native && native->GetNativeAudio(sound.Put()) == S_OK) edit(sound, number);
    };
}

ComPtr<IXMLDOMNode> Numbered(LONG number)
{
    XmlElement document = XmlElement::New("effect");
    document.Add("Number", number);
    return document.Get();
}

Bstr Moniker(LONG number)
{
    return Bstr(u"title:" + ToUtf16(std::to_string(number)));
}

const Edit kEdits[] = {
    Put(&ISourceFile::put_InPoint),
    Put(&ISourceFile::put_OutPoint),
    Put(&ISourceFile::put_Repeat),
    Put(&ISourceFile::put_Rotation),
    Put(&ISubObject::put_StartOffset),
    Put(&ISubObject::put_StartOffset),
    Put(&ISubObject::put_EndOffset),
    Put(&ISubObject::put_Mute),
    Put(&IAudioProps::put_Level),
    Put(&IAudioProps::put_FadeOut),
    Put(&INativeInfo::put_UseNativeAudio),
    Put(&IEffectInfo::SetGroupID),
    Put(&IEffectLayer::put_Layer),
    OfSound(Put(&IAudioProps::put_FadeInGain)),
    OfSound(Put(&ISubObject::put_Mute)),
    Of<ISourceFile>([](auto& source, LONG n) { source.put_FileName(Moniker(n).Get()); }),
    Of<ISourceFile>([](auto& source, LONG n) { source.SetPanZoom(n == 0 ? nullptr : Numbered(n).Get()); }),
    Of<IEffectInfo>([](auto& effect, LONG n) { effect.SetParameterDocument(Numbered(n).Get(), VARIANT_TRUE); }),
    Of<IEffectInfo>([](auto& effect, LONG n) { effect.SetMaskFile(n == 0 ? nullptr : Moniker(n).Get(), 4); }),
};

class UndoPropertyTest : public StoryboardTest, public testing::WithParamInterface<unsigned> {
protected:
    LONG Pick(std::size_t limit) { return static_cast<LONG>(m_random() % limit); }

    void AddSomething()
    {
        const LONG number = Pick(6);
        const Bstr source = Moniker(number);
        ComPtr<IUnknown> made;
        switch (Pick(3)) {
        case 0: {
            LONG panels = 0;
            production->GetPanelCount(&panels);
            edit->AddSourceFile(0, source.Get(), 0.0, number, Pick(static_cast<std::size_t>(panels) + 2) - 1,
                                made.Put());
            break;
        }
        case 1:
            edit->AddProductionEffect(Pick(3), Pick(3), Numbered(number).Get(), nullptr, 0, number, made.Put());
            break;
        default:
            edit->AddProductionAudio(source.Get(), ZXE_KIND_BACKGROUND_AUDIO, number, made.Put());
        }
        ASSERT_TRUE(made);
        m_items.push_back(made);
    }

    /// An item that was made once; it may be gone.
    ComPtr<IUnknown> Any() { return m_items[static_cast<std::size_t>(Pick(m_items.size()))]; }

    void RemoveSomething()
    {
        const ComPtr<IUnknown> item = Any();
        if (const auto effect = Query<IEffectInfo>(item)) {
            edit->DeleteProductionEffect(Get(item, &IEffectInfo::get_Layer), Get(item, &IEffectInfo::get_EffectID));
        } else if (const auto audio = Query<ISubObject>(item)) {
            edit->DeleteProductionAudio(Get(item, &ISubObject::get_ID));
        } else {
            production->DeletePanel(Pick(3));
        }
    }

    void EditSomething()
    {
        const LONG kind = Pick(16);
        if (kind == 0 || m_items.empty()) return AddSomething();
        if (kind == 1) return RemoveSomething();
        if (kind == 2) {
            production->put_UseSourceAspectRatio(static_cast<VARIANT_BOOL>(Pick(2)));
        } else {
            kEdits[static_cast<std::size_t>(Pick(std::size(kEdits)))](Any(), Pick(6));
        }
    }

private:
    std::mt19937 m_random{GetParam()};
    std::vector<ComPtr<IUnknown>> m_items;
};

TEST_P(UndoPropertyTest, RandomEditsGoBackToTheFirstStateAndForthToTheLast)
{
    std::vector<std::string> states{Saved(production)};
    const auto group = CreateEngine<IZXEUndoGroup>(CLSID_ZXEUndoGroup);
    ASSERT_EQ(S_OK, group->AddProduction(production.Get()));
    for (int block = 0; block < 120; ++block) {
        const bool kept = Pick(4) != 0;
        const bool grouped = Pick(2) != 0;
        ASSERT_EQ(S_OK, grouped ? group->OpenUndoBlocks() : production->OpenUndoBlock());
        // One edit that is new in every block; blocks without edits leave no trace.
        Call(production, &IProductionInfo::put_AspectRatio, 2.0 + block);
        for (LONG left = Pick(8); left > 0; --left)
            EditSomething();
        const VARIANT_BOOL commit = kept ? VARIANT_TRUE : VARIANT_FALSE;
        ASSERT_EQ(S_OK, grouped ? group->CloseUndoBlocks(commit) : production->CloseUndoBlock(commit));
        if (kept) states.push_back(Saved(production));
        ASSERT_EQ(states.back(), Saved(production));
    }
    for (auto state = states.rbegin() + 1; state != states.rend(); ++state) {
        ASSERT_EQ(S_OK, production->Undo());
        ASSERT_EQ(*state, Saved(production));
    }
    EXPECT_EQ(ZXE_E_NOTHING_TO_UNDO, production->Undo());
    for (auto state = states.begin() + 1; state != states.end(); ++state) {
        ASSERT_EQ(S_OK, production->Redo());
        ASSERT_EQ(*state, Saved(production));
    }
    EXPECT_EQ(ZXE_E_NOTHING_TO_UNDO, production->Redo());

    const XmlElement element = XmlElement::Parse(states.back());
    ASSERT_EQ(S_OK, Call(production, &IZXEProductionPersist::Load, element.Element().Get(), nullptr));
    EXPECT_EQ(states.back(), Saved(production));
}

INSTANTIATE_TEST_SUITE_P(Seeds, UndoPropertyTest, testing::Values(1, 2, 3));

} // namespace
} // namespace kv::test
