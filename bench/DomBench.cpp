// The documents themselves: selection and copies.

#include "Bench.h"
#include "platform/xml/Element.h"

#include <malloc.h>
#include <pugixml.hpp>
#include <thread>

namespace kv::bench {
namespace {

constexpr int kTexts = 4'000;
constexpr int kValues = 60;
constexpr int kCopies = 2'000;

/// Each selection starts from the same memory: what the one before has left behind is given back to the system or not
/// by where the heap ends, which the tree of a removed node decides.
double SelectionSeconds(IXMLDOMNode& from)
{
    static const Bstr expression(u".//text()");
    ComPtr<IXMLDOMNodeList> found;
    malloc_trim(0);
    const double seconds = Time([&] { Must(from.selectNodes(expression.Get(), found.Put())); });
    LONG count = 0;
    Must(found->get_length(&count));
    Must(count == kTexts ? S_OK : E_FAIL);
    return seconds;
}

XmlElement EffectOfValues()
{
    XmlElement effect = XmlElement::New("effect");
    for (LONG i = 0; i < kValues; ++i)
        effect.Add({"Value", i}, i / 8.0);
    return effect;
}

void CopyMany(IXMLDOMNode& node)
{
    ComPtr<IXMLDOMNode> copy;
    for (int i = 0; i < kCopies; ++i)
        Must(node.cloneNode(VARIANT_TRUE, copy.Put()));
}

double CopySeconds(IXMLDOMNode& node)
{
    return Time([&] { CopyMany(node); }) / kCopies;
}

double BareCopySeconds(pugi::xml_node node)
{
    const double seconds = Time([&] {
        for (int i = 0; i < kCopies; ++i) {
            pugi::xml_document copy;
            Must(copy.append_copy(node) ? S_OK : E_OUTOFMEMORY);
        }
    });
    return seconds / kCopies;
}

/// What a copy takes each of three threads.
double SharedCopySeconds(IXMLDOMNode& node)
{
    const double seconds = Time([&] {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i)
            threads.emplace_back([&node] { CopyMany(node); });
    });
    return seconds / kCopies;
}

} // namespace

void MeasureDom(std::vector<Row>& rows)
{
    ComPtr<IXMLDOMDocument> document;
    Must(CreateInstance(CLSID_DOMDocument, document));
    XmlElement texts = XmlElement::New("texts");
    Must(document->appendChild(texts.Get(), nullptr));
    for (int i = 0; i < kTexts; ++i)
        texts.AddText("t", "text");
    const Medians selection = InTurn(
        15,
        [&] {
            const XmlElement gone = texts.Add("gone");
            Must(texts.Get()->removeChild(gone.Get(), nullptr));
            return 1e3 * SelectionSeconds(*document.Get());
        },
        [&] { return 1e3 * SelectionSeconds(*document.Get()); });
    rows.push_back({".//text() over 4,000 texts, a removed node held | none held", "ms", selection.ours,
                    selection.yardstick, 1.5});

    const XmlElement effect = EffectOfValues();
    pugi::xml_document bare;
    Must(bare.load_string(effect.Markup().c_str()) ? S_OK : E_FAIL);
    const Medians copies = InTurn(
        15, [&] { return 1e6 * CopySeconds(*effect.Get()); },
        [&] { return 1e6 * BareCopySeconds(bare.document_element()); });
    rows.push_back({"copy of an effect of 60 typed values | a bare copy", "us", copies.ours, copies.yardstick, 3});

    const Medians shared = InTurn(
        15, [&] { return 1e6 * SharedCopySeconds(*effect.Get()); }, [&] { return 1e6 * CopySeconds(*effect.Get()); });
    rows.push_back({"such a copy on each of three threads | on one", "us", shared.ours, shared.yardstick, 4});
}

} // namespace kv::bench
