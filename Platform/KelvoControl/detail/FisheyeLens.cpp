#include "KelvoControl/detail/FisheyeLens.h"

namespace Veltrani::KelvoControlDetail {

namespace {

/// What rounding may add to a point at the edge of the picture, in parts of the picture.
constexpr double EDGE_TOLERANCE = 1e-9;

std::array<double, 4> fourOf(const std::vector<double>& coefficients) {
    return {coefficients[0], coefficients[1], coefficients[2], coefficients[3]};
}

bool isInPicture(const Point<double, 2>& normalised) {
    const auto isWithin = [](double part) { return part >= -EDGE_TOLERANCE && part <= 1 + EDGE_TOLERANCE; };
    return isWithin(normalised[0]) && isWithin(normalised[1]);
}

}  // namespace

FisheyeLens::FisheyeLens(const Viewport& viewport, const std::wstring& name, const std::wstring& file)
    : LensModel(viewport, name, file),
      m_calibration(LensCalibration::read(LensName::of(name, file).file, LensFamily::Fisheye)),
      m_distortion(fourOf(m_calibration.distortion)) {}

FisheyeLens::FisheyeLens(const Viewport& viewport, const std::wstring& name, const LensCalibration& calibration)
    : LensModel(viewport, name, L""), m_calibration(calibration), m_distortion(fourOf(m_calibration.distortion)) {}

bool FisheyeLens::rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const {
    Point<double, 3> found;
    if (!m_distortion.undistort(m_calibration.lensFromPicture(normalised), found) ||
        (found[2] <= 0 && !isInPicture(normalised))) {
        return false;
    }
    ray = {found[0], found[2], -found[1]};
    return true;
}

bool FisheyeLens::pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const {
    Point<double, 2> distorted;
    if (!m_distortion.distort({ray[0], -ray[2], ray[1]}, distorted)) {
        return false;
    }
    const Point<double, 2> found = m_calibration.pictureFromLens(distorted);
    if (ray[1] <= 0 && !isInPicture(found)) {
        return false;
    }
    normalised = found;
    return true;
}

}  // namespace Veltrani::KelvoControlDetail
