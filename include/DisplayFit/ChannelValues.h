#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"
#include "KelvoControl/LensNumbers.h"

#include <optional>

class ProjectorConfig;

namespace Veltrani::DisplayFit {

/// The four bounds of a screen area, in the screen's normalised 2D parameters.
struct AreaBounds {
    double left = 0;
    double right = 1;
    double bottom = 0;
    double top = 1;
};

/// The angles of the edges of a picture against the forward direction, radians.
struct FrustumAngles {
    double left = 0;
    double right = 0;
    double bottom = 0;
    double top = 0;
};

/// The geometry of one channel, as its configuration entry states it: what a fit starts from and what it returns.
struct ChannelValues {
    Point<double, 3> position;     ///< world frame, native units
    Point<double, 3> orientation;  ///< angles Z, X, Y for `Veltrani::rotationZXY`, radians
    FrustumAngles frustum;         ///< not used where there is a lens
    AreaBounds area;               ///< `ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED` where not configured
    /// The lens that was calibrated, of displays whose channels have one; its file is not written by a fit.
    std::optional<LensNumbers> lens;

    /// Reads an entry, without its lens.
    [[nodiscard]] static ChannelValues of(const ProjectorConfig& projector);
};

}  // namespace Veltrani::DisplayFit
