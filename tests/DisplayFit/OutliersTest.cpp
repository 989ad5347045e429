// Wrong points among sound ones with noise are found, of every kind of display and lens, and change nothing.
#include "DisplayFit/DisplayFitter.h"

#include "FitScene.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using Points = std::vector<MeasuredPoint>;

constexpr double WIDTH = 1920;
constexpr double HEIGHT = 1200;
/// Of a place in the picture, stated.
constexpr double PIXELS = 1;

Points noisy(Points points, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0, PIXELS);
    for (MeasuredPoint& point : points) {
        point.picture += Point<double, 2>{noise(random) / WIDTH, noise(random) / HEIGHT};
        point.pictureDeviation = Point<double, 2>{PIXELS / WIDTH, PIXELS / HEIGHT};
    }
    return points;
}

/// Of each ten points one is wrong by 20 deviations and more.
bool isWrong(std::size_t point) {
    return point % 10 == 3;
}

Points withWrong(Points points, unsigned seed) {
    std::mt19937 random(seed + 1000);
    std::uniform_real_distribution<double> turn(0, 2 * std::acos(-1.0));
    std::uniform_real_distribution<double> far(20, 100);
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (isWrong(i)) {
            const double angle = turn(random);
            const double pixels = far(random) * PIXELS;
            points[i].picture += Point<double, 2>{pixels * std::cos(angle) / WIDTH, pixels * std::sin(angle) / HEIGHT};
        }
    }
    return points;
}

void expectFound(const XMLConfigFile& start, const Points& exact) {
    std::size_t wrong = 0;
    std::size_t found = 0;
    std::size_t mistaken = 0;
    FitOptions options;
    options.channels = {0};
    FitOptions plain = options;
    plain.isRobust = false;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Points points = withWrong(noisy(exact, seed), seed);
        const ChannelFit fit = DisplayFitter(options).fit(start, points).channels.at(0);
        ASSERT_TRUE(fit.isSolved);
        EXPECT_EQ(fit.outcome, FitOutcome::DOUBTFUL);
        Points kept;
        for (const PointResidual& residual : fit.residuals) {
            wrong += static_cast<std::size_t>(isWrong(residual.point));
            found += static_cast<std::size_t>(isWrong(residual.point) && residual.isOutlier);
            // One sound point in sixteen thousand is as far off as one that is rejected.
            const bool isMistaken = !isWrong(residual.point) && residual.isOutlier;
            mistaken += static_cast<std::size_t>(isMistaken);
            if (!isWrong(residual.point) && !isMistaken) {
                kept.push_back(points[residual.point]);
            }
        }
        const ChannelFit expected = DisplayFitter(plain).fit(start, kept).channels.at(0);
        ASSERT_TRUE(expected.isSolved);
        for (std::size_t i = 0; i < fit.values.size(); ++i) {
            if (expected.values[i].deviation) {
                EXPECT_NEAR(fit.values[i].after, expected.values[i].after, 0.1 * *expected.values[i].deviation)
                    << fit.values[i].name;
            }
        }
    }
    ASSERT_GE(wrong, 50U);
    EXPECT_GE(found * 100, wrong * 99);
    EXPECT_LE(mistaken, 1U);
}

/// The first channel of an example.
void expectFoundOf(const std::string& example) {
    const LogTrap log(log4cxx::Level::getWarn());
    FitScene scene = FitScene::ofExample(example);
    Points points;
    for (const MeasuredPoint& point : scene.measured(16, 12)) {
        if (point.channel == 0) {
            points.push_back(point);
        }
    }
    expectFound(*scene.disturbed(), points);
}

void expectFoundOf(const std::string& model, const std::vector<double>& coefficients) {
    const LogTrap log(log4cxx::Level::getWarn());
    SyntheticChannel channel(model, coefficients);
    if (coefficients.size() == 8) {
        ChannelValues truth = channel.truth();
        truth.lens->fx = truth.lens->fy = 700;
        channel.setTruth(truth);
    }
    expectFound(*channel.config(channel.disturbed(), "start"), channel.measured(400));
    ScreenManager::deleteInstance();
}

TEST(Outliers, OfAreasAreFound) {
    expectFoundOf("planar-wall");
}

TEST(Outliers, AroundAnEyeAreFound) {
    expectFoundOf("spherical-dome");
}

TEST(Outliers, BehindAMirrorAreFound) {
    expectFoundOf("collimated");
}

TEST(Outliers, OfPositionOrientationAndFrustumAreFound) {
    expectFoundOf("Rectilinear", {});
}

TEST(Outliers, OfAnEquidistantLensAreFound) {
    expectFoundOf("Equidistant", {});
}

TEST(Outliers, OfAFisheyeAreFound) {
    expectFoundOf("Fisheye", {0.03, -0.01, 4e-3, -1e-3});
}

TEST(Outliers, OfFourCoefficientsAreFound) {
    expectFoundOf("BrownConrady", {-0.14, 0.08, 4e-4, -3e-4});
}

TEST(Outliers, OfEightCoefficientsAreFound) {
    expectFoundOf("BrownConrady", {0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03});
}

}  // namespace
