#include "Common/VeltraniException.h"
#include "ScreenFixture.h"
#include "ScreenManagerTestAccess.h"
#include "support/ForeignLocale.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

using Access = ScreenManagerTestAccess;
using Table = Access::HeadingTable;
using Vector = Point<double, 3>;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double PI = std::numbers::pi;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
/// A few roundings of lengths and sines around one.
constexpr double ROUNDING = 1e-14;

const Table EMPTY;
/// A single entry: bends nothing, but counts as a table.
const Table SINGLE{{0.25, 0.5}};
const Table STEEP{{0.0, 0.0}, {1.0, 10.0}};
const Table GOOD_THEN_FLAT{{0.0, 0.0}, {1.0, 1.0}, {1.0, 2.0}};

/// The fault that a lookup throws.
VeltraniException faultOf(double x, const Table& table) {
    try {
        Access::interpolate(x, table);
    } catch (const VeltraniException& fault) {
        return fault;
    }
    ADD_FAILURE() << "nothing thrown";
    return VeltraniException(L"");
}

TEST(SphereInterpolation, ValuesWithinTheTableLieOnTheLineBetweenTheirNeighbours) {
    EXPECT_EQ(Access::interpolate(0.5, STEEP), 5.0);
    EXPECT_EQ(Access::interpolate(0.0, STEEP), 0.0);
    const Table bent{{-1.0, -3.0}, {0.0, 1.0}, {2.0, 2.0}};
    EXPECT_EQ(Access::interpolate(-0.5, bent), -1.0);
    EXPECT_EQ(Access::interpolate(0.0, bent), 1.0) << "an entry belongs to the interval that it starts";
    EXPECT_EQ(Access::interpolate(1.0, bent), 1.5);
}

TEST(SphereInterpolation, TheLineIsEvaluatedAsDeclared) {
    int differences = 0;
    for (int i = 1; i < 100; ++i) {
        const double x0 = 0.1;
        const double x1 = 0.1 + 0.007 * i;
        const double y0 = 0.3;
        const double y1 = 0.3 + 0.013 * i;
        const double x = x0 + 0.003 * i;
        const volatile double part = (x - x0) / (x1 - x0);
        const volatile double rise = (y1 - y0) * part;
        const volatile double product = (y1 - y0) * (x - x0);
        EXPECT_EQ(Access::interpolate(x, {{x0, y0}, {x1, y1}}), y0 + rise);
        differences += y0 + rise != y0 + product / (x1 - x0) ? 1 : 0;
    }
    EXPECT_GT(differences, 0) << "no value tells this order from another one";
}

TEST(SphereInterpolation, TheUpperEndAndWhatLiesOutsidePassUnchanged) {
    EXPECT_EQ(Access::interpolate(1.0, STEEP), 1.0);
    EXPECT_EQ(Access::interpolate(-3.0, STEEP), -3.0);
    EXPECT_EQ(Access::interpolate(7.0, STEEP), 7.0);
    EXPECT_TRUE(std::isnan(Access::interpolate(NOT_A_NUMBER, STEEP)));
}

TEST(SphereInterpolation, FewerThanTwoEntriesLeaveTheValue) {
    EXPECT_EQ(Access::interpolate(0.25, EMPTY), 0.25);
    EXPECT_EQ(Access::interpolate(0.25, SINGLE), 0.25);
}

TEST(SphereInterpolation, TheTableIsTakenByValue) {
    static_assert(std::is_same_v<Access::Interpolate, double (*)(double, std::vector<std::pair<double, double>>)>);
}

TEST(SphereInterpolation, InputsThatDoNotGrowAreRefused) {
    const VeltraniException fault = faultOf(0.5, {{0.0, 0.0}, {0.0, 1.0}});
    EXPECT_EQ(fault.message,
              L"Interpolation input values must be monotonically increasing but value 0 at index 1 is not greater "
              L"than 0");
    EXPECT_THAT(fault.file, EndsWith("SphereTargetLocator.cpp"));
    EXPECT_EQ(fault.line, 68);
}

TEST(SphereInterpolation, OutputsThatDoNotGrowAreRefusedAndTheInputIsShown) {
    const VeltraniException fault = faultOf(1.75, {{0.25, 7.0}, {0.5, 8.0}, {1.5, 9.0}, {2.5, 9.0}});
    EXPECT_EQ(fault.message,
              L"Interpolation output values must be monotonically increasing but value 1.5 at index 3 is not greater "
              L"than 1.5");
    EXPECT_THAT(fault.file, EndsWith("SphereTargetLocator.cpp"));
    EXPECT_EQ(fault.line, 71);
}

TEST(SphereInterpolation, ThePairThatHoldsTheValueIsCheckedFirst) {
    EXPECT_EQ(faultOf(0.5, {{0.0, 1.0}, {1.0, 0.5}}).line, 71);
    EXPECT_EQ(faultOf(0.5, {{1.0, 1.0}, {0.0, 0.5}}).line, 68) << "inputs before outputs";
}

TEST(SphereInterpolation, PairsBehindTheValueAreNotChecked) {
    EXPECT_EQ(Access::interpolate(0.5, GOOD_THEN_FLAT), 0.5);
    EXPECT_EQ(faultOf(5.0, GOOD_THEN_FLAT).message,
              L"Interpolation input values must be monotonically increasing but value 1 at index 2 is not greater "
              L"than 1");
    EXPECT_EQ(faultOf(NOT_A_NUMBER, GOOD_THEN_FLAT).line, 68) << "a NaN is in no interval";
}

TEST(SphereInterpolation, NumbersOfTheMessageHaveSixDigitsInEveryLocale) {
    const ForeignLocale foreign;
    EXPECT_THAT(faultOf(0.0, {{1234567.0, 0.0}, {1.0, 1.0}}).message,
                EndsWith(L"value 1.23457e+06 at index 1 is not greater than 1.23457e+06"));
    EXPECT_THAT(faultOf(0.0, {{12345.67, 0.0}, {1.0, 1.0}}).message,
                EndsWith(L"value 12345.7 at index 1 is not greater than 12345.7"));
    Table thousand;
    for (int i = 0; i < 1234; ++i) {
        thousand.emplace_back(i, i);
    }
    thousand.emplace_back(1233.0, 5000.0);
    EXPECT_THAT(faultOf(1e6, thousand).message, EndsWith(L"value 1233 at index 1234 is not greater than 1233"));
}

class SphereHeadingTest : public ScreenFixture {
protected:
    static void expectNear(const Vector& actual, const Vector& expected) {
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(actual[i], expected[i], ROUNDING * norm(expected)) << i;
        }
    }
};

TEST_F(SphereHeadingTest, PitchIsTheElevationAndYawTheAzimuthFromForward) {
    const Table byTenth{{-2.0, -1.9}, {2.0, 2.1}};
    const double length = 3.0;
    for (const double pitch : {-1.1, 0.0, 0.7}) {
        for (const double yaw : {-1.5, 0.0, 1.2}) {
            const auto heading = [length](double p, double y) {
                return length * Vector{std::sin(y) * std::cos(p), std::cos(y) * std::cos(p), std::sin(p)};
            };
            expectNear(Access::remapHeading(heading(pitch, yaw), byTenth, EMPTY), heading(pitch + 0.1, yaw));
            expectNear(Access::remapHeading(heading(pitch, yaw), EMPTY, byTenth), heading(pitch, yaw + 0.1));
            expectNear(Access::remapHeading(heading(pitch, yaw), SINGLE, SINGLE), heading(pitch, yaw));
        }
    }
}

TEST_F(SphereHeadingTest, ADirectionMayPointBackAndUp) {
    expectNear(Access::remapHeading({0.0, -2.0, 0.0}, EMPTY, SINGLE), {0.0, -2.0, 0.0});
    expectNear(Access::remapHeading({0.0, 0.0, 5.0}, SINGLE, EMPTY), {0.0, 0.0, 5.0});
    EXPECT_TRUE(std::isnan(Access::remapHeading({0.0, 0.0, 0.0}, SINGLE, EMPTY)[0]));
}

TEST_F(SphereHeadingTest, TheFormulaIsEvaluatedAsDeclared) {
    const Table pitches{{-2.0, -1.7}, {0.1, 0.2}, {2.0, 1.9}};
    const Table yaws{{-4.0, -3.7}, {0.3, 0.1}, {4.0, 4.2}};
    for (int i = 0; i < 200; ++i) {
        const Vector d{std::sin(1.7 * i), std::cos(2.3 * i), std::sin(0.9 * i + 1.0)};
        const double r = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        const double pitch = Access::interpolate(std::asin(d[2] / r), pitches);
        const double yaw = Access::interpolate(std::atan2(d[0] / r, d[1] / r), yaws);
        EXPECT_EQ(
            Access::remapHeading(d, pitches, yaws),
            (Vector{std::sin(yaw) * std::cos(pitch) * r, std::cos(yaw) * std::cos(pitch) * r, std::sin(pitch) * r}));
    }
}

TEST_F(SphereHeadingTest, EachHeadingIsLoggedAtInfoWithItsPlace) {
    const ForeignLocale foreign;
    Access::remapHeading({0.0, 1.0, 1.0}, {{0.0, 0.0}, {1.0, 2.0}}, {{-1.0, -1.5}, {1.0, 1.0}});
    ASSERT_THAT(log.records(), SizeIs(1));
    const LogTrap::Record& record = log.records().front();
    EXPECT_EQ(record.level, "INFO");
    EXPECT_EQ(record.logger, "Dravix.ScreenManager.SphereTargetLocator");
    EXPECT_EQ(record.message, "Pitch,Yaw (0.785398,0) mapped to (1.5708,-0.25)");
    EXPECT_THAT(record.file, EndsWith("SphereTargetLocator.cpp"));
    EXPECT_THAT(record.function, HasSubstr("remapHeading"));
    EXPECT_GT(record.line, 0);
}

TEST_F(SphereHeadingTest, NothingIsLoggedWhenInfoIsOffOrATableIsRefused) {
    EXPECT_THROW(Access::remapHeading({0.0, 1.0, 1.0}, EMPTY, {{0.0, 0.0}, {0.0, 1.0}}), VeltraniException);
    EXPECT_THAT(log.records(), IsEmpty());
    const LogTrap warnings(log4cxx::Level::getWarn());
    Access::remapHeading({0.0, 1.0, 1.0}, SINGLE, EMPTY);
    EXPECT_THAT(warnings.records(), IsEmpty());
}

TEST_F(SphereHeadingTest, ThePitchIsLookedUpBeforeTheYaw) {
    const Table badAtOne{{5.0, 0.0}, {4.0, 1.0}};
    const Table badAtTwo{{0.0, 0.0}, {0.0, 1.0}};
    try {
        Access::remapHeading({0.0, 1.0, 1.0}, badAtOne, badAtTwo);
        FAIL() << "nothing thrown";
    } catch (const VeltraniException& fault) {
        EXPECT_THAT(fault.message, HasSubstr(L"value 5 at index 1"));
    }
}

SphereTargetLocatorParams recordWith(const Table& pitches, const Table& yaws) {
    return {{1.0, 2.0, 3.0}, -0.5, 0.5, -0.4, 0.4, 0.0, 0.0, 0.0, pitches, yaws};
}

TEST_F(SphereHeadingTest, RaysAreBentAroundTheirOriginInOrder) {
    const Table byTenth{{-PI, -PI + 0.1}, {PI, PI + 0.1}};
    std::vector<Ray> rays{{{5.0, 6.0, 7.0}, {5.0, 8.0, 7.0}}, {{-1.0, 0.0, 0.0}, {0.0, 0.0, 0.0}}};
    Access::remapRays(SphereTargetLocator(recordWith(EMPTY, byTenth)), rays);
    EXPECT_EQ(rays[0].first, (Vector{5.0, 6.0, 7.0}));
    expectNear(rays[0].second - rays[0].first, 2.0 * Vector{std::sin(0.1), std::cos(0.1), 0.0});
    expectNear(rays[1].second - rays[1].first, {std::cos(0.1), -std::sin(0.1), 0.0});
    EXPECT_THAT(log.messages(), ElementsAre("INFO Pitch,Yaw (0,0) mapped to (0,0.1)",
                                            "INFO Pitch,Yaw (0,1.5708) mapped to (0,1.6708)"));
}

TEST_F(SphereHeadingTest, TheRayOfAPicturePointIsBentByTheTables) {
    const Table byTenth{{-PI, -PI + 0.1}, {PI, PI + 0.1}};
    const SphereTargetLocator bent(recordWith(EMPTY, byTenth));
    const Ray middle = bent.rayOf({0.5, 0.5});
    EXPECT_EQ(middle.first, (Vector{1.0, 2.0, 3.0}));
    expectNear(middle.second - middle.first, {std::sin(0.1), std::cos(0.1), 0.0});

    const Ray upperRight = SphereTargetLocator(recordWith(EMPTY, EMPTY)).rayOf({1.0, 1.0});
    expectNear(upperRight.second - upperRight.first, {std::tan(0.5), 1.0, std::tan(0.4)});
}

TEST_F(SphereHeadingTest, WithoutTablesRaysStayToTheLastBitAndNothingIsLogged) {
    const std::vector<Ray> before{{{0.1, 0.2, 0.3}, {1.0 / 3.0, 0.7, 1e-9}}};
    std::vector<Ray> rays = before;
    Access::remapRays(SphereTargetLocator(recordWith(EMPTY, EMPTY)), rays);
    EXPECT_EQ(rays, before);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(SphereHeadingTest, OneTableIsEnoughForBoth) {
    for (const auto& [pitches, yaws] : {std::pair(SINGLE, EMPTY), std::pair(EMPTY, SINGLE)}) {
        log.clear();
        std::vector<Ray> rays{{{0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}}};
        Access::remapRays(SphereTargetLocator(recordWith(pitches, yaws)), rays);
        EXPECT_THAT(log.messages(), ElementsAre("INFO Pitch,Yaw (0,0) mapped to (0,0)"));
    }
}

}  // namespace
