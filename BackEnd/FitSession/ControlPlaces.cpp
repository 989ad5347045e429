#include "FitSession/ControlPlaces.h"

#include <Eigen/Geometry>
#include <Eigen/SVD>

#include <algorithm>
#include <cmath>

namespace Veltrani::FitSession::ControlPlaces {

namespace {

constexpr std::size_t MOST_LINES = 6;

}  // namespace

Places of(const std::vector<ControlPoint>& controls, Point<double, 3> ControlPoint::*place) {
    Places places(3, static_cast<Eigen::Index>(controls.size()));
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const Point<double, 3>& point = controls[i].*place;
        places.col(static_cast<Eigen::Index>(i)) << point[0], point[1], point[2];
    }
    return places;
}

Eigen::Vector3d spreadOf(const Places& places) {
    const Places centred = places.colwise() - places.rowwise().mean();
    const Eigen::VectorXd extents = Eigen::JacobiSVD<Eigen::MatrixXd>(centred.transpose()).singularValues();
    Eigen::Vector3d spread = Eigen::Vector3d::Zero();
    spread.head(extents.size()) = extents / std::sqrt(static_cast<double>(places.cols()));
    return spread;
}

bool formTriangle(const Places& places) {
    const Eigen::Vector3d spread = spreadOf(places);
    return spread[0] > 0 && spread[1] >= FrameRegistration::THINNEST_SPREAD * spread[0];
}

double rmsOf(const Places& deviations) {
    return std::sqrt(deviations.squaredNorm() / static_cast<double>(deviations.cols()));
}

Places deviationsAfter(const Eigen::Matrix4d& moved, const Places& measured, const Places& known) {
    return (moved.topLeftCorner<3, 3>() * measured).colwise() + moved.topRightCorner<3, 1>() - known;
}

Places deviationsOf(const Places& measured, const Places& known, bool mayScale) {
    return deviationsAfter(Eigen::umeyama(measured, known, mayScale), measured, known);
}

std::string linesText(const std::vector<ControlPoint>& controls) {
    std::string text = controls.size() == 1 ? "line " : "lines ";
    const std::size_t named = std::min(controls.size(), MOST_LINES);
    for (std::size_t i = 0; i < named; ++i) {
        text += (i == 0 ? "" : i + 1 == controls.size() ? " and " : ", ") + std::to_string(controls[i].line);
    }
    return text + (named < controls.size() ? " and others" : "");
}

}  // namespace Veltrani::FitSession::ControlPlaces
