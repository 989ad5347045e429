#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/Extent.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// How densely targets are placed on every channel.
struct TargetPlan {
    int columns = 16;          ///< grid columns, from the left edge of the picture to its right edge
    int rows = 10;             ///< grid rows, from one edge of the picture to the other
    int boundarySamples = 16;  ///< samples per edge of the outline
};

/// One target of a grid.
struct GridTarget {
    int column = 0;
    int row = 0;  ///< in the order of the channel's locator: by a map file from the bottom, else from the top
    /// Place in the channel's picture, normalised: (0, 0) bottom left, (1, 1) top right.
    Point<double, 2> picture;
    Point<double, 3> point;  ///< on the screen; world frame, native units
};

/// The targets of one channel.
struct ChannelTargets {
    std::string name;              ///< UTF-8
    std::string projectorId;       ///< UTF-8
    std::vector<GridTarget> grid;  ///< those that lie on the screen, by column, then row
    std::vector<Point<double, 3>>
        boundary;  ///< the outline, in the order of the channel's locator; those on the screen
    std::size_t gridMissed = 0;
    std::size_t boundaryMissed = 0;
    std::string fault;   ///< why the channel has no targets; empty when it has some
    std::string remark;  ///< what a reader should know about its targets; may be empty
};

/// The targets of all channels of a display, in configuration order.
struct TargetSurvey {
    TargetPlan plan;
    std::string unit;  ///< name of the native unit
    std::vector<ChannelTargets> channels;

    [[nodiscard]] std::size_t placed() const;
    [[nodiscard]] std::size_t missed() const;
    /// The box around every target and outline.
    [[nodiscard]] Extent extent() const;
    /// True when every channel has its targets.
    [[nodiscard]] bool complete() const;
};

/// The box around the targets and the outline of a channel.
[[nodiscard]] Extent extentOf(const ChannelTargets& channel);

/// Prints a summary for people: per channel the targets placed and missed and their extent on the screen, the totals,
/// and why a channel has none.
void printSummary(const TargetSurvey& survey, std::ostream& out);

}  // namespace Veltrani::DisplayReport
