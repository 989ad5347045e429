#pragma once

#include "DisplayReport/coverage/PictureBox.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Veltrani::DisplayReport {

/// Where in a picture pixels are likely to be the smallest and the largest, by the pieces of the surface that its light
/// was cut into: places that a lattice over the picture may pass by.
class PitchHints {
public:
    struct Hint {
        double ratio = 0;  ///< area on the screen, in square native units, by part of the picture
        PictureBox piece;  ///< around it
    };

    PitchHints();

    /// @param corners of a piece in the picture
    /// @param part of the picture that it is
    /// @param area on the screen
    void add(const std::array<Point<double, 2>, 3>& corners, double part, double area);

    /// At most so many from different parts of the picture, the most extreme one first.
    [[nodiscard]] std::vector<Hint> least(std::size_t most) const;
    [[nodiscard]] std::vector<Hint> greatest(std::size_t most) const;

private:
    std::vector<Hint> m_least;  ///< by cell of the picture; with an empty box where there is none
    std::vector<Hint> m_greatest;
};

}  // namespace Veltrani::DisplayReport
