#pragma once

#include "DisplayLight/PictureFinder.h"

namespace Veltrani::DisplayLight {

/// Finds places by a grid over the picture of a channel, whose cells are drawn into the picture of the eye. Light that
/// is followed so is not known to come from a side.
class LatticeFinder : public PictureFinder {
public:
    /// @param sight must outlive the finder
    explicit LatticeFinder(const DisplayExport::ChannelSight& sight) : m_sight(sight) {}

    void find(const EyeGrid& grid, SeenSide side, std::vector<FoundPlace>& found) const override;

private:
    const DisplayExport::ChannelSight& m_sight;
};

}  // namespace Veltrani::DisplayLight
