#pragma once

#include "KelvoControl/detail/BrownConradyDistortion.h"
#include "KelvoControl/detail/LensCalibration.h"
#include "KelvoControl/detail/LensModel.h"

namespace Veltrani::KelvoControlDetail {

/// A lens with radial, tangential and thin-prism distortion from an OpenCV calibration file. The picture spans the
/// calibration picture; the viewport's extents are not used.
class BrownConradyLens : public LensModel {
public:
    /// Throws what `LensCalibration::read` throws.
    /// @param name,file see `LensName`
    BrownConradyLens(const Viewport& viewport, const std::wstring& name, const std::wstring& file);
    /// Of a calibration that was not read from a file.
    BrownConradyLens(const Viewport& viewport, const std::wstring& name, const LensCalibration& calibration);

    [[nodiscard]] Point<int, 2> calibratedSize() const override {
        return {m_calibration.imageWidth, m_calibration.imageHeight};
    }

protected:
    bool rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const override;
    bool pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const override;

private:
    LensCalibration m_calibration;
    BrownConradyDistortion m_distortion;
};

}  // namespace Veltrani::KelvoControlDetail
