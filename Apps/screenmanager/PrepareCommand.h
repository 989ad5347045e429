#pragma once

#include "DeviceOptions.h"

#include <string>
#include <vector>

/// `screenmanager prepare FILE black|gray50|clear`: brings every projector into a state, or none.
class PrepareCommand {
public:
    struct Options {
        std::string file;      ///< the configuration, which is not changed
        std::string state;     ///< one of `states`
        bool offline = false;  ///< virtual projectors in place of those that are not ready
        DeviceOptions devices;
    };

    PrepareCommand() = delete;

    [[nodiscard]] static std::vector<std::string> states();

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};
