#include "Common/Utf8.h"
#include "KelvoControl/Blend.h"
#include "KelvoControl/Configuration.h"
#include "KelvoScreen/SphericalScreen.h"
#include "LayoutMapFixture.h"
#include "LayoutMapRows.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/ProjectorCentricLayoutToChannelMap.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <numbers>

/// The projector-centric map with real lenses in a real dome.

namespace {

using Vector = Point<double, 3>;
using testing::SizeIs;

/// Coordinates are a few metres; the way through lens and dome rounds some dozen times.
constexpr double ROUNDING = 1e-12;

constexpr const char* LENS_FILE =
    "%YAML:1.0\n---\nimage_width: 1920\nimage_height: 1200\n"
    "camera_matrix: !!opencv-matrix\n   rows: 3\n   cols: 3\n   dt: d\n"
    "   data: [ 1.5e+03, 0., 9.6e+02, 0., 1.5e+03, 6.0e+02, 0., 0., 1. ]\n"
    "distortion_coefficients: !!opencv-matrix\n   rows: 5\n   cols: 1\n   dt: d\n"
    "   data: [ -0.2, 0.05, 1e-03, -5e-04, -0.01 ]\n";

class ProjectorCentricTruthTest : public LayoutMapFixture {
protected:
    ProjectorCentricTruthTest() {
        constexpr double PI = std::numbers::pi;
        ScreenManager::getInstance()->setScreenGeometry(std::make_shared<SphericalScreen>(
            layoutMapRows::DOME_CENTRE, layoutMapRows::DOME_RADIUS, -PI, PI, -PI / 2, PI / 2));
        targetData.targetDataType = BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC;
        config.projectors = {&first};
        place({1.0, -1.5, 0.75}, {0.4, -0.3, 0.2});
        setFrustum(-0.5, 0.6, -0.4, 0.3);
    }

    void place(const Vector& position, const Vector& orientation) {
        first.position = position;
        first.orientationZ = orientation[0];
        first.orientationX = orientation[1];
        first.orientationY = orientation[2];
    }
    void setFrustum(double left, double right, double bottom, double top) {
        first.frustumLeft = left;
        first.frustumRight = right;
        first.frustumBottom = bottom;
        first.frustumTop = top;
    }
    ProjectorCentricLayoutToChannelMap build() {
        table = std::make_shared<KelvoControl::Configuration>(&config);
        return {&config, table};
    }
    std::vector<std::wstring> lenses() const {
        return {L"", L"Rectilinear", L"Equidistant",
                L"BrownConrady:" + Veltrani::fromUtf8(folder.write("lens.yml", LENS_FILE))};
    }

    std::shared_ptr<KelvoControl::Configuration> table;
    const TemporaryFolder folder;
};

TEST_F(ProjectorCentricTruthTest, EveryRowOfTheScriptIsMatchedTheOneWayToRoundingTheOtherToThePixel) {
    for (const layoutMapRows::Centric& row : layoutMapRows::CENTRIC) {
        place(row.position, row.orientation);
        setFrustum(row.frustum[0], row.frustum[1], row.frustum[2], row.frustum[3]);
        first.width = row.resolution[0];
        first.height = row.resolution[1];
        ProjectorCentricLayoutToChannelMap map = build();
        layout = NO_LAYOUT;
        channel = NO_CHANNEL;
        EXPECT_EQ(map.mapChannelToLayout(row.channel, layout, 0), row.meetsDome);
        EXPECT_LT(norm(layout - (row.meetsDome ? row.hit : NO_LAYOUT)), ROUNDING);
        EXPECT_EQ(map.mapLayoutToChannel(row.layout, channel, 0), row.isInFront);
        const Point<double, 2> expected{static_cast<double>(row.pixel[0]) / row.resolution[0],
                                        static_cast<double>(row.pixel[1]) / row.resolution[1]};
        EXPECT_EQ(channel, row.isInFront ? expected : NO_CHANNEL);
    }
}

TEST_F(ProjectorCentricTruthTest, EveryWholePixelComesBackExactlyThroughEveryLens) {
    first.width = 64;
    first.height = 40;
    for (const std::wstring& lens : lenses()) {
        first.projectionModelName = lens;
        ProjectorCentricLayoutToChannelMap map = build();
        for (int y = 0; y <= first.height; ++y) {
            for (int x = 0; x <= first.width; ++x) {
                const Point<double, 2> pixel{x / 64.0, y / 40.0};
                ASSERT_TRUE(map.mapChannelToLayout(pixel, layout, 0));
                ASSERT_TRUE(map.mapLayoutToChannel(layout, channel, 0));
                EXPECT_EQ(channel, pixel);
            }
        }
    }
}

TEST_F(ProjectorCentricTruthTest, PointsBetweenPixelsComeBackAsTheNearestPixel) {
    first.width = 64;
    first.height = 40;
    ProjectorCentricLayoutToChannelMap map = build();
    constexpr int STEPS = 97;  // no divisor of the picture: no point half way between two pixels
    double farthest = 0;
    for (int row = 1; row < STEPS; ++row) {
        for (int column = 1; column < STEPS; ++column) {
            const Point<double, 2> point{static_cast<double>(column) / STEPS, static_cast<double>(row) / STEPS};
            ASSERT_TRUE(map.mapChannelToLayout(point, layout, 0));
            ASSERT_TRUE(map.mapLayoutToChannel(layout, channel, 0));
            EXPECT_EQ(channel[0], std::floor(point[0] * 64.0 + 0.5) / 64.0);
            EXPECT_EQ(channel[1], std::floor(point[1] * 40.0 + 0.5) / 40.0);
            farthest = std::max(farthest, std::abs(channel[0] - point[0]) * 64.0);
        }
    }
    EXPECT_GT(farthest, 0.45) << "up to half a pixel";
    EXPECT_LE(farthest, 0.5);
}

TEST_F(ProjectorCentricTruthTest, PointsBehindTheProjectorAndThoseThatAreNoNumbersAreRefused) {
    ProjectorCentricLayoutToChannelMap map = build();
    Vector direction;
    ASSERT_TRUE(
        table->getProjectors().begin()->second->getBlend().getProjectionModel()->unproject({0.5, 0.5}, direction));
    EXPECT_TRUE(map.mapLayoutToChannel(first.position + direction, channel, 0));
    channel = NO_CHANNEL;
    EXPECT_FALSE(map.mapLayoutToChannel(first.position - direction, channel, 0));
    EXPECT_FALSE(map.mapLayoutToChannel({NOT_A_NUMBER, 0.0, 0.0}, channel, 0));
    EXPECT_EQ(channel, NO_CHANNEL);
    EXPECT_FALSE(map.mapChannelToLayout({0.5, NOT_A_NUMBER}, layout, 0));
    EXPECT_EQ(layout, NO_LAYOUT);
}

TEST_F(ProjectorCentricTruthTest, MapAndTargetLocatorSeeTheSameChannel) {
    // Both build their models from the configuration: the corners of the outline are the corners of the map.
    for (const std::wstring& lens : lenses()) {
        first.projectionModelName = lens.empty() ? L"Rectilinear" : lens;
        const auto locator = TargetLocatorManager::getInstance()->getTargetLocator(&config, &first);
        ASSERT_NE(dynamic_cast<const CustomProjectionTargetLocator*>(locator.get()), nullptr);
        const std::vector<Vector> corners = locator->projectBoundaryOnTargetLocationSurface(1);
        ASSERT_THAT(corners, SizeIs(4));
        first.projectionModelName = lens;
        ProjectorCentricLayoutToChannelMap map = build();
        std::size_t i = 0;
        for (const Point<double, 2>& corner : {Point<double, 2>{0.0, 0.0}, Point<double, 2>{1.0, 0.0},
                                               Point<double, 2>{1.0, 1.0}, Point<double, 2>{0.0, 1.0}}) {
            ASSERT_TRUE(map.mapChannelToLayout(corner, layout, 0));
            EXPECT_LT(norm(layout - corners[i++]), ROUNDING);
        }
    }
}

TEST_F(ProjectorCentricTruthTest, WithoutALensTheGridOfTheSphereLocatorIsThatOfTheMap) {
    first.projectionModelName.clear();
    const auto locator = TargetLocatorManager::getInstance()->getTargetLocator(&config, &first);
    ASSERT_NE(dynamic_cast<const SphereTargetLocator*>(locator.get()), nullptr);
    constexpr int COLUMNS = 17;
    constexpr int ROWS = 11;
    std::map<Point<int, 2>, Vector> grid;
    locator->projectOnTargetLocationSurface(0, 1, 0, 1, COLUMNS, ROWS, grid);
    ASSERT_FALSE(grid.empty());
    ProjectorCentricLayoutToChannelMap map = build();
    for (const auto& [cell, target] : grid) {
        const Point<double, 2> picture{cell[0] / (COLUMNS - 1.0), 1 - cell[1] / (ROWS - 1.0)};
        ASSERT_TRUE(map.mapChannelToLayout(picture, layout, 0));
        EXPECT_LT(norm(layout - target), ROUNDING) << cell[0] << ", " << cell[1];
    }
}

}  // namespace
