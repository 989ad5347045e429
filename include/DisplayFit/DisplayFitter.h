#pragma once

#include "DisplayFit/FitOptions.h"
#include "DisplayFit/FitResult.h"
#include "DisplayFit/MeasuredPoint.h"

#include <functional>
#include <span>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DisplayFit {

/// Finds the values of a display's channels that agree with measured points, by weighted least squares.
///
/// | Kind of display                          | Default                                    | Residuals     |
/// |------------------------------------------|--------------------------------------------|---------------|
/// | `PlanarBasic`, `PlanarAdvanced`          | area                                       | on the screen |
/// | `Spherical`                              | orientation, frustum                       | picture       |
/// | `SphericalCollimated`                    | orientation, frustum                       | on the screen |
/// | `ProjectorCentric`, `3D`, without a file | position, orientation, frustum             | picture       |
/// | `ProjectorCentric`, `3D`, with a file    | position, orientation, frustum, distortion | picture       |
/// | `CustomPlanar`                           | refused                                    |               |
///
/// The horizontal shift of an `Equidistant` lens is held where its orientation is solved: a turn does the same.
/// The eye of a spherical display, its mirror and its tables are held. Each channel is solved by itself: first with a
/// robust loss, from the configured values and from those of a direct linear transform where these are far off; then
/// points that deviate too much are rejected, and the others are solved by plain least squares.
///
/// The screen of the display must be the current one of the `ScreenManager`. The configuration is not changed. The
/// solver is opened at the first call, and starts no thread.
///
///     const DisplayFitResult result = DisplayFitter(options).fit(*config, points);
class DisplayFitter {
public:
    /// Called before each channel with its number among those to be solved, and their number; once more at the end.
    using Progress = std::function<void(std::size_t, std::size_t)>;

    /// Throws `VeltraniException` for a rejection that is not above zero.
    explicit DisplayFitter(FitOptions options = {}, Progress progress = {});

    /// What points cannot determine is a finding of its channel, with the outcome UNUSABLE, and keeps no other channel
    /// from being solved.
    ///
    /// Throws `VeltraniException` for a point of a channel that the configuration does not have, a number that is not
    /// finite, a covariance that is none, deviations that some points state and others do not, and a display without
    /// target data; what the lens files throw, and what opening the solver throws.
    [[nodiscard]] DisplayFitResult fit(const XMLConfigManager& config, std::span<const MeasuredPoint> points) const;

    /// Returns the groups that are solved unless the options state others; none for a kind that cannot be solved.
    [[nodiscard]] static SolvedGroups defaultGroups(const XMLConfigManager& config, const ProjectorConfig& projector);

private:
    FitOptions m_options;
    Progress m_progress;
};

}  // namespace Veltrani::DisplayFit
