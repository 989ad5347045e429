#include "ScreenManager/detail/EyeRays.h"

#include "Common/Utf8.h"
#include "KelvoScreen/MeshScreen.h"
#include "PlanarMapText.h"
#include "RayScreen.h"
#include "ScreenFixture.h"
#include "ScreenKinds.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "support/TemporaryFolder.h"

#include <cmath>

using Veltrani::ScreenManagerDetail::RaysAtOnce;

namespace {

using Vector = Point<double, 3>;

class OwnRays : public SphereTargetLocator {
public:
    OwnRays() : SphereTargetLocator(SphereTargetLocatorParams()) {}
};

class OwnMirror : public CollimatedTargetLocator {
public:
    OwnMirror() : CollimatedTargetLocator(CollimatedTargetLocatorParams()) {}
};

class OwnMesh : public MeshScreen {
public:
    using MeshScreen::MeshScreen;
};

bool isPossible(const TargetLocator& locator) {
    return RaysAtOnce(locator).isPossible();
}

class RaysAtOnceTest : public ScreenFixture {
protected:
    const SphereTargetLocator sphere{SphereTargetLocatorParams()};
};

TEST_F(RaysAtOnceTest, TheScreensOfTheProductAnswerInAnyOrderAndOthersMayNot) {
    for (const auto& [name, screen] : screenKinds::all()) {
        EXPECT_GT(screen->raysAtOnce(), 0U) << name;
        ScreenManager::getInstance()->setScreenGeometry(screen);
        EXPECT_TRUE(RaysAtOnce(sphere).isPossible()) << name;
    }
    for (const std::shared_ptr<ScreenGeometry>& screen :
         {std::shared_ptr<ScreenGeometry>(std::make_shared<RayScreen>()),
          std::shared_ptr<ScreenGeometry>(std::make_shared<OwnMesh>(screenKinds::bumpyMesh()))}) {
        EXPECT_EQ(screen->raysAtOnce(), 0U);
        ScreenManager::getInstance()->setScreenGeometry(screen);
        EXPECT_FALSE(RaysAtOnce(sphere).isPossible());
    }
}

TEST_F(RaysAtOnceTest, LocatorsThatAskTheScreenDirectlyLeaveTheRaysToIt) {
    const std::shared_ptr<ScreenGeometry> screen = screenKinds::all().front().second;
    ScreenManager::getInstance()->setScreenGeometry(screen);
    EXPECT_TRUE(isPossible(PlanarTargetLocator(PlanarTargetLocatorParams())));
    const TemporaryFolder folder;
    const std::wstring file = Veltrani::fromUtf8(folder.write("map.txt", planar_map::wholePicture(4, 3)));
    EXPECT_TRUE(isPossible(CustomPlanarTargetLocator(CustomPlanarTargetLocatorParams({4, 3}, file))));
    EXPECT_TRUE(isPossible(CustomProjectionTargetLocator(CustomProjectionTargetLocatorParams())));
    EXPECT_TRUE(isPossible(CollimatedTargetLocator(CollimatedTargetLocatorParams()))) << "by way of the mirror";
    EXPECT_FALSE(isPossible(OwnRays())) << "which may answer otherwise";
    EXPECT_FALSE(isPossible(OwnMirror()));
}

TEST_F(RaysAtOnceTest, RaysThatMissTheMirrorStayInTheirPlaces) {
    ScreenManager::getInstance()->setScreenGeometry(screenKinds::all().front().second);
    CollimatedTargetLocatorParams params;
    params.mirrorRadius = 1.0;
    const CollimatedTargetLocator locator(params);
    // From inside the mirror every ray meets it; from far away those that pass it do not.
    std::vector<Ray> rays;
    for (int i = 0; i < 40; ++i) {
        const Vector ahead{std::sin(i), std::cos(i), 0.3 * std::sin(5.0 * i)};
        rays.emplace_back(i % 3 == 0 ? Vector{0.0, 9.0, 0.0} : Vector{}, 9.0 * ahead);
    }
    std::vector<SurfaceHit> hits(rays.size());
    hits[3].hit = true;
    RaysAtOnce(locator).cast(rays, hits);
    int met = 0;
    for (std::size_t i = 0; i < rays.size(); ++i) {
        Vector point;
        const bool isHit = locator.intersectWithTargetLocationSurface(rays[i].first, rays[i].second, point).first;
        ASSERT_EQ(hits[i].hit, isHit) << i;
        EXPECT_TRUE(screenKinds::areSameBits(hits[i].point, point)) << i;
        met += isHit ? 1 : 0;
    }
    EXPECT_GT(met, 0);
    EXPECT_LT(met, 40);
}

TEST_F(RaysAtOnceTest, WithoutAScreenThereIsNone) {
    EXPECT_FALSE(RaysAtOnce(sphere).isPossible());
}

}  // namespace
