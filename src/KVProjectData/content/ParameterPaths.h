#pragma once
// Paths within the parameter documents of effects, as they stand in a project's document: the picture of an overlay
// ("alphaFile") and the mask file of a parameter set.

#include "KVProjectData/Engine/Persist.h"
#include "platform/xml/Element.h"

#include <string>

namespace kv {

/// Translates those below an element, where they stand. Throws Error, as `paths` fails.
void ParameterPathsToDocument(const XmlElement& element, IZXEContentPaths& paths);
/// The same of an element that is markup in one line.
void ParameterPathsToDocument(std::string& markup, IZXEContentPaths& paths);

/// The element with its paths as they are used: a copy, unless there is nothing to translate. Throws Error, as `paths`
/// fails.
XmlElement ParameterPathsFromDocument(const XmlElement& element, IZXEContentPaths& paths);

} // namespace kv
