// Productions: saving, loading, undo.

#include "Bench.h"
#include "KVProjectData/Engine.h"
#include "platform/xml/Element.h"

#include <filesystem>
#include <malloc.h>
#include <pugixml.hpp>
#include <unistd.h>

namespace kv::bench {
namespace {

constexpr int kProductions = 1'000;
constexpr int kEffects = 10;

/// A document as the helpers of the library make it: four channels with a key each.
XmlElement EffectDocument(int number)
{
    XmlElement effect = XmlElement::New("effect");
    XmlElement data = effect.Add("plugin_data");
    for (const char* channel : {"Translation", "Scaling", "Rotation", "Opacity"}) {
        XmlElement frame = data.Add(channel).Add("StartOffsetElements").Add("KeyFrame");
        frame.Add("Time", 0.0);
        XmlElement vector = frame.Add("Vector");
        for (const char* axis : {"x", "y", "z"})
            vector.Add(axis, number / 16.0);
    }
    return effect;
}

ComPtr<IZXEProductionData> NewProduction()
{
    ComPtr<IZXEProductionData> production;
    Must(CreateInstance(CLSID_ZXEProduction, production));
    Must(production->Initialise());
    return production;
}

/// A production of one panel, which gives its effects in order.
ComPtr<IZXEProductionData> ProductionOf(int effects, std::vector<ComPtr<IEffectInfo>>* made = nullptr)
{
    static const Bstr source(u"title:1");
    auto production = NewProduction();
    const auto edit = Query<IEditData>(production);
    Must(edit->AddSourceFile(0, source.Get(), 0.0, 30.0, -1, nullptr));
    for (int i = 0; i < effects; ++i) {
        ComPtr<IUnknown> effect;
        const XmlElement document = EffectDocument(i);
        Must(edit->AddProductionEffect(i, ZXE_EFFECT_OVERLAY, document.Get(), nullptr, 0, 0.0, effect.Put()));
        if (made) made->push_back(Query<IEffectInfo>(effect));
    }
    return production;
}

ComPtr<IKVFileService> Files()
{
    ComPtr<IKVFileService> files;
    Must(CreateInstance(CLSID_KVFileService, files));
    return files;
}

/// A project whose titles have a production each.
ComPtr<IKVProjectData> ProjectOf(int productions)
{
    const auto project = NewProject();
    for (int i = 0; i < productions; ++i) {
        ComPtr<IKVTitle> title;
        Must(project->AddTitle(0, title.Put()));
        Must(title->SetProduction(ProductionOf(kEffects).Get()));
    }
    return project;
}

ComPtr<IKVProjectData> Load(IKVFileService& files, const Bstr& file)
{
    auto project = NewProject();
    Must(files.LoadProject(file.Get(), project.Get()));
    return project;
}

/// Each starts when all earlier files are on the disk, and without memory that an earlier round has left behind.
template <class Body>
double FreshMilliseconds(Body&& body)
{
    sync();
    malloc_trim(0);
    return 1e3 * Time(body);
}

double HeapBytes()
{
    const auto heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

void MeasureFiles(std::vector<Row>& rows)
{
    const std::string path =
        (std::filesystem::temp_directory_path() / ("kv_bench." + std::to_string(getpid()) + ".xml")).string();
    const std::string barePath = path + ".bare";
    const Bstr file(ToUtf16(path));
    const auto files = Files();
    auto project = ProjectOf(kProductions);
    Must(files->SaveProject(file.Get(), project.Get()));
    project.Reset();
    malloc_trim(0);
    const double before = HeapBytes();
    project = Load(*files, file);
    rows.push_back({"heap of a loaded title with a production of ten effects",
                    "bytes",
                    (HeapBytes() - before) / kProductions,
                    {},
                    32 * 1024});

    const Medians saves = InTurn(
        9, [&] { return FreshMilliseconds([&] { Must(files->SaveProject(file.Get(), project.Get())); }); },
        [&] {
            pugi::xml_document bare;
            Must(bare.load_file(path.c_str()) ? S_OK : E_FAIL);
            return FreshMilliseconds([&] {
                const bool saved =
                    bare.save_file(barePath.c_str(), "  ", pugi::format_default, pugi::encoding_utf16_le);
                Must(saved ? S_OK : E_FAIL);
            });
        });
    rows.push_back({"save of 1,000 productions | bare save of the tree", "ms", saves.ours, saves.yardstick, 3});
    project.Reset();
    const Medians loads = InTurn(
        9,
        [&] {
            ComPtr<IKVProjectData> loaded;
            return FreshMilliseconds([&] { loaded = Load(*files, file); });
        },
        [&] {
            pugi::xml_document bare;
            return FreshMilliseconds([&] { Must(bare.load_file(path.c_str()) ? S_OK : E_FAIL); });
        });
    rows.push_back({"load of 1,000 productions | bare parse of the file", "ms", loads.ours, loads.yardstick, 3});
    rows.push_back({"both", "ms", saves.ours + loads.ours, saves.yardstick + loads.yardstick, 3});
    for (const std::string& each : {path, barePath})
        std::filesystem::remove(each);
}

/// Edits an effect after the other, each in a block, and takes all of them back.
class EditedProduction {
public:
    explicit EditedProduction(int effects) : m_production(ProductionOf(effects, &m_effects)) {}

    double UndoNanoseconds()
    {
        constexpr int kEdits = 10'000;
        Must(m_production->Close());
        Must(m_production->Initialise());
        for (int i = 0; i < kEdits; ++i) {
            Must(m_production->OpenUndoBlock());
            const auto effect = static_cast<std::size_t>(i) % m_effects.size();
            Must(m_effects[effect]->SetParameterDocument(m_document.Get(), VARIANT_TRUE));
            Must(m_effects[effect]->SetGroupID(i));
            Must(m_production->CloseUndoBlock(VARIANT_TRUE));
        }
        return 1e9 / kEdits * Time([&] {
                   for (int i = 0; i < kEdits; ++i)
                       Must(m_production->Undo());
               });
    }

private:
    const XmlElement m_document = EffectDocument(0);
    std::vector<ComPtr<IEffectInfo>> m_effects;
    ComPtr<IZXEProductionData> m_production;
};

void MeasureUndoOfEffects(std::vector<Row>& rows)
{
    EditedProduction large(1'000);
    EditedProduction small(10);
    const Medians medians = InTurn(
        15, [&] { return large.UndoNanoseconds(); }, [&] { return small.UndoNanoseconds(); });
    rows.push_back(
        {"undo of an effect's edit, 1,000 effects | 10 effects", "ns", medians.ours, medians.yardstick, 1.2});
}

} // namespace

void MeasureStoryboards(std::vector<Row>& rows)
{
    MeasureFiles(rows);
    MeasureUndoOfEffects(rows);
}

} // namespace kv::bench
