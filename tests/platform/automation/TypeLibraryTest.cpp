#include "platform/automation/TypeLibrary.h"

#include "Sample.h"
#include "platform/com/Activation.h"
#include "platform/system/Registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::Hive;
using kv::Variant;
using testing::ElementsAre;
using testing::IsEmpty;

ComPtr<ITypeLib> Library()
{
    ComPtr<ITypeLib> library;
    EXPECT_EQ(kv::MakeTypeLibrary(SampleLibrary(), library.Put()), S_OK);
    return library;
}

/// The type of that name.
ComPtr<ITypeInfo> Type(const OLECHAR* name)
{
    const auto library = Library();
    ComPtr<ITypeInfo> info;
    DISPID member = 0;
    USHORT count = 1;
    EXPECT_EQ(library->FindName(name, 0, info.Put(), &member, &count), S_OK);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(member, DISPID_UNKNOWN);
    return info;
}

std::string NameOf(ITypeInfo& info, DISPID member = DISPID_UNKNOWN)
{
    Bstr name;
    EXPECT_EQ(info.GetDocumentation(member, name.Put(), nullptr), S_OK);
    return kv::ToUtf8(name.View());
}

std::vector<std::string> Names(ITypeInfo& info, DISPID member, ULONG room = 16)
{
    std::vector<BSTR> raw(room + 1);
    ULONG count = 99;
    info.GetNames(member, raw.data(), room, &count);
    std::vector<std::string> names;
    for (ULONG i = 0; i < count; ++i)
        names.push_back(kv::ToUtf8(Bstr::Attach(raw[i]).View()));
    return names;
}

/// A type as a declaration would write it.
std::string Spelled(ITypeInfo& info, const TYPEDESC& type)
{
    if (type.vt == VT_PTR) return Spelled(info, *type.lptdesc) + "*";
    if (type.vt != VT_USERDEFINED) return std::to_string(type.vt);
    ComPtr<ITypeInfo> referred;
    EXPECT_EQ(info.GetRefTypeInfo(type.hreftype, referred.Put()), S_OK);
    return NameOf(*referred);
}

/// "id kind offset optional: flags type, …"
std::string Function(ITypeInfo& info, ULONG index)
{
    FUNCDESC* function = nullptr;
    if (FAILED(info.GetFuncDesc(index, &function))) return "none";
    std::string text = std::to_string(function->memid) + ' ' + std::to_string(function->invkind) + ' ' +
                       std::to_string(function->oVft) + ' ' + std::to_string(function->cParamsOpt) + ':';
    for (SHORT i = 0; i < function->cParams; ++i) {
        const ELEMDESC& parameter = function->lprgelemdescParam[i];
        text += ' ' + std::to_string(parameter.wParamFlags) + ' ' + Spelled(info, parameter.tdesc) + ',';
    }
    text += " -> " + Spelled(info, function->elemdescFunc.tdesc);
    info.ReleaseFuncDesc(function);
    return text;
}

struct Attributes {
    explicit Attributes(ITypeInfo& info)
    {
        TYPEATTR* record = nullptr;
        EXPECT_EQ(info.GetTypeAttr(&record), S_OK);
        facts = *record;
        info.ReleaseTypeAttr(record);
    }
    TYPEATTR facts;
};

TEST(TypeLibraryTest, ListsItsTypes)
{
    const auto library = Library();
    // Name, kind, numbers of functions, variables and bases, flags. A base stands before what extends it.
    const std::pair<std::string_view, GUID> rows[] = {{"SampleColour 0: 0 3 0 0", GUID_NULL},
                                                      {"SamplePoint 1: 0 6 0 0", GUID_NULL},
                                                      {"ISample 4: 25 0 1 4160", ISample::IID},
                                                      {"IShape 4: 2 0 1 4160", IShape::IID},
                                                      {"IPrism 4: 2 0 1 4160", IPrism::IID},
                                                      {"IPlainSample 3: 1 0 1 0", IPlainSample::IID},
                                                      {"_ISampleEvents 4: 4 0 1 4096", _ISampleEvents::IID},
                                                      {"Sample 5: 0 0 2 2", kSampleClass},
                                                      {"Silent 5: 0 0 1 2", kSilentClass}};
    static_assert(TYPEFLAG_FDUAL + TYPEFLAG_FDISPATCHABLE == 4160 && TYPEFLAG_FCANCREATE == 2);
    ASSERT_EQ(library->GetTypeInfoCount(), std::size(rows));
    for (ULONG i = 0; i < std::size(rows); ++i) {
        const auto& [row, guid] = rows[i];
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(library->GetTypeInfo(i, info.Put()), S_OK);
        const TYPEATTR facts = Attributes(*info).facts;
        std::string text = NameOf(*info) + ' ' + std::to_string(facts.typekind) + ':';
        for (const WORD number : {facts.cFuncs, facts.cVars, facts.cImplTypes, facts.wTypeFlags})
            text += ' ' + std::to_string(number);
        EXPECT_EQ(text, row);
        EXPECT_EQ(facts.guid, guid) << row;
        EXPECT_EQ(std::tuple(facts.lcid, facts.wMajorVerNum, facts.wMinorVerNum), std::tuple(1033u, 2, 7)) << row;
        TYPEKIND kind{};
        EXPECT_EQ(library->GetTypeInfoType(i, &kind), S_OK);
        EXPECT_EQ(kind, facts.typekind) << row;
        Bstr documented;
        EXPECT_EQ(library->GetDocumentation(static_cast<LONG>(i), documented.Put(), nullptr), S_OK);
        EXPECT_EQ(kv::ToUtf8(documented.View()), NameOf(*info));
        ComPtr<ITypeLib> container;
        ULONG index = 99;
        EXPECT_EQ(info->GetContainingTypeLib(container.Put(), &index), S_OK);
        EXPECT_EQ(std::pair(container, index), std::pair(library, i));
        if (guid == GUID_NULL) continue;
        ComPtr<ITypeInfo> found;
        EXPECT_EQ(library->GetTypeInfoOfGuid(guid, found.Put()), S_OK);
        EXPECT_EQ(NameOf(*found), NameOf(*info));
    }

    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(std::tuple(attributes->guid, attributes->lcid, attributes->wMajorVerNum, attributes->wMinorVerNum),
              std::tuple(kSampleLibrary, 1033u, 2, 7));
    library->ReleaseTLibAttr(attributes);
    Bstr name, help;
    EXPECT_EQ(library->GetDocumentation(-1, name.Put(), help.Put()), S_OK);
    EXPECT_EQ(name.View(), u"SampleLib");
    EXPECT_EQ(help.View(), u"Sample 2.7 Type Library");
}

TEST(TypeLibraryTest, WhatIsNotThereIsNotFound)
{
    const auto library = Library();
    ComPtr<ITypeInfo> info;
    TYPEKIND kind{};
    for (const HRESULT result :
         {library->GetTypeInfo(9, info.Put()), library->GetTypeInfoType(9, &kind),
          library->GetTypeInfoOfGuid(kSampleLibrary, info.Put()), library->GetTypeInfoOfGuid(GUID_NULL, info.Put()),
          library->GetDocumentation(9, nullptr, nullptr), library->GetDocumentation(-2, nullptr, nullptr)})
        EXPECT_EQ(result, TYPE_E_ELEMENTNOTFOUND);

    for (const OLECHAR* name : {u"SampleColour", u"SamplePoint", u"ISample", u"Sample"}) {
        const auto type = Type(name);
        FUNCDESC* function = nullptr;
        VARDESC* variable = nullptr;
        HREFTYPE reference = 1;
        LONG flags = 1;
        for (const HRESULT result : {type->GetFuncDesc(25, &function), type->GetVarDesc(6, &variable),
                                     type->GetRefTypeOfImplType(2, &reference), type->GetImplTypeFlags(2, &flags),
                                     type->GetDocumentation(77, nullptr, nullptr)})
            EXPECT_EQ(result, TYPE_E_ELEMENTNOTFOUND);
        EXPECT_THAT(Names(*type, 77), IsEmpty());
        EXPECT_EQ(reference, 0u);
        EXPECT_EQ(flags, 0);
    }
    const auto sample = Type(u"ISample");
    // 0x80000001 would stand for the type of a parameter that is no interface of another library.
    for (HREFTYPE never : {0u, 12u, 0x80000001u, 0xffffffffu}) {
        EXPECT_EQ(sample->GetRefTypeInfo(never, info.Put()), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_FALSE(info);
    }
}

TEST(TypeLibraryTest, DescribesFunctions)
{
    const auto sample = Type(u"ISample");
    const auto events = Type(u"_ISampleEvents");
    // The values of types: 3 long, 5 double, 8 text, 9 object, 11 truth, 12 variant, 13 unknown, 24 none, 25 result.
    const std::tuple<ComPtr<ITypeInfo>, ULONG, std::string_view> functions[]{
        {sample, 0, "1 2 56 0: 10 3*, -> 25"},
        {sample, 1, "1 4 64 0: 1 3, -> 25"},
        {sample, 2, "2 2 72 0: 10 SampleColour*, -> 25"},
        {sample, 3, "2 4 80 0: 1 SampleColour, -> 25"},
        {sample, 12, "7 2 152 0: 10 ISample**, -> 25"},
        {sample, 15, "20 1 176 0: 3 8*, -> 25"},
        {sample, 16, "21 1 184 0: 1 3, 1 3, 2 3*, 2 3*, -> 25"},
        {sample, 17, "22 1 192 2: 1 3, 17 3, 17 3, 10 8*, -> 25"},
        {sample, 18, "23 1 200 0: 1 3, 1 SamplePoint*, 10 5*, -> 25"},
        {sample, 22, "27 1 232 0: 1 13, 10 11*, -> 25"},
        {sample, 23, "28 1 240 0: 3 12*, -> 25"},
        {sample, 24, "0 1 248 0: -> 25"},
        {Type(u"IPrism"), 0, "2 2 72 0: 10 3*, -> 25"}, // Behind the slots of the base.
        {Type(u"IPlainSample"), 0, "1 1 24 0: 1 3, 10 3*, -> 25"},
        {events, 0, "1 1 0 0: 1 3, 1 8, -> 24"},
        {events, 1, "2 1 0 0: 1 9, -> 24"},
        {events, 2, "3 1 0 0: 1 3, 1 3*, -> 24"}, // A list that the callee reads.
        {events, 3, "4 1 0 0: 1 IForeign*, 1 ISample*, 1 IForeign*, -> 24"}};
    for (const auto& [type, index, text] : functions)
        EXPECT_EQ(Function(*type, index), text);
    EXPECT_THAT(Names(*sample, 22), ElementsAre("Join", "first", "second", "third", "text"));
    EXPECT_THAT(Names(*sample, 22, 2), ElementsAre("Join", "first"));
    EXPECT_THAT(Names(*sample, 1), ElementsAre("Count"));
    EXPECT_THAT(Names(*events, 1), ElementsAre("Renamed", "id", "name"));
    EXPECT_EQ(NameOf(*sample, 21), "Divide");
}

TEST(TypeLibraryTest, DescribesEnumerationsAndRecordsAsTheyAreDeclared)
{
    // An enumerator with its value, a field with its type.
    const auto variables = [](ITypeInfo& info) {
        std::string text;
        VARDESC* variable = nullptr;
        for (ULONG i = 0; SUCCEEDED(info.GetVarDesc(i, &variable)); ++i) {
            const VARIANT* value = variable->lpvarValue;
            EXPECT_TRUE(!value || value->vt == VT_I4);
            EXPECT_THAT(Names(info, variable->memid), ElementsAre(NameOf(info, variable->memid)));
            text += NameOf(info, variable->memid) +
                    (value ? "=" + std::to_string(value->lVal) : ":" + Spelled(info, variable->elemdescVar.tdesc)) +
                    ' ';
            info.ReleaseVarDesc(variable);
        }
        return text;
    };
    EXPECT_EQ(variables(*Type(u"SampleColour")), "Red=1 Green=32 Blue=48 ");
    EXPECT_EQ(variables(*Type(u"SamplePoint")), "x:3 y:5 label:8 colour:SampleColour tag:13 owner:IForeign* ");
}

TEST(TypeLibraryTest, TypesReferToWhatTheyBuildOn)
{
    const std::tuple<const OLECHAR*, ULONG, std::string_view, LONG> rows[] = {
        {u"ISample", 0, "IDispatch", 0},
        {u"IShape", 0, "IDispatch", 0},
        {u"IPrism", 0, "IShape", 0},
        {u"IPlainSample", 0, "IUnknown", 0},
        {u"_ISampleEvents", 0, "IDispatch", 0},
        {u"Sample", 0, "ISample", IMPLTYPEFLAG_FDEFAULT},
        {u"Sample", 1, "_ISampleEvents", IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE},
        {u"Silent", 0, "IPlainSample", IMPLTYPEFLAG_FDEFAULT}};
    for (const auto& [name, index, expected, flags] : rows) {
        const auto type = Type(name);
        HREFTYPE reference = 0;
        LONG found = -1;
        ComPtr<ITypeInfo> base;
        ASSERT_EQ(type->GetRefTypeOfImplType(index, &reference), S_OK);
        ASSERT_EQ(type->GetRefTypeInfo(reference, base.Put()), S_OK);
        EXPECT_EQ(NameOf(*base), expected);
        EXPECT_EQ(type->GetImplTypeFlags(index, &found), S_OK);
        EXPECT_EQ(found, flags) << expected;
    }

    // The platform's own interfaces are known by name and identity, and belong to no library.
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> dispatch;
    ASSERT_EQ(Type(u"ISample")->GetRefTypeOfImplType(0, &reference), S_OK);
    ASSERT_EQ(Type(u"ISample")->GetRefTypeInfo(reference, dispatch.Put()), S_OK);
    EXPECT_EQ(Attributes(*dispatch).facts.guid, IDispatch::IID);
    ComPtr<ITypeLib> container;
    EXPECT_EQ(dispatch->GetContainingTypeLib(container.Put(), nullptr), TYPE_E_ELEMENTNOTFOUND);
}

TEST(TypeLibraryTest, ADerivedInterfaceAddsToItsBase)
{
    const auto prism = Type(u"IPrism");
    EXPECT_THAT(Names(*prism, 1), ElementsAre("Sides"));
    EXPECT_THAT(Names(*prism, 3), ElementsAre("Extend", "sides"));
    EXPECT_EQ(NameOf(*prism, 1), "Sides");

    const auto object = kv::Make<Prism>();
    OLECHAR name[] = u"sides";
    OLECHAR* names[]{name};
    DISPID id = 0;
    ASSERT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, 0, &id), S_OK);
    ASSERT_EQ(Invoke(*object, id, DISPATCH_PROPERTYPUT, {Variant(LONG{5})}).code, S_OK);
    EXPECT_EQ(Invoke(*object, 2, DISPATCH_PROPERTYGET).value.lVal, 15);
    EXPECT_EQ(Invoke(*object, 4, DISPATCH_METHOD).code, DISP_E_MEMBERNOTFOUND);
    DISPPARAMS none{};
    Variant sides;
    auto* self = static_cast<IPrism*>(object.Get());
    EXPECT_EQ(prism->Invoke(self, 1, DISPATCH_PROPERTYGET, &none, &sides, nullptr, nullptr), S_OK);
    EXPECT_EQ(sides.lVal, 5);
}

TEST(TypeLibraryTest, RecordsLeadToWhatMakesThem)
{
    ComPtr<IRecordInfo> info;
    ASSERT_EQ(GetRecordInfoFromTypeInfo(Type(u"SamplePoint").Get(), info.Put()), S_OK);
    std::vector<BSTR> fields(6);
    ULONG count = 0;
    ASSERT_EQ(info->GetFieldNames(&count, nullptr), S_OK);
    ASSERT_EQ(count, fields.size());
    ASSERT_EQ(info->GetFieldNames(&count, fields.data()), S_OK);
    std::string names;
    for (BSTR field : fields)
        names += kv::ToUtf8(Bstr::Attach(field).View()) + ' ';
    EXPECT_EQ(names, "x y label colour tag owner ");
    EXPECT_EQ(GetRecordInfoFromTypeInfo(Type(u"ISample").Get(), info.Put()), TYPE_E_ELEMENTNOTFOUND);
}

TEST(TypeLibraryTest, InterfacesOfOtherLibrariesAreKnownByNameAndIdentity)
{
    const auto events = Type(u"_ISampleEvents");
    FUNCDESC* function = nullptr;
    ASSERT_EQ(events->GetFuncDesc(3, &function), S_OK);
    const HREFTYPE from = function->lprgelemdescParam[0].tdesc.lptdesc->hreftype;
    const HREFTYPE to = function->lprgelemdescParam[2].tdesc.lptdesc->hreftype;
    events->ReleaseFuncDesc(function);
    EXPECT_EQ(from, to) << "one type, one reference";

    ComPtr<ITypeInfo> foreign;
    ComPtr<ITypeLib> container;
    ASSERT_EQ(events->GetRefTypeInfo(from, foreign.Put()), S_OK);
    const TYPEATTR facts = Attributes(*foreign).facts;
    EXPECT_EQ(facts.guid, IForeign::IID);
    EXPECT_EQ(facts.typekind, TKIND_INTERFACE);
    EXPECT_EQ(facts.cFuncs, 0);
    EXPECT_EQ(foreign->GetContainingTypeLib(container.Put(), nullptr), TYPE_E_ELEMENTNOTFOUND);
}

TEST(TypeLibraryTest, NamesAreFoundInTypesMembersEnumeratorsAndFields)
{
    const auto library = Library();
    const auto isName = [&](const OLECHAR* name) {
        BOOL is = 7;
        EXPECT_EQ(library->IsName(name, &is), S_OK);
        return is;
    };
    for (const OLECHAR* name : {u"isample", u"SILENT", u"Join", u"blue", u"LABEL", u"renamed"})
        EXPECT_EQ(isName(name), 1) << kv::ToUtf8(name);
    for (const OLECHAR* name : {u"", u"ISampl", u"ISamples", u"first", u"IForeign"})
        EXPECT_EQ(isName(name), 0) << kv::ToUtf8(name);

    const auto find = [&](const OLECHAR* name, USHORT room) {
        ITypeInfo* infos[4]{};
        DISPID members[4]{};
        USHORT count = room;
        EXPECT_EQ(library->FindName(name, 0, infos, members, &count), S_OK);
        std::vector<std::string> found;
        for (USHORT i = 0; i < count; ++i) {
            const auto info = ComPtr<ITypeInfo>::Attach(infos[i]);
            found.push_back(NameOf(*info) + ' ' + std::to_string(members[i]));
        }
        return found;
    };
    // A field, and a property of an interface.
    EXPECT_THAT(find(u"colour", 4), ElementsAre("SamplePoint 3", "ISample 2"));
    EXPECT_THAT(find(u"colour", 1), ElementsAre("SamplePoint 3"));
    EXPECT_THAT(find(u"colour", 0), IsEmpty());
    EXPECT_THAT(find(u"green", 4), ElementsAre("SampleColour 1"));
    EXPECT_THAT(find(u"nobody", 4), IsEmpty());
}

TEST(TypeLibraryTest, CallsObjectsThroughAnyOfTheirInterfaces)
{
    const ComPtr<ISample> sample = kv::Make<Sample>();
    sample->put_Count(9);
    // Whatever pointer the caller has, the object is asked for the interface of the type info.
    const auto otherFace = kv::Query<IPlainSample>(sample);
    Variant number(LONG{42});
    Variant result;
    const auto call = [&](const OLECHAR* type, IUnknown* object, DISPID member, WORD flags = DISPATCH_METHOD) {
        DISPPARAMS params{&number, nullptr, flags == DISPATCH_METHOD, 0};
        return Type(type)->Invoke(object, member, flags, &params, result.Put(), nullptr, nullptr);
    };
    EXPECT_EQ(call(u"ISample", otherFace.Get(), 1, DISPATCH_PROPERTYGET), S_OK);
    EXPECT_EQ(result.lVal, 9);
    std::u16string name = u"half";
    OLECHAR* names[] = {name.data()};
    DISPID half = 0;
    ASSERT_EQ(Type(u"IPlainSample")->GetIDsOfNames(names, 1, &half), S_OK);
    EXPECT_EQ(call(u"IPlainSample", sample.Get(), half), S_OK);
    EXPECT_EQ(result.lVal, 21);

    class Stranger : public kv::Object<IUnknown> {};
    EXPECT_EQ(call(u"IPlainSample", kv::Make<Stranger>().Get(), half), E_NOINTERFACE);
    EXPECT_EQ(call(u"IPlainSample", nullptr, half), E_POINTER);
    // Events and types without members cannot be called.
    EXPECT_EQ(call(u"_ISampleEvents", sample.Get(), 1), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(u"Sample", sample.Get(), 1), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Type(u"Sample")->GetIDsOfNames(names, 1, &half), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(half, DISPID_UNKNOWN);
}

TEST(TypeLibraryTest, ObjectsLeadToTheirTypeInfo)
{
    const ComPtr<ISample> sample = kv::Make<Sample>();
    ULONG count = 0;
    EXPECT_EQ(sample->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    ComPtr<ITypeInfo> info;
    ComPtr<ITypeLib> library;
    ULONG index = 0;
    ASSERT_EQ(sample->GetTypeInfo(0, 0, info.Put()), S_OK);
    EXPECT_EQ(NameOf(*info), "ISample");
    ASSERT_EQ(info->GetContainingTypeLib(library.Put(), &index), S_OK);
    EXPECT_EQ(index, 2u);
    EXPECT_EQ(sample->GetTypeInfo(1, 0, info.Put()), DISP_E_BADINDEX);

    // Without a library the type still describes itself.
    ASSERT_EQ(kv::MakeTypeInfo(nullptr, kv::kInterfaceDescription<ISample>, info.Put()), S_OK);
    EXPECT_EQ(Function(*info, 0), "1 2 56 0: 10 3*, -> 25");
    EXPECT_EQ(Function(*info, 12), "7 2 152 0: 10 ISample**, -> 25");
    EXPECT_EQ(info->GetContainingTypeLib(library.Put(), &index), TYPE_E_ELEMENTNOTFOUND);
}

class TypeLibraryRegistrationTest : public testing::Test {
protected:
    TypeLibraryRegistrationTest() { kv::Registry::UseMemory(); }

    static std::u16string Read(Hive hive, std::u16string key, std::u16string_view name = {})
    {
        return kv::Registry::QueryText(hive, u"Software\\Classes\\" + key, name);
    }

    const std::u16string m_library = u"TypeLib\\" + kv::GuidText(kSampleLibrary);
    const std::u16string m_interface = u"Interface\\" + kv::GuidText(ISample::IID);
};

TEST_F(TypeLibraryRegistrationTest, WritesAndRemovesItsKeys)
{
    using Write = HRESULT (*)(ITypeLib*, const OLECHAR*);
    using Remove = HRESULT (*)(ITypeLib*);
    const std::tuple<Hive, Hive, Write, Remove> scopes[] = {
        {Hive::LocalMachine, Hive::CurrentUser, &RegisterTypeLib, &UnRegisterTypeLib},
        {Hive::CurrentUser, Hive::LocalMachine, &RegisterTypeLibForUser, &UnRegisterTypeLibForUser}};
    const auto library = Library();
    for (const auto& [hive, other, write, remove] : scopes) {
        ASSERT_EQ(write(library.Get(), u"/opt/sample/libSample.so"), S_OK);
        for (const auto& [key, text] : {std::pair{u"\\2.7", u"Sample 2.7 Type Library"},
                                        {u"\\2.7\\0\\linux64", u"/opt/sample/libSample.so"},
                                        {u"\\2.7\\FLAGS", u"0"},
                                        {u"\\2.7\\HELPDIR", u"/opt/sample"}})
            EXPECT_EQ(Read(hive, m_library + key), text);
        EXPECT_EQ(Read(hive, m_interface), u"ISample");
        EXPECT_EQ(Read(hive, m_interface + u"\\TypeLib"), kv::GuidText(kSampleLibrary));
        EXPECT_EQ(Read(hive, m_interface + u"\\TypeLib", u"Version"), u"2.7");
        EXPECT_EQ(Read(other, m_library + u"\\2.7"), u"");
        // Classes are the server's to register.
        EXPECT_EQ(Read(hive, u"Interface\\" + kv::GuidText(kSampleClass)), u"");

        EXPECT_EQ(remove(library.Get()), S_OK);
        EXPECT_FALSE(kv::Registry::KeyExists(hive, u"Software\\Classes\\" + m_library));
        EXPECT_FALSE(kv::Registry::KeyExists(hive, u"Software\\Classes\\" + m_interface));
        EXPECT_EQ(remove(library.Get()), S_OK);
    }
    for (const HRESULT result :
         {RegisterTypeLib(nullptr, u"x"), RegisterTypeLib(library.Get(), nullptr), UnRegisterTypeLib(nullptr)})
        EXPECT_EQ(result, E_INVALIDARG);
}

TEST_F(TypeLibraryRegistrationTest, WhatIsNoTypeLibraryDoesNotLoad)
{
    ComPtr<ITypeLib> found;
    EXPECT_EQ(LoadRegTypeLib(kSampleLibrary, 2, 7, 0, found.Put()), TYPE_E_LIBNOTREGISTERED);
    ASSERT_EQ(RegisterTypeLib(Library().Get(), u"/nowhere/libSample.so"), S_OK);
    EXPECT_EQ(LoadRegTypeLib(kSampleLibrary, 2, 8, 0, found.Put()), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(LoadRegTypeLib(kSampleLibrary, 2, 7, 0, found.Put()), TYPE_E_CANTLOADLIBRARY);
    // The first loads, but has no type library.
    for (const OLECHAR* name : {u"libm.so.6", u"/", u""})
        EXPECT_EQ(LoadTypeLib(name, found.Put()), TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(LoadTypeLib(nullptr, found.Put()), E_INVALIDARG);
    EXPECT_FALSE(found);
}

} // namespace
