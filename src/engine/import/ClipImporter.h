#pragma once
// Titles of clips: those of a folder, or of a playlist.

#include "KVProjectData/Engine/Import.h"
#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/IKVProjectImport.h"
#include "platform/com/ConnectionPoint.h"
#include "platform/com/Object.h"

namespace kv {

/// See CLSID_ZXClipImporter.
class CClipImporter final : public Object<IKVProjectImport, ConnectionPointContainer> {
public:
    explicit CClipImporter(IUnknown* outer) : Object(outer) {}

    HRESULT IsLoadable(BSTR bstrFileName, LONG* pbIsLoadable) override;
    HRESULT Import(BSTR bstrFileName, IUnknown* pUnkProjectData, BSTR bstrCatalogDir, BSTR bstrMovieDirectory) override;

private:
    ConnectionPoint m_point{*this, IKVProjectImportEvents::IID};
};

} // namespace kv
