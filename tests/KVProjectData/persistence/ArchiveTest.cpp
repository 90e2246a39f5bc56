#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/Object.h"
#include "platform/system/ErrorReporter.h"
#include "platform/xml/Element.h"
#include "support/Host.h"

#include <gmock/gmock.h>

namespace kv::test {
namespace {

/// A node with a field of every form, and a place that lives in an effect while there is one. It lists them out of
/// order, as a class does that adds its own to those of its base.
class Shape final : public CProjectNode, public Object<IUnknown> {
public:
    Shape() : CProjectNode(typeOverlay) {}

    void Attributes(AttributeArchive& archive) override
    {
        archive("turns", turns);
        archive("on", on);
        archive("still", OneOrZero{still});
        archive("label", label);
        archive("kind", Flags(kind, kOverlayTypeNames));
        archive("standard", Enumeration(standard, kTVStandardNames));
        archive("angle", angle);
        archive("bits", bits);
        archive("pattern", Hex{pattern, 6});
        archive("level", level);
        archive("seconds", seconds);
        archive.OnlyRead("oldLabel", label);
        archive.OnlyWrite("version", LONG{2});
        archive.OnlyRecord(hidden);
        if (!hasEffect || archive.ForcesNative() || archive.Records()) {
            archive.Value<float>(
                "x", [this] { return hasEffect ? effectX : ownX; }, [this](float x) { SetX(x); });
        }
    }
    IUnknown* Identity() override { return Controlling(); }

    void SetX(float x)
    {
        if (x < 0) throw Error(E_INVALIDARG);
        (hasEffect ? effectX : ownX) = x;
    }

    std::u16string Saved(ULONG flags)
    {
        XmlElement element = XmlElement::New("Shape");
        EXPECT_EQ(S_OK, SaveXML(element.Get(), flags));
        return ToUtf16(element.Markup());
    }

    HRESULT Load(const char* xml) { return LoadXML(XmlElement::Parse(xml).Get()); }

    Bstr label{u"\u00e9"};
    LONG turns = -3;
    ULONG bits = 0xFFFFFFFF;
    ULONG pattern = 0x1fe;
    BYTE level = 255;
    float angle = 0.1f;
    double seconds = 0.1;
    bool on = true;
    bool still = true;
    ULONG kind = 2;
    TVStandard standard = PAL;
    LONG hidden = 1;
    bool hasEffect = false;
    float ownX = 0.5f;
    float effectX = 2.5f;
};

constexpr std::u16string_view kShape = u"<Shape angle=\"0.1\" bits=\"4294967295\" kind=\"2 (Frame)\" label=\"\u00e9\" "
                                       u"level=\"255\" on=\"-1\" pattern=\"0x0001FE\" seconds=\"0.1\""
                                       u" standard=\"2 (PAL)\" still=\"1\" turns=\"-3\" version=\"2\"";

TEST(ArchiveTest, WritesWhatTheSaveAsksForInTheOrderOfTheNames)
{
    const auto shape = Make<Shape>();
    EXPECT_EQ(std::u16string(kShape) + u" x=\"0.5\"/>", shape->Saved(0));
    shape->hasEffect = true;
    EXPECT_EQ(std::u16string(kShape) + u"/>", shape->Saved(0));
    EXPECT_EQ(std::u16string(kShape) + u" x=\"2.5\"/>", shape->Saved(kSaveNative));
}

TEST(ArchiveTest, ReadsEveryFormAndLeavesWhatCannotBeRead)
{
    const auto shape = Make<Shape>();
    EXPECT_EQ(
        S_OK,
        shape->Load("<Shape angle='1e-3' bits='0' kind='16' level='7' on='false' oldLabel='o' pattern='1' seconds='2.5'"
                    " standard='1 (PAL)' still='0' turns='7' version='9' x='0.25'/>"));
    EXPECT_EQ(u"<Shape angle=\"0.001\" bits=\"0\" kind=\"16 (Matte)\" label=\"o\" level=\"7\" on=\"0\""
              u" pattern=\"0xFFFFFFFF\" seconds=\"2.5\""
              u" standard=\"1 (NTSC)\" still=\"0\" turns=\"7\" version=\"2\" x=\"0.25\"/>",
              shape->Saved(0));

    const auto other = Make<Shape>();
    for (const char* refused :
         {"angle='wide'", "bits='-1'", "level='256'", "level='-1'", "on='maybe'", "pattern=''", "seconds='soon'",
          "still='2 KB'", "turns='99999999999'", "x='-1'", "label2='unknown'"}) {
        ZXUClearErrorStack();
        EXPECT_EQ(S_OK, other->Load((std::string("<Shape label='\u00e9' version='9' ") + refused + "/>").c_str()));
        EXPECT_EQ(std::u16string(kShape) + u" x=\"0.5\"/>", other->Saved(0)) << refused;
        const std::string name(refused, std::string_view(refused).find('='));
        EXPECT_THAT(ZXUErrorStack(), testing::ElementsAre(testing::HasSubstr(" /Shape/@" + name + ": "))) << refused;
    }
}

TEST(ArchiveTest, ARecordHoldsEveryFieldThroughALifeOfTheEffect)
{
    const auto shape = Make<Shape>();
    RecordedValues record = shape->GetRecord();
    ASSERT_EQ(S_OK, shape->Load("<Shape angle='1' bits='1' kind='1' label='' level='1' on='0' pattern='0x1' "
                                "seconds='1' standard='1' still='0'"
                                " turns='1' x='1'/>"));
    shape->hidden = 5;
    shape->hasEffect = true;
    shape->ExchangeRecord(record);
    EXPECT_EQ(std::u16string(kShape) + u" x=\"0.5\"/>", shape->Saved(kSaveNative));
    EXPECT_EQ(1, shape->hidden);
    shape->ExchangeRecord(record);
    EXPECT_EQ(5, shape->hidden);
    EXPECT_TRUE(shape->Saved(kSaveNative).ends_with(u" turns=\"1\" version=\"2\" x=\"2.5\"/>"));
}

} // namespace
} // namespace kv::test
