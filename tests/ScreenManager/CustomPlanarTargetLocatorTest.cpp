#include "ScreenManager/CustomPlanarTargetLocator.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "PlanarMapText.h"
#include "ScreenFixture.h"
#include "support/TemporaryFolder.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <stdexcept>

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::Pointwise;
using testing::SizeIs;

/// Screen coordinates are near 1; the map and the scaling to pixels round a handful of times.
constexpr double ROUNDING = 1e-14;

MATCHER(IsNear2D, "lies within rounding of the expected point") {
    const auto& [found, expected] = arg;
    return std::abs(found[0] - expected[0]) <= ROUNDING && std::abs(found[1] - expected[1]) <= ROUNDING;
}

class CustomPlanarTargetLocatorTest : public ScreenFixture {
protected:
    CustomPlanarTargetLocatorParams paramsOf(int width, int height, const std::string& text) const {
        return {{width, height}, Veltrani::fromUtf8(folder.write("map.txt", text))};
    }
    CustomPlanarTargetLocator wholePicture(int width, int height) const {
        return CustomPlanarTargetLocator(paramsOf(width, height, planar_map::wholePicture(width, height)));
    }
    /// A screen that writes down where it is asked.
    std::shared_ptr<ScreenGeometryDouble> installRecordingGeometry() {
        auto geometry = installGeometry();
        geometry->mapping = [this](const Point<double, 2>& st, Vector& out, bool extrapolate) {
            asked.push_back(st);
            extrapolations.push_back(extrapolate);
            out = {st[0], 5.0, st[1]};
            return true;
        };
        return geometry;
    }

    const TemporaryFolder folder;
    std::vector<Point<double, 2>> asked;
    std::vector<bool> extrapolations;
    Grid grid;
};

/// What a step throws of the suite's; anything else fails the test.
std::wstring parseFaultOf(const std::function<void()>& step) {
    try {
        step();
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
    return L"nothing was thrown";
}

TEST_F(CustomPlanarTargetLocatorTest, ABlankFileNameIsRefusedBeforeABadResolution) {
    for (const int size : {5, 0}) {
        EXPECT_EQ(parseFaultOf([&] {
                      CustomPlanarTargetLocator(CustomPlanarTargetLocatorParams({size, size}, L""));
                  }),
                  L"Cannot use a blank filename");
    }
}

TEST_F(CustomPlanarTargetLocatorTest, AResolutionBelowOneIsRefused) {
    const std::wstring file = paramsOf(1, 1, planar_map::wholePicture(4, 4)).filename;
    for (const Point<int, 2> resolution :
         {Point<int, 2>{0, 5}, Point<int, 2>{5, 0}, Point<int, 2>{-1, 5}, Point<int, 2>{5, -1}, Point<int, 2>{0, 0}}) {
        EXPECT_EQ(parseFaultOf([&] { CustomPlanarTargetLocator(CustomPlanarTargetLocatorParams(resolution, file)); }),
                  L"Must use positive values to define the resolution");
    }
    EXPECT_EQ(CustomPlanarTargetLocator(CustomPlanarTargetLocatorParams({1, 1}, file)).getResolution(),
              (Point<int, 2>{1, 1}));
}

TEST_F(CustomPlanarTargetLocatorTest, TheMapIsReadBeforeTheResolutionIsLookedAt) {
    // A missing file is what the map throws, not the fault of the resolution.
    const std::wstring missing = Veltrani::fromUtf8(folder.file("none.txt"));
    EXPECT_THROW(CustomPlanarTargetLocator(CustomPlanarTargetLocatorParams({0, 0}, missing)),
                 VeltraniMissingFileException);
    const CustomPlanarTargetLocatorParams broken = paramsOf(0, 0, "2\nnothing\n");
    EXPECT_NE(parseFaultOf([&] { CustomPlanarTargetLocator{broken}; }),
              L"Must use positive values to define the resolution");
}

TEST_F(CustomPlanarTargetLocatorTest, TheGettersAnswerWhatItWasBuiltFrom) {
    const CustomPlanarTargetLocatorParams params = paramsOf(8, 4, planar_map::wholePicture(8, 4));
    const CustomPlanarTargetLocator locator(params);
    EXPECT_EQ(locator.getResolution(), (Point<int, 2>{8, 4}));
    EXPECT_TRUE(locator.getTargetLocatorParams() == params);
    Point<double, 2> out;
    ASSERT_TRUE(locator.getTransform().mapChannel2DToScreen2D({2.0, 3.0}, out));
    EXPECT_NEAR(out[0], 0.25, ROUNDING);
    EXPECT_NEAR(out[1], 0.75, ROUNDING);
}

TEST_F(CustomPlanarTargetLocatorTest, CopiesAndAssignedLocatorsTakeMapAndRecord) {
    installRecordingGeometry();
    CustomPlanarTargetLocator assigned = wholePicture(8, 4);
    {
        const CustomPlanarTargetLocator original(paramsOf(100, 100, planar_map::leftHalf(100, 100)));
        const CustomPlanarTargetLocator copy = original;
        EXPECT_TRUE(copy.getTargetLocatorParams() == original.getTargetLocatorParams());
        EXPECT_EQ(copy.projectBoundaryOnTargetLocationSurface(5), original.projectBoundaryOnTargetLocationSurface(5));
        assigned = copy;
    }
    EXPECT_EQ(assigned.getResolution(), (Point<int, 2>{100, 100}));
    assigned.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 0.0, 5, 1, grid);
    EXPECT_THAT(grid, SizeIs(3)) << "the left half of the row";
}

TEST_F(CustomPlanarTargetLocatorTest, TheGridIsScaledToPixelsAndCarriedThroughTheMap) {
    // 0, 0.5 and 1 are 0, W / 2 and W pixels.
    installRecordingGeometry();
    wholePicture(1920, 1080).projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 2, grid);
    const std::vector<Point<double, 2>> expected{{0.0, 0.0}, {0.5, 0.0}, {1.0, 0.0},
                                                 {0.0, 1.0}, {0.5, 1.0}, {1.0, 1.0}};
    EXPECT_THAT(asked, Pointwise(IsNear2D(), expected)) << "row by row, from vMin on";
    ASSERT_THAT(grid, SizeIs(6));
    EXPECT_NEAR((grid[{1, 0}][0]), 0.5, ROUNDING);
    EXPECT_NEAR((grid[{1, 0}][2]), 0.0, ROUNDING);
    EXPECT_NEAR((grid[{2, 1}][0]), 1.0, ROUNDING);
    EXPECT_NEAR((grid[{2, 1}][2]), 1.0, ROUNDING);
}

TEST_F(CustomPlanarTargetLocatorTest, WidthGoesWithUAndHeightWithV) {
    // A picture half as wide as the map's: u = 1 is the middle of the map, v = 1 a quarter of it.
    installRecordingGeometry();
    const CustomPlanarTargetLocator locator(paramsOf(400, 100, planar_map::wholePicture(800, 400)));
    locator.projectOnTargetLocationSurface(1.0, 1.0, 1.0, 1.0, 1, 1, grid);
    EXPECT_THAT(asked, Pointwise(IsNear2D(), {Point<double, 2>{0.5, 0.25}}));
}

TEST_F(CustomPlanarTargetLocatorTest, GridSamplesStopAtTheEdgesOfTheScreenAndBoundarySamplesDoNot) {
    installRecordingGeometry();
    const CustomPlanarTargetLocator locator = wholePicture(10, 10);
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid);
    EXPECT_THAT(extrapolations, AllOf(SizeIs(4), Each(false)));
    extrapolations.clear();
    locator.projectBoundaryOnTargetLocationSurface(2);
    EXPECT_THAT(extrapolations, AllOf(SizeIs(4), Each(true)));
}

TEST_F(CustomPlanarTargetLocatorTest, GridCoordinatesAreAddedUpNotMultipliedOut) {
    // From far outside the picture, so that the sum has rounded a thousand times when it arrives there.
    installRecordingGeometry();
    constexpr int SAMPLES = 1001;
    constexpr double START = -1000.3;
    constexpr double END = 0.9;
    const auto locator = wholePicture(1, 1);
    locator.projectOnTargetLocationSurface(START, END, 0.5, 0.5, SAMPLES, 1, grid);
    locator.projectOnTargetLocationSurface(0.5, 0.5, START, END, 1, SAMPLES, grid);
    double added = START;
    for (int i = 1; i < SAMPLES; ++i) {
        added += (END - START) / (SAMPLES - 1);
    }
    const double multiplied = START + (SAMPLES - 1) * ((END - START) / (SAMPLES - 1));
    ASSERT_GT(std::abs(added - multiplied), 10 * ROUNDING) << "the two ways differ enough to be told apart";
    EXPECT_THAT(asked, Pointwise(IsNear2D(), {Point<double, 2>{added, 0.5}, Point<double, 2>{0.5, added}}));
}

TEST_F(CustomPlanarTargetLocatorTest, ASingleColumnOrRowStaysAtItsStart) {
    installRecordingGeometry();
    const auto locator = wholePicture(10, 10);
    locator.projectOnTargetLocationSurface(0.25, 0.75, 0.5, 1.0, 1, 1, grid);
    locator.projectOnTargetLocationSurface(0.25, 0.25, 0.5, 0.5, 1, 1, grid);
    EXPECT_THAT(asked, Pointwise(IsNear2D(), {Point<double, 2>{0.25, 0.5}, Point<double, 2>{0.25, 0.5}}));
}

TEST_F(CustomPlanarTargetLocatorTest, BoundsMayRunBackwards) {
    installRecordingGeometry();
    wholePicture(10, 10).projectOnTargetLocationSurface(1.0, 0.0, 1.0, 0.0, 2, 2, grid);
    const std::vector<Point<double, 2>> expected{{1.0, 1.0}, {0.0, 1.0}, {1.0, 0.0}, {0.0, 0.0}};
    EXPECT_THAT(asked, Pointwise(IsNear2D(), expected));
}

TEST_F(CustomPlanarTargetLocatorTest, NoColumnsOrRowsAskNothing) {
    installRecordingGeometry();
    const auto locator = wholePicture(10, 10);
    constexpr int LEAST = std::numeric_limits<int>::min();
    for (const auto& [columns, rows] : {std::pair{0, 3}, std::pair{3, 0}, std::pair{-1, 3}, std::pair{3, LEAST},
                                        std::pair{LEAST, 3}, std::pair{0, 0}}) {
        locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, columns, rows, grid);
    }
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_THAT(grid, IsEmpty());
}

TEST_F(CustomPlanarTargetLocatorTest, SamplesThatTheMapOrTheScreenRefusesLeaveNoEntryAndNoWord) {
    const auto geometry = installRecordingGeometry();
    geometry->mapping = [](const Point<double, 2>& st, Vector& out, bool) {
        out = {st[0], 5.0, st[1]};
        return st[1] < 0.5;
    };
    const CustomPlanarTargetLocator locator(paramsOf(100, 100, planar_map::leftHalf(100, 100)));
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 5, 2, grid);
    // The map refuses columns 3 and 4, the screen row 1; holes keep their places.
    EXPECT_THAT(grid, ElementsAre(Pair(Point<int, 2>{0, 0}, testing::_), Pair(Point<int, 2>{1, 0}, testing::_),
                                  Pair(Point<int, 2>{2, 0}, testing::_)));
    EXPECT_EQ(geometry->calls("mapInto3D"), 6U) << "the screen is not asked for what the map refuses";
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CustomPlanarTargetLocatorTest, NotANumberPlacesNothing) {
    installRecordingGeometry();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    wholePicture(10, 10).projectOnTargetLocationSurface(nan, 1.0, 0.0, 1.0, 2, 2, grid);
    EXPECT_THAT(grid, IsEmpty());
}

TEST_F(CustomPlanarTargetLocatorTest, ExistingTargetsAreReplacedAndOthersKept) {
    installRecordingGeometry();
    const Vector old{-1.0, -1.0, -1.0};
    grid = {{{0, 0}, old}, {{7, 7}, old}};
    wholePicture(10, 10).projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid);
    EXPECT_THAT(grid, SizeIs(5));
    EXPECT_EQ((grid[{0, 0}][1]), 5.0);
    EXPECT_EQ((grid[{7, 7}]), old);
}

TEST_F(CustomPlanarTargetLocatorTest, AFlatScreenGetsItsGridOfTargets) {
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<FlatScreen>());
    wholePicture(1920, 1080).projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 5, 3, grid);
    ASSERT_THAT(grid, SizeIs(15));
    for (const auto& [place, target] : grid) {
        EXPECT_NEAR(target[0], place[0] / 4.0, ROUNDING);
        EXPECT_EQ(target[1], 0.0);
        EXPECT_NEAR(target[2], place[1] / 2.0, ROUNDING);
    }
}

TEST_F(CustomPlanarTargetLocatorTest, TheScreenIsTakenOncePerGrid) {
    class Vanishing : public ScreenGeometryDouble {
    public:
        bool mapInto3D(const Point<double, 2>&, Vector&, bool) const override {
            ScreenManager::getInstance()->setScreenGeometry(nullptr);
            return true;
        }
    };
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<Vanishing>());
    wholePicture(10, 10).projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid);
    EXPECT_THAT(grid, SizeIs(4)) << "the screen that was replaced during the call stays alive for it";
}

TEST_F(CustomPlanarTargetLocatorTest, WithoutAScreenThereIsNothing) {
    const auto locator = wholePicture(10, 10);
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid);
    EXPECT_THAT(grid, IsEmpty());
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(5), IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CustomPlanarTargetLocatorTest, ExceptionsOfTheScreenPassThroughWithTheTargetsBeforeThem) {
    const auto geometry = installRecordingGeometry();
    const auto locator = wholePicture(10, 10);
    geometry->throwFrom("mapInto3D", VeltraniException(L"no parameterisation"), 3);
    EXPECT_THROW(locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid), VeltraniException);
    EXPECT_THAT(grid, SizeIs(3));
    geometry->throwFrom("mapInto3D", std::runtime_error("broken"), 1);
    EXPECT_THROW(locator.projectBoundaryOnTargetLocationSurface(5), std::runtime_error);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CustomPlanarTargetLocatorTest, FiveSamplesOfFullHighDefinitionAreSixteenPixelsAroundTheBorder) {
    installRecordingGeometry();
    const std::vector<Vector> outline = wholePicture(1920, 1080).projectBoundaryOnTargetLocationSurface(5);
    std::vector<Point<double, 2>> expected;
    for (const double x : {0.0, 480.0, 960.0, 1440.0}) {
        expected.emplace_back(x / 1920.0, 0.0);
    }
    for (const double y : {0.0, 270.0, 540.0, 810.0}) {
        expected.emplace_back(1919.0 / 1920.0, y / 1080.0);
    }
    for (const double x : {1919.0, 1439.0, 959.0, 479.0}) {
        expected.emplace_back(x / 1920.0, 1079.0 / 1080.0);
    }
    for (const double y : {1079.0, 809.0, 539.0, 269.0}) {
        expected.emplace_back(0.0, y / 1080.0);
    }
    EXPECT_THAT(asked, Pointwise(IsNear2D(), expected));
    ASSERT_THAT(outline, SizeIs(16));
    EXPECT_EQ(outline[4], (Vector{asked[4][0], 5.0, asked[4][1]}));
}

TEST_F(CustomPlanarTargetLocatorTest, BoundaryStepsAreWholePixelsAndCornersMayComeTwice) {
    // 10 / 3 = 3 and 7 / 3 = 2: x = 0 3 6 9, y = 0 2 4 6, and back to 0 on both.
    installRecordingGeometry();
    wholePicture(10, 7).projectBoundaryOnTargetLocationSurface(4);
    std::vector<Point<double, 2>> expected;
    for (const auto& [x, y] : {std::pair{0, 0},
                               {3, 0},
                               {6, 0},
                               {9, 0},
                               {9, 0},
                               {9, 2},
                               {9, 4},
                               {9, 6},
                               {9, 6},
                               {6, 6},
                               {3, 6},
                               {0, 6},
                               {0, 6},
                               {0, 4},
                               {0, 2},
                               {0, 0}}) {
        expected.emplace_back(x / 10.0, y / 7.0);
    }
    EXPECT_THAT(asked, Pointwise(IsNear2D(), expected));
}

TEST_F(CustomPlanarTargetLocatorTest, BoundarySamplesThatDoNotMapAreDroppedWithoutAWord) {
    const auto geometry = installRecordingGeometry();
    const CustomPlanarTargetLocator locator(paramsOf(100, 100, planar_map::leftHalf(100, 100)));
    // x = 0, 25 and 50 below; 49 and 24 above; 99, 74, 49 and 24 down the left side; the right side not at all.
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(5), SizeIs(9));
    geometry->mapping = [](const Point<double, 2>& st, Vector&, bool) { return st[1] > 0.5; };
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(5), SizeIs(4));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CustomPlanarTargetLocatorTest, CountsThatMakeNoStepGiveNoBoundaryAndAskNothing) {
    installRecordingGeometry();
    const auto wide = wholePicture(20, 5);
    const auto high = wholePicture(5, 20);
    constexpr int LEAST = std::numeric_limits<int>::min();
    for (const int samples : {LEAST, -1, 0, 1, 7, 21, std::numeric_limits<int>::max()}) {
        EXPECT_THAT(wide.projectBoundaryOnTargetLocationSurface(samples), IsEmpty()) << samples;
        EXPECT_THAT(high.projectBoundaryOnTargetLocationSurface(samples), IsEmpty()) << samples;
    }
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_THAT(wide.projectBoundaryOnTargetLocationSurface(6), SizeIs(20)) << "5 / 5 is a step of one pixel";
}

TEST_F(CustomPlanarTargetLocatorTest, ThePictureOfOnePixelHasItsCornerFourTimes) {
    installRecordingGeometry();
    EXPECT_THAT(wholePicture(1, 1).projectBoundaryOnTargetLocationSurface(2), SizeIs(4));
    EXPECT_THAT(asked, Pointwise(IsNear2D(), std::vector<Point<double, 2>>(4)));
}

TEST_F(CustomPlanarTargetLocatorTest, TheLargestPictureIsWalkedWithoutOverflow) {
    // The step past the last pixel leaves the range of an int.
    constexpr int MOST = std::numeric_limits<int>::max();
    installRecordingGeometry();
    const CustomPlanarTargetLocator locator(paramsOf(MOST, MOST, planar_map::wholePicture(100, 100)));
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(3), SizeIs(2));
    EXPECT_THAT(asked, Pointwise(IsNear2D(), std::vector<Point<double, 2>>(2))) << "the others lie outside of the map";
}

TEST_F(CustomPlanarTargetLocatorTest, RaysMeetTheScreenAsForEveryLocatorOnIt) {
    const auto geometry = installGeometry();
    geometry->intersections = {{{5.0, 5.0, 5.0}, 1.0}};
    Vector hit;
    EXPECT_EQ(wholePicture(10, 10).intersectWithTargetLocationSurface({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, hit),
              std::make_pair(true, 1));
    EXPECT_EQ(hit, (Vector{5.0, 5.0, 5.0}));
}

TEST_F(CustomPlanarTargetLocatorTest, TheOperationsKeepTheirPlaces) {
    using Locator = CustomPlanarTargetLocator;
    EXPECT_EQ(slotOf(&Locator::projectOnTargetLocationSurface), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&Locator::getTargetLocatorParams), 3U);
    EXPECT_EQ(slotOf(&Locator::projectBoundaryOnTargetLocationSurface), 4U);
    EXPECT_EQ(slotOf(&Locator::intersectWithTargetLocationSurface), 5U);
    static_assert(std::is_base_of_v<TargetLocator, Locator> && std::is_copy_assignable_v<Locator>);
}

TEST(CustomPlanarTargetLocatorParams, ADefaultRecordIsOnePixelWithoutAFile) {
    const CustomPlanarTargetLocatorParams params;
    EXPECT_EQ(params.resolution, (Point<int, 2>{1, 1}));
    EXPECT_EQ(params.filename, L"");
}

TEST(CustomPlanarTargetLocatorParams, ARecordTakesAnything) {
    const CustomPlanarTargetLocatorParams params({-3, 0}, L"");
    EXPECT_EQ(params.resolution, (Point<int, 2>{-3, 0}));
    EXPECT_EQ(params.filename, L"");
}

TEST(CustomPlanarTargetLocatorParams, BothSizesAndTheExactFileNameCount) {
    CustomPlanarTargetLocatorParams params({1920, 1080}, L"Map.txt");
    EXPECT_TRUE(params == CustomPlanarTargetLocatorParams({1920, 1080}, L"Map.txt"));
    for (const CustomPlanarTargetLocatorParams& other :
         {CustomPlanarTargetLocatorParams({1920, 1080}, L"map.txt"),
          CustomPlanarTargetLocatorParams({1920, 1080}, L"Map.txt "),
          CustomPlanarTargetLocatorParams({1920, 1080}, L""), CustomPlanarTargetLocatorParams({1921, 1080}, L"Map.txt"),
          CustomPlanarTargetLocatorParams({1920, 1081}, L"Map.txt"),
          CustomPlanarTargetLocatorParams({1080, 1920}, L"Map.txt")}) {
        EXPECT_FALSE(params == other);
        EXPECT_TRUE(params != other);
    }
}

TEST(CustomPlanarTargetLocatorParams, RecordsAreCopiedAndMoved) {
    CustomPlanarTargetLocatorParams params({2, 3}, L"a file name that does not fit into the string itself");
    CustomPlanarTargetLocatorParams copy;
    copy = params;
    EXPECT_TRUE(copy == params);
    const CustomPlanarTargetLocatorParams moved = std::move(params);
    EXPECT_TRUE(copy == moved);
}

}  // namespace
