#include "DisplayExport/ChannelWarp.h"

#include "Common/VeltraniException.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

namespace {

using namespace Veltrani::DisplayExport;
using State = WarpNode::State;

double areaOf(const WarpPiece& piece) {
    const auto& [a, b, c] = piece.corners;
    return ((b.picture[0] - a.picture[0]) * (c.picture[1] - a.picture[1]) -
            (b.picture[1] - a.picture[1]) * (c.picture[0] - a.picture[0])) /
           2;
}

class ChannelWarpTest : public ExportDisplayTest {
protected:
    [[nodiscard]] ChannelWarp warpOf(std::size_t channel, const InputChoice& choice, const WarpRequest& request) const {
        const ChannelSight sight(config(), channels()[channel]);
        return ChannelWarp::of(sight, ContentInput(config(), sight, choice), request);
    }

    static double sumOfAreas(const ChannelWarp& warp) {
        double sum = 0;
        warp.forEachPiece([&sum](const WarpPiece& piece) {
            EXPECT_GT(areaOf(piece), 0);
            sum += areaOf(piece);
        });
        return sum;
    }

    /// Whether a player draws something there.
    static bool isDrawn(const ChannelWarp& warp, const P2& picture) {
        bool isIn = false;
        warp.forEachPiece([&](const WarpPiece& piece) {
            bool isInPiece = true;
            for (std::size_t corner = 0; corner < piece.corners.size(); ++corner) {
                WarpPiece part = piece;
                part.corners[corner].picture = picture;
                isInPiece = isInPiece && areaOf(part) >= 0;
            }
            isIn = isIn || isInPiece;
        });
        return isIn;
    }
};

/// A wall that is seen squarely needs no node but its corners; from the side it needs more.
TEST_F(ChannelWarpTest, NeedsFourNodesForAWall) {
    loadAny("planar-wall");
    EXPECT_GT(warpOf(0, {}, {}).nodes().size(), 100U);
    const ChannelWarp warp = warpOf(0, {.direction = P3{0.0, 1.0, 0.0}}, {});
    EXPECT_EQ(warp.columns(), 2U);
    EXPECT_EQ(warp.rows(), 2U);
    EXPECT_LT(warp.error().largest, 1e-6);
    EXPECT_GT(warp.error().places, 0U);
    EXPECT_NEAR(sumOfAreas(warp), 1, 1e-12);
    EXPECT_EQ(warp.pixels(), (Point<int, 2>{1920, 1200}));
}

TEST_F(ChannelWarpTest, HasNodesFromCornerToCornerAndPixelsInTheirMiddles) {
    loadAny("stereo-wall");
    const ChannelWarp nodes =
        warpOf(0, {}, {.places = WarpRequest::Places::NODES, .nodes = {5, 3}, .withPoints = true});
    EXPECT_EQ(nodes.pictureOf(0, 0), (P2{0.0, 0.0}));
    EXPECT_EQ(nodes.pictureOf(4, 2), (P2{1.0, 1.0}));
    EXPECT_EQ(nodes.pictureOf(1, 1), (P2{0.25, 0.5}));
    EXPECT_EQ(nodes.points().size(), 15U);
    EXPECT_TRUE(nodes.reachesCorners());
    const ChannelWarp pixels = warpOf(0, {}, {.places = WarpRequest::Places::PIXELS});
    EXPECT_FALSE(pixels.reachesCorners());
    EXPECT_EQ(pixels.columns(), 1920U);
    EXPECT_EQ(pixels.rows(), 1200U);
    EXPECT_EQ(pixels.pictureOf(0, 0), (P2{0.5 / 1920, 0.5 / 1200}));
    EXPECT_EQ(pixels.error().places, 0U);
    EXPECT_TRUE(pixels.points().empty());
}

/// All ways to make one: nodes that are searched for take hundreds of grids.
TEST_F(ChannelWarpTest, IsEndedByWhatThePulseThrows) {
    struct Ended {};
    loadAny("round");
    for (const auto places : {WarpRequest::Places::AUTO, WarpRequest::Places::NODES, WarpRequest::Places::PIXELS}) {
        int left = std::numeric_limits<int>::max();
        const ChannelSight sight(config(), channels()[0], std::nullopt, [&left] {
            if (left-- == 0) {
                throw Ended();
            }
        });
        const ContentInput input(config(), sight, {InputKind::EQUIRECTANGULAR});
        const WarpRequest request{.places = places, .nodes = {200, 100}, .error = 0.05};
        const ChannelWarp warp = ChannelWarp::of(sight, input, request);
        const int pulses = std::numeric_limits<int>::max() - left;
        EXPECT_GE(pulses, static_cast<int>(warp.nodes().size() / 8192));
        for (const int before : {0, pulses / 2, pulses - 1}) {
            left = before;
            EXPECT_THROW(static_cast<void>(ChannelWarp::of(sight, input, request)), Ended)
                << before << " of " << pulses;
        }
    }
}

/// The middle of every node is where the light of its place arrives on the wall, two metres wide at y = 3.
TEST_F(ChannelWarpTest, KeepsThePointsOnTheScreen) {
    loadAny("stereo-wall");
    const ChannelWarp warp = warpOf(0, {}, {.places = WarpRequest::Places::NODES, .nodes = {3, 3}, .withPoints = true});
    EXPECT_EQ(warp.at(1, 1).state, State::MAPPED);
    EXPECT_LT(norm(warp.points()[4] - P3{-0.2, 3.0, 1.3}), 1e-12);
}

/// No grid of fewer nodes keeps the error, tried one by one.
TEST_F(ChannelWarpTest, FindsTheFewestNodes) {
    loadAny("inset");
    constexpr double ERROR = 2;
    const ChannelWarp warp = warpOf(1, {}, {.error = ERROR});
    const auto count = warp.columns() * warp.rows();
    EXPECT_LE(warp.error().largest, ERROR);
    EXPECT_GT(count, 4U);
    // It keeps a little less than what is allowed: compare with what it aims at.
    for (int columns = 2; columns < 40; ++columns) {
        for (int rows = 2; static_cast<std::size_t>(columns * rows) < count && rows < 40; ++rows) {
            const ChannelWarp other =
                warpOf(1, {}, {.places = WarpRequest::Places::NODES, .nodes = {columns, rows}, .error = ERROR});
            EXPECT_GT(other.error().largest, 0.85 * ERROR) << columns << " x " << rows;
        }
    }
}

/// Light beside the screen: the nodes next to what is lit go on, so that no lit place is without a cell.
TEST_F(ChannelWarpTest, GoesOnBesideWhatIsLit) {
    loadAny("inset");
    const ChannelWarp warp = warpOf(0, {}, {});
    EXPECT_GT(warp.count(State::CONTINUED), 0U);
    EXPECT_GT(warp.count(State::UNMAPPED), 0U);
    EXPECT_GT(warp.count(State::MAPPED), 0U);
    EXPECT_EQ(warp.count(State::CONTINUED) + warp.count(State::UNMAPPED) + warp.count(State::MAPPED),
              warp.nodes().size());
    EXPECT_EQ(warp.error().leftOut, 0U);
    const ChannelWarp pixels = warpOf(0, {}, {.places = WarpRequest::Places::PIXELS});
    EXPECT_GT(pixels.count(State::CONTINUED), 1000U);
}

TEST_F(ChannelWarpTest, GoesOnOverATipOfTheScreen) {
    // A square that stands on its tip in the picture, from 0.28 to 0.72 both ways. Two of its tips reach into cells
    // without a lit corner, by a fifth of these.
    load("<Screen shape='Flat'><Centre x='0' y='1' z='0'/><Size width='0.62225397' height='0.62225397'/></Screen>",
         displays::projector("P",
                             "<Position x='0' y='0' z='0'/><Orientation z='0' x='0' y='45'/><Frustum left='-45' "
                             "right='45' bottom='-45' top='45'/>"),
         "<TargetData type='ProjectorCentric'/>");
    // Across the lower and the upper sides of these cells, then across their left and right ones.
    for (const std::size_t along : {std::size_t{1}, std::size_t{0}}) {
        const Point<int, 2> nodes = along == 1 ? Point<int, 2>{12, 11} : Point<int, 2>{11, 12};
        const ChannelWarp warp = warpOf(0, {}, {.places = WarpRequest::Places::NODES, .nodes = nodes});
        const auto at = [along](double place) {
            P2 picture{0.5, 0.5};
            picture[along] = place;
            return picture;
        };
        for (const double place : {0.2802, 0.29, 0.5, 0.71, 0.7198}) {
            EXPECT_TRUE(isDrawn(warp, at(place))) << at(place);
        }
        EXPECT_FALSE(isDrawn(warp, at(0.81))) << "no corner of a cell beside";
        EXPECT_EQ(warp.error().leftOut, 0U);
    }
}

/// The channel of a round display that looks backwards lies over the seam.
TEST_F(ChannelWarpTest, GoesOnOverTheSeamOrIsCutThere) {
    loadAny("round");
    const InputChoice panorama{.kind = InputKind::EQUIRECTANGULAR};
    const ChannelWarp whole = warpOf(2, panorama, {});
    const auto beyond = [](const ChannelWarp& warp) {
        return std::count_if(warp.nodes().begin(), warp.nodes().end(), [](const WarpNode& node) {
            return node.isUsable() && (node.content[0] < 0 || node.content[0] > 1);
        });
    };
    EXPECT_GT(beyond(whole), 0);
    EXPECT_EQ(whole.brokenAtSeams(), 0U);
    double sum = 0;
    for (const WarpNode& node : whole.nodes()) {
        sum += node.isUsable() ? node.content[0] : 0;
    }
    const double mean = sum / static_cast<double>(whole.nodes().size() - whole.count(State::UNMAPPED));
    EXPECT_TRUE(mean >= 0 && mean < 1) << "most of it lies between 0 and 1: " << mean;
    std::size_t broken = 7;
    EXPECT_EQ(whole.gridNodes(broken).size(), whole.nodes().size());
    EXPECT_EQ(broken, 0U);
    const double area = sumOfAreas(whole);

    const ChannelWarp cut = warpOf(2, panorama,
                                   {.places = WarpRequest::Places::NODES,
                                    .nodes = {static_cast<int>(whole.columns()), static_cast<int>(whole.rows())},
                                    .seam = Seam::CUT});
    EXPECT_EQ(beyond(cut), 0);
    EXPECT_GT(cut.brokenAtSeams(), 0U);
    EXPECT_NEAR(sumOfAreas(cut), area, 1e-9);
    cut.forEachPiece([](const WarpPiece& piece) {
        for (const WarpCorner& corner : piece.corners) {
            EXPECT_GE(corner.content[0], 0);
            EXPECT_LE(corner.content[0], 1);
        }
    });
    const std::vector<WarpNode> ofGrid = cut.gridNodes(broken);
    ASSERT_EQ(ofGrid.size(), cut.nodes().size());
    EXPECT_GE(broken, cut.brokenAtSeams());
    // Cell by cell: lost where a node was taken out, and kept nowhere across the seam.
    std::size_t lost = 0;
    for (std::size_t i = 0; i < (cut.columns() - 1) * (cut.rows() - 1); ++i) {
        const std::size_t first = i / (cut.columns() - 1) * cut.columns() + i % (cut.columns() - 1);
        double least = 1e9;
        double most = -1e9;
        bool isUsable = true;
        bool isKept = true;
        for (const std::size_t corner : {first, first + 1, first + cut.columns(), first + cut.columns() + 1}) {
            isUsable = isUsable && cut.nodes()[corner].isUsable();
            isKept = isKept && ofGrid[corner].isUsable();
            least = std::min(least, cut.nodes()[corner].content[0]);
            most = std::max(most, cut.nodes()[corner].content[0]);
        }
        lost += isUsable && !isKept ? 1 : 0;
        EXPECT_FALSE(isKept && most - least > 0.5) << i;
    }
    EXPECT_EQ(broken, lost);
    EXPECT_LE(lost, 2 * cut.brokenAtSeams() + 2)
        << "of each column of cells at the seam, those on both sides of a node";
}

/// One cell around the zenith, divided: its parts keep the error and are counted, though no cell is whole.
TEST_F(ChannelWarpTest, KeepsTheErrorInDividedCells) {
    loadAny("planetarium");
    const ChannelWarp warp =
        warpOf(0, {.kind = InputKind::EQUIRECTANGULAR}, {.places = WarpRequest::Places::NODES, .nodes = {2, 2}});
    EXPECT_GT(warp.leftOutAtPoles(), 0U);
    EXPECT_GT(warp.error().places, 1000U);
    EXPECT_GT(warp.error().largest, 0.1);
    EXPECT_LE(warp.error().largest, 0.25);
    EXPECT_EQ(warp.error().beyond, 0U);
}

/// A picture of the zenith goes around the pole: content cannot lie beside each other everywhere, yet nothing but the
/// pole is left out.
TEST_F(ChannelWarpTest, LeavesOutNothingButThePole) {
    loadAny("planetarium");
    const ChannelWarp warp = warpOf(0, {.kind = InputKind::EQUIRECTANGULAR}, {});
    EXPECT_GT(warp.leftOutAtPoles(), 0U);
    EXPECT_LE(warp.leftOutAtPoles(), 4U);
    EXPECT_GT(warp.brokenAtSeams(), 0U);
    EXPECT_LE(warp.error().largest, 0.25);
    EXPECT_LE(warp.error().largestOfGrid, 0.25);
    const double area = sumOfAreas(warp);
    EXPECT_LT(area, 1);
    EXPECT_GT(area, 1 - 1e-5);
    std::size_t broken = 0;
    const auto nodes = warp.gridNodes(broken);
    EXPECT_GT(broken, warp.brokenAtSeams());
}

/// A grid cannot hold what is divided: it has as many nodes as it ever has, and loses little of the picture.
TEST_F(ChannelWarpTest, LosesLittleInAGrid) {
    loadAny("planetarium");
    const auto lostOf = [this](bool forGrids) {
        const ChannelWarp warp = warpOf(0, {.kind = InputKind::EQUIRECTANGULAR}, {.forGrids = forGrids});
        std::size_t broken = 0;
        static_cast<void>(warp.gridNodes(broken));
        EXPECT_EQ(warp.columns() == 513 && warp.rows() == 513, forGrids);
        EXPECT_LE(warp.error().largestOfGrid, 0.25);
        EXPECT_GT(warp.error().largestOfGrid, 0);
        return static_cast<double>(broken) / static_cast<double>((warp.columns() - 1) * (warp.rows() - 1));
    };
    EXPECT_LT(lostOf(true), 0.005);
    EXPECT_GT(lostOf(false), 0.05);
    // Of a wall nothing is lost: readers of grids get the same nodes.
    loadAny("stereo-wall");
    EXPECT_EQ(warpOf(0, {}, {.forGrids = true}).nodes().size(), warpOf(0, {}, {}).nodes().size());
}

/// However much error is allowed: a picture is not left to division as a whole, so that readers of grids have a part of
/// it.
TEST_F(ChannelWarpTest, HasNodesAroundThePoleWhateverTheError) {
    loadAny("planetarium");
    const ChannelWarp warp = warpOf(0, {.kind = InputKind::EQUIRECTANGULAR}, {.error = 1000});
    EXPECT_GE(warp.columns(), 4U);
    EXPECT_GE(warp.rows(), 4U);
    EXPECT_LE(warp.error().largest, 1000);
}

TEST_F(ChannelWarpTest, CutsCellsAtTheEdgesOfACube) {
    loadAny("planetarium");
    const ChannelWarp warp = warpOf(1, {.kind = InputKind::CUBE}, {});
    EXPECT_GT(warp.brokenAtSeams(), 0U);
    std::vector<int> faces(6);
    warp.forEachPiece([&faces](const WarpPiece& piece) {
        ++faces[piece.face];
        for (const WarpCorner& corner : piece.corners) {
            for (std::size_t i = 0; i < 2; ++i) {
                EXPECT_GE(corner.content[i], -1e-9);
                EXPECT_LE(corner.content[i], 1 + 1e-9);
            }
        }
    });
    EXPECT_GT(faces[static_cast<std::size_t>(CubeFace::TOP)], 0);
    EXPECT_GT(faces[static_cast<std::size_t>(CubeFace::FRONT)], 0);
    EXPECT_NEAR(sumOfAreas(warp), 1, 1e-9);
}

TEST_F(ChannelWarpTest, RefusesWhatCannotBeMet) {
    loadAny("stereo-wall");
    EXPECT_THROW((void)warpOf(0, {}, {.places = WarpRequest::Places::NODES, .nodes = {1, 5}}), VeltraniException);
    EXPECT_THROW((void)warpOf(0, {}, {.places = WarpRequest::Places::NODES, .nodes = {100'000, 100'000}}),
                 VeltraniException);
    EXPECT_THROW((void)warpOf(0, {}, {.error = 0}), VeltraniException);
    EXPECT_THROW((void)warpOf(0, {}, {.error = std::nan("")}), VeltraniException);
}

TEST_F(ChannelWarpTest, ReportsItsProgress) {
    loadAny("stereo-wall");
    std::size_t last = 0;
    std::size_t total = 0;
    WarpRequest request{.places = WarpRequest::Places::NODES, .nodes = {20, 30}};
    request.progress = [&](std::size_t done, std::size_t all) {
        EXPECT_GE(done, last);
        last = done;
        total = all;
    };
    (void)warpOf(0, {}, request);
    EXPECT_EQ(last, 30U);
    EXPECT_EQ(total, 30U);
}

}  // namespace
