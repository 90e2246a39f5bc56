#include "KVProjectData/menus/MenuText.h"

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/tree/LoadedElement.h"

#include <algorithm>
#include <span>

namespace kv {
namespace {

/// What a bit of the interface stands for in the rich text.
struct Bit {
    ULONG ours;
    ULONG theirs;
};
constexpr Bit kJustify[]{
    {TextJustify_Left, 1}, {TextJustify_Right, 4}, {TextJustify_Center, 2}, {TextJustify_Justify, 8}};

/// For each style the bits that turn it on and off; on goes before.
constexpr Bit kItalic[]{{TextStyle_Italic, kItalicOn}, {32, kItalicOff}};
constexpr Bit kUnderline[]{{TextStyle_UnderLine, kUnderlineOn}, {128, kUnderlineOff}};
constexpr Bit kBold[]{{TextStyle_Bold, kBoldOn}, {16, kBoldOff}};

ULONG FirstOf(std::span<const Bit> bits, ULONG value, ULONG Bit::*from, ULONG Bit::*to)
{
    const auto found = std::ranges::find_if(bits, [=](const Bit& bit) { return (value & bit.*from) != 0; });
    return found == bits.end() ? 0 : (*found).*to;
}

} // namespace

// Documents

void CKVMenuText::Attributes(AttributeArchive& archive)
{
    archive.ID(*this);
    archive("commandIndex", m_commandIndex);
    archive("highlight", Enumeration(m_highlight, kTextHighlightNames));
    const bool told = archive("texttype", Enumeration(m_textType, kTextTypeNames));
    if (archive.Reads() && !told) m_textType = TypeByPlace();
    attributes(archive);
}

TextType CKVMenuText::TypeByPlace() const
{
    const CProjectNode* list = Parent();
    const CProjectNode* owner = list ? list->Parent() : nullptr;
    if (!owner) return m_textType;
    if (owner->Type() != typeMenu) return Type_None;
    return list->GetChild(0) == this ? Type_RootMenuText : Type_SubMenuText;
}

HRESULT CKVMenuText::LoadElement(const LoadedElement& element)
{
    const LineageLock lock(*this);
    const HRESULT result = CProjectNode::LoadElement(element);
    const XmlView effect = element.View().Child("effect");
    if (FAILED(result) || !effect) return result;
    return kCalls.Checked(Guarded([&] {
        StorePlace(effect, element.View());
        StoreDocument(XmlFragment(element.At(effect).Get()));
        return S_OK;
    }));
}

bool CKVMenuText::OwnsContent(const XmlView& child) const
{
    return child.Parent().Child("effect") == child;
}

XmlElement CKVMenuText::OwnContent() const
{
    XmlElement document = CopyOfDocument();
    if (!document || document.Name() == "effect") return document;
    XmlElement effect = XmlElement::New("effect");
    effect.Insert(document);
    return effect;
}

void CKVMenuText::KeepXml(const XmlElement& xml)
{
    // What an effect shows is its storyboard's to bring back.
    if (!HasEffect()) StoreDocument(xml);
}

// The rich text

template <class T>
HRESULT CKVMenuText::TellText(T* out, std::string_view name, HRESULT (CZXPTextPlugInHelper::*getter)(T*) const)
{
    return Ask([&] {
        if (!out) return kCalls.NullArgument(name);
        *out = {};
        const HRESULT result = askText([&](CZXPTextPlugInHelper& text) { return (text.*getter)(out); });
        return FAILED(result) ? result : S_OK;
    });
}

HRESULT CKVMenuText::PutText(DISPID propId, const Use& change)
{
    return Change([&] {
        const HRESULT result = kCalls.Checked(changeText(change));
        if (FAILED(result)) return result;
        onPropertyChanged(propId);
        return S_OK;
    });
}

HRESULT CKVMenuText::PutText(DISPID propId, BSTR value, std::string_view name,
                             HRESULT (CZXPTextPlugInHelper::*setter)(BSTR))
{
    if (!value) return Change([&] { return kCalls.NullArgument(name); });
    return PutText(propId, [&](CZXPTextPlugInHelper& text) { return (text.*setter)(value); });
}

HRESULT CKVMenuText::get_String(BSTR* pVal)
{
    return TellText(pVal, "pbstrString", &CZXPTextPlugInHelper::get_String);
}

HRESULT CKVMenuText::put_String(BSTR newVal)
{
    return PutText(900, newVal, "bstrString", &CZXPTextPlugInHelper::put_String);
}

HRESULT CKVMenuText::get_Justify(ULONG* pVal)
{
    const HRESULT result = TellText(pVal, "pdwFlags", &CZXPTextPlugInHelper::get_Justify);
    if (SUCCEEDED(result)) *pVal = FirstOf(kJustify, *pVal, &Bit::theirs, &Bit::ours);
    return result;
}

HRESULT CKVMenuText::put_Justify(ULONG newVal)
{
    const ULONG alignment = FirstOf(kJustify, newVal, &Bit::ours, &Bit::theirs);
    return PutText(901, [=](CZXPTextPlugInHelper& text) { return text.put_Justify(alignment); });
}

HRESULT CKVMenuText::get_height(LONG* pVal)
{
    return TellText(pVal, "plFontHeight", &CZXPTextPlugInHelper::get_Height);
}

HRESULT CKVMenuText::put_height(LONG newVal)
{
    return PutText(902, [=](CZXPTextPlugInHelper& text) { return text.put_Height(newVal); });
}

HRESULT CKVMenuText::get_HeightString(BSTR* pVal)
{
    return TellText(pVal, "pbstrHeight", &CZXPTextPlugInHelper::get_HeightString);
}

HRESULT CKVMenuText::put_HeightString(BSTR newVal)
{
    return PutText(910, newVal, "pbstrHeight", &CZXPTextPlugInHelper::put_HeightString);
}

HRESULT CKVMenuText::get_SelectedStyleId(LONG* pVal)
{
    return TellText(pVal, "pId", &CZXPTextPlugInHelper::get_SelectedStyleId);
}

HRESULT CKVMenuText::put_SelectedStyleId(LONG newVal)
{
    return PutText(915, [=](CZXPTextPlugInHelper& text) { return text.put_SelectedStyleId(newVal); });
}

HRESULT CKVMenuText::get_Font(BSTR* pVal)
{
    return TellText(pVal, "pbstrFont", &CZXPTextPlugInHelper::get_Face);
}

HRESULT CKVMenuText::put_Font(BSTR newVal)
{
    return PutText(903, newVal, "pbstrFont", &CZXPTextPlugInHelper::put_Face);
}

HRESULT CKVMenuText::get_Style(ULONG* pVal)
{
    const HRESULT result = TellText(pVal, "pdwFlags", &CZXPTextPlugInHelper::get_Style);
    if (FAILED(result)) return result;
    const ULONG style = *pVal;
    *pVal = 0;
    if (style & kItalicOn) *pVal |= TextStyle_Italic;
    if (style & kBoldOn) *pVal |= TextStyle_Bold;
    if (style & kUnderlineOn) *pVal |= TextStyle_UnderLine;
    return result;
}

HRESULT CKVMenuText::put_Style(ULONG newVal)
{
    return PutText(904, [=](CZXPTextPlugInHelper& text) {
        // One by one: a style that the text has already keeps the others from being set.
        for (const std::span<const Bit> style : {std::span(kItalic), std::span(kUnderline), std::span(kBold)}) {
            const ULONG bit = FirstOf(style, newVal, &Bit::ours, &Bit::theirs);
            const HRESULT result = bit ? text.put_Style(bit) : S_OK;
            if (FAILED(result)) return result;
        }
        return S_OK;
    });
}

HRESULT CKVMenuText::GetColor(TextColor, ULONG* pdwRGBT)
{
    return TellText(pdwRGBT, "pdwRGBT", &CZXPTextPlugInHelper::get_Color);
}

HRESULT CKVMenuText::SetColor(TextColor, ULONG dwRGBT)
{
    return PutText(907, [=](CZXPTextPlugInHelper& text) { return text.put_Color(dwRGBT); });
}

HRESULT CKVMenuText::get_IsEditable(VARIANT_BOOL* pVal)
{
    return Ask([&] {
        if (!pVal) return kCalls.NullArgument("bEditable");
        return askText([&](CZXPTextPlugInHelper& text) { return text.Transform().get_IsEditable(pVal); });
    });
}

HRESULT CKVMenuText::put_IsEditable(VARIANT_BOOL newVal)
{
    return Change([&] {
        return kCalls.Checked(changeText([=](CZXPTextPlugInHelper& text) {
            XmlElement saved;
            text.Transform().put_IsEditable(newVal == VARIANT_FALSE ? VARIANT_FALSE : VARIANT_TRUE);
            return text.Save(saved);
        }));
    });
}

HRESULT CKVMenuText::get_Handle(TextHandles* pVal)
{
    return Ask([&] { return pVal ? getHandle(*pVal) : kCalls.NullArgument("pHandle"); });
}

HRESULT CKVMenuText::put_Handle(TextHandles newVal)
{
    return Change([&] { return kCalls.Checked(setHandle(newVal)); });
}

HRESULT CKVMenuText::GetEffectXML(IXMLDOMNode** ppXMLData)
{
    return Ask([&] {
        if (!ppXMLData) return kCalls.NullArgument("ppXMLData");
        ComPtr<IXMLDOMNode> document;
        const HRESULT result = getEffectXML(document);
        *ppXMLData = document.Detach();
        return result;
    });
}

HRESULT CKVMenuText::SetEffectXML(IXMLDOMNode* pXMLData)
{
    return Change([&] { return pXMLData ? kCalls.Checked(setEffectXML(pXMLData)) : kCalls.NullArgument("pXMLData"); });
}

// What the text itself keeps

HRESULT CKVMenuText::put_TextType(TextType newVal)
{
    const SectionLock lock(Section());
    m_textType = newVal;
    return S_OK;
}

HRESULT CKVMenuText::SetTextBoxWidth(float width)
{
    return Edit([&](EditScope&) {
        if (!AreFinite(width)) return E_INVALIDARG;
        m_boxWidth = width;
        return S_OK;
    });
}

HRESULT CKVMenuText::put_CommandIndex(LONG newVal)
{
    return Edit([&](EditScope& edit) {
        edit.Record();
        m_commandIndex = newVal;
        FireEvent(EVENT_ButtonChanged, ID(), 715, 0);
        return S_OK;
    });
}

// Copies

HRESULT CKVMenuText::Copy(IKVMenuElement** pp)
{
    return Ask([&] {
        if (!pp) return kCalls.NullArgument("ppNewElem");
        *pp = nullptr;
        const auto copy = Make<CKVMenuText>();
        CopyFieldsTo(*copy);
        copy->StoreDocument(Document());
        copy->AssignID();
        return ComPtr<IKVMenuElement>(copy.Get()).CopyTo(pp);
    });
}

} // namespace kv
