#pragma once
// The records of menus and buttons.

#include "platform/automation/TypeDescription.h"

/// A colour of a menu's palette, which has 16.
struct RGBEntry {
    BYTE byR;
    BYTE byG;
    BYTE byB;

    friend bool operator==(const RGBEntry&, const RGBEntry&) = default;
};

template <>
struct kv::RecordTable<RGBEntry> {
    static constexpr std::array fields{Field<&RGBEntry::byR>("byR"), Field<&RGBEntry::byG>("byG"),
                                       Field<&RGBEntry::byB>("byB")};
};

/// What a subpicture shows for each class of pixels (pattern, background, emphasis 1 and 2): a colour, which is an
/// index into the palette, and a contrast. All are 0 to 15.
struct SPUColourInfo {
    BYTE pattCol;
    BYTE pattCnt;
    BYTE bkgdCol;
    BYTE bkgdCnt;
    BYTE emp1Col;
    BYTE emp1Cnt;
    BYTE emp2Col;
    BYTE emp2Cnt;

    friend bool operator==(const SPUColourInfo&, const SPUColourInfo&) = default;
};

template <>
struct kv::RecordTable<SPUColourInfo> {
    static constexpr std::array fields{
        Field<&SPUColourInfo::pattCol>("pattCol"), Field<&SPUColourInfo::pattCnt>("pattCnt"),
        Field<&SPUColourInfo::bkgdCol>("bkgdCol"), Field<&SPUColourInfo::bkgdCnt>("bkgdCnt"),
        Field<&SPUColourInfo::emp1Col>("emp1Col"), Field<&SPUColourInfo::emp1Cnt>("emp1Cnt"),
        Field<&SPUColourInfo::emp2Col>("emp2Col"), Field<&SPUColourInfo::emp2Cnt>("emp2Cnt")};
};

/// The IDs of the buttons that the arrow keys lead to; 0 where one leads nowhere.
struct ButtonLinks {
    LONG left;
    LONG right;
    LONG upper;
    LONG lower;

    friend bool operator==(const ButtonLinks&, const ButtonLinks&) = default;
};

template <>
struct kv::RecordTable<ButtonLinks> {
    static constexpr std::array fields{Field<&ButtonLinks::left>("left"), Field<&ButtonLinks::right>("right"),
                                       Field<&ButtonLinks::upper>("upper"), Field<&ButtonLinks::lower>("lower")};
};

namespace kv::detail {

template <std::size_t Index>
consteval FieldDescription GuidByte(std::string_view name)
{
    return {name, {VT_UI1, 0, {}}, [](void* record) -> void* { return &static_cast<GUID*>(record)->Data4[Index]; }};
}

} // namespace kv::detail

/// An identity as a record, for callers that bind late. Its last eight bytes are fields, since a field is one value.
template <>
struct kv::RecordTable<GUID> {
    static constexpr std::array fields{
        Field<&GUID::Data1>("Data1"),   Field<&GUID::Data2>("Data2"),   Field<&GUID::Data3>("Data3"),
        detail::GuidByte<0>("Data4_0"), detail::GuidByte<1>("Data4_1"), detail::GuidByte<2>("Data4_2"),
        detail::GuidByte<3>("Data4_3"), detail::GuidByte<4>("Data4_4"), detail::GuidByte<5>("Data4_5"),
        detail::GuidByte<6>("Data4_6"), detail::GuidByte<7>("Data4_7")};
};
