#include "engine/render/Scene.h"

namespace kv {
namespace {

KeyFrames<3> ReadVectors(const XmlElement& plugInData, const char* channel)
{
    return ReadKeyFrames<3>(plugInData.Child(channel), "Vector", {"x", "y", "z"});
}

} // namespace

XmlElement PlugInDataOf(const XmlElement& document)
{
    constexpr std::string_view kPlugInData = "plugin_data";
    return !document || document.Name() == kPlugInData ? document : document.Child(kPlugInData);
}

bool IsText(const XmlElement& plugInData)
{
    return static_cast<bool>(plugInData.Child("html"));
}

Placement ReadPlacement(const XmlElement& plugInData)
{
    return {ReadVectors(plugInData, "Translation"), ReadVectors(plugInData, "Rotation"),
            ReadVectors(plugInData, "Scaling"), ReadKeyFrames<1>(plugInData.Child("Opacity"), "Value", {nullptr}),
            ReadVectors(plugInData, "Handles")};
}

KeyFrames<4> ReadCrop(const XmlElement& element)
{
    const XmlElement crop = element.Child("Crop");
    // Written beside the rectangle, or with it.
    if (!element.Typed("CropMode", crop.Typed("CropMode", true))) return {};
    return ReadKeyFrames<4>(crop, "fRect", {"left", "top", "right", "bottom"});
}

void ReadMaskSize(Picture& picture, const XmlElement& plugInData)
{
    for (const XmlElement& parameter : plugInData.Child("ParameterSet").Children("Parameter")) {
        constexpr ULONG kMaskWidth = 52;
        constexpr ULONG kMaskHeight = 53;
        const ULONG id = parameter.Typed<ULONG>("ParamID", 0);
        if (id == kMaskWidth) picture.maskWidth = parameter.Typed("Value", 0.0);
        if (id == kMaskHeight) picture.maskHeight = parameter.Typed("Value", 0.0);
    }
}

} // namespace kv
