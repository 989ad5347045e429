#pragma once

#include <string>

namespace Veltrani::DisplayBlend {

/// How a projector makes light of code values, both as parts of the largest one, 0 to 1.
///
/// It is what the projector is set to. Weights add up in light; a player multiplies code values. Arguments beyond 0 and
/// 1 count as these.
class BlendCurve {
public:
    /// What most projectors are set to.
    static constexpr double USUAL_GAMMA = 2.2;

    /// light = code ^ gamma. 1 is linear. Throws `VeltraniException` for less than 0.2 and more than 5.
    [[nodiscard]] static BlendCurve ofGamma(double gamma);
    /// IEC 61966-2-1: code / 12.92 up to 0.04045, ((code + 0.055) / 1.055) ^ 2.4 above.
    [[nodiscard]] static BlendCurve srgb();
    /// "srgb", or the number of a gamma. Throws `VeltraniException`, with what was expected, for everything else.
    [[nodiscard]] static BlendCurve named(const std::string& utf8Name);

    [[nodiscard]] double lightOf(double code) const;
    [[nodiscard]] double codeOf(double light) const;
    /// As `named` reads it.
    [[nodiscard]] std::string name() const;

private:
    explicit BlendCurve(double gamma) : m_gamma(gamma) {}

    double m_gamma;  ///< 0 for the curve of sRGB
};

}  // namespace Veltrani::DisplayBlend
