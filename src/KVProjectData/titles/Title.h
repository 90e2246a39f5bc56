#pragma once
// A title: its authoring properties, and its link to a production of the storyboard engine.

#include "KVProjectData/Engine.h"
#include "KVProjectData/IKVTitle.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/titles/EncodingParams.h"
#include "KVProjectData/titles/TitleSink.h"
#include "KVProjectData/tree/Locking.h"
#include "KVProjectData/tree/ProductionOwner.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Aggregate.h"

#include <mutex>

namespace kv {

class CKVTitle final
    : public CProjectNode,
      public ProductionOwner,
      public Aggregate<Parts<CKVEncodingParams, CKVCommandList, CKVLocking>, Dual<IKVTitle>, ProductionSink>,
      private ProductionAspect {
public:
    CKVTitle();

    KV_GETTER(LONG, ID, ID())
    KV_PROPERTY(ULONG, Tag, m_tag, Undo, Fires(2))
    KV_PROPERTY(BSTR, Source, m_source)
    KV_GETTER(LONG, StillWaitTime, m_stillWaitSecs)
    HRESULT put_StillWaitTime(LONG newVal) override;
    KV_PROPERTY(ULONG, Flags, m_flags, Undo, Fires(3))
    KV_GETTER(VARIANT_BOOL, IsDirty, m_dirty)
    HRESULT put_IsDirty(VARIANT_BOOL newVal) override;
    KV_GETTER(LONG, DiscIndex, m_discIndex)
    HRESULT put_DiscIndex(LONG newVal) override;
    KV_PROPERTY(BSTR, Label, m_label, Undo)
    KV_PROPERTY(ULONG, VOBDuration, m_vobDuration, Undo)
    KV_GETTER(double, VOBSize, m_vobSize)
    HRESULT put_VOBSize(double newVal) override;
    HRESULT GetProduction(IUnknown** ppProduction) override;
    HRESULT SetProduction(IUnknown* pProduction) override;
    HRESULT GetProject(IKVProjectData** ppProject) override;
    KV_PROPERTY(VARIANT_BOOL, IsResolved, m_resolved)
    HRESULT GetSourceFromProd(BSTR* pbstrSource) override;

    CKVEncodingParams& EncodingParams() { return Part<CKVEncodingParams>(); }
    CKVCommandList& CommandList() { return Part<CKVCommandList>(); }
    /// TitleTypes flags.
    ULONG Types();
    /// Handed to the production when the title creates it.
    void SetStereoscopic(bool stereoscopic) { m_stereoscopic = stereoscopic; }
    /// Empty while the title has no production.
    ComPtr<IZXEProductionData> ProductionData();

    std::vector<OwnedProduction> Productions() override;
    HRESULT TakeProduction(std::string_view name, IUnknown* production) override;
    ProductionOwner* Owner() override { return this; }

    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive& archive) override;

protected:
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
    /// Disconnects and closes the production, which stays with the title.
    HRESULT LeaveProduction();
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
    /// Guards the pointer alone: encoding parameters read it inside their own section.
    std::mutex m_productionGuard;
    ComPtr<IUnknown> m_production;
    /// Made with the first connection.
    ComPtr<TitleSink> m_sink;
    DWORD m_adviseCookie = 0;
};

} // namespace kv
