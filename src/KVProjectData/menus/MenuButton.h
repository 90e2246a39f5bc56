#pragma once
// A button of a menu, with its commands and the elements that are drawn as the button.

#include "KVProjectData/IKVMenuButton.h"
#include "KVProjectData/menus/MenuButtonImpl.h"
#include "KVProjectData/menus/MenuElementList.h"
#include "KVProjectData/menus/MenuElementNode.h"
#include "KVProjectData/menus/RecordNode.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/com/Aggregate.h"

namespace kv {

class CKVMenuButton final
    : public MenuElementNode<typeButton, CMenuButtonImpl,
                             Aggregate<Parts<CKVCommandList, CKVMenuElementList>, Dual<IKVMenuButton>>> {
public:
    using CProjectNode::SaveXML;

    explicit CKVMenuButton(IUnknown* outer = nullptr);

    HRESULT get_ActiveRegion(FloatRect* pActiveRgn, VARIANT_BOOL* pbIsValid) override;
    HRESULT put_ActiveRegion(const FloatRect* pActiveRgn, VARIANT_BOOL bValid) override;
    HRESULT get_ButtonLinks(ButtonLinks** ppLinks) override;
    HRESULT put_ButtonLinks(const ButtonLinks* pLinks) override;
    HRESULT get_ButtonScheme(LONG* pVal) override { return Tell(pVal, "plSchemeIndex", m_scheme); }
    HRESULT put_ButtonScheme(LONG newVal) override;
    KV_PROPERTY(BSTR, Label, m_label, Undo, Fires(4))
    HRESULT get_UserData(LONG* pVal) override { return Tell(pVal, "plData", m_userData); }
    HRESULT put_UserData(LONG newVal) override { return Put(m_userData, newVal, Undo); }
    HRESULT loadXML(IXMLDOMNode* pRootNode) override;
    HRESULT SaveXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bForceNative) override;
    HRESULT GetAnchorElement(IKVMenuElement** ppElem) override;
    HRESULT GetButtonBindText(IKVMenuElement** ppText) override;
    HRESULT GetButtonOverlay(LONG index, IKVMenuOverlay** ppOverlay) override;
    HRESULT ApplyTo(IKVMenuButton* pBtn) override;
    HRESULT GetHighlightRegion(FloatRect* pHLIRgn) override;
    KV_PROPERTY(BSTR, ButtonStyle, m_buttonStyle, Undo, Fires(704))
    KV_PROPERTY(BSTR, ButtonTextCache, m_buttonTextCache, Undo)
    KV_PROPERTY(BSTR, ButtonSource, m_buttonSource, Undo)
    HRESULT get_ButtonOverlayCount(LONG* pVal) override;
    KV_PROPERTY(BSTR, ButtonSourceHighlight, m_buttonSourceHighlight, Undo)
    HRESULT UseCustomOverlayOnButton(VARIANT_BOOL* pb) override;
    HRESULT Move(float dx, float dy) override;
    HRESULT ResetID() override;
    HRESULT get_CommandIndex(LONG* pVal) override { return Tell(pVal, "plCommandIndex", m_commandIndex); }
    HRESULT put_CommandIndex(LONG newVal) override { return Put(m_commandIndex, newVal, Undo, Fires(715)); }

    HRESULT Copy(IKVMenuElement** pp) override;

    void Attributes(AttributeArchive& archive) override;

protected:
    void FinalRelease() override;

private:
    CKVCommandList& Commands() { return Part<CKVCommandList>(); }
    CKVMenuElementList& Elements() { return Part<CKVMenuElementList>(); }

    /// All that documents tell of the button itself, but its ID.
    void CopyFieldsTo(CKVMenuButton& copy);
    /// A button that looks like this one, with copies of its elements; without an ID, and without commands.
    ComPtr<CKVMenuButton> CopyLook();
    void CopyCommandsTo(CKVMenuButton& copy);
    /// Takes over the properties and the elements of a copy, which is of no use afterwards.
    HRESULT TakeLook(CKVMenuButton& look);
    /// Brings the effects of elements that have just been loaded or copied.
    HRESULT BindElements();

    LONG m_scheme = 0;
    Bstr m_label;
    Bstr m_buttonStyle;
    Bstr m_buttonTextCache;
    Bstr m_buttonSource;
    Bstr m_buttonSourceHighlight;
    LONG m_commandIndex = -1;
    LONG m_userData = 0;
    CButtonLinksNode m_links;
    CActiveRgnNode m_region;
};

} // namespace kv
