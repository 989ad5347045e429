#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace Veltrani::DisplayFit {

/// The groups of values of a channel that are solved; all others are held.
struct SolvedGroups {
    bool position = false;
    bool orientation = false;
    bool frustum = false;     ///< the four edges, or focal lengths and centre of a lens that was calibrated
    bool distortion = false;  ///< the coefficients of a lens that was calibrated
    bool area = false;        ///< the four bounds on the screen

    friend bool operator==(const SolvedGroups&, const SolvedGroups&) = default;
};

/// What is solved, and how.
struct FitOptions {
    /// What is done where all points of a channel lie in one plane, to their noise and but for a few, from which
    /// position, orientation and frustum cannot be distinguished.
    enum class OnPlane {
        HOLD_TWO,  ///< pixels are made square and the configured horizontal shift is held; a note states it
        REFUSE,    ///< such a channel is refused
    };

    /// Empty for the default of the display's kind, `DisplayFitter::defaultGroups`. Groups that a kind does not have
    /// are refused.
    std::optional<SolvedGroups> solved;
    OnPlane onPlane = OnPlane::HOLD_TWO;
    bool holdsSquarePixels = false;     ///< a pixel is as wide as high, everywhere
    bool holdsHorizontalShift = false;  ///< where the axis of the lens meets the picture, left to right, as configured
    /// False for plain least squares of all points: nothing is rejected.
    bool isRobust = true;
    /// Points whose residual is as rare as one number of more than this many standard deviations are outliers: since a
    /// residual has two numbers, 4 stands for a length of 4.4 deviations.
    double rejection = 4.0;
    /// Channels to be solved, in the order of the configuration; empty for all that have points.
    std::vector<std::size_t> channels;
    /// Called now and then while a channel is solved; what it throws ends the fit. May be empty.
    std::function<void()> pulse;
};

}  // namespace Veltrani::DisplayFit
