#include "DisplayBlend/detail/ShadowEdges.h"

#include "BlendDisplays.h"

#include <numbers>
#include <utility>

namespace {

using Veltrani::DisplayBlendDetail::addShadows;
using Veltrani::DisplayBlendDetail::EdgeField;
using Veltrani::DisplayBlendDetail::PlaceSampler;

/// Half the integral of ds / r^3 over a line, in closed form.
double potentialOf(const Point<double, 3>& from, const Point<double, 3>& to, const Point<double, 3>& place) {
    const double length = norm(to - from);
    const Point<double, 3> along = (to - from) * (1 / length);
    const double start = dot(from - place, along);
    const double square = dot(from - place, from - place) - start * start;
    const auto upTo = [square](double t) { return t / (square * std::sqrt(t * t + square)); };
    return (upTo(start + length) - upTo(start)) / 2;
}

/// A projector at the origin, three metres before it a board as wide as its picture and 0.2 m high, and a wall two
/// metres further; a second projector from above lights the shadow.
class ShadowEdgesTest : public BlendDisplayTest {
protected:
    static constexpr double HALF_WIDTH = 10;  // degrees
    static constexpr double HALF_HEIGHT = 8;
    static constexpr double WALL = 5;
    static constexpr double BOARD = 3;

    static double halfAtWall(double degrees) { return WALL * std::tan(degrees * std::numbers::pi / 180); }

    /// @param slope by which the board rises to the right
    void loadBoard(double slope) {
        const auto vertex = [slope](double x, double z) {
            return "v " + std::to_string(x) + ' ' + std::to_string(BOARD) + ' ' + std::to_string(z + slope * x) + '\n';
        };
        m_folder.write("room.obj", "v -6 5 -6\nv 6 5 -6\nv 6 5 6\nv -6 5 6\n" + vertex(-3, LOWER) + vertex(3, LOWER) +
                                       vertex(3, UPPER) + vertex(-3, UPPER) + "f 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n");
        load(
            "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='room.obj'/>"
            "<ImportOrientation up='Z' forward='Y'/></Screen>",
            camera("Shadowed", {0, 0, 0}, 0, 0, HALF_WIDTH, HALF_HEIGHT) +
                camera("Above", {0, 0, 4}, 0, -38.66, 26, 16),
            "<TargetData type='ProjectorCentric'/>");
    }

    /// The edges of the shadow on the wall from side to side of the picture: seen from the origin.
    static std::vector<std::pair<P3, P3>> edges(double slope) {
        std::vector<std::pair<P3, P3>> all;
        for (const double height : {LOWER, UPPER}) {
            const auto at = [&](double x) { return P3{x, WALL, height * WALL / BOARD + slope * x}; };
            all.emplace_back(at(-halfAtWall(HALF_WIDTH)), at(halfAtWall(HALF_WIDTH)));
        }
        return all;
    }

    static constexpr double LOWER = -0.09;
    static constexpr double UPPER = 0.11;
};

// Each edge counts once and over its whole length, in small pictures as well as in large ones.
TEST_F(ShadowEdgesTest, AreThoseOfTheShadowFromSideToSide) {
    const P2 size{2 * halfAtWall(HALF_WIDTH), 2 * halfAtWall(HALF_HEIGHT)};
    for (const double slope : {0.0, 0.04, -0.04, 0.08, -0.08, 0.12, -0.12, 0.2, -0.2}) {
        loadBoard(slope);
        const auto lights =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry())
                .lights;
        for (const Point<int, 2>& pixels : {Point<int, 2>{96, 80}, Point<int, 2>{400, 320}}) {
            EdgeField field(size);
            addShadows(PlaceSampler(lights), 0, pixels, field);
            int compared = 0;
            for (int row = 0; row < 10; ++row) {
                for (int column = 0; column < 10; ++column) {
                    const P2 picture{(column + 0.5) / 10, (row + 0.5) / 10};
                    const P3 place{(picture[0] - 0.5) * size[0], WALL, (picture[1] - 0.5) * size[1]};
                    double expected = 0;
                    for (const auto& [from, to] : edges(slope)) {
                        expected += potentialOf(from, to, place);
                    }
                    constexpr double NEAR = 1 / (0.1 * 0.1);
                    if (expected < NEAR) {
                        ++compared;
                        EXPECT_NEAR(field.potential(picture, place), expected, 0.01 * expected)
                            << slope << ' ' << pixels << ' ' << picture;
                    }
                }
            }
            EXPECT_GT(compared, 50);
        }
    }
}

}  // namespace
