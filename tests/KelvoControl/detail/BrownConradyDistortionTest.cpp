#include "KelvoControl/detail/BrownConradyDistortion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Veltrani::KelvoControlDetail::BrownConradyDistortion;
using P2 = Point<double, 2>;

const std::vector<double> STRONG{-0.35, 0.15, 0.002, -0.001, -0.03};
const std::vector<double> FULL{0.8, -0.3, 0.0015, -0.0025, 0.05, 1.1, -0.2, 0.04, 0.003, -0.001, -0.002, 0.0005};

void expectNear(const P2& found, const P2& expected, double tolerance) {
    EXPECT_NEAR(found[0], expected[0], tolerance);
    EXPECT_NEAR(found[1], expected[1], tolerance);
}

P2 distorted(const BrownConradyDistortion& lens, const P2& plain) {
    P2 result;
    EXPECT_TRUE(lens.distort(plain, result)) << plain[0] << ", " << plain[1];
    return result;
}

P2 undistorted(const BrownConradyDistortion& lens, const P2& point) {
    P2 result;
    EXPECT_TRUE(lens.undistort(point, result)) << point[0] << ", " << point[1];
    return result;
}

// The values of this test and the next come from scripts/lens_values.py.
TEST(BrownConradyDistortion, DistortsAsPublished) {
    const BrownConradyDistortion strong(STRONG);
    expectNear(distorted(strong, {0.1, -0.2}), {0.098137125, -0.196274250}, 1e-15);
    expectNear(distorted(strong, {0.55, 0.35}), {0.4815624296875, 0.3075692734375}, 1e-15);
    expectNear(distorted(strong, {-0.7, 0.5}), {-0.570808296, 0.408671640}, 1e-15);
    const BrownConradyDistortion full(FULL);
    expectNear(distorted(full, {0.1, -0.2}), {0.0984664423710650969, -0.196911634742130194}, 1e-15);
    expectNear(distorted(full, {0.55, 0.35}), {0.493579145589726955, 0.313953348329826244}, 1e-15);
    expectNear(distorted(full, {-0.7, 0.5}), {-0.592736322152782337, 0.423160030109130240}, 1e-15);
}

TEST(BrownConradyDistortion, TheWayBackIsExact) {
    const BrownConradyDistortion strong(STRONG);
    expectNear(undistorted(strong, {0.4, 0.3}), {0.441275551140556335, 0.330036164165214785}, 1e-14);
    expectNear(undistorted(strong, {-0.45, 0.1}), {-0.487222721509645432, 0.107792157860734899}, 1e-14);
    const BrownConradyDistortion full(FULL);
    expectNear(undistorted(full, {0.4, 0.3}), {0.432200371292550285, 0.324311207173714368}, 1e-14);
    expectNear(undistorted(full, {-0.45, 0.1}), {-0.478425185176457815, 0.106398972086519735}, 1e-14);
}

TEST(BrownConradyDistortion, WithoutCoefficientsNothingMovesAndNothingFolds) {
    const BrownConradyDistortion none({0, 0, 0, 0});
    EXPECT_EQ(none.foldRadius(), BrownConradyDistortion::FARTHEST);
    EXPECT_EQ(distorted(none, {3.0, -40.0}), P2(3.0, -40.0));
    expectNear(undistorted(none, {3.0, -40.0}), {3.0, -40.0}, 1e-13);
    EXPECT_EQ(undistorted(none, {0.0, 0.0}), P2(0.0, 0.0));
}

TEST(BrownConradyDistortion, FoldsWhereTheRadiusStopsGrowing) {
    // r (1 - 0.3 r^2) grows up to r^2 = 1 / 0.9.
    const BrownConradyDistortion barrel({-0.3, 0, 0, 0});
    EXPECT_NEAR(barrel.foldRadius(), std::sqrt(1 / 0.9), 1e-3);
    P2 out{-7.0, -7.0};
    EXPECT_FALSE(barrel.distort({1.06, 0.0}, out));
    EXPECT_FALSE(barrel.distort({100.0, 0.0}, out)) << "beyond the fold the formula goes on, the lens does not";
    const double farthest = std::sqrt(1 / 0.9) * (2.0 / 3.0);
    EXPECT_FALSE(barrel.undistort({0.0, farthest + 1e-6}, out));
    EXPECT_EQ(out, P2(-7.0, -7.0));
    EXPECT_LT(norm(undistorted(barrel, {0.0, farthest - 1e-6})), barrel.foldRadius());
}

TEST(BrownConradyDistortion, FoldsBeforeAPoleOfTheRationalPart) {
    // The denominator 1 - 0.25 r^2 vanishes at r = 2.
    const BrownConradyDistortion rational({0, 0, 0, 0, 0, -0.25, 0, 0});
    EXPECT_NEAR(rational.foldRadius(), 2 * std::sqrt(0.999 / 1.001), 1e-9) << "just short of it";
    P2 out;
    EXPECT_FALSE(rational.distort({0.0, 2.0}, out));
    EXPECT_FALSE(rational.distort({2.5, 0.0}, out));
    EXPECT_TRUE(rational.distort({1.997, 0.0}, out));
}

TEST(BrownConradyDistortion, WhereverThePoleIsTheRestOfThePictureComesBack) {
    for (int pole = 1; pole < 200; ++pole) {
        const BrownConradyDistortion lens({0, 0, 0, 0, 0, -0.01 * pole, 0, 0});
        const double radius = 1 / std::sqrt(0.01 * pole);
        for (const double part : {0.1, 0.5, 0.9, 0.99, 0.998}) {
            const P2 plain{0.6 * part * radius, -0.8 * part * radius};
            expectNear(undistorted(lens, distorted(lens, plain)), plain, 1e-9);
        }
    }
}

// Calibrations of narrow views: terms of the size of 1 cancel in both lines of the quotient, near the same radius.
TEST(BrownConradyDistortion, TermsThatCancelInBothLinesAreNoFold) {
    const BrownConradyDistortion lens({-9.8658, 24.12, 3.9e-4, -4.1e-4, 1.6289, -9.7145, 22.618, 5.3744});
    for (double radius = 0.01; radius < 0.6; radius += 0.001) {
        for (const double angle : {0.3, 2.0, -1.2}) {
            const P2 plain{radius * std::cos(angle), radius * std::sin(angle)};
            expectNear(undistorted(lens, distorted(lens, plain)), plain, 1e-10);
        }
    }
}

TEST(BrownConradyDistortion, ThePlaceOfTheFoldIsFoundBehindASecondRiseToo) {
    // The growth 1 - 4.5 r^2 + 4.5 r^4 vanishes at r^2 = 1 / 3 and 2 / 3: the second rise counts for nothing.
    const BrownConradyDistortion wavy({-1.5, 0.9, 0, 0});
    EXPECT_NEAR(wavy.foldRadius(), std::sqrt(1.0 / 3), 1e-3);
    const double fold = wavy.foldRadius();
    double previous = 0;
    for (int step = 1; step < 1000; ++step) {
        const P2 at = distorted(wavy, {fold * step / 1000, 0.0});
        ASSERT_GT(at[0], previous);
        previous = at[0];
    }
    P2 out;
    EXPECT_FALSE(wavy.distort({fold * 1.0001, 0.0}, out));
    EXPECT_FALSE(wavy.distort({0.9, 0.0}, out));
    EXPECT_FALSE(wavy.undistort({2.0, 0.0}, out));
}

TEST(BrownConradyDistortion, WhereTangentialTermsTurnThePictureOverItIsRefused) {
    // Along the x axis, xd = x + 3 p2 x^2 grows for x > -1 / (6 p2) only.
    const BrownConradyDistortion decentred({0, 0, 0, 0.1});
    P2 out{-7.0, -7.0};
    EXPECT_TRUE(decentred.distort({-1.6, 0.0}, out));
    out = {-7.0, -7.0};
    EXPECT_FALSE(decentred.distort({-1.7, 0.0}, out));
    EXPECT_FALSE(decentred.undistort({-1.7 + 0.3 * 1.7 * 1.7 - 1.0, 0.0}, out)) << "left of all that it reaches";
    EXPECT_EQ(out, P2(-7.0, -7.0));
}

TEST(BrownConradyDistortion, EveryPointWithinTheFoldComesBack) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    int mapped = 0;
    double worst = 0;
    for (const auto& coefficients :
         {STRONG, FULL, std::vector<double>{-0.3, 0, 0, 0}, std::vector<double>{0.9, 2, 0, 0},
          std::vector<double>{-0.45, 0.2, 0.01, -0.008, -0.03}}) {
        const BrownConradyDistortion lens(coefficients);
        const double reach = std::min(lens.foldRadius() * 0.999, 3.0);
        for (int i = 0; i < 2000; ++i) {
            const P2 plain{reach * part(random), reach * part(random)};
            P2 there;
            if (norm(plain) > reach || !lens.distort(plain, there)) {
                continue;
            }
            const P2 back = undistorted(lens, there);
            worst = std::max(worst, norm(back - plain));
            ++mapped;
        }
    }
    EXPECT_GT(mapped, 6000);
    EXPECT_LE(worst, 1e-9);
}

// Sampled ever nearer to the fold, where a rounding error is magnified most.
TEST(BrownConradyDistortion, WhatIsDistortedComesBackUpToTheFold) {
    std::mt19937 random(23);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    int mapped = 0;
    for (int i = 0; i < 400; ++i) {
        const double strength = i % 2 == 0 ? 1 : 50;
        const double k1 = strength * part(random);
        const BrownConradyDistortion lens({k1, strength * part(random), 0, 0, strength * part(random)});
        if (lens.foldRadius() == BrownConradyDistortion::FARTHEST) {
            continue;
        }
        for (double distance = 1e-1; distance > 1e-16; distance *= 0.1) {
            const double turn = 3 * part(random);
            const P2 plain = P2{std::cos(turn), std::sin(turn)} * (lens.foldRadius() * (1 - distance));
            P2 there;
            if (lens.distort(plain, there)) {
                expectNear(undistorted(lens, there), plain, 1e-9);
                ++mapped;
            }
        }
    }
    EXPECT_GT(mapped, 2000);
}

TEST(BrownConradyDistortion, NoOtherPlaceComesBackHoweverStrongTheTangentialAndPrismTerms) {
    std::mt19937 random(29);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    const auto upTo = [&](double size) { return size * part(random); };
    int mapped = 0;
    for (int i = 0; i < 200; ++i) {
        std::vector<double> k{upTo(0.4), upTo(0.3), upTo(0.4), upTo(0.4), upTo(0.2), upTo(0.3),
                              upTo(0.3), upTo(0.2), upTo(0.4), upTo(0.4), upTo(0.4), upTo(0.4)};
        const BrownConradyDistortion lens(k);
        for (int j = 0; j < 100; ++j) {
            const P2 plain{upTo(1.5), upTo(1.5)};
            P2 there;
            if (lens.distort(plain, there)) {
                expectNear(undistorted(lens, there), plain, 3e-9);
                ++mapped;
            }
        }
    }
    EXPECT_GT(mapped, 2000);
    // Between two of the places that are looked at on the way here the picture is turned over and back.
    const BrownConradyDistortion folded({0.256334, 0.245522, 0.133146, 0.122043, 0.105149, 0.264378, 0.262828, 0.180527,
                                         -0.0937567, -0.127947, -0.0919528, 0.0247231});
    P2 out;
    EXPECT_FALSE(folded.distort({-1.1658, -1.1951}, out));
}

// Weak terms of that kind, and places up to just short of the fold of the radial part, where a weak one is enough.
TEST(BrownConradyDistortion, NoOtherPlaceComesBackNearTheFoldHoweverWeakTheTangentialTerms) {
    std::mt19937 random(31);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    int mapped = 0;
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        const double size = std::pow(10.0, -2 + part(random));
        const BrownConradyDistortion lens({-0.3 + 0.2 * part(random), 0, size * part(random), size * part(random), 0, 0,
                                           0, 0, size * part(random), 0, size * part(random), 0});
        for (int j = 1; j <= 60; ++j) {
            const double turn = 4 * part(random);
            const P2 plain = P2{std::cos(turn), std::sin(turn)} * (lens.foldRadius() * j / 60.5);
            P2 there;
            if (lens.distort(plain, there)) {
                expectNear(undistorted(lens, there), plain, 1e-8);
                ++mapped;
            } else {
                ++refused;
            }
        }
    }
    EXPECT_GT(mapped, 12000);
    EXPECT_GT(refused, 100);
}

TEST(BrownConradyDistortion, WhatIsNoNumberIsRefused) {
    const BrownConradyDistortion lens(STRONG);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    P2 out{-7.0, -7.0};
    for (const P2& point : {P2{nan, 0.0}, P2{0.0, nan}, P2{infinite, 0.0}, P2{0.0, -infinite}, P2{1e300, 1e300}}) {
        EXPECT_FALSE(lens.distort(point, out));
        EXPECT_FALSE(lens.undistort(point, out));
    }
    EXPECT_EQ(out, P2(-7.0, -7.0));
}

}  // namespace
