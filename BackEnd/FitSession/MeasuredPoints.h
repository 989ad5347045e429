#pragma once

#include "Common/Point.h"
#include "DisplayFit/MeasuredPoint.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Veltrani::FitSession {

using DisplayFit::MeasuredPoint;

/// A mark whose place in the frame of the display is known, as it was measured from a station.
struct ControlPoint {
    std::string set;            ///< the station
    Point<double, 3> measured;  ///< in native units, frame of the station
    Point<double, 3> known;     ///< in native units, frame of the display
    int line = 0;               ///< of the table
};

/// What a table of measurements holds.
struct MeasuredPoints {
    /// In the order of the table, in the frame of their station until they are registered. All of them state a
    /// covariance or none does, and so with the deviation of the place in the picture.
    std::vector<MeasuredPoint> points;
    std::vector<ControlPoint> controls;  ///< in the order of the table

    std::size_t rows = 0;              ///< below the header
    std::size_t unmapped = 0;          ///< rows passed over for a `mapped` of 0
    std::size_t withoutPicture = 0;    ///< rows passed over that have no place in a picture, as samples of outlines
    std::vector<std::string> ignored;  ///< names of columns that mean nothing here
};

/// Points of which no two are measurements of the same place.
struct CombinedPoints {
    std::vector<MeasuredPoint> points;            ///< in the order of their first rows; `row` is that one
    std::vector<std::vector<std::size_t>> lines;  ///< of the table: those that each point was made of, ascending
};

/// Combines repeated measurements: points of one channel and one place in its picture, bit for bit, become their mean,
/// weighted by their inverse covariances if they state them. To be called when all of them are in one frame.
///
/// Measurements that contradict each other by their own covariances, one of them by more than 4 standard deviations of
/// its difference from the mean, stay apart: one of them is wrong, and the fit finds out which. So do those without
/// covariances of which one is further from the mean than a tenth of what the points of the channel cover.
/// @param pulse called now and then, as it may take seconds for a million points; what it throws comes out
[[nodiscard]] CombinedPoints combineRepeated(const std::vector<MeasuredPoint>& points,
                                             const std::function<void()>& pulse = nullptr);

}  // namespace Veltrani::FitSession
