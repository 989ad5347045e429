// What somebody does wrong when points are measured and written down is named, on every kind of display.
#include "DisplayFit/DisplayFitter.h"

#include "Configuration/ProjectorConfig.h"
#include "FitScene.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Points = std::vector<MeasuredPoint>;
using Change = std::function<void(MeasuredPoint&)>;

std::vector<std::string> namesOf(const std::vector<FitFinding>& findings) {
    std::vector<std::string> names;
    for (const FitFinding& finding : findings) {
        names.push_back(FitFinding::nameOf(finding.kind));
        EXPECT_FALSE(finding.text.empty());
        EXPECT_FALSE(finding.remedy.empty() && finding.outcome != FitOutcome::GOOD) << finding.text;
    }
    return names;
}

/// A display that is not quite as it is configured, and mistakes in its measurement.
class Mistakes : public testing::TestWithParam<std::string> {
protected:
    /// Rays that are reflected take long to follow where no values lead to the points.
    [[nodiscard]] static bool isSlow() { return GetParam() == "collimated"; }

    [[nodiscard]] DisplayFitResult fitOf(const Change& change, bool isFast = !isSlow()) {
        Points points = isFast ? m_scene.measured(8, 6) : m_scene.measured(4, 3);
        for (MeasuredPoint& point : points) {
            change(point);
        }
        return DisplayFitter().fit(*m_scene.disturbed(), points);
    }

    /// Every channel has this finding and no other one, and is not written.
    void expectNamed(const std::string& name, const std::string& text, const Change& change) {
        SCOPED_TRACE(text);
        const DisplayFitResult result = fitOf(change);
        EXPECT_FALSE(result.channels.empty());
        EXPECT_THAT(namesOf(result.findings), IsEmpty());
        for (const ChannelFit& fit : result.channels) {
            EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE) << fit.name;
            const bool isNote = fit.findings.size() > 1 && fit.findings[0].kind == FitFinding::Kind::CHANGED_FOR_PLANE;
            ASSERT_EQ(fit.findings.size(), isNote ? 2U : 1U) << fit.name;
            EXPECT_EQ(FitFinding::nameOf(fit.findings.back().kind), name) << fit.name;
            EXPECT_THAT(fit.findings.back().text, HasSubstr(text)) << fit.name;
        }
    }

    LogTrap m_log;
    FitScene m_scene = FitScene::ofExample(GetParam());
};

TEST_P(Mistakes, InThePictureAreNamedAndToldApart) {
    expectNamed("U_REVERSED", "u is reversed", [](MeasuredPoint& p) { p.picture[0] = 1 - p.picture[0]; });
    expectNamed("V_REVERSED", "v is reversed", [](MeasuredPoint& p) { p.picture[1] = 1 - p.picture[1]; });
    expectNamed("V_REVERSED", "u and v are both reversed", [](MeasuredPoint& p) {
        p.picture = {1 - p.picture[0], 1 - p.picture[1]};
    });
    expectNamed("UV_EXCHANGED", "u and v are exchanged", [](MeasuredPoint& p) {
        p.picture = {p.picture[1], p.picture[0]};
    });
}

TEST_P(Mistakes, OfTheAxesAreNamedAndToldApart) {
    const std::vector<std::string> axes{"x", "y", "z"};
    for (std::size_t axis = 0; axis < (isSlow() ? 1 : 3); ++axis) {
        expectNamed("AXIS_MIRRORED", axes[axis] + " has the wrong sign",
                    [axis](MeasuredPoint& p) { p.world[axis] *= -1; });
    }
    const auto exchange = [](std::size_t a, std::size_t b) {
        return [a, b](MeasuredPoint& p) { std::swap(p.world[a], p.world[b]); };
    };
    expectNamed("AXES_EXCHANGED", "y and z are exchanged", exchange(1, 2));
    if (isSlow()) {
        return;
    }
    expectNamed("AXES_EXCHANGED", "x and y are exchanged", exchange(0, 1));
    expectNamed("AXES_EXCHANGED", "x and z are exchanged", exchange(0, 2));
    expectNamed("AXES_EXCHANGED", "x, y, z are y, z, x of the display", [](MeasuredPoint& p) {
        p.world = {p.world[1], p.world[2], p.world[0]};
    });
    expectNamed("AXES_EXCHANGED", "x, y, z are z, x, y of the display", [](MeasuredPoint& p) {
        p.world = {p.world[2], p.world[0], p.world[1]};
    });
}

TEST_P(Mistakes, ChannelsInARingAreNamedWithTheirOwners) {
    const std::size_t count = m_scene.truth().getProjectorConfigIds().size();
    const DisplayFitResult result = fitOf([count](MeasuredPoint& p) { p.channel = (p.channel + 1) % count; });
    for (const ChannelFit& fit : result.channels) {
        SCOPED_TRACE(fit.name);
        ASSERT_THAT(namesOf(fit.findings), ElementsAre("CHANNELS_EXCHANGED"));
        const std::string owner = result.channels[(fit.channel + count - 1) % count].name;
        EXPECT_THAT(fit.findings.back().text, HasSubstr("where the picture of the channel " + owner + " is"));
        EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE);
    }
}

TEST_P(Mistakes, AFrameOfItsOwnIsNamedWithItsMovement) {
    const double quarter = std::sqrt(0.5);
    const std::vector<std::pair<std::string, Change>> movements{
        {"moved by",
         [](MeasuredPoint& p) {
             p.world += Point<double, 3>{2, -3, 1.5};
         }},
        {"turned by", [quarter](MeasuredPoint& p) {
             p.world = {quarter * (p.world[0] - p.world[1]) + 1, quarter * (p.world[0] + p.world[1]) - 2, p.world[2]};
         }}};
    for (const auto& [text, change] : movements) {
        const DisplayFitResult result = fitOf(change, true);
        ASSERT_THAT(namesOf(result.findings), ElementsAre("FRAME_MOVED"));
        EXPECT_THAT(result.findings[0].text, AllOf(HasSubstr("all points lie"), HasSubstr(text)));
        EXPECT_THAT(result.findings[0].remedy, HasSubstr("--register rigid"));
        EXPECT_EQ(result.findings[0].outcome, FitOutcome::DOUBTFUL);
        EXPECT_NE(result.outcome(), FitOutcome::GOOD);
        for (const ChannelFit& fit : result.channels) {
            EXPECT_THAT(namesOf(fit.findings), Not(Contains("U_REVERSED"))) << fit.name;
            EXPECT_THAT(namesOf(fit.findings), Not(Contains("CHANNELS_EXCHANGED"))) << fit.name;
        }
        if (isSlow()) {
            break;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Mistakes, testing::ValuesIn(solvedExamples()),
                         [](const auto& example) { return testNameOf(example.param); });

class OneMistake : public testing::Test {
protected:
    LogTrap m_log;
};

TEST_F(OneMistake, OfOneChannelIsNamedThere) {
    FitScene scene = FitScene::ofExample("curved-wall");
    Points points = scene.measured(8, 6);
    for (MeasuredPoint& point : points) {
        point.picture[0] = point.channel == 1 ? 1 - point.picture[0] : point.picture[0];
    }
    const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
    for (const ChannelFit& fit : result.channels) {
        EXPECT_THAT(namesOf(fit.findings), fit.channel == 1
                                               ? testing::Matcher<std::vector<std::string>>(ElementsAre("U_REVERSED"))
                                               : IsEmpty());
    }
}

TEST_F(OneMistake, OfOneStationIsNamedWithItsSet) {
    FitScene scene = FitScene::ofExample("spherical-dome");
    Points points = scene.measured(8, 6);
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i].set = i % 3 == 0 ? "gallery" : "stalls";
        points[i].world += points[i].set == "gallery" ? Point<double, 3>{0, 2, 0} : Point<double, 3>{};
    }
    const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
    ASSERT_THAT(namesOf(result.findings), ElementsAre("FRAME_MOVED"));
    EXPECT_THAT(result.findings[0].text, HasSubstr("all points of the set \"gallery\""));
}

TEST_F(OneMistake, AFrameInWhichNothingCanBeFittedIsTheOnlyFinding) {
    FitScene scene = FitScene::ofExample("spherical-dome");
    Points points = scene.measured(8, 6);
    for (MeasuredPoint& point : points) {
        point.world = {point.world[1] + 20, -point.world[0] - 6, point.world[2] + 1};
    }
    const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
    ASSERT_THAT(namesOf(result.findings), ElementsAre("FRAME_MOVED"));
    int unusable = 0;
    for (const ChannelFit& fit : result.channels) {
        if (fit.outcome == FitOutcome::UNUSABLE) {
            EXPECT_THAT(namesOf(fit.findings), ElementsAre("FRAME_MOVED")) << fit.name;
            ++unusable;
        }
    }
    EXPECT_GT(unusable, 0);
}

TEST_F(OneMistake, OfTwoFramesWithoutSetsIsNamedWithItsRows) {
    for (const char* example : {"spherical-dome", "curved-wall", "lens-cylinder"}) {
        FitScene scene = FitScene::ofExample(example);
        const Points exact = scene.measured(8, 6);
        for (const double part : {0.25, 0.5}) {
            SCOPED_TRACE(std::string(example) + ", " + std::to_string(part));
            Points points = SyntheticChannel::noisy(exact, 0.001, 3);
            std::mt19937 random(5);
            std::uniform_real_distribution<double> any;
            for (std::size_t i = 0; i < points.size(); ++i) {
                points[i].covariance.reset();
                points[i].row = i + 2;
                points[i].world += any(random) < part ? Point<double, 3>{0.6, -0.9, 0.5} : Point<double, 3>{};
            }
            // A disturbed area is a quarter wider than it is: that is no movement any more.
            const auto disturbed = scene.disturbed();
            const bool isArea = std::string(example) == "curved-wall";
            const DisplayFitResult result = DisplayFitter().fit(isArea ? scene.truth() : *disturbed, points);
            EXPECT_NE(result.outcome(), FitOutcome::GOOD);
            EXPECT_THAT(namesOf(result.findings), IsEmpty());
            for (const ChannelFit& fit : result.channels) {
                SCOPED_TRACE(fit.name);
                ASSERT_THAT(namesOf(fit.findings), Contains("FRAMES_MIXED"));
                EXPECT_THAT(fit.findings.back().text, HasSubstr("such as lines "));
                EXPECT_THAT(fit.findings.back().remedy, HasSubstr("in a column set"));
            }
        }
    }
}

TEST_F(OneMistake, OutliersHereAndThereAreNoFrameOfTheirOwn) {
    FitScene scene = FitScene::ofExample("curved-wall");
    Points points = scene.measured(8, 6);
    std::mt19937 random(5);
    std::normal_distribution<double> far(0, 1);
    for (std::size_t i = 0; i < points.size(); i += 4) {
        points[i].world += Point<double, 3>{far(random), far(random), far(random)};
    }
    const DisplayFitResult result = DisplayFitter().fit(*scene.disturbed(), points);
    for (const ChannelFit& fit : result.channels) {
        EXPECT_THAT(namesOf(fit.findings), ElementsAre("OUTLIERS")) << fit.name;
    }
}

TEST_F(OneMistake, DeviationsInAnotherUnitAreNamed) {
    const SyntheticChannel channel("Rectilinear", {});
    for (const double size : {1.0, 10.0, 1000.0}) {
        Points points = SyntheticChannel::noisy(channel.measured(60), 0.001, 1);
        for (MeasuredPoint& point : points) {
            *point.covariance = Matrix<double, 3>();
            for (std::size_t i = 0; i < 3; ++i) {
                (*point.covariance)(i, i) = size * size;
            }
        }
        const ChannelFit fit =
            DisplayFitter().fit(*channel.config(channel.disturbed(), "start"), points).channels.at(0);
        ASSERT_THAT(namesOf(fit.findings), ElementsAre("DEVIATIONS_TOO_LARGE")) << size;
        EXPECT_THAT(fit.findings[0].remedy, HasSubstr("in the unit of x, y, z"));
        EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE);
    }
}

// Points all in one direction are explained by a picture of no width, whatever else they are.
TEST_F(OneMistake, WhatNoProjectorCanBeIsRefused) {
    const SyntheticChannel channel("Rectilinear", {});
    Points points = channel.measured(60);
    const auto& orientation = channel.truth().orientation;
    const auto world_from_projector = Veltrani::rotationZXY(orientation[0], orientation[1], orientation[2]);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point<double, 3> ray{0.01 * (points[i].picture[0] - 0.5), 1, 0.01 * (points[i].picture[1] - 0.5)};
        points[i].world = channel.truth().position + world_from_projector * ray * (3.0 + static_cast<double>(i % 7));
    }
    const ChannelFit fit = DisplayFitter().fit(*channel.config(channel.disturbed(), "start"), points).channels.at(0);
    ASSERT_THAT(namesOf(fit.findings), Contains("IMPLAUSIBLE_VALUES"));
    EXPECT_THAT(fit.findings[0].text, HasSubstr("degrees wide"));
    EXPECT_EQ(fit.outcome, FitOutcome::UNUSABLE);
}

TEST_F(OneMistake, HoldingWhatIsNotSolvedIsRefused) {
    FitScene scene = FitScene::ofExample("planar-wall");
    FitOptions holding;
    holding.holdsSquarePixels = true;
    const DisplayFitResult result = DisplayFitter(holding).fit(*scene.disturbed(), scene.measured(6, 5));
    for (const ChannelFit& fit : result.channels) {
        EXPECT_THAT(namesOf(fit.findings), ElementsAre("KIND_NOT_SOLVED"));
        EXPECT_FALSE(fit.isSolved);
    }
}

TEST_F(OneMistake, MapFilesAreRefusedWithWhatComesLater) {
    FitScene scene = FitScene::ofExample("warped-wall");
    const DisplayFitResult result = DisplayFitter().fit(scene.truth(), scene.measured(6, 5));
    EXPECT_THAT(result.channels.at(0).findings.at(0).text, HasSubstr("comes in a later version"));
}

}  // namespace
