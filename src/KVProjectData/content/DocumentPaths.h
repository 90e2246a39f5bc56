#pragma once
// Paths as they stand in documents, for those who write documents of their own into a project's.

#include "KVProjectData/Engine/Persist.h"
#include "KVProjectData/content/ContentPaths.h"
#include "platform/com/Object.h"

namespace kv {

/// Content macros stand in the place of the folders of the installation, where they lead back to the very same path;
/// every other path stands as it is, but for the files beside a project's own (FilePlace). The folders are those that
/// the process translates paths by when this is made.
class DocumentPaths final : public Object<IZXEContentPaths> {
public:
    HRESULT ToDocument(BSTR bstrPath, BSTR* pbstrText) override;
    HRESULT FromDocument(BSTR bstrText, BSTR* pbstrPath) override;

private:
    const std::shared_ptr<const ContentPaths> m_paths = SharedContentPaths();
};

} // namespace kv
