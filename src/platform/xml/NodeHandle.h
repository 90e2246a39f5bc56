#pragma once
// Handles of nodes as the pointers that they are. The library makes one of the other by a call, and tells by a call
// whether there is a node, which costs more than most of what is then asked.

#include <bit>
#include <pugixml.hpp>
#include <type_traits>

namespace kv {

static_assert(sizeof(pugi::xml_node) == sizeof(void*) && std::is_trivially_copyable_v<pugi::xml_node>);

inline pugi::xml_node NodeOf(pugi::xml_node_struct* pointer)
{
    return std::bit_cast<pugi::xml_node>(pointer);
}

/// Null for no node.
inline pugi::xml_node_struct* PointerOf(pugi::xml_node node)
{
    return std::bit_cast<pugi::xml_node_struct*>(node);
}

} // namespace kv
