#pragma once
// What whoever reads and writes project files needs of a project beside its document.

#include "KVProjectData/content/FilePlace.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/xml/Element.h"

namespace kv {

/// The project object answers for it; within the library only.
struct IProjectStoryboards : IUnknown {
    static constexpr GUID IID = "0c1d3a52-96f4-4f9f-8a6b-7d2f4b6f1e83"_guid;
    using Base = IUnknown;

    virtual CProjectNode& Node() = 0;

    /// What stood among the productions of the project's file and was not loaded from there: an element that holds
    /// those of the file, in a tree of its own, which is only read. Empty where all was loaded, and after Clear.
    virtual XmlElement KeptProductions() = 0;
    virtual void KeepProductions(XmlElement kept) = 0;

    /// How its files are named where it was loaded from, and where it was archived, and where its relative paths lead.
    /// Those that are kept stay beside new ones. Forgotten by Clear.
    virtual KnownNames Names() = 0;
    virtual void KeepNames(KnownNames names) = 0;

    /// The productions of the menus leave the open step, as a production is loaded only while it has no block open, and
    /// take part in it again from then on. Without a step nothing happens.
    virtual void LeaveStep() = 0;
    virtual HRESULT JoinStep() = 0;
};

} // namespace kv
