#include "DisplayFit/detail/RationalStarts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Vector = Point<double, 3>;

const std::vector<double> EIGHT{0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03};

FitPoints points() {
    FitPoints points;
    for (int column = -5; column <= 5; ++column) {
        for (int row = -3; row <= 3; ++row) {
            points.world.push_back({0.09 * column, 1, 0.09 * row});
            points.picture.push_back({0.5, 0.5});
        }
    }
    return points;
}

PictureView view(const std::vector<double>& coefficients) {
    PictureView view;
    view.lens = LensFormula(LensFormula::Kind::BROWN_CONRADY, coefficients);
    return view;
}

PictureModel::Held solving(bool distortion) {
    PictureModel::Held held;
    held.solved.frustum = true;
    held.solved.distortion = distortion;
    return held;
}

// Oracle: the formula of the lens itself, at the points.
TEST(RationalStarts, EachShowsThePointsNearlyWhereTheLensDoes) {
    const FitPoints there = points();
    const PictureView given = view(EIGHT);
    const auto starts = rationalStarts(given, there);
    ASSERT_GE(starts.size(), 5U);
    std::set<double> denominators;
    for (const PictureView& start : starts) {
        denominators.insert(start.lens.coefficient(5));
        for (const Vector& ray : there.world) {
            LensFormula::Place before;
            LensFormula::Place after;
            ASSERT_TRUE(given.lens.place(ray, before) && start.lens.place(ray, after));
            // Where a denominator is small an error of the numerator counts fifty times.
            EXPECT_LT(std::hypot(after.a - before.a, after.b - before.b), 0.02) << start.lens.coefficient(5);
        }
        EXPECT_EQ(start.lens.coefficient(2), EIGHT[2]) << "tangential terms stay";
        EXPECT_EQ(start.lens.coefficient(3), EIGHT[3]);
    }
    EXPECT_EQ(denominators.size(), starts.size()) << "each is another one";
    EXPECT_TRUE(denominators.contains(0)) << "and one is none";
}

TEST(RationalStarts, AreForLensesThatAreQuotientsAndSolvedAsSuch) {
    const FitPoints there = points();
    EXPECT_TRUE(isRational(PictureModel(there, view(EIGHT), solving(true))));
    EXPECT_FALSE(isRational(PictureModel(there, view(EIGHT), solving(false))));
    EXPECT_FALSE(isRational(PictureModel(there, view({0.3, -0.12, 4e-4, -3e-4, 0.05}), solving(true))));
    PictureView fisheye;
    fisheye.lens = LensFormula(LensFormula::Kind::FISHEYE, {0.1, 0.1, 0.1, 0.1});
    EXPECT_FALSE(isRational(PictureModel(there, fisheye, solving(true))));
}

TEST(RationalStarts, PointsOnTheAxisHaveNone) {
    FitPoints there;
    there.world = {{0, 1, 0}, {0, 2, 0}, {0, -1, 3}};
    there.picture = {{0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}};
    EXPECT_TRUE(rationalStarts(view(EIGHT), there).empty());
}

}  // namespace
