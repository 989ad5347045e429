#include "DisplayReport/scene/SceneSurface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;
using Edge = SceneSurface::Edge;

TEST(SceneSurface, TheBorderOfASquareIsItsFourSides) {
    const auto border = borderOf({{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}}, {{0, 1, 2}, {0, 2, 3}});
    EXPECT_THAT(border, UnorderedElementsAre(Edge{0, 1}, Edge{1, 2}, Edge{2, 3}, Edge{0, 3}));
}

TEST(SceneSurface, ASeamOfVerticesAtTheSamePlaceIsNoBorder) {
    // Two triangles that share a side of vertices of their own, a rounding apart.
    const auto border =
        borderOf({{0, 0, 0}, {1, 0, 0}, {0, 0, 1}, {1, 1e-16, 0}, {1, 0, 1}, {0, 0, 1}}, {{0, 1, 2}, {3, 4, 5}});
    EXPECT_THAT(border, UnorderedElementsAre(Edge{0, 1}, Edge{0, 2}, Edge{1, 4}, Edge{2, 4}));
}

TEST(SceneSurface, AClosedSurfaceHasNoBorder) {
    EXPECT_THAT(borderOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 2}, {0, 1, 3}, {1, 2, 3}, {0, 2, 3}}),
                IsEmpty());
    EXPECT_THAT(borderOf({}, {}), IsEmpty());
}

TEST(SceneSurface, VerticesAtTheSamePlaceAreTheFirstOfThem) {
    EXPECT_THAT(weldedVertices({{0, 0, 0}, {1, 0, 0}, {0, 1e-16, 0}, {1, 0, 0}, {0, 1, 0}}),
                ElementsAre(0, 1, 0, 1, 4));
    EXPECT_THAT(weldedVertices({}), IsEmpty());
    EXPECT_THAT(weldedVertices({{1e9, 1e9, 1e9}, {1e9, 1e9, 1e9}}), ElementsAre(0, 0));
}

TEST(SceneSurface, AnEdgeOfThreeTrianglesIsNoBorder) {
    const auto border =
        borderOf({{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}}, {{0, 1, 2}, {0, 1, 3}, {0, 1, 4}});
    EXPECT_EQ(border.size(), 6U);
    EXPECT_THAT(border, Not(Contains(Edge{0, 1})));
}

}  // namespace
