#include "ProjectorSession/RecordedDevice.h"

namespace Veltrani::ProjectorSession {

using DeviceFramework2::Command;

bool RecordedDevice::supports(const Command& command) const {
    return m_device.supports(command);
}

void RecordedDevice::execute(const std::shared_ptr<Command>& command) {
    try {
        m_device.execute(command);
    } catch (...) {
        m_recorder({getUID(), command ? command->typeName() : std::string(), true});
        throw;
    }
    if (command && m_device.supports(*command)) {
        m_recorder({getUID(), command->typeName(), false});
    }
}

}  // namespace Veltrani::ProjectorSession
