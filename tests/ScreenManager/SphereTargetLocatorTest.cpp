#include "ScreenManager/SphereTargetLocator.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "RayScreen.h"
#include "ScreenFixture.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManagerTestAccess.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>

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

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// A record whose ten fields are all different.
SphereTargetLocatorParams fullRecord() {
    return {{1.0, 2.0, 3.0}, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, {{0.0, 1.0}, {2.0, 3.0}}, {{4.0, 5.0}}};
}

/// Looks straight ahead; tangents from -1 to 1 and from -0.5 to 0.5.
SphereTargetLocatorParams plainRecord(const Table& pitches = {}, const Table& yaws = {}) {
    const double half = std::atan(0.5);
    const double quarter = std::atan(1.0);
    return {{1.0, 2.0, 3.0}, -quarter, quarter, -half, half, 0.0, 0.0, 0.0, pitches, yaws};
}

class SphereTargetLocatorTest : public ScreenFixture {
protected:
    std::shared_ptr<RayScreen> installRayScreen() {
        // Two of them carry the same data: the second would not be taken in place of the first.
        ScreenManager::getInstance()->setScreenGeometry(nullptr);
        auto screen = std::make_shared<RayScreen>(&trace);
        ScreenManager::getInstance()->setScreenGeometry(screen);
        return screen;
    }
    void project(const SphereTargetLocator& asked, int columns, int rows) {
        asked.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, columns, rows, grid);
    }

    Grid grid;
    const SphereTargetLocator locator{plainRecord()};
};

TEST_F(SphereTargetLocatorTest, RaysRunRowByRowFromTheTopLeftAndKeysAreColumnThenRow) {
    const auto screen = installRayScreen();
    project(locator, 3, 2);
    ASSERT_THAT(screen->rays, SizeIs(6));
    const Grid expected{{{0, 0}, screen->rays[0].second}, {{1, 0}, screen->rays[1].second},
                        {{2, 0}, screen->rays[2].second}, {{0, 1}, screen->rays[3].second},
                        {{1, 1}, screen->rays[4].second}, {{2, 1}, screen->rays[5].second}};
    EXPECT_EQ(grid, expected);
    const double unit = 1e-15;
    const double expectedX[] = {0.0, 1.0, 2.0};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(screen->rays[i].first, (Vector{1.0, 2.0, 3.0}));
        EXPECT_NEAR(screen->rays[i].second[0], expectedX[i % 3], unit);
        EXPECT_EQ(screen->rays[i].second[1], 3.0);
        EXPECT_NEAR(screen->rays[i].second[2], i < 3 ? 3.5 : 2.5, 4 * unit);
    }
}

TEST_F(SphereTargetLocatorTest, EachStepIsCalculatedAnewInTheDeclaredOrder) {
    const auto screen = installRayScreen();
    int accumulated = 0;
    int direct = 0;
    for (int k = 0; k < 40; ++k) {
        const SphereTargetLocatorParams p{
            {0.0, 0.0, 0.0}, -0.31 - 0.01 * k, 0.7, -0.23, 0.5 + 0.003 * k, 0.0, 0.0, 0.0, {}, {}};
        screen->rays.clear();
        SphereTargetLocator(p).projectOnTargetLocationSurface(0.1, 0.85, 0.15, 0.7, 8, 6, grid);
        const volatile double tL = std::tan(p.angleLeft);
        const volatile double tR = std::tan(p.angleRight);
        const volatile double tB = std::tan(p.angleBottom);
        const volatile double tT = std::tan(p.angleTop);
        const double hStart = tL + (tR - tL) * 0.1;
        const double hEnd = tR - (1 - 0.85) * (tR - tL);
        const double vLow = tB + (tT - tB) * 0.15;
        const double vHigh = tT - (1 - 0.7) * (tT - tB);
        const volatile double hStep = (hEnd - hStart) / 7.0;
        const volatile double vStep = (vHigh - vLow) / 5.0;
        double sum = hStart;
        for (int i = 0; i < 8; ++i) {
            const volatile double offset = i * hStep;
            EXPECT_EQ(screen->rays[static_cast<std::size_t>(i)].second[0], hStart + offset);
            accumulated += sum != hStart + offset ? 1 : 0;
            sum += hStep;
        }
        for (int j = 0; j < 6; ++j) {
            const volatile double offset = j * vStep;
            EXPECT_EQ(screen->rays[static_cast<std::size_t>(8 * j)].second[2], vHigh - offset);
        }
        direct += hEnd != tL + (tR - tL) * 0.85 || vHigh != tB + (tT - tB) * 0.7 ? 1 : 0;
    }
    EXPECT_GT(accumulated, 0) << "no value tells steps that are added up";
    EXPECT_GT(direct, 0) << "no value tells ends that are measured from the start";
}

TEST_F(SphereTargetLocatorTest, DirectionsAreTurnedByTheOrientationAndAddedToTheEye) {
    const auto screen = installRayScreen();
    SphereTargetLocatorParams record = plainRecord();
    record.rotationZ = 0.3;
    record.rotationX = -0.7;
    record.rotationY = 1.1;
    project(SphereTargetLocator(record), 2, 2);
    const Matrix<double, 3> q = Veltrani::rotation(-0.3, {0.0, 0.0, 1.0}) * Veltrani::rotation(-0.7, {1.0, 0.0, 0.0}) *
                                Veltrani::rotation(1.1, {0.0, 1.0, 0.0});
    const double h = std::tan(record.angleLeft);
    const double v = std::tan(record.angleTop);
    const Vector direction{h, 1.0, v};
    EXPECT_EQ(screen->rays.front().second, record.eyepoint + q * direction);
}

TEST_F(SphereTargetLocatorTest, CellsWhoseRayMissesStayEmptyAndTheOthersKeepTheirPlaces) {
    const auto screen = installRayScreen();
    screen->surface = [](const Vector&, const Vector& to) -> IntersectionSet {
        return to[0] < 0.5 || to[2] < 2.9 ? IntersectionSet{} : IntersectionSet{{to, 1.0}};
    };
    project(locator, 3, 3);
    std::vector<Point<int, 2>> cells;
    for (const auto& [cell, target] : grid) {
        cells.push_back(cell);
    }
    EXPECT_THAT(cells, ElementsAre(Point<int, 2>{1, 0}, Point<int, 2>{1, 1}, Point<int, 2>{2, 0}, Point<int, 2>{2, 1}));
}

/// The places of the targets when the ray through cell number i (row by row, of 5 x 1, then of 5 more) answers side
/// `sides[i]`; 9 is a miss.
class SidesTest : public SphereTargetLocatorTest {
protected:
    std::vector<int> chosen(const std::vector<int>& sides) {
        const auto screen = installRayScreen();
        std::size_t asked = 0;
        screen->surface = [&](const Vector&, const Vector& to) -> IntersectionSet {
            return sides.at(asked++) == 9 ? IntersectionSet{} : IntersectionSet{{to, 1.0}};
        };
        screen->normalAt = [&](const Vector& point) -> Vector {
            const Vector along = point - Vector{1.0, 2.0, 3.0};
            const int side = sides.at(asked - 1);
            return side == 0 ? Vector{along[1], -along[0], 0.0} : static_cast<double>(side) * along;
        };
        grid.clear();
        project(locator, static_cast<int>(sides.size()) / 2, 2);
        std::vector<int> cells(sides.size());
        for (const auto& [cell, target] : grid) {
            cells.at(static_cast<std::size_t>(cell[1]) * sides.size() / 2 + static_cast<std::size_t>(cell[0])) = 1;
        }
        return cells;
    }
};

TEST_F(SidesTest, TheSideThatMoreRaysReachGivesTheTargets) {
    EXPECT_THAT(chosen({1, -1, -1, 9, -1, 1}), ElementsAre(0, 1, 1, 0, 1, 0));
    EXPECT_THAT(chosen({1, -1, 1, 9, -1, 1}), ElementsAre(1, 0, 1, 0, 0, 1));
}

TEST_F(SidesTest, ATieGoesToTheFront) {
    EXPECT_THAT(chosen({-1, -1, 1, 1}), ElementsAre(0, 0, 1, 1));
}

TEST_F(SidesTest, ARayAcrossTheSurfaceCountsAsFront) {
    EXPECT_THAT(chosen({-1, 0, 1, 9}), ElementsAre(0, 1, 1, 0));
    EXPECT_THAT(chosen({-1, 0, 9, 9}), ElementsAre(0, 1, 0, 0));
}

TEST_F(SidesTest, OnlyBackTargetsAreTakenWhenThereIsNoOther) {
    EXPECT_THAT(chosen({-1, 9, 9, 9}), ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(chosen({9, 9, 9, 9}), ElementsAre(0, 0, 0, 0));
}

TEST_F(SphereTargetLocatorTest, TargetsThatTheGridHasAreKept) {
    const Vector before{-7.0, -8.0, -9.0};
    for (const bool known : {false, true}) {
        if (known) {
            ScreenManager::getInstance()->setScreenGeometry(std::make_shared<FlatScreen>());
        } else {
            installRayScreen();
        }
        // From below the middle of the unit square, so that both columns hit it.
        const double angle = std::atan(0.25);
        const SphereTargetLocator looking({{0.5, -1.0, 0.5}, -angle, angle, -angle, angle, 0.0, 0.0, 0.0, {}, {}});
        grid = {{{0, 0}, before}, {{5, 5}, before}};
        project(looking, 2, 2);
        EXPECT_THAT(grid, SizeIs(5));
        EXPECT_EQ(grid.at({0, 0}), before);
        EXPECT_EQ(grid.at({5, 5}), before);
        EXPECT_NEAR(grid.at({1, 1})[0], 0.75, 1e-15);
    }
}

TEST_F(SphereTargetLocatorTest, ASingleColumnOrRowAsksForNotANumber) {
    const auto screen = installRayScreen();
    project(locator, 1, 3);
    ASSERT_THAT(screen->rays, SizeIs(3));
    for (const Ray& ray : screen->rays) {
        EXPECT_TRUE(std::isnan(ray.second[0]));
    }
    screen->rays.clear();
    project(locator, 3, 1);
    ASSERT_THAT(screen->rays, SizeIs(3));
    for (const Ray& ray : screen->rays) {
        EXPECT_TRUE(std::isnan(ray.second[2]));
    }
}

TEST_F(SphereTargetLocatorTest, NoColumnsOrRowsAskNothing) {
    const auto screen = installRayScreen();
    const int least = std::numeric_limits<int>::min();
    for (const auto& [columns, rows] : {std::pair(0, 3), {3, 0}, {-1, 3}, {3, -1}, {least, 3}, {3, least}}) {
        project(locator, columns, rows);
    }
    EXPECT_THAT(screen->rays, IsEmpty());
    EXPECT_THAT(grid, IsEmpty());
}

TEST_F(SphereTargetLocatorTest, WithoutAScreenTheGridStaysAndNothingIsSaid) {
    grid = {{{0, 0}, {1.0, 1.0, 1.0}}};
    project(locator, 3, 3);
    EXPECT_THAT(grid, ElementsAre(Pair(Point<int, 2>{0, 0}, Vector{1.0, 1.0, 1.0})));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(SphereTargetLocatorTest, AScreenThatIsReplacedDuringTheGridIsNotAskedAnyMore) {
    const auto second = std::make_shared<RayScreen>(&trace, "second");
    const auto first = installRayScreen();
    first->surface = [&](const Vector&, const Vector& to) -> IntersectionSet {
        ScreenManager::getInstance()->getScreen().setMeasured(second);
        return {{to, 1.0}};
    };
    project(locator, 2, 2);
    EXPECT_THAT(first->rays, SizeIs(1));
    EXPECT_THAT(second->rays, SizeIs(3));
    EXPECT_THAT(grid, SizeIs(4));
}

TEST_F(SphereTargetLocatorTest, ExceptionsOfTheScreenPassThroughAndTheGridStays) {
    const auto screen = installRayScreen();
    screen->throwFrom("intersect", std::runtime_error("broken"), 3);
    EXPECT_THROW(project(locator, 2, 2), std::runtime_error);
    EXPECT_THAT(screen->rays, SizeIs(4));
    EXPECT_THAT(grid, IsEmpty());
}

TEST_F(SphereTargetLocatorTest, WithTablesEachHeadingIsBentJustBeforeItsRay) {
    installRayScreen();
    project(SphereTargetLocator(plainRecord({{-1.0, -0.5}, {1.0, 0.5}})), 2, 2);
    ASSERT_THAT(trace.lines(), SizeIs(12));
    for (std::size_t i = 0; i < 12; i += 3) {
        EXPECT_THAT(trace.lines()[i], HasSubstr("INFO Dravix.ScreenManager.SphereTargetLocator: Pitch,Yaw ("));
        EXPECT_THAT(trace.lines()[i + 1], HasSubstr("geometry.intersect("));
        EXPECT_THAT(trace.lines()[i + 2], HasSubstr("geometry.getScreenNormal("));
    }
    // Half the pitch of the ray to the left top corner (-1, 1, 0.5): asin(1 / 3) / 2.
    const Vector corner = grid.at({0, 0}) - Vector{1.0, 2.0, 3.0};
    EXPECT_NEAR(std::asin(corner[2] / norm(corner)), 0.5 * std::asin(1.0 / 3.0), 1e-14);
    EXPECT_NEAR(norm(corner), 1.5, 1e-14);
}

TEST_F(SphereTargetLocatorTest, WithoutTablesNothingIsLogged) {
    installRayScreen();
    project(locator, 2, 2);
    locator.projectBoundaryOnTargetLocationSurface(4);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(SphereTargetLocatorTest, AFaultyTableSurfacesWhereALookupReachesIt) {
    const SphereTargetLocator faulty(plainRecord({{-1.0, -1.0}, {0.0, 0.0}, {0.0, 1.0}}));
    // Without a screen, too.
    EXPECT_THROW(project(faulty, 3, 3), VeltraniException);
    EXPECT_THROW(faulty.projectBoundaryOnTargetLocationSurface(2), VeltraniException);
    const auto screen = installRayScreen();
    faulty.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 0.25, 3, 3, grid);
    EXPECT_THAT(grid, SizeIs(9)) << "below the horizon all pitches are in the good interval";
    screen->rays.clear();
    grid.clear();
    EXPECT_THROW(faulty.projectOnTargetLocationSurface(0.0, 1.0, 0.75, 1.0, 3, 3, grid), VeltraniException);
    EXPECT_THAT(screen->rays, IsEmpty());
    EXPECT_THAT(grid, IsEmpty());
    EXPECT_THROW(project(faulty, 1, 3), VeltraniException) << "a NaN runs through the whole table";
}

/// Answers rays by itself.
class OwnRays : public SphereTargetLocator {
public:
    using SphereTargetLocator::SphereTargetLocator;

    std::pair<bool, int> intersectWithTargetLocationSurface(const Vector& from, const Vector& to,
                                                            Vector& hit) const override {
        EXPECT_EQ(hit, Vector{});
        rays.emplace_back(from, to);
        hit = {1.0, 1.0, 1.0};
        return {true, 1};
    }

    mutable std::vector<Ray> rays;
};

TEST_F(SphereTargetLocatorTest, AClassThatAnswersRaysItselfIsAskedForEveryOne) {
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<FlatScreen>());
    const OwnRays own(plainRecord());
    project(own, 20, 10);
    ASSERT_THAT(own.rays, SizeIs(200));
    EXPECT_EQ(own.rays[1].first, (Vector{1.0, 2.0, 3.0}));
    EXPECT_LT(own.rays[0].second[0], own.rays[1].second[0]) << "row by row";
    EXPECT_THAT(grid, SizeIs(200));
}

TEST(SphereTargetLocatorParams, ADefaultRecordIsAllZeroAndAnOtherTakesItsFieldsInOrder) {
    const SphereTargetLocatorParams zero;
    EXPECT_TRUE(zero == SphereTargetLocatorParams({}, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, {}, {}));
    const SphereTargetLocatorParams record = fullRecord();
    EXPECT_EQ(record.eyepoint, (Vector{1.0, 2.0, 3.0}));
    EXPECT_EQ(record.angleLeft, 4.0);
    EXPECT_EQ(record.angleRight, 5.0);
    EXPECT_EQ(record.angleBottom, 6.0);
    EXPECT_EQ(record.angleTop, 7.0);
    EXPECT_EQ(record.rotationZ, 8.0);
    EXPECT_EQ(record.rotationX, 9.0);
    EXPECT_EQ(record.rotationY, 10.0);
    EXPECT_THAT(record.pitchTable, ElementsAre(Pair(0.0, 1.0), Pair(2.0, 3.0)));
    EXPECT_THAT(record.yawTable, ElementsAre(Pair(4.0, 5.0)));
}

TEST(SphereTargetLocatorParams, TheFieldsStandInTheirOrder) {
    const SphereTargetLocatorParams r;
    const std::vector<const void*> places{&r.eyepoint,  &r.angleLeft, &r.angleRight, &r.angleBottom, &r.angleTop,
                                          &r.rotationZ, &r.rotationX, &r.rotationY,  &r.pitchTable,  &r.yawTable};
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end(), std::less<>()));
}

/// Applies every change of one field, to NaN too, and expects it to count.
template <class Record>
void expectNumberCounts(const Record& record, double& (*field)(Record&)) {
    Record changed = record;
    field(changed) += 1e-13;
    EXPECT_FALSE(record == changed);
    EXPECT_TRUE(changed != record);
    field(changed) = NOT_A_NUMBER;
    EXPECT_FALSE(changed == changed);
}

TEST(SphereTargetLocatorParams, EveryFieldCountsAndCopiesAreEqual) {
    using Record = SphereTargetLocatorParams;
    const Record record = fullRecord();
    Record copy = record;
    EXPECT_TRUE(record == copy);
    Record moved = std::move(copy);
    EXPECT_TRUE(record == moved);
    Record assigned;
    assigned = moved;
    EXPECT_TRUE(record == assigned);
    const std::vector<double& (*)(Record&)> fields{[](Record& r) -> double& { return r.eyepoint[0]; },
                                                   [](Record& r) -> double& { return r.eyepoint[1]; },
                                                   [](Record& r) -> double& { return r.eyepoint[2]; },
                                                   [](Record& r) -> double& { return r.angleLeft; },
                                                   [](Record& r) -> double& { return r.angleRight; },
                                                   [](Record& r) -> double& { return r.angleBottom; },
                                                   [](Record& r) -> double& { return r.angleTop; },
                                                   [](Record& r) -> double& { return r.rotationZ; },
                                                   [](Record& r) -> double& { return r.rotationX; },
                                                   [](Record& r) -> double& { return r.rotationY; },
                                                   [](Record& r) -> double& { return r.pitchTable[1].first; },
                                                   [](Record& r) -> double& { return r.pitchTable[0].second; },
                                                   [](Record& r) -> double& { return r.yawTable[0].first; },
                                                   [](Record& r) -> double& { return r.yawTable[0].second; }};
    for (const auto field : fields) {
        expectNumberCounts(record, field);
    }
    Record longer = record;
    longer.pitchTable.emplace_back(9.0, 9.0);
    EXPECT_FALSE(record == longer);
    longer = record;
    longer.yawTable.emplace_back(9.0, 9.0);
    EXPECT_FALSE(record == longer);
}

TEST(SphereTargetLocatorParams, MinusZeroEqualsZeroAndOtherKindsAreUnequal) {
    SphereTargetLocatorParams zero;
    SphereTargetLocatorParams minusZero;
    minusZero.rotationX = -0.0;
    minusZero.eyepoint[1] = -0.0;
    EXPECT_TRUE(zero == minusZero);
    PlanarTargetLocatorParams planar;
    EXPECT_FALSE(zero == planar);
    EXPECT_FALSE(planar == zero);
    EXPECT_TRUE(zero != planar);
    EXPECT_TRUE(planar != zero);
}

TEST(SphereTargetLocatorParams, TheLocatorHoldsACopyOfItsRecord) {
    SphereTargetLocatorParams params = fullRecord();
    const SphereTargetLocator locator(params);
    params.angleLeft = 99.0;
    const SphereTargetLocator copy = locator;
    EXPECT_TRUE(copy.getTargetLocatorParams() == fullRecord());
}

}  // namespace
