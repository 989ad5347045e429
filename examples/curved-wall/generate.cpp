// Writes the files of this example: a curved wall as designed (wall.obj), as measured (wall-measured.obj) and as
// scanned (wall-scan.pcd). usage: generate_curved_wall FOLDER
//
// Files are in millimetres with y up and -z forward, as many modelling programs write them. The wall is part of an
// upright cylinder around the place of the audience, 140 degrees wide. The measured wall bulges and leans by up to
// three centimetres against the design; the scan is of the measured wall and carries two millimetres of noise.

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <numbers>
#include <string>

namespace {

constexpr double RADIUS_MM = 4000.0;
constexpr double HEIGHT_MM = 2400.0;
constexpr double HALF_WIDTH_RAD = 70.0 * std::numbers::pi / 180.0;
constexpr double BULGE_MM = 18.0;
constexpr double LEAN_MM = 12.0;
constexpr double NOISE_MM = 2.0;

struct Vertex {
    double x, y, z;
};

/// A number with fixed decimals, whatever the locale is.
std::string text(double value, int decimals) {
    std::array<char, 64> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals).ptr;
    return {buffer.data(), end};
}

/// How far the measured wall stands behind the designed one at (s, t).
double deviation(double s, double t) {
    return BULGE_MM * std::sin(3.0 * std::numbers::pi * s) * std::sin(std::numbers::pi * t) + LEAN_MM * (2.0 * t - 1.0);
}

/// The wall at (s, t), s from left to right and t upwards, moved outwards by `outwards`.
Vertex onWall(double s, double t, double outwards) {
    const double azimuth = (2.0 * s - 1.0) * HALF_WIDTH_RAD;
    const double radius = RADIUS_MM + outwards;
    return {radius * std::sin(azimuth), HEIGHT_MM * t, -radius * std::cos(azimuth)};
}

std::string vertexLine(const Vertex& v) {
    return "v " + text(v.x, 1) + " " + text(v.y, 1) + " " + text(v.z, 1) + "\n";
}

std::string corner(int index) {
    return " " + std::to_string(index) + "/" + std::to_string(index);
}

/// A grid of columns x rows cells, two triangles each, wound so that the normal points away from the audience.
void writeMesh(const std::string& path, const std::string& title, int columns, int rows, double measured) {
    std::ofstream file(path, std::ios::binary);
    file << "# " << title << "\n# millimetres, y up, -z forward\n";
    for (int row = 0; row <= rows; ++row) {
        for (int column = 0; column <= columns; ++column) {
            const double s = static_cast<double>(column) / columns;
            const double t = static_cast<double>(row) / rows;
            file << vertexLine(onWall(s, t, measured * deviation(s, t)));
        }
    }
    for (int row = 0; row <= rows; ++row) {
        for (int column = 0; column <= columns; ++column) {
            file << "vt " << text(static_cast<double>(column) / columns, 6) << " "
                 << text(static_cast<double>(row) / rows, 6) << "\n";
        }
    }
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const int lowerLeft = row * (columns + 1) + column + 1;
            const int upperLeft = lowerLeft + columns + 1;
            file << "f" << corner(lowerLeft) << corner(upperLeft) << corner(lowerLeft + 1) << "\n"
                 << "f" << corner(lowerLeft + 1) << corner(upperLeft) << corner(upperLeft + 1) << "\n";
        }
    }
}

/// A fixed sequence of numbers in [0, 1): a linear congruential generator (Numerical Recipes constants), so that the
/// file is the same everywhere.
class Sequence {
public:
    double next() {
        m_state = m_state * 1664525U + 1013904223U;
        return static_cast<double>(m_state >> 8U) / static_cast<double>(1U << 24U);
    }

private:
    std::uint32_t m_state = 20240611U;
};

void writeScan(const std::string& path, int points) {
    std::ofstream file(path, std::ios::binary);
    file << "# .PCD v0.7 - Point Cloud Data file format\nVERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 "
            "1\nWIDTH "
         << points << "\nHEIGHT 1\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS " << points << "\nDATA ascii\n";
    Sequence sequence;
    for (int i = 0; i < points; ++i) {
        const double s = sequence.next();
        const double t = sequence.next();
        const double noise = NOISE_MM * (2.0 * sequence.next() - 1.0);
        const Vertex v = onWall(s, t, deviation(s, t) + noise);
        file << text(v.x, 1) << " " << text(v.y, 1) << " " << text(v.z, 1) << "\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: generate_curved_wall FOLDER\n";
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";
    writeMesh(folder + "wall.obj", "A curved wall as designed", 56, 12, 0.0);
    writeMesh(folder + "wall-measured.obj", "The same wall as measured", 80, 16, 1.0);
    writeScan(folder + "wall-scan.pcd", 3000);
}
