#include "KVProjectData/project/ProjectData.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/Menu.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/persistence/XMLDataLoader.h"
#include "KVProjectData/persistence/XMLPersistor.h"
#include "KVProjectData/titles/DataFile.h"
#include "KVProjectData/titles/Title.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {

HRESULT CKVProjectData::Clear()
{
    const DrivingUndo driving;
    return Edit([&](EditScope&) {
        m_undo.DiscardAll();
        DropLists();
        m_settings = Settings{};
        m_keptProductions = {};
        {
            const SectionLock links(ParentLinks());
            m_names.clear();
        }
        m_dirty = false;
        m_events.EnableHeartbeat(true);
        return S_OK;
    });
}

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

CProjectNode* CKVProjectData::AppendItem(CKVList& list)
{
    const auto append = [&list](CProjectNode& item) {
        list.Adopt(item, -1, false);
        return &item;
    };
    if (&list == &m_titles) {
        const auto title = Make<CKVTitle>();
        title->SetStereoscopic(m_settings.discVideoType != Normal_2D);
        return append(*title);
    }
    if (&list == &m_menus) {
        const auto menu = Make<CKVMenu>();
        // One that the engine makes no production for is as it would be in native form.
        menu->Initialise();
        return append(*menu);
    }
    if (&list == &m_dataFiles) return append(*Make<CKVDataFile>());
    return nullptr;
}

HRESULT CKVProjectData::loadXML(IXMLDOMNode* pRootNode)
{
    const DrivingUndo driving;
    return Edit([&](EditScope&) {
        EngineCalls::Begin();
        if (!pRootNode) return KV_E_NO_XML_NODE;
        const HRESULT cleared = Clear();
        if (FAILED(cleared)) return cleared;
        // What Clear keeps must not mix with what the document brings.
        Part<CKVCommandList>().DropAll();
        Part<CKVEncodingParams>().Reset();
        const HRESULT loaded = CKVXMLDataLoader(*this).Load(pRootNode);
        for (LONG i = 0; i < m_menus.ChildCount(); ++i)
            if (auto* menu = dynamic_cast<CKVMenu*>(m_menus.GetChild(i))) menu->TakeLoadedAspect();
        // In an open step what follows is undone to what the document brought.
        const HRESULT opened = Guarded([this] { return m_undo.OpenMenus(); });
        return FAILED(loaded) ? loaded : FAILED(opened) ? opened : S_OK;
    });
}

HRESULT CKVProjectData::SaveXML(IXMLDOMNode* pRootNode)
{
    return Read([&] {
        if (!pRootNode) return E_POINTER;
        return CXMLPersistor(pRootNode).Visit(*this, 0);
    });
}

XmlElement CKVProjectData::KeptProductions()
{
    const SectionLock lock(Section());
    return m_keptProductions;
}

KnownNames CKVProjectData::Names()
{
    const SectionLock links(ParentLinks());
    return m_names;
}

void CKVProjectData::KeepNames(KnownNames names)
{
    const SectionLock links(ParentLinks());
    names.merge(m_names);
    m_names.swap(names);
}

std::u16string CKVProjectData::FullPathOf(std::u16string_view path)
{
    if (!IsRelative(path)) return std::u16string(path);
    const SectionLock links(ParentLinks());
    const auto known = m_names.find(path);
    return known == m_names.end() ? std::u16string(path) : known->second;
}

void CKVProjectData::KeepProductions(XmlElement kept)
{
    const SectionLock lock(Section());
    m_keptProductions = std::move(kept);
}

} // namespace kv
