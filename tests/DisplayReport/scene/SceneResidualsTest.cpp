#include "DisplayReport/scene/SceneResiduals.h"

#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double NOWHERE = std::numeric_limits<double>::quiet_NaN();

/// The wall, whose channel has the id "A".
DisplayScene wall() {
    DisplayScene scene = scenes::wall();
    scene.channels[0].targets.projectorId = "A";
    return scene;
}

/// Three points on the wall: 3 and 4 mm off, and an outlier of 0.8 m.
DisplayResiduals residuals() {
    SceneResidual first{{0.25, 0.5}, {-1.5, 5, 0}, {3, 4}, {0.003, 0, 0}, false, 2};
    SceneResidual second{{0.75, 0.5}, {-0.5, 5, 0}, {0, 12}, {0, 0, 0.004}, false, 3};
    SceneResidual outlier{{0.5, 0.5}, {-1, 5, 0}, {900, 0}, {0.8, 0, 0}, true, 4};
    return {{{"A", {first, second, outlier}}}};
}

TEST(SceneResiduals, AFactorIsRoundAndNeverShrinks) {
    EXPECT_EQ(ResidualCollector::roundFactor(1, 1), 1);
    EXPECT_EQ(ResidualCollector::roundFactor(1, 1.99), 1);
    EXPECT_EQ(ResidualCollector::roundFactor(1, 2), 2);
    EXPECT_EQ(ResidualCollector::roundFactor(1, 4.9), 2);
    EXPECT_EQ(ResidualCollector::roundFactor(1, 5), 5);
    EXPECT_EQ(ResidualCollector::roundFactor(0.01, 9.9), 500);
    EXPECT_EQ(ResidualCollector::roundFactor(3, 1), 1) << "already longer";
    EXPECT_EQ(ResidualCollector::roundFactor(1e-15, 1), ResidualCollector::LARGEST_FACTOR);
    EXPECT_EQ(ResidualCollector::roundFactor(0, 1), 1);
    EXPECT_EQ(ResidualCollector::roundFactor(NOWHERE, 1), 1);
}

// The wall is 4 by 2: its size is sqrt(20) = 4.47, 6 % of it 0.268, which is 67 times 4 mm. Of the picture's diagonal,
// 2264, 6 % are 136, which is 11 times 12 pixels.
TEST(SceneResiduals, TheLongestOfAPointThatIsNoOutlierStatesTheFactor) {
    DisplayScene scene = wall();
    ResidualCollector().addTo(scene, residuals());
    ASSERT_TRUE(scene.residuals);
    EXPECT_EQ(scene.residuals->onScreen, 50);
    EXPECT_EQ(scene.residuals->inPicture, 10);
    EXPECT_NEAR(scene.residuals->longestOnScreen, 0.15 * std::sqrt(20.0), 1e-12);
    EXPECT_NEAR(scene.residuals->longestInPicture, 0.15 * std::hypot(1920, 1200), 1e-9);
    EXPECT_EQ(scene.channels[0].residuals.size(), 3U);
    EXPECT_THAT(scene.notes, IsEmpty());
}

TEST(SceneResiduals, OutliersAloneStateItThemselves) {
    DisplayScene scene = wall();
    DisplayResiduals outliers = residuals();
    outliers.channels[0].residuals = {outliers.channels[0].residuals[2]};
    ResidualCollector().addTo(scene, outliers);
    EXPECT_EQ(scene.residuals->onScreen, 1) << "0.8 m are more than 6 %";
}

TEST(SceneResiduals, AStatedFactorIsTaken) {
    DisplayScene scene = wall();
    ResidualCollector(7.5).addTo(scene, residuals());
    EXPECT_EQ(scene.residuals->onScreen, 7.5);
    EXPECT_EQ(scene.residuals->inPicture, 7.5);
}

// RMS of 3 and 4 mm: sqrt(12.5); of 5 and 12 pixels: sqrt(84.5).
TEST(SceneResiduals, TheFactsOfAChannelCountItsInliers) {
    DisplayScene scene = wall();
    ResidualCollector().addTo(scene, residuals());
    EXPECT_THAT(scene.channels[0].facts, ElementsAre("3 measured points, 1 outlier", "RMS 9.1924 pixels, 0.0035355 m"));
    EXPECT_THAT(residualFacts({{{}, {}, {NOWHERE, NOWHERE}, {NOWHERE, NOWHERE, NOWHERE}}}, "m"),
                ElementsAre("1 measured point, 0 outliers"));
    EXPECT_THAT(residualFacts({{{}, {}, {NOWHERE, NOWHERE}, {0, 0, 0.5}}}, ""),
                ElementsAre("1 measured point, 0 outliers", "RMS 0.5"));
}

TEST(SceneResiduals, PointsFarFromTheScreenAreLeftOutAndCounted) {
    DisplayScene scene = wall();
    DisplayResiduals far = residuals();
    far.channels[0].residuals[1].point = {0, 5000, 0};
    ResidualCollector().addTo(scene, far);
    EXPECT_EQ(scene.channels[0].residuals.size(), 2U);
    EXPECT_THAT(scene.notes, ElementsAre("1 measured points lie too far from the screen to be drawn"));
}

TEST(SceneResiduals, AVectorIsCutAtTheLongest) {
    const auto whole = drawnResidual(Point<double, 2>{0.3, 0.4}, 10.0, 6.0);
    EXPECT_EQ(whole.first, (Point<double, 2>{3, 4}));
    EXPECT_FALSE(whole.second);
    const auto cut = drawnResidual(Point<double, 2>{0.3, 0.4}, 100.0, 5.0);
    EXPECT_NEAR(norm(cut.first), 5, 1e-12);
    EXPECT_NEAR(cut.first[0] / cut.first[1], 0.75, 1e-12);
    EXPECT_TRUE(cut.second);
    EXPECT_FALSE(drawnResidual(Point<double, 2>{NOWHERE, 0}, 1.0, 5.0).second);
}

}  // namespace
