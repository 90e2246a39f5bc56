#pragma once
// The string table component.

#include "KVProjectData/Engine/Strings.h"
#include "platform/com/Object.h"
#include "platform/system/CriticalSection.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kv {

class CStringTable final : public Object<IZXStringTable> {
public:
    using Object::Object;

    HRESULT get_Language(BSTR* pbstrLanguage) override;
    HRESULT put_Language(BSTR bstrLanguage) override;
    HRESULT Load(BSTR bstrFile) override;
    HRESULT Resolve(BSTR bstrText, BSTR* pbstrResult) override;

private:
    using Strings = std::map<std::u16string, std::u16string, std::less<>>;
    struct Language {
        std::u16string name;
        Strings strings;
    };
    class Resolver;

    static std::vector<Language> Read(BSTR file);
    /// Null when no language has it.
    const std::u16string* Find(std::u16string_view id) const;

    mutable CriticalSection m_section;
    Bstr m_language;
    /// In the order of the file.
    std::vector<Language> m_languages;
};

} // namespace kv
