#include "DisplayReport/coverage/SearchedLight.h"

#include "LitDisplays.h"
#include "support/TestPaths.h"

namespace {

using namespace Veltrani::DisplayReport;

using SearchedLightTest = LitDisplayTest;

/// A mirror of 3 m around the eye, and a screen of 1 m: each ray comes straight back through the middle, and meets the
/// screen on the way.
const std::string SMALL_SPHERE =
    "<Screen shape='Sphere'><Radius value='1'/><Azimuth min='-180' max='180'/><Elevation min='-90' max='90'/></Screen>";
const std::string MIRROR = "<TargetData type='SphericalCollimated'><Mirror radius='3'/></TargetData>";

SurfacePoint onSphere(double radius, double yaw, double pitch) {
    return {
        {radius * std::sin(yaw) * std::cos(pitch), radius * std::cos(yaw) * std::cos(pitch), radius * std::sin(pitch)},
        {},
        false};
}

TEST_F(SearchedLightTest, ThroughAMirrorAroundTheEyeItLightsWhatTheFrustumPointsAt) {
    load(SMALL_SPHERE, camera("A", "-30", "30", "-20", "20"), MIRROR);
    const auto light = std::move(lights().at(0));
    ASSERT_NE(dynamic_cast<const SearchedLight*>(light.get()), nullptr);
    EXPECT_LE(norm(light->landingOf({0.5, 0.5}).on.place - P3{0, 1, 0}), 1e-12);
    EXPECT_TRUE(light->lights(onSphere(1, radians(29.9), 0)));
    EXPECT_FALSE(light->lights(onSphere(1, radians(30.1), 0)));
    EXPECT_TRUE(light->lights(onSphere(1, 0, radians(-19.9))));
    EXPECT_FALSE(light->lights(onSphere(1, 0, radians(-20.1))));
    EXPECT_FALSE(light->lights(onSphere(1, radians(180), 0)));
    EXPECT_EQ(expectLitWhereItLands(*light), 31 * 21);
}

TEST_F(SearchedLightTest, ATableBendsTheLight) {
    load(displays::SPHERE, "");
    const auto light = bentLight(40, 20, 45);
    ASSERT_NE(dynamic_cast<const SearchedLight*>(light.get()), nullptr);
    EXPECT_TRUE(light->lights(onSphere(5, radians(19.9), 0)));
    EXPECT_FALSE(light->lights(onSphere(5, radians(20.1), 0)));
    EXPECT_EQ(expectLitWhereItLands(*light), 31 * 21);
}

TEST_F(SearchedLightTest, TheLightOfTheExampleIsFoundBackAllOver) {
    m_config = XMLConfigFile::load(sourceFolder() + "/examples/collimated/display.xml");
    ASSERT_TRUE(ScreenLoader::load(*m_config).empty());
    for (const auto& light : lights()) {
        EXPECT_EQ(expectLitWhereItLands(*light), 31 * 21);
    }
}

TEST_F(SearchedLightTest, WhereNothingLandsNothingIsLit) {
    load(
        "<Screen shape='Sphere'><Centre x='0' y='100' z='0'/><Radius value='1'/><Azimuth min='-180' max='180'/>"
        "<Elevation min='-90' max='90'/></Screen>",
        camera("A", "-30", "30", "-20", "20"), MIRROR);
    const auto light = std::move(lights().at(0));
    EXPECT_EQ(expectLitWhereItLands(*light), 0);
    EXPECT_FALSE(light->lights(onSphere(1, 0, 0)));
}

}  // namespace
