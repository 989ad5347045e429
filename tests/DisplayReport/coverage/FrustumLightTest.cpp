#include "DisplayReport/coverage/RayLight.h"

#include "KelvoScreen/SphericalScreen.h"
#include "LitDisplays.h"

#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;

class FrustumLightTest : public LitDisplayTest {
protected:
    static FrustumLight light(double left, double right, double bottom, double top, double headingDegrees = 0) {
        const double pi = std::numbers::pi;
        return {SphereTargetLocatorParams({0, 0, 0}, radians(left), radians(right), radians(bottom), radians(top),
                                          radians(headingDegrees), 0, 0, {}, {}),
                std::make_shared<SphericalScreen>(P3{0, 0, 0}, 5, -pi, pi, -pi / 2, pi / 2)};
    }
};

TEST_F(FrustumLightTest, TheLeftBottomCornerIsLeftAndBelow) {
    const auto corner = light(-45, 45, -45, 45).landingOf({0, 0});
    ASSERT_TRUE(corner.hits);
    EXPECT_LE(norm(corner.on.place - P3{-1, 1, -1} * (5 / std::sqrt(3.0))), 1e-14);
}

TEST_F(FrustumLightTest, TurnsToTheRightByItsHeading) {
    EXPECT_LE(norm(light(-45, 45, -45, 45, 90).landingOf({0.5, 0.5}).on.place - P3{5, 0, 0}), 1e-14);
}

TEST_F(FrustumLightTest, LightsWithinItsEdgesAndNothingBehind) {
    const FrustumLight ahead = light(-45, 45, -45, 45);
    const auto towards = [](double heading) {
        return SurfacePoint{{5 * std::sin(radians(heading)), 5 * std::cos(radians(heading)), 0}, {}, false};
    };
    EXPECT_TRUE(ahead.lights(towards(44.9)));
    EXPECT_FALSE(ahead.lights(towards(45.1)));
    EXPECT_FALSE(ahead.lights({{0, -5, 0}, {}, false}));
    EXPECT_EQ(expectLitWhereItLands(light(-30, 20, -15, 25, 70)), 31 * 21);
}

TEST_F(FrustumLightTest, AFrustumWithoutWidthLightsNothing) {
    EXPECT_FALSE(light(10, 10, -5, 5).lights({{0, 5, 0}, {}, false}));
    EXPECT_FALSE(light(-5, 5, 0, 0).lights({{0, 5, 0}, {}, false}));
}

TEST_F(FrustumLightTest, LandsWhereTheTargetsOfTheChannelLie) {
    load(displays::SPHERE,
         camera("A", "-30", "25", "-20", "15", "<Orientation z='30' x='20' y='10'/><Position x='1' y='-1' z='0.5'/>"),
         displays::PROJECTORS);
    const auto locator = ChannelLocator::of(*m_config, *m_config->getProjectorConfig(L"A")).locator;
    std::map<Point<int, 2>, P3> grid;
    locator->projectOnTargetLocationSurface(0, 1, 0, 1, 5, 4, grid);
    ASSERT_EQ(grid.size(), 20U);
    const auto light = std::move(lights().at(0));
    for (const auto& [index, place] : grid) {
        const P2 picture{index[0] / 4.0, 1 - index[1] / 3.0};
        EXPECT_LE(norm(light->landingOf(picture).on.place - place), 1e-13) << index[0] << ' ' << index[1];
    }
}

}  // namespace
