// menu FILE NAME BACKGROUND CLIP...: makes a project of that name with a title for each clip, and a main menu: the name
// over the background, and for each title a button that shows a picture of it and its label, and plays it.

#include <KVProjectData/Engine.h>
#include <KVProjectData/KVProjectData.h>
#include <platform/com/Activation.h>
#include <platform/system/Registry.h>

#include <array>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace kv;

namespace {

void Need(HRESULT result, const char* what)
{
    if (FAILED(result)) throw std::runtime_error(what);
}

/// Projects keep full paths: they may be loaded from anywhere.
Bstr FullPath(const char* file)
{
    return Bstr(ToUtf16(std::filesystem::absolute(file).string()));
}

template <class T>
ComPtr<T> CreateByName(const OLECHAR* progId)
{
    CLSID clsid{};
    ComPtr<T> object;
    Need(CLSIDFromProgID(progId, &clsid), "no such class");
    Need(CreateInstance(clsid, object), "cannot create");
    return object;
}

/// Appends an element of the kind that the interface names.
template <class T>
ComPtr<T> AddElement(IUnknown* owner)
{
    ComPtr<IKVMenuElement> element;
    Need(Query<IKVMenuElementList>(owner)->AddElement(&T::IID, element.Put()), "cannot add an element");
    return Query<T>(element);
}

/// A title that plays the clip.
ComPtr<IKVTitle> AddTitle(IKVProjectData& project, const char* clip)
{
    ComPtr<IKVTitle> title;
    Need(project.AddTitle(0, title.Put()), "cannot add a title");
    Need(title->put_Source(FullPath(clip).Get()), "no such clip");
    Need(title->put_Label(Bstr(ToUtf16(std::filesystem::path(clip).stem().string())).Get()), "cannot name the title");
    ComPtr<IUnknown> production;
    Need(title->GetProduction(production.Put()), "no production");
    Need(Query<IEditData>(production)->AddSourceFile(0, FullPath(clip).Get(), 0.0, 0.0, -1, nullptr),
         "cannot put the clip into the title");
    return title;
}

/// Two colours for what is selected and activated.
void SetColours(IKVMenu& menu)
{
    std::array<RGBEntry, 16> palette{};
    palette[1] = {255, 200, 0};
    palette[2] = {255, 64, 32};
    Need(menu.SetPalette(palette.data()), "cannot set the palette");
    const SPUColourInfo selected{.pattCol = 1, .pattCnt = 6};
    const SPUColourInfo activated{.pattCol = 2, .pattCnt = 12};
    Need(menu.SetSubpictureColours(SPU_BtnColours1, &selected, &activated), "cannot set the colours");
}

/// Words in a font, with a shadow. What the interface has no member for is set in the text's parameter document.
void Write(IKVMenuText& text, BSTR words, const char16_t* font, LONG height, ULONG style)
{
    Need(text.put_String(words), "cannot write");
    Need(text.put_Font(Bstr(font).Get()), "cannot set the font");
    Need(text.put_height(height), "cannot set the height");
    Need(text.put_Style(style), "cannot set the style");
    Need(text.put_Justify(TextJustify_Center), "cannot centre the text");
    Need(text.SetColor(TextColor_Face, 0x00D8F4FF), "cannot set the colour");
    ComPtr<IXMLDOMNode> document;
    ComPtr<IXMLDOMNode> runs;
    Need(text.GetEffectXML(document.Put()), "the text has no document");
    Need(document->selectSingleNode(Bstr(u".//font").Get(), runs.Put()), "the text has no font");
    const auto run = Query<IXMLDOMElement>(runs);
    Need(run ? S_OK : E_FAIL, "the text has no font");
    Need(run->setAttribute(Bstr(u"shadowColor").Get(), Variant(u"#00081860")), "cannot set the shadow");
    Need(run->setAttribute(Bstr(u"shadowOffset").Get(), Variant(u"2")), "cannot set the shadow");
    Need(text.SetEffectXML(document.Get()), "cannot set the document");
}

/// A button that shows a picture and the label of the title and plays it. Places are normalised: the middle of the
/// frame is 0, its edges are -1 and 1, y upwards.
ComPtr<IKVMenuButton> AddButton(IKVMenu& menu, IKVTitle& title, float x)
{
    constexpr float kSize = 0.72F;
    constexpr float kRow = -0.12F;
    const auto button = AddElement<IKVMenuButton>(&menu);
    Bstr label;
    Need(title.get_Label(label.Put()), "no label");
    Need(button->put_Label(label.Get()), "cannot name the button");

    Bstr clip;
    const auto picture = AddElement<IKVMenuOverlay>(button.Get());
    Need(title.GetSourceFromProd(clip.Put()), "the title shows nothing");
    Need(picture->put_Source(clip.Get()), "no picture of the clip");
    Need(picture->put_Tag(OverlayType_Thumbnail), "cannot say what the picture is");
    Need(picture->put_StillImage(VARIANT_TRUE), "cannot make it a still");
    Need(picture->SetSize(kSize, kSize), "cannot size the picture");
    Need(button->SetPosition(x, kRow), "cannot place the button");
    Need(picture->put_Highlight(OverlayHLI_Extent), "cannot say what is highlighted");
    const auto text = AddElement<IKVMenuText>(button.Get());
    Write(*text, label.Get(), u"DejaVu Sans", 30, TextStyle_Bold);
    Need(text->SetPosition(0.0F, -kSize * 0.68F), "cannot place the label");
    FloatRect region{};
    Need(button->GetExtent(&region), "the button is nowhere");
    Need(button->put_ActiveRegion(&region, VARIANT_TRUE), "cannot say where a pointer finds the button");

    LONG id = 0;
    Need(title.get_ID(&id), "no ID");
    DiscCommandParams play{PlayTitleFromChapter, id, 1, nullptr};
    Need(Query<IKVCommandList>(button)->SetCommandList(1, &play), "cannot say what the button does");
    return button;
}

void MakeMenu(IKVProjectData& project, const Bstr& name, const char* background,
              const std::vector<ComPtr<IKVTitle>>& titles)
{
    ComPtr<IKVMenu> menu;
    Need(project.AddMenu(0, menu.Put()), "cannot add a menu");
    Need(menu->put_Tag(MenuType_Main), "cannot make it the main menu");
    Need(menu->put_Label(Bstr(u"Main").Get()), "cannot name the menu");
    Need(menu->put_Background(FullPath(background).Get()), "no such background");
    SetColours(*menu);
    const auto heading = AddElement<IKVMenuText>(menu.Get());
    Write(*heading, name.Get(), u"DejaVu Serif", 42, TextStyle_Bold | TextStyle_Italic);
    Need(heading->SetPosition(0.0F, 0.66F), "cannot place the heading");

    std::vector<LONG> ids;
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const auto column = static_cast<float>(2 * i + 1) / static_cast<float>(titles.size());
        const auto button = AddButton(*menu, *titles[i], column - 1.0F);
        Need(button->get_ID(&ids.emplace_back()), "no ID");
    }
    // The arrow keys lead from button to button.
    for (std::size_t i = 0; i < ids.size(); ++i) {
        ComPtr<IKVMenuButton> button;
        Need(menu->GetButton(static_cast<LONG>(i + 1), button.Put()), "no button");
        const ButtonLinks links{i > 0 ? ids[i - 1] : 0, i + 1 < ids.size() ? ids[i + 1] : 0, 0, 0};
        Need(button->put_ButtonLinks(&links), "cannot link the button");
    }
    Need(menu->put_DefaultButton(ids.front()), "cannot set the default button");
}

void Run(const char* file, const Bstr& name, const char* background, const std::vector<const char*>& clips)
{
    // Registered for this process alone; a registered installation needs only CoCreateInstance.
    Registry::UseMemory();
    for (const char* server : {KV_SERVER_DIR "/libKVProjectData.so", KV_SERVER_DIR "/libKVEngine.so"})
        Need(RegisterServer(ToUtf16(server)), "cannot register the library");

    const auto project = CreateByName<IKVProjectData>(PROGID_KVProjectData);
    Need(project->put_Label(name.Get()), "cannot name the project");
    Need(project->put_TVStandard(PAL), "cannot set the standard");
    std::vector<ComPtr<IKVTitle>> titles;
    for (const char* clip : clips)
        titles.push_back(AddTitle(*project, clip));

    // One step that undo takes back as a whole.
    Need(project->BeginUndo(Bstr(u"Main menu").Get()), "cannot open a step");
    MakeMenu(*project, name, background, titles);
    Need(project->EndUndo(VARIANT_TRUE), "cannot end the step");

    const auto files = CreateByName<IKVFileService>(PROGID_KVFileService);
    Need(files->SaveProject(FullPath(file).Get(), project.Get()), "cannot save");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 5) {
        std::cerr << "usage: menu FILE NAME BACKGROUND CLIP...\n";
        return 2;
    }
    try {
        Run(argv[1], Bstr(ToUtf16(argv[2])), argv[3], {argv + 4, argv + argc});
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "menu: " << error.what() << '\n';
        return 1;
    }
}
