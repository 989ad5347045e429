#include "DisplayReport/basics/ReportHead.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using Json = nlohmann::json;

/// The digests of NIST: of "abc", and of a million times "a".
constexpr const char* OF_ABC = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr const char* OF_A_MILLION = "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(ReportHead, NamesAFileByItsDigest) {
    const TemporaryFolder folder;
    const std::string file = folder.write("abc", "abc");
    EXPECT_EQ(ReportHead::source(file).name, file);
    EXPECT_EQ(ReportHead::source(file).sha256, OF_ABC);
    EXPECT_EQ(ReportHead::source(folder.write("long", std::string(1'000'000, 'a'))).sha256, OF_A_MILLION);
}

TEST(ReportHead, WhatCannotBeReadHasNoDigest) {
    const TemporaryFolder folder;
    EXPECT_EQ(ReportHead::source(folder.file("gone")).sha256, "");
    EXPECT_EQ(ReportHead::source(folder.path()).sha256, "") << "a folder";
    const auto sources = ReportHead::sourcesOf(folder.write("bad.xml", "<Display"));
    ASSERT_EQ(sources.size(), 1U);
    EXPECT_EQ(sources[0].sha256.size(), 64U);
}

TEST(ReportHead, AConfigurationComesWithTheFilesThatItNamesOnce) {
    const TemporaryFolder folder;
    const std::string mesh = folder.write("wall.obj", "abc");
    const std::string file = folder.write("display.xml",
                                          "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' "
                                          "fileUnit='m'><ContentMesh file='wall.obj'/><MeasuredMesh file='wall.obj'/>"
                                          "</Screen></Display>");
    const auto sources = ReportHead::sourcesOf(file);
    ASSERT_EQ(sources.size(), 2U);
    EXPECT_EQ(sources[0].name, file);
    EXPECT_EQ(sources[1].name, mesh);
    EXPECT_EQ(sources[1].sha256, OF_ABC);
}

TEST(ReportHead, ReadsWhatItWrote) {
    for (const ReportHead& written : {ReportHead{"targets", "m"}, ReportHead{"map", "", "a plane; unit of its own", 3},
                                      ReportHead{"map", "the screen from edge to edge", ReportHead::ON_SCREEN}}) {
        ReportHead head{.frame = ""};
        std::istringstream lines(written.comment());
        for (std::string line; std::getline(lines, line);) {
            head.read(line);
        }
        EXPECT_EQ(head.report, written.report);
        EXPECT_EQ(head.unit, written.unit);
        EXPECT_EQ(head.frame, written.frame);
        EXPECT_EQ(head.version, written.version);
    }
}

TEST(ReportHead, OtherLinesChangeNothing) {
    ReportHead head{"targets", "m"};
    for (const char* line : {"", "#", "# screenmanager", "# x, y, z: no unit", "# u, v: somewhere",
                             "x, y, z: a; unit b", "# screenmanager/map", "# a remark"}) {
        head.read(line);
    }
    EXPECT_EQ(head.comment(), (ReportHead{"targets", "m"}.comment()));
}

TEST(ReportHead, BeginsTablesAndObjects) {
    ReportHead head{"targets", "m"};
    head.files = {{"a\"b", OF_ABC}, {"gone", ""}};
    EXPECT_EQ(head.comment(),
              "# screenmanager/targets version 1\n# x, y, z: world, right-handed, +x right, +y forward, +z up; unit m\n"
              "# u, v: place in the picture of the channel, (0, 0) bottom left, (1, 1) top right\n");
    EXPECT_EQ(Json::parse('{' + head.members() + '}'),
              (Json{{"schema", "screenmanager/targets"},
                    {"version", 1},
                    {"units", {{"length", "m"}}},
                    {"frame", "world, right-handed, +x right, +y forward, +z up"},
                    {"picture", "place in the picture of the channel, (0, 0) bottom left, (1, 1) top right"},
                    {"files", {{{"name", "a\"b"}, {"sha256", OF_ABC}}, {{"name", "gone"}, {"sha256", nullptr}}}}}));
}

TEST(ReportHead, WithoutAReportThereIsNone) {
    EXPECT_EQ(ReportHead().comment(), "");
    EXPECT_EQ(ReportHead().members(), "");
}

TEST(ReportHead, AResultWithoutPlacesHasNoFrame) {
    const Json head = Json::parse('{' + ReportHead{"discover", {}, {}}.members() + '}');
    EXPECT_TRUE(head["frame"].is_null());
    EXPECT_TRUE(head["picture"].is_null());
    EXPECT_TRUE(head["units"]["length"].is_null());
}

}  // namespace
