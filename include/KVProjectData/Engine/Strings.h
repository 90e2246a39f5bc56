#pragma once
// The string table: texts of templates and themes in the language of the user.
//
// A string file holds texts by language, which is named by the decimal text of its LCID:
//
//     <Strings>
//       <Language id="1033"><String id="EnterText">Enter text</String></Language>
//       <Language id="1031"><String id="EnterText">Text eingeben</String></Language>
//     </Strings>
//
// A text refers to one by "stringRef:" and the id, which is made of letters A to Z, digits, "_" and "-".

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"

inline constexpr CLSID CLSID_ZXStringTable = "d31d514e-7cca-4320-b7ae-e29ee25aa57a"_guid;

/// The file cannot be read, or is no string file.
inline constexpr HRESULT ZXE_E_NOT_STRINGS = MakeResult(0xC2000017);

struct IZXStringTable : IUnknown {
    static constexpr GUID IID = "b3cf81d1-2b89-490c-8a77-bf0a0126ecd2"_guid;
    using Base = IUnknown;

    /// Null at first. A string that the language does not have is taken from 1033, then from the first language of the
    /// file that has it.
    virtual HRESULT get_Language(BSTR* pbstrLanguage) = 0;
    virtual HRESULT put_Language(BSTR bstrLanguage) = 0;

    /// Replaces the strings by those of a file. Of ids told twice the first counts; elements of other names are passed
    /// over. On failure the strings stay as they were.
    virtual HRESULT Load(BSTR bstrFile) = 0;

    /// The text with every reference in it replaced, in the replacements, too. A reference to nothing, or to a string
    /// that it stands in itself, stays as it is, and so do all that are left after 10,000 replacements or that would
    /// make the text longer than 1,048,576 characters. A null or empty text gives null.
    virtual HRESULT Resolve(BSTR bstrText, BSTR* pbstrResult) = 0;
};
