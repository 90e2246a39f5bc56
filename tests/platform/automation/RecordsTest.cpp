#include "Sample.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

KV_ENUM(TagKind, Plain = 0, Fancy = 7);

struct Corner {
    float x;
    float y;

    friend bool operator==(const Corner&, const Corner&) = default;
};

template <>
struct kv::RecordTable<Corner> {
    static constexpr std::array fields{Field<&Corner::x>("x"), Field<&Corner::y>("y")};
};

/// Fields that own what they hold.
struct Tag {
    BYTE level;
    TagKind kind;
    BSTR text;
    IUnknown* owner;
    VARIANT value;
};

template <>
struct kv::RecordTable<Tag> {
    static constexpr std::array fields{Field<&Tag::level>("level"), Field<&Tag::kind>("kind"),
                                       Field<&Tag::text>("text"), Field<&Tag::owner>("owner"),
                                       Field<&Tag::value>("value")};
};

/// Members that take and give records in every way.
struct IRecords : IDispatch {
    static constexpr GUID IID = "55555555-0000-0000-0000-000000000001"_guid;
    using Base = IDispatch;

    virtual HRESULT get_Origin(Corner* value) = 0;
    virtual HRESULT put_Origin(Corner* value) = 0;
    virtual HRESULT get_Region(Corner* corner, VARIANT_BOOL* valid) = 0;
    virtual HRESULT put_Region(Corner* corner, VARIANT_BOOL valid) = 0;
    virtual HRESULT get_Owned(Tag** value) = 0;
    virtual HRESULT put_Owned(Tag* value) = 0;
    virtual HRESULT GetBox(Corner* corners) = 0;
    virtual HRESULT SetBox(const Corner* corners) = 0;
    virtual HRESULT GetTags(LONG* count, Tag** tags) = 0;
    virtual HRESULT SetTags(LONG count, Tag* tags) = 0;
    virtual HRESULT Sum(Corner one, Corner other, float* sum) = 0;
    virtual HRESULT Pixels(LONG size, BYTE** bytes) = 0;
};

template <>
struct kv::InterfaceTable<IRecords> {
    static constexpr auto members = Members(GetPut<&IRecords::get_Origin, &IRecords::put_Origin>("Origin", 1),
                                            GetPut<&IRecords::get_Region, &IRecords::put_Region>("Region", 2, "corner"),
                                            GetPut<&IRecords::get_Owned, &IRecords::put_Owned>("Owned", 3),
                                            Method<&IRecords::GetBox>("GetBox", 4, Out(Several("corners", 4))),
                                            Method<&IRecords::SetBox>("SetBox", 5, Several("corners", 4)),
                                            Method<&IRecords::GetTags>("GetTags", 6, "count", Counted("tags", 0)),
                                            Method<&IRecords::SetTags>("SetTags", 7, "count", Counted("tags", 0)),
                                            Method<&IRecords::Sum>("Sum", 8, "one", "other", "sum"),
                                            Method<&IRecords::Pixels>("Pixels", 9, "size", "bytes"));
};

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::UniqueTaskMem;
using kv::Variant;

class Records final : public kv::Object<kv::Dual<IRecords>> {
public:
    ~Records()
    {
        for (Tag& tag : tags)
            m_tag->RecordClear(&tag);
    }

    HRESULT get_Origin(Corner* value) override { return Give(*value, box[0], result); }
    HRESULT put_Origin(Corner* value) override { return value ? Give(box[0], *value) : E_POINTER; }
    HRESULT get_Region(Corner* corner, VARIANT_BOOL* valid) override
    {
        return Give(*corner, box[1]), Give(*valid, VARIANT_TRUE);
    }
    HRESULT put_Region(Corner* corner, VARIANT_BOOL valid) override { return Give(box[1], valid ? *corner : Corner{}); }
    HRESULT get_Owned(Tag** value) override
    {
        return Give(*value, static_cast<Tag*>(m_tag->RecordCreateCopy(&tags[0])), result);
    }
    HRESULT put_Owned(Tag* value) override { return m_tag->RecordCopy(value, &tags[0]); }
    HRESULT GetBox(Corner* corners) override
    {
        if (corners) std::ranges::copy(box, corners);
        return corners ? S_OK : S_FALSE;
    }
    HRESULT SetBox(const Corner* corners) override { return std::copy_n(corners, box.size(), box.begin()), S_OK; }
    HRESULT GetTags(LONG* count, Tag** copies) override
    {
        *copies = static_cast<Tag*>(CoTaskMemAlloc(sizeof tags));
        std::uninitialized_fill_n(*copies, tags.size(), Tag{});
        for (std::size_t i = 0; i < tags.size(); ++i)
            m_tag->RecordCopy(&tags[i], *copies + i);
        return Give(*count, static_cast<LONG>(tags.size()));
    }
    HRESULT SetTags(LONG count, Tag* given) override
    {
        for (LONG i = 0; i < count; ++i)
            m_tag->RecordCopy(given + i, &tags[static_cast<std::size_t>(i)]);
        return S_OK;
    }
    HRESULT Sum(Corner one, Corner other, float* sum) override { return Give(*sum, one.x + one.y + other.x + other.y); }
    HRESULT Pixels(LONG size, BYTE** bytes) override
    {
        *bytes = static_cast<BYTE*>(CoTaskMemAlloc(static_cast<std::size_t>(size)));
        std::fill_n(*bytes, size, BYTE{9});
        return result;
    }

    HRESULT result = S_OK;
    std::array<Corner, 4> box{{{1, 2}, {3, 4}, {5, 6}, {7, 8}}};
    std::array<Tag, 2> tags{};

private:
    const ComPtr<IRecordInfo> m_tag = kv::MakeRecordInfo(kv::kRecordDescription<Tag>);
};

ComPtr<IRecordInfo> Info(const VARIANT& value)
{
    return value.vt & VT_ARRAY ? value.parray->pRecInfo : value.pRecInfo;
}

Variant Field(const VARIANT& record, const OLECHAR* name)
{
    Variant field;
    EXPECT_EQ(Info(record)->GetField(record.pvRecord, name, &field), S_OK);
    return field;
}

HRESULT Set(const VARIANT& record, const OLECHAR* name, const Variant& value)
{
    return Info(record)->PutField(record.pvRecord, name, &value);
}

class RecordsTest : public testing::Test {
protected:
    RecordsTest()
    {
        Tag& tag = m_object->tags[0];
        tag = {3, Fancy, Bstr(u"first").Detach(), ComPtr<IUnknown>(kv::Make<Records>()).Detach(), {}};
        static_cast<Variant&>(tag.value) = Variant(u"deep");
        m_object->tags[1].text = Bstr(u"second").Detach();
    }
    ~RecordsTest() override
    {
        m_result = {};
        m_object.Reset();
        EXPECT_EQ(kv::g_moduleLocks, 0) << "an object was left behind";
    }

    /// The result goes to `m_result`.
    HRESULT Call(DISPID member, WORD kind, const std::vector<VARIANT>& arguments = {})
    {
        Outcome outcome = Invoke(*m_object, member, kind, arguments);
        m_result = std::move(outcome.value);
        return outcome.code == DISP_E_EXCEPTION ? outcome.exception.scode : outcome.code;
    }
    HRESULT Get(DISPID member) { return Call(member, DISPATCH_PROPERTYGET); }
    HRESULT Put(DISPID member, const VARIANT& value) { return Call(member, DISPATCH_PROPERTYPUT, {value}); }
    HRESULT Method(DISPID member, const std::vector<VARIANT>& arguments = {})
    {
        return Call(member, DISPATCH_METHOD, arguments);
    }

    ComPtr<Records> m_object = kv::Make<Records>();
    Variant m_result;
};

TEST_F(RecordsTest, AGetterGivesARecordThatCanBeReadChangedAndPut)
{
    ASSERT_EQ(Get(1), S_OK);
    ASSERT_EQ(m_result.vt, VT_RECORD);
    EXPECT_EQ(*static_cast<Corner*>(m_result.pvRecord), (Corner{1, 2}));
    EXPECT_EQ(Field(m_result, u"Y").fltVal, 2.0F);
    Variant changed = m_result;
    ASSERT_EQ(Set(changed, u"x", Variant(std::u16string_view(u"9.5"))), S_OK);
    EXPECT_EQ(Put(1, changed), S_OK);
    EXPECT_EQ(m_object->box[0], (Corner{9.5F, 2}));
    EXPECT_EQ(Put(1, VARIANT{}), E_POINTER) << "no record is null";

    Corner place{};
    EXPECT_EQ(Call(1, DISPATCH_PROPERTYGET, {Reference(VT_RECORD, &place)}), S_OK);
    EXPECT_EQ(place, m_object->box[0]);
    Variant variable(u"old");
    EXPECT_EQ(Call(1, DISPATCH_PROPERTYGET, {Reference(VT_VARIANT, &variable)}), S_OK);
    EXPECT_EQ(Field(variable, u"x").fltVal, 9.5F);
    m_object->result = E_FAIL;
    EXPECT_EQ(Get(1), E_FAIL);
    EXPECT_EQ(m_result.vt, VT_EMPTY);
}

TEST_F(RecordsTest, APropertyMayHaveParametersBeforeItsValue)
{
    Variant corner, valid;
    EXPECT_EQ(Call(2, DISPATCH_PROPERTYGET, {Reference(VT_VARIANT, &corner), Reference(VT_VARIANT, &valid)}), S_OK);
    EXPECT_EQ(Field(corner, u"x").fltVal, 3.0F);
    EXPECT_EQ(valid.boolVal, VARIANT_TRUE);
    EXPECT_EQ(Call(2, DISPATCH_PROPERTYPUT, {corner, Variant(false)}), S_OK);
    EXPECT_EQ(m_object->box[1], (Corner{}));
}

TEST_F(RecordsTest, FieldsAreCopiedAndFreedWithTheirRecord)
{
    ASSERT_EQ(Get(3), S_OK);
    ASSERT_EQ(m_result.vt, VT_RECORD);
    EXPECT_EQ(Field(m_result, u"level").vt, VT_UI1);
    EXPECT_EQ(Field(m_result, u"kind").lVal, Fancy);
    EXPECT_EQ(kv::View(Field(m_result, u"text").bstrVal), u"first");
    EXPECT_EQ(kv::View(Field(m_result, u"value").bstrVal), u"deep");
    EXPECT_EQ(Field(m_result, u"owner").punkVal, m_object->tags[0].owner);
    const Variant copy = m_result;
    EXPECT_NE(copy.pvRecord, m_result.pvRecord);
    ASSERT_EQ(Set(m_result, u"text", Variant(LONG{12})), S_OK);
    ASSERT_EQ(Set(m_result, u"owner", Variant(static_cast<IUnknown*>(nullptr))), S_OK);
    EXPECT_EQ(Set(m_result, u"level", Variant(LONG{256})), DISP_E_OVERFLOW);
    EXPECT_EQ(Set(m_result, u"levels", Variant(LONG{1})), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(Put(3, Variant(m_result)), S_OK);
    EXPECT_EQ(kv::View(m_object->tags[0].text), u"12");
    EXPECT_EQ(m_object->tags[0].owner, nullptr);
    EXPECT_EQ(kv::View(Field(copy, u"text").bstrVal), u"first");

    // Nobody asks for the record, or the call fails after it was made.
    DISPPARAMS none{};
    EXPECT_EQ(m_object->Invoke(3, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr), S_OK);
    m_object->result = E_FAIL;
    EXPECT_EQ(Get(3), E_FAIL);
}

TEST_F(RecordsTest, SeveralRecordsAreAnArray)
{
    ASSERT_EQ(Method(4), S_OK);
    ASSERT_EQ(m_result.vt, VT_ARRAY | VT_RECORD);
    EXPECT_EQ(m_result.parray->rgsabound[0].cElements, 4u);
    Corner element{};
    LONG index = 3;
    ASSERT_EQ(SafeArrayGetElement(m_result.parray, &index, &element), S_OK);
    EXPECT_EQ(element, (Corner{7, 8}));
    element = {70, 80};
    ASSERT_EQ(SafeArrayPutElement(m_result.parray, &index, &element), S_OK);
    Variant array = m_result;
    EXPECT_EQ(Method(5, {Variant(array)}), S_OK);
    EXPECT_EQ(m_object->box[3], (Corner{70, 80}));
    m_object->box[3] = {};
    EXPECT_EQ(Method(5, {Reference(VT_ARRAY | VT_RECORD, &array.parray)}), S_OK);
    EXPECT_EQ(m_object->box[3], (Corner{70, 80}));
    EXPECT_EQ(Method(5, {Reference(VT_ARRAY | VT_RECORD, nullptr)}), E_INVALIDARG);
    Variant copy;
    const VARIANT place = Reference(VT_ARRAY | VT_RECORD, &array.parray);
    EXPECT_EQ(VariantCopyInd(&copy, &place), S_OK);
    EXPECT_EQ(copy.parray->rgsabound[0].cElements, 4u);

    Corner plain[4]{{1, 1}};
    EXPECT_EQ(Method(5, {Reference(VT_RECORD, plain)}), S_OK);
    EXPECT_EQ(m_object->box[0], plain[0]);
    EXPECT_EQ(Method(4, {Reference(VT_RECORD, plain)}), S_OK);
    EXPECT_EQ(Method(4, {VARIANT{}}), S_FALSE) << "nowhere to write";
    EXPECT_EQ(Method(5, {kv::NewRecords(kv::kRecordDescription<Corner>, 3)}), DISP_E_TYPEMISMATCH) << "too few";
    EXPECT_EQ(Method(5, {kv::NewRecords(kv::kRecordDescription<Tag>, 4)}), DISP_E_TYPEMISMATCH) << "others";
    EXPECT_EQ(Method(5, {kv::NewRecords(kv::kRecordDescription<Corner>, 1)}), DISP_E_TYPEMISMATCH) << "one";
}

TEST_F(RecordsTest, ACountGoesWithItsRecords)
{
    Variant count, tags;
    ASSERT_EQ(Method(6, {Reference(VT_VARIANT, &count), Reference(VT_VARIANT, &tags)}), S_OK);
    EXPECT_EQ(count.lVal, 2);
    ASSERT_EQ(tags.vt, VT_ARRAY | VT_RECORD);
    ASSERT_EQ(tags.parray->rgsabound[0].cElements, 2u);
    Tag second{};
    LONG index = 1;
    ASSERT_EQ(SafeArrayGetElement(tags.parray, &index, &second), S_OK);
    EXPECT_EQ(kv::View(second.text), u"second");
    Info(tags)->RecordClear(&second);
    EXPECT_EQ(Method(7, {Variant(LONG{2}), Variant(tags)}), S_OK);
    EXPECT_EQ(Method(7, {Variant(LONG{3}), Variant(tags)}), DISP_E_TYPEMISMATCH) << "more than there are";

    LONG plainCount = 0;
    Tag* plain = nullptr;
    ASSERT_EQ(Method(6, {Reference(VT_I4, &plainCount), Reference(VT_RECORD, &plain)}), S_OK);
    const UniqueTaskMem<Tag> owned(plain);
    EXPECT_EQ(plainCount, 2);
    for (LONG i = 0; i < plainCount; ++i)
        Info(tags)->RecordClear(&plain[i]);
}

TEST_F(RecordsTest, RecordsPassByValueAndBuffersInTaskMemory)
{
    Corner one{1, 2};
    const Variant other = kv::NewRecords(kv::kRecordDescription<Corner>, 1);
    *static_cast<Corner*>(other.pvRecord) = {3, 4};
    EXPECT_EQ(Method(8, {Reference(VT_RECORD, &one), other}), S_OK);
    EXPECT_EQ(m_result.fltVal, 10.0F);
    EXPECT_EQ(Method(8, {Reference(VT_RECORD, nullptr), other}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Method(8, {Variant(LONG{1}), other}), DISP_E_TYPEMISMATCH);

    ASSERT_EQ(Method(9, {Variant(LONG{3})}), S_OK);
    ASSERT_EQ(m_result.vt, VT_UI1 | VT_BYREF);
    const UniqueTaskMem<BYTE> bytes(static_cast<BYTE*>(m_result.byref));
    EXPECT_EQ(bytes.get()[2], 9);
    m_object->result = E_FAIL;
    EXPECT_EQ(Method(9, {Variant(LONG{3})}), E_FAIL) << "and frees what was made";
}

TEST_F(RecordsTest, RowsTellWhichWayRecordsGo)
{
    std::string directions;
    for (const kv::MemberDescription& member : kv::kInterfaceDescription<IRecords>.members) {
        for (const kv::ParameterDescription& parameter : member.Parameters())
            directions += std::to_string(parameter.flags) + ' ';
        directions += '|';
    }
    EXPECT_EQ(directions, "10 |1 |2 2 |1 1 |10 |1 |10 |1 |2 2 |1 1 |1 1 10 |1 10 |");
}

} // namespace
