#pragma once
// Identity of the menu interface.

#include "platform/automation/IDispatch.h"

/// A menu of the disc.
struct IKVMenu : IDispatch {
    static constexpr GUID IID = "0ecaf828-e2f7-4553-8fcc-69d79561a0d1"_guid;
    using Base = IDispatch;
};
