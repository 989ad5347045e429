#include "DisplayExport/WarpBuilder.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;
using Places = WarpRequest::Places;

class WarpBuilderTest : public ExportDisplayTest {
protected:
    /// The same projectors with a picture of another size: of a small one every grid is tried quickly.
    static std::string sized(std::string projectors, const std::string& width, const std::string& height) {
        const std::string usual = "width='1920' height='1200'";
        for (std::size_t at = 0; (at = projectors.find(usual, at)) != std::string::npos;) {
            projectors.replace(at, usual.size(), "width='" + width + "' height='" + height + "'");
        }
        return projectors;
    }

    template <class Display>
    void loadSmall(const std::string& width, const std::string& height) {
        load(Display::SCREEN, sized(Display::projectors(), width, height), Display::TARGETS);
    }

    [[nodiscard]] ChannelWarp built(const WarpRequest& request, const InputChoice& choice = {},
                                    std::size_t channel = 0) const {
        const ChannelSight sight(config(), channels()[channel]);
        const ContentInput input(config(), sight, choice);
        return WarpBuilder(sight, input, request).build();
    }

    [[nodiscard]] ChannelWarp ofNodes(int columns, int rows, double error, const InputChoice& choice = {}) const {
        return built({.places = Places::NODES, .nodes = {columns, rows}, .error = error}, choice);
    }

    [[nodiscard]] std::string refusal(const WarpRequest& request) const {
        try {
            static_cast<void>(built(request));
        } catch (const VeltraniException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "accepted";
    }

    /// Two planes that meet in an edge at x = 0.13, before an eye and a projector beside it.
    void loadCorner() {
        write("corner.obj",
              "v -3 2 -2\nv 0.13 5 -2\nv 0.13 5 2\nv -3 2 2\nv 3 2 -2\nv 3 2 2\nf 1 2 3\nf 1 3 4\nf 2 5 6\nf 2 6 3\n");
        loadMesh("corner.obj");
    }
    /// A board before a wall: the content has a step along its edges.
    void loadStep() {
        write("step.obj",
              "v -3 5 -2\nv 3 5 -2\nv 3 5 2\nv -3 5 2\nv -0.7 4 -0.3\nv 0.5 4 -0.3\nv 0.5 4 0.4\nv -0.7 4 0.4\nf 1 2 "
              "3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n");
        loadMesh("step.obj", "480", "300");
    }
    void loadMesh(const std::string& file, const std::string& width = "96", const std::string& height = "60") {
        load("<Screen shape='Mesh' fileUnit='m'><EyePoint x='0.4' y='-0.5' z='0.2'/><ContentMesh file='" + file +
                 "'/><ImportOrientation up='Z' forward='Y'/></Screen>",
             sized(exportDisplays::standing("P1", "x='-0.8' y='0' z='0'", "z='3' x='0'", 24, 16), width, height),
             "<TargetData type='ProjectorCentric'/>");
    }
};

TEST_F(WarpBuilderTest, RefusesWhatHasNoRoom) {
    loadAny("stereo-wall");
    EXPECT_EQ(refusal({.places = Places::NODES, .nodes = {8000, 5001}}),
              "channel LeftEye (LeftEye): a grid of 8000 x 5001 is larger than 40000000 places: state fewer nodes");
    EXPECT_EQ(refusal({.places = Places::NODES, .nodes = {20001, 2000}}),
              "channel LeftEye (LeftEye): a grid of 20001 x 2000 is larger than 40000000 places: state fewer nodes");
    for (const Point<int, 2>& nodes : {Point<int, 2>{1, 5}, Point<int, 2>{5, 1}, Point<int, 2>{-3, 0}}) {
        EXPECT_EQ(refusal({.places = Places::NODES, .nodes = nodes}),
                  "channel LeftEye (LeftEye): a grid of nodes has two columns and two rows at least, and not " +
                      std::to_string(nodes[0]) + " x " + std::to_string(nodes[1]));
    }
    EXPECT_EQ(refusal({.places = Places::NODES, .nodes = {2, 2}}), "accepted");
    EXPECT_EQ(refusal({.error = -1}),
              "channel LeftEye (LeftEye): an error of -1 pixels cannot be kept: state one above zero");
    EXPECT_NE(refusal({.error = std::numeric_limits<double>::infinity()}), "accepted");
    loadSmall<exportDisplays::StereoWall>("8000", "5001");
    EXPECT_EQ(refusal({.places = Places::PIXELS}),
              "channel LeftEye (LeftEye): a grid of 8000 x 5001 is larger than 40000000 places: state fewer nodes");
    EXPECT_EQ(refusal({.places = Places::NODES, .nodes = {3, 3}}), "accepted") << "the pixels do not matter then";
}

/// One cell less to either side, and a few for one, do not keep what the search aims at.
TEST_F(WarpBuilderTest, FindsAGridThatHasNoCellTooMany) {
    loadSmall<exportDisplays::Inset>("480", "300");
    const InputChoice choice{.direction = P3{0.3, 1.0, 0.1}, .pixels = {1920, 1200}};
    for (const double error : {1.3, 2.0, 3.0, 4.5, 7.0, 12.0, 20.0}) {
        const ChannelWarp warp = built({.error = error}, choice);
        EXPECT_LE(warp.error().largest, error);
        EXPECT_EQ(warp.error().beyond, 0U);
        const Point<int, 2> nodes{static_cast<int>(warp.columns()), static_cast<int>(warp.rows())};
        EXPECT_GT(nodes[0] * nodes[1], 5) << error;
        for (const Point<int, 2>& step :
             {Point<int, 2>{-1, 0}, Point<int, 2>{0, -1}, Point<int, 2>{-2, 1}, Point<int, 2>{1, -1}}) {
            const Point<int, 2> fewer = nodes + step;
            if (std::min(fewer[0], fewer[1]) >= 2 && fewer[0] * fewer[1] < nodes[0] * nodes[1]) {
                EXPECT_GT(ofNodes(fewer[0], fewer[1], error, choice).error().largest, 0.85 * error)
                    << error << ": " << fewer << " instead of " << nodes;
            }
        }
    }
}

/// An edge of the screen lies between places that are compared at first; what is stated bounds it, and is kept.
TEST_F(WarpBuilderTest, KeepsTheErrorAcrossAnEdgeOfTheScreen) {
    loadCorner();
    const InputChoice choice{.pixels = {960, 600}};
    for (double error = 0.8; error < 30; error *= 1.2) {
        const ChannelWarp warp = built({.error = error}, choice);
        EXPECT_LE(warp.error().largest, error) << warp.columns() << " x " << warp.rows();
        EXPECT_LT(warp.columns(), 97U) << error;
    }
}

/// Across a step nothing keeps the error: the search ends before every pixel has a cell.
TEST_F(WarpBuilderTest, EndsWhereMoreNodesDoNotHelp) {
    loadStep();
    const ChannelWarp warp = built({}, {.pixels = {960, 600}});
    EXPECT_GT(warp.error().largest, 0.25);
    EXPECT_GT(warp.error().beyond, 0U);
    EXPECT_LT(warp.columns() * warp.rows(), 480U * 300U / 2);
}

/// Readers of grids have as many cells as there are pixels.
TEST_F(WarpBuilderTest, HasAsManyNodesAsItMayWhereGridsLoseCells) {
    loadSmall<exportDisplays::Planetarium>("64", "40");
    const InputChoice panorama{.kind = InputKind::EQUIRECTANGULAR, .pixels = {1024, 512}};
    const ChannelWarp usual = built({}, panorama);
    EXPECT_LT(usual.columns() * usual.rows(), 65U * 41U);
    const ChannelWarp forGrids = built({.forGrids = true}, panorama);
    EXPECT_EQ(forGrids.columns(), 65U);
    EXPECT_EQ(forGrids.rows(), 41U);
    // Nothing is lost of a channel that shows neither a pole nor the seam.
    loadSmall<exportDisplays::Inset>("64", "40");
    EXPECT_EQ(built({.forGrids = true}, panorama).nodes().size(), built({}, panorama).nodes().size());
}

/// A picture all around has its contents from 0 to 1 in every row, though the ends of a row belong together.
TEST_F(WarpBuilderTest, PutsContentsOfNeighboursBesideEachOther) {
    load(
        "<Screen shape='Sphere'><EyePoint x='0' y='0' z='0'/><Radius value='5'/><Azimuth min='-170' max='170'/>"
        "<Elevation min='-60' max='60'/></Screen>",
        displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
        "<TargetData type='PlanarBasic'/>");
    for (const double turn : {0.0, 1.0, 2.5, -2.5}) {
        const InputChoice panorama{.kind = InputKind::EQUIRECTANGULAR,
                                   .direction = P3{std::sin(turn), std::cos(turn), 0.0}};
        const ChannelWarp warp = built({.places = Places::NODES, .nodes = {9, 4}}, panorama);
        double sum = 0;
        for (std::size_t i = 0; i < warp.nodes().size(); ++i) {
            const double content = warp.nodes()[i].content[0];
            sum += content;
            EXPECT_NEAR(content - warp.nodes()[0].content[0], 340.0 / 360 * static_cast<double>(i % 9) / 8, 1e-9)
                << turn << ' ' << i;
        }
        EXPECT_GE(sum / 36, 0) << turn;
        EXPECT_LT(sum / 36, 1) << turn;
        EXPECT_EQ(warp.brokenAtSeams(), 0U);
        const ChannelWarp cut = built({.places = Places::NODES, .nodes = {9, 4}, .seam = Seam::CUT}, panorama);
        for (const WarpNode& node : cut.nodes()) {
            EXPECT_TRUE(node.content[0] >= 0 && node.content[0] <= 1) << turn;
        }
        EXPECT_EQ(cut.brokenAtSeams(), turn == 0 ? 0U : 3U) << turn;
    }
}

}  // namespace
