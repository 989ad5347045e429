#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/ChannelPalette.h"
#include "DisplayReport/basics/Extent.h"
#include "DisplayReport/scene/ChannelFrustum.h"
#include "DisplayReport/scene/PictureLattice.h"
#include "DisplayReport/scene/SceneLight.h"
#include "DisplayReport/scene/SceneMarks.h"
#include "DisplayReport/scene/SceneResiduals.h"
#include "DisplayReport/scene/SceneSurface.h"
#include "DisplayReport/targets/TargetSurvey.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// A point cloud as a picture shows it.
struct SceneCloud {
    std::vector<Point<double, 3>> points;  ///< finite
};

/// How a piece of a line is drawn.
enum class PieceLook : std::uint8_t {
    WHOLE = 0,
    DASHED = 1,  ///< no light arrives there
    NONE = 2,
};

/// A channel as a picture shows it.
struct SceneChannel {
    ChannelTargets targets;   ///< perhaps thinned
    std::size_t placed = 0;   ///< targets of its grid, before they were thinned
    std::size_t samples = 0;  ///< of its outline, before they were thinned
    Colour colour;
    int width = 0;   ///< of its picture, pixels
    int height = 0;  ///< of its picture, pixels
    std::optional<ChannelFrustum> frustum;
    /// As long as `targets.boundary`: true for samples that lie on a continuation of the screen past its edge, where no
    /// light arrives. A line to or from such a sample is drawn as one that is none of the screen, or not at all.
    std::vector<bool> beyond;
    /// As long as the rim of `frustum`, or empty where there is no screen: how the piece from each end of a ray to the
    /// next one is drawn. Where rays pass the screen it is dashed; it is left out there in a channel whose outline is
    /// dashed already, beside which it would run: two dashed lines look like a whole one.
    std::vector<PieceLook> rimPieces;
    /// An arrow on the screen towards the upper edge of its picture: shaft and head, each a line. Empty where its light
    /// is not known, or misses.
    std::vector<std::vector<Point<double, 3>>> upMark;
    PictureLattice lattice;          ///< where its picture lands; empty where its light is not known
    std::vector<std::string> facts;  ///< its angles or area, or its residuals, in words, a line each; mostly empty
    std::vector<SceneResidual> residuals;  ///< its measured points; empty without a fit
};

/// A place with a name: the eye point.
struct ScenePlace {
    std::string name;
    Point<double, 3> point;
};

/// The sphere of a mirror; the parts of it that are used stand with the channels.
struct SceneMirror {
    Point<double, 3> centre;
    double radius = 0;
};

/// Everything that a picture of a display shows, collected once. World frame, native units; all texts UTF-8; no
/// coordinate is NaN or infinite, and none is so far away that a picture of the screen could not hold it.
struct DisplayScene {
    std::string title;
    std::string unit;              ///< name of the native unit; may be empty
    double unitInMillimetres = 0;  ///< 0 for a unit without a length of its own
    TargetPlan plan;
    int targetStep = 1;                  ///< every so many columns and rows of the targets are shown
    int outlineStep = 1;                 ///< every so many samples of the outlines
    std::vector<SceneSurface> surfaces;  ///< the measured screen after the content one
    std::optional<SceneCloud> cloud;
    std::vector<SceneChannel> channels;
    std::vector<ScenePlace> eyes;
    std::optional<SceneMirror> mirror;
    std::vector<SceneMark> marks;            ///< of the drawing of axes; empty where none is wanted
    std::optional<ResidualScale> residuals;  ///< how those of the channels are drawn; empty where none are
    std::optional<SceneLight> light;         ///< added up on the last one of the surfaces; pages alone show it
    std::vector<std::string> notes;          ///< what is wrong, missing or left out, one sentence each
    bool complete = true;                    ///< false when something is wrong or missing

    /// The box that a picture of the display shows: around the screen and whatever stands near it. The unit cube around
    /// the origin where there is nothing.
    [[nodiscard]] Extent frame() const;
    /// The points that the frame is around.
    [[nodiscard]] std::vector<Point<double, 3>> framedPoints() const;
    /// The box around the screen; around targets and outlines where there is none; empty where there is nothing.
    [[nodiscard]] Extent core() const;
};

}  // namespace Veltrani::DisplayReport
