#pragma once
// Paths within the parameter documents of effects, as they stand in a project's document: the picture of an overlay
// ("alphaFile") and the mask file of a parameter set.

#include "KVProjectData/Engine/Persist.h"
#include "platform/xml/Element.h"

#include <string>
#include <utility>
#include <vector>

namespace kv {

/// Translates those below an element, where they stand. Throws Error, as `paths` fails.
void ParameterPathsToDocument(const XmlElement& element, IZXEContentPaths& paths);
/// The same of an element that is markup in one line.
void ParameterPathsToDocument(std::string& markup, IZXEContentPaths& paths);

/// Texts below an element, and others for their places.
using ParameterTexts = std::vector<std::pair<XmlView, std::string>>;
void ExchangeTexts(const XmlElement& element, ParameterTexts& texts);

/// The other way round. What stood there is given back, for an exchange with it. Throws Error, as `paths` fails; then
/// nothing has changed.
ParameterTexts ParameterPathsFromDocument(const XmlElement& element, IZXEContentPaths& paths);

} // namespace kv
