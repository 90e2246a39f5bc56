#include "engine/storyboard/Source.h"

#include "engine/media/MediaProbe.h"
#include "platform/com/Error.h"

#include <algorithm>
#include <utility>

namespace kv {
namespace {

bool IsLetter(char16_t c)
{
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}

bool IsSchemeCharacter(char16_t c)
{
    return IsLetter(c) || (c >= u'0' && c <= u'9') || c == u'+' || c == u'-' || c == u'.';
}

SourceFacts FactsOf(const MediaProperties& media)
{
    const auto moving = std::ranges::find_if(media.pictures, &PictureStream::moving);
    return {media.duration, moving == media.pictures.end() ? 0.0 : moving->frameRate,
            media.pictures.empty() ? 0.0 : media.pictures.front().aspectRatio};
}

std::optional<SourceFacts> LookInto(std::u16string_view name)
{
    if (IsMoniker(name)) return std::nullopt;
    try {
        return FactsOf(ProbeMedia(name));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

bool IsMoniker(std::u16string_view name)
{
    const auto end = std::ranges::find_if_not(name, IsSchemeCharacter);
    return end != name.end() && *end == u':' && end - name.begin() >= 2 && IsLetter(name.front());
}

SourceFacts Source::Facts()
{
    const std::lock_guard look(m_look);
    if (m_wasRead) return Known();
    std::optional<FileStamp> stamp = StampOf(m_name.View());
    if (std::exchange(m_wasLookedInto, true) && stamp == m_stamp) return Known();
    m_stamp = std::move(stamp);
    const std::optional<SourceFacts> found = LookInto(m_name.View());
    if (found) {
        const std::lock_guard lock(m_mutex);
        m_known = *found;
        m_wasRead = true;
    }
    return Known();
}

SourceFacts Source::Known()
{
    const std::lock_guard lock(m_mutex);
    return m_known;
}

SourceFacts Source::Remembered()
{
    const SourceFacts known = Known();
    return known == SourceFacts{} ? Facts() : known;
}

} // namespace kv
