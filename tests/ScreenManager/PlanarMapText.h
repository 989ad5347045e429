#pragma once

#include <string>

/// Texts of custom planar map files.
namespace planar_map {

/// The whole picture on the whole screen: pixel (x, y) lies at (x / width, y / height).
inline std::string wholePicture(int width, int height) {
    return "2\n2 2\n-1 -1 0 0 1\n1 -1 1 0 1\n-1 1 0 1 1\n1 1 1 1 1\npixels " + std::to_string(width) + " " +
           std::to_string(height) + "\n";
}

/// As `wholePicture`, but only for the left half of the picture.
inline std::string leftHalf(int width, int height) {
    return "2\n3 2\n-1 -1 0 0 1\n0 -1 0.5 0 1\n1 -1 1 0 -1\n-1 1 0 1 1\n0 1 0.5 1 1\n1 1 1 1 -1\npixels " +
           std::to_string(width) + " " + std::to_string(height) + "\n";
}

}  // namespace planar_map
