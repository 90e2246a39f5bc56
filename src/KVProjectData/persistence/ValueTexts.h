#pragma once
// Text forms of enumerations and flags: a number with its names, of which only the number is read.

#include "KVProjectData/tree/AttributeArchive.h"

#include <span>

namespace kv {

/// Writes "%d (%s)" with the name at the value's index, "%d (unknown)" beyond the names.
class EnumNames final : public ValueNames {
public:
    constexpr explicit EnumNames(std::span<const std::string_view> names) : m_names(names) {}
    void AppendText(ULONG value, std::string& text) const override;

private:
    std::span<const std::string_view> m_names;
};

/// Writes "%u (" with the names of the set bits, lowest first, joined by "|", and ")".
class FlagNames final : public ValueNames {
public:
    constexpr explicit FlagNames(std::span<const std::string_view> names) : m_names(names) {}
    void AppendText(ULONG value, std::string& text) const override;

private:
    std::span<const std::string_view> m_names;
};

template <class T>
NamedField<T> Enumeration(T& value, const EnumNames& names)
{
    return {value, names};
}

template <class T>
NamedField<T> Flags(T& value, const FlagNames& names)
{
    return {value, names};
}

extern const EnumNames kDiscFormatNames;
extern const EnumNames kDiscSizeNames;
extern const EnumNames kTVStandardNames;
extern const EnumNames kDiscVideoTypeNames;
extern const EnumNames kAspectRatioNames;
extern const EnumNames kAudioFormatNames;
extern const EnumNames kSubpictureFormatNames;
extern const EnumNames kVideoFormatNames;
extern const EnumNames kVideoResolutionNames;
extern const EnumNames kWideDisplayModeNames;
extern const EnumNames kOverlayHighlightNames;
extern const EnumNames kSourceTypeNames;
extern const EnumNames kTextHighlightNames;
extern const EnumNames kTextTypeNames;
extern const EnumNames kTextHandleNames;

extern const FlagNames kProjectOptionNames;
extern const FlagNames kMenuFlagNames;
extern const FlagNames kMenuTypeNames;
extern const FlagNames kOverlayTypeNames;
extern const FlagNames kTextTypeFlagNames;
extern const FlagNames kTitleTypeNames;

} // namespace kv
