#include "DisplayFit/detail/Determination.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace {

using Veltrani::DisplayFit::FittedValue;
using Veltrani::DisplayFit::WorstCombination;
using Veltrani::DisplayFitDetail::Determination;
using Veltrani::DisplayFitDetail::Unknown;
using Role = Unknown::Role;

std::vector<Unknown> unknownsOf(const std::vector<Role>& roles) {
    std::vector<Unknown> unknowns;
    for (const Role role : roles) {
        unknowns.push_back(
            {role, std::string(1, static_cast<char>('a' + unknowns.size())), FittedValue::Quantity::LENGTH});
    }
    return unknowns;
}

/// I - v v^T / v^2 and a little: the direction v is hardly determined. Its columns have the lengths
/// sqrt(1 - v_i^2 / v^2), by which v is scaled where they are 1.
std::vector<double> allBut(const std::vector<double>& v, double little = 1e-5) {
    double square = 0;
    for (const double part : v) {
        square += part * part;
    }
    std::vector<double> matrix;
    for (std::size_t r = 0; r < v.size(); ++r) {
        for (std::size_t c = 0; c < v.size(); ++c) {
            matrix.push_back((r == c ? 1 : 0) - (1 - little) * v[r] * v[c] / square);
        }
    }
    return matrix;
}

// Oracle: (R^T R)^-1 of 2 x 2, by hand.
TEST(Determination, TheCovarianceIsTheInverseOfTheSquares) {
    const std::vector<Unknown> unknowns = unknownsOf({Role::TILT, Role::ROLL});
    const Determination determination(unknowns, {2, 1, 0, 4}, 3);
    // R^T R = (4, 2; 2, 17), its determinant is 64.
    const std::vector<double>& covariance = determination.covariance();
    ASSERT_EQ(covariance.size(), 4U);
    EXPECT_NEAR(covariance[0], 9 * 17 / 64.0, 1e-13);
    EXPECT_NEAR(covariance[1], -9 * 2 / 64.0, 1e-13);
    EXPECT_NEAR(covariance[2], -9 * 2 / 64.0, 1e-13);
    EXPECT_NEAR(covariance[3], 9 * 4 / 64.0, 1e-13);
    EXPECT_FALSE(determination.isSingular());
    EXPECT_FALSE(determination.isDoubtful());
}

// Of two columns with the cosine c between them the singular values are sqrt(1 + c) and sqrt(1 - c).
TEST(Determination, TheWorstCombinationOfTwoIsTheirDifference) {
    const std::vector<Unknown> unknowns = unknownsOf({Role::TILT, Role::ROLL});
    const Determination determination(unknowns, {10, 0.6, 0, 0.8}, 0.5);
    const WorstCombination& worst = determination.worst();
    EXPECT_NEAR(worst.scaledCondition, std::sqrt(1.6 / 0.4), 1e-13);
    ASSERT_EQ(worst.weights.size(), 2U);
    EXPECT_NEAR(std::abs(worst.weights[0]), std::sqrt(0.5), 1e-13);
    EXPECT_NEAR(worst.weights[1], -worst.weights[0], 1e-13);
    EXPECT_EQ(worst.solvedNames, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(worst.quantity, FittedValue::Quantity::LENGTH);
    // Along it: of a, whose column is ten times as long, a tenth of what it is of b.
    const double scaled = 0.5 * std::sqrt(0.5) / std::sqrt(0.4);
    EXPECT_NEAR(worst.deviation, worst.deviatingName == "a" ? scaled / 10 : scaled, 1e-13);
}

TEST(Determination, AFunctionOwesItsVarianceToOneOfThem) {
    const std::vector<Unknown> unknowns = unknownsOf({Role::AREA, Role::AREA, Role::AREA});
    // Long columns: the variances are small. c is determined apart from the others, a and b hardly.
    const Determination determination(unknowns, {1000, 999, 0, 0, 20, 0, 0, 0, 500}, 1);
    EXPECT_EQ(determination.worstFor({0, 0, 1}).text, "c");
    EXPECT_EQ(determination.worstFor({1, 0, 0}).text.size(), std::string("a and b").size());
    EXPECT_EQ(determination.worstFor({0, 0, 1}).scaledCondition, determination.worst().scaledCondition);
    EXPECT_NEAR(determination.worstFor({0, 0, 1}).deviation, 1 / 500.0, 1e-15);
    // The sum of a and b is determined by the long columns, their difference is not.
    const auto sum = determination.worstFor({1000, 999, 0}).weights;
    EXPECT_GT(sum[0] * sum[1], 0);
    const auto difference = determination.worstFor({1000, -999, 0}).weights;
    EXPECT_LT(difference[0] * difference[1], 0);
}

TEST(Determination, NoMoreThanFourAreNamedAndNoneThatHardlyTakesPart) {
    const std::vector<Unknown> six = unknownsOf(std::vector<Role>(6, Role::TILT));
    EXPECT_EQ(Determination(six, allBut({0.9, 0, 0, 0.1, 0, 0.85}), 1).worst().text.size(),
              std::string("a and f").size());
    EXPECT_EQ(Determination(six, allBut({0, 0.55, 0.6, 0, 0.5, 0}), 1).worst().text, "c, b and e");
    EXPECT_EQ(Determination(six, allBut({0.52, 0.5, 0.48, 0.46, 0.44, 0}), 1).worst().text, "a, b, c and d");
    EXPECT_EQ(Determination(six, allBut({0, 0, 0.1, 0.62, 0.55, 0}), 1).worst().text, "d and e");
}

TEST(Determination, WhatIsHardlyDeterminedIsDoubtfulAndThenSingular) {
    const std::vector<Unknown> unknowns = unknownsOf({Role::TILT, Role::ROLL});
    // The condition is about 2 / little.
    const auto of = [&unknowns](double little) { return Determination(unknowns, {1, 1, 0, little}, 1); };
    EXPECT_FALSE(of(1e-5).isDoubtful());
    EXPECT_TRUE(of(1e-7).isDoubtful());
    EXPECT_FALSE(of(1e-7).isSingular());
    EXPECT_FALSE(of(1e-7).covariance().empty());
    EXPECT_TRUE(of(1e-12).isSingular());
    EXPECT_TRUE(of(0).isSingular());
    EXPECT_TRUE(of(0).covariance().empty());
    EXPECT_EQ(of(0).worst().text, "a and b");
}

TEST(Determination, WithoutATriangleNothingIsDetermined) {
    const std::vector<Unknown> unknowns = unknownsOf({Role::TILT, Role::ROLL});
    const Determination none(unknowns, {}, 1);
    EXPECT_TRUE(none.isSingular());
    EXPECT_TRUE(none.isDoubtful());
    EXPECT_EQ(none.worst().solvedNames.size(), 2U);
    EXPECT_TRUE(none.worstFor({1, 0}).text.empty());
    EXPECT_TRUE(Determination({}, {}, 1).isSingular());
}

TEST(Determination, TheRemedyFollowsFromWhatTakesPart) {
    const auto remedyOf = [](Role one, Role other) {
        const std::vector<Unknown> unknowns = unknownsOf({one, other});
        return Determination(unknowns, {1, 1, 0, 0.1}, 1).worst().remedy;
    };
    EXPECT_EQ(remedyOf(Role::ALONG, Role::WIDTH), "add points at another depth");
    EXPECT_EQ(remedyOf(Role::HEIGHT, Role::ALONG), "add points at another depth");
    for (const Role role : {Role::ACROSS, Role::UPWARDS, Role::ALONG}) {
        EXPECT_EQ(remedyOf(role, Role::TILT), "add points at another depth and towards the edges of the picture");
        EXPECT_EQ(remedyOf(Role::LENS, role), "add points at another depth and towards the edges of the picture");
    }
    EXPECT_EQ(remedyOf(Role::LENS, Role::WIDTH),
              "add points towards the edges and corners of the picture, or hold the coefficients of the lens");
    EXPECT_EQ(remedyOf(Role::AREA, Role::AREA), "add points at other places of the picture");
    EXPECT_EQ(remedyOf(Role::HEADING, Role::SHIFT_U),
              "add points towards the edges of the picture, or hold one of these values");
}

}  // namespace
