#include "ColourTexts.h"
#include "KVProjectData/KVProjectData.h"
#include "KindMembers.h"
#include "MemberForms.h"
#include "platform/com/TaskMemory.h"

namespace kvproject {

using kv::ComPtr;

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

namespace {

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
    links.names = [view] { return view ? view->ButtonNames() : Member::Texts(); };
    return links;
}

} // namespace

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
    members.back().clear = [button] {
        constexpr FloatRect kNone{};
        return button->put_ActiveRegion(&kNone, VARIANT_FALSE);
    };
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
} // namespace kvproject
