#pragma once
// Refers to a node that may end at any time.

#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/ComPtr.h"

namespace kv {

template <class Node>
class NodeReference {
public:
    /// Throws Error for lack of memory, and for a node whose object is part of another that cannot be referred to.
    explicit NodeReference(Node& node) : m_node(&node)
    {
        const auto source = Query<IWeakReferenceSource>(node.Identity());
        if (!source) throw Error(E_NOINTERFACE);
        ThrowIfFailed(source->GetWeakReference(m_object.Put()));
    }

    /// The object that the node is part of; empty when it has ended. The reference may be the last one, and a project
    /// must not end inside a section: whoever holds the object drops it outside.
    ComPtr<IUnknown> Hold() const
    {
        ComPtr<IUnknown> object;
        m_object->Resolve(IUnknown::IID, object.PutVoid());
        return object;
    }

    /// Only while the object is held.
    Node& operator*() const { return *m_node; }

private:
    ComPtr<IWeakReference> m_object;
    Node* m_node;
};

} // namespace kv
