// Every lens model: measured without noise and disturbed, it comes back; what is held stays.
#include "DisplayFit/DisplayFitter.h"

#include "Configuration/ProjectorConfig.h"
#include "FitScene.h"
#include "KelvoControl/Blend.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using testing::IsEmpty;

/// Of a value's own size, however small, where the scaled condition is below 1e6.
constexpr double LENS_VALUE = 1e-9;

struct Lens {
    std::string name;
    std::string model;
    std::vector<double> coefficients;
};

std::ostream& operator<<(std::ostream& out, const Lens& lens) {
    return out << lens.name;
}

class LensFits : public testing::TestWithParam<Lens> {
protected:
    ~LensFits() override { ScreenManager::deleteInstance(); }
    LogTrap m_log;
};

TEST_P(LensFits, ComeBackFromADisturbedStart) {
    const SyntheticChannel channel(GetParam().model, GetParam().coefficients);
    const auto points = channel.measured(200);
    const auto config = channel.config(channel.disturbed(), "start");
    const DisplayFitResult result = DisplayFitter().fit(*config, points);
    ASSERT_EQ(result.channels.size(), 1U);
    const ChannelFit& fit = result.channels[0];
    // The rational terms of a narrow lens have nearly the same effect: that is said, and the points still agree.
    const bool isRational = GetParam().coefficients.size() >= 8;
    for (const FitFinding& finding : fit.findings) {
        EXPECT_TRUE(isRational && finding.kind == FitFinding::Kind::ILL_DETERMINED) << finding.text;
    }
    EXPECT_EQ(fit.outliers, 0U);
    EXPECT_EQ(fit.worst.scaledCondition < 1e6, !isRational);
    const auto truth = channel.config(channel.truth(), "truth");
    const DisplayFitResult right = DisplayFitter().fit(*truth, points);
    ASSERT_EQ(right.channels[0].values.size(), fit.values.size());
    for (std::size_t i = 0; i < fit.values.size() && !isRational; ++i) {
        const double expected = right.channels[0].values[i].before;
        EXPECT_NEAR(fit.values[i].after, expected, LENS_VALUE * std::abs(expected)) << fit.values[i].name;
    }
    // The product's own model of the fitted channel leads to the measured points.
    const auto fitted = channel.config(fit.after, "fitted");
    const ProjectorConfig& projector = *fitted->getProjectorConfig(L"A");
    const std::wstring name =
        projector.getProjectionModelName().empty() ? L"Rectilinear" : projector.getProjectionModelName();
    const auto model = Blend::createProjectionModel(Viewport::of(projector, name), name, L"");
    for (const MeasuredPoint& point : points) {
        Point<double, 2> picture;
        ASSERT_TRUE(model->projectNormalised(point.world, picture));
        EXPECT_LT(norm(picture - point.picture), 1e-9);
    }
}

TEST_P(LensFits, NameTheirNumbersAsCalibrationsDo) {
    const SyntheticChannel channel(GetParam().model, GetParam().coefficients);
    const auto config = channel.config(channel.truth(), "start");
    const ChannelFit fit = DisplayFitter().fit(*config, channel.measured(200)).channels.at(0);
    std::vector<std::string> expected;
    if (!GetParam().coefficients.empty()) {
        expected = {"fx", "fy", "cx", "cy"};
    }
    const std::vector<std::string> all =
        GetParam().model == "Fisheye"
            ? std::vector<std::string>{"k1", "k2", "k3", "k4"}
            : std::vector<std::string>{"k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6", "s1", "s2", "s3", "s4"};
    expected.insert(expected.end(), all.begin(),
                    all.begin() + static_cast<std::ptrdiff_t>(GetParam().coefficients.size()));
    std::vector<std::string> found;
    for (const FittedValue& value : fit.values) {
        if (value.name.find(' ') == std::string::npos) {
            found.push_back(value.name);
        }
    }
    EXPECT_EQ(found, expected);
}

TEST_P(LensFits, ReportTheResidualsOfTheProductsModelBefore) {
    const SyntheticChannel channel(GetParam().model, GetParam().coefficients);
    const auto points = channel.measured(60);
    const auto config = channel.config(channel.disturbed(), "start");
    const DisplayFitResult result = DisplayFitter().fit(*config, points);
    const ProjectorConfig& projector = *config->getProjectorConfig(L"A");
    const std::wstring name =
        projector.getProjectionModelName().empty() ? L"Rectilinear" : projector.getProjectionModelName();
    const auto model = Blend::createProjectionModel(Viewport::of(projector, name), name, L"");
    for (const PointResidual& residual : result.channels[0].residuals) {
        const MeasuredPoint& point = points[residual.point];
        Point<double, 2> picture;
        ASSERT_TRUE(model->projectNormalised(point.world, picture));
        EXPECT_NEAR(residual.pixelsBefore[0], 1920 * (picture[0] - point.picture[0]), 1e-8);
        EXPECT_NEAR(residual.pixelsBefore[1], 1200 * (picture[1] - point.picture[1]), 1e-8);
        // Seen from the projector, the place on the screen is that of the stated picture point.
        Point<double, 2> there;
        ASSERT_TRUE(model->projectNormalised(point.world + residual.screenBefore, there));
        EXPECT_LT(norm(there - point.picture), 1e-9);
    }
}

TEST_P(LensFits, WhatIsHeldStaysToTheLastBit) {
    const SyntheticChannel channel(GetParam().model, GetParam().coefficients);
    const auto config = channel.config(channel.disturbed(), "start");
    FitOptions options;
    options.solved = SolvedGroups{false, true, false, false, false};
    options.isRobust = false;
    const ChannelFit fit = DisplayFitter(options).fit(*config, channel.measured(60)).channels[0];
    EXPECT_TRUE(fit.isSolved);
    EXPECT_EQ(fit.after.position, fit.before.position);
    EXPECT_EQ(fit.after.lens, fit.before.lens);
    EXPECT_EQ(fit.after.frustum.left, fit.before.frustum.left);
    EXPECT_FALSE(fit.after.orientation == fit.before.orientation);
    for (const FittedValue& value : fit.values) {
        EXPECT_EQ(value.deviation.has_value(), value.name.starts_with("orientation")) << value.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, LensFits,
    testing::Values(
        Lens{"rectilinear", "Rectilinear", {}}, Lens{"equidistant", "Equidistant", {}},
        Lens{"four", "BrownConrady", {-0.14, 0.08, 4e-4, -3e-4}},
        Lens{"five", "BrownConrady", {-0.14, 0.08, 4e-4, -3e-4, -0.02}},
        Lens{"eight", "BrownConrady", {0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03}},
        Lens{"twelve", "BrownConrady", {0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03, 1e-3, -2e-3, 5e-4, 1e-3}},
        Lens{"fisheye", "Fisheye", {0.03, -0.01, 4e-3, -1e-3}}),
    [](const auto& info) { return info.param.name; });

/// Without any noise the deviation is zero: the value was solved nevertheless.
TEST(NoNoise, WhatIsSolvedIsNotHeld) {
    const LogTrap log;
    FitScene scene = FitScene::ofExample("planar-wall");
    for (const ChannelFit& fit : DisplayFitter().fit(scene.truth(), scene.measured()).channels) {
        for (const FittedValue& value : fit.values) {
            ASSERT_TRUE(value.deviation.has_value()) << value.name;
            EXPECT_LT(*value.deviation, 1e-12) << value.name;
        }
    }
}

/// A projector that looks straight up: its angles are in gimbal lock.
TEST(GimbalLock, AProjectorThatLooksUpComesBack) {
    const LogTrap log;
    SyntheticChannel channel("Rectilinear", {});
    ChannelValues truth = channel.truth();
    truth.orientation = {0.3, std::acos(0.0), 0};
    channel.setTruth(truth);
    ChannelValues start = truth;
    start.orientation = {0.34, std::acos(0.0) - 0.05, 0.03};
    const auto points = channel.measured(100);
    const ChannelFit fit = DisplayFitter().fit(*channel.config(start, "start"), points).channels[0];
    EXPECT_THAT(fit.findings, IsEmpty());
    const auto was = Veltrani::rotationZXY(truth.orientation[0], truth.orientation[1], truth.orientation[2]);
    const auto is = Veltrani::rotationZXY(fit.after.orientation[0], fit.after.orientation[1], fit.after.orientation[2]);
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(was(r, c), is(r, c), 1e-9);
        }
    }
    EXPECT_LT(norm(fit.after.position - truth.position), 1e-9);
    ScreenManager::deleteInstance();
}

/// Far from every start: the linear transform finds the view.
TEST(FarStart, AViewAtTheOtherEndOfTheRoomIsFound) {
    const LogTrap log;
    for (const char* model : {"Rectilinear", "BrownConrady", "Fisheye"}) {
        const SyntheticChannel channel(model, {-0.05, 0.02, 0, 0});
        ChannelValues start = channel.truth();
        start.position = {4, 7, 0.5};
        start.orientation = {-2.5, 0.6, 1};
        const ChannelFit fit = DisplayFitter().fit(*channel.config(start, "start"), channel.measured(100)).channels[0];
        EXPECT_TRUE(fit.isSolved) << model;
        EXPECT_LT(norm(fit.after.position - channel.truth().position), 1e-9) << model;
    }
    ScreenManager::deleteInstance();
}

}  // namespace
