#pragma once

#include "DeviceOptions.h"
#include "DisplayReport/ProjectorAddition.h"

#include <string>

/// `screenmanager add FILE ADDRESS|MAC`: adds a projector to a configuration file.
class AddCommand {
public:
    struct Options {
        std::string file;  ///< the configuration, which is replaced as a whole, or not at all
        Veltrani::DisplayReport::ProjectorAddition::Target target;
        DeviceOptions devices;
    };

    AddCommand() = delete;

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};
