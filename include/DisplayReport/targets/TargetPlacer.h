#pragma once

#include "DisplayReport/basics/Progress.h"
#include "DisplayReport/targets/TargetSurvey.h"

class TargetLocator;
class XMLConfigManager;
struct LocatorKind;

namespace Veltrani::DisplayReport {

struct ChannelChoice;

/// Places calibration targets for every channel of a configuration: a grid over the whole picture and the outline of
/// the picture, by the channel's target locator on the current screen of the `ScreenManager`.
///
/// The locators are those of the `TargetLocatorManager`: the kind of target data of the configuration decides.
class TargetPlacer {
public:
    /// @param progress called before each channel, and once more at the end
    explicit TargetPlacer(const TargetPlan& plan, Progress progress = {});

    /// The screen must have been built. Where a locator offers no grid, which is so for a projector with a projection
    /// model, the grid is placed through the layout map of the display, and the channel's `remark` says so. A channel
    /// without a locator, or none of whose targets lies on the screen, reports that in its `fault`; it does not keep
    /// the others from being placed.
    [[nodiscard]] TargetSurvey place(XMLConfigManager& config) const;

private:
    [[nodiscard]] ChannelTargets placeChannel(XMLConfigManager& config, const ChannelChoice& choice) const;
    void placeGrid(const TargetLocator& locator, const LocatorKind& kind, ChannelTargets& channel) const;
    /// The grid of a channel whose locator offers none.
    void placeGridThroughMap(XMLConfigManager& config, const ChannelChoice& choice, const LocatorKind& kind,
                             ChannelTargets& channel) const;
    /// The target of a cell, without its place on the screen.
    [[nodiscard]] GridTarget targetAt(int column, int row, const LocatorKind& kind) const;

    TargetPlan m_plan;
    Progress m_progress;
};

}  // namespace Veltrani::DisplayReport
