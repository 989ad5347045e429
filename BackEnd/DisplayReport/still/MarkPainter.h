#pragma once

#include "Common/Point.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/TakenAreas.h"

#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

class SceneCamera;
class SceneLegend;
struct DisplayScene;
struct SceneMark;

/// Draws the marks of a scene over everything else of it: lines with their arrows, and words on paper that cover
/// neither each other nor the words that the drawing already has, as long as there is room.
class MarkPainter {
public:
    /// @param pixel what counts as a pixel of a picture of usual size
    MarkPainter(const SceneCamera& camera, const SceneLegend& legend, double pixel);

    void addTo(Drawing& drawing, const DisplayScene& scene);

private:
    void addLine(Drawing& drawing, const SceneMark& mark);
    /// Words are kept off this line of the drawing where there is room elsewhere.
    void keepInSight(const Point<double, 2>& from, const Point<double, 2>& to);
    void addHead(Drawing& drawing, const Drawing::Place& before, const Drawing::Place& tip,
                 const SceneMark& mark) const;
    void addLabel(Drawing& drawing, const SceneMark& mark);
    /// The nearest area at a place that covers no words and no line; one that covers lines where there is no other; the
    /// one beside it where none is free of words.
    [[nodiscard]] PaperArea areaBeside(const Point<double, 2>& place, double width, double height) const;
    [[nodiscard]] bool isFree(const PaperArea& area) const;
    [[nodiscard]] bool hidesNoLine(const PaperArea& area) const;

    const SceneCamera& m_camera;
    const SceneLegend& m_legend;
    double m_pixel;
    TakenAreas m_taken;
    std::vector<Point<double, 2>> m_drawn;  ///< places along the lines, pixels
};

}  // namespace Veltrani::DisplayReport
