// Random edits, undone and redone: every document on the way back and forth is one that was seen before.

#include "KVProjectData/Engine.h"
#include "support/Contents.h"

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <sstream>

namespace kv::test {
namespace {

/// Numbers that an edit makes its choices from; any numbers do, so that a sequence stays valid without some of its
/// steps.
struct Edit {
    unsigned kind;
    unsigned where;
    unsigned what;
};

enum class StepKind { Commit, Cancel, Reload, CancelledReload, Snapshot, CancelledSnapshot, Outside, Undo, Redo };

struct Step {
    StepKind kind;
    std::vector<Edit> edits;
};

using Sequence = std::vector<Step>;

std::ostream& operator<<(std::ostream& out, const Sequence& sequence)
{
    constexpr std::array kNames{"commit",  "cancel", "reload", "cancelled reload", "snapshot", "cancelled snapshot",
                                "outside", "undo",   "redo"};
    for (const Step& step : sequence) {
        out << "  " << kNames[static_cast<std::size_t>(step.kind)] << ':';
        for (const Edit& edit : step.edits)
            out << " {" << edit.kind << ',' << edit.where << ',' << edit.what << '}';
        out << '\n';
    }
    return out;
}

/// A project that edits are applied to.
class Workbench {
public:
    /// The document, with the recorded settings that it does not hold.
    std::u16string Document()
    {
        std::u16string text = XmlOf(*SaveToDocument(*project.Get()));
        for (const auto get : {&IKVProjectData::get_VolumeName, &IKVProjectData::get_ProjectDirectory,
                               &IKVProjectData::get_ImagePath, &IKVProjectData::get_TargetDrive})
            text += test::Text(*project.Get(), get) + u' ';
        text += ToUtf16(std::to_string(ValueOf(*project.Get(), &IKVProjectData::get_TargetType)));
        // With what elements show and menus play, wherever that is kept.
        for (unsigned i = 0; i < MenuCount(); ++i) {
            const auto document = ParseXml(u"<Native/>");
            ComPtr<IXMLDOMElement> root;
            document->get_documentElement(root.Put());
            const auto menu = Menu(i);
            EXPECT_EQ(S_OK, menu->SaveXML(root.Get(), VARIANT_TRUE));
            text += XmlOf(*root.Get());
            for (const auto get : {&IKVMenu::GetProduction, &IKVMenu::GetBackgroundProduction}) {
                ComPtr<IUnknown> production;
                (menu.Get()->*get)(production.Put());
                if (production) text += Saved(production);
            }
        }
        return text;
    }

    static constexpr unsigned kKinds = 20;

    /// A snapshot knows nothing of titles and menus that are out of the project.
    static bool EditsRemoved(const Edit& edit)
    {
        return edit.kind % kKinds == 7 || (edit.kind % kKinds == 12 && edit.what % kMenuEdits == kInsertMenu);
    }

    /// An edit that is recorded in an open step.
    void Apply(const Edit& edit)
    {
        const unsigned where = edit.where;
        const unsigned what = edit.what;
        const auto count = &IKVProjectData::get_TitleCount;
        const auto title = Title(where);
        const auto menu = Menu(where);
        const auto ofProject = [&] { EditProject(where, what); };
        const auto ofTitle = [&] { title ? EditTitle(*title.Get(), what) : void(); };
        Choose(
            edit.kind, ofProject, ofProject, [&] { project->AddTitle(Position(where, count), nullptr); },
            [&] { title ? RemoveTitle(*title.Get(), where % 2) : void(); },
            [&] { project->MoveTitle(Position(where, count), Position(what, count)); }, ofTitle, ofTitle,
            [&] { removed.empty() ? void() : EditTitle(*removed[where % removed.size()].Get(), what); },
            [&] { EditEncoding(where, what); }, [&] { EditCommands(where, what); }, [&] { EditDataFiles(where, what); },
            [&] { EditDataFile(where, what); }, [&] { EditMenus(where, what); },
            [&] { menu ? EditMenu(*menu.Get(), what) : void(); }, [&] { menu ? EditLooks(*menu.Get(), what) : void(); },
            [&] { menu ? EditElements(*menu.Get(), what) : void(); },
            [&] { menu ? EditButton(*menu.Get(), what) : void(); },
            [&] { menu ? EditGroups(*menu.Get(), what) : void(); },
            [&] { menu ? EditShown(*menu.Get(), where, what) : void(); },
            [&] { menu ? EditShown(*menu.Get(), where, what) : void(); });
    }

    /// An edit that changes the document and is never recorded.
    void ApplyUnrecorded(const Edit& edit)
    {
        const auto title = Title(edit.where);
        Choose(
            edit.kind, [&] { project->put_DiscSize(static_cast<DiscSizeEnum>(edit.what % 12)); },
            [&] { project->put_ThemeSource(RandomText(edit.what).Get()); },
            [&] { project->put_MenuLess(Flag(edit.what)); },
            [&] { return title ? title->put_DiscIndex(static_cast<LONG>(edit.what)) : S_FALSE; });
    }

    /// Loads what the project would save.
    void Reload() { EXPECT_EQ(S_OK, project->loadXML(SaveToDocument(*project.Get()).Get())); }

    const ComPtr<IKVProjectData> project = NewProject();

private:
    /// What the file of a project holds of a production.
    static std::u16string Saved(const ComPtr<IUnknown>& production)
    {
        const auto document = ParseXml(u"<Production/>");
        ComPtr<IXMLDOMElement> root;
        document->get_documentElement(root.Put());
        EXPECT_EQ(S_OK, Query<IZXEProductionPersist>(production)->Save(root.Get(), nullptr));
        return XmlOf(*root.Get());
    }

    /// Makes one of the edits.
    template <class... Edits>
    static void Choose(unsigned number, Edits&&... edits)
    {
        unsigned index = 0;
        ((index++ == number % sizeof...(Edits) ? static_cast<void>(edits()) : void()), ...);
    }

    static float Eighths(unsigned number) { return static_cast<float>(number) / 8; }

    static VARIANT_BOOL Flag(unsigned number) { return number % 2 ? VARIANT_TRUE : VARIANT_FALSE; }

    static Bstr RandomText(unsigned number)
    {
        return number % 7 ? Bstr(u"text " + ToUtf16(std::to_string(number))) : Bstr();
    }

    /// A position from 0 up to just behind the last.
    LONG Position(unsigned number, HRESULT (IKVProjectData::*count)(LONG*))
    {
        return static_cast<LONG>(number % static_cast<unsigned>(ValueOf(*project.Get(), count) + 2));
    }

    ComPtr<IKVTitle> Title(unsigned number)
    {
        const auto count = static_cast<unsigned>(ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
        return count > 0 ? TitleAt(*project.Get(), static_cast<LONG>(number % count) + 1) : nullptr;
    }

    unsigned MenuCount() { return static_cast<unsigned>(ValueOf(*project.Get(), &IKVProjectData::get_MenuCount)); }

    ComPtr<IKVMenu> Menu(unsigned number)
    {
        ComPtr<IKVMenu> menu;
        if (MenuCount() > 0) project->GetMenu(static_cast<LONG>(number % MenuCount()) + 1, menu.Put());
        return menu;
    }

    static ComPtr<IKVMenuButton> Button(IKVMenu& menu, unsigned number)
    {
        ComPtr<IKVMenuButton> button;
        const auto count = static_cast<unsigned>(ValueOf(menu, &IKVMenu::get_ButtonCount));
        if (count > 0) menu.GetButton(static_cast<LONG>(number % count) + 1, button.Put());
        return button;
    }

    /// The project, one of its titles or menus, or a button.
    ComPtr<IUnknown> Owner(unsigned number)
    {
        const auto title = number % 5 > 2 ? Title(number / 5) : nullptr;
        const auto menu = number % 5 < 2 ? Menu(number / 5) : nullptr;
        const auto button = menu && number % 5 == 0 ? Button(*menu.Get(), number / 3) : nullptr;
        return title    ? Query<IUnknown>(title)
               : button ? Query<IUnknown>(button)
               : menu   ? Query<IUnknown>(menu)
                        : Query<IUnknown>(project);
    }

    void EditProject(unsigned which, unsigned what)
    {
        Choose(
            which, [&] { project->put_Label(RandomText(what).Get()); },
            [&] { project->put_DisplayName(RandomText(what).Get()); },
            [&] { project->put_DiscFormat(static_cast<DiscFormat>(what % 13)); },
            [&] { project->put_TVStandard(what % 2 ? PAL : NTSC); }, [&] { project->put_Options(what); },
            [&] { project->put_FitToDisc(Flag(what)); }, [&] { project->put_DoCompression(Flag(what)); },
            [&] { project->put_VolumeName(RandomText(what).Get()); }, [&] { project->put_TargetType(what); },
            [&] { project->put_ProjectDirectory(RandomText(what).Get()); },
            [&] { project->put_ImagePath(RandomText(what).Get()); },
            [&] { project->put_TargetDrive(RandomText(what).Get()); },
            [&] { project->put_DiscVideoType(static_cast<DiscVideoType>(what % 4)); });
    }

    static void EditTitle(IKVTitle& title, unsigned what)
    {
        Choose(
            what, [&] { title.put_Label(RandomText(what).Get()); }, [&] { title.put_Tag(what % 16); },
            [&] { title.put_Flags(what); }, [&] { title.put_StillWaitTime(static_cast<LONG>(what)); },
            [&] { title.put_VOBDuration(what); }, [&] { title.put_VOBSize(what / 7.0); });
    }

    void RemoveTitle(IKVTitle& title, bool keep)
    {
        ComPtr<IKVTitle> taken;
        project->RemoveTitle(ValueOf(title, &IKVTitle::get_ID), taken.Put());
        // Some are edited while they are out of the project.
        if (keep) removed.push_back(taken);
    }

    void EditEncoding(unsigned where, unsigned what)
    {
        auto encoding = Query<IKVEncodingParams>(Owner(where));
        if (!encoding) encoding = Query<IKVEncodingParams>(project);
        Choose(
            what, [&] { encoding->put_VideoResolution(static_cast<VideoResolution>(what % 18)); },
            [&] { encoding->put_AspectRatio(what % 2 ? AspectRatio_16x9 : AspectRatio_4x3); },
            [&] { encoding->put_VideoBitrate(static_cast<LONG>(what) * 1000); },
            [&] { encoding->put_AudioFormat(static_cast<AudioFormat>(what % 8)); },
            [&] { encoding->put_VBREncoding(Flag(what)); },
            [&] { encoding->put_AudioChannels(static_cast<LONG>(what % 8)); },
            [&] { encoding->put_SyncToProject(Flag(what)); });
    }

    void EditCommands(unsigned where, unsigned what)
    {
        const auto file = ParseElement(u"<file name='" + ToUtf16(std::to_string(what)) + u"'/>");
        std::vector<DiscCommandParams> commands(what % 4);
        for (std::size_t i = 0; i < commands.size(); ++i) {
            commands[i] = {static_cast<DiscCommand>(1 + (what + i) % 9), static_cast<LONG>(what), static_cast<LONG>(i),
                           i % 2 ? file.Get() : nullptr};
        }
        Query<IKVCommandList>(Owner(where))->SetCommandList(static_cast<LONG>(commands.size()), commands.data());
    }

    void EditDataFiles(unsigned where, unsigned what)
    {
        const LONG position = Position(where, &IKVProjectData::get_DataFileCount);
        const LONG to = Position(what / 4, &IKVProjectData::get_DataFileCount);
        const auto add = [&] { project->AddDataFile(position, nullptr); };
        Choose(
            what, [&] { project->RemoveDataFile(position, nullptr); }, [&] { project->MoveDataFile(position, to); },
            add, add);
    }

    void EditDataFile(unsigned where, unsigned what)
    {
        ComPtr<IKVDataFile> file;
        if (FAILED(project->GetDataFile(Position(where, &IKVProjectData::get_DataFileCount), file.Put()))) return;
        Choose(
            what, [&] { file->put_DestPath(RandomText(what).Get()); }, [&] { file->put_Tag(what); },
            [&] { file->put_SourcePath(Str(what % 2 ? u"/" : u"/tmp").Get()); });
    }

    static constexpr unsigned kMenuEdits = 5;
    static constexpr unsigned kInsertMenu = 4;

    void EditMenus(unsigned where, unsigned what)
    {
        const LONG position = Position(where, &IKVProjectData::get_MenuCount);
        const auto add = [&] { project->AddMenu(position, nullptr); };
        const auto menu = Menu(where);
        Choose(
            what, add, add, [&] { project->MoveMenu(position, Position(what / 5, &IKVProjectData::get_MenuCount)); },
            [&] {
                if (!menu) return;
                project->RemoveMenu(ValueOf(*menu.Get(), &IKVMenu::get_ID), nullptr);
                removedMenus.push_back(menu);
            },
            [&] {
                if (!removedMenus.empty())
                    project->InsertMenuW(position, removedMenus[where % removedMenus.size()].Get());
            });
    }

    static void EditMenu(IKVMenu& menu, unsigned what)
    {
        const auto button = Button(menu, what / 3);
        Choose(
            what, [&] { menu.put_Label(RandomText(what).Get()); }, [&] { menu.put_Tag(what % 32); },
            [&] { menu.put_Flags(what % 4); }, [&] { menu.put_ButtonLayout(what); },
            [&] { menu.put_TemplateID(static_cast<LONG>(what)); }, [&] { menu.put_Duration(what / 8.0); },
            [&] { menu.put_IsMenuBackgroundLoopPlay(static_cast<LONG>(what % 2)); },
            [&] {
                menu.put_DefaultButton(button ? ValueOf(*Query<IKVMenuElement>(button).Get(), &IKVMenuElement::get_ID)
                                              : 0);
            },
            [&] { menu.SetNative(Flag(what / 2)); });
    }

    static void EditLooks(IKVMenu& menu, unsigned what)
    {
        const auto number = static_cast<BYTE>(what % 17);
        std::array<RGBEntry, 16> palette{};
        palette[what % 16] = {number, 2, 3};
        const SPUColourInfo colours{1, 2, 3, 4, 5, number, 7, 8};
        Choose(
            what, [&] { menu.SetPalette(palette.data()); },
            [&] {
                menu.SetSubpictureColours(static_cast<SPUColourTypes>(static_cast<LONG>(what / 3 % 4) - 1), &colours,
                                          &colours);
            },
            [&] {
                menu.put_LayoutRect({Eighths(what), 1, 2, 3});
            });
    }

    /// The elements of a menu, or of one of its buttons.
    static ComPtr<IKVMenuElementList> ListIn(IKVMenu& menu, unsigned number)
    {
        const auto button = number % 2 ? Button(menu, number / 2) : nullptr;
        return button ? Query<IKVMenuElementList>(button) : Query<IKVMenuElementList>(&menu);
    }

    static void EditElements(IKVMenu& menu, unsigned what)
    {
        const auto list = ListIn(menu, what / 17);
        const auto count = static_cast<unsigned>(ValueOf(*list.Get(), &IKVMenuElementList::get_ElementCount));
        const auto at = [&](unsigned number) { return static_cast<LONG>(number % (count + 1)) + 1; };
        ComPtr<IKVMenuElement> element;
        list->GetElement(at(what / 7), element.Put());
        const GUID* const kinds[]{&IKVMenuButton::IID, &IKVMenuOverlay::IID, &IKVMenuText::IID};
        const auto add = [&] { list->AddElement(kinds[what / 7 % 3], element.Put()); };
        Choose(
            what, add, add, add, [&] { list->MoveElement(at(what / 7), at(what / 11)); },
            [&] { menu.MoveElementOrder(at(what / 7) - 1, at(what / 13) - 1); },
            [&] { element ? list->RemoveElement(ValueOf(*element.Get(), &IKVMenuElement::get_ID), nullptr) : S_FALSE; },
            [&] { return what % 5 ? S_FALSE : list->Clear(); },
            [&] {
                ComPtr<IKVMenuElement> moved;
                if (element) list->RemoveElement(ValueOf(*element.Get(), &IKVMenuElement::get_ID), moved.Put());
                if (moved && FAILED(ListIn(menu, what / 5)->InsertElement(at(what / 3), moved.Get())))
                    list->InsertElement(0, moved.Get());
            });
    }

    static void EditButton(IKVMenu& menu, unsigned what)
    {
        const auto button = Button(menu, what / 11);
        if (!button) return;
        const auto element = Query<IKVMenuElement>(button);
        const FloatRect region{0, Eighths(what), 1, 0};
        const ButtonLinks links{1, 2, static_cast<LONG>(what), 4};
        Choose(
            what, [&] { element->SetPosition(Eighths(what), 0.5f); },
            [&] { element->put_Rotation(static_cast<float>(what)); }, [&] { element->put_Tag(what % 64); },
            [&] { element->put_ZOrder(static_cast<LONG>(what)); }, [&] { button->put_Label(RandomText(what).Get()); },
            [&] { button->put_ButtonScheme(static_cast<LONG>(what % 3)); },
            [&] { button->put_ActiveRegion(&region, Flag(what)); }, [&] { button->put_ButtonLinks(&links); },
            [&] { button->ApplyTo(Button(menu, what / 5).Get()); });
    }

    /// Edits an overlay or a text.
    static void EditShown(IKVMenu& menu, unsigned where, unsigned what)
    {
        const auto list = ListIn(menu, where);
        const auto count = static_cast<unsigned>(ValueOf(*list.Get(), &IKVMenuElementList::get_ElementCount));
        ComPtr<IKVMenuElement> element;
        if (count == 0 || FAILED(list->GetElement(static_cast<LONG>(where / 2 % count) + 1, element.Put()))) return;
        Choose(
            what / 13, [&] { element->SetPosition(Eighths(what), 0.25F); },
            [&] { element->put_Rotation(static_cast<float>(what % 90)); }, [&] { element->put_Flags(what); });
        if (const auto text = Query<IKVMenuText>(element)) {
            Choose(
                what, [&] { text->put_String(RandomText(what).Get()); }, [&] { text->put_Justify(what % 3); },
                [&] { text->put_height(static_cast<LONG>(8 + what % 40)); }, [&] { text->put_Style(what % 8); },
                [&] { text->put_Handle(static_cast<TextHandles>(1 + what % 9)); },
                [&] { text->SetColor(TextColor{}, what); }, [&] { text->put_Font(Str(u"DejaVu Serif").Get()); });
        }
        if (const auto overlay = Query<IKVMenuOverlay>(element)) {
            Choose(
                what, [&] { overlay->SetSize(Eighths(what), 0.5F); },
                [&] { overlay->put_Label(RandomText(what).Get()); },
                [&] { overlay->SetCropedRect(Eighths(what), 0, 1, 1); }, [&] { overlay->SetMaskSize(what, 0.5); },
                [&] { overlay->put_ZoomMask(Flag(what)); }, [&] { element->SetWidthHeight(Eighths(what), 1); });
        }
    }

    static void EditGroups(IKVMenu& menu, unsigned what)
    {
        ComPtr<IUnknown> found;
        menu.GetGroupIDByElementID(static_cast<LONG>(what % 6), found.Put());
        const auto group = Query<IGroupInfoNode>(found);
        const LONG id = group ? ValueOf(*group.Get(), &IGroupInfoNode::get_ID) : 0;
        Choose(
            what, [&] { menu.AddtoGroup(static_cast<LONG>(what % 6), 0); },
            [&] { menu.AddtoGroup(static_cast<LONG>(what % 7), id); }, [&] { menu.RemoveGroup(id); },
            [&] { group ? group->SetGroupRotation(what) : S_FALSE; },
            [&] {
                group ? group->SetGroupRect({1, Eighths(what)}, {2, 3}) : S_FALSE;
            });
    }

    std::vector<ComPtr<IKVTitle>> removed;
    std::vector<ComPtr<IKVMenu>> removedMenus;
};

/// Runs a sequence beside a model of the two stacks, and says what is wrong.
class Trial {
public:
    std::optional<std::string> Run(const Sequence& sequence)
    {
        for (const Step& step : sequence) {
            Take(step);
            const bool can[]{!m_undo.empty(), !m_redo.empty()};
            if (!m_fault &&
                (can[0] != Can(&IKVProjectData::get_UndoEnable) || can[1] != Can(&IKVProjectData::get_RedoEnable)))
                m_fault = "another answer to whether there is something to undo or redo";
            if (m_fault) return m_fault;
        }
        // Edits that were not recorded stay; there and back again is the same document all the same.
        RedoAll();
        const std::u16string end = bench.Document();
        while (!m_fault && !m_undo.empty())
            Undo();
        RedoAll();
        Expect(end, "all the way back and forth");
        return m_fault;
    }

private:
    /// The documents before and after a step; none once edits that were not recorded have come over it.
    struct Entry {
        std::optional<std::u16string> before;
        std::optional<std::u16string> after;
    };

    void Take(const Step& step)
    {
        switch (step.kind) {
        case StepKind::Undo:
            if (!m_undo.empty()) Undo();
            return;
        case StepKind::Redo:
            if (!m_redo.empty()) Redo();
            return;
        case StepKind::Outside:
            for (const Edit& edit : step.edits) {
                bench.Apply(edit);
                bench.ApplyUnrecorded(edit);
            }
            for (auto* stack : {&m_undo, &m_redo})
                std::ranges::fill(*stack, Entry{});
            return;
        default:
            break;
        }

        const bool snapshot = step.kind == StepKind::Snapshot || step.kind == StepKind::CancelledSnapshot;
        const bool reload = step.kind == StepKind::Reload || step.kind == StepKind::CancelledReload;
        const bool commit =
            step.kind == StepKind::Commit || step.kind == StepKind::Reload || step.kind == StepKind::Snapshot;
        std::u16string before = bench.Document();
        const Bstr description(u"step");
        Succeed(snapshot ? bench.project->TakeUndoSnapshot(description.Get())
                         : bench.project->BeginUndo(description.Get()),
                "begin");
        for (const Edit& edit : step.edits) {
            if (reload && &edit == &step.edits[step.edits.size() / 2]) {
                bench.Reload();
                before = bench.Document();
                m_undo.clear();
                m_redo.clear();
            }
            if (!snapshot || !Workbench::EditsRemoved(edit)) bench.Apply(edit);
            if (snapshot) bench.ApplyUnrecorded(edit);
        }
        const std::u16string after = bench.Document();
        Succeed(bench.project->EndUndo(commit ? VARIANT_TRUE : VARIANT_FALSE), "end");
        if (commit) m_undo.push_back({before, after});
        if (commit || snapshot) m_redo.clear();
        if (!commit) Expect(before, "a cancelled step");
        if (snapshot && !commit) m_redo.push_back({before, after});
    }

    bool Can(HRESULT (IKVProjectData::*enabled)(VARIANT_BOOL*))
    {
        return ValueOf(*bench.project.Get(), enabled) == VARIANT_TRUE;
    }

    void Undo()
    {
        Succeed(bench.project->UndoOperation(), "undo");
        Expect(m_undo.back().before, "undo");
        m_redo.push_back(m_undo.back());
        m_undo.pop_back();
    }

    void RedoAll()
    {
        while (!m_fault && !m_redo.empty())
            Redo();
    }

    void Redo()
    {
        Succeed(bench.project->RedoOperation(), "redo");
        Expect(m_redo.back().after, "redo");
        m_undo.push_back(m_redo.back());
        m_redo.pop_back();
    }

    /// What a document says there, and what leads to it.
    static std::string From(std::ptrdiff_t at, std::u16string_view document)
    {
        const auto begin = static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, at - 200));
        return ToUtf8(document.substr(std::min(begin, document.size()), 400));
    }

    void Succeed(HRESULT result, const char* what)
    {
        if (result != S_OK && !m_fault) m_fault = std::string(what) + " failed";
    }

    void Expect(const std::optional<std::u16string>& document, const char* what)
    {
        if (m_fault || !document) return;
        const std::u16string is = bench.Document();
        if (is != *document) {
            const auto at = std::ranges::mismatch(is, *document).in1 - is.begin();
            m_fault = std::string(what) + " gives\n" + From(at, is) + "\ninstead of\n" + From(at, *document);
        }
    }

    Workbench bench;
    std::vector<Entry> m_undo;
    std::vector<Entry> m_redo;
    std::optional<std::string> m_fault;
};

std::optional<std::string> FaultOf(const Sequence& sequence)
{
    return Trial().Run(sequence);
}

Sequence RandomSequence(unsigned seed)
{
    std::mt19937 random(seed);
    const auto below = [&random](unsigned count) { return static_cast<unsigned>(random() % count); };
    // Steps that are committed are the most frequent ones; sequences with edits outside of steps are the exception.
    using enum StepKind;
    constexpr std::array kKinds{
        Commit, Commit, Commit, Commit, Cancel, Reload, CancelledReload, Snapshot, CancelledSnapshot,
        Undo,   Undo,   Redo,   Outside};
    const unsigned kinds = static_cast<unsigned>(kKinds.size()) - (seed % 4 ? 1 : 0);
    Sequence sequence(3 + below(10));
    for (Step& step : sequence) {
        step.kind = kKinds[below(kinds)];
        step.edits.resize(1 + below(6));
        for (Edit& edit : step.edits)
            edit = {below(4 * Workbench::kKinds), below(30), below(500)};
    }
    // Something to work with.
    sequence.insert(sequence.begin(),
                    {StepKind::Commit,
                     {{2, 0, 0}, {2, 0, 0}, {2, 0, 0}, {10, 0, 2}, {10, 0, 2}, {12, 0, 0}, {12, 0, 0}, {15, 0, 0}}});
    return sequence;
}

/// Leaves out what the fault does not need.
Sequence Shrink(Sequence sequence)
{
    const auto without = [&sequence](auto remove) {
        Sequence shorter = sequence;
        remove(shorter);
        if (!FaultOf(shorter)) return false;
        sequence = std::move(shorter);
        return true;
    };
    for (std::size_t step = sequence.size(); step-- > 0;) {
        const auto at = static_cast<std::ptrdiff_t>(step);
        if (without([at](Sequence& shorter) { shorter.erase(shorter.begin() + at); })) continue;
        for (std::size_t edit = sequence[step].edits.size(); edit-- > 0;) {
            without([step, edit](Sequence& shorter) {
                shorter[step].edits.erase(shorter[step].edits.begin() + static_cast<std::ptrdiff_t>(edit));
            });
        }
    }
    return sequence;
}

class RandomEditsTest : public testing::TestWithParam<unsigned> {};

TEST_P(RandomEditsTest, AreUndoneToTheFirstDocumentAndRedoneToTheLast)
{
#if defined(__SANITIZE_THREAD__)
    constexpr unsigned kSequences = 100; // for the sake of time: all of it runs on one thread
#else
    constexpr unsigned kSequences = 500;
#endif
    for (unsigned seed = GetParam() * kSequences; seed < (GetParam() + 1) * kSequences; ++seed) {
        const Sequence sequence = RandomSequence(seed);
        if (!FaultOf(sequence)) continue;
        std::ostringstream report;
        const Sequence shortest = Shrink(sequence);
        report << "seed " << seed << ", at its shortest:\n" << shortest << FaultOf(shortest).value_or("nothing");
        FAIL() << report.str();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomEditsTest, testing::Range(0u, 6u));

} // namespace
} // namespace kv::test
