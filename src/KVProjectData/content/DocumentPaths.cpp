#include "KVProjectData/content/DocumentPaths.h"

#include "KVProjectData/content/FilePlace.h"

namespace kv {
namespace {

template <class Translate>
HRESULT Hand(BSTR* out, Translate&& translate)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
        *out = Bstr(translate()).Detach();
        return S_OK;
    });
}

} // namespace

HRESULT DocumentPaths::ToDocument(BSTR bstrPath, BSTR* pbstrText)
{
    return Hand(pbstrText, [&] {
        const std::u16string path(View(bstrPath));
        FilePlace* const place = FilePlace::Current();
        if (auto fromFile = place ? place->ToFile(path) : std::nullopt) return std::move(*fromFile);
        std::u16string text = m_paths->Unresolve(path);
        // A folder whose name merely begins like one of the installation's must not become another one.
        return m_paths->Resolve(text) == path ? text : path;
    });
}

HRESULT DocumentPaths::FromDocument(BSTR bstrText, BSTR* pbstrPath)
{
    return Hand(pbstrPath, [&] {
        std::u16string path = m_paths->Resolve(View(bstrText));
        FilePlace* const place = FilePlace::Current();
        auto full = place ? place->Read(path) : std::nullopt;
        return full ? std::move(*full) : std::move(path);
    });
}

} // namespace kv
