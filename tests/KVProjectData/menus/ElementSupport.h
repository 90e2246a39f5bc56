#pragma once
// A menu with a production, and elements that show nothing but have effects.

#include "KVProjectData/menus/MenuButton.h"
#include "KVProjectData/project/ProjectData.h"
#include "support/Host.h"

#include <optional>

namespace kv::test {

class TestMenu final : public CMenuNode, public Aggregate<Parts<CKVMenuElementList>, IUnknown> {
public:
    TestMenu() { AddChild(&MakePart<CKVMenuElementList>(), true); }

    ComPtr<IUnknown> production;
    bool isWide = false;
    /// A menu that has lost its production.
    bool isBare = false;
    LONG marks = 0;

    CKVMenuElementList& Elements() { return Part<CKVMenuElementList>(); }

    ComPtr<IUnknown> MenuProduction() override { return production; }
    bool IsNativeMenu() override { return !production && !isBare; }
    bool IsWide() override { return isWide; }
    HRESULT MarkButtonsMoved() override
    {
        ++marks;
        return S_OK;
    }
    IUnknown* Identity() override { return Controlling(); }
    void Attributes(AttributeArchive& archive) override { archive.ID(*this); }

protected:
    void FinalRelease() override
    {
        Elements().DropAll();
        ReleaseParts();
    }
};

/// What the tests know of an element beside its interface.
class TestImpl : public CMenuElementImpl {
public:
    bool isHighlighted = false;

    using CMenuElementImpl::CMenuElementImpl;
    bool CountsAsHighlight() const override { return isHighlighted; }
    bool SourceContains(std::u16string_view text) const override { return text == u"Zenda Themes"; }
    LONG getEffectType() const override { return ZXE_EFFECT_TEXT; }
    HRESULT createEffectParams(ComPtr<IXMLDOMNode>& document) override
    {
        document = ParseXml(u"<effect><plugin_data/></effect>");
        return S_OK;
    }
};

template <NodeType kType>
class TestElement final : public MenuElementNode<kType, TestImpl, Object<Dual<IKVMenuElement>>> {
public:
    HRESULT Copy(IKVMenuElement** pp) override
    {
        const LineageLock lock(*this);
        const auto copy = Make<TestElement>();
        this->CopyFieldsTo(*copy);
        copy->isHighlighted = this->isHighlighted;
        copy->AssignID();
        return ComPtr<IKVMenuElement>(copy.Get()).CopyTo(pp);
    }
    void Attributes(AttributeArchive& archive) override
    {
        archive.ID(*this);
        this->attributes(archive);
    }
};

using TestOverlay = TestElement<typeOverlay>;
using TestText = TestElement<typeText>;

/// A project with the menu, whose production is the engine's.
class ElementTest : public testing::Test {
protected:
    ElementTest()
    {
        RegisterServers();
        EXPECT_EQ(S_OK, project->Initialise());
        // Beside the project's own menus, whose blocks it opens itself.
        project->GetChild(2)->List()->Adopt(*menu, -1, true);
        connection.emplace(*project, *sink);
        // From here on the project is dirty, which is told once.
        project->SetModified(false);
        Events();
    }

    /// Gives the menu a production to show its elements in.
    void Show()
    {
        const auto data = Create<IZXEProductionData>(CLSID_ZXEProduction);
        EXPECT_EQ(S_OK, data->Initialise());
        menu->production = data;
    }

    /// What the project told since the last call.
    std::vector<ReceivedEvent> Events() { return Delivered(*project, *sink); }

    /// A button in the menu.
    ComPtr<CKVMenuButton> NewButton()
    {
        ComPtr<IKVMenuElement> added;
        EXPECT_EQ(S_OK, Elements().AddElement(&IKVMenuButton::IID, added.Put()));
        return ComPtr<CKVMenuButton>(dynamic_cast<CKVMenuButton*>(added.Get()));
    }

    /// An element at the end of a list.
    template <class Element>
    ComPtr<Element> Insert(CKVMenuElementList& list)
    {
        auto element = Make<Element>();
        EXPECT_EQ(S_OK, list.InsertElement(0, element.Get()));
        return element;
    }

    CKVMenuElementList& Elements() { return menu->Elements(); }
    static CKVMenuElementList& ElementsOf(CKVMenuButton& button)
    {
        return static_cast<CKVMenuElementList&>(*button.GetChild(kButtonElements));
    }
    /// The IDs in a list.
    static std::vector<LONG> Order(const CProjectNode& list)
    {
        std::vector<LONG> ids;
        for (LONG i = 0; i < list.ChildCount(); ++i)
            ids.push_back(list.GetChild(i)->ID());
        return ids;
    }
    /// Whether the production shows an effect for an element.
    bool IsShown(const CProjectNode& element)
    {
        ComPtr<IUnknown> object;
        ComPtr<IUnknown> effect;
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(menu->production)->GetProductionObj(object.Put()));
        Query<IProductionObjects>(object)->GetEffect(element.ID(), kStart, effect.Put());
        return static_cast<bool>(effect);
    }

    static FloatPoint Position(IKVMenuElement& element)
    {
        FloatPoint position{};
        EXPECT_EQ(S_OK, element.GetPosition(&position.x, &position.y));
        return position;
    }
    static float Rotation(IKVMenuElement& element) { return ValueOf(element, &IKVMenuElement::get_Rotation); }
    /// In the menu, whatever the element stands in.
    static FloatPoint Absolute(CMenuElementImpl& element)
    {
        FloatPoint position{};
        EXPECT_EQ(S_OK, element.getRawPosition(position));
        return position;
    }

    void Begin()
    {
        EXPECT_EQ(S_OK, project->BeginUndo(Bstr(u"step").Get()));
        if (menu->production) {
            EXPECT_EQ(S_OK, project->BeginStoryboardUndo(menu->production.Get(), 0));
        }
    }
    void End() { EXPECT_EQ(S_OK, project->EndUndo(VARIANT_TRUE)); }
    void UndoStep() { EXPECT_EQ(S_OK, project->UndoOperation()); }
    void RedoStep() { EXPECT_EQ(S_OK, project->RedoOperation()); }

    static constexpr double kStart = 0.02;

    const ComPtr<CKVProjectData> project = Make<CKVProjectData>(nullptr);
    const ComPtr<TestMenu> menu = Make<TestMenu>();
    const ComPtr<RecordingSink> sink = Make<RecordingSink>();
    std::optional<Connection> connection;
};

} // namespace kv::test
