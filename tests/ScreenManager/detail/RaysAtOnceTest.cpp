#include "ScreenManager/detail/RaysAtOnce.h"

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

namespace {

using Vector = Point<double, 3>;

class OwnRays : public SphereTargetLocator {
public:
    OwnRays() : SphereTargetLocator(SphereTargetLocatorParams()) {}
};

class OwnMesh : public MeshScreen {
public:
    using MeshScreen::MeshScreen;
};

class RaysAtOnceTest : public ScreenFixture {
protected:
    const SphereTargetLocator sphere{SphereTargetLocatorParams()};
};

TEST_F(RaysAtOnceTest, TheScreensOfTheProductAnswerInAnyOrderAndOthersMayNot) {
    for (const auto& [name, screen] : screenKinds::all()) {
        EXPECT_TRUE(answersInAnyOrder(*screen)) << name;
        ScreenManager::getInstance()->setScreenGeometry(screen);
        EXPECT_EQ(screenForRaysOf(sphere), screen) << name;
    }
    for (const std::shared_ptr<ScreenGeometry>& screen :
         {std::shared_ptr<ScreenGeometry>(std::make_shared<RayScreen>()),
          std::shared_ptr<ScreenGeometry>(std::make_shared<OwnMesh>(screenKinds::bumpyMesh()))}) {
        EXPECT_FALSE(answersInAnyOrder(*screen));
        ScreenManager::getInstance()->setScreenGeometry(screen);
        EXPECT_EQ(screenForRaysOf(sphere), nullptr);
    }
}

TEST_F(RaysAtOnceTest, LocatorsThatAskTheScreenDirectlyLeaveTheRaysToIt) {
    const std::shared_ptr<ScreenGeometry> screen = screenKinds::all().front().second;
    ScreenManager::getInstance()->setScreenGeometry(screen);
    EXPECT_EQ(screenForRaysOf(PlanarTargetLocator(PlanarTargetLocatorParams())), screen);
    const TemporaryFolder folder;
    const std::wstring file = Veltrani::fromUtf8(folder.write("map.txt", planar_map::wholePicture(4, 3)));
    EXPECT_EQ(screenForRaysOf(CustomPlanarTargetLocator(CustomPlanarTargetLocatorParams({4, 3}, file))), screen);
    EXPECT_EQ(screenForRaysOf(CustomProjectionTargetLocator(CustomProjectionTargetLocatorParams())), screen);
    EXPECT_EQ(screenForRaysOf(CollimatedTargetLocator(CollimatedTargetLocatorParams())), nullptr);
    EXPECT_EQ(screenForRaysOf(OwnRays()), nullptr) << "which may answer otherwise";
}

TEST_F(RaysAtOnceTest, WithoutAScreenThereIsNone) {
    EXPECT_EQ(screenForRaysOf(sphere), nullptr);
}

}  // namespace
