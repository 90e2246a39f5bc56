// Frames of a production.

#include "Bench.h"

#include "KVProjectData/Engine.h"
#include "platform/automation/Bstr.h"
#include "platform/xml/Element.h"

#include <array>
#include <filesystem>
#include <pango/pangocairo.h>
#include <stdexcept>
#include <unistd.h>

namespace kv::bench {
namespace {

constexpr int kWidth = 720;
constexpr int kHeight = 576;
constexpr double kAspectRatio = 4.0 / 3.0;
/// Of a row; there are three rows of overlays, and of texts.
constexpr int kColumns = 4;
constexpr int kItems = 12;
/// Of an overlay, in parts of the frame's.
constexpr double kSide = 0.2;

using Surfaces = std::array<cairo_surface_t*, kItems + 1>;

/// Pictures of the frame's size and of 12 overlays, and their end.
class Pictures {
public:
    Pictures()
    {
        for (int i = 0; i <= kItems; ++i) {
            cairo_surface_t* surface =
                cairo_image_surface_create(CAIRO_FORMAT_ARGB32, i == 0 ? kWidth : 160, i == 0 ? kHeight : 120);
            cairo_t* context = cairo_create(surface);
            cairo_scale(context, cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface));
            cairo_pattern_t* shades = cairo_pattern_create_radial(0.5, 0.5, 0.1, 0.5, 0.5, 0.6);
            cairo_pattern_add_color_stop_rgba(shades, 0, i / 12.0, 0.5, 1, 1);
            cairo_pattern_add_color_stop_rgba(shades, 1, 1, i / 12.0, 0, i == 0 ? 1 : 0);
            cairo_set_source(context, shades);
            cairo_paint(context);
            cairo_pattern_destroy(shades);
            cairo_destroy(context);
            if (cairo_surface_write_to_png(surface, Path(i).c_str()) != CAIRO_STATUS_SUCCESS) {
                throw std::runtime_error("cannot write " + Path(i));
            }
            surfaces[static_cast<std::size_t>(i)] = surface;
        }
    }
    Pictures(const Pictures&) = delete;
    Pictures& operator=(const Pictures&) = delete;
    ~Pictures()
    {
        std::error_code ignored;
        for (int i = 0; i <= kItems; ++i) {
            cairo_surface_destroy(surfaces[static_cast<std::size_t>(i)]);
            std::filesystem::remove(Path(i), ignored);
        }
    }

    static std::string Path(int i)
    {
        const std::string name = "kv_bench_" + std::to_string(getpid()) + "_" + std::to_string(i) + ".png";
        return (std::filesystem::temp_directory_path() / name).string();
    }

    Surfaces surfaces{};
};

/// The middle of an item, in parts of the frame from its top left.
double AcrossOf(int item)
{
    return (item % kColumns + 0.5) / kColumns;
}

double DownOf(int item)
{
    return (item / kColumns + 0.5) / (kItems / kColumns);
}

std::string TextOf(int item)
{
    return "Chapter " + std::to_string(item) + " of a film";
}

std::string Channel(const char* name, double x, double y)
{
    return std::string("<") + name + "><StartOffsetElements><KeyFrame><Time>0</Time><Vector><x>" + std::to_string(x) +
           "</x><y>" + std::to_string(y) + "</y><z>1</z></Vector></KeyFrame></StartOffsetElements></" + name + ">";
}

ComPtr<IXMLDOMNode> DocumentOf(int item, const std::string& content)
{
    return XmlElement::Parse("<effect><plugin_data>" +
                             Channel("Translation", 2.0 * AcrossOf(item) - 1.0, 1.0 - 2.0 * DownOf(item)) + content +
                             "</plugin_data></effect>")
        .Get();
}

ComPtr<IZXEProductionFrames> NewProduction()
{
    ComPtr<IZXEProductionData> production;
    Must(CreateInstance(CLSID_ZXEProduction, production));
    Must(production->Initialise());
    const auto edit = Query<IEditData>(production);
    const auto path = [](int i) { return Bstr(ToUtf16(Pictures::Path(i))); };
    Must(edit->AddSourceFile(0, path(0).Get(), 0.0, 10.0, -1, nullptr));
    for (int i = 0; i < kItems; ++i) {
        const auto overlay = DocumentOf(i, Channel("Scaling", kSide, kSide));
        Must(edit->AddProductionEffect(i, ZXE_EFFECT_OVERLAY, overlay.Get(), path(i + 1).Get(), 0, 0.0, nullptr));
        const auto text = DocumentOf(i, "<html><body><p><font face='DejaVu Sans' fontHeight='20'>" + TextOf(i) +
                                            "</font></p></body></html>");
        Must(edit->AddProductionEffect(kItems + i, ZXE_EFFECT_TEXT, text.Get(), nullptr, 0, 0.0, nullptr));
    }
    return Query<IZXEProductionFrames>(production);
}

void Frame(IZXEProductionFrames* production)
{
    ULONG width = 0;
    ULONG height = 0;
    ULONG stride = 0;
    SafeArray pixels;
    Must(production->GetFrame(1.0, kWidth, kHeight, &width, &height, &stride, pixels.Put()));
}

void PaintPicture(cairo_t* context, cairo_surface_t* picture, double x, double y, double width, double height)
{
    cairo_save(context);
    cairo_translate(context, x - width / 2.0, y - height / 2.0);
    cairo_scale(context, width / cairo_image_surface_get_width(picture),
                height / cairo_image_surface_get_height(picture));
    cairo_set_source_surface(context, picture, 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_BILINEAR);
    cairo_paint(context);
    cairo_restore(context);
}

/// The same picture, by Cairo and Pango alone; the pictures are decoded already, as ours are by then.
void FrameByHand(const Surfaces& pictures, PangoContext* fonts)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kWidth, kHeight);
    cairo_t* context = cairo_create(surface);
    PaintPicture(context, pictures[0], kWidth / 2.0, kHeight / 2.0, kWidth, kHeight);
    for (int i = 0; i < kItems; ++i) {
        PaintPicture(context, pictures[static_cast<std::size_t>(i) + 1], kWidth * AcrossOf(i), kHeight * DownOf(i),
                     kWidth * kSide, kHeight * kSide);
    }
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family(font, "DejaVu Sans");
    pango_font_description_set_absolute_size(font, 20 * PANGO_SCALE);
    cairo_set_source_rgb(context, 1, 1, 1);
    for (int i = 0; i < kItems; ++i) {
        const std::string text = TextOf(i);
        PangoLayout* layout = pango_layout_new(fonts);
        pango_layout_set_font_description(layout, font);
        pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
        PangoRectangle box;
        pango_layout_get_extents(layout, nullptr, &box);
        cairo_save(context);
        cairo_translate(context, kWidth * AcrossOf(i), kHeight * DownOf(i));
        cairo_scale(context, kWidth / 480.0 / kAspectRatio, kHeight / 480.0);
        cairo_move_to(context, -box.width / 2.0 / PANGO_SCALE, -box.height / 2.0 / PANGO_SCALE);
        pango_cairo_show_layout(context, layout);
        cairo_restore(context);
        g_object_unref(layout);
    }
    pango_font_description_free(font);
    cairo_surface_flush(surface);
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}

} // namespace

void MeasureFrames(std::vector<Row>& rows)
{
    constexpr int kRounds = 40;
    const Pictures pictures;
    const ComPtr<IZXEProductionFrames> production = NewProduction();
    PangoFontMap* map = pango_cairo_font_map_new();
    PangoContext* fonts = pango_font_map_create_context(map);
    // Both know their pictures and fonts by then.
    Frame(production.Get());
    FrameByHand(pictures.surfaces, fonts);
    const Medians medians = InTurn(
        kRounds, [&] { return 1e3 * Time([&] { Frame(production.Get()); }); },
        [&] { return 1e3 * Time([&] { FrameByHand(pictures.surfaces, fonts); }); });
    rows.push_back({"a frame of a picture, 12 overlays and 12 texts | Cairo and Pango by hand", "ms", medians.ours,
                    medians.yardstick, 1.3});
    g_object_unref(fonts);
    g_object_unref(map);
}

} // namespace kv::bench
