#include "ScreenManager/TargetLocator.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "ScreenFixture.h"
#include "ScreenManager/PlanarTargetLocator.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

using Vector = Point<double, 3>;

class TargetLocatorTest : public ScreenFixture {
protected:
    std::pair<bool, int> intersect() { return locator.intersectWithTargetLocationSurface(from, to, hit); }

    const Vector from{1.0, 2.0, 3.0};
    const Vector to{4.0, 6.0, 8.0};
    const Vector untouched{-1.0, -2.0, -3.0};
    Vector hit = untouched;
    const PlanarTargetLocator planar{PlanarTargetLocatorParams()};
    const TargetLocator& locator = planar;
};

TEST_F(TargetLocatorTest, WithoutAScreenARayMissesOnSideOneAndLeavesTheHit) {
    EXPECT_EQ(intersect(), std::make_pair(false, 1));
    EXPECT_EQ(hit, untouched);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(TargetLocatorTest, AMissIsOnSideOneAndLeavesTheHit) {
    installGeometry();
    EXPECT_EQ(intersect(), std::make_pair(false, 1));
    EXPECT_EQ(hit, untouched);
    EXPECT_TRUE((trace == std::initializer_list<std::string>{"geometry.intersect((1, 2, 3), (4, 6, 8))"})) << trace;
}

TEST_F(TargetLocatorTest, AHitIsTheNearestPointAndTheNormalIsAskedThere) {
    const auto geometry = installGeometry();
    geometry->intersections = {{{7.0, 8.0, 9.0}, 2.0}, {{5.0, 5.0, 5.0}, 1.0}};
    EXPECT_EQ(intersect(), std::make_pair(true, 1));
    EXPECT_EQ(hit, (Vector{5.0, 5.0, 5.0}));
    EXPECT_TRUE((trace == std::initializer_list<std::string>{"geometry.intersect((1, 2, 3), (4, 6, 8))",
                                                             "geometry.getScreenNormal((5, 5, 5))"}))
        << trace;
}

TEST_F(TargetLocatorTest, TheSideIsTheSignOfTheRayAlongTheNormal) {
    const auto geometry = installGeometry();
    geometry->intersections = {{{0.0, 0.0, 0.0}, 1.0}};
    geometry->normal = {0.0, 0.0, 1.0};
    EXPECT_EQ(intersect(), std::make_pair(true, 1));
    geometry->normal = {0.0, 0.0, -1.0};
    EXPECT_EQ(intersect(), std::make_pair(true, -1));
}

TEST_F(TargetLocatorTest, AGrazingRayHitsOnSideZero) {
    const auto geometry = installGeometry();
    geometry->intersections = {{{0.0, 0.0, 0.0}, 1.0}};
    geometry->normal = {4.0, -3.0, 0.0};
    EXPECT_EQ(intersect(), std::make_pair(true, 0));
}

TEST_F(TargetLocatorTest, ANormalThatIsNotANumberGivesSideZero) {
    const auto geometry = installGeometry();
    geometry->intersections = {{{0.0, 0.0, 0.0}, 1.0}};
    geometry->normal = {std::nan(""), 0.0, 0.0};
    EXPECT_EQ(intersect(), std::make_pair(true, 0));
}

TEST_F(TargetLocatorTest, TheInnerProductIsSummedFromTheFirstComponent) {
    // 1e16 + 1 - 1e16 is 0 in this order and 1 in the other one: the ray counts as grazing.
    const auto geometry = installGeometry();
    geometry->intersections = {{{0.0, 0.0, 0.0}, 1.0}};
    geometry->normal = {1e16, 1.0, -1e16};
    Vector point;
    EXPECT_EQ(locator.intersectWithTargetLocationSurface({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, point),
              std::make_pair(true, 0));
}

TEST_F(TargetLocatorTest, TheMeasuredScreenIsAskedWhenThereIsOne) {
    installGeometry();
    const auto measured = std::make_shared<ScreenGeometryDouble>(&trace, "measured");
    measured->intersections = {{{1.0, 1.0, 1.0}, 1.0}};
    ScreenManager::getInstance()->getScreen().setMeasured(measured);
    EXPECT_TRUE(intersect().first);
    EXPECT_EQ(trace.lines().front(), "measured.intersect((1, 2, 3), (4, 6, 8))");
}

TEST_F(TargetLocatorTest, ExceptionsOfTheScreenPassThrough) {
    const auto geometry = installGeometry();
    geometry->throwFrom("intersect", VeltraniException(L"no surface"));
    EXPECT_THROW(intersect(), VeltraniException);
    EXPECT_EQ(hit, untouched);

    geometry->throwNoMore("intersect");
    geometry->intersections = {{{5.0, 5.0, 5.0}, 1.0}};
    geometry->throwFrom("getScreenNormal", std::runtime_error("no normal"));
    EXPECT_THROW(intersect(), std::runtime_error);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(TargetLocatorTest, AScreenReplacedDuringTheCallStaysAliveForIt) {
    class Vanishing : public ScreenGeometryDouble {
    public:
        IntersectionSet intersect(const Vector&, const Vector&) const override {
            ScreenManager::getInstance()->setScreenGeometry(nullptr);
            return {{{2.0, 0.0, 0.0}, 1.0}};
        }
    };
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<Vanishing>());
    EXPECT_EQ(intersect(), std::make_pair(true, 1));
    EXPECT_EQ(hit, (Vector{2.0, 0.0, 0.0}));
}

TEST_F(TargetLocatorTest, ARealFlatScreenIsHitFromBothSides) {
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<FlatScreen>());
    Vector point;
    EXPECT_EQ(locator.intersectWithTargetLocationSurface({0.25, -2.0, 0.75}, {0.25, -1.0, 0.75}, point),
              std::make_pair(true, 1));
    EXPECT_EQ(point, (Vector{0.25, 0.0, 0.75}));
    EXPECT_EQ(locator.intersectWithTargetLocationSurface({0.25, 2.0, 0.75}, {0.25, 1.0, 0.75}, point),
              std::make_pair(true, -1));
}

}  // namespace
