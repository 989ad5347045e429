#include "DisplayFit/detail/LensCheck.h"

#include "Common/VeltraniException.h"
#include "DisplayFit/detail/RationalStarts.h"
#include "KelvoControl/ProjectionModel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>

namespace Veltrani::DisplayFitDetail {

namespace {

/// Places of the picture that are examined, along its width and its height, edges included.
constexpr int COLUMNS = 17;
constexpr int ROWS = 11;

/// How near a ray leads back to its place, as a part of the picture.
constexpr double SAME_PLACE = 1e-8;

/// Where the terms of a line of a quotient are more than this beside its 1, they alone are what the points show,
/// and could be scaled against the focal length.
constexpr double BESIDE_ONE = 4;
/// Points that show the 1, at least.
constexpr std::size_t FEWEST_ON_AXIS = 3;

/// The model of the values; empty where there is none of such numbers.
std::shared_ptr<ProjectionModel> modelOf(const DisplayFit::ChannelValues& values) {
    Viewport viewport;
    viewport.position = values.position;
    viewport.orientation = values.orientation;
    try {
        return values.lens->model(viewport);
    } catch (const VeltraniException&) {
        return nullptr;
    }
}

/// Distance of a place from the axis, in the lens's own measure.
double fromAxis(const PictureView& view, const Point<double, 2>& place) {
    return norm(
        Point<double, 2>{(place[0] - view.shift[0]) / view.factor[0], (place[1] - view.shift[1]) / view.factor[1]});
}

bool isShown(const ProjectionModel& lens, const Point<double, 2>& place) {
    Point<double, 3> direction;
    Point<double, 2> back;
    return lens.unproject(place, direction) && lens.projectNormalised(lens.viewport().position + direction, back) &&
           norm(back - place) <= SAME_PLACE;
}

/// The larger sum of the terms beside 1, without their signs, above and below the line of a quotient.
double termsOf(const LensFormula& lens, double square) {
    const auto sum = [&lens, square](std::size_t first, std::size_t second, std::size_t third) {
        const auto size = [&lens](std::size_t i) { return std::abs(lens.coefficient(i)); };
        return square * (size(first) + square * (size(second) + square * size(third)));
    };
    return std::max(sum(0, 1, 4), sum(5, 6, 7));
}

/// Tests whether too few of the points show the 1 beside the terms of the quotient.
bool isOpenOnAxis(const PictureModel& model, const std::vector<bool>& isLeftOut) {
    const FitPoints& points = model.points();
    std::size_t near = 0;
    for (std::size_t i = 0; i < points.size() && near < FEWEST_ON_AXIS; ++i) {
        points.pulseAt(i);
        const double square = squareOfTangent(model.view(), points.world[i]);
        near += static_cast<std::size_t>(!isLeftOut[i] && termsOf(model.view().lens, square) < BESIDE_ONE);
    }
    return near < FEWEST_ON_AXIS;
}

}  // namespace

bool LensCheck::isUsable(const PictureModel& model) const {
    const bool mayEnd = model.view().lens.kind() == LensFormula::Kind::FISHEYE;
    return unmapped == 0 && !isOpenOnAxis &&
           !(model.held().solved.distortion && (mayEnd ? foldsAmongPoints : foldsInPicture));
}

LensCheck LensCheck::of(const PictureModel& model, const DisplayFit::ChannelValues& given,
                        const std::vector<bool>& isLeftOut) {
    LensCheck check;
    if (!given.lens) {
        return check;
    }
    DisplayFit::ChannelValues values = given;
    model.write(std::vector<double>(model.unknowns().size(), 0.0).data(), values);
    const FitPoints& points = model.points();
    const std::shared_ptr<ProjectionModel> lens = modelOf(values);
    if (!lens) {
        return {points.size(), true, true, false};
    }
    check.isOpenOnAxis = isRational(model) && DisplayFitDetail::isOpenOnAxis(model, isLeftOut);
    double farthest = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        points.pulseAt(i);
        Point<double, 2> place;
        if (!isLeftOut[i]) {
            check.unmapped += static_cast<std::size_t>(!lens->projectNormalised(points.world[i], place));
            farthest = std::max(farthest, fromAxis(model.view(), points.picture[i]));
        }
    }
    for (int i = 0; i < COLUMNS * ROWS && model.held().solved.distortion; ++i) {
        const int column = i % COLUMNS;
        const int row = i / COLUMNS;
        const Point<double, 2> place{static_cast<double>(column) / (COLUMNS - 1),
                                     static_cast<double>(row) / (ROWS - 1)};
        if (!isShown(*lens, place)) {
            check.foldsInPicture = true;
            check.foldsAmongPoints = check.foldsAmongPoints || fromAxis(model.view(), place) <= farthest;
        }
    }
    return check;
}

}  // namespace Veltrani::DisplayFitDetail
