// Texts of the text plug-in, and edits of them.

#include "Bench.h"

#include "KVProjectData/Engine.h"
#include "KVProjectData/effects/NXEffect.h"
#include "KVProjectData/effects/ZXPTextPlugInHelper.h"

#include <array>
#include <pango/pangocairo.h>
#include <pugixml.hpp>
#include <sstream>

namespace kv::bench {
namespace {

constexpr int kTexts = 50;

std::string ParagraphOf(int number)
{
    return "Chapter " + std::to_string(number) + " of a film whose title is long, and what it tells";
}

ComPtr<IXMLDOMElement> DocumentOf(int number)
{
    ComPtr<IXMLDOMDocument> document;
    Must(CreateInstance(CLSID_DOMDocument, document));
    const std::string paragraph = "<p align='center'>" + ParagraphOf(number) + " <b>in bold</b></p>";
    const std::string xml = "<plugin_data><html><body><font face='DejaVu Sans' fontHeight='32'>" + paragraph +
                            paragraph + paragraph + "</font></body></html></plugin_data>";
    VARIANT_BOOL parsed = VARIANT_FALSE;
    Must(document->loadXML(Bstr(ToUtf16(xml)).Get(), &parsed));
    ComPtr<IXMLDOMElement> root;
    Must(document->get_documentElement(root.Put()));
    return root;
}

void Corners(const std::vector<ComPtr<IXMLDOMElement>>& documents)
{
    constexpr double kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    for (const auto& document : documents) {
        ComPtr<IZXTextPlugIn> text;
        Must(CreateInstance(CLSID_ZXTextPlugIn, text));
        Must(text->SetUp(640, 480, kIdentity, kIdentity));
        Must(text->SetText(document.Get()));
        ZXTextPoint corners[4];
        Must(text->GetCorners(corners));
    }
}

/// The same paragraphs in layouts of Pango's own, with markup for the bold words.
void LayOut(PangoContext* context, const std::string& markup)
{
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family(font, "DejaVu Sans");
    pango_font_description_set_absolute_size(font, 32 * PANGO_SCALE);
    pango_layout_set_font_description(layout, font);
    pango_layout_set_markup(layout, markup.data(), static_cast<int>(markup.size()));
    PangoRectangle box;
    pango_layout_get_extents(layout, nullptr, &box);
    pango_font_description_free(font);
    g_object_unref(layout);
}

void Layouts(PangoContext* context)
{
    for (int i = 0; i < kTexts; ++i) {
        const std::string markup = ParagraphOf(i) + " <b>in bold</b>";
        for (int paragraph = 0; paragraph < 3; ++paragraph)
            LayOut(context, markup);
    }
}

/// A text of 20 runs that differ, as the effect of a new production has it.
XmlElement RunsDocument()
{
    std::string runs;
    for (int i = 0; i < 20; ++i) {
        runs += "<font face='Face " + std::to_string(i % 3) + "' fontHeight='32' color='#FFFFFF00'>run " +
                std::to_string(i) + (i % 2 ? " <b>in bold</b></font>" : "</font>");
    }
    return XmlElement::Parse("<effect><uuid>{FACE348E-03D6-4F44-8EC6-065D64A91BFE}</uuid><plugin_data><html><body>"
                             "<p align='center'>" +
                             runs + "</p></body></html></plugin_data></effect>");
}

/// Puts one of two faces after the other, each time into the effect on the storyboard.
void EditTexts(CNXEffect& effect)
{
    static const std::array<Bstr, 2> faces{Bstr(u"DejaVu Sans"), Bstr(u"DejaVu Serif")};
    for (int i = 0; i < kTexts; ++i) {
        Must(effect.Edit([&](XmlElement& pluginData) {
            CZXPTextPlugInHelper text;
            Must(text.Attach(pluginData));
            Must(text.put_Face(faces[i % 2].Get()));
            Must(text.Save(pluginData));
            return true;
        }));
    }
}

void ParseAndWrite(const std::string& markup)
{
    for (int i = 0; i < kTexts; ++i) {
        pugi::xml_document document;
        Must(document.load_buffer(markup.data(), markup.size()) ? S_OK : E_FAIL);
        std::ostringstream written;
        document.save(written, "", pugi::format_raw);
    }
}

void MeasureEdits(std::vector<Row>& rows)
{
    constexpr int kRounds = 101;
    ComPtr<IZXEProductionData> production;
    Must(CreateInstance(CLSID_ZXEProduction, production));
    Must(production->Initialise());
    CNXEffect effect;
    Must(effect.Create(production.Get(), ZXE_EFFECT_TEXT, 1, RunsDocument().Get()));
    EditTexts(effect);
    ComPtr<IXMLDOMNode> document;
    Must(effect.getDocument(document));
    const std::string markup = XmlElement(document.Get()).Markup();
    const Medians edits = InTurn(
        kRounds, [&] { return 1e6 / kTexts * Time([&] { EditTexts(effect); }); },
        [&] { return 1e6 / kTexts * Time([&] { ParseAndWrite(markup); }); });
    rows.push_back({"one face for a text of 20 runs | its document parsed and written by pugixml", "us", edits.ours,
                    edits.yardstick, 5});
}

/// The boxes of texts of a menu, which has a production.
void MeasureBoxes(std::vector<Row>& rows, PangoContext* context)
{
    constexpr int kRounds = 25;
    const auto project = NewProject();
    ComPtr<IKVMenu> menu;
    Must(project->AddMenu(-1, menu.Put()));
    std::vector<ComPtr<IKVMenuText>> texts;
    for (int i = 0; i < kTexts; ++i) {
        ComPtr<IKVMenuElement> element;
        Must(Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuText::IID, element.Put()));
        const auto& text = texts.emplace_back(Query<IKVMenuText>(element));
        Must(text->put_String(Bstr(ToUtf16(ParagraphOf(i))).Get()));
        Must(text->put_Font(Bstr(u"DejaVu Sans").Get()));
        Must(text->put_height(32));
    }
    const auto boxes = [&] {
        FloatPoint corners[4];
        for (const auto& text : texts)
            Must(text->GetBoundingBox(corners));
    };
    const auto layouts = [&] {
        for (int i = 0; i < kTexts; ++i)
            LayOut(context, ParagraphOf(i));
    };
    boxes();
    layouts();
    const Medians medians = InTurn(
        kRounds, [&] { return 1e6 / kTexts * Time(boxes); }, [&] { return 1e6 / kTexts * Time(layouts); });
    rows.push_back(
        {"bounding box of a text of a menu | bare Pango layout", "us", medians.ours, medians.yardstick, 1.5});
}

} // namespace

void MeasureTexts(std::vector<Row>& rows)
{
    MeasureEdits(rows);
    constexpr int kRounds = 25;
    std::vector<ComPtr<IXMLDOMElement>> documents;
    for (int i = 0; i < kTexts; ++i)
        documents.push_back(DocumentOf(i));
    PangoFontMap* map = pango_cairo_font_map_new();
    PangoContext* context = pango_font_map_create_context(map);
    // Both know their fonts by then.
    Corners(documents);
    Layouts(context);
    const Medians medians = InTurn(
        kRounds, [&] { return 1e6 / kTexts * Time([&] { Corners(documents); }); },
        [&] { return 1e6 / kTexts * Time([&] { Layouts(context); }); });
    rows.push_back({"corners of a text | bare Pango layout", "us", medians.ours, medians.yardstick, 1.3});
    MeasureBoxes(rows, context);
    g_object_unref(context);
    g_object_unref(map);
}

} // namespace kv::bench
