#pragma once
// What a rich text tells of itself as a whole.

#include "platform/xml/Element.h"

#include <optional>
#include <string>
#include <string_view>

namespace kv {

/// What a string has whose runs disagree.
inline constexpr std::string_view kUndetermined = "undetermined";

// The style word has three bits for each style.

inline constexpr ULONG kItalicOff = 0x1;
inline constexpr ULONG kItalicOn = 0x2;
inline constexpr ULONG kItalicMixed = 0x4;
inline constexpr ULONG kBoldOff = 0x100;
inline constexpr ULONG kBoldOn = 0x200;
inline constexpr ULONG kBoldMixed = 0x400;
inline constexpr ULONG kUnderlineOff = 0x10000;
inline constexpr ULONG kUnderlineOn = 0x20000;
inline constexpr ULONG kUnderlineMixed = 0x40000;
inline constexpr ULONG kMixedStyles = kItalicMixed | kBoldMixed | kUnderlineMixed;

/// A text is a tree of texts in elements "p", "font", "b", "i", "u" and others. Each text in it is a run, which has its
/// attributes from the elements around it, the innermost first; in a tree without any, the last element stands for an
/// empty run. What no run tells is as below.
struct TextAttributes {
    /// A text that is not underlined has none of the bits of underline.
    ULONG style = kItalicOff | kBoldOff;
    /// 480ths of the frame's height; 0 when runs disagree.
    LONG height = 24;
    /// As it stands, which need not be a number.
    std::optional<std::string> heightText;
    /// 0xTTBBGGRR; T is transparency.
    ULONG colour = 0x00FFFFFF;
    /// False when runs disagree.
    bool hasColour = true;
    std::string face = "Arial";
    /// "left", "center", "right", "justify", or whatever stands there.
    std::string align = "left";
    /// -1 when runs disagree.
    LONG styleID = -1;
    /// All runs in document order, without placeholders.
    std::string text;
};

/// `body` holds the tree.
TextAttributes ReadTextAttributes(const XmlView& body);

} // namespace kv
