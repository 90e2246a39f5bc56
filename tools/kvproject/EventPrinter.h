#pragma once
// Prints the events of a project as they arrive, one line each.

#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "platform/com/ComPtr.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <ostream>

namespace kvproject {

class EventSink;

/// Connected to a project from construction to destruction.
class EventPrinter {
public:
    /// Without a stream it only keeps the order of things. Throws Failure when it cannot connect.
    EventPrinter(IKVProjectData& project, std::ostream* out);
    ~EventPrinter();
    EventPrinter(const EventPrinter&) = delete;
    EventPrinter& operator=(const EventPrinter&) = delete;

    /// Adds a title with its source before anyone hears of the title, so that the library can measure the clip.
    /// The position counts from 1; 0 is behind the last.
    kv::ComPtr<IKVTitle> AddTitle(const kv::Bstr& source, LONG position);

    /// While this is held nobody hears of titles, which get their sources meanwhile.
    std::unique_lock<std::mutex> HoldTitles();

    /// Waits until everything that happened so far, and what it caused, was told.
    void WaitForAll();

private:
    IKVProjectData& m_project;
    kv::ComPtr<EventSink> m_sink;
    kv::ComPtr<IConnectionPoint> m_point;
    DWORD m_cookie = 0;
};

} // namespace kvproject
