#pragma once
// Edits the tree of a rich text.

#include "KVProjectData/effects/TextCommand.h"
#include "platform/xml/Element.h"

#include <string_view>
#include <vector>

namespace kv {

/// What a command forces is what TextAttributes then reads of all runs, whatever the tree is like; the words, and all
/// else that the tree holds, stay.
class RichTextEditor {
public:
    /// `body` holds the tree.
    explicit RichTextEditor(XmlElement body) : m_body(std::move(body)) {}

    /// Throws Error(E_FAIL) for a command that it does not know, and for an edit that the tree refuses.
    void Apply(const TextCommand& command);

    /// Throws Error(E_FAIL) for a tree that cannot become so many levels deeper.
    void CheckRoom(int levels = 1) const;

private:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    void Run(const TextCommand& command);
    void Force(const TextCommand& command);
    void ForceFont(const Attributes& attributes);
    void ForceParagraph(const Attributes& attributes);
    void ForceStyle(std::string_view name);
    void RemoveStyle(const XmlView& parent, std::string_view name);
    void ReplaceText(const std::string& text);
    void EmptyText();

    /// The runs that stand in no element of a name.
    std::vector<XmlView> RunsOutside(std::string_view name) const;
    /// Puts runs that no paragraph holds into paragraphs of their own, beside those that there are.
    void CoverWithParagraphs(const XmlView& parent, const std::vector<XmlView>& runs, const Attributes& attributes);
    /// Leaves nothing but one place, which gets a text. The place of a text without any element is a new paragraph.
    XmlView KeepOnly(const std::string& text);
    /// Puts a new element around a row of siblings; without any, last into their parent.
    XmlElement Wrap(const XmlView& parent, const XmlView& first, const XmlView& last, std::string_view name);
    void Take(const XmlView& element, const Attributes& attributes);
    XmlElement ElementAt(const XmlView& place) const { return XmlElement(m_body.At(place)); }
    XmlElement m_body;
};

} // namespace kv
