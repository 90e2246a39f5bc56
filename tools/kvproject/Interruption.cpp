#include "Interruption.h"

#include <array>
#include <atomic>
#include <csignal>

namespace kvproject {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> g_signal{0};
static_assert(std::atomic<int>::is_always_lock_free);

std::array<struct sigaction, kSignals.size()> g_before;

extern "C" void NoteSignal(int signal)
{
    g_signal = signal;
}

} // namespace

Interruption::Interruption()
{
    g_signal = 0;
    struct sigaction action {};
    action.sa_handler = &NoteSignal;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &g_before[i]);
        // Whoever started the program may have had it pass over some.
        if (g_before[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &g_before[i], nullptr);
}

bool Interruption::Asked()
{
    return g_signal != 0;
}

int Interruption::ExitCode()
{
    constexpr int kBySignal = 128;
    return kBySignal + g_signal;
}

} // namespace kvproject
