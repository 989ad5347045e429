#pragma once

#include <string>
#include <vector>

/// The text of an OpenCV calibration file, in either language, with knobs for everything that may be wrong with it.
struct CalibrationText {
    std::string width = "1920";
    std::string height = "1200";
    std::string cameraRows = "3";
    std::string cameraCols = "3";
    std::string type = "d";
    std::vector<std::string> camera{"1.5e+03", "0.", "9.6e+02", "0.", "1.5e+03", "6.0e+02", "0.", "0.", "1."};
    std::string distortionRows;  ///< when empty: the number of coefficients
    std::string distortionCols = "1";
    std::vector<std::string> distortion{"-0.2", "0.05", "1e-03", "-5e-04", "-0.01"};

    [[nodiscard]] std::string rows() const {
        return distortionRows.empty() ? std::to_string(distortion.size()) : distortionRows;
    }

    /// As the library writes it: long lists go on in the next line.
    [[nodiscard]] std::string yaml() const {
        return "%YAML:1.0\n---\ncalibration_time: \"Sat 21 Nov 2026\"\nnr_of_frames: 25\nimage_width: " + width +
               "\nimage_height: " + height + "\n" + "camera_matrix: !!opencv-matrix\n   rows: " + cameraRows +
               "\n   cols: " + cameraCols + "\n   dt: " + type + "\n   data: [ " + list(camera, ", ", ",\n       ") +
               " ]\ndistortion_coefficients: !!opencv-matrix\n   rows: " + rows() + "\n   cols: " + distortionCols +
               "\n   dt: " + type + "\n   data: [ " + list(distortion, ", ", ",\n       ") +
               " ]\navg_reprojection_error: 2.1e-01\n";
    }

    [[nodiscard]] std::string xml() const {
        return "<?xml version=\"1.0\"?>\n<opencv_storage>\n<calibration_time>\"Sat 21 Nov 2026\"</calibration_time>\n"
               "<image_width>" +
               width + "</image_width>\n<image_height>" + height +
               "</image_height>\n<camera_matrix type_id=\"opencv-matrix\">\n  <rows>" + cameraRows +
               "</rows>\n  <cols>" + cameraCols + "</cols>\n  <dt>" + type + "</dt>\n  <data>\n    " +
               list(camera, " ", "\n    ") +
               "</data></camera_matrix>\n<distortion_coefficients type_id=\"opencv-matrix\">\n  <rows>" + rows() +
               "</rows>\n  <cols>" + distortionCols + "</cols>\n  <dt>" + type + "</dt>\n  <data>\n    " +
               list(distortion, " ", "\n    ") + "</data></distortion_coefficients>\n</opencv_storage>\n";
    }

private:
    static std::string list(const std::vector<std::string>& numbers, const std::string& between,
                            const std::string& wrap) {
        std::string text;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            text += (i == 0 ? "" : i % 4 == 0 ? wrap : between) + numbers[i];
        }
        return text;
    }
};
