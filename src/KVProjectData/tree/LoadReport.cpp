#include "KVProjectData/tree/LoadReport.h"

#include "platform/com/Error.h"
#include "platform/system/ErrorReporter.h"

#include <algorithm>

namespace kv {
namespace {

/// No more than a host keeps: finding a path means to count the siblings of every element on it.
constexpr unsigned kMostPlaces = 200;

void Report(std::string_view message, int line)
{
    ZXUReportError(ZXUErrStr({"KVXMLDataLoader", line}, message));
}

/// A text of any length and content as part of one line.
void AppendLine(std::string_view text, std::string& line)
{
    constexpr std::size_t kLongest = 80;
    std::size_t end = std::min(text.size(), kLongest);
    const bool cut = end < text.size();
    // No character is parted.
    while (cut && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        --end;
    text = text.substr(0, end);
    for (const char c : text)
        line += static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? ' ' : c;
    if (cut) line += "...";
}

/// With its number among those of its name, where there are others.
void AppendStep(const XmlView& element, std::string& path)
{
    path += '/';
    AppendLine(element.Name(), path);
    unsigned before = 0;
    bool alone = true;
    bool found = false;
    for (XmlView other = element.Parent().FirstChild(); other && (!found || alone); other = other.Next()) {
        if (other == element) {
            found = true;
        } else if (other.IsElement() && other.Name() == element.Name()) {
            alone = false;
            if (!found) ++before;
        }
    }
    if (!alone) path += '[' + std::to_string(before + 1) + ']';
}

void AppendPath(const XmlView& element, std::string& path)
{
    if (const XmlView parent = element.Parent(); parent && parent.IsElement()) AppendPath(parent, path);
    AppendStep(element, path);
}

std::string PathTo(const XmlView& element)
{
    std::string path;
    AppendPath(element, path);
    return path;
}

} // namespace

LoadReport::~LoadReport()
{
    if (m_places <= kMostPlaces) return;
    Guarded([&] {
        Report(std::to_string(m_places - kMostPlaces) + " other places of the document are passed over", __LINE__);
        return S_OK;
    });
}

void LoadReport::PassOver(const XmlView& element, std::string_view fault, int line)
{
    if (++m_places <= kMostPlaces) Report(PathTo(element).append(": ").append(fault), line);
}

void LoadReport::PassOver(const XmlView& element, std::string_view attribute, std::string_view fault, int line)
{
    if (++m_places > kMostPlaces) return;
    std::string place = PathTo(element) + "/@";
    AppendLine(attribute, place);
    Report(place.append(": ").append(fault), line);
}

std::string LoadReport::Quote(std::string_view text)
{
    std::string quoted("\"");
    AppendLine(text, quoted);
    return quoted += '"';
}

} // namespace kv
