#include "FitSession/ControlAgreement.h"

#include "Common/Matrix.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using testing::StartsWith;
using Veltrani::FitSession::ControlAgreement;
using Veltrani::FitSession::ControlPoint;
using Veltrani::FitSession::RegistrationKind;
using Mark = Point<double, 3>;
using Marks = std::vector<ControlPoint>;

constexpr RegistrationKind RIGID = RegistrationKind::RIGID;
constexpr RegistrationKind SIMILARITY = RegistrationKind::SIMILARITY;

/// The corners of a box of 6 by 4 by 2, measured in a frame of their own; lines from 2 on.
Marks corners(std::size_t count = 8, const Mark& station = {5, -7, 1}) {
    const Matrix<double, 3> rotation = Veltrani::rotationZXY(0.7 + station[0], -0.2, 0.1);
    Marks marks;
    for (std::size_t i = 0; i < count; ++i) {
        const Mark known{i % 2 == 0 ? 0.0 : 6.0, i / 2 % 2 == 0 ? 0.0 : 4.0, i / 4 == 0 ? 0.0 : 2.0};
        marks.push_back({"", rotation * known + station, known, static_cast<int>(i) + 2});
    }
    return marks;
}

Marks noisyCorners(double noise, unsigned seed, std::size_t count = 8) {
    Marks marks = corners(count);
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    for (ControlPoint& mark : marks) {
        mark.measured += noise * Mark{normal(random), normal(random), normal(random)};
    }
    return marks;
}

TEST(ControlAgreement, OneOfFourIsFoundAndNoneOfThree) {
    Marks marks = corners(5);
    marks[4].known[2] += 0.1;
    const auto found = ControlAgreement::oneAgainstAll(marks, RIGID);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->line, 6);
    EXPECT_NEAR(found->distance, 0.1, 1e-12) << "the others are exact";
    EXPECT_LT(found->rmsOfOthers, 1e-12);
    Marks four{marks[0], marks[1], marks[2], marks[4]};
    ASSERT_TRUE(ControlAgreement::oneAgainstAll(four, RIGID)) << "three and one";
    four.pop_back();
    four[2].known[2] += 0.1;
    EXPECT_FALSE(ControlAgreement::oneAgainstAll(four, RIGID));
}

TEST(ControlAgreement, WhatTheOthersAgreeToIsTheirRootMeanSquare) {
    Marks marks = noisyCorners(0.002, 5);
    marks[3].known[0] += 0.2;
    const auto found = ControlAgreement::oneAgainstAll(marks, RIGID);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->line, 5);
    EXPECT_NEAR(found->distance, 0.2, 0.01);
    // Of 21 numbers six are taken by the movement.
    EXPECT_NEAR(found->rmsOfOthers, 0.002 * std::sqrt(3 * 15 / 21.0), 0.0012);
    EXPECT_EQ(ControlAgreement::oneAgainstAll(marks, SIMILARITY).value().line, 5);
}

// Oracle: the limits are those that one number in a thousand exceeds; the worst of so many marks is tested.
TEST(ControlAgreement, NoiseIsAccusedAsRarelyAsStated) {
    for (const std::size_t count : {std::size_t{5}, std::size_t{6}, std::size_t{8}}) {
        int accused = 0;
        constexpr int DRAWN = 400;
        for (unsigned seed = 0; seed < DRAWN; ++seed) {
            const Marks marks = noisyCorners(0.1, seed, count);
            accused += static_cast<int>(ControlAgreement::oneAgainstAll(marks, RIGID).has_value());
        }
        EXPECT_LE(accused, static_cast<int>(0.001 * static_cast<double>(count) * DRAWN) + 5) << count;
    }
}

TEST(ControlAgreement, AMarkThatIsOffByMoreThanItsNoiseIsAccused) {
    // Eight marks leave 15 degrees of freedom for the worst: ten deviations are far beyond the limit, 3 are not.
    int ofTen = 0;
    int ofThree = 0;
    for (unsigned seed = 0; seed < 100; ++seed) {
        Marks marks = noisyCorners(0.02, seed);
        marks[2].known[1] += 0.06;
        ofThree += static_cast<int>(ControlAgreement::oneAgainstAll(marks, RIGID).has_value());
        marks[2].known[1] += 0.14;
        const auto found = ControlAgreement::oneAgainstAll(marks, RIGID);
        ofTen += static_cast<int>(found && found->line == 4);
    }
    EXPECT_GE(ofTen, 90);
    EXPECT_LE(ofThree, 20);
}

TEST(ControlAgreement, WhereTheOthersLieOnALineNothingIsSaid) {
    // Without the one beside it, a line is left.
    Marks marks = corners(4);
    for (std::size_t i = 0; i < 4; ++i) {
        const Mark known{static_cast<double>(i), 0, i == 3 ? 2.0 : 0.0};
        marks[i] = {"", known, known, static_cast<int>(i) + 2};
    }
    marks[3].known[2] += 0.1;
    const auto found = ControlAgreement::oneAgainstAll(marks, RIGID);
    EXPECT_FALSE(found && found->line == 5);
}

TEST(ControlAgreement, WrongMarksAreNamedWhereHalfOfThemAgree) {
    Marks marks = corners();
    for (const std::size_t i : {1U, 4U, 6U}) {
        marks[i].known += Mark{1.0 + static_cast<double>(i), -2, 0.3 * static_cast<double>(i)};
    }
    EXPECT_THAT(ControlAgreement::whatIsWrong(marks, RIGID),
                StartsWith("without lines 3, 6 and 8 the others agree to "));
    EXPECT_THAT(ControlAgreement::whatIsWrong(marks, SIMILARITY), StartsWith("without lines 3, 6 and 8 "));
    EXPECT_EQ(ControlAgreement::whatIsWrong(corners(), RIGID), "") << "none is wrong";
    // Four of eight agree, and three of seven.
    marks[7].known += Mark{-3, 4, 5};
    EXPECT_THAT(ControlAgreement::whatIsWrong(marks, RIGID), StartsWith("without lines 3, 6, 8 and 9 "));
    marks.erase(marks.begin());
    EXPECT_EQ(ControlAgreement::whatIsWrong(marks, RIGID), "");
}

TEST(ControlAgreement, WhatIsNearEnoughAgrees) {
    // A hundredth of the span, which is sqrt(9 + 4 + 1) = 3.74.
    for (const double off : {0.02, 0.2}) {
        Marks marks = corners();
        marks[0].known[0] += 2;
        marks[5].known[2] += off;
        const std::string text = ControlAgreement::whatIsWrong(marks, RIGID);
        EXPECT_THAT(text,
                    StartsWith(off < 0.1 ? "without line 2 the others agree to 0.0" : "without lines 2 and 7 the "))
            << off;
    }
}

TEST(ControlAgreement, TwoThatAreExchangedAreNamedSo) {
    Marks marks = corners();
    std::swap(marks[2].known, marks[5].known);
    for (const RegistrationKind kind : {RIGID, SIMILARITY}) {
        EXPECT_EQ(ControlAgreement::whatIsWrong(marks, kind),
                  "the marks of lines 4 and 7 are exchanged; exchange their X, Y, Z");
    }
    marks[5].known[0] += 0.5;
    EXPECT_THAT(ControlAgreement::whatIsWrong(marks, RIGID), StartsWith("without lines 4 and 7 the others agree to "));
    // Three in a ring are no pair.
    marks = corners();
    std::swap(marks[2].known, marks[5].known);
    std::swap(marks[2].known, marks[7].known);
    EXPECT_THAT(ControlAgreement::whatIsWrong(marks, RIGID),
                StartsWith("without lines 4, 7 and 9 the others agree to "));
}

TEST(ControlAgreement, MarksOfTwoStationsAreToldApart) {
    Marks marks = corners(5);
    for (ControlPoint mark : corners(4, {-20, 3, 9})) {
        mark.line += 5;
        marks.push_back(mark);
    }
    EXPECT_EQ(ControlAgreement::whatIsWrong(marks, RIGID),
              "those of lines 2, 3, 4, 5 and 6 agree with each other, and so do those of lines 7, 8, 9 and 10, as if "
              "measured from two stations; name the station of each row in a column set");
    // One of the second station is wrong, too.
    marks.back().known[1] += 1.5;
    EXPECT_THAT(ControlAgreement::whatIsWrong(marks, RIGID),
                StartsWith("without lines 7, 8, 9 and 10 the others agree"));
}

}  // namespace
