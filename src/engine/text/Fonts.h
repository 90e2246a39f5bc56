#pragma once
// The fonts that texts are laid out with: the same on every machine, whatever its settings.

#include "platform/system/CriticalSection.h"

#include <memory>
#include <pango/pangocairo.h>

namespace kv {

struct ObjectReleaser {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using GlibPtr = std::unique_ptr<T, ObjectReleaser>;

/// The section in which everything of Pango runs: its font map belongs to one thread at a time.
CriticalSection& FontSection();

/// A layout without text, with neither hinting nor rounding. Called within the section.
GlibPtr<PangoLayout> NewLayout();

} // namespace kv
