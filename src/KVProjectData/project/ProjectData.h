#pragma once
// The project: root of the tree, holder of the disc-wide settings, and the place where every event arrives.

#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/project/AsyncEventDispatcher.h"
#include "KVProjectData/project/List.h"
#include "KVProjectData/project/ObjectIndex.h"
#include "KVProjectData/project/ProjectEvents.h"
#include "KVProjectData/project/ProjectStoryboards.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/titles/EncodingParams.h"
#include "KVProjectData/tree/Locking.h"
#include "KVProjectData/tree/Properties.h"
#include "KVProjectData/undo/ProjectUndo.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Aggregate.h"
#include "platform/com/ConnectionPoint.h"
#include "platform/system/Window.h"

namespace kv {

/// The version that this library writes into documents.
inline constexpr LONG kDocumentVersion = 900;

class CKVProjectData final : public CProjectNode,
                             public CAsyncEventDispatcher,
                             public Aggregate<Parts<CKVCommandList, CKVEncodingParams, CKVLocking>,
                                              Dual<IKVProjectData>, ConnectionPointContainer, IProjectStoryboards>,
                             private ListItems,
                             private StepStoryboards {
public:
    explicit CKVProjectData(IUnknown* outer);

    /// Creates the window, the fixed children and the aggregated objects, and starts the events.
    HRESULT Initialise();

    KV_GETTER(LONG, version, kDocumentVersion)
    KV_PROPERTY(BSTR, Label, m_settings.label, Undo, Fires(4))
    KV_PROPERTY(DiscFormat, DiscFormat, m_settings.discFormat, Undo, Fires(20))
    KV_PROPERTY(BSTR, VolumeName, m_settings.volumeName, Undo, Fires(21))
    KV_PROPERTY(BSTR, ThemeSource, m_settings.themeSource)
    KV_GETTER(TVStandard, TVStandard, m_settings.tvStandard)
    HRESULT put_TVStandard(TVStandard newVal) override;
    HRESULT get_FrameRate(double* pVal) override;
    HRESULT put_FrameRate(double newVal) override;
    KV_GETTER(BSTR, ProjectDirectory, m_projectDirectory)
    HRESULT put_ProjectDirectory(BSTR newVal) override;
    KV_PROPERTY(ULONG, TargetType, m_settings.targetType, Undo, Fires(24))
    KV_PROPERTY(BSTR, ImagePath, m_imagePath, Undo, Fires(25))
    KV_PROPERTY(BSTR, TargetDrive, m_targetDrive, Undo, Fires(26))
    KV_PROPERTY(BSTR, DisplayName, m_settings.displayName, Undo, Fires(35))
    KV_GETTER(VARIANT_BOOL, IsOnDisc, m_settings.isOnDisc)
    HRESULT put_IsOnDisc(VARIANT_BOOL newVal) override;
    HRESULT get_TitleCount(LONG* pVal) override;
    HRESULT get_MenuCount(LONG* pVal) override;
    HRESULT get_DataFileCount(LONG* pVal) override;
    KV_PROPERTY(VARIANT_BOOL, FitToDisc, m_settings.fitToDisc, Undo, Fires(33))
    HRESULT get_DoCompression(VARIANT_BOOL* pVal) override;
    HRESULT put_DoCompression(VARIANT_BOOL newVal) override;
    KV_PROPERTY(ULONG, Options, m_settings.options, Undo, Fires(28))
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
    KV_PROPERTY(LONGLONG, ProjectSize, m_settings.projectSize, Fires(34))
    KV_PROPERTY(ULONG, OnDiscSize, m_settings.onDiscSizeKB, Fires(36))
    KV_PROPERTY(LONG, RemainingCaptures, m_settings.remainingCaptures, Fires(37))
    HRESULT EnableHeartBeatEvent(VARIANT_BOOL bEnable) override;
    HRESULT ResetStaticData() override;
    KV_PROPERTY(DiscSizeEnum, DiscSize, m_settings.discSize, Fires(66))
    HRESULT BeginStoryboardUndo(IUnknown* pUnkSbd, ULONG dwKVID) override;
    KV_PROPERTY(DiscVideoType, DiscVideoType, m_settings.discVideoType, Undo, Fires(69))
    HRESULT SetSaveThemeMode(LONG mode) override;
    KV_GETTER(VARIANT_BOOL, MenuLess, m_settings.menuLess)
    HRESULT put_MenuLess(VARIANT_BOOL newVal) override;
    HRESULT get_UndoEnable(VARIANT_BOOL* pVal) override;
    HRESULT get_RedoEnable(VARIANT_BOOL* pVal) override;

    CProjectNode& Node() override { return *this; }
    XmlElement KeptXml() override { return m_keptProductions; }
    void KeepXml(const XmlElement& xml) override { m_keptProductions = xml; }
    XmlElement KeptProductions() override;
    void KeepProductions(XmlElement kept) override;
    KnownNames Names() override;
    void KeepNames(KnownNames names) override;
    void LeaveStep() override { m_undo.LeaveStoryboards(); }
    HRESULT JoinStep() override { return m_undo.OpenMenus(); }

    using CProjectNode::SaveXML;

    HRESULT FireEvent(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c) override;
    void SetModified(bool major) override;
    std::u16string FullPathOf(std::u16string_view path) override;
    HRESULT Dispatch(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c) override;
    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive& archive) override;

protected:
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

    CProjectNode* AppendItem(CKVList& list) override;
    std::vector<ComPtr<IUnknown>> MenuStoryboards() override;

    /// Has the encoding parameters of a new title or menu follow the project's, whose aspect ratio they take.
    HRESULT FollowProject(CKVEncodingParams& encoding);
    /// What is done to a menu that has come in with its production is part of the open step. S_FALSE for nothing to do.
    HRESULT JoinMenu(IKVMenu& menu);

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

    CKVList m_titles{typeTitleList, typeTitle, {EVENT_TitleAdded, EVENT_TitleRemoved, EVENT_TitleMoved}, *this};
    CKVList m_menus{typeMenuList, typeMenu, {EVENT_MenuAdded, EVENT_MenuRemoved, EVENT_MenuMoved}, *this};
    CKVList m_dataFiles{
        typeFileList, typeFile, {EVENT_DataFileAdded, EVENT_DataFileRemoved, EVENT_DataFileMoved}, *this};

    ObjectIndex m_objects{{&m_titles, &m_menus, &m_dataFiles}, m_menus};

    XmlElement m_keptProductions;
    /// With the links held: nodes ask for them inside their sections.
    KnownNames m_names;

    ProjectEvents m_events{*this};
    ProjectUndo m_undo{*this, *this};
    HWND m_window = 0;
};

} // namespace kv
