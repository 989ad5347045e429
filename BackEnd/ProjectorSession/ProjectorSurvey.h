#pragma once

#include "DisplayReport/basics/Progress.h"
#include "ProjectorSession/ProjectorFinding.h"

#include <string>
#include <vector>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DeviceFramework2 {

class DeviceManager;

}  // namespace Veltrani::DeviceFramework2

namespace Veltrani::ProjectorSession {

/// What the projectors are needed for.
enum class ProjectorNeed {
    ANSWER,  ///< that they are there
    BLACK,   ///< a black picture
    GRAY50,  ///< a half grey picture
    CLEAR,   ///< their input
};

/// Queries every projector of a configuration, all at the same time: whether it is there, on, and able to do what is
/// needed. Changes nothing on any of them, and one that is not usable keeps none of the others from being queried.
class ProjectorSurvey {
public:
    /// @param progress called at the beginning and whenever a projector is done
    explicit ProjectorSurvey(ProjectorNeed need, DisplayReport::Progress progress = {});

    /// One finding per entry, in configuration order. An entry with the identity or the address of an earlier one is
    /// not contacted: whatever is there is the other's projector. Lasts as long as the slowest projector, at most the
    /// limits of the manager's settings; one search comes before for those without an address.
    [[nodiscard]] std::vector<ProjectorFinding> run(const XMLConfigManager& config,
                                                    DeviceFramework2::DeviceManager& manager) const;

private:
    ProjectorNeed m_need;
    DisplayReport::Progress m_progress;
};

}  // namespace Veltrani::ProjectorSession
