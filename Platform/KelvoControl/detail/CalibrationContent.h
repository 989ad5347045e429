#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::KelvoControlDetail {

/// A value of a calibration file, as the file has it.
struct CalibrationValue {
    std::string text;
    int line = 1;
};

/// A matrix of a calibration file. What the file does not state is missing here.
struct CalibrationMatrix {
    int line = 1;  ///< where it begins
    std::optional<CalibrationValue> rows;
    std::optional<CalibrationValue> cols;
    std::optional<CalibrationValue> dt;  ///< type of the elements: "d" or "f"
    bool hasData = false;                ///< there is a list of elements, which may be empty
    std::vector<CalibrationValue> data;  ///< row by row
};

/// What a lens is read from, in whichever of the two languages it was written; other entries are not kept. Nothing is
/// checked yet.
struct CalibrationContent {
    int lastLine = 1;
    std::optional<CalibrationValue> imageWidth;
    std::optional<CalibrationValue> imageHeight;
    std::optional<CalibrationMatrix> cameraMatrix;
    std::optional<CalibrationMatrix> distortion;
};

/// The keys of these entries.
inline constexpr const char* IMAGE_WIDTH = "image_width";
inline constexpr const char* IMAGE_HEIGHT = "image_height";
inline constexpr const char* CAMERA_MATRIX = "camera_matrix";
inline constexpr const char* DISTORTION_COEFFICIENTS = "distortion_coefficients";

/// The type that is stated beside a matrix.
inline constexpr const char* MATRIX_TYPE = "opencv-matrix";

/// A matrix that is needed has at most 14 elements; a list that goes on for longer than this is not kept.
inline constexpr std::size_t MOST_ELEMENTS = 64;

/// Returns the entries of a calibration file in XML: a root `opencv_storage` whose matrices are elements with
/// `type_id="opencv-matrix"`. No document type, no entities but the five of XML itself, nothing fetched.
///
/// Throws `VeltraniParseException` for everything else, an entry that occurs twice included.
[[nodiscard]] CalibrationContent calibrationFromXml(std::string_view text, const std::string& document);

/// Returns the entries of a calibration file in YAML: a mapping whose matrices carry the tag `!!opencv-matrix`. The
/// first line may be `%YAML:1.0`, which is no YAML but what such files begin with.
///
/// Throws `VeltraniParseException` for everything else, an entry that occurs twice included.
[[nodiscard]] CalibrationContent calibrationFromYaml(std::string_view text, const std::string& document);

}  // namespace Veltrani::KelvoControlDetail
