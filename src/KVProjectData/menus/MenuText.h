#pragma once
// A text on a menu or in a button.

#include "KVProjectData/IKVMenuText.h"
#include "KVProjectData/menus/MenuElementNode.h"
#include "KVProjectData/menus/MenuTextImpl.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

namespace kv {

class CKVMenuText final : public MenuElementNode<typeText, CMenuTextImpl, Object<Dual<IKVMenuText>>> {
public:
    HRESULT get_String(BSTR* pVal) override;
    HRESULT put_String(BSTR newVal) override;
    HRESULT get_Justify(ULONG* pVal) override;
    HRESULT put_Justify(ULONG newVal) override;
    HRESULT get_Highlight(TextHighlight* pVal) override { return Tell(pVal, "pHLI", m_highlight); }
    HRESULT put_Highlight(TextHighlight newVal) override { return Put(m_highlight, newVal, Undo, Fires(801)); }
    HRESULT get_height(LONG* pVal) override;
    HRESULT put_height(LONG newVal) override;
    HRESULT get_SelectedStyleId(LONG* pVal) override;
    HRESULT put_SelectedStyleId(LONG newVal) override;
    HRESULT get_Font(BSTR* pVal) override;
    HRESULT put_Font(BSTR newVal) override;
    HRESULT get_Style(ULONG* pVal) override;
    HRESULT put_Style(ULONG newVal) override;
    HRESULT get_Handle(TextHandles* pVal) override;
    HRESULT put_Handle(TextHandles newVal) override;
    HRESULT GetColor(TextColor type, ULONG* pdwRGBT) override;
    HRESULT SetColor(TextColor type, ULONG dwRGBT) override;
    HRESULT GetEffectXML(IXMLDOMNode** ppXMLData) override;
    HRESULT SetEffectXML(IXMLDOMNode* pXMLData) override;
    HRESULT get_HeightString(BSTR* pVal) override;
    HRESULT put_HeightString(BSTR newVal) override;
    KV_GETTER(TextType, TextType, m_textType)
    HRESULT put_TextType(TextType newVal) override;
    HRESULT SetTextBoxWidth(float width) override;
    HRESULT GetTextBoxWidth(float* pwidth) override { return Tell(pwidth, "pwidth", m_boxWidth); }
    HRESULT get_IsEditable(VARIANT_BOOL* pVal) override;
    HRESULT put_IsEditable(VARIANT_BOOL newVal) override;
    HRESULT get_CommandIndex(LONG* pVal) override { return Tell(pVal, "plCommandIndex", m_commandIndex); }
    HRESULT put_CommandIndex(LONG newVal) override;

    HRESULT Copy(IKVMenuElement** pp) override;

    bool CountsAsHighlight() const override { return m_highlight != TextHLI_None; }

    // The document stands in an element of its own.

    void Attributes(AttributeArchive& archive) override;
    HRESULT LoadElement(const LoadedElement& element) override;
    bool OwnsContent(const XmlView& child) const override;
    XmlElement OwnContent() const override;
    XmlElement KeptXml() override { return Document(); }
    void KeepXml(const XmlElement& xml) override;

private:
    /// The getter of what the rich text tells.
    template <class T>
    HRESULT TellText(T* out, std::string_view name, HRESULT (CZXPTextPlugInHelper::*getter)(T*) const);
    /// A change of the rich text, which is told.
    HRESULT PutText(DISPID propId, const Use& change);
    HRESULT PutText(DISPID propId, BSTR value, std::string_view name, HRESULT (CZXPTextPlugInHelper::*setter)(BSTR));
    /// The type of a text of a document that tells none.
    TextType TypeByPlace() const;

    TextHighlight m_highlight = TextHLI_None;
    TextType m_textType = Type_UserText;
    LONG m_commandIndex = -1;
};

} // namespace kv
