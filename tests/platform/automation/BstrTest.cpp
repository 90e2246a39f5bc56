#include "platform/automation/Bstr.h"

#include <gtest/gtest.h>

namespace {

using kv::Bstr;

TEST(Bstr, KeepsTheByteLengthDirectlyBeforeAlignedText)
{
    using namespace std::string_view_literals;
    for (const auto text : {u""sv, u"a"sv, u"in\0side"sv, u"\xD83D\xDE00"sv}) {
        const Bstr string(text);
        EXPECT_EQ(string.View(), text);
        EXPECT_EQ(string.Get()[text.size()], u'\0');
        EXPECT_EQ(reinterpret_cast<const std::uint32_t*>(string.Get())[-1], text.size() * 2);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(string.Get()) % 8, 0u);
    }
}

TEST(Bstr, AllocatesRoomWithinLimitsAndNullIsNoString)
{
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysStringByteLen(nullptr), 0u);
    SysFreeString(nullptr);
    EXPECT_EQ(Bstr::Copy(nullptr), nullptr);
    EXPECT_TRUE(kv::View(nullptr).empty());
    const Bstr string = Bstr::Attach(SysAllocStringLen(nullptr, 3));
    EXPECT_EQ(SysStringLen(string.Get()), 3u);
    EXPECT_EQ(string.Get()[3], u'\0');
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x80000000), nullptr);
    EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFF), nullptr);
}

TEST(Bstr, CopiesAreIndependent)
{
    Bstr first(u"one");
    Bstr second = first;
    first.Get()[0] = u'O';
    EXPECT_EQ(second.View(), u"one");
    Bstr third = std::move(second);
    EXPECT_FALSE(second);
    second = third;
    *third.Put() = SysAllocString(u"three");
    EXPECT_EQ(second.View(), u"one");
    EXPECT_EQ(third.View(), u"three");
}

struct Encoded {
    std::string utf8;
    std::u16string utf16;
};

TEST(Utf, WellFormedTextGoesBothWays)
{
    const Encoded cases[] = {{"", u""},
                             {"plain", u"plain"},
                             {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
                             {"\xC3\xA9\xE2\x82\xAC", u"\u00E9\u20AC"},
                             {"\xF0\x9F\x98\x80!", u"\xD83D\xDE00!"},
                             {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
                             {"\xEF\xBF\xBF", u"\xFFFF"}};
    for (const Encoded& text : cases) {
        EXPECT_EQ(kv::ToUtf16(text.utf8), text.utf16);
        EXPECT_EQ(kv::ToUtf8(text.utf16), text.utf8);
    }
}

TEST(Utf, MalformedUtf8IsMended)
{
    const Encoded cases[] = {
        {"a\x80z", u"a\uFFFDz"},               // continuation alone
        {"a\xFFz", u"a\uFFFDz"},               // never a byte of UTF-8
        {"\xC0\xAFz", u"\uFFFDz"},             // overlong
        {"\xED\xA0\x80z", u"\uFFFDz"},         // surrogate
        {"\xF4\x90\x80\x80z", u"\uFFFDz"},     // beyond the last code point
        {"a\xE2\x82", u"a\uFFFD"},             // cut off at the end
        {"\xE2\x82z", u"\uFFFDz"},             // cut off by another character
        {"\xF0\x9F\xC3\xA9", u"\uFFFD\u00E9"}, // cut off by a well-formed sequence
    };
    for (const Encoded& text : cases)
        EXPECT_EQ(kv::ToUtf16(text.utf8), text.utf16);
}

TEST(Utf, LoneSurrogatesAreMended)
{
    const Encoded cases[] = {{"\xEF\xBF\xBDz", u"\xD83Dz"},
                             {"\xEF\xBF\xBD", u"\xD83D"},
                             {"\xEF\xBF\xBDz", u"\xDE00z"},
                             {"\xEF\xBF\xBD\xEF\xBF\xBD", u"\xDE00\xD83D"},
                             {"\xEF\xBF\xBD\xF0\x9F\x98\x80", u"\xD83D\xD83D\xDE00"}};
    for (const Encoded& text : cases)
        EXPECT_EQ(kv::ToUtf8(text.utf16), text.utf8);
}

} // namespace
