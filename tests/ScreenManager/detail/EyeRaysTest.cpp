#include "ScreenManager/detail/EyeRays.h"

#include "EyeMapFixture.h"
#include "KelvoScreen/MeshScreen.h"
#include "ScreenKinds.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <gmock/gmock.h>

namespace {

using Vector = Point<double, 3>;
using Picture = Point<double, 2>;
using Veltrani::ScreenManagerDetail::EyeRays;

/// Answers each ray by its second point, from the back, and keeps the rays.
class OwnRays : public SphereTargetLocator {
public:
    OwnRays() : SphereTargetLocator(SphereTargetLocatorParams()) {}

    mutable std::vector<Ray> rays;

    std::pair<bool, int> intersectWithTargetLocationSurface(const Vector& from, const Vector& to,
                                                            Vector& hit) const override {
        rays.emplace_back(from, to);
        hit = to;
        return {to[0] > 0, -1};
    }
};

class EyeRaysTest : public EyeMapFixture {
protected:
    EyeRaysTest() {
        addToTable(straightFrustum());
        ScreenManager::getInstance()->setScreenGeometry(std::make_shared<MeshScreen>(screenKinds::bumpyMesh()));
    }
    const KelvoProjector& owner() { return *table->getProjectors().at(KelvoProjectorUID(L"P1")); }

    const Vector eye{0.25, -0.5, 0.125};
};

TEST_F(EyeRaysTest, ALocatorOfAnotherClassIsAskedForEveryRay) {
    const OwnRays locator;
    const EyeRays rays(owner(), &locator, eye);
    std::vector<Picture> points(20, Picture{0.75, 0.5});
    std::vector<LayoutPoint> answers(points.size());
    EXPECT_FALSE(rays.mapToLayoutAtOnce(points, answers));
    EXPECT_TRUE(locator.rays.empty()) << "nothing is done until it is asked";
    Vector layout;
    EXPECT_TRUE(rays.mapToLayout(points[0], layout));
    EXPECT_EQ(layout, eye + (Vector{0.5, 1.0, 0.0}));
    EXPECT_FALSE(rays.mapToLayout({0.0, 0.5}, layout));
    EXPECT_EQ(layout, eye + (Vector{-1.0, 1.0, 0.0})) << "the locator writes, whatever it answers";
    EXPECT_EQ(locator.rays.size(), 2U);
}

TEST_F(EyeRaysTest, WithoutALocatorNothingIsMet) {
    const EyeRays rays(owner(), nullptr, eye);
    Vector layout{1.0, 2.0, 3.0};
    EXPECT_FALSE(rays.mapToLayout({0.5, 0.5}, layout));
    EXPECT_EQ(layout, (Vector{1.0, 2.0, 3.0}));
    std::vector<LayoutPoint> answers(1);
    EXPECT_FALSE(rays.mapToLayoutAtOnce(std::vector<Picture>(1), answers));
}

TEST_F(EyeRaysTest, TheEyePointIsThatOfTheScreenOrTheOrigin) {
    screenConfig.eyePoint = {1.0, 2.0, 3.0};
    EXPECT_EQ(Veltrani::ScreenManagerDetail::eyePointOf(&config), (Vector{1.0, 2.0, 3.0}));
    config.screen = nullptr;
    EXPECT_EQ(Veltrani::ScreenManagerDetail::eyePointOf(&config), Vector());
    EXPECT_EQ(Veltrani::ScreenManagerDetail::eyePointOf(nullptr), Vector());
}

TEST_F(EyeRaysTest, TheLocatorsStandInTheOrderOfTheProjectors) {
    ProjectorConfigDouble second(L"P2", &trace);
    config.projectors = {&projector, &second};
    const auto locators = Veltrani::ScreenManagerDetail::targetLocators(&config, {&second, nullptr, &projector});
    ASSERT_EQ(locators.size(), 3U);
    EXPECT_EQ(locators[0], TargetLocatorManager::getInstance()->getTargetLocator(&config, &second));
    EXPECT_EQ(locators[1], nullptr);
    EXPECT_EQ(locators[2], request());
    EXPECT_NE(locators[0], locators[2]);
}

}  // namespace
