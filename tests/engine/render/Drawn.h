#pragma once
// Sources that the tests draw themselves, looks in short, and pictures to compare frames with.

#include "engine/render/Renderer.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace kv::test {

/// Writes a picture that Cairo draws.
void DrawPng(const std::string& path, int width, int height, const std::function<void(cairo_t*)>& drawing);

/// "card.png", 160 by 90, of four colours with a grey frame and a white dot in the first quarter; "round.png", a round
/// hole of alpha; "fade.png", opaque, from black at the left to white at the right; "blink.mp4", a second of red and
/// one of blue, 25 frames each.
const TemporaryFolder& Sources();
std::u16string SourceOf(const char* name);

/// A "plugin_data" from its content. `Keys` makes a channel of it from keys at times: each the value's markup.
std::shared_ptr<const Look> LookOf(const std::string& content);
std::string Keys(const char* channel, const std::vector<std::pair<double, std::string>>& keys);
std::string Vector(double x, double y, double z = 1.0);
std::string At(const char* channel, double x, double y, double z = 1.0);
std::string Crop(double left, double top, double right, double bottom);

/// Whether a frame looks like the reference picture of that name. Where the environment names a folder in
/// KV_KEEP_PICTURES, frames that do not are written there.
testing::AssertionResult LooksLike(const Bitmap& frame, const std::string& name);

} // namespace kv::test
