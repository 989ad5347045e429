#include "DisplayFit/detail/ChannelFitter.h"

#include "DisplayFit/detail/FitJudge.h"
#include "DisplayFit/detail/PictureDeviation.h"
#include "DisplayFit/detail/PointChecks.h"
#include "DisplayFit/detail/RationalStarts.h"
#include "DisplayFit/detail/ResidualLists.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::ChannelValues;
using DisplayFit::FitFinding;
using DisplayFit::FitOptions;
using DisplayFit::FitOutcome;
using DisplayFit::FittedValue;
using DisplayFit::SolvedGroups;

/// Values that show every point within this part of the picture of where others do are the same values: rounding, and
/// where a solver ends, moves them further.
constexpr double SAME = 1e-10;

/// So are values that show every point within this part of the residuals of where others do: some lenses have
/// combinations that no point determines, and there a solver ends where it comes from.
constexpr double SAME_BESIDE_NOISE = 1e-4;

/// Chi-square of two degrees of freedom is larger once in a thousand times: by so much two numbers that are held may
/// raise the squares, in variances, before they are known to be wrong.
constexpr double RAISED = 13.8;

/// A lens that is no quotient explains the points nearly as well where its residuals are larger by no more than this
/// factor.
constexpr double PLAIN_ENOUGH = 1.1;

/// Where no deviations are stated, a position far away lessens the residuals although it is wrong: depth that is noise
/// shows less from there. By up to this factor that is no reason to believe in it.
constexpr double LESSENED = 2;

bool isSubset(const SolvedGroups& groups, const SolvedGroups& of) {
    const auto within = [](bool one, bool all) { return !one || all; };
    return within(groups.position, of.position) && within(groups.orientation, of.orientation) &&
           within(groups.frustum, of.frustum) && within(groups.distortion, of.distortion) &&
           within(groups.area, of.area);
}

}  // namespace

ChannelFitter::ChannelFitter(const ChannelSetup& setup, const FitPoints& points, const FitOptions& options,
                             const std::string& unit)
    : m_setup(setup),
      m_points(points),
      m_options(options),
      m_unit(unit),
      m_search(setup, points, options),
      m_shape(PointShape::of(points.world)) {}

bool ChannelFitter::choose(ChannelFit& fit, PictureModel::Held& held) const {
    const SolvedGroups& has = m_setup.groups();
    fit.holdsSquarePixels = fit.holdsHorizontalShift = false;
    held.solved = m_options.solved.value_or(has);
    held.squarePixels = m_options.holdsSquarePixels && held.solved.frustum;
    const bool isShiftATurn = m_setup.shiftIsATurn() && held.solved.orientation;
    held.horizontalShift = (m_options.holdsHorizontalShift || isShiftATurn) && held.solved.frustum;
    fit.solved = held.solved;
    if (m_setup.refusal()) {
        fit.findings.push_back(*m_setup.refusal());
        return false;
    }
    if (!isSubset(held.solved, has) || held.solved == SolvedGroups{}) {
        FitJudge::refuse(fit, Kind::KIND_NOT_SOLVED, "the channel does not have the values that are to be solved",
                         std::string("solve ") + (has.area         ? "its area"
                                                  : has.distortion ? "position, orientation, frustum or distortion"
                                                  : has.position   ? "position, orientation or frustum"
                                                                   : "orientation or frustum"));
        return false;
    }
    if ((m_options.holdsSquarePixels || m_options.holdsHorizontalShift) && !held.solved.frustum) {
        FitJudge::refuse(fit, Kind::KIND_NOT_SOLVED, "numbers of the frustum are to be held, and no frustum is solved",
                         "leave out what is to be held");
        return false;
    }
    return true;
}

bool ChannelFitter::needsDepth(const PictureModel::Held& held) {
    const SolvedGroups& solved = held.solved;
    return solved.position && solved.orientation && solved.frustum && !(held.squarePixels && held.horizontalShift);
}

FitAttempt ChannelFitter::attempt(const PictureModel::Held& held) const {
    FitAttempt made = attempt(held, m_setup.make(m_points, held));
    if (!made.solution.isSolved || !m_setup.isPicture()) {
        return made;
    }
    const auto& picture = static_cast<const PictureModel&>(*made.model);
    if (isRational(picture) && !made.lens.isUsable(picture)) {
        // Noise that is explained by a pole of the quotient is no property of the lens.
        FitAttempt plain = attempt(held, m_search.plainModel(held));
        if (plain.solution.isSolved && plain.lens.isUsable(static_cast<const PictureModel&>(*plain.model)) &&
            plain.solution.inliers + PointShape::few(m_points.size()) >= made.solution.inliers &&
            plain.solution.deviation <= PLAIN_ENOUGH * made.solution.deviation) {
            plain.isPlainLens = true;
            return plain;
        }
    }
    return made;
}

FitAttempt ChannelFitter::attempt(const PictureModel::Held& held, std::unique_ptr<ChannelModel> model) const {
    FitAttempt made;
    made.held = held;
    made.model = std::move(model);
    made.solution = m_search.solve(*made.model);
    made.lens = m_search.check(*made.model, made.solution);
    made.deviation = m_points.hasDeviations() ? 1.0 : made.solution.deviation;
    return made;
}

Determination ChannelFitter::determinationOf(const FitAttempt& made, const std::vector<bool>& stray) const {
    // What a few points show alone may as well be their mistake.
    const std::vector<bool>& isOutlier = made.solution.isOutlier;
    std::size_t strays = 0;
    std::vector<bool> leftOut = isOutlier;
    for (std::size_t i = 0; i < isOutlier.size(); ++i) {
        strays += static_cast<std::size_t>(stray[i] && !isOutlier[i]);
        leftOut[i] = isOutlier[i] || stray[i];
    }
    const bool areFew = made.solution.isSolved && strays > 0 && strays <= PointShape::few(stray.size());
    return {made.model->unknowns(), areFew ? ChannelSolver::triangleOf(*made.model, leftOut) : made.solution.triangle,
            made.deviation};
}

bool ChannelFitter::showsDepth(const FitAttempt& made, const std::vector<bool>& stray) const {
    const Determination determination = determinationOf(made, stray);
    if (!made.solution.isSolved || determination.isSingular()) {
        return false;
    }
    const double visible = PictureDeviation::VISIBLE * std::max(m_setup.pixels()[0], m_setup.pixels()[1]);
    return PictureDeviation::of(*made.model, determination.covariance(), made.solution.isOutlier).pixels <= visible;
}

bool ChannelFitter::explainsAsWell(const FitAttempt& one, const FitAttempt& other) const {
    const Solution& a = one.solution;
    const Solution& b = other.solution;
    if (!a.isSolved || !b.isSolved) {
        return a.isSolved;
    }
    const double variance = b.deviation * b.deviation;
    const double raised = m_points.hasDeviations()
                              ? RAISED * std::max(variance, 1.0) / (2 * static_cast<double>(a.inliers))
                              : (LESSENED * LESSENED - 1) * variance;
    return a.inliers + PointShape::few(m_points.size()) >= b.inliers && a.deviation * a.deviation <= variance + raised;
}

std::optional<FitAttempt> ChannelFitter::solve(ChannelFit& fit, const PictureModel::Held& held) const {
    if (!needsDepth(held)) {
        return attempt(held);
    }
    const double deviation = typicalPointDeviation(m_points);
    PictureModel::Held both = held;
    both.squarePixels = both.horizontalShift = true;
    std::string cause = "all points lie in one plane";
    std::optional<FitAttempt> made;
    if (!m_shape.isFlat(deviation)) {
        made = attempt(held);
        if (!m_shape.isNearlyFlat() || showsDepth(*made, m_shape.besidePlane(deviation))) {
            return made;
        }
        FitAttempt other = attempt(both);
        if (!explainsAsWell(other, *made)) {
            return made;
        }
        cause = "the points show too little depth beyond their noise";
        made = std::move(other);
    }
    cause += ", from which position, orientation and frustum cannot be told apart";
    if (m_options.onPlane == FitOptions::OnPlane::REFUSE) {
        FitJudge::refuse(fit, Kind::POINTS_ON_PLANE, cause,
                         "add points at another depth, or hold two numbers: square pixels and the horizontal shift");
        return std::nullopt;
    }
    fit.findings.push_back({Kind::CHANGED_FOR_PLANE, FitOutcome::GOOD,
                            cause + ": pixels were made square and the configured horizontal shift was held",
                            "add points at another depth where these are not known"});
    return made ? std::move(*made) : attempt(both);
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
        // Coefficients that were set to zero depend on no unknown.
        const bool isOpen = std::any_of(byUnknown[i].begin(), byUnknown[i].end(), [](double by) { return by != 0; });
        if (solved[i] && isOpen) {
            fit.values[i].deviation = std::sqrt(std::max(variance, 0.0));
        }
    }
}

void ChannelFitter::noteSolution(ChannelFit& fit, const FitAttempt& made) const {
    const ChannelModel& model = *made.model;
    const Solution& solution = made.solution;
    const double deviation = made.deviation;
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
    const double most =
        std::max(SAME * std::max(m_setup.pixels()[0], m_setup.pixels()[1]), SAME_BESIDE_NOISE * fit.pixelsAfter.rms);
    return std::all_of(fit.residuals.begin(), fit.residuals.end(), [most](const auto& residual) {
        return residual.isOutlier || norm(residual.pixelsAfter - residual.pixelsBefore) <= most;
    });
}

bool ChannelFitter::isRefused(ChannelFit& fit, PictureModel::Held& held) const {
    if (!choose(fit, held)) {
        return true;
    }
    const std::unique_ptr<ChannelModel> model = m_setup.make(m_points, held);
    noteBefore(*model, fit);
    PictureModel::Held least = held;
    if (needsDepth(held) && m_shape.isFlat(typicalPointDeviation(m_points))) {
        least.squarePixels = least.horizontalShift = true;
    }
    auto fault = faultOfPlaces(m_points, m_shape, m_setup.make(m_points, least)->unknowns().size());
    if (!fault) {
        fault = faultOfUnit(*model, m_unit);
    }
    if (fault) {
        fit.findings.push_back(std::move(*fault));
    }
    return fault.has_value();
}

void ChannelFitter::fit(ChannelFit& fit) const {
    fit.before = fit.after = m_setup.values();
    fit.values = m_setup.list(fit.before);
    fit.hasStatedDeviations = m_points.hasDeviations();
    PictureModel::Held held;
    if (isRefused(fit, held)) {
        return;
    }
    const std::optional<FitAttempt> made = solve(fit, held);
    if (!made) {
        return;
    }
    fit.holdsSquarePixels = made->held.squarePixels;
    fit.holdsHorizontalShift = made->held.horizontalShift;
    fit.isSolved = made->solution.isSolved;
    fit.iterations = made->solution.steps;
    if (fit.isSolved) {
        noteSolution(fit, *made);
        // What was fitted and saved stays to the bit when it is fitted again.
        fit.after = isWhereItWas(fit) ? fit.before : fit.after;
    }
    const std::vector<bool> all(m_points.size(), false);
    const Determination determination = determinationOf(*made, all);
    fit.worst = determination.worst();
    fit.covariance = determination.covariance();
    const FitJudge judge(m_setup, m_points, m_shape, m_options, m_search);
    if (needsDepth(made->held)) {
        judge.judge(fit, *made, determinationOf(*made, m_shape.besidePlane(typicalPointDeviation(m_points))));
    } else {
        judge.judge(fit, *made, determination);
    }
    listValues(fit, *made->model, made->held);
    fit.outcome = FitJudge::worstOf(fit);
}

}  // namespace Veltrani::DisplayFitDetail
