#include "ColourTexts.h"
#include "KVProjectData/KVProjectData.h"
#include "KindMembers.h"
#include "MemberValues.h"

#include <array>

namespace kvproject {
namespace {

using kv::ComPtr;

constexpr std::array<std::string_view, 16> kPaletteParts{
    "Colour0", "Colour1", "Colour2",  "Colour3",  "Colour4",  "Colour5",  "Colour6",  "Colour7",
    "Colour8", "Colour9", "Colour10", "Colour11", "Colour12", "Colour13", "Colour14", "Colour15"};

Member Palette(const ComPtr<IKVMenu>& menu)
{
    Member palette{"Palette", {kPaletteParts.begin(), kPaletteParts.end()}, nullptr, nullptr};
    palette.read = [menu](std::vector<Json>& values) {
        std::array<RGBEntry, kPaletteParts.size()> colours{};
        const HRESULT result = menu->GetPalette(colours.data());
        for (const RGBEntry& colour : colours)
            values.emplace_back(ColourText(colour));
        return result;
    };
    palette.write = [menu](const Member::Texts& texts) {
        std::array<RGBEntry, kPaletteParts.size()> colours{};
        for (std::size_t i = 0; i < colours.size(); ++i)
            colours[i] = ParseColour(texts.at(i));
        return menu->SetPalette(colours.data());
    };
    return palette;
}

constexpr std::array<std::string_view, 4> kColourParts{"Pattern", "Background", "Emphasis1", "Emphasis2"};
constexpr std::array<std::string_view, 4> kColourAttributes{"patt", "bkgd", "emp1", "emp2"};

constexpr BYTE kHighestContrast = 15;

/// Where colours stand in the document of a menu, which tells them as they are: to ask the menu for those of a scheme
/// changes them.
struct ColourPlace {
    std::string_view name;
    std::string_view element;
    /// Of the attributes: "pattSelCol".
    std::string_view state;
    SPUColourTypes type;
};

constexpr std::array<ColourPlace, 7> kColourPlaces{{{"Scheme0Selected", "ButtonScheme1", "Sel", SPU_BtnColours1},
                                                    {"Scheme0Activated", "ButtonScheme1", "Act", SPU_BtnColours1},
                                                    {"Scheme1Selected", "ButtonScheme2", "Sel", SPU_BtnColours2},
                                                    {"Scheme1Activated", "ButtonScheme2", "Act", SPU_BtnColours2},
                                                    {"Scheme2Selected", "ButtonScheme3", "Sel", SPU_BtnColours3},
                                                    {"Scheme2Activated", "ButtonScheme3", "Act", SPU_BtnColours3},
                                                    {"Colours", "SPUColours", "", SPU_Normal}}};

std::vector<Json> ReadColours(const MenuView& view, const ColourPlace& place)
{
    std::vector<Json> values;
    for (const Element& element : view.Document().Children()) {
        if (element.Name() != place.element) continue;
        const auto attributes = element.Attributes();
        const auto number = [&](std::string_view field, std::string_view end) {
            const auto found = attributes.find(std::string(field) + std::string(place.state) + std::string(end));
            return static_cast<BYTE>(found == attributes.end() ? 0 : ReadId(found->second).value_or(0));
        };
        for (const std::string_view field : kColourAttributes)
            values.emplace_back(ContrastText(number(field, "Col"), number(field, "Cnt")));
        break;
    }
    return values;
}

SPUColourInfo ColoursOf(const Member::Texts& texts)
{
    const auto pattern = ParseContrast(texts.at(0));
    const auto background = ParseContrast(texts.at(1));
    const auto emphasis1 = ParseContrast(texts.at(2));
    const auto emphasis2 = ParseContrast(texts.at(3));
    return {pattern.first,   pattern.second,   background.first, background.second,
            emphasis1.first, emphasis1.second, emphasis2.first,  emphasis2.second};
}

Member Colours(const ComPtr<IKVMenu>& menu, const View& view, const ColourPlace& place)
{
    Member colours{std::string(place.name), {kColourParts.begin(), kColourParts.end()}, nullptr, nullptr};
    colours.read = [view, place](std::vector<Json>& values) {
        values = ReadColours(*view, place);
        return values.empty() ? S_FALSE : S_OK;
    };
    colours.write = [menu, view, place](const Member::Texts& texts) {
        const SPUColourInfo set = ColoursOf(texts);
        if (place.type == SPU_Normal) return menu->SetSubpictureColours(place.type, &set, nullptr);
        // The other state of the scheme stays as it is.
        ColourPlace other = place;
        other.state = place.state == "Sel" ? "Act" : "Sel";
        const SPUColourInfo kept = ColoursOf(TextsOf(ReadColours(*view, other)));
        const bool isSelected = place.state == "Sel";
        return menu->SetSubpictureColours(place.type, isSelected ? &set : &kept, isSelected ? &kept : &set);
    };
    colours.names = [] {
        Member::Texts texts;
        for (BYTE colour = 0; colour < BYTE{kPaletteParts.size()}; ++colour) {
            for (BYTE contrast = 0; contrast <= kHighestContrast; ++contrast)
                texts.push_back(ContrastText(colour, contrast));
        }
        return texts;
    };
    return colours;
}

} // namespace

void AddColourMembers(const ComPtr<IKVMenu>& menu, const View& view, std::vector<Member>& members)
{
    members.push_back(Palette(menu));
    for (const ColourPlace& place : kColourPlaces)
        members.push_back(Colours(menu, view, place));
}

} // namespace kvproject
