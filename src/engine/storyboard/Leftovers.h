#pragma once
// What a document held beside a production, and what is written back to it.

#include <string>
#include <utility>
#include <vector>

namespace kv {

/// Of one element. All text is UTF-8.
struct Leftovers {
    /// The element's name, where it is a part of another one.
    std::string part;
    std::vector<std::pair<std::string, std::string>> attributes;
    /// Elements and texts as markup.
    std::string nodes;
    /// Of the elements below it that are ours, those that held something.
    std::vector<Leftovers> parts;

    bool Empty() const { return attributes.empty() && nodes.empty() && parts.empty(); }
};

} // namespace kv
