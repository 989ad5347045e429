#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani {
struct LensNumbers;
}

namespace Veltrani::KelvoControlDetail {

/// How many numbers the distortion of a kind of lens has. A file of four coefficients does not state what they mean:
/// the name of the model decides, and each kind of lens states its own family.
struct LensFamily {
    /// The counts that are accepted, growing; zeros behind the last one.
    std::array<std::size_t, 6> counts{};
    /// The count whose last two numbers tilt the sensor, which no model does: they must be zero and are dropped. 0 for
    /// a family without such numbers.
    std::size_t tiltedCount = 0;

    static const LensFamily BrownConrady;  ///< k1 k2 p1 p2 [k3 [k4 k5 k6 [s1 s2 s3 s4 [tilt]]]]
    static const LensFamily Fisheye;       ///< k1 k2 k3 k4

    /// @param count 0 is never accepted
    [[nodiscard]] bool takes(std::size_t count) const;
    /// "4, 5, 8, 12 or 14".
    [[nodiscard]] std::string describeCounts() const;
};

inline constexpr LensFamily LensFamily::BrownConrady{{4, 5, 8, 12, 14}, 14};
inline constexpr LensFamily LensFamily::Fisheye{{4}};

/// A lens as an OpenCV calibration file describes it, in YAML or XML: the size of the calibration picture, where the
/// axis meets it and the distortion.
///
/// Picture points are normalised, (0, 0) bottom left; the plane one unit in front of the lens has x to the right and y
/// down. The first pixel of the picture, top left, has its centre at (0, 0).
struct LensCalibration {
    int imageWidth = 0;
    int imageHeight = 0;
    double fx = 0;  ///< focal lengths and axis, pixels
    double fy = 0;
    double cx = 0;
    double cy = 0;
    std::vector<double> distortion;  ///< as many as the family takes, without those of a tilt; all finite

    /// The distorted point on the lens plane of a picture point, and the way back.
    [[nodiscard]] Point<double, 2> lensFromPicture(const Point<double, 2>& normalised) const;
    [[nodiscard]] Point<double, 2> pictureFromLens(const Point<double, 2>& distorted) const;

    /// Throws `VeltraniMissingFileException` when there is no such file and `VeltraniParseException`, which names file
    /// and line, when it is no such description or describes a lens that cannot be modelled: a skewed or tilted sensor.
    [[nodiscard]] static LensCalibration read(const std::wstring& file, const LensFamily& family);

    /// From numbers. Throws `VeltraniException` for those that no file may have.
    [[nodiscard]] static LensCalibration of(const Veltrani::LensNumbers& numbers, const LensFamily& family);

    /// As `read`, from a text.
    /// @param document named in messages, UTF-8
    [[nodiscard]] static LensCalibration parse(std::string_view text, const std::string& document,
                                               const LensFamily& family);
};

}  // namespace Veltrani::KelvoControlDetail
