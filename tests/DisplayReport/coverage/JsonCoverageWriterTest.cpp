#include "DisplayReport/coverage/CoverageWriter.h"

#include "CoverageReports.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

nlohmann::json written(const CoverageReport& report) {
    std::ostringstream out;
    CoverageWriter::ofFormat("json")->write(report, {}, out);
    return nlohmann::json::parse(out.str());
}

TEST(JsonCoverageWriter, WritesEveryNumberAndName) {
    const auto document = written(sampleCoverage());
    EXPECT_EQ(document["unit"], "m");
    EXPECT_EQ(document["fault"], "");
    EXPECT_EQ(document["screenArea"], 8.0);
    const auto& left = document["channels"][0];
    EXPECT_EQ(left["name"], "Left, \"upper\"\nrow");
    EXPECT_EQ(left["projector"], "AB");
    EXPECT_EQ(left["width"], 1920);
    EXPECT_EQ(left["area"], 4.0);
    EXPECT_EQ(left["partOfScreen"], 0.5);
    EXPECT_NEAR(left["missed"], 0.2, 1e-15);
    EXPECT_EQ(left["missedPixels"], 460800);
    EXPECT_EQ(left["pitch"]["least"], 0.001);
    EXPECT_NEAR(left["pitch"]["mean"], 0.00147314, 1e-8);
    EXPECT_EQ(left["pitch"]["most"], 0.0025);
    const auto& overlap = document["overlaps"][0];
    EXPECT_EQ(overlap["area"], 2.0);
    EXPECT_EQ(overlap["first"]["projector"], "AB");
    EXPECT_EQ(overlap["first"]["part"], 0.25);
    EXPECT_EQ(overlap["first"]["pixels"], 576000);
    EXPECT_EQ(overlap["second"]["name"], "Bare");
    EXPECT_TRUE(overlap["second"]["pixels"].is_null());
}

TEST(JsonCoverageWriter, CountsUpToThreeAndMore) {
    const auto lit = written(sampleCoverage())["litBy"];
    ASSERT_EQ(lit.size(), 4U);
    EXPECT_EQ(lit[2]["projectors"], 2);
    EXPECT_EQ(lit[2]["orMore"], false);
    EXPECT_EQ(lit[2]["area"], 1.5);
    EXPECT_EQ(lit[3]["projectors"], 3);
    EXPECT_EQ(lit[3]["orMore"], true);
    EXPECT_EQ(lit[3]["partOfScreen"], 0.0625);
}

TEST(JsonCoverageWriter, WhatIsNotKnownIsNull) {
    const auto channels = written(sampleCoverage())["channels"];
    EXPECT_EQ(channels[1]["area"], 4.0);
    EXPECT_TRUE(channels[1]["pitch"]["mean"].is_null());
    EXPECT_TRUE(channels[1]["missedPixels"].is_null());
    EXPECT_TRUE(channels[2]["area"].is_null());
    EXPECT_TRUE(channels[2]["missed"].is_null());
    EXPECT_TRUE(channels[2]["pitch"]["most"].is_null());
    EXPECT_EQ(channels[2]["fault"], "no screen area");
}

TEST(JsonCoverageWriter, IsValidWhateverTheNumbersAndNamesAre) {
    CoverageReport report = sampleCoverage();
    report.screenArea = std::numeric_limits<double>::quiet_NaN();
    report.channels[0].area = std::numeric_limits<double>::infinity();
    report.channels[0].name = "\xff\x01 </script>\xe2\x80\xa8";
    const auto document = written(report);
    EXPECT_TRUE(document["screenArea"].is_null());
    EXPECT_TRUE(document["channels"][0]["area"].is_null());
    EXPECT_EQ(written(CoverageReport())["channels"].size(), 0U);
}

}  // namespace
