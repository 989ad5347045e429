#pragma once

#include "Common/Point.h"
#include "DisplayFit/ChannelValues.h"
#include "DisplayFit/FitOptions.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayFit {

/// How far a fit may be relied upon. The numbers are those of the program's exit.
enum class FitOutcome : int {
    GOOD = 0,
    DOUBTFUL = 1,  ///< there are outliers or values that the points hardly determine
    UNUSABLE = 3,  ///< nothing was solved, or what was solved says nothing
};

/// Something that a reader must know about a fit.
struct FitFinding {
    enum class Kind {
        CHANGED_FOR_PLANE,     ///< two numbers are held, since the points show no depth, or no more than their noise
        OUTLIERS,              ///< points were rejected
        ILL_DETERMINED,        ///< a combination of values is hardly determined, or a part of the picture by it
        DEVIATIONS_TOO_SMALL,  ///< residuals are larger than the stated deviations explain
        BEYOND_FOLD,           ///< the lens folds within its picture, or before a point that took part
        TOO_FEW_POINTS,
        POINTS_ON_LINE,
        POINTS_ON_PLANE,
        NOT_DETERMINED,  ///< a combination of values is not determined at all
        U_REVERSED,      ///< left and right of the picture are exchanged
        V_REVERSED,      ///< bottom and top of the picture are exchanged
        UV_EXCHANGED,
        AXIS_MIRRORED,         ///< x, y or z of the points has the wrong sign
        AXES_EXCHANGED,        ///< x, y, z of the points are in another order
        CHANNELS_EXCHANGED,    ///< the points are those of another channel
        WRONG_UNIT,            ///< lengths of the points are in another unit
        DEVIATIONS_TOO_LARGE,  ///< the stated deviations are as large as what the points cover
        FRAME_MOVED,           ///< all points are displaced by one movement
        FRAMES_MIXED,          ///< some points of a channel are displaced by one movement, the others are not
        FRAME_NOT_REGISTERED,  ///< control points are not where they should be, and were not used
        CONTROL_POINT_OFF,     ///< control points contradict each other, or one is not where it should be
        IMPLAUSIBLE_VALUES,    ///< what was solved can be no projector
        NOT_FITTING,           ///< no values explain the points
        KIND_NOT_SOLVED,       ///< channels of this kind, or with these values, cannot be solved
    };

    Kind kind = Kind::OUTLIERS;
    FitOutcome outcome = FitOutcome::GOOD;  ///< what it makes of the channel: GOOD for a note
    std::string text;                       ///< what was found, one sentence, UTF-8
    std::string remedy;                     ///< what to do about it, UTF-8; may be empty

    /// "TOO_FEW_POINTS" and so on: its name in reports.
    [[nodiscard]] static std::string nameOf(Kind kind);
};

/// One number of a channel.
struct FittedValue {
    enum class Quantity { LENGTH, ANGLE, PIXELS, NUMBER };
    /// "length", "angle", "pixels" or "number": its name in reports.
    [[nodiscard]] static std::string nameOf(Quantity quantity);

    std::string name;                      ///< "position x", "orientation z", "frustum left", "fx", "k1", "area left"
    Quantity quantity = Quantity::NUMBER;  ///< native units, radians, pixels of the calibration picture, none
    double before = 0;
    double after = 0;
    /// Standard deviation; empty for a value that is held.
    std::optional<double> deviation;
};

/// One measured point of a channel.
struct PointResidual {
    std::size_t point = 0;  ///< index among the given points
    /// The place in the picture that leads to the measured point, minus the stated one; pixels, +u right, +v up. NaN
    /// where no place of the picture leads there.
    Point<double, 2> pixelsBefore;
    Point<double, 2> pixelsAfter;
    /// From the measured point to where the stated place of the picture meets the screen there; native units. NaN where
    /// it does not.
    Point<double, 3> screenBefore;
    Point<double, 3> screenAfter;
    double size = 0;  ///< of the residual after, in standard deviations
    bool isOutlier = false;
};

/// Sizes of the residuals of a channel.
struct ResidualSummary {
    double rms = 0;
    double median = 0;
    double largest = 0;
    std::size_t unmapped = 0;  ///< points without a residual, which the others do not count
};

/// The combination of values that the points determine worst.
struct WorstCombination {
    std::string text;             ///< "position along the axis and frustum width", UTF-8
    std::string remedy;           ///< "add points at another depth"
    std::vector<double> weights;  ///< one for each `solvedNames`; sum of the squares 1, values in their scale
    std::vector<std::string> solvedNames;
    /// The standard deviation along it: of the value that has most of it, which `deviatingName` names.
    double deviation = 0;
    std::string deviatingName;
    FittedValue::Quantity quantity = FittedValue::Quantity::NUMBER;
    /// Of the Jacobian with columns of length 1: largest singular value over smallest.
    double scaledCondition = std::numeric_limits<double>::infinity();
};

/// The fit of one channel.
struct ChannelFit {
    std::size_t channel = 0;  ///< in the order of the configuration
    std::string name;         ///< UTF-8
    std::string projectorId;  ///< UTF-8
    SolvedGroups solved;
    bool holdsSquarePixels = false;
    bool holdsHorizontalShift = false;
    FitOutcome outcome = FitOutcome::UNUSABLE;
    ChannelValues before;
    /// Equal to `before` where nothing was solved, and where the two show every point at the same place to 1e-10 of the
    /// picture: to fit again what was fitted and saved changes nothing. With an outcome UNUSABLE it is not to be relied
    /// upon.
    ChannelValues after;
    bool isSolved = false;                 ///< false where `after` is only a copy of `before`
    std::vector<FittedValue> values;       ///< of the groups that the kind has, held ones included
    std::vector<PointResidual> residuals;  ///< in the order of the given points
    ResidualSummary pixelsBefore;          ///< pixels; of all points
    ResidualSummary pixelsAfter;           ///< of the inliers
    ResidualSummary screenBefore;          ///< native units; of all points
    ResidualSummary screenAfter;           ///< of the inliers
    std::size_t outliers = 0;
    std::size_t degreesOfFreedom = 0;  ///< two for each inlier, less the values that were solved
    /// Square root of the weighted squared residuals per degree of freedom: 1 is expected where deviations are stated.
    /// Where they are not, the deviation of one coordinate in the picture, pixels (on the screen, native units, for
    /// planar and collimated displays).
    double residualFactor = 0;
    bool hasStatedDeviations = false;
    /// Of the solved values, in the order of `worst.solvedNames`, row by row: orientation about the axes of the
    /// projector (right, forward, up), position along them, then the picture's width, height and shifts.
    std::vector<double> covariance;
    WorstCombination worst;
    std::vector<FitFinding> findings;
    int iterations = 0;
};

/// The fit of a display.
struct DisplayFitResult {
    std::string unit;                  ///< name of the native unit, UTF-8
    std::vector<ChannelFit> channels;  ///< those that have points, in configuration order
    std::vector<FitFinding> findings;  ///< about the display as a whole

    /// The worst of its channels and findings; UNUSABLE without any channel.
    [[nodiscard]] FitOutcome outcome() const;
};

}  // namespace Veltrani::DisplayFit
