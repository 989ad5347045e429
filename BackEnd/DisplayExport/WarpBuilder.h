#pragma once

#include "DisplayExport/CellCutter.h"
#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/WarpErrorMeter.h"
#include "DisplayExport/WarpGrid.h"

#include <limits>

namespace Veltrani::DisplayExport {

/// Makes the warp of one channel.
class WarpBuilder {
public:
    /// Refers to all. Throws `VeltraniException` for a request that cannot be met.
    WarpBuilder(const ChannelSight& sight, const ContentInput& input, const WarpRequest& request);

    [[nodiscard]] ChannelWarp build() const;

private:
    /// A grid from corner to corner with its error.
    struct Trial {
        Point<int, 2> cells;
        WarpGrid grid;
        MeasuredError measured;
    };

    /// From the nodes that were requested, or were searched for.
    [[nodiscard]] ChannelWarp builtFrom(WarpGrid grid, const WarpError& error) const;
    [[nodiscard]] WarpGrid gridOfPixels() const;
    [[nodiscard]] WarpGrid gridOfNodes(const Point<int, 2>& nodes, const DisplayReport::Progress& progress) const;
    /// @param enough an error above which no more of it is measured
    [[nodiscard]] Trial trialOf(const Point<int, 2>& cells, double enough = std::numeric_limits<double>::max()) const;
    /// The same, its error with a margin for places that were not compared.
    [[nodiscard]] Trial boundedTrialOf(const Point<int, 2>& cells) const;
    /// The fewest nodes that keep the error.
    [[nodiscard]] Trial search() const;
    /// On a side of a grid that is searched for.
    [[nodiscard]] Point<int, 2> mostCells() const;
    /// More and more cells, until the error is kept or more do not help.
    [[nodiscard]] Trial searchUpwards() const;
    /// Fewer cells than those of a trial that keeps the error.
    void searchDownwards(Trial& best) const;
    [[nodiscard]] bool isKept(const MeasuredError& measured) const;
    /// Of cells around poles, given that of the others.
    [[nodiscard]] double errorToKeep(const WarpError& error) const;
    /// Whether readers of grids lose some of its cells.
    /// @param trial its contents are moved beside each other
    [[nodiscard]] bool losesCells(Trial& trial) const;

    /// Puts the contents of neighbours beside each other where an input wraps around.
    void unwrap(WarpGrid& grid) const;
    void cutCells(const WarpGrid& grid, ChannelWarp& warp) const;
    /// Fills the surroundings of poles by fans.
    /// @return which cells that concerns
    [[nodiscard]] std::vector<bool> fillAroundPoles(const WarpGrid& grid, const CellCutter& cutter,
                                                    ChannelWarp& warp) const;
    /// Takes the pieces out of the cut.
    /// @param isBroken for readers of grids
    static void addCut(std::size_t number, WarpCell::Kind kind, bool isBroken, CellCutter::Cut& cut, ChannelWarp& warp);

    const ChannelSight& m_sight;
    const ContentInput& m_input;
    const WarpRequest& m_request;
    Point<int, 2> m_pixels;
    WarpSampler m_sampler;
    WarpErrorMeter m_meter;
};

}  // namespace Veltrani::DisplayExport
