#include "DisplayExport/WarpErrorMeter.h"

#include "DisplayExport/CellPolygon.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Cells whose places are seen at once.
constexpr std::size_t CELLS_AT_ONCE = 64;

/// The three ways in which players interpolate: bilinearly, and linearly in halves along either diagonal.
template <class Value>
std::array<Value, 3> interpolated(const std::array<Value, 4>& corners, const P2& part) {
    const auto& [a, b, c, d] = corners;
    const double x = part[0];
    const double y = part[1];
    return {(1 - x) * (1 - y) * a + x * (1 - y) * b + x * y * c + (1 - x) * y * d,
            x >= y ? a + x * (b - a) + y * (c - b) : a + y * (d - a) + x * (c - d),
            x + y <= 1 ? a + x * (b - a) + y * (d - a) : c + (1 - x) * (d - c) + (1 - y) * (b - c)};
}

/// Places in a cell, by parts of its width and height; all but its corners.
const std::vector<P2>& partsOfCell() {
    static const std::vector<P2> PARTS = [] {
        constexpr std::size_t LAST = WarpErrorMeter::PER_SIDE - 1;
        std::vector<P2> parts;
        for (std::size_t row = 0; row <= LAST; ++row) {
            for (std::size_t column = 0; column <= LAST; ++column) {
                if (!((row == 0 || row == LAST) && (column == 0 || column == LAST))) {
                    parts.emplace_back(static_cast<double>(column) / LAST, static_cast<double>(row) / LAST);
                }
            }
        }
        return parts;
    }();
    return PARTS;
}

}  // namespace

/// Collects the error of cells.
class WarpErrorMeter::Comparison {
public:
    Comparison(const WarpErrorMeter& meter, const WarpGrid& grid, double allowed)
        : m_meter(meter), m_grid(grid), m_allowed(allowed) {}

    void compare(const std::vector<std::size_t>& cells) {
        m_picture.clear();
        for (const std::size_t cell : cells) {
            for (const P2& part : m_parts) {
                m_picture.push_back(m_grid.pictureIn(cell, part));
            }
        }
        m_seen.resize(m_picture.size());
        m_meter.m_sight.see(m_picture, m_seen);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            compareCell(cells[i], i * m_parts.size());
        }
    }

    MeasuredError result;

private:
    void compareCell(std::size_t number, std::size_t first) {
        const Compared compared = m_meter.comparedOf(WarpCell::of(m_grid, number));
        const bool isInZone = m_meter.m_zone.holds(compared.cell);
        if (compared.kind == WarpCell::Kind::OVER_POLE) {
            result.tooCoarse += isInZone ? 0 : 1;
            return;
        }
        const bool isDivided = m_meter.m_zone.turnsIn(compared.cell);
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            const auto belongs = m_meter.m_input.place(m_picture[first + i], m_seen[first + i]);
            if (!belongs) {
                continue;
            }
            if (compared.kind == WarpCell::Kind::UNUSABLE) {
                ++result.error.leftOut;
                continue;
            }
            const double error = m_meter.errorAt(compared, m_parts[i], m_seen[first + i], *belongs);
            result.error.largestOfGrid = std::max(result.error.largestOfGrid, error);
            if (!isDivided) {
                result.error.addPlace(error, m_allowed);
            }
            if (!isInZone) {
                search(m_parts[i], error);
            }
        }
    }

    void search(const P2& part, double error) {
        result.searched = std::max(result.searched, error);
        const auto isEnd = [](double value) { return value == 0.0 || value == 1.0; };
        if (isEnd(part[1])) {
            result.along[0] = std::max(result.along[0], error);
        }
        if (isEnd(part[0])) {
            result.along[1] = std::max(result.along[1], error);
        }
    }

    const WarpErrorMeter& m_meter;
    const WarpGrid& m_grid;
    double m_allowed;
    const std::vector<P2>& m_parts = partsOfCell();
    std::vector<P2> m_picture;
    std::vector<SeenPlace> m_seen;
};

WarpErrorMeter::WarpErrorMeter(const ChannelSight& sight, const ContentInput& input)
    : m_sight(sight), m_input(input), m_zone(sight, input) {}

WarpErrorMeter::Compared WarpErrorMeter::comparedOf(const WarpCell& cell) const {
    Compared compared{cell, cell.kind(m_zone.poles(), m_input.wrapsAround()), {}};
    if (compared.kind == WarpCell::Kind::OVER_FACES) {
        addPiecesAtFaces(cell, m_input, compared.pieces);
    }
    return compared;
}

double WarpErrorMeter::errorAt(const Compared& compared, const P2& part, const SeenPlace& seen,
                               const InputPlace& belongs) const {
    const WarpCell& cell = compared.cell;
    double largest = 0;
    if (compared.kind != WarpCell::Kind::OVER_FACES && belongs.face == cell.nodes[0].face) {
        for (const P2& shown : interpolated(cell.contents(m_input.wrapsAround()), part)) {
            largest = std::max(largest, m_input.distance(belongs.at, shown));
        }
        return largest;
    }
    // A cell over several faces is cut where directions that are interpolated pass their edges.
    for (const P3& direction : interpolated(cell.directions, part)) {
        const auto shown = m_input.placeOnFace(direction, belongs.face);
        largest = std::max(largest, m_input.distance(belongs.at, shown.value_or(P2())));
    }
    return std::max(largest, errorOfPieces(compared.pieces, cell.at(part), seen));
}

double WarpErrorMeter::errorOfPieces(const std::vector<WarpPiece>& pieces, const P2& picture,
                                     const SeenPlace& seen) const {
    double largest = 0;
    for (const WarpPiece& piece : pieces) {
        const auto& [a, b, c] = piece.corners;
        const double area = areaOf(a.picture, b.picture, c.picture);
        const double ofB = areaOf(a.picture, picture, c.picture) / area;
        const double ofC = areaOf(a.picture, b.picture, picture) / area;
        if (std::min({ofB, ofC, 1 - ofB - ofC}) < 0) {
            continue;
        }
        const P2 shown = a.content + ofB * (b.content - a.content) + ofC * (c.content - a.content);
        // Next to an edge of a face, what belongs there may lie on the other one.
        const auto belongs = m_input.placeOnFace(seen.direction, piece.face);
        largest = std::max(largest, m_input.distance(belongs.value_or(P2()), shown));
    }
    return largest;
}

std::vector<WarpError> WarpErrorMeter::errorsIn(std::span<const WarpCell> cells, double allowed) const {
    const std::vector<P2>& parts = partsOfCell();
    std::vector<WarpError> errors;
    errors.reserve(cells.size());
    std::vector<P2> picture;
    std::vector<SeenPlace> seen;
    for (std::size_t first = 0; first < cells.size(); first += CELLS_AT_ONCE) {
        const auto some = cells.subspan(first, std::min(CELLS_AT_ONCE, cells.size() - first));
        picture.clear();
        for (const WarpCell& cell : some) {
            for (const P2& part : parts) {
                picture.push_back(cell.at(part));
            }
        }
        seen.resize(picture.size());
        m_sight.see(picture, seen);
        for (std::size_t i = 0; i < some.size(); ++i) {
            const std::size_t start = i * parts.size();
            errors.push_back(errorOf(comparedOf(some[i]), std::span(picture).subspan(start, parts.size()),
                                     std::span(seen).subspan(start, parts.size()), allowed));
        }
    }
    return errors;
}

WarpError WarpErrorMeter::errorOf(const Compared& compared, std::span<const P2> picture,
                                  std::span<const SeenPlace> seen, double allowed) const {
    const std::vector<P2>& parts = partsOfCell();
    const bool isCompared = compared.kind != WarpCell::Kind::UNUSABLE && compared.kind != WarpCell::Kind::OVER_POLE;
    WarpError result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto belongs = m_input.place(picture[i], seen[i]);
        if (belongs && isCompared) {
            result.addPlace(errorAt(compared, parts[i], seen[i], *belongs), allowed);
        } else if (belongs) {
            ++result.leftOut;
        }
    }
    return result;
}

MeasuredError WarpErrorMeter::measure(const WarpGrid& grid, double allowed, std::size_t mostCells,
                                      double enough) const {
    Comparison comparison(*this, grid, allowed);
    std::vector<std::size_t> cells;
    const double step = std::max(1.0, static_cast<double>(grid.cells()) / static_cast<double>(mostCells));
    double place = 0;
    while (place < static_cast<double>(grid.cells())) {
        cells.push_back(static_cast<std::size_t>(place));
        place += step;
        if (cells.size() == CELLS_AT_ONCE) {
            comparison.compare(cells);
            cells.clear();
            if (comparison.result.searched > enough) {
                return comparison.result;
            }
        }
    }
    comparison.compare(cells);
    return comparison.result;
}

}  // namespace Veltrani::DisplayExport
