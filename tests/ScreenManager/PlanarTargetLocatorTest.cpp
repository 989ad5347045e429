#include "ScreenManager/PlanarTargetLocator.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "ScreenFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* GRID_WARNING =
    "Attempt to call ScreenManager::getScreenMatrix() with no parameterization in projectOnTargetLocationSurface";
constexpr const char* BOUNDARY_WARNING =
    "Attempt to call ScreenGeometry::mapInto3D() with no parameterization in projectBoundaryOnTargetLocationSurface";

class PlanarTargetLocatorTest : public ScreenFixture {
protected:
    /// Exactly one record: this warning, from the locator, with the place of its statement.
    void expectOneWarning(const std::string& message, const std::string& function) const {
        ASSERT_THAT(log.records(), SizeIs(1));
        const LogTrap::Record& record = log.records().front();
        EXPECT_EQ(record.level, "WARN");
        EXPECT_EQ(record.logger, "Dravix.ScreenManager.PlanarTargetLocator");
        EXPECT_EQ(record.message, message);
        EXPECT_THAT(record.file, EndsWith("PlanarTargetLocator.cpp"));
        EXPECT_THAT(record.function, HasSubstr(function));
        EXPECT_GT(record.line, 0);
    }

    Grid grid;
    const PlanarTargetLocator locator{PlanarTargetLocatorParams(0.0, 2.0, 0.0, 1.0)};
};

TEST_F(PlanarTargetLocatorTest, TheFullRangeRunsFromTheTopToTheBottomOfTheScreenArea) {
    installGeometry();
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 2, grid);
    // The rows of getScreenMatrix(0, 2, 1, 0): y falls from vMin to vMax.
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.sampleHorizontally(1, 0, 2, 3, 0, false)",
                                           "geometry.sampleHorizontally(0, 0, 2, 3, 1, false)"));
}

TEST_F(PlanarTargetLocatorTest, EachBoundIsTheDifferenceTimesTheNormalisedValuePlusTheStart) {
    // Fused or reordered this would end in another last digit.
    installGeometry();
    const PlanarTargetLocator odd{PlanarTargetLocatorParams(-2.0, -1.6, 0.1, 0.7)};
    odd.projectOnTargetLocationSurface(0.7, 0.3, 0.3, 0.7, 2, 1, grid);
    const auto bound = [](double start, double end, double value) {
        const volatile double product = (end - start) * value;
        return Recorder::text(product + start);
    };
    EXPECT_EQ(bound(-2.0, -1.6, 0.7), "-1.7200000000000002");
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.sampleHorizontally(" + bound(0.7, 0.1, 0.3) +
                                           ", -1.7200000000000002, " + bound(-2.0, -1.6, 0.3) + ", 2, 0, false)"));
}

TEST_F(PlanarTargetLocatorTest, ColumnsAndRowsAreHandedOnUnchecked) {
    installGeometry();
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, -3, 1, grid);
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 0, grid);
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, -1, grid);
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.sampleHorizontally(1, 0, 2, -3, 0, false)"));
}

TEST_F(PlanarTargetLocatorTest, AFlatScreenGetsItsGridOfTargets) {
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<FlatScreen>());
    const PlanarTargetLocator whole{PlanarTargetLocatorParams(0.0, 1.0, 0.0, 1.0)};
    whole.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 2, grid);
    const Grid expected{{{0, 0}, {0.0, 0.0, 1.0}}, {{1, 0}, {0.5, 0.0, 1.0}}, {{2, 0}, {1.0, 0.0, 1.0}},
                        {{0, 1}, {0.0, 0.0, 0.0}}, {{1, 1}, {0.5, 0.0, 0.0}}, {{2, 1}, {1.0, 0.0, 0.0}}};
    EXPECT_EQ(grid, expected);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(PlanarTargetLocatorTest, AScreenWithoutParameterisationIsOneWarningAndKeepsWhatWasWritten) {
    const auto geometry = installGeometry();
    geometry->sampling = [](double, int row, Grid& target) { target[{0, row}] = {1.0, 2.0, 3.0}; };
    geometry->throwFrom("sampleHorizontally", VeltraniException(L"no parameterisation"), 2);
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 1, 5, grid);
    EXPECT_EQ(geometry->calls("sampleHorizontally"), 3U) << "nothing is asked after the fault";
    EXPECT_THAT(grid, SizeIs(2));
    expectOneWarning(GRID_WARNING, "projectOnTargetLocationSurface");
}

TEST_F(PlanarTargetLocatorTest, DerivedExceptionsOfTheSuiteAreCaughtToo) {
    installGeometry()->throwFrom("sampleHorizontally", VeltraniParseException(L"bad"));
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 1, 1, grid);
    expectOneWarning(GRID_WARNING, "projectOnTargetLocationSurface");
}

TEST_F(PlanarTargetLocatorTest, OtherExceptionsPassThroughTheGrid) {
    const auto geometry = installGeometry();
    geometry->throwFrom("sampleHorizontally", std::runtime_error("broken"));
    EXPECT_THROW(locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 1, 1, grid), std::runtime_error);
    geometry->throwFrom("sampleHorizontally", VeltraniExceptionBase("a.cpp", 1, L"base"));
    EXPECT_THROW(locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 1, 1, grid), VeltraniExceptionBase);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(PlanarTargetLocatorTest, WithoutAScreenTheGridStaysAndTheManagerWarns) {
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 2, grid);
    EXPECT_THAT(grid, IsEmpty());
    EXPECT_THAT(log.messages(),
                ElementsAre("WARN getScreenMatrix(), m_screenGeometry == NULL, object initialization error"));
}

TEST_F(PlanarTargetLocatorTest, OneSamplePerEdgeIsTheFourCornersFromTheTopLeftClockwise) {
    installGeometry();
    EXPECT_THAT(
        locator.projectBoundaryOnTargetLocationSurface(1),
        ElementsAre(Vector{0.0, 0.0, 1.0}, Vector{2.0, 0.0, 1.0}, Vector{2.0, 0.0, 0.0}, Vector{0.0, 0.0, 0.0}));
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.mapInto3D((0, 1), true)", "geometry.mapInto3D((2, 1), true)",
                                           "geometry.mapInto3D((2, 0), true)", "geometry.mapInto3D((0, 0), true)"));
}

TEST_F(PlanarTargetLocatorTest, FourSamplesPerEdgeAreSixteenPointsWithoutTheCornersTwice) {
    installGeometry();
    const std::vector<Vector> outline = locator.projectBoundaryOnTargetLocationSurface(4);
    ASSERT_THAT(outline, SizeIs(16));
    EXPECT_EQ(outline[0], (Vector{0.0, 0.0, 1.0}));
    EXPECT_EQ(outline[4], (Vector{2.0, 0.0, 1.0}));
    EXPECT_EQ(outline[5], (Vector{2.0, 0.0, 0.75}));
    EXPECT_EQ(outline[15], (Vector{0.0, 0.0, 0.75}));
    for (const Vector& point : outline) {
        EXPECT_EQ(std::count(outline.begin(), outline.end(), point), 1);
    }
}

TEST_F(PlanarTargetLocatorTest, SamplesAreWeightedMeansOfTheEndsOfTheirEdge) {
    installGeometry();
    const PlanarTargetLocator odd{PlanarTargetLocatorParams(0.1, 0.9, 0.2, 0.7)};
    const std::vector<Vector> outline = odd.projectBoundaryOnTargetLocationSurface(7);
    ASSERT_THAT(outline, SizeIs(28));
    for (int i = 0; i < 7; ++i) {
        const double t = static_cast<double>(i) / 7.0;
        const volatile double first = (1 - t) * 0.1;
        const volatile double second = t * 0.9;
        EXPECT_EQ(outline[static_cast<std::size_t>(i)][0], first + second) << i;
    }
}

TEST_F(PlanarTargetLocatorTest, NoSamplesGiveNoBoundary) {
    const auto geometry = installGeometry();
    for (const int samples : {0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(samples), IsEmpty());
    }
    EXPECT_EQ(geometry->calls("mapInto3D"), 0U);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(PlanarTargetLocatorTest, SamplesThatDoNotMapAreDroppedWithoutAWord) {
    installGeometry()->mapping = [](const Point<double, 2>& st, Vector& out, bool) {
        out = {st[0], 0.0, st[1]};
        return st[0] > 1.0;
    };
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(1),
                ElementsAre(Vector{2.0, 0.0, 1.0}, Vector{2.0, 0.0, 0.0}));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(PlanarTargetLocatorTest, ABoundaryWithoutParameterisationIsOneWarningAndEmpty) {
    const auto geometry = installGeometry();
    geometry->throwFrom("mapInto3D", VeltraniException(L"no parameterisation"));
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(4), IsEmpty());
    EXPECT_EQ(geometry->calls("mapInto3D"), 1U);
    expectOneWarning(BOUNDARY_WARNING, "projectBoundaryOnTargetLocationSurface");
}

TEST_F(PlanarTargetLocatorTest, ABoundaryThatFailsHalfwayKeepsWhatWasCollected) {
    const auto geometry = installGeometry();
    geometry->throwFrom("mapInto3D", VeltraniException(L"no parameterisation"), 5);
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(4), SizeIs(5));
    EXPECT_EQ(geometry->calls("mapInto3D"), 6U) << "nothing is asked after the fault";
    expectOneWarning(BOUNDARY_WARNING, "projectBoundaryOnTargetLocationSurface");
}

TEST_F(PlanarTargetLocatorTest, OtherExceptionsPassThroughTheBoundary) {
    installGeometry()->throwFrom("mapInto3D", std::runtime_error("broken"));
    EXPECT_THROW(locator.projectBoundaryOnTargetLocationSurface(4), std::runtime_error);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(PlanarTargetLocatorTest, WithoutAScreenTheBoundaryIsEmpty) {
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(4), IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(PlanarTargetLocatorTest, NoTextIsBuiltWhenWarningsAreOff) {
    const LogTrap errorsOnly(log4cxx::Level::getError());
    installGeometry()->throwFrom("mapInto3D", VeltraniException(L"no parameterisation"));
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(4), IsEmpty());
    EXPECT_THAT(errorsOnly.records(), IsEmpty());
}

TEST(PlanarTargetLocatorParams, ADefaultRecordIsAllZeroAndAnOtherTakesItsFieldsInOrder) {
    const PlanarTargetLocatorParams zero;
    EXPECT_TRUE(zero == PlanarTargetLocatorParams(0.0, 0.0, 0.0, 0.0));
    const PlanarTargetLocatorParams record(1.0, 2.0, 3.0, 4.0);
    EXPECT_EQ(record.screenLeft, 1.0);
    EXPECT_EQ(record.screenRight, 2.0);
    EXPECT_EQ(record.screenBottom, 3.0);
    EXPECT_EQ(record.screenTop, 4.0);
}

TEST(PlanarTargetLocatorParams, EveryFieldCountsAndCopiesAreEqual) {
    const PlanarTargetLocatorParams record(1.0, 2.0, 3.0, 4.0);
    const PlanarTargetLocatorParams copy = record;
    EXPECT_TRUE(record == copy);
    for (double PlanarTargetLocatorParams::*field :
         {&PlanarTargetLocatorParams::screenLeft, &PlanarTargetLocatorParams::screenRight,
          &PlanarTargetLocatorParams::screenBottom, &PlanarTargetLocatorParams::screenTop}) {
        PlanarTargetLocatorParams changed = record;
        changed.*field += 1e-15;
        EXPECT_FALSE(record == changed);
        EXPECT_TRUE(changed != record);
        changed.*field = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(changed == changed);
    }
}

TEST(PlanarTargetLocatorParams, TheLocatorHoldsACopyOfItsRecord) {
    PlanarTargetLocatorParams params(1.0, 2.0, 3.0, 4.0);
    const PlanarTargetLocator locator(params);
    params.screenLeft = 9.0;
    const PlanarTargetLocator copy = locator;
    EXPECT_TRUE(copy.getTargetLocatorParams() == PlanarTargetLocatorParams(1.0, 2.0, 3.0, 4.0));
}

}  // namespace
