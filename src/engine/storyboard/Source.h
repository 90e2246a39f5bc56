#pragma once
// A file or a moniker that is shown and played, and what is in it.

#include "engine/media/FileStamp.h"
#include "platform/automation/Bstr.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace kv {

/// Whether a name begins with a scheme of two or more characters and a colon. A letter with a colon is a drive.
bool IsMoniker(std::u16string_view name);

/// What was found in a source; 0 for what is not there or not known.
struct SourceFacts {
    /// Seconds; of a still picture 0.
    double length = 0.0;
    /// Frames per second of moving pictures.
    double frameRate = 0.0;
    /// Width to height of the picture as it is shown.
    double aspectRatio = 0.0;

    bool operator==(const SourceFacts&) const = default;
};

/// Free-threaded, and shared by all states that show it.
class Source {
public:
    /// `known` is what an earlier look found.
    explicit Source(std::u16string_view name, SourceFacts known = {}) : m_name(name), m_known(known) {}

    const Bstr& Name() const { return m_name; }

    /// Looks into the file at the first call, which takes as long as a bad file may (MediaFile): not to be called while
    /// others wait. Of a file that cannot be read, what was known before; it is looked into again when it stands there
    /// anew.
    SourceFacts Facts();

    /// What is known without a look.
    SourceFacts Known();

    /// What is known already; only where that is nothing, what a look finds.
    SourceFacts Remembered();

private:
    const Bstr m_name;
    /// Held for a look.
    std::mutex m_look;
    bool m_wasLookedInto = false;
    bool m_wasRead = false;
    /// At the last look.
    std::optional<FileStamp> m_stamp;
    std::mutex m_mutex;
    SourceFacts m_known;
};

using SourcePtr = std::shared_ptr<Source>;

} // namespace kv
