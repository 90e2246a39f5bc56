#pragma once
// What an object tells and takes in a form of its own beside its plain properties: regions and colours in parts, links
// by the name of an element, and what its interface has methods for.

#include "MenuView.h"

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvproject {

using Json = nlohmann::ordered_json;

struct Member {
    /// Texts, one for each part.
    using Texts = std::vector<std::string>;

    std::string name;
    /// Such as "Left". Empty for a value that has no parts.
    std::vector<std::string_view> parts;
    /// Gives a value for each part, or one; S_FALSE where there is none at the moment.
    std::function<HRESULT(std::vector<Json>&)> read;
    /// Null where it can be read alone. May throw Failure.
    std::function<HRESULT(const Texts&)> write;
    /// Takes the value away, which an empty text stands for. Null where there is always one.
    std::function<HRESULT()> clear = nullptr;
    /// The texts that it, or each of its parts, can be. Null where they cannot be counted up, as with numbers.
    std::function<Texts()> names = nullptr;

    /// What stands in JSON: null, or an object of the parts.
    Json Value() const;
    /// "-0.5, 0.5, 0.5, -0.5"; of one part that part alone. Throws Failure, which begins with `what`, where there is no
    /// value.
    std::string Text(const std::string* part, const std::string& what) const;
    /// The other way.
    void Set(const std::string* part, std::string_view text, const std::string& what) const;
    /// Those of `names`; none for a value of several parts as a whole. Throws Failure for a part that it has not got.
    Texts Names(const std::string* part) const;

private:
    std::size_t PartIndex(const std::string& part) const;
};

/// Those of a menu, an element or a group of elements; none for any other object. A view of its menu may be given to
/// look things up in; else they make one of their own.
std::vector<Member> MembersOf(IUnknown& object, std::shared_ptr<const MenuView> view = nullptr);

/// The one of that name, in any case.
std::optional<Member> FindSpecial(IUnknown& object, std::string_view name,
                                  std::shared_ptr<const MenuView> view = nullptr);

} // namespace kvproject
