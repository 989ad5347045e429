#include "FitSession/ResidualReader.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "FitSession/FitReport.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Veltrani::DisplayReport::DisplayResiduals;
using Veltrani::FitSession::ResidualReader;

constexpr double NOWHERE = std::numeric_limits<double>::quiet_NaN();

const XMLConfigFile& display() {
    static const auto config = XMLConfigFile::parse(
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><TargetData type='PlanarBasic'/>"
        "<Projectors><Projector id='A'><Resolution width='1920' height='1200'/></Projector>"
        "<Projector id='B'><Name>Right</Name></Projector></Projectors></Display>",
        "display.xml");
    return *config;
}

DisplayResiduals read(const std::string& json) {
    return ResidualReader(display()).read(json, "report.json");
}

std::string refusalOf(const std::string& json) {
    try {
        static_cast<void>(read(json));
        return "it was read";
    } catch (const VeltraniParseException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
}

const std::string ROW = R"({"lines":[2,4],"picture":[0.25,0.5],"point":[1,2,3],"pixelsAfter":[0.5,-0.25],)"
                        R"("screenAfter":[0.001,null,null],"outlier":false})";

/// A report of one row, with one place of it changed.
std::string reportWith(const std::string& text = "", const std::string& replacement = "") {
    std::string report =
        R"({"schema":"screenmanager/fit","version":1,"units":{"length":"m"},"channels":[{"projector":"A",)"
        R"("residuals":[)" +
        ROW + "]}]}";
    if (!text.empty()) {
        const std::size_t place = report.find(text);
        EXPECT_NE(place, std::string::npos) << text;
        report.replace(place, text.size(), replacement);
    }
    return report;
}

// Oracle: the numbers that the report was made of.
TEST(ResidualReader, ReadsWhatTheReportOfAFitStates) {
    using namespace Veltrani::DisplayFit;
    Veltrani::FitSession::FitReport report;
    report.combined.points.resize(2);
    report.combined.points[0].picture = {0.125, 0.75};
    report.combined.points[0].world = {1.5, 2, -3};
    report.combined.lines = {{7, 9}, {8}};
    report.result.unit = "m";
    ChannelFit fit;
    fit.name = "Right";
    fit.projectorId = "B";
    PointResidual inlier;
    inlier.pixelsAfter = {0.1, -0.2};
    inlier.screenAfter = {0.001, 0, -0.002};
    PointResidual outlier;
    outlier.point = 1;
    outlier.isOutlier = true;
    outlier.pixelsAfter = {NOWHERE, NOWHERE};
    outlier.screenAfter = {NOWHERE, NOWHERE, NOWHERE};
    fit.residuals = {inlier, outlier};
    report.result.channels = {fit};
    std::ostringstream json;
    report.printJson(json);

    const DisplayResiduals residuals = read(json.str());
    ASSERT_EQ(residuals.channels.size(), 1U);
    EXPECT_EQ(residuals.channels[0].projectorId, "B");
    ASSERT_EQ(residuals.channels[0].residuals.size(), 2U);
    const auto& first = residuals.channels[0].residuals[0];
    EXPECT_EQ(first.picture, (Point<double, 2>{0.125, 0.75}));
    EXPECT_EQ(first.point, (Point<double, 3>{1.5, 2, -3}));
    EXPECT_EQ(first.pixels, (Point<double, 2>{0.1, -0.2}));
    EXPECT_EQ(first.offset, (Point<double, 3>{0.001, 0, -0.002}));
    EXPECT_EQ(first.line, 7U);
    EXPECT_FALSE(first.isOutlier);
    const auto& second = residuals.channels[0].residuals[1];
    EXPECT_TRUE(second.isOutlier);
    EXPECT_TRUE(std::isnan(second.pixels[0]) && std::isnan(second.offset[2]));
    EXPECT_EQ(second.line, 8U);
}

TEST(ResidualReader, ReportsOfOthersAreRefused) {
    EXPECT_EQ(refusalOf(reportWith("screenmanager/fit", "screenmanager/targets")),
              "report.json: schema: found \"screenmanager/targets\"; expected \"screenmanager/fit\"; "
              "name the report that fit --format json wrote, unchanged, or run fit again");
    EXPECT_EQ(refusalOf(reportWith("\"version\":1", "\"version\":2")),
              "report.json: version: found 2; expected 1; run fit again with this version of the program");
    EXPECT_THAT(refusalOf(reportWith("{\"length\":\"m\"}", "{\"length\":\"mm\"}")),
                StartsWith("report.json: units.length: found \"mm\"; expected \"m\", the unit of the display; "));
    EXPECT_THAT(refusalOf(reportWith("{\"length\":\"m\"}", "{\"length\":null}")),
                StartsWith("report.json: units.length: found null; expected \"m\""));
    EXPECT_THAT(refusalOf(reportWith("\"projector\":\"A\"", "\"projector\":\"C\"")),
                StartsWith("report.json: channels[0].projector: found \"C\"; expected the id of a projector of "
                           "the display; "));
    const std::string channel = R"({"projector":"A","residuals":[]})";
    EXPECT_THAT(refusalOf(reportWith("\"channels\":[", "\"channels\":[" + channel + ",")),
                StartsWith("report.json: channels[1].projector: found \"A\"; expected each projector once; "));
}

TEST(ResidualReader, EachElementIsCheckedAndNamed) {
    const std::string row = "report.json: channels[0].residuals[0].";
    const std::tuple<std::string, std::string, std::string> changes[] = {
        {"\"lines\":[2,4]", "\"lines\":[]", row + "lines: found []; expected a line of the table at least; "},
        {"\"lines\":[2,4]", "\"lines\":[-2]", row + "lines[0]: found -2; expected a whole number from 0; "},
        {"\"lines\":[2,4]", "\"lines\":2", row + "lines: found 2; expected a list in brackets; "},
        {"[0.25,0.5]", "[0.25,null]", row + "picture: found [0.25,null]; expected 2 numbers; "},
        {"[0.25,0.5]", "{}", row + "picture: found an object; expected 2 numbers; "},
        {"[1,2,3]", "[1,2]", row + "point: found [1,2]; expected 3 numbers; "},
        {"[1,2,3]", "[1,2,1e200]", row + "point: found [1,2,1e+200]; expected 3 numbers; "},
        {"[1,2,3]", "[1,2,[3]]", row + "point: found a list of 3; expected 3 numbers; "},
        {"[0.5,-0.25]", "[0.5,true]", row + "pixelsAfter: found [0.5,true]; expected 2 numbers or nulls; "},
        {"[0.001,null,null]", "\"x\"", row + "screenAfter: found \"x\"; expected 3 numbers or nulls; "},
        {":false", ":0", row + "outlier: found 0; expected true or false; "},
        {"\"outlier\"", "\"outliers\"", "report.json: channels[0].residuals[0]: found no \"outlier\"; expected one; "},
        {"\"projector\":\"A\"", "\"projector\":1", "report.json: channels[0].projector: found 1; expected a text; "},
        {"\"units\":{\"length\":\"m\"}", "\"units\":3", "report.json: units: found 3; expected an object in braces; "}};
    for (const auto& [text, replacement, message] : changes) {
        EXPECT_THAT(refusalOf(reportWith(text, replacement)), StartsWith(message)) << replacement;
    }
}

TEST(ResidualReader, APlaceFarBesideThePictureIsRefused) {
    const auto with = [](const std::string& place) { return reportWith("[0.25,0.5]", place); };
    for (const char* beside : {"[0,1]", "[-0.02,1.1]", "[2,-1]"}) {
        EXPECT_EQ(read(with(beside)).channels.at(0).residuals.size(), 1U) << beside;
    }
    for (const std::string far : {"[55,-3]", "[2.01,0.5]", "[0.5,-1.01]", "[1e99,0]"}) {
        EXPECT_THAT(refusalOf(with(far)), StartsWith("report.json: channels[0].residuals[0].picture: found [")) << far;
    }
    EXPECT_THAT(
        refusalOf(with("[55,-3]")),
        HasSubstr("found [55,-3]; expected a place in the picture, from 0 to 1 or up to the picture's size beside "
                  "it; name the report"));
}

TEST(ResidualReader, WhatIsNoJsonIsNamedWithItsPlace) {
    EXPECT_THAT(refusalOf("{\n  \"schema\": oops}"),
                StartsWith("report.json: line 2, column 13: found \"oops}\"; expected JSON; "));
    EXPECT_THAT(refusalOf(""), StartsWith("report.json: line 1, column 1: found the end of the file; expected JSON; "));
    EXPECT_THAT(refusalOf("display x\nresult good"), StartsWith("report.json: line 1, column 1: found "));
    EXPECT_THAT(refusalOf(reportWith("[1,2,3]", "[1,2,1e999]")), HasSubstr("found a number that no computer holds"));
}

TEST(ResidualReader, EveryBeginningOfAReportIsRefusedInOneLine) {
    const std::string whole = reportWith();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string refusal = refusalOf(whole.substr(0, length));
        EXPECT_THAT(refusal, StartsWith("report.json: ")) << length;
        EXPECT_EQ(refusal.find('\n'), std::string::npos);
    }
    EXPECT_EQ(refusalOf(whole), "it was read");
}

TEST(ResidualReader, AFileIsNamed) {
    const TemporaryFolder folder;
    EXPECT_EQ(ResidualReader(display()).readFile(folder.write("report.json", reportWith())).channels.size(), 1U);
    EXPECT_THROW(static_cast<void>(ResidualReader(display()).readFile(folder.file("none.json"))),
                 VeltraniMissingFileException);
}

}  // namespace
