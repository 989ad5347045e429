#pragma once

#include "Common/Point.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

struct DisplayScene;

/// A measured point of a channel, and by how much the fitted configuration misses it.
struct SceneResidual {
    Point<double, 2> picture;  ///< the stated place, (0, 0) bottom left, (1, 1) top right
    Point<double, 3> point;    ///< as it was measured; world frame, native units, finite
    /// From the stated place to the one whose light lands on the measured point; pixels, +u right, +v up. NaN where no
    /// place of the picture leads there.
    Point<double, 2> pixels;
    /// From the measured point to where the light of the stated place lands; native units. NaN where it does not.
    Point<double, 3> offset;
    bool isOutlier = false;
    std::size_t line = 0;  ///< of the table, the first where the point was measured several times
};

/// What a fit left of its measured points.
struct DisplayResiduals {
    struct Channel {
        std::string projectorId;  ///< UTF-8
        std::vector<SceneResidual> residuals;
    };
    std::vector<Channel> channels;
};

/// How the residuals of a scene are drawn: so many times as long as they are, so that they can be seen. One factor for
/// all channels, so that their pictures can be compared.
struct ResidualScale {
    double onScreen = 1;
    double inPicture = 1;
    /// Vectors that would be drawn longer are cut there: the outliers would cover everything else.
    double longestOnScreen = 0;   ///< native units, as drawn
    double longestInPicture = 0;  ///< pixels, as drawn
};

/// Adds residuals to a scene.
class ResidualCollector {
public:
    /// The longest vector of a point that is no outlier is drawn as long as this part of the screen's size, or less: by
    /// the greatest round factor, 1, 2 or 5 times a power of ten. In a picture the same of its diagonal.
    static constexpr double USUAL_SHARE = 0.06;
    /// What longer vectors are cut to.
    static constexpr double LONGEST_SHARE = 0.15;
    /// Larger factors would only show how numbers are rounded.
    static constexpr double LARGEST_FACTOR = 1e6;

    /// @param factor of all vectors, above zero; empty: chosen as above, one for the screen and one for the pictures
    explicit ResidualCollector(std::optional<double> factor = {}) : m_factor(factor) {}

    /// Every channel of the residuals must be one of the scene. Points that lie too far from the screen to be drawn are
    /// left out, which a note states.
    void addTo(DisplayScene& scene, const DisplayResiduals& residuals) const;

    /// The greatest round factor by which `largest` becomes no longer than `most`; from 1 to `LARGEST_FACTOR`.
    [[nodiscard]] static double roundFactor(double largest, double most);

private:
    [[nodiscard]] ResidualScale scaleOf(const DisplayScene& scene) const;

    std::optional<double> m_factor;
};

/// A vector as it is drawn: times the factor, and cut at the longest.
/// @return the vector, and whether it was cut
template <std::size_t N>
[[nodiscard]] std::pair<Point<double, N>, bool> drawnResidual(const Point<double, N>& vector, double factor,
                                                              double longest) {
    const Point<double, N> drawn = vector * factor;
    const double length = norm(drawn);
    return length > longest && longest > 0 ? std::pair(drawn * (longest / length), true) : std::pair(drawn, false);
}

/// "96 points, 2 outliers" and "RMS 0.42 pixels, 1.3 m": of the points that are no outliers.
[[nodiscard]] std::vector<std::string> residualFacts(const std::vector<SceneResidual>& residuals,
                                                     const std::string& unit);

}  // namespace Veltrani::DisplayReport
