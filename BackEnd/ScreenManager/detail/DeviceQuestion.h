#pragma once

#include "DeviceFramework2/Commands.h"

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

/// Asks a device, as in `askDevice<GetFirmware>(device)`.
///
/// @tparam Question a `GetCommand`
/// @return nothing when there is no device, or it does not support the question. Throws what the device throws, and
/// `CmdResultNotAvailableException` when it supports the question and yet gives no answer.
template <class Question>
auto askDevice(Veltrani::DeviceFramework2::AbstractDevice* device)
    -> std::optional<std::decay_t<decltype(std::declval<Question>().getResult())>> {
    const auto question = std::make_shared<Question>();
    if (device == nullptr || !device->supports(*question)) {
        return std::nullopt;
    }
    device->execute(question);
    return question->getResult();
}
