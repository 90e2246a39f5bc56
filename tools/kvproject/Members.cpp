#include "Members.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "KindMembers.h"
#include "MemberValues.h"
#include "Text.h"
#include "platform/system/Case.h"

#include <algorithm>

namespace kvproject {
namespace {

using kv::Query;

constexpr std::string_view kSeparator = ", ";

} // namespace

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
    } else if (parts.empty() || (clear && text.empty())) {
        texts = {std::string(text)};
    } else {
        texts = Split(text, ',');
        if (text.ends_with(',')) texts.emplace_back();
        if (texts.size() != parts.size()) {
            throw Failure(what + ": " + std::to_string(parts.size()) + " values are wanted, parted by commas");
        }
    }
    try {
        const HRESULT result = !part && clear && text.empty() ? clear() : write(texts);
        if (result != S_OK) throw Failure(Describe(result));
    } catch (const Failure& failure) {
        throw Failure(what + ": " + failure.what());
    }
}

Member::Texts Member::Names(const std::string* part) const
{
    if (part) PartIndex(*part);
    return names && (part || parts.empty()) ? names() : Texts();
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
