#include "ScreenManager/DisplayKinds.h"

#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

class OutlineSamplesTest : public testing::Test {
protected:
    ~OutlineSamplesTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    /// Expects as many samples as a locator places on a screen that none of them misses.
    static void expectAsManyAsPlaced(const std::string& screen, const std::string& targetData,
                                     const std::string& elements) {
        const auto config = displays::parsed(screen, displays::projector("A", elements), targetData);
        ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
        const auto locator =
            TargetLocatorManager::getInstance()->getTargetLocator(config.get(), config->getProjectorConfig(L"A"));
        ASSERT_TRUE(locator);
        for (int samples = 0; samples <= 64; ++samples) {
            EXPECT_EQ(LocatorKind::of(*locator).outlineSamples(*locator, samples),
                      locator->projectBoundaryOnTargetLocationSurface(samples).size())
                << targetData << " with " << samples;
        }
    }
};

const std::string FRUSTUM = "<Frustum left='-45' right='45' bottom='-45' top='45'/>";

TEST_F(OutlineSamplesTest, AreAsManyAsEveryKindOfLocatorPlaces) {
    const TemporaryFolder folder;
    const std::string map = "<CustomPlanarMap file='" + folder.write("a.map", displays::WHOLE_MAP) + "'/>";
    expectAsManyAsPlaced(displays::FLAT, "<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA);
    expectAsManyAsPlaced(displays::SPHERE, "<TargetData type='Spherical'/>", FRUSTUM);
    expectAsManyAsPlaced(displays::FLAT, "<TargetData type='CustomPlanar'/>", map);
    expectAsManyAsPlaced(displays::SPHERE, "<TargetData type='3D'/>",
                         FRUSTUM + "<ProjectionModel name='Rectilinear'/>");
}

TEST_F(OutlineSamplesTest, StepsOfLessThanAPixelArePlacedNowhere) {
    const TemporaryFolder folder;
    const auto config = displays::parsed(
        displays::FLAT,
        displays::projector("A", "<CustomPlanarMap file='" + folder.write("a.map", displays::WHOLE_MAP) + "'/>"),
        "<TargetData type='CustomPlanar'/>");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const auto locator =
        TargetLocatorManager::getInstance()->getTargetLocator(config.get(), config->getProjectorConfig(L"A"));
    ASSERT_TRUE(locator);
    EXPECT_EQ(LocatorKind::of(*locator).outlineSamples(*locator, 1201), 2U * (1920 + 1200));
    EXPECT_EQ(LocatorKind::of(*locator).outlineSamples(*locator, 1202), 0U) << "the picture has 1200 rows";
}

}  // namespace
