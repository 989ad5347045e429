#include "DisplayBlend/detail/EdgeField.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Veltrani::DisplayBlendDetail::EdgeField;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Half the integral of ds / r^3 over a line, by the rule of the middle.
double integral(const P3& from, const P3& to, const P3& place) {
    constexpr int PIECES = 200'000;
    const double step = norm(to - from) / PIECES;
    double sum = 0;
    for (int i = 0; i < PIECES; ++i) {
        const double r = norm(from + (to - from) * ((i + 0.5) / PIECES) - place);
        sum += step / (r * r * r);
    }
    return sum / 2;
}

TEST(EdgeFieldTest, SidesAreIntegralsOverTheirParts) {
    EdgeField field({4, 2});
    field.addSide(EdgeField::RIGHT, 0.25, 1);
    field.addSide(EdgeField::BOTTOM, 0, 0.5);
    for (const P2& picture : {P2{0.5, 0.5}, P2{0.9, 0.9}, P2{0.99, 0.1}, P2{0.75, 0.02}, P2{0.2, 0.3}, P2{0.5, 0.9}}) {
        const P3 place{4 * picture[0], 2 * picture[1], 0};
        const double expected = integral({4, 0.5, 0}, {4, 2, 0}, place) + integral({0, 0, 0}, {2, 0, 0}, place);
        EXPECT_NEAR(field.potential(picture, {}) / expected, 1, 1e-6) << picture[0] << ' ' << picture[1];
    }
}

TEST(EdgeFieldTest, ShadowsAreIntegralsInSpace) {
    EdgeField field({4, 2});
    field.addShadow({1, 2, 3}, {2, 2, 5});
    EXPECT_TRUE(field.hasShadows());
    for (const P3& place : {P3{0, 0, 0}, P3{1.5, 2.1, 4}, P3{3, 2, 7}, P3{0.5, 2, 2.001}}) {
        EXPECT_NEAR(field.potential({0.5, 0.5}, place) / integral({1, 2, 3}, {2, 2, 5}, place), 1, 1e-6);
    }
}

TEST(EdgeFieldTest, NextToALineTheDistanceCounts) {
    EdgeField field({1, 1});
    field.addSide(EdgeField::LEFT, 0, 1);
    EXPECT_NEAR(field.potential({1e-4, 0.5}, {}) * 1e-8, 1, 1e-6);
    EXPECT_EQ(field.potential({0, 0.5}, {}), std::numeric_limits<double>::infinity());
}

// On the line that a part lies on, beside the part: 1 / (4 t^2) between its ends' distances t.
TEST(EdgeFieldTest, BeyondTheEndOfAPartItIsFinite) {
    EdgeField field({1, 1});
    field.addSide(EdgeField::LEFT, 0.5, 1);
    const double expected = (1 / (0.25 * 0.25) - 1 / (0.75 * 0.75)) / 4;
    EXPECT_NEAR(field.potential({0, 0.25}, {}), expected, 1e-12);
    EXPECT_NEAR(field.potential({1e-9, 0.25}, {}), expected, 1e-12);
    EXPECT_EQ(field.potential({0, 0.5}, {}), std::numeric_limits<double>::infinity());
}

TEST(EdgeFieldTest, WithoutPartsThereIsNone) {
    EdgeField field({1, 1});
    EXPECT_TRUE(field.empty());
    field.addSide(EdgeField::TOP, 0.5, 0.5);
    field.addShadow({1, 1, 1}, {1, 1, 1});
    EXPECT_TRUE(field.empty());
    EXPECT_EQ(field.potential({0, 0}, {}), 0);
}

}  // namespace
