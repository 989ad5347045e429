#include "DisplayFit/detail/ChannelSearch.h"

#include "DisplayFit/detail/LinearStart.h"
#include "DisplayFit/detail/RationalStarts.h"
#include "DisplayFit/detail/ResidualLists.h"
#include "DisplayFit/detail/Rotations.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace Veltrani::DisplayFitDetail {

namespace {

/// Median of the residuals, as a part of the picture, below which the values found lead to the points.
constexpr double CLOSE = 0.005;

/// Of two minima the one with the lower cost is taken, where it is lower by more than this part of it.
constexpr double LOWER = 1e-9;

/// Coefficients of a lens that is no quotient.
constexpr std::size_t PLAIN_COEFFICIENTS = 5;

/// The view of a model that shows a picture.
PictureModel& pictureOf(ChannelModel& model) {
    return static_cast<PictureModel&>(model);
}

FitPoints reversed(const FitPoints& points, std::size_t coordinate) {
    FitPoints copy = points;
    for (Point<double, 2>& picture : copy.picture) {
        picture[coordinate] = 1 - picture[coordinate];
    }
    return copy;
}

}  // namespace

ChannelSearch::ChannelSearch(const ChannelSetup& setup, const FitPoints& points, const DisplayFit::FitOptions& options)
    : m_setup(setup), m_points(points), m_options(options) {}

bool ChannelSearch::fitsPicture(const ChannelModel& model) const {
    return medianMiss(model, m_setup.pixels()) < CLOSE;
}

std::unique_ptr<ChannelModel> ChannelSearch::plainModel(const PictureModel::Held& held) const {
    PictureView view = m_setup.view();
    view.lens = view.lens.withCoefficients(PLAIN_COEFFICIENTS);
    return std::make_unique<PictureModel>(m_points, view, held);
}

LensCheck ChannelSearch::check(const ChannelModel& model, const Solution& solution) const {
    return m_setup.isPicture() && solution.isSolved
               ? LensCheck::of(static_cast<const PictureModel&>(model), m_setup.values(), solution.isOutlier)
               : LensCheck{};
}

bool ChannelSearch::isUsable(const PictureModel& model, const Solution& solution) const {
    return solution.isSolved && check(model, solution).isUsable(model);
}

Solution ChannelSearch::solve(ChannelModel& model) const {
    Solution solution = solveFromHere(model);
    // Where rounding alone is left there is no lower minimum.
    if (solution.isSolved && m_setup.isPicture() && isRational(pictureOf(model)) &&
        (solution.deviation > model.leastDeviation() || !isUsable(pictureOf(model), solution))) {
        solveElsewhere(pictureOf(model), solution);
    }
    return solution;
}

void ChannelSearch::solveElsewhere(PictureModel& model, Solution& best) const {
    solveFrom(rationalStarts(model.view(), m_points), model, best);
    if (!isUsable(model, best)) {
        // What lies around a lens that folds may fold as well.
        solveFrom(rationalStarts(plainView(model), m_points), model, best);
    }
}

void ChannelSearch::solveFrom(const std::vector<PictureView>& starts, PictureModel& model, Solution& best) const {
    const ChannelSolver solver(m_options);
    bool isBestUsable = isUsable(model, best);
    for (const PictureView& start : starts) {
        PictureModel other(m_points, m_setup.view(), model.held());
        other.setView(start);
        Solution solution = solver.solve(other);
        solution.steps += best.steps;
        best.steps = solution.steps;
        const bool isOtherUsable = isUsable(other, solution);
        // By more than rounding, and not by leaving out more points.
        const bool isLower = solution.inliers >= best.inliers && solution.cost < best.cost * (1 - LOWER);
        if (solution.isSolved && isOtherUsable >= isBestUsable && (isLower || isOtherUsable != isBestUsable)) {
            model.setView(other.view());
            best = std::move(solution);
            isBestUsable = isOtherUsable;
        }
    }
}

PictureView ChannelSearch::plainView(const PictureModel& model) const {
    const std::unique_ptr<ChannelModel> plain = plainModel(model.held());
    PictureView found = model.view();
    if (solveFromHere(*plain).isSolved) {
        found = pictureOf(*plain).view();
    }
    found.lens = found.lens.withCoefficients(PLAIN_COEFFICIENTS).withCoefficients(LensFormula::MOST_COEFFICIENTS);
    return found;
}

Solution ChannelSearch::solveFromHere(ChannelModel& model) const {
    const ChannelSolver solver(m_options);
    Solution solution = solver.solve(model);
    if (!m_setup.isPicture() || (solution.isSolved && fitsPicture(model))) {
        return solution;
    }
    PictureModel& picture = pictureOf(model);
    const auto start = linearStart(m_points, m_setup.view(), picture.held());
    if (!start || start->isMirrored) {
        return solution;
    }
    PictureView view = start->view;
    view.lens = view.lens.withCoefficients(picture.view().lens.coefficients());
    PictureModel other(m_points, view, picture.held());
    Solution second = solver.solve(other);
    second.steps += solution.steps;
    if (second.isSolved && !(solution.isSolved && solution.typicalSize <= second.typicalSize)) {
        picture.setView(other.view());
        return second;
    }
    return solution;
}

bool ChannelSearch::fitsReversed(std::size_t coordinate, const PictureModel::Held& held) const {
    const FitPoints points = reversed(m_points, coordinate);
    const auto start = linearStart(points, m_setup.view(), held);
    if (!start || start->isMirrored) {
        return false;
    }
    PictureModel model(points, m_setup.view(), held);
    model.setView(start->view);
    if (!ChannelSolver(m_options).solve(model).isSolved || !fitsPicture(model)) {
        return false;
    }
    // Upside down the other coordinate is reversed.
    const Matrix<double, 3> turn = transpose(m_setup.view().world_from_projector) * model.view().world_from_projector;
    return std::abs(rollOf(turn)) <= std::numbers::pi / 2;
}

}  // namespace Veltrani::DisplayFitDetail
