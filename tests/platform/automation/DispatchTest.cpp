#include "platform/automation/Dispatch.h"

#include "Sample.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::Variant;

VARIANT Omitted()
{
    VARIANT value{};
    value.vt = VT_ERROR;
    value.scode = DISP_E_PARAMNOTFOUND;
    return value;
}

VARIANT Dispatch(IDispatch* object)
{
    VARIANT value{};
    value.vt = VT_DISPATCH;
    value.pdispVal = object;
    return value;
}

std::string Text(const Variant& value)
{
    return kv::ToUtf8(kv::View(value.As(VT_BSTR).bstrVal));
}

/// Fails the test that leaves an object behind; strings are the sanitizer's.
class DispatchTest : public testing::Test {
protected:
    ~DispatchTest() override
    {
        m_sample.Reset();
        EXPECT_EQ(kv::g_moduleLocks, 0);
    }

    Outcome Call(DISPID member, const std::vector<VARIANT>& positional = {},
                 const std::vector<NamedArgument>& named = {})
    {
        return Invoke(*m_sample, member, DISPATCH_METHOD, positional, named);
    }

    Outcome Get(DISPID member) { return Invoke(*m_sample, member, DISPATCH_PROPERTYGET); }

    ULONG Calls()
    {
        ULONG calls = 0;
        m_sample->get_Calls(&calls);
        return calls;
    }

    ComPtr<ISample> m_sample = kv::Make<Sample>();
};

TEST_F(DispatchTest, PropertiesConvertOnTheWayInAndKeepTheirTypeOnTheWayOut)
{
    LONG number = 7;
    Variant text(u"11");
    const Variant spelledNumber(u"42");
    const Variant spelledFraction(u"1.25");
    const std::tuple<DISPID, VARIANT, VARTYPE, std::string_view> cases[]{
        {1, Variant(LONG{-5}), VT_I4, "-5"},
        {1, spelledNumber, VT_I4, "42"},
        {1, Variant(2.5), VT_I4, "2"},
        {1, Reference(VT_I4, &number), VT_I4, "7"},
        {1, Reference(VT_VARIANT, &text), VT_I4, "11"},
        {2, Variant(LONG{Green}), VT_I4, "32"},
        {2, spelledNumber, VT_I4, "42"},
        {3, Variant(true), VT_BOOL, "-1"},
        {3, Variant(LONG{5}), VT_BOOL, "-1"},
        {4, Variant(LONG{3}), VT_R8, "3"},
        {4, spelledFraction, VT_R8, "1.25"},
        {5, spelledNumber, VT_BSTR, "42"},
        {5, Variant(LONG{12}), VT_BSTR, "12"},
        {6, spelledNumber, VT_BSTR, "42"},
        {6, Variant(0.5), VT_R8, "0.5"},
        {6, Reference(VT_VARIANT, &text), VT_BSTR, "11"}};
    for (const auto& [property, value, type, expected] : cases) {
        const Outcome put = Invoke(*m_sample, property, DISPATCH_PROPERTYPUT, {}, {{DISPID_PROPERTYPUT, value}});
        EXPECT_EQ(std::pair(put.code, put.value.vt), std::pair(S_OK, VARTYPE{VT_EMPTY})) << property << expected;
        const Outcome got = Get(property);
        EXPECT_EQ(std::tuple(got.code, got.value.vt, Text(got.value)), std::tuple(S_OK, type, expected)) << property;
    }
    // The new value may come without its name.
    EXPECT_EQ(Invoke(*m_sample, 1, DISPATCH_PROPERTYPUT, {Variant(LONG{9})}).code, S_OK);
    EXPECT_EQ(Text(Get(1).value), "9");
    // Hosts that do not tell a call from a read ask for both.
    EXPECT_EQ(Text(Invoke(*m_sample, 1, DISPATCH_METHOD | DISPATCH_PROPERTYGET).value), "9");
}

TEST_F(DispatchTest, WrongUseIsRefusedBeforeTheMemberRuns)
{
    const Variant word(u"word");
    const VARIANT one = Variant(LONG{1});
    LONG place = 0;
    const VARIANT here = Reference(VT_I4, &place);
    const VARIANT real = Reference(VT_R8, &place);
    const VARIANT nowhere = Reference(VT_I4, nullptr);
    const ComPtr<IPlainSample> plain = kv::Make<Sample>();
    const Variant object(plain.Get());
    struct Case {
        const char* what;
        DISPID member;
        WORD flags;
        std::vector<VARIANT> arguments;
        HRESULT expected;
        ULONG bad = kUntouched;
    };
    const Case cases[] = {
        {"unknown member", 99, DISPATCH_METHOD, {}, DISP_E_MEMBERNOTFOUND},
        {"put of what is read only", 8, DISPATCH_PROPERTYPUT, {one}, DISP_E_MEMBERNOTFOUND},
        {"call of a property", 1, DISPATCH_METHOD, {}, DISP_E_MEMBERNOTFOUND},
        {"read of a method", 22, DISPATCH_PROPERTYGET, {one}, DISP_E_MEMBERNOTFOUND},
        {"neither call nor property", 22, 0, {one}, E_INVALIDARG},
        {"one too many", 0, DISPATCH_METHOD, {one}, DISP_E_BADPARAMCOUNT},
        {"none at all", 22, DISPATCH_METHOD, {}, DISP_E_BADPARAMCOUNT},
        {"put of nothing", 1, DISPATCH_PROPERTYPUT, {}, DISP_E_BADPARAMCOUNT},
        {"out parameter missing", 21, DISPATCH_METHOD, {one, one, here}, DISP_E_BADPARAMCOUNT},
        {"left out on purpose", 22, DISPATCH_METHOD, {Omitted()}, DISP_E_PARAMNOTOPTIONAL},
        {"text for a number", 22, DISPATCH_METHOD, {one, word}, DISP_E_TYPEMISMATCH, 0},
        {"the first of two", 22, DISPATCH_METHOD, {word, one}, DISP_E_TYPEMISMATCH, 1},
        {"object for a number", 1, DISPATCH_PROPERTYPUT, {object}, DISP_E_TYPEMISMATCH, 0},
        {"number for an object", 27, DISPATCH_METHOD, {one}, DISP_E_TYPEMISMATCH, 0},
        {"number for records", 23, DISPATCH_METHOD, {one, one}, DISP_E_TYPEMISMATCH, 0},
        {"value for an out parameter", 21, DISPATCH_METHOD, {one, one, one, one}, DISP_E_TYPEMISMATCH, 1},
        {"out parameter of another type", 21, DISPATCH_METHOD, {one, one, here, real}, DISP_E_TYPEMISMATCH, 0},
        {"out parameter nowhere", 21, DISPATCH_METHOD, {one, one, here, nowhere}, E_POINTER, 0},
        {"reference to nothing", 6, DISPATCH_PROPERTYPUT, {Reference(VT_VARIANT, nullptr)}, E_INVALIDARG, 0},
        {"too big for a byte", 26, DISPATCH_METHOD, {Variant(LONG{256}), one, one, one, one, one}, DISP_E_OVERFLOW, 5},
        {"below zero", 26, DISPATCH_METHOD, {one, one, Variant(LONG{-1}), one, one, one}, DISP_E_OVERFLOW, 3},
        {"too big for a long", 1, DISPATCH_PROPERTYPUT, {Variant(1e10)}, DISP_E_OVERFLOW, 0}};
    for (const Case& row : cases) {
        const Outcome outcome = Invoke(*m_sample, row.member, row.flags, row.arguments);
        EXPECT_EQ(std::tuple(outcome.code, outcome.bad, outcome.value.vt, outcome.exception.scode),
                  std::tuple(row.expected, row.bad, VARTYPE{VT_EMPTY}, S_OK))
            << row.what;
    }
    EXPECT_EQ(Calls(), 0u);
}

TEST_F(DispatchTest, DamagedParametersAreRefused)
{
    VARIANT argument = Variant(LONG{1});
    DISPID id = 0;
    const auto invoke = [&](DISPPARAMS params, REFIID reserved = IID_NULL) {
        return m_sample->Invoke(22, reserved, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(m_sample->Invoke(22, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(invoke({nullptr, nullptr, 1, 0}), E_POINTER);
    EXPECT_EQ(invoke({&argument, nullptr, 1, 1}), E_POINTER);
    EXPECT_EQ(invoke({&argument, &id, 1, 2}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(invoke({&argument, nullptr, 0xffffffff, 0}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(invoke({&argument, nullptr, 1, 0}, ISample::IID), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(Calls(), 0u);
}

TEST_F(DispatchTest, ArgumentsAreSortedByNameAndMayBeLeftOut)
{
    const VARIANT one = Variant(LONG{1});
    const VARIANT two = Variant(LONG{2});
    const VARIANT three = Variant(LONG{3});
    const std::tuple<std::vector<VARIANT>, std::vector<NamedArgument>, std::string_view> good[]{
        {{one, two, three}, {}, "1 2 3"},         {{one, two}, {}, "1 2 0"},
        {{one, Omitted(), three}, {}, "1 0 3"},   {{one}, {{2, three}}, "1 0 3"},
        {{one}, {{2, three}, {1, two}}, "1 2 3"}, {{}, {{1, two}, {0, one}, {2, three}}, "1 2 3"},
        {{one, two}, {{2, Omitted()}}, "1 2 0"}};
    for (const auto& [positional, named, expected] : good) {
        const Outcome outcome = Call(22, positional, named);
        EXPECT_EQ(outcome.code, S_OK) << expected;
        EXPECT_EQ(Text(outcome.value), expected);
    }

    const auto refused = [&](std::vector<VARIANT> positional, std::vector<NamedArgument> named) {
        const Outcome outcome = Call(22, positional, named);
        return std::pair(outcome.code, outcome.bad);
    };
    EXPECT_EQ(refused({one}, {{9, two}}), std::pair(DISP_E_PARAMNOTFOUND, 0u));
    EXPECT_EQ(refused({one}, {{1, two}, {DISPID_PROPERTYPUT, two}}), std::pair(DISP_E_PARAMNOTFOUND, 1u));
    EXPECT_EQ(refused({one}, {{0, two}}), std::pair(DISP_E_PARAMNOTFOUND, 1u));
    EXPECT_EQ(refused({}, {{1, two}}), std::pair(DISP_E_PARAMNOTOPTIONAL, kUntouched));
}

TEST_F(DispatchTest, OutParametersFillTheCallersStorage)
{
    m_sample->put_Name(Bstr(u"left").Get());
    m_sample->put_Value(Variant(u"deep"));
    m_sample->put_Colour(Blue);

    Bstr name;
    Variant value;
    ComPtr<ISample> self;
    LONG colour = 0;
    EXPECT_EQ(Call(24, {Reference(VT_BSTR, name.Put()), Reference(VT_VARIANT, &value),
                        Reference(VT_DISPATCH, self.Put()), Reference(VT_I4, &colour)})
                  .code,
              S_OK);
    EXPECT_EQ(std::tuple(name.View(), Text(value), self, colour), std::tuple(u"left", "deep", m_sample, Blue));

    // A script's variables take any value, and give up the one they had.
    Variant variables[] = {Variant(u"old"), Variant(u"old"), Variant(m_sample.Get()), Variant(u"old")};
    std::vector<VARIANT> places;
    for (Variant& variable : variables)
        places.push_back(Reference(VT_VARIANT, &variable));
    EXPECT_EQ(Call(24, places).code, S_OK);
    EXPECT_EQ(std::tuple(Text(variables[0]), Text(variables[1])), std::tuple("left", "deep"));
    EXPECT_EQ(std::pair(variables[2].vt, variables[2].pdispVal),
              std::pair(VARTYPE{VT_DISPATCH}, static_cast<IDispatch*>(m_sample.Get())));
    EXPECT_EQ(std::pair(variables[3].vt, variables[3].lVal), std::pair(VARTYPE{VT_I4}, LONG{Blue}));

    // Among several out parameters none is the result.
    LONG quotient = 0;
    LONG remainder = 0;
    const Outcome divided =
        Call(21, {Variant(LONG{17}), Variant(LONG{5}), Reference(VT_I4, &quotient), Reference(VT_I4, &remainder)});
    EXPECT_EQ(std::tuple(divided.value.vt, quotient, remainder), std::tuple(VARTYPE{VT_EMPTY}, 3, 2));

    // The result may be fetched as an argument, too.
    Bstr joined;
    EXPECT_EQ(Call(22, {Variant(LONG{1}), Omitted(), Omitted(), Reference(VT_BSTR, joined.Put())}).code, S_FALSE);
    EXPECT_EQ(joined.View(), u"1 0 0");
}

TEST_F(DispatchTest, ResultsThatNobodyAsksForAreFreed)
{
    m_sample->put_Name(Bstr(u"some text").Get());
    m_sample->put_Peer(kv::Make<Sample>().Get());
    for (DISPID member : {5, 7}) {
        DISPPARAMS none{};
        EXPECT_EQ(m_sample->Invoke(member, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr), S_OK);
    }
    EXPECT_EQ(Calls(), 4u);
}

TEST_F(DispatchTest, InOutTextsAndVariablesAreReadAndReplaced)
{
    BSTR place = Bstr(u"ab").Detach();
    EXPECT_EQ(Call(20, {Reference(VT_BSTR, &place)}).code, S_OK);
    EXPECT_EQ(Bstr::Attach(place).View(), u"abab");
    BSTR none = nullptr;
    EXPECT_EQ(Call(20, {Reference(VT_BSTR, &none)}).exception.scode, E_FAIL);
    EXPECT_EQ(Bstr::Attach(none).View(), u"spoilt");
    for (const auto& [member, text, again] : {std::tuple{20, "1212", "12121212"}, {28, "12", "12"}}) {
        Variant variable(LONG{12});
        for (const char* expected : {text, again}) {
            EXPECT_EQ(Call(member, {Reference(VT_VARIANT, &variable)}).code, S_OK);
            EXPECT_EQ(std::pair(variable.vt, Text(variable)), std::pair(VARTYPE{VT_BSTR}, std::string(expected)));
        }
    }

    // A failing call leaves the variable alone.
    Variant empty(u"");
    EXPECT_EQ(Call(20, {Reference(VT_VARIANT, &empty)}).code, DISP_E_EXCEPTION);
    EXPECT_EQ(Text(empty), "");
    Variant object(m_sample.Get());
    EXPECT_EQ(Call(20, {Reference(VT_VARIANT, &object)}).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Call(28, {Reference(VT_VARIANT, &object)}).exception.scode, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(object.vt, VT_UNKNOWN);
    EXPECT_EQ(Call(20, {Variant(LONG{1})}).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Call(20).code, DISP_E_BADPARAMCOUNT);
}

TEST_F(DispatchTest, ObjectsAreAskedForTheInterfaceThatTheMemberWants)
{
    const auto put = [&](const VARIANT& value) { return Invoke(*m_sample, 7, DISPATCH_PROPERTYPUT, {value}).code; };
    {
        const ComPtr<ISample> peer = kv::Make<Sample>();
        ComPtr<IPlainSample> otherFace;
        ASSERT_EQ(peer->QueryInterface(IPlainSample::IID, otherFace.PutVoid()), S_OK);
        EXPECT_EQ(put(Variant(static_cast<IUnknown*>(otherFace.Get()))), S_OK);
        const Outcome got = Get(7);
        ASSERT_EQ(got.value.vt, VT_DISPATCH);
        EXPECT_EQ(got.value.pdispVal, peer.Get());
        IDispatch* held = peer.Get();
        EXPECT_EQ(Text(Call(27, {Reference(VT_DISPATCH, &held)}).value), "0");
        EXPECT_EQ(Text(Call(27, {Dispatch(m_sample.Get())}).value), "-1");
    }
    const VARIANT nulls[] = {VARIANT{}, Dispatch(nullptr)};
    for (const VARIANT& null : nulls) {
        ASSERT_EQ(put(Dispatch(kv::Make<Sample>().Get())), S_OK);
        EXPECT_EQ(put(null), S_OK);
        const Outcome got = Get(7);
        EXPECT_EQ(got.value.vt, VT_DISPATCH);
        EXPECT_EQ(got.value.pdispVal, nullptr);
    }
    class Stranger : public kv::Object<IUnknown> {};
    EXPECT_EQ(put(Variant(kv::Make<Stranger>().Get())), DISP_E_TYPEMISMATCH);
}

TEST_F(DispatchTest, NumbersOfEveryWidthAndRecordsReachTheMember)
{
    const Outcome outcome = Call(26, {Variant(LONG{255}), Variant(LONG{65535}), Variant(4294967295.0),
                                      Variant(LONGLONG{-4294967296}), Variant(LONG{1}), Variant(0.5)});
    EXPECT_EQ(outcome.value.vt, VT_R8);
    EXPECT_EQ(outcome.value.dblVal, 255 + 65535 - 1 + 1 + 0.5);
    SamplePoint points[] = {{1, 0.5, nullptr, Red, nullptr, nullptr}, {2, 0.25, nullptr, Red, nullptr, nullptr}};
    EXPECT_EQ(Text(Call(23, {Variant(LONG{2}), Reference(VT_RECORD, points)}).value), "3.75");
    EXPECT_EQ(Text(Call(23, {Variant(LONG{2}), VARIANT{}}).value), "0");
}

TEST_F(DispatchTest, FailuresAndSuccessCodesReachTheCaller)
{
    const VARIANT busy = Variant(LONG{E_ACCESSDENIED});
    const Outcome failed = Call(25, {busy});
    EXPECT_EQ(failed.code, DISP_E_EXCEPTION);
    EXPECT_EQ(failed.exception.scode, E_ACCESSDENIED);
    EXPECT_EQ(failed.value.vt, VT_EMPTY);

    VARIANT argument = busy;
    DISPPARAMS params{&argument, nullptr, 1, 0};
    EXPECT_EQ(m_sample->Invoke(25, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr), E_ACCESSDENIED);

    const Outcome partial = Call(25, {Variant(LONG{S_FALSE})});
    EXPECT_EQ(partial.code, S_FALSE);
    EXPECT_EQ(Text(partial.value), "left behind");
    EXPECT_EQ(partial.exception.scode, S_OK);
}

TEST_F(DispatchTest, NamesAreFoundWithoutRegardToCase)
{
    const auto find = [&](std::vector<std::u16string> names, HRESULT expected) {
        std::vector<OLECHAR*> pointers;
        for (std::u16string& name : names)
            pointers.push_back(name.data());
        std::vector<DISPID> ids(names.size(), 1234);
        EXPECT_EQ(m_sample->GetIDsOfNames(IID_NULL, pointers.data(), static_cast<ULONG>(names.size()), 0, ids.data()),
                  expected);
        return ids;
    };
    using Ids = std::vector<DISPID>;
    EXPECT_EQ(find({u"Count"}, S_OK), (Ids{1}));
    EXPECT_EQ(find({u"jOIN", u"THIRD", u"first"}, S_OK), (Ids{22, 2, 0}));
    EXPECT_EQ(find({u"Join", u"nobody", u"text"}, DISP_E_UNKNOWNNAME), (Ids{22, DISPID_UNKNOWN, 3}));
    EXPECT_EQ(find({u"Joi", u"first"}, DISP_E_UNKNOWNNAME), (Ids{DISPID_UNKNOWN, DISPID_UNKNOWN}));
    // A letter whose low byte is that of "C".
    EXPECT_EQ(find({u"\u0143ount"}, DISP_E_UNKNOWNNAME), (Ids{DISPID_UNKNOWN}));

    OLECHAR* missing = nullptr;
    DISPID id = 0;
    EXPECT_EQ(m_sample->GetIDsOfNames(IID_NULL, &missing, 1, 0, &id), E_POINTER);
    EXPECT_EQ(m_sample->GetIDsOfNames(IID_NULL, &missing, 0, 0, &id), E_INVALIDARG);
    EXPECT_EQ(m_sample->GetIDsOfNames(ISample::IID, &missing, 1, 0, &id), DISP_E_UNKNOWNINTERFACE);
}

} // namespace
