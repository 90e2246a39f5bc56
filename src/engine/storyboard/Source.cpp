#include "engine/storyboard/Source.h"

#include "engine/media/MediaProbe.h"
#include "platform/com/Error.h"

#include <algorithm>
#include <optional>

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
    std::call_once(m_look, [this] {
        const std::optional<SourceFacts> found = LookInto(m_name.View());
        const std::lock_guard lock(m_mutex);
        if (found) m_known = *found;
    });
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
