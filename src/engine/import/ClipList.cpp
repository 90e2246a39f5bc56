#include "engine/import/ClipList.h"

#include "platform/automation/Bstr.h"
#include "platform/system/Case.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace kv {
namespace {

/// A longer file is no list that a person made.
constexpr std::uintmax_t kLongestPlaylist = 16'777'216;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The digits at the front of a text, without leading zeros; taken off the text.
std::string_view TakeNumber(std::string_view& text)
{
    const auto end = static_cast<std::size_t>(std::ranges::find_if_not(text, IsDigit) - text.begin());
    std::string_view number = text.substr(0, end);
    text.remove_prefix(end);
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

bool ComesBefore(std::string_view left, std::string_view right)
{
    const std::pair whole(left, right);
    while (!left.empty() && !right.empty()) {
        if (IsDigit(left.front()) && IsDigit(right.front())) {
            const std::string_view first = TakeNumber(left);
            const std::string_view second = TakeNumber(right);
            if (first != second) return std::pair(first.size(), first) < std::pair(second.size(), second);
        } else {
            const char16_t first = FoldCase(left.front());
            const char16_t second = FoldCase(right.front());
            if (first != second) return first < second;
            left.remove_prefix(1);
            right.remove_prefix(1);
        }
    }
    if (left.empty() != right.empty()) return left.empty();
    return whole.first < whole.second;
}

std::u16string Decoded(const std::string& text)
{
    std::u16string decoded = ToUtf16(text);
    if (decoded.find(u'\uFFFD') == decoded.npos) return decoded;
    std::u16string latin;
    for (const char c : text)
        latin += static_cast<unsigned char>(c);
    return latin;
}

std::string_view Trimmed(std::string_view line)
{
    constexpr std::string_view kBlanks = " \t\r";
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    return line.substr(0, line.find_last_not_of(kBlanks) + 1);
}

/// "a%20b" is "a b".
std::string WithoutEscapes(std::string_view url)
{
    std::string text;
    for (std::size_t i = 0; i < url.size(); ++i) {
        const auto digit = [&](std::size_t at) {
            return at < url.size() && std::isxdigit(static_cast<unsigned char>(url[at]));
        };
        if (url[i] == '%' && digit(i + 1) && digit(i + 2)) {
            text += static_cast<char>(std::stoi(std::string(url.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            text += url[i];
        }
    }
    return text;
}

/// The path that an entry of a playlist stands for.
std::u16string PathOf(std::string_view entry, const std::filesystem::path& folder)
{
    constexpr std::string_view kFileUrl = "file://";
    if (StartsWithText(entry, kFileUrl)) return Decoded(WithoutEscapes(entry.substr(kFileUrl.size())));
    std::u16string path = Decoded(std::string(entry));
    const bool isFromRoot = path.front() == u'/' || path.front() == u'\\';
    // With a drive or a scheme.
    if (isFromRoot || path.substr(0, path.find_first_of(u"\\/")).find(u':') != path.npos) return path;
    return ToUtf16(ToHostPath(ToUtf16(folder.string()) + u'/' + path));
}

/// What a file holds, without a mark of its encoding; in UTF-8 where that mark stands for UTF-16.
std::string TextOf(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(stream), {});
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    const bool isLittle = text.starts_with("\xFF\xFE");
    if (!isLittle && !text.starts_with("\xFE\xFF")) return text;
    std::u16string units;
    for (std::size_t i = 2; i + 1 < text.size(); i += 2) {
        const auto first = static_cast<unsigned char>(text[i]);
        const auto second = static_cast<unsigned char>(text[i + 1]);
        units += static_cast<char16_t>(isLittle ? second << 8 | first : first << 8 | second);
    }
    return ToUtf8(units);
}

} // namespace

std::optional<std::vector<ListedClip>> ClipsInFolder(const std::string& folder)
{
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) return std::nullopt;
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.front() != '.') names.push_back(name);
    }
    std::ranges::sort(names, ComesBefore);
    // Who opens the project stands in another folder.
    const std::filesystem::path path = std::filesystem::absolute(folder, error);
    std::vector<ListedClip> clips;
    clips.reserve(names.size());
    for (const std::string& name : names)
        clips.push_back({ToUtf16((path / name).string()), {}});
    return clips;
}

std::optional<std::vector<ListedClip>> ClipsInPlaylist(const std::string& file)
{
    constexpr std::string_view kHeader = "#EXTM3U";
    constexpr std::string_view kInformation = "#EXTINF:";
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) || std::filesystem::file_size(file, error) > kLongestPlaylist)
        return std::nullopt;
    const std::filesystem::path path = std::filesystem::absolute(file, error);
    std::istringstream stream(TextOf(file));
    const std::string extension = path.extension().string();
    const bool isNamedSo =
        SameText(extension, std::string_view(".m3u")) || SameText(extension, std::string_view(".m3u8"));
    std::vector<ListedClip> clips;
    std::u16string label;
    bool isFirst = true;
    for (std::string text; std::getline(stream, text); isFirst = false) {
        std::string_view line = text;
        line = Trimmed(line);
        if (isFirst && !isNamedSo && !line.starts_with(kHeader)) return std::nullopt;
        if (line.starts_with(kInformation)) {
            const std::size_t comma = line.find(',');
            label = comma == line.npos ? u"" : Decoded(std::string(Trimmed(line.substr(comma + 1))));
        } else if (!line.empty() && line.front() != '#') {
            clips.push_back({PathOf(line, path.parent_path()), std::exchange(label, {})});
        }
    }
    return isNamedSo || !isFirst ? std::optional(std::move(clips)) : std::nullopt;
}

} // namespace kv
