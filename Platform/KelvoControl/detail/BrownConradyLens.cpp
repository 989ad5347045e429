#include "KelvoControl/detail/BrownConradyLens.h"

namespace Veltrani::KelvoControlDetail {

BrownConradyLens::BrownConradyLens(const Viewport& viewport, const std::wstring& name, const std::wstring& file)
    : LensModel(viewport, name, file),
      m_calibration(LensCalibration::read(LensName::of(name, file).file, LensFamily::BrownConrady)),
      m_distortion(m_calibration.distortion) {}

BrownConradyLens::BrownConradyLens(const Viewport& viewport, const std::wstring& name,
                                   const LensCalibration& calibration)
    : LensModel(viewport, name, L""), m_calibration(calibration), m_distortion(m_calibration.distortion) {}

bool BrownConradyLens::rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const {
    Point<double, 2> plain;
    if (!m_distortion.undistort(m_calibration.lensFromPicture(normalised), plain)) {
        return false;
    }
    ray = {plain[0], 1.0, -plain[1]};
    return true;
}

bool BrownConradyLens::pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const {
    Point<double, 2> distorted;
    if (!(ray[1] > 0) || !m_distortion.distort({ray[0] / ray[1], -ray[2] / ray[1]}, distorted)) {
        return false;
    }
    normalised = m_calibration.pictureFromLens(distorted);
    return true;
}

}  // namespace Veltrani::KelvoControlDetail
