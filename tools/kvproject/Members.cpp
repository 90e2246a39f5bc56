#include "Members.h"

#include "ColourTexts.h"
#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "Text.h"
#include "platform/com/TaskMemory.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <charconv>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Query;
using kv::Variant;
using View = std::shared_ptr<const MenuView>;

constexpr std::string_view kSeparator = ", ";

// Values

Json ToJson(double value)
{
    return value;
}

Json ToJson(float value)
{
    return FloatValue(value);
}

Json ToJson(LONG value)
{
    return value;
}

Json ToJson(VARIANT_BOOL value)
{
    return value != VARIANT_FALSE;
}

Json ToJson(const kv::Bstr& value)
{
    return value.Get() ? Json(kv::ToUtf8(value.View())) : Json();
}

Variant Converted(const std::string& text, VARTYPE type)
{
    Variant value(kv::ToUtf16(text));
    const HRESULT result = VariantChangeType(&value, &value, 0, type);
    if (FAILED(result)) throw Failure("'" + text + "': " + Describe(result));
    return value;
}

void Parse(const std::string& text, double& value)
{
    value = Converted(text, VT_R8).dblVal;
}

void Parse(const std::string& text, float& value)
{
    value = Converted(text, VT_R4).fltVal;
}

void Parse(const std::string& text, LONG& value)
{
    double number = 0.0;
    Parse(text, number);
    value = Converted(text, VT_I4).lVal;
    if (number != value) throw Failure("'" + text + "': a whole number is wanted");
}

void Parse(const std::string& text, VARIANT_BOOL& value)
{
    value = Converted(text, VT_BOOL).boolVal;
}

void Parse(const std::string& text, kv::Bstr& value)
{
    value = kv::Bstr(kv::ToUtf16(text));
}

std::string TextOf(const Json& value)
{
    if (value.is_null()) return {};
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) {
        // A whole number is written like one, as with other members.
        std::string text = value.dump();
        if (value.is_number_float() && text.ends_with(".0")) text.resize(text.size() - 2);
        return text;
    }
    std::string joined;
    for (const Json& item : value)
        joined += (joined.empty() ? "" : "|") + item.get<std::string>();
    return joined;
}

std::vector<std::string> Split(std::string_view text, char separator)
{
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        std::string_view piece = text.substr(0, end);
        while (piece.starts_with(' '))
            piece.remove_prefix(1);
        while (piece.ends_with(' '))
            piece.remove_suffix(1);
        pieces.emplace_back(piece);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

// Members of a kind

/// A value that the object has a getter and perhaps a setter for.
template <class Interface, class T>
Member Single(std::string name, const ComPtr<Interface>& object, HRESULT (Interface::*get)(T*),
              HRESULT (Interface::*put)(T) = nullptr)
{
    using Held = std::conditional_t<std::is_same_v<T, BSTR>, kv::Bstr, T>;
    Member member{std::move(name), {}, nullptr, nullptr};
    member.read = [object, get](std::vector<Json>& values) {
        Held held{};
        HRESULT result = S_OK;
        if constexpr (std::is_same_v<T, BSTR>) {
            result = ((*object).*get)(held.Put());
        } else {
            result = ((*object).*get)(&held);
        }
        values = {ToJson(held)};
        return result;
    };
    if (!put) return member;
    member.write = [object, put](const Member::Texts& texts) {
        Held held{};
        Parse(texts.at(0), held);
        if constexpr (std::is_same_v<T, BSTR>) {
            return ((*object).*put)(held.Get());
        } else {
            return ((*object).*put)(held);
        }
    };
    return member;
}

template <class T, std::size_t Count>
using Numbers = std::array<T, Count>;

/// Several numbers that are read together, and written together where there is a way to.
template <class T, std::size_t Count, class Read, class Write = std::nullptr_t>
Member Several(std::string name, const std::array<std::string_view, Count>& parts, Read&& read, Write&& write = nullptr)
{
    Member member{std::move(name), {parts.begin(), parts.end()}, nullptr, nullptr};
    member.read = [read](std::vector<Json>& values) {
        Numbers<T, Count> numbers{};
        const HRESULT result = read(numbers);
        for (const T number : numbers)
            values.push_back(ToJson(number));
        return result;
    };
    if constexpr (!std::is_null_pointer_v<std::decay_t<Write>>) {
        member.write = [write](const Member::Texts& texts) -> HRESULT {
            Numbers<T, Count> numbers{};
            for (std::size_t i = 0; i < Count; ++i)
                Parse(texts.at(i), numbers[i]);
            return write(numbers);
        };
    }
    return member;
}

constexpr std::array<std::string_view, 4> kEdges{"Left", "Top", "Right", "Bottom"};
constexpr std::array<std::string_view, 2> kPoint{"X", "Y"};
constexpr std::array<std::string_view, 2> kSize{"Width", "Height"};
constexpr std::array<std::string_view, 4> kFrame{"CenterX", "CenterY", "Width", "Height"};
using Edges = Numbers<float, 4>;
using Pair = Numbers<float, 2>;

Edges EdgesOf(const FloatRect& rect)
{
    return {rect.fLeft, rect.fTop, rect.fRight, rect.fBottom};
}

FloatRect RectOf(const Edges& edges)
{
    return {edges[0], edges[1], edges[2], edges[3]};
}

/// The name of an element of the menu; its ID as text where there is none.
Json Reference(const MenuView* view, LONG id)
{
    if (id == 0) return {};
    const auto name = view ? view->NameOf(id) : std::nullopt;
    return name ? *name : std::to_string(id);
}

LONG Referenced(const MenuView* view, const std::string& text)
{
    if (text.empty()) return 0;
    // A menu's elements may have changed since the view was made for showing it; setting makes a view of its own.
    if (!view) throw Failure("the button stands in no menu");
    return view->IdOf(text);
}

// Menus

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

Member::Texts TextsOf(const std::vector<Json>& values)
{
    Member::Texts texts;
    for (const Json& value : values)
        texts.push_back(TextOf(value));
    return texts;
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
    return colours;
}

void AddMenuMembers(const ComPtr<IKVMenu>& menu, const View& view, std::vector<Member>& members)
{
    members.push_back(Several<float>(
        "LayoutRect", kEdges,
        [menu](Edges& edges) {
            FloatRect rect{};
            const HRESULT result = menu->get_LayoutRect(&rect);
            edges = EdgesOf(rect);
            return result;
        },
        [menu](const Edges& edges) { return menu->put_LayoutRect(RectOf(edges)); }));
    Member& button = members.emplace_back(Single("DefaultButton", menu, &IKVMenu::get_DefaultButton));
    button.read = [menu, view](std::vector<Json>& values) {
        LONG id = 0;
        const HRESULT result = menu->get_DefaultButton(&id);
        values = {Reference(view.get(), id)};
        return result;
    };
    button.write = [menu, view](const Member::Texts& texts) {
        return menu->put_DefaultButton(Referenced(view.get(), texts.at(0)));
    };
    Member& native = members.emplace_back(Single("IsNative", menu, &IKVMenu::get_IsNative));
    native.write = [menu](const Member::Texts& texts) {
        VARIANT_BOOL set = VARIANT_FALSE;
        Parse(texts.at(0), set);
        const HRESULT result = menu->SetNative(set);
        return SUCCEEDED(result) ? S_OK : result;
    };
    members.push_back(Palette(menu));
    for (const ColourPlace& place : kColourPlaces)
        members.push_back(Colours(menu, view, place));
    members.push_back(Single("ButtonPosition", menu, &IKVMenu::GetButtonPosition, &IKVMenu::SetButtonPosition));
    members.push_back(Several<float>(
        "BackgroundCrop", kEdges, [menu](Edges& e) { return menu->GetMenuBackgroundCrop(&e[1], &e[0], &e[3], &e[2]); },
        [menu](const Edges& e) { return menu->SetMenuBackgroundCrop(e[1], e[0], e[3], e[2]); }));
    members.push_back(Single("BackgroundAspectRatio", menu, &IKVMenu::GetMenuBackgroundAspectRatio));
    Member& fills = members.emplace_back(Single("BackgroundFills", menu, &IKVMenu::IsMenuBackgroundFill));
    fills.write = [menu](const Member::Texts& texts) {
        VARIANT_BOOL set = VARIANT_FALSE;
        Parse(texts.at(0), set);
        return menu->ResizeMenuBackground(set ? VARIANT_FALSE : VARIANT_TRUE);
    };
    members.push_back(
        Single("BackgroundVolume", menu, &IKVMenu::GetMenuBackgroundVolume, &IKVMenu::SetMenuBackgroundVolume));
    members.push_back(
        Single("BackgroundFades", menu, &IKVMenu::GetMenuBackgroundFadeInOut, &IKVMenu::SetMenuBackgroundFadeInOut));
    members.push_back(
        Single("AudioVolume", menu, &IKVMenu::GetMenuBackgroundAudioVolume, &IKVMenu::SetMenuBackgroundAudioVolume));
    members.push_back(Single("AudioFades", menu, &IKVMenu::GetMenuBackgroundAudioFadeEnable,
                             &IKVMenu::SetMenuBackgroundAudioFadeEnable));
}

// Elements

/// Those that all kinds have.
void AddElementMembers(const ComPtr<IKVMenuElement>& element, const View& view, std::vector<Member>& members)
{
    Member kind{"Kind", {}, nullptr, nullptr};
    kind.read = [element](std::vector<Json>& values) {
        const ElementKind* known = KindOf(*element);
        values.push_back(known ? Json(known->name) : Json());
        return known ? S_OK : S_FALSE;
    };
    members.push_back(std::move(kind));
    Member name{"Name", {}, nullptr, nullptr};
    name.read = [element, view](std::vector<Json>& values) {
        LONG id = 0;
        const HRESULT result = element->get_ID(&id);
        values.push_back(Reference(view.get(), id));
        return result;
    };
    members.push_back(std::move(name));
    members.push_back(Several<float>(
        "Position", kPoint, [element](Pair& point) { return element->GetPosition(&point[0], &point[1]); },
        [element](const Pair& point) { return element->SetPosition(point[0], point[1]); }));
    members.push_back(Several<float>(
        "Size", kSize, [element](Pair& size) { return element->GetWidthHeight(&size[0], &size[1]); },
        [element](const Pair& size) { return element->SetWidthHeight(size[0], size[1]); }));
    members.push_back(Several<float>("Extent", kEdges, [element](Edges& edges) {
        FloatRect rect{};
        const HRESULT result = element->GetExtent(&rect);
        edges = EdgesOf(rect);
        return result;
    }));
}

Member Links(const ComPtr<IKVMenuButton>& button, const View& view)
{
    Member links{"ButtonLinks", {"Left", "Right", "Upper", "Lower"}, nullptr, nullptr};
    links.read = [button, view](std::vector<Json>& values) {
        ButtonLinks* read = nullptr;
        const HRESULT result = button->get_ButtonLinks(&read);
        const kv::UniqueTaskMem<ButtonLinks> owned(read);
        if (read) {
            for (const LONG id : {read->left, read->right, read->upper, read->lower})
                values.push_back(Reference(view.get(), id));
        }
        return result;
    };
    links.write = [button, view](const Member::Texts& texts) {
        const auto id = [&](std::size_t i) { return Referenced(view.get(), texts.at(i)); };
        const ButtonLinks set{id(0), id(1), id(2), id(3)};
        return button->put_ButtonLinks(&set);
    };
    return links;
}

void AddButtonMembers(const ComPtr<IKVMenuButton>& button, const View& view, std::vector<Member>& members)
{
    members.push_back(Several<float>(
        "ActiveRegion", kEdges,
        [button](Edges& edges) {
            FloatRect rect{};
            VARIANT_BOOL isValid = VARIANT_FALSE;
            const HRESULT result = button->get_ActiveRegion(&rect, &isValid);
            edges = EdgesOf(rect);
            return result == S_OK && !isValid ? S_FALSE : result;
        },
        [button](const Edges& edges) {
            const FloatRect rect = RectOf(edges);
            return button->put_ActiveRegion(&rect, VARIANT_TRUE);
        }));
    members.push_back(Several<float>("HighlightRegion", kEdges, [button](Edges& edges) {
        FloatRect rect{};
        const HRESULT result = button->GetHighlightRegion(&rect);
        edges = EdgesOf(rect);
        return result;
    }));
    members.push_back(Links(button, view));
}

void AddOverlayMembers(const ComPtr<IKVMenuOverlay>& overlay, std::vector<Member>& members)
{
    using Doubles = Numbers<double, 2>;
    members.push_back(Several<double>(
        "Crop", kFrame,
        [overlay](Numbers<double, 4>& crop) { return overlay->GetCropedRect(&crop[0], &crop[1], &crop[2], &crop[3]); },
        [overlay](const Numbers<double, 4>& crop) {
            return overlay->SetCropedRect(crop[0], crop[1], crop[2], crop[3]);
        }));
    members.push_back(Several<double>(
        "MaskSize", kSize, [overlay](Doubles& size) { return overlay->GetMaskSize(&size[0], &size[1]); },
        [overlay](const Doubles& size) { return overlay->SetMaskSize(size[0], size[1]); }));
    members.push_back(Several<double>(
        "SourceScale", kPoint, [overlay](Doubles& scale) { return overlay->GetSourceScale(&scale[0], &scale[1]); },
        [overlay](const Doubles& scale) { return overlay->SetSourceScale(scale[0], scale[1]); }));
    members.push_back(Several<LONG>("SourceSize", kSize, [overlay](Numbers<LONG, 2>& size) {
        return overlay->GetSourceMediaSize(&size[0], &size[1]);
    }));
}

void AddTextMembers(const ComPtr<IKVMenuText>& text, std::vector<Member>& members)
{
    constexpr ULONG kRGB = 0xFFFFFF;
    constexpr int kTransparencyShift = 24;
    const auto read = [text](ULONG& colour) { return text->GetColor(TextColor_Face, &colour); };
    Member colour{"Colour", {}, nullptr, nullptr};
    colour.read = [read](std::vector<Json>& values) {
        ULONG value = 0;
        const HRESULT result = read(value);
        values.emplace_back(
            ColourText({static_cast<BYTE>(value), static_cast<BYTE>(value >> 8), static_cast<BYTE>(value >> 16)}));
        return result;
    };
    colour.write = [text, read](const Member::Texts& texts) {
        const RGBEntry set = ParseColour(texts.at(0));
        ULONG value = 0;
        const HRESULT result = read(value);
        if (FAILED(result)) return result;
        value = (value & ~kRGB) | static_cast<ULONG>(set.byB) << 16 | static_cast<ULONG>(set.byG) << 8 | set.byR;
        return text->SetColor(TextColor_Face, value);
    };
    members.push_back(std::move(colour));
    members.push_back(Several<LONG>(
        "Transparency", std::array<std::string_view, 1>{"Value"},
        [read](Numbers<LONG, 1>& number) {
            ULONG value = 0;
            const HRESULT result = read(value);
            number[0] = static_cast<LONG>(value >> kTransparencyShift);
            return result;
        },
        [text, read](const Numbers<LONG, 1>& number) {
            ULONG value = 0;
            const HRESULT result = read(value);
            if (FAILED(result)) return result;
            if (number[0] < 0 || number[0] > 255) return HRESULT(E_INVALIDARG);
            return text->SetColor(TextColor_Face, (value & kRGB) | static_cast<ULONG>(number[0]) << kTransparencyShift);
        }));
    // A single value has no parts.
    members.back().parts.clear();
    members.push_back(Single("TextBoxWidth", text, &IKVMenuText::GetTextBoxWidth, &IKVMenuText::SetTextBoxWidth));
}

// Groups

void AddGroupMembers(const ComPtr<IGroupInfoNode>& group, const View& view, std::vector<Member>& members)
{
    using Frame = Numbers<float, 4>;
    members.push_back(Several<float>(
        "Rect", kFrame,
        [group](Frame& frame) {
            tagPOINTF centre{};
            tagPOINTF size{};
            const HRESULT result = group->GetGroupRect(&centre, &size);
            frame = {centre.x, centre.y, size.x, size.y};
            return result;
        },
        [group](const Frame& frame) {
            return group->SetGroupRect({frame[0], frame[1]}, {frame[2], frame[3]});
        }));
    members.push_back(Single("Rotation", group, &IGroupInfoNode::GetGroupRotation, &IGroupInfoNode::SetGroupRotation));
    members.push_back(
        Single("OriginAspect", group, &IGroupInfoNode::GetGroupOriginAspect, &IGroupInfoNode::SetGroupOriginAspect));
    Member held{"Members", {}, nullptr, nullptr};
    held.read = [group, view](std::vector<Json>& values) {
        LONG count = 0;
        const HRESULT result = group->GetGroupSize(&count);
        Json names = Json::array();
        for (LONG i = 0; i < count; ++i) {
            LONG id = 0;
            if (group->GetElementIDInGroup(i, &id) == S_OK) names.push_back(Reference(view.get(), id));
        }
        values.push_back(std::move(names));
        return result;
    };
    members.push_back(std::move(held));
}

} // namespace

Json FloatValue(float value)
{
    char text[32];
    const auto* end = std::to_chars(std::begin(text), std::end(text), value).ptr;
    double same = 0.0;
    std::from_chars(text, end, same);
    return same;
}

Json Member::Value() const
{
    std::vector<Json> values;
    const bool known = read(values) == S_OK;
    if (parts.empty()) return known ? values.at(0) : Json();
    Json object = Json::object();
    for (std::size_t i = 0; i < parts.size(); ++i)
        object[std::string(parts[i])] = known ? values.at(i) : Json();
    return object;
}

std::size_t Member::PartIndex(const std::string& part) const
{
    const auto found = std::ranges::find_if(parts, [&](std::string_view known) { return kv::SameText(known, part); });
    if (found == parts.end()) throw Failure("'" + part + "': " + Describe(DISP_E_UNKNOWNNAME));
    return static_cast<std::size_t>(found - parts.begin());
}

std::string Member::Text(const std::string* part, const std::string& what) const
{
    std::vector<Json> values;
    const HRESULT result = read(values);
    if (result != S_OK) throw Failure(what + ": " + Describe(result));
    if (part) return TextOf(values.at(PartIndex(*part)));
    std::string joined;
    for (std::size_t i = 0; i < values.size(); ++i)
        joined += (i ? std::string(kSeparator) : "") + TextOf(values[i]);
    return joined;
}

void Member::Set(const std::string* part, std::string_view text, const std::string& what) const
{
    if (!write) throw Failure(what + ": it can be read alone");
    RequireStorable(text, what);
    Texts texts;
    if (part) {
        std::vector<Json> values;
        // Where there is no value yet, the other parts are those that it would have.
        const HRESULT result = read(values);
        if (FAILED(result)) throw Failure(what + ": " + Describe(result));
        texts = TextsOf(values);
        texts.at(PartIndex(*part)) = text;
    } else if (parts.empty()) {
        texts = {std::string(text)};
    } else {
        texts = Split(text, ',');
        if (text.ends_with(',')) texts.emplace_back();
        if (texts.size() != parts.size()) {
            throw Failure(what + ": " + std::to_string(parts.size()) + " values are wanted, parted by commas");
        }
    }
    try {
        const HRESULT result = write(texts);
        if (result != S_OK) throw Failure(Describe(result));
    } catch (const Failure& failure) {
        throw Failure(what + ": " + failure.what());
    }
}

std::vector<Member> MembersOf(IUnknown& object, std::shared_ptr<const MenuView> view)
{
    std::vector<Member> members;
    if (!view) view = ViewMenuOf(&object);
    if (const auto menu = Query<IKVMenu>(&object)) AddMenuMembers(menu, view, members);
    if (const auto element = Query<IKVMenuElement>(&object)) AddElementMembers(element, view, members);
    if (const auto button = Query<IKVMenuButton>(&object)) AddButtonMembers(button, view, members);
    if (const auto overlay = Query<IKVMenuOverlay>(&object)) AddOverlayMembers(overlay, members);
    if (const auto text = Query<IKVMenuText>(&object)) AddTextMembers(text, members);
    if (const auto group = Query<IGroupInfoNode>(&object)) AddGroupMembers(group, view, members);
    return members;
}

std::optional<Member> FindSpecial(IUnknown& object, std::string_view name, std::shared_ptr<const MenuView> view)
{
    for (Member& member : MembersOf(object, std::move(view))) {
        if (kv::SameText(member.name, name)) return std::move(member);
    }
    return std::nullopt;
}

} // namespace kvproject
