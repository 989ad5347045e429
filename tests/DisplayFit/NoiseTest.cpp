// Measurements with noise: the stated deviations are those that fits have, and outliers are found.
#include "DisplayFit/DisplayFitter.h"

#include "ChiSquare.h"
#include "Configuration/ProjectorConfig.h"
#include "FitScene.h"
#include "KelvoControl/Blend.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;

const std::vector<double> FIVE{-0.14, 0.08, 4e-4, -3e-4, -0.02};

class Noise : public testing::Test {
protected:
    ~Noise() override { ScreenManager::deleteInstance(); }
    LogTrap m_log;
};

/// Orientation, position, width, height, shifts and coefficients of the truth, as steps from a fit.
std::vector<double> errorOf(const ChannelFit& fit, const ChannelValues& truth, std::size_t count) {
    const auto is = Veltrani::rotationZXY(fit.after.orientation[0], fit.after.orientation[1], fit.after.orientation[2]);
    const auto was = Veltrani::rotationZXY(truth.orientation[0], truth.orientation[1], truth.orientation[2]);
    const auto turned = transpose(is) * was;
    const auto moved = transpose(is) * (truth.position - fit.after.position);
    std::vector<double> error{turned(2, 1), turned(0, 2), turned(1, 0), moved[0], moved[1], moved[2]};
    const auto numbers = [](const Veltrani::LensNumbers& lens) {
        return std::array{lens.fx / lens.imageWidth, lens.fy / lens.imageHeight, (lens.cx + 0.5) / lens.imageWidth,
                          1 - (lens.cy + 0.5) / lens.imageHeight};
    };
    for (std::size_t i = 0; i < 4; ++i) {
        error.push_back(numbers(*truth.lens)[i] - numbers(*fit.after.lens)[i]);
    }
    for (std::size_t i = 10; i < count; ++i) {
        error.push_back(truth.lens->distortion[i - 10] - fit.after.lens->distortion[i - 10]);
    }
    return error;
}

/// A lens with as many coefficients as a file of it has.
struct NoisyLens {
    std::string name;
    std::string model;
    std::vector<double> coefficients;
};

class NoiseOfLens : public Noise, public testing::WithParamInterface<NoisyLens> {};

TEST_P(NoiseOfLens, TheNormalisedErrorIsChiSquareOverTwoHundredSeeds) {
    constexpr unsigned SEEDS = 200;
    const SyntheticChannel channel(GetParam().model, GetParam().coefficients);
    const std::size_t values = 10 + GetParam().coefficients.size();
    const auto points = channel.measured(150);
    const auto config = channel.config(channel.disturbed(), "start");
    for (const bool isStated : {true, false}) {
        double squares = 0;
        double residuals = 0;
        double freedom = 0;
        for (unsigned seed = 1; seed <= SEEDS; ++seed) {
            const auto noisy = isStated ? SyntheticChannel::noisy(points, 0.002, seed)
                                        : SyntheticChannel::noisyInPicture(points, 1.5, seed);
            FitOptions options;
            options.isRobust = false;
            const ChannelFit fit = DisplayFitter(options).fit(*config, noisy).channels[0];
            ASSERT_TRUE(fit.isSolved);
            ASSERT_EQ(fit.worst.solvedNames.size(), values);
            ASSERT_EQ(fit.degreesOfFreedom, 2 * points.size() - values);
            squares += normalisedSquare(errorOf(fit, channel.truth(), values), fit.covariance);
            freedom += static_cast<double>(fit.degreesOfFreedom);
            residuals += fit.residualFactor * fit.residualFactor * static_cast<double>(fit.degreesOfFreedom);
        }
        const double degrees = static_cast<double>(SEEDS * values);
        if (isStated) {
            const auto [low, high] = chiSquareBand(degrees);
            EXPECT_GT(squares, low);
            EXPECT_LT(squares, high);
            const auto [least, most] = chiSquareBand(freedom);
            EXPECT_GT(residuals, least);
            EXPECT_LT(residuals, most);
        } else {
            // The deviation was estimated, from as many residuals each time.
            EXPECT_NEAR(squares / degrees, 1, 0.1);
            EXPECT_NEAR(std::sqrt(residuals / freedom), 1.5, 0.02);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, NoiseOfLens,
                         testing::Values(NoisyLens{"four", "BrownConrady", {-0.14, 0.08, 4e-4, -3e-4}},
                                         NoisyLens{"five", "BrownConrady", FIVE},
                                         NoisyLens{"fisheye", "Fisheye", {0.03, -0.01, 4e-3, -1e-3}}),
                         [](const auto& info) { return info.param.name; });

TEST_F(Noise, TheDeviationsOfValuesAreThoseOfManyFits) {
    constexpr unsigned SEEDS = 100;
    const SyntheticChannel channel("Rectilinear", {});
    const auto points = channel.measured(80);
    const auto config = channel.config(channel.truth(), "start");
    std::vector<double> squares;
    for (unsigned seed = 1; seed <= SEEDS; ++seed) {
        const ChannelFit fit = DisplayFitter().fit(*config, SyntheticChannel::noisy(points, 0.002, seed)).channels[0];
        squares.resize(fit.values.size());
        for (std::size_t i = 0; i < fit.values.size(); ++i) {
            const double part = (fit.values[i].after - fit.values[i].before) / fit.values[i].deviation.value();
            squares[i] += part * part;
        }
    }
    double pooled = 0;
    for (std::size_t i = 0; i < squares.size(); ++i) {
        // Of ten values, one in five hundred displays would lie outside of this.
        EXPECT_NEAR(squares[i] / SEEDS, 1, 0.45) << i;
        pooled += squares[i];
    }
    EXPECT_NEAR(pooled / static_cast<double>(SEEDS * squares.size()), 1, 0.2);
}

// Oracle: the covariance of each point by differences of the product's own model, and the square that follows from it.
TEST_F(Noise, DeviationsInAnyDirectionCountAsThePictureShowsThem) {
    constexpr double DEVIATION = 0.001;
    constexpr double STRETCHED = 6;
    constexpr double WIDTH = 1e-5;
    const SyntheticChannel channel("Rectilinear", {});
    auto points = channel.measured(120);
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    for (std::size_t i = 0; i < points.size(); ++i) {
        // Along a diagonal of the picture, another one for every other point.
        Point<double, 3> along{1, 0.3, i % 2 == 0 ? 1.0 : -1.0};
        along *= 1 / norm(along);
        const double stretch = normal(random) * std::sqrt(STRETCHED * STRETCHED - 1);
        points[i].world +=
            (along * stretch + Point<double, 3>{normal(random), normal(random), normal(random)}) * DEVIATION;
        Matrix<double, 3> covariance;
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t c = 0; c < 3; ++c) {
                covariance(r, c) =
                    DEVIATION * DEVIATION * ((r == c ? 1 : 0) + (STRETCHED * STRETCHED - 1) * along[r] * along[c]);
            }
        }
        points[i].covariance = covariance;
    }
    const ChannelFit fit = DisplayFitter().fit(*channel.config(channel.disturbed(), "start"), points).channels[0];
    ASSERT_TRUE(fit.isSolved);
    const auto fitted = channel.config(fit.after, "fitted");
    const auto model = Blend::createProjectionModel(Viewport::of(*fitted->getProjectorConfig(L"A"), L"Rectilinear"),
                                                    L"Rectilinear", L"");
    const auto pixelsOf = [&](const Point<double, 3>& world) {
        Point<double, 2> place;
        EXPECT_TRUE(model->projectNormalised(world, place));
        return Point<double, 2>{1920 * place[0], 1200 * place[1]};
    };
    double squares = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::array<Point<double, 2>, 3> by;
        for (std::size_t k = 0; k < 3; ++k) {
            Point<double, 3> step;
            step[k] = WIDTH;
            by[k] = (pixelsOf(points[i].world + step) - pixelsOf(points[i].world - step)) * (0.5 / WIDTH);
        }
        double uu = 0;
        double uv = 0;
        double vv = 0;
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t c = 0; c < 3; ++c) {
                const double of = (*points[i].covariance)(r, c);
                uu += by[r][0] * of * by[c][0];
                uv += by[r][0] * of * by[c][1];
                vv += by[r][1] * of * by[c][1];
            }
        }
        const Point<double, 2> miss = fit.residuals[i].pixelsAfter;
        const double square =
            (vv * miss[0] * miss[0] - 2 * uv * miss[0] * miss[1] + uu * miss[1] * miss[1]) / (uu * vv - uv * uv);
        EXPECT_NEAR(fit.residuals[i].size, std::sqrt(square), 0.01 * (1 + std::sqrt(square))) << i;
        squares += square;
    }
    const auto [low, high] = chiSquareBand(static_cast<double>(fit.degreesOfFreedom));
    EXPECT_GT(squares, low);
    EXPECT_LT(squares, high);
}

TEST_F(Noise, SummariesAreOfAllPointsBeforeAndOfTheInliersAfter) {
    const SyntheticChannel channel("Rectilinear", {});
    auto points = SyntheticChannel::noisyInPicture(channel.measured(200), 0.5, 8);
    for (const std::size_t wrong : {20U, 90U, 150U}) {
        points[wrong].picture[0] += 0.05;
    }
    const ChannelFit fit = DisplayFitter().fit(*channel.config(channel.disturbed(), "start"), points).channels[0];
    ASSERT_EQ(fit.outliers, 3U);
    const auto expectSummary = [&](const ResidualSummary& summary, auto member, bool ofAll) {
        double squares = 0;
        double largest = 0;
        double count = 0;
        for (const PointResidual& residual : fit.residuals) {
            if (ofAll || !residual.isOutlier) {
                const double size = norm(residual.*member);
                squares += size * size;
                largest = std::max(largest, size);
                ++count;
            }
        }
        EXPECT_NEAR(summary.rms, std::sqrt(squares / count), 1e-12 * summary.rms);
        EXPECT_EQ(summary.largest, largest);
    };
    expectSummary(fit.pixelsBefore, &PointResidual::pixelsBefore, true);
    expectSummary(fit.pixelsAfter, &PointResidual::pixelsAfter, false);
    expectSummary(fit.screenBefore, &PointResidual::screenBefore, true);
    expectSummary(fit.screenAfter, &PointResidual::screenAfter, false);
    EXPECT_LT(fit.screenAfter.largest, 0.05 * fit.screenBefore.largest);
}

/// As of residuals: a pair of numbers is as rarely so long as one is beyond four deviations.
const double REJECTED = std::sqrt(-2 * std::log(std::erfc(4 / std::sqrt(2.0))));

ChannelFit plainFit(const XMLConfigFile& config, const std::vector<MeasuredPoint>& points) {
    FitOptions plain;
    plain.isRobust = false;
    return DisplayFitter(plain).fit(config, points).channels[0];
}

TEST_F(Noise, OutliersAreFoundAndChangeNothing) {
    constexpr std::size_t COUNT = 1000;
    constexpr double DEVIATION = 0.002;
    constexpr double PIXELS = 1.5;
    const SyntheticChannel channel("BrownConrady", FIVE);
    int same = 0;
    for (const bool isStated : {true, false}) {
        for (unsigned seed = 1; seed <= 5; ++seed) {
            auto points = isStated ? SyntheticChannel::noisy(channel.measured(COUNT), DEVIATION, seed)
                                   : SyntheticChannel::noisyInPicture(channel.measured(COUNT), PIXELS, seed);
            std::mt19937 random(seed + 1000);
            std::normal_distribution<double> direction;
            std::uniform_real_distribution<double> far(20, 200);
            std::set<std::size_t> wrong;
            for (std::size_t i = 0; i < COUNT; ++i) {
                if (i % 10 != 3) {
                    continue;
                }
                wrong.insert(i);
                if (!isStated) {
                    const double angle = direction(random);
                    const double pixels = far(random) * PIXELS;
                    points[i].picture +=
                        Point<double, 2>{pixels * std::cos(angle) / 1920, pixels * std::sin(angle) / 1200};
                    continue;
                }
                // Across the line of sight: along it nothing deviates in the picture.
                const Point<double, 3> view = points[i].world - channel.truth().position;
                Point<double, 3> aside =
                    cross(view, Point<double, 3>{direction(random), direction(random), direction(random)});
                points[i].world += aside * (far(random) * DEVIATION / norm(aside));
            }
            const auto config = channel.config(channel.disturbed(), "start");
            const ChannelFit fit = DisplayFitter().fit(*config, points).channels[0];
            ASSERT_TRUE(fit.isSolved);
            std::size_t found = 0;
            std::size_t mistaken = 0;
            std::vector<MeasuredPoint> sound;
            std::vector<MeasuredPoint> kept;
            std::vector<std::size_t> farOff;  // among the sound ones
            for (const PointResidual& residual : fit.residuals) {
                const MeasuredPoint& point = points[residual.point];
                if (wrong.contains(residual.point)) {
                    found += static_cast<std::size_t>(residual.isOutlier);
                    continue;
                }
                if (residual.isOutlier) {
                    farOff.push_back(sound.size());
                    ++mistaken;
                } else {
                    kept.push_back(point);
                }
                sound.push_back(point);
            }
            EXPECT_GE(found * 100, wrong.size() * 99) << "seed " << seed;
            EXPECT_LE(mistaken, 2U) << "seed " << seed;
            EXPECT_EQ(fit.outcome, FitOutcome::DOUBTFUL);
            // One sound point in sixteen thousand is as far off as an outlier, and rejected as one: it must be so in
            // the fit of all sound ones, too. The fit is that of the others.
            same += static_cast<int>(mistaken == 0);
            const ChannelFit ofSound = plainFit(*config, sound);
            for (const std::size_t point : farOff) {
                EXPECT_GT(ofSound.residuals[point].size, 0.98 * REJECTED) << "seed " << seed;
            }
            const ChannelFit expected = plainFit(*config, kept);
            ASSERT_TRUE(expected.isSolved);
            for (std::size_t i = 0; i < fit.values.size(); ++i) {
                EXPECT_NEAR(fit.values[i].after, expected.values[i].after, 0.1 * expected.values[i].deviation.value())
                    << fit.values[i].name << ", seed " << seed << (isStated ? ", stated" : "");
            }
        }
    }
    EXPECT_GE(same, 7) << "of ten";
}

}  // namespace
