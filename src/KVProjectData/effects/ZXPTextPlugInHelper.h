#pragma once
// What an operation reads of a text effect's "plugin_data", and edits in it.

#include "KVProjectData/effects/TextAttributes.h"
#include "KVProjectData/effects/ZXPPlugInHelper.h"

namespace kv {

/// A transform, a crop and a rich text over one element "plugin_data", whose "html" has the "body" that holds the text.
/// Loading one without answers E_INVALIDARG. TextAttributes tells what the values mean.
///
/// Getters give what all of the text has in common, and the defaults of TextAttributes when nothing is loaded. They
/// write the value whatever they answer; a null out-pointer is E_POINTER. Strings are the caller's to free.
///
/// Setters change one attribute of all of the text, in the working copy. A value that the text has already is not set
/// again. They answer E_FAIL when nothing is loaded, for text that XML cannot hold, and, before anything has changed,
/// for a tree that would become too deep. What is set is what the getter then answers, but for these: "TEXTED_REMOVE"
/// as a face or a height takes the attribute away; an underline that was turned off has no bit.
class CZXPTextPlugInHelper final : public CZXPPlugInHelper {
public:
    /// "undetermined" when runs disagree. S_FALSE when nothing is loaded.
    HRESULT get_Face(BSTR* pVal) const;
    /// Compared without case.
    HRESULT put_Face(BSTR newVal);

    /// 0 when runs disagree. S_FALSE then, and when nothing is loaded.
    HRESULT get_Height(LONG* pVal) const;
    /// E_INVALIDARG but for 8 to 300.
    HRESULT put_Height(LONG newVal);

    /// As it stands, such as a reference to a string; null where none is told.
    HRESULT get_HeightString(BSTR* pVal) const;
    /// Sets any text, even the same.
    HRESULT put_HeightString(BSTR newVal);

    /// 1 left, 2 centre, 4 right, 8 justified; 0 when runs disagree; 0xFFFFFFFF for anything else, with S_FALSE for an
    /// alignment that is empty, and E_FAIL when nothing is loaded.
    HRESULT get_Justify(ULONG* pVal) const;
    /// E_INVALIDARG for what is none of the four.
    HRESULT put_Justify(ULONG newVal);

    /// -1 when runs disagree, and for none.
    HRESULT get_SelectedStyleId(LONG* pVal) const;
    HRESULT put_SelectedStyleId(LONG newVal);

    /// S_FALSE when nothing is loaded.
    HRESULT get_Style(ULONG* pVal) const;
    /// Turns styles on and off; those without a bit stay. Nothing changes when the text has one of the bits already.
    /// E_INVALIDARG for a bit of mixed style.
    HRESULT put_Style(ULONG newVal);

    /// 0xTTBBGGRR. S_FALSE when runs disagree, and when nothing is loaded.
    HRESULT get_Color(ULONG* pVal) const;
    HRESULT put_Color(ULONG newVal);

    /// S_FALSE when it is empty.
    HRESULT get_String(BSTR* pVal) const;
    /// The new text has the formatting of the first run. Null is empty.
    HRESULT put_String(BSTR newVal);

private:
    void Read(const XmlElement& pluginData) override;

    bool IsLoaded() const { return static_cast<bool>(WorkingCopy()); }
    /// The defaults when nothing is loaded. Throws std::bad_alloc.
    const TextAttributes& Attributes() const;
    /// Runs a command on the text. `compose` gives the command.
    template <class Compose>
    HRESULT Apply(const Compose& compose);
    /// The same unless the text is so already.
    template <class IsSame, class Compose>
    HRESULT Change(const IsSame& isSame, const Compose& compose);

    XmlElement m_body;
    /// Read when somebody asks; empty again after an edit.
    mutable std::optional<TextAttributes> m_attributes;
};

} // namespace kv
