#pragma once

#include "Common/Point.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/TakenAreas.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

class NearnessMap;
class SceneCamera;
class SceneLegend;
struct DisplayScene;
struct SceneChannel;

/// Draws on the picture of every channel its number and its name, and an arrow to its top: where it is seen, and beside
/// those of others that overlap it as long as there is room; the smallest picture chooses first. A picture that is
/// narrower than its name has its number.
class PicturePainter {
public:
    /// @param pixel what counts as a pixel of a picture of usual size
    PicturePainter(const DisplayScene& scene, const SceneCamera& camera, const SceneLegend& legend, double pixel);

    /// @param drawing with the screen already, which hides pictures
    void addTo(Drawing& drawing);

private:
    /// A way on the screen that starts where the name stands and leads towards the top of the picture.
    using Way = std::vector<Point<double, 3>>;

    /// The numbers of the channels by the widths of their pictures.
    [[nodiscard]] std::vector<std::size_t> smallestFirst() const;
    void addChannel(Drawing& drawing, const NearnessMap& nearest, std::size_t number);
    /// The best way for words of that width, as it is seen; empty where there is none.
    [[nodiscard]] std::vector<Drawing::Place> chosen(const SceneChannel& channel, const NearnessMap& nearest,
                                                     double width) const;
    [[nodiscard]] PaperArea areaAt(const Drawing::Place& middle, double width) const;
    [[nodiscard]] bool isFree(const std::vector<Drawing::Place>& way) const;
    /// Ways from the places of the picture that come into question, the best first.
    [[nodiscard]] std::vector<Way> waysOf(const SceneChannel& channel) const;
    [[nodiscard]] Way wayUp(const SceneChannel& channel, std::size_t target) const;
    /// In the drawing, as far as it is seen; empty where its start is hidden.
    [[nodiscard]] std::vector<Drawing::Place> shown(const Way& way, const NearnessMap& nearest) const;
    void addArrow(Drawing& drawing, const std::vector<Drawing::Place>& way, const Colour& colour) const;
    [[nodiscard]] std::string labelOf(const SceneChannel& channel, std::size_t number) const;
    [[nodiscard]] double widthInPicture(const SceneChannel& channel) const;
    [[nodiscard]] std::optional<Drawing::Place> placed(const Point<double, 3>& world) const;
    [[nodiscard]] double labelSize() const;

    const DisplayScene& m_scene;
    const SceneCamera& m_camera;
    const SceneLegend& m_legend;
    double m_pixel;
    TakenAreas m_taken;
};

/// How far from each other neighbouring targets of a channel are drawn, pixels: the median along the columns or along
/// the rows, whichever is less. Infinite where there are no neighbours.
/// @param step of the columns and rows that the scene has
[[nodiscard]] double targetSpacing(const SceneChannel& channel, const SceneCamera& camera, int step);

}  // namespace Veltrani::DisplayReport
