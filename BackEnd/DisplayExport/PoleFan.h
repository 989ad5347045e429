#pragma once

#include "DisplayExport/CellCutter.h"
#include "DisplayExport/WarpGrid.h"

#include <optional>
#include <vector>

namespace Veltrani::DisplayExport {

/// Fills a rectangle of a picture that shows a pole by triangles around it, in sectors and rings: content turns with
/// the sectors, so that few of them follow it where squares would have to be ever smaller.
class PoleFan {
public:
    /// Refers to all.
    PoleFan(const ChannelSight& sight, const ContentInput& input, const WarpSampler& sampler, const CellCutter& cutter);

    /// None where the pole is not found in the rectangle, and where a place on the way to it has no content.
    /// @param corners of the rectangle: bottom left, bottom right, top right, top left
    /// @param pole of the input
    [[nodiscard]] std::optional<CellCutter::Cut> fill(const std::array<Point<double, 2>, 4>& corners,
                                                      const Point<double, 3>& pole) const;

private:
    /// A part of a sector between two rings.
    struct Part {
        Point<double, 2> from, to;  ///< where the sector meets the rectangle, counter-clockwise
        double outer = 1;           ///< of the way from the pole to there
        double inner = 0;
        int times = 0;  ///< that it was divided
    };
    /// What is wrong in a part.
    struct Measured {
        WarpError error;
        double around = 0;    ///< pixels of the input; on the edges around the pole
        double outwards = 0;  ///< on those from the pole
    };

    [[nodiscard]] std::optional<Point<double, 2>> placeOf(const Point<double, 3>& pole,
                                                          const std::array<Point<double, 2>, 4>& corners) const;
    [[nodiscard]] static std::vector<Part> partsAround(const std::array<Point<double, 2>, 4>& corners, double inner);
    [[nodiscard]] static WarpCell cellOf(const Part& part, const Point<double, 2>& pole);
    /// False when a corner has no content.
    [[nodiscard]] bool sampleCorners(std::vector<WarpCell>& cells) const;
    [[nodiscard]] std::vector<Measured> measure(const std::vector<WarpCell>& cells) const;
    static void divide(const Part& part, const Measured& measured, std::vector<Part>& parts);

    const ChannelSight& m_sight;
    const ContentInput& m_input;
    const WarpSampler& m_sampler;
    const CellCutter& m_cutter;
};

}  // namespace Veltrani::DisplayExport
