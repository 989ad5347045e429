#pragma once

#include "DisplayReport/TargetPlan.h"
#include "DisplayReport/TargetSurvey.h"

#include <cstddef>
#include <functional>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// Places calibration targets for every channel of a configuration: a grid over the whole picture and the outline of
/// the picture, by the channel's screen area on the current screen of the `ScreenManager`.
///
/// Every channel is addressed through the 2D parameters of the screen (planar addressing); the survey remarks on it
/// when the configuration's target data is of another kind.
class TargetPlacer {
public:
    /// Told before each channel how many are done, of how many; once more at the end.
    using Progress = std::function<void(std::size_t done, std::size_t total)>;

    explicit TargetPlacer(const TargetPlan& plan, Progress progress = {});

    /// The screen must have been built. A channel without a complete screen area, or none of whose grid lies on the
    /// screen, says so in its `fault`; it does not keep the others from being placed.
    [[nodiscard]] TargetSurvey place(const XMLConfigManager& config) const;

private:
    [[nodiscard]] ChannelTargets placeChannel(const ProjectorConfig& projector) const;

    TargetPlan m_plan;
    Progress m_progress;
};

}  // namespace Veltrani::DisplayReport
