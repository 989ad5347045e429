#include "DisplayFit/detail/LensFormula.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Kind = LensFormula::Kind;
using Vector = Point<double, 3>;

const std::vector<LensFormula>& formulas() {
    static const std::vector<LensFormula> all{
        {Kind::RECTILINEAR, {}},
        {Kind::EQUIDISTANT, {}},
        {Kind::BROWN_CONRADY, {-0.14, 0.08, 4e-3, -3e-3, -0.02}},
        {Kind::BROWN_CONRADY, {0.3, -0.12, 4e-3, -3e-3, 0.05, 0.45, -0.08, 0.03, 1e-2, -2e-2, 5e-3, 1e-2}},
        {Kind::FISHEYE, {0.03, -0.01, 4e-3, -1e-3}}};
    return all;
}

/// A place depends on the direction of a ray alone: the derivative along the ray is zero.
TEST(LensFormula, PlacesAndDerivativesKnowNoLength) {
    for (const LensFormula& formula : formulas()) {
        for (const Vector& ray : {Vector{0, 1, 0}, Vector{0.3, 1, -0.2}, Vector{-0.4, 1, 0.5}}) {
            LensFormula::Place place;
            LensFormula::Place far;
            ASSERT_TRUE(formula.place(ray, place) && formula.place(ray * 7.0, far));
            EXPECT_NEAR(place.a, far.a, 1e-15);
            EXPECT_NEAR(place.b, far.b, 1e-15);
            const auto along = [&](const std::array<double, 3>& slope) {
                return slope[0] * ray[0] + slope[1] * ray[1] + slope[2] * ray[2];
            };
            EXPECT_NEAR(along(place.aByRay), 0, 1e-14);
            EXPECT_NEAR(along(place.bByRay), 0, 1e-14);
        }
    }
}

TEST(LensFormula, TangentsLeadBackToThePlace) {
    for (const LensFormula& formula : formulas()) {
        for (const Vector& ray : {Vector{0, 1, 0}, Vector{0.3, 1, -0.2}, Vector{-0.4, 1, 0.45}}) {
            LensFormula::Place place;
            Point<double, 2> tangents;
            ASSERT_TRUE(formula.place(ray, place));
            ASSERT_TRUE(formula.tangentsOf({place.a, place.b}, tangents));
            EXPECT_NEAR(tangents[0], ray[0], 1e-11);
            EXPECT_NEAR(tangents[1], ray[2], 1e-11);
        }
    }
}

TEST(LensFormula, NothingIsShownFromBehind) {
    LensFormula::Place place;
    for (const LensFormula& formula : formulas()) {
        EXPECT_FALSE(formula.place({0, -1, 0}, place));
        EXPECT_EQ(formula.place({0.5, -0.1, 0.1}, place), formula.kind() == Kind::FISHEYE);
    }
}

TEST(LensFormula, CoefficientsThatAreAddedAreZero) {
    const LensFormula five(Kind::BROWN_CONRADY, {0.3, -0.12, 4e-4, -3e-4, 0.05});
    const LensFormula eight = five.withCoefficients(8);
    EXPECT_EQ(eight.coefficients(), 8U);
    EXPECT_EQ(eight.coefficient(4), 0.05);
    EXPECT_EQ(eight.coefficient(7), 0);
    EXPECT_EQ(eight.withCoefficients(4).coefficients(), 4U);
    EXPECT_EQ(eight.withCoefficients(4).coefficient(4), 0) << "what is left out has no effect";
}

/// Near the axis the fisheye's formula is a quotient of two zeros.
TEST(LensFormula, AFisheyeIsSmoothAtItsAxis) {
    const LensFormula& fisheye = formulas().back();
    LensFormula::Place axis;
    LensFormula::Place beside;
    ASSERT_TRUE(fisheye.place({0, 2, 0}, axis));
    ASSERT_TRUE(fisheye.place({1e-7, 2, 0}, beside));
    EXPECT_NEAR(axis.aByRay[0], beside.aByRay[0], 1e-9);
    EXPECT_NEAR(axis.bByRay[2], beside.bByRay[2], 1e-9);
    EXPECT_NEAR(axis.aByRay[1], beside.aByRay[1], 1e-7);
}

}  // namespace
