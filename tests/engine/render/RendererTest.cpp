#include "engine/render/Drawn.h"

#include <gmock/gmock.h>

#include <cmath>
#include <thread>

namespace kv::test {
namespace {

Layer PictureLayer(const char* source, const std::string& look = "", Picture picture = {})
{
    picture.file = SourceOf(source);
    Layer layer;
    layer.look = LookOf(look);
    layer.picture = std::move(picture);
    return layer;
}

Picture Masked(const char* mask)
{
    Picture picture;
    picture.mask = SourceOf(mask);
    return picture;
}

Picture PanZoomed(const std::string& panZoom, int rotation = 0)
{
    Picture picture;
    picture.panZoom = LookOf(panZoom);
    picture.rotation = rotation;
    return picture;
}

Layer TextLayer(const std::string& body, const std::string& look = "")
{
    Layer layer;
    layer.look = LookOf("<html><body>" + body + "</body></html>" + look);
    return layer;
}

Scene SceneOf(std::vector<Layer> layers, double aspectRatio = 4.0 / 3.0, bool onBlack = false, double time = 0.0)
{
    return {aspectRatio, time, onBlack, std::move(layers)};
}

std::string Opacity(int value)
{
    return Keys("Opacity", {{0.0, "<Value>" + std::to_string(value) + "</Value>"}});
}

std::string MaskSize(double width, double height)
{
    const auto parameter = [](int id, double value) {
        return "<Parameter><Value>" + std::to_string(value) + "</Value><ParamID>" + std::to_string(id) +
               "</ParamID></Parameter>";
    };
    return "<ParameterSet>" + parameter(52, width) + parameter(53, height) + "</ParameterSet>";
}

TEST(Renderer, DrawsEveryKindOfLayer)
{
    Picture stretched;
    stretched.stretched = true;
    Picture turned;
    turned.rotation = 90;
    const std::string words = "<p align='center'><font fontHeight='60'>Words <b>bold</b><br/>"
                              "<font color='#FFFF0000'><i>slanted</i> <u>under</u></font></font></p>";
    const std::string grow = Keys("Scaling", {{0.0, Vector(0.2, 0.2)}, {4.0, Vector(1.0, 1.0)}}) +
                             Keys("Rotation", {{0.0, Vector(0, 0, 0)}, {4.0, Vector(0, 0, 90)}});
    struct Case {
        const char* name;
        Scene scene;
        int width = 160;
        int height = 120;
    };
    const Case cases[] = {
        {"letterbox", SceneOf({PictureLayer("card.png")}, 4.0 / 3.0, true)},
        {"pillarbox", SceneOf({PictureLayer("card.png", "", turned)}, 4.0 / 3.0, true)},
        {"stretched", SceneOf({PictureLayer("card.png", "", stretched)}, 4.0 / 3.0, true)},
        {"panel_zoomed",
         SceneOf({PictureLayer("card.png", "", PanZoomed(At("Scaling", 4.0 / 3, 4.0 / 3)))}, 4.0 / 3.0, true)},
        {"panel_cropped",
         SceneOf({PictureLayer("card.png", "", PanZoomed(Crop(0.0, 0.0, 0.5, 1.0)))}, 4.0 / 3.0, true)},
        {"placed", SceneOf({PictureLayer("card.png", At("Scaling", 0.5, 0.5) + At("Translation", 0.4, 0.3) +
                                                         At("Rotation", 0, 0, 30) + Opacity(128))})},
        {"anamorphic",
         SceneOf({PictureLayer("card.png", At("Scaling", 0.5, 0.5) + At("Rotation", 0, 0, 90))}, 16.0 / 9.0)},
        {"overlay_moved_in_square",
         SceneOf({PictureLayer("card.png", At("Scaling", 0.5, 0.5),
                               PanZoomed(At("Translation", 0.5, 0.0) + At("Rotation", 0, 0, 45), 180))})},
        {"overlay_cropped", SceneOf({PictureLayer("card.png", Crop(0.25, 0.0, 1.25, 0.5))})},
        {"mask_of_alpha", SceneOf({PictureLayer("card.png", Opacity(128), Masked("round.png"))})},
        {"mask_of_brightness",
         SceneOf({PictureLayer("card.png", MaskSize(0.5, 0.75) + At("Rotation", 0, 0, 20), Masked("fade.png"))})},
        {"text", SceneOf({TextLayer(words)})},
        {"text_by_its_corner",
         SceneOf({TextLayer(words, At("Handles", 1, -1, 0) + At("Translation", -0.9, 0.9) + At("Scaling", 0.5, 0.5))})},
        {"text_turned", SceneOf({TextLayer(words, At("Rotation", 0, 0, -30) + Opacity(128))}, 16.0 / 9.0)},
        {"text_with_edges",
         SceneOf({TextLayer("<p><font fontHeight='120' edgeColor='Navy' edgeWidth='6'>Edge</font></p>"
                            "<p><font fontHeight='120' color='Yellow' shadowColor='#00000080' "
                            "shadowOffset='10'><u>Shade</u></font></p>")})},
        {"between_keys", SceneOf({PictureLayer("card.png", grow)}, 4.0 / 3.0, false, 2.0)},
        {"all",
         SceneOf(
             {PictureLayer("fade.png", "", stretched),
              PictureLayer("card.png", At("Scaling", 0.6, 0.6) + At("Translation", -0.3, 0.3)), TextLayer(words),
              PictureLayer("card.png", At("Scaling", 0.3, 0.3) + At("Translation", 0.5, -0.4), Masked("round.png"))},
             4.0 / 3.0, true)},
    };
    PictureStore pictures;
    for (const Case& item : cases) {
        const Bitmap frame = Renderer(pictures).Draw(item.scene, item.width, item.height);
        EXPECT_TRUE(LooksLike(frame, item.name));
    }
}

/// Red, green, blue and alpha of the pixel in the middle.
std::vector<int> MiddleOf(const Bitmap& frame)
{
    const std::uint32_t pixel = frame.Row(frame.height / 2)[frame.width / 2];
    std::vector<int> channels;
    for (const int shift : {16, 8, 0, 24})
        channels.push_back(static_cast<int>(pixel >> shift & 0xFF));
    return channels;
}

TEST(Renderer, ShowsTheFrameOfAClip)
{
    // In and out point, repeat, time; 'r' for red, 'b' for blue, '-' for nothing.
    const std::tuple<double, double, bool, double, char> cases[] = {
        {0.0, 0.0, false, 0.5, 'r'}, {0.0, 0.0, false, 1.5, 'b'},  {0.0, 0.0, false, 7.5, 'b'},
        {0.0, 0.0, true, 2.5, 'r'},  {0.0, 0.0, true, 7.5, 'b'},   {1.2, 0.0, false, 0.1, 'b'},
        {0.5, 0.8, false, 9.0, 'r'}, {0.8, 1.2, true, 0.5, 'r'},   {0.8, 1.2, true, 0.7, 'b'},
        {0.0, 1.0, false, 9.0, 'r'}, {1.5, 0.5, false, 0.0, '-'},  {9.0, 0.0, false, 0.0, '-'},
        {0.0, 0.0, false, -3., 'r'}, {0.0, 99.0, false, 50., 'b'}, {0.0, 0.0, true, 1e300, 'r'},
    };
    PictureStore pictures;
    for (const auto& [in, out, repeat, time, expected] : cases) {
        const Layer clip = PictureLayer("blink.mp4", "", {{}, in, out, repeat, 0, false, nullptr, {}});
        const std::vector<int> middle =
            MiddleOf(Renderer(pictures).Draw(SceneOf({clip}, 4.0 / 3.0, false, time), 64, 48));
        const char shown = middle[3] == 0 ? '-' : middle[0] > 200 ? 'r' : middle[2] > 200 ? 'b' : '?';
        EXPECT_EQ(expected, shown) << in << " " << out << " " << time;
    }
}

TEST(Renderer, ShowsNothingOfWhatCannotBe)
{
    Sources();
    const TemporaryFolder folder;
    // A picture that claims more pixels than are decoded, one that breaks off, and what is no picture.
    folder.Write("vast.ppm", "P6\n30000 30000\n255\nxyz");
    folder.Write("half.png", Sources().Read("card.png").substr(0, 60));
    folder.Write("words.png", "words");
    PictureStore pictures;
    const auto draw = [&](const Layer& layer) {
        // What comes after it is drawn all the same.
        const Layer small = PictureLayer("card.png", At("Scaling", 0.1, 0.1) + At("Translation", 0.8, 0.8));
        const Bitmap frame = Renderer(pictures).Draw(SceneOf({layer, small}), 64, 48);
        EXPECT_NE(0U, frame.Row(4)[57] >> 24);
        return MiddleOf(frame)[3];
    };
    for (const char* name : {"vast.ppm", "half.png", "words.png", "missing.png", ""}) {
        Layer layer = PictureLayer("card.png");
        layer.picture->file = folder.File(name).View();
        EXPECT_EQ(0, draw(layer)) << name;
        // A mask that cannot be read hides nothing.
        layer = PictureLayer("card.png");
        layer.picture->mask = folder.File(name).View();
        EXPECT_EQ(255, draw(layer)) << name;
    }
    EXPECT_EQ(0, draw(Layer{}));
    const std::string text = "<html><body><p><font fontHeight='200'>\xe2\x96\x88</font></p></body></html>";
    for (const double number : {0.0, 1e-300, 1e-30, 1e-6, 1e6, 1e30, 1e300}) {
        for (const char* channel : {"Scaling", "Translation", "Rotation", "Handles"}) {
            for (const double other : {number, 1.0, -number}) {
                const std::string place = At(channel, number, other, number);
                draw(PictureLayer("card.png", place, Masked("round.png")));
                draw(PictureLayer("card.png", place, PanZoomed(place)));
                Layer layer;
                layer.look = LookOf(text + place);
                draw(layer);
            }
        }
        if (number == 0.0) continue;
        Renderer(pictures).Draw(SceneOf({PictureLayer("card.png"), TextLayer("<p>Words</p>")}, number), 16, 12);
        draw(PictureLayer("card.png", MaskSize(number, 1.0), Masked("fade.png")));
        draw(PictureLayer("card.png", Crop(-number, 0.0, number, 1.0)));
        draw(PictureLayer("card.png", Crop(0.0, 0.0, number, number)));
    }
    // A part without a size is the whole.
    EXPECT_EQ(255, draw(PictureLayer("card.png", Crop(0.0, 0.0, 0.0, 0.0))));
    EXPECT_EQ(0, draw(PictureLayer("card.png", Crop(2.0, 2.0, 3.0, 3.0))));
    EXPECT_EQ(0, draw(PictureLayer("card.png", At("Scaling", 0.0, 1.0))));
}

TEST(PictureStore, KeepsWithinItsLimit)
{
    const TemporaryFolder folder;
    const auto write = [&](const std::string& name, double red) {
        DrawPng(folder.PathOf(name), 100, 100, [=](cairo_t* context) {
            cairo_set_source_rgb(context, red, 0, 0);
            cairo_paint(context);
        });
    };
    constexpr std::size_t kLimit = 200'000;
    PictureStore pictures(kLimit);
    const auto draw = [&](const std::string& name, int width = 100) {
        Layer layer;
        layer.picture.emplace().file = folder.File(name).View();
        return MiddleOf(Renderer(pictures).Draw(SceneOf({layer}, 1.0), width, width))[0];
    };
    for (int i = 0; i < 20; ++i) {
        const std::string name = std::to_string(i) + ".png";
        write(name, i / 20.0);
        EXPECT_NEAR(255 * i / 20.0, draw(name), 1);
        EXPECT_LE(pictures.Kept(), kLimit);
    }
    EXPECT_GT(pictures.Kept(), kLimit / 2);
    // Sizes that lie close share a picture.
    draw("19.png", 90);
    const std::size_t before = pictures.Kept();
    for (const int width : {88, 77, 66, 55, 51})
        draw("19.png", width);
    EXPECT_EQ(before, pictures.Kept());
    // One alone that is too large is kept smaller.
    PictureStore tiny(3'000);
    Layer layer;
    layer.picture.emplace().file = folder.File("19.png").View();
    EXPECT_NEAR(242, MiddleOf(Renderer(tiny).Draw(SceneOf({layer}, 1.0), 100, 100))[0], 1);
    EXPECT_LE(tiny.Kept(), 1'000U);
    // What is written anew is read anew, and what is gone is gone.
    write("19.png", 0.25);
    EXPECT_NEAR(64, draw("19.png"), 1);
    std::filesystem::remove(folder.PathOf("19.png"));
    EXPECT_EQ(0, draw("19.png"));
}

TEST(PictureStore, ServesSeveralThreads)
{
    const Scene scene = SceneOf({PictureLayer("blink.mp4"), PictureLayer("card.png", At("Scaling", 0.5, 0.5)),
                                 TextLayer("<p>Words</p>"), PictureLayer("card.png", "", Masked("round.png"))});
    PictureStore usual;
    const Bitmap expected = Renderer(usual).Draw(scene, 80, 60);
    // One that has to drop what others look for.
    PictureStore pictures(90'000);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 8; ++round) {
                Scene mine = scene;
                mine.time = i * round % 3 * 0.2;
                EXPECT_EQ(expected.pixels, Renderer(pictures).Draw(mine, 80, 60).pixels);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
} // namespace kv::test
