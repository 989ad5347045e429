#include "KelvoScreen/IntersectionSet.h"

#include <limits>
#include <ostream>
#include <stdexcept>
#include <string>

std::ostream& operator<<(std::ostream& out, const Intersection& intersection) {
    const auto precision = out.precision(std::numeric_limits<double>::max_digits10);
    out << intersection.point << " at t " << intersection.t;
    out.precision(precision);
    return out;
}

IntersectionSet::IntersectionSet(std::initializer_list<Intersection> intersections) {
    for (const Intersection& intersection : intersections) {
        add(intersection);
    }
}

void IntersectionSet::insert(Intersection intersection) {
    if (m_size >= INLINE_CAPACITY) {
        if (m_further.capacity() == 0) {
            m_further.reserve(FURTHER_CAPACITY);
        }
        m_further.push_back(intersection);
    }
    std::size_t place = m_size++;
    for (; place > 0 && intersection.t < at(place - 1).t; --place) {
        at(place) = at(place - 1);
    }
    at(place) = intersection;
}

void IntersectionSet::refuse(std::size_t i) const {
    throw std::logic_error("intersection " + std::to_string(i) + " asked of a set of " + std::to_string(m_size));
}
