#pragma once

#include "Common/Point.h"
#include "DisplayReport/scene/SceneSurface.h"

#include <optional>
#include <vector>

class ProjectorConfig;
class TargetLocator;

namespace Veltrani::DisplayReport {

/// The pyramid of light of one channel, or of sight where it is described from an eye point. World frame, native units;
/// every point is finite.
struct ChannelFrustum {
    Point<double, 3> apex;  ///< the projector, or the eye
    /// From the apex to the screen through each corner of the picture, from the top left one clockwise; by way of the
    /// mirror where there is one.
    std::vector<std::vector<Point<double, 3>>> edges;
    /// Around the border of the picture, closed: where its rays end.
    std::vector<Point<double, 3>> rim;
    /// The rim below the picture and to its left, each from (0, 0) on.
    std::vector<Point<double, 3>> lowerEdge;
    std::vector<Point<double, 3>> leftEdge;
    /// Where the rays of the picture meet the mirror: a part of its surface. Empty without a mirror.
    std::vector<Point<double, 3>> mirrorVertices;
    std::vector<SceneSurface::Triangle> mirrorTriangles;
};

/// Casts the rays of a channel's true model: those of its projection model with its lens; those of the eye point, bent
/// by the tables of headings; those of the eye point as the mirror reflects them; or those of the frustum that the
/// configuration gives to a channel of a planar display.
class FrustumTracer {
public:
    /// @param locator of the channel; may be null: what the configuration says is used then
    /// @param reach how long rays are drawn where none of the channel meets the screen, above zero; native units;
    ///     beside others that meet it, a ray is drawn as long as the longest of them
    FrustumTracer(const TargetLocator* locator, const ProjectorConfig& projector, double reach);

    /// On the current screen of the `ScreenManager`. None where nothing describes the rays of the channel.
    [[nodiscard]] std::optional<ChannelFrustum> trace() const;

private:
    const TargetLocator* m_locator;
    const ProjectorConfig& m_projector;
    double m_reach;
};

}  // namespace Veltrani::DisplayReport
