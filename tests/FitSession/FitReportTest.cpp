#include "FitSession/FitReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <sstream>

namespace {

using namespace Veltrani::DisplayFit;
using Veltrani::FitSession::FitReport;
using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr double NOWHERE = std::numeric_limits<double>::quiet_NaN();

/// A channel with one inlier and one outlier that no picture shows.
FitReport report() {
    FitReport report;
    report.configuration = "dome.xml";
    report.table = "points.csv";
    report.measured.rows = 4;
    report.measured.unmapped = 1;
    report.measured.points.resize(3);
    report.combined.points.resize(2);
    report.combined.points[0].world = {1, 2, 3};
    report.combined.lines = {{2, 4}, {3}};
    report.result.unit = "m";
    ChannelFit fit;
    fit.name = "Left";
    fit.projectorId = "A";
    fit.isSolved = true;
    fit.outcome = FitOutcome::DOUBTFUL;
    fit.solved.orientation = true;
    fit.outliers = 1;
    fit.degreesOfFreedom = 17;
    fit.pixelsBefore = {12.5, 11, 20, 0};
    fit.pixelsAfter = {0.25, 0.125, 0.5, 1};
    fit.screenAfter.rms = NOWHERE;
    fit.values = {{"orientation z", FittedValue::Quantity::ANGLE, 0.5, -1e-17, 0.01},
                  {"position x", FittedValue::Quantity::LENGTH, 1.5, 1.5, std::nullopt}};
    PointResidual inlier;
    inlier.pixelsAfter = {0.25, 0};
    PointResidual outlier;
    outlier.point = 1;
    outlier.pixelsAfter = {NOWHERE, NOWHERE};
    outlier.size = 21.5;
    outlier.isOutlier = true;
    fit.residuals = {inlier, outlier};
    fit.findings = {{FitFinding::Kind::OUTLIERS, FitOutcome::DOUBTFUL, "1 point was rejected", "measure again"}};
    fit.worst.text = "heading and shift";
    report.result.channels = {fit};
    return report;
}

std::string textOf(const FitReport& report) {
    std::ostringstream out;
    report.printText(out);
    return out.str();
}

Json jsonOf(const FitReport& report) {
    std::ostringstream out;
    report.printJson(out);
    return Json::parse(out.str());
}

TEST(FitReport, ItsTextHasEachChannelBeforeAndAfter) {
    const std::string text = textOf(report());
    EXPECT_THAT(text, HasSubstr("measured     points.csv: 2 points of 4 rows, 1 not mapped, 1 repeated\n"));
    EXPECT_THAT(text, HasSubstr("result       doubtful\n"));
    EXPECT_THAT(text, HasSubstr("12.5 -> 0.25"));
    EXPECT_THAT(text, HasSubstr("0 -> -"));
    EXPECT_THAT(text, HasSubstr("orientation z  28.647890  0.000000  0.57296    deg\n")) << "no sign of zero";
    EXPECT_THAT(text, HasSubstr("position x     1.500000   held                 m\n"));
    EXPECT_THAT(text, HasSubstr("  outlier: line 3, - px, 0 m on the screen, 21.5 deviations\n"));
    EXPECT_THAT(text, HasSubstr("  doubtful: 1 point was rejected; measure again\n"));
    EXPECT_THAT(text, HasSubstr("\nNothing was written.\n"));
}

TEST(FitReport, OneIsNoPlural) {
    FitReport one = report();
    one.measured.rows = 1;
    one.combined.points.resize(1);
    one.result.channels.clear();
    EXPECT_THAT(textOf(one), HasSubstr("points.csv: 1 point of 1 row, "));
}

TEST(FitReport, WhereThereIsNoUnitNoBlankStandsForIt) {
    FitReport bare = report();
    bare.result.unit = "";
    bare.frames.resize(1);
    bare.frames[0].rms = 0.002;
    bare.frames[0].deviations = {{0.003, 6}};
    ChannelFit& fit = bare.result.channels[0];
    fit.worst.deviatingName = "k3";
    fit.worst.deviation = 0.0040625;
    fit.worst.quantity = FittedValue::Quantity::NUMBER;
    fit.worst.remedy = "";
    const std::string text = textOf(bare);
    EXPECT_THAT(text, HasSubstr("  worst determined: heading and shift, deviation 0.0040625 of k3\n"));
    EXPECT_THAT(text, HasSubstr(", 0 on the screen, 21.5 deviations\n"));
    EXPECT_THAT(text, HasSubstr("1 control points, RMS 0.002, largest 0.003 (line 6)\n"));
    fit.worst.quantity = FittedValue::Quantity::ANGLE;
    EXPECT_THAT(textOf(bare), HasSubstr(", deviation 0.23276 deg of k3\n"));
}

TEST(FitReport, WhatWasHeldOfTheFrustumIsNamed) {
    FitReport held = report();
    EXPECT_THAT(textOf(held), HasSubstr("channel Left (A): solved orientation\n"));
    held.result.channels[0].holdsHorizontalShift = true;
    EXPECT_THAT(textOf(held), HasSubstr("channel Left (A): solved orientation; held: horizontal shift\n"));
    held.result.channels[0].holdsSquarePixels = true;
    EXPECT_THAT(textOf(held), HasSubstr("solved orientation; held: square pixels, horizontal shift\n"));
    held.result.channels[0].isSolved = false;
    EXPECT_THAT(textOf(held), HasSubstr("channel Left (A): not solved\n"));
}

TEST(FitReport, ItSaysWhatWasWritten) {
    FitReport written = report();
    written.written = "new.xml";
    written.lensFiles = {"new-A.yml"};
    EXPECT_THAT(textOf(written), HasSubstr("\nWritten: new.xml, new-A.yml\n"));
    EXPECT_EQ(jsonOf(written)["written"], Json::parse(R"({"configuration":"new.xml","lensFiles":["new-A.yml"]})"));
}

TEST(FitReport, ItsTextNamesFramesWithTheirLargestDeviation) {
    FitReport registered = report();
    registered.frames.resize(1);
    registered.frames[0].set = "east";
    registered.frames[0].rms = 0.002;
    registered.frames[0].deviations = {{0.001, 5}, {0.003, 6}};
    registered.frames[0].remarks = {"Add a fourth."};
    EXPECT_THAT(textOf(registered),
                HasSubstr("frame        east: 2 control points, RMS 0.002 m, largest 0.003 m (line 6)\n"
                          "  note: Add a fourth.\n"));
    EXPECT_EQ(jsonOf(registered)["measurement"]["frames"][0]["deviations"][1]["line"], 6);
}

TEST(FitReport, ManyOutliersAreCounted) {
    FitReport many = report();
    many.result.channels[0].residuals.assign(25, many.result.channels[0].residuals[1]);
    EXPECT_THAT(textOf(many), HasSubstr("  and 5 more outliers\n"));
    EXPECT_EQ(jsonOf(many)["channels"][0]["residuals"].size(), 25U);
}

TEST(FitReport, ItsJsonHasEveryNumberAndNullWhereThereIsNone) {
    const Json json = jsonOf(report());
    EXPECT_EQ(json["schema"], "screenmanager/fit");
    EXPECT_EQ(json["units"]["length"], "m");
    EXPECT_EQ(json["outcome"], "doubtful");
    EXPECT_EQ(json["measurement"]["repeated"], 1);
    EXPECT_TRUE(json["written"].is_null());
    const Json& channel = json["channels"][0];
    EXPECT_EQ(channel["pixels"]["before"]["rms"], 12.5);
    EXPECT_EQ(channel["pixels"]["after"]["unmapped"], 1);
    EXPECT_TRUE(channel["screen"]["after"]["rms"].is_null());
    EXPECT_EQ(channel["values"][0]["after"], -1e-17);
    EXPECT_TRUE(channel["values"][1]["deviation"].is_null());
    EXPECT_EQ(channel["residuals"][0]["lines"], Json::parse("[2,4]"));
    EXPECT_EQ(channel["residuals"][0]["point"], Json::parse("[1.0,2.0,3.0]"));
    EXPECT_TRUE(channel["residuals"][1]["pixelsAfter"][0].is_null());
    EXPECT_EQ(channel["findings"][0]["kind"], "OUTLIERS");
    EXPECT_TRUE(channel["worst"]["scaledCondition"].is_null()) << "infinite";
}

TEST(FitReport, ItsJsonHasFramesAndChannelsWhole) {
    FitReport whole = report();
    whole.frames.resize(1);
    whole.frames[0].set = "east";
    whole.frames[0].scale = 1.25;
    whole.frames[0].rotation = Veltrani::rotationZXY(0.1, 0.2, 0.3);
    whole.frames[0].translation = {7, -8, 9};
    whole.frames[0].remarks = {"first", "second"};
    ChannelFit other = whole.result.channels[0];
    other.name = "Right";
    other.isSolved = false;
    other.solved.frustum = true;
    other.holdsSquarePixels = true;
    whole.result.channels.push_back(other);
    ChannelFit& fit = whole.result.channels[0];
    fit.worst.solvedNames = {"heading", "shift"};
    fit.worst.weights = {0.6, -0.8};
    fit.worst.scaledCondition = 12.5;
    fit.covariance = {4, 1, 1, 9};
    fit.residuals[0].screenBefore = {1, 2, 3};
    const Json json = jsonOf(whole);
    const Json& frame = json["measurement"]["frames"][0];
    ASSERT_EQ(frame["rotation"].size(), 9U);
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(frame["rotation"][i], whole.frames[0].rotation(i / 3, i % 3));
    }
    EXPECT_EQ(frame["translation"], Json::parse("[7.0,-8.0,9.0]"));
    EXPECT_EQ(frame["scale"], 1.25);
    EXPECT_EQ(frame["remarks"], Json::parse(R"(["first","second"])"));
    ASSERT_EQ(json["channels"].size(), 2U);
    const Json& worst = json["channels"][0]["worst"];
    EXPECT_EQ(worst["names"], Json::parse(R"(["heading","shift"])"));
    EXPECT_EQ(worst["weights"], Json::parse("[0.6,-0.8]"));
    EXPECT_EQ(worst["scaledCondition"], 12.5);
    EXPECT_EQ(json["channels"][0]["covariance"], Json::parse("[4.0,1.0,1.0,9.0]"));
    EXPECT_EQ(json["channels"][0]["solved"], Json::parse(R"(["orientation"])"));
    EXPECT_EQ(json["channels"][0]["residuals"][0]["screenBefore"], Json::parse("[1.0,2.0,3.0]"));
    EXPECT_EQ(json["channels"][0]["residuals"][0]["outlier"], false);
    EXPECT_EQ(json["channels"][0]["residuals"][1]["outlier"], true);
    EXPECT_EQ(json["channels"][1]["name"], "Right");
    EXPECT_TRUE(json["channels"][1]["worst"].is_null()) << "nothing was solved";
    EXPECT_EQ(json["channels"][1]["solved"], Json::parse(R"(["orientation","frustum"])"));
    EXPECT_EQ(json["channels"][1]["holdsSquarePixels"], true);
    EXPECT_EQ(json["channels"][1]["holdsHorizontalShift"], false);
}

TEST(FitReport, OutliersOfAnUnusableFitAreNotListed) {
    FitReport unusable = report();
    EXPECT_THAT(textOf(unusable), HasSubstr("  outlier: line 3"));
    unusable.result.channels[0].outcome = FitOutcome::UNUSABLE;
    EXPECT_THAT(textOf(unusable), Not(HasSubstr("  outlier: ")));
}

TEST(FitReport, ItsJsonEndsWithWhatItsPulseThrows) {
    struct Ended {};
    FitReport many = report();
    many.result.channels[0].residuals.resize(5000);
    int pulses = 0;
    std::ostringstream out;
    many.printJson(out, [&pulses] { ++pulses; });
    EXPECT_GE(pulses, 4);
    EXPECT_EQ(Json::parse(out.str())["channels"][0]["residuals"].size(), 5000U);
    EXPECT_THROW(many.printJson(out,
                                [&pulses] {
                                    if (--pulses == 0) {
                                        throw Ended();
                                    }
                                }),
                 Ended);
}

TEST(FitReport, NamesOfTheDisplayDoNotSteerATerminal) {
    FitReport hostile = report();
    hostile.configuration = "a\x1b[2Jb";
    hostile.result.channels[0].name = "a\nb";
    EXPECT_THAT(textOf(hostile), Not(HasSubstr("\x1b")));
    EXPECT_THAT(textOf(hostile), HasSubstr("channel a\\nb (A)"));
}

}  // namespace
