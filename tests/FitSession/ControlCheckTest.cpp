#include "FitSession/ControlCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Veltrani::DisplayFit::DisplayFitResult;
using Veltrani::DisplayFit::FitFinding;
using Veltrani::DisplayFit::FitOutcome;
using Veltrani::FitSession::ControlCheck;
using Veltrani::FitSession::ControlPoint;
using Veltrani::FitSession::MeasuredPoint;
using Veltrani::FitSession::MeasuredPoints;
using Veltrani::FitSession::Registration;
using P3 = Point<double, 3>;

const std::vector<P3> MARKS{{-3, 4, 0}, {3, 4, 0.5}, {3, 5, 3}, {-2, 3.5, 2.5}, {0, 0, 0}};

/// Points on a wall of 6 m by 2.5 m.
MeasuredPoints wall() {
    MeasuredPoints measured;
    for (int i = 0; i < 100; ++i) {
        MeasuredPoint point;
        point.world = {-3 + 6 * (i % 10) / 9.0, 5, 0.4 + 2.5 * (i / 10) / 9.0};
        measured.points.push_back(point);
    }
    return measured;
}

/// With some of the marks, each off by as much.
MeasuredPoints withMarks(std::size_t count, const P3& off, const std::string& set = "") {
    MeasuredPoints measured = wall();
    for (std::size_t i = 0; i < count; ++i) {
        measured.controls.push_back({set, MARKS[i] + off, MARKS[i], static_cast<int>(i) + 2});
    }
    return measured;
}

std::vector<FitFinding> findingsOf(const MeasuredPoints& measured, const std::vector<Registration>& frames = {}) {
    DisplayFitResult result;
    result.unit = "m";
    ControlCheck::judge(measured, frames, result);
    return result.findings;
}

TEST(ControlCheck, WithoutControlPointsThereIsNothingToSay) {
    EXPECT_THAT(findingsOf(wall()), IsEmpty());
    EXPECT_THAT(findingsOf({}), IsEmpty());
}

TEST(ControlCheck, UnusedOnesThatAreWhereTheyShouldBeAreNoted) {
    // One alone spans nothing: what was measured does.
    for (std::size_t count = 1; count <= MARKS.size(); ++count) {
        for (const double off : {0.0, 0.001, 0.01}) {
            const auto findings = findingsOf(withMarks(count, {off, 0, 0}));
            ASSERT_EQ(findings.size(), 1U);
            EXPECT_EQ(findings[0].kind, FitFinding::Kind::FRAME_NOT_REGISTERED);
            EXPECT_EQ(findings[0].outcome, FitOutcome::GOOD) << count << " off by " << off;
        }
    }
    EXPECT_THAT(findingsOf(withMarks(2, {0.01, 0, 0}))[0].text,
                StartsWith("the control points were not used: they are where they should be to within 0.01 m (line "));
}

TEST(ControlCheck, UnusedOnesThatAreAllOffMeanAnotherFrame) {
    for (std::size_t count = 1; count <= MARKS.size(); ++count) {
        for (const double off : {0.05, 1.0, 30.0}) {
            const auto findings = findingsOf(withMarks(count, {0, off, 0}));
            ASSERT_EQ(findings.size(), 1U);
            EXPECT_EQ(findings[0].kind, FitFinding::Kind::FRAME_NOT_REGISTERED);
            EXPECT_EQ(findings[0].outcome, FitOutcome::DOUBTFUL) << count << " off by " << off;
            EXPECT_THAT(findings[0].remedy, HasSubstr("state --register rigid"));
            EXPECT_EQ(findings[0].remedy.find("measure at least 3") != std::string::npos, count < 3);
        }
    }
    EXPECT_EQ(findingsOf(withMarks(1, {0, 1, 0}, "east"))[0].text,
              "the control point of set \"east\" lies 1 m (line 2) from where it should be, and was not used: it is "
              "wrong, or the measurement is not in the frame of the display");
    EXPECT_THAT(findingsOf(withMarks(4, {0, 1, 0}))[0].text,
                AllOf(StartsWith("control points lie up to 1 m (line "),
                      HasSubstr(" from where they should be, 4 of 4, and were not used: ")));
}

TEST(ControlCheck, OneUnusedOneThatIsOffIsNamedAndNotTheFrame) {
    for (const double off : {0.05, 1.0}) {
        MeasuredPoints measured = withMarks(5, {0.001, 0, 0});
        measured.controls[3].measured[2] += off;
        const auto findings = findingsOf(measured);
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_EQ(findings[0].kind, FitFinding::Kind::CONTROL_POINT_OFF);
        EXPECT_EQ(findings[0].outcome, FitOutcome::DOUBTFUL);
        EXPECT_THAT(findings[0].text,
                    AllOf(StartsWith("one control point lies "), HasSubstr(" m (line 5) from where it should be"),
                          HasSubstr(", the other 4 no farther than 0.001 m")));
    }
}

TEST(ControlCheck, OfTwoUnusedOnesItIsNotKnownWhichIsOff) {
    for (const std::size_t count : {std::size_t{2}, std::size_t{3}}) {
        MeasuredPoints measured = withMarks(count, {0.001, 0, 0});
        measured.controls[1].measured[2] += 1;
        const auto findings = findingsOf(measured);
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_EQ(findings[0].kind,
                  count == 3 ? FitFinding::Kind::CONTROL_POINT_OFF : FitFinding::Kind::FRAME_NOT_REGISTERED);
        EXPECT_THAT(findings[0].text,
                    HasSubstr(count == 3 ? ", the other 2 no farther than 0.001 m" : ", 1 of 2, and were not used"));
    }
}

TEST(ControlCheck, EachStationThatIsNotRegisteredIsJudgedByItself) {
    MeasuredPoints measured = withMarks(5, {0.002, 0, 0}, "east");
    for (const ControlPoint& control : withMarks(5, {0, 4, 0}, "west").controls) {
        measured.controls.push_back(control);
    }
    const auto findings = findingsOf(measured);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_THAT(findings[0].text, StartsWith("control points of set \"west\" lie up to 4 m (line "));
}

TEST(ControlCheck, AnAbsurdPointDoesNotHideTheFrame) {
    MeasuredPoints measured = withMarks(5, {0, 1, 0});
    measured.points[17].world = {1e9, 0, 0};
    EXPECT_EQ(findingsOf(measured)[0].outcome, FitOutcome::DOUBTFUL);
}

TEST(ControlCheck, WhatRegisteredOnesContradictIsDoubtful) {
    Registration frame;
    frame.set = "east";
    frame.span = 3;
    frame.rms = 0.01;
    EXPECT_THAT(findingsOf(withMarks(5, {}), {frame}), IsEmpty());
    frame.rms = 0.04;
    EXPECT_THAT(findingsOf(withMarks(5, {}), {frame})[0].text,
                "the control points of set \"east\" contradict each other by 0.04 m (RMS)");
    frame.contradiction = {7, 0.1, 0.001};
    const auto findings = findingsOf(withMarks(5, {}), {frame});
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, FitFinding::Kind::CONTROL_POINT_OFF);
    EXPECT_EQ(findings[0].outcome, FitOutcome::DOUBTFUL);
    EXPECT_EQ(findings[0].text,
              "the control point of set \"east\" of line 7 lies 0.1 m from where the others place it, which agree to "
              "0.001 m (RMS)");
}

TEST(ControlCheck, APointSetThatLiesElsewhereAlthoughItWasRegisteredPointsToItsMarks) {
    DisplayFitResult result;
    result.findings.push_back({FitFinding::Kind::FRAME_MOVED, FitOutcome::DOUBTFUL, "moved", "--register rigid"});
    Registration frame;
    ControlCheck::judge(withMarks(5, {}), {frame}, result);
    EXPECT_THAT(result.findings[0].remedy, StartsWith("check that the control points of this set were measured by"));
    result.findings[0].remedy = "--register rigid";
    ControlCheck::judge(withMarks(5, {}), {}, result);
    EXPECT_EQ(result.findings[0].remedy, "--register rigid");
}

}  // namespace
