#include "DisplayFit/detail/FitJudge.h"

#include "DisplayFit/detail/ResidualLists.h"
#include "StatedModel.h"
#include "WallChannels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Veltrani::DisplayFit::ChannelFit;
using Veltrani::DisplayFit::FitFinding;
using Veltrani::DisplayFit::FitOptions;
using Veltrani::DisplayFit::FitOutcome;

constexpr std::size_t COUNT = 20;

/// A channel of an area, of 1920 by 1200 pixels, and a solution of two unknowns that a test changes.
class FitJudgeTest : public testing::Test {
protected:
    FitJudgeTest() : m_search(m_wall.setup(), m_points, m_options) {
        auto model = std::make_unique<StatedModel>(2, COUNT);
        m_model = model.get();
        for (StatedModel::Stated& stated : m_model->stated) {
            stated.pixels = {1, 0};
            stated.lengths = {0.001, 0, 0};
        }
        m_model->rowsOfPlace = [this](const Point<double, 2>& place, double, double* rows) {
            rows[0] = rows[3] = place == Point<double, 2>{1, 0} ? m_slope : 0;
            rows[1] = rows[2] = 0;
            return true;
        };
        m_attempt.model = std::move(model);
        m_attempt.solution.isSolved = true;
        m_attempt.solution.inliers = COUNT;
        m_attempt.solution.isOutlier.assign(COUNT, false);
        m_fit.isSolved = true;
    }

    /// What is found, text by text.
    std::vector<std::string> found() {
        ChannelFit fit = m_fit;
        noteBefore(*m_model, fit);
        noteAfter(*m_model, fit);
        const Determination determination(m_model->all, m_triangle, 1);
        const PointShape shape = PointShape::of(m_points.world);
        FitJudge(m_wall.setup(), m_points, shape, m_options, m_search).judge(fit, m_attempt, determination);
        m_worst = FitJudge::worstOf(fit);
        std::vector<std::string> texts;
        for (const FitFinding& finding : fit.findings) {
            texts.push_back(FitFinding::nameOf(finding.kind) + ": " + finding.text);
            EXPECT_FALSE(finding.remedy.empty());
        }
        return texts;
    }
    void leaveOut(const std::vector<std::size_t>& points) {
        for (const std::size_t point : points) {
            m_attempt.solution.isOutlier[point] = true;
        }
        m_fit.outliers = points.size();
        m_attempt.solution.inliers = COUNT - points.size();
    }

    WallChannels m_wall;
    FitPoints m_points = WallChannels::of(m_wall.measured(5, 4));
    FitOptions m_options;
    ChannelSearch m_search;
    StatedModel* m_model = nullptr;
    FitAttempt m_attempt;
    ChannelFit m_fit;
    std::vector<double> m_triangle{1000, 0, 0, 1000};
    double m_slope = 1000;
    FitOutcome m_worst = FitOutcome::GOOD;
};

TEST_F(FitJudgeTest, OfASoundFitNothingIsSaid) {
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_EQ(m_worst, FitOutcome::GOOD);
}

TEST_F(FitJudgeTest, OutliersAreNamedByTheirLines) {
    const auto textOf = [this](const std::vector<std::size_t>& points) {
        m_attempt.solution.isOutlier.assign(COUNT, false);
        leaveOut(points);
        const auto texts = found();
        EXPECT_EQ(m_worst, FitOutcome::DOUBTFUL);
        return texts.size() == 1 ? texts[0] : "";
    };
    const std::string by = " by more than 4 standard deviations and took no part";
    EXPECT_EQ(textOf({3}), "OUTLIERS: 1 point deviates" + by + ": line 5");
    EXPECT_EQ(textOf({3, 7}), "OUTLIERS: 2 points deviate" + by + ": lines 5 and 9");
    EXPECT_EQ(textOf({3, 7, 8}), "OUTLIERS: 3 points deviate" + by + ": lines 5, 9 and 10");
    EXPECT_EQ(textOf({0, 3, 7, 8, 9}), "OUTLIERS: 5 points deviate" + by + ": lines 2, 5, 9, 10 and 11");
    EXPECT_EQ(textOf({0, 3, 7, 8, 9, 10}), "OUTLIERS: 6 points deviate" + by + ": lines 2, 5, 9, 10, 11 and others");
    m_points.rows[3] = 0;
    EXPECT_EQ(textOf({3, 7}), "OUTLIERS: 2 points deviate" + by + ": line 9");
    m_points.rows[7] = 0;
    EXPECT_EQ(textOf({3, 7}), "OUTLIERS: 2 points deviate" + by);
}

TEST_F(FitJudgeTest, WhereMostPointsAreFarOffNothingFits) {
    leaveOut({0, 1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_THAT(found(), ElementsAre(StartsWith("OUTLIERS: 9 points")));
    leaveOut({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_THAT(found(), ElementsAre("NOT_FITTING: no values explain the points: most of them lie far from where the "
                                     "best ones lead"));
    EXPECT_EQ(m_worst, FitOutcome::UNUSABLE);
    leaveOut({});
    // A fiftieth of the picture's larger side is 38.4 pixels.
    for (const double pixels : {38.0, 39.0}) {
        for (StatedModel::Stated& stated : m_model->stated) {
            stated.pixels = {0, -pixels};
        }
        EXPECT_EQ(found().empty(), pixels < 38.4);
    }
    m_attempt.solution.isSolved = m_fit.isSolved = false;
    EXPECT_THAT(found(), ElementsAre("NOT_FITTING: no values explain the points"));
}

TEST_F(FitJudgeTest, APictureThatCameOutMirroredIsNamed) {
    m_model->reversed = {1, 0};
    EXPECT_THAT(found(), ElementsAre("U_REVERSED: left and right of the picture are exchanged: the points fit with u "
                                     "reversed"));
    m_model->reversed = {0, 1};
    EXPECT_THAT(found(), ElementsAre("V_REVERSED: bottom and top of the picture are exchanged: the points fit with v "
                                     "reversed"));
    EXPECT_EQ(m_worst, FitOutcome::UNUSABLE);
    for (StatedModel::Stated& stated : m_model->stated) {
        stated.pixels = {500, 0};
    }
    EXPECT_THAT(found(), ElementsAre(StartsWith("NOT_FITTING"))) << "a mirror image that does not fit is none";
}

TEST_F(FitJudgeTest, APictureThatHangsAgainstItsConfigurationIsDoubtful) {
    m_fit.solved.orientation = true;
    // Three is more than two thirds of half a turn.
    for (const double turned : {0.0, 2.0, 2.2, 3.0, -2.2}) {
        m_fit.before.orientation = {0.3, 0.1, 0.2};
        m_fit.after.orientation = {0.3, 0.1, 0.2 + turned};
        const auto texts = found();
        EXPECT_EQ(texts.size(), std::abs(turned) > 2.1 ? 1U : 0U) << turned;
        if (!texts.empty()) {
            EXPECT_EQ(texts[0], "V_REVERSED: the picture is upside down against the configuration");
            EXPECT_EQ(m_worst, FitOutcome::DOUBTFUL);
        }
    }
    m_fit.solved.orientation = false;
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(FitJudgeTest, ResidualsThatTheirDeviationsDoNotExplainAreDoubtful) {
    m_fit.residualFactor = 3.1;
    EXPECT_THAT(found(), IsEmpty()) << "none are stated";
    m_fit.hasStatedDeviations = true;
    EXPECT_THAT(found(), testing::Contains("DEVIATIONS_TOO_SMALL: the residuals are larger than the stated deviations "
                                           "explain"));
    m_fit.residualFactor = 2.9;
    m_slope = 10;
    EXPECT_THAT(found(), IsEmpty());
}

// What is visible is a thousandth of the larger side: 1.92 pixels.
TEST_F(FitJudgeTest, APictureThatMayBeOffVisiblyIsDoubtfulWithItsPixels) {
    m_slope = 1900;
    EXPECT_THAT(found(), IsEmpty());
    m_slope = 2100;
    m_model->all[0].role = m_model->all[1].role = Unknown::Role::AREA;
    const auto texts = found();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_THAT(texts[0], StartsWith("ILL_DETERMINED: the points hardly determine "));
    EXPECT_THAT(texts[0], HasSubstr(": the picture may be off by 3 pixels at its bottom right corner"));
    m_slope = 1e15;
    EXPECT_THAT(found().at(0), HasSubstr("may be off by 1000000000 pixels at"));
    // Larger residuals make it larger, and smaller ones no smaller.
    m_slope = 1000;
    m_fit.hasStatedDeviations = true;
    m_fit.residualFactor = 2;
    EXPECT_THAT(found().at(0), HasSubstr("may be off by 2 pixels at"));
    m_slope = 1900;
    m_fit.residualFactor = 0.1;
    EXPECT_THAT(found(), IsEmpty());
    m_slope = 2100;
    EXPECT_THAT(found().at(0), HasSubstr("may be off by 3 pixels at"));
}

TEST_F(FitJudgeTest, WhatIsHardlyOrNotDeterminedIsNamed) {
    m_slope = 0;
    m_triangle = {1, 1, 0, 1e-7};
    EXPECT_THAT(found(), ElementsAre("ILL_DETERMINED: the points hardly determine a and b"));
    EXPECT_EQ(m_worst, FitOutcome::DOUBTFUL);
    m_triangle = {1, 1, 0, 0};
    EXPECT_THAT(found(), ElementsAre("NOT_DETERMINED: the points do not determine a and b"));
    EXPECT_EQ(m_worst, FitOutcome::UNUSABLE);
}

}  // namespace
