#pragma once
// A menu of a project, its productions, and files for it to show.

#include "KVProjectData/Engine.h"
#include "KVProjectData/KVProjectData.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/xml/Element.h"
#include "support/Script.h"

namespace kv::test {

/// A clip without compression, of that many frames at 25 frames per second.
inline std::string Clip(int width, int height, int frames)
{
    std::string clip =
        "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F25:1 Ip A1:1 C420jpeg\n";
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    for (int i = 0; i < frames; ++i)
        clip += "FRAME\n" + std::string(pixels, '\x60') + std::string(pixels / 2, '\x80');
    return clip;
}

/// A grey still picture.
inline std::string Still(int width, int height)
{
    const auto bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3;
    return "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n" + std::string(bytes, '\x60');
}

class MenuTest : public testing::Test {
protected:
    MenuTest()
    {
        folder.Write("wide.y4m", Clip(64, 36, 50));
        folder.Write("narrow.y4m", Clip(64, 48, 50));
        folder.Write("still.ppm", Still(64, 48));
    }

    void SetUp() override { ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put())); }

    LONG ID() { return ValueOf(*menu.Get(), &IKVMenu::get_ID); }
    std::vector<ReceivedEvent> Events() { return Delivered(*project, *sink); }
    ReceivedEvent Changed(LONG propId) { return Event(EVENT_MenuPropChanged, {ID(), propId}); }

    ComPtr<IUnknown> Production()
    {
        ComPtr<IUnknown> production;
        menu->GetProduction(production.Put());
        return production;
    }
    ComPtr<IUnknown> BackgroundProduction()
    {
        ComPtr<IUnknown> production;
        menu->GetBackgroundProduction(production.Put());
        return production;
    }
    static double Ratio(const ComPtr<IUnknown>& production)
    {
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(production)->GetProductionObj(object.Put()));
        return ValueOf(*Query<IProductionInfo>(object).Get(), &IProductionInfo::get_AspectRatio);
    }
    /// What a production holds, without what was found in its files.
    static std::string Held(const ComPtr<IUnknown>& production)
    {
        const XmlElement element = XmlElement::New("Production");
        EXPECT_EQ(S_OK, Query<IZXEProductionPersist>(production)->Save(element.Element().Get(), nullptr));
        return element.Markup();
    }

    HRESULT SetNative(bool native) { return menu->SetNative(native ? VARIANT_TRUE : VARIANT_FALSE); }
    std::u16string Background() { return Text(*menu, &IKVMenu::get_Background); }
    std::u16string Audio() { return Text(*menu, &IKVMenu::get_Audio); }
    double Duration() { return ValueOf(*menu.Get(), &IKVMenu::get_Duration); }

    TemporaryFolder folder;
    const Bstr wide = folder.File("wide.y4m");
    const Bstr narrow = folder.File("narrow.y4m");
    const Bstr still = folder.File("still.ppm");
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVMenu> menu;
    ComPtr<RecordingSink> sink = Make<RecordingSink>();
    Connection connection{*project, *sink};
};

} // namespace kv::test
