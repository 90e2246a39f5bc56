#include "KVProjectData/menus/RecordNode.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/tree/AttributeArchive.h"

#include <cmath>

namespace kv {
namespace {

/// The attributes of a colour record, each an index into the palette and then a contrast.
struct ColourField {
    BYTE SPUColourInfo::*index;
    BYTE SPUColourInfo::*contrast;
};

constexpr std::array kColourFields{ColourField{&SPUColourInfo::pattCol, &SPUColourInfo::pattCnt},
                                   ColourField{&SPUColourInfo::bkgdCol, &SPUColourInfo::bkgdCnt},
                                   ColourField{&SPUColourInfo::emp1Col, &SPUColourInfo::emp1Cnt},
                                   ColourField{&SPUColourInfo::emp2Col, &SPUColourInfo::emp2Cnt}};

struct ColourNames {
    std::string_view index;
    std::string_view contrast;
};

using AllColourNames = std::array<ColourNames, kColourFields.size()>;

constexpr AllColourNames kNormal{
    {{"pattCol", "pattCnt"}, {"bkgdCol", "bkgdCnt"}, {"emp1Col", "emp1Cnt"}, {"emp2Col", "emp2Cnt"}}};
constexpr AllColourNames kSelected{{{"pattSelCol", "pattSelCnt"},
                                    {"bkgdSelCol", "bkgdSelCnt"},
                                    {"emp1SelCol", "emp1SelCnt"},
                                    {"emp2SelCol", "emp2SelCnt"}}};
constexpr AllColourNames kActivated{{{"pattActCol", "pattActCnt"},
                                     {"bkgdActCol", "bkgdActCnt"},
                                     {"emp1ActCol", "emp1ActCnt"},
                                     {"emp2ActCol", "emp2ActCnt"}}};

constexpr std::array<std::string_view, 16> kEntryNames{"entry00", "entry01", "entry02", "entry03", "entry04", "entry05",
                                                       "entry06", "entry07", "entry08", "entry09", "entry10", "entry11",
                                                       "entry12", "entry13", "entry14", "entry15"};

void ListFields(AttributeArchive& archive, const AllColourNames& names, SPUColourInfo& colours)
{
    for (std::size_t i = 0; i < names.size(); ++i) {
        archive(names[i].index, colours.*kColourFields[i].index);
        archive(names[i].contrast, colours.*kColourFields[i].contrast);
    }
}

void ListFields(AttributeArchive& archive, FloatRect& rect)
{
    archive("bottom", rect.fBottom);
    archive("left", rect.fLeft);
    archive("right", rect.fRight);
    archive("top", rect.fTop);
}

HRESULT Check(const SPUColourInfo& colours)
{
    constexpr BYTE kHighest = 15;
    for (const auto& [index, contrast] : kColourFields) {
        if (colours.*index > kHighest) return KV_E_BAD_COLOUR_INDEX;
        if (colours.*contrast > kHighest) return KV_E_BAD_CONTRAST;
    }
    return S_OK;
}

void EmphasisePattern(SPUColourInfo& colours)
{
    colours.emp2Col = colours.pattCol;
    colours.emp2Cnt = static_cast<BYTE>((colours.pattCnt + 1) / 2);
}

bool IsFinite(const FloatRect& rect)
{
    return std::isfinite(rect.fLeft) && std::isfinite(rect.fTop) && std::isfinite(rect.fRight) &&
           std::isfinite(rect.fBottom);
}

ULONG Packed(const RGBEntry& entry)
{
    return static_cast<ULONG>(entry.byB) << 16 | static_cast<ULONG>(entry.byG) << 8 | entry.byR;
}

RGBEntry Unpacked(ULONG colour)
{
    return {static_cast<BYTE>(colour), static_cast<BYTE>(colour >> 8), static_cast<BYTE>(colour >> 16)};
}

} // namespace

void CPaletteNode::Attributes(AttributeArchive& archive)
{
    constexpr int kDigits = 6;
    for (std::size_t i = 0; i < m_value.size(); ++i) {
        ULONG colour = Packed(m_value[i]);
        if (archive(kEntryNames[i], Hex{colour, kDigits})) {
            m_value[i] = Unpacked(colour);
        } else if (archive.Reads()) {
            // A palette may be shorter.
            return;
        }
    }
}

HRESULT CButtonSchemeNode::SetColours(const ButtonColours& colours)
{
    HRESULT result = Check(colours.selected);
    if (SUCCEEDED(result)) result = Check(colours.activated);
    if (SUCCEEDED(result)) Replace(colours);
    return result;
}

ButtonColours CButtonSchemeNode::TakeColours()
{
    const SectionLock lock(Section());
    const ButtonColours colours = m_value;
    EmphasisePattern(m_value.selected);
    EmphasisePattern(m_value.activated);
    return colours;
}

void CButtonSchemeNode::Attributes(AttributeArchive& archive)
{
    ListFields(archive, kSelected, m_value.selected);
    ListFields(archive, kActivated, m_value.activated);
}

HRESULT CSPUColourNode::SetColours(const SPUColourInfo& colours)
{
    const HRESULT result = Check(colours);
    if (SUCCEEDED(result)) Replace(colours);
    return result;
}

void CSPUColourNode::Attributes(AttributeArchive& archive)
{
    ListFields(archive, kNormal, m_value);
}

HRESULT CLayoutRectNode::SetRect(const FloatRect& rect)
{
    if (!IsFinite(rect)) return E_INVALIDARG;
    Replace(rect);
    return S_OK;
}

void CLayoutRectNode::Attributes(AttributeArchive& archive)
{
    ListFields(archive, m_value);
}

HRESULT CActiveRgnNode::SetRegion(const ActiveRegion& region)
{
    if (!IsFinite(region.rect)) return E_INVALIDARG;
    Replace(region);
    return S_OK;
}

void CActiveRgnNode::Attributes(AttributeArchive& archive)
{
    ListFields(archive, m_value.rect);
    archive("valid", m_value.valid);
}

void CButtonLinksNode::Attributes(AttributeArchive& archive)
{
    archive("left", m_value.left);
    archive("lower", m_value.lower);
    archive("right", m_value.right);
    archive("upper", m_value.upper);
}

} // namespace kv
