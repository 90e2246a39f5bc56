#include "KVProjectData/persistence/ProjectDocument.h"

#include "platform/automation/Variant.h"
#include "platform/com/Activation.h"

namespace kv {

HRESULT CreateProjectDocument(IXMLDOMDocument** document)
{
    return Guarded([&] {
        if (!document) return E_INVALIDARG;
        *document = nullptr;
        ComPtr<IXMLDOMDocument> made;
        const HRESULT created = CreateInstance(CLSID_DOMDocument, made);
        if (FAILED(created)) return created;

        ComPtr<IXMLDOMNode> instruction;
        ComPtr<IXMLDOMNode> root;
        ThrowIfFailed(made->createProcessingInstruction(
            Bstr(u"xml").Get(), Bstr(u"version=\"1.0\" encoding=\"UTF-16\"").Get(), instruction.Put()));
        ThrowIfFailed(made->appendChild(instruction.Get(), nullptr));
        ThrowIfFailed(made->createNode(Variant(LONG{NODE_ELEMENT}), Bstr(u"Root").Get(), nullptr, root.Put()));
        const auto element = Query<IXMLDOMElement>(root);
        ThrowIfFailed(element->setAttribute(Bstr(u"xmlns:dt").Get(), Variant(u"urn:schemas-microsoft-com:datatypes")));
        ThrowIfFailed(made->putref_documentElement(element.Get()));
        return made.CopyTo(document);
    });
}

HRESULT ProjectVersion(IXMLDOMDocument* document, LONG& version)
{
    return Guarded([&] {
        constexpr LONG kUnnamed = 700;
        version = 0;
        ComPtr<IXMLDOMNode> project;
        ThrowIfFailed(document->selectSingleNode(Bstr(u"/Root/Project").Get(), project.Put()));
        const auto element = Query<IXMLDOMElement>(project);
        if (!element) return S_OK;
        Variant value;
        ThrowIfFailed(element->getAttribute(Bstr(u"Version").Get(), value.Put()));
        version = value.vt == VT_BSTR ? value.As(VT_I4).lVal : kUnnamed;
        return S_OK;
    });
}

} // namespace kv
