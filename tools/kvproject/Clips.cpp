#include "Clips.h"

#include "Failure.h"
#include "KVProjectData/Engine.h"
#include "ObjectPath.h"
#include "Storyboard.h"
#include "Text.h"
#include "platform/com/Activation.h"

#include <filesystem>
#include <iostream>

namespace kvproject {
namespace {

bool IsMedia(const kv::Bstr& clip)
{
    kv::ComPtr<IZXMediaInformation> information;
    Require(kv::CreateInstance(CLSID_ZXMediaInformation, information), "cannot look into media");
    return SUCCEEDED(information->Open(clip.Get()));
}

} // namespace

void AddClip(EventPrinter& events, const std::string& clip, LONG position)
{
    const std::string file = HostPath(clip);
    RequireFile(file);
    // The file of the project may be moved, and the program started elsewhere.
    const std::string path = std::filesystem::absolute(file).string();
    RequireStorableName(path);
    const kv::Bstr source(kv::ToUtf16(file));
    if (!IsMedia(source)) std::cerr << "kvproject: " << Shown(file) << ": neither video nor picture that can be read\n";
    const auto title = events.AddTitle(source, position);
    const std::string name = std::filesystem::path(file).stem().string();
    Require(title->put_Label(kv::Bstr(kv::ToUtf16(name)).Get()), "cannot name the title");
    PutIntoStoryboard(*title, path);
    events.WaitForAll();
}

} // namespace kvproject
