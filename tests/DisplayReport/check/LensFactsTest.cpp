// What is known of a channel whose rays a lens makes.
#include "DisplayReport/check/ChannelFacts.h"

#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/check/DisplayFacts.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;

constexpr double DEGREE = std::numbers::pi / 180.0;

/// A calibration file of 1920 x 1200 pixels.
std::string calibration(const std::string& cx, const std::string& cy, const std::string& k1) {
    return "%YAML:1.0\n---\nimage_width: 1920\nimage_height: 1200\ncamera_matrix: !!opencv-matrix\n   rows: 3\n"
           "   cols: 3\n   dt: d\n   data: [ 1000., 0., " +
           cx + ", 0., 1000., " + cy +
           ", 0., 0., 1. ]\ndistortion_coefficients: !!opencv-matrix\n   rows: 4\n   cols: 1\n   dt: d\n   data: [ " +
           k1 + ", 0., 0., 0. ]\n";
}

class LensFactsTest : public testing::Test {
protected:
    ~LensFactsTest() override { ScreenManager::deleteInstance(); }

    const ChannelFacts& factsOf(const std::string& elements, const std::string& lens) {
        m_folder.write("lens.yml", lens);
        m_config = XMLConfigFile::load(m_folder.write(
            "display.xml",
            displays::text(displays::FLAT, displays::projector("A", elements), "<TargetData type='3D'/>")));
        EXPECT_TRUE(ScreenLoader::load(*m_config).empty());
        m_facts = DisplayFacts::of(*m_config, true);
        return m_facts.channels.at(0);
    }

    TemporaryFolder m_folder;
    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;
    DisplayFacts m_facts;
};

const std::string LENS = "<ProjectionModel name='BrownConrady' file='lens.yml'/>";

TEST_F(LensFactsTest, TheAxisLeavesThePictureAtThePrincipalPoint) {
    const ChannelFacts& channel = factsOf(LENS + "<Orientation z='30' x='-20' y='90'/><Position x='1' y='2' z='3'/>",
                                          calibration("479.5", "899.5", "0."));
    const auto axis = channel.axisInPicture();
    ASSERT_TRUE(axis.has_value());
    // Pixels have their centres at whole numbers, rows are counted from the top.
    EXPECT_NEAR((*axis)[0], 480.0 / 1920.0, 1e-12);
    EXPECT_NEAR((*axis)[1], 1.0 - 900.0 / 1200.0, 1e-12);
}

TEST_F(LensFactsTest, TheAxisMayLieBesideThePicture) {
    const auto axis = factsOf(LENS, calibration("959.5", "1799.5", "0.")).axisInPicture();
    ASSERT_TRUE(axis.has_value());
    EXPECT_NEAR((*axis)[1], -0.5, 1e-12);
}

TEST_F(LensFactsTest, AFrustumHasNoLensAndNoAxisOfOne) {
    const ChannelFacts& channel = factsOf("<Frustum left='-16' right='16' bottom='-10' top='10'/>", "");
    EXPECT_FALSE(channel.axisInPicture().has_value());
    EXPECT_TRUE(channel.statesProjector());
}

TEST_F(LensFactsTest, TheFieldOfViewIsThatOfTheWholePicture) {
    const ChannelView& view = *factsOf(LENS, calibration("959.5", "599.5", "0.")).view();
    EXPECT_NEAR(view.wide, 2 * std::atan(0.96), 1e-9);
    EXPECT_NEAR(view.high, 2 * std::atan(0.6), 1e-9);
}

/// r - r^3 / 2 grows up to r = 0.8165, where it is 0.5443: 544 pixels from the middle, of 960.
TEST_F(LensFactsTest, TheFieldOfViewEndsWhereTheLensHasNoLight) {
    const ChannelView& view = *factsOf(LENS, calibration("959.5", "599.5", "-0.5")).view();
    const double most = 2 * std::atan(0.8165);
    EXPECT_LT(view.wide, most);
    EXPECT_GT(view.wide, most - 6 * DEGREE) << "a step before the end, where the radius hardly grows any more";
}

}  // namespace
