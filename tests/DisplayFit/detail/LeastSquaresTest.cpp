#include "DisplayFit/detail/LeastSquares.h"

#include "DisplayFit/detail/FitLibrary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;

constexpr std::size_t ROWS = 7;

/// Residuals i + x y sin(i) - z, of which two unknowns always act as one where `isSingular`.
class Waves : public LeastSquares {
public:
    explicit Waves(bool isSingular = false) : m_isSingular(isSingular) {}
    [[nodiscard]] std::size_t unknowns() const override { return 3; }
    [[nodiscard]] std::size_t residuals() const override { return ROWS; }
    bool evaluate(const double* at, double* residuals, double* jacobian) const noexcept override {
        const double size = m_isSingular ? at[0] + at[1] : at[0] * at[1];
        for (std::size_t i = 0; i < ROWS; ++i) {
            const auto wave = std::sin(static_cast<double>(i));
            residuals[i] = 0.1 * static_cast<double>(i) + size * wave - at[2];
            if (jacobian != nullptr) {
                jacobian[3 * i] = m_isSingular ? wave : at[1] * wave;
                jacobian[3 * i + 1] = m_isSingular ? wave : at[0] * wave;
                jacobian[3 * i + 2] = -1;
            }
        }
        return at[2] < 10;
    }

private:
    bool m_isSingular;
};

// Oracle: the sums written out.
TEST(LeastSquares, SumsAreThoseOfAllResiduals) {
    const Waves problem;
    const std::vector<double> at{1.5, -0.75, 0.25};
    LeastSquares::Sums sums;
    ASSERT_TRUE(problem.sum(at.data(), sums, true));
    std::vector<double> residuals(ROWS);
    std::vector<double> jacobian(3 * ROWS);
    ASSERT_TRUE(problem.evaluate(at.data(), residuals.data(), jacobian.data()));
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
