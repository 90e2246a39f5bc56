#include "platform/xml/DomTable.h"

#include "platform/xml/DomObject.h"

#include <cstdint>
#include <new>
#include <utility>

namespace kv {

DomObject*& DomTable::ChainOf(const void* key) const
{
    // Nodes stand at multiples of eight, and many of them in a row.
    const auto hash = (reinterpret_cast<std::uintptr_t>(key) >> 3) * 0x9e3779b97f4a7c15 >> 32;
    return m_chains[hash & m_mask];
}

DomObject* DomTable::Find(const void* key) const
{
    DomObject* object = m_chains ? ChainOf(key) : m_chain;
    while (object && object->Key() != key)
        object = object->m_nextInTable;
    return object;
}

bool DomTable::Any(const std::function<bool(const DomObject&)>& is) const
{
    for (std::size_t i = 0; i <= m_mask; ++i) {
        for (const DomObject* object = m_chains ? m_chains[i] : m_chain; object; object = object->m_nextInTable) {
            if (is(*object)) return true;
        }
    }
    return false;
}

void DomTable::Add(DomObject& object)
{
    constexpr std::size_t kLongChain = 4;
    if (m_size > kLongChain * m_mask + kLongChain) Grow();
    DomObject*& chain = m_chains ? ChainOf(object.Key()) : m_chain;
    object.m_nextInTable = std::exchange(chain, &object);
    ++m_size;
}

void DomTable::Remove(DomObject& object)
{
    DomObject** link = m_chains ? &ChainOf(object.Key()) : &m_chain;
    while (*link && *link != &object)
        link = &(*link)->m_nextInTable;
    if (!*link) return;
    *link = object.m_nextInTable;
    --m_size;
}

void DomTable::Grow()
{
    constexpr std::size_t kGrowth = 8;
    const std::size_t count = m_mask + 1;
    auto* grown = new (std::nothrow) DomObject*[kGrowth * count]();
    if (!grown) return;
    const std::unique_ptr<DomObject*[]> old = std::exchange(m_chains, std::unique_ptr<DomObject*[]>(grown));
    m_mask = kGrowth * count - 1;
    for (std::size_t i = 0; i < count; ++i) {
        DomObject* object = old ? old[i] : std::exchange(m_chain, nullptr);
        while (object) {
            DomObject* const next = object->m_nextInTable;
            object->m_nextInTable = std::exchange(ChainOf(object->Key()), object);
            object = next;
        }
    }
}

} // namespace kv
