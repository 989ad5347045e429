#include "DisplayLight/EyeGrid.h"

#include "../DisplayExport/ExportDisplays.h"

#include <cmath>
#include <vector>

namespace {

using Veltrani::DisplayLight::EyeGrid;
using Veltrani::DisplayLight::EyePlaces;
using Veltrani::DisplayLight::EyeView;
using Veltrani::DisplayLight::PlaceGrid;

class EyeGridTest : public ExportDisplayTest {
protected:
    /// A wall of 4 by 2 m, five metres ahead of the eye in the origin.
    EyeGridTest() {
        load("<Screen shape='Flat'><Centre x='0' y='5' z='0'/><Size width='4' height='2'/></Screen>",
             displays::projector("P", displays::WHOLE_AREA), "<TargetData type='PlanarBasic'/>");
    }

    [[nodiscard]] EyeGrid gridOf(const EyeView& view) const {
        return EyeGrid::of(view, {config(), channels().front(), ScreenManager::getInstance()->getScreenGeometry(), {}});
    }
};

// By the tangents of a camera whose picture is as high as 0.5, with a margin of 2 % on each side.
TEST_F(EyeGridTest, HasThePlacesThatTheMiddlesOfPixelsShowFromTheBottom) {
    constexpr std::size_t WIDTH = 7;
    constexpr std::size_t HEIGHT = 4;
    const std::vector<P3> directions{{-0.25, 1.0, -0.25}, {0.25, 1.0, 0.25}};
    const EyeGrid grid = gridOf(EyeView::around({}, directions, WIDTH, HEIGHT));
    EXPECT_EQ(grid.width, WIDTH);
    EXPECT_EQ(grid.rows(), HEIGHT);
    EXPECT_EQ(grid.view.width(), WIDTH);
    ASSERT_EQ(grid.places.size(), WIDTH * HEIGHT);
    const double tangent = 0.5 / (0.96 * HEIGHT);
    std::size_t seen = 0;
    for (std::size_t i = 0; i < grid.places.size(); ++i) {
        const P2 middle = EyeGrid::middleOf(i % WIDTH, i / WIDTH);
        EXPECT_EQ(middle, (P2{static_cast<double>(i % WIDTH) + 0.5, static_cast<double>(i / WIDTH) + 0.5}));
        const P3 expected{5 * tangent * (middle[0] - 3.5), 5.0, 5 * tangent * (middle[1] - 2)};
        const bool isOnWall = std::abs(expected[0]) < 2 && std::abs(expected[2]) < 1;
        ASSERT_EQ(grid.places[i].isSeen, isOnWall) << i;
        EXPECT_LT(norm(grid.places[i].point - (isOnWall ? expected : P3())), 1e-9) << i;
        seen += isOnWall ? 1 : 0;
    }
    EXPECT_EQ(seen, 7U * 4);
}

TEST_F(EyeGridTest, APixelThatShowsNoDirectionShowsNothing) {
    // The corners of a square fisheye of a whole turn.
    const std::vector<P3> directions{{0.0, 1.0, 0.0}, {1.0, -0.2, 0.0}, {-1.0, -0.2, 0.0}};
    const EyeView view = EyeView::around({}, directions, 100, 400);
    ASSERT_EQ(view.kind(), EyeView::Kind::FISHEYE);
    ASSERT_FALSE(view.directionOf(EyeGrid::middleOf(0, 0)));
    const EyeGrid grid = gridOf(view);
    EXPECT_FALSE(grid.places.front().isSeen);
    EXPECT_TRUE(grid.places[200 * 100 + 50].isSeen);
}

TEST(PlaceGrid, HasWholeRowsAndParts) {
    PlaceGrid grid;
    EXPECT_EQ(grid.rows(), 0U);
    grid.width = 3;
    grid.places.resize(6);
    EXPECT_EQ(grid.rows(), 2U);
    EXPECT_TRUE(grid.isOnePart(0, 5)) << "without parts there is but one";
    grid.parts = {1, 1, 2, 0, 0, 2};
    EXPECT_TRUE(grid.isOnePart(0, 1));
    EXPECT_FALSE(grid.isOnePart(1, 2));
    EXPECT_TRUE(grid.isOnePart(2, 5));
}

}  // namespace
