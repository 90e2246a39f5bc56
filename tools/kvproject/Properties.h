#pragma once
// The properties of an object as its type information tells them, and the names that their values have.

#include "platform/automation/IDispatch.h"
#include "platform/automation/Variant.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kvproject {

/// The names of a property's values.
struct Enumeration {
    /// In the order of the type library.
    std::vector<std::pair<std::string, LONG>> enumerators;
    /// A value may join several of them.
    bool flags = false;

    /// "PAL" or 2; for flags also "Archive_MenuSources|Audio_NormalizeLevels|128". Empty for a text that names no
    /// value, and for a number without a name, unless it is one of flags.
    std::optional<LONG> Value(std::string_view text) const;
    /// The same the other way, with numbers for what has no name.
    std::string Text(LONG value) const;
    /// The names of the flags in a value, and the bits without a name.
    std::pair<std::vector<std::string>, ULONG> Split(LONG value) const;
    /// What Value takes: "NTSC, PAL".
    std::string List() const;

private:
    /// Of one name or number.
    std::optional<LONG> Single(std::string_view text) const;
};

struct Property {
    std::string name;
    DISPID id;
    bool settable = false;
    /// Empty where values have no names.
    std::optional<Enumeration> enumeration;

    /// The number in a value that was read from the property, for one whose values have names.
    std::optional<LONG> EnumerationValue(const VARIANT& value) const;
};

/// Those that can be read, in the order of the object's interface. Throws Failure for a damaged type library.
std::vector<Property> PropertiesOf(IDispatch& object);

/// What the property returns: S_FALSE, with nothing read, where it has no value at the moment.
HRESULT ReadProperty(IDispatch& object, DISPID property, kv::Variant& value);

} // namespace kvproject
