#pragma once

#include "Common/Point.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ChannelWarp.h"

namespace Veltrani::DisplayExport {

class ContentInput;

/// Continues what is seen to a place beside it, where no surface does: by the plane through the lit places around it,
/// fitted to the directions in which they are seen, or to their contents where the input has no directions. Its point
/// is that of a plane through theirs, moved along the direction.
class PlaceFit {
public:
    /// Refers to both.
    PlaceFit(const ChannelSight& sight, const ContentInput& input) : m_sight(sight), m_input(input) {}

    /// @param step to the next nodes of a grid; places up to two steps away count
    /// @param node receives the content; unmapped when nothing around is lit
    /// @return what is seen, as it were, with its direction and its point
    SeenPlace at(const Point<double, 2>& picture, const Point<double, 2>& step, WarpNode& node) const;

private:
    const ChannelSight& m_sight;
    const ContentInput& m_input;
};

}  // namespace Veltrani::DisplayExport
