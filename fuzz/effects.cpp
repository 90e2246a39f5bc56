// A parameter document, a zero byte, and any bytes as edits of it: what was edited and saved loads as it was, and the
// effect of a production that has the document answers what was set, until undo takes it back.

#include "Choices.h"
#include "Fuzz.h"
#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/effects/NXEffect.h"
#include "KVProjectData/effects/ZXPGenericParamSetImpl.h"
#include "KVProjectData/effects/ZXPPlugInHelper.h"

#include <array>
#include <cmath>

namespace kv::fuzz {
namespace {

constexpr int kEdits = 200;

/// Numbers of which some come by again, and some are none.
template <class Real>
Real Number(Choices& choices)
{
    const std::size_t kind = choices.Below(8);
    if (kind == 0) return choices.Take<Real>();
    return static_cast<Real>(choices.Take<std::int8_t>()) / static_cast<Real>(kind == 1 ? 3 : 4);
}

ULONG Channel(Choices& choices)
{
    constexpr std::array kChannels{ZXP_TRANSLATION, ZXP_ROTATION,     ZXP_SCALING, ZXP_OPACITY,
                                   ZXP_HANDLES,     ZXP_ALL_CHANNELS, 3U};
    return kChannels[choices.Below(kChannels.size())];
}

ULONG List(Choices& choices)
{
    constexpr std::array kLists{ZXP_FROM_START, ZXP_FROM_END, ZXP_PERCENT, 3U};
    return kLists[choices.Below(kLists.size())];
}

/// All parts of a document.
struct Parts {
    CZXPPlugInHelper helper;
    CZXPGenericParamSetImpl parameters;

    bool Load(const XmlElement& pluginData)
    {
        return SUCCEEDED(helper.Load(pluginData)) && SUCCEEDED(Guarded([&] {
                   parameters.Load(pluginData);
                   return S_OK;
               }));
    }

    XmlElement Saved()
    {
        XmlElement pluginData;
        Require(helper.Save(pluginData) == S_OK, "what was loaded is saved");
        parameters.Save(pluginData);
        return pluginData;
    }

    /// What they hold, without anything else that stands in the document.
    std::string State()
    {
        XmlElement state = XmlElement::New("state");
        helper.Transform().Save(state);
        helper.CropSource().Save(state);
        parameters.Save(state);
        return state.Markup();
    }
};

void EditTransform(IZXPTransform& transform, Choices& choices)
{
    const ULONG channel = Channel(choices);
    const ULONG list = List(choices);
    const auto time = Number<double>(choices);
    switch (choices.Below(10)) {
    case 0:
        transform.MoveKey(channel, list, time, Number<double>(choices));
        break;
    case 1:
        transform.DeleteKey(channel, list, time);
        break;
    case 2:
        transform.ClearChannels(channel);
        break;
    case 3:
        transform.ShiftKeys(time);
        break;
    case 4:
        transform.put_PathID(list, choices.Take<ULONG>());
        transform.put_Speed(time);
        break;
    case 5:
        transform.SetDelta(channel, Number<float>(choices), Number<float>(choices), Number<float>(choices));
        transform.put_IsSelectable(static_cast<VARIANT_BOOL>(channel & 1));
        transform.put_Caps(channel);
        break;
    default:
        transform.SetKeyValue(channel, time, list, Number<float>(choices), Number<float>(choices),
                              Number<float>(choices), choices.Take<ULONG>());
    }
}

void EditCrop(IZXPCropSource& crop, Choices& choices)
{
    const ULONG list = List(choices);
    const auto time = Number<double>(choices);
    switch (choices.Below(8)) {
    case 0:
        crop.MoveKey(list, time, Number<double>(choices));
        break;
    case 1:
        crop.DeleteKey(list, time);
        break;
    case 2:
        crop.ClearKeys();
        break;
    case 3:
        crop.ShiftKeys(time);
        break;
    case 4:
        crop.put_EditMode(choices.Take<std::uint8_t>());
        crop.put_PresetID(choices.Take<std::uint8_t>());
        crop.put_CropMode(static_cast<VARIANT_BOOL>(choices.Below(2)));
        break;
    default:
        crop.SetKeyRect(
            time, list,
            {Number<float>(choices), Number<float>(choices), Number<float>(choices), Number<float>(choices)},
            choices.Take<ULONG>());
    }
}

void EditParameters(CZXPGenericParamSetImpl& parameters, Choices& choices)
{
    const ULONG id = choices.Take<std::uint8_t>();
    const Variant value = choices.Below(2) ? Variant(Number<double>(choices)) : Variant(choices.Take<LONG>());
    // A number that is none cannot be written.
    if (value.vt == VT_R8 && !std::isfinite(value.dblVal)) return;
    if (parameters.Has(id)) return parameters.SetValue(id, value);
    Parameter parameter;
    parameter.id = id;
    parameter.value = value;
    parameter.usage = id;
    parameters.Add(std::move(parameter));
}

void EditParts(const XmlElement& pluginData, Choices choices)
{
    const std::string before = pluginData.Markup();
    Parts parts;
    const bool loaded = parts.Load(pluginData);
    Require(pluginData.Markup() == before, "loading leaves the document");
    if (!loaded) return;
    for (int i = 0; i < kEdits && choices.Any(); ++i) {
        const std::size_t kind = choices.Below(3);
        if (kind == 0) EditTransform(parts.helper.Transform(), choices);
        if (kind == 1) EditCrop(parts.helper.CropSource(), choices);
        if (kind == 2) EditParameters(parts.parameters, choices);
    }
    const std::string state = parts.State();
    // Elements find their order when they are saved for the second time.
    parts.Saved();
    const std::string saved = parts.Saved().Markup();
    Parts again;
    Require(again.Load(XmlElement::Parse(saved)), "what was saved loads");
    Require(again.State() == state, "what was saved loads as it was");
    Require(again.Saved().Markup() == saved, "and is saved as it was");
}

std::string MarkupOf(const CNXEffect& effect)
{
    ComPtr<IXMLDOMNode> document;
    Require(effect.getDocument(document) == S_OK, "the effect has its document");
    return XmlElement(document.Get()).Markup();
}

bool IsEqual(const ZXPVector& left, const ZXPVector& right)
{
    return left.x == right.x && left.y == right.y && left.z == right.z;
}

/// One edit through the wrapper. What was set is answered; whatever failed has changed nothing.
void EditEffect(CNXEffect& effect, Choices& choices)
{
    const std::string before = MarkupOf(effect);
    HRESULT result = S_OK;
    if (choices.Below(4)) {
        const ULONG channel = Channel(choices);
        const ULONG list = List(choices);
        const auto time = Number<double>(choices);
        const ZXPVector value{Number<float>(choices), Number<float>(choices), Number<float>(choices)};
        ZXPVector answer{};
        result = effect.setChannel(channel, time, list, value);
        if (SUCCEEDED(result) && channel != ZXP_OPACITY)
            Require(effect.getChannel(channel, time, list, answer) == S_OK && IsEqual(answer, value), "it was set");
    } else if (choices.Below(2)) {
        const auto width = Number<double>(choices);
        result = effect.setMaskSize(width, Number<double>(choices));
    } else {
        result = effect.setMaskFile(Bstr(choices.Text()).Get());
    }
    Require(SUCCEEDED(result) || MarkupOf(effect) == before, "a failure changes nothing");
}

void EditInProduction(const XmlElement& document, Choices choices)
{
    const auto production = Create<IZXEProductionData>(CLSID_ZXEProduction);
    CNXEffect effect;
    production->Initialise();
    if (FAILED(effect.Create(production.Get(), ZXE_EFFECT_OVERLAY, 1, document.Get()))) return;
    const std::string before = MarkupOf(effect);
    production->OpenUndoBlock();
    for (int i = 0; i < kEdits && choices.Any(); ++i)
        EditEffect(effect, choices);
    const std::string after = MarkupOf(effect);
    production->CloseUndoBlock(VARIANT_TRUE);
    if (SUCCEEDED(production->Undo())) {
        Require(MarkupOf(effect) == before, "undo brings the first document back");
        Require(SUCCEEDED(production->Redo()) && MarkupOf(effect) == after, "redo brings the last one");
    }
    production->Close();
}

void EditDocument(Choices choices)
{
    Guarded([&] {
        const XmlElement document = XmlElement::Parse(std::string(choices.Line()));
        const XmlElement pluginData = document.Child("plugin_data");
        EditParts(pluginData ? pluginData : document, choices);
        EditInProduction(document, choices);
        return S_OK;
    });
}

} // namespace
} // namespace kv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kv::fuzz::PrepareHost();
    kv::fuzz::EditDocument(kv::fuzz::Choices(data, size));
    return 0;
}
