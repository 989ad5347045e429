#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

class ProjectionModel;
struct Viewport;

namespace Veltrani {

/// The numbers of a lens that was calibrated, as an OpenCV calibration file states them. `docs/lens-models.md` has the
/// formulas.
struct LensNumbers {
    /// What the coefficients mean.
    enum class Kind { BROWN_CONRADY, FISHEYE };

    Kind kind = Kind::BROWN_CONRADY;
    int imageWidth = 0;  ///< of the calibration picture, pixels
    int imageHeight = 0;
    double fx =
        0;  ///< focal lengths and the place of the axis, pixels; the first pixel, top left, is centred at (0, 0)
    double fy = 0;
    double cx = 0;
    double cy = 0;
    /// k1 k2 p1 p2 [k3 [k4 k5 k6 [s1 s2 s3 s4]]], or k1 to k4 of a fisheye lens.
    std::vector<double> distortion;

    /// Reads the file of a projection model, "Name:file". Returns nothing for a model without a file.
    ///
    /// Throws what `Blend::createProjectionModel` throws for the name and for the file.
    [[nodiscard]] static std::optional<LensNumbers> of(const std::wstring& modelName);

    /// Makes the model of these numbers: what `Blend::createProjectionModel` makes of a file that states them, but for
    /// its second text, which is empty.
    ///
    /// Throws `VeltraniException` for numbers that no such file may have, and what the viewport makes a model throw.
    [[nodiscard]] std::shared_ptr<ProjectionModel> model(const Viewport& viewport) const;

    friend bool operator==(const LensNumbers&, const LensNumbers&) = default;
};

}  // namespace Veltrani
