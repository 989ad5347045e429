#include "DisplayReport/check/DisplayCheck.h"

#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class DisplayCheckTest : public testing::Test {
protected:
    ~DisplayCheckTest() override { ScreenManager::deleteInstance(); }

    TemporaryFolder m_folder;
    LogTrap m_log;
};

TEST_F(DisplayCheckTest, TheExamplesHaveNeitherFaultsNorWarnings) {
    for (const char* example : {"planar-wall", "curved-wall", "dome", "cylinder", "closed-cylinder", "cockpit",
                                "spherical-dome", "collimated", "warped-wall", "lens-cylinder", "mesh-rays"}) {
        const auto description = DisplayCheck::ofFile(sourceFolder() + "/examples/" + example + "/display.xml");
        EXPECT_TRUE(description.readable);
        EXPECT_EQ(description.count(Severity::FAULT), 0U) << example;
        EXPECT_EQ(description.count(Severity::WARNING), 0U) << example;
        EXPECT_GE(description.channels.size(), 2U) << example;
    }
}

TEST_F(DisplayCheckTest, AMissingConfigurationIsOneFault) {
    const auto description = DisplayCheck::ofFile(m_folder.file("missing.xml"));
    EXPECT_FALSE(description.readable);
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_THAT(description.faults[0].what, HasSubstr("No such file or directory"));
}

TEST_F(DisplayCheckTest, EveryFaultOfAConfigurationIsTold) {
    const auto description = DisplayCheck::ofFile(m_folder.write(
        "display.xml",
        "<Display version='1'>\n<Units native='furlong'/>\n<Screen shape='Round'/>\n<Sreen/>\n</Display>\n"));
    EXPECT_FALSE(description.readable);
    ASSERT_THAT(description.faults, SizeIs(3));
    EXPECT_THAT(description.faults[0].what, HasSubstr("display.xml:2:"));
    EXPECT_THAT(description.faults[1].what, HasSubstr("display.xml:3:"));
    EXPECT_THAT(description.faults[2].what, HasSubstr("display.xml:4:"));
}

TEST_F(DisplayCheckTest, AWarningIsLeftOutByItsName) {
    const std::string area =
        "<ScreenArea left='1' right='0' bottom='0' top='1'/><Layout xMin='0' xMax='4' yMin='0' yMax='2'/>";
    const auto rules = [&](const std::string& attribute, const CheckOptions& options) {
        const auto config = XMLConfigFile::parse(
            displays::text(displays::FLAT, "<Projector id='A' " + attribute + ">" + area +
                                               "<Resolution width='1920' height='1200'/></Projector>"),
            "display.xml");
        std::vector<std::string> names;
        for (const Finding& finding : DisplayCheck::ofConfiguration(*config, options).findings) {
            names.push_back(finding.rule);
        }
        return names;
    };
    EXPECT_THAT(rules("", {}), testing::ElementsAre("edges-exchanged"));
    EXPECT_THAT(rules("", {.quick = false, .allowed = {"edges-exchanged"}}), IsEmpty());
    EXPECT_THAT(rules("allow='same-name edges-exchanged'", {}), IsEmpty());
    EXPECT_THAT(rules("allow='edges-exchange'", {}), testing::ElementsAre("unknown-rule", "edges-exchanged"));
}

TEST_F(DisplayCheckTest, AQuickCheckMeasuresNoLight) {
    const auto config =
        displays::parsed(displays::FLAT, displays::projector("A",
                                                             "<ScreenArea left='0' right='2' bottom='0' top='1'/>"
                                                             "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"));
    const auto whole = DisplayCheck::ofConfiguration(*config);
    ASSERT_THAT(whole.findings, SizeIs(1));
    EXPECT_EQ(whole.findings[0].rule, "misses-screen");
    EXPECT_EQ(whole.channels.at(0).fact("on screen"), "52 %");
    EXPECT_THAT(whole.leftOut, IsEmpty());
    const auto quick = DisplayCheck::ofConfiguration(*config, {.quick = true, .allowed = {}});
    EXPECT_THAT(quick.findings, IsEmpty());
    EXPECT_EQ(quick.channels.at(0).fact("on screen"), "not measured");
    EXPECT_THAT(quick.leftOut, SizeIs(11));
    EXPECT_THAT(quick.leftOut, testing::Contains("misses-screen"));
    EXPECT_THAT(quick.leftOut, testing::Contains("name-against-place"));
}

TEST_F(DisplayCheckTest, NamesAreJudgedWithoutLightWhereTheEyeSeesTheDirections) {
    const auto channel = [](const std::string& name, const std::string& z) {
        return displays::projector(
            name, "<Orientation z='" + z + "' x='0' y='0'/><Frustum left='-26' right='26' bottom='-17' top='17'/>");
    };
    const auto config = displays::parsed(displays::SPHERE, channel("Left", "40") + channel("Right", "-40"),
                                         "<TargetData type='Spherical'/>");
    const auto quick = DisplayCheck::ofConfiguration(*config, {.quick = true, .allowed = {}});
    ASSERT_THAT(quick.findings, SizeIs(2));
    EXPECT_EQ(quick.findings[0].rule, "name-against-place");
    EXPECT_THAT(quick.leftOut, SizeIs(10));
    EXPECT_THAT(quick.leftOut, testing::Not(testing::Contains("name-against-place")));
}

TEST_F(DisplayCheckTest, FactsComeInTheOrderOfAReader) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    std::string labels;
    for (const DisplayFact& fact : DisplayCheck::ofConfiguration(*config).facts) {
        labels += fact.label + ", ";
    }
    EXPECT_EQ(labels, "screen, size, units, target data, channels, ");
}

}  // namespace
