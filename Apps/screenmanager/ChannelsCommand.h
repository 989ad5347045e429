#pragma once

#include "DeviceOptions.h"

#include <string>

/// `screenmanager channels FILE`: asks every projector and prints the table of channels on standard output.
class ChannelsCommand {
public:
    struct Options {
        std::string file;      ///< the configuration, which is not changed
        bool offline = false;  ///< virtual projectors in place of those that cannot be reached
        DeviceOptions devices;
    };

    ChannelsCommand() = delete;

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};
