#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/FitPoints.h"

#include <optional>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// Where the light of the points of a channel lands by the configured values, compared with where it was measured. Some
/// of the points, spread over all of them, stand for the rest.
class ConfiguredLight {
public:
    using Places = std::vector<std::optional<Point<double, 3>>>;
    using PictureChange = Point<double, 2> (*)(const Point<double, 2>&);

    /// @param setup must outlive this object
    ConfiguredLight(const ChannelSetup& setup, const FitPoints& points);

    /// Returns false where the configured light of most points misses the screen: nothing can be compared then.
    [[nodiscard]] bool isKnown() const { return m_width > 0; }
    /// The points that stand for all.
    [[nodiscard]] const FitPoints& points() const { return m_points; }
    /// Where their light lands; nothing where it misses the screen.
    [[nodiscard]] const Places& landings() const { return m_landings; }
    /// About the width of the picture on the screen, native units; 0 where it is not known.
    [[nodiscard]] double width() const { return m_width; }

    // The median distance between the measured points and where their light lands, in widths of the picture. Infinite
    // where most of it misses the screen.

    [[nodiscard]] double miss() const;
    /// With other places in the picture.
    [[nodiscard]] double missWith(PictureChange change) const;
    /// With other places in space: `display_from_table` times the measured ones.
    [[nodiscard]] double missWith(const Matrix<double, 3>& display_from_table) const;
    /// As if the points were of another channel.
    [[nodiscard]] double missAs(const ConfiguredLight& other) const;

private:
    [[nodiscard]] Places landingsOf(const ChannelSetup& setup, const FitPoints& points) const;
    [[nodiscard]] double missTo(const Places& landings) const;

    const ChannelSetup& m_setup;
    FitPoints m_points;
    Places m_landings;
    Point<double, 3> m_centre;  ///< of the landings
    double m_width = 0;
};

}  // namespace Veltrani::DisplayFitDetail
