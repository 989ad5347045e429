#include "DisplayExport/WarpErrorMeter.h"

#include "DisplayExport/CellPolygon.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <queue>
#include <set>
#include <utility>

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
std::vector<P2> partsOfCell(std::size_t perSide) {
    const std::size_t last = perSide - 1;
    const auto part = [last](std::size_t step) { return static_cast<double>(step) / static_cast<double>(last); };
    std::vector<P2> parts;
    for (std::size_t row = 0; row <= last; ++row) {
        for (std::size_t column = 0; column <= last; ++column) {
            if (!((row == 0 || row == last) && (column == 0 || column == last))) {
                parts.emplace_back(part(column), part(row));
            }
        }
    }
    return parts;
}

const std::vector<P2>& usualParts() {
    static const std::vector<P2> PARTS = partsOfCell(WarpErrorMeter::PER_SIDE);
    return PARTS;
}

/// The cells with the largest errors.
class WorstCells {
public:
    void add(double error, std::size_t cell) {
        if (m_cells.size() < MOST || error > m_cells.top().first) {
            m_cells.emplace(error, cell);
        }
        if (m_cells.size() > MOST) {
            m_cells.pop();
        }
    }

    /// The worst one first.
    [[nodiscard]] std::vector<std::size_t> take() {
        std::vector<std::size_t> cells;
        for (; !m_cells.empty(); m_cells.pop()) {
            cells.push_back(m_cells.top().second);
        }
        std::reverse(cells.begin(), cells.end());
        return cells;
    }

private:
    static constexpr std::size_t MOST = 48;
    using Cell = std::pair<double, std::size_t>;
    std::priority_queue<Cell, std::vector<Cell>, std::greater<>> m_cells;  ///< the smallest error on top
};

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

    /// @param step from one cell that is compared to the next
    void setStep(double step) { m_result.step = static_cast<std::size_t>(std::ceil(step)); }

    [[nodiscard]] MeasuredError taken() {
        m_result.worst = m_worst.take();
        return std::move(m_result);
    }

    /// Pixels of the input.
    [[nodiscard]] double searched() const { return m_result.searched; }

private:
    void compareCell(std::size_t number, std::size_t first) {
        const Compared compared = m_meter.comparedOf(WarpCell::of(m_grid, number));
        const bool isInZone = m_meter.m_zone.holds(compared.cell);
        if (compared.kind == WarpCell::Kind::OVER_POLE) {
            m_result.tooCoarse += isInZone ? 0 : 1;
            return;
        }
        const bool isDivided = m_meter.m_zone.turnsIn(compared.cell);
        double largest = 0;
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            const auto belongs = m_meter.m_input.place(m_picture[first + i], m_seen[first + i]);
            if (!belongs) {
                continue;
            }
            if (compared.kind == WarpCell::Kind::UNUSABLE) {
                ++m_result.error.leftOut;
                continue;
            }
            const double error = m_meter.errorAt(compared, m_parts[i], m_seen[first + i], *belongs);
            if (!isDivided) {
                m_result.error.addPlace(error, m_allowed);
                largest = std::max(largest, error);
            }
            if (!isInZone) {
                search(m_parts[i], error);
            }
        }
        m_worst.add(largest, number);
    }

    void search(const P2& part, double error) {
        m_result.searched = std::max(m_result.searched, error);
        const auto isEnd = [](double value) { return value == 0.0 || value == 1.0; };
        if (isEnd(part[1])) {
            m_result.along[0] = std::max(m_result.along[0], error);
        }
        if (isEnd(part[0])) {
            m_result.along[1] = std::max(m_result.along[1], error);
        }
    }

    const WarpErrorMeter& m_meter;
    const WarpGrid& m_grid;
    double m_allowed;
    const std::vector<P2>& m_parts = usualParts();
    MeasuredError m_result;
    WorstCells m_worst;
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
    return errorsAt(cells, usualParts(), allowed);
}

std::vector<WarpError> WarpErrorMeter::errorsAt(std::span<const WarpCell> cells, const std::vector<P2>& parts,
                                                double allowed) const {
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
            errors.push_back(errorOf(comparedOf(some[i]), parts, std::span(picture).subspan(start, parts.size()),
                                     std::span(seen).subspan(start, parts.size()), allowed));
        }
    }
    return errors;
}

WarpError WarpErrorMeter::errorOf(const Compared& compared, const std::vector<P2>& parts, std::span<const P2> picture,
                                  std::span<const SeenPlace> seen, double allowed) const {
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
    comparison.setStep(step);
    double place = 0;
    while (place < static_cast<double>(grid.cells())) {
        cells.push_back(static_cast<std::size_t>(place));
        place += step;
        if (cells.size() == CELLS_AT_ONCE) {
            comparison.compare(cells);
            cells.clear();
            if (comparison.searched() > enough) {
                return comparison.taken();
            }
        }
    }
    comparison.compare(cells);
    return comparison.taken();
}

std::vector<WarpCell> WarpErrorMeter::worstCells(const WarpGrid& grid, const MeasuredError& measured) const {
    std::set<std::size_t> numbers(measured.worst.begin(), measured.worst.end());
    if (measured.step > 1) {
        // The worst one lies near the worst of those that were compared.
        constexpr std::size_t MOST = 12;
        numbers.clear();
        for (std::size_t i = 0; i < std::min(MOST, measured.worst.size()); ++i) {
            for (const std::size_t row :
                 {measured.worst[i] - grid.cellColumns(), measured.worst[i], measured.worst[i] + grid.cellColumns()}) {
                for (std::size_t number = row - measured.step; number != row + measured.step + 1; ++number) {
                    numbers.insert(number);
                }
            }
        }
    }
    std::vector<WarpCell> cells;
    for (const std::size_t number : numbers) {
        if (number < grid.cells()) {
            const WarpCell cell = WarpCell::of(grid, number);
            if (!m_zone.turnsIn(cell)) {
                cells.push_back(cell);
            }
        }
    }
    return cells;
}

double WarpErrorMeter::boundOf(const WarpGrid& grid, const MeasuredError& measured) const {
    std::vector<WarpCell> cells = worstCells(grid, measured);
    if (measured.step > 1) {
        const std::vector<WarpError> errors = errorsIn(cells, 0);
        WorstCells worst;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            worst.add(errors[i].largest, i);
        }
        std::vector<WarpCell> closer;
        for (const std::size_t i : worst.take()) {
            closer.push_back(cells[i]);
        }
        cells = std::move(closer);
    }
    static const std::vector<P2> CLOSER = partsOfCell(17);
    double largest = measured.error.largest;
    for (const WarpError& error : errorsAt(cells, CLOSER, 0)) {
        largest = std::max(largest, error.largest);
    }
    // Half of a sixteenth of a cell from a crease of a surface of flat parts, the error is so much less than at it.
    constexpr double MARGIN = 1.03;
    return MARGIN * largest;
}

}  // namespace Veltrani::DisplayExport
