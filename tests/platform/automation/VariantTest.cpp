#include "platform/automation/Variant.h"

#include "platform/automation/IDispatch.h"
#include "platform/automation/SafeArray.h"
#include "platform/com/Object.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::Variant;

class Plain : public kv::Object<IUnknown> {};

class Dispatching : public kv::Object<IDispatch> {
public:
    HRESULT GetTypeInfoCount(ULONG*) override { return E_NOTIMPL; }
    HRESULT GetTypeInfo(ULONG, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT GetIDsOfNames(REFIID, OLECHAR**, ULONG, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, ULONG*) override { return E_NOTIMPL; }
};

/// Fails the test that leaves an object behind.
class VariantTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(kv::g_moduleLocks, 0); }
};

Variant Of(VARTYPE type, ULONGLONG bits)
{
    Variant value;
    value.vt = type;
    value.ullVal = bits;
    return value;
}

/// A reference to a value of that type.
Variant To(VARTYPE type, void* place)
{
    Variant reference;
    reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
    reference.byref = place;
    return reference;
}

/// The text of the converted value, or what is wrong with it.
std::string Converted(const VARIANT& source, VARTYPE type)
{
    Variant result;
    const HRESULT changed = VariantChangeType(&result, &source, 0, type);
    if (SUCCEEDED(changed)) return kv::ToUtf8(kv::View(result.As(VT_BSTR).bstrVal));
    EXPECT_EQ(result.vt, VT_EMPTY);
    return changed == DISP_E_OVERFLOW       ? "overflow"
           : changed == DISP_E_TYPEMISMATCH ? "mismatch"
           : changed == DISP_E_BADVARTYPE   ? "bad type"
                                            : "other";
}

std::string Read(std::u16string_view text, VARTYPE type)
{
    return Converted(Variant(text), type);
}

TEST_F(VariantTest, TextReadsAsNumbers)
{
    const std::tuple<std::u16string_view, VARTYPE, std::string_view> cases[]{
        {u"42", VT_I4, "42"},
        {u" \t+42\r\n", VT_I4, "42"},
        {u"-0", VT_I4, "0"},
        {u"0012", VT_UI1, "12"},
        {u"12.0", VT_I4, "12"},
        {u"0.5", VT_I4, "0"},
        {u"1.5", VT_I4, "2"},
        {u"2.5", VT_I4, "2"},
        {u"-2.5", VT_I4, "-2"},
        {u"1e3", VT_I2, "1000"},
        {u".5", VT_R8, "0.5"},
        {u"5.", VT_R8, "5"},
        {u"255", VT_UI1, "255"},
        {u"256", VT_UI1, "overflow"},
        {u"255.5", VT_UI1, "overflow"},
        {u"-1", VT_UI4, "overflow"},
        {u"-0.5", VT_UI4, "0"},
        {u"-128", VT_I1, "-128"},
        {u"-129", VT_I1, "overflow"},
        {u"65535", VT_UI2, "65535"},
        {u"32768", VT_I2, "overflow"},
        {u"-2147483648", VT_INT, "-2147483648"},
        {u"2147483648", VT_I4, "overflow"},
        {u"4294967295", VT_UINT, "4294967295"},
        {u"9223372036854775807", VT_I8, "9223372036854775807"},
        {u"9223372036854775808", VT_I8, "overflow"},
        {u"18446744073709551615", VT_UI8, "18446744073709551615"},
        {u"18446744073709551616", VT_UI8, "overflow"},
        {u"3.4028235e38", VT_R4, "3.4028235e+38"},
        {u"1e39", VT_R4, "overflow"},
        {u"1e309", VT_R8, "overflow"},
        {u"1e999999999999999999999", VT_R8, "overflow"}};
    for (const auto& [text, type, expected] : cases)
        EXPECT_EQ(Read(text, type), expected) << kv::ToUtf8(text);
    using namespace std::string_view_literals;
    for (const auto text : {u""sv, u"  "sv, u"+"sv, u"-"sv, u"."sv, u"+-1"sv, u"--1"sv, u"- 1"sv, u"1 2"sv, u"1,5"sv,
                            u"0x10"sv, u"inf"sv, u"-nan"sv, u"1e"sv, u"\u0661"sv, u"1\0"sv}) {
        for (const VARTYPE type : {VT_I4, VT_R8, VT_UI8, VT_R4})
            EXPECT_EQ(Read(text, type), "mismatch") << kv::ToUtf8(text);
    }
}

TEST_F(VariantTest, BooleansReadFromWordsAndNumbers)
{
    const std::tuple<std::u16string_view, std::string_view> cases[]{
        {u"true", "-1"},      {u"TRUE", "-1"},      {u" False ", "0"},      {u"-1", "-1"},
        {u"0", "0"},          {u"0.0", "0"},        {u"0.25", "-1"},        {u"1", "-1"},
        {u"yes", "mismatch"}, {u"tru", "mismatch"}, {u"truex", "mismatch"}, {u"", "mismatch"}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(Read(text, VT_BOOL), expected) << kv::ToUtf8(text);
    EXPECT_EQ(Converted(Of(VT_UI8, ~0ULL), VT_BOOL), "-1");
    EXPECT_EQ(Converted(Variant(0.0), VT_BOOL), "0");
    EXPECT_EQ(Variant(true).As(VT_I4).lVal, -1);
    EXPECT_EQ(Variant(true).As(VT_UI4).ulVal, 0xFFFFFFFF);
}

TEST_F(VariantTest, NumbersPrintWithTheFewestDigits)
{
    const std::pair<double, std::string_view> cases[] = {
        {0.1, "0.1"},
        {29.97, "29.97"},
        {-0.0, "-0"},
        {100000, "100000"},
        {1e14, "100000000000000"},
        {1e15, "1e+15"},
        {1e-5, "0.00001"},
        {1.0 / 3, "0.3333333333333333"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"}};
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(Converted(Variant(value), VT_BSTR), text);
        EXPECT_EQ(Variant(value).As(VT_BSTR).As(VT_R8).dblVal, value);
    }
    EXPECT_EQ(Converted(Variant(0.1f), VT_BSTR), "0.1");
    EXPECT_EQ(Converted(Variant(std::numeric_limits<double>::infinity()), VT_BSTR), "mismatch");
    EXPECT_EQ(Converted(Variant(std::nan("")), VT_BSTR), "mismatch");
}

TEST_F(VariantTest, NumbersConvertWithinTheTargetsRange)
{
    constexpr double kTwo63 = 9223372036854775808.0;
    const std::tuple<Variant, VARTYPE, std::string_view> cases[] = {
        {Variant(LONG{-1}), VT_UI8, "overflow"},
        {Variant(ULONG{0xFFFFFFFF}), VT_I4, "overflow"},
        {Variant(ULONG{0xFFFFFFFF}), VT_I8, "4294967295"},
        {Of(VT_UI8, ~0ULL), VT_I8, "overflow"},
        {Variant(LONGLONG{1} << 62), VT_R8, "4.611686018427388e+18"},
        {Variant(kTwo63), VT_I8, "overflow"},
        {Variant(-kTwo63), VT_I8, "-9223372036854775808"},
        {Variant(kTwo63), VT_UI8, "9223372036854775808"},
        {Variant(2 * kTwo63), VT_UI8, "overflow"},
        {Variant(std::nan("")), VT_I4, "overflow"},
        {Variant(127.5), VT_I1, "overflow"},
        {Variant(1e300), VT_R4, "overflow"},
        {Variant(), VT_I4, "0"},
        {Variant(), VT_BSTR, ""},
        {Variant(), VT_BOOL, "0"},
        {Of(VT_NULL, 0), VT_I4, "mismatch"},
        {Of(VT_NULL, 0), VT_BSTR, "mismatch"},
        {Of(VT_ERROR, 0x80020004), VT_I4, "mismatch"},
        {Variant(LONG{1}), VT_NULL, "mismatch"},
        {Variant(LONG{1}), VT_UNKNOWN, "mismatch"},
        {Variant(LONG{1}), VT_ARRAY | VT_I4, "mismatch"},
        {Variant(LONG{1}), VT_VARIANT, "bad type"},
        {Variant(LONG{1}), VT_RECORD, "mismatch"}};
    for (const auto& [source, type, expected] : cases) {
        EXPECT_EQ(Converted(source, type), expected) << source.vt << " to " << type;
    }
}

TEST_F(VariantTest, ConvertsInPlaceAndKeepsTheTargetOnFailure)
{
    Variant value(u"12");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_I2), S_OK);
    EXPECT_EQ(value.vt, VT_I2);
    EXPECT_EQ(value.iVal, 12);
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_I2), S_OK);

    Variant text(u"not a number");
    EXPECT_EQ(VariantChangeType(&text, &text, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(kv::View(text.bstrVal), u"not a number");
}

TEST_F(VariantTest, LongTextIsReadInOneGo)
{
    EXPECT_EQ(Read(std::u16string(4'000'000, u' ') + u"7", VT_I4), "7");
    EXPECT_EQ(Read(std::u16string(4'000'000, u'0') + u"7", VT_I4), "7");
    EXPECT_EQ(Read(std::u16string(4'000'000, u'9'), VT_I8), "overflow");
    EXPECT_EQ(Read(std::u16string(4'000'000, u'9'), VT_R8), "overflow");
    EXPECT_EQ(Read(u"0." + std::u16string(4'000'000, u'0'), VT_R8), "0");
}

TEST_F(VariantTest, ObjectsConvertToTheirOtherInterface)
{
    const ComPtr<Dispatching> dispatching = kv::Make<Dispatching>();
    const Variant unknown(static_cast<IUnknown*>(dispatching.Get()));
    const Variant dispatch = unknown.As(VT_DISPATCH);
    EXPECT_EQ(dispatch.pdispVal, static_cast<IDispatch*>(dispatching.Get()));
    EXPECT_EQ(dispatch.As(VT_UNKNOWN).punkVal, dispatching->Inner());

    const ComPtr<Plain> plain = kv::Make<Plain>();
    EXPECT_EQ(Converted(Variant(plain->Inner()), VT_DISPATCH), "mismatch");
    EXPECT_EQ(Converted(unknown, VT_I4), "mismatch");
    EXPECT_EQ(Variant(static_cast<IUnknown*>(nullptr)).As(VT_DISPATCH).pdispVal, nullptr);
}

TEST_F(VariantTest, CopiesOwnWhatTheyHold)
{
    const ComPtr<Plain> object = kv::Make<Plain>();
    {
        const Variant original(object->Inner());
        const Variant copy = original;
        EXPECT_EQ(object->AddRef(), 4u);
        EXPECT_EQ(object->Release(), 3u);
        EXPECT_EQ(copy.punkVal, original.punkVal);
    }
    EXPECT_EQ(object->AddRef(), 2u);
    object->Release();

    Variant text(u"text");
    EXPECT_EQ(VariantCopy(&text, &text), S_OK);
    const Variant copy = text;
    EXPECT_NE(copy.bstrVal, text.bstrVal);
    EXPECT_EQ(kv::View(copy.bstrVal), u"text");

    Variant array;
    array.vt = VT_ARRAY | VT_BSTR;
    array.parray = SafeArrayCreateVector(VT_BSTR, 0, 1);
    const LONG first = 0;
    ASSERT_EQ(SafeArrayPutElement(array.parray, &first, text.bstrVal), S_OK);
    const Variant arrayCopy = array.As(VT_ARRAY | VT_BSTR);
    EXPECT_NE(arrayCopy.parray, array.parray);
    Bstr element;
    ASSERT_EQ(SafeArrayGetElement(arrayCopy.parray, &first, element.Put()), S_OK);
    EXPECT_EQ(element.View(), u"text");
}

TEST_F(VariantTest, ReferencesAreFollowedOnTheSource)
{
    SHORT number = -7;
    Variant byNumber = To(VT_I2, &number);
    EXPECT_EQ(Converted(byNumber, VT_BSTR), "-7");
    const Variant byVariant = To(VT_VARIANT, &byNumber);
    Variant copy;
    EXPECT_EQ(VariantCopyInd(&copy, &byVariant), S_OK);
    EXPECT_EQ(copy.vt, VT_I2);
    EXPECT_EQ(copy.iVal, -7);
    Variant reference;
    EXPECT_EQ(VariantCopy(&reference, &byVariant), S_OK);
    EXPECT_EQ(reference.pvarVal, &byNumber);

    Bstr text(u"text");
    BSTR place = text.Get();
    Variant byText = To(VT_BSTR, &place);
    EXPECT_EQ(VariantCopyInd(&byText, &byText), S_OK);
    EXPECT_EQ(byText.vt, VT_BSTR);
    EXPECT_NE(byText.bstrVal, text.Get());

    Variant circle;
    circle.vt = VT_BYREF | VT_VARIANT;
    circle.pvarVal = &circle;
    const Variant nowhere = To(VT_I4, nullptr);
    for (const HRESULT result : {VariantCopyInd(&copy, &circle), VariantCopyInd(&copy, &nowhere),
                                 VariantChangeType(&copy, &nowhere, 0, VT_I4)})
        EXPECT_EQ(result, E_INVALIDARG);
    EXPECT_EQ(copy.iVal, -7);
}

TEST_F(VariantTest, UnknownTypesAreRefusedEverywhere)
{
    for (const VARTYPE type : {VARTYPE{VT_VARIANT}, VARTYPE{VT_RECORD}, VARTYPE{7}, VARTYPE{VT_ARRAY},
                               VARTYPE{0x8000 | VT_I4}, VARTYPE{VT_BYREF | VT_VOID}}) {
        VARIANT odd{};
        odd.vt = type;
        Variant target(LONG{1});
        for (const HRESULT result : {VariantClear(&odd), VariantCopy(&target, &odd), VariantCopyInd(&target, &odd),
                                     VariantChangeType(&target, &odd, 0, VT_I4), VariantCopy(&odd, &target)})
            EXPECT_EQ(result, DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(target.lVal, 1);
    }
    Variant value;
    EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
    EXPECT_EQ(VariantCopy(nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(VariantChangeType(&value, nullptr, 0, VT_I4), E_INVALIDARG);
}

} // namespace
