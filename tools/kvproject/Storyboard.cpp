#include "Storyboard.h"

#include "Failure.h"
#include "KVProjectData/Engine.h"
#include "platform/com/Activation.h"

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Query;
using kv::Variant;

ComPtr<IZXEProductionData> ProductionOf(IKVTitle& title)
{
    ComPtr<IUnknown> production;
    Require(title.GetProduction(production.Put()), "the title has no production");
    auto data = Query<IZXEProductionData>(production);
    if (!data) throw Failure("the title has a production of another engine");
    return data;
}

/// Of what is known; 0 stands for what is not.
Variant Known(HRESULT result, double value)
{
    return SUCCEEDED(result) && value > 0.0 ? Variant(value) : Variant();
}

struct Size {
    Variant width;
    Variant height;
};

/// In pixels, of a clip that can be read.
Size MeasureClip(const kv::Bstr& clip)
{
    ComPtr<IZXMediaInformation> information;
    ULONG width = 0;
    ULONG height = 0;
    double frameRate = 0.0;
    if (FAILED(kv::CreateInstance(CLSID_ZXMediaInformation, information)) || FAILED(information->Open(clip.Get())))
        return {};
    for (const LONG kind : {ZXM_STREAM_VIDEO, ZXM_STREAM_PICTURE}) {
        if (SUCCEEDED(information->GetVideoProperties(kind, 0, &width, &height, &frameRate)))
            return {Variant(width), Variant(height)};
    }
    return {};
}

} // namespace

std::vector<std::pair<std::string_view, Variant>> StoryboardOf(IKVTitle& title)
{
    const auto data = ProductionOf(title);
    kv::Bstr source;
    LONG panels = 0;
    Require(title.GetSourceFromProd(source.Put()), "the sources of the title cannot be read");
    Require(data->GetPanelCount(&panels), "the panels of the title cannot be counted");
    Size size = source.Empty() ? Size() : MeasureClip(source);

    ComPtr<IUnknown> object;
    data->GetProductionObj(object.Put());
    Variant length;
    Variant frameRate;
    Variant aspectRatio;
    if (const auto info = Query<IProductionInfo>(object)) {
        const auto read = [&info](HRESULT (IProductionInfo::*getter)(double*)) {
            double value = 0.0;
            const HRESULT result = ((*info).*getter)(&value);
            return Known(result, value);
        };
        length = read(&IProductionInfo::get_Duration);
        frameRate = read(&IProductionInfo::get_EditingFrameRate);
        aspectRatio = read(&IProductionInfo::get_AspectRatio);
    }
    std::array<Variant, kProductionMembers.size()> values{source.Empty() ? Variant() : Variant(source.View()),
                                                          std::move(size.width),
                                                          std::move(size.height),
                                                          std::move(length),
                                                          std::move(frameRate),
                                                          std::move(aspectRatio),
                                                          Variant(panels)};
    std::vector<std::pair<std::string_view, Variant>> members;
    for (std::size_t i = 0; i < values.size(); ++i)
        members.emplace_back(kProductionMembers[i], std::move(values[i]));
    return members;
}

void PutIntoStoryboard(IKVTitle& title, const std::string& clip)
{
    const kv::Bstr source(kv::ToUtf16(clip));
    const auto edit = Query<IEditData>(ProductionOf(title).Get());
    Require(edit ? edit->AddSourceFile(0, source.Get(), 0.0, 0.0, -1, nullptr) : E_NOINTERFACE,
            "cannot put " + clip + " into the title");
}

void AddStoryboard(IUnknown* production, IXMLDOMElement& parent)
{
    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMElement> place;
    // An engine that makes or writes none has nothing to compare.
    const auto persist = Query<IZXEProductionPersist>(production);
    if (!persist) return;
    Require(parent.get_ownerDocument(document.Put()), "cannot write the project");
    Require(document->createElement(kv::Bstr(u"Storyboard").Get(), place.Put()), "cannot write the project");
    Require(parent.appendChild(place.Get(), nullptr), "cannot write the project");
    Require(persist->Save(place.Get(), nullptr), "cannot write what a title or a menu shows");
}

void JoinStep(IKVProjectData& project, IKVTitle& title)
{
    LONG id = 0;
    Require(title.get_ID(&id), "cannot join the step");
    const HRESULT joined = project.BeginStoryboardUndo(ProductionOf(title).Get(), static_cast<ULONG>(id));
    // The step of a snapshot is closed already.
    if (joined == S_FALSE) throw Failure("what a title shows is no part of a snapshot; begin opens a step for it");
    if (joined != ZXE_E_UNDO_BLOCK_OPEN) Require(joined, "cannot join the step");
}

HRESULT TryStoryboard(IXMLDOMElement* element)
{
    ComPtr<IZXEProductionData> production;
    const HRESULT created = kv::CreateInstance(CLSID_ZXEProduction, production);
    if (FAILED(created)) return created;
    const HRESULT initialised = production->Initialise();
    if (FAILED(initialised)) return initialised;
    const auto persist = Query<IZXEProductionPersist>(production);
    const HRESULT loaded = persist ? persist->Load(element, nullptr) : E_NOINTERFACE;
    production->Close();
    return loaded;
}

} // namespace kvproject
