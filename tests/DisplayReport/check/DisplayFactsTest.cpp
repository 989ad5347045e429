#include "DisplayReport/check/DisplayFacts.h"

#include "Configuration/IScreenConfig.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Veltrani::DisplayReport;

class DisplayFactsTest : public testing::Test {
protected:
    ~DisplayFactsTest() override { ScreenManager::deleteInstance(); }

    DisplayFacts factsOf(const std::string& screen, const std::string& targets, bool quick = false) {
        m_config = displays::parsed(screen, displays::projector("A", displays::WHOLE_AREA), targets);
        EXPECT_TRUE(ScreenLoader::load(*m_config).empty());
        return DisplayFacts::of(*m_config, quick);
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;
};

TEST_F(DisplayFactsTest, TheScreenIsMeasuredInItsUnit) {
    const DisplayFacts facts = factsOf(displays::FLAT, "<TargetData type='PlanarBasic'/>");
    EXPECT_EQ(facts.unit, "m");
    EXPECT_EQ(facts.metres, 1.0);
    EXPECT_NEAR(facts.size, 4.0, 1e-12);
    EXPECT_NEAR(norm(facts.middle() - Point<double, 3>{0, 5, 1}), 0.0, 1e-12);
    EXPECT_EQ(facts.measured, nullptr);
    EXPECT_NE(facts.content, nullptr);
    EXPECT_FALSE(facts.isEyeStated);
    ASSERT_NE(facts.kind, nullptr);
    EXPECT_EQ(facts.kind->type, L"PlanarBasic");
    ASSERT_EQ(facts.channels.size(), 1U);
    EXPECT_TRUE(facts.isMeasured);
    EXPECT_EQ(facts.channels[0].landed(), 1.0);
}

TEST_F(DisplayFactsTest, AQuickCheckKnowsNoLight) {
    const DisplayFacts facts = factsOf(displays::FLAT, "<TargetData type='PlanarBasic'/>", true);
    EXPECT_FALSE(facts.isMeasured);
    EXPECT_EQ(facts.channels.at(0).light(), nullptr);
}

TEST_F(DisplayFactsTest, TheEyeOfAMirrorIsStatedBesideIt) {
    const DisplayFacts facts = factsOf(
        "<Screen shape='Sphere' allow='mirror-focus'><EyePoint x='0' y='-0.3' z='-0.5'/><Centre x='0' y='0' "
        "z='1.9'/><Radius value='1.6'/></Screen>",
        "<TargetData type='SphericalCollimated'><Mirror radius='3'><Position x='0' y='0' "
        "z='1.9'/></Mirror></TargetData>");
    EXPECT_NEAR(norm(facts.eye - Point<double, 3>{0, -0.3, 1.4}), 0.0, 1e-12);
    EXPECT_TRUE(facts.isEyeStated);
    EXPECT_EQ(facts.allowed, "mirror-focus");
}

TEST_F(DisplayFactsTest, WithoutAScreenNothingIsMeasured) {
    m_config = displays::parsed("", displays::projector("A", displays::WHOLE_AREA));
    const DisplayFacts facts = DisplayFacts::of(*m_config, false);
    EXPECT_EQ(facts.screen, nullptr);
    EXPECT_EQ(facts.surface, nullptr);
    EXPECT_EQ(facts.size, 0.0);
    EXPECT_FALSE(facts.isMeasured);
    EXPECT_EQ(facts.channels.size(), 1U);
}

}  // namespace
