#include "platform/system/Thread.h"

#include "platform/system/Event.h"
#include "platform/system/Locale.h"
#include "platform/system/Window.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <optional>

namespace {

using kv::AutoResetEvent;
using kv::Thread;
using kv::WaitResult;
using std::chrono::steady_clock;

constexpr ULONG kPatience = 10'000; // milliseconds

std::atomic<LONG> g_locks{0};

void Start(Thread& thread, std::function<void()> body)
{
    ASSERT_EQ(thread.Start(std::move(body), g_locks), S_OK);
}

TEST(AutoResetEventTest, ASignalIsTakenOnce)
{
    AutoResetEvent event;
    EXPECT_FALSE(event.Set()) << "not created yet";
    EXPECT_EQ(event.Wait(0), WaitResult::TimedOut);
    ASSERT_EQ(event.Create(), S_OK);
    EXPECT_EQ(event.Wait(0), WaitResult::TimedOut);
    EXPECT_TRUE(event.Set());
    EXPECT_TRUE(event.Set()) << "set already";
    EXPECT_EQ(event.Wait(0), WaitResult::Signalled);
    EXPECT_EQ(event.Wait(1), WaitResult::TimedOut);

    EXPECT_TRUE(event.Set());
    event.Close();
    EXPECT_FALSE(event.Set());
    ASSERT_EQ(event.Create(), S_OK);
    EXPECT_EQ(event.Wait(0), WaitResult::TimedOut) << "a signal from before";
}

TEST(AutoResetEventTest, NoWakeUpIsLost)
{
    constexpr int kRounds = 5000;
    AutoResetEvent request;
    AutoResetEvent answer;
    ASSERT_EQ(request.Create(), S_OK);
    ASSERT_EQ(answer.Create(), S_OK);
    int answered = 0;
    Thread thread;
    Start(thread, [&] {
        for (; answered < kRounds && request.Wait(kPatience) == WaitResult::Signalled; answer.Set())
            ++answered;
    });
    const auto start = steady_clock::now();
    int asked = 0;
    do {
        request.Set();
        ++asked;
    } while (answer.Wait(kPatience) == WaitResult::Signalled && asked < kRounds);
    thread.Join();
    EXPECT_EQ(answered, kRounds);
    EXPECT_LT(steady_clock::now() - start, std::chrono::milliseconds(kPatience)) << "a wait ended by its time alone";
}

TEST(AutoResetEventTest, WakesEveryWaitingThreadInTurn)
{
    AutoResetEvent event;
    ASSERT_EQ(event.Create(), S_OK);
    std::atomic<int> woken{0};
    Thread threads[3];
    for (Thread& thread : threads) {
        Start(thread, [&] {
            EXPECT_EQ(event.Wait(kPatience), WaitResult::Signalled);
            ++woken;
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(woken, 0);
    const auto start = steady_clock::now();
    for (int signals = 1; signals <= 3; ++signals) {
        event.Set();
        while (woken < signals && steady_clock::now() - start < std::chrono::milliseconds(kPatience / 2))
            std::this_thread::yield();
        EXPECT_EQ(woken, signals) << "one signal wakes one thread, and wakes it at once";
    }
    for (Thread& thread : threads)
        thread.Join();
}

TEST(ThreadTest, KnowsItself)
{
    AutoResetEvent started;
    ASSERT_EQ(started.Create(), S_OK);
    Thread thread;
    EXPECT_FALSE(thread.IsCurrent());
    std::optional<bool> within;
    Start(thread, [&] {
        if (started.Wait(kPatience) == WaitResult::Signalled) within = thread.IsCurrent();
    });
    EXPECT_FALSE(thread.IsCurrent());
    EXPECT_EQ(g_locks, 1);
    started.Set();
    thread.Join();
    EXPECT_EQ(g_locks, 0);
    EXPECT_EQ(within, true);
}

TEST(ThreadTest, EveryThreadHasALocale)
{
    {
        const kv::ThreadLocaleScope german(0x407);
        EXPECT_EQ(GetThreadLocale(), 0x407u);
        LCID elsewhere = 0;
        Thread thread;
        Start(thread, [&] { elsewhere = GetThreadLocale(); });
        thread.Join();
        EXPECT_EQ(elsewhere, LOCALE_USER_DEFAULT);
    }
    EXPECT_EQ(GetThreadLocale(), LOCALE_USER_DEFAULT);
}

TEST(WindowTest, AreKnownByClassAndName)
{
    const kv::WindowClass windowClass{u"Class", CS_DBLCLKS, IDC_ARROW, COLOR_WINDOW};
    const HWND window = kv::CreateHiddenWindow(windowClass, u"Name", WS_DISABLED);
    const HWND second = kv::CreateHiddenWindow(windowClass, u"Name", 0);
    ASSERT_NE(window, 0u);
    EXPECT_NE(second, window);
    EXPECT_EQ(kv::FindWindow(u"Class", u"Name"), window);
    EXPECT_EQ(kv::FindWindow(u"Class", u"Other"), 0u);
    EXPECT_EQ(kv::FindWindow(u"Other", u"Name"), 0u);
    EXPECT_TRUE(kv::DestroyWindow(window));
    EXPECT_FALSE(kv::DestroyWindow(window) || kv::DestroyWindow(0));
    EXPECT_EQ(kv::FindWindow(u"Class", u"Name"), second);
    EXPECT_TRUE(kv::DestroyWindow(second));
    EXPECT_EQ(kv::FindWindow(u"Class", u"Name"), 0u);

    kv::SetWindowCreationHook([](const kv::WindowClass& asked) { return asked.name != u"Class"; });
    EXPECT_EQ(kv::CreateHiddenWindow(windowClass, u"Name", 0), 0u) << "a host may refuse it";
    EXPECT_EQ(kv::FindWindow(u"Class", u"Name"), 0u);
    EXPECT_TRUE(kv::DestroyWindow(kv::CreateHiddenWindow({u"Other"}, u"Name", 0)));
    kv::SetWindowCreationHook(nullptr);
    EXPECT_TRUE(kv::DestroyWindow(kv::CreateHiddenWindow(windowClass, u"Name", 0)));
}

} // namespace
