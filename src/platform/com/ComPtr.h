#pragma once
// Owner of one counted reference.

#include "platform/com/Unknown.h"

#include <concepts>
#include <utility>

namespace kv {

template <class T>
class ComPtr {
public:
    constexpr ComPtr() = default;
    constexpr ComPtr(std::nullptr_t) {}

    /// Shares: adds a reference of its own.
    ComPtr(T* object) : m_object(object)
    {
        if (m_object) m_object->AddRef();
    }

    ComPtr(const ComPtr& other) : ComPtr(other.m_object) {}
    ComPtr(ComPtr&& other) noexcept : m_object(other.Detach()) {}

    template <class Other>
    requires std::convertible_to<Other*, T*> ComPtr(const ComPtr<Other>& other) : ComPtr(static_cast<T*>(other.Get()))
    {
    }

    template <class Other>
    requires std::convertible_to<Other*, T*> ComPtr(ComPtr<Other>&& other)
    noexcept : m_object(other.Detach()) {}

    ~ComPtr() { Reset(); }

    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    /// Takes over a reference that the caller owned.
    static ComPtr Attach(T* object)
    {
        ComPtr owner;
        owner.m_object = object;
        return owner;
    }

    /// Hands the reference to the caller.
    [[nodiscard]] T* Detach() noexcept { return std::exchange(m_object, nullptr); }

    void Reset() noexcept
    {
        if (T* object = Detach()) object->Release();
    }

    T* Get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    friend bool operator==(const ComPtr& left, const ComPtr& right) { return left.m_object == right.m_object; }

    /// The place where a callee stores a reference for this owner.
    T** Put()
    {
        Reset();
        return &m_object;
    }

    void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    /// Stores a counted copy into an out-pointer of an interface.
    HRESULT CopyTo(T** out) const
    {
        if (!out) return E_POINTER;
        *out = ComPtr(*this).Detach();
        return S_OK;
    }

private:
    T* m_object = nullptr;
};

/// Asks an object for another of its interfaces; empty when it has none or is null itself.
template <class T, class Source>
ComPtr<T> Query(Source* source)
{
    ComPtr<T> found;
    if (source) source->QueryInterface(T::IID, found.PutVoid());
    return found;
}

template <class T, class Source>
ComPtr<T> Query(const ComPtr<Source>& source)
{
    return Query<T>(source.Get());
}

/// Whether two interfaces are of the same object.
inline bool IsSameObject(IUnknown* a, IUnknown* b)
{
    return a == b || Query<IUnknown>(a) == Query<IUnknown>(b);
}

} // namespace kv
