#include "engine/render/Look.h"

#include "KVProjectData/Engine/Parameters.h"

namespace kv {
namespace {

XmlElement PlugInDataOf(const XmlElement& document)
{
    const XmlElement data = document.Child("plugin_data");
    return data ? data : document;
}

KeyFrames<3> ReadVectors(const XmlElement& data, const char* channel)
{
    return ReadKeyFrames<3>(data.Child(channel), "Vector", {"x", "y", "z"});
}

Placement ReadPlacement(const XmlElement& data)
{
    return {ReadVectors(data, "Translation"), ReadVectors(data, "Rotation"), ReadVectors(data, "Scaling"),
            ReadKeyFrames<1>(data.Child("Opacity"), "Value", {nullptr}), ReadVectors(data, "Handles")};
}

KeyFrames<4> ReadCrop(const XmlElement& data)
{
    const XmlElement crop = data.Child("Crop");
    // Beside the rectangle it counts before the one of the whole effect.
    if (!crop.Typed("CropMode", data.Typed("CropMode", false))) return {};
    return ReadKeyFrames<4>(crop, "fRect", {"left", "top", "right", "bottom"});
}

void ReadMaskSize(Look& look, const XmlElement& data)
{
    for (const XmlElement& parameter : data.Child("ParameterSet").Children("Parameter")) {
        const auto id = parameter.Typed<ULONG>("ParamID");
        if (id == ZXP_PARAM_MASK_WIDTH) look.maskWidth = parameter.Typed("Value", 0.0);
        if (id == ZXP_PARAM_MASK_HEIGHT) look.maskHeight = parameter.Typed("Value", 0.0);
    }
}

} // namespace

Look ReadLook(const XmlElement& document)
{
    const XmlElement data = PlugInDataOf(document);
    Look look;
    if (!data) return look;
    look.placement = ReadPlacement(data);
    look.crop = ReadCrop(data);
    ReadMaskSize(look, data);
    if (data.Child("html").Child("body")) {
        look.text = std::make_shared<TextLayout>(ReadRichText(data.View()), kTextFrameHeight);
    }
    return look;
}

} // namespace kv
