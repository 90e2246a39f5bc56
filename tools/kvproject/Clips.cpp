#include "Clips.h"

#include "Failure.h"
#include "KVProjectData/Engine.h"
#include "ObjectPath.h"
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
    RequireFile(clip);
    const kv::Bstr source(kv::ToUtf16(clip));
    if (!IsMedia(source)) std::cerr << "kvproject: " << clip << ": neither video nor picture that can be read\n";
    const auto title = events.AddTitle(source, position);
    const std::string name = std::filesystem::path(clip).stem().string();
    Require(title->put_Label(kv::Bstr(kv::ToUtf16(name)).Get()), "cannot name the title");
    events.WaitForAll();
}

} // namespace kvproject
