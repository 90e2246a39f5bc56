#pragma once
// Where an undo record finds its node again.

#include "KVProjectData/tree/ProjectNode.h"

#include <array>

namespace kv {

/// A node may have been made anew since it was recorded, by a snapshot that was restored; it then stands in the same
/// place of the project. A node that stands in no project is found as long as it lives.
class NodeAddress {
public:
    explicit NodeAddress(CProjectNode& node);

    /// Null when the node is gone.
    CProjectNode* Find() const;

    /// Kind and ID of the node when it was recorded, for a person: "typeTitle[5]".
    Bstr Description() const;

private:
    /// One level below the project: items of lists are found by ID, all others by their type.
    struct Level {
        NodeType type = typeNone;
        LONG id = 0;
    };
    static constexpr std::size_t kDeepest = 6;

    CProjectNode* FindInProject() const;
    /// The node's own level.
    const Level& Last() const;

    const NodeLink m_node;
    /// Null for a node that stood in no project.
    NodeLink m_project;
    /// From the project down; ends with `typeNone`. Of a node that stood in no project, its own level alone.
    std::array<Level, kDeepest> m_path;
};

} // namespace kv
