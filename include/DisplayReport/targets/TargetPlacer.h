#pragma once

#include "DisplayReport/basics/Progress.h"
#include "DisplayReport/targets/TargetSurvey.h"

class ProjectorConfig;
class TargetLocator;
class XMLConfigManager;
struct LocatorKind;

namespace Veltrani::DisplayReport {

/// Places calibration targets for every channel of a configuration: a grid over the whole picture and the outline of
/// the picture, by the channel's target locator on the current screen of the `ScreenManager`.
///
/// The locators are those of the `TargetLocatorManager`: the kind of target data of the configuration decides.
class TargetPlacer {
public:
    /// @param progress called before each channel, and once more at the end
    explicit TargetPlacer(const TargetPlan& plan, Progress progress = {});

    /// The screen must have been built. A channel without a locator, or none of whose targets lies on the screen,
    /// reports that in its `fault`; it does not keep the others from being placed.
    [[nodiscard]] TargetSurvey place(const XMLConfigManager& config) const;

private:
    [[nodiscard]] ChannelTargets placeChannel(const XMLConfigManager& config, const ProjectorConfig& projector) const;
    void placeGrid(const TargetLocator& locator, const LocatorKind& kind, ChannelTargets& channel) const;

    TargetPlan m_plan;
    Progress m_progress;
};

}  // namespace Veltrani::DisplayReport
