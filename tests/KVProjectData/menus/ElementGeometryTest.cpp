#include "KVProjectData/menus/ElementGeometry.h"

#include <gtest/gtest.h>

namespace kv::test {
namespace {

constexpr double kNarrow = 4.0 / 3.0;

void ExpectNear(const FloatRect& expected, const FloatRect& actual)
{
    constexpr float kClose = 1e-4F;
    EXPECT_NEAR(expected.fLeft, actual.fLeft, kClose);
    EXPECT_NEAR(expected.fTop, actual.fTop, kClose);
    EXPECT_NEAR(expected.fRight, actual.fRight, kClose);
    EXPECT_NEAR(expected.fBottom, actual.fBottom, kClose);
}

TEST(ElementGeometryTest, ElementsAreScaledTurnedAndPutInPlace)
{
    struct Case {
        Placement placement;
        FloatRect extent;
    };
    for (const auto& [placement, extent] : {
             Case{{}, {-1, 1, 1, -1}},
             Case{{kNarrow, {0.5, 0.5}, {}, 90, {}}, {-0.375F, 0.6667F, 0.375F, -0.6667F}},
             Case{{kNarrow, {0.5, 0.25}, {}, 0, {0.1F, -0.2F}}, {-0.4F, 0.05F, 0.6F, -0.45F}},
             Case{{16.0 / 9.0, {0.5, 0.5}, {}, -90, {1, 0}}, {0.71875F, 0.8889F, 1.28125F, -0.8889F}},
             // About a point beside it, clockwise.
             Case{{1.0, {0.1F, 0.1F}, {0.5, 0}, 90, {0, 0.25F}}, {-0.1F, -0.15F, 0.1F, -0.35F}},
             Case{{kNarrow, {0, 0}, {0.4F, 0}, 0, {0.5, 0.5}}, {0.8F, 0.5F, 0.8F, 0.5F}},
         }) {
        ExpectNear(extent, ExtentOf(Place(kOwnSquare, placement)));
    }
    const Corners turned = Place(kOwnSquare, {1.0, {1, 1}, {}, 90, {}});
    EXPECT_NEAR(1, turned[0].x, 1e-6);
    EXPECT_NEAR(1, turned[0].y, 1e-6);
}

TEST(ElementGeometryTest, EmptyRectanglesHaveNoPlaceInAUnion)
{
    const FloatRect a{0.1F, 0.9F, 0.4F, 0.6F};
    const FloatRect b{0.3F, 0.8F, 0.7F, 0.2F};
    EXPECT_EQ((FloatRect{0.1F, 0.9F, 0.7F, 0.2F}), Union(a, b));
    EXPECT_EQ(a, Union(a, {}));
    EXPECT_EQ(a, Union({}, a));
    EXPECT_EQ(FloatRect{}, Union({}, {}));
}

} // namespace
} // namespace kv::test
