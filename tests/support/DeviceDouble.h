#pragma once

#include "Common/Point.h"
#include "DeviceFramework2/Device.h"
#include "support/Recorder.h"

#include <optional>
#include <set>
#include <string>

/// A device that returns what its members state. Commands stand in the trace as "RunFillBlackTo 5": the name of their
/// type and their parameter, if they have one.
class DeviceDouble : public Veltrani::DeviceFramework2::Device, public Recorder {
public:
    /// @param name the UID, and the name in the trace
    explicit DeviceDouble(const std::wstring& name, Trace* trace = nullptr);

    std::wstring uid;
    std::wstring deviceSnippet;
    std::wstring uidSourceText;
    /// Nothing: no location.
    std::optional<std::wstring> locationDescription;
    int typeCode = 0;

    /// The type names of the commands that it does not support.
    std::set<std::string> refused;
    /// Nothing: the question is executed but has no result.
    std::optional<std::string> firmware;
    std::optional<Point<int, 2>> nativeResolution;
    std::optional<int> activeInput;

    bool supports(const Veltrani::DeviceFramework2::Command& command) const override;
    void execute(const std::shared_ptr<Veltrani::DeviceFramework2::Command>& command) override;
    std::wstring getUID() const override;
    std::wstring getDeviceSnippet() const override;
    std::wstring getUidSourceText() const override;
    const Veltrani::DeviceFramework2::Location* getLocation() const override;
    int getTypeCode() const override;

private:
    class Place : public Veltrani::DeviceFramework2::Location {
    public:
        explicit Place(const DeviceDouble& device) : m_device(device) {}
        std::wstring getDescription() const override { return m_device.locationDescription.value_or(L""); }

    private:
        const DeviceDouble& m_device;
    };

    Place m_place{*this};
};
