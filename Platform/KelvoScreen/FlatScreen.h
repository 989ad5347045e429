#pragma once

#include "Common/Matrix.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <array>
#include <vector>

/// A flat rectangle: (s, t) -> centre + R ((s - 1/2) width, 0, (t - 1/2) height), R from the three orientation angles.
///
/// Unrotated it stands upright and looks along +y; its normal is +y. Its continuation is the whole plane.
class FlatScreen : public ScreenGeometry {
public:
    /// The unit square (s, t) -> (s, 0, t).
    FlatScreen();
    /// Centre, orientation, width and height of the description; null gives a screen that is not valid.
    explicit FlatScreen(const IScreenConfig* screen);

    /// The hash of the flat screen of a description, without building it.
    [[nodiscard]] static std::array<unsigned char, 20> calcUniqueDataHash(const IScreenConfig* screen);

    /// Finite, with a width and a height above zero.
    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const override;
    [[nodiscard]] Point<double, 3> getScreenNormal(const Point<double, 3>& point) const override;
    bool mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const override;
    [[nodiscard]] std::array<unsigned char, 20> getUniqueDataHash() const override;
    void updateGeometry(const IScreenConfig* screen) override;
    void sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                            bool extrapolate) const override;
    [[nodiscard]] IntersectionSet intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                           const Point<double, 3>& to,
                                                                           int sign) const override;
    [[nodiscard]] std::vector<Point<double, 3>> intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                         const std::vector<Ray>& centre) const override;
};
