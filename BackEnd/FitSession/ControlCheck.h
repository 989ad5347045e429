#pragma once

#include "DisplayFit/FitResult.h"
#include "FitSession/FrameRegistration.h"
#include "FitSession/MeasuredPoints.h"

#include <vector>

namespace Veltrani::FitSession {

/// What control points say about a fit.
class ControlCheck {
public:
    /// A control point that no registration used is where it should be when it is off by no more than this part of what
    /// the measured points, or all control points, span: the diagonal of the box around them. 1 cm on a wall of 3 m, as
    /// a mark is measured whose place was taken from a drawing; the picture as a whole moves by no more.
    static constexpr double LARGEST_UNUSED_DEVIATION = 1.0 / 300;
    /// Registered ones that are off by more than this part of their spread, as RMS, do not describe one frame well.
    static constexpr double LARGEST_REGISTERED_DEVIATION = 0.01;

    ControlCheck() = delete;

    /// Adds findings about the control points of a fit.
    ///
    /// Registered: one of a station that contradicts the others, and a station whose deviations are large, are
    /// doubtful; where the points of a registered station lie elsewhere nevertheless, the remedy names its control
    /// points. Not registered: those of each station that are not where they should be, doubtful; else a note.
    /// @param frames those of the registration; empty without one
    static void judge(const MeasuredPoints& measured, const std::vector<Registration>& frames,
                      DisplayFit::DisplayFitResult& result);
};

}  // namespace Veltrani::FitSession
