#pragma once
// The form that a production has in a document (Persist.h).

#include "KVProjectData/Engine/Persist.h"
#include "engine/storyboard/Storyboard.h"

namespace kv {

/// Writes into an empty element, which a failure leaves empty; then it throws Error, with the result of `paths`, or
/// E_INVALIDARG for text that XML cannot hold and for too many levels. Looks into sources of which nothing is known.
void SaveBoard(BoardImage board, XmlElement& element, IZXEContentPaths* paths);

/// Makes the items of a board, which it is to hold. Opens no media. Throws Error with the result of `paths`, or
/// ZXE_E_NOT_PRODUCTION.
NewBoard LoadBoard(const std::shared_ptr<Storyboard>& board, const XmlElement& element, IZXEContentPaths* paths);

} // namespace kv
