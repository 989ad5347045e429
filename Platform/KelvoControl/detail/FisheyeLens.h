#pragma once

#include "KelvoControl/detail/FisheyeDistortion.h"
#include "KelvoControl/detail/LensCalibration.h"
#include "KelvoControl/detail/LensModel.h"

namespace Veltrani::KelvoControlDetail {

/// A fisheye lens from an OpenCV calibration file. The picture spans the calibration picture; the viewport's extents
/// are not used.
///
/// A lens of more than 180 degrees reaches behind the projector, but only as far as its picture does: rays to behind
/// that would arrive outside of the picture are refused.
class FisheyeLens : public LensModel {
public:
    /// Throws what `LensCalibration::read` throws.
    /// @param name,file see `LensName`
    FisheyeLens(const Viewport& viewport, const std::wstring& name, const std::wstring& file);
    /// Of a calibration that was not read from a file.
    FisheyeLens(const Viewport& viewport, const std::wstring& name, const LensCalibration& calibration);

    [[nodiscard]] Point<int, 2> calibratedSize() const override {
        return {m_calibration.imageWidth, m_calibration.imageHeight};
    }

protected:
    bool rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const override;
    bool pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const override;

private:
    LensCalibration m_calibration;
    FisheyeDistortion m_distortion;
};

}  // namespace Veltrani::KelvoControlDetail
