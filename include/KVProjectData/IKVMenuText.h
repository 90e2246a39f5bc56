#pragma once
// A text on a menu or in a button.
//
// What IKVMenuElement says of getters, setters and events holds here, too. Fonts and styles are those of the whole
// text.

#include "KVProjectData/IKVMenuElement.h"
#include "platform/xml/Dom.h"

struct IKVMenuText : IKVMenuElement {
    static constexpr GUID IID = "7d3c7dbb-8f07-4bca-8b5b-b9a9c0281114"_guid;
    using Base = IKVMenuElement;

    /// The words. E_POINTER for null.
    virtual HRESULT get_String(BSTR* pVal) = 0;
    virtual HRESULT put_String(BSTR newVal) = 0;

    /// TextJustifyFlags. Reads 0 where paragraphs differ.
    virtual HRESULT get_Justify(ULONG* pVal) = 0;
    virtual HRESULT put_Justify(ULONG newVal) = 0;
    virtual HRESULT get_Highlight(TextHighlight* pVal) = 0;
    virtual HRESULT put_Highlight(TextHighlight newVal) = 0;
    virtual HRESULT get_height(LONG* pVal) = 0;
    virtual HRESULT put_height(LONG newVal) = 0;

    /// -1 where it differs within the text.
    virtual HRESULT get_SelectedStyleId(LONG* pVal) = 0;
    virtual HRESULT put_SelectedStyleId(LONG newVal) = 0;

    /// The name of a face. E_POINTER for null.
    virtual HRESULT get_Font(BSTR* pVal) = 0;
    virtual HRESULT put_Font(BSTR newVal) = 0;

    /// TextStyles. Reads bold, italic and underlined alone. Writing takes three bits besides: 16 ends bold, 32 italic,
    /// 128 underlined; what is not mentioned stays.
    virtual HRESULT get_Style(ULONG* pVal) = 0;
    virtual HRESULT put_Style(ULONG newVal) = 0;

    /// No event. Any value that is no handle stands for the centre once there is an effect.
    virtual HRESULT get_Handle(TextHandles* pVal) = 0;
    virtual HRESULT put_Handle(TextHandles newVal) = 0;

    /// Red in the lowest byte, then green, blue and transparency. There is one colour, whatever the type.
    virtual HRESULT GetColor(TextColor type, ULONG* pdwRGBT) = 0;

    /// Told with the propID 907.
    virtual HRESULT SetColor(TextColor type, ULONG dwRGBT) = 0;

    /// A copy of the parameter document of the text.
    virtual HRESULT GetEffectXML(IXMLDOMNode** ppXMLData) = 0;

    /// Replaces the document by a copy. E_POINTER for null.
    virtual HRESULT SetEffectXML(IXMLDOMNode* pXMLData) = 0;

    /// The height as a document writes it.
    virtual HRESULT get_HeightString(BSTR* pVal) = 0;
    virtual HRESULT put_HeightString(BSTR newVal) = 0;

    /// Type_UserText at first. Neither looks at the lock, nor is it recorded or told.
    virtual HRESULT get_TextType(TextType* pVal) = 0;
    virtual HRESULT put_TextType(TextType newVal) = 0;

    /// Neither recorded nor told. Documents tell of it for a text without an effect only.
    virtual HRESULT SetTextBoxWidth(float width) = 0;
    virtual HRESULT GetTextBoxWidth(float* pwidth) = 0;
    virtual HRESULT get_IsEditable(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsEditable(VARIANT_BOOL newVal) = 0;

    /// -1 at first. ButtonChanged with the propID 715.
    virtual HRESULT get_CommandIndex(LONG* pVal) = 0;
    virtual HRESULT put_CommandIndex(LONG newVal) = 0;
};

template <>
struct kv::InterfaceTable<IKVMenuText> {
    static constexpr auto members =
        Members(GetPut<&IKVMenuText::get_String, &IKVMenuText::put_String>("String", 0x384),
                GetPut<&IKVMenuText::get_Justify, &IKVMenuText::put_Justify>("Justify", 0x385),
                GetPut<&IKVMenuText::get_Highlight, &IKVMenuText::put_Highlight>("Highlight", 0x321),
                GetPut<&IKVMenuText::get_height, &IKVMenuText::put_height>("height", 0x386),
                GetPut<&IKVMenuText::get_SelectedStyleId, &IKVMenuText::put_SelectedStyleId>("SelectedStyleId", 0x393),
                GetPut<&IKVMenuText::get_Font, &IKVMenuText::put_Font>("Font", 0x387),
                GetPut<&IKVMenuText::get_Style, &IKVMenuText::put_Style>("Style", 0x388),
                GetPut<&IKVMenuText::get_Handle, &IKVMenuText::put_Handle>("Handle", 0x389),
                Method<&IKVMenuText::GetColor>("GetColor", 0x38a, "type", "pdwRGBT"),
                Method<&IKVMenuText::SetColor>("SetColor", 0x38b, "type", "dwRGBT"),
                Method<&IKVMenuText::GetEffectXML>("GetEffectXML", 0x38c, "ppXMLData"),
                Method<&IKVMenuText::SetEffectXML>("SetEffectXML", 0x38d, "pXMLData"),
                GetPut<&IKVMenuText::get_HeightString, &IKVMenuText::put_HeightString>("HeightString", 0x38e),
                GetPut<&IKVMenuText::get_TextType, &IKVMenuText::put_TextType>("TextType", 0x38f),
                Method<&IKVMenuText::SetTextBoxWidth>("SetTextBoxWidth", 0x390, "width"),
                Method<&IKVMenuText::GetTextBoxWidth>("GetTextBoxWidth", 0x391, "pwidth"),
                GetPut<&IKVMenuText::get_IsEditable, &IKVMenuText::put_IsEditable>("IsEditable", 0x392),
                GetPut<&IKVMenuText::get_CommandIndex, &IKVMenuText::put_CommandIndex>("CommandIndex", 0x2cb));
};
