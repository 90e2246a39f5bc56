#include "platform/com/Aggregate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using kv::ComPtr;

struct IFirst : IUnknown {
    static constexpr GUID IID = "11111111-0000-0000-0000-000000000001"_guid;
    using Base = IUnknown;
    virtual int First() = 0;
};

struct ISecond : IFirst {
    static constexpr GUID IID = "11111111-0000-0000-0000-000000000002"_guid;
    using Base = IFirst;
    virtual int Second() = 0;
};

struct IOther : IUnknown {
    static constexpr GUID IID = "11111111-0000-0000-0000-000000000003"_guid;
    using Base = IUnknown;
    virtual int Other() = 0;
};

class Third : public kv::Object<IOther> {
public:
    explicit Third(IUnknown* outer = nullptr) : Object(outer) {}
    int Other() override { return 3; }
};

/// Answers for two interfaces itself and for a third by an inner object.
class Outer : public kv::Aggregate<kv::Parts<Third>, ISecond> {
public:
    Outer() { MakePart<Third>(); }

    int First() override { return 1; }
    int Second() override { return Part<Third>().Other() - 1; }

protected:
    void FinalRelease() override
    {
        // Handing itself to someone while winding down must not end the object again.
        const ComPtr<IFirst> self(this);
        EXPECT_EQ(self->First(), 1);
        ReleaseParts();
        EXPECT_EQ(self->QueryInterface(IOther::IID, ComPtr<IOther>().PutVoid()), E_NOINTERFACE);
    }
};

class Failing : public kv::Object<IOther> {
public:
    Failing() { throw kv::Error(E_FAIL); }
    int Other() override { return 0; }
};

class ObjectTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(kv::g_moduleLocks, 0); }
};

TEST_F(ObjectTest, AnswersForItsInterfacesAndTheirBases)
{
    const ComPtr<Outer> object = kv::Make<Outer>();
    const ComPtr<ISecond> second = kv::Query<ISecond>(object);
    const ComPtr<IFirst> first = kv::Query<IFirst>(second);
    ASSERT_TRUE(second && first);
    EXPECT_EQ(second->Second(), 2);
    EXPECT_EQ(first->First(), 1);
    EXPECT_EQ(first->QueryInterface(IUnknown::IID, nullptr), E_POINTER);

    void* unknown = &unknown;
    EXPECT_EQ(object->QueryInterface("99999999-0000-0000-0000-000000000000"_guid, &unknown), E_NOINTERFACE);
    EXPECT_EQ(unknown, nullptr);
}

TEST_F(ObjectTest, AnAggregateHasOneIdentity)
{
    ComPtr<IOther> other;
    {
        const ComPtr<Outer> object = kv::Make<Outer>();
        EXPECT_EQ(kv::g_moduleLocks, 2);
        other = kv::Query<IOther>(object);
        ASSERT_TRUE(other);
        EXPECT_EQ(other->Other(), 3);
        EXPECT_EQ(kv::Query<IUnknown>(other), kv::Query<IUnknown>(object));
        EXPECT_TRUE(kv::Query<ISecond>(other));
    }
    // A reference to the inner object's interface keeps the whole aggregate.
    EXPECT_EQ(kv::g_moduleLocks, 2);
}

TEST_F(ObjectTest, AWeakReferenceLeadsToTheObjectAsLongAsItLives)
{
    ComPtr<Outer> object = kv::Make<Outer>();
    ComPtr<IWeakReference> weak;
    ComPtr<IWeakReference> same;
    EXPECT_EQ(kv::Query<IWeakReferenceSource>(kv::Query<IOther>(object))->GetWeakReference(weak.Put()), S_OK);
    EXPECT_EQ(kv::Query<IWeakReferenceSource>(object)->GetWeakReference(same.Put()), S_OK);
    EXPECT_EQ(weak, same) << "of the aggregate as a whole";
    ComPtr<IOther> other;
    EXPECT_EQ(weak->Resolve(IOther::IID, other.PutVoid()), S_OK);
    EXPECT_EQ(weak->Resolve(IWeakReference::IID, same.PutVoid()), E_NOINTERFACE);
    object.Reset();
    EXPECT_EQ(other->Other(), 3) << "a found object is held";
    other.Reset();
    EXPECT_EQ(weak->Resolve(IOther::IID, other.PutVoid()), S_OK);
    EXPECT_FALSE(other);
}

TEST_F(ObjectTest, AnObjectEndsOnceWhileItIsLookedFor)
{
    for (int round = 0; round < 500; ++round) {
        ComPtr<Outer> object = kv::Make<Outer>();
        const auto source = kv::Query<IWeakReferenceSource>(object).Get();
        std::atomic<int> ready{0};
        std::thread seeker([&, kept = object]() mutable {
            ComPtr<IWeakReference> weak;
            source->GetWeakReference(weak.Put());
            ++ready;
            kept.Reset();
            ComPtr<IOther> found;
            do {
                EXPECT_EQ(weak->Resolve(IOther::IID, found.PutVoid()), S_OK);
                EXPECT_EQ(found ? found->Other() : 3, 3);
            } while (found);
        });
        while (ready == 0) {
        }
        object.Reset();
        seeker.join();
    }
}

TEST_F(ObjectTest, PointersShareMoveAndHandOver)
{
    const ComPtr<Third> object = kv::Make<Third>();
    ComPtr<IOther> shared = object;
    ComPtr<IOther> moved = std::move(shared);
    EXPECT_FALSE(shared);
    IOther* raw = nullptr;
    EXPECT_EQ(moved.CopyTo(&raw), S_OK);
    EXPECT_EQ(moved.CopyTo(nullptr), E_POINTER);
    const ComPtr<IOther> attached = ComPtr<IOther>::Attach(raw);
    EXPECT_EQ(object->AddRef(), 4u);
    EXPECT_EQ(object->Release(), 3u);
    const ComPtr<IOther>& itself = moved;
    moved = itself;
    EXPECT_TRUE(moved);
    *moved.Put() = nullptr;
    EXPECT_EQ(object->AddRef(), 3u);
    object->Release();
}

TEST_F(ObjectTest, FailuresBecomeResultCodesAndLeaveNothingCounted)
{
    EXPECT_EQ(kv::Guarded([]() -> HRESULT { throw kv::Error(E_ACCESSDENIED); }), E_ACCESSDENIED);
    EXPECT_EQ(kv::Guarded([]() -> HRESULT { throw std::bad_alloc(); }), E_OUTOFMEMORY);
    EXPECT_EQ(kv::Guarded([]() -> HRESULT { throw 1; }), E_UNEXPECTED);
    EXPECT_EQ(kv::Guarded([] { return S_FALSE; }), S_FALSE);
    EXPECT_THROW(kv::Make<Failing>(), kv::Error);
    EXPECT_EQ(kv::g_moduleLocks, 0);
}

} // namespace
