// Where all of one edge of a picture falls on one place of the screen.
#include "DisplayFit/DisplayFitter.h"
#include "FitScene.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;

constexpr std::size_t ZENITH = 5;

/// A mark that noise has brought beside the zenith lies in any direction from it, and is no worse than others.
TEST(Poles, MarksAtTheZenithAreAsGoodAsOthers) {
    const LogTrap log;
    {
        FitScene scene = FitScene::ofExample("dome");
        std::vector<MeasuredPoint> exact = scene.measured(8, 6);
        exact.erase(
            std::remove_if(exact.begin(), exact.end(), [](const auto& point) { return point.channel != ZENITH; }),
            exact.end());
        ASSERT_GE(std::count_if(exact.begin(), exact.end(), [](const auto& point) { return point.picture[1] == 1; }),
                  6);
        const auto config = scene.disturbed();
        std::size_t outliers = 0;
        double squares = 0;
        double freedom = 0;
        for (unsigned seed = 1; seed <= 60; ++seed) {
            const auto points = SyntheticChannel::noisy(exact, 0.001, seed);
            const ChannelFit fit = DisplayFitter().fit(*config, points).channels.at(0);
            ASSERT_TRUE(fit.isSolved);
            outliers += fit.outliers;
            const auto own = static_cast<double>(fit.degreesOfFreedom);
            squares += fit.residualFactor * fit.residualFactor * own;
            freedom += own;
            EXPECT_LT(fit.pixelsAfter.largest, 20) << "seed " << seed;
        }
        // One in sixteen thousand is further off than 4 standard deviations.
        EXPECT_LE(outliers, 2U);
        EXPECT_NEAR(squares / freedom, 1, 0.08);
    }
    ScreenManager::deleteInstance();
}

}  // namespace
