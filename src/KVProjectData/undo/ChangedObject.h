#pragma once
// How the project learns of what undo and redo change.

#include "KVProjectData/tree/ProjectNode.h"

namespace kv {

/// An event that no sink is told: the object that it names is in the next ProjectChangeList.
inline constexpr DISPID kObjectChanged = -2;

/// Whether events name objects of a type.
constexpr bool IsNamed(NodeType type)
{
    switch (type) {
    case typeProject:
    case typeTitle:
    case typeMenu:
    case typeFile:
    case typeButton:
    case typeOverlay:
    case typeText:
    case typeGroupInfo:
        return true;
    default:
        return false;
    }
}

/// Reports an object to the project that a node stands in.
inline void ReportChange(CProjectNode& node, LONG id)
{
    node.FireEvent(kObjectChanged, id, 0, 0);
}

/// Reports the object that events about a node name: itself, or what it is a part of. Events about the project itself
/// name none.
inline void ReportChange(CProjectNode& node)
{
    const SectionLock links(ParentLinks());
    if (node.Type() == typeProject) return;
    const CProjectNode* object = &node;
    while (object && !IsNamed(object->Type()))
        object = object->Parent();
    if (object) ReportChange(node, object->ID());
}

} // namespace kv
