#include "DisplayReport/DisplayDescriptionPrinter.h"

#include "DisplayReport/DisplayDescription.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

std::string printed(const DisplayDescription& description) {
    std::ostringstream out;
    print(description, out);
    return out.str();
}

TEST(DisplayDescriptionPrinter, PrintsFactsChannelsAndNoFaults) {
    DisplayDescription description;
    description.facts = {{"screen", "Flat"}, {"target data", "PlanarBasic"}};
    description.channels = {{"Left", "AB", "1920 x 1200", "screen area left 0", "none"}};
    EXPECT_EQ(printed(description),
              "screen       Flat\n"
              "target data  PlanarBasic\n"
              "\n"
              "channel  projector  picture      targets by          device\n"
              "Left     AB         1920 x 1200  screen area left 0  none\n"
              "\n"
              "No faults.\n");
}

TEST(DisplayDescriptionPrinter, PrintsEveryFaultWithItsCauses) {
    DisplayDescription description;
    description.faults = {{"content mesh", "Unable to load", {"line 3", "first\nsecond"}}, {"units", "none", {}}};
    EXPECT_EQ(printed(description),
              "\n"
              "2 faults:\n"
              "  - content mesh: Unable to load\n"
              "      because: line 3\n"
              "      because: first\n"
              "               second\n"
              "  - units: none\n");
}

}  // namespace
