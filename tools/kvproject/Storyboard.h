#pragma once
// What the productions of titles show, as a person reads it.

#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/IKVTitle.h"
#include "platform/automation/Variant.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kvproject {

/// The part of a title that its production is shown as.
inline constexpr std::string_view kProductionPart = "Production";

/// What is told of a production.
inline constexpr std::array<std::string_view, 7> kProductionMembers{"Source",    "Width",       "Height", "Length",
                                                                    "FrameRate", "AspectRatio", "Panels"};

/// The members with their values; VT_EMPTY for what is not known. A title without a production is given one, which no
/// file holds until it is edited. Throws Failure when the engine makes none.
std::vector<std::pair<std::string_view, kv::Variant>> StoryboardOf(IKVTitle& title);

/// Appends a clip, by its full path, to the production of a title. Throws Failure.
void PutIntoStoryboard(IKVTitle& title, const std::string& clip);

/// Adds what a production holds, if there is one, to an element, for comparison.
void AddStoryboard(IUnknown* production, IXMLDOMElement& parent);

/// Has the production of a title take part in the step that is open, once. A title without one is given one. Throws
/// Failure.
void JoinStep(IKVProjectData& project, IKVTitle& title);

/// Whether the engine reads an element that a production was saved into, and its result where it does not.
HRESULT TryStoryboard(IXMLDOMElement* element);

} // namespace kvproject
