// The entry points of the engine's server library and the classes that it creates.

#include "KVProjectData/Engine/Classes.h"
#include "engine/import/ClipImporter.h"
#include "engine/import/Q71Importer.h"
#include "engine/media/MediaInformation.h"
#include "engine/storyboard/Production.h"
#include "engine/storyboard/UndoGroup.h"
#include "engine/strings/StringTable.h"
#include "engine/text/TextPlugIn.h"
#include "platform/com/EntryPoints.h"

namespace kv {
namespace {

constexpr ServerClass kClasses[]{
    {&CLSID_ZXEProduction, &CreateObject<CProduction>, u"ZXEngine.Production.1", u"ZXEngine.Production",
     u"Storyboard Production"},
    {&CLSID_ZXEUndoGroup, &CreateObject<CUndoGroup>, u"ZXEngine.UndoGroup.1", u"ZXEngine.UndoGroup", u"Undo Group"},
    {&CLSID_ZXMediaInformation, &CreateObject<CMediaInformation>, u"ZXEngine.MediaInformation.1",
     u"ZXEngine.MediaInformation", u"Media Information"},
    {&CLSID_ZXStringTable, &CreateObject<CStringTable>, u"ZXEngine.StringTable.1", u"ZXEngine.StringTable",
     u"String Table"},
    {&CLSID_ZXTextPlugIn, &CreateObject<CTextPlugIn>, u"ZXEngine.TextPlugIn.1", u"ZXEngine.TextPlugIn",
     u"Text Plug-In"},
    {&CLSID_Q71ProjectImport, &CreateObject<CQ71Importer>, u"ZXEngine.Q71ProjectImport.1", u"ZXEngine.Q71ProjectImport",
     u"Importer of Older Projects"},
    {&CLSID_ZXClipImporter, &CreateObject<CClipImporter>, u"ZXEngine.ClipImporter.1", u"ZXEngine.ClipImporter",
     u"Importer of Clips", &CATID_KVProjectImport},
};

static_assert(std::size(kClasses) == kEngineClasses.size());

constexpr ServerDescription kServer{.classes = kClasses};

} // namespace
} // namespace kv

KV_SERVER_ENTRY_POINTS(kv::kServer)
