#pragma once
// A host that binds late: it knows names alone.

#include "support/Host.h"

#include <algorithm>

namespace kv::test {

class ScriptHost {
public:
    explicit ScriptHost(IDispatch* object) : m_object(object) {}

    Variant Call(std::u16string name, WORD flags, std::vector<Variant> arguments = {})
    {
        OLECHAR* names[] = {name.data()};
        DISPID id = DISPID_UNKNOWN;
        EXPECT_EQ(S_OK, m_object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) << ToUtf8(name);
        std::ranges::reverse(arguments);
        DISPID put = DISPID_PROPERTYPUT;
        const bool puts = flags == DISPATCH_PROPERTYPUT;
        DISPPARAMS params{arguments.data(), puts ? &put : nullptr, static_cast<ULONG>(arguments.size()), puts};
        Variant result;
        EXPECT_EQ(S_OK,
                  m_object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result.Put(), nullptr, nullptr))
            << ToUtf8(name);
        return result;
    }

    /// "<null>" for a null string.
    std::u16string Get(const std::u16string& name)
    {
        const Variant value = Call(name, DISPATCH_PROPERTYGET);
        if (value.vt == VT_BSTR && !value.bstrVal) return u"<null>";
        const Variant text = value.As(VT_BSTR);
        return std::u16string(View(text.bstrVal));
    }

    void Put(const std::u16string& name, Variant value)
    {
        std::vector<Variant> arguments;
        arguments.push_back(std::move(value));
        Call(name, DISPATCH_PROPERTYPUT, std::move(arguments));
    }

    /// Every property that the interface I adds to its base, in slot order, as "Name=value " each, but those that are
    /// left out.
    template <class I>
    std::string Properties(std::vector<std::string_view> without = {})
    {
        std::string text;
        for (const MemberDescription& member : kInterfaceDescription<I>.members) {
            if (member.kind != DISPATCH_PROPERTYGET || std::ranges::count(without, member.name)) continue;
            text.append(member.name).append("=").append(ToUtf8(Get(ToUtf16(member.name)))) += ' ';
        }
        return text;
    }

private:
    ComPtr<IDispatch> m_object;
};

} // namespace kv::test
