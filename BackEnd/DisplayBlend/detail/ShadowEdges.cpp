#include "DisplayBlend/detail/ShadowEdges.h"

#include "DisplayBlend/detail/BlendPoints.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <numbers>
#include <utility>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

namespace {

constexpr int STEP = 8;  // pixels
/// A step on the screen that is longer than its neighbours by this factor may go across a border.
constexpr double UNEVEN = 1.25;
/// Of a step, until its ends are less than a hundredth of a pixel apart.
constexpr int HALVINGS = 10;
/// Pixels on the screen: what so short a step leaves further apart are two parts of the screen.
constexpr double APART = 0.5;
/// Of the ring in the picture of another channel by which it is seen that the screen goes on around a place: in the
/// parts of that picture that are pixels of this channel's.
constexpr double RING = 1.5;
constexpr std::size_t RING_POINTS = 12;
/// Where the screen goes on, the farthest point of the ring is not farther than so many times the nearest but one, as
/// under a low angle.
constexpr double MOST_STRETCHED = 8.0;
/// Steps: ends of two borders that are farther apart do not belong to one.
constexpr double LONGEST_PIECE = 16.0;

/// A step between neighbours of the lattice that goes across a border, and its two ends next to it.
struct Crossing {
    P2 from, to;  ///< in the picture
    ChannelLight::Landing start, end;
};

/// Where a border of the light comes to an end of a crossing.
struct BorderPoint {
    P3 place;
    int side = 0;
    bool isInner = false;
};

/// The pictures of the channel and of the others.
class ShadowSearch {
public:
    ShadowSearch(const PlaceSampler& sampler, std::size_t channel, const Point<int, 2>& pixels, const P2& size)
        : m_sampler(sampler),
          m_channel(channel),
          m_columns(static_cast<std::size_t>(std::max(2, pixels[0] / STEP)) + 1),
          m_rows(static_cast<std::size_t>(std::max(2, pixels[1] / STEP)) + 1),
          m_pixels(pixels),
          m_pixelSize(std::sqrt(size[0] / pixels[0] * size[1] / pixels[1])) {
        landLattice();
        for (std::size_t row = 0; row < m_rows; ++row) {
            for (std::size_t column = 0; column < m_columns; ++column) {
                addSteps(column, row);
            }
        }
        narrow();
        examine();
    }

    void addTo(EdgeField& field) const {
        for (std::size_t row = 0; row + 1 < m_rows; ++row) {
            for (std::size_t column = 0; column + 1 < m_columns; ++column) {
                addPieces(column, row, field);
            }
        }
    }

private:
    /// A step to the right (0) or upwards (1) from a node.
    using StepKey = std::pair<std::size_t, int>;

    [[nodiscard]] P2 pictureOf(std::size_t column, std::size_t row) const {
        return {static_cast<double>(column) / static_cast<double>(m_columns - 1),
                static_cast<double>(row) / static_cast<double>(m_rows - 1)};
    }

    void landLattice() {
        std::vector<P2> picture;
        for (std::size_t row = 0; row < m_rows; ++row) {
            for (std::size_t column = 0; column < m_columns; ++column) {
                picture.push_back(pictureOf(column, row));
            }
        }
        m_landings = m_sampler.land(m_channel, picture);
    }

    /// Length on the screen; negative when an end misses or there is none.
    [[nodiscard]] double lengthOf(std::size_t column, std::size_t row, std::size_t right, std::size_t up) const {
        if (column + right >= m_columns || row + up >= m_rows) {
            return -1;
        }
        const ChannelLight::Landing& from = m_landings[row * m_columns + column];
        const ChannelLight::Landing& to = m_landings[(row + up) * m_columns + column + right];
        return from.hits && to.hits ? norm(to.on.place - from.on.place) : -1.0;
    }

    void addSteps(std::size_t column, std::size_t row) {
        for (const int way : {0, 1}) {
            const std::size_t right = way == 0 ? 1 : 0;
            const std::size_t up = way == 0 ? 0 : 1;
            if (column + right >= m_columns || row + up >= m_rows) {
                continue;
            }
            const ChannelLight::Landing& from = m_landings[row * m_columns + column];
            const ChannelLight::Landing& to = m_landings[(row + up) * m_columns + column + right];
            if (!from.hits && !to.hits) {
                continue;
            }
            const double own = lengthOf(column, row, right, up);
            const double before = column >= right && row >= up ? lengthOf(column - right, row - up, right, up) : -1;
            const double after = lengthOf(column + right, row + up, right, up);
            const double usual = before >= 0 && after >= 0 ? std::min(before, after) : std::max(before, after);
            const bool isEven = usual > 0 && own >= 0 && own <= UNEVEN * usual && from.side == to.side;
            if (!isEven) {
                m_numbers[{row * m_columns + column, way}] = m_crossings.size();
                m_crossings.push_back({pictureOf(column, row), pictureOf(column + right, row + up), from, to});
            }
        }
    }

    /// Halves all crossings until nothing but the border is between their ends.
    void narrow() {
        for (int i = 0; i < HALVINGS; ++i) {
            std::vector<P2> middles;
            for (const Crossing& crossing : m_crossings) {
                middles.push_back((crossing.from + crossing.to) * 0.5);
            }
            const auto landings = m_sampler.land(m_channel, middles);
            for (std::size_t k = 0; k < m_crossings.size(); ++k) {
                Crossing& crossing = m_crossings[k];
                if (isBorderBefore(crossing, landings[k])) {
                    crossing.to = middles[k];
                    crossing.end = landings[k];
                } else {
                    crossing.from = middles[k];
                    crossing.start = landings[k];
                }
            }
        }
    }

    /// Whether the border is between the start of a crossing and its middle.
    static bool isBorderBefore(const Crossing& crossing, const ChannelLight::Landing& middle) {
        if (crossing.start.hits != crossing.end.hits) {
            return middle.hits == crossing.end.hits;
        }
        if (!middle.hits) {
            return true;
        }
        return norm(middle.on.place - crossing.start.on.place) > norm(middle.on.place - crossing.end.on.place);
    }

    [[nodiscard]] bool isBorder(const Crossing& crossing) const {
        if (!crossing.start.hits || !crossing.end.hits) {
            return crossing.start.hits || crossing.end.hits;
        }
        return crossing.start.side != crossing.end.side ||
               norm(crossing.start.on.place - crossing.end.on.place) > APART * m_pixelSize;
    }

    /// Finds which ends of crossings lie on a part of the screen that goes on, lit by another channel.
    void examine() {
        std::vector<P2> picture;
        for (const Crossing& crossing : m_crossings) {
            const bool isOne = isBorder(crossing);
            m_ends.push_back({crossing.start.on.place, crossing.start.side, false});
            m_ends.push_back({crossing.end.on.place, crossing.end.side, false});
            m_isExamined.push_back(isOne && crossing.start.hits);
            m_isExamined.push_back(isOne && crossing.end.hits);
            picture.push_back(crossing.from);
            picture.push_back(crossing.to);
        }
        PlaceSamples samples;
        m_sampler.sample(m_channel, picture, samples);
        for (std::size_t other = 0; other < samples.reaches.size(); ++other) {
            if (other != m_channel) {
                examineFrom(other, samples);
            }
        }
    }

    void examineFrom(std::size_t other, const PlaceSamples& samples) {
        std::vector<std::size_t> numbers;
        std::vector<P2> rings;
        for (std::size_t i = 0; i < m_ends.size(); ++i) {
            if (!m_isExamined[i] || m_ends[i].isInner || !samples.lands(i) || !samples.isInside(other, i)) {
                continue;
            }
            numbers.push_back(i);
            for (std::size_t k = 0; k < RING_POINTS; ++k) {
                const double angle = 2 * std::numbers::pi * static_cast<double>(k) / RING_POINTS;
                rings.push_back(samples.reaches[other][i].picture +
                                P2{RING * std::cos(angle) / m_pixels[0], RING * std::sin(angle) / m_pixels[1]});
            }
        }
        PlaceSamples around;
        m_sampler.sample(other, rings, around);
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            BorderPoint& end = m_ends[numbers[k]];
            end.isInner = goesOnUnlit(end, around, k * RING_POINTS);
        }
    }

    /// Whether the screen goes on all around the place, and part of that is not lit by the channel.
    [[nodiscard]] bool goesOnUnlit(const BorderPoint& end, const PlaceSamples& around, std::size_t first) const {
        std::array<double, RING_POINTS> ways{};
        bool isUnlit = false;
        for (std::size_t k = 0; k < RING_POINTS; ++k) {
            if (!around.lands(first + k)) {
                return false;
            }
            ways[k] = norm(around.landings[first + k].on.place - end.place);
            isUnlit = isUnlit || !around.isLit(m_channel, first + k);
        }
        std::sort(ways.begin(), ways.end());
        return isUnlit && ways.back() <= MOST_STRETCHED * ways[1];
    }

    /// The inner ends of the crossings around a cell of the lattice, joined in pairs.
    void addPieces(std::size_t column, std::size_t row, EdgeField& field) const {
        const std::size_t node = row * m_columns + column;
        std::vector<P3> ends;
        for (const StepKey& key : {StepKey{node, 0}, {node, 1}, {node + m_columns, 0}, {node + 1, 1}}) {
            if (const auto found = m_numbers.find(key); found != m_numbers.end()) {
                for (const std::size_t i : {2 * found->second, 2 * found->second + 1}) {
                    if (m_ends[i].isInner) {
                        ends.push_back(m_ends[i].place);
                    }
                }
            }
        }
        while (ends.size() > 1) {
            const P3 start = ends.back();
            ends.pop_back();
            const auto nearest = std::min_element(
                ends.begin(), ends.end(), [&](const P3& a, const P3& b) { return norm(a - start) < norm(b - start); });
            if (norm(*nearest - start) < LONGEST_PIECE * STEP * m_pixelSize) {
                field.addShadow(start, *nearest);
                ends.erase(nearest);
            }
        }
    }

    const PlaceSampler& m_sampler;
    std::size_t m_channel;
    std::size_t m_columns;
    std::size_t m_rows;
    Point<int, 2> m_pixels;
    double m_pixelSize;
    std::vector<ChannelLight::Landing> m_landings;
    std::map<StepKey, std::size_t> m_numbers;  ///< of the crossings
    std::vector<Crossing> m_crossings;
    std::vector<BorderPoint> m_ends;  ///< two of each crossing
    std::vector<bool> m_isExamined;
};

}  // namespace

void addShadows(const PlaceSampler& sampler, std::size_t channel, const Point<int, 2>& pixels, EdgeField& field) {
    ShadowSearch(sampler, channel, pixels, field.size()).addTo(field);
}

}  // namespace Veltrani::DisplayBlendDetail
