#include "DisplayReport/check/Rule.h"

#include "DisplayReport/check/DisplayCheck.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;

TEST(Rule, EachHasANameOfItsOwnAndAReason) {
    std::set<std::string_view> names;
    for (const Rule& rule : Rule::all()) {
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
        EXPECT_FALSE(rule.reason.empty()) << rule.name;
        EXPECT_LE(rule.least, rule.most) << rule.name;
        EXPECT_EQ(&Rule::named(rule.name), &rule);
    }
}

TEST(Rule, FaultsCannotBeAllowed) {
    EXPECT_FALSE(Rule::canBeAllowed("same-device"));
    EXPECT_TRUE(Rule::canBeAllowed("same-name"));
    EXPECT_TRUE(Rule::canBeAllowed("dark-parts"));
    EXPECT_FALSE(Rule::canBeAllowed("same-nam"));
    EXPECT_FALSE(Rule::canBeAllowed(""));
    EXPECT_THAT(Rule::namesToAllow(), HasSubstr("same-name, "));
    EXPECT_THAT(Rule::namesToAllow(), testing::Not(HasSubstr("same-device")));
}

TEST(Rule, EachIsDescribedWithItsSeverity) {
    std::ifstream file(sourceFolder() + "/docs/plausibility.md");
    std::ostringstream page;
    page << file.rdbuf();
    for (const Rule& rule : Rule::all()) {
        EXPECT_THAT(page.str(),
                    HasSubstr("\n| `" + std::string(rule.name) + "` | " + std::string(nameOf(rule.severity)) + " | "));
    }
}

/// The rules that find something in a display of one channel, but for the remarks.
class Borders : public testing::Test {
protected:
    ~Borders() override { ScreenManager::deleteInstance(); }

    static bool finds(const std::string& rule, const std::string& screen, const std::string& targets,
                      const std::string& projectors) {
        const auto config = displays::parsed(screen, projectors, targets);
        const auto findings = DisplayCheck::ofConfiguration(*config).findings;
        return std::any_of(findings.begin(), findings.end(),
                           [&](const Finding& finding) { return finding.rule == rule; });
    }

    static bool findsOnFlat(const std::string& rule, const std::string& projector) {
        return finds(rule, displays::FLAT, "<TargetData type='PlanarBasic'/>", displays::projector("A", projector));
    }

    /// Of a projector 3 m in front of a wall of 4 m x 2 m.
    static bool findsInRays(const std::string& rule, const std::string& elements) {
        return finds(rule, displays::FLAT, "<TargetData type='ProjectorCentric'/>",
                     displays::projector("A", "<Position x='0' y='2' z='1'/>" + elements));
    }

    LogTrap m_log;
};

TEST_F(Borders, AnAreaMayPassTheScreenByOneScreen) {
    EXPECT_FALSE(findsOnFlat("area-off-screen", "<ScreenArea left='-1' right='2' bottom='0' top='1'/>"));
    EXPECT_TRUE(findsOnFlat("area-off-screen", "<ScreenArea left='-1.01' right='1' bottom='0' top='1'/>"));
    EXPECT_TRUE(findsOnFlat("area-off-screen", "<ScreenArea left='0' right='1' bottom='0' top='2.01'/>"));
}

TEST_F(Borders, APictureMayMissThirtyFivePercent) {
    EXPECT_FALSE(findsOnFlat("misses-screen", "<ScreenArea left='0' right='1.47' bottom='0' top='1'/>"));
    EXPECT_TRUE(findsOnFlat("misses-screen", "<ScreenArea left='0' right='1.6' bottom='0' top='1'/>"));
}

TEST_F(Borders, AFieldOfViewHasThreeToAHundredAndSixtyDegrees) {
    EXPECT_FALSE(findsInRays("narrow-view", "<Frustum left='-2.5' right='2.5' bottom='-1.51' top='1.51'/>"));
    EXPECT_TRUE(findsInRays("narrow-view", "<Frustum left='-2.4' right='2.4' bottom='-1.49' top='1.49'/>"));
    EXPECT_FALSE(findsInRays("narrow-view", "<Frustum left='-79' right='79' bottom='-70' top='70'/>"));
    EXPECT_TRUE(findsInRays("narrow-view", "<Frustum left='-81' right='81' bottom='-70' top='70'/>"));
}

TEST_F(Borders, AFrustumMayDifferFromThePictureByAQuarter) {
    // 1.6 times as wide as high, the tangent of 11.31 degrees being 0.2: 0.384 is 20 % more than 0.32.
    EXPECT_FALSE(findsInRays("picture-stretched", "<Frustum left='-21' right='21' bottom='-11.31' top='11.31'/>"));
    EXPECT_TRUE(findsInRays("picture-stretched", "<Frustum left='-22' right='22' bottom='-11.31' top='11.31'/>"));
    EXPECT_TRUE(findsInRays("picture-stretched", "<Frustum left='-14' right='14' bottom='-11.31' top='11.31'/>"));
}

TEST_F(Borders, AScreenHasThirtyCentimetresToAHundredAndFiftyMetres) {
    const auto findsSize = [](const std::string& width) {
        return finds(
            "screen-size",
            "<Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size width='" + width + "' height='0.2'/></Screen>",
            "<TargetData type='PlanarBasic'/>", displays::projector("A", displays::WHOLE_AREA));
    };
    EXPECT_TRUE(findsSize("0.29"));
    EXPECT_FALSE(findsSize("0.31"));
    EXPECT_FALSE(findsSize("149"));
    EXPECT_TRUE(findsSize("151"));
}

TEST_F(Borders, AWholeTurnIsNoLargeAngle) {
    EXPECT_FALSE(findsInRays("large-angle",
                             "<Frustum left='-16' right='16' bottom='-10' top='10'/>"
                             "<Orientation z='360' x='0' y='-360'/>"));
    EXPECT_TRUE(findsInRays("large-angle",
                            "<Frustum left='-16' right='16' bottom='-10' top='10'/>"
                            "<Orientation z='361' x='0' y='0'/>"));
}

TEST_F(Borders, RadiansForDegreesHeapTheDirectionsOfAllChannels) {
    const auto channels = [](const std::string& left, const std::string& right) {
        std::string text;
        int number = 0;
        for (const std::string& z : {left, std::string("0"), right}) {
            text += displays::projector("P" + std::to_string(++number),
                                        "<Orientation z='" + z +
                                            "' x='0' y='0'/>"
                                            "<Frustum left='-26' right='26' bottom='-17' top='17'/>");
        }
        return text;
    };
    const std::string targets = "<TargetData type='Spherical'/>";
    EXPECT_TRUE(finds("heaped-pictures", displays::SPHERE, targets, channels("-0.7", "0.7")));
    EXPECT_FALSE(finds("heaped-pictures", displays::SPHERE, targets, channels("-40", "40")));
    EXPECT_FALSE(finds("heaped-pictures", displays::SPHERE, targets, channels("0", "0"))) << "projectors in a stack";
}

}  // namespace
