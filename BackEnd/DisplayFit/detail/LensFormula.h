#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// Where a ray meets the plane of a picture, with the derivatives that a fit needs; `docs/lens-models.md` has the
/// formulas. Places on the plane are (a, b), right and up: tangents, angles, or distorted tangents of the lens.
class LensFormula {
public:
    enum class Kind { RECTILINEAR, EQUIDISTANT, BROWN_CONRADY, FISHEYE };

    /// Most coefficients that are solved: k1 k2 p1 p2 k3 k4 k5 k6.
    static constexpr std::size_t MOST_COEFFICIENTS = 8;

    struct Place {
        double a = 0;
        double b = 0;
        std::array<double, 3> aByRay{};  ///< derivatives by the ray
        std::array<double, 3> bByRay{};
        std::array<double, MOST_COEFFICIENTS> aByCoefficient{};  ///< of those that are solved
        std::array<double, MOST_COEFFICIENTS> bByCoefficient{};
    };

    LensFormula() = default;
    /// @param coefficients as a calibration states them; none for a lens without
    LensFormula(Kind kind, const std::vector<double>& coefficients);

    /// Returns false for rays that no place shows: behind the lens, or straight behind a fisheye.
    /// @param ray in the projector's frame: right, forward, up; any length
    /// @param needsDerivatives false where a and b are enough: the derivatives may be left as they were
    bool place(const Point<double, 3>& ray, Place& place, bool needsDerivatives = true) const;

    /// Finds the tangents (x / y, z / y) of the ray that meets a place; false where there is none ahead of the lens.
    bool tangentsOf(const Point<double, 2>& place, Point<double, 2>& tangents) const;

    [[nodiscard]] Kind kind() const { return m_kind; }
    /// Returns how many coefficients are solved: the prism terms are not.
    [[nodiscard]] std::size_t coefficients() const { return m_count; }
    [[nodiscard]] double coefficient(std::size_t i) const { return m_k[i]; }
    void setCoefficient(std::size_t i, double value) { m_k[i] = value; }
    /// Returns the lens with so many coefficients: further ones are zero.
    [[nodiscard]] LensFormula withCoefficients(std::size_t count) const;
    /// True where a place grows as the tangents do, but for distortion.
    [[nodiscard]] bool isOfTangents() const { return m_kind == Kind::RECTILINEAR || m_kind == Kind::BROWN_CONRADY; }

private:
    bool placeRectilinear(const Point<double, 3>& ray, Place& place) const;
    bool placeEquidistant(const Point<double, 3>& ray, Place& place) const;
    bool placeBrownConrady(const Point<double, 3>& ray, Place& place, bool needsDerivatives) const;
    bool placeFisheye(const Point<double, 3>& ray, Place& place) const;

    Kind m_kind = Kind::RECTILINEAR;
    std::size_t m_count = 0;
    std::array<double, MOST_COEFFICIENTS> m_k{};
    std::array<double, 4> m_prism{};
};

}  // namespace Veltrani::DisplayFitDetail
