#pragma once

#include "Common/Point.h"
#include "DisplayLight/EyePlaces.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Veltrani::DisplayLight {

/// Places of the screen in rows, whose light is wanted.
struct PlaceGrid {
    std::size_t width = 0;         ///< places of a row
    std::vector<EyePlace> places;  ///< row by row
    /// (s, t) of the places, as many as these; empty where they are not known.
    std::vector<Point<double, 2>> parameters;
    /// Which part of the surface each place belongs to: those beside each other in the grid are so on the screen within
    /// one part alone. Empty for one part.
    std::vector<std::uint32_t> parts;

    [[nodiscard]] std::size_t rows() const { return width > 0 ? places.size() / width : 0; }
    /// Whether two places belong to one part.
    [[nodiscard]] bool isOnePart(std::size_t i, std::size_t other) const {
        return parts.empty() || parts[i] == parts[other];
    }
};

}  // namespace Veltrani::DisplayLight
