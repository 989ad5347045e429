#include "DisplayFit/detail/FitJudge.h"

#include "DisplayFit/detail/PictureDeviation.h"
#include "DisplayFit/detail/PointChecks.h"
#include "DisplayFit/detail/ResidualLists.h"
#include "DisplayFit/detail/Rotations.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::FitFinding;
using DisplayFit::FitOptions;
using DisplayFit::FitOutcome;
using DisplayFit::WorstCombination;

/// Median of the residuals, as a part of the picture, above which the values found do not lead to the points.
constexpr double FAR = 0.02;

/// Stated deviations explain residuals up to this many times theirs.
constexpr double EXPLAINED = 3;

/// A picture that is turned further than this about its axis hangs upside down.
constexpr double UPSIDE_DOWN = 2 * std::numbers::pi / 3;

/// No more lines of the table are named.
constexpr std::size_t MOST_LINES = 5;

void warn(ChannelFit& fit, FitFinding::Kind kind, std::string text, std::string remedy) {
    fit.findings.push_back({kind, FitOutcome::DOUBTFUL, std::move(text), std::move(remedy)});
}

}  // namespace

FitJudge::FitJudge(const ChannelSetup& setup, const FitPoints& points, const PointShape& shape,
                   const FitOptions& options, const ChannelSearch& search)
    : m_setup(setup), m_points(points), m_shape(shape), m_options(options), m_search(search) {}

void FitJudge::refuse(ChannelFit& fit, FitFinding::Kind kind, std::string text, std::string remedy) {
    fit.findings.push_back({kind, FitOutcome::UNUSABLE, std::move(text), std::move(remedy)});
}

FitOutcome FitJudge::worstOf(const ChannelFit& fit) {
    FitOutcome worst = FitOutcome::GOOD;
    for (const FitFinding& finding : fit.findings) {
        worst = std::max(worst, finding.outcome);
    }
    return worst;
}

std::string FitJudge::linesOf(const std::vector<bool>& isChosen) const {
    std::vector<std::size_t> lines;
    for (std::size_t i = 0; i < isChosen.size(); ++i) {
        if (isChosen[i] && m_points.rows[i] > 0) {
            lines.push_back(m_points.rows[i]);
        }
    }
    if (lines.empty()) {
        return "";
    }
    const std::size_t named = std::min(lines.size(), MOST_LINES);
    std::string text = lines.size() == 1 ? ": line " : ": lines ";
    for (std::size_t i = 0; i < named; ++i) {
        text += i == 0 ? "" : i + 1 == lines.size() ? " and " : ", ";
        text += std::to_string(lines[i]);
    }
    return text + (named < lines.size() ? " and others" : "");
}

void FitJudge::judgeDirections(ChannelFit& fit, const FitAttempt& attempt) const {
    const Point<int, 2> isReversed = attempt.model->isReversed();
    const bool fits = fit.isSolved && medianMiss(fit, m_setup.pixels()) < FAR;
    bool isU = fits && isReversed[0] != 0;
    bool isV = fits && isReversed[1] != 0;
    // A lens that folds can bring the mirror image of a picture near to its points.
    const bool isSuspect = m_setup.isPicture() && !isU && !isV && (!fits || attempt.lens.unmapped > 0);
    if (isSuspect) {
        isU = m_search.fitsReversed(0, attempt.held);
        isV = !isU && m_search.fitsReversed(1, attempt.held);
    }
    const std::string orAxis = "; where it is, look for an axis of x, y, z with the wrong sign";
    if (isU) {
        refuse(fit, Kind::U_REVERSED, "left and right of the picture are exchanged: the points fit with u reversed",
               "give u, or px, from the left edge of the picture" + orAxis);
    }
    if (isV) {
        refuse(fit, Kind::V_REVERSED, "bottom and top of the picture are exchanged: the points fit with v reversed",
               "give v, or py, from the bottom edge, or state that its origin is at the top left" + orAxis);
    }
    if (!isU && !isV && fit.solved.orientation && fit.isSolved) {
        const auto& before = fit.before.orientation;
        const auto& after = fit.after.orientation;
        const auto was = Veltrani::rotationZXY(before[0], before[1], before[2]);
        const auto is = Veltrani::rotationZXY(after[0], after[1], after[2]);
        if (std::abs(rollOf(transpose(was) * is)) > UPSIDE_DOWN) {
            warn(fit, Kind::V_REVERSED, "the picture is upside down against the configuration",
                 "check whether the projector hangs; else give u and v from the bottom left corner of its picture");
        }
    }
}

void FitJudge::judgePoints(ChannelFit& fit, const FitAttempt& attempt) const {
    const Solution& solution = attempt.solution;
    const bool fits =
        solution.isSolved && 2 * solution.inliers > m_points.size() && medianMiss(fit, m_setup.pixels()) < FAR;
    if (!fits && worstOf(fit) != FitOutcome::UNUSABLE) {
        const bool areFew = m_points.size() < attempt.model->unknowns().size();
        refuse(fit, Kind::NOT_FITTING,
               solution.isSolved ? "no values explain the points: most of them lie far from where the best ones lead"
                                 : "no values explain the points",
               std::string(areFew ? "measure more points, all over the picture, or solve fewer values: so few points "
                                    "hardly lead to any; else "
                                  : "") +
                   "check the channel, the picture coordinates and the frame of the points");
    }
    if (fits && fit.outliers > 0) {
        warn(fit, Kind::OUTLIERS,
             std::to_string(fit.outliers) + (fit.outliers == 1 ? " point deviates" : " points deviate") +
                 " by more than " + std::to_string(std::lround(m_options.rejection)) +
                 " standard deviations and took no part" + linesOf(solution.isOutlier),
             "measure again there, or check what was taken for the light of the point");
    }
    if (fits && fit.hasStatedDeviations && fit.residualFactor > EXPLAINED) {
        warn(fit, Kind::DEVIATIONS_TOO_SMALL, "the residuals are larger than the stated deviations explain",
             "check the deviations and their unit; the kind of display or of lens may not fit the projector either");
    }
}

void FitJudge::judgeLens(ChannelFit& fit, const FitAttempt& attempt) const {
    if (!m_setup.isPicture()) {
        return;
    }
    const auto& model = static_cast<const PictureModel&>(*attempt.model);
    const bool isSolved = attempt.held.solved.distortion;
    if (attempt.isPlainLens) {
        warn(fit, Kind::ILL_DETERMINED,
             "the points do not determine k4, k5 and k6: with them the lens would fold within the picture or change "
             "between the axis and the points, so they were set to zero",
             "name a lens file of five coefficients, or add points all over the picture, up to its corners");
    }
    if (attempt.lens.isUsable(model)) {
        if (attempt.lens.foldsInPicture) {
            warn(fit, Kind::BEYOND_FOLD, "the fitted lens ends within the picture, beyond the points",
                 "add points towards the edges of what it shows");
        }
        return;
    }
    if (attempt.lens.isOpenOnAxis) {
        refuse(fit, Kind::NOT_DETERMINED,
               "the fitted lens changes between its axis and the points, which do not determine its focal length",
               "solve fewer coefficients (a lens file with five), or add points around the axis");
        return;
    }
    const std::string where = attempt.lens.unmapped > 0
                                  ? std::to_string(attempt.lens.unmapped) + " points lie where the " +
                                        (isSolved ? "fitted" : "configured") + " lens folds"
                                  : std::string("the fitted lens folds within the picture");
    refuse(fit, Kind::BEYOND_FOLD, where + ", so that no light would be placed there",
           isSolved ? "solve fewer coefficients (a lens file with five, or --solve without distortion), or add points "
                      "all over the picture, up to its corners"
                    : "solve the coefficients of the lens, too, or name the right lens file");
}

void FitJudge::judgeValues(ChannelFit& fit, const FitAttempt& attempt, const Determination& determination) const {
    const WorstCombination& worst = determination.worst();
    if (determination.isSingular()) {
        refuse(fit, Kind::NOT_DETERMINED, "the points do not determine " + worst.text, worst.remedy);
        return;
    }
    const PictureDeviation picture =
        PictureDeviation::of(*attempt.model, determination.covariance(), attempt.solution.isOutlier);
    const double visible = PictureDeviation::VISIBLE * std::max(m_setup.pixels()[0], m_setup.pixels()[1]);
    // Residuals that are larger than the stated deviations explain make those of the values too small.
    const double factor = fit.hasStatedDeviations ? std::max(fit.residualFactor, 1.0) : 1.0;
    if (picture.pixels * factor > visible) {
        const WorstCombination combination = determination.worstFor(picture.slopes);
        const double shown = picture.pixels * factor;
        warn(fit, Kind::ILL_DETERMINED,
             "the points hardly determine " + combination.text + ": the picture may be off by " +
                 std::to_string(std::lround(std::min(std::ceil(shown), 1e9))) + (shown <= 1 ? " pixel " : " pixels ") +
                 picture.words,
             combination.remedy);
    } else if (determination.isDoubtful()) {
        warn(fit, Kind::ILL_DETERMINED, "the points hardly determine " + worst.text, worst.remedy);
    }
}

void FitJudge::judge(ChannelFit& fit, const FitAttempt& attempt, const Determination& determination) const {
    judgeDirections(fit, attempt);
    if (auto fault = attempt.solution.isSolved ? faultOfValues(fit, m_shape) : std::nullopt) {
        fit.findings.push_back(std::move(*fault));
    }
    judgePoints(fit, attempt);
    if (attempt.solution.isSolved && worstOf(fit) != FitOutcome::UNUSABLE) {
        judgeLens(fit, attempt);
    }
    if (attempt.solution.isSolved && worstOf(fit) != FitOutcome::UNUSABLE) {
        judgeValues(fit, attempt, determination);
    }
}

}  // namespace Veltrani::DisplayFitDetail
