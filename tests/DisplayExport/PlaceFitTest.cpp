#include "DisplayExport/PlaceFit.h"

#include "DisplayExport/ContentInput.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>
#include <Eigen/Dense>

#include <cmath>
#include <utility>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;

class PlaceFitTest : public ExportDisplayTest {
protected:
    /// A wall of 4 by 2 metres at y = 3, its middle at (0.5, 3, 0.25), that one picture covers.
    void loadWall() {
        load(
            "<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0.5' y='3' z='0.25'/><Size width='4' "
            "height='2'/></Screen>",
            displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
            "<TargetData type='PlanarBasic'/>");
    }

    static InputChoice choiceOf(InputKind kind) {
        InputChoice choice;
        choice.kind = kind;
        return choice;
    }

    static constexpr P2 STEP{0.05, 0.04};
};

/// On a plane everything is linear: beside the picture the content and the point are those of the plane.
TEST_F(PlaceFitTest, GoesOnAlongAPlane) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    for (const InputKind kind : {InputKind::LAYOUT, InputKind::SCREEN}) {
        const ContentInput input(config(), sight, choiceOf(kind));
        for (const P2& place : {P2{1.05, 0.5}, P2{-0.04, 0.3}, P2{0.5, 1.06}, P2{1.03, 1.02}, P2{0.5, 0.5}}) {
            WarpNode node;
            const SeenPlace seen = PlaceFit(sight, input).at(place, STEP, node);
            EXPECT_EQ(node.state, WarpNode::State::CONTINUED);
            EXPECT_NEAR(node.content[0], place[0], 1e-4);
            EXPECT_NEAR(node.content[1], place[1], 1e-4);
            EXPECT_LT(norm(seen.point - P3{-1.5 + 4 * place[0], 3.0, -0.75 + 2 * place[1]}), 5e-4);
        }
    }
}

/// Its direction leaves the one of the plane with the square of the step, and its point is seen in it.
TEST_F(PlaceFitTest, GoesOnAsItIsSeen) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput input(config(), sight, choiceOf(InputKind::FISHEYE));
    const auto errorAt = [&](double step) {
        WarpNode node;
        const SeenPlace seen = PlaceFit(sight, input).at({1 + step, 0.5}, {step, step}, node);
        EXPECT_TRUE(seen.isSeen);
        EXPECT_LT(norm(cross(seen.point, seen.direction)), 1e-12 * norm(seen.point));
        EXPECT_EQ(input.placeOf(seen.direction)->at, node.content);
        const P3 there{-1.5 + 4 * (1 + step), 3.0, 0.25};
        EXPECT_LT(norm(seen.point - there), 0.02);
        return norm(seen.direction * (1 / norm(seen.direction)) - there * (1 / norm(there)));
    };
    EXPECT_LT(errorAt(0.02), 2e-3);
    EXPECT_NEAR(errorAt(0.02) / errorAt(0.01), 4, 0.7);
}

/// The plane of least squares, solved another way: nearer places count for more.
TEST_F(PlaceFitTest, IsThePlaneOfLeastSquares) {
    int fitted = 0;
    // The picture of the second one is lit, and goes on being lit beyond each of its edges.
    for (const auto& [display, place] : {std::pair("inset", P2{0.5, 0.5}),
                                         {"inset", P2{0.02, 0.6}},
                                         {"inset", P2{0.97, 0.4}},
                                         {"inset", P2{0.5, 0.13}},
                                         {"inset", P2{0.3, 0.95}},
                                         {"planetarium", P2{0.02, 0.5}},
                                         {"planetarium", P2{0.98, 0.5}},
                                         {"planetarium", P2{0.5, 0.02}},
                                         {"planetarium", P2{0.5, 0.98}}}) {
        loadAny(display);
        const ChannelSight sight(config(), channels()[0]);
        const ContentInput input(config(), sight, {});
        std::vector<P2> lit;
        std::vector<SeenPlace> places;
        for (int row = -8; row <= 8; ++row) {
            for (int column = -8; column <= 8; ++column) {
                const P2 offset{column / 4.0, row / 4.0};
                const P2 at{place[0] + offset[0] * STEP[0], place[1] + offset[1] * STEP[1]};
                SeenPlace seen;
                sight.see({&at, 1}, {&seen, 1});
                if (seen.isSeen && at[0] >= 0 && at[0] <= 1 && at[1] >= 0 && at[1] <= 1) {
                    lit.push_back(offset);
                    places.push_back(seen);
                }
            }
        }
        WarpNode node;
        const SeenPlace fit = PlaceFit(sight, input).at(place, STEP, node);
        ASSERT_EQ(node.isUsable(), !lit.empty()) << place;
        if (lit.size() < 10) {
            continue;
        }
        ++fitted;
        Eigen::MatrixXd terms(static_cast<Eigen::Index>(lit.size()), 3);
        Eigen::MatrixXd values(static_cast<Eigen::Index>(lit.size()), 3);
        for (std::size_t i = 0; i < lit.size(); ++i) {
            const auto row = static_cast<Eigen::Index>(i);
            const double square = dot(lit[i], lit[i]);
            const double weight = std::sqrt(1 / (1 + square * square));
            const P3 unit = places[i].direction * (1 / norm(places[i].direction));
            terms.row(row) << weight, weight * lit[i][0], weight * lit[i][1];
            values.row(row) << weight * unit[0], weight * unit[1], weight * unit[2];
        }
        const Eigen::MatrixXd plane = terms.colPivHouseholderQr().solve(values);
        EXPECT_LT(norm(fit.direction - P3{plane(0, 0), plane(0, 1), plane(0, 2)}), 1e-4) << place;
    }
    EXPECT_GE(fitted, 7);
}

/// In a mirror the point lies on the screen, not where the direction leads.
TEST_F(PlaceFitTest, HasThePointOfTheScreenInAMirror) {
    loadAny("collimated");
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput input(config(), sight, {});
    const P2 middle{0.5, 0.5};
    SeenPlace seen;
    sight.see({&middle, 1}, {&seen, 1});
    ASSERT_TRUE(seen.isSeen);
    WarpNode node;
    const SeenPlace fit = PlaceFit(sight, input).at(middle, STEP, node);
    EXPECT_EQ(node.state, WarpNode::State::CONTINUED);
    EXPECT_LT(norm(fit.point - seen.point), 0.02);
    EXPECT_LT(norm(fit.direction * (1 / norm(fit.direction)) - seen.direction * (1 / norm(seen.direction))), 0.01);
}

/// A picture of which nothing is lit around a place.
TEST_F(PlaceFitTest, IsNothingWhereNothingIsLit) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput input(config(), sight, choiceOf(InputKind::LAYOUT));
    WarpNode node{{0.5, 0.5}, 0, WarpNode::State::MAPPED};
    EXPECT_FALSE(PlaceFit(sight, input).at({1.5, 0.5}, STEP, node).isSeen);
    EXPECT_FALSE(node.isUsable());
}

}  // namespace
