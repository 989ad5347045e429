// What the points do not determine is reported with the remedy; what no fit can use is refused.
#include "DisplayFit/DisplayFitter.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "FitScene.h"
#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Points = std::vector<MeasuredPoint>;

class Findings : public testing::Test {
protected:
    ~Findings() override { ScreenManager::deleteInstance(); }

    static std::vector<std::string> names(const ChannelFit& fit) {
        std::vector<std::string> names;
        for (const FitFinding& finding : fit.findings) {
            names.push_back(FitFinding::nameOf(finding.kind));
            EXPECT_FALSE(finding.text.empty());
            if (finding.outcome != FitOutcome::GOOD) {
                EXPECT_FALSE(finding.remedy.empty()) << finding.text;
            }
        }
        return names;
    }

    static ChannelFit fitOf(const SyntheticChannel& channel, const Points& points, const FitOptions& options = {}) {
        return DisplayFitter(options).fit(*channel.config(channel.disturbed(), "start"), points).channels.at(0);
    }

    /// The faults of a fit that throws.
    static std::string refusalOf(const Points& points) {
        const SyntheticChannel channel("Rectilinear", {});
        try {
            fitOf(channel, points);
        } catch (const VeltraniException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "nothing thrown";
    }

    /// The points moved along their lines of sight onto a wall.
    static Points onWall(const SyntheticChannel& channel, Points points, double bulge = 0) {
        for (MeasuredPoint& point : points) {
            const Point<double, 3> direction = point.world - channel.truth().position;
            const double y = 4 + bulge * std::sin(40 * point.picture[0]);
            point.world = channel.truth().position + direction * ((y - channel.truth().position[1]) / direction[1]);
        }
        return points;
    }

    LogTrap m_log;
};

/// A projector of square pixels.
SyntheticChannel squareChannel() {
    SyntheticChannel channel("Rectilinear", {});
    ChannelValues truth = channel.truth();
    truth.frustum = {std::atan(-0.4), std::atan(0.56), std::atan(-0.2), std::atan(0.4)};
    channel.setTruth(truth);
    return channel;
}

TEST_F(Findings, TooFewPointsAreCounted) {
    const SyntheticChannel channel("Rectilinear", {});
    const ChannelFit fit = fitOf(channel, channel.measured(5));
    EXPECT_THAT(names(fit), ElementsAre("TOO_FEW_POINTS"));
    EXPECT_THAT(fit.findings[0].text, HasSubstr("5 points are too few for 10 values: at least 6"));
    EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE);
    EXPECT_FALSE(fit.isSolved);
    EXPECT_EQ(fit.after.position, fit.before.position);
    EXPECT_EQ(fit.residuals.size(), 5U) << "the residuals before are reported nevertheless";
    EXPECT_TRUE(fitOf(channel, channel.measured(6)).isSolved);
}

TEST_F(Findings, PointsOnALineOfThePictureOrInSpaceAreRefused) {
    const SyntheticChannel channel("Rectilinear", {});
    Points points = channel.measured(30);
    for (MeasuredPoint& point : points) {
        point.picture[1] = 0.25;
    }
    EXPECT_THAT(names(fitOf(channel, points)), ElementsAre("POINTS_ON_LINE"));
    points = channel.measured(30);
    for (MeasuredPoint& point : points) {
        point.world = Point<double, 3>{point.picture[0], 4, 2 * point.picture[0]};
    }
    EXPECT_THAT(names(fitOf(channel, points)), ElementsAre("POINTS_ON_LINE"));
}

TEST_F(Findings, OnOnePlaneTwoNumbersAreHeldAndTheRestComesBack) {
    const SyntheticChannel channel = squareChannel();
    const Points points = onWall(channel, channel.measured(60));
    const ChannelFit fit = fitOf(channel, points);
    EXPECT_THAT(names(fit), ElementsAre("CHANGED_FOR_PLANE"));
    EXPECT_EQ(fit.outcome, FitOutcome::GOOD);
    EXPECT_TRUE(fit.holdsSquarePixels && fit.holdsHorizontalShift);
    EXPECT_LT(norm(fit.after.position - channel.truth().position), 1e-8);
    EXPECT_NEAR(fit.after.frustum.top, channel.truth().frustum.top, 1e-8);

    FitOptions refusing;
    refusing.onPlane = FitOptions::OnPlane::REFUSE;
    const ChannelFit refused = fitOf(channel, points, refusing);
    EXPECT_THAT(names(refused), ElementsAre("POINTS_ON_PLANE"));
    EXPECT_FALSE(refused.isSolved);
    FitOptions holding = refusing;
    holding.holdsSquarePixels = holding.holdsHorizontalShift = true;
    EXPECT_THAT(names(fitOf(channel, points, holding)), IsEmpty());
}

TEST_F(Findings, TheWorstCombinationIsNamedInWords) {
    const SyntheticChannel channel = squareChannel();
    const ChannelFit flat = fitOf(channel, onWall(channel, channel.measured(200), 0.03));
    EXPECT_THAT(flat.worst.text, HasSubstr("frustum"));
    EXPECT_THAT(flat.worst.text, HasSubstr("position along the axis"));
    EXPECT_EQ(flat.worst.remedy, "add points at another depth");
    const ChannelFit deep = fitOf(channel, channel.measured(200));
    EXPECT_GT(flat.worst.scaledCondition, 10 * deep.worst.scaledCondition);
    EXPECT_EQ(flat.worst.weights.size(), 10U);
    EXPECT_EQ(flat.worst.solvedNames.size(), 10U);
}

TEST_F(Findings, WhatNoPointDeterminesIsRefused) {
    // All points lie on a ring around the axis of the lens: k1 and k2 have one and the same effect.
    const SyntheticChannel plain("BrownConrady", {0, 0, 0, 0});
    Points points;
    for (int i = 0; i < 40; ++i) {
        MeasuredPoint point;
        const double angle = 0.157 * i;
        const auto& lens = *plain.truth().lens;
        const double x = 0.2 * std::cos(angle);
        const double y = 0.2 * std::sin(angle);
        point.picture = {(lens.fx * x + lens.cx + 0.5) / lens.imageWidth,
                         1 - (lens.cy + 0.5 - lens.fy * y) / lens.imageHeight};
        const auto& orientation = plain.truth().orientation;
        point.world = plain.truth().position + Veltrani::rotationZXY(orientation[0], orientation[1], orientation[2]) *
                                                   Point<double, 3>{x, 1, y} * (2.0 + i % 5);
        points.push_back(point);
    }
    FitOptions options;
    options.solved = SolvedGroups{false, false, true, true, false};
    const ChannelFit fit = DisplayFitter(options).fit(*plain.config(plain.truth(), "start"), points).channels.at(0);
    EXPECT_THAT(names(fit), ElementsAre("NOT_DETERMINED"));
    EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE);
    EXPECT_TRUE(fit.covariance.empty());
    EXPECT_THAT(fit.worst.text, HasSubstr("k1"));
}

TEST_F(Findings, ReversedPicturesAreNamed) {
    for (const char* example : {"planar-wall", "spherical-dome", "lens-cylinder"}) {
        for (const std::size_t coordinate : {std::size_t{0}, std::size_t{1}}) {
            FitScene scene = FitScene::ofExample(example);
            Points points = scene.measured();
            for (MeasuredPoint& point : points) {
                point.picture[coordinate] = 1 - point.picture[coordinate];
            }
            const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
            for (const ChannelFit& fit : result.channels) {
                EXPECT_THAT(names(fit), Contains(coordinate == 0 ? "U_REVERSED" : "V_REVERSED"))
                    << example << ", " << fit.name;
                EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE);
            }
        }
    }
}

// By lenses that fold where the points are reversed, and from starts that lead nowhere.
TEST_F(Findings, AReversedPictureStandsUpAsConfigured) {
    for (const std::vector<double>& lens :
         {std::vector<double>{}, {-0.35, 0.12, 0, 0, 0}, {0.3, -0.12, 4e-3, -3e-3, 0.05}, {0.3, -0.2, 0, 0, 0.3}}) {
        const SyntheticChannel channel(lens.empty() ? "Rectilinear" : "BrownConrady", lens);
        for (const std::size_t coordinate : {std::size_t{0}, std::size_t{1}}) {
            Points points = channel.measured(100);
            for (MeasuredPoint& point : points) {
                point.picture[coordinate] = 1 - point.picture[coordinate];
            }
            for (const double turned : {0.0, 0.6, 1.2}) {
                ChannelValues start = channel.disturbed();
                start.orientation[0] += turned;
                const ChannelFit fit = DisplayFitter().fit(*channel.config(start, "start"), points).channels.at(0);
                EXPECT_THAT(names(fit), ElementsAre(coordinate == 0 ? "U_REVERSED" : "V_REVERSED"))
                    << lens.size() << " coefficients, turned by " << turned;
            }
        }
    }
}

TEST_F(Findings, APictureIsUpsideDownOnlyAgainstTheConfiguration) {
    SyntheticChannel channel("Rectilinear", {});
    ChannelValues hanging = channel.truth();
    hanging.orientation = {0.4, -0.15, 3.0};
    channel.setTruth(hanging);
    const auto points = channel.measured(60);
    EXPECT_THAT(names(fitOf(channel, points)), IsEmpty()) << "it hangs, and is configured so";
    ChannelValues standing = hanging;
    standing.orientation[2] = 0;
    const DisplayFitResult found = DisplayFitter().fit(*channel.config(standing, "start"), points);
    EXPECT_THAT(names(found.channels.at(0)), Contains("V_REVERSED"));
}

TEST_F(Findings, ExchangedChannelsAreNamed) {
    for (const char* example : {"spherical-dome", "planar-wall", "lens-cylinder"}) {
        FitScene scene = FitScene::ofExample(example);
        Points points = scene.measured();
        for (MeasuredPoint& point : points) {
            point.channel = point.channel == 0 ? 2 : point.channel == 2 ? 0 : point.channel;
        }
        const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
        EXPECT_THAT(names(result.channels[0]), Contains("CHANNELS_EXCHANGED")) << example;
        EXPECT_THAT(names(result.channels[1]), Not(Contains("CHANNELS_EXCHANGED"))) << example;
        EXPECT_THAT(names(result.channels[2]), Contains("CHANNELS_EXCHANGED")) << example;
        EXPECT_EQ(result.outcome(), FitOutcome::UNUSABLE);
    }
}

TEST_F(Findings, LengthsInAnotherUnitAreNamed) {
    for (const char* example : {"spherical-dome", "planar-wall", "lens-cylinder"}) {
        FitScene scene = FitScene::ofExample(example);
        for (const double factor : {1000.0, 100.0, 39.37, 3.281, 0.001}) {
            Points points = scene.measured(6, 5);
            for (MeasuredPoint& point : points) {
                point.world *= factor;
            }
            const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
            for (const ChannelFit& fit : result.channels) {
                EXPECT_THAT(names(fit), ElementsAre("WRONG_UNIT")) << example << ", " << factor;
            }
        }
    }
}

TEST_F(Findings, AUnitThatWasTakenForAnotherIsNamedEitherWay) {
    FitScene scene = FitScene::ofExample("planar-wall");
    for (const auto& [factor, text] :
         {std::pair(1000.0,
                    "times as wide as the channel does on the screen, in m: they are in a smaller unit than the "
                    "one that was stated, such as millimetres for metres"),
          std::pair(0.001,
                    "times as narrow as the channel does on the screen, in m: they are in a larger unit than the "
                    "one that was stated, such as metres for millimetres"),
          std::pair(1 / 12.0, "such as feet for inches or centimetres for millimetres")}) {
        Points points = scene.measured(6, 5);
        for (MeasuredPoint& point : points) {
            point.world *= factor;
        }
        const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
        EXPECT_THAT(result.channels.at(0).findings.at(0).text, HasSubstr(text));
        EXPECT_THAT(result.channels.at(0).findings.at(0).remedy, HasSubstr("--unit"));
    }
}

TEST_F(Findings, OneRowOfMarksIsALineDespiteItsNoise) {
    for (const char* example : {"planar-wall", "spherical-dome", "collimated", "lens-cylinder"}) {
        FitScene scene = FitScene::ofExample(example);
        for (const double between : {0.0, 0.03}) {
            Points points;
            for (const MeasuredPoint& point : SyntheticChannel::noisyInPicture(scene.measured(8, 31), 0.5, 1)) {
                const double row = std::round(point.picture[1] * 30);
                if (point.channel == 0 && (row == 14 || (row == 15 && between > 0))) {
                    points.push_back(point);
                }
            }
            const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
            const auto found = names(result.channels.at(0));
            EXPECT_EQ(found == std::vector<std::string>{"POINTS_ON_LINE"}, between == 0) << example;
        }
    }
}

TEST_F(Findings, PointsOfNoPictureFitNothing) {
    const SyntheticChannel channel("Rectilinear", {});
    Points points = channel.measured(60);
    std::mt19937 random(3);
    std::uniform_real_distribution<double> part(0, 1);
    for (MeasuredPoint& point : points) {
        point.picture = {part(random), part(random)};
    }
    const ChannelFit fit = fitOf(channel, points);
    EXPECT_THAT(names(fit), Contains("NOT_FITTING"));
    EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE);
}

TEST_F(Findings, DeviationsThatExplainTooLittleAreDoubted) {
    const SyntheticChannel channel("Rectilinear", {});
    Points points = SyntheticChannel::noisy(channel.measured(100), 0.01, 1);
    for (MeasuredPoint& point : points) {
        for (std::size_t i = 0; i < 3; ++i) {
            (*point.covariance)(i, i) /= 100;
        }
    }
    FitOptions plain;
    plain.isRobust = false;
    const ChannelFit fit = fitOf(channel, points, plain);
    EXPECT_THAT(names(fit), ElementsAre("DEVIATIONS_TOO_SMALL", "ILL_DETERMINED"));
    EXPECT_THAT(fit.findings[1].text, HasSubstr("the picture may be off by"));
    EXPECT_NEAR(fit.residualFactor, 10, 1);
    EXPECT_EQ(fit.outcome, FitOutcome::DOUBTFUL);
}

TEST_F(Findings, MapFilesAndForeignGroupsAreRefused) {
    FitScene scene = FitScene::ofExample("warped-wall");
    const Points points = scene.measured(6, 5);
    const DisplayFitResult result = DisplayFitter().fit(scene.truth(), points);
    ASSERT_EQ(result.channels.size(), 2U);
    EXPECT_THAT(names(result.channels[0]), ElementsAre("KIND_NOT_SOLVED"));
    EXPECT_EQ(result.outcome(), FitOutcome::UNUSABLE);
    const SyntheticChannel channel("Rectilinear", {});
    FitOptions options;
    options.solved = SolvedGroups{};
    options.solved->area = true;
    const ChannelFit fit = fitOf(channel, channel.measured(20), options);
    EXPECT_THAT(names(fit), ElementsAre("KIND_NOT_SOLVED"));
    EXPECT_EQ(fit.findings[0].remedy, "solve position, orientation or frustum");
}

TEST_F(Findings, UnsoundPointsThrowAndNameTheirLine) {
    const SyntheticChannel channel("Rectilinear", {});
    const Points sound = channel.measured(20);
    const auto with = [&](auto change) {
        Points points = sound;
        change(points[4]);
        return refusalOf(points);
    };
    constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(with([](MeasuredPoint& p) { p.channel = 1; }), "Fit: line 6: channel 1 of 1, counted from 0");
    EXPECT_THAT(with([](MeasuredPoint& p) { p.world[2] = NOT_A_NUMBER; }), HasSubstr("line 6: a coordinate"));
    EXPECT_THAT(with([](MeasuredPoint& p) { p.picture[0] = 1e300; }), HasSubstr("line 6: a coordinate"));
    EXPECT_THAT(with([](MeasuredPoint& p) { p.covariance = Matrix<double, 3>(); }), HasSubstr("for all, or for none"));
    const auto stated = [&](auto change) {
        Points points = SyntheticChannel::noisy(sound, 0.01, 1);
        change(*points[4].covariance);
        return refusalOf(points);
    };
    using M = Matrix<double, 3>;
    EXPECT_THAT(stated([](M& m) { m(0, 1) = 1; }), HasSubstr("not symmetric"));
    EXPECT_THAT(stated([](M& m) { m(1, 1) = -1; }), HasSubstr("below zero"));
    EXPECT_THAT(stated([](M& m) { m(1, 1) = NOT_A_NUMBER; }), HasSubstr("not finite"));
    EXPECT_THAT(stated([](M& m) { m(0, 0) = m(1, 1) = m(2, 2) = 0; }), HasSubstr("deviations of zero"));
    EXPECT_EQ(stated([](M& m) { m(0, 0) *= 2; }), "nothing thrown");
    FitOptions options;
    options.rejection = 0;
    EXPECT_THROW(DisplayFitter{options}, VeltraniException);
}

TEST_F(Findings, AFitEndsWithWhatItsPulseThrows) {
    const SyntheticChannel channel("Rectilinear", {});
    const Points points = channel.measured(40);
    FitOptions options;
    int pulses = 0;
    options.pulse = [&pulses] { ++pulses; };
    EXPECT_TRUE(fitOf(channel, points, options).isSolved);
    EXPECT_GE(pulses, 2) << "the robust part and the plain one";
    options.pulse = [] { throw std::runtime_error("enough"); };
    EXPECT_THROW(fitOf(channel, points, options), std::runtime_error);
}

/// The longest stretch without a pulse, in points of one pass over them, is a part of one pass: all long loops have it.
TEST_F(Findings, APulseComesManyTimesInEachPassOverThePoints) {
    constexpr std::size_t COUNT = 20000;
    const SyntheticChannel channel("BrownConrady", {-0.14, 0.08, 4e-4, -3e-4, -0.02});
    const Points points = SyntheticChannel::noisy(channel.measured(COUNT), 0.002, 1);
    FitOptions options;
    std::size_t pulses = 0;
    options.pulse = [&pulses] { ++pulses; };
    const ChannelFit fit = fitOf(channel, points, options);
    ASSERT_TRUE(fit.isSolved);
    EXPECT_GE(pulses, static_cast<std::size_t>(fit.iterations) * (COUNT / 1024)) << "in each step";
    // Wherever it is given up: before the solver, in it, and behind it.
    for (const std::size_t last : {std::size_t{5}, std::size_t{30}, pulses / 2, pulses - 1}) {
        std::size_t seen = 0;
        options.pulse = [&seen, last] {
            if (++seen > last) {
                throw std::runtime_error("enough");
            }
        };
        EXPECT_THROW(fitOf(channel, points, options), std::runtime_error);
        EXPECT_EQ(seen, last + 1) << "nothing goes on";
    }
}

/// Nothing that a caller can hand over ends the program or comes back with a number that is none.
TEST_F(Findings, OddPointsAreSurvived) {
    const SyntheticChannel channel("BrownConrady", {-0.14, 0.08, 4e-4, -3e-4, -0.02});
    std::mt19937 random(11);
    std::uniform_real_distribution<double> part(-1, 1);
    for (int round = 0; round < 60; ++round) {
        Points points = channel.measured(12);
        for (MeasuredPoint& point : points) {
            const double size = std::pow(10.0, 12 * part(random) - 1);
            switch (round % 4) {
                case 0:
                    point.world = {size * part(random), size * part(random), size * part(random)};
                    break;
                case 1:
                    point.picture = {size * part(random), part(random)};
                    break;
                case 2:
                    point.world = channel.truth().position;
                    break;
                default:
                    point.world = point.world * size;
                    break;
            }
        }
        const ChannelFit fit = fitOf(channel, points);
        EXPECT_NE(fit.outcome, FitOutcome::GOOD);
        EXPECT_TRUE(std::isfinite(norm(fit.after.position)));
        EXPECT_TRUE(std::isfinite(fit.after.lens->fx));
    }
}

}  // namespace
