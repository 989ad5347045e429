#pragma once

#include <vector>

class KelvoProjector;
class XMLConfigManager;

namespace KelvoControl {

class Configuration;

}  // namespace KelvoControl

namespace Veltrani {

/// The entry of each channel in the table of the channel maps, which owns it and must outlive it, in the order in which
/// the configuration lists the projectors now.
///
/// Throws `VeltraniException` naming the first projector that has no entry; without a table none has. Empty without a
/// configuration.
[[nodiscard]] std::vector<const KelvoProjector*> blendOwners(const XMLConfigManager* config,
                                                             const KelvoControl::Configuration* channelMapConfig);

}  // namespace Veltrani
