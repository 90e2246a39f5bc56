#include "Render.h"

#include "Failure.h"
#include "KVProjectData/Engine.h"
#include "KVProjectData/KVProjectData.h"
#include "ObjectPath.h"
#include "platform/system/AtomicFile.h"

#include <algorithm>
#include <array>
#include <cairo.h>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Query;

/// The longest side that the engine draws.
constexpr int kLongestSide = 16384;
constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1A\n";

constexpr int kPaletteSize = 16;
constexpr int kFullContrast = 15;

struct Destroy {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* drawing) const { cairo_destroy(drawing); }
};
using Surface = std::unique_ptr<cairo_surface_t, Destroy>;
using Drawing = std::unique_ptr<cairo_t, Destroy>;

void RequireDrawn(cairo_status_t status)
{
    if (status != CAIRO_STATUS_SUCCESS)
        throw Failure(std::string("cannot draw the picture: ") + cairo_status_to_string(status));
}

/// What the discs of the project's format and standard show.
PictureSize SizeOfDisc(IKVProjectData& project)
{
    DiscFormat format = DVD_Video;
    TVStandard standard = NTSC;
    Require(project.get_DiscFormat(&format), "the disc format cannot be read");
    Require(project.get_TVStandard(&standard), "the TV standard cannot be read");
    switch (format) {
    case H_BDMV:
    case H_BD_AV:
    case H_HDDVD:
    case H_HDDVD_VR:
    case AVCHD:
        return {1920, 1080};
    case HEVC_UHD:
        return {3840, 2160};
    default:
        return {720, standard == PAL ? 576 : 480};
    }
}

/// What shows the menu, or in native mode its background alone.
ComPtr<IUnknown> ProductionOf(IKVMenu& menu)
{
    ComPtr<IUnknown> production;
    const HRESULT own = menu.GetProduction(production.Put());
    if (!production) Require(menu.GetBackgroundProduction(production.Put()), "the menu has no production");
    if (!production) Require(FAILED(own) ? own : E_FAIL, "the menu has no production");
    return production;
}

ComPtr<IUnknown> ProductionOf(IDispatch* object, const std::string& path)
{
    if (const auto menu = Query<IKVMenu>(object)) return ProductionOf(*menu);
    const auto title = Query<IKVTitle>(object);
    if (!title) throw Failure(path + ": there are pictures of menus[N] and titles[N] alone");
    ComPtr<IUnknown> production;
    Require(title->GetProduction(production.Put()), "the title has no production");
    return production;
}

/// The frame on black, as a screen shows it.
Surface DrawFrame(IUnknown* production, double seconds, PictureSize size)
{
    const auto frames = Query<IZXEProductionFrames>(production);
    if (!frames) throw Failure("the engine draws no pictures");
    ULONG width = 0;
    ULONG height = 0;
    ULONG stride = 0;
    kv::SafeArray pixels;
    Require(frames->GetFrame(seconds, static_cast<ULONG>(size.width), static_cast<ULONG>(size.height), &width, &height,
                             &stride, pixels.Put()),
            "the picture cannot be drawn");
    const Surface frame(cairo_image_surface_create_for_data(static_cast<unsigned char*>(pixels.Get()->pvData),
                                                            CAIRO_FORMAT_ARGB32, static_cast<int>(width),
                                                            static_cast<int>(height), static_cast<int>(stride)));
    Surface picture(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height)));
    const Drawing drawing(cairo_create(picture.get()));
    cairo_set_source_surface(drawing.get(), frame.get(), 0, 0);
    cairo_paint(drawing.get());
    RequireDrawn(cairo_status(drawing.get()));
    return picture;
}

/// Whole pixels, as a subpicture has them.
struct PixelRect {
    int left;
    int top;
    int right;
    int bottom;

    bool IsEmpty() const { return left >= right || top >= bottom; }
};

/// The part of a region, which runs from -1 to 1 as the frame does, y upwards, that is in the picture.
PixelRect InPicture(const FloatRect& region, PictureSize size)
{
    // What is no number is nowhere.
    const auto at = [](double place, int side) {
        return std::isnan(place) ? 0 : static_cast<int>(std::lround((std::clamp(place, -1.0, 1.0) + 1) / 2 * side));
    };
    return {at(region.fLeft, size.width), at(-region.fTop, size.height), at(region.fRight, size.width),
            at(-region.fBottom, size.height)};
}

/// Where the button is highlighted: around its highlighted elements, else where a pointer activates it, else all of it.
FloatRect RegionOf(IKVMenuButton& button)
{
    FloatRect region{};
    if (button.GetHighlightRegion(&region) == S_OK) return region;
    VARIANT_BOOL isValid = VARIANT_FALSE;
    if (SUCCEEDED(button.get_ActiveRegion(&region, &isValid)) && isValid) return region;
    return SUCCEEDED(button.GetExtent(&region)) ? region : FloatRect{};
}

class Highlighter {
public:
    Highlighter(IKVMenu& menu, cairo_surface_t* picture, PictureSize size)
        : m_menu(menu), m_drawing(cairo_create(picture)), m_size(size)
    {
        Require(menu.GetPalette(m_palette.data()), "the palette cannot be read");
    }

    /// Why nothing is seen of it; empty when it is.
    std::string Draw(IKVMenuButton& button, bool activated)
    {
        const PixelRect rect = InPicture(RegionOf(button), m_size);
        if (rect.IsEmpty()) return "its region is empty";
        LONG scheme = 0;
        Require(button.get_ButtonScheme(&scheme), "the scheme of a button cannot be read");
        SPUColourInfo selectedColours{};
        SPUColourInfo activatedColours{};
        const HRESULT result =
            m_menu.GetSubpictureColours(static_cast<SPUColourTypes>(scheme), &selectedColours, &activatedColours);
        if (FAILED(result)) return "its scheme has no colours";
        const SPUColourInfo& colours = activated ? activatedColours : selectedColours;
        // A file may say anything.
        if (colours.pattCol >= kPaletteSize) return "the colour of its scheme is not in the palette";
        if (colours.pattCnt == 0) return "the colour of its scheme has no contrast";
        const RGBEntry& colour = m_palette[colours.pattCol];
        cairo_set_source_rgba(m_drawing.get(), colour.byR / 255.0, colour.byG / 255.0, colour.byB / 255.0,
                              std::min<int>(colours.pattCnt, kFullContrast) / static_cast<double>(kFullContrast));
        cairo_rectangle(m_drawing.get(), rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
        cairo_fill(m_drawing.get());
        RequireDrawn(cairo_status(m_drawing.get()));
        return {};
    }

private:
    IKVMenu& m_menu;
    Drawing m_drawing;
    PictureSize m_size;
    std::array<RGBEntry, kPaletteSize> m_palette{};
};

/// The position of the button that is selected when the menu appears.
LONG FirstSelected(IKVMenu& menu)
{
    LONG wanted = 0;
    Require(menu.get_DefaultButton(&wanted), "the default button cannot be read");
    ComPtr<IKVMenuButton> button;
    for (LONG i = 1; wanted != 0 && SUCCEEDED(menu.GetButton(i, button.Put())); ++i) {
        LONG id = 0;
        if (SUCCEEDED(button->get_ID(&id)) && id == wanted) return i;
    }
    return 1;
}

void DrawHighlights(IKVMenu& menu, const Picture& picture, cairo_surface_t* surface, PictureSize size)
{
    LONG count = 0;
    Require(menu.get_ButtonCount(&count), "the buttons cannot be counted");
    if (count == 0) throw Failure(picture.path + " has no button that could be highlighted");
    const bool all = picture.highlight == Highlight::All;
    const LONG first = all ? 1 : FirstSelected(menu);
    const LONG last = all ? count : first;
    Highlighter highlighter(menu, surface, size);
    for (LONG i = first; i <= last; ++i) {
        ComPtr<IKVMenuButton> button;
        Require(menu.GetButton(i, button.Put()), "a button cannot be read");
        const std::string fault = highlighter.Draw(*button, picture.highlight == Highlight::Activated);
        if (!fault.empty())
            std::cerr << "kvproject: the highlight of " << picture.path << ".buttons[" << i
                      << "] is not seen: " << fault << '\n';
    }
}

/// A name that was mistyped is not to cost a project.
void RequirePictureOrNothing(const std::string& file)
{
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) return;
    if (std::filesystem::is_directory(status)) throw Failure(file + ": a folder, no file");
    if (!std::filesystem::is_regular_file(status)) throw Failure(file + ": no regular file");
    std::array<char, kPngSignature.size()> start{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(start.data(), start.size());
    const std::string_view read(start.data(), static_cast<std::size_t>(stream.gcount()));
    if (!stream.is_open() || (read != kPngSignature && std::filesystem::file_size(file, error) != 0))
        throw Failure(file + " is no PNG picture, and is not replaced by one");
}

void WritePicture(cairo_surface_t* picture, const std::string& file)
{
    std::string png;
    const auto append = [](void* target, const unsigned char* data, unsigned length) {
        try {
            static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(data), length);
            return CAIRO_STATUS_SUCCESS;
        } catch (const std::bad_alloc&) {
            return CAIRO_STATUS_NO_MEMORY;
        }
    };
    RequireDrawn(cairo_surface_write_to_png_stream(picture, append, &png));
    kv::AtomicFile target;
    HRESULT result = target.Create(file);
    if (SUCCEEDED(result)) result = target.Write(png.data(), png.size());
    if (SUCCEEDED(result)) result = target.Commit();
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    std::error_code error;
    if (FAILED(result) && !folder.empty() && !std::filesystem::is_directory(folder, error))
        throw Failure("cannot write " + file + ": " + Describe(result, "there is no folder " + folder.string()));
    Require(result, "cannot write " + file);
}

} // namespace

std::optional<PictureSize> ReadSize(const std::string& text)
{
    const auto read = [](std::string_view part) {
        int side = 0;
        const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), side);
        return error == std::errc() && end == part.data() + part.size() && side <= kLongestSide ? side : 0;
    };
    const std::size_t by = text.find('x');
    if (by == text.npos) return std::nullopt;
    const PictureSize size{read(std::string_view(text).substr(0, by)), read(std::string_view(text).substr(by + 1))};
    return size.width > 0 && size.height > 0 ? std::optional(size) : std::nullopt;
}

void Render(IKVProjectData& project, const Picture& picture, const std::string& file)
{
    const auto object = FindObject(project, picture.path);
    const auto menu = Query<IKVMenu>(object);
    if (picture.highlight != Highlight::None && !menu)
        throw Failure(picture.path + ": there are highlights on menus alone");
    RequirePictureOrNothing(file);
    const PictureSize size = picture.size ? *picture.size : SizeOfDisc(project);
    const auto production = ProductionOf(object.Get(), picture.path);
    const Surface surface = DrawFrame(production.Get(), picture.seconds, size);
    if (picture.highlight != Highlight::None) DrawHighlights(*menu, picture, surface.get(), size);
    WritePicture(surface.get(), file);
}

} // namespace kvproject
