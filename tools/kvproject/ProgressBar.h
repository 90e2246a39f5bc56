#pragma once
// How far a long operation has come, for a person at a terminal.

#include <chrono>
#include <string>

namespace kvproject {

/// "1.5 MB"
std::string BytesText(double bytes);

/// A line on standard error that is drawn anew, where that is a terminal; nothing elsewhere.
class ProgressBar {
public:
    ProgressBar();
    ~ProgressBar() { Clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// The share that is done, from 0 to 1, and a short text behind it. Drawn a few times a second at most, and
    /// at the end.
    void Show(double share, const std::string& text);
    /// Makes room for other lines.
    void Clear();

private:
    const bool m_terminal;
    bool m_shown = false;
    std::chrono::steady_clock::time_point m_next;
};

} // namespace kvproject
