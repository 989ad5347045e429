#include "DisplayFit/DisplayFitter.h"

#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using testing::ElementsAre;
using testing::IsEmpty;

/// Three channels beside each other on a wall.
class DisplayFitterTest : public testing::Test {
protected:
    DisplayFitterTest() {
        ScreenManager::getInstance()->setScreenGeometry(m_config.get(), true);
        // As of a file in which the channels alternate.
        for (int i = 0; i < 36; ++i) {
            MeasuredPoint point;
            point.channel = static_cast<std::size_t>(2 - i % 3);
            point.picture = {(i / 3 % 4) / 3.0, (i / 12) / 2.0};
            const double s = 0.3 * static_cast<double>(point.channel) + 0.3 * point.picture[0];
            point.world = {-2 + 4 * s, 5, 2 * (0.1 + 0.8 * point.picture[1])};
            m_points.push_back(point);
        }
    }
    ~DisplayFitterTest() override { ScreenManager::deleteInstance(); }

    static std::string area(const std::string& left, const std::string& right) {
        return "<ScreenArea left='" + left + "' right='" + right + "' bottom='0.1' top='0.9'/>";
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config = displays::parsed(
        displays::FLAT, displays::projector("A", area("0", "0.3")) + displays::projector("B", area("0.3", "0.6")) +
                            displays::projector("C", area("0.61", "0.9")));
    std::vector<MeasuredPoint> m_points;
};

TEST_F(DisplayFitterTest, ChannelsComeInTheOrderOfTheConfigurationWithTheirPoints) {
    std::vector<std::pair<std::size_t, std::size_t>> progress;
    const DisplayFitter fitter({}, [&progress](std::size_t done, std::size_t of) { progress.emplace_back(done, of); });
    const DisplayFitResult result = fitter.fit(*m_config, m_points);
    EXPECT_EQ(progress, (std::vector<std::pair<std::size_t, std::size_t>>{{0, 3}, {1, 3}, {2, 3}, {3, 3}}));
    EXPECT_EQ(result.unit, "m");
    ASSERT_EQ(result.channels.size(), 3U);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const ChannelFit& fit = result.channels[channel];
        EXPECT_EQ(fit.channel, channel);
        EXPECT_EQ(fit.projectorId, std::string(1, static_cast<char>('A' + channel)));
        EXPECT_EQ(fit.name, fit.projectorId);
        ASSERT_EQ(fit.residuals.size(), 12U);
        for (std::size_t i = 0; i < 12; ++i) {
            EXPECT_EQ(fit.residuals[i].point, 3 * i + 2 - channel);
        }
        EXPECT_NEAR(fit.after.area.left, 0.3 * static_cast<double>(channel), 1e-9);
    }
    EXPECT_EQ(result.outcome(), FitOutcome::GOOD);
    // What was right stays to the bit.
    EXPECT_EQ(result.channels[1].after.area.left, result.channels[1].before.area.left);
    EXPECT_NE(result.channels[2].after.area.left, result.channels[2].before.area.left);
}

TEST_F(DisplayFitterTest, OnlyTheChannelsThatAreWantedAreSolved) {
    FitOptions options;
    options.channels = {2, 0};
    const DisplayFitResult result = DisplayFitter(options).fit(*m_config, m_points);
    ASSERT_EQ(result.channels.size(), 2U);
    EXPECT_EQ(result.channels[0].channel, 0U);
    EXPECT_EQ(result.channels[1].channel, 2U);
    EXPECT_THAT(DisplayFitter().fit(*m_config, {}).channels, IsEmpty());
}

TEST_F(DisplayFitterTest, StatedDeviationsAreThoseOfTheirPoints) {
    // Of the middle channel; those of the others are much larger, and another kind of deviation is.
    for (MeasuredPoint& point : m_points) {
        Matrix<double, 3> covariance;
        for (std::size_t k = 0; k < 3; ++k) {
            covariance(k, k) = point.channel == 1 ? 1e-8 : 1e-4;
        }
        point.covariance = covariance;
    }
    const auto deviationsOf = [this] {
        std::vector<double> deviations;
        for (const ChannelFit& fit : DisplayFitter().fit(*m_config, m_points).channels) {
            EXPECT_TRUE(fit.hasStatedDeviations);
            deviations.push_back(fit.values.at(0).deviation.value());
        }
        return deviations;
    };
    const auto bySpace = deviationsOf();
    EXPECT_NEAR(bySpace[0] / bySpace[1], 100, 1e-3);
    EXPECT_NEAR(bySpace[2] / bySpace[1], 100, 1e-3);
    for (MeasuredPoint& point : m_points) {
        point.covariance.reset();
        point.pictureDeviation = Point<double, 2>{point.channel == 1 ? 0.02 : 0.001, 0.001};
    }
    const auto byPicture = deviationsOf();
    EXPECT_NEAR(byPicture[1] / byPicture[0], 20, 1e-3);
}

TEST_F(DisplayFitterTest, ARejectionIsAboveZero) {
    for (const double none : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        FitOptions options;
        options.rejection = none;
        EXPECT_THROW(DisplayFitter{options}, VeltraniException) << none;
    }
}

TEST_F(DisplayFitterTest, TheDefaultGroupsAreThoseOfTheKind) {
    const SolvedGroups ofArea = DisplayFitter::defaultGroups(*m_config, *m_config->getProjectorConfig(L"A"));
    EXPECT_EQ(ofArea, (SolvedGroups{false, false, false, false, true}));
    const auto unknown = displays::parsed(displays::FLAT, displays::projector("A", ""), "");
    EXPECT_EQ(DisplayFitter::defaultGroups(*unknown, *unknown->getProjectorConfig(L"A")), SolvedGroups{});
    EXPECT_THROW(static_cast<void>(DisplayFitter().fit(*unknown, {})), VeltraniException);
}

}  // namespace
