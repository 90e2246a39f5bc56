#include "engine/import/Q71Importer.h"

#include "KVProjectData/IKVProjectData.h"

namespace kv {

HRESULT CQ71Importer::ImportXML(IUnknown* pDocElement, IUnknown* pKVProject)
{
    return Guarded([&] {
        const auto element = Query<IXMLDOMElement>(pDocElement);
        const auto project = Query<IKVProjectData>(pKVProject);
        return element && project ? project->loadXML(element.Get()) : E_POINTER;
    });
}

} // namespace kv
