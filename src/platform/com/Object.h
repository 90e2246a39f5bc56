#pragma once
// The base of every component object: counting, interface lookup, aggregation.

#include "platform/com/ComPtr.h"
#include "platform/com/Error.h"

#include <atomic>
#include <concepts>
#include <mutex>
#include <type_traits>

namespace kv {

/// Live objects and server locks of the library that this is compiled into: one counter a library.
inline std::atomic<LONG> g_moduleLocks{0};

/// Keeps the library loaded for a scope.
class ModuleLock {
public:
    ModuleLock() { ++g_moduleLocks; }
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
    ~ModuleLock() { --g_moduleLocks; }
};

/// The count of an object's references, and the way to the object for those who do not keep it alive.
class CountedUnknown : public IWeakReferenceSource {
public:
    CountedUnknown() = default;
    CountedUnknown(const CountedUnknown&) = delete;
    CountedUnknown& operator=(const CountedUnknown&) = delete;

    ULONG AddRef() final { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }

    bool AddRefIfAlive()
    {
        ULONG count = m_count.load(std::memory_order_relaxed);
        while (count != 0 && count < kWindingDown) {
            if (m_count.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) return true;
        }
        return false;
    }

    ULONG Release() final
    {
        const ULONG left = m_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            // References taken and dropped while the object winds down must not end it twice.
            m_count.store(kWindingDown, std::memory_order_relaxed);
            End();
        }
        return left;
    }

    HRESULT GetWeakReference(IWeakReference** reference) final
    {
        if (!reference) return E_POINTER;
        *reference = nullptr;
        return Guarded([&] {
            WeakReference* weak = m_weak.load(std::memory_order_acquire);
            if (!weak) {
                auto made = ComPtr<WeakReference>::Attach(new WeakReference(*this));
                // Another thread may have been faster.
                if (m_weak.compare_exchange_strong(weak, made.Get(), std::memory_order_acq_rel)) weak = made.Detach();
            }
            return ComPtr<IWeakReference>(weak).CopyTo(reference);
        });
    }

protected:
    ~CountedUnknown()
    {
        if (WeakReference* weak = m_weak.load(std::memory_order_acquire)) {
            weak->Forget();
            weak->Release();
        }
    }

    /// The last reference is gone.
    virtual void End() = 0;

private:
    /// Outlives the object. One serves all that refer to it.
    class WeakReference final : public IWeakReference {
    public:
        explicit WeakReference(CountedUnknown& object) : m_object(&object) {}

        HRESULT QueryInterface(REFIID iid, void** out) override
        {
            if (!out) return E_POINTER;
            const bool isOurs = iid == IUnknown::IID || iid == IWeakReference::IID;
            *out = isOurs ? ComPtr<IWeakReference>(this).Detach() : nullptr;
            return isOurs ? S_OK : E_NOINTERFACE;
        }
        ULONG AddRef() override { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
        ULONG Release() override
        {
            const ULONG left = m_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
            if (left == 0) delete this;
            return left;
        }

        HRESULT Resolve(REFIID iid, void** out) override
        {
            if (!out) return E_POINTER;
            *out = nullptr;
            ComPtr<IUnknown> object;
            {
                // What does not live any more stays in memory until the section is left.
                const std::lock_guard lock(m_section);
                if (m_object && m_object->AddRefIfAlive()) object = ComPtr<IUnknown>::Attach(m_object);
            }
            return object ? object->QueryInterface(iid, out) : S_OK;
        }

        void Forget()
        {
            const std::lock_guard lock(m_section);
            m_object = nullptr;
        }

    private:
        const ModuleLock m_module;
        std::atomic<ULONG> m_count{1};
        std::mutex m_section;
        CountedUnknown* m_object;
    };

    static constexpr ULONG kWindingDown = 0x40000000;

    std::atomic<ULONG> m_count{1};
    /// Made for the first who asks.
    std::atomic<WeakReference*> m_weak{nullptr};
};

/// A component object that answers for `Interfaces` and the interfaces they extend.
///
/// Its count starts at 1, owned by whoever made it. Given an outer object it is an inner object of
/// an aggregate: interface calls count on and query the outer one, while `Inner()` still speaks for
/// this object alone.
template <class... Interfaces>
class Object : public Interfaces... {
public:
    explicit Object(IUnknown* outer = nullptr) : m_inner(*this), m_controlling(outer ? outer : &m_inner)
    {
        ++g_moduleLocks;
    }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() { --g_moduleLocks; }

    HRESULT QueryInterface(REFIID iid, void** out) override { return m_controlling->QueryInterface(iid, out); }
    ULONG AddRef() override { return m_controlling->AddRef(); }
    ULONG Release() override { return m_controlling->Release(); }

    /// The object's own IUnknown, which never delegates to an outer object. Not counted.
    IUnknown* Inner() { return &m_inner; }

    /// The IUnknown that is the identity of the whole aggregate. Not counted.
    IUnknown* Controlling() { return m_controlling; }

    /// Adds a reference of the object's own unless the last one is gone already. For tables of objects that they do not
    /// own, whose objects take themselves out in FinalRelease.
    bool AddRefIfAlive() { return m_inner.AddRefIfAlive(); }

protected:
    /// Finds an interface of this object. A class that aggregates others asks them here too.
    /// `out` is never null and already holds null.
    virtual HRESULT FindInterface(REFIID iid, void** out)
    {
        return (Offer<Interfaces>(static_cast<Interfaces*>(this), iid, out) || ...) ? S_OK : E_NOINTERFACE;
    }

    /// Runs when the last reference is gone, while the object is still whole.
    virtual void FinalRelease() {}

    /// Ends the object after FinalRelease. A class whose own code may still be running by then puts the end off.
    virtual void Destroy() { delete this; }

private:
    class InnerUnknown final : public CountedUnknown {
    public:
        explicit InnerUnknown(Object& owner) : m_owner(owner) {}

        HRESULT QueryInterface(REFIID iid, void** out) override
        {
            if (!out) return E_POINTER;
            *out = nullptr;
            if (iid != IUnknown::IID && iid != IWeakReferenceSource::IID) return m_owner.FindInterface(iid, out);
            AddRef();
            *out = static_cast<IWeakReferenceSource*>(this);
            return S_OK;
        }

    private:
        void End() override
        {
            m_owner.FinalRelease();
            m_owner.Destroy();
        }

        Object& m_owner;
    };

    template <class Interface, class Start>
    static bool Offer(Start* start, REFIID iid, void** out)
    {
        if constexpr (!std::same_as<Interface, IUnknown>) {
            if (iid == Interface::IID) {
                auto* found = static_cast<Interface*>(start);
                found->AddRef();
                *out = found;
                return true;
            }
            return Offer<typename Interface::Base>(start, iid, out);
        }
        return false;
    }

    InnerUnknown m_inner;
    IUnknown* m_controlling;
};

/// Owner of an inner object of an aggregate.
template <class T>
class Aggregated {
public:
    Aggregated() = default;
    explicit Aggregated(T* object) : m_object(object) {}
    Aggregated(Aggregated&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Aggregated& operator=(Aggregated&& other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~Aggregated() { Reset(); }

    void Reset()
    {
        if (T* object = std::exchange(m_object, nullptr)) object->Inner()->Release();
    }

    T* Get() const { return m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

/// Makes an object and owns its first reference. Throws on lack of memory.
template <class T, class... Arguments>
ComPtr<T> Make(Arguments&&... arguments)
{
    return ComPtr<T>::Attach(new T(std::forward<Arguments>(arguments)...));
}

/// Makes an inner object of `outer`. Throws on lack of memory.
template <class T, class... Arguments>
Aggregated<T> MakeInner(IUnknown* outer, Arguments&&... arguments)
{
    return Aggregated<T>(new T(outer, std::forward<Arguments>(arguments)...));
}

} // namespace kv
