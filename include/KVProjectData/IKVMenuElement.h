#pragma once
// What the elements of a menu have in common: buttons, overlays and texts.
//
// Places and sizes are normalised, the y axis upwards; an element's own square goes from -1 to 1. Those of an element
// that stands in a button and has an effect are told relative to the button. Getters return E_POINTER for a null
// out-pointer; strings handed out are the caller's to free. Setters return KV_E_LOCKED for a locked element. Changes
// are recorded for undo and told by ButtonChanged, OverlayChanged or TextChanged with the element's ID and the DISPID
// of the property; for the members that set several values with 504 (SetPosition) and 512 (SetWidthHeight). Failures of
// the engine are returned.

#include "KVProjectData/Enumerations.h"
#include "KVProjectData/Geometry.h"
#include "platform/automation/Members.h"

struct IKVMenu;
struct IKVMenuElementList;

struct IKVMenuElement : IDispatch {
    static constexpr GUID IID = "d533e6c8-5e13-4570-94f5-9ed498d63e81"_guid;
    using Base = IDispatch;

    /// Unique in the process; kept in the document.
    virtual HRESULT get_ID(LONG* pVal) = 0;

    /// The type of the element's kind: ButtonTypes, OverlayTypes or TextTypes. 1 for overlays and texts that a list
    /// made, else 0 at first.
    virtual HRESULT get_Tag(ULONG* pVal) = 0;
    virtual HRESULT put_Tag(ULONG newVal) = 0;

    /// MenuElementFlags.
    virtual HRESULT get_Flags(ULONG* pVal) = 0;
    virtual HRESULT put_Flags(ULONG newVal) = 0;

    /// True for exactly VARIANT_TRUE.
    virtual HRESULT get_IsDirty(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsDirty(VARIANT_BOOL newVal) = 0;

    /// Degrees.
    virtual HRESULT get_Rotation(float* pVal) = 0;
    virtual HRESULT put_Rotation(float newVal) = 0;

    /// E_INVALIDARG below 0. Documents tell of it for an element without an effect only.
    virtual HRESULT get_ZOrder(LONG* pVal) = 0;
    virtual HRESULT put_ZOrder(LONG newVal) = 0;
    virtual HRESULT GetPosition(float* pX, float* pY) = 0;

    /// That of a button sets MenuFlag_UserButtonsDirty in its menu's Flags, and so do SetWidthHeight and
    /// IKVMenuButton::Move.
    virtual HRESULT SetPosition(float x, float y) = 0;

    /// Four corners. KV_E_BUTTON_HAS_NO_BOX for a button.
    virtual HRESULT GetBoundingBox(FloatPoint* ptsList) = 0;

    /// The rectangle around the bounding box, or around the elements of a button; it is emptied first.
    virtual HRESULT GetExtent(FloatRect* pRect) = 0;
    virtual HRESULT GetWidthHeight(float* width, float* height) = 0;

    /// Of an element with an effect, or of the picture of a button. E_INVALIDARG below 0.
    virtual HRESULT SetWidthHeight(float x, float y) = 0;

    /// Null and S_FALSE for an element that is in no list.
    virtual HRESULT GetParentList(IKVMenuElementList** pp) = 0;

    /// E_POINTER and null for an element that is in no menu.
    virtual HRESULT GetMenu(IKVMenu** pp) = 0;

    /// A new element of the same kind with an ID of its own, in no list.
    virtual HRESULT Copy(IKVMenuElement** pp) = 0;

    /// Neither looks at the lock, nor is it recorded or told.
    virtual HRESULT set_ID(LONG lId) = 0;

    /// Of the effect in the production. E_UNEXPECTED for a button and for an element without an effect.
    virtual HRESULT get_EffectID(LONG* pVal) = 0;

    /// The element of a template that this one was made from, 0 for none.
    virtual HRESULT get_TemplateID(LONG* pVal) = 0;
    virtual HRESULT put_TemplateID(LONG newVal) = 0;

    /// Seconds of the production from which and up to which the element is shown; of a button, those of its elements.
    virtual HRESULT SetTimeOffsets(double startSecs, double endSecs) = 0;
};

template <>
struct kv::InterfaceTable<IKVMenuElement> {
    static constexpr auto members = Members(
        Get<&IKVMenuElement::get_ID>("ID", 0x1), GetPut<&IKVMenuElement::get_Tag, &IKVMenuElement::put_Tag>("Tag", 0x2),
        GetPut<&IKVMenuElement::get_Flags, &IKVMenuElement::put_Flags>("Flags", 0x3),
        GetPut<&IKVMenuElement::get_IsDirty, &IKVMenuElement::put_IsDirty>("IsDirty", 0xb),
        GetPut<&IKVMenuElement::get_Rotation, &IKVMenuElement::put_Rotation>("Rotation", 0x1f4),
        GetPut<&IKVMenuElement::get_ZOrder, &IKVMenuElement::put_ZOrder>("ZOrder", 0x1f5),
        Method<&IKVMenuElement::GetPosition>("GetPosition", 0x1f7, "pX", "pY"),
        Method<&IKVMenuElement::SetPosition>("SetPosition", 0x1f8, "x", "y"),
        Method<&IKVMenuElement::GetBoundingBox>("GetBoundingBox", 0x1fa, Out(Several("ptsList", 4))),
        Method<&IKVMenuElement::GetExtent>("GetExtent", 0x1f9, Out("pRect")),
        Method<&IKVMenuElement::GetWidthHeight>("GetWidthHeight", 0x1ff, "width", "height"),
        Method<&IKVMenuElement::SetWidthHeight>("SetWidthHeight", 0x200, "x", "y"),
        Method<&IKVMenuElement::GetParentList>("GetParentList", 0x1fb, "pp"),
        Method<&IKVMenuElement::GetMenu>("GetMenu", 0x2a, "pp"), Method<&IKVMenuElement::Copy>("Copy", 0x1fc, "pp"),
        Method<&IKVMenuElement::set_ID>("set_ID", 0x1fe, "lId"), Get<&IKVMenuElement::get_EffectID>("EffectID", 0x1f6),
        GetPut<&IKVMenuElement::get_TemplateID, &IKVMenuElement::put_TemplateID>("TemplateID", 0xa),
        Method<&IKVMenuElement::SetTimeOffsets>("SetTimeOffsets", 0x1fd, "startSecs", "endSecs"));
};

// The member table hands out menus and lists, so their interfaces must be known, too.
#include "KVProjectData/IKVMenu.h"
#include "KVProjectData/IKVMenuElementList.h"
