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

using Productions = std::vector<ComPtr<IZXEProductionData>>;

ComPtr<IXMLDOMDocument> NewDocument()
{
    ComPtr<IXMLDOMDocument> document;
    Must(CreateInstance(CLSID_DOMDocument, document));
    return document;
}

void Save(const Productions& productions, const std::string& path)
{
    const auto document = NewDocument();
    XmlElement root = XmlElement::New("Productions");
    Must(document->appendChild(root.Get(), nullptr));
    for (const auto& production : productions)
        Must(Query<IZXEProductionPersist>(production)->Save(root.Add("Production").Element().Get(), nullptr));
    Must(document->save(Variant(ToUtf16(path))));
}

Productions Load(const std::string& path)
{
    const auto document = NewDocument();
    VARIANT_BOOL loaded = VARIANT_FALSE;
    Must(document->load(Variant(ToUtf16(path)), &loaded));
    Must(loaded ? S_OK : E_FAIL);
    ComPtr<IXMLDOMElement> root;
    Must(document->get_documentElement(root.Put()));
    Productions productions;
    for (const XmlElement& element : XmlElement(root.Get()).Children()) {
        productions.push_back(NewProduction());
        Must(Query<IZXEProductionPersist>(productions.back())->Load(element.Element().Get(), nullptr));
    }
    return productions;
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
    Productions productions;
    for (int i = 0; i < kProductions; ++i)
        productions.push_back(ProductionOf(kEffects));
    Save(productions, path);
    productions.clear();
    malloc_trim(0);
    const double before = HeapBytes();
    productions = Load(path);
    rows.push_back(
        {"heap of a loaded production of ten effects", "bytes", (HeapBytes() - before) / kProductions, {}, 32 * 1024});

    const Medians saves = InTurn(
        9, [&] { return FreshMilliseconds([&] { Save(productions, path); }); },
        [&] {
            pugi::xml_document bare;
            Must(bare.load_file(path.c_str()) ? S_OK : E_FAIL);
            return FreshMilliseconds([&] { Must(bare.save_file((path + ".bare").c_str()) ? S_OK : E_FAIL); });
        });
    rows.push_back({"save of 1,000 productions | bare save of the tree", "ms", saves.ours, saves.yardstick, 3});
    productions.clear();
    const Medians loads = InTurn(
        9,
        [&] {
            Productions loaded;
            return FreshMilliseconds([&] { loaded = Load(path); });
        },
        [&] {
            pugi::xml_document bare;
            return FreshMilliseconds([&] { Must(bare.load_file(path.c_str()) ? S_OK : E_FAIL); });
        });
    rows.push_back({"load of 1,000 productions | bare parse of the file", "ms", loads.ours, loads.yardstick, 3});
    rows.push_back({"both", "ms", saves.ours + loads.ours, saves.yardstick + loads.yardstick, 3});
    for (const std::string& file : {path, path + ".bare"})
        std::filesystem::remove(file);
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
