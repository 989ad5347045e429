#include "DisplayFit/detail/LensCheck.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::LensNumbers;
using Veltrani::DisplayFit::ChannelValues;

/// A lens of a picture of 1000 x 1000 whose edges are at the tangent 0.5, corners at 0.71.
ChannelValues valuesOf(const std::vector<double>& coefficients,
                       LensNumbers::Kind kind = LensNumbers::Kind::BROWN_CONRADY) {
    ChannelValues values;
    values.lens = LensNumbers{kind, 1000, 1000, 1000, 1000, 499.5, 499.5, coefficients};
    return values;
}

LensCheck checkOf(const ChannelValues& values, const FitPoints& points, bool solvesDistortion, bool& isUsable) {
    PictureModel::Held held;
    held.solved.distortion = solvesDistortion;
    held.solved.orientation = true;
    const PictureModel model(points, PictureView::of(values, LensFormula::Kind::RECTILINEAR, {1000, 1000}), held);
    const LensCheck check = LensCheck::of(model, values, std::vector<bool>(points.size(), false));
    isUsable = check.isUsable(model);
    return check;
}

/// A point at a tangent to the right.
FitPoints pointAt(double tangent) {
    FitPoints points;
    points.world = {{tangent, 1, 0}};
    points.picture = {{0.5 + tangent, 0.5}};
    return points;
}

// r (1 - a r^2) stops growing at r = 1 / sqrt(3 a).
constexpr double FOLD_AT_06 = -1 / (3 * 0.36);
constexpr double FOLD_AT_2 = -1.0 / 12;

TEST(LensCheck, AFoldWithinThePictureMakesALensUselessWhereverThePointsLie) {
    bool isUsable = false;
    LensCheck check = checkOf(valuesOf({FOLD_AT_2, 0, 0, 0}), pointAt(0.3), true, isUsable);
    EXPECT_TRUE(isUsable);
    EXPECT_FALSE(check.foldsInPicture);
    // The corner lies beyond what the lens reaches at its fold, 0.4.
    check = checkOf(valuesOf({FOLD_AT_06, 0, 0, 0}), pointAt(0.3), true, isUsable);
    EXPECT_FALSE(isUsable);
    EXPECT_TRUE(check.foldsInPicture);
    EXPECT_FALSE(check.foldsAmongPoints);
    EXPECT_EQ(check.unmapped, 0U);
    check = checkOf(valuesOf({FOLD_AT_06, 0, 0, 0}), pointAt(0.3), false, isUsable);
    EXPECT_TRUE(isUsable) << "the configured lens is held";
}

TEST(LensCheck, APointBeyondTheFoldIsNotMapped) {
    bool isUsable = true;
    for (const bool solves : {true, false}) {
        EXPECT_EQ(checkOf(valuesOf({FOLD_AT_06, 0, 0, 0}), pointAt(0.7), solves, isUsable).unmapped, 1U);
        EXPECT_FALSE(isUsable);
    }
}

TEST(LensCheck, NothingIsMappedBeyondAPole) {
    // r / (1 - 4 r^2) grows up to r = 0.5, and comes back from the other side there.
    const auto pole = valuesOf({0, 0, 0, 0, 0, -4, 0, 0});
    bool isUsable = false;
    FitPoints near = pointAt(0.3);
    near.world.resize(3, near.world[0]);
    near.picture.resize(3, near.picture[0]);
    EXPECT_EQ(checkOf(pole, near, true, isUsable).unmapped, 0U);
    EXPECT_TRUE(isUsable) << "the whole picture comes from before the pole";
    EXPECT_EQ(checkOf(pole, pointAt(0.6), true, isUsable).unmapped, 1U);
    EXPECT_FALSE(isUsable);
}

// (1 + 1.1 a r^2) / (1 + a r^2) is 1.1 but for a needle at the axis: a lens of another focal length to all points.
TEST(LensCheck, AQuotientThatChangesBetweenTheAxisAndThePointsIsOpen) {
    constexpr double STRONG = 4e4;  // 4 times the 1 at the radius 0.01
    const auto needle = valuesOf({1.1 * STRONG, 0, 0, 0, 0, STRONG, 0, 0});
    FitPoints points;
    for (const double tangent : {0.009, 0.05, 0.1, 0.2, 0.3, 0.009}) {
        points.world.push_back({0, 1, tangent});
        points.picture.push_back({0.5, 0.5 + tangent});
    }
    bool isUsable = true;
    EXPECT_TRUE(checkOf(needle, points, true, isUsable).isOpenOnAxis);
    EXPECT_FALSE(isUsable);
    EXPECT_FALSE(checkOf(needle, points, false, isUsable).isOpenOnAxis) << "as it is configured";
    EXPECT_TRUE(isUsable);
    points.world.push_back({0.008, 1, 0});
    points.picture.push_back({0.508, 0.5});
    EXPECT_FALSE(checkOf(needle, points, true, isUsable).isOpenOnAxis) << "three points show the needle";
    EXPECT_TRUE(isUsable);
}

TEST(LensCheck, AFisheyeMayEndBeyondItsPoints) {
    const auto ending = valuesOf({-1.0 / 1.08, 0, 0, 0}, LensNumbers::Kind::FISHEYE);
    bool isUsable = false;
    const LensCheck check = checkOf(ending, pointAt(0.3), true, isUsable);
    EXPECT_TRUE(check.foldsInPicture);
    EXPECT_TRUE(isUsable);
    FitPoints above = pointAt(0.3);
    above.picture[0] = {0.5, 0.8};
    EXPECT_FALSE(checkOf(ending, above, true, isUsable).foldsAmongPoints) << "as far up as to the right";
    FitPoints corner = pointAt(0.3);
    corner.picture[0] = {1, 1};
    EXPECT_TRUE(checkOf(ending, corner, true, isUsable).foldsAmongPoints);
    EXPECT_FALSE(isUsable);
}

TEST(LensCheck, NumbersThatAreNoLensAreNotUsable) {
    ChannelValues values = valuesOf({0, 0, 0, 0});
    values.lens->fx = -1000;
    bool isUsable = true;
    static_cast<void>(checkOf(values, pointAt(0.3), true, isUsable));
    EXPECT_FALSE(isUsable);
    values.lens.reset();
    EXPECT_EQ(checkOf(values, pointAt(0.3), true, isUsable).unmapped, 0U);
    EXPECT_TRUE(isUsable) << "no lens, no fold";
}

}  // namespace
