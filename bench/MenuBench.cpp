// Menus: their elements, what steps cost beside many of them, and files that hold them.

#include "Bench.h"
#include "KVProjectData/Engine.h"
#include "KVProjectData/effects/NXEffect.h"
#include "KVProjectData/effects/ZXPTextPlugInHelper.h"
#include "KVProjectData/menus/EffectTemplates.h"

#include <array>
#include <ctime>
#include <filesystem>
#include <malloc.h>
#include <pugixml.hpp>
#include <unistd.h>

namespace kv::bench {
namespace {

constexpr int kRounds = 51;
/// A round is short, so that it is seldom interrupted.
constexpr int kTimes = 40;

double ThreadMicroseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// Microseconds of this thread that a body takes, which gets the number of its turn. Edits wake the worker that
/// delivers events; what runs on the processor then is not counted.
template <class Body>
double Each(Body&& body)
{
    const double start = ThreadMicroseconds();
    for (int i = 0; i < kTimes; ++i)
        body(i);
    return (ThreadMicroseconds() - start) / kTimes;
}

ComPtr<IKVMenu> AddMenu(IKVProjectData& project)
{
    ComPtr<IKVMenu> menu;
    Must(project.AddMenu(-1, menu.Put()));
    return menu;
}

template <class Interface, class Owner>
ComPtr<Interface> AddElement(const ComPtr<Owner>& owner)
{
    ComPtr<IKVMenuElement> element;
    Must(Query<IKVMenuElementList>(owner)->AddElement(&Interface::IID, element.Put()));
    return Query<Interface>(element);
}

LONG IDOf(IKVMenuElement& element)
{
    LONG id = 0;
    Must(element.get_ID(&id));
    return id;
}

Bstr LabelOf(int number)
{
    return Bstr(u"The harbour at dawn, take " + ToUtf16(std::to_string(number)));
}

ComPtr<IKVMenuText> AddText(const ComPtr<IUnknown>& owner, int number)
{
    auto text = AddElement<IKVMenuText>(owner);
    Must(text->put_String(LabelOf(number).Get()));
    return text;
}

void PutString(CNXEffect& effect, BSTR string)
{
    Must(effect.Edit([&](XmlElement& pluginData) {
        CZXPTextPlugInHelper text;
        Must(text.Attach(pluginData));
        Must(text.put_String(string));
        Must(text.Save(pluginData));
        return true;
    }));
}

/// An effect on a production of its own, with the document that an element of a menu has.
class BareEffect {
public:
    BareEffect(IKVMenu& menu, IKVMenuElement& element, LONG type)
    {
        ComPtr<IUnknown> shown;
        ComPtr<IXMLDOMNode> document;
        CNXEffect original;
        Must(menu.GetProduction(shown.Put()));
        Must(original.Attach(shown.Get(), IDOf(element)));
        Must(original.getDocument(document));
        Must(CreateInstance(CLSID_ZXEProduction, m_production));
        Must(m_production->Initialise());
        Must(effect.Create(m_production.Get(), type, 1, XmlElement(document.Get()).Copy().Get()));
    }

    void Move(int turn)
    {
        Must(effect.setChannel(ZXP_TRANSLATION, 0.0, ZXP_FROM_START, {static_cast<float>(turn), 0, 0}));
    }

    CNXEffect effect;

private:
    ComPtr<IZXEProductionData> m_production;
};

void MeasureElements(std::vector<Row>& rows)
{
    const auto project = NewProject();
    const auto menu = AddMenu(*project);
    const auto button = AddElement<IKVMenuButton>(menu);
    const auto picture = AddElement<IKVMenuOverlay>(button);
    const auto text = AddText(button, 0);
    const auto alone = AddElement<IKVMenuOverlay>(menu);
    BareEffect bareText(*menu, *text, ZXE_EFFECT_TEXT);
    BareEffect barePicture(*menu, *picture, ZXE_EFFECT_OVERLAY);

    const Medians moves = InTurn(
        kRounds, [&] { return Each([&](int i) { Must(button->Move(i % 2 ? 0.1F : -0.1F, 0)); }); },
        [&] {
            // As many of either in a round.
            return Each([&](int i) {
                for (int edit = 0; edit < 3; ++edit)
                    ((i + edit) % 2 ? bareText : barePicture).Move(i);
            });
        });
    rows.push_back({"a button with a text and a picture moved | three transform edits of bare effects", "us",
                    moves.ours, moves.yardstick, 1.3});

    const Medians places = InTurn(
        kRounds, [&] { return Each([&](int i) { Must(alone->SetPosition(static_cast<float>(i % 9) / 9, 0)); }); },
        [&] { return Each([&](int i) { barePicture.Move(i); }); });
    rows.push_back(
        {"place of an overlay set | one transform edit of the bare effect", "us", places.ours, places.yardstick, 1.2});

    const std::array strings{LabelOf(1), LabelOf(2)};
    const Medians texts = InTurn(
        kRounds, [&] { return Each([&](int i) { Must(text->put_String(strings[i % 2].Get())); }); },
        [&] { return Each([&](int i) { PutString(bareText.effect, strings[i % 2].Get()); }); });
    rows.push_back(
        {"string of a text set | one rich-text edit of the bare effect", "us", texts.ours, texts.yardstick, 1.5});
}

// A menu of buttons with a picture and a label each

constexpr int kButtons = 12;
constexpr float kPictureSize = 0.25F;

FloatPoint PlaceOf(int button)
{
    return {static_cast<float>(button % 4) / 4 - 0.375F, static_cast<float>(button / 4) / 3 - 0.25F};
}

Bstr Picture()
{
    return Bstr(ToUtf16(KV_BENCH_CONTENT "/DVD/Mandatory/PlaceHolder.jpg"));
}

ComPtr<IKVMenu> MakeMenu(IKVProjectData& project)
{
    const Bstr picture = Picture();
    auto menu = AddMenu(project);
    for (int i = 0; i < kButtons; ++i) {
        const auto button = AddElement<IKVMenuButton>(menu);
        const auto thumbnail = AddElement<IKVMenuOverlay>(button);
        Must(thumbnail->put_Source(picture.Get()));
        Must(thumbnail->SetSize(kPictureSize, kPictureSize));
        AddText(button, i);
        const FloatPoint place = PlaceOf(i);
        Must(button->SetPosition(place.x, place.y));
    }
    return menu;
}

/// The effects of such a menu, each made, put into its group, filled and placed by the engine's own calls.
void MakeEffects()
{
    const Bstr picture = Picture();
    ComPtr<IZXEProductionData> production;
    Must(CreateInstance(CLSID_ZXEProduction, production));
    Must(production->Initialise());
    for (int i = 0; i < kButtons; ++i) {
        const ZXPVector place{PlaceOf(i).x, PlaceOf(i).y, 0};
        const auto make = [&](CNXEffect& effect, LONG type, LONG layer, HRESULT (*newDocument)(ComPtr<IXMLDOMNode>&)) {
            ComPtr<IXMLDOMNode> document;
            Must(newDocument(document));
            Must(effect.Create(production.Get(), type, layer, document.Get()));
            Must(effect.setGroupID(i + 1));
            Must(effect.setChannel(ZXP_TRANSLATION, 0.0, ZXP_FROM_START, place));
        };
        CNXEffect thumbnail;
        make(thumbnail, ZXE_EFFECT_OVERLAY, 2 * i + 100, &NewOverlayDocument);
        Must(thumbnail.setSourceFile(picture.Get()));
        Must(thumbnail.setChannel(ZXP_SCALING, 0.0, ZXP_FROM_START, {kPictureSize / 2, kPictureSize / 2, 1}));
        CNXEffect label;
        make(label, ZXE_EFFECT_TEXT, 2 * i + 101, &NewTextDocument);
        PutString(label, LabelOf(i).Get());
    }
}

void MeasureWholeMenus(std::vector<Row>& rows)
{
    constexpr int kMenuRounds = 31;
    const std::string path = "/dev/shm/kv_bench." + std::to_string(getpid()) + ".menu.xml";
    const Bstr file(ToUtf16(path));
    const auto took = [](auto&& body) {
        const double start = ThreadMicroseconds();
        body();
        return ThreadMicroseconds() - start;
    };
    ComPtr<IKVProjectData> project;
    const auto make = [&] {
        project = NewProject();
        return took([&] { MakeMenu(*project); });
    };
    const Medians made = InTurn(kMenuRounds, make, [&] { return took(&MakeEffects); });
    rows.push_back({"a menu of 12 buttons with picture and label made | its effects made by hand", "us", made.ours,
                    made.yardstick, 1.5});

    ComPtr<IKVFileService> files;
    Must(CreateInstance(CLSID_KVFileService, files));
    Must(files->SaveProject(file.Get(), project.Get()));
    ComPtr<IKVProjectData> loaded;
    const auto load = [&] {
        loaded = NewProject();
        return took([&] { Must(files->LoadProject(file.Get(), loaded.Get())); });
    };
    const Medians read = InTurn(kMenuRounds, load, make);
    rows.push_back({"the same loaded | made", "us", read.ours, read.yardstick, 0.5});
    pugi::xml_document bare;
    const Medians parsed =
        InTurn(kMenuRounds, load, [&] { return took([&] { Must(bare.load_file(path.c_str()) ? S_OK : E_FAIL); }); });
    rows.push_back({"the same loaded | bare parse of its file", "us", parsed.ours, parsed.yardstick, 3});
    std::filesystem::remove(path);
}

void MeasureExtents(std::vector<Row>& rows)
{
    const auto project = NewProject();
    const auto menu = AddMenu(*project);
    const auto button = AddElement<IKVMenuButton>(menu);
    std::vector<ComPtr<IKVMenuElement>> children;
    for (int i = 0; i < 5; ++i) {
        children.emplace_back(AddText(button, i).Get());
        children.emplace_back(AddElement<IKVMenuOverlay>(button).Get());
    }
    const auto extent = [&](int) {
        FloatRect area;
        Must(button->GetExtent(&area));
    };
    const auto boxes = [&](int) {
        std::array<FloatPoint, 4> corners;
        for (const auto& child : children)
            Must(child->GetBoundingBox(corners.data()));
    };
    const Medians medians = InTurn(
        kRounds, [&] { return Each(extent); }, [&] { return Each(boxes); });
    rows.push_back({"extent of a button with ten elements | their ten bounding boxes", "us", medians.ours,
                    medians.yardstick, 1.2});
}

/// A project with menus of one button with a text each, and the last menu's.
struct ManyMenus {
    explicit ManyMenus(int menus)
    {
        Must(project->AddTitle(0, title.Put()));
        for (int i = 0; i < menus; ++i)
            last = AddText(AddElement<IKVMenuButton>(AddMenu(*project)), i);
        Must(project->GetUndoManager(m_manager.Put()));
    }

    void Begin() { Must(project->BeginUndo(nullptr)); }
    void Edit() { Must(last->SetPosition(static_cast<float>(++m_edits % 9) / 9, 0)); }
    void End() { Must(project->EndUndo(VARIANT_TRUE)); }
    void Forget() { Must(m_manager->DiscardFrom(nullptr)); }

    const ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title;
    ComPtr<IKVMenuText> last;

private:
    ComPtr<IOleUndoManager> m_manager;
    int m_edits = 0;
};

void MeasureManyMenus(std::vector<Row>& rows)
{
    ManyMenus large(1'000);
    ManyMenus small(10);
    const auto compare = [&](const char* name, double (*measure)(ManyMenus&)) {
        const Medians medians = InTurn(
            kRounds, [&] { return measure(large); }, [&] { return measure(small); });
        rows.push_back({name, "us", medians.ours, medians.yardstick, 1.5});
    };
    const auto steps = [](ManyMenus& menus) {
        menus.Forget();
        return Each([&](int) {
            menus.Begin();
            menus.Edit();
            menus.End();
        });
    };
    compare("an element's edit in a step of its own, 1,000 menus | 10 menus", steps);
    compare("its undo", [](ManyMenus& menus) {
        menus.Forget();
        for (int i = 0; i < kTimes; ++i) {
            menus.Begin();
            menus.Edit();
            menus.End();
        }
        return Each([&](int) { Must(menus.project->UndoOperation()); });
    });
    compare("an element's edit in an open step, 1,000 menus | 10 menus", [](ManyMenus& menus) {
        menus.Forget();
        menus.Begin();
        const double each = Each([&](int) { menus.Edit(); });
        menus.End();
        return each;
    });

    LONG title = 0;
    Must(large.title->get_ID(&title));
    const auto find = [&](LONG id) {
        return 1e3 * Each([&](int) {
                   ComPtr<IUnknown> found;
                   Must(large.project->FindByID(id, found.Put()));
               });
    };
    const LONG element = IDOf(*large.last);
    const Medians medians = InTurn(
        kRounds, [&] { return find(element); }, [&] { return find(title); });
    rows.push_back({"a button's element in the last of 1,000 menus found by ID | a title", "ns", medians.ours,
                    medians.yardstick, 10});
}

void MeasureButtonHeap(std::vector<Row>& rows)
{
    constexpr int kMany = 2'000;
    const auto project = NewProject();
    const auto menu = AddMenu(*project);
    AddElement<IKVMenuButton>(menu);
    const auto before = mallinfo2();
    for (int i = 0; i < kMany; ++i)
        AddElement<IKVMenuButton>(menu);
    const auto after = mallinfo2();
    const double bytes = static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) / kMany;
    rows.push_back({"heap of a button without elements", "bytes", bytes, {}, 4096});
}

/// Six buttons with two texts and two overlays each: 30 elements a menu.
void FillMenu(const ComPtr<IKVMenu>& menu)
{
    for (int i = 0; i < 6; ++i) {
        const auto button = AddElement<IKVMenuButton>(menu);
        for (int j = 0; j < 2; ++j) {
            AddText(button, i);
            AddElement<IKVMenuOverlay>(button);
        }
        Must(button->SetPosition(0.25F, static_cast<float>(i) / 8));
    }
}

/// Files in memory: what the library costs, and not the disk. Each starts without memory that an earlier one has left
/// behind, whose pages the system would not have to make anew.
template <class Body>
double FreshMilliseconds(Body&& body)
{
    malloc_trim(0);
    return 1e3 * Time(body);
}

void MeasureMenuFiles(std::vector<Row>& rows)
{
    constexpr int kMenus = 200;
    constexpr int kFileRounds = 7;
    const std::string path = "/dev/shm/kv_bench." + std::to_string(getpid()) + ".xml";
    const Bstr file(ToUtf16(path));
    ComPtr<IKVFileService> files;
    Must(CreateInstance(CLSID_KVFileService, files));
    auto project = NewProject();
    for (int i = 0; i < kMenus; ++i)
        FillMenu(AddMenu(*project));
    Must(files->SaveProject(file.Get(), project.Get()));

    pugi::xml_document bare;
    const auto bareLoad = [&] { Must(bare.load_file(path.c_str()) ? S_OK : E_FAIL); };
    const auto bareSave = [&] {
        const std::string other = path + ".bare";
        Must(bare.save_file(other.c_str(), "  ", pugi::format_default, pugi::encoding_utf16_le) ? S_OK : E_FAIL);
    };
    bareLoad();
    const Medians saves = InTurn(
        kFileRounds, [&] { return FreshMilliseconds([&] { Must(files->SaveProject(file.Get(), project.Get())); }); },
        [&] { return FreshMilliseconds(bareSave); });
    const Medians loads = InTurn(
        kFileRounds,
        [&] {
            project = NewProject();
            return FreshMilliseconds([&] { Must(files->LoadProject(file.Get(), project.Get())); });
        },
        [&] {
            bare.reset();
            return FreshMilliseconds(bareLoad);
        });
    rows.push_back({"save of 200 menus of 30 elements | bare save of the tree", "ms", saves.ours, saves.yardstick, 3});
    rows.push_back({"load of the same | bare parse of the file", "ms", loads.ours, loads.yardstick, 3});
    rows.push_back({"both", "ms", saves.ours + loads.ours, saves.yardstick + loads.yardstick, 3});
    for (const std::string& each : {path, path + ".bare"})
        std::filesystem::remove(each);
}

} // namespace

void MeasureMenus(std::vector<Row>& rows)
{
    MeasureButtonHeap(rows);
    MeasureElements(rows);
    MeasureWholeMenus(rows);
    MeasureExtents(rows);
    MeasureManyMenus(rows);
    MeasureMenuFiles(rows);
}

} // namespace kv::bench
