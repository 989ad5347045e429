#include "DisplayFit/detail/WeightedProblem.h"

#include "StatedModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;

/// Three points of two unknowns; the one in the middle may be changed.
StatedModel threePoints() {
    StatedModel model(2, 3);
    model.stated[0].pair = {0.5, -1};
    model.stated[1].pair = {3, 4};
    model.stated[2].pair = {-2, 1};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto number = static_cast<double>(i);
        model.stated[i].rows = {1 + number, -0.5, 0.25 * number, 2};
    }
    return model;
}

struct Evaluated {
    std::vector<double> residuals;
    std::vector<double> jacobian;
    bool isSound = false;
};

Evaluated evaluatedAt(const WeightedProblem& problem, const std::vector<double>& step) {
    Evaluated all;
    all.residuals.assign(problem.residuals(), -7);
    all.jacobian.assign(problem.residuals() * problem.unknowns(), -7);
    all.isSound = problem.evaluate(step.data(), 0, problem.residuals(), all.residuals.data(), all.jacobian.data());
    return all;
}

void expectDerivatives(const WeightedProblem& problem, const std::vector<double>& step) {
    constexpr double WIDTH = 1e-5;
    const Evaluated here = evaluatedAt(problem, step);
    for (std::size_t k = 0; k < step.size(); ++k) {
        std::vector<double> ahead = step;
        std::vector<double> behind = step;
        ahead[k] += WIDTH;
        behind[k] -= WIDTH;
        const Evaluated there = evaluatedAt(problem, ahead);
        const Evaluated before = evaluatedAt(problem, behind);
        for (std::size_t r = 0; r < here.residuals.size(); ++r) {
            const double slope = (there.residuals[r] - before.residuals[r]) / (2 * WIDTH);
            EXPECT_NEAR(here.jacobian[r * step.size() + k], slope, 1e-7 * (1 + std::abs(slope))) << r << ", " << k;
        }
    }
}

TEST(WeightedProblem, WithoutDeviationsResidualsAreThoseOfTheModel) {
    const StatedModel model = threePoints();
    const WeightedProblem problem(model);
    EXPECT_EQ(problem.unknowns(), 2U);
    EXPECT_EQ(problem.residuals(), 6U);
    const Evaluated here = evaluatedAt(problem, {0, 0});
    EXPECT_TRUE(here.isSound);
    EXPECT_EQ(here.residuals, (std::vector<double>{0.5, -1, 3, 4, -2, 1}));
    expectDerivatives(problem, {0.1, -0.2});
    EXPECT_EQ(problem.sizes(), (std::vector<double>{std::hypot(0.5, 1), 5, std::hypot(2, 1)}));
}

TEST(WeightedProblem, SomeResidualsAreThoseOfTheSamePointsAmongAll) {
    StatedModel model = threePoints();
    model.given.pictureDeviation.resize(3);
    for (std::size_t i = 0; i < 3; ++i) {
        model.stated[i].spread = {1.0 + static_cast<double>(i), 0.5, 2};
    }
    WeightedProblem problem(model);
    problem.setLeftOut({true, false, false});
    const Evaluated all = evaluatedAt(problem, {0, 0});
    std::vector<double> some(2);
    std::vector<double> rows(4);
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_TRUE(problem.evaluate(std::vector<double>{0, 0}.data(), 2 * i, 2, some.data(), rows.data()));
        EXPECT_EQ(some, std::vector<double>(&all.residuals[2 * i], &all.residuals[2 * i] + 2));
        EXPECT_EQ(rows, std::vector<double>(&all.jacobian[4 * i], &all.jacobian[4 * i] + 4));
    }
}

// Oracle: the square of a pair by the inverse of its spread, by hand.
TEST(WeightedProblem, StatedDeviationsMakePairsOfDeviationOne) {
    StatedModel model = threePoints();
    model.given.covariance.resize(3);
    for (StatedModel::Stated& stated : model.stated) {
        stated.spread = {4, 2, 10};
    }
    const WeightedProblem problem(model);
    const Evaluated here = evaluatedAt(problem, {0, 0});
    // The inverse of (4, 2; 2, 10) is (10, -2; -2, 4) / 36.
    const double square = (10 * 9 - 2 * 2 * 12 + 4 * 16) / 36.0;
    EXPECT_NEAR(here.residuals[2] * here.residuals[2] + here.residuals[3] * here.residuals[3], square, 1e-13);
    EXPECT_EQ(here.residuals[2], 1.5) << "the first of a pair is divided by its own deviation";
    EXPECT_NEAR(problem.sizes()[1], std::sqrt(square), 1e-13);
    expectDerivatives(problem, {0.1, -0.2});
    EXPECT_EQ(evaluatedAt(WeightedProblem(model, false), {0, 0}).residuals[3], 4) << "as they are";
    std::vector<double> pair(2);
    std::vector<double> rows(4);
    ASSERT_TRUE(problem.rowsOf(1, pair.data(), rows.data()));
    EXPECT_EQ(pair, std::vector<double>(&here.residuals[2], &here.residuals[2] + 2));
    EXPECT_EQ(rows, std::vector<double>(&here.jacobian[4], &here.jacobian[4] + 4));
}

TEST(WeightedProblem, WeightsAreTakenAnewWhereTheModelMoved) {
    StatedModel model = threePoints();
    model.given.covariance.resize(3);
    for (StatedModel::Stated& stated : model.stated) {
        stated.spread = {1, 0, 1};
    }
    WeightedProblem problem(model);
    for (StatedModel::Stated& stated : model.stated) {
        stated.spread = {4, 0, 4};
    }
    EXPECT_EQ(problem.sizes()[1], 5);
    problem.weigh();
    EXPECT_EQ(problem.sizes()[1], 2.5);
}

TEST(WeightedProblem, WhatNoDeviationSpreadsWeighsNothing) {
    for (const std::optional<Spread>& spread :
         {std::optional<Spread>(), std::optional(Spread{0, 0, 1}), std::optional(Spread{1, 0, 0})}) {
        StatedModel model = threePoints();
        model.given.covariance.resize(3);
        for (StatedModel::Stated& stated : model.stated) {
            stated.spread = {1, 0, 1};
        }
        model.stated[1].spread = spread;
        const WeightedProblem problem(model);
        EXPECT_EQ(evaluatedAt(problem, {0, 0}).residuals, (std::vector<double>{0.5, -1, 0, 0, -2, 1}));
        EXPECT_EQ(problem.sizes()[1], std::numeric_limits<double>::infinity());
        EXPECT_EQ(problem.sizes()[2], std::hypot(2, 1));
    }
}

TEST(WeightedProblem, ThePlainSquareOfAPairIsItsLoss) {
    const StatedModel model = threePoints();
    WeightedProblem problem(model);
    for (const double width : {2.0, 0.1, 1e4}) {
        problem.setLoss(width);
        const Evaluated here = evaluatedAt(problem, {0, 0});
        for (std::size_t i = 0; i < 3; ++i) {
            const double square = std::pow(model.stated[i].pair[0], 2) + std::pow(model.stated[i].pair[1], 2);
            const double loss = width * width * std::log1p(square / (width * width));
            const double found = std::pow(here.residuals[2 * i], 2) + std::pow(here.residuals[2 * i + 1], 2);
            EXPECT_NEAR(found, loss, 1e-12 * loss) << width;
            EXPECT_NEAR(here.residuals[2 * i] * model.stated[i].pair[1],
                        here.residuals[2 * i + 1] * model.stated[i].pair[0], 1e-12)
                << "it keeps its direction";
        }
        expectDerivatives(problem, {0.1, -0.2});
    }
}

/// Next to nothing: residuals of a part in two thousand of the loss, where a series stands for it.
TEST(WeightedProblem, TheDerivativesOfTheLossAreThoseOfSmallPairsToo) {
    StatedModel model(1, 1);
    model.stated[0].pair = {5e-4, 6e-4};
    model.stated[0].rows = {1, -0.5};
    WeightedProblem problem(model);
    problem.setLoss(1);
    const Evaluated here = evaluatedAt(problem, {0});
    // r (1 - s / 4) by hand, s = 61e-8, and s grows by 2 (5e-4 - 3e-4) along the unknown.
    EXPECT_NEAR(here.residuals[0], 5e-4 * (1 - 61e-8 / 4), 1e-19);
    EXPECT_NEAR(here.jacobian[0], 1 - 61e-8 / 4 - 5e-4 * 4e-4 / 4, 1e-15);
    EXPECT_NEAR(here.jacobian[1], -0.5 * (1 - 61e-8 / 4) - 6e-4 * 4e-4 / 4, 1e-15);
}

TEST(WeightedProblem, PointsThatAreLeftOutTakeNoPartButHaveTheirSize) {
    StatedModel model = threePoints();
    model.stated[0].isMapped = false;
    WeightedProblem problem(model);
    problem.setLeftOut({true, true, false});
    EXPECT_TRUE(problem.isLeftOut(1));
    EXPECT_FALSE(problem.isLeftOut(2));
    const Evaluated here = evaluatedAt(problem, {0, 0});
    EXPECT_TRUE(here.isSound) << "one that is left out need not be mapped";
    EXPECT_EQ(here.residuals, (std::vector<double>{0, 0, 0, 0, -2, 1}));
    EXPECT_EQ(std::vector<double>(here.jacobian.begin(), here.jacobian.begin() + 8), std::vector<double>(8, 0.0));
    EXPECT_EQ(problem.sizes()[1], 5);
    std::vector<double> pair(2);
    std::vector<double> rows(4);
    EXPECT_TRUE(problem.rowsOf(1, pair.data(), rows.data()));
    EXPECT_EQ(pair[1], 4);
    EXPECT_FALSE(problem.rowsOf(0, pair.data(), rows.data()));
}

TEST(WeightedProblem, NoStepGainsByLosingPoints) {
    StatedModel model = threePoints();
    model.stated[1].isMapped = false;
    WeightedProblem problem(model);
    EXPECT_FALSE(evaluatedAt(problem, {0, 0}).isSound);
    EXPECT_EQ(problem.sizes()[1], std::numeric_limits<double>::infinity());
    problem.setLoss(3);
    const Evaluated here = evaluatedAt(problem, {0, 0});
    EXPECT_TRUE(here.isSound);
    EXPECT_NEAR(here.residuals[2] * here.residuals[2], 9 * std::log(1e8), 1e-3) << "as one that is 10000 losses off";
    EXPECT_EQ(here.residuals[3], 0);
    EXPECT_EQ(here.residuals[4] > -2, true) << "the others have their loss";
}

TEST(WeightedProblem, ManyPointsHaveTheirSizesInOrder) {
    constexpr std::size_t MANY = LeastSquares::BLOCK + 7;
    StatedModel model(1, MANY);
    std::size_t pulses = 0;
    model.given.pulse = [&pulses] { ++pulses; };
    for (std::size_t i = 0; i < MANY; ++i) {
        model.stated[i].pair = {0, static_cast<double>(i)};
    }
    const std::vector<double> sizes = WeightedProblem(model).sizes();
    ASSERT_EQ(sizes.size(), MANY);
    for (std::size_t i = 0; i < MANY; ++i) {
        ASSERT_EQ(sizes[i], static_cast<double>(i));
    }
    EXPECT_EQ(pulses, 3U) << "one for each block of 1024";
}

}  // namespace
