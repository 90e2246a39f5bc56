#pragma once
// The text plug-in component.

#include "KVProjectData/Engine/Text.h"
#include "engine/media/Bitmap.h"
#include "engine/text/RichText.h"
#include "engine/text/TextLayout.h"
#include "platform/com/Object.h"
#include "platform/system/CriticalSection.h"

#include <array>
#include <optional>

namespace kv {

class CTextPlugIn final : public Object<IZXTextPlugIn> {
public:
    using Object::Object;

    HRESULT SetUp(ULONG ulWidth, ULONG ulHeight, const double* pdFirst, const double* pdSecond) override;
    HRESULT SetText(IUnknown* pPlugInData) override;
    HRESULT GetCorners(ZXTextPoint* pCorners) override;
    HRESULT Draw(ULONG* pulStride, SAFEARRAY** ppPixels) override;

private:
    /// Row by row.
    using Matrix = std::array<double, 16>;

    const TextLayout& Layout();
    ZXTextPoint Transformed(double x, double y) const;
    Bitmap Drawn(const TextLayout& layout) const;

    CriticalSection m_section;
    int m_width = 0;
    int m_height = 0;
    Matrix m_matrix{};
    /// Empty until a text was set.
    std::vector<Paragraph> m_text;
    /// Made when it is asked for.
    std::optional<TextLayout> m_layout;
};

} // namespace kv
