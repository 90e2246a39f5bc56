#pragma once
// The lock that a thread may enter again while it holds it.

#include <mutex>

namespace kv {

class CriticalSection {
public:
    CriticalSection() = default;
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Enter() { m_mutex.lock(); }
    /// False, at once, while another thread holds it.
    bool TryEnter() { return m_mutex.try_lock(); }
    void Leave() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a section for a scope.
class SectionLock {
public:
    explicit SectionLock(CriticalSection& section) : m_section(section) { m_section.Enter(); }
    SectionLock(const SectionLock&) = delete;
    SectionLock& operator=(const SectionLock&) = delete;
    ~SectionLock() { m_section.Leave(); }

private:
    CriticalSection& m_section;
};

} // namespace kv
