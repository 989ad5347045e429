#include "DisplayFit/detail/PointMistakes.h"

#include "DisplayFit/DisplayFitter.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using testing::IsEmpty;

/// Three channels beside each other on a wall, whose points were written down wrongly.
class PointMistakesTest : public testing::Test {
protected:
    PointMistakesTest() { ScreenManager::getInstance()->setScreenGeometry(m_config.get(), true); }
    ~PointMistakesTest() override { ScreenManager::deleteInstance(); }

    static std::string channel(const std::string& name, const std::string& left, const std::string& right) {
        return displays::projector(name,
                                   "<ScreenArea left='" + left + "' right='" + right + "' bottom='0' top='0.5'/>");
    }
    /// @param change of points that are right
    [[nodiscard]] std::vector<ChannelFit> fitsAfter(const std::function<void(MeasuredPoint&)>& change) const {
        std::vector<MeasuredPoint> points;
        for (int i = 0; i < 60; ++i) {
            MeasuredPoint point;
            point.channel = static_cast<std::size_t>(i / 20);
            point.picture = {(i % 5) / 4.0, (i / 5 % 4) / 3.0};
            point.world = {-2 + 1.2 * (i / 20) + 1.2 * point.picture[0], 5, point.picture[1]};
            change(point);
            points.push_back(point);
        }
        return DisplayFitter().fit(*m_config, points).channels;
    }
    /// The only finding of a channel: text and remedy.
    static std::string saidOf(const ChannelFit& fit) {
        return fit.findings.size() == 1 ? fit.findings[0].text + "; " + fit.findings[0].remedy : "";
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config = displays::parsed(
        displays::FLAT, channel("A", "0", "0.3") + channel("B", "0.3", "0.6") + channel("C", "0.6", "0.9"));
};

TEST_F(PointMistakesTest, NothingIsSaidOfPointsThatAreRight) {
    for (const ChannelFit& fit : fitsAfter([](MeasuredPoint&) {})) {
        EXPECT_THAT(fit.findings, IsEmpty());
        EXPECT_EQ(fit.outcome, FitOutcome::GOOD);
    }
}

TEST_F(PointMistakesTest, TwoChannelsThatAreExchangedAreNamedAsAPair) {
    const auto fits =
        fitsAfter([](MeasuredPoint& point) { point.channel = point.channel < 2 ? 1 - point.channel : 2; });
    EXPECT_EQ(saidOf(fits[0]),
              "the points lie where the picture of the channel B is, and those of that channel where this one's is; "
              "exchange the two channels in the file of the points");
    EXPECT_EQ(saidOf(fits[1]),
              "the points lie where the picture of the channel A is, and those of that channel where this one's is; "
              "exchange the two channels in the file of the points");
    EXPECT_EQ(saidOf(fits[2]), "");
    EXPECT_EQ(fits[1].outcome, FitOutcome::UNUSABLE);
    EXPECT_EQ(fits[2].outcome, FitOutcome::GOOD);
}

TEST_F(PointMistakesTest, ChannelsInARingAreNamedWithBothOthers) {
    const auto fits = fitsAfter([](MeasuredPoint& point) { point.channel = (point.channel + 1) % 3; });
    EXPECT_EQ(saidOf(fits[0]),
              "the points lie where the picture of the channel C is, and those of the channel B lie here; name the "
              "channel C in the rows of these points");
    EXPECT_EQ(saidOf(fits[1]),
              "the points lie where the picture of the channel A is, and those of the channel C lie here; name the "
              "channel A in the rows of these points");
    EXPECT_EQ(saidOf(fits[2]),
              "the points lie where the picture of the channel B is, and those of the channel A lie here; name the "
              "channel B in the rows of these points");
}

TEST_F(PointMistakesTest, AMistakeOfOneChannelIsNamedThereAlone) {
    const auto fits = fitsAfter([](MeasuredPoint& point) {
        if (point.channel == 1) {
            point.picture[1] = 1 - point.picture[1];
        } else if (point.channel == 2) {
            point.world[1] *= -1;
        }
    });
    EXPECT_THAT(fits[0].findings, IsEmpty());
    EXPECT_EQ(saidOf(fits[1]),
              "bottom and top of the picture are exchanged: v is reversed; give v, or py, from the bottom edge of the "
              "picture, or state that its origin is at the top left");
    EXPECT_EQ(saidOf(fits[2]), "y has the wrong sign: space is mirrored; reverse the sign of y in the table");
}

/// What is solved by each kind of display: few points are enough to show what is not even tried.
class SolvableGroups : public testing::Test {
protected:
    ~SolvableGroups() override { ScreenManager::deleteInstance(); }

    static FitFinding findingOf(const std::string& targets, const FitOptions& options,
                                const std::vector<Point<double, 3>>& places = {{0, 5, 1}, {1, 5, 1}}) {
        const auto config = displays::parsed(
            displays::FLAT,
            displays::projector("A", displays::WHOLE_AREA + "<Frustum left='-30' right='30' bottom='-20' top='20'/>"),
            targets);
        ScreenManager::getInstance()->setScreenGeometry(config.get(), true);
        std::vector<MeasuredPoint> points(places.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
            points[i].world = places[i];
        }
        return DisplayFitter(options).fit(*config, points).channels.at(0).findings.at(0);
    }

    LogTrap m_log;
};

TEST_F(SolvableGroups, AreThoseOfTheKindAndOthersAreRefusedWithThem) {
    struct Kind {
        std::string targets;
        std::vector<bool> has;  ///< position, orientation, frustum, distortion, area
        std::string remedy;
    };
    for (const Kind& kind :
         {Kind{"<TargetData type='PlanarBasic'/>", {false, false, false, false, true}, "solve its area"},
          Kind{"<TargetData type='Spherical'/>", {false, true, true, false, false}, "solve orientation or frustum"},
          Kind{
              "<TargetData type='3D'/>", {true, true, true, false, false}, "solve position, orientation or frustum"}}) {
        for (std::size_t group = 0; group < 6; ++group) {
            FitOptions options;
            options.solved = SolvedGroups{group == 0, group == 1, group == 2, group == 3, group == 4};
            const FitFinding finding = findingOf(kind.targets, options);
            const bool isSolved = group < 5 && kind.has[group];
            EXPECT_EQ(FitFinding::nameOf(finding.kind), isSolved ? "TOO_FEW_POINTS" : "KIND_NOT_SOLVED") << group;
            if (!isSolved) {
                EXPECT_EQ(finding.remedy, kind.remedy);
            }
        }
    }
}

TEST_F(SolvableGroups, WhatIsHeldOfTheFrustumNeedsOneThatIsSolved) {
    for (const bool isSquare : {true, false}) {
        FitOptions options;
        options.holdsSquarePixels = isSquare;
        options.holdsHorizontalShift = !isSquare;
        EXPECT_EQ(findingOf("<TargetData type='3D'/>", options).kind, FitFinding::Kind::TOO_FEW_POINTS);
        options.solved = SolvedGroups{true, true, false, false, false};
        const FitFinding finding = findingOf("<TargetData type='3D'/>", options);
        EXPECT_EQ(finding.kind, FitFinding::Kind::KIND_NOT_SOLVED);
        EXPECT_EQ(finding.text, "numbers of the frustum are to be held, and no frustum is solved");
    }
}

TEST_F(SolvableGroups, FewerNumbersNeedFewerPoints) {
    const std::vector<Point<double, 3>> deep{{0, 5, 1}, {1, 5, 1}, {0, 5, 2}, {0, 4, 1}};
    const std::vector<Point<double, 3>> flat{{0, 5, 1}, {1, 5, 1}, {0, 5, 2}, {1, 5, 2}};
    const auto textOf = [](const FitOptions& options, const std::vector<Point<double, 3>>& places) {
        return findingOf("<TargetData type='3D'/>", options, places).text;
    };
    FitOptions options;
    EXPECT_EQ(textOf(options, deep), "4 points are too few for 10 values: at least 6 are needed");
    EXPECT_EQ(textOf(options, flat), "4 points are too few for 8 values: at least 5 are needed") << "two are held";
    options.holdsSquarePixels = true;
    EXPECT_EQ(textOf(options, deep), "4 points are too few for 9 values: at least 5 are needed");
    options.holdsHorizontalShift = true;
    EXPECT_EQ(textOf(options, deep), "4 points are too few for 8 values: at least 5 are needed");
    options = {};
    options.solved = SolvedGroups{true, false, true, false, false};
    const std::vector<Point<double, 3>> three(flat.begin(), flat.begin() + 3);
    EXPECT_EQ(textOf(options, three), "3 points are too few for 7 values: at least 4 are needed") << "nothing is held";
}

}  // namespace
