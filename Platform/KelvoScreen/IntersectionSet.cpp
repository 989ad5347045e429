#include "KelvoScreen/IntersectionSet.h"

#include <stdexcept>
#include <string>

IntersectionSet::IntersectionSet() = default;

IntersectionSet::IntersectionSet(std::initializer_list<Intersection> intersections) {
    for (const Intersection& intersection : intersections) {
        add(intersection);
    }
}

void IntersectionSet::add(const Intersection& intersection) {
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

bool IntersectionSet::empty() const {
    return m_size == 0;
}

std::size_t IntersectionSet::size() const {
    return m_size;
}

const Intersection& IntersectionSet::first() const {
    return (*this)[0];
}

const Intersection& IntersectionSet::operator[](std::size_t i) const {
    if (i >= m_size) {
        throw std::logic_error("intersection " + std::to_string(i) + " asked of a set of " + std::to_string(m_size));
    }
    return at(i);
}

const Intersection& IntersectionSet::at(std::size_t i) const {
    return i < INLINE_CAPACITY ? m_inline[i] : m_further[i - INLINE_CAPACITY];
}

Intersection& IntersectionSet::at(std::size_t i) {
    return i < INLINE_CAPACITY ? m_inline[i] : m_further[i - INLINE_CAPACITY];
}
