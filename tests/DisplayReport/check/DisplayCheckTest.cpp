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

TEST_F(DisplayCheckTest, TheExamplesHaveNoFaults) {
    for (const char* example : {"planar-wall", "curved-wall"}) {
        const auto description = DisplayCheck::ofFile(sourceFolder() + "/examples/" + example + "/display.xml");
        EXPECT_TRUE(description.readable);
        EXPECT_THAT(description.faults, IsEmpty()) << example;
        EXPECT_GE(description.channels.size(), 4U) << example;
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

TEST_F(DisplayCheckTest, FactsComeInTheOrderOfAReader) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    std::string labels;
    for (const DisplayFact& fact : DisplayCheck::ofConfiguration(*config).facts) {
        labels += fact.label + ", ";
    }
    EXPECT_EQ(labels, "screen, size, units, target data, channels, ");
}

}  // namespace
