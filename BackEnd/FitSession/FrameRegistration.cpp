#include "FitSession/FrameRegistration.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/NumberText.h"
#include "FitSession/ControlAgreement.h"
#include "FitSession/ControlPlaces.h"

#include <Eigen/Core>
#include <Eigen/Geometry>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace Veltrani::FitSession {

namespace {

using ControlPlaces::Places;
using ControlPlaces::rmsOf;
using ControlPlaces::spreadOf;
using DisplayReport::significantText;
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

void requireSpread(const std::string& set, const Places& places, const char* what) {
    const std::string remedy = "; choose at least 3 that form a wide triangle, 4 or more not on one plane are better";
    if (!(spreadOf(places)[0] > 0)) {
        refuse(set, std::string(what) + " all lie at one place" + remedy);
    }
    if (!ControlPlaces::formTriangle(places)) {
        refuse(set, std::string(what) + " lie on a line, about which the frame could turn" + remedy);
    }
}

/// Throws where the deviations are none of measuring, with the cause where one is recognised.
void requireAgreement(const Registration& frame, const std::vector<ControlPoint>& controls, RegistrationKind kind) {
    const bool mayScale = kind == RegistrationKind::SIMILARITY;
    const Places measured = ControlPlaces::of(controls, &ControlPoint::measured);
    const Places known = ControlPlaces::of(controls, &ControlPoint::known);
    const std::string& set = frame.set;
    const double rms = frame.rms;
    const double extent = frame.span;
    if (rms <= FrameRegistration::LARGEST_RELATIVE_DEVIATION * extent) {
        return;
    }
    const std::string found = "they deviate by " + significantText(rms) + " (RMS) on an extent of " +
                              significantText(extent) + ", in native units: ";
    // A scale of nearly nothing brings any places together, and leaves what they span.
    const double little = EXPLAINED * std::min(rms, extent);
    const double ratio = extent / spreadOf(measured).norm();
    if (!mayScale && rmsOf(ControlPlaces::deviationsOf(measured, known, true)) < little) {
        refuse(set, found + "X, Y, Z are " + significantText(ratio) +
                        " times as far apart as x, y, z; write both in one unit, or choose a similarity");
    }
    Places mirrored = measured;
    mirrored.row(0) *= -1;
    if (rmsOf(ControlPlaces::deviationsOf(mirrored, known, mayScale)) < little) {
        refuse(set, found +
                        "one frame is the mirror image of the other; reverse one axis of the measurement, as of "
                        "instruments that count to the left or downwards");
    }
    const std::string wrong = ControlAgreement::whatIsWrong(controls, kind);
    refuse(set, found + (wrong.empty() ? "check which mark is which, and that X, Y, Z are in the frame and x, y, z in "
                                         "the unit stated"
                                       : wrong));
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

/// A set whose name was written in two ways has no control points, while others have.
void requireControls(const std::map<std::string, std::vector<ControlPoint>>& controls) {
    std::string others;
    for (const auto& [set, ofSet] : controls) {
        others += ofSet.empty() ? "" : (others.empty() ? "" : ", ") + inQuotes(set);
    }
    for (const auto& [set, ofSet] : controls) {
        if (ofSet.empty() && !others.empty()) {
            refuse(set, "found 0, expected at least 3 rows with X, Y, Z of this set; there are such rows of " + others +
                            ": write the same name, or measure marks from this station, too");
        }
    }
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
    const Places measured = ControlPlaces::of(controls, &ControlPoint::measured);
    const Places known = ControlPlaces::of(controls, &ControlPoint::known);
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
    const Eigen::Vector3d spread = spreadOf(known);
    result.span = spread.norm();
    requireAgreement(result, controls, kind);
    result.contradiction = ControlAgreement::oneAgainstAll(controls, kind);
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
    requireControls(controls);
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

}  // namespace Veltrani::FitSession
