#include "KVProjectData/effects/MaskParameters.h"

#include "KVProjectData/effects/ZXPGenericParamSetImpl.h"

#include <cmath>
#include <optional>

namespace kv {
namespace {

Parameter Declared(ULONG id, const char* name, Variant value)
{
    Parameter parameter;
    parameter.id = id;
    parameter.name = name;
    parameter.value = std::move(value);
    return parameter;
}

std::optional<double> NumberOf(const Variant& value)
{
    Variant converted;
    const bool isNumber = SUCCEEDED(VariantChangeType(converted.Put(), &value, 0, VT_R8));
    return isNumber ? std::optional(converted.dblVal) : std::nullopt;
}

} // namespace

void SetMaskParameters(XmlElement& pluginData, std::u16string_view file)
{
    const LONG effect = file.empty() ? ZXP_EFFECT_WITHOUT_MASK : ZXP_EFFECT_WITH_MASK;
    CZXPGenericParamSetImpl parameters;
    parameters.Add(Declared(ZXP_PARAM_EFFECT_ID, "Effect ID", Variant(ZXP_EFFECT_WITHOUT_MASK)));
    parameters.Add(Declared(ZXP_PARAM_MASK_FILE, "Mask File", Variant(std::u16string_view())));
    parameters.Load(pluginData);
    parameters.SetValue(ZXP_PARAM_EFFECT_ID, Variant(effect));
    parameters.SetValue(ZXP_PARAM_MASK_FILE, Variant(file));
    parameters.Save(pluginData);
}

bool SetMaskParameters(XmlElement& pluginData, double width, double height)
{
    if (!std::isfinite(width) || !std::isfinite(height)) throw Error(E_INVALIDARG);
    CZXPGenericParamSetImpl parameters;
    parameters.Load(pluginData);
    const auto declare = [&parameters](ULONG id, const char* name) {
        if (!parameters.Has(id)) parameters.Add(Declared(id, name, Variant(0.0)));
    };
    declare(ZXP_PARAM_MASK_WIDTH, "Mask Width");
    declare(ZXP_PARAM_MASK_HEIGHT, "Mask Height");
    if (NumberOf(parameters.Value(ZXP_PARAM_MASK_WIDTH)) == width &&
        NumberOf(parameters.Value(ZXP_PARAM_MASK_HEIGHT)) == height)
        return false;
    parameters.SetValue(ZXP_PARAM_MASK_WIDTH, Variant(width));
    parameters.SetValue(ZXP_PARAM_MASK_HEIGHT, Variant(height));
    parameters.Save(pluginData);
    return true;
}

bool ReadMaskSize(const XmlElement& pluginData, double& width, double& height)
{
    CZXPGenericParamSetImpl parameters;
    parameters.Load(pluginData);
    if (!parameters.Has(ZXP_PARAM_MASK_WIDTH) || !parameters.Has(ZXP_PARAM_MASK_HEIGHT)) return false;
    const auto x = NumberOf(parameters.Value(ZXP_PARAM_MASK_WIDTH));
    const auto y = NumberOf(parameters.Value(ZXP_PARAM_MASK_HEIGHT));
    if (!x || !y) return false;
    width = *x;
    height = *y;
    return true;
}

} // namespace kv
