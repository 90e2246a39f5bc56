#include "platform/automation/SafeArray.h"

#include "platform/com/Object.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::SafeArray;
using kv::Variant;

class Element : public kv::Object<IUnknown> {};

TEST(SafeArray, HoldsPlainValuesWithinItsBounds)
{
    const SafeArray array(SafeArrayCreateVector(VT_R8, -1, 3));
    ASSERT_TRUE(array.Get());
    LONG lower = 0;
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetLBound(array.Get(), 1, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array.Get(), 1, &upper), S_OK);
    EXPECT_EQ(lower, -1);
    EXPECT_EQ(upper, 1);
    EXPECT_EQ(SafeArrayGetUBound(array.Get(), 2, &upper), DISP_E_BADINDEX);

    for (LONG i = -1; i <= 1; ++i) {
        double value = i + 0.5;
        EXPECT_EQ(SafeArrayPutElement(array.Get(), &i, &value), S_OK);
    }
    for (LONG i = -1; i <= 1; ++i) {
        double value = 0;
        EXPECT_EQ(SafeArrayGetElement(array.Get(), &i, &value), S_OK);
        EXPECT_EQ(value, i + 0.5);
    }
    for (const LONG outside : {-2, 2, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()}) {
        double value = 1;
        EXPECT_EQ(SafeArrayGetElement(array.Get(), &outside, &value), DISP_E_BADINDEX);
        EXPECT_EQ(value, 0);
        EXPECT_EQ(SafeArrayPutElement(array.Get(), &outside, &value), DISP_E_BADINDEX);
    }
}

TEST(SafeArray, OwnsItsStrings)
{
    const SafeArray array(SafeArrayCreateVector(VT_BSTR, 0, 2));
    const LONG first = 0;
    const LONG second = 1;
    EXPECT_EQ(SafeArrayPutElement(array.Get(), &first, Bstr(u"one").Get()), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array.Get(), &first, Bstr(u"uno").Get()), S_OK);
    // An element put in its own place is copied before it goes.
    EXPECT_EQ(SafeArrayPutElement(array.Get(), &first, static_cast<BSTR*>(array.Get()->pvData)[0]), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array.Get(), &second, nullptr), S_OK);

    SafeArray copy;
    ASSERT_EQ(SafeArrayCopy(array.Get(), copy.Put()), S_OK);
    Bstr text;
    EXPECT_EQ(SafeArrayGetElement(copy.Get(), &first, text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"uno");
    EXPECT_EQ(SafeArrayGetElement(copy.Get(), &second, text.Put()), S_OK);
    EXPECT_FALSE(text);
}

TEST(SafeArray, CountsItsObjects)
{
    {
        const SafeArray objects(SafeArrayCreateVector(VT_UNKNOWN, 0, 1));
        const SafeArray variants(SafeArrayCreateVector(VT_VARIANT, 0, 1));
        const LONG first = 0;
        {
            const ComPtr<Element> element = kv::Make<Element>();
            EXPECT_EQ(SafeArrayPutElement(objects.Get(), &first, element->Inner()), S_OK);
            Variant value(element->Inner());
            EXPECT_EQ(SafeArrayPutElement(variants.Get(), &first, &value), S_OK);
            EXPECT_EQ(SafeArrayPutElement(variants.Get(), &first, &value), S_OK);
        }
        EXPECT_EQ(kv::g_moduleLocks, 1);
        ComPtr<IUnknown> object;
        EXPECT_EQ(SafeArrayGetElement(objects.Get(), &first, object.PutVoid()), S_OK);
        EXPECT_EQ(SafeArrayPutElement(objects.Get(), &first, nullptr), S_OK);
        Variant value;
        EXPECT_EQ(SafeArrayGetElement(variants.Get(), &first, value.Put()), S_OK);
        EXPECT_EQ(value.punkVal, object.Get());
        SafeArray copy;
        EXPECT_EQ(SafeArrayCopy(variants.Get(), copy.Put()), S_OK);
    }
    EXPECT_EQ(kv::g_moduleLocks, 0);
}

TEST(SafeArray, AnEmptyOneEndsBeforeItBegins)
{
    const SafeArray array(SafeArrayCreateVector(VT_I4, 5, 0));
    ASSERT_TRUE(array.Get());
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(array.Get(), 1, &upper), S_OK);
    EXPECT_EQ(upper, 4);
    SafeArray copy;
    EXPECT_EQ(SafeArrayCopy(array.Get(), copy.Put()), S_OK);
    const LONG index = 5;
    EXPECT_EQ(SafeArrayGetElement(copy.Get(), &index, &upper), DISP_E_BADINDEX);
    for (const VARTYPE type : {VT_EMPTY, VT_NULL, VT_RECORD, VT_BYREF, VT_ARRAY})
        EXPECT_EQ(SafeArrayCreateVector(type, 0, 1), nullptr) << type;
    EXPECT_EQ(SafeArrayCreateVector(VT_UI1, 1, 0x80000000), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_UI1, std::numeric_limits<LONG>::min(), 0), nullptr);
}

TEST(SafeArray, NullArgumentsAreRefused)
{
    const SafeArray array(SafeArrayCreateVector(VT_I4, 0, 1));
    const LONG first = 0;
    LONG value = 0;
    SAFEARRAY* copy = array.Get();
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), E_INVALIDARG);
    EXPECT_EQ(copy, nullptr);
    for (const HRESULT result :
         {SafeArrayGetLBound(nullptr, 1, &value), SafeArrayGetElement(nullptr, &first, &value),
          SafeArrayGetElement(array.Get(), nullptr, &value), SafeArrayPutElement(nullptr, &first, &value),
          SafeArrayPutElement(array.Get(), &first, nullptr)})
        EXPECT_EQ(result, E_INVALIDARG);
    for (const HRESULT result : {SafeArrayCopy(array.Get(), nullptr), SafeArrayGetUBound(array.Get(), 1, nullptr),
                                 SafeArrayGetElement(array.Get(), &first, nullptr)})
        EXPECT_EQ(result, E_POINTER);
}

} // namespace
