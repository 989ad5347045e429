#pragma once

#include "FitSession/FrameRegistration.h"
#include "FitSession/MeasuredPoints.h"

#include <Eigen/Core>

#include <string>
#include <vector>

/// Control points as columns of matrices.
namespace Veltrani::FitSession::ControlPlaces {

using Places = Eigen::Matrix3Xd;  // a column each

[[nodiscard]] Places of(const std::vector<ControlPoint>& controls, Point<double, 3> ControlPoint::*place);

/// The root mean squared extents along the three main axes, the largest first; 0 along those for which there are too
/// few places.
[[nodiscard]] Eigen::Vector3d spreadOf(const Places& places);

/// False where they lie on a line, or at one place: they determine no rotation.
[[nodiscard]] bool formTriangle(const Places& places);

[[nodiscard]] double rmsOf(const Places& deviations);

/// What stays of each between the known places and the measured ones, moved as Umeyama (1991) has it.
[[nodiscard]] Places deviationsAfter(const Eigen::Matrix4d& moved, const Places& measured, const Places& known);
/// After the best movement of all of them.
[[nodiscard]] Places deviationsOf(const Places& measured, const Places& known, bool mayScale);

/// "line 4", "lines 4, 5 and 9"; no more than a few of them by number.
[[nodiscard]] std::string linesText(const std::vector<ControlPoint>& controls);

}  // namespace Veltrani::FitSession::ControlPlaces
