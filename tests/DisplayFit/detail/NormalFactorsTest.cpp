#include "DisplayFit/detail/NormalFactors.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;

/// Residuals r + J x of two unknowns, as they are written down.
class WrittenProblem : public LeastSquares {
public:
    WrittenProblem(std::vector<double> constants, std::vector<std::array<double, 2>> rows)
        : m_constants(std::move(constants)), m_rows(std::move(rows)) {}
    [[nodiscard]] std::size_t unknowns() const override { return 2; }
    [[nodiscard]] std::size_t residuals() const override { return m_constants.size(); }
    bool evaluate(const double* at, std::size_t first, std::size_t count, double* residuals,
                  double* jacobian) const noexcept override {
        for (std::size_t i = 0; i < count; ++i) {
            const auto& row = m_rows[first + i];
            residuals[i] = m_constants[first + i] + row[0] * at[0] + row[1] * at[1];
            if (jacobian != nullptr) {
                jacobian[2 * i] = row[0];
                jacobian[2 * i + 1] = row[1];
            }
        }
        return isSound;
    }

    bool isSound = true;

private:
    std::vector<double> m_constants;
    std::vector<std::array<double, 2>> m_rows;
};

LeastSquares::Sums sumsOfProblem(const LeastSquares& problem, const std::vector<double>& at) {
    LeastSquares::Sums sums;
    EXPECT_TRUE(problem.sum(at.data(), sums, true));
    return sums;
}

/// A line y = a + b x through (0, 1), (1, 3), (2, 4), (3, 4): by hand a = 1.5, b = 1, and squares of 1 are left.
WrittenProblem lineThroughFour() {
    return {{-1, -3, -4, -4}, {{1, 0}, {1, 1}, {1, 2}, {1, 3}}};
}

void expectLineThroughFour(const NormalFactors& factors) {
    const std::vector<double> step = factors.step();
    ASSERT_EQ(step.size(), 2U);
    EXPECT_NEAR(step[0], 1.5, 1e-13);
    EXPECT_NEAR(step[1], 1, 1e-13);
    EXPECT_NEAR(factors.gain(), 42 - 1, 1e-12);
    EXPECT_FALSE(factors.isSingular());
    // J^T J is (4, 6; 6, 14).
    const std::vector<double> r = factors.triangle();
    ASSERT_EQ(r.size(), 4U);
    EXPECT_NEAR(r[0] * r[0], 4, 1e-13);
    EXPECT_NEAR(r[0] * r[1], 6, 1e-13);
    EXPECT_EQ(r[2], 0);
    EXPECT_NEAR(r[1] * r[1] + r[3] * r[3], 14, 1e-13);
    // Its inverse is (14, -6; -6, 4) / 20: of a, and of the line at x = 1.
    const Eigen::Matrix2d spread = factors.spreadOf({1, 0, 1, 1});
    EXPECT_NEAR(spread(0, 0), 0.7, 1e-14);
    EXPECT_NEAR(spread(0, 1), 0.4, 1e-14);
    EXPECT_NEAR(spread(1, 1), 0.3, 1e-14);
}

TEST(NormalFactors, ALineThroughFourPointsIsThatByHandBothWays) {
    const WrittenProblem problem = lineThroughFour();
    NormalFactors factors;
    ASSERT_TRUE(factors.fromNormal(sumsOfProblem(problem, {0, 0})));
    expectLineThroughFour(factors);
    NormalFactors byResiduals;
    ASSERT_TRUE(byResiduals.fromResiduals(problem));
    expectLineThroughFour(byResiduals);
}

TEST(NormalFactors, WhereTheNormalEquationsRoundTheResidualsDecide) {
    // y = a + b x at x = 1 and 1 + 1e-5: the columns are nearly one.
    constexpr double APART = 1e-5;
    const WrittenProblem problem({-2, -2 - 3 * APART, -2}, {{1, 1}, {1, 1 + APART}, {1, 1}});
    NormalFactors factors;
    EXPECT_FALSE(factors.fromNormal(sumsOfProblem(problem, {0, 0})));
    ASSERT_TRUE(factors.fromResiduals(problem));
    EXPECT_FALSE(factors.isSingular());
    EXPECT_NEAR(factors.step()[0], -1, 1e-9);
    EXPECT_NEAR(factors.step()[1], 3, 1e-9);
}

TEST(NormalFactors, WhatHasNoEffectOfItsOwnIsSingular) {
    for (const std::array<double, 2>& row : {std::array{1.0, 0.0}, std::array{1.0, 1.0}}) {
        const WrittenProblem problem({-1, -3, -4}, {row, row, row});
        NormalFactors factors;
        EXPECT_FALSE(factors.fromNormal(sumsOfProblem(problem, {0, 0}))) << row[1];
        ASSERT_TRUE(factors.fromResiduals(problem));
        EXPECT_TRUE(factors.isSingular()) << row[1];
    }
}

TEST(NormalFactors, AProblemWithoutResidualsHasNone) {
    WrittenProblem problem = lineThroughFour();
    problem.isSound = false;
    EXPECT_FALSE(NormalFactors().fromResiduals(problem));
}

}  // namespace
