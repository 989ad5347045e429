#include "FitSession/FrameRegistration.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/NumberText.h"

#include <Eigen/Core>
#include <Eigen/Geometry>
#include <Eigen/SVD>

#include <cmath>
#include <map>
#include <utility>

namespace Veltrani::FitSession {

namespace {

using DisplayReport::significantText;
using Places = Eigen::Matrix3Xd;  // a column each
using P3 = Point<double, 3>;

constexpr std::size_t FEWEST_CONTROLS = 3;
/// A mirrored frame, or another scale, is named where it explains all but this part of the deviations.
constexpr double EXPLAINED = 0.2;

std::string describe(const std::string& set) {
    return set.empty() ? "control points" : "control points of set " + inQuotes(set);
}

[[noreturn]] void refuse(const std::string& set, const std::string& what) {
    throw VeltraniException(fromUtf8OrBytes(describe(set) + ": " + what));
}

Places placesOf(const std::vector<ControlPoint>& controls, P3 ControlPoint::*place) {
    Places places(3, static_cast<Eigen::Index>(controls.size()));
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const P3& point = controls[i].*place;
        places.col(static_cast<Eigen::Index>(i)) << point[0], point[1], point[2];
    }
    return places;
}

/// The root mean squared extents along the three main axes, the largest first; 0 along those for which there are too
/// few places.
Eigen::Vector3d spreadOf(const Places& places) {
    const Places centred = places.colwise() - places.rowwise().mean();
    const Eigen::VectorXd extents = Eigen::JacobiSVD<Eigen::MatrixXd>(centred.transpose()).singularValues();
    Eigen::Vector3d spread = Eigen::Vector3d::Zero();
    spread.head(extents.size()) = extents / std::sqrt(static_cast<double>(places.cols()));
    return spread;
}

double rmsOf(const Places& deviations) {
    return std::sqrt(deviations.squaredNorm() / static_cast<double>(deviations.cols()));
}

/// What stays between the known places and the measured ones after the best movement.
double remainder(const Places& measured, const Places& known, bool mayScale) {
    const Eigen::Matrix4d moved = Eigen::umeyama(measured, known, mayScale);
    return rmsOf((moved.topLeftCorner<3, 3>() * measured).colwise() + moved.topRightCorner<3, 1>() - known);
}

void requireSpread(const std::string& set, const Places& places, const char* what) {
    const Eigen::Vector3d spread = spreadOf(places);
    const std::string remedy = "; choose at least 3 that form a wide triangle, 4 or more not on one plane are better";
    if (!(spread[0] > 0)) {
        refuse(set, std::string(what) + " all lie at one place" + remedy);
    }
    if (spread[1] < FrameRegistration::THINNEST_SPREAD * spread[0]) {
        refuse(set, std::string(what) + " lie on a line, about which the frame could turn" + remedy);
    }
}

/// Throws where the deviations are none of measuring, with the cause where one is recognised.
void requireAgreement(const std::string& set, const Places& measured, const Places& known, bool mayScale, double rms) {
    const double extent = spreadOf(known).norm();
    if (rms <= FrameRegistration::LARGEST_RELATIVE_DEVIATION * extent) {
        return;
    }
    const std::string found = "they deviate by " + significantText(rms) + " (RMS) on an extent of " +
                              significantText(extent) + ", in native units: ";
    const double ratio = extent / spreadOf(measured).norm();
    if (!mayScale && remainder(measured, known, true) < EXPLAINED * rms) {
        refuse(set, found + "X, Y, Z are " + significantText(ratio) +
                        " times as far apart as x, y, z; write both in one unit, or choose a similarity");
    }
    Places mirrored = measured;
    mirrored.row(0) *= -1;
    if (remainder(mirrored, known, mayScale) < EXPLAINED * rms) {
        refuse(set, found +
                        "one frame is the mirror image of the other; reverse one axis of the measurement, as of "
                        "instruments that count to the left or downwards");
    }
    refuse(set, found + "check which mark is which, and that X, Y, Z are in the frame and x, y, z in the unit stated");
}

Registration registrationOf(const std::string& set, const Eigen::Matrix4d& moved, bool mayScale) {
    Registration result;
    result.set = set;
    const Eigen::Matrix3d linear = moved.topLeftCorner<3, 3>();
    result.scale = mayScale ? std::cbrt(linear.determinant()) : 1;
    for (std::size_t row = 0; row < 3; ++row) {
        const auto r = static_cast<Eigen::Index>(row);
        for (std::size_t column = 0; column < 3; ++column) {
            result.rotation(row, column) = linear(r, static_cast<Eigen::Index>(column)) / result.scale;
        }
        result.translation[row] = moved(r, 3);
    }
    return result;
}

Matrix<double, 3> moved(const Matrix<double, 3>& covariance, const Registration& frame) {
    Matrix<double, 3> result = frame.rotation * covariance * transpose(frame.rotation);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = row; column < 3; ++column) {
            // Symmetric to the bit, which a product is to rounding only.
            const double mean = (result(row, column) + result(column, row)) / 2 * frame.scale * frame.scale;
            result(row, column) = mean;
            result(column, row) = mean;
        }
    }
    return result;
}

}  // namespace

P3 Registration::displayFromStation(const P3& point) const {
    return rotation * point * scale + translation;
}

Registration FrameRegistration::of(const std::string& set, const std::vector<ControlPoint>& controls,
                                   RegistrationKind kind) {
    if (controls.size() < FEWEST_CONTROLS) {
        refuse(set, "found " + std::to_string(controls.size()) +
                        ", expected at least 3 rows with X, Y, Z; measure marks whose places in the display are known");
    }
    const Places measured = placesOf(controls, &ControlPoint::measured);
    const Places known = placesOf(controls, &ControlPoint::known);
    requireSpread(set, known, "X, Y, Z");
    requireSpread(set, measured, "x, y, z");
    const bool mayScale = kind == RegistrationKind::SIMILARITY;
    Registration result = registrationOf(set, Eigen::umeyama(measured, known, mayScale), mayScale);
    double squared = 0;
    for (const ControlPoint& control : controls) {
        const double distance = norm(result.displayFromStation(control.measured) - control.known);
        result.deviations.push_back({distance, control.line});
        squared += distance * distance;
    }
    result.rms = std::sqrt(squared / static_cast<double>(controls.size()));
    requireAgreement(set, measured, known, mayScale, result.rms);
    const Eigen::Vector3d spread = spreadOf(known);
    if (spread[2] < THINNEST_SPREAD * spread[0]) {
        result.remarks.emplace_back(
            "The control points lie on one plane: a mirrored frame would not show. Add one before or behind it.");
    }
    if (controls.size() == FEWEST_CONTROLS) {
        result.remarks.emplace_back("Three control points barely check each other. Add a fourth.");
    }
    return result;
}

std::vector<Registration> FrameRegistration::apply(MeasuredPoints& points, RegistrationKind kind) {
    std::map<std::string, std::vector<ControlPoint>> controls;
    for (const MeasuredPoint& point : points.points) {
        controls[point.set];
    }
    for (const ControlPoint& control : points.controls) {
        controls[control.set].push_back(control);
    }
    std::map<std::string, Registration> frames;
    for (const auto& [set, ofSet] : controls) {
        frames.emplace(set, of(set, ofSet, kind));
    }
    for (MeasuredPoint& point : points.points) {
        const Registration& frame = frames.at(point.set);
        point.world = frame.displayFromStation(point.world);
        if (point.covariance) {
            point.covariance = moved(*point.covariance, frame);
        }
    }
    std::vector<Registration> result;
    for (auto& [set, frame] : frames) {
        result.push_back(std::move(frame));
    }
    return result;
}

void FrameRegistration::checkUnused(const std::vector<ControlPoint>& controls, DisplayFit::DisplayFitResult& result) {
    using DisplayFit::FitFinding;
    using DisplayFit::FitOutcome;
    if (controls.empty()) {
        return;
    }
    const Places known = placesOf(controls, &ControlPoint::known);
    const double rms = rmsOf(placesOf(controls, &ControlPoint::measured) - known);
    const std::string off = significantText(rms) + (result.unit.empty() ? "" : " " + result.unit);
    if (rms <= LARGEST_UNUSED_DEVIATION * spreadOf(known).norm()) {
        result.findings.push_back({FitFinding::Kind::FRAME_NOT_REGISTERED, FitOutcome::GOOD,
                                   "the control points were not used: they are where they should be to within " + off +
                                       " (RMS), so that the measurement is in the frame of the display",
                                   ""});
        return;
    }
    result.findings.push_back({FitFinding::Kind::FRAME_NOT_REGISTERED, FitOutcome::DOUBTFUL,
                               "the control points lie " + off +
                                   " (RMS) from where they should be, and were not used: the measurement is not in "
                                   "the frame of the display",
                               "state --register rigid, which moves it there by its control points"});
}

}  // namespace Veltrani::FitSession
