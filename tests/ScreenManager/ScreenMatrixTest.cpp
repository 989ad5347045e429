#include "ScreenManager/ScreenManager.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "ScreenFixture.h"

#include <gmock/gmock.h>

#include <climits>

namespace {

using Grid = std::map<Point<int, 2>, Point<double, 3>>;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ScreenMatrixTest : public ScreenFixture {
protected:
    ScreenManager& manager = *ScreenManager::getInstance();
    Grid grid;
};

TEST_F(ScreenMatrixTest, RowsRunFromTheFirstHeightToTheSecondWhicheverIsHigher) {
    installGeometry();
    manager.getScreenMatrix(0.0, 2.0, 1.0, 0.0, 3, 2, grid, false);
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.sampleHorizontally(1, 0, 2, 3, 0, false)",
                                           "geometry.sampleHorizontally(0, 0, 2, 3, 1, false)"));
}

TEST_F(ScreenMatrixTest, OneRowLiesAtTheFirstHeight) {
    installGeometry();
    manager.getScreenMatrix(0.0, 2.0, 0.3, 0.9, 3, 1, grid, true);
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.sampleHorizontally(0.3, 0, 2, 3, 0, true)"));
}

TEST_F(ScreenMatrixTest, NoRowsAskForNothing) {
    installGeometry();
    for (const int rows : {0, -1, INT_MIN}) {
        manager.getScreenMatrix(0.0, 2.0, 1.0, 0.0, 3, rows, grid, false);
    }
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ScreenMatrixTest, HeightsAreTheRangeTimesTheRowDividedByTheStepsPlusTheStart) {
    // Other forms of the same formula end at 1 here.
    installGeometry();
    manager.getScreenMatrix(0.0, 1.0, 0.2, 1.0, 1, 4, grid, false);
    EXPECT_EQ(trace.lines().back(), "geometry.sampleHorizontally(1.0000000000000002, 0, 1, 1, 3, false)");
    for (int row = 0; row < 4; ++row) {
        const volatile double range = 1.0 - 0.2;
        const volatile double product = range * row;
        const volatile double quotient = product / 3;
        EXPECT_EQ(trace.lines()[static_cast<std::size_t>(row)], "geometry.sampleHorizontally(" +
                                                                    Recorder::text(quotient + 0.2) + ", 0, 1, 1, " +
                                                                    std::to_string(row) + ", false)");
    }
}

TEST_F(ScreenMatrixTest, TheLastRowIsThereEvenWhereRoundingPutsItPastTheEdge) {
    manager.setScreenGeometry(std::make_shared<FlatScreen>());
    manager.getScreenMatrix(0.0, 1.0, 0.2, 1.0, 2, 4, grid, false);
    EXPECT_THAT(grid, SizeIs(8));
    EXPECT_EQ(grid.count({1, 3}), 1U);
}

TEST_F(ScreenMatrixTest, WithoutAScreenThereIsOneWarningAndTheGridStays) {
    const Grid before{{{7, 7}, {1.0, 2.0, 3.0}}};
    grid = before;
    manager.getScreenMatrix(0.0, 2.0, 1.0, 0.0, 3, 2, grid, false);
    EXPECT_EQ(grid, before);
    ASSERT_THAT(log.messages(),
                ElementsAre("WARN getScreenMatrix(), m_screenGeometry == NULL, object initialization error"));
    EXPECT_EQ(log.records()[0].logger, "Dravix.ScreenManager.ScreenManager");
    EXPECT_EQ(log.records()[0].file, "?") << "a plain record has no location";
    EXPECT_EQ(log.records()[0].line, -1);
}

TEST_F(ScreenMatrixTest, TheMeasuredScreenIsPreferred) {
    installGeometry();
    manager.getScreen().setMeasured(std::make_shared<ScreenGeometryDouble>(&trace, "measured"));
    manager.getScreenMatrix(0.0, 2.0, 1.0, 0.0, 3, 1, grid, false);
    EXPECT_THAT(trace.lines(), ElementsAre("measured.sampleHorizontally(1, 0, 2, 3, 0, false)"));
}

TEST_F(ScreenMatrixTest, ExceptionsPassThroughAfterTheRowsBeforeThem) {
    const auto geometry = installGeometry();
    geometry->sampling = [](double y, int row, Grid& target) { target[{0, row}] = {0.0, 0.0, y}; };
    geometry->throwFrom("sampleHorizontally", VeltraniException(L"no parameterisation"), 2);
    EXPECT_THROW(manager.getScreenMatrix(0.0, 1.0, 0.0, 1.0, 1, 5, grid, false), VeltraniException);
    EXPECT_THAT(grid, SizeIs(2));
    EXPECT_THAT(log.records(), IsEmpty());
}

}  // namespace
