#include "DisplayReport/still/MarkPainter.h"

#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/still/SceneLegend.h"
#include "DisplayReport/still/StillLibrary.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

namespace Veltrani::DisplayReport {

namespace {

using P2 = Point<double, 2>;

constexpr Colour PAPER{255, 255, 255};
constexpr double PALE = 0.4;  ///< share of the paper in a pale line
constexpr double THIN = 1.1;
constexpr double THICK = 2.2;
/// Nearer than any surface: what a mark shows counts whether or not a screen stands in front of it.
constexpr double ON_TOP = 1e9;
/// Length of the lines of an arrow's head in heights of a letter, and their angle from the arrow.
constexpr double HEAD_LENGTH = 1.0;
constexpr double HEAD_ANGLE = 24 * std::numbers::pi / 180;
/// Size of words in heights of the legend's letters, and free space around them in their own.
constexpr double LETTER_SHARE = 0.9;
constexpr double AROUND = 0.3;
/// The most of the scene's width that words take.
constexpr double MOST_SHARE = 0.5;
/// Brackets and tails reach that far below the line that letters stand on.
constexpr double BELOW = 0.25;
/// Places that are tried around a mark: that many in a ring, on that many rings.
constexpr int DIRECTIONS = 12;
constexpr int RINGS = 12;
/// The most places of a line that words are kept off.
constexpr double MOST_STEPS = 200;

Colour lineColour(const SceneMark& mark) {
    return mark.stroke == SceneMark::Stroke::PALE ? mixed(mark.colour, PAPER, PALE) : mark.colour;
}

}  // namespace

MarkPainter::MarkPainter(const SceneCamera& camera, const SceneLegend& legend, double pixel)
    : m_camera(camera), m_legend(legend), m_pixel(pixel) {}

void MarkPainter::addTo(Drawing& drawing, const DisplayScene& scene) {
    m_taken = TakenAreas(drawing);
    m_drawn.clear();
    for (const SceneMark& mark : scene.marks) {
        addLine(drawing, mark);
    }
    for (const SceneMark& mark : scene.marks) {
        if (!mark.label.empty()) {
            addLabel(drawing, mark);
        }
    }
}

void MarkPainter::addLine(Drawing& drawing, const SceneMark& mark) {
    const Colour colour = lineColour(mark);
    const double width = (mark.stroke == SceneMark::Stroke::THICK ? THICK : THIN) * m_pixel;
    std::vector<Drawing::Place> drawn;
    for (std::size_t i = 1; i < mark.line.size(); ++i) {
        if (const auto placed = m_camera.placeLine(mark.line[i - 1], mark.line[i])) {
            keepInSight({placed->first[0], placed->first[1] + m_legend.sceneTop()},
                        {placed->second[0], placed->second[1] + m_legend.sceneTop()});
            const Drawing::Place from{placed->first[0], placed->first[1] + m_legend.sceneTop(), ON_TOP};
            const Drawing::Place to{placed->second[0], placed->second[1] + m_legend.sceneTop(), ON_TOP};
            drawing.lines.push_back({from, to, colour, width});
            drawn.push_back(from);
            drawn.push_back(to);
        }
    }
    if (!mark.hasArrow || drawn.empty()) {
        return;
    }
    // The head continues what is seen of the line: the last corner that is not at the tip.
    const Drawing::Place tip = drawn.back();
    const auto before = std::find_if(drawn.rbegin(), drawn.rend(), [&](const Drawing::Place& place) {
        return std::hypot(place[0] - tip[0], place[1] - tip[1]) > m_legend.letterSize() / 2;
    });
    if (before != drawn.rend()) {
        addHead(drawing, *before, tip, mark);
    }
}

void MarkPainter::keepInSight(const P2& from, const P2& to) {
    // As densely as words are high.
    const int steps = 1 + static_cast<int>(std::min(MOST_STEPS, norm(to - from) / m_legend.letterSize()));
    for (int i = 0; i <= steps; ++i) {
        m_drawn.push_back(from + (to - from) * (static_cast<double>(i) / steps));
    }
}

void MarkPainter::addHead(Drawing& drawing, const Drawing::Place& before, const Drawing::Place& tip,
                          const SceneMark& mark) const {
    const double heading = std::atan2(before[1] - tip[1], before[0] - tip[0]);
    const double length = HEAD_LENGTH * m_legend.letterSize();
    const auto end = [&](double angle) {
        return Drawing::Place{tip[0] + length * std::cos(angle), tip[1] + length * std::sin(angle), ON_TOP};
    };
    for (const double side : {-HEAD_ANGLE, HEAD_ANGLE}) {
        drawing.lines.push_back({tip, end(heading + side), lineColour(mark), THICK * m_pixel});
    }
}

void MarkPainter::addLabel(Drawing& drawing, const SceneMark& mark) {
    const auto placed = m_camera.place(mark.labelPlace);
    if (!placed) {
        return;
    }
    const double size = LETTER_SHARE * m_legend.letterSize();
    const double around = AROUND * size;
    const std::string label = SceneLegend::fitting(mark.label, MOST_SHARE * m_legend.sceneWidth(), size);
    const double width = StillLibrary::get().width(label, size) + 2 * around;
    const double height = (1 + BELOW) * size + 2 * around;
    const P2 place{(*placed)[0], (*placed)[1] + m_legend.sceneTop()};
    const PaperArea area = areaBeside(place, width, height);
    m_taken.add(area);
    drawing.boxes.push_back({area.left, area.top, width, height, PAPER});
    drawing.texts.push_back(
        {(area.left + area.right) / 2, area.top + around + size, label, size, mark.colour, Drawing::Anchor::MIDDLE});
    // Words that had to go elsewhere lead back to their place.
    const P2 nearest{std::clamp(place[0], area.left, area.right), std::clamp(place[1], area.top, area.bottom)};
    if (norm(nearest - place) > 2 * size) {
        drawing.lines.push_back({{place[0], place[1], ON_TOP},
                                 {nearest[0], nearest[1], ON_TOP},
                                 mixed(mark.colour, PAPER, PALE),
                                 THIN * m_pixel});
    }
}

PaperArea MarkPainter::areaBeside(const P2& place, double width, double height) const {
    const auto at = [&](double angle, double away) {
        // From the place to the middle of the words, so that they begin that far away.
        const P2 middle{place[0] + std::cos(angle) * (away + width / 2),
                        place[1] - std::sin(angle) * (away + height / 2)};
        return PaperArea{middle[0] - width / 2, middle[1] - height / 2, middle[0] + width / 2, middle[1] + height / 2};
    };
    const double step = m_legend.letterSize();
    std::optional<PaperArea> overLines;
    for (int ring = 0; ring < RINGS; ++ring) {
        for (int i = 0; i < DIRECTIONS; ++i) {
            const PaperArea area = at(2 * std::numbers::pi * i / DIRECTIONS, 0.5 * step + ring * 1.5 * step);
            if (isFree(area)) {
                if (hidesNoLine(area)) {
                    return area;
                }
                overLines = overLines.value_or(area);
            }
        }
    }
    return overLines.value_or(at(0, step / 2));
}

bool MarkPainter::isFree(const PaperArea& area) const {
    const double top = m_legend.sceneTop();
    return area.left >= 0 && area.right <= m_legend.sceneWidth() && area.top >= top &&
           area.bottom <= top + m_legend.sceneHeight() && m_taken.isFree(area);
}

bool MarkPainter::hidesNoLine(const PaperArea& area) const {
    return std::none_of(m_drawn.begin(), m_drawn.end(), [&](const P2& place) {
        return place[0] > area.left && place[0] < area.right && place[1] > area.top && place[1] < area.bottom;
    });
}

}  // namespace Veltrani::DisplayReport
