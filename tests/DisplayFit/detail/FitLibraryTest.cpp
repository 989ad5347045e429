#include "DisplayFit/detail/FitLibrary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;

/// A problem that is given by a function.
class Given : public LeastSquares {
public:
    using Function = std::function<bool(const double*, double*, double*)>;
    Given(std::size_t unknowns, std::size_t residuals, Function function)
        : m_unknowns(unknowns), m_residuals(residuals), m_function(std::move(function)) {}

    [[nodiscard]] std::size_t unknowns() const override { return m_unknowns; }
    [[nodiscard]] std::size_t residuals() const override { return m_residuals; }
    bool evaluate(const double* unknowns, std::size_t /*first*/, std::size_t /*count*/, double* residuals,
                  double* jacobian) const noexcept override {
        return m_function(unknowns, residuals, jacobian);
    }

private:
    std::size_t m_unknowns;
    std::size_t m_residuals;
    Function m_function;
};

/// One that is given up after some calls.
class GivenUp : public Given {
public:
    using Given::Given;
    void pulse() const override {
        if (++m_pulses > 3) {
            throw std::runtime_error("enough");
        }
    }
    [[nodiscard]] int pulses() const { return m_pulses; }

private:
    mutable int m_pulses = 0;
};

/// The valley of Rosenbrock: (10 (y - x^2), 1 - x).
bool valley(const double* p, double* residuals, double* jacobian) {
    residuals[0] = 10 * (p[1] - p[0] * p[0]);
    residuals[1] = 1 - p[0];
    if (jacobian != nullptr) {
        jacobian[0] = -20 * p[0];
        jacobian[1] = 10;
        jacobian[2] = -1;
        jacobian[3] = 0;
    }
    return true;
}

std::ptrdiff_t threads() {
    using Folder = std::filesystem::directory_iterator;
    return std::distance(Folder("/proc/self/task"), Folder());
}

TEST(FitLibrary, WhatAProblemThrowsComesOutOfTheSolverAndEndsIt) {
    const GivenUp problem(2, 2, valley);
    std::vector<double> place{-1.2, 1};
    EXPECT_THROW(static_cast<void>(FitLibrary::get().minimise(problem, place, {})), std::runtime_error);
    EXPECT_EQ(problem.pulses(), 4) << "nothing is computed afterwards";
    EXPECT_EQ(place, (std::vector<double>{-1.2, 1}));
}

TEST(FitLibrary, StepsToTheMinimumWithoutAThreadAndWithoutAWord) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const std::ptrdiff_t before = threads();
    std::vector<double> place{-1.2, 1};
    const SolverEnd end = FitLibrary::get().minimise(Given(2, 2, valley), place, {});
    EXPECT_TRUE(end.isUsable);
    EXPECT_GT(end.steps, 3);
    EXPECT_NEAR(place[0], 1, 1e-9);
    EXPECT_NEAR(place[1], 1, 1e-9);
    EXPECT_EQ(threads(), before);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(FitLibrary, WhatCannotBeSolvedEndsQuietlyAndChangesNothing) {
    testing::internal::CaptureStderr();
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    const auto nothing = [](const double*, double*, double*) { return false; };
    const auto notANumber = [](const double*, double* residuals, double*) {
        residuals[0] = residuals[1] = std::nan("");
        return true;
    };
    const auto endless = [](const double* p, double* residuals, double* jacobian) {
        valley(p, residuals, jacobian);
        if (jacobian != nullptr) {
            jacobian[1] = INFINITE;
        }
        return true;
    };
    for (const Given::Function& function :
         {Given::Function(nothing), Given::Function(notANumber), Given::Function(endless)}) {
        std::vector<double> place{-1.2, 1};
        EXPECT_FALSE(FitLibrary::get().minimise(Given(2, 2, function), place, {}).isUsable);
        EXPECT_EQ(place, (std::vector<double>{-1.2, 1}));
    }
    std::vector<double> odd{INFINITE, 1};
    EXPECT_FALSE(FitLibrary::get().minimise(Given(2, 2, valley), odd, {}).isUsable);
    std::vector<double> tooMany{1, 1, 1};
    EXPECT_FALSE(FitLibrary::get().minimise(Given(2, 2, valley), tooMany, {}).isUsable);
    std::vector<double> none;
    EXPECT_FALSE(FitLibrary::get().minimise(Given(0, 0, valley), none, {}).isUsable);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

/// A region without residuals is stepped around.
TEST(FitLibrary, AStepToWhereNothingIsMappedIsTakenBack) {
    const auto guarded = [](const double* p, double* residuals, double* jacobian) {
        return p[0] > -1.3 && valley(p, residuals, jacobian);
    };
    std::vector<double> place{-1.2, 1};
    EXPECT_TRUE(FitLibrary::get().minimise(Given(2, 2, guarded), place, {}).isUsable);
    EXPECT_NEAR(place[0], 1, 1e-9);
}

}  // namespace
