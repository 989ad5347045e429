#pragma once

#include "Common/Matrix.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <array>
#include <span>
#include <string>
#include <vector>

/// A flat rectangle: (s, t) -> centre + R ((s - 1/2) width, 0, (t - 1/2) height), R from the three orientation angles.
///
/// Unrotated it is upright and looks along +y; its normal is +y. Its continuation is the whole plane.
///
/// The edges belong to the rectangle: a ray that passes one within the rounding of its own coordinates hits it there. A
/// ray parallel to the plane, to rounding, never hits, one that lies in the plane included. A hit lies on the rectangle
/// and on the ray to within rounding of the largest coordinate involved. A screen that is not valid is never hit, maps
/// nothing and has a zero normal.
class FlatScreen : public ScreenGeometry {
public:
    /// The unit square (s, t) -> (s, 0, t).
    FlatScreen();
    /// Centre, orientation, width and height of the description; null gives a screen that is not valid.
    explicit FlatScreen(const IScreenConfig* screen);

    /// Returns the hash of the flat screen of a description, without building it.
    [[nodiscard]] static std::array<unsigned char, 20> calcUniqueDataHash(const IScreenConfig* screen);

    /// Returns true when the numbers are finite and width and height are above zero.
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
    /// The results are bit for bit those of single rays. For a class derived from this one the rays are cast one by
    /// one.
    void intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const override;
    [[nodiscard]] std::size_t raysAtOnce() const override;
    [[nodiscard]] std::wstring faultOfShape() const override;

private:
    /// The numbers of a description; all zero without one.
    struct Numbers {
        explicit Numbers(const IScreenConfig* screen);
        Numbers(const Point<double, 3>& theCentre, double theWidth, double theHeight);

        Point<double, 3> centre;
        Point<double, 3> orientation;  ///< angles for `Veltrani::rotationZXY`
        double width = 0;
        double height = 0;
    };

    explicit FlatScreen(const Numbers& numbers);
    [[nodiscard]] static std::array<unsigned char, 20> hash(const Numbers& numbers);
    void set(const Numbers& numbers);
    /// Which number makes the rectangle one that is not valid; empty when it is valid.
    [[nodiscard]] std::wstring fault() const;
    [[nodiscard]] Point<double, 3> pointAt(double s, double t) const;
    /// Intersects the ray with the whole plane, at t >= 0.
    [[nodiscard]] IntersectionSet intersectPlane(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// Moves a hit of the plane onto the rectangle when the ray passes it within rounding; false when it misses it.
    [[nodiscard]] bool limitToRectangle(const Point<double, 3>& from, const Point<double, 3>& to,
                                        Intersection& hit) const;
    struct WideNumbers;
    struct WideCrossing;

    [[nodiscard]] SurfaceHit nearestHit(const Ray& ray) const;
    void nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;
    /// Returns the largest coordinate that enters a hit: the unit of its rounding.
    [[nodiscard]] double largestCoordinate(const Point<double, 3>& from) const;

    Numbers m_numbers;
    Point<double, 3> m_corner;  ///< (s, t) = (0, 0)
    Point<double, 3> m_across;  ///< from s = 0 to s = 1
    Point<double, 3> m_upward;  ///< from t = 0 to t = 1
    Point<double, 3> m_normal;
    double m_extent = 0;       ///< the largest coordinate of a corner
    double m_largestUnit = 0;  ///< the largest coordinate for which a far miss is decided without a probe
    bool m_valid = false;
};
