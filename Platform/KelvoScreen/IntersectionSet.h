#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <vector>

/// Where a ray meets a surface.
struct Intersection {
    Point<double, 3> point;  ///< world frame, native units
    double t = 0;            ///< position along the ray: point = from + t (to - from)
};

/// The intersections of a ray with a surface, nearest first.
///
/// One or two hits, the usual case, are held without any allocation; up to eight cost one.
class IntersectionSet {
public:
    IntersectionSet();
    IntersectionSet(std::initializer_list<Intersection> intersections);

    /// Inserts by t; among equal t the earlier insertion comes first.
    void add(const Intersection& intersection);

    [[nodiscard]] bool empty() const;
    [[nodiscard]] std::size_t size() const;

    /// The nearest one. Throws `std::logic_error` when the set is empty.
    [[nodiscard]] const Intersection& first() const;

    /// Number i, nearest first. Throws `std::logic_error` when there is none.
    [[nodiscard]] const Intersection& operator[](std::size_t i) const;

private:
    static constexpr std::size_t INLINE_CAPACITY = 2;
    /// Behind the inline ones, with the first allocation: few surfaces are met more often than eight times in all.
    static constexpr std::size_t FURTHER_CAPACITY = 6;

    [[nodiscard]] const Intersection& at(std::size_t i) const;
    [[nodiscard]] Intersection& at(std::size_t i);

    std::array<Intersection, INLINE_CAPACITY> m_inline;
    std::vector<Intersection> m_further;  ///< those behind the inline ones
    std::size_t m_size = 0;
};
