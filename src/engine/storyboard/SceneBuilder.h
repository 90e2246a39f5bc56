#pragma once
// From what a storyboard holds to what it shows.

#include "engine/render/Scene.h"
#include "engine/storyboard/Storyboard.h"

namespace kv {

/// The scene in the middle of the frame at a time, or of the last one. Looks into sources and reads documents: not to
/// be called while others wait.
Scene SceneOf(const BoardImage& image, double seconds);

} // namespace kv
