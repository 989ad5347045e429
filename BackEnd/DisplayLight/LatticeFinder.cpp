#include "DisplayLight/LatticeFinder.h"

#include "DisplayExport/ChannelSight.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

namespace Veltrani::DisplayLight {

namespace {

using DisplayExport::ChannelSight;
using DisplayExport::SeenPlace;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Pixels along the side of a cell. One whose middle is off by more than this part of its diagonal, or of which not all
/// corners are seen, is divided into single pixels.
constexpr std::size_t CELL = 8;
constexpr double MOST_BEND = 0.02;
/// Diagonals of a cell: nearer to what a cell shows, a place may be part of it.
constexpr double NEAR = 2;
/// Of a triangle: a place on the edge between two of them belongs to both. The grid ends at the edge of the picture,
/// whose rounding must not lose places.
constexpr double ON_EDGE = -1e-6;
/// The same for places that no triangle holds: at a rim that is bent, and between a cell and those that its neighbour
/// is divided into, lie some beside all of them.
constexpr double BESIDE = -0.06;
/// Pixels: what is left of a place that was found, and when it is not worth a further step.
constexpr double MOST_REST = 0.25;
constexpr double ENOUGH = 1e-4;
constexpr int MOST_STEPS = 4;

/// A node of the grid.
struct Node {
    P2 picture;
    P3 point;
    P2 inView;  ///< in the picture of the eye
    bool isUsable = false;
};

struct NodeGrid {
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::vector<Node> nodes;  ///< row by row from the bottom

    /// Of a cell, counter-clockwise from the bottom left one.
    [[nodiscard]] std::array<Node, 4> cornersOf(std::size_t column, std::size_t row) const {
        const Node* const below = &nodes[row * columns + column];
        const Node* const above = below + columns;
        return {below[0], below[1], above[1], above[0]};
    }

    /// Whether a corner of a cell or of one beside it is seen: where none is, no part of the screen reaches into it.
    [[nodiscard]] bool isSeenAround(std::size_t column, std::size_t row) const {
        for (std::size_t y = row > 0 ? row - 1 : 0; y <= std::min(row + 2, rows - 1); ++y) {
            for (std::size_t x = column > 0 ? column - 1 : 0; x <= std::min(column + 2, columns - 1); ++x) {
                if (nodes[y * columns + x].isUsable) {
                    return true;
                }
            }
        }
        return false;
    }
};

/// A place that is being looked for.
struct Guess {
    P2 picture;
    P3 alongU;  ///< how the place on the screen moves with u, per unit
    P3 alongV;
    std::size_t number = 0;  ///< among the places of the eye
    bool isBeside = false;   ///< beside the triangle that it was found by
};

double crossOf(const P2& a, const P2& b) {
    return a[0] * b[1] - a[1] * b[0];
}

/// Draws the cells of one channel into the picture of an eye.
class LatticePainter {
public:
    LatticePainter(const ChannelSight& sight, const EyeGrid& grid)
        : m_sight(sight), m_grid(grid), m_pixels(sight.channel().pictureSize()) {
        m_isTaken.assign(grid.places.size(), false);
    }

    void find(std::vector<FoundPlace>& found) {
        const auto width = static_cast<std::size_t>(m_pixels[0]);
        const auto height = static_cast<std::size_t>(m_pixels[1]);
        drawBlock(0, 0, width, height, CELL);
        for (const Guess& guess : m_beside) {
            take(guess);
        }
        found.assign(m_grid.places.size(), FoundPlace());
        refine();
        for (const Guess& guess : m_guesses) {
            found[guess.number] = {guess.picture, 0, true};
        }
    }

private:
    /// A part of the picture, from one pixel to another, in cells of so many pixels.
    void drawBlock(std::size_t left, std::size_t bottom, std::size_t right, std::size_t top, std::size_t step) {
        const auto cells = [step](std::size_t from, std::size_t to) { return (to - from + step - 1) / step; };
        const std::size_t columns = cells(left, right);
        const std::size_t rows = cells(bottom, top);
        const auto pixelOf = [step](std::size_t i, std::size_t from, std::size_t to) {
            return std::min(from + i * step, to);
        };
        std::vector<P2> places;
        for (std::size_t row = 0; row <= rows; ++row) {
            for (std::size_t column = 0; column <= columns; ++column) {
                places.push_back(pictureOf(pixelOf(column, left, right), pixelOf(row, bottom, top)));
            }
        }
        const NodeGrid nodes{columns + 1, rows + 1, nodesOf(places)};
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t column = 0; column < columns; ++column) {
                if (step == 1) {
                    drawAny(nodes.cornersOf(column, row));
                } else if (nodes.isSeenAround(column, row) && !drawWhole(nodes.cornersOf(column, row))) {
                    drawBlock(pixelOf(column, left, right), pixelOf(row, bottom, top), pixelOf(column + 1, left, right),
                              pixelOf(row + 1, bottom, top), 1);
                }
            }
        }
    }

    [[nodiscard]] P2 pictureOf(std::size_t column, std::size_t row) const {
        return {static_cast<double>(column) / m_pixels[0], static_cast<double>(row) / m_pixels[1]};
    }

    [[nodiscard]] std::vector<Node> nodesOf(const std::vector<P2>& pictures) const {
        std::vector<SeenPlace> seen(pictures.size());
        m_sight.see(pictures, seen);
        std::vector<Node> nodes;
        nodes.reserve(pictures.size());
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            nodes.push_back(nodeOf(pictures[i], seen[i]));
        }
        return nodes;
    }

    [[nodiscard]] Node nodeOf(const P2& picture, const SeenPlace& seen) const {
        const auto inView = seen.isSeen ? m_grid.view.placeOf(seen.direction) : std::nullopt;
        return inView ? Node{picture, seen.point, *inView, true} : Node{picture, {}, {}, false};
    }

    /// False for a cell that is not as good as flat, or not seen as a whole.
    bool drawWhole(const std::array<Node, 4>& corners) {
        if (!std::all_of(corners.begin(), corners.end(), [](const Node& node) { return node.isUsable; })) {
            return false;
        }
        const P2 middle = (corners[0].picture + corners[2].picture) * 0.5;
        SeenPlace seen;
        m_sight.see({&middle, 1}, {&seen, 1});
        const P3 flat = (corners[0].point + corners[1].point + corners[2].point + corners[3].point) * 0.25;
        const double diagonal = std::max(norm(corners[2].point - corners[0].point),  // of a folded cell one is short
                                         norm(corners[3].point - corners[1].point));
        if (!seen.isSeen || norm(seen.point - flat) > MOST_BEND * diagonal) {
            return false;
        }
        draw(corners, diagonal);
        return true;
    }

    /// A pixel at the edge of what is seen goes on beyond it, as the screen would.
    void drawAny(std::array<Node, 4> corners) {
        if (std::none_of(corners.begin(), corners.end(), [](const Node& node) { return node.isUsable; })) {
            return;
        }
        for (Node& node : corners) {
            if (!node.isUsable) {
                node = nodeOf(node.picture, m_sight.continued(node.picture));
            }
        }
        double diagonal = 0;
        for (const Node& node : corners) {
            diagonal = node.isUsable ? std::max(diagonal, norm(node.point - corners[0].point)) : diagonal;
        }
        draw(corners, diagonal);
    }

    void draw(std::array<Node, 4> corners, double diagonal) {
        const double turn = m_grid.view.turn();
        for (Node& node : corners) {
            if (turn > 0) {
                node.inView[0] -= turn * std::round((node.inView[0] - corners[0].inView[0]) / turn);
            }
        }
        for (const double shift : {-turn, 0.0, turn}) {
            if (shift == 0.0 || turn > 0) {
                drawTriangle({corners[0], corners[1], corners[2]}, shift, diagonal);
                drawTriangle({corners[0], corners[2], corners[3]}, shift, diagonal);
            }
            if (turn == 0.0) {
                return;
            }
        }
    }

    void drawTriangle(std::array<Node, 3> corners, double shift, double diagonal) {
        if (!corners[0].isUsable || !corners[1].isUsable || !corners[2].isUsable) {
            return;
        }
        for (Node& node : corners) {
            node.inView[0] += shift;
        }
        const P2 toB = corners[1].inView - corners[0].inView;
        const P2 toC = corners[2].inView - corners[0].inView;
        const double area = crossOf(toB, toC);
        if (!(std::abs(area) > 0)) {
            return;
        }
        const auto [left, right] = std::minmax({corners[0].inView[0], corners[1].inView[0], corners[2].inView[0]});
        const auto [bottom, top] = std::minmax({corners[0].inView[1], corners[1].inView[1], corners[2].inView[1]});
        const double wider = -2 * BESIDE * (right - left);
        const double higher = -2 * BESIDE * (top - bottom);
        const std::size_t lastRow = behind(top + higher, m_grid.view.height());
        const std::size_t lastColumn = behind(right + wider, m_grid.view.width());
        for (std::size_t row = firstOf(bottom - higher); row < lastRow; ++row) {
            for (std::size_t column = firstOf(left - wider); column < lastColumn; ++column) {
                const P2 way = EyeGrid::middleOf(column, row) - corners[0].inView;
                const double ofB = crossOf(way, toC) / area;
                const double ofC = crossOf(toB, way) / area;
                if (std::min({ofB, ofC, 1 - ofB - ofC}) >= BESIDE) {
                    add(row * m_grid.view.width() + column, corners, ofB, ofC, diagonal);
                }
            }
        }
    }

    static std::size_t firstOf(double place) {
        return static_cast<std::size_t>(std::max(std::floor(place - 0.5), 0.0));
    }
    static std::size_t behind(double place, std::size_t count) {
        return static_cast<std::size_t>(std::clamp(std::ceil(place + 0.5), 0.0, static_cast<double>(count)));
    }

    void add(std::size_t number, const std::array<Node, 3>& corners, double ofB, double ofC, double diagonal) {
        const P3 toB = corners[1].point - corners[0].point;
        const P3 toC = corners[2].point - corners[0].point;
        const EyePlace& place = m_grid.places[number];
        if (m_isTaken[number] || !place.isSeen ||
            !(norm(corners[0].point + ofB * toB + ofC * toC - place.point) <= NEAR * diagonal)) {
            return;
        }
        const P2 b = corners[1].picture - corners[0].picture;
        const P2 c = corners[2].picture - corners[0].picture;
        const double area = crossOf(b, c);
        const Guess guess{corners[0].picture + ofB * b + ofC * c, (c[1] * toB - b[1] * toC) * (1 / area),
                          (b[0] * toC - c[0] * toB) * (1 / area), number,
                          std::min({ofB, ofC, 1 - ofB - ofC}) < ON_EDGE};
        if (guess.isBeside) {
            m_beside.push_back(guess);
        } else {
            take(guess);
        }
    }

    /// The first one of a place counts.
    void take(const Guess& guess) {
        if (!m_isTaken[guess.number]) {
            m_isTaken[guess.number] = true;
            m_guesses.push_back(guess);
        }
    }

    /// Leaves those places that were found.
    void refine() {
        constexpr std::size_t AT_ONCE = 4096;
        std::vector<Guess> kept;
        for (std::size_t first = 0; first < m_guesses.size(); first += AT_ONCE) {
            const std::size_t count = std::min(AT_ONCE, m_guesses.size() - first);
            refine(std::span(m_guesses).subspan(first, count), kept);
        }
        m_guesses = std::move(kept);
    }

    void refine(std::span<Guess> guesses, std::vector<Guess>& kept) const {
        std::vector<Guess> open(guesses.begin(), guesses.end());
        std::vector<P2> pictures;
        std::vector<SeenPlace> seen;
        for (int step = 0; step < MOST_STEPS && !open.empty(); ++step) {
            pictures.clear();
            for (const Guess& guess : open) {
                // Beyond the edge some maps end.
                pictures.push_back({std::clamp(guess.picture[0], 0.0, 1.0), std::clamp(guess.picture[1], 0.0, 1.0)});
            }
            seen.resize(pictures.size());
            m_sight.see(pictures, seen);
            std::vector<Guess> next;
            for (std::size_t i = 0; i < open.size(); ++i) {
                advance(open[i], pictures[i], seen[i], step + 1 == MOST_STEPS, kept, next);
            }
            open = std::move(next);
        }
    }

    void advance(const Guess& guess, const P2& picture, const SeenPlace& seen, bool isLast, std::vector<Guess>& kept,
                 std::vector<Guess>& next) const {
        if (!seen.isSeen) {
            // At the edge of the screen, or of a map, the guess is as near as it gets.
            if (isLast && !guess.isBeside && PictureFinder::isInPicture(guess.picture)) {
                kept.push_back(guess);
            } else if (!isLast) {
                next.push_back(guess);
            }
            return;
        }
        const P3 rest = m_grid.places[guess.number].point - seen.point;
        const double uu = dot(guess.alongU, guess.alongU);
        const double vv = dot(guess.alongV, guess.alongV);
        const double uv = dot(guess.alongU, guess.alongV);
        const double area = uu * vv - uv * uv;
        if (!(area > 0)) {
            return;
        }
        const double alongU = dot(guess.alongU, rest);
        const double alongV = dot(guess.alongV, rest);
        const P2 way{(vv * alongU - uv * alongV) / area, (uu * alongV - uv * alongU) / area};
        const double pixels = std::hypot(way[0] * m_pixels[0], way[1] * m_pixels[1]);
        Guess better = guess;
        better.picture = picture + way;
        if (pixels <= ENOUGH || isLast) {
            const double pixel = std::max(std::sqrt(uu) / m_pixels[0], std::sqrt(vv) / m_pixels[1]);
            if (pixels <= MOST_REST && norm(rest) <= MOST_REST * pixel && moveOntoRim(better.picture)) {
                kept.push_back(better);
            }
            return;
        }
        next.push_back(better);
    }

    /// What lies beyond the rim of the picture by less than is known of it lies on it.
    /// @return false for what lies further beyond
    [[nodiscard]] bool moveOntoRim(P2& picture) const {
        const P2 nearest{std::clamp(picture[0], 0.0, 1.0), std::clamp(picture[1], 0.0, 1.0)};
        const P2 way = nearest - picture;
        picture = nearest;
        return std::hypot(way[0] * m_pixels[0], way[1] * m_pixels[1]) <= ENOUGH;
    }

    const ChannelSight& m_sight;
    const EyeGrid& m_grid;
    Point<int, 2> m_pixels;
    std::vector<bool> m_isTaken;  ///< by place of the eye: whether there is a guess of it
    std::vector<Guess> m_guesses;
    std::vector<Guess> m_beside;
};

}  // namespace

void LatticeFinder::find(const EyeGrid& grid, SeenSide /*side*/, std::vector<FoundPlace>& found) const {
    LatticePainter(m_sight, grid).find(found);
}

}  // namespace Veltrani::DisplayLight
