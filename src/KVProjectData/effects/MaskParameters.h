#pragma once
// The parameters that tell of an overlay's mask.

#include "platform/xml/Element.h"

namespace kv {

/// Names the file of the mask, or none by an empty name, and the effect that goes with it. Throw Error for parameters
/// that cannot be read; then nothing has changed.
void SetMaskParameters(XmlElement& pluginData, std::u16string_view file);

/// The size. False, and nothing is changed, when it is that already. Throws Error(E_INVALIDARG), too, unless finite.
bool SetMaskParameters(XmlElement& pluginData, double width, double height);

/// False, and nothing is read, where no size is told. Throws Error for parameters that cannot be read.
bool ReadMaskSize(const XmlElement& pluginData, double& width, double& height);

} // namespace kv
