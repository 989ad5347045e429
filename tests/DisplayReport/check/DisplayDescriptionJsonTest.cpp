#include "DisplayReport/check/DisplayDescriptionJson.h"

#include "DisplayReport/check/DisplayDescription.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using Json = nlohmann::json;

Json printed(const DisplayDescription& description, const ReportHead& head = {}) {
    std::ostringstream out;
    printJson(description, head, out);
    EXPECT_EQ(out.str().find('\n'), out.str().size() - 1) << "one line";
    return Json::parse(out.str());
}

TEST(DisplayDescriptionJson, BeginsWithWhatItIsAndWithTheUnitOfTheDisplay) {
    DisplayDescription description;
    description.file = "display.xml";
    description.facts = {{"screen", "Flat"}, {"units", "cm"}};
    ReportHead head;
    head.files = {{"display.xml", std::string(64, 'a')}};
    const Json json = printed(description, head);
    EXPECT_EQ(json["schema"], "screenmanager/check");
    EXPECT_EQ(json["units"]["length"], "cm");
    EXPECT_EQ(json["frame"], ReportHead::WORLD);
    EXPECT_EQ(json["files"], (Json{{{"name", "display.xml"}, {"sha256", std::string(64, 'a')}}}));
    EXPECT_EQ(json["file"], "display.xml");
    EXPECT_EQ(json["facts"][0], (Json{{"label", "screen"}, {"value", "Flat"}}));
    EXPECT_TRUE(printed(DisplayDescription())["units"]["length"].is_null()) << "not known";
}

// The table for people leaves out a column that is empty for all channels; a program finds every fact where it was.
TEST(DisplayDescriptionJson, HasEveryFactOfAChannel) {
    DisplayDescription description;
    description.channels = {{"Left \"1\"", "AB", {{"picture", "1 x 1"}, {"note", ""}}}};
    EXPECT_EQ(printed(description)["channels"], Json::parse(R"([{"name":"Left \"1\"","projector":"AB",
                               "facts":[{"label":"picture","value":"1 x 1"},{"label":"note","value":""}]}])"));
}

TEST(DisplayDescriptionJson, HasFaultsFindingsAndTheirNumbers) {
    DisplayDescription description;
    description.readable = false;
    description.faults = {{"content mesh", "Unable to load", {"line 3", "B\u00fchne"}}};
    description.findings = {{Severity::FAULT, "same-name", "channel Left", "two of them", {}},
                            {Severity::REMARK, "mirrored-areas", "channels", "left beyond right", {}}};
    description.leftOut = {"dark-screen"};
    const Json json = printed(description);
    EXPECT_EQ(json["readable"], false);
    EXPECT_EQ(json["counts"], (Json{{"faults", 2}, {"warnings", 0}, {"remarks", 1}}));
    EXPECT_EQ(json["faults"][0]["causes"], (Json{"line 3", "B\u00fchne"}));
    EXPECT_TRUE(json["faults"][0]["rule"].is_null());
    EXPECT_EQ(json["findings"][1], (Json{{"severity", "remark"},
                                         {"rule", "mirrored-areas"},
                                         {"where", "channels"},
                                         {"what", "left beyond right"},
                                         {"causes", Json::array()}}));
    EXPECT_EQ(json["notJudged"], (Json{"dark-screen"}));
}

}  // namespace
