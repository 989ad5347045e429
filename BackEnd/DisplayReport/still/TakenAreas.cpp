#include "DisplayReport/still/TakenAreas.h"

#include "DisplayReport/still/StillLibrary.h"

#include <algorithm>

namespace Veltrani::DisplayReport {

PaperArea PaperArea::of(const Drawing::Text& text) {
    constexpr double BELOW = 0.25;  // of the height of a capital letter
    const double width = StillLibrary::get().width(text.text, text.size);
    const double left = text.anchor == Drawing::Anchor::LEFT     ? text.right
                        : text.anchor == Drawing::Anchor::MIDDLE ? text.right - width / 2
                                                                 : text.right - width;
    return {left, text.down - text.size, left + width, text.down + BELOW * text.size};
}

PaperArea PaperArea::around(const Drawing::Place& from, const Drawing::Place& to, double margin) {
    return {std::min(from[0], to[0]) - margin, std::min(from[1], to[1]) - margin, std::max(from[0], to[0]) + margin,
            std::max(from[1], to[1]) + margin};
}

bool PaperArea::overlaps(const PaperArea& other) const {
    return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
}

TakenAreas::TakenAreas(const Drawing& drawing) {
    for (const Drawing::Text& text : drawing.texts) {
        add(PaperArea::of(text));
    }
}

bool TakenAreas::isFree(const PaperArea& area) const {
    return std::none_of(m_areas.begin(), m_areas.end(), [&](const PaperArea& taken) { return taken.overlaps(area); });
}

}  // namespace Veltrani::DisplayReport
