#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"
#include "FitSession/MeasuredPoints.h"

#include <optional>
#include <string>
#include <vector>

namespace Veltrani::FitSession {

/// What may differ between the frame of a station and that of the display.
enum class RegistrationKind {
    RIGID,       ///< rotation and translation
    SIMILARITY,  ///< and the scale, which is that of the instrument then
};

/// How the frame of one station lies in that of the display, and how well its control points say so.
struct Registration {
    /// How far a control point is from where it should be, in native units.
    struct Deviation {
        double distance = 0;
        int line = 0;  ///< of the table
    };

    /// A control point that contradicts the others.
    struct Contradiction {
        int line = 0;            ///< of the table
        double distance = 0;     ///< from where the others place it, native units
        double rmsOfOthers = 0;  ///< what these deviate without it, native units
    };

    std::string set;                    ///< the station
    double scale = 1;                   ///< of its lengths
    Matrix<double, 3> rotation;         ///< display from station, right-handed
    Point<double, 3> translation;       ///< in native units
    double rms = 0;                     ///< of the deviations
    double span = 0;                    ///< root mean square distance of the known places from their middle
    std::vector<Deviation> deviations;  ///< one for each control point
    std::vector<std::string> remarks;   ///< what the control points do not show, one sentence each, UTF-8
    /// The one that is wrong, where one is: the fit is doubtful then.
    std::optional<Contradiction> contradiction;

    /// scale * rotation * point + translation.
    [[nodiscard]] Point<double, 3> displayFromStation(const Point<double, 3>& point) const;
};

/// Finds the frames of stations by their control points, each for itself: the rotation, translation and, if it may
/// differ, scale with the smallest sum of squared deviations in the frame of the display, in closed form (S. Umeyama,
/// "Least-squares estimation of transformation parameters between two point patterns", 1991).
class FrameRegistration {
public:
    /// Control points whose spread across a line is less than this part of that along it determine no rotation.
    static constexpr double THINNEST_SPREAD = 1e-3;
    /// Deviations above this part of the spread of the control points are none of measuring.
    static constexpr double LARGEST_RELATIVE_DEVIATION = 0.05;

    FrameRegistration() = delete;

    /// The frame of one station.
    ///
    /// Throws `VeltraniException`, with what is wrong and the remedy, for fewer than 3 control points, for such that
    /// lie at one place or on a line, and where they contradict the kind or each other by far: lengths in another unit,
    /// a mirrored frame, marks that were exchanged, two stations, some that are wrong, with their lines.
    /// @param set its name, for messages
    [[nodiscard]] static Registration of(const std::string& set, const std::vector<ControlPoint>& controls,
                                         RegistrationKind kind);

    /// Moves all points, with their covariances, into the frame of the display; those of the same set have the same
    /// frame. Throws what `of` throws, also for a set without control points; nothing has been moved then.
    /// @return one for each set, in the order of their names
    static std::vector<Registration> apply(MeasuredPoints& points, RegistrationKind kind);
};

}  // namespace Veltrani::FitSession
