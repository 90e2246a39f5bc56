#pragma once
// A document of an effect or of a clip.

#include "platform/xml/Element.h"

#include <memory>
#include <string>

namespace kv {

struct Look;
class XmlBuffer;

/// A document that was set stands for itself. One that was loaded is markup until somebody asks for it, since a tree
/// for each takes many times as much. Read only, free-threaded, and shared by its copies.
class StoredDocument {
public:
    /// No document.
    StoredDocument() = default;
    /// Takes an element or a document that has one, or null. Throws Error(E_INVALIDARG) for anything else, and for one
    /// that no saved production has room for.
    explicit StoredDocument(IXMLDOMNode* node);
    /// The markup of an element that a document held.
    static StoredDocument FromMarkup(std::string markup);

    explicit operator bool() const { return static_cast<bool>(m_held); }
    /// Whether both are one document.
    bool operator==(const StoredDocument& other) const;

    /// The document itself or its element; empty without one.
    ComPtr<IXMLDOMNode> Node() const;
    XmlElement Root() const;
    /// The document itself; null and S_FALSE without one.
    HRESULT Give(IXMLDOMNode** out) const;

    /// What it tells of how its owner is shown, read once; null without a document.
    std::shared_ptr<const Look> ShownAs() const;

    /// Writes its element in one line; nothing without one.
    void WriteTo(XmlBuffer& target) const;

private:
    struct Held;

    /// The element, without a tree that stays where there is none yet.
    XmlElement Passing() const;

    std::shared_ptr<Held> m_held;
};

} // namespace kv
