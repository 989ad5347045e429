#include "Common/VeltraniException.h"
#include "RayScreen.h"
#include "ScreenFixture.h"
#include "ScreenManagerTestAccess.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <cmath>
#include <stdexcept>

namespace {

using Access = ScreenManagerTestAccess;
using Vector = Point<double, 3>;
using Table = SphereTargetLocatorParams::HeadingTable;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int MISS = 9;

CollimatedTargetLocatorParams record(const Table& pitches = {}, const Table& yaws = {}) {
    return {{}, -0.5, 0.5, -0.4, 0.4, 0.0, 0.0, 0.0, {0.1, 0.2, 0.3}, {0.5, 0.0, 0.25}, 2.0, pitches, yaws};
}

/// Reaches the sides that it is told, one per ray, and finds every continued point but those of rays to x < 0 at the
/// second point of the ray.
class Told : public CollimatedTargetLocator {
public:
    explicit Told(std::vector<int> theSides) : CollimatedTargetLocator(record()), sides(std::move(theSides)) {}

    std::pair<bool, int> intersectWithTargetLocationSurface(const Vector& from, const Vector& to,
                                                            Vector& hit) const override {
        asked.emplace_back(from, to);
        const int side = sides.at(asked.size() - 1);
        hit = {5.0, 5.0, 5.0};
        return side == MISS ? std::pair(false, 1) : std::pair(true, side);
    }
    bool intersectWithTargetLocationSurfaceExtrapolated(const Vector& from, const Vector& to, Vector& hit,
                                                        int normalSign) const override {
        continued.emplace_back(from, to);
        signs.push_back(normalSign);
        hit = to;
        return to[0] >= 0.0;
    }

    std::vector<int> sides;
    mutable std::vector<Ray> asked;
    mutable std::vector<Ray> continued;
    mutable std::vector<int> signs;
};

Ray rayTo(double x) {
    return {{0.0, 0.0, 0.0}, {x, 0.0, 0.0}};
}

/// The side on which the continuation is asked for.
int signFor(const std::vector<int>& sides) {
    const Told locator(sides);
    EXPECT_THAT(locator.intersectChannelBoundary(std::vector<Ray>(sides.size(), rayTo(1.0)), {}), SizeIs(sides.size()));
    EXPECT_THAT(locator.signs, testing::Each(locator.signs.front()));
    return locator.signs.front();
}

TEST(CollimatedBoundary, TheSideThatMoreBoundaryRaysReachIsContinued) {
    EXPECT_EQ(signFor({1, 1, -1}), 1);
    EXPECT_EQ(signFor({-1, 1, -1}), -1);
    EXPECT_EQ(signFor({MISS, 1, MISS}), 1);
}

TEST(CollimatedBoundary, TiesGoToTheBack) {
    EXPECT_EQ(signFor({1, -1}), -1);
}

TEST(CollimatedBoundary, RaysAcrossTheSurfaceCountAsBack) {
    EXPECT_EQ(signFor({0, 0}), -1);
    EXPECT_EQ(signFor({1, 0}), -1);
    EXPECT_EQ(signFor({1, 0, 1}), 1);
    EXPECT_EQ(signFor({2, 2, 1}), -1) << "exactly 1 is the front";
}

TEST(CollimatedBoundary, CentreRaysAreAskedOnlyWhenNoBoundaryRayHits) {
    const Told locator({MISS, MISS, 1, -1, 1});
    EXPECT_THAT(locator.intersectChannelBoundary({rayTo(1.0), rayTo(2.0)}, {rayTo(3.0), rayTo(4.0), rayTo(5.0)}),
                ElementsAre(Vector{1.0, 0.0, 0.0}, Vector{2.0, 0.0, 0.0}));
    EXPECT_THAT(locator.asked, ElementsAre(rayTo(1.0), rayTo(2.0), rayTo(3.0), rayTo(4.0), rayTo(5.0)));
    EXPECT_THAT(locator.continued, ElementsAre(rayTo(1.0), rayTo(2.0)));
    EXPECT_THAT(locator.signs, ElementsAre(1, 1));

    const Told front({MISS, -1, 1});
    (void)front.intersectChannelBoundary({rayTo(1.0), rayTo(2.0)}, {rayTo(3.0)});
    EXPECT_THAT(front.asked, SizeIs(2));
    EXPECT_THAT(front.signs, ElementsAre(-1, -1));
}

TEST(CollimatedBoundary, NothingIsContinuedWhenNothingIsHit) {
    const Told locator({MISS, MISS, MISS});
    EXPECT_THAT(locator.intersectChannelBoundary({rayTo(1.0), rayTo(2.0)}, {rayTo(3.0)}), IsEmpty());
    EXPECT_THAT(locator.continued, IsEmpty());
    EXPECT_THAT(Told({}).intersectChannelBoundary({}, {}), IsEmpty());
}

TEST(CollimatedBoundary, RaysWithoutAContinuedPointAreDroppedAndTheOthersKeepTheirOrder) {
    const Told locator({1, MISS, 1, 1});
    EXPECT_THAT(locator.intersectChannelBoundary({rayTo(3.0), rayTo(1.0), rayTo(-1.0), rayTo(2.0)}, {}),
                ElementsAre(Vector{3.0, 0.0, 0.0}, Vector{1.0, 0.0, 0.0}, Vector{2.0, 0.0, 0.0}));
}

class CollimatedBoundaryTest : public ScreenFixture {
protected:
    CollimatedBoundaryTest() {
        screen->extrapolatedIntersections = {{{4.0, 5.0, 6.0}, 1.0}};
        ScreenManager::getInstance()->setScreenGeometry(screen);
    }

    const std::shared_ptr<RayScreen> screen = std::make_shared<RayScreen>(&trace);
};

TEST_F(CollimatedBoundaryTest, TheScreenIsNeverAskedForTheOutline) {
    const CollimatedTargetLocator locator(record());
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(2),
                testing::ElementsAreArray(std::vector<Vector>(8, Vector{4.0, 5.0, 6.0})));
    EXPECT_EQ(screen->calls("intersectChannelBoundary"), 0U);
    EXPECT_EQ(screen->calls("intersect"), 8U);
    EXPECT_EQ(screen->calls("intersectExtrapolatedWithSpecifiedNormal"), 8U);
}

TEST_F(CollimatedBoundaryTest, RaysComeFromTheEyeThroughTheFrustum) {
    Told locator(std::vector<int>(12, 1));
    const std::vector<Vector> outline = locator.projectBoundaryOnTargetLocationSurface(3);
    const SphereTargetLocator sphere(record());
    sphere.projectBoundaryOnTargetLocationSurface(3);
    EXPECT_EQ(locator.asked, screen->boundary);
    EXPECT_EQ(locator.continued, screen->boundary);
}

TEST_F(CollimatedBoundaryTest, TheCentreRayGoesThroughTheMiddleOfTheFrustum) {
    Told locator({MISS, MISS, MISS, MISS, -1});
    locator.projectBoundaryOnTargetLocationSurface(1);
    const SphereTargetLocator sphere(record());
    sphere.projectBoundaryOnTargetLocationSurface(1);
    ASSERT_THAT(locator.asked, SizeIs(5));
    EXPECT_EQ(locator.asked.back(), screen->centre.front());
    EXPECT_THAT(locator.signs, ElementsAre(-1, -1, -1, -1));
}

TEST_F(CollimatedBoundaryTest, TablesBendTheBoundaryRaysAndThenTheCentreRayBeforeAnyIsCast) {
    const CollimatedTargetLocator locator(record({}, {{-4.0, -3.9}, {4.0, 4.1}}));
    locator.projectBoundaryOnTargetLocationSurface(1);
    ASSERT_THAT(trace.lines(), SizeIs(5 + 2 * 4 + 4));
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_THAT(trace.lines()[i], HasSubstr("Pitch,Yaw ("));
    }
    EXPECT_THAT(trace.lines()[4], HasSubstr("Pitch,Yaw (0,0) mapped to (0,0.1)")) << "straight ahead";
    const SphereTargetLocator sphere(record({}, {{-4.0, -3.9}, {4.0, 4.1}}));
    sphere.projectBoundaryOnTargetLocationSurface(1);
    Vector point;
    Vector reflected;
    ASSERT_TRUE(Access::reflect(locator, screen->boundary.front(), point, reflected));
    EXPECT_EQ(screen->rays.front(), (Ray{point, point + reflected}));
}

TEST_F(CollimatedBoundaryTest, WithOneTableBothListsOfRaysAreBent) {
    const CollimatedTargetLocator locator(record({{0.0, 0.0}, {0.0, 1.0}}));
    EXPECT_THROW(locator.projectBoundaryOnTargetLocationSurface(0), VeltraniException) << "the centre ray alone";
    EXPECT_THROW(locator.projectBoundaryOnTargetLocationSurface(1), VeltraniException);
    std::map<Point<int, 2>, Vector> grid;
    EXPECT_THROW(locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid), VeltraniException);
    EXPECT_THAT(screen->rays, IsEmpty());
}

TEST_F(CollimatedBoundaryTest, TheLatestOutlineIsRememberedAsOfTheSphere) {
    const CollimatedTargetLocator locator(record());
    const std::vector<Vector> first = locator.projectBoundaryOnTargetLocationSurface(2);
    screen->surface = [](const Vector&, const Vector&) { return IntersectionSet(); };
    EXPECT_EQ(locator.projectBoundaryOnTargetLocationSurface(2), first);
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(1), IsEmpty());
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(2), IsEmpty());
}

TEST_F(CollimatedBoundaryTest, ExceptionsOfTheScreenPassThrough) {
    screen->throwFrom("intersectExtrapolatedWithSpecifiedNormal", std::runtime_error("broken"));
    const CollimatedTargetLocator locator(record());
    EXPECT_THROW(locator.projectBoundaryOnTargetLocationSurface(2), std::runtime_error);
}

/// Opens the protected operation.
class Places : public CollimatedTargetLocator {
public:
    static auto calculateBoundaryPointsPlace() { return &Places::calculateBoundaryPoints; }
};

// Programs that were built with an older version of the library call the operations by their places.
TEST(CollimatedTargetLocator, TheOperationsKeepTheirPlaces) {
    const std::size_t inherited = slotOf(&CollimatedTargetLocator::intersectWithTargetLocationSurface);
    EXPECT_EQ(inherited, slotOf(&SphereTargetLocator::intersectWithTargetLocationSurface));
    EXPECT_EQ(slotOf(Places::calculateBoundaryPointsPlace()), inherited + 1);
    EXPECT_EQ(slotOf(&CollimatedTargetLocator::intersectWithTargetLocationSurfaceExtrapolated), inherited + 2);
}

}  // namespace
