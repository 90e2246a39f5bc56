#include "KVProjectData/project/ProjectData.h"

#include "KVProjectData/Engine.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/effects/EffectState.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/persistence/XMLPersistor.h"
#include "KVProjectData/titles/DataFile.h"
#include "KVProjectData/titles/Title.h"
#include "KVProjectData/tree/EngineCalls.h"
#include "platform/com/Activation.h"

#include <cmath>

namespace kv {
namespace {

constexpr ULONG kHeartbeatMilliseconds = 3000;

/// The property ID by which a change of the dirty flag is told.
constexpr DISPID kIsDirty = 11;

/// Titles of these types have a production that tells whether it was modified.
constexpr ULONG kTypesWithProduction = TitleType_Normal | TitleType_FirstPlay;

constexpr EngineCalls kEngine("KVProjectData");

HWND CreateEventWindow()
{
    static constexpr WindowClass kClass{u"KoKVProjectDataWndClass", CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS, IDC_ARROW,
                                        COLOR_WINDOW};
    return CreateHiddenWindow(kClass, u"KVProjectDataWnd", WS_DISABLED);
}

} // namespace

const CKVProjectData::ListEvents CKVProjectData::kTitleEvents{EVENT_TitleAdded, EVENT_TitleRemoved, EVENT_TitleMoved};
const CKVProjectData::ListEvents CKVProjectData::kMenuEvents{EVENT_MenuAdded, EVENT_MenuRemoved, EVENT_MenuMoved};
const CKVProjectData::ListEvents CKVProjectData::kDataFileEvents{EVENT_DataFileAdded, EVENT_DataFileRemoved,
                                                                 EVENT_DataFileMoved};

CKVProjectData::CKVProjectData(IUnknown* outer) : CProjectNode(typeProject), Aggregate(outer) {}

HRESULT CKVProjectData::Initialise()
{
    m_window = CreateEventWindow();
    if (!m_window) return KV_E_NO_EVENT_WINDOW;

    AddChild(&m_titles, true);
    AddChild(&m_menus, true);
    AddChild(&m_dataFiles, true);
    AddChild(&MakePart<CKVCommandList>(), true);
    AddChild(&MakePart<CKVEncodingParams>(), true);
    // A project can be worked with all the same when nothing of it can be undone.
    m_undo.Initialise();
    MakePart<CKVLocking>(this);
    return Start(kHeartbeatMilliseconds);
}

void CKVProjectData::FinalRelease()
{
    m_undo.Terminate();
    DropLists();
    ReleaseParts();
    Stop();
    if (m_window) DestroyWindow(m_window);
}

void CKVProjectData::DropLists()
{
    const SectionLock lock(Section());
    m_titles.DropAll();
    m_menus.DropAll();
    m_dataFiles.DropAll();
}

// Events

HRESULT CKVProjectData::FireEvent(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c)
{
    const bool carriesText = event == EVENT_ProjectDirectoryChanged;
    return Post(event, a, b, carriesText ? 0 : c, carriesText ? reinterpret_cast<BSTR>(c) : nullptr);
}

void CKVProjectData::FirePropertyChanged(DISPID propId)
{
    FireEvent(EVENT_VolumePropChanged, propId, 0, 0);
}

void CKVProjectData::SetModified(bool)
{
    if (!m_dirty && !m_dirty.exchange(true)) FirePropertyChanged(kIsDirty);
}

HRESULT CKVProjectData::Dispatch(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c)
{
    if (event == kHeartbeat) {
        m_events.Tick();
        return S_OK;
    }
    const HRESULT result = m_events.Tell(event, a, b, c);
    if (event == EVENT_TitleAdded) MeasureFirstTitle();
    return result;
}

void CKVProjectData::MeasureFirstTitle()
{
    LONG count = 0;
    ComPtr<IKVTitle> title;
    Bstr source;
    get_TitleCount(&count);
    if (count != 1 || FAILED(GetTitle(1, title.Put())) || FAILED(title->get_Source(source.Put())) || source.Empty()) {
        return;
    }
    ComPtr<IZXMediaInformation> media;
    if (FAILED(CreateInstance(CLSID_ZXMediaInformation, media)) || FAILED(media->Open(source.Get()))) return;
    ULONG width = 0;
    ULONG height = 0;
    double frameRate = 0.0;
    if (FAILED(media->GetVideoProperties(1, 0, &width, &height, &frameRate)) &&
        FAILED(media->GetVideoProperties(0, 0, &width, &height, &frameRate))) {
        return;
    }

    constexpr double kTolerance = 0.222223;
    const bool palRate = std::abs(frameRate - 50.0) <= kTolerance || std::abs(frameRate - 25.0) <= kTolerance;
    const bool ntscSize = width == 720 && height == 480;
    const bool palSize = width == 720 && height == 576;
    put_TVStandard(palSize || (!ntscSize && palRate) ? PAL : NTSC);
    put_FrameRate(frameRate);
}

// Properties

HRESULT CKVProjectData::put_TVStandard(TVStandard newVal)
{
    return Edit([&](EditScope& edit) {
        edit.Record();
        m_settings.tvStandard = newVal;
        FireEvent(EVENT_TVStandardChanged, newVal, 0, 0);
        return S_OK;
    });
}

HRESULT CKVProjectData::get_FrameRate(double* pVal)
{
    return Edit([&](EditScope&) {
        if (!pVal) return E_POINTER;
        constexpr double kNone = 0.1;
        const double ofStandard = m_settings.tvStandard == NTSC ? 29.97 : 25.0;
        *pVal = m_settings.frameRate < kNone ? ofStandard : m_settings.frameRate;
        return S_OK;
    });
}

HRESULT CKVProjectData::put_FrameRate(double newVal)
{
    return Put(m_settings.frameRate, newVal);
}

HRESULT CKVProjectData::put_ProjectDirectory(BSTR newVal)
{
    return Edit([&](EditScope& edit) {
        Bstr directory = Bstr::CopyOf(newVal);
        edit.Record();
        m_projectDirectory = std::move(directory);
        FireEvent(EVENT_ProjectDirectoryChanged, 0, 0, reinterpret_cast<LONGLONG>(m_projectDirectory.Get()));
        return S_OK;
    });
}

HRESULT CKVProjectData::put_IsOnDisc(VARIANT_BOOL newVal)
{
    return Put(m_settings.isOnDisc, newVal == VARIANT_TRUE, Fires(27));
}

HRESULT CKVProjectData::get_TitleCount(LONG* pVal)
{
    return Count(pVal, m_titles);
}

HRESULT CKVProjectData::get_MenuCount(LONG* pVal)
{
    return Count(pVal, m_menus);
}

HRESULT CKVProjectData::get_DataFileCount(LONG* pVal)
{
    return Count(pVal, m_dataFiles);
}

HRESULT CKVProjectData::get_DoCompression(VARIANT_BOOL* pVal)
{
    return Read([&] {
        if (!pVal) return E_POINTER;
        return m_settings.fitToDisc ? Get(pVal, m_settings.doCompression) : S_FALSE;
    });
}

HRESULT CKVProjectData::put_DoCompression(VARIANT_BOOL newVal)
{
    return Put(m_settings.doCompression, newVal != VARIANT_FALSE, Undo, Fires(68));
}

HRESULT CKVProjectData::put_MenuLess(VARIANT_BOOL newVal)
{
    return Put(m_settings.menuLess, newVal == VARIANT_TRUE);
}

// Dirty flag

template <class Visit>
void CKVProjectData::ForEachProduction(Visit&& visit)
{
    for (LONG i = 0; i < m_titles.ChildCount(); ++i) {
        auto* title = static_cast<CKVTitle*>(m_titles.GetChild(i));
        if (!(title->Types() & kTypesWithProduction)) continue;
        if (const auto data = title->ProductionData()) visit(*data);
    }
}

HRESULT CKVProjectData::get_IsDirty(VARIANT_BOOL* pVal)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!pVal) return kEngine.NullArgument("pVal");
        ForEachProduction([this](IZXEProductionData& production) {
            ULONG flags = 0;
            const HRESULT asked = kEngine.Checked(production.get_Flags(&flags), "get_Flags()");
            if (SUCCEEDED(asked) && (flags & ZXE_PRODUCTION_MODIFIED)) m_dirty = true;
        });
        *pVal = m_dirty ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT CKVProjectData::ClearDirtyFlag()
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        ForEachProduction(
            [](IZXEProductionData& production) { kEngine.Checked(production.ClearModified(), "ClearModified()"); });
        if (m_dirty.exchange(false)) edit.Changed(kIsDirty);
        return S_OK;
    });
}

// Lists

HRESULT CKVProjectData::Count(LONG* out, const CKVList& list)
{
    return Read([&] {
        if (!out) return E_POINTER;
        *out = list.ChildCount();
        return S_OK;
    });
}

template <class Item, class Interface>
HRESULT CKVProjectData::GetItem(const CKVList& list, LONG position, Interface** out)
{
    return Read([&] {
        if (!out) return E_POINTER;
        *out = nullptr;
        CProjectNode* item = position >= 1 ? list.GetChild(position - 1) : nullptr;
        return item ? ComPtr<Interface>(static_cast<Item*>(item)).CopyTo(out) : KV_E_BAD_POSITION;
    });
}

template <class Item, class Interface, class Prepare>
HRESULT CKVProjectData::AddItem(CKVList& list, LONG position, Interface** out, const ListEvents& events,
                                Prepare&& prepare)
{
    if (out) *out = nullptr;
    return Edit([&](EditScope&) -> HRESULT {
        const auto item = Make<Item>();
        const LONG index = list.Adopt(*item, position < 1 ? -1 : position - 1, true);
        if (index < 0) return KV_E_BAD_POSITION;
        const HRESULT prepared = Guarded([&] {
            list.RecordChange(ListChange::Add, *item, index);
            return prepare(*item);
        });
        if (FAILED(prepared)) {
            list.TakeOut(index);
            return prepared;
        }
        FireEvent(events.added, item->ID(), position, 0);
        return out ? ComPtr<Interface>(item.Get()).CopyTo(out) : S_OK;
    });
}

template <class Item, class Interface>
HRESULT CKVProjectData::RemoveItem(CKVList& list, LONG index, HRESULT notFound, Interface** out,
                                   const ListEvents& events)
{
    if (out) *out = nullptr;
    CProjectNode* item = list.GetChild(index);
    if (!item) return notFound;
    const LONG id = item->ID();
    ComPtr<Interface> removed(static_cast<Item*>(item));
    list.RecordChange(ListChange::Remove, *item, index);
    list.TakeOut(index);
    if (out) *out = removed.Detach();
    FireEvent(events.removed, id, 0, 0);
    return S_OK;
}

HRESULT CKVProjectData::MoveItem(CKVList& list, LONG from, LONG to, const ListEvents& events)
{
    return Edit([&](EditScope&) {
        CProjectNode* item = from < 1 ? nullptr : list.GetChild(from - 1);
        if (!item || to < 1 || !list.GetChild(to - 1)) return KV_E_BAD_POSITION;
        list.RecordChange(ListChange::Move, *item, from - 1);
        list.MoveChild(from - 1, to - 1);
        FireEvent(events.moved, item->ID(), from, to);
        return S_OK;
    });
}

HRESULT CKVProjectData::GetTitle(LONG index, IKVTitle** ppTitle)
{
    return GetItem<CKVTitle>(m_titles, index, ppTitle);
}

HRESULT CKVProjectData::AddTitle(LONG index, IKVTitle** ppTitle)
{
    return AddItem<CKVTitle>(m_titles, index, ppTitle, kTitleEvents,
                             [this](CKVTitle& title) { return PrepareTitle(title); });
}

HRESULT CKVProjectData::PrepareTitle(CKVTitle& title)
{
    AspectRatio aspect = AspectRatio_None;
    Part<CKVEncodingParams>().get_AspectRatio(&aspect);
    CKVEncodingParams& encoding = title.EncodingParams();
    HRESULT result = encoding.put_SyncToProject(VARIANT_TRUE);
    if (SUCCEEDED(result)) result = encoding.put_AspectRatio(aspect);
    title.SetStereoscopic(m_settings.discVideoType != Normal_2D);
    return result;
}

HRESULT CKVProjectData::RemoveTitle(LONG ID, IKVTitle** ppTitle)
{
    if (ppTitle) *ppTitle = nullptr;
    return Edit([&](EditScope&) {
        LONG index = -1;
        m_titles.FindChildByID(ID, &index);
        return RemoveItem<CKVTitle>(m_titles, index, KV_E_NO_SUCH_ID, ppTitle, kTitleEvents);
    });
}

HRESULT CKVProjectData::MoveTitle(LONG fromPos, LONG toPos)
{
    return MoveItem(m_titles, fromPos, toPos, kTitleEvents);
}

HRESULT CKVProjectData::GetMenu(LONG, IKVMenu** ppMenu)
{
    return Read([&] {
        if (!ppMenu) return E_POINTER;
        *ppMenu = nullptr;
        return KV_E_BAD_POSITION;
    });
}

HRESULT CKVProjectData::AddMenu(LONG, IKVMenu** ppMenu)
{
    if (ppMenu) *ppMenu = nullptr;
    // There is no class of menus to create one from.
    return Edit([](EditScope&) { return CLASS_E_CLASSNOTAVAILABLE; });
}

HRESULT CKVProjectData::RemoveMenu(LONG, IKVMenu** ppMenu)
{
    if (ppMenu) *ppMenu = nullptr;
    return Edit([](EditScope&) { return KV_E_NO_SUCH_ID; });
}

HRESULT CKVProjectData::MoveMenu(LONG fromPos, LONG toPos)
{
    return MoveItem(m_menus, fromPos, toPos, kMenuEvents);
}

HRESULT CKVProjectData::InsertMenuW(LONG, IKVMenu* pMenu)
{
    return Edit([&](EditScope&) { return pMenu ? E_INVALIDARG : E_POINTER; });
}

HRESULT CKVProjectData::GetDataFile(LONG index, IKVDataFile** ppDataFile)
{
    return GetItem<CKVDataFile>(m_dataFiles, index, ppDataFile);
}

HRESULT CKVProjectData::AddDataFile(LONG index, IKVDataFile** ppDataFile)
{
    return AddItem<CKVDataFile>(m_dataFiles, index, ppDataFile, kDataFileEvents, [](CKVDataFile&) { return S_OK; });
}

HRESULT CKVProjectData::RemoveDataFile(LONG index, IKVDataFile** ppDataFile)
{
    if (ppDataFile) *ppDataFile = nullptr;
    return Edit([&](EditScope&) {
        const LONG at = index < 1 ? -1 : index - 1;
        return RemoveItem<CKVDataFile>(m_dataFiles, at, KV_E_BAD_POSITION, ppDataFile, kDataFileEvents);
    });
}

HRESULT CKVProjectData::RemoveDataFileBySource(BSTR bstrSrcPath, IKVDataFile** ppDataFile)
{
    if (ppDataFile) *ppDataFile = nullptr;
    return Edit([&](EditScope&) {
        for (LONG i = 0; i < m_dataFiles.ChildCount(); ++i) {
            auto* file = static_cast<CKVDataFile*>(m_dataFiles.GetChild(i));
            if (!file->HasSource(bstrSrcPath)) continue;
            if (!file->DropUser()) return S_FALSE;
            return RemoveItem<CKVDataFile>(m_dataFiles, i, KV_E_NO_SUCH_SOURCE, ppDataFile, kDataFileEvents);
        }
        return KV_E_NO_SUCH_SOURCE;
    });
}

HRESULT CKVProjectData::MoveDataFile(LONG fromPos, LONG toPos)
{
    return MoveItem(m_dataFiles, fromPos, toPos, kDataFileEvents);
}

HRESULT CKVProjectData::FindDataFile(BSTR bstrSrcPath, BSTR bstrDestPath, ULONG dwTag, IKVDataFile** ppDataFile)
{
    return Read([&] {
        if (!ppDataFile) return E_POINTER;
        *ppDataFile = nullptr;
        for (LONG i = 0; i < m_dataFiles.ChildCount(); ++i) {
            auto* file = static_cast<CKVDataFile*>(m_dataFiles.GetChild(i));
            if (file->Matches(bstrSrcPath, bstrDestPath, dwTag)) return ComPtr<IKVDataFile>(file).CopyTo(ppDataFile);
        }
        return KV_E_DATA_FILE_NOT_FOUND;
    });
}

HRESULT CKVProjectData::FindByID(LONG ID, IUnknown** ppUnkObj)
{
    return Read([&] {
        if (!ppUnkObj) return E_POINTER;
        *ppUnkObj = nullptr;
        for (const CKVList* list : {&m_titles, &m_menus, &m_dataFiles}) {
            if (CProjectNode* found = list->FindChildByID(ID)) return ComPtr(found->Identity()).CopyTo(ppUnkObj);
        }
        return KV_E_NO_SUCH_ID;
    });
}

HRESULT CKVProjectData::Clear()
{
    const DrivingUndo driving;
    return Edit([&](EditScope&) {
        if (m_undo.IsRestoring()) {
            // The document brings all settings that it holds; the others stay, and so does what can be undone.
            DropLists();
            return S_OK;
        }
        m_undo.DiscardAll();
        DropLists();
        m_settings = Settings{};
        m_dirty = false;
        m_events.EnableHeartbeat(true);
        return S_OK;
    });
}

// Documents

void CKVProjectData::Attributes(AttributeArchive& archive)
{
    archive("DiscSize", Enumeration(m_settings.discSize, kDiscSizeNames));
    archive.OnlyWrite("ID", static_cast<ULONG>(ID()));
    archive("TVStandard", Enumeration(m_settings.tvStandard, kTVStandardNames));
    archive("ThemeSource", m_settings.themeSource);
    archive.OnlyWrite("Version", static_cast<ULONG>(kDocumentVersion));
    archive("discFormat", Enumeration(m_settings.discFormat, kDiscFormatNames));
    archive("discVideoType", Enumeration(m_settings.discVideoType, kDiscVideoTypeNames));
    archive("doCompression", OneOrZero{m_settings.doCompression});
    archive("fitToDisc", OneOrZero{m_settings.fitToDisc});
    archive("label", m_settings.label);
    archive("menuless", m_settings.menuLess);
    archive("name", m_settings.displayName);
    archive("onDiscProject", OneOrZero{m_settings.isOnDisc});
    archive("onDiscSizeKB", m_settings.onDiscSizeKB);
    archive("options", Flags(m_settings.options, kProjectOptionNames));
    archive("remainingCaptures", m_settings.remainingCaptures);
    archive.OnlyRecord(m_settings.volumeName);
    archive.OnlyRecord(m_settings.targetType);
    archive.OnlyRecord(m_projectDirectory);
    archive.OnlyRecord(m_imagePath);
    archive.OnlyRecord(m_targetDrive);
}

CProjectNode* CKVProjectData::CreateItem(NodeType type, CProjectNode& parent)
{
    const auto adopt = [](CNodeList& list, CProjectNode& item) {
        list.Adopt(item, -1, false);
        return &item;
    };
    if (type == typeTitle && &parent == &m_titles) {
        if (CProjectNode* kept = m_undo.TakeKept(type)) {
            static_cast<CKVTitle*>(kept)->CommandList().DropAll();
            return adopt(m_titles, *kept);
        }
        const auto title = Make<CKVTitle>();
        title->SetStereoscopic(m_settings.discVideoType != Normal_2D);
        return adopt(m_titles, *title);
    }
    if (type == typeFile && &parent == &m_dataFiles) {
        if (CProjectNode* kept = m_undo.TakeKept(type)) return adopt(m_dataFiles, *kept);
        return adopt(m_dataFiles, *Make<CKVDataFile>());
    }
    if (type == typeCommand && parent.Type() == typeCmdList)
        return &static_cast<CKVCommandList&>(parent).AppendCommand();
    return nullptr;
}

HRESULT CKVProjectData::loadXML(IXMLDOMNode* pRootNode)
{
    const DrivingUndo driving;
    return Edit([&](EditScope&) {
        if (!pRootNode) return KV_E_NO_XML_NODE;
        const HRESULT cleared = Clear();
        if (FAILED(cleared)) return cleared;
        // What Clear keeps must not mix with what the document brings.
        Part<CKVCommandList>().DropAll();
        Part<CKVEncodingParams>().Reset();
        return CKVXMLDataLoader(*this, *this).Load(pRootNode);
    });
}

HRESULT CKVProjectData::SaveXML(IXMLDOMNode* pRootNode)
{
    return Read([&] {
        if (!pRootNode) return E_POINTER;
        return CXMLPersistor(pRootNode).Visit(*this, 0);
    });
}

// Undo

HRESULT CKVProjectData::BeginUndo(BSTR bsDesc)
{
    return m_undo.Begin(bsDesc);
}

HRESULT CKVProjectData::TakeUndoSnapshot(BSTR bsDesc)
{
    return m_undo.TakeSnapshot(bsDesc);
}

HRESULT CKVProjectData::EndUndo(VARIANT_BOOL bCommit)
{
    return m_undo.End(bCommit != VARIANT_FALSE);
}

HRESULT CKVProjectData::EndUndoEx(VARIANT_BOOL bCommit, VARIANT_BOOL bSbdHint)
{
    if (bSbdHint != VARIANT_FALSE) m_undo.MarkMajorChange();
    const HRESULT ended = EndUndo(bCommit);
    if (bCommit != VARIANT_FALSE) SetModified(false);
    return ended;
}

HRESULT CKVProjectData::UndoOperation()
{
    return m_undo.Undo();
}

HRESULT CKVProjectData::RedoOperation()
{
    return m_undo.Redo();
}

HRESULT CKVProjectData::GetUndoManager(IOleUndoManager** ppUndoMgr)
{
    return m_undo.GetManager(ppUndoMgr);
}

HRESULT CKVProjectData::BeginStoryboardUndo(IUnknown* pUnkSbd, ULONG)
{
    EngineCalls::Begin();
    return pUnkSbd ? kEngine.Checked(m_undo.BeginStoryboard(pUnkSbd), "OpenUndoBlock()")
                   : kEngine.NullArgument("pUnkSbd");
}

HRESULT CKVProjectData::get_UndoEnable(VARIANT_BOOL* pVal)
{
    return m_undo.CanUndo(pVal);
}

HRESULT CKVProjectData::get_RedoEnable(VARIANT_BOOL* pVal)
{
    return m_undo.CanRedo(pVal);
}

// Other operations

HRESULT CKVProjectData::BroadcastMessage(LONG code, LONG param1, LONG param2)
{
    constexpr LONG kMajorChange = 4;
    return Read([&] {
        if (code == kMajorChange) {
            FireEvent(EVENT_MajorProjectChange, 0, 0, 0);
        } else {
            FireEvent(EVENT_MessageBroadcast, code, param1, param2);
        }
        return S_OK;
    });
}

HRESULT CKVProjectData::EnableHeartBeatEvent(VARIANT_BOOL bEnable)
{
    m_events.EnableHeartbeat(bEnable != VARIANT_FALSE);
    return S_OK;
}

HRESULT CKVProjectData::SetSaveThemeMode(LONG mode)
{
    SharedEffectState().saveThemeMode = mode;
    return S_OK;
}

HRESULT CKVProjectData::ResetStaticData()
{
    const DrivingUndo driving;
    SharedUndoContext().manager.Reset();
    return S_OK;
}

} // namespace kv
