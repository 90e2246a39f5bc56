#pragma once
// What a text shows: rich text in the parameter document of its effect.

#include "KVProjectData/Enumerations.h"
#include "KVProjectData/effects/ZXPTextPlugInHelper.h"
#include "KVProjectData/menus/MenuElementImpl.h"
#include "KVProjectData/titles/XmlFragment.h"

#include <atomic>
#include <functional>

namespace kv {

/// The effect, while there is one, holds the document and the handle; a text without effect stores them. Documents are
/// never changed: an edit puts another one in the place of the one before.
class CMenuTextImpl : public CMenuElementImpl {
public:
    HRESULT AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter) override;
    HRESULT syncEffect(bool capture) override;
    HRESULT createEffectParams(ComPtr<IXMLDOMNode>& document) override;
    LONG getEffectType() const override { return ZXE_EFFECT_TEXT; }
    void attributes(AttributeArchive& archive) override;

    using Use = std::function<HRESULT(CZXPTextPlugInHelper& text)>;
    /// Asks the rich text. Failures are reported.
    HRESULT askText(const Use& ask);
    /// Changes a copy of the rich text, records the document as it is, and puts the copy in its place.
    HRESULT changeText(const Use& change);

    /// A copy of the document.
    HRESULT getEffectXML(ComPtr<IXMLDOMNode>& document);
    /// Takes a copy. E_INVALIDARG for what is no element, or has more levels than a project's document has room for.
    HRESULT setEffectXML(IXMLDOMNode* document);

    HRESULT getHandle(TextHandles& handle);
    /// Any value that is no handle stands for the centre once there is an effect. No event.
    HRESULT setHandle(TextHandles handle);

    /// What the text shows; empty for one without effect that shows what new ones do, and for an effect whose document
    /// cannot be had.
    XmlElement Document();
    XmlElement CopyOfDocument() const;
    /// Shows another one, which must not be changed from now on. No record.
    HRESULT ReplaceDocument(const XmlElement& document);

protected:
    using CMenuElementImpl::CMenuElementImpl;

    HRESULT getHandles(Corners& corners) override;
    void AddChannels(std::vector<CNXEffect::ChannelValue>& values) const override;

    /// Stores a document for a text without effect.
    void StoreDocument(const XmlElement& document);
    void StoreDocument(XmlFragment document);
    /// Stores what a document says of the text's place, angle and handle, unless attributes told of them.
    void StorePlace(const XmlView& document, const XmlView& attributes);

    float m_boxWidth = 0;
    float m_boxHeight = 0;

private:
    /// Of the effect.
    XmlElement LiveDocument() const;
    /// The document, or what new texts show. Throws Error.
    XmlElement ShownDocument();
    void RecordDocument();
    /// The point of the box that stands at the text's place.
    HRESULT GetAnchor(FloatPoint& anchor);

    /// 0 for that of the document.
    LONG m_handle = Handle_Center;
    XmlElement m_document;
    /// As it was loaded, until somebody asks for it: a tree takes 32 KiB at least.
    XmlFragment m_loaded;
    /// The number of the last step that keeps the document.
    std::atomic<ULONG> m_documentKeptIn{0};
};

} // namespace kv
