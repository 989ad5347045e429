// The stated deviations of what every kind of display solves are those that its fits have.
#include "DisplayFit/DisplayFitter.h"

#include "ChiSquare.h"
#include "FitScene.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;

constexpr unsigned SEEDS = 200;
constexpr double DEVIATION = 0.002;

/// Width, height and shifts of a frustum's picture, in its parts.
std::array<double, 4> pictureOf(const FrustumAngles& frustum) {
    const double width = 1 / (std::tan(frustum.right) - std::tan(frustum.left));
    const double height = 1 / (std::tan(frustum.top) - std::tan(frustum.bottom));
    return {width, height, -std::tan(frustum.left) * width, -std::tan(frustum.bottom) * height};
}

/// The truth as a step from a fit, in the order of `ChannelFit::covariance`.
std::vector<double> errorOf(const ChannelFit& fit, const ChannelValues& truth) {
    if (fit.solved.area) {
        return {truth.area.left - fit.after.area.left, truth.area.right - fit.after.area.right,
                truth.area.bottom - fit.after.area.bottom, truth.area.top - fit.after.area.top};
    }
    const auto rotationOf = [](const ChannelValues& values) {
        return Veltrani::rotationZXY(values.orientation[0], values.orientation[1], values.orientation[2]);
    };
    const auto back = transpose(rotationOf(fit.after));
    const auto turned = back * rotationOf(truth);
    std::vector<double> error{turned(2, 1), turned(0, 2), turned(1, 0)};
    if (fit.solved.position) {
        const auto moved = back * (truth.position - fit.after.position);
        error.insert(error.end(), {moved[0], moved[1], moved[2]});
    }
    const auto was = pictureOf(truth.frustum);
    const auto is = pictureOf(fit.after.frustum);
    for (std::size_t i = 0; i < was.size(); ++i) {
        error.push_back(was[i] - is[i]);
    }
    return error;
}

/// What is fitted again and again: the truth, where each fit starts, and what was measured without noise.
struct SetUp {
    ChannelValues truth;
    std::unique_ptr<XMLConfigFile> start;
    std::vector<MeasuredPoint> points;
};

void expectChiSquare(const SetUp& given) {
    double squares = 0;
    double degrees = 0;
    double residuals = 0;
    double freedom = 0;
    FitOptions options;
    options.isRobust = false;
    options.channels = {0};
    for (unsigned seed = 1; seed <= SEEDS; ++seed) {
        const auto noisy = SyntheticChannel::noisy(given.points, DEVIATION, seed);
        const ChannelFit fit = DisplayFitter(options).fit(*given.start, noisy).channels.at(0);
        ASSERT_TRUE(fit.isSolved);
        const std::vector<double> error = errorOf(fit, given.truth);
        ASSERT_EQ(error.size() * error.size(), fit.covariance.size());
        squares += normalisedSquare(error, fit.covariance);
        degrees += static_cast<double>(error.size());
        freedom += static_cast<double>(fit.degreesOfFreedom);
        residuals += fit.residualFactor * fit.residualFactor * static_cast<double>(fit.degreesOfFreedom);
    }
    const auto [low, high] = chiSquareBand(degrees);
    EXPECT_GT(squares, low);
    EXPECT_LT(squares, high);
    const auto [least, most] = chiSquareBand(freedom);
    EXPECT_GT(residuals, least);
    EXPECT_LT(residuals, most);
}

/// The first channel of an example.
void expectChiSquareOf(const std::string& example) {
    const LogTrap log(log4cxx::Level::getWarn());
    FitScene scene = FitScene::ofExample(example);
    SetUp given;
    given.truth = valuesOf(scene.truth(), 0);
    for (const MeasuredPoint& point : scene.measured(6, 5)) {
        if (point.channel == 0) {
            given.points.push_back(point);
        }
    }
    given.start = scene.disturbed();
    ASSERT_GT(given.points.size(), 20U);
    expectChiSquare(given);
}

TEST(ChiSquare, OfAreas) {
    expectChiSquareOf("planar-wall");
}

TEST(ChiSquare, OfOrientationAndFrustumAroundAnEye) {
    expectChiSquareOf("spherical-dome");
}

TEST(ChiSquare, OfOrientationAndFrustumBehindAMirror) {
    expectChiSquareOf("collimated");
}

TEST(ChiSquare, OfPositionOrientationAndFrustum) {
    const LogTrap log(log4cxx::Level::getWarn());
    const SyntheticChannel channel("Rectilinear", {});
    expectChiSquare({channel.truth(), channel.config(channel.disturbed(), "start"), channel.measured(100)});
    ScreenManager::deleteInstance();
}

}  // namespace
