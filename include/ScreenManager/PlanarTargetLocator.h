#pragma once

#include "ScreenManager/TargetLocator.h"

#include <log4cxx/logger.h>

#pragma GCC diagnostic push
// No virtual destructor in this family: see TargetLocatorParams.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The rectangle that a channel covers in the screen's 2D parameters.
struct PlanarTargetLocatorParams : TargetLocatorParams {
    /// All zero.
    PlanarTargetLocatorParams() = default;
    PlanarTargetLocatorParams(double left, double right, double bottom, double top);

    double screenLeft = 0.0;    ///< x at the channel's u = 0
    double screenRight = 0.0;   ///< x at the channel's u = 1
    double screenBottom = 0.0;  ///< y at the channel's v = 1
    double screenTop = 0.0;     ///< y at the channel's v = 0

protected:
    [[nodiscard]] bool equals(const TargetLocatorParams& other) const override;
};

#pragma GCC diagnostic pop

/// Targets that lie on the screen itself, addressed by its 2D parameters: each channel covers a rectangle of them.
class PlanarTargetLocator : public TargetLocator {
public:
    explicit PlanarTargetLocator(const PlanarTargetLocatorParams& params);

    /// Samples the screen over the part of the channel's rectangle, v from 0 at its top edge to 1 at its bottom edge,
    /// the first row at vMin. Logs a warning, and leaves in `grid` what was there by then, when the screen has no 2D
    /// parameterisation.
    void projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns, int rows,
                                        std::map<Point<int, 2>, Point<double, 3>>& grid) const override;

    [[nodiscard]] const TargetLocatorParams& getTargetLocatorParams() const override;

    /// Returns the four edges of the rectangle from its top left corner clockwise, continued past the screen where it
    /// can be; each edge gives its first corner and `samplesPerEdge` - 1 samples, never its last corner. Samples that
    /// do not map are dropped. Logs a warning and returns what was collected by then when the screen has no 2D
    /// parameterisation; empty without a screen.
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const override;

private:
    static log4cxx::LoggerPtr log;

    PlanarTargetLocatorParams m_params;
};
