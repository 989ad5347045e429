// A lens that was fitted to measurements with noise, written, and read again by the display: it shows its points.
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/DisplayFitter.h"
#include "FitScene.h"
#include "FitSession/FittedDisplay.h"
#include "KelvoControl/Blend.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"
#include "support/Sanitizers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using Veltrani::FitSession::FittedDisplay;

constexpr double PIXELS = 0.5;

struct Noisy {
    std::string name;
    std::string model;
    std::vector<double> coefficients;
    bool fromTruth = false;
    double focal = 2100;
};

std::ostream& operator<<(std::ostream& out, const Noisy& noisy) {
    return out << noisy.name;
}

constexpr unsigned SEEDS = IS_SANITIZED ? 3 : 12;

class FittedLens : public testing::TestWithParam<Noisy> {
protected:
    ~FittedLens() override { ScreenManager::deleteInstance(); }

    /// The model that the display makes of a configuration that was saved, and of the lens file that it names.
    [[nodiscard]] static std::shared_ptr<ProjectionModel> modelOf(const std::string& path) {
        const auto saved = XMLConfigFile::load(path);
        const ProjectorConfig& projector = *saved->getProjectorConfig(L"A");
        const std::wstring name = projector.getProjectionModelName();
        return Blend::createProjectionModel(Viewport::of(projector, name), name, L"");
    }

    LogTrap m_log;
};

TEST_P(FittedLens, ShowsItsPointsAndItsWholePictureFromTheFileThatWasWritten) {
    const Noisy& given = GetParam();
    SyntheticChannel channel(given.model, given.coefficients);
    ChannelValues truth = channel.truth();
    truth.lens->fx = truth.lens->fy = given.focal;
    channel.setTruth(truth);
    const auto exact = channel.measured(300);
    unsigned usable = 0;
    unsigned quotients = 0;
    for (unsigned seed = 1; seed <= SEEDS; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto points = SyntheticChannel::noisyInPicture(exact, PIXELS, seed);
        const auto config = channel.config(given.fromTruth ? channel.truth() : channel.disturbed(), "start");
        const ChannelFit fit = DisplayFitter().fit(*config, points).channels.at(0);
        if (fit.outcome == FitOutcome::UNUSABLE) {
            continue;
        }
        ++usable;
        quotients +=
            static_cast<unsigned>(fit.after.lens->distortion.size() == 8 && fit.after.lens->distortion[5] != 0);
        const TemporaryFolder folder;
        config->save(folder.file("start.xml"));
        FittedDisplay fitted(*config, folder.file("fitted.xml"), folder.file("start.xml"));
        fitted.take(fit);
        fitted.save();
        ASSERT_EQ(fitted.lensFiles().size(), 1U);
        const auto model = modelOf(folder.file("fitted.xml"));
        for (const PointResidual& residual : fit.residuals) {
            const MeasuredPoint& point = points[residual.point];
            Point<double, 2> place;
            ASSERT_TRUE(residual.isOutlier || model->projectNormalised(point.world, place));
            EXPECT_LT(residual.isOutlier ? 0 : 1920 * norm(place - point.picture), 8 * PIXELS);
        }
        for (int i = 0; i <= 40 * 25; ++i) {
            const Point<double, 2> place{(i % 41) / 40.0, (i / 41) / 25.0};
            Point<double, 3> direction;
            Point<double, 2> back;
            ASSERT_TRUE(model->unproject(place, direction)) << place;
            ASSERT_TRUE(model->projectNormalised(model->viewport().position + direction, back)) << place;
            EXPECT_LT(norm(back - place), 1e-8) << place;
        }
    }
    EXPECT_GE(usable, SEEDS - 1);
    EXPECT_GE(quotients, given.focal < 1000 ? SEEDS - 1 : 0U) << "a wide view tells the coefficients apart";
}

const std::vector<double> EIGHT{0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03};

INSTANTIATE_TEST_SUITE_P(All, FittedLens,
                         testing::Values(Noisy{"five", "BrownConrady", {-0.14, 0.08, 4e-4, -3e-4, -0.02}},
                                         Noisy{"eight", "BrownConrady", EIGHT},
                                         Noisy{"eight_from_the_truth", "BrownConrady", EIGHT, true},
                                         Noisy{"eight_wide", "BrownConrady", EIGHT, false, 700},
                                         Noisy{"fisheye", "Fisheye", {0.03, -0.01, 4e-3, -1e-3}}),
                         [](const auto& lens) { return lens.param.name; });

}  // namespace
