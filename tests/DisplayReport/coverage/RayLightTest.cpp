#include "DisplayReport/coverage/RayLight.h"

#include "LitDisplays.h"

#include <limits>

namespace {

using namespace Veltrani::DisplayReport;

using RayLightTest = LitDisplayTest;

TEST_F(RayLightTest, AShadowIsNotLit) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    load(displays::MESH, camera("A", "-30", "30", "-30", "30"), displays::PROJECTORS);
    const auto light = std::move(lights().at(0));
    EXPECT_TRUE(light->lights({{0, 2.5, 0}, {}, false})) << "the panel";
    EXPECT_FALSE(light->lights({{0.9, 5, 0.9}, {}, false})) << "its shadow reaches to 1";
    EXPECT_TRUE(light->lights({{1.1, 5, 0.9}, {}, false}));
    EXPECT_EQ(light->landingOf({0.5, 0.5}).on.place, (P3{0, 2.5, 0})) << "stops at the first surface";
    // The picture is 5.77 m wide and high there; the wall takes 4 m of it.
    EXPECT_EQ(expectLitWhereItLands(*light), 21 * 13);
}

TEST_F(RayLightTest, WithoutAModelNothingLandsAndNothingIsLit) {
    load(displays::SPHERE, "");
    const LensLight light(nullptr, surface());
    EXPECT_FALSE(light.landingOf({0.5, 0.5}).hits);
    EXPECT_FALSE(light.lights({{0, 5, 0}, {}, false}));
}

TEST_F(RayLightTest, APointThatIsNoneIsNotLit) {
    load(displays::SPHERE, camera("A", "-30", "30", "-30", "30"), displays::SPHERICAL);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(lights().at(0)->lights({{nan, 5, 0}, {}, false}));
    EXPECT_FALSE(lights().at(0)->landingOf({nan, 0.5}).hits);
}

}  // namespace
