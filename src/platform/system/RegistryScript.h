#pragma once
// Registry scripts: a text that tells what a server writes into the registry, and takes out again.
//
//     HKCR
//     {
//         NoRemove AppID
//         {
//             '%APPID%' = s 'Name'
//             'Name.dll' { val AppID = s '%APPID%' }
//         }
//     }
//
// Hives are HKCR, HKCU, HKLM, HKU and HKCC or their long names. `NoRemove` keeps a key on removal, `ForceRemove`
// deletes it before it is written, `Delete` deletes it and writes nothing. Values are `s` (text) or `d` (a number).
// Names and texts in quotes hold a quote as two; %NAME% stands for a replacement, %% for a percent sign.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <map>
#include <string>
#include <string_view>

namespace kv {

/// Replacements by name, without the percent signs.
using ScriptReplacements = std::map<std::u16string, std::u16string, std::less<>>;

/// E_INVALIDARG for a script that does not parse or names an unknown replacement; nothing is written then.
KV_EXPORT HRESULT RegisterScript(std::u16string_view script, const ScriptReplacements& replacements);

/// Removes the keys of the script that are not marked NoRemove, and the listed values of those that are.
KV_EXPORT HRESULT UnregisterScript(std::u16string_view script, const ScriptReplacements& replacements);

} // namespace kv
