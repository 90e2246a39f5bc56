#include "ProgressBar.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kvproject {
namespace {

constexpr std::chrono::milliseconds kPause{100};

std::size_t TerminalWidth()
{
    constexpr std::size_t kUsual = 80;
    struct winsize size {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kUsual;
}

} // namespace

std::string BytesText(double bytes)
{
    constexpr std::array<const char*, 5> kUnits{"B", "kB", "MB", "GB", "TB"};
    constexpr double kStep = 1000.0;
    std::size_t unit = 0;
    for (; bytes >= kStep && unit + 1 < kUnits.size(); ++unit)
        bytes /= kStep;
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
    return text;
}

ProgressBar::ProgressBar() : m_terminal(isatty(STDERR_FILENO) == 1) {}

void ProgressBar::Show(double share, const std::string& text)
{
    const auto now = std::chrono::steady_clock::now();
    if (!m_terminal || (m_shown && share < 1.0 && now < m_next)) return;
    m_next = now + kPause;
    m_shown = true;
    share = std::clamp(share, 0.0, 1.0);
    char percent[8];
    std::snprintf(percent, sizeof percent, "%3.0f%%", share * 100.0);
    const std::string rest = std::string("] ") + percent + ' ' + text;
    const std::size_t width = TerminalWidth();
    // The last column stays free, so that the line does not break.
    const std::size_t room = width > rest.size() + 12 ? width - rest.size() - 2 : 10;
    const auto done = static_cast<std::size_t>(static_cast<double>(room) * share);
    std::cerr << "\r[" << std::string(done, '#') << std::string(room - done, ' ') << rest << "\x1b[K" << std::flush;
}

void ProgressBar::Clear()
{
    if (m_shown) std::cerr << "\r\x1b[K" << std::flush;
    m_shown = false;
}

} // namespace kvproject
