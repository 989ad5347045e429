#include "DisplayReport/maps/InputProjection.h"

#include "support/Displays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr double ROUNDING = 1e-14;
constexpr double NOTHING = std::numeric_limits<double>::quiet_NaN();

const std::string EYE_SPHERE = "<Screen shape='Sphere'><EyePoint x='1' y='2' z='3'/><Radius value='9'/></Screen>";

std::unique_ptr<XMLConfigFile> seenFromEye(const std::string& targets = "<TargetData type='Spherical'/>") {
    return displays::parsed(EYE_SPHERE, displays::projector("A", ""), targets);
}

void expectAt(const InputProjection& input, const P3& layout, const P2& expected) {
    const auto place = input.place(layout);
    ASSERT_TRUE(place.has_value());
    EXPECT_NEAR((*place)[0], expected[0], ROUNDING);
    EXPECT_NEAR((*place)[1], expected[1], ROUNDING);
}

TEST(InputProjection, PanoramasHaveNames) {
    EXPECT_THAT(panoramaNames(), ElementsAre("fisheye", "equirectangular"));
    EXPECT_EQ(panoramaOf("fisheye"), Panorama::FISHEYE);
    EXPECT_EQ(panoramaOf("equirectangular"), Panorama::EQUIRECTANGULAR);
    EXPECT_EQ(panoramaOf("Fisheye"), std::nullopt);
}

TEST(InputProjection, OfAPlanarDisplayIsTheWholeLayoutPlane) {
    const auto config = displays::parsed(
        displays::FLAT, displays::projector("A", "<Layout xMin='-2' xMax='1' yMin='1' yMax='2'/>") +
                            displays::projector("B", "<Layout xMin='0' xMax='6' yMin='0' yMax='1.5'/>") +
                            displays::projector("C", "<Layout xMin='50' xMax='50' yMin='0' yMax='90'/>"));
    const InputProjection input(*config, Panorama::FISHEYE);
    EXPECT_FALSE(InputProjection::hasPanorama(*config));
    EXPECT_FALSE(input.wrapsAround());
    expectAt(input, {-2, 0, 7}, {0, 0});
    expectAt(input, {6, 2, 0}, {1, 1});
    expectAt(input, {0, 1.5, 0}, {0.25, 0.75});
    EXPECT_EQ(input.place({6 + 1e-12, 2, 0}), (P2{1, 1})) << "an edge that was rounded";
    EXPECT_EQ(input.place({6.1, 2, 0}), std::nullopt);
    EXPECT_EQ(input.place({0, -0.1, 0}), std::nullopt);
    EXPECT_EQ(input.place({NOTHING, 1, 0}), std::nullopt);
}

TEST(InputProjection, ALayoutPlaneWithoutRectanglesHasNoPlaces) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", ""));
    EXPECT_EQ(InputProjection(*config, Panorama::FISHEYE).place({0, 0, 0}), std::nullopt);
}

TEST(InputProjection, OfACustomPlanarDisplayIsTheScreen) {
    const auto config =
        displays::parsed(displays::FLAT, displays::projector("A", ""), "<TargetData type='CustomPlanar'/>");
    const InputProjection input(*config, Panorama::EQUIRECTANGULAR);
    EXPECT_FALSE(input.wrapsAround());
    expectAt(input, {0.25, 9, 0.75}, {0.25, 0.75});
    EXPECT_EQ(input.place({1.5, 0, 0.5}), std::nullopt);
}

TEST(InputProjection, AFisheyeLooksForward) {
    const auto config = seenFromEye();
    ASSERT_TRUE(InputProjection::hasPanorama(*config));
    const InputProjection input(*config, Panorama::FISHEYE);
    expectAt(input, {1, 7, 3}, {0.5, 0.5});
    expectAt(input, {6, 2, 3}, {1, 0.5});   // right
    expectAt(input, {-4, 2, 3}, {0, 0.5});  // left
    expectAt(input, {1, 2, 8}, {0.5, 1});   // up
    expectAt(input, {1, 2, -2}, {0.5, 0});  // down
    expectAt(input, {1 + 5, 2 + 5, 3}, {0.75, 0.5});
    // 60 degrees off the axis, up to the right: a third of the diameter from the middle.
    const double aside = std::sqrt(3.0) / std::sqrt(2.0);
    expectAt(input, {1 + aside, 2 + 1, 3 + aside}, {0.5 + std::sqrt(0.5) / 3, 0.5 + std::sqrt(0.5) / 3});
    expectAt(input, {6, 2 - 4e-9, 3}, {1, 0.5});  // behind the viewer by no more than rounding
    EXPECT_EQ(input.place({6, 1.99, 3}), std::nullopt) << "behind the viewer";
    EXPECT_EQ(input.place({1, -5, 3}), std::nullopt);
    EXPECT_EQ(input.place({1, 2, 3}), std::nullopt) << "the eye itself";
    EXPECT_EQ(input.place({NOTHING, 0, 0}), std::nullopt);
}

TEST(InputProjection, AnEquirectangularPanoramaGoesAllAround) {
    const auto config = seenFromEye();
    const InputProjection input(*config, Panorama::EQUIRECTANGULAR);
    EXPECT_TRUE(input.wrapsAround());
    expectAt(input, {1, 7, 3}, {0.5, 0.5});
    expectAt(input, {6, 2, 3}, {0.75, 0.5});
    expectAt(input, {-4, 2, 3}, {0.25, 0.5});
    expectAt(input, {1 + 1e-15, -5, 3}, {1, 0.5});
    expectAt(input, {1, 2 + 3, 3 + 3}, {0.5, 0.75});
    expectAt(input, {1, 2, -2}, {0.5, 0});
    EXPECT_EQ(input.place({1, 2, 3}), std::nullopt);
}

TEST(InputProjection, TheEyeOfACollimatedDisplayIsWhereItsMirrorHasIt) {
    // Turned to the right by 90 degrees: the eye (1, 2, 3), moved to (1, 2, 5), stands at (2, -1, 5).
    const auto config = seenFromEye(
        "<TargetData type='SphericalCollimated'><Mirror radius='20'><Orientation z='90' x='0' y='0'/>"
        "<Position x='0' y='0' z='2'/></Mirror></TargetData>");
    const InputProjection input(*config, Panorama::FISHEYE);
    expectAt(input, {2, 4, 5}, {0.5, 0.5});
    EXPECT_EQ(input.place({2, -1.5, 5}), std::nullopt);
}

}  // namespace
