#include "engine/EngineSupport.h"

#include "platform/com/Export.h"

#include <stdexcept>

extern "C" KV_EXPORT HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);

namespace kv::test {

ComPtr<IUnknown> CreateEngineObject(REFCLSID clsid)
{
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, DllGetClassObject(clsid, IClassFactory::IID, factory.PutVoid()));
    ComPtr<IUnknown> object;
    if (factory) {
        EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IUnknown::IID, object.PutVoid()));
    }
    return object;
}

void ClipFolder::Make(const std::string& name, const std::string& arguments) const
{
    const std::string folder = Path().string();
    const std::string command = "cd '" + folder + "' && ffmpeg -v error -nostdin -y " + arguments + " '" + name + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
}

const ClipFolder& Clips()
{
    static const ClipFolder clips;
    [[maybe_unused]] static const bool made = [] {
        const auto video = [](const char* size, const char* rate) {
            return std::string("-f lavfi -i testsrc=duration=1:size=") + size + ":rate=" + rate;
        };
        clips.Make("pal.mpg", video("720x576", "25") + " -c:v mpeg2video");
        clips.Make("ntsc.mp4", video("720x480", "30000/1001") + " -c:v mpeg4");
        clips.Make("fast.mkv", video("640x360", "50") + " -c:v mpeg4");
        clips.Make("still.png", video("320x240", "25") + " -frames:v 1 -update 1");
        clips.Make("sound.wav", "-f lavfi -i sine=duration=2");
        clips.Make("cover.m4a",
                   "-i sound.wav -i still.png -map 0 -map 1 -c:a aac -c:v copy -disposition:v attached_pic");
        return true;
    }();
    return clips;
}

ComPtr<IConnectionPoint> EventsOf(IUnknown* production)
{
    ComPtr<IConnectionPoint> point;
    const auto container = Query<IConnectionPointContainer>(production);
    if (container) container->FindConnectionPoint(IZXEProductionDataEvents::IID, point.Put());
    return point;
}

std::vector<std::u16string> SourcesOf(IZXEProductionData* production)
{
    SafeArray sources;
    EXPECT_EQ(S_OK, production->GetSourceList(0, 0, 0, sources.Put()));
    LONG first = 0;
    LONG last = -1;
    EXPECT_EQ(S_OK, SafeArrayGetLBound(sources.Get(), 1, &first));
    EXPECT_EQ(S_OK, SafeArrayGetUBound(sources.Get(), 1, &last));
    EXPECT_EQ(0, first);
    std::vector<std::u16string> names;
    for (LONG i = first; i <= last; ++i) {
        Bstr name;
        EXPECT_EQ(S_OK, SafeArrayGetElement(sources.Get(), &i, name.Put()));
        names.emplace_back(name.View());
    }
    return names;
}

HRESULT AddSource(IUnknown* production, const Bstr& source)
{
    return Query<IEditData>(production)->AddSourceFile(0, source.Get(), 0.0, 0.0, -1, nullptr);
}

} // namespace kv::test
