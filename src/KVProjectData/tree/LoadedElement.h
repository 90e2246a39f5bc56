#pragma once
// An element of the document that is being loaded.

#include "KVProjectData/tree/LoadReport.h"

namespace kv {

/// Lent to the node that takes its properties from it.
class LoadedElement {
public:
    /// `place` stands in the tree of `scope`.
    LoadedElement(const XmlElement& scope, const XmlView& place, LoadReport& report)
        : m_scope(scope), m_place(place), m_report(report)
    {
    }

    /// For reading, without an object.
    const XmlView& View() const { return m_place; }
    XmlElement At(const XmlView& place) const { return XmlElement(m_scope.At(place)); }
    /// For what the node passes over.
    LoadReport& Report() const { return m_report; }

private:
    const XmlElement& m_scope;
    const XmlView m_place;
    LoadReport& m_report;
};

} // namespace kv
