#include "ScreenManager/CollimatedTargetLocator.h"

#include "Common/VeltraniException.h"
#include "MirrorRays.h"
#include "RayScreen.h"
#include "ScreenFixture.h"
#include "ScreenManagerTestAccess.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

namespace {

using Access = ScreenManagerTestAccess;
using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;
using Table = SphereTargetLocatorParams::HeadingTable;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

constexpr double PI = std::numbers::pi;
const Vector UNTOUCHED{-1.0, -2.0, -3.0};
/// Lengths up to ten, a handful of operations.
constexpr double ROUNDING = 1e-13;

CollimatedTargetLocatorParams mirrorRecord(const Vector& orientation, const Vector& position, double radius,
                                           const Table& pitches = {}, const Table& yaws = {}) {
    return {{0.1, 0.2, 0.3}, -0.5, 0.5, -0.4, 0.4, 0.0, 0.0, 0.0, orientation, position, radius, pitches, yaws};
}

void expectNear(const Vector& actual, const Vector& expected) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(actual[i], expected[i], ROUNDING) << i;
    }
}

class CollimatedTargetLocatorTest : public ScreenFixture {
protected:
    std::shared_ptr<RayScreen> installRayScreen() {
        auto screen = std::make_shared<RayScreen>(&trace);
        ScreenManager::getInstance()->setScreenGeometry(screen);
        return screen;
    }
    static void installDome() {
        ScreenManager::getInstance()->setScreenGeometry(std::make_shared<SphericalScreen>(
            mirrorRays::DOME_CENTRE, mirrorRays::DOME_RADIUS, -PI, PI, -PI / 2, PI / 2));
    }

    Grid grid;
    /// A mirror around the origin, as it stands.
    const CollimatedTargetLocator plain{mirrorRecord({}, {}, 2.0)};
};

TEST_F(CollimatedTargetLocatorTest, WithoutTurnAndOffsetTheLawOfReflectionHolds) {
    for (int i = 0; i < 100; ++i) {
        const Vector from{0.7 * std::sin(i), 0.8 * std::cos(2.0 * i), 0.5 * std::sin(3.0 * i)};
        const Vector along{std::cos(1.3 * i), std::sin(0.7 * i), std::cos(2.1 * i)};
        Vector point;
        Vector reflected;
        ASSERT_TRUE(Access::reflect(plain, {from, from + along}, point, reflected));
        EXPECT_NEAR(norm(point), 2.0, ROUNDING);
        EXPECT_NEAR(norm(cross(point - from, along)), 0.0, ROUNDING) << "the mirror point lies on the ray";
        EXPECT_GT(dot(point - from, along), 0.0);
        const Vector normal = 0.5 * point;
        EXPECT_NEAR(norm(reflected), norm(along), ROUNDING);
        EXPECT_NEAR(dot(reflected, normal), -dot(along, normal), ROUNDING) << "equal angles";
        EXPECT_NEAR(dot(cross(along, normal), reflected), 0.0, ROUNDING) << "in the plane of ray and normal";
        EXPECT_LT(dot(reflected, normal), 0.0) << "back into the mirror";
    }
}

TEST_F(CollimatedTargetLocatorTest, TheMirrorStepAgreesWithRecordedValues) {
    installDome();
    int mirrors = 0;
    int hits = 0;
    int behind = 0;
    for (const mirrorRays::Row& row : mirrorRays::ROWS) {
        const CollimatedTargetLocator locator(mirrorRecord(row.orientation, row.position, row.radius));
        Vector point = UNTOUCHED;
        Vector reflected = UNTOUCHED;
        ASSERT_EQ(Access::reflect(locator, {row.from, row.to}, point, reflected), row.meetsMirror);
        expectNear(point, row.meetsMirror ? row.mirrorPoint : UNTOUCHED);
        expectNear(reflected, row.meetsMirror ? row.reflected : UNTOUCHED);
        Vector hit = UNTOUCHED;
        EXPECT_EQ(locator.intersectWithTargetLocationSurface(row.from, row.to, hit),
                  std::pair(row.meetsDome, row.side));
        expectNear(hit, row.meetsDome ? row.hit : UNTOUCHED);
        mirrors += row.meetsMirror ? 1 : 0;
        hits += row.meetsDome ? 1 : 0;
        behind += row.side < 0 ? 1 : 0;
    }
    EXPECT_GT(mirrors, hits);
    EXPECT_LT(mirrors, static_cast<int>(std::size(mirrorRays::ROWS)));
    EXPECT_GT(hits, behind);
    EXPECT_GT(behind, 0);
}

// Half of them start outside of the mirror, and many of these miss it.
TEST_F(CollimatedTargetLocatorTest, ManyRaysAreReflectedAsOneByOne) {
    const CollimatedTargetLocator locator(mirrorRecord({0.3, -0.2, 0.1}, {0.5, 0.25, -0.125}, 2.0));
    std::vector<Ray> rays;
    for (int i = 0; i < 333; ++i) {
        const Vector from = (i % 2 == 0 ? 0.9 : 4.0) * Vector{std::sin(i), std::cos(2.0 * i), std::sin(3.0 * i)};
        rays.emplace_back(from, from + Vector{std::cos(1.3 * i), std::sin(0.7 * i), std::cos(2.1 * i)});
    }
    std::vector<Ray> reflected{rays[0]};
    std::vector<std::size_t> places{999};
    locator.reflect(rays, reflected, places);
    std::vector<Ray> expected{rays[0]};
    std::vector<std::size_t> expectedPlaces{999};
    for (std::size_t i = 0; i < rays.size(); ++i) {
        Ray one;
        if (locator.reflect(rays[i], one)) {
            expected.push_back(one);
            expectedPlaces.push_back(i);
        }
    }
    EXPECT_EQ(reflected, expected) << "added, equal to the last bit";
    EXPECT_EQ(places, expectedPlaces);
    EXPECT_THAT(places, SizeIs(testing::AllOf(testing::Gt(170U), testing::Lt(320U))));
}

TEST_F(CollimatedTargetLocatorTest, TheOffsetIsAddedBeforeTheTurnAndTheDirectionIsTurnedTwice) {
    // A quarter to the right, about z: x to -y, y to x.
    const CollimatedTargetLocator turned(mirrorRecord({PI / 2, 0.0, 0.0}, {1.0, 0.0, 0.5}, 2.0));
    Vector point;
    Vector reflected;
    ASSERT_TRUE(Access::reflect(turned, {{0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}}, point, reflected));
    // Met at (0, 2, 0), moved to (1, 2, 0.5).
    expectNear(point, {2.0, -1.0, 0.5});
    // (0, 1, 0) becomes (1, 0, 0), which runs along the mirror and is not reflected, and then (0, -1, 0).
    expectNear(reflected, {0.0, -1.0, 0.0});
}

TEST_F(CollimatedTargetLocatorTest, TheReflectionIsCastFromTheMirrorPointThroughTheNextOneAlongIt) {
    const auto screen = installRayScreen();
    const CollimatedTargetLocator locator(mirrorRecord({0.3, -0.2, 0.1}, {0.5, 0.25, -0.125}, 2.0));
    const Ray ray{{0.1, 0.2, 0.3}, {0.4, 1.2, 0.1}};
    Vector point;
    Vector reflected;
    ASSERT_TRUE(Access::reflect(locator, ray, point, reflected));
    Vector hit;
    EXPECT_TRUE(locator.intersectWithTargetLocationSurface(ray.first, ray.second, hit).first);
    EXPECT_THAT(screen->rays, ElementsAre(Ray{point, point + reflected}));
    EXPECT_EQ(hit, point + reflected) << "the first intersection";
    ASSERT_THAT(trace.lines(), SizeIs(2));
    EXPECT_EQ(trace.lines()[1], "geometry.getScreenNormal(" + Recorder::text(hit) + ")");

    EXPECT_FALSE(locator.intersectWithTargetLocationSurfaceExtrapolated(ray.first, ray.second, hit, -1));
    EXPECT_EQ(trace.lines().back(), "geometry.intersectExtrapolatedWithSpecifiedNormal(" + Recorder::text(point) +
                                        ", " + Recorder::text(point + reflected) + ", -1)");
}

TEST_F(CollimatedTargetLocatorTest, TheSideIsTheSignOfTheReflectionAlongTheNormal) {
    // Ahead into the mirror and straight back.
    const auto screen = installRayScreen();
    const auto side = [&](const Vector& normal) {
        screen->normalAt = [normal](const Vector&) { return normal; };
        Vector hit;
        return plain.intersectWithTargetLocationSurface({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, hit);
    };
    EXPECT_EQ(side({0.0, -1.0, 0.0}), std::pair(true, 1));
    EXPECT_EQ(side({0.0, 1.0, 0.0}), std::pair(true, -1));
    EXPECT_EQ(side({1.0, 0.0, 0.0}), std::pair(true, 0));
    EXPECT_EQ(side({std::nan(""), 0.0, 0.0}), std::pair(true, 0));
}

TEST_F(CollimatedTargetLocatorTest, AMissOfTheMirrorOrTheScreenIsOnSideOneAndLeavesTheHit) {
    const auto screen = installRayScreen();
    Vector hit = UNTOUCHED;
    EXPECT_EQ(plain.intersectWithTargetLocationSurface({5.0, 0.0, 0.0}, {6.0, 0.0, 0.0}, hit), std::pair(false, 1));
    EXPECT_FALSE(plain.intersectWithTargetLocationSurfaceExtrapolated({5.0, 0.0, 0.0}, {6.0, 0.0, 0.0}, hit, 1));
    EXPECT_THAT(trace.lines(), IsEmpty()) << "past the mirror, the screen is not asked";
    screen->surface = [](const Vector&, const Vector&) { return IntersectionSet(); };
    EXPECT_EQ(plain.intersectWithTargetLocationSurface({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, hit), std::pair(false, 1));
    EXPECT_FALSE(plain.intersectWithTargetLocationSurfaceExtrapolated({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, hit, 1));
    EXPECT_EQ(hit, UNTOUCHED);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(CollimatedTargetLocatorTest, TheExtrapolatedPointIsTheFirstOne) {
    installRayScreen()->extrapolatedIntersections = {{{7.0, 8.0, 9.0}, 2.0}, {{4.0, 5.0, 6.0}, 1.0}};
    Vector hit;
    EXPECT_TRUE(plain.intersectWithTargetLocationSurfaceExtrapolated({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, hit, 1));
    EXPECT_EQ(hit, (Vector{4.0, 5.0, 6.0}));
}

TEST_F(CollimatedTargetLocatorTest, WithoutAScreenEverythingIsMissed) {
    Vector hit = UNTOUCHED;
    EXPECT_EQ(plain.intersectWithTargetLocationSurface({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, hit), std::pair(false, 1));
    EXPECT_FALSE(plain.intersectWithTargetLocationSurfaceExtrapolated({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, hit, 1));
    EXPECT_EQ(hit, UNTOUCHED);
    plain.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 3, grid);
    EXPECT_THAT(grid, IsEmpty());
    EXPECT_THAT(plain.projectBoundaryOnTargetLocationSurface(2), IsEmpty());
}

TEST_F(CollimatedTargetLocatorTest, AMirrorThatNoRayMeetsLeavesGridAndBoundaryEmpty) {
    const auto screen = installRayScreen();
    CollimatedTargetLocatorParams behind = mirrorRecord({}, {}, 0.25);
    behind.eyepoint = {0.0, 5.0, 0.0};
    for (const CollimatedTargetLocatorParams& params :
         {mirrorRecord({}, {}, 0.0), mirrorRecord({}, {}, -1.0), mirrorRecord({}, {}, std::nan("")), behind}) {
        const CollimatedTargetLocator locator(params);
        locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 4, 3, grid);
        EXPECT_THAT(grid, IsEmpty());
        EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(3), IsEmpty());
    }
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CollimatedTargetLocatorTest, TheGridSeenInTheMirrorAgreesWithRecordedValues) {
    using namespace mirrorRays;
    installDome();
    const CollimatedTargetLocator locator({GRID_EYE,
                                           GRID_ANGLES[0],
                                           GRID_ANGLES[1],
                                           GRID_ANGLES[2],
                                           GRID_ANGLES[3],
                                           GRID_ROTATION[0],
                                           GRID_ROTATION[1],
                                           GRID_ROTATION[2],
                                           GRID_ORIENTATION,
                                           GRID_POSITION,
                                           GRID_RADIUS,
                                           {},
                                           {}});
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, GRID_COLUMNS, GRID_ROWS, grid);
    ASSERT_THAT(grid, SizeIs(std::size(GRID)));
    for (const Cell& cell : GRID) {
        expectNear(grid.at(cell.cell), cell.target);
    }
    // The corners of the boundary: left top, right top, right bottom, left bottom.
    const std::vector<Vector> outline = locator.projectBoundaryOnTargetLocationSurface(2);
    ASSERT_THAT(outline, SizeIs(8));
    expectNear(outline[0], grid.at({0, 0}));
    expectNear(outline[2], grid.at({GRID_COLUMNS - 1, 0}));
    expectNear(outline[4], grid.at({GRID_COLUMNS - 1, GRID_ROWS - 1}));
    expectNear(outline[6], grid.at({0, GRID_ROWS - 1}));
}

TEST(CollimatedTargetLocatorParams, ADefaultRecordIsAllZeroAndAnOtherTakesItsFieldsInOrder) {
    const CollimatedTargetLocatorParams zero;
    EXPECT_TRUE(zero == CollimatedTargetLocatorParams({}, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, {}, {}, 0.0, {}, {}));
    const CollimatedTargetLocatorParams r({1.0, 2.0, 3.0}, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, {11.0, 12.0, 13.0},
                                          {14.0, 15.0, 16.0}, 17.0, {{18.0, 19.0}}, {{20.0, 21.0}});
    EXPECT_EQ(r.eyepoint, (Vector{1.0, 2.0, 3.0}));
    EXPECT_THAT(
        (std::vector{r.angleLeft, r.angleRight, r.angleBottom, r.angleTop, r.rotationZ, r.rotationX, r.rotationY}),
        ElementsAre(4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0));
    EXPECT_EQ(r.mirrorOrientation, (Vector{11.0, 12.0, 13.0}));
    EXPECT_EQ(r.mirrorPosition, (Vector{14.0, 15.0, 16.0}));
    EXPECT_EQ(r.mirrorRadius, 17.0);
    EXPECT_THAT(r.pitchTable, ElementsAre(Pair(18.0, 19.0)));
    EXPECT_THAT(r.yawTable, ElementsAre(Pair(20.0, 21.0)));
    EXPECT_LT(static_cast<const void*>(&r.yawTable), static_cast<const void*>(&r.mirrorOrientation));
    EXPECT_LT(&r.mirrorOrientation, &r.mirrorPosition);
    EXPECT_LT(static_cast<const void*>(&r.mirrorPosition), static_cast<const void*>(&r.mirrorRadius));
}

TEST(CollimatedTargetLocatorParams, EveryFieldCountsThoseOfTheMirrorToo) {
    using Record = CollimatedTargetLocatorParams;
    const Record record = mirrorRecord({1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, 7.0, {{0.0, 1.0}}, {{0.0, 1.0}});
    const Record copy = record;
    EXPECT_TRUE(record == copy);
    const std::vector<double& (*)(Record&)> fields{[](Record& r) -> double& { return r.eyepoint[2]; },
                                                   [](Record& r) -> double& { return r.rotationY; },
                                                   [](Record& r) -> double& { return r.pitchTable[0].first; },
                                                   [](Record& r) -> double& { return r.yawTable[0].second; },
                                                   [](Record& r) -> double& { return r.mirrorOrientation[0]; },
                                                   [](Record& r) -> double& { return r.mirrorOrientation[1]; },
                                                   [](Record& r) -> double& { return r.mirrorOrientation[2]; },
                                                   [](Record& r) -> double& { return r.mirrorPosition[0]; },
                                                   [](Record& r) -> double& { return r.mirrorPosition[1]; },
                                                   [](Record& r) -> double& { return r.mirrorPosition[2]; },
                                                   [](Record& r) -> double& { return r.mirrorRadius; }};
    for (const auto field : fields) {
        Record changed = record;
        field(changed) += 1e-13;
        EXPECT_FALSE(record == changed);
        EXPECT_TRUE(changed != record);
        field(changed) = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(changed == changed);
    }
}

TEST(CollimatedTargetLocatorParams, IsAKindOfItsOwn) {
    SphereTargetLocatorParams sphere;
    CollimatedTargetLocatorParams collimated;
    EXPECT_FALSE(sphere == collimated);
    EXPECT_FALSE(collimated == sphere);
}

TEST(CollimatedTargetLocatorParams, TheLocatorAnswersItsWholeRecord) {
    CollimatedTargetLocatorParams params = mirrorRecord({1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, 7.0);
    const CollimatedTargetLocator locator(params);
    const CollimatedTargetLocator copy = locator;
    EXPECT_TRUE(copy.getTargetLocatorParams() == params);
    params.mirrorRadius = 8.0;
    EXPECT_FALSE(copy.getTargetLocatorParams() == params);
}

}  // namespace
