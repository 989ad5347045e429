#include "WallFile.h"

#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

/// Cells of the wall, across and up: two triangles each.
constexpr int CELLS = 707;

/// Extents of the wall in metres: bumps of up to a metre on a wall of ten by six.
constexpr double WIDTH = 10;
constexpr double HEIGHT = 6;

template <class... Values>
void print(std::string& text, const char* format, Values... values) {
    std::array<char, 160> line{};
    const int size = std::snprintf(line.data(), line.size(), format, values...);
    text.append(line.data(), static_cast<std::size_t>(size));
}

/// Calls `write` with the place of each grid node, 0 to 1 across and up, row by row.
template <class Write>
void forEachNode(const Write& write) {
    for (int row = 0; row <= CELLS; ++row) {
        for (int column = 0; column <= CELLS; ++column) {
            write(static_cast<double>(column) / CELLS, static_cast<double>(row) / CELLS);
        }
    }
}

/// A bumpy wall as modelling programs write it: six decimals, all vertices, then all texture coordinates, normals,
/// faces.
std::string wallText() {
    std::string text = "# wall\no wall\n";
    forEachNode([&](double s, double t) {
        print(text, "v %.6f %.6f %.6f\n", WIDTH * (s - 0.5), 3 + std::sin(9 * s) * std::cos(7 * t), HEIGHT * t);
    });
    forEachNode([&](double s, double t) { print(text, "vt %.6f %.6f\n", s, t); });
    forEachNode([&](double s, double t) { print(text, "vn %.4f %.4f %.4f\n", 0.3 * s, -0.9, 0.3 * t); });
    for (int cell = 0; cell < CELLS * CELLS; ++cell) {
        const int a = cell / CELLS * (CELLS + 1) + cell % CELLS + 1;
        const int b = a + 1;
        const int c = b + CELLS + 1;
        const int d = a + CELLS + 1;
        print(text, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, b, b, b, c, c, c);
        print(text, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, c, c, c, d, d, d);
    }
    return text;
}

}  // namespace

WallFile::WallFile()
    : m_path(std::filesystem::temp_directory_path() / ("wall-" + std::to_string(::getpid()) + ".obj")) {
    std::ofstream(m_path, std::ios::binary) << wallText();
}

WallFile::~WallFile() {
    std::error_code gone;
    std::filesystem::remove(m_path, gone);
}

std::string WallFile::read() const {
    std::ifstream file(m_path, std::ios::binary);
    std::string bytes(std::filesystem::file_size(m_path), '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}
