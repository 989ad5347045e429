#include "DisplayReport/coverage/PitchHints.h"

#include <algorithm>

namespace Veltrani::DisplayReport {

namespace {

/// Cells of the picture, each with a piece of its own.
constexpr std::size_t COLUMNS = 32;
constexpr std::size_t ROWS = 20;
/// A part of a picture, a pixel or two: what is smaller holds no pixel, and its size is rounding.
constexpr double LEAST_PART = 1e-6;

std::size_t cellAt(double place, std::size_t count) {
    return std::min(static_cast<std::size_t>(std::clamp(place, 0.0, 1.0) * static_cast<double>(count)), count - 1);
}

template <class Before>
std::vector<PitchHints::Hint> first(std::vector<PitchHints::Hint> hints, std::size_t most, const Before& before) {
    const auto isEmpty = [](const PitchHints::Hint& hint) { return hint.piece.empty(); };
    hints.erase(std::remove_if(hints.begin(), hints.end(), isEmpty), hints.end());
    const auto end = hints.begin() + static_cast<std::ptrdiff_t>(std::min(most, hints.size()));
    std::partial_sort(hints.begin(), end, hints.end(), before);
    hints.erase(end, hints.end());
    return hints;
}

}  // namespace

PitchHints::PitchHints() : m_least(COLUMNS * ROWS, {0, PictureBox::none()}), m_greatest(m_least) {}

void PitchHints::add(const std::array<Point<double, 2>, 3>& corners, double part, double area) {
    if (!(part >= LEAST_PART)) {
        return;
    }
    const Hint hint{area / part, PictureBox::around(corners)};
    const Point<double, 2> middle = (corners[0] + corners[1] + corners[2]) * (1.0 / 3);
    const std::size_t cell = cellAt(middle[1], ROWS) * COLUMNS + cellAt(middle[0], COLUMNS);
    if (m_least[cell].piece.empty() || hint.ratio < m_least[cell].ratio) {
        m_least[cell] = hint;
    }
    if (hint.ratio > m_greatest[cell].ratio) {
        m_greatest[cell] = hint;
    }
}

std::vector<PitchHints::Hint> PitchHints::least(std::size_t most) const {
    return first(m_least, most, [](const Hint& a, const Hint& b) { return a.ratio < b.ratio; });
}

std::vector<PitchHints::Hint> PitchHints::greatest(std::size_t most) const {
    return first(m_greatest, most, [](const Hint& a, const Hint& b) { return a.ratio > b.ratio; });
}

}  // namespace Veltrani::DisplayReport
