#pragma once
// A small server for the tests of late binding and of type libraries: one of each kind of type.

#include "platform/automation/Dispatch.h"
#include "platform/automation/Members.h"

#include <string>
#include <vector>

/// Stores a value for a member that then returns `result`.
template <class T, class Value>
HRESULT Give(T& target, Value&& value, HRESULT result = S_OK)
{
    target = std::forward<Value>(value);
    return result;
}

KV_ENUM(SampleColour, Red = 1, Green = 0x20, Blue = 48);

/// An interface that the sample's type library refers to without having it.
struct IForeign : IUnknown {
    static constexpr GUID IID = "44444444-0000-0000-0000-000000000004"_guid;
    using Base = IUnknown;
};

struct SamplePoint {
    LONG x;
    double y;
    BSTR label;
    SampleColour colour;
    IUnknown* tag;
    IForeign* owner;
};

template <>
struct kv::RecordTable<SamplePoint> {
    static constexpr std::array fields{Field<&SamplePoint::x>("x"),         Field<&SamplePoint::y>("y"),
                                       Field<&SamplePoint::label>("label"), Field<&SamplePoint::colour>("colour"),
                                       Field<&SamplePoint::tag>("tag"),     Field<&SamplePoint::owner>("owner")};
};

struct ISample : IDispatch {
    static constexpr GUID IID = "44444444-0000-0000-0000-000000000001"_guid;
    using Base = IDispatch;

    virtual HRESULT get_Count(LONG* value) = 0;
    virtual HRESULT put_Count(LONG value) = 0;
    virtual HRESULT get_Colour(SampleColour* value) = 0;
    virtual HRESULT put_Colour(SampleColour value) = 0;
    virtual HRESULT get_Visible(VARIANT_BOOL* value) = 0;
    virtual HRESULT put_Visible(VARIANT_BOOL value) = 0;
    virtual HRESULT get_Width(double* value) = 0;
    virtual HRESULT put_Width(double value) = 0;
    virtual HRESULT get_Name(BSTR* value) = 0;
    virtual HRESULT put_Name(BSTR value) = 0;
    virtual HRESULT get_Value(VARIANT* value) = 0;
    virtual HRESULT put_Value(VARIANT value) = 0;
    virtual HRESULT get_Peer(ISample** value) = 0;
    virtual HRESULT put_Peer(ISample* value) = 0;
    virtual HRESULT get_Calls(ULONG* value) = 0;
    /// Doubles the text; E_FAIL for an empty one, of which it leaves "spoilt".
    virtual HRESULT Twice(BSTR* text) = 0;
    virtual HRESULT Divide(LONG whole, LONG part, LONG* quotient, LONG* remainder) = 0;
    /// Writes the numbers in a row: S_FALSE when both optional ones are 0.
    virtual HRESULT Join(LONG first, LONG second, LONG third, BSTR* text) = 0;
    /// Adds the points up.
    virtual HRESULT Measure(LONG count, SamplePoint* points, double* sum) = 0;
    virtual HRESULT Parts(BSTR* name, VARIANT* value, ISample** self, SampleColour* colour) = 0;
    /// Returns `code`, whatever it leaves in `text`.
    virtual HRESULT Answer(LONG code, BSTR* text) = 0;
    virtual HRESULT Narrow(BYTE a, USHORT b, ULONG c, LONGLONG d, ULONGLONG e, float f, double* sum) = 0;
    virtual HRESULT IsSame(IUnknown* object, VARIANT_BOOL* same) = 0;
    /// Turns whatever it finds into text.
    virtual HRESULT Spell(VARIANT* value) = 0;
    virtual HRESULT Reset() = 0;
};

template <>
struct kv::InterfaceTable<ISample> {
    static constexpr auto members = Members(
        GetPut<&ISample::get_Count, &ISample::put_Count>("Count", 1),
        GetPut<&ISample::get_Colour, &ISample::put_Colour>("Colour", 2),
        GetPut<&ISample::get_Visible, &ISample::put_Visible>("Visible", 3),
        GetPut<&ISample::get_Width, &ISample::put_Width>("Width", 4),
        GetPut<&ISample::get_Name, &ISample::put_Name>("Name", 5),
        GetPut<&ISample::get_Value, &ISample::put_Value>("Value", 6),
        GetPut<&ISample::get_Peer, &ISample::put_Peer>("Peer", 7), Get<&ISample::get_Calls>("Calls", 8),
        Method<&ISample::Twice>("Twice", 20, InOut("text")),
        Method<&ISample::Divide>("Divide", 21, "whole", "part", "quotient", "remainder"),
        Method<&ISample::Join>("Join", 22, "first", Optional("second"), Optional("third"), "text"),
        Method<&ISample::Measure>("Measure", 23, "count", "points", "sum"),
        Method<&ISample::Parts>("Parts", 24, "name", "value", "self", "colour"),
        Method<&ISample::Answer>("Answer", 25, "code", "text"),
        Method<&ISample::Narrow>("Narrow", 26, "a", "b", "c", "d", "e", "f", "sum"),
        Method<&ISample::IsSame>("IsSame", 27, "object", "same"), Method<&ISample::Spell>("Spell", 28, InOut("value")),
        // Out of order: rows stand in slot order, not by identity.
        Method<&ISample::Reset>("Reset", 0));
};

/// An interface without late binding of its own.
struct IPlainSample : IUnknown {
    static constexpr GUID IID = "44444444-0000-0000-0000-000000000002"_guid;
    using Base = IUnknown;

    virtual HRESULT Half(LONG number, LONG* half) = 0;
};

template <>
struct kv::InterfaceTable<IPlainSample> {
    static constexpr auto members = Members(Method<&IPlainSample::Half>("Half", 1, "number", "half"));
};

/// An interface that another one extends.
struct IShape : IDispatch {
    static constexpr GUID IID = "44444444-0000-0000-0000-000000000005"_guid;
    using Base = IDispatch;

    virtual HRESULT get_Sides(LONG* value) = 0;
    virtual HRESULT put_Sides(LONG value) = 0;
};

template <>
struct kv::InterfaceTable<IShape> {
    static constexpr auto members = Members(GetPut<&IShape::get_Sides, &IShape::put_Sides>("Sides", 1));
};

struct IPrism : IShape {
    static constexpr GUID IID = "44444444-0000-0000-0000-000000000006"_guid;
    using Base = IShape;

    virtual HRESULT get_Edges(LONG* value) = 0;
    virtual HRESULT Extend(LONG sides) = 0;
};

template <>
struct kv::InterfaceTable<IPrism> {
    static constexpr auto members =
        Members(Get<&IPrism::get_Edges>("Edges", 2), Method<&IPrism::Extend>("Extend", 3, "sides"));
};

class Prism final : public kv::Object<kv::Dual<IPrism>> {
public:
    HRESULT get_Sides(LONG* value) override { return Give(*value, m_sides); }
    HRESULT put_Sides(LONG value) override { return Give(m_sides, value); }
    HRESULT get_Edges(LONG* value) override { return Give(*value, 3 * m_sides); }
    HRESULT Extend(LONG sides) override { return Give(m_sides, m_sides + sides); }

private:
    LONG m_sides = 3;
};

struct _ISampleEvents : IDispatch {
    static constexpr GUID IID = "44444444-0000-0000-0000-000000000003"_guid;
    using Base = IDispatch;
};

template <>
struct kv::InterfaceTable<_ISampleEvents> {
    static constexpr InterfaceKind kind = InterfaceKind::Dispatch;
    static constexpr auto members =
        Members(Event<LONG, BSTR>("Renamed", 1, "id", "name"), Event<IDispatch*>("Moved", 2, "peer"),
                Event<LONG, const LONG*>("Changed", 3, "count", "ids"),
                Event<IForeign*, ISample*, IForeign*>("Traded", 4, "from", "what", "to"));
};

inline constexpr GUID kSampleLibrary = "44444444-0000-0000-0000-000000000010"_guid;
inline constexpr CLSID kSampleClass = "44444444-0000-0000-0000-000000000011"_guid;
inline constexpr CLSID kSilentClass = "44444444-0000-0000-0000-000000000012"_guid;

const kv::LibraryDescription& SampleLibrary();

class Sample final : public kv::Object<kv::Dual<ISample>, IPlainSample> {
public:
    HRESULT get_Count(LONG* value) override { return Store(*value, m_count); }
    HRESULT put_Count(LONG value) override { return Store(m_count, value); }
    HRESULT get_Colour(SampleColour* value) override { return Store(*value, m_colour); }
    HRESULT put_Colour(SampleColour value) override { return Store(m_colour, value); }
    HRESULT get_Visible(VARIANT_BOOL* value) override { return Store(*value, m_visible); }
    HRESULT put_Visible(VARIANT_BOOL value) override { return Store(m_visible, value); }
    HRESULT get_Width(double* value) override { return Store(*value, m_width); }
    HRESULT put_Width(double value) override { return Store(m_width, value); }
    HRESULT get_Name(BSTR* value) override { return Store(*value, kv::Bstr(m_name).Detach()); }
    HRESULT put_Name(BSTR value) override { return Store(m_name, kv::Bstr::CopyOf(value)); }
    HRESULT get_Value(VARIANT* value) override { return Store(*value, kv::Variant(m_value).Detach()); }
    HRESULT put_Value(VARIANT value) override
    {
        ++m_calls;
        return VariantCopy(m_value.Put(), &value);
    }

    HRESULT get_Peer(ISample** value) override { return Store(*value, kv::ComPtr(m_peer).Detach()); }
    HRESULT put_Peer(ISample* value) override { return Store(m_peer, value); }
    HRESULT get_Calls(ULONG* value) override { return Give(*value, m_calls); }

    HRESULT Twice(BSTR* text) override
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

    HRESULT Divide(LONG whole, LONG part, LONG* quotient, LONG* remainder) override
    {
        ++m_calls;
        *quotient = whole / part;
        *remainder = whole % part;
        return S_OK;
    }

    HRESULT Join(LONG first, LONG second, LONG third, BSTR* text) override
    {
        const std::string joined = std::to_string(first) + ' ' + std::to_string(second) + ' ' + std::to_string(third);
        Store(*text, kv::Bstr(kv::ToUtf16(joined)).Detach());
        return second || third ? S_OK : S_FALSE;
    }

    HRESULT Measure(LONG count, SamplePoint* points, double* sum) override
    {
        ++m_calls;
        *sum = 0;
        for (LONG i = 0; points && i < count; ++i)
            *sum += points[i].x + points[i].y;
        return S_OK;
    }

    HRESULT Parts(BSTR* name, VARIANT* value, ISample** self, SampleColour* colour) override
    {
        get_Name(name);
        get_Value(value);
        get_Colour(colour);
        return kv::ComPtr<ISample>(this).CopyTo(self);
    }

    HRESULT Answer(LONG code, BSTR* text) override { return Store(*text, kv::Bstr(u"left behind").Detach()), code; }

    HRESULT Narrow(BYTE a, USHORT b, ULONG c, LONGLONG d, ULONGLONG e, float f, double* sum) override
    {
        return Store(*sum, a + b + static_cast<double>(c) + static_cast<double>(d) + static_cast<double>(e) +
                               static_cast<double>(f));
    }

    HRESULT IsSame(IUnknown* object, VARIANT_BOOL* same) override
    {
        return Store(*same, object == Controlling() ? VARIANT_TRUE : VARIANT_FALSE);
    }
    HRESULT Spell(VARIANT* value) override
    {
        ++m_calls;
        return VariantChangeType(value, value, 0, VT_BSTR);
    }

    HRESULT Reset() override { return Give(m_calls, ULONG{0}); }

    HRESULT Half(LONG number, LONG* half) override { return Store(*half, number / 2); }

private:
    template <class T, class Value>
    HRESULT Store(T& target, Value&& value)
    {
        ++m_calls;
        return Give(target, std::forward<Value>(value));
    }

    ULONG m_calls = 0;
    LONG m_count = 0;
    SampleColour m_colour = Red;
    VARIANT_BOOL m_visible = VARIANT_FALSE;
    double m_width = 0;
    kv::Bstr m_name;
    kv::Variant m_value;
    kv::ComPtr<ISample> m_peer;
};

inline constexpr ULONG kUntouched = 77;

struct NamedArgument {
    DISPID id;
    VARIANT value;
};

struct Outcome {
    HRESULT code = S_OK;
    kv::Variant value;
    EXCEPINFO exception{};
    ULONG bad = kUntouched;
};

/// Calls late bound, with the positional arguments in the order of the parameters.
inline Outcome Invoke(IDispatch& object, DISPID member, WORD flags, const std::vector<VARIANT>& positional = {},
                      const std::vector<NamedArgument>& named = {})
{
    std::vector<VARIANT> arguments;
    std::vector<DISPID> ids;
    for (const NamedArgument& argument : named) {
        arguments.push_back(argument.value);
        ids.push_back(argument.id);
    }
    arguments.insert(arguments.end(), positional.rbegin(), positional.rend());
    DISPPARAMS params{arguments.data(), ids.data(), static_cast<ULONG>(arguments.size()),
                      static_cast<ULONG>(ids.size())};
    Outcome outcome;
    // Stale contents that must not shine through.
    outcome.value.vt = VT_I4;
    outcome.exception.scode = E_FAIL;
    outcome.code = object.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, &outcome.value,
                                 &outcome.exception, &outcome.bad);
    return outcome;
}

inline VARIANT Reference(VARTYPE type, void* place)
{
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(type | VT_BYREF);
    value.byref = place;
    return value;
}
