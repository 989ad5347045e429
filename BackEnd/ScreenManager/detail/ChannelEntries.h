#pragma once

#include <cstddef>
#include <vector>

class KelvoProjector;
class ProjectorConfig;
class XMLConfigManager;

namespace KelvoControl {

class Configuration;

}  // namespace KelvoControl

// The entries of channels that layout maps are made from, each of which must be there.
namespace Veltrani::ScreenManagerDetail {

/// Returns the record of a channel. Throws `VeltraniException` naming the channel by its number when it is null: the
/// configuration lists a projector that it does not have.
[[nodiscard]] const ProjectorConfig& requireRecord(const ProjectorConfig* record, std::size_t channelIndex);

/// Returns the entry of each channel in the table of the channel maps, which owns it and must outlive it, in the order
/// in which the configuration lists the projectors now.
///
/// Throws `VeltraniException` naming the first projector that has no entry; without a table none has. Empty without a
/// configuration.
[[nodiscard]] std::vector<const KelvoProjector*> blendOwners(const XMLConfigManager* config,
                                                             const KelvoControl::Configuration* channelMapConfig);

}  // namespace Veltrani::ScreenManagerDetail
