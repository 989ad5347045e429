#include "DisplayReport/maps/PictureWarp.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/LargePages.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Places = std::vector<double>;

/// From edge to edge.
Places nodesAlong(int count) {
    Places places;
    for (int i = 0; i < count; ++i) {
        places.push_back(static_cast<double>(i) / (count - 1));
    }
    return places;
}

Places pixelsAlong(int count) {
    Places places;
    for (int i = 0; i < count; ++i) {
        places.push_back((i + 0.5) / count);
    }
    return places;
}

void requireRoom(std::size_t columns, std::size_t rows) {
    if (columns > PictureWarp::MOST_SAMPLES / rows) {
        throw VeltraniException(L"A grid of " + std::to_wstring(columns) + L" x " + std::to_wstring(rows) +
                                L" is larger than " + std::to_wstring(PictureWarp::MOST_SAMPLES) +
                                L" places: ask for fewer nodes");
    }
}

/// Places that are mapped at once: neighbours of a few rows, whose rays have more of a surface in common than as many
/// of one row. With all that is kept of them on the way they stay in the processor's cache.
constexpr std::size_t ROWS_AT_ONCE = 4;
constexpr std::size_t COLUMNS_AT_ONCE = 256;

WarpSample sampleOf(const LayoutPoint& layout, const InputProjection& input) {
    const auto shown = layout.isMapped ? input.place(layout.point) : std::nullopt;
    return {shown.value_or(Point<double, 2>()), shown.has_value()};
}

/// A part of a grid: columns and rows from the first to before the last.
struct GridPart {
    std::size_t firstColumn, endColumn, firstRow, endRow;
};

/// Samples a grid part by part, in memory that is used again for each.
class GridSampler {
public:
    GridSampler(LayoutMapper& map, const InputProjection& input, const Places& across, const Places& upwards)
        : m_map(map), m_input(input), m_across(across), m_upwards(upwards) {}

    /// @param samples of the grid, row by row, at least up to the last row of the part
    void sample(const GridPart& part, std::vector<WarpSample>& samples) {
        m_picture.clear();
        for (std::size_t row = part.firstRow; row < part.endRow; ++row) {
            for (std::size_t column = part.firstColumn; column < part.endColumn; ++column) {
                m_picture.emplace_back(m_across[column], m_upwards[row]);
            }
        }
        m_layout.resize(m_picture.size());
        m_map.toLayout(m_picture, m_layout);
        auto next = m_layout.cbegin();
        for (std::size_t row = part.firstRow; row < part.endRow; ++row) {
            WarpSample* const samplesOfRow = &samples[row * m_across.size()];
            for (std::size_t column = part.firstColumn; column < part.endColumn; ++column) {
                samplesOfRow[column] = sampleOf(*next++, m_input);
            }
        }
    }

private:
    LayoutMapper& m_map;
    const InputProjection& m_input;
    const Places& m_across;
    const Places& m_upwards;
    std::vector<Point<double, 2>> m_picture;
    std::vector<LayoutPoint> m_layout;
};

std::vector<WarpSample> samplesAt(LayoutMapper& map, const InputProjection& input, const Places& across,
                                  const Places& upwards, const Progress& progress) {
    std::vector<WarpSample> samples;
    reserveInLargePages(samples, across.size() * upwards.size());
    GridSampler sampler(map, input, across, upwards);
    for (std::size_t row = 0; row < upwards.size(); row += ROWS_AT_ONCE) {
        const std::size_t endRow = std::min(row + ROWS_AT_ONCE, upwards.size());
        for (std::size_t i = row; progress && i < endRow; ++i) {
            progress(i, upwards.size());
        }
        samples.resize(endRow * across.size());
        for (std::size_t column = 0; column < across.size(); column += COLUMNS_AT_ONCE) {
            sampler.sample({column, std::min(column + COLUMNS_AT_ONCE, across.size()), row, endRow}, samples);
        }
    }
    if (progress) {
        progress(upwards.size(), upwards.size());
    }
    return samples;
}

PictureWarp warpAt(LayoutMapper& map, const InputProjection& input, const Point<int, 2>& pixels, const Places& across,
                   const Places& upwards, const Progress& progress) {
    return {pixels, across.size(), upwards.size(), samplesAt(map, input, across, upwards, progress)};
}

}  // namespace

PictureWarp PictureWarp::atNodes(LayoutMapper& map, const InputProjection& input, const Point<int, 2>& pixels,
                                 const Point<int, 2>& nodes, const Progress& progress) {
    if (nodes[0] < 2 || nodes[1] < 2) {
        throw VeltraniException(L"A grid of nodes has two columns and two rows at least");
    }
    requireRoom(static_cast<std::size_t>(nodes[0]), static_cast<std::size_t>(nodes[1]));
    return warpAt(map, input, pixels, nodesAlong(nodes[0]), nodesAlong(nodes[1]), progress);
}

PictureWarp PictureWarp::atPixels(LayoutMapper& map, const InputProjection& input, const Point<int, 2>& pixels,
                                  const Progress& progress) {
    if (pixels[0] < 1 || pixels[1] < 1) {
        throw VeltraniException(L"A picture has one pixel at least");
    }
    requireRoom(static_cast<std::size_t>(pixels[0]), static_cast<std::size_t>(pixels[1]));
    return warpAt(map, input, pixels, pixelsAlong(pixels[0]), pixelsAlong(pixels[1]), progress);
}

PictureWarp::PictureWarp(const Point<int, 2>& pixels, std::size_t columns, std::size_t rows,
                         std::vector<WarpSample> samples)
    : m_pixels(pixels), m_columns(columns), m_rows(rows), m_samples(std::move(samples)) {
    if (m_samples.size() != columns * rows) {
        throw VeltraniException(std::to_wstring(m_samples.size()) + L" samples do not fill a grid of " +
                                std::to_wstring(columns) + L" x " + std::to_wstring(rows));
    }
}

std::size_t PictureWarp::mapped() const {
    return static_cast<std::size_t>(
        std::count_if(m_samples.begin(), m_samples.end(), [](const WarpSample& sample) { return sample.isMapped; }));
}

std::size_t PictureWarp::cutAtSeam() {
    // Neighbours never lie half a panorama apart, but for those on either side of the seam.
    constexpr double HALF = 0.5;
    const auto jumps = [](const WarpSample& a, const WarpSample& b) {
        return a.isMapped && b.isMapped && std::abs(a.input[0] - b.input[0]) > HALF;
    };
    std::vector<std::size_t> cut;
    for (std::size_t i = 0; i < m_samples.size(); ++i) {
        const bool isBehindSeam = (i % m_columns > 0 && jumps(m_samples[i - 1], m_samples[i])) ||
                                  (i >= m_columns && jumps(m_samples[i - m_columns], m_samples[i]));
        if (isBehindSeam) {
            cut.push_back(i);
        }
    }
    for (const std::size_t i : cut) {
        m_samples[i] = WarpSample();
    }
    return cut.size();
}

}  // namespace Veltrani::DisplayReport
