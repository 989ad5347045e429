#include "DisplayFit/detail/ChannelSearch.h"

#include "../SyntheticChannel.h"
#include "Configuration/ProjectorConfig.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "WallChannels.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::DisplayFit::ChannelValues;
using Veltrani::DisplayFit::FitOptions;
using Veltrani::DisplayFit::MeasuredPoint;

PictureModel::Held solving() {
    PictureModel::Held held;
    held.solved.position = held.solved.orientation = held.solved.frustum = true;
    return held;
}

FitPoints reversedIn(std::size_t coordinate, const std::vector<MeasuredPoint>& measured) {
    FitPoints points = WallChannels::of(measured);
    for (Point<double, 2>& picture : points.picture) {
        picture[coordinate] = 1 - picture[coordinate];
    }
    return points;
}

/// A projector that stands by itself, and what is configured of it.
class ChannelSearchTest : public testing::Test {
protected:
    ~ChannelSearchTest() override { ScreenManager::deleteInstance(); }

    void configure(const ChannelValues& values) {
        m_config = m_channel.config(values, "configured");
        m_setup =
            std::make_unique<ChannelSetup>(*m_config, *DisplayKind::of(*m_config), *m_config->getProjectorConfig(L"A"));
    }

    /// In u, and in v.
    [[nodiscard]] std::vector<bool> reversals(const FitPoints& points) const {
        const ChannelSearch search(*m_setup, points, m_options);
        return {search.fitsReversed(0, solving()), search.fitsReversed(1, solving())};
    }

    LogTrap m_log;
    SyntheticChannel m_channel{"Rectilinear", {}};
    std::unique_ptr<XMLConfigFile> m_config;
    std::unique_ptr<ChannelSetup> m_setup;
    FitOptions m_options;
};

TEST_F(ChannelSearchTest, PointsFitReversedWhereTheyWereReversed) {
    configure(m_channel.disturbed());
    const auto measured = m_channel.measured(60);
    EXPECT_EQ(reversals(WallChannels::of(measured)), (std::vector<bool>{false, false}));
    EXPECT_EQ(reversals(reversedIn(0, measured)), (std::vector<bool>{true, false}));
    EXPECT_EQ(reversals(reversedIn(1, measured)), (std::vector<bool>{false, true}));
}

// Something can be fitted to them, from which they lie far.
TEST_F(ChannelSearchTest, PointsThatAreRoughFitNoReversal) {
    configure(m_channel.disturbed());
    const auto fine = SyntheticChannel::noisyInPicture(m_channel.measured(60), 2, 5);
    EXPECT_EQ(reversals(reversedIn(0, fine)), (std::vector<bool>{true, false}));
    const auto rough = SyntheticChannel::noisyInPicture(m_channel.measured(60), 60, 5);
    EXPECT_EQ(reversals(reversedIn(0, rough)), (std::vector<bool>{false, false}));
    EXPECT_EQ(reversals(reversedIn(1, rough)), (std::vector<bool>{false, false}));
}

// The configured values lead nowhere: the projector looks away from all of its points.
TEST_F(ChannelSearchTest, AStartFromWhichNothingIsSeenIsReplaced) {
    ChannelValues turned = m_channel.truth();
    turned.orientation[0] += 3;
    turned.position += Point<double, 3>{2, 5, -1};
    configure(turned);
    const FitPoints points = WallChannels::of(m_channel.measured(60));
    const auto model = m_setup->make(points, solving());
    const Solution solution = ChannelSearch(*m_setup, points, m_options).solve(*model);
    ASSERT_TRUE(solution.isSolved);
    EXPECT_EQ(solution.inliers, 60U);
    ChannelValues found = turned;
    model->write(std::vector<double>(model->unknowns().size()).data(), found);
    EXPECT_LT(norm(found.position - m_channel.truth().position), 1e-8);
    EXPECT_LT(norm(found.orientation - m_channel.truth().orientation), 1e-8);
    EXPECT_NEAR(found.frustum.left, m_channel.truth().frustum.left, 1e-8);
}

TEST_F(ChannelSearchTest, APlainModelHasNoDenominator) {
    const std::vector<double> eight{0.3, -0.12, 4e-3, -3e-3, 0.05, 0.45, -0.08, 0.03};
    m_channel = SyntheticChannel("BrownConrady", eight);
    configure(m_channel.truth());
    const FitPoints points = WallChannels::of(m_channel.measured(20));
    const auto plain = ChannelSearch(*m_setup, points, m_options).plainModel(solving());
    const auto& lens = dynamic_cast<const PictureModel&>(*plain).view().lens;
    EXPECT_EQ(lens.coefficients(), 5U);
    EXPECT_EQ(lens.coefficient(4), 0.05);
}

}  // namespace
