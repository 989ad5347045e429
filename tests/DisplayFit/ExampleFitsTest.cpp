// Every example display that can be solved: measured without noise and disturbed, it comes back.
#include "DisplayFit/DisplayFitter.h"

#include "Configuration/ProjectorConfig.h"
#include "FitScene.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace Veltrani::DisplayFit;
using testing::IsEmpty;

/// Of the screen's diagonal.
constexpr double SHIFT = 1e-9;
/// Of a value's size, where the scaled condition is below 1e6.
constexpr double VALUE = 1e-9;

class ExampleFits : public testing::TestWithParam<std::string> {
protected:
    LogTrap m_log;
};

/// Lengths, angles and parts of the screen have a size of their own, since they may be zero; coefficients are as large
/// as they are.
double sizeOf(const FittedValue& value) {
    const bool isCoefficient =
        value.quantity == FittedValue::Quantity::NUMBER && !value.name.starts_with("area") && value.after != 0;
    return isCoefficient ? std::abs(value.after) : std::max(std::abs(value.after), 1.0);
}

TEST_P(ExampleFits, ComeBackFromADisturbedCopy) {
    FitScene scene = FitScene::ofExample(GetParam());
    const auto points = scene.measured();
    const auto disturbed = scene.disturbed();
    ASSERT_GT(scene.largestShift(*disturbed), 1e-3) << "nothing to solve";
    const DisplayFitResult result = DisplayFitter().fit(*disturbed, points);
    const DisplayFitResult again = DisplayFitter().fit(scene.truth(), points);
    ASSERT_EQ(result.channels.size(), scene.truth().getProjectorConfigIds().size());
    for (const ChannelFit& fit : result.channels) {
        SCOPED_TRACE(fit.name);
        for (const FitFinding& finding : fit.findings) {
            ADD_FAILURE() << finding.text << "; " << finding.remedy;
        }
        EXPECT_EQ(fit.outcome, FitOutcome::GOOD);
        EXPECT_EQ(fit.outliers, 0U);
        ASSERT_EQ(again.channels[fit.channel].values.size(), fit.values.size());
        for (std::size_t i = 0; i < fit.values.size() && fit.worst.scaledCondition < 1e6; ++i) {
            const double truth = again.channels[fit.channel].values[i].before;
            EXPECT_NEAR(fit.values[i].after, truth, VALUE * sizeOf(fit.values[i])) << fit.values[i].name;
        }
    }
    const auto fitted = scene.disturbed();
    scene.apply(result, *fitted);
    EXPECT_LT(scene.largestShift(*fitted), SHIFT);
}

INSTANTIATE_TEST_SUITE_P(All, ExampleFits, testing::ValuesIn(solvedExamples()),
                         [](const auto& example) { return testNameOf(example.param); });

}  // namespace
