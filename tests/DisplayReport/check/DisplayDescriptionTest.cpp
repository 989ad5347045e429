#include "DisplayReport/check/DisplayDescription.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

ChannelDescription channel(const std::string& name, const std::string& id, const std::string& picture,
                           const std::string& locator, const std::string& note) {
    return {name, id, {{"picture", picture}, {"targets by", locator}, {"device", "none"}, {"note", note}}};
}

std::string printed(const DisplayDescription& description) {
    std::ostringstream out;
    print(description, out);
    return out.str();
}

TEST(DisplayDescription, PrintsFactsChannelsAndNoFaults) {
    DisplayDescription description;
    description.facts = {{"screen", "Flat"}, {"target data", "PlanarBasic"}};
    description.channels = {channel("Left", "AB", "1920 x 1200", "screen area left 0", "")};
    EXPECT_EQ(printed(description),
              "screen       Flat\n"
              "target data  PlanarBasic\n"
              "\n"
              "channel  projector  picture      targets by          device\n"
              "Left     AB         1920 x 1200  screen area left 0  none\n"
              "\n"
              "No faults.\n");
}

TEST(DisplayDescription, AColumnIsPrintedWhenOneChannelHasAValueForIt) {
    DisplayDescription description;
    description.channels = {channel("Left", "AB", "1 x 1", "a", ""), channel("Right", "AC", "1 x 1", "b", "new lamp")};
    EXPECT_EQ(printed(description),
              "\n"
              "channel  projector  picture  targets by  device  note\n"
              "Left     AB         1 x 1    a           none\n"
              "Right    AC         1 x 1    b           none    new lamp\n"
              "\n"
              "No faults.\n");
    EXPECT_EQ(description.channels[1].fact("note"), "new lamp");
    EXPECT_EQ(description.channels[1].fact("weight"), "");
}

TEST(DisplayDescription, PrintsEveryFaultWithItsCauses) {
    DisplayDescription description;
    description.faults = {{"content mesh", "Unable to load", {"line 3", "B\u00fchne"}}, {"units", "none", {}}};
    EXPECT_EQ(printed(description),
              "\n"
              "2 faults:\n"
              "  - content mesh: Unable to load\n"
              "      because: line 3\n"
              "      because: B\u00fchne\n"
              "  - units: none\n");
}

TEST(DisplayDescription, WarningsAndRemarksStandBehindTheFaultsWithTheNamesOfTheirRules) {
    DisplayDescription description;
    description.faults = {{"units", "none", {}}};
    description.findings = {{Severity::REMARK, "dark-parts", "screen", "dark", {}},
                            {Severity::WARNING, "same-name", "channel A", "twice", {"because"}},
                            {Severity::FAULT, "empty-map", "channel B", "empty", {}},
                            {Severity::WARNING, "edge-on", "screen", "edge", {}}};
    EXPECT_EQ(printed(description),
              "\n"
              "2 faults:\n"
              "  - units: none\n"
              "  - channel B: empty [empty-map]\n"
              "\n"
              "2 warnings:\n"
              "  - channel A: twice [same-name]\n"
              "      because: because\n"
              "  - screen: edge [edge-on]\n"
              "\n"
              "1 remark:\n"
              "  - screen: dark [dark-parts]\n");
    EXPECT_EQ(description.count(Severity::FAULT), 2U);
    EXPECT_EQ(description.count(Severity::WARNING), 2U);
    EXPECT_EQ(description.count(Severity::REMARK), 1U);
}

TEST(DisplayDescription, RemarksAreNoFaultsAndWarningsAreNotNone) {
    DisplayDescription description;
    description.findings = {{Severity::REMARK, "dark-parts", "screen", "dark", {}}};
    EXPECT_EQ(printed(description), "\nNo faults.\n\n1 remark:\n  - screen: dark [dark-parts]\n");
    description.findings = {{Severity::WARNING, "edge-on", "screen", "edge", {}}};
    EXPECT_EQ(printed(description), "\n1 warning:\n  - screen: edge [edge-on]\n");
}

TEST(DisplayDescription, NoTextOfADisplayMakesALineOfItsOwn) {
    DisplayDescription description;
    description.facts = {{"display", "a\nb\x1b[2J.xml"}};
    description.channels = {channel("L\u2028eft", "A\nB", "1 x 1", "map \u202efdp", "")};
    description.faults = {{"channel\nLeft", "no\tmap", {"first\nsecond"}}};
    EXPECT_EQ(printed(description),
              "display  a\\nb\\x1b[2J.xml\n"
              "\n"
              "channel     projector  picture  targets by     device\n"
              "L\\u2028eft  A\\nB       1 x 1    map \\u202efdp  none\n"
              "\n"
              "1 fault:\n"
              "  - channel\\nLeft: no\\x09map\n"
              "      because: first\\nsecond\n");
}

}  // namespace
