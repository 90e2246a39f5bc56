#pragma once
// What a menu or a title shows, as a picture file.

#include "KVProjectData/IKVProjectData.h"

#include <optional>
#include <string>

namespace kvproject {

/// In pixels.
struct PictureSize {
    int width = 0;
    int height = 0;
};

/// Reads "720x576". Empty for anything else, and for sizes from which no picture is made.
std::optional<PictureSize> ReadSize(const std::string& text);

/// Of which buttons a menu's picture shows the highlight.
enum class Highlight { None, Selected, Activated, All };

struct Picture {
    /// "menus[1]" or "titles[1]".
    std::string path;
    /// Without it that of the project's discs.
    std::optional<PictureSize> size;
    double seconds = 0.0;
    Highlight highlight = Highlight::None;
};

/// Writes it as PNG. What is to be highlighted and has no place or no colour is told on standard error. Throws Failure,
/// also instead of replacing a file that is no such picture.
void Render(IKVProjectData& project, const Picture& picture, const std::string& file);

} // namespace kvproject
