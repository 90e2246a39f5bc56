#pragma once
// The library's own result codes: severity bit, facility 0x201.

#include "platform/com/BaseTypes.h"

/// A locking object without a target.
inline constexpr HRESULT KV_E_NO_LOCK_TARGET = MakeResult(0xC201003A);
/// No element at that position of an element list.
inline constexpr HRESULT KV_E_NO_SUCH_ELEMENT = MakeResult(0xC201003B);
/// The element could not be taken out of its list.
inline constexpr HRESULT KV_E_ELEMENT_NOT_REMOVED = MakeResult(0xC201003C);
/// No data file with that source to remove.
inline constexpr HRESULT KV_E_NO_SUCH_SOURCE = MakeResult(0xC201003D);
/// No data file matches the search.
inline constexpr HRESULT KV_E_DATA_FILE_NOT_FOUND = MakeResult(0xC201003E);
/// loadXML without a node.
inline constexpr HRESULT KV_E_NO_XML_NODE = MakeResult(0xC201003F);
/// The project has no undo manager.
inline constexpr HRESULT KV_E_NO_UNDO_MANAGER = MakeResult(0xC2010040);
/// A snapshot of an object that is not a project.
inline constexpr HRESULT KV_E_NO_PROJECT = MakeResult(0xC2010041);
/// No points to find a bounding rectangle of.
inline constexpr HRESULT KV_E_NO_POINTS_TO_BOUND = MakeResult(0xC2010042);
/// No points to rotate.
inline constexpr HRESULT KV_E_NO_POINTS_TO_ROTATE = MakeResult(0xC2010043);
/// An event from a node without a parent.
inline constexpr HRESULT KV_E_NO_PARENT = MakeResult(0xC2010047);
/// No object with that ID.
inline constexpr HRESULT KV_E_NO_SUCH_ID = MakeResult(0xC201004B);
/// No object at that position, or a bad position.
inline constexpr HRESULT KV_E_BAD_POSITION = MakeResult(0xC201004C);
/// An undo step is already open, of this project or another one of the process.
inline constexpr HRESULT KV_E_UNDO_STEP_OPEN = MakeResult(0xC201004D);
/// The object is locked.
inline constexpr HRESULT KV_E_LOCKED = MakeResult(0xC201004E);
/// The encoding parameters follow the project and are read-only.
inline constexpr HRESULT KV_E_FOLLOWS_PROJECT = MakeResult(0xC2010052);
/// The owner of these encoding parameters cannot follow the project.
inline constexpr HRESULT KV_E_CANNOT_FOLLOW_PROJECT = MakeResult(0xC2010053);
/// The source of a data file does not exist.
inline constexpr HRESULT KV_E_NO_SOURCE_FILE = MakeResult(0xC2010054);
/// The background of a menu is no file.
inline constexpr HRESULT KV_E_NO_BACKGROUND_FILE = MakeResult(0xC2010056);
/// The audio of a menu is no file.
inline constexpr HRESULT KV_E_NO_AUDIO_FILE = MakeResult(0xC2010057);
/// A colour of a subpicture that is not 0 to 15.
inline constexpr HRESULT KV_E_BAD_COLOUR_INDEX = MakeResult(0xC2010058);
/// A contrast of a subpicture that is not 0 to 15.
inline constexpr HRESULT KV_E_BAD_CONTRAST = MakeResult(0xC2010059);
/// The source of an overlay does not exist.
inline constexpr HRESULT KV_E_NO_OVERLAY_SOURCE = MakeResult(0xC2010060);
/// An in point below 0.
inline constexpr HRESULT KV_E_NEGATIVE_IN_POINT = MakeResult(0xC2010062);
/// An out point below 0.
inline constexpr HRESULT KV_E_NEGATIVE_OUT_POINT = MakeResult(0xC2010063);
/// The alpha mask of an overlay does not exist.
inline constexpr HRESULT KV_E_NO_ALPHA_MASK = MakeResult(0xC2010064);
/// The button has no anchor element, or stands in a native menu.
inline constexpr HRESULT KV_E_NO_ANCHOR = MakeResult(0xC2010067);
/// A button has no bounding box.
inline constexpr HRESULT KV_E_BUTTON_HAS_NO_BOX = MakeResult(0xC2010068);
/// The event window could not be created.
inline constexpr HRESULT KV_E_NO_EVENT_WINDOW = MakeResult(0xC20100AE);
/// The project file does not parse.
inline constexpr HRESULT KV_E_FILE_DOES_NOT_PARSE = MakeResult(0xC2010140);
/// The version of the project file is too old.
inline constexpr HRESULT KV_E_FILE_TOO_OLD = MakeResult(0xC2010141);
/// The archive folder cannot be created.
inline constexpr HRESULT KV_E_NO_ARCHIVE_FOLDER = MakeResult(0xC2010142);
/// The event queue could not be signalled; the event stays queued.
inline constexpr HRESULT KV_E_QUEUE_NOT_SIGNALLED = MakeResult(0xC2010145);
