#include "DisplayFit/detail/ChannelSolver.h"

#include "StatedModel.h"

#include <gtest/gtest.h>
#include <Eigen/Cholesky>
#include <Eigen/Core>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::DisplayFit::FitOptions;

constexpr double NOISE = 0.5;

/// Two unknowns, 3 and -2, by many points with noise.
StatedModel noisyModel(std::size_t points = 60) {
    StatedModel model(2, points);
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    for (StatedModel::Stated& stated : model.stated) {
        stated.rows = {normal(random), normal(random), normal(random), normal(random)};
        for (std::size_t r = 0; r < 2; ++r) {
            stated.pair[r] = NOISE * normal(random) - 3 * stated.rows[2 * r] + 2 * stated.rows[2 * r + 1];
        }
    }
    return model;
}

struct Expected {
    Eigen::Vector2d values;
    Eigen::Matrix2d squares;
    double cost = 0;
};

/// The normal equations of some points, written out.
Expected expectedOf(const StatedModel& model, const std::vector<bool>& leftOut) {
    Eigen::Matrix2d normal = Eigen::Matrix2d::Zero();
    Eigen::Vector2d gradient = Eigen::Vector2d::Zero();
    double squares = 0;
    for (std::size_t i = 0; i < model.stated.size(); ++i) {
        for (std::size_t r = 0; r < 2 && !leftOut[i]; ++r) {
            const Eigen::Vector2d row(model.stated[i].rows[2 * r], model.stated[i].rows[2 * r + 1]);
            normal += row * row.transpose();
            gradient += row * model.stated[i].pair[r];
            squares += model.stated[i].pair[r] * model.stated[i].pair[r];
        }
    }
    const Eigen::Vector2d values = -normal.llt().solve(gradient);
    return {values, normal, squares + gradient.dot(values)};
}

void expectSolved(const Solution& solution, const StatedModel& model, const Expected& expected, std::size_t inliers) {
    ASSERT_TRUE(solution.isSolved);
    EXPECT_FALSE(solution.isHopeless);
    EXPECT_EQ(solution.inliers, inliers);
    EXPECT_NEAR(model.base[0], expected.values[0], 1e-9);
    EXPECT_NEAR(model.base[1], expected.values[1], 1e-9);
    EXPECT_NEAR(solution.cost, expected.cost, 1e-9 * expected.cost);
    EXPECT_NEAR(solution.deviation, std::sqrt(expected.cost / (2 * static_cast<double>(inliers) - 2)), 1e-9);
    EXPECT_GT(solution.steps, 0);
    const std::vector<double>& r = solution.triangle;
    ASSERT_EQ(r.size(), 4U);
    EXPECT_NEAR(r[0] * r[0], expected.squares(0, 0), 1e-9 * expected.squares(0, 0));
    EXPECT_NEAR(r[0] * r[1], expected.squares(0, 1), 1e-9 * expected.squares(0, 0));
    EXPECT_NEAR(r[1] * r[1] + r[3] * r[3], expected.squares(1, 1), 1e-9 * expected.squares(1, 1));
}

TEST(ChannelSolver, TheDeviationOfHalfOfThePairsIsThatOfANormalNumber) {
    EXPECT_EQ(typicalDeviation({}), 0);
    // Half of the pairs of two normal numbers are shorter than sqrt(2 ln 2).
    EXPECT_NEAR(typicalDeviation({9, 1, 3}), 3 / std::sqrt(2 * std::log(2.0)), 1e-12);
    EXPECT_EQ(typicalDeviation({1, std::numeric_limits<double>::infinity()}), std::numeric_limits<double>::infinity());
}

// Oracle: the normal equations of all points, and of those that are sound.
TEST(ChannelSolver, FindsTheLeastSquaresOfThePointsThatAreSound) {
    StatedModel model = noisyModel();
    const std::vector<bool> none(60, false);
    const Expected ofAll = expectedOf(model, none);
    const Solution clean = ChannelSolver({}).solve(model);
    expectSolved(clean, model, ofAll, 60);
    EXPECT_EQ(clean.isOutlier, none);
    std::vector<double> sizes = clean.sizes;
    EXPECT_EQ(clean.typicalSize, typicalDeviation(sizes));
    EXPECT_NEAR(clean.typicalSize, NOISE, 0.1);

    model = noisyModel();
    std::vector<bool> wrong(60, false);
    for (const std::size_t i : {5U, 17U, 40U, 41U}) {
        wrong[i] = true;
        model.stated[i].pair[i % 2] += i % 4 == 0 ? -40 : 15;
    }
    const Expected ofSound = expectedOf(model, wrong);
    const Expected ofEvery = expectedOf(model, none);
    const Solution robust = ChannelSolver({}).solve(model);
    expectSolved(robust, model, ofSound, 56);
    EXPECT_EQ(robust.isOutlier, wrong);
    EXPECT_GT(robust.sizes[40], 30) << "they have their sizes";

    model = noisyModel();
    for (const std::size_t i : {5U, 17U, 40U, 41U}) {
        model.stated[i].pair[i % 2] += i % 4 == 0 ? -40 : 15;
    }
    FitOptions plain;
    plain.isRobust = false;
    expectSolved(ChannelSolver(plain).solve(model), model, ofEvery, 60);
}

TEST(ChannelSolver, StatedDeviationsSayWhatIsFarOff) {
    StatedModel model = noisyModel();
    model.given.covariance.resize(60);
    for (StatedModel::Stated& stated : model.stated) {
        stated.spread = {16, 0, 16};
    }
    // Fifteen are four deviations: as they are stated, one in fifteen thousand pairs is longer than 4.4.
    model.stated[7].pair[0] += 15;
    model.stated[9].pair[0] += 25;
    const Solution solution = ChannelSolver({}).solve(model);
    ASSERT_TRUE(solution.isSolved);
    EXPECT_FALSE(solution.isOutlier[7]);
    EXPECT_TRUE(solution.isOutlier[9]);
    EXPECT_NEAR(solution.sizes[9], 25 / 4.0, 0.5);
}

TEST(ChannelSolver, WhatIsExactIsSolvedToRounding) {
    StatedModel model = noisyModel();
    for (StatedModel::Stated& stated : model.stated) {
        for (std::size_t r = 0; r < 2; ++r) {
            stated.pair[r] = -3 * stated.rows[2 * r] + 2 * stated.rows[2 * r + 1];
        }
    }
    model.stated[4].pair[0] += 1e-3;
    const Solution solution = ChannelSolver({}).solve(model);
    ASSERT_TRUE(solution.isSolved);
    EXPECT_NEAR(model.base[0], 3, 1e-13);
    EXPECT_NEAR(model.base[1], -2, 1e-13);
    EXPECT_TRUE(solution.isOutlier[4]);
    EXPECT_EQ(solution.inliers, 59U);
}

TEST(ChannelSolver, PointsThatAreNotMappedTakeNoPartWhereOthersAreMany) {
    StatedModel model = noisyModel();
    std::vector<bool> unmapped(60, false);
    for (std::size_t i = 0; i < 10; ++i) {
        unmapped[6 * i] = true;
        model.stated[6 * i].isMapped = false;
    }
    const Expected expected = expectedOf(model, unmapped);
    const Solution solution = ChannelSolver({}).solve(model);
    expectSolved(solution, model, expected, 50);
    EXPECT_EQ(solution.isOutlier, unmapped);

    for (std::size_t i = 0; i < 60; ++i) {
        model.stated[i].isMapped = i >= 31;
    }
    const std::vector<double> before = model.base;
    const Solution none = ChannelSolver({}).solve(model);
    EXPECT_FALSE(none.isSolved);
    EXPECT_EQ(none.typicalSize, std::numeric_limits<double>::infinity());
    EXPECT_EQ(model.base, before);
    // Without a loss, too, where fewer numbers are left than are to be found.
    FitOptions plain;
    plain.isRobust = false;
    StatedModel few = noisyModel(3);
    few.stated[0].isMapped = few.stated[1].isMapped = few.stated[2].isMapped = false;
    EXPECT_FALSE(ChannelSolver(plain).solve(few).isSolved);
    few.stated[2].isMapped = true;
    const Solution exact = ChannelSolver(plain).solve(few);
    EXPECT_TRUE(exact.isSolved);
    EXPECT_EQ(exact.inliers, 1U);
    EXPECT_EQ(exact.deviation, 0) << "two numbers for two unknowns leave nothing to estimate it from";
}

/// Its residuals are numbers, but how they change with the unknowns is not.
class WithoutSlopes : public StatedModel {
public:
    using StatedModel::StatedModel;
    explicit WithoutSlopes(const StatedModel& other) : StatedModel(other) {}
    void evaluate(const double* step, std::size_t first, std::size_t count, double* residuals, double* jacobian,
                  bool* isMapped) const override {
        StatedModel::evaluate(step, first, count, residuals, jacobian, isMapped);
        if (jacobian != nullptr) {
            std::fill(jacobian, jacobian + 2 * count * all.size(), std::numeric_limits<double>::quiet_NaN());
        }
    }
};

TEST(ChannelSolver, WhatCannotBeMinimisedIsNotSolved) {
    for (const bool isRobust : {true, false}) {
        WithoutSlopes model(noisyModel());
        FitOptions options;
        options.isRobust = isRobust;
        const Solution solution = ChannelSolver(options).solve(model);
        EXPECT_FALSE(solution.isSolved);
        EXPECT_EQ(solution.typicalSize, std::numeric_limits<double>::infinity());
        EXPECT_EQ(model.base, (std::vector<double>{0, 0})) << "the base stays";
    }
}

TEST(ChannelSolver, WhatLiesFarOffIsHopeless) {
    StatedModel model = noisyModel();
    // A twentieth of the extent, as a typical deviation.
    model.width = 20 * NOISE * 1.3;
    EXPECT_FALSE(ChannelSolver({}).solve(model).isHopeless);
    model = noisyModel();
    model.width = 20 * NOISE * 0.7;
    EXPECT_TRUE(ChannelSolver({}).solve(model).isHopeless);
}

TEST(ChannelSolver, ATriangleWithoutSomePointsIsThatOfTheOthers) {
    const StatedModel model = noisyModel();
    std::vector<bool> leftOut(60, false);
    leftOut[3] = leftOut[50] = true;
    const Expected expected = expectedOf(model, leftOut);
    const std::vector<double> r = ChannelSolver::triangleOf(model, leftOut);
    ASSERT_EQ(r.size(), 4U);
    EXPECT_NEAR(r[0] * r[0], expected.squares(0, 0), 1e-9);
    EXPECT_NEAR(r[1] * r[1] + r[3] * r[3], expected.squares(1, 1), 1e-9);
    StatedModel unmapped = noisyModel();
    unmapped.stated[4].isMapped = false;
    EXPECT_TRUE(ChannelSolver::triangleOf(unmapped, leftOut).empty());
}

}  // namespace
