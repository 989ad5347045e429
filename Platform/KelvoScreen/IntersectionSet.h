#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <vector>

/// A point where a ray meets a surface.
struct Intersection {
    Point<double, 3> point;  ///< world frame, native units
    double t = 0;            ///< position along the ray: point = from + t (to - from)
};

/// "(0, 4, 1) at t 0.5", with all digits.
std::ostream& operator<<(std::ostream& out, const Intersection& intersection);

/// The intersections of a ray with a surface, nearest first.
///
/// One or two hits, the usual case, are held without any allocation; up to eight cost one.
class IntersectionSet {
public:
    IntersectionSet() = default;
    IntersectionSet(std::initializer_list<Intersection> intersections);

    /// Inserts by t; among equal t the earlier insertion comes first.
    void add(const Intersection& intersection) {
        if (m_size == 0 || (m_size == 1 && !(intersection.t < m_inline.hits[0].t))) {
            m_inline.hits[m_size++] = intersection;
        } else {
            insert(intersection);
        }
    }

    [[nodiscard]] bool empty() const { return m_size == 0; }
    [[nodiscard]] std::size_t size() const { return m_size; }

    /// Returns the nearest one. Throws `std::logic_error` when the set is empty.
    [[nodiscard]] const Intersection& first() const { return (*this)[0]; }

    /// Number i, nearest first. Throws `std::logic_error` when there is none.
    [[nodiscard]] const Intersection& operator[](std::size_t i) const {
        if (i >= m_size) {
            refuse(i);
        }
        return at(i);
    }

private:
    static constexpr std::size_t INLINE_CAPACITY = 2;
    /// The number of hits behind the inline ones that the first allocation holds: few surfaces are met more often than
    /// eight times in all.
    static constexpr std::size_t FURTHER_CAPACITY = 6;

    /// Inserts into a set that is not empty.
    void insert(Intersection intersection);
    [[noreturn]] void refuse(std::size_t i) const;

    [[nodiscard]] const Intersection& at(std::size_t i) const {
        return i < INLINE_CAPACITY ? m_inline.hits[i] : m_further[i - INLINE_CAPACITY];
    }
    [[nodiscard]] Intersection& at(std::size_t i) {
        return i < INLINE_CAPACITY ? m_inline.hits[i] : m_further[i - INLINE_CAPACITY];
    }

    /// Room that is not cleared first: a set is made for every ray.
    union Room {
        Room() noexcept {}  // NOLINT(modernize-use-equals-default): the default would be deleted
        std::array<Intersection, INLINE_CAPACITY> hits;
    };

    Room m_inline;                        ///< the first `m_size` are set
    std::vector<Intersection> m_further;  ///< those behind the inline ones
    std::size_t m_size = 0;
};
