#include "DisplayReport/coverage/RayLight.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;

using LensLightTest = LitDisplayTest;

TEST_F(LensLightTest, ALensOfEqualAnglesLightsBetweenItsAngles) {
    load(displays::SPHERE, camera("A", "-40", "40", "-20", "20", "<ProjectionModel name='Equidistant'/>"),
         displays::PROJECTORS);
    const auto light = std::move(lights().at(0));
    ASSERT_NE(dynamic_cast<const LensLight*>(light.get()), nullptr);
    const auto at = [](double yaw, double pitch) {
        return SurfacePoint{
            {5 * std::sin(yaw) * std::cos(pitch), 5 * std::cos(yaw) * std::cos(pitch), 5 * std::sin(pitch)}, {}, false};
    };
    EXPECT_LE(norm(light->landingOf({0.75, 0.25}).on.place - at(radians(20), radians(-10)).place), 1e-12);
    EXPECT_TRUE(light->lights(at(radians(39), radians(19))));
    EXPECT_FALSE(light->lights(at(radians(41), radians(19))));
    EXPECT_FALSE(light->lights(at(radians(39), radians(21))));
    EXPECT_FALSE(light->lights(at(radians(180), 0)));
    EXPECT_EQ(expectLitWhereItLands(*light), 31 * 21);
}

}  // namespace
