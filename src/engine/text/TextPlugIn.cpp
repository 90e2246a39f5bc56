#include "engine/text/TextPlugIn.h"

#include "KVProjectData/Engine/Media.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace kv {
namespace {

constexpr ULONG kMaxSide = 16'384;

struct SurfaceCloser {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextCloser {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

} // namespace

HRESULT CTextPlugIn::SetUp(ULONG ulWidth, ULONG ulHeight, const double* pdFirst, const double* pdSecond)
{
    if (!pdFirst || !pdSecond) return E_POINTER;
    if (ulWidth == 0 || ulHeight == 0 || ulWidth > kMaxSide || ulHeight > kMaxSide) return E_INVALIDARG;
    Matrix product{};
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            for (int i = 0; i < 4; ++i)
                product[row * 4 + column] += pdFirst[row * 4 + i] * pdSecond[i * 4 + column];
        }
    }
    if (!std::ranges::all_of(product, [](double value) { return std::isfinite(value); })) return E_INVALIDARG;
    const SectionLock lock(m_section);
    m_width = static_cast<int>(ulWidth);
    m_height = static_cast<int>(ulHeight);
    m_matrix = product;
    m_layout.reset();
    return S_OK;
}

HRESULT CTextPlugIn::SetText(IUnknown* pPlugInData)
{
    if (!pPlugInData) return E_POINTER;
    return Guarded([&] {
        std::vector<Paragraph> text = ReadRichText(XmlElement(pPlugInData).View());
        const SectionLock lock(m_section);
        m_text = std::move(text);
        m_layout.reset();
        return S_OK;
    });
}

HRESULT CTextPlugIn::GetCorners(ZXTextPoint* pCorners)
{
    if (!pCorners) return E_POINTER;
    std::fill_n(pCorners, 4, ZXTextPoint{});
    return Guarded([&] {
        const SectionLock lock(m_section);
        const TextLayout& layout = Layout();
        const double x = layout.Width() / m_width;
        const double y = layout.Height() / m_height;
        const ZXTextPoint corners[] = {Transformed(-x, y), Transformed(-x, -y), Transformed(x, -y), Transformed(x, y)};
        std::ranges::copy(corners, pCorners);
        return S_OK;
    });
}

HRESULT CTextPlugIn::Draw(ULONG* pulStride, SAFEARRAY** ppPixels)
{
    if (pulStride) *pulStride = 0;
    if (ppPixels) *ppPixels = nullptr;
    if (!pulStride || !ppPixels) return E_POINTER;
    return Guarded([&] {
        const SectionLock lock(m_section);
        SafeArray bytes = BytesOf(Drawn(Layout()));
        *pulStride = static_cast<ULONG>(m_width) * sizeof(std::uint32_t);
        *ppPixels = bytes.Detach();
        return S_OK;
    });
}

const TextLayout& CTextPlugIn::Layout()
{
    if (m_height == 0) throw Error(ZXE_E_NOT_OPEN);
    if (m_text.empty()) throw Error(ZXE_E_NO_TEXT);
    if (!m_layout) m_layout.emplace(m_text, m_height);
    return *m_layout;
}

ZXTextPoint CTextPlugIn::Transformed(double x, double y) const
{
    const auto column = [&](int i) { return x * m_matrix[i] + y * m_matrix[4 + i] + m_matrix[12 + i]; };
    const ZXTextPoint point{column(0) / column(3), column(1) / column(3)};
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) throw Error(E_INVALIDARG);
    return point;
}

Bitmap CTextPlugIn::Drawn(const TextLayout& layout) const
{
    Bitmap bitmap(m_width, m_height);
    const double w = m_matrix[15];
    const cairo_matrix_t toFrame{
        2.0 / m_width, 0.0, 0.0, -2.0 / m_height, -layout.Width() / m_width, layout.Height() / m_height};
    const cairo_matrix_t transform{m_matrix[0] / w, m_matrix[1] / w,  m_matrix[4] / w,
                                   m_matrix[5] / w, m_matrix[12] / w, m_matrix[13] / w};
    const cairo_matrix_t toPixels{m_width / 2.0, 0.0, 0.0, -m_height / 2.0, m_width / 2.0, m_height / 2.0};
    cairo_matrix_t matrix;
    cairo_matrix_multiply(&matrix, &toFrame, &transform);
    cairo_matrix_multiply(&matrix, &matrix, &toPixels);
    for (const double number : {matrix.xx, matrix.yx, matrix.xy, matrix.yy, matrix.x0, matrix.y0}) {
        if (!std::isfinite(number)) throw Error(E_INVALIDARG);
    }
    cairo_matrix_t inverse = matrix;
    // A text that is seen from its edge is not seen.
    if (cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return bitmap;
    const std::unique_ptr<cairo_surface_t, SurfaceCloser> surface(cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(bitmap.pixels.data()), CAIRO_FORMAT_ARGB32, m_width, m_height, m_width * 4));
    const std::unique_ptr<cairo_t, ContextCloser> context(cairo_create(surface.get()));
    cairo_set_matrix(context.get(), &matrix);
    layout.Draw(context.get());
    cairo_surface_flush(surface.get());
    if (cairo_status(context.get()) == CAIRO_STATUS_NO_MEMORY) throw Error(E_OUTOFMEMORY);
    return bitmap;
}

} // namespace kv
