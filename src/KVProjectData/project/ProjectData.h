#pragma once
// The project: root of the tree, holder of the disc-wide settings, and the place where every event arrives.

#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/persistence/AttributeArchive.h"
#include "KVProjectData/persistence/XMLDataLoader.h"
#include "KVProjectData/project/AsyncEventDispatcher.h"
#include "KVProjectData/project/List.h"
#include "KVProjectData/project/ProjectEvents.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/titles/EncodingParams.h"
#include "KVProjectData/tree/Locking.h"
#include "KVProjectData/undo/ProjectUndo.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/ConnectionPoint.h"
#include "platform/com/Object.h"
#include "platform/system/Window.h"

namespace kv {

class CKVDataFile;
class CKVTitle;

/// The version that this library writes into documents.
inline constexpr LONG kDocumentVersion = 900;

class CKVProjectData final : public ArchivedNode<CKVProjectData>,
                             public CAsyncEventDispatcher,
                             public Object<Dual<IKVProjectData>, ConnectionPointContainer>,
                             private NodeFactory {
public:
    explicit CKVProjectData(IUnknown* outer);

    /// Creates the window, the fixed children and the aggregated objects, and starts the events.
    HRESULT Initialise();

    HRESULT get_version(LONG* pVal) override;
    HRESULT get_Label(BSTR* pVal) override;
    HRESULT put_Label(BSTR newVal) override;
    HRESULT get_DiscFormat(DiscFormat* pVal) override;
    HRESULT put_DiscFormat(DiscFormat newVal) override;
    HRESULT get_VolumeName(BSTR* pVal) override;
    HRESULT put_VolumeName(BSTR newVal) override;
    HRESULT get_ThemeSource(BSTR* pVal) override;
    HRESULT put_ThemeSource(BSTR newVal) override;
    HRESULT get_TVStandard(TVStandard* pVal) override;
    HRESULT put_TVStandard(TVStandard newVal) override;
    HRESULT get_FrameRate(double* pVal) override;
    HRESULT put_FrameRate(double newVal) override;
    HRESULT get_ProjectDirectory(BSTR* pVal) override;
    HRESULT put_ProjectDirectory(BSTR newVal) override;
    HRESULT get_TargetType(ULONG* pVal) override;
    HRESULT put_TargetType(ULONG newVal) override;
    HRESULT get_ImagePath(BSTR* pVal) override;
    HRESULT put_ImagePath(BSTR newVal) override;
    HRESULT get_TargetDrive(BSTR* pVal) override;
    HRESULT put_TargetDrive(BSTR newVal) override;
    HRESULT get_DisplayName(BSTR* pVal) override;
    HRESULT put_DisplayName(BSTR newVal) override;
    HRESULT get_IsOnDisc(VARIANT_BOOL* pVal) override;
    HRESULT put_IsOnDisc(VARIANT_BOOL newVal) override;
    HRESULT get_TitleCount(LONG* pVal) override;
    HRESULT get_MenuCount(LONG* pVal) override;
    HRESULT get_DataFileCount(LONG* pVal) override;
    HRESULT get_FitToDisc(VARIANT_BOOL* pVal) override;
    HRESULT put_FitToDisc(VARIANT_BOOL newVal) override;
    HRESULT get_DoCompression(VARIANT_BOOL* pVal) override;
    HRESULT put_DoCompression(VARIANT_BOOL newVal) override;
    HRESULT get_Options(ULONG* pVal) override;
    HRESULT put_Options(ULONG newVal) override;
    HRESULT get_IsDirty(VARIANT_BOOL* pVal) override;
    HRESULT ClearDirtyFlag() override;
    HRESULT Clear() override;
    HRESULT GetTitle(LONG index, IKVTitle** ppTitle) override;
    HRESULT AddTitle(LONG index, IKVTitle** ppTitle) override;
    HRESULT RemoveTitle(LONG ID, IKVTitle** ppTitle) override;
    HRESULT MoveTitle(LONG fromPos, LONG toPos) override;
    HRESULT GetMenu(LONG index, IKVMenu** ppMenu) override;
    HRESULT AddMenu(LONG index, IKVMenu** ppMenu) override;
    HRESULT RemoveMenu(LONG ID, IKVMenu** ppMenu) override;
    HRESULT MoveMenu(LONG fromPos, LONG toPos) override;
    HRESULT InsertMenuW(LONG index, IKVMenu* pMenu) override;
    HRESULT GetDataFile(LONG index, IKVDataFile** ppDataFile) override;
    HRESULT AddDataFile(LONG index, IKVDataFile** ppDataFile) override;
    HRESULT RemoveDataFile(LONG index, IKVDataFile** ppDataFile) override;
    HRESULT RemoveDataFileBySource(BSTR bstrSrcPath, IKVDataFile** ppDataFile) override;
    HRESULT MoveDataFile(LONG fromPos, LONG toPos) override;
    HRESULT FindDataFile(BSTR bstrSrcPath, BSTR bstrDestPath, ULONG dwTag, IKVDataFile** ppDataFile) override;
    HRESULT FindByID(LONG ID, IUnknown** ppUnkObj) override;
    HRESULT loadXML(IXMLDOMNode* pRootNode) override;
    HRESULT SaveXML(IXMLDOMNode* pRootNode) override;
    HRESULT BeginUndo(BSTR bsDesc) override;
    HRESULT TakeUndoSnapshot(BSTR bsDesc) override;
    HRESULT EndUndo(VARIANT_BOOL bCommit) override;
    HRESULT EndUndoEx(VARIANT_BOOL bCommit, VARIANT_BOOL bSbdHint) override;
    HRESULT UndoOperation() override;
    HRESULT RedoOperation() override;
    HRESULT GetUndoManager(IOleUndoManager** ppUndoMgr) override;
    HRESULT BroadcastMessage(LONG code, LONG param1, LONG param2) override;
    HRESULT get_ProjectSize(LONGLONG* pVal) override;
    HRESULT put_ProjectSize(LONGLONG newVal) override;
    HRESULT get_OnDiscSize(ULONG* pVal) override;
    HRESULT put_OnDiscSize(ULONG newVal) override;
    HRESULT get_RemainingCaptures(LONG* pVal) override;
    HRESULT put_RemainingCaptures(LONG newVal) override;
    HRESULT EnableHeartBeatEvent(VARIANT_BOOL bEnable) override;
    HRESULT ResetStaticData() override;
    HRESULT get_DiscSize(DiscSizeEnum* pVal) override;
    HRESULT put_DiscSize(DiscSizeEnum newVal) override;
    HRESULT BeginStoryboardUndo(IUnknown* pUnkSbd, ULONG dwKVID) override;
    HRESULT get_DiscVideoType(DiscVideoType* pVal) override;
    HRESULT put_DiscVideoType(DiscVideoType newVal) override;
    HRESULT SetSaveThemeMode(LONG mode) override;
    HRESULT get_MenuLess(VARIANT_BOOL* pVal) override;
    HRESULT put_MenuLess(VARIANT_BOOL newVal) override;
    HRESULT get_UndoEnable(VARIANT_BOOL* pVal) override;
    HRESULT get_RedoEnable(VARIANT_BOOL* pVal) override;

    using CProjectNode::SaveXML;

    HRESULT FireEvent(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c) override;
    void SetModified(bool major) override;
    HRESULT Dispatch(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c) override;
    IUnknown* Identity() override { return Controlling(); }

    template <class Archive>
    void Attributes(Archive& archive);

protected:
    HRESULT FindInterface(REFIID iid, void** out) override;
    void FinalRelease() override;
    void Destroy() override { Delete(); }
    void FirePropertyChanged(DISPID propId) override;

private:
    /// Everything that Clear resets.
    struct Settings {
        Bstr label{u""};
        DiscFormat discFormat = DVD_Video;
        Bstr volumeName{u""};
        Bstr themeSource{u""};
        TVStandard tvStandard = NTSC;
        double frameRate = 0.0;
        ULONG targetType = DiscTarget;
        Bstr displayName{u""};
        bool isOnDisc = false;
        bool fitToDisc = false;
        bool doCompression = true;
        ULONG options = 0;
        LONGLONG projectSize = 0;
        ULONG onDiscSizeKB = 0;
        LONG remainingCaptures = -1;
        DiscSizeEnum discSize = SZ_DVD47;
        DiscVideoType discVideoType = Normal_2D;
        bool menuLess = false;
    };

    /// The events that a list's changes are told by.
    struct ListEvents {
        DISPID added;
        DISPID removed;
        DISPID moved;
    };
    static const ListEvents kTitleEvents;
    static const ListEvents kMenuEvents;
    static const ListEvents kDataFileEvents;

    CProjectNode* CreateItem(NodeType type, CProjectNode& parent) override;

    HRESULT Count(LONG* out, const CKVList& list);
    template <class Item, class Interface>
    HRESULT GetItem(const CKVList& list, LONG position, Interface** out);
    template <class Item, class Interface, class Prepare>
    HRESULT AddItem(CKVList& list, LONG position, Interface** out, const ListEvents& events, Prepare&& prepare);
    template <class Item, class Interface>
    HRESULT RemoveItem(CKVList& list, LONG index, HRESULT notFound, Interface** out, const ListEvents& events);
    HRESULT MoveItem(CKVList& list, LONG from, LONG to, const ListEvents& events);
    HRESULT PrepareTitle(CKVTitle& title);

    void DropLists();
    /// Calls `visit` with the production data of every normal or first-play title that has a production.
    template <class Visit>
    void ForEachProduction(Visit&& visit);
    /// Takes the TV standard and the frame rate from the clip of a first title.
    void MeasureFirstTitle();

    Settings m_settings;
    Bstr m_projectDirectory;
    Bstr m_imagePath;
    Bstr m_targetDrive;
    std::atomic<bool> m_dirty{false};

    CKVList m_titles{typeTitleList};
    CKVList m_menus{typeMenuList};
    CKVList m_dataFiles{typeFileList};
    Aggregated<CKVCommandList> m_commandList;
    Aggregated<CKVEncodingParams> m_encodingParams;
    Aggregated<CKVLocking> m_locking;

    ProjectEvents m_events{*this};
    ProjectUndo m_undo{*this};
    HWND m_window = 0;
};

} // namespace kv
