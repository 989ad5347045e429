#pragma once

#include "DeviceOptions.h"

/// `screenmanager discover`: searches the network and prints the projectors that answer on standard output.
class DiscoverCommand {
public:
    DiscoverCommand() = delete;

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const DeviceOptions& options);
};
