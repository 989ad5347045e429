#pragma once

#include "DeviceFramework2/detail/PjlinkMessages.h"

#include <functional>
#include <memory>

namespace Veltrani::DeviceFramework2 {

/// One request of a command, and what follows its reply: the next step, or null when the command is done.
///
/// A command is stated as its first step. Whoever has the session sends the request and hands the reply over, waiting
/// for it or not, so that what a command says stands in one place.
struct PjlinkStep {
    PjlinkRequest request;
    /// Throws `DeviceException` for a reply that ends the command with a fault.
    std::function<std::unique_ptr<PjlinkStep>(const PjlinkReply&)> then;
};

}  // namespace Veltrani::DeviceFramework2
