#pragma once
// Texts of documents in the language of the user: what "stringRef:" stands for in the plug-in string file.

#include "KVProjectData/Engine/Strings.h"
#include "platform/com/ComPtr.h"
#include "platform/system/CriticalSection.h"
#include "platform/xml/Dom.h"

#include <string>
#include <string_view>

namespace kv {

inline constexpr std::string_view kStringRef = "stringRef:";

/// The table that a process resolves references by.
class StringRefs {
public:
    /// Reads the string file of the content folder anew, at its next use.
    void Drop();
    /// The UTF-8 text with its references replaced. Throws Error(E_FAIL) where there is no string file.
    std::string LookUp(std::string_view text);

private:
    ComPtr<IZXStringTable> Table();

    CriticalSection m_section;
    /// Empty until it is used.
    ComPtr<IZXStringTable> m_table;
    /// Tells whether it was dropped while it was read.
    unsigned m_drops = 0;
};

StringRefs& SharedStringRefs();

/// Resolves the document that a root element stands in, below "/Root/Project", else below "/Root": the attributes
/// "label" and "buttonTextCache", and of rich text ("html") its texts, as one, and the attributes "face" and
/// "fontHeight" of its fonts. A reference that stands for nothing stays. E_FAIL where there is no string file.
HRESULT ResolveStringRefs(IXMLDOMNode* root);

} // namespace kv
