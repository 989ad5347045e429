#include "DisplayReport/targets/TargetWriter.h"

#include "DisplayReport/targets/TargetSurvey.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;

TargetSurvey survey() {
    TargetSurvey survey;
    survey.plan = {2, 1, 1};
    survey.unit = "m";
    ChannelTargets left;
    left.name = "Left, \"upper\"";
    left.projectorId = "AB";
    left.grid = {{0, 0, {0.0, 0.0}, {0.1, 1.0 / 3.0, -2.0}}, {1, 0, {1.0, 0.0}, {4.0, 5.0, 6.0}}};
    left.boundary = {{7.0, 8.0, 9.5}};
    left.boundaryMissed = 3;
    ChannelTargets right;
    right.name = "Right";
    right.projectorId = "CD";
    right.gridMissed = 2;
    right.fault = "no screen area";
    right.remark = "only an outline";
    survey.channels = {left, right};
    return survey;
}

std::string written(const std::string& format, const TargetSurvey& targets = survey()) {
    std::ostringstream out;
    TargetWriter::ofFormat(format)->write(targets, out);
    return out.str();
}

TEST(TargetWriter, KnowsItsFormats) {
    EXPECT_THAT(TargetWriter::formats(), ElementsAre("csv", "json", "ply"));
    for (const std::string& format : TargetWriter::formats()) {
        EXPECT_NE(TargetWriter::ofFormat(format), nullptr) << format;
    }
    EXPECT_EQ(TargetWriter::ofFormat("CSV"), nullptr);
    EXPECT_EQ(TargetWriter::ofFormat(""), nullptr);
}

std::string headWithUnit(const std::string& unit) {
    return "# screenmanager/targets version 1\n"
           "# x, y, z: world, right-handed, +x right, +y forward, +z up; unit " +
           unit + "\n# u, v: place in the picture of the channel, (0, 0) bottom left, (1, 1) top right\n";
}

TEST(CsvTargetWriter, WritesWhatItIsOneHeaderLineAndOneLinePerTarget) {
    EXPECT_EQ(written("csv"), headWithUnit("m") +
                                  "channel,projector,kind,column,row,u,v,x,y,z\n"
                                  "\"Left, \"\"upper\"\"\",AB,grid,0,0,0,0,0.1,0.3333333333333333,-2\n"
                                  "\"Left, \"\"upper\"\"\",AB,grid,1,0,1,0,4,5,6\n"
                                  "\"Left, \"\"upper\"\"\",AB,boundary,0,,,,7,8,9.5\n");
}

TEST(CsvTargetWriter, AnEmptySurveyIsTheHeaderLine) {
    EXPECT_EQ(written("csv", TargetSurvey()),
              headWithUnit("not known") + "channel,projector,kind,column,row,u,v,x,y,z\n");
}

TEST(JsonTargetWriter, WritesEveryNumberAndName) {
    const auto document = nlohmann::json::parse(written("json"));
    EXPECT_EQ(document["unit"], "m");
    EXPECT_EQ(document["columns"], 2);
    EXPECT_EQ(document["rows"], 1);
    EXPECT_EQ(document["boundarySamples"], 1);
    ASSERT_EQ(document["channels"].size(), 2U);
    const auto& left = document["channels"][0];
    EXPECT_EQ(left["name"], "Left, \"upper\"");
    EXPECT_EQ(left["projector"], "AB");
    EXPECT_EQ(left["missed"]["boundary"], 3);
    ASSERT_EQ(left["grid"].size(), 2U);
    EXPECT_EQ(left["grid"][0]["point"][1].get<double>(), 1.0 / 3.0);
    EXPECT_EQ(left["grid"][1]["u"], 1.0);
    EXPECT_EQ(left["boundary"][0][2], 9.5);
    EXPECT_EQ(document["channels"][1]["fault"], "no screen area");
    EXPECT_EQ(document["channels"][1]["remark"], "only an outline");
    EXPECT_EQ(document["channels"][1]["grid"].size(), 0U);
}

TEST(PlyTargetWriter, AnnouncesAsManyPointsAsFollow) {
    const std::string text = written("ply");
    EXPECT_THAT(text, HasSubstr("ply\nformat ascii 1.0\ncomment lengths in m\n"));
    EXPECT_THAT(text, HasSubstr("element vertex 3\n"));
    const auto body = text.substr(text.find("end_header\n") + 11);
    EXPECT_EQ(body,
              "0.1 0.3333333333333333 -2 230 159 0 0 0 0 0\n"
              "4 5 6 230 159 0 0 0 1 0\n"
              "7 8 9.5 115 79 0 0 1 0 0\n");
}

TEST(PlyTargetWriter, ANameCannotBreakTheHeader) {
    TargetSurvey targets = survey();
    targets.channels[1].name = "two\nelement vertex 99";
    EXPECT_THAT(written("ply", targets), HasSubstr("comment channel 1: two\\nelement vertex 99\n"));
}

}  // namespace
