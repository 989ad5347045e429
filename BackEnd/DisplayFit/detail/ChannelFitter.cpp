#include "DisplayFit/detail/ChannelFitter.h"

#include "DisplayFit/detail/Determination.h"
#include "DisplayFit/detail/LinearStart.h"
#include "DisplayFit/detail/PointChecks.h"
#include "DisplayFit/detail/PointShape.h"
#include "DisplayFit/detail/RationalStarts.h"
#include "DisplayFit/detail/ResidualLists.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::ChannelValues;
using DisplayFit::FitFinding;
using DisplayFit::FitOptions;
using DisplayFit::FitOutcome;
using DisplayFit::FittedValue;
using DisplayFit::SolvedGroups;
using Vector = Point<double, 3>;

/// Medians of the residuals, as parts of the picture: below the first the values found lead to the points; above the
/// second they do not.
constexpr double CLOSE = 0.005;
constexpr double FAR = 0.02;

/// Values that show every point within this part of the picture of where others do are the same values: rounding, and
/// where a solver ends, moves them further.
constexpr double SAME = 1e-10;

/// Of two minima the one with the lower cost is taken, where it is lower by more than this part of it.
constexpr double LOWER = 1e-9;

/// Stated deviations explain residuals up to this many times theirs.
constexpr double EXPLAINED = 3;

/// A picture that is turned further than this about its axis hangs upside down.
constexpr double UPSIDE_DOWN = 2 * std::numbers::pi / 3;

bool isSubset(const SolvedGroups& groups, const SolvedGroups& of) {
    const auto within = [](bool one, bool all) { return !one || all; };
    return within(groups.position, of.position) && within(groups.orientation, of.orientation) &&
           within(groups.frustum, of.frustum) && within(groups.distortion, of.distortion) &&
           within(groups.area, of.area);
}

void refuse(ChannelFit& fit, FitFinding::Kind kind, std::string text, std::string remedy) {
    fit.findings.push_back({kind, FitOutcome::UNUSABLE, std::move(text), std::move(remedy)});
}

void warn(ChannelFit& fit, FitFinding::Kind kind, std::string text, std::string remedy) {
    fit.findings.push_back({kind, FitOutcome::DOUBTFUL, std::move(text), std::move(remedy)});
}

/// Returns whether there is one.
bool addFault(ChannelFit& fit, std::optional<FitFinding> fault) {
    if (fault) {
        fit.findings.push_back(std::move(*fault));
    }
    return fault.has_value();
}

FitOutcome worstOf(const ChannelFit& fit) {
    FitOutcome worst = FitOutcome::GOOD;
    for (const FitFinding& finding : fit.findings) {
        worst = std::max(worst, finding.outcome);
    }
    return worst;
}

/// The view of a model that shows a picture.
PictureModel& pictureOf(ChannelModel& model) {
    return static_cast<PictureModel&>(model);
}

/// How many points that took part lie where the lens folds.
std::size_t pointsBeyondFold(const ChannelFit& fit, const ChannelModel& model) {
    const auto& picture = static_cast<const PictureModel&>(model);
    std::size_t beyond = 0;
    for (std::size_t i = 0; i < fit.residuals.size(); ++i) {
        beyond += static_cast<std::size_t>(!fit.residuals[i].isOutlier && !picture.isShortOfFold(i));
    }
    return beyond;
}

FitPoints reversed(const FitPoints& points, std::size_t coordinate) {
    FitPoints copy = points;
    for (Point<double, 2>& picture : copy.picture) {
        picture[coordinate] = 1 - picture[coordinate];
    }
    return copy;
}

}  // namespace

ChannelFitter::ChannelFitter(const ChannelSetup& setup, const FitPoints& points, const FitOptions& options,
                             const std::string& unit)
    : m_setup(setup), m_points(points), m_options(options), m_unit(unit) {}

bool ChannelFitter::choose(ChannelFit& fit, PictureModel::Held& held) const {
    const SolvedGroups& has = m_setup.groups();
    fit.holdsSquarePixels = fit.holdsHorizontalShift = false;
    held.solved = m_options.solved.value_or(has);
    held.squarePixels = m_options.holdsSquarePixels && held.solved.frustum;
    const bool isShiftATurn = m_setup.shiftIsATurn() && held.solved.orientation;
    held.horizontalShift = (m_options.holdsHorizontalShift || isShiftATurn) && held.solved.frustum;
    fit.solved = held.solved;
    if (addFault(fit, m_setup.refusal())) {
        return false;
    }
    if (!isSubset(held.solved, has) || held.solved == SolvedGroups{}) {
        refuse(fit, Kind::KIND_NOT_SOLVED, "the channel does not have the values that are to be solved",
               std::string("solve ") + (has.area         ? "its area"
                                        : has.distortion ? "position, orientation, frustum or distortion"
                                        : has.position   ? "position, orientation or frustum"
                                                         : "orientation or frustum"));
        return false;
    }
    if ((m_options.holdsSquarePixels || m_options.holdsHorizontalShift) && !held.solved.frustum) {
        refuse(fit, Kind::KIND_NOT_SOLVED, "numbers of the frustum are to be held, and no frustum is solved",
               "leave out what is to be held");
        return false;
    }
    return true;
}

bool ChannelFitter::holdForPlane(ChannelFit& fit, PictureModel::Held& held) const {
    const SolvedGroups& solved = held.solved;
    if (!solved.position || !solved.orientation || !solved.frustum || (held.squarePixels && held.horizontalShift) ||
        !PointShape::of(m_points.world).isFlat(typicalPointDeviation(m_points))) {
        return true;
    }
    const std::string cause =
        "all points lie in one plane, from which position, orientation and frustum cannot be "
        "told apart";
    if (m_options.onPlane == FitOptions::OnPlane::REFUSE) {
        refuse(fit, Kind::POINTS_ON_PLANE, cause,
               "add points at another depth, or hold two numbers: square pixels and the horizontal shift");
        return false;
    }
    held.squarePixels = held.horizontalShift = true;
    fit.findings.push_back({Kind::CHANGED_FOR_PLANE, FitOutcome::GOOD,
                            cause + ": pixels were made square and the configured horizontal shift was held",
                            "add points at another depth where these are not known"});
    return true;
}

bool ChannelFitter::fitsPicture(const ChannelModel& model, double share) const {
    return medianMiss(model, m_setup.pixels()) < share;
}

Solution ChannelFitter::solve(ChannelModel& model) const {
    Solution solution = solveFromHere(model);
    // Where rounding alone is left there is no lower minimum.
    if (solution.isSolved && m_setup.isPicture() && isRational(pictureOf(model)) &&
        solution.deviation > model.leastDeviation()) {
        solveElsewhere(pictureOf(model), solution);
    }
    return solution;
}

void ChannelFitter::solveElsewhere(PictureModel& model, Solution& best) const {
    const ChannelSolver solver(m_options);
    for (const PictureView& start : rationalStarts(model.view(), m_points)) {
        PictureModel other(m_points, m_setup.view(), model.held());
        other.setView(start);
        Solution solution = solver.solve(other);
        solution.steps += best.steps;
        best.steps = solution.steps;
        // By more than rounding, and not by leaving out more points.
        if (solution.isSolved && solution.inliers >= best.inliers && solution.cost < best.cost * (1 - LOWER)) {
            model.setView(other.view());
            best = std::move(solution);
        }
    }
}

Solution ChannelFitter::solveFromHere(ChannelModel& model) const {
    const ChannelSolver solver(m_options);
    Solution solution = solver.solve(model);
    if (!m_setup.isPicture() || (solution.isSolved && fitsPicture(model, CLOSE))) {
        return solution;
    }
    PictureModel& picture = pictureOf(model);
    const auto start = linearStart(m_points, m_setup.view(), picture.held());
    if (!start || start->isMirrored) {
        return solution;
    }
    PictureModel other(m_points, m_setup.view(), picture.held());
    other.setView(start->view);
    Solution second = solver.solve(other);
    second.steps += solution.steps;
    if (second.isSolved && !(solution.isSolved && solution.typicalSize <= second.typicalSize)) {
        picture.setView(other.view());
        return second;
    }
    return solution;
}

bool ChannelFitter::fitsReversed(std::size_t coordinate, const PictureModel::Held& held) const {
    const FitPoints points = reversed(m_points, coordinate);
    const auto start = linearStart(points, m_setup.view(), held);
    if (!start || start->isMirrored) {
        return false;
    }
    PictureModel model(points, m_setup.view(), held);
    model.setView(start->view);
    return ChannelSolver(m_options).solve(model).isSolved && fitsPicture(model, CLOSE);
}

void ChannelFitter::judgeDirections(ChannelFit& fit, const ChannelModel& model) const {
    const Point<int, 2> isReversed = model.isReversed();
    const bool fits = fit.isSolved && medianMiss(fit, m_setup.pixels()) < FAR;
    bool isU = fits && isReversed[0] != 0;
    bool isV = fits && isReversed[1] != 0;
    // A lens that folds can bring the mirror image of a picture near to its points.
    const bool isFolded = fit.isSolved && m_setup.isPicture() && pointsBeyondFold(fit, model) > 0;
    const bool isSuspect = m_setup.isPicture() && !isU && !isV && (!fits || isFolded);
    if (isSuspect) {
        const PictureModel::Held held{fit.solved, fit.holdsSquarePixels, fit.holdsHorizontalShift};
        isU = fitsReversed(0, held);
        isV = !isU && fitsReversed(1, held);
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
        const auto turned = transpose(was) * is;
        if (std::abs(std::atan2(turned(0, 2), turned(2, 2))) > UPSIDE_DOWN) {
            warn(fit, Kind::V_REVERSED, "the picture is upside down against the configuration",
                 "check whether the projector hangs; else give u and v from the bottom left corner of its picture");
        }
    }
}

void ChannelFitter::judgePoints(ChannelFit& fit, const ChannelModel& model, const Solution& solution) const {
    const bool fits =
        solution.isSolved && 2 * solution.inliers > m_points.size() && medianMiss(fit, m_setup.pixels()) < FAR;
    if (!fits && worstOf(fit) != FitOutcome::UNUSABLE) {
        refuse(fit, Kind::NOT_FITTING,
               solution.isSolved ? "no values explain the points: most of them lie far from where the best ones lead"
                                 : "no values explain the points",
               "check the channel, the picture coordinates and the frame of the points");
    }
    if (fits && fit.outliers > 0) {
        warn(fit, Kind::OUTLIERS,
             std::to_string(fit.outliers) + (fit.outliers == 1 ? " point deviates" : " points deviate") +
                 " by more than " + std::to_string(std::lround(m_options.rejection)) +
                 " standard deviations and took no part",
             "measure again there, or check what was taken for the light of the point");
    }
    if (fits && fit.hasStatedDeviations && fit.residualFactor > EXPLAINED) {
        warn(fit, Kind::DEVIATIONS_TOO_SMALL, "the residuals are larger than the stated deviations explain",
             "check the deviations and their unit; the kind of display or of lens may not fit the projector either");
    }
    const std::size_t beyond = fits && m_setup.isPicture() ? pointsBeyondFold(fit, model) : 0;
    if (beyond > 0) {
        warn(fit, Kind::BEYOND_FOLD, std::to_string(beyond) + " points lie where the fitted lens folds",
             "solve fewer coefficients, or add points towards the corners of the picture");
    }
}

void ChannelFitter::judge(ChannelFit& fit, const ChannelModel& model, const Solution& solution,
                          const Determination& determination) const {
    judgeDirections(fit, model);
    addFault(fit, solution.isSolved ? faultOfValues(fit, m_points) : std::nullopt);
    judgePoints(fit, model, solution);
    if (!solution.isSolved || worstOf(fit) == FitOutcome::UNUSABLE) {
        return;
    }
    const auto& worst = determination.worst();
    if (determination.isSingular()) {
        refuse(fit, Kind::NOT_DETERMINED, "the points do not determine " + worst.text, worst.remedy);
    } else if (determination.isDoubtful()) {
        warn(fit, Kind::ILL_DETERMINED, "the points hardly determine " + worst.text, worst.remedy);
    }
}

void ChannelFitter::listValues(ChannelFit& fit, const ChannelModel& model, const PictureModel::Held& held) const {
    const std::size_t count = model.unknowns().size();
    fit.values = m_setup.list(fit.before);
    const std::vector<FittedValue> after = m_setup.list(fit.after);
    const std::vector<bool> solved = m_setup.solved(held);
    std::vector<std::vector<double>> byUnknown(after.size(), std::vector<double>(count));
    for (std::size_t k = 0; k < count && !fit.covariance.empty(); ++k) {
        // As far as the unknown deviates, or less: the values are smooth there.
        const double width = 1e-3 * std::sqrt(fit.covariance[k * count + k]) + 1e-9;
        std::vector<double> step(count, 0.0);
        const auto listAt = [&](double by) {
            step[k] = by;
            ChannelValues values = fit.after;
            model.write(step.data(), values);
            return m_setup.list(values);
        };
        const auto ahead = listAt(width);
        const auto behind = listAt(-width);
        for (std::size_t i = 0; i < after.size(); ++i) {
            byUnknown[i][k] = (ahead[i].after - behind[i].after) / (2 * width);
        }
    }
    for (std::size_t i = 0; i < after.size(); ++i) {
        fit.values[i].after = after[i].after;
        double variance = 0;
        for (std::size_t a = 0; a < count && !fit.covariance.empty(); ++a) {
            for (std::size_t b = 0; b < count; ++b) {
                variance += byUnknown[i][a] * fit.covariance[a * count + b] * byUnknown[i][b];
            }
        }
        if (solved[i] && !fit.covariance.empty()) {
            fit.values[i].deviation = std::sqrt(std::max(variance, 0.0));
        }
    }
}

void ChannelFitter::noteSolution(ChannelFit& fit, ChannelModel& model, const Solution& solution,
                                 double deviation) const {
    const std::vector<double> base(model.unknowns().size(), 0.0);
    model.write(base.data(), fit.after);
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        fit.residuals[i].isOutlier = solution.isOutlier[i];
    }
    fit.outliers = m_points.size() - solution.inliers;
    fit.degreesOfFreedom = 2 * solution.inliers - std::min(2 * solution.inliers, model.unknowns().size());
    fit.residualFactor = solution.deviation;
    noteAfter(model, fit);
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        fit.residuals[i].size = deviation > 0 ? solution.sizes[i] / deviation : 0.0;
    }
}

bool ChannelFitter::isWhereItWas(const ChannelFit& fit) const {
    const double most = SAME * std::max(m_setup.pixels()[0], m_setup.pixels()[1]);
    return std::all_of(fit.residuals.begin(), fit.residuals.end(), [most](const auto& residual) {
        return residual.isOutlier || norm(residual.pixelsAfter - residual.pixelsBefore) <= most;
    });
}

void ChannelFitter::fit(ChannelFit& fit) const {
    fit.before = fit.after = m_setup.values();
    fit.values = m_setup.list(fit.before);
    fit.hasStatedDeviations = m_points.hasDeviations();
    PictureModel::Held held;
    if (!choose(fit, held)) {
        return;
    }
    std::unique_ptr<ChannelModel> model = m_setup.make(m_points, held);
    noteBefore(*model, fit);
    if (addFault(fit, faultOfPlaces(m_points, 0)) || addFault(fit, faultOfUnit(*model, m_unit)) ||
        !holdForPlane(fit, held)) {
        return;
    }
    fit.holdsSquarePixels = held.squarePixels;
    fit.holdsHorizontalShift = held.horizontalShift;
    model = m_setup.make(m_points, held);
    if (addFault(fit, faultOfPlaces(m_points, model->unknowns().size()))) {
        return;
    }
    const Solution solution = solve(*model);
    const double deviation = fit.hasStatedDeviations ? 1.0 : solution.deviation;
    fit.isSolved = solution.isSolved;
    fit.iterations = solution.steps;
    if (solution.isSolved) {
        noteSolution(fit, *model, solution, deviation);
        // What was fitted and saved stays to the bit when it is fitted again.
        fit.after = isWhereItWas(fit) ? fit.before : fit.after;
    }
    const Determination determination(model->unknowns(), solution, deviation);
    fit.worst = determination.worst();
    fit.covariance = determination.covariance();
    judge(fit, *model, solution, determination);
    listValues(fit, *model, held);
    fit.outcome = worstOf(fit);
}

}  // namespace Veltrani::DisplayFitDetail
