#pragma once

#include "Common/Point.h"

#include <cstddef>
#include <functional>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

/// The text of a warp-mesh file.
struct WarpMeshText {
    using Place = std::function<Point<double, 2>(double s, double t)>;

    std::size_t columns = 4;
    std::size_t rows = 3;
    double aspect = 1.6;
    int width = 1920;
    int height = 1200;
    /// Where a node lies, from its place (0..1, 0..1) in the mesh: in the file's own units, and on the screen.
    Place picture = [this](double s, double t) { return Point<double, 2>{aspect * (2 * s - 1), 2 * t - 1}; };
    Place screen = [](double s, double t) { return Point<double, 2>{s, t}; };
    std::vector<std::size_t> unused;  ///< node numbers

    WarpMeshText() = default;
    WarpMeshText(const WarpMeshText&) = delete;
    WarpMeshText& operator=(const WarpMeshText&) = delete;

    [[nodiscard]] double s(std::size_t column) const {
        return static_cast<double>(column) / static_cast<double>(columns - 1);
    }
    [[nodiscard]] double t(std::size_t row) const { return static_cast<double>(row) / static_cast<double>(rows - 1); }

    [[nodiscard]] std::string nodeLine(std::size_t column, std::size_t row) const {
        const Point<double, 2> xy = picture(s(column), t(row));
        const Point<double, 2> uv = screen(s(column), t(row));
        bool isUnused = false;
        for (const std::size_t node : unused) {
            isUnused = isUnused || node == row * columns + column;
        }
        std::ostringstream line;
        line << std::setprecision(std::numeric_limits<double>::max_digits10) << xy[0] << ' ' << xy[1] << ' ' << uv[0]
             << ' ' << uv[1] << ' ' << (isUnused ? -1 : 1) << '\n';
        return line.str();
    }

    [[nodiscard]] std::string header() const {
        return "2\n" + std::to_string(columns) + " " + std::to_string(rows) + "\n";
    }
    [[nodiscard]] std::string nodes() const {
        std::string text;
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t column = 0; column < columns; ++column) {
                text += nodeLine(column, row);
            }
        }
        return text;
    }
    [[nodiscard]] std::string pixels() const {
        return "pixels " + std::to_string(width) + " " + std::to_string(height) + "\n";
    }
    [[nodiscard]] std::string text() const { return header() + nodes() + pixels(); }
};
