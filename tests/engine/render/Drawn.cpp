#include "engine/render/Drawn.h"

#include <array>
#include <cstdlib>
#include <sstream>

namespace kv::test {
namespace {

struct SurfaceCloser {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceCloser>;

Bitmap ReadPng(const std::string& path)
{
    const Surface read(cairo_image_surface_create_from_png(path.c_str()));
    Bitmap bitmap(cairo_image_surface_get_width(read.get()), cairo_image_surface_get_height(read.get()));
    const Surface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(bitmap.pixels.data()),
                                                              CAIRO_FORMAT_ARGB32, bitmap.width, bitmap.height,
                                                              bitmap.width * 4));
    cairo_t* context = cairo_create(surface.get());
    cairo_set_source_surface(context, read.get(), 0, 0);
    cairo_paint(context);
    cairo_destroy(context);
    return bitmap;
}

void WritePng(Bitmap bitmap, const std::string& path)
{
    const Surface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(bitmap.pixels.data()),
                                                              CAIRO_FORMAT_ARGB32, bitmap.width, bitmap.height,
                                                              bitmap.width * 4));
    cairo_surface_write_to_png(surface.get(), path.c_str());
}

} // namespace

void DrawPng(const std::string& path, int width, int height, const std::function<void(cairo_t*)>& drawing)
{
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    cairo_t* context = cairo_create(surface.get());
    drawing(context);
    cairo_destroy(context);
    ASSERT_EQ(CAIRO_STATUS_SUCCESS, cairo_surface_write_to_png(surface.get(), path.c_str()));
}

const TemporaryFolder& Sources()
{
    static const TemporaryFolder folder;
    [[maybe_unused]] static const bool made = [] {
        DrawPng(folder.PathOf("card.png"), 160, 90, [](cairo_t* context) {
            constexpr std::array<std::array<double, 3>, 4> kColours{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}}};
            for (std::size_t i = 0; i < kColours.size(); ++i) {
                cairo_set_source_rgb(context, kColours[i][0], kColours[i][1], kColours[i][2]);
                cairo_rectangle(context, i % 2 ? 80 : 0, i / 2 ? 45 : 0, 80, 45);
                cairo_fill(context);
            }
            cairo_set_source_rgb(context, 0.5, 0.5, 0.5);
            cairo_rectangle(context, 3, 3, 154, 84);
            cairo_set_line_width(context, 6);
            cairo_stroke(context);
            cairo_set_source_rgb(context, 1, 1, 1);
            cairo_arc(context, 40, 22, 10, 0, 7);
            cairo_fill(context);
        });
        DrawPng(folder.PathOf("round.png"), 64, 64, [](cairo_t* context) {
            cairo_arc(context, 32, 32, 32, 0, 7);
            cairo_fill(context);
        });
        DrawPng(folder.PathOf("fade.png"), 64, 64, [](cairo_t* context) {
            cairo_pattern_t* fade = cairo_pattern_create_linear(0, 0, 64, 0);
            cairo_pattern_add_color_stop_rgb(fade, 0, 0, 0, 0);
            cairo_pattern_add_color_stop_rgb(fade, 1, 1, 1, 1);
            cairo_set_source(context, fade);
            cairo_paint(context);
            cairo_pattern_destroy(fade);
        });
        const std::string command =
            "ffmpeg -v error -nostdin -y -f lavfi -i color=red:size=64x48:rate=25:duration=1 "
            "-f lavfi -i color=blue:size=64x48:rate=25:duration=1 -filter_complex concat=n=2:v=1 -c:v mpeg4 -q:v 1 '" +
            folder.PathOf("blink.mp4") + "'";
        return std::system(command.c_str()) == 0;
    }();
    EXPECT_TRUE(made);
    return folder;
}

std::u16string SourceOf(const char* name)
{
    return std::u16string(Sources().File(name).View());
}

std::shared_ptr<const Look> LookOf(const std::string& content)
{
    return std::make_shared<const Look>(ReadLook(XmlElement::Parse("<plugin_data>" + content + "</plugin_data>")));
}

std::string Keys(const char* channel, const std::vector<std::pair<double, std::string>>& keys)
{
    std::ostringstream text;
    text << '<' << channel << "><StartOffsetElements>";
    for (const auto& [time, value] : keys)
        text << "<KeyFrame><Time>" << time << "</Time>" << value << "</KeyFrame>";
    text << "</StartOffsetElements></" << channel << '>';
    return text.str();
}

std::string Vector(double x, double y, double z)
{
    std::ostringstream text;
    text << "<Vector><x>" << x << "</x><y>" << y << "</y><z>" << z << "</z></Vector>";
    return text.str();
}

std::string At(const char* channel, double x, double y, double z)
{
    return Keys(channel, {{0.0, Vector(x, y, z)}});
}

std::string Crop(double left, double top, double right, double bottom)
{
    std::ostringstream text;
    text << "<fRect><left>" << left << "</left><top>" << top << "</top><right>" << right << "</right><bottom>" << bottom
         << "</bottom></fRect>";
    return Keys("Crop", {{0.0, text.str()}}) + "<CropMode>1</CropMode>";
}

testing::AssertionResult LooksLike(const Bitmap& frame, const std::string& name)
{
    const Bitmap reference = ReadPng(std::string(KV_REFERENCE_PICTURES "/") + name + ".png");
    // Another release of a library may round otherwise, and set an edge a part of a pixel aside.
    constexpr int kTolerance = 24;
    constexpr std::size_t kEdges = 200;
    std::size_t off = frame.width == reference.width && frame.height == reference.height ? 0 : frame.pixels.size();
    for (std::size_t i = 0; off < frame.pixels.size() && i < frame.pixels.size(); ++i) {
        int most = 0;
        for (const int shift : {0, 8, 16, 24}) {
            const auto channel = [&](const Bitmap& bitmap) {
                return static_cast<int>(bitmap.pixels[i] >> shift & 0xFF);
            };
            most = std::max(most, std::abs(channel(frame) - channel(reference)));
        }
        off += most > kTolerance ? 1 : 0;
    }
    if (off <= frame.pixels.size() / kEdges) return testing::AssertionSuccess();
    if (const char* folder = std::getenv("KV_KEEP_PICTURES"))
        WritePng(frame, std::string(folder) + "/" + name + ".png");
    return testing::AssertionFailure() << off << " of " << frame.pixels.size() << " pixels differ from " << name;
}

} // namespace kv::test
