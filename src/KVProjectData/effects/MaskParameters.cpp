#include "KVProjectData/effects/MaskParameters.h"

#include "KVProjectData/effects/ZXPGenericParamSetImpl.h"

#include <cmath>

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

bool IsNumber(const Variant& value, double number)
{
    Variant converted;
    return SUCCEEDED(VariantChangeType(converted.Put(), &value, 0, VT_R8)) && converted.dblVal == number;
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
    if (IsNumber(parameters.Value(ZXP_PARAM_MASK_WIDTH), width) &&
        IsNumber(parameters.Value(ZXP_PARAM_MASK_HEIGHT), height))
        return false;
    parameters.SetValue(ZXP_PARAM_MASK_WIDTH, Variant(width));
    parameters.SetValue(ZXP_PARAM_MASK_HEIGHT, Variant(height));
    parameters.Save(pluginData);
    return true;
}

} // namespace kv
