#pragma once

#include "DeviceFramework2/PasswordSource.h"

#include <chrono>

namespace Veltrani::DeviceFramework2 {

/// The limits of every wait for a projector, and where its password comes from.
struct PjlinkSettings {
    /// The limit for a connection to be made.
    std::chrono::milliseconds connectLimit{3000};
    /// The limit for the projector to greet once it is connected.
    std::chrono::milliseconds greetingLimit{5000};
    /// The limit for one command to be sent and its reply to arrive. Most projectors reply within 2 s, some need 10 s
    /// around a change of power.
    std::chrono::milliseconds replyLimit{10000};
    PasswordSource passwords;
};

}  // namespace Veltrani::DeviceFramework2
