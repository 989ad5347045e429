#include "DisplayFit/detail/LeastSquares.h"

#include "DisplayFit/detail/FitLibrary.h"
#include "DisplayFit/detail/NormalFactors.h"

#include <gtest/gtest.h>
#include <Eigen/LU>

#include <cmath>
#include <cstddef>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;

constexpr std::size_t ROWS = 7;

/// Residuals i + x y sin(i) - z, of which two unknowns always act as one where `isSingular`.
class Waves : public LeastSquares {
public:
    explicit Waves(bool isSingular = false, std::size_t rows = ROWS) : m_isSingular(isSingular), m_rows(rows) {}
    [[nodiscard]] std::size_t unknowns() const override { return 3; }
    [[nodiscard]] std::size_t residuals() const override { return m_rows; }
    bool evaluate(const double* at, std::size_t first, std::size_t count, double* residuals,
                  double* jacobian) const noexcept override {
        const double size = m_isSingular ? at[0] + at[1] : at[0] * at[1];
        for (std::size_t i = 0; i < count; ++i) {
            const auto number = static_cast<double>(first + i);
            const auto wave = std::sin(number);
            residuals[i] = 0.1 * number + size * wave - at[2];
            if (jacobian != nullptr) {
                jacobian[3 * i] = m_isSingular ? wave : at[1] * wave;
                jacobian[3 * i + 1] = m_isSingular ? wave : at[0] * wave;
                jacobian[3 * i + 2] = -1;
            }
        }
        return at[2] < 10;
    }

    void pulse() const override { ++m_pulses; }
    [[nodiscard]] int pulses() const { return m_pulses; }

private:
    bool m_isSingular;
    std::size_t m_rows;
    mutable int m_pulses = 0;
};

// Oracle: the sums written out.
TEST(LeastSquares, SumsAreThoseOfAllResiduals) {
    const Waves problem;
    const std::vector<double> at{1.5, -0.75, 0.25};
    LeastSquares::Sums sums;
    ASSERT_TRUE(problem.sum(at.data(), sums, true));
    std::vector<double> residuals(ROWS);
    std::vector<double> jacobian(3 * ROWS);
    ASSERT_TRUE(problem.evaluate(at.data(), 0, ROWS, residuals.data(), jacobian.data()));
    double squares = 0;
    for (std::size_t i = 0; i < ROWS; ++i) {
        squares += residuals[i] * residuals[i];
    }
    EXPECT_NEAR(sums.squares, squares, 1e-13);
    for (std::size_t a = 0; a < 3; ++a) {
        double gradient = 0;
        for (std::size_t i = 0; i < ROWS; ++i) {
            gradient += jacobian[3 * i + a] * residuals[i];
        }
        EXPECT_NEAR(sums.gradient[a], gradient, 1e-13);
        for (std::size_t b = 0; b <= a; ++b) {
            double normal = 0;
            for (std::size_t i = 0; i < ROWS; ++i) {
                normal += jacobian[3 * i + a] * jacobian[3 * i + b];
            }
            EXPECT_NEAR(sums.normal[3 * a + b], normal, 1e-13);
        }
    }
    LeastSquares::Sums plain;
    ASSERT_TRUE(problem.sum(at.data(), plain, false));
    EXPECT_EQ(plain.squares, sums.squares);
    const std::vector<double> outside{0, 0, 11};
    EXPECT_FALSE(problem.sum(outside.data(), plain, true));
}

// Oracle: one evaluation of all rows.
TEST(LeastSquares, SumsOfManyBlocksAreThoseOfAll) {
    constexpr std::size_t MANY = 2 * LeastSquares::BLOCK + 10;
    const Waves problem(false, MANY);
    const std::vector<double> at{1.5, -0.75, 0.25};
    LeastSquares::Sums sums;
    ASSERT_TRUE(problem.sum(at.data(), sums, true));
    EXPECT_EQ(problem.pulses(), 3);
    std::vector<double> residuals(MANY);
    std::vector<double> jacobian(3 * MANY);
    ASSERT_TRUE(problem.evaluate(at.data(), 0, MANY, residuals.data(), jacobian.data()));
    double squares = 0;
    double gradient = 0;
    double normal = 0;
    for (std::size_t i = 0; i < MANY; ++i) {
        squares += residuals[i] * residuals[i];
        gradient += jacobian[3 * i] * residuals[i];
        normal += jacobian[3 * i + 1] * jacobian[3 * i];
    }
    EXPECT_NEAR(sums.squares, squares, 1e-12 * squares);
    EXPECT_NEAR(sums.gradient[0], gradient, 1e-12 * squares);
    EXPECT_NEAR(sums.normal[3], normal, 1e-9);
    // At the base two of the columns are zero.
    const std::vector<double> base(3, 0.0);
    ASSERT_TRUE(problem.sum(base.data(), sums, true));
    NormalFactors factors;
    ASSERT_TRUE(factors.fromResiduals(problem));
    EXPECT_EQ(problem.pulses(), 9);
    EXPECT_NEAR(std::abs(factors.triangle()[8]), std::sqrt(static_cast<double>(MANY)), 1e-9);
    const double gain = sums.gradient[2] * sums.gradient[2] / static_cast<double>(MANY);
    EXPECT_NEAR(factors.gain(), gain, 1e-9 * gain);
}

// Oracle: J^T J inverted.
TEST(NormalFactors, SpreadIsThatOfTheInverse) {
    const Waves problem;
    LeastSquares::Sums sums;
    Eigen::Matrix<double, ROWS, 3, Eigen::RowMajor> jacobian;
    std::vector<double> residuals(ROWS);
    ASSERT_TRUE(problem.evaluate(std::vector<double>{1, 2, 0}.data(), 0, ROWS, residuals.data(), jacobian.data()));
    jacobian.col(1) = Eigen::Matrix<double, ROWS, 1>::LinSpaced(-1, 2);
    const Eigen::Matrix3d normal = jacobian.transpose() * jacobian;
    sums.gradient.assign(3, 0.0);
    sums.normal.assign(normal.data(), normal.data() + 9);
    NormalFactors factors;
    ASSERT_TRUE(factors.fromNormal(sums));
    const std::vector<double> rows{1, 2, 3, -1, 0.5, 2};
    const Eigen::Map<const Eigen::Matrix<double, 2, 3, Eigen::RowMajor>> pair(rows.data());
    const Eigen::Matrix2d expected = pair * normal.inverse() * pair.transpose();
    EXPECT_TRUE(factors.spreadOf(rows).isApprox(expected, 1e-12));
}

TEST(LeastSquares, WhatHasNoEffectOfItsOwnKeepsNoMinimumFromBeingFound) {
    std::vector<double> place{3, 1, 0};
    ASSERT_TRUE(FitLibrary::get().minimise(Waves(true), place, {}).isUsable);
    LeastSquares::Sums sums;
    ASSERT_TRUE(Waves(true).sum(place.data(), sums, true));
    EXPECT_NEAR(sums.gradient[0], 0, 1e-6);
    EXPECT_NEAR(sums.gradient[2], 0, 1e-6);
    EXPECT_NEAR(place[0] - place[1], 2, 1e-6) << "what no residual shows stays";
}

}  // namespace
