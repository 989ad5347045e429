#pragma once

#include "DeviceFramework2/Device.h"
#include "ProjectorSession/CommandRecord.h"

#include <functional>
#include <utility>

namespace Veltrani::ProjectorSession {

/// Stands before a device and records what is sent to it; everything is passed through unchanged.
///
/// A command that the device takes without supporting it is not recorded: nothing reaches the projector then.
class RecordedDevice : public DeviceFramework2::Device {
public:
    using Recorder = std::function<void(const CommandRecord&)>;

    /// @param device not owned; must outlive this
    /// @param recorder called with each command once it is over
    RecordedDevice(DeviceFramework2::Device& device, Recorder recorder)
        : m_device(device), m_recorder(std::move(recorder)) {}

    [[nodiscard]] bool supports(const DeviceFramework2::Command& command) const override;
    void execute(const std::shared_ptr<DeviceFramework2::Command>& command) override;
    [[nodiscard]] std::wstring getUID() const override { return m_device.getUID(); }
    [[nodiscard]] std::wstring getDeviceSnippet() const override { return m_device.getDeviceSnippet(); }
    [[nodiscard]] std::wstring getUidSourceText() const override { return m_device.getUidSourceText(); }
    [[nodiscard]] const DeviceFramework2::Location* getLocation() const override { return m_device.getLocation(); }
    [[nodiscard]] int getTypeCode() const override { return m_device.getTypeCode(); }

    /// The device behind.
    [[nodiscard]] DeviceFramework2::Device& device() const { return m_device; }

private:
    DeviceFramework2::Device& m_device;
    Recorder m_recorder;
};

}  // namespace Veltrani::ProjectorSession
