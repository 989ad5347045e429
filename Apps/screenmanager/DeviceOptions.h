#pragma once

#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "Verbosity.h"

#include <chrono>
#include <optional>

/// What every command that talks to projectors can be told.
struct DeviceOptions {
    std::optional<std::chrono::milliseconds> timeout;  ///< for each wait; without: the limits of the standard
    /// Where a search asks; without: on all networks of the machine.
    std::optional<Veltrani::DeviceFramework2::ProjectorAddress> broadcast;
    Verbosity verbosity = Verbosity::NORMAL;

    [[nodiscard]] bool talkative() const { return verbosity != Verbosity::QUIET; }
    [[nodiscard]] Veltrani::DeviceFramework2::DeviceManager::Settings settings() const;
};
