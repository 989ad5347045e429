// Points that no values explain end the search soon.
#include "DisplayFit/DisplayFitter.h"
#include "FitScene.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using Points = std::vector<MeasuredPoint>;

/// A pass over the points is counted by its pulse: no time is measured.
TEST(InexplicablePoints, EndBehindAMirrorAfterFewPassesOverThem) {
    const LogTrap warnings(log4cxx::Level::getWarn());
    {
        FitScene scene = FitScene::ofExample("collimated");
        Points exact = scene.measured(40, 25);
        exact.erase(std::remove_if(exact.begin(), exact.end(), [](const auto& point) { return point.channel != 0; }),
                    exact.end());
        const auto config = scene.disturbed();
        const auto passesOf = [&config](const Points& points, FitOutcome expected) {
            std::size_t passes = 0;
            FitOptions options;
            options.pulse = [&passes] { ++passes; };
            EXPECT_EQ(DisplayFitter(options).fit(*config, points).channels.at(0).outcome, expected);
            return passes;
        };
        const std::size_t good = passesOf(SyntheticChannel::noisy(exact, 0.001, 1), FitOutcome::GOOD);
        std::mt19937 random(5);
        std::uniform_real_distribution<double> part(0, 1);
        Points elsewhere = exact;
        for (MeasuredPoint& point : elsewhere) {
            point.picture = {part(random), part(random)};
        }
        EXPECT_LE(passesOf(elsewhere, FitOutcome::UNUSABLE), 4 * good) << "random places in the picture";
        elsewhere = exact;
        for (MeasuredPoint& point : elsewhere) {
            point.world = {2 * part(random) - 1, 1 + part(random), 1 + part(random)};
        }
        EXPECT_LE(passesOf(elsewhere, FitOutcome::UNUSABLE), 4 * good) << "random places in the room";
        elsewhere = SyntheticChannel::noisy(exact, 0.001, 2);
        for (MeasuredPoint& point : elsewhere) {
            point.world += Point<double, 3>{3, 0, 1};
        }
        EXPECT_LE(passesOf(elsewhere, FitOutcome::UNUSABLE), 4 * good) << "another frame";
    }
    ScreenManager::deleteInstance();
}

}  // namespace
