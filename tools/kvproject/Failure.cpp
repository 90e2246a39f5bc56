#include "Failure.h"

#include "KVProjectData/Engine/Media.h"
#include "KVProjectData/ResultCodes.h"
#include "Text.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <utility>

namespace kvproject {
namespace {

constexpr std::array kMeanings = std::to_array<std::pair<HRESULT, std::string_view>>({
    {S_FALSE, "there is no value at the moment"},
    {E_NOTIMPL, "this operation is not available"},
    {E_NOINTERFACE, "the object does not offer what was asked of it"},
    {E_POINTER, "a value is missing"},
    {E_ABORT, "the operation was given up; what could be undone is lost"},
    {E_FAIL, "the operation failed"},
    {E_UNEXPECTED, "the operation failed unexpectedly"},
    {E_ACCESSDENIED, "access is denied"},
    {E_OUTOFMEMORY, "there is not enough memory"},
    {E_INVALIDARG, "the value is not allowed"},
    {DISP_E_UNKNOWNNAME, "there is no member of that name"},
    {DISP_E_MEMBERNOTFOUND, "the member cannot be used that way"},
    {DISP_E_TYPEMISMATCH, "the value is of the wrong type"},
    {DISP_E_OVERFLOW, "the value is out of range"},
    {DISP_E_BADPARAMCOUNT, "the number of arguments is wrong"},
    {TYPE_E_CANTLOADLIBRARY, "the type library cannot be loaded"},
    {CLASS_E_CLASSNOTAVAILABLE, "the library does not make such objects"},
    {REGDB_E_CLASSNOTREG, "the class is not registered"},
    {CO_E_CLASSSTRING, "the class name is not registered"},
    {CO_E_DLLNOTFOUND, "the server library cannot be loaded"},
    {CO_E_ERRORINDLL, "the server library lacks an entry point"},
    {MakeResult(0x80070002), "the file does not exist"},
    {MakeResult(0x80070003), "the folder does not exist"},
    {MakeResult(0x80070004), "too many files are open"},
    {MakeResult(0x80070013), "the disk is write protected"},
    {MakeResult(0x80070020), "the file is in use"},
    {MakeResult(0x80070070), "the disk is full"},
    {MakeResult(0x800700B7), "there is a file or folder of that name already"},
    {MakeResult(0x800700CB), "there is no home folder to keep the registry in"},
    {MakeResult(0x800700CE), "the file name is too long"},
    {MakeResult(0x800700DF), "the file is too large"},
    {MakeResult(0x800703F1), "the registry file is damaged"},
    {MakeResult(0x8007045D), "the device could not be read or written"},
    {KV_E_NO_LOCK_TARGET, "there is nothing to lock"},
    {KV_E_NO_SUCH_ELEMENT, "there is no such element"},
    {KV_E_ELEMENT_NOT_REMOVED, "the element could not be removed"},
    {KV_E_NO_SUCH_SOURCE, "no data file has that source"},
    {KV_E_DATA_FILE_NOT_FOUND, "no data file matches"},
    {KV_E_NO_XML_NODE, "there is no element to load from"},
    {KV_E_NO_UNDO_MANAGER, "there is no undo manager"},
    {KV_E_NO_PROJECT, "the object is no project"},
    {KV_E_NO_PARENT, "the object is part of no other"},
    {KV_E_UNDO_STEP_OPEN, "a step is open already"},
    {KV_E_NO_SUCH_ID, "there is no object with that ID"},
    {KV_E_BAD_POSITION, "there is nothing at that position"},
    {KV_E_LOCKED, "the object is locked"},
    {KV_E_FOLLOWS_PROJECT, "the encoding parameters follow the project: set SyncToProject=false first"},
    {KV_E_CANNOT_FOLLOW_PROJECT, "these encoding parameters cannot follow a project"},
    {KV_E_NO_SOURCE_FILE, "the source file does not exist"},
    {KV_E_NO_BACKGROUND_FILE, "the file of the background does not exist"},
    {KV_E_NO_AUDIO_FILE, "the file of the audio does not exist"},
    {KV_E_BAD_COLOUR_INDEX, "the palette has the colours 0 to 15"},
    {KV_E_BAD_CONTRAST, "contrasts go from 0 to 15"},
    {KV_E_NO_OVERLAY_SOURCE, "the file of the source does not exist"},
    {KV_E_NEGATIVE_IN_POINT, "the in point is negative"},
    {KV_E_NEGATIVE_OUT_POINT, "the out point is negative"},
    {KV_E_NO_ALPHA_MASK, "the file of the mask does not exist"},
    {KV_E_NO_ANCHOR, "the button has nothing that it is anchored to"},
    {KV_E_BUTTON_HAS_NO_BOX, "the button has no box"},
    {KV_E_NO_EVENT_WINDOW, "the event window could not be created"},
    {KV_E_FILE_DOES_NOT_PARSE, "the file is not a well-formed project document"},
    {KV_E_FILE_TOO_OLD, "the file is of a version that is too old, or is no project"},
    {KV_E_NO_ARCHIVE_FOLDER, "the archive folder cannot be created"},
    {ZXE_E_NOT_MEDIA, "neither video nor picture that can be read"},
    {ZXE_E_NO_STREAM, "there are no moving pictures in it"},
    {KV_E_QUEUE_NOT_SIGNALLED, "the event could not be told; it stays queued"},
});

} // namespace

void TellFailure(std::string_view message)
{
    std::cerr << "kvproject: " << Shown(message) << '\n';
}

std::string Describe(HRESULT result)
{
    std::string_view meaning = "unknown result";
    for (const auto& [code, text] : kMeanings) {
        if (code == result) meaning = text;
    }
    return Describe(result, meaning);
}

std::string Describe(HRESULT result, std::string_view meaning)
{
    char number[16];
    std::snprintf(number, sizeof number, "0x%08X", static_cast<ULONG>(result));
    return std::string(meaning) + " (" + number + ")";
}

void Require(HRESULT result, std::string_view what)
{
    if (FAILED(result)) throw Failure(std::string(what) + ": " + Describe(result));
}

} // namespace kvproject
