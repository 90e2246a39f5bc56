#pragma once
// The form that a production has in a document (Persist.h).

#include "KVProjectData/Engine/Persist.h"
#include "engine/storyboard/Storyboard.h"

namespace kv {

/// An element of that name in one line. Throws Error, with the result of `paths`, or E_INVALIDARG for text that XML
/// cannot hold. Looks into sources of which nothing is known.
std::string BoardMarkup(BoardImage board, std::string_view name, IZXEContentPaths* paths);

/// Writes into an empty element, which a failure leaves empty; then it throws as BoardMarkup does, and
/// Error(E_INVALIDARG) for too many levels.
void SaveBoard(BoardImage board, XmlElement& element, IZXEContentPaths* paths);

/// Makes the items of a board, which it is to hold. Opens no media. Throws Error with the result of `paths`, or
/// ZXE_E_NOT_PRODUCTION.
NewBoard LoadBoard(const std::shared_ptr<Storyboard>& board, const XmlElement& element, IZXEContentPaths* paths);

} // namespace kv
