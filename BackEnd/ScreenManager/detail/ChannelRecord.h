#pragma once

#include <cstddef>

class ProjectorConfig;

namespace Veltrani {

/// The record of a channel. Throws `VeltraniException` naming the channel by its number when it is null: the
/// configuration lists a projector that it does not have.
[[nodiscard]] const ProjectorConfig& requireRecord(const ProjectorConfig* record, std::size_t channelIndex);

}  // namespace Veltrani
