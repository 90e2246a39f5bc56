#pragma once
// Values that are kept while they are used, within a limit.

#include <cstddef>
#include <list>
#include <map>
#include <utility>

namespace kv {

/// Finding and adding cost the logarithm of the number of values. Belongs to one thread at a time.
template <class Key, class Value>
class RecentlyUsed {
public:
    /// What the costs of all values may come to.
    explicit RecentlyUsed(std::size_t limit) : m_limit(limit) {}

    /// Null when it is not there; good until the next change.
    const Value* Find(const Key& key)
    {
        const auto found = m_places.find(key);
        if (found == m_places.end()) return nullptr;
        m_entries.splice(m_entries.begin(), m_entries, found->second);
        return &found->second->value;
    }

    /// Takes the place of the key's value, and drops those that were not used for longest. A value that costs more than
    /// the limit is not kept.
    void Put(const Key& key, Value value, std::size_t cost)
    {
        Drop(key);
        if (cost > m_limit) return;
        m_entries.push_front({nullptr, std::move(value), cost});
        try {
            m_entries.front().key = &m_places.emplace(key, m_entries.begin()).first->first;
        } catch (...) {
            m_entries.pop_front();
            throw;
        }
        m_cost += cost;
        while (m_cost > m_limit)
            Drop(*m_entries.back().key);
    }

    void Drop(const Key& key)
    {
        const auto found = m_places.find(key);
        if (found == m_places.end()) return;
        m_cost -= found->second->cost;
        m_entries.erase(found->second);
        m_places.erase(found);
    }

    std::size_t Cost() const { return m_cost; }

private:
    struct Entry {
        const Key* key;
        Value value;
        std::size_t cost;
    };
    using Entries = std::list<Entry>;

    const std::size_t m_limit;
    std::size_t m_cost = 0;
    /// The one that was used last comes first.
    Entries m_entries;
    std::map<Key, typename Entries::iterator> m_places;
};

} // namespace kv
