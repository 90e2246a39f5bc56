#pragma once
// The productions of a project in its file: beside the project stands
//
//     <Productions>
//       <Production ownerID="5" name="Storyboard"><Storyboard …/></Production>
//     </Productions>
//
// with an element for each production of each title and menu; one without a "Storyboard" only takes the place of an
// owner that shares its ID with others. The engine reads and writes what is within "Storyboard". What stands there
// otherwise, and productions that cannot be loaded (without an engine or an owner, or refused by the engine), are kept
// with the project object and written as they were. Failures are told to the error reporter.

#include "KVProjectData/IKVProjectData.h"
#include "platform/xml/XmlMarkup.h"

namespace kv {

/// Writes a project and its productions, as they are at one time, below a root element: the project as markup, which
/// is to stand in front of what the element holds, or there where the project is no object of this library, and the
/// productions as markup where the engine gives any. Throws Error: what the project or the engine fails with. A
/// production of an engine that saves none is left out.
void SaveWithProductions(IKVProjectData& project, XmlElement root, XmlMarkup& markup, XmlStandIns& productions);

/// No new object gets an ID for which productions stand below a root element, lest it become their owner. Before the
/// project is loaded.
void ReserveOwners(const XmlElement& root);

/// Gives the nodes of a project that was loaded the productions that stand below a root element. Those loaded are taken
/// out of it. Throws Error for lack of memory only.
void LoadProductions(IKVProjectData& project, const XmlElement& root);

} // namespace kv
