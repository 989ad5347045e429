#include "KelvoScreen/detail/TriangleBoxes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// How large the common box of two triangles may be, relative to the sum of their own: each of them is then tested by
/// all rays that pass it, but one box less is passed.
constexpr double PAIR_GROWTH = 0.8;

/// Boxes that a ray through the whole passes, on average over all rays. Meshes of well-formed triangles have two to
/// four, whatever their number.
constexpr double CROWD = 8;
/// Slices are no shorter than this part of the whole, ...
constexpr double SHORTEST_SLICE = 1.0 / 128;
/// ... nor so short that all triangles together had more: a bound for the memory, 200 bytes each.
constexpr double MOST_SLICES = 1 << 19;
/// The part of the surface of its box that the slices of a triangle may have to be worth it: a ray that runs along the
/// triangle meets it in every slice. What lies along the axes, or is wide, has nothing to gain.
constexpr double MOST_KEPT = 0.5;

Box boxOf(const Corners& corners) {
    Box box;
    std::for_each(corners.begin(), corners.end(), [&box](const auto& corner) { box.add(corner); });
    return box;
}

bool areWorthJoining(const Box& a, const Box& b) {
    Box joined = a;
    joined.add(b);
    return joined.halfSurface() <= PAIR_GROWTH * (a.halfSurface() + b.halfSurface());
}

/// The result is the same whichever corner comes first; the winding stays.
Corners fromLowest(const Corners& corners) {
    Corners turned = corners;
    std::rotate(turned.begin(), std::min_element(turned.begin(), turned.end()), turned.end());
    return turned;
}

/// One to one; every bit of the value has a part in the upper half of the result, and in the lower one.
std::uint64_t spread(std::uint64_t value) {
    constexpr std::uint64_t FACTOR = 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 32U)) * FACTOR;
    return value ^ (value >> 32U);
}

std::uint64_t hashOf(const Point<double, 3>& corner) {
    constexpr std::array<std::uint64_t, 3> FACTORS{0xD1B54A32D192ED03U, 0x8CB92BA72F3D8DD7U, 0xAEF17502108EF2D9U};
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        // Zero has two signs, and one place.
        const auto bits = std::bit_cast<std::uint64_t>(corner[i] + 0.0);
        hash += (bits ^ (bits >> 32U)) * FACTORS[i];
    }
    return hash;
}

/// The same whichever corner comes first, and another for the other winding.
std::uint64_t hashOf(const Corners& corners) {
    const std::array<std::uint64_t, 3> hashes{hashOf(corners[0]), hashOf(corners[1]), hashOf(corners[2])};
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        sum += spread(hashes[i] + std::rotl(hashes[(i + 1) % 3], 32));
    }
    return sum;
}

/// Counts how often a number occurs: never, once, or several times.
class Tally {
public:
    explicit Tally(std::size_t size) : m_words(size / PER_WORD), m_mask(size - 1) {}

    void count(std::uint64_t number) {
        std::uint64_t& word = m_words[(number & m_mask) / PER_WORD];
        const std::uint64_t once = std::uint64_t{1} << shiftOf(number);
        word |= once | ((word & once) << 1U);
    }

    [[nodiscard]] bool isSeveral(std::uint64_t number) const {
        return (m_words[(number & m_mask) / PER_WORD] >> shiftOf(number) & 2U) != 0;
    }

private:
    static constexpr std::size_t PER_WORD = 32;

    /// Two bits for each number: whether it occurred, and whether it occurred again.
    static std::uint64_t shiftOf(std::uint64_t number) { return 2 * (number % PER_WORD); }

    std::vector<std::uint64_t> m_words;
    std::uint64_t m_mask;
};

/// Returns false only when no two of the hashes are equal, and true, but for a rare chance, only when two are.
///
/// A table of the triangles, which is far larger than the caches and read all over, takes half as long as all else that
/// a large mesh needs. A tally of a byte for each hash stays in the caches, and leaves few hashes in question.
bool mayRepeat(std::vector<std::uint64_t> hashes) {
    constexpr std::size_t SMALLEST_TALLY = 1 << 12;
    while (!hashes.empty()) {
        Tally tally(std::max(SMALLEST_TALLY, std::bit_ceil(4 * hashes.size())));
        for (std::uint64_t& hash : hashes) {
            hash = spread(hash);  // each round finds other neighbours
            tally.count(hash);
        }
        const std::size_t before = hashes.size();
        std::size_t kept = 0;
        for (const std::uint64_t hash : hashes) {
            hashes[kept] = hash;
            kept += tally.isSeveral(hash) ? 1 : 0;
        }
        hashes.resize(kept);
        // By chance a quarter is left at most.
        if (kept > before / 2) {
            return true;
        }
    }
    return false;
}

/// The triangles that came before, found by their corners.
class Known {
public:
    Known(std::uint32_t count, const TriangleSource& source)
        : m_source(source),
          m_table(std::bit_ceil(2 * static_cast<std::size_t>(count) + 1), Place{0, TriangleBoxes::NO_BOX}) {}

    /// Returns false when one before it has the same corners in the same winding.
    bool add(std::uint32_t triangle, const Corners& corners) {
        const std::uint64_t hash = hashOf(corners);
        const auto mark = static_cast<std::uint32_t>(hash >> 32U);
        for (std::size_t i = 0; i < MOST_PROBES; ++i) {
            Place& place = m_table[(hash + i) & (m_table.size() - 1)];
            if (place.triangle == TriangleBoxes::NO_BOX) {
                place = {mark, triangle};
                return true;
            }
            if (place.mark == mark && isEqual(place.triangle, corners)) {
                return false;
            }
        }
        return true;
    }

private:
    /// Behind so many others in its place, which chance does not bring about, a triangle counts as new: one that is not
    /// costs time and nothing else.
    static constexpr std::size_t MOST_PROBES = 64;

    struct Place {
        std::uint32_t mark;  ///< upper half of the hash: corners are compared where it is equal
        std::uint32_t triangle;
    };

    [[nodiscard]] bool isEqual(std::uint32_t triangle, const Corners& corners) const {
        Corners other;
        m_source.corners(triangle, other);
        return fromLowest(other) == fromLowest(corners);
    }

    const TriangleSource& m_source;
    std::vector<Place> m_table;
};

/// A triangle along its longest edge.
class Lengthwise {
public:
    explicit Lengthwise(const Corners& corners) {
        double longest2 = -1;
        for (std::size_t i = 0; i < 3; ++i) {
            const Point<double, 3> edge = corners[(i + 1) % 3] - corners[i];
            if (dot(edge, edge) > longest2) {
                longest2 = dot(edge, edge);
                m_start = corners[i];
                m_end = corners[(i + 1) % 3];
                m_opposite = corners[(i + 2) % 3];
            }
        }
        m_length = std::sqrt(longest2);
        m_foot =
            m_start + std::clamp(dot(m_opposite - m_start, m_end - m_start) / longest2, 0.0, 1.0) * (m_end - m_start);
    }

    [[nodiscard]] double length() const { return m_length; }

    /// Returns the boxes of slices of about this length, which make the triangle up.
    [[nodiscard]] std::vector<Box> slices(double length) const {
        std::vector<Box> boxes;
        for (const Point<double, 3>& tip : {m_start, m_end}) {
            const double wanted = std::ceil(norm(m_foot - tip) / length);
            const std::size_t count = wanted > 0 ? static_cast<std::size_t>(wanted) : 0;
            for (std::size_t i = 0; i < count; ++i) {
                Box box;
                for (const double part : {static_cast<double>(i) / wanted, static_cast<double>(i + 1) / wanted}) {
                    box.add(tip + part * (m_foot - tip));
                    box.add(tip + part * (m_opposite - tip));
                }
                boxes.push_back(box);
            }
        }
        return boxes;
    }

private:
    Point<double, 3> m_start, m_end, m_opposite;
    Point<double, 3> m_foot;  ///< of the corner opposite, on the edge
    double m_length = 0;
};

double surfaceOf(const std::vector<Box>& boxes) {
    return std::accumulate(boxes.begin(), boxes.end(), 0.0,
                           [](double sum, const Box& box) { return sum + box.halfSurface(); });
}

/// Returns no boxes where it is better to keep the triangle whole.
std::vector<Box> slicesWorthIt(const Corners& corners, double length) {
    const Lengthwise lengthwise(corners);
    if (!(lengthwise.length() > length)) {
        return {};
    }
    std::vector<Box> slices = lengthwise.slices(length);
    return surfaceOf(slices) < MOST_KEPT * boxOf(corners).halfSurface() ? slices : std::vector<Box>();
}

}  // namespace

TriangleBoxes::TriangleBoxes(std::uint32_t count, const TriangleSource& source) {
    if (!formAll(count, source)) {
        Known known(count, source);
        form(count, source,
             [&known](std::uint32_t triangle, const Corners& corners) { return known.add(triangle, corners); });
    }
    if (isCrowded()) {
        slice(count, source);
    }
}

bool TriangleBoxes::formAll(std::uint32_t count, const TriangleSource& source) {
    std::vector<std::uint64_t> hashes;
    hashes.reserve(count);
    form(count, source, [&hashes](std::uint32_t /*triangle*/, const Corners& corners) {
        hashes.push_back(hashOf(corners));
        return true;
    });
    return !mayRepeat(std::move(hashes));
}

template <class IsNew>
void TriangleBoxes::form(std::uint32_t count, const TriangleSource& source, const IsNew& isNew) {
    numbers.assign(count, NO_BOX);
    isPaired.assign(count, false);
    boxes.clear();
    boxes.reserve(count / 2 + 1);
    all = Box();
    Corners corners;
    double sizes = 0;
    std::uint32_t taken = 0;
    bool isOpen = false;  // the last box holds the previous triangle and no other
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!source.corners(i, corners) || !isNew(i, corners)) {
            isOpen = false;
            continue;
        }
        const Box box = boxOf(corners);
        all.add(box);
        sizes += 2 * box.halfSize();
        ++taken;
        addBox(i, box, isOpen);
    }
    typicalSize = taken > 0 ? sizes / taken : 0;
}

void TriangleBoxes::addBox(std::uint32_t triangle, const Box& box, bool& isOpen) {
    if (isOpen && areWorthJoining(boxes.back(), box)) {
        boxes.back().add(box);
        isPaired[triangle - 1] = true;
        isOpen = false;
    } else {
        numbers[triangle] = static_cast<std::uint32_t>(boxes.size());
        boxes.push_back(box);
        isOpen = true;
    }
}

bool TriangleBoxes::isCrowded() const {
    return surfaceOf(boxes) > CROWD * all.halfSurface();
}

void TriangleBoxes::slice(std::uint32_t count, const TriangleSource& source) {
    std::vector<std::uint32_t> taken;
    double lengths = 0;
    Corners corners;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (numbers[i] != NO_BOX || (i > 0 && isPaired[i - 1])) {
            taken.push_back(i);
            source.corners(i, corners);
            lengths += Lengthwise(corners).length();
        }
    }
    const double length = std::max(SHORTEST_SLICE * 2 * all.halfSize(), lengths / MOST_SLICES);
    boxes.clear();
    isPaired.assign(count, false);
    bool isOpen = false;
    for (std::size_t k = 0; k < taken.size(); ++k) {
        source.corners(taken[k], corners);
        const std::vector<Box> slices = slicesWorthIt(corners, length);
        isOpen = isOpen && taken[k] == taken[k - 1] + 1;
        if (slices.empty()) {
            numbers[taken[k]] = NO_BOX;
            addBox(taken[k], boxOf(corners), isOpen);
        } else {
            addSlices(taken[k], slices);
            isOpen = false;
        }
    }
}

void TriangleBoxes::addSlices(std::uint32_t triangle, const std::vector<Box>& slices) {
    numbers[triangle] = static_cast<std::uint32_t>(boxes.size());
    for (std::size_t i = 1; i < slices.size(); ++i) {
        furtherOf.push_back(triangle);
        numbers.push_back(static_cast<std::uint32_t>(boxes.size() + i));
    }
    boxes.insert(boxes.end(), slices.begin(), slices.end());
}

}  // namespace Veltrani::KelvoScreenDetail
