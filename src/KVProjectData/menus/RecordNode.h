#pragma once
// The small records of a menu and of a button, each a node of its own: colours, areas, links.

#include "KVProjectData/Geometry.h"
#include "KVProjectData/MenuRecords.h"
#include "KVProjectData/tree/ProjectNode.h"

#include <array>

namespace kv {

/// Holds one record. A plain member of its owner, which is its parent.
template <class T>
class CRecordNode : public CProjectNode {
public:
    T Value()
    {
        const SectionLock lock(Section());
        return m_value;
    }

    /// The owner, which it is part of.
    IUnknown* Identity() override { return Parent()->Identity(); }

protected:
    explicit CRecordNode(NodeType type) : CProjectNode(type) {}

    /// Keeps the record for undo and replaces it. Throws for lack of memory, with the record as it was.
    void Replace(const T& value)
    {
        const SectionLock lock(Section());
        RecordState(false);
        m_value = value;
    }

    T m_value{};
};

/// The colours that the indices of subpicture colours refer to.
using Palette = std::array<RGBEntry, 16>;

class CPaletteNode final : public CRecordNode<Palette> {
public:
    CPaletteNode() : CRecordNode(typePalette) {}

    void SetEntries(const Palette& entries) { Replace(entries); }

    void Attributes(AttributeArchive& archive) override;
};

/// The looks of a button in its two states.
struct ButtonColours {
    SPUColourInfo selected;
    SPUColourInfo activated;
};

class CButtonSchemeNode final : public CRecordNode<ButtonColours> {
public:
    /// `name` is a literal: the name of the scheme's element.
    explicit CButtonSchemeNode(std::string_view name) : CRecordNode(typeBtnScheme), m_name(name) {}

    /// KV_E_BAD_COLOUR_INDEX or KV_E_BAD_CONTRAST for the first value that no palette and no contrast has; then nothing
    /// changes.
    HRESULT SetColours(const ButtonColours& colours);

    /// The colours; afterwards the second emphasis of each is its pattern with half the contrast.
    ButtonColours TakeColours();

    std::string_view GetName(ULONG) const override { return m_name; }

    void Attributes(AttributeArchive& archive) override;

private:
    const std::string_view m_name;
};

/// The colours of a menu's subpicture outside of its buttons.
class CSPUColourNode final : public CRecordNode<SPUColourInfo> {
public:
    CSPUColourNode() : CRecordNode(typeSPUColours) {}

    /// Refuses what a scheme refuses.
    HRESULT SetColours(const SPUColourInfo& colours);

    void Attributes(AttributeArchive& archive) override;
};

/// The area in which the buttons of a menu are laid out.
class CLayoutRectNode final : public CRecordNode<FloatRect> {
public:
    CLayoutRectNode() : CRecordNode(typeLayoutRect) {}

    /// E_INVALIDARG for numbers that are not finite.
    HRESULT SetRect(const FloatRect& rect);

    void Attributes(AttributeArchive& archive) override;
};

/// The area of a button that answers to a pointer.
struct ActiveRegion {
    FloatRect rect;
    bool valid;
};

class CActiveRgnNode final : public CRecordNode<ActiveRegion> {
public:
    CActiveRgnNode() : CRecordNode(typeActiveRgn) {}

    /// E_INVALIDARG for numbers that are not finite.
    HRESULT SetRegion(const ActiveRegion& region);

    void Attributes(AttributeArchive& archive) override;
};

/// The buttons that the arrow keys lead to from a button.
class CButtonLinksNode final : public CRecordNode<ButtonLinks> {
public:
    CButtonLinksNode() : CRecordNode(typeButtonLinks) {}

    void SetLinks(const ButtonLinks& links) { Replace(links); }

    void Attributes(AttributeArchive& archive) override;
};

} // namespace kv
