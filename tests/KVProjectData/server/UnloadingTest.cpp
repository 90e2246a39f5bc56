#include "KVProjectData/Engine.h"
#include "platform/system/Registry.h"
#include "support/Host.h"

#include <atomic>
#include <dlfcn.h>
#include <mutex>
#include <thread>

namespace kv::test {
namespace {

using std::chrono::milliseconds;

class UnloadingTest : public testing::Test {
protected:
    void SetUp() override
    {
        RegisterServers();
        m_path = ToUtf8(Registry::QueryText(Hive::ClassesRoot,
                                            u"CLSID\\" + GuidText(CLSID_KVCommandList) + u"\\InprocServer32", {}));
        m_engine = Create<IUnknown>(CLSID_ZXMediaInformation);
    }

    bool IsLoaded() const
    {
        void* library = dlopen(m_path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (library) dlclose(library);
        return library != nullptr;
    }

private:
    std::string m_path;
    /// Keeps the engine: the media libraries below it hold memory that they would lose sight of.
    ComPtr<IUnknown> m_engine;
};

TEST_F(UnloadingTest, ALibraryGoesWhenNothingOfItIsInUse)
{
    auto commands = Create<IKVCommandList>(CLSID_KVCommandList);
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_TRUE(IsLoaded()) << "an object lives";
    commands.Reset();
    CoFreeUnusedLibraries();
    EXPECT_TRUE(IsLoaded()) << "there is a delay";
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_FALSE(IsLoaded());

    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, CoGetClassObject(CLSID_KVCommandList, CLSCTX_ALL, nullptr, IClassFactory::IID, factory.PutVoid()));
    EXPECT_EQ(S_OK, factory->LockServer(true));
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_TRUE(IsLoaded()) << "the server is locked";
    EXPECT_EQ(S_OK, factory->LockServer(false));
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_FALSE(IsLoaded()) << "a class object does not keep its library";
    EXPECT_EQ(E_UNEXPECTED, factory->CreateInstance(nullptr, IKVCommandList::IID, commands.PutVoid()));
    EXPECT_TRUE(Create<IKVCommandList>(CLSID_KVCommandList)) << "it comes back when it is needed";
}

TEST_F(UnloadingTest, TheDelayRunsFromTheFirstAnswerAndAnewAfterEveryUse)
{
    constexpr milliseconds kDelay{30};
    const auto free = [&] { CoFreeUnusedLibrariesEx(kDelay.count(), 0); };
    Create<IKVCommandList>(CLSID_KVCommandList);
    std::this_thread::sleep_for(kDelay);
    free();
    EXPECT_TRUE(IsLoaded()) << "nobody asked before";
    Create<IKVCommandList>(CLSID_KVCommandList);
    std::this_thread::sleep_for(kDelay);
    free();
    EXPECT_TRUE(IsLoaded()) << "used in the meantime";
    std::this_thread::sleep_for(kDelay);
    free();
    EXPECT_FALSE(IsLoaded());
}

/// Calls something again and again on a thread of its own.
class Repeating {
public:
    explicit Repeating(std::function<void()> call)
        : m_thread([this, call = std::move(call)] {
              for (; !m_done; ++m_calls)
                  call();
          })
    {
    }
    Repeating(const Repeating&) = delete;
    Repeating& operator=(const Repeating&) = delete;
    ~Repeating()
    {
        m_done = true;
        m_thread.join();
    }

    /// Waits until a call that begins from now on has ended.
    void AwaitCall() const
    {
        constexpr int kThisAndTheNext = 2;
        const int awaited = m_calls + kThisAndTheNext;
        while (m_calls < awaited)
            std::this_thread::yield();
    }

private:
    std::atomic<bool> m_done = false;
    std::atomic<int> m_calls = 0;
    std::thread m_thread;
};

TEST_F(UnloadingTest, OtherThreadsMayCreateObjectsMeanwhile)
{
    // Without a delay the host sees to it that nobody is leaving the library.
    std::mutex leaving;
    const Repeating freeing([&] {
        const std::lock_guard lock(leaving);
        CoFreeUnusedLibrariesEx(0, 0);
    });
    for (int i = 0; i < 50; ++i) {
        ComPtr<IKVCommandList> commands;
        ASSERT_EQ(S_OK, CreateInstance(CLSID_KVCommandList, commands));
        {
            const std::lock_guard lock(leaving);
            commands.Reset();
        }
        freeing.AwaitCall();
        ASSERT_FALSE(IsLoaded());
    }
}

} // namespace
} // namespace kv::test
