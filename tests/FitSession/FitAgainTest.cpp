// A fit that is saved, loaded and fitted again to the same points stays where it is.
#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/DisplayFitter.h"
#include "FitScene.h"
#include "FitSession/FittedDisplay.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using Veltrani::FitSession::FittedDisplay;

class FitAgain : public testing::TestWithParam<std::string> {
protected:
    LogTrap m_log;
};

/// What a unit of the file rounds a value to, and back: an ulp each way.
double roundingOf(const FittedValue& value) {
    return 4 * std::numeric_limits<double>::epsilon() * std::abs(value.before);
}

void compare(const DisplayFitResult& first, const DisplayFitResult& again) {
    ASSERT_EQ(again.channels.size(), first.channels.size());
    for (std::size_t channel = 0; channel < first.channels.size(); ++channel) {
        const ChannelFit& one = first.channels[channel];
        const ChannelFit& two = again.channels[channel];
        SCOPED_TRACE(one.name);
        ASSERT_TRUE(one.isSolved && two.isSolved);
        EXPECT_EQ(two.outliers, one.outliers);
        ASSERT_EQ(two.values.size(), one.values.size());
        for (std::size_t i = 0; i < one.values.size(); ++i) {
            const FittedValue& value = two.values[i];
            EXPECT_NEAR(value.before, one.values[i].after, roundingOf(value)) << value.name << " as it was saved";
            EXPECT_NEAR(value.after, value.before, roundingOf(value)) << value.name << " as it is fitted again";
        }
    }
}

TEST_P(FitAgain, NothingMovesByMoreThanTheRoundingOfTheUnits) {
    FitScene scene = FitScene::ofExample(GetParam());
    const auto exact = scene.measured();
    for (const double pixels : {0.0, 0.5}) {
        SCOPED_TRACE(pixels);
        const auto points = SyntheticChannel::noisyInPicture(exact, pixels, 3);
        const auto config = scene.disturbed();
        const DisplayFitResult first = DisplayFitter().fit(*config, points);
        const std::string path = scene.folder().file("fitted.xml");
        {
            FittedDisplay fitted(*config, path, sourceFolder() + "/examples/" + GetParam() + "/display.xml");
            for (const ChannelFit& fit : first.channels) {
                fitted.take(fit);
            }
            fitted.save();
        }
        const auto saved = XMLConfigFile::load(path);
        compare(first, DisplayFitter().fit(*saved, points));
    }
}

/// A lens with as many coefficients as a file of it has.
struct SavedLens {
    std::string name;
    std::string model;
    std::vector<double> coefficients;
    double focal = 2100;
};

class FitAgainOfLens : public testing::TestWithParam<SavedLens> {
protected:
    ~FitAgainOfLens() override { ScreenManager::deleteInstance(); }
    LogTrap m_log;
};

TEST_P(FitAgainOfLens, NothingMovesByMoreThanTheRoundingOfTheUnits) {
    SyntheticChannel channel(GetParam().model, GetParam().coefficients);
    ChannelValues truth = channel.truth();
    truth.lens->fx = truth.lens->fy = GetParam().focal;
    channel.setTruth(truth);
    const auto exact = channel.measured(200);
    // Where noise decides which of many flat minima is the lowest, more than one set of it.
    for (unsigned seed = 0; seed < (IS_SANITIZED ? 4U : 9U); ++seed) {
        const double pixels = seed == 0 ? 0.0 : std::array{0.1, 0.5, 2.0}[seed % 3];
        SCOPED_TRACE(std::to_string(pixels) + " pixels, seed " + std::to_string(seed));
        const auto points = SyntheticChannel::noisyInPicture(exact, pixels, seed);
        const auto config = channel.config(channel.disturbed(), "start");
        const DisplayFitResult first = DisplayFitter().fit(*config, points);
        const TemporaryFolder folder;
        config->save(folder.file("start.xml"));
        FittedDisplay fitted(*config, folder.file("fitted.xml"), folder.file("start.xml"));
        fitted.take(first.channels.at(0));
        fitted.save();
        const auto saved = XMLConfigFile::load(folder.file("fitted.xml"));
        compare(first, DisplayFitter().fit(*saved, points));
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, FitAgainOfLens,
    testing::Values(SavedLens{"four", "BrownConrady", {-0.14, 0.08, 4e-4, -3e-4}},
                    SavedLens{"five", "BrownConrady", {-0.14, 0.08, 4e-4, -3e-4, -0.02}},
                    SavedLens{"eight", "BrownConrady", {0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03}, 700},
                    SavedLens{"eightOfANarrowView", "BrownConrady", {0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03}},
                    SavedLens{"fisheye", "Fisheye", {0.03, -0.01, 4e-3, -1e-3}}),
    [](const auto& lens) { return lens.param.name; });

INSTANTIATE_TEST_SUITE_P(All, FitAgain, testing::ValuesIn(solvedExamples()),
                         [](const auto& example) { return testNameOf(example.param); });

}  // namespace
