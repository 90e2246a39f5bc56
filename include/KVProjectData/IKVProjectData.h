#pragma once
// The project: disc-wide settings and the ordered lists of titles, menus and data files.
//
// Getters return E_POINTER for a null out-pointer; strings handed out are the caller's to free. Members that change
// something return KV_E_LOCKED for a locked project; the undo members do not look at the lock, except that a
// snapshot of a locked project and the commands of a locked list stay as they are: UndoOperation is S_OK then, the
// cancel of a snapshot KV_E_LOCKED. Positions in lists count from 1: a member that takes one returns
// KV_E_BAD_POSITION where there is nothing at it. Objects that are handed out carry a reference; the out-pointers of
// members that add or remove may be null. A project also answers for IKVCommandList, IKVEncodingParams, IKVLocking
// and IConnectionPointContainer.
//
// Changes are recorded for undo, which makes the project dirty, and told by an event. Without a record are
// ThemeSource, FrameRate, IsOnDisc, ProjectSize, OnDiscSize, RemainingCaptures, DiscSize and MenuLess; without an
// event ThemeSource, FrameRate and MenuLess. Edits of the lists are recorded and told, and leave the dirty flag as
// it is, except that adding a title sets its encoding parameters, which makes the project dirty. Undo belongs to the
// process: its members, Clear and loadXML are called by one thread at a time, whichever projects they are of. Other
// threads may edit, save, create and release projects and their objects meanwhile.

#include "KVProjectData/Enumerations.h"
#include "KVProjectData/IKVDataFile.h"
#include "KVProjectData/IKVMenu.h"
#include "KVProjectData/IKVTitle.h"
#include "platform/automation/Members.h"
#include "platform/undo/OleUndo.h"
#include "platform/xml/Dom.h"

struct IKVProjectData : IDispatch {
    static constexpr GUID IID = "f3c95789-ace1-4954-ac5d-6baed2eac902"_guid;
    using Base = IDispatch;

    /// The version that the library writes into documents: 900.
    virtual HRESULT get_version(LONG* pVal) = 0;
    virtual HRESULT get_Label(BSTR* pVal) = 0;
    virtual HRESULT put_Label(BSTR newVal) = 0;
    virtual HRESULT get_DiscFormat(DiscFormat* pVal) = 0;
    virtual HRESULT put_DiscFormat(DiscFormat newVal) = 0;

    /// Not kept in the document.
    virtual HRESULT get_VolumeName(BSTR* pVal) = 0;
    virtual HRESULT put_VolumeName(BSTR newVal) = 0;
    virtual HRESULT get_ThemeSource(BSTR* pVal) = 0;
    virtual HRESULT put_ThemeSource(BSTR newVal) = 0;

    /// Set with FrameRate by the library, too: see AddTitle.
    virtual HRESULT get_TVStandard(TVStandard* pVal) = 0;
    virtual HRESULT put_TVStandard(TVStandard newVal) = 0;

    /// Frames per second. Reads 29.97 or 25, by the TV standard, until a rate of 0.1 or more is set. KV_E_LOCKED for
    /// a locked project on reading, too. Not kept in the document.
    virtual HRESULT get_FrameRate(double* pVal) = 0;
    virtual HRESULT put_FrameRate(double newVal) = 0;

    /// Not kept in the document, nor reset by Clear.
    virtual HRESULT get_ProjectDirectory(BSTR* pVal) = 0;
    virtual HRESULT put_ProjectDirectory(BSTR newVal) = 0;

    /// TargetType flags. Not kept in the document.
    virtual HRESULT get_TargetType(ULONG* pVal) = 0;
    virtual HRESULT put_TargetType(ULONG newVal) = 0;

    /// Not kept in the document, nor reset by Clear.
    virtual HRESULT get_ImagePath(BSTR* pVal) = 0;
    virtual HRESULT put_ImagePath(BSTR newVal) = 0;

    /// Not kept in the document, nor reset by Clear.
    virtual HRESULT get_TargetDrive(BSTR* pVal) = 0;
    virtual HRESULT put_TargetDrive(BSTR newVal) = 0;
    virtual HRESULT get_DisplayName(BSTR* pVal) = 0;
    virtual HRESULT put_DisplayName(BSTR newVal) = 0;

    /// True for exactly VARIANT_TRUE.
    virtual HRESULT get_IsOnDisc(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsOnDisc(VARIANT_BOOL newVal) = 0;
    virtual HRESULT get_TitleCount(LONG* pVal) = 0;
    virtual HRESULT get_MenuCount(LONG* pVal) = 0;
    virtual HRESULT get_DataFileCount(LONG* pVal) = 0;

    /// Any value but 0 is true.
    virtual HRESULT get_FitToDisc(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_FitToDisc(VARIANT_BOOL newVal) = 0;

    /// Any value but 0 is true. Reading gives S_FALSE, and nothing is written, while FitToDisc is false.
    virtual HRESULT get_DoCompression(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_DoCompression(VARIANT_BOOL newVal) = 0;

    /// ProjectOptions flags.
    virtual HRESULT get_Options(ULONG* pVal) = 0;
    virtual HRESULT put_Options(ULONG newVal) = 0;

    /// True after a recorded edit of a property or of commands, after EndUndoEx with `bCommit`, and when the production
    /// of a title says that it was modified. Undo and redo leave it as it is: after a save and an undo the project is
    /// not dirty, and a host that asks this alone before it closes the project loses the person's work. A host has to
    /// remember for itself whether anything was undone or redone since the save.
    virtual HRESULT get_IsDirty(VARIANT_BOOL* pVal) = 0;

    /// Clears the modified state of the titles' productions, too.
    virtual HRESULT ClearDirtyFlag() = 0;

    /// Removes all titles, menus and data files and resets the properties, without events. What any project of the
    /// process could undo or redo is forgotten; an open step stays open, forgets what it recorded of this project and
    /// its storyboards, and records what follows. The heartbeat is on again.
    virtual HRESULT Clear() = 0;

    virtual HRESULT GetTitle(LONG index, IKVTitle** ppTitle) = 0;

    /// At a position, or last for 0 and below. When the event that tells of the only title finds it with a source, the
    /// worker thread measures that clip and sets TVStandard and FrameRate by it.
    virtual HRESULT AddTitle(LONG index, IKVTitle** ppTitle) = 0;

    /// KV_E_NO_SUCH_ID.
    virtual HRESULT RemoveTitle(LONG ID, IKVTitle** ppTitle) = 0;

    /// Afterwards the title stands at `toPos`; a move to where it stands succeeds and is told.
    virtual HRESULT MoveTitle(LONG fromPos, LONG toPos) = 0;

    /// As with titles. A menu that the engine makes no production for is not added: that failure is returned.
    virtual HRESULT GetMenu(LONG index, IKVMenu** ppMenu) = 0;
    virtual HRESULT AddMenu(LONG index, IKVMenu** ppMenu) = 0;
    virtual HRESULT RemoveMenu(LONG ID, IKVMenu** ppMenu) = 0;
    virtual HRESULT MoveMenu(LONG fromPos, LONG toPos) = 0;

    /// Inserts a menu that exists already, as AddMenu does; it keeps its ID. E_POINTER for null, E_INVALIDARG for what
    /// is no menu of this library or stands in a project.
    virtual HRESULT InsertMenuW(LONG index, IKVMenu* pMenu) = 0;

    /// As with titles.
    virtual HRESULT GetDataFile(LONG index, IKVDataFile** ppDataFile) = 0;
    virtual HRESULT AddDataFile(LONG index, IKVDataFile** ppDataFile) = 0;

    /// By position, not by ID.
    virtual HRESULT RemoveDataFile(LONG index, IKVDataFile** ppDataFile) = 0;

    /// Compares ordinally; null is the empty path, of a file without a source. S_FALSE when other users of the file
    /// remain: it stays with one user less. KV_E_NO_SUCH_SOURCE.
    virtual HRESULT RemoveDataFileBySource(BSTR bstrSrcPath, IKVDataFile** ppDataFile) = 0;
    virtual HRESULT MoveDataFile(LONG fromPos, LONG toPos) = 0;

    /// The first that matches every given criterion; null and 0 give none. KV_E_DATA_FILE_NOT_FOUND.
    virtual HRESULT FindDataFile(BSTR bstrSrcPath, BSTR bstrDestPath, ULONG dwTag, IKVDataFile** ppDataFile) = 0;

    /// A title, a menu, a data file, an element of a menu or of a button, or a group of elements: the first one where
    /// several share the ID. KV_E_NO_SUCH_ID.
    virtual HRESULT FindByID(LONG ID, IUnknown** ppUnkObj) = 0;

    /// Replaces the project by a document, or by what stands below a node, and forgets what could be undone as Clear
    /// does. What the project cannot take of it (values that cannot be read, attributes and elements that it does not
    /// know or that stand in the wrong place, text) is passed over and told to the error reporter, whose lines since
    /// the beginning of the call are those of the load; whatever is around it is loaded. KV_E_NO_XML_NODE for null.
    virtual HRESULT loadXML(IXMLDOMNode* pRootNode) = 0;

    /// Writes the project below an element of a document. E_POINTER for null, E_INVALIDARG for a node that cannot have
    /// children or the document itself, and when a text of the project holds what XML cannot hold.
    virtual HRESULT SaveXML(IXMLDOMNode* pRootNode) = 0;

    /// Opens a step: recorded edits from here to EndUndo are undone and redone together. Edits of other projects join
    /// the step, whichever thread makes them, but for what they do to effects. The storyboards of this project's menus
    /// take part, and of those that are inserted: when one refuses, its failure is returned, and the step is open all
    /// the same. The description, a copy of which is kept, is for a person. One step may be open in the process:
    /// KV_E_UNDO_STEP_OPEN. KV_E_NO_UNDO_MANAGER, or why the manager does not open it.
    virtual HRESULT BeginUndo(BSTR bsDesc) = 0;

    /// The same with a copy of the whole project in the place of records of single edits; edits of other projects do
    /// not join. The step can be undone from here on, and still needs its EndUndo, also when the copy failed. The
    /// storyboards of the menus take part till then. What was not recorded, such as the production of a title, is not
    /// in the copy and stays as it is.
    virtual HRESULT TakeUndoSnapshot(BSTR bsDesc) = 0;

    /// Ends the step. Committed, also without any edit, it is the newest that can be undone, and ends what could be
    /// redone. With 0 everything in it is taken back and what could be redone stays; a snapshot is undone, and can be
    /// redone. S_OK without a step. When a storyboard refuses its part the step stays open, and its failure is
    /// returned. E_UNEXPECTED when a snapshot is not the newest step any more: it stays, and nothing is taken back.
    virtual HRESULT EndUndo(VARIANT_BOOL bCommit) = 0;

    /// The same; `bSbdHint` says that storyboards were changed in the step. Makes the project dirty with `bCommit`.
    virtual HRESULT EndUndoEx(VARIANT_BOOL bCommit, VARIANT_BOOL bSbdHint) = 0;

    /// Undoes, or redoes, the last step of the process, whichever project it is of. No event tells of it, but for a
    /// snapshot, which sends MessageBroadcast(2, 0, 0): read everything anew. S_FALSE without an undo manager, E_FAIL
    /// when there is none to undo, E_UNEXPECTED while a step is open.
    virtual HRESULT UndoOperation() = 0;
    virtual HRESULT RedoOperation() = 0;

    /// The manager that all projects of the process share. KV_E_NO_UNDO_MANAGER. A unit of the host's that is open on
    /// it gets the records of edits by its Add, inside sections of the library: there it must call nothing of it.
    virtual HRESULT GetUndoManager(IOleUndoManager** ppUndoMgr) = 0;

    /// Sends MajorProjectChange for code 4, else MessageBroadcast. The library itself sends code 2.
    virtual HRESULT BroadcastMessage(LONG code, LONG param1, LONG param2) = 0;

    /// Whatever the host counts. Not kept in the document.
    virtual HRESULT get_ProjectSize(LONGLONG* pVal) = 0;
    virtual HRESULT put_ProjectSize(LONGLONG newVal) = 0;

    /// Kilobytes.
    virtual HRESULT get_OnDiscSize(ULONG* pVal) = 0;
    virtual HRESULT put_OnDiscSize(ULONG newVal) = 0;

    /// -1 when nothing is known of it.
    virtual HRESULT get_RemainingCaptures(LONG* pVal) = 0;
    virtual HRESULT put_RemainingCaptures(LONG newVal) = 0;

    /// Turns EmptyQueue and ProjectChangeList, which come after 3 seconds without another event, on or off.
    virtual HRESULT EnableHeartBeatEvent(VARIANT_BOOL bEnable) = 0;

    /// Lets go of the undo manager that the projects of the process share; those that are there keep it, the next
    /// project makes another.
    virtual HRESULT ResetStaticData() = 0;
    virtual HRESULT get_DiscSize(DiscSizeEnum* pVal) = 0;
    virtual HRESULT put_DiscSize(DiscSizeEnum newVal) = 0;

    /// Opens the undo block of a storyboard, the host's under `dwKVID`, which then takes part in the open step. S_FALSE
    /// without a step, E_POINTER for no storyboard, or why the storyboard does not open it.
    virtual HRESULT BeginStoryboardUndo(IUnknown* pUnkSbd, ULONG dwKVID) = 0;
    virtual HRESULT get_DiscVideoType(DiscVideoType* pVal) = 0;
    virtual HRESULT put_DiscVideoType(DiscVideoType newVal) = 0;

    /// Decides how effect data is written for themes, for all projects of the process. The host's numbers.
    virtual HRESULT SetSaveThemeMode(LONG mode) = 0;

    /// True for exactly VARIANT_TRUE.
    virtual HRESULT get_MenuLess(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_MenuLess(VARIANT_BOOL newVal) = 0;

    /// Whether there is a step to undo, or to redo, of any project. They tell of the stacks alone: while a step is open
    /// they may be true, although UndoOperation and RedoOperation then say E_UNEXPECTED; the open step counts when it
    /// is committed. S_FALSE for a null out-pointer; E_POINTER without an undo manager.
    virtual HRESULT get_UndoEnable(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT get_RedoEnable(VARIANT_BOOL* pVal) = 0;
};

template <>
struct kv::InterfaceTable<IKVProjectData> {
    static constexpr auto members = Members(
        Get<&IKVProjectData::get_version>("version", 0x20),
        GetPut<&IKVProjectData::get_Label, &IKVProjectData::put_Label>("Label", 0x4),
        GetPut<&IKVProjectData::get_DiscFormat, &IKVProjectData::put_DiscFormat>("DiscFormat", 0x14),
        GetPut<&IKVProjectData::get_VolumeName, &IKVProjectData::put_VolumeName>("VolumeName", 0x15),
        GetPut<&IKVProjectData::get_ThemeSource, &IKVProjectData::put_ThemeSource>("ThemeSource", 0x3f),
        GetPut<&IKVProjectData::get_TVStandard, &IKVProjectData::put_TVStandard>("TVStandard", 0x16),
        GetPut<&IKVProjectData::get_FrameRate, &IKVProjectData::put_FrameRate>("FrameRate", 0x47),
        GetPut<&IKVProjectData::get_ProjectDirectory, &IKVProjectData::put_ProjectDirectory>("ProjectDirectory", 0x17),
        GetPut<&IKVProjectData::get_TargetType, &IKVProjectData::put_TargetType>("TargetType", 0x18),
        GetPut<&IKVProjectData::get_ImagePath, &IKVProjectData::put_ImagePath>("ImagePath", 0x19),
        GetPut<&IKVProjectData::get_TargetDrive, &IKVProjectData::put_TargetDrive>("TargetDrive", 0x1a),
        GetPut<&IKVProjectData::get_DisplayName, &IKVProjectData::put_DisplayName>("DisplayName", 0x23),
        GetPut<&IKVProjectData::get_IsOnDisc, &IKVProjectData::put_IsOnDisc>("IsOnDisc", 0x1b),
        Get<&IKVProjectData::get_TitleCount>("TitleCount", 0x1d),
        Get<&IKVProjectData::get_MenuCount>("MenuCount", 0x1e),
        Get<&IKVProjectData::get_DataFileCount>("DataFileCount", 0x1f),
        GetPut<&IKVProjectData::get_FitToDisc, &IKVProjectData::put_FitToDisc>("FitToDisc", 0x21),
        GetPut<&IKVProjectData::get_DoCompression, &IKVProjectData::put_DoCompression>("DoCompression", 0x44),
        GetPut<&IKVProjectData::get_Options, &IKVProjectData::put_Options>("Options", 0x1c),
        Get<&IKVProjectData::get_IsDirty>("IsDirty", 0xb),
        Method<&IKVProjectData::ClearDirtyFlag>("ClearDirtyFlag", 0x3e), Method<&IKVProjectData::Clear>("Clear", 0x9),
        Method<&IKVProjectData::GetTitle>("GetTitle", 0x26, "index", "ppTitle"),
        Method<&IKVProjectData::AddTitle>("AddTitle", 0x27, "index", "ppTitle"),
        Method<&IKVProjectData::RemoveTitle>("RemoveTitle", 0x28, "ID", "ppTitle"),
        Method<&IKVProjectData::MoveTitle>("MoveTitle", 0x29, "fromPos", "toPos"),
        Method<&IKVProjectData::GetMenu>("GetMenu", 0x2a, "index", "ppMenu"),
        Method<&IKVProjectData::AddMenu>("AddMenu", 0x2b, "index", "ppMenu"),
        Method<&IKVProjectData::RemoveMenu>("RemoveMenu", 0x2c, "ID", "ppMenu"),
        Method<&IKVProjectData::MoveMenu>("MoveMenu", 0x2d, "fromPos", "toPos"),
        Method<&IKVProjectData::InsertMenuW>("InsertMenuW", 0x2e, "index", "pMenu"),
        Method<&IKVProjectData::GetDataFile>("GetDataFile", 0x2f, "index", "ppDataFile"),
        Method<&IKVProjectData::AddDataFile>("AddDataFile", 0x30, "index", "ppDataFile"),
        Method<&IKVProjectData::RemoveDataFile>("RemoveDataFile", 0x31, "index", "ppDataFile"),
        Method<&IKVProjectData::RemoveDataFileBySource>("RemoveDataFileBySource", 0x32, "bstrSrcPath", "ppDataFile"),
        Method<&IKVProjectData::MoveDataFile>("MoveDataFile", 0x33, "fromPos", "toPos"),
        Method<&IKVProjectData::FindDataFile>("FindDataFile", 0x34, "bstrSrcPath", "bstrDestPath", "dwTag",
                                              "ppDataFile"),
        Method<&IKVProjectData::FindByID>("FindByID", 0x35, "ID", "ppUnkObj"),
        Method<&IKVProjectData::loadXML>("loadXML", 0x5, "pRootNode"),
        Method<&IKVProjectData::SaveXML>("SaveXML", 0x6, "pRootNode"),
        Method<&IKVProjectData::BeginUndo>("BeginUndo", 0x37, "bsDesc"),
        Method<&IKVProjectData::TakeUndoSnapshot>("TakeUndoSnapshot", 0x36, "bsDesc"),
        Method<&IKVProjectData::EndUndo>("EndUndo", 0x38, "bCommit"),
        Method<&IKVProjectData::EndUndoEx>("EndUndoEx", 0x39, "bCommit", "bSbdHint"),
        Method<&IKVProjectData::UndoOperation>("UndoOperation", 0x3a),
        Method<&IKVProjectData::RedoOperation>("RedoOperation", 0x3b),
        Method<&IKVProjectData::GetUndoManager>("GetUndoManager", 0x3c, "ppUndoMgr"),
        Method<&IKVProjectData::BroadcastMessage>("BroadcastMessage", 0x3d, "code", "param1", "param2"),
        GetPut<&IKVProjectData::get_ProjectSize, &IKVProjectData::put_ProjectSize>("ProjectSize", 0x22),
        GetPut<&IKVProjectData::get_OnDiscSize, &IKVProjectData::put_OnDiscSize>("OnDiscSize", 0x24),
        GetPut<&IKVProjectData::get_RemainingCaptures, &IKVProjectData::put_RemainingCaptures>("RemainingCaptures",
                                                                                               0x25),
        Method<&IKVProjectData::EnableHeartBeatEvent>("EnableHeartBeatEvent", 0x40, "bEnable"),
        Method<&IKVProjectData::ResetStaticData>("ResetStaticData", 0x41),
        GetPut<&IKVProjectData::get_DiscSize, &IKVProjectData::put_DiscSize>("DiscSize", 0x42),
        Method<&IKVProjectData::BeginStoryboardUndo>("BeginStoryboardUndo", 0x43, "pUnkSbd", "dwKVID"),
        GetPut<&IKVProjectData::get_DiscVideoType, &IKVProjectData::put_DiscVideoType>("DiscVideoType", 0x45),
        Method<&IKVProjectData::SetSaveThemeMode>("SetSaveThemeMode", 0xc, "mode"),
        GetPut<&IKVProjectData::get_MenuLess, &IKVProjectData::put_MenuLess>("MenuLess", 0x46),
        Get<&IKVProjectData::get_UndoEnable>("UndoEnable", 0x48),
        Get<&IKVProjectData::get_RedoEnable>("RedoEnable", 0x49));
};
