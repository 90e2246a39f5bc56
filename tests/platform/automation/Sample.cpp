#include "Sample.h"

#include <string>

namespace {

constexpr const kv::EnumDescription* kEnums[]{&kv::kEnumDescription<SampleColour>};
constexpr const kv::RecordDescription* kRecords[]{&kv::kRecordDescription<SamplePoint>};
constexpr const kv::InterfaceDescription* kInterfaces[]{
    &kv::kInterfaceDescription<ISample>,        &kv::kInterfaceDescription<IPrism>,
    &kv::kInterfaceDescription<IShape>,         &kv::kInterfaceDescription<IPlainSample>,
    &kv::kInterfaceDescription<_ISampleEvents>,
};
constexpr kv::ClassDescription kClasses[]{{"Sample", &kSampleClass, "ISample", "_ISampleEvents"},
                                          {"Silent", &kSilentClass, "IPlainSample", {}}};
constexpr kv::LibraryDescription kLibrary{.name = "SampleLib",
                                          .help = "Sample 2.7 Type Library",
                                          .libid = &kSampleLibrary,
                                          .major = 2,
                                          .minor = 7,
                                          .locale = 1033,
                                          .enums = kEnums,
                                          .records = kRecords,
                                          .interfaces = kInterfaces,
                                          .classes = kClasses};

} // namespace

namespace kv {

const LibraryDescription* ModuleTypeLibrary()
{
    return &kLibrary;
}

} // namespace kv

const kv::LibraryDescription& SampleLibrary()
{
    return kLibrary;
}

HRESULT Sample::get_Count(LONG* value)
{
    return Store(*value, m_count);
}

HRESULT Sample::put_Count(LONG value)
{
    return Store(m_count, value);
}

HRESULT Sample::get_Colour(SampleColour* value)
{
    return Store(*value, m_colour);
}

HRESULT Sample::put_Colour(SampleColour value)
{
    return Store(m_colour, value);
}

HRESULT Sample::get_Visible(VARIANT_BOOL* value)
{
    return Store(*value, m_visible);
}

HRESULT Sample::put_Visible(VARIANT_BOOL value)
{
    return Store(m_visible, value);
}

HRESULT Sample::get_Width(double* value)
{
    return Store(*value, m_width);
}

HRESULT Sample::put_Width(double value)
{
    return Store(m_width, value);
}

HRESULT Sample::get_Name(BSTR* value)
{
    return Store(*value, kv::Bstr(m_name).Detach());
}

HRESULT Sample::put_Name(BSTR value)
{
    return Store(m_name, kv::Bstr::CopyOf(value));
}

HRESULT Sample::get_Value(VARIANT* value)
{
    return Store(*value, kv::Variant(m_value).Detach());
}

HRESULT Sample::put_Value(VARIANT value)
{
    ++m_calls;
    return VariantCopy(m_value.Put(), &value);
}

HRESULT Sample::get_Peer(ISample** value)
{
    return Store(*value, kv::ComPtr(m_peer).Detach());
}

HRESULT Sample::put_Peer(ISample* value)
{
    return Store(m_peer, value);
}

HRESULT Sample::get_Calls(ULONG* value)
{
    *value = m_calls;
    return S_OK;
}

HRESULT Sample::Twice(BSTR* text)
{
    ++m_calls;
    const kv::Bstr old = kv::Bstr::Attach(*text);
    if (old.Empty()) {
        *text = kv::Bstr(u"spoilt").Detach();
        return E_FAIL;
    }
    *text = kv::Bstr(std::u16string(old.View()) + std::u16string(old.View())).Detach();
    return S_OK;
}

HRESULT Sample::Divide(LONG whole, LONG part, LONG* quotient, LONG* remainder)
{
    ++m_calls;
    *quotient = whole / part;
    *remainder = whole % part;
    return S_OK;
}

HRESULT Sample::Join(LONG first, LONG second, LONG third, BSTR* text)
{
    const std::string joined = std::to_string(first) + ' ' + std::to_string(second) + ' ' + std::to_string(third);
    Store(*text, kv::Bstr(kv::ToUtf16(joined)).Detach());
    return second || third ? S_OK : S_FALSE;
}

HRESULT Sample::Measure(LONG count, SamplePoint* points, double* sum)
{
    ++m_calls;
    *sum = 0;
    for (LONG i = 0; points && i < count; ++i)
        *sum += points[i].x + points[i].y;
    return S_OK;
}

HRESULT Sample::Parts(BSTR* name, VARIANT* value, ISample** self, SampleColour* colour)
{
    get_Name(name);
    get_Value(value);
    get_Colour(colour);
    return kv::ComPtr<ISample>(this).CopyTo(self);
}

HRESULT Sample::Answer(LONG code, BSTR* text)
{
    Store(*text, kv::Bstr(u"left behind").Detach());
    return code;
}

HRESULT Sample::Narrow(BYTE a, USHORT b, ULONG c, LONGLONG d, ULONGLONG e, float f, double* sum)
{
    return Store(*sum, a + b + static_cast<double>(c) + static_cast<double>(d) + static_cast<double>(e) +
                           static_cast<double>(f));
}

HRESULT Sample::IsSame(IUnknown* object, VARIANT_BOOL* same)
{
    return Store(*same, object == Controlling() ? VARIANT_TRUE : VARIANT_FALSE);
}

HRESULT Sample::Spell(VARIANT* value)
{
    ++m_calls;
    return VariantChangeType(value, value, 0, VT_BSTR);
}

HRESULT Sample::Reset()
{
    m_calls = 0;
    return S_OK;
}

HRESULT Sample::Half(LONG number, LONG* half)
{
    return Store(*half, number / 2);
}

HRESULT Prism::get_Sides(LONG* value)
{
    *value = m_sides;
    return S_OK;
}

HRESULT Prism::put_Sides(LONG value)
{
    m_sides = value;
    return S_OK;
}

HRESULT Prism::get_Edges(LONG* value)
{
    *value = 3 * m_sides;
    return S_OK;
}

HRESULT Prism::Extend(LONG sides)
{
    m_sides += sides;
    return S_OK;
}
