#pragma once
// A title: its authoring properties, and its link to a production of the storyboard engine.

#include "KVProjectData/Engine.h"
#include "KVProjectData/IKVTitle.h"
#include "KVProjectData/persistence/AttributeArchive.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/titles/EncodingParams.h"
#include "KVProjectData/titles/TitleSink.h"
#include "KVProjectData/tree/Locking.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

#include <mutex>

namespace kv {

class CKVTitle final : public ArchivedNode<CKVTitle>,
                       public Object<Dual<IKVTitle>, ProductionSink>,
                       private ProductionAspect {
public:
    CKVTitle();

    HRESULT get_ID(LONG* pVal) override;
    HRESULT get_Tag(ULONG* pVal) override;
    HRESULT put_Tag(ULONG newVal) override;
    HRESULT get_Source(BSTR* pVal) override;
    HRESULT put_Source(BSTR newVal) override;
    HRESULT get_StillWaitTime(LONG* pVal) override;
    HRESULT put_StillWaitTime(LONG newVal) override;
    HRESULT get_Flags(ULONG* pVal) override;
    HRESULT put_Flags(ULONG newVal) override;
    HRESULT get_IsDirty(VARIANT_BOOL* pVal) override;
    HRESULT put_IsDirty(VARIANT_BOOL newVal) override;
    HRESULT get_DiscIndex(LONG* pVal) override;
    HRESULT put_DiscIndex(LONG newVal) override;
    HRESULT get_Label(BSTR* pVal) override;
    HRESULT put_Label(BSTR newVal) override;
    HRESULT get_VOBDuration(ULONG* pVal) override;
    HRESULT put_VOBDuration(ULONG newVal) override;
    HRESULT get_VOBSize(double* pVal) override;
    HRESULT put_VOBSize(double newVal) override;
    HRESULT GetProduction(IUnknown** ppProduction) override;
    HRESULT SetProduction(IUnknown* pProduction) override;
    HRESULT GetProject(IKVProjectData** ppProject) override;
    HRESULT get_IsResolved(VARIANT_BOOL* pVal) override;
    HRESULT put_IsResolved(VARIANT_BOOL newVal) override;
    HRESULT GetSourceFromProd(BSTR* pbstrSource) override;

    CKVEncodingParams& EncodingParams() { return *m_encodingParams.Get(); }
    CKVCommandList& CommandList() { return *m_commandList.Get(); }
    /// TitleTypes flags.
    ULONG Types();
    /// Handed to the production when the title creates it.
    void SetStereoscopic(bool stereoscopic) { m_stereoscopic = stereoscopic; }
    /// Empty while the title has no production.
    ComPtr<IZXEProductionData> ProductionData();

    IUnknown* Identity() override { return Controlling(); }

    template <class Archive>
    void Attributes(Archive& archive);

protected:
    HRESULT FindInterface(REFIID iid, void** out) override;
    void FinalRelease() override;
    void FirePropertyChanged(DISPID propId) override;
    /// A callback of the production becomes an event of the project.
    void ProductionChanged(LONG event, LONG param) override;

private:
    AspectRatio AspectFromProduction() override;
    HRESULT AspectToProduction(AspectRatio aspect) override;

    /// The production that is held; empty without one. Needs no section of the title's.
    ComPtr<IUnknown> Production();
    void HoldProduction(ComPtr<IUnknown> production);
    HRESULT CreateProduction();
    HRESULT ConnectSink();
    /// Without a connection nothing happens.
    HRESULT DisconnectSink();
    ComPtr<IProductionInfo> ProductionInfo();

    ULONG m_tag = TitleType_Normal;
    ULONG m_flags = 0;
    Bstr m_source;
    Bstr m_label;
    LONG m_discIndex = 0;
    LONG m_stillWaitSecs = 5;
    bool m_dirty = false;
    bool m_resolved = false;
    bool m_stereoscopic = false;
    ULONG m_vobDuration = 0;
    double m_vobSize = 0.0;
    Aggregated<CKVEncodingParams> m_encodingParams;
    Aggregated<CKVCommandList> m_commandList;
    Aggregated<CKVLocking> m_locking;
    /// Guards the pointer alone: encoding parameters read it inside their own section.
    std::mutex m_productionGuard;
    ComPtr<IUnknown> m_production;
    /// Made with the first connection.
    ComPtr<TitleSink> m_sink;
    DWORD m_adviseCookie = 0;
};

} // namespace kv
