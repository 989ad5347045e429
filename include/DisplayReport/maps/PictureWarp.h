#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/Progress.h"
#include "DisplayReport/maps/WarpGrid.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

class InputProjection;
class LayoutMapper;

/// A channel's picture by the layout map of its display and one of the inputs of `InputProjection`.
class PictureWarp : public WarpGrid {
public:
    /// Keeps the memory for a warp within a gigabyte: more than the pixels of an 8K picture.
    static constexpr std::size_t MOST_SAMPLES = 40'000'000;

    /// @param pixels width and height of the picture
    /// @param nodes columns and rows, two or more each; from corner to corner of every pixel it is `pixels` plus one.
    /// @param progress called before each row, and once more at the end
    /// Throws `VeltraniException` for more than `MOST_SAMPLES`, and what the map throws.
    [[nodiscard]] static PictureWarp atNodes(LayoutMapper& map, const InputProjection& input,
                                             const Point<int, 2>& pixels, const Point<int, 2>& nodes,
                                             const Progress& progress = {});
    /// One sample per pixel.
    [[nodiscard]] static PictureWarp atPixels(LayoutMapper& map, const InputProjection& input,
                                              const Point<int, 2>& pixels, const Progress& progress = {});

    /// From samples, row by row from the bottom, `columns` in each. Throws `VeltraniException` when their number is
    /// another.
    PictureWarp(const Point<int, 2>& pixels, std::size_t columns, std::size_t rows, std::vector<WarpSample> samples);

    [[nodiscard]] Point<int, 2> pixels() const override { return m_pixels; }
    [[nodiscard]] std::size_t columns() const override { return m_columns; }
    [[nodiscard]] std::size_t rows() const override { return m_rows; }
    [[nodiscard]] WarpSample at(std::size_t column, std::size_t row) const override {
        return m_samples[row * m_columns + column];
    }

    [[nodiscard]] std::size_t mapped() const;
    [[nodiscard]] std::size_t missed() const { return m_samples.size() - mapped(); }

    /// Takes samples out of the map so that no cell between four samples reaches across the edge at which a panorama
    /// begins again: what interpolates inside such a cell would show the whole panorama in it, mirrored.
    /// @return how many
    std::size_t cutAtSeam();

private:
    Point<int, 2> m_pixels;
    std::size_t m_columns;
    std::size_t m_rows;
    std::vector<WarpSample> m_samples;
};

}  // namespace Veltrani::DisplayReport
