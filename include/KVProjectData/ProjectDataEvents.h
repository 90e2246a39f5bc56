#pragma once
// The events of a project.
//
// A sink implements this interface as an IDispatch and connects to the project's connection point. Events arrive
// one at a time, in the order of the changes, on the project's own worker thread.

#include "platform/automation/Members.h"

/// The DISPIDs of the events.
enum ProjectEvent : DISPID {
    EVENT_TVStandardChanged = 0x7d0,
    EVENT_ProjectDirectoryChanged = 0x7d1,
    EVENT_VolumePropChanged = 0x7d2,
    EVENT_TitleAdded = 0x7d3,
    EVENT_TitleRemoved = 0x7d4,
    EVENT_TitleMoved = 0x7d5,
    EVENT_TitlePropChanged = 0x7d6,
    EVENT_MenuAdded = 0x7d7,
    EVENT_MenuRemoved = 0x7d8,
    EVENT_MenuMoved = 0x7d9,
    EVENT_MenuInserted = 0x7da,
    EVENT_MenuPropChanged = 0x7db,
    EVENT_DataFileAdded = 0x7dd,
    EVENT_DataFileRemoved = 0x7de,
    EVENT_DataFileMoved = 0x7df,
    EVENT_DataFilePropChanged = 0x7e0,
    EVENT_TitleEncodingParamChanged = 0x7e1,
    EVENT_MenuEncodingParamChanged = 0x7e2,
    EVENT_MenuElementAdded = 0x7e3,
    EVENT_MenuElementRemoved = 0x7e4,
    EVENT_MenuElementInserted = 0x7e5,
    EVENT_MenuElementMoved = 0x7e6,
    EVENT_MenuElementChanged = 0x7e7,
    EVENT_ButtonChanged = 0x7e8,
    EVENT_OverlayChanged = 0x7e9,
    EVENT_TextChanged = 0x7ea,
    EVENT_EmptyQueue = 0x7ec,
    EVENT_CommandListChanged = 0x7eb,
    EVENT_MajorProjectChange = 0x7ed,
    EVENT_TitleProductionEvent = 0x7ee,
    EVENT_MenuProductionEvent = 0x7ef,
    EVENT_MessageBroadcast = 0x7f1,
    EVENT_ProjectChangeList = 0x7f2,
};

/// `pos`, `fromPos` and `toPos` arrive as the caller of the changing member passed them; `propID` is the DISPID of
/// the changed property, 11 for the project's dirty flag. ProjectChangeList gives the IDs that events named since the
/// last one, and those of the objects that undo and redo changed, ascending and each once, in calls of at most 50; the
/// array is lent for the call.
struct _IKVProjectDataEvents : IDispatch {
    static constexpr GUID IID = "cbf27734-ac10-4525-8b66-402800e03d2c"_guid;
    using Base = IDispatch;
};

template <>
struct kv::InterfaceTable<_IKVProjectDataEvents> {
    static constexpr InterfaceKind kind = InterfaceKind::Dispatch;
    static constexpr auto members = Members(
        Event<LONG>("TVStandardChanged", EVENT_TVStandardChanged, "value"),
        Event<BSTR>("ProjectDirectoryChanged", EVENT_ProjectDirectoryChanged, "value"),
        Event<LONG>("VolumePropChanged", EVENT_VolumePropChanged, "propID"),
        Event<LONG, LONG>("TitleAdded", EVENT_TitleAdded, "ID", "pos"),
        Event<LONG>("TitleRemoved", EVENT_TitleRemoved, "ID"),
        Event<LONG, LONG, LONG>("TitleMoved", EVENT_TitleMoved, "ID", "fromPos", "toPos"),
        Event<LONG, LONG>("TitlePropChanged", EVENT_TitlePropChanged, "ID", "propID"),
        Event<LONG, LONG>("MenuAdded", EVENT_MenuAdded, "ID", "pos"),
        Event<LONG>("MenuRemoved", EVENT_MenuRemoved, "ID"),
        Event<LONG, LONG, LONG>("MenuMoved", EVENT_MenuMoved, "ID", "fromPos", "toPos"),
        Event<LONG, LONG>("MenuInserted", EVENT_MenuInserted, "ID", "pos"),
        Event<LONG, LONG>("MenuPropChanged", EVENT_MenuPropChanged, "ID", "propID"),
        Event<LONG, LONG>("DataFileAdded", EVENT_DataFileAdded, "ID", "pos"),
        Event<LONG>("DataFileRemoved", EVENT_DataFileRemoved, "ID"),
        Event<LONG, LONG, LONG>("DataFileMoved", EVENT_DataFileMoved, "ID", "fromPos", "toPos"),
        Event<LONG, LONG>("DataFilePropChanged", EVENT_DataFilePropChanged, "ID", "propID"),
        Event<LONG, LONG>("TitleEncodingParamChanged", EVENT_TitleEncodingParamChanged, "ID", "propID"),
        Event<LONG, LONG>("MenuEncodingParamChanged", EVENT_MenuEncodingParamChanged, "ID", "propID"),
        Event<LONG>("MenuElementAdded", EVENT_MenuElementAdded, "ID"),
        Event<LONG>("MenuElementRemoved", EVENT_MenuElementRemoved, "ID"),
        Event<LONG, LONG>("MenuElementInserted", EVENT_MenuElementInserted, "ID", "pos"),
        Event<LONG, LONG, LONG>("MenuElementMoved", EVENT_MenuElementMoved, "ID", "fromPos", "toPos"),
        Event<LONG, LONG>("MenuElementChanged", EVENT_MenuElementChanged, "ID", "propID"),
        Event<LONG, LONG>("ButtonChanged", EVENT_ButtonChanged, "ID", "propID"),
        Event<LONG, LONG>("OverlayChanged", EVENT_OverlayChanged, "ID", "propID"),
        Event<LONG, LONG>("TextChanged", EVENT_TextChanged, "ID", "propID"), Event<>("EmptyQueue", EVENT_EmptyQueue),
        Event<LONG>("CommandListChanged", EVENT_CommandListChanged, "ID"),
        Event<>("MajorProjectChange", EVENT_MajorProjectChange),
        Event<LONG, LONG, LONG>("TitleProductionEvent", EVENT_TitleProductionEvent, "ID", "event", "param"),
        Event<LONG, LONG, LONG>("MenuProductionEvent", EVENT_MenuProductionEvent, "ID", "event", "param"),
        Event<LONG, LONG, LONG>("MessageBroadcast", EVENT_MessageBroadcast, "code", "param1", "param2"),
        Event<LONG, const LONG*>("ProjectChangeList", EVENT_ProjectChangeList, "count", "pIDList"));
};
