#include "Common/VeltraniException.h"
#include "KelvoScreen/SphericalScreen.h"
#include "RayScreen.h"
#include "ScreenFixture.h"
#include "ScreenManagerTestAccess.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace {

using Access = ScreenManagerTestAccess;
using Vector = Point<double, 3>;
using Table = SphereTargetLocatorParams::HeadingTable;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const Vector EYE{0.25, -0.5, 0.125};
const std::array<Vector, 4> CORNERS{Vector{0.1, 0.2, 0.3}, Vector{1.1, 0.7, 0.9}, Vector{-3.0, 5.0, 7.0},
                                    Vector{11.0, -0.3, 1.7}};

SphereTargetLocatorParams record(const Table& pitches = {}, const Table& yaws = {}) {
    return {EYE, -0.5, 0.6, -0.3, 0.4, 0.7, -0.2, 0.1, pitches, yaws};
}

class SphereBoundaryTest : public ScreenFixture {
protected:
    SphereBoundaryTest() {
        screen->channelBoundary = {{1.0, 2.0, 3.0}};
        ScreenManager::getInstance()->setScreenGeometry(screen);
    }
    std::size_t queries() const { return screen->calls("intersectChannelBoundary"); }

    const std::shared_ptr<RayScreen> screen = std::make_shared<RayScreen>(&trace);
    const SphereTargetLocator locator{record()};
};

TEST_F(SphereBoundaryTest, RaysRunAlongTheFourEdgesWithoutTheirEnds) {
    std::vector<Ray> boundary;
    std::vector<Ray> centre;
    Access::createRays(locator, boundary, centre, CORNERS, 3);
    const auto& [a, b, c, d] = CORNERS;
    const std::array<std::pair<Vector, Vector>, 4> edges{std::pair(a, b), {b, d}, {d, c}, {c, a}};
    ASSERT_THAT(boundary, SizeIs(12));
    for (std::size_t i = 0; i < 12; ++i) {
        const auto& [start, end] = edges[i / 3];
        const double t = static_cast<double>(i % 3) / 3.0;
        EXPECT_EQ(boundary[i].first, EYE);
        for (std::size_t k = 0; k < 3; ++k) {
            const volatile double first = (1 - t) * start[k];
            const volatile double second = t * end[k];
            EXPECT_EQ(boundary[i].second[k], first + second) << i;
        }
    }
    EXPECT_THAT(centre, ElementsAre(Ray{EYE, 0.5 * a + 0.5 * d}));
}

TEST_F(SphereBoundaryTest, RaysAreAppended) {
    std::vector<Ray> boundary{{{}, {}}};
    std::vector<Ray> centre{{{}, {}}, {{}, {}}};
    Access::createRays(locator, boundary, centre, CORNERS, 1);
    EXPECT_THAT(boundary, SizeIs(5));
    EXPECT_THAT(centre, SizeIs(3));
    EXPECT_EQ(boundary.front(), Ray());
}

TEST_F(SphereBoundaryTest, NoSamplesLeaveTheCentreRayAlone) {
    for (const int samples : {0, -1, std::numeric_limits<int>::min()}) {
        locator.projectBoundaryOnTargetLocationSurface(samples);
        EXPECT_THAT(screen->boundary, IsEmpty());
        EXPECT_THAT(screen->centre, SizeIs(1));
    }
    EXPECT_EQ(queries(), 3U);
}

/// Keeps what it is asked for.
class Corners : public SphereTargetLocator {
public:
    using SphereTargetLocator::SphereTargetLocator;

    std::vector<Vector> calculateBoundaryPoints(Vector a, Vector b, Vector c, Vector d, int samples) const override {
        asked.push_back({a, b, c, d});
        return {Vector{static_cast<double>(samples), 0.0, 0.0}};
    }

    mutable std::vector<std::array<Vector, 4>> asked;
};

TEST_F(SphereBoundaryTest, TheCornersAreLeftTopRightTopLeftBottomRightBottom) {
    const Corners corners(record());
    EXPECT_THAT(corners.projectBoundaryOnTargetLocationSurface(5), ElementsAre(Vector{5.0, 0.0, 0.0}));
    const Matrix<double, 3> q = Veltrani::rotationZXY(0.7, -0.2, 0.1);
    const auto corner = [&](double h, double v) { return EYE + q * Vector{std::tan(h), 1.0, std::tan(v)}; };
    EXPECT_THAT(corners.asked,
                ElementsAre(std::array{corner(-0.5, 0.4), corner(0.6, 0.4), corner(-0.5, -0.3), corner(0.6, -0.3)}));
}

TEST_F(SphereBoundaryTest, TheScreenIsAskedForTheOutlineOfTheseRays) {
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(4), ElementsAre(Vector{1.0, 2.0, 3.0}));
    ASSERT_THAT(screen->boundary, SizeIs(16));
    const Corners corners(record());
    corners.projectBoundaryOnTargetLocationSurface(4);
    const auto& [leftTop, rightTop, leftBottom, rightBottom] = corners.asked.front();
    EXPECT_EQ(screen->boundary[0].second, leftTop);
    EXPECT_EQ(screen->boundary[4].second, rightTop);
    EXPECT_EQ(screen->boundary[8].second, rightBottom);
    EXPECT_EQ(screen->boundary[12].second, leftBottom);
    EXPECT_EQ(screen->boundary[1].second, 0.75 * leftTop + 0.25 * rightTop);
    EXPECT_THAT(screen->centre, ElementsAre(Ray{EYE, 0.5 * leftTop + 0.5 * rightBottom}));
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.intersectChannelBoundary(16, 1)"));
}

TEST_F(SphereBoundaryTest, TablesBendTheBoundaryRaysAndThenTheCentreRay) {
    const double turn = 0.25;
    const Table yaws{{-4.0, -4.0 + turn}, {4.0, 4.0 + turn}};
    const SphereTargetLocator bent(record({}, yaws));
    locator.projectBoundaryOnTargetLocationSurface(2);
    std::vector<Ray> rays = screen->boundary;
    rays.insert(rays.end(), screen->centre.begin(), screen->centre.end());
    trace.clear();
    bent.projectBoundaryOnTargetLocationSurface(2);
    std::vector<Ray> bentRays = screen->boundary;
    bentRays.insert(bentRays.end(), screen->centre.begin(), screen->centre.end());
    ASSERT_THAT(bentRays, SizeIs(9));
    ASSERT_THAT(trace.lines(), SizeIs(10));
    for (std::size_t i = 0; i < 9; ++i) {
        const Vector d = rays[i].second - EYE;
        const double yaw = std::atan2(d[0], d[1]);
        const double across = std::hypot(d[0], d[1]);
        EXPECT_EQ(bentRays[i].first, EYE);
        EXPECT_NEAR(bentRays[i].second[0] - EYE[0], across * std::sin(yaw + turn), 1e-14);
        EXPECT_NEAR(bentRays[i].second[1] - EYE[1], across * std::cos(yaw + turn), 1e-14);
        EXPECT_NEAR(bentRays[i].second[2] - EYE[2], d[2], 1e-14);
        // The records in the order of the rays, the screen last.
        std::ostringstream angles;
        angles << "Pitch,Yaw (" << std::asin(d[2] / norm(d)) << "," << yaw << ")";
        EXPECT_THAT(trace.lines()[i], testing::HasSubstr(angles.str()));
    }
    EXPECT_EQ(trace.lines().back(), "geometry.intersectChannelBoundary(8, 1)");
}

TEST_F(SphereBoundaryTest, TheSameDensityIsAnsweredFromMemory) {
    const std::vector<Vector> first = locator.projectBoundaryOnTargetLocationSurface(8);
    screen->channelBoundary = {{4.0, 5.0, 6.0}};
    EXPECT_EQ(locator.projectBoundaryOnTargetLocationSurface(8), first);
    EXPECT_EQ(queries(), 1U);
}

TEST_F(SphereBoundaryTest, OnlyTheLatestDensityIsRemembered) {
    for (const int samples : {8, 4, 8, 8}) {
        locator.projectBoundaryOnTargetLocationSurface(samples);
    }
    EXPECT_EQ(queries(), 3U);
}

TEST_F(SphereBoundaryTest, TheMemoryOutlivesAChangeOfTheScreen) {
    const std::vector<Vector> first = locator.projectBoundaryOnTargetLocationSurface(8);
    ScreenManager::getInstance()->setScreenGeometry(nullptr);
    EXPECT_EQ(locator.projectBoundaryOnTargetLocationSurface(8), first);
}

TEST_F(SphereBoundaryTest, WithoutAScreenTheOutlineIsEmptyAndRememberedToo) {
    ScreenManager::getInstance()->setScreenGeometry(nullptr);
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(8), IsEmpty());
    ScreenManager::getInstance()->setScreenGeometry(screen);
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(8), IsEmpty());
    EXPECT_EQ(queries(), 0U);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(SphereBoundaryTest, AFaultLeavesNothingInMemory) {
    locator.projectBoundaryOnTargetLocationSurface(8);
    screen->throwFrom("intersectChannelBoundary", std::runtime_error("broken"));
    EXPECT_THROW(locator.projectBoundaryOnTargetLocationSurface(4), std::runtime_error);
    screen->throwNoMore("intersectChannelBoundary");
    locator.projectBoundaryOnTargetLocationSurface(8);
    EXPECT_EQ(queries(), 3U);
}

TEST_F(SphereBoundaryTest, CopiesTakeTheMemoryAlong) {
    const std::vector<Vector> first = locator.projectBoundaryOnTargetLocationSurface(8);
    screen->channelBoundary.clear();
    const SphereTargetLocator copy = locator;
    EXPECT_EQ(copy.projectBoundaryOnTargetLocationSurface(8), first);
    SphereTargetLocator assigned{SphereTargetLocatorParams()};
    assigned = locator;
    EXPECT_EQ(assigned.projectBoundaryOnTargetLocationSurface(8), first);
    EXPECT_EQ(queries(), 1U);
    copy.projectBoundaryOnTargetLocationSurface(4);
    EXPECT_EQ(locator.projectBoundaryOnTargetLocationSurface(8), first) << "each copy has its own";
}

TEST_F(SphereBoundaryTest, AFaultyTableSurfacesBeforeTheScreenIsAsked) {
    const SphereTargetLocator faulty(record({{-1.0, 0.0}, {-1.0, 1.0}}));
    EXPECT_THROW(Access::calculateBoundaryPoints(faulty, CORNERS, 0), VeltraniException);
    EXPECT_EQ(queries(), 0U);
}

TEST_F(SphereBoundaryTest, TheOutlineOfADomeStartsAtTheCornersOfTheGrid) {
    const double pi = std::numbers::pi;
    ScreenManager::getInstance()->setScreenGeometry(
        std::make_shared<SphericalScreen>(Vector{0.1, 0.2, 0.3}, 4.0, -pi, pi, -pi / 2, pi / 2));
    std::map<Point<int, 2>, Vector> grid;
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 7, 5, grid);
    const std::vector<Vector> outline = locator.projectBoundaryOnTargetLocationSurface(3);
    ASSERT_THAT(grid, SizeIs(35));
    ASSERT_THAT(outline, SizeIs(12));
    const std::array<Vector, 4> corners{grid.at({0, 0}), grid.at({6, 0}), grid.at({6, 4}), grid.at({0, 4})};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_LT(norm(outline[3 * i] - corners[i]), 1e-13) << i;
    }
}

/// Opens the protected operation.
class Places : public SphereTargetLocator {
public:
    static auto calculateBoundaryPointsPlace() { return &Places::calculateBoundaryPoints; }
};

/// The place of a virtual operation among those of its class.
template <class Operation>
std::size_t slotOf(Operation operation) {
    std::size_t offset = 0;
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / sizeof(void*);
}

// Programs that were built with an older version of the library call the operations by their places.
TEST(SphereTargetLocator, TheOperationsKeepTheirPlaces) {
    const std::vector<std::size_t> places{slotOf(&SphereTargetLocator::projectOnTargetLocationSurface),
                                          slotOf(&SphereTargetLocator::getTargetLocatorParams),
                                          slotOf(&SphereTargetLocator::projectBoundaryOnTargetLocationSurface),
                                          slotOf(&SphereTargetLocator::intersectWithTargetLocationSurface),
                                          slotOf(Places::calculateBoundaryPointsPlace())};
    const std::size_t first = places.front();
    EXPECT_THAT(places, ElementsAre(first, first + 1, first + 2, first + 3, first + 4));
    // Behind the two entries of the destructor.
    EXPECT_EQ(first, 2U);
}

}  // namespace
