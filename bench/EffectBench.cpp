// Edits of an effect's parameter document, through the wrapper and the engine.

#include "Bench.h"
#include "KVProjectData/Engine.h"
#include "KVProjectData/effects/NXEffect.h"

#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <sstream>
#include <stdexcept>

namespace kv::bench {
namespace {

/// A round is short, so that it is seldom interrupted.
constexpr int kTimes = 40;

/// The document that a new overlay starts from.
XmlElement OverlayDocument()
{
    std::ifstream file(KV_BENCH_CONTENT "/DVD/Mandatory/AlphaOverlay.xml", std::ios::binary);
    const XmlElement root = XmlElement::Parse(std::string(std::istreambuf_iterator<char>(file), {}));
    return root.Child("effect").Copy();
}

std::string MarkupOf(const CNXEffect& effect)
{
    ComPtr<IXMLDOMNode> document;
    Must(effect.getDocument(document));
    return XmlElement(document.Get()).Markup();
}

/// Microseconds that a body takes.
template <class Body>
double Each(Body&& body)
{
    const double seconds = Time([&] {
        for (int i = 0; i < kTimes; ++i)
            body(i);
    });
    return 1e6 * seconds / kTimes;
}

void Parse(const std::string& markup, pugi::xml_document& document)
{
    if (!document.load_buffer(markup.data(), markup.size())) throw std::runtime_error("the document does not parse");
}

} // namespace

void MeasureEffects(std::vector<Row>& rows)
{
    constexpr int kRounds = 101;
    ComPtr<IZXEProductionData> production;
    Must(CreateInstance(CLSID_ZXEProduction, production));
    Must(production->Initialise());
    CNXEffect effect;
    Must(effect.Create(production.Get(), ZXE_EFFECT_OVERLAY, 1, OverlayDocument().Get()));
    const auto edit = [&](int i) {
        Must(effect.setChannel(ZXP_TRANSLATION, 0.0, ZXP_FROM_START, {static_cast<float>(i), 0, 0}));
    };
    edit(0);
    const std::string markup = MarkupOf(effect);

    const Medians edits = InTurn(
        kRounds, [&] { return Each(edit); },
        [&] {
            return Each([&](int) {
                pugi::xml_document document;
                Parse(markup, document);
                std::ostringstream written;
                document.save(written, "", pugi::format_raw);
            });
        });
    rows.push_back(
        {"one transform edit | its document parsed and written by pugixml", "us", edits.ours, edits.yardstick, 3});

    const Medians reads = InTurn(
        kRounds,
        [&] {
            return Each([&](int) {
                ZXPVector value;
                Must(effect.getChannel(ZXP_TRANSLATION, 0.0, ZXP_FROM_START, value));
            });
        },
        [&] {
            return Each([&](int) {
                pugi::xml_document document;
                Parse(markup, document);
            });
        });
    rows.push_back({"one channel read | the same parsed", "us", reads.ours, reads.yardstick, 0.5});
}

} // namespace kv::bench
