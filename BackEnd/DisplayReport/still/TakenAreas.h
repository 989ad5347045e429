#pragma once

#include "DisplayReport/still/Drawing.h"

#include <vector>

namespace Veltrani::DisplayReport {

/// A rectangle of a drawing; pixels from its top left corner.
struct PaperArea {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;

    /// What a text covers, brackets and tails below its line included. Opens the drawing libraries, as
    /// `StillLibrary::get`.
    [[nodiscard]] static PaperArea of(const Drawing::Text& text);
    /// The least rectangle around a line, and so much more on every side.
    [[nodiscard]] static PaperArea around(const Drawing::Place& from, const Drawing::Place& to, double margin);

    /// False where they touch alone.
    [[nodiscard]] bool overlaps(const PaperArea& other) const;
};

/// What of a drawing is covered, so that words find places beside each other.
class TakenAreas {
public:
    TakenAreas() = default;
    /// Covered by the texts of a drawing.
    explicit TakenAreas(const Drawing& drawing);

    void add(const PaperArea& area) { m_areas.push_back(area); }
    [[nodiscard]] bool isFree(const PaperArea& area) const;

private:
    std::vector<PaperArea> m_areas;
};

}  // namespace Veltrani::DisplayReport
