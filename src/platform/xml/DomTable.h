#pragma once
// The interface objects of a tree, found by the places that they stand for.

#include <cstddef>
#include <functional>
#include <memory>

namespace kv {

class DomObject;

/// A hash table that is linked through its objects. Nothing here fails: memory is taken for growth alone, which it can
/// do without.
class DomTable {
public:
    DomTable() = default;
    DomTable(const DomTable&) = delete;
    DomTable& operator=(const DomTable&) = delete;

    std::size_t Size() const { return m_size; }
    DomObject* Find(const void* key) const;
    /// Whether an object is as asked.
    bool Any(const std::function<bool(const DomObject&)>& is) const;
    /// For a place without an object.
    void Add(DomObject& object);
    /// Nothing happens for an object that is not in the table.
    void Remove(DomObject& object);

private:
    DomObject*& ChainOf(const void* key) const;
    void Grow();

    /// Serves alone while objects are few.
    DomObject* m_chain = nullptr;
    std::unique_ptr<DomObject*[]> m_chains;
    /// A power of two, one less; 0 for one chain.
    std::size_t m_mask = 0;
    std::size_t m_size = 0;
};

} // namespace kv
