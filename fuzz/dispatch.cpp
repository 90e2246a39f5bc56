// Any bytes as a row of late-bound calls to a project and the objects that it hands out.

#include "Choices.h"
#include "Fuzz.h"
#include "platform/automation/RecordInfo.h"
#include "platform/automation/SafeArray.h"
#include "platform/automation/TypeInfo.h"

#include <array>
#include <deque>
#include <vector>

namespace kv::fuzz {
namespace {

class Session {
public:
    explicit Session(Choices choices) : m_choices(choices)
    {
        const auto project = Create<IKVProjectData>(CLSID_KVProjectData);
        Keep(project.Get());
        KeepMenu(*project.Get());
        const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
        VARIANT_BOOL parsed = VARIANT_FALSE;
        document->loadXML(Bstr(u"<Root><Project><Titles><Title/></Titles><Menus><Menu><MenuElements>"
                               u"<Button ID='7'><MenuElements><Text/><Overlay/></MenuElements></Button>"
                               u"</MenuElements></Menu></Menus></Project></Root>")
                              .Get(),
                          &parsed);
        Require(parsed, "the document of a session parses");
        m_values.push_back(Variant(static_cast<IUnknown*>(document.Get())));
    }

    void Run()
    {
        constexpr int kCalls = 400;
        for (int call = 0; call < kCalls && m_choices.Any(); ++call)
            Call();
    }

private:
    /// A menu with a button, its text and a picture: calls need luck to come this far.
    void KeepMenu(IKVProjectData& project)
    {
        ComPtr<IKVMenu> menu;
        Require(SUCCEEDED(project.AddMenu(0, menu.Put())), "a project takes a menu");
        Keep(menu.Get());
        const auto button = AddElement<IKVMenuButton>(menu.Get());
        AddElement<IKVMenuText>(button.Get());
        AddElement<IKVMenuOverlay>(menu.Get());
    }

    template <class Interface>
    ComPtr<IKVMenuElement> AddElement(IUnknown* owner)
    {
        ComPtr<IKVMenuElement> element;
        Require(SUCCEEDED(Query<IKVMenuElementList>(owner)->AddElement(&Interface::IID, element.Put())),
                "a list takes an element");
        Keep(element.Get());
        return element;
    }

    /// Adds the interfaces of an object to those that are called.
    void Keep(IUnknown* object)
    {
        constexpr std::size_t kMost = 96;
        if (m_objects.size() >= kMost) return;
        const auto keep = [this](const auto& dispatch) {
            if (dispatch) m_objects.push_back(dispatch);
        };
        keep(ComPtr<IDispatch>(Query<IKVProjectData>(object)));
        keep(ComPtr<IDispatch>(Query<IKVTitle>(object)));
        keep(ComPtr<IDispatch>(Query<IKVDataFile>(object)));
        keep(ComPtr<IDispatch>(Query<IKVEncodingParams>(object)));
        keep(ComPtr<IDispatch>(Query<IKVCommandList>(object)));
        keep(ComPtr<IDispatch>(Query<IKVLocking>(object)));
        keep(ComPtr<IDispatch>(Query<IKVMenu>(object)));
        keep(ComPtr<IDispatch>(Query<IKVMenuElementList>(object)));
        keep(ComPtr<IDispatch>(Query<IKVMenuButton>(object)));
        keep(ComPtr<IDispatch>(Query<IKVMenuOverlay>(object)));
        keep(ComPtr<IDispatch>(Query<IKVMenuText>(object)));
        keep(ComPtr<IDispatch>(Query<IGroupInfoNode>(object)));
    }

    /// The identity of a member of an interface, or any other.
    DISPID Member(IDispatch& object)
    {
        if (m_choices.Below(16) == 0) return m_choices.Take<DISPID>();
        ComPtr<ITypeInfo> info;
        TYPEATTR* attributes = nullptr;
        if (FAILED(object.GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()))) return DISPID_UNKNOWN;
        Require(SUCCEEDED(info->GetTypeAttr(&attributes)), "a type has attributes");
        const auto index = static_cast<ULONG>(m_choices.Below(attributes->cFuncs));
        info->ReleaseTypeAttr(attributes);
        FUNCDESC* function = nullptr;
        Require(SUCCEEDED(info->GetFuncDesc(index, &function)), "a function of a type is described");
        const DISPID member = function->memid;
        info->ReleaseFuncDesc(function);
        return member;
    }

    /// A record of any bytes, or several that are zero.
    template <class Record>
    Variant RecordOf(ULONG count = 1)
    {
        Variant value = NewRecords(kRecordDescription<Record>, count);
        if (count == 1) *static_cast<Record*>(value.pvRecord) = m_choices.Take<Record>();
        return value;
    }

    /// Records as menus take them.
    Variant Records()
    {
        constexpr std::array kKinds{IKVMenuButton::IID, IKVMenuOverlay::IID, IKVMenuText::IID};
        constexpr ULONG kPalette = 16;
        Variant value;
        switch (m_choices.Below(8)) {
        case 0:
            return RecordOf<GUID>();
        case 1:
            return RecordOf<FloatRect>();
        case 2:
            return RecordOf<FloatPoint>();
        case 3:
            return RecordOf<ButtonLinks>();
        case 4:
            return RecordOf<SPUColourInfo>();
        case 5:
            return RecordOf<RGBEntry>(kPalette);
        default:
            value = NewRecords(kRecordDescription<GUID>, 1);
            *static_cast<GUID*>(value.pvRecord) = kKinds[m_choices.Below(kKinds.size())];
            return value;
        }
    }

    /// An argument. Places for results live as long as the session.
    Variant Argument()
    {
        Variant value;
        switch (m_choices.Below(16)) {
        case 0:
            return Variant(m_choices.Take<LONG>());
        case 1:
            return Variant(LONG{static_cast<std::int8_t>(m_choices.Take<std::uint8_t>())});
        case 2:
            return Variant(m_choices.Take<double>());
        case 3:
            return Variant(m_choices.Below(2) == 1);
        case 4:
            return Variant(m_choices.Text());
        case 5:
            return Variant(Bstr());
        case 6:
            return Variant(m_choices.Take<LONGLONG>());
        case 7:
            return m_values[m_choices.Below(m_values.size())];
        case 8:
            return Variant(static_cast<IUnknown*>(m_objects[m_choices.Below(m_objects.size())].Get()));
        case 9:
            return Place(VT_DISPATCH);
        case 10:
            return Place(VT_UNKNOWN);
        case 11:
            return Place(VT_BSTR);
        case 12:
            return Place(VT_I4);
        case 13:
            return Variant(m_choices.Take<float>());
        case 14:
            return Records();
        default:
            value.vt = VT_NULL;
            return value;
        }
    }

    /// A place that a callee stores into; what it holds is kept as a value.
    Variant Place(VARTYPE type)
    {
        Variant& place = m_places.emplace_back();
        if (type == VT_I4) place = Variant(LONG{0});
        place.vt = type;
        Variant reference;
        reference.vt = static_cast<VARTYPE>(type | VT_BYREF);
        reference.byref = &place.byref;
        return reference;
    }

    void Call()
    {
        const ComPtr<IDispatch> object = m_objects[m_choices.Below(m_objects.size())];
        const DISPID member = Member(*object.Get());
        constexpr std::array<WORD, 6> kFlags{DISPATCH_METHOD,      DISPATCH_PROPERTYGET,
                                             DISPATCH_PROPERTYPUT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                             DISPATCH_METHOD,      DISPATCH_PROPERTYPUTREF};
        const WORD flags = kFlags[m_choices.Below(kFlags.size())];
        std::vector<Variant> arguments(m_choices.Below(5));
        for (Variant& argument : arguments)
            argument = Argument();
        std::vector<DISPID> named(std::min(arguments.size(), m_choices.Below(3)));
        for (DISPID& name : named)
            name = static_cast<DISPID>(m_choices.Below(4)) - 1;
        if (flags & DISPATCH_PROPERTYPUT && m_choices.Below(8))
            named.assign(arguments.empty() ? 0 : 1, DISPID_PROPERTYPUT);
        DISPPARAMS params{arguments.data(), named.data(), static_cast<ULONG>(arguments.size()),
                          static_cast<ULONG>(named.size())};
        Variant result;
        EXCEPINFO exception{};
        ULONG bad = 0;
        object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, m_choices.Below(4) ? &result : nullptr,
                       m_choices.Below(4) ? &exception : nullptr, &bad);
        Bstr::Attach(exception.bstrSource);
        Bstr::Attach(exception.bstrDescription);
        KeepResult(result);
        for (const Variant& place : m_places)
            KeepResult(place);
        if (m_places.size() > 8) m_places.clear();
    }

    void KeepResult(const Variant& result)
    {
        if (result.vt == VT_DISPATCH || result.vt == VT_UNKNOWN) Keep(result.punkVal);
    }

    Choices m_choices;
    std::vector<ComPtr<IDispatch>> m_objects;
    std::vector<Variant> m_values;
    std::deque<Variant> m_places;
};

} // namespace
} // namespace kv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kv::fuzz::PrepareHost();
    kv::fuzz::Session(kv::fuzz::Choices(data, size)).Run();
    return 0;
}
