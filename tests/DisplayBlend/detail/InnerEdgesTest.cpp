#include "DisplayBlend/detail/InnerEdges.h"

#include "BlendDisplays.h"

#include <string>
#include <vector>

namespace {

using Veltrani::DisplayBlendDetail::addInnerSides;
using Veltrani::DisplayBlendDetail::EdgeField;
using Veltrani::DisplayBlendDetail::PlaceSampler;

class InnerEdgesTest : public BlendDisplayTest {
protected:
    struct Part {
        EdgeField::Side side;
        double from, to;
    };

    /// The parts by the potential of a field that has them, the crossings in any order.
    void expectInner(std::size_t channel, const std::vector<Part>& parts, const std::vector<P2>& crossings,
                     const Point<int, 2>& pixels = {1920, 1200}) const {
        const auto lights =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry())
                .lights;
        const P2 size{3, 2};
        EdgeField field(size);
        EdgeField expected(size);
        const std::vector<P2> found = addInnerSides(PlaceSampler(lights), channel, pixels, field);
        for (const Part& part : parts) {
            expected.addSide(part.side, part.from, part.to);
        }
        EXPECT_EQ(field.empty(), parts.empty());
        for (int i = 0; i < 81; ++i) {
            const P2 picture{(i % 9 + 0.5) / 9, (i / 9 + 0.5) / 9};  // NOLINT(bugprone-integer-division)
            const double there = expected.potential(picture, {});
            EXPECT_NEAR(field.potential(picture, {}), there, 5e-5 * there) << channel << ' ' << picture;
        }
        std::vector<testing::Matcher<P2>> near;
        for (const P2& crossing : crossings) {
            near.push_back(
                testing::ResultOf([crossing](const P2& each) { return norm(each - crossing); }, testing::Lt(1e-5)));
        }
        EXPECT_THAT(found, testing::UnorderedElementsAreArray(near));
    }
};

/// From the crossing of two outlines to the corner, on each of the four sides; of a picture of a few pixels as well.
TEST_F(InnerEdgesTest, ReachFromACrossingToTheCorner) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 0.8) + area("B", 0.4, 1, 0.2, 1));
    for (const Point<int, 2>& pixels : {Point<int, 2>{1920, 1200}, Point<int, 2>{4, 4}}) {
        expectInner(0, {{EdgeField::RIGHT, 0.25, 1}, {EdgeField::TOP, 2.0 / 3, 1}}, {{1, 0.25}, {2.0 / 3, 1}}, pixels);
        expectInner(1, {{EdgeField::LEFT, 0, 0.75}, {EdgeField::BOTTOM, 0, 1.0 / 3}}, {{0, 0.75}, {1.0 / 3, 0}},
                    pixels);
    }
}

/// A side that lies inside another picture as a whole ends at no crossing; edges that coincide lie inside none.
TEST_F(InnerEdgesTest, AreWholeSidesWithoutCrossings) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1));
    expectInner(0, {{EdgeField::RIGHT, 0, 1}}, {});
    expectInner(1, {{EdgeField::LEFT, 0, 1}}, {});
    load(displays::FLAT, area("Wide", 0, 1, 0, 1) + area("Inset", 0.4, 0.6, 0.4, 0.6));
    expectInner(0, {}, {});
    expectInner(
        1, {{EdgeField::LEFT, 0, 1}, {EdgeField::RIGHT, 0, 1}, {EdgeField::BOTTOM, 0, 1}, {EdgeField::TOP, 0, 1}}, {});
}

/// Several pieces of one side, each between two crossings.
TEST_F(InnerEdgesTest, AreEveryPieceOfASide) {
    load(displays::FLAT, area("Middle", 0.3, 0.7, 0.3, 0.7) + area("L", 0, 0.4, 0.35, 0.45) +
                             area("R1", 0.6, 1, 0.5, 0.6) + area("R2", 0.65, 1, 0.62, 0.66) +
                             area("B", 0.4, 0.5, 0, 0.34) + area("T", 0.35, 0.42, 0.6, 1));
    expectInner(
        0,
        {{EdgeField::LEFT, 0.125, 0.375},
         {EdgeField::RIGHT, 0.5, 0.75},
         {EdgeField::RIGHT, 0.8, 0.9},
         {EdgeField::BOTTOM, 0.25, 0.5},
         {EdgeField::TOP, 0.125, 0.3}},
        {{0, 0.125}, {0, 0.375}, {1, 0.5}, {1, 0.75}, {1, 0.8}, {1, 0.9}, {0.25, 0}, {0.5, 0}, {0.125, 1}, {0.3, 1}});
}

/// Where the edge of the other picture is that of the screen, no outline goes on.
TEST_F(InnerEdgesTest, EndAtTheScreenWithoutACrossing) {
    load(displays::FLAT, area("A", 0.2, 0.6, -0.25, 0.75) + area("B", 0.4, 1, 0, 1));
    // The right side of A lies beside the screen up to a quarter of it, its bottom as a whole.
    expectInner(0, {{EdgeField::RIGHT, 0.25, 1}, {EdgeField::TOP, 0.5, 1}}, {{0.5, 1}});
}

}  // namespace
