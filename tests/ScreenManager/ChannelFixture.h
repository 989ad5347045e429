#pragma once

#include "Common/VeltraniException.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DravixDiagnostics/DravixDiagnostics.h"
#include "ScreenManager/ChannelManager.h"
#include "support/ConfigManagerDouble.h"
#include "support/DeviceManagerDouble.h"
#include "support/LogTrap.h"
#include "support/Trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// A channel manager over doubles of the configuration and of the device manager. Everything that it asks of them, of
/// the entries and of the devices, and every log record, stands in one trace.
class ChannelFixture : public testing::Test {
protected:
    ChannelFixture() : m_previous(Veltrani::DeviceFramework2::DeviceManager::getInstance()) {
        useDeviceManager(&devices);
    }
    ~ChannelFixture() override {
        manager.reset();
        DravixDiagnostics::setVirtualLoad(false);
        Veltrani::DeviceFramework2::DeviceManager::setInstance(m_previous);
    }

    /// Starts again with a manager that has no channels, on this device manager; null: without one.
    void useDeviceManager(Veltrani::DeviceFramework2::IDeviceManager* deviceManager) {
        Veltrani::DeviceFramework2::DeviceManager::setInstance(deviceManager);
        manager = std::make_unique<ChannelManager>(&config);
    }

    /// An entry whose section is called "section <id>" and whose snippet is "<id/>".
    ProjectorConfigDouble& addEntry(const std::wstring& id, const std::wstring& name) {
        auto& entry = *m_entries.emplace_back(std::make_unique<ProjectorConfigDouble>(id, &trace));
        entry.sectionId = L"section " + id;
        entry.name = name;
        entry.deviceSnippet = L"<" + id + L"/>";
        config.projectors.push_back(&entry);
        return entry;
    }

    /// A device that says where it is: "at <uid>".
    DeviceDouble& makeDevice(const std::wstring& uid) {
        auto& device = *m_devices.emplace_back(std::make_unique<DeviceDouble>(uid, &trace));
        device.deviceSnippet = L"<" + uid + L" now/>";
        device.locationDescription = L"at " + uid;
        return device;
    }

    /// An entry and the device that is created from it.
    DeviceDouble& addProjector(const std::wstring& id, const std::wstring& name) {
        const ProjectorConfigDouble& entry = addEntry(id, name);
        DeviceDouble& device = makeDevice(id);
        devices.creatable[{entry.deviceSnippet, true}] = &device;
        return device;
    }

    /// Channels P0, P1, ... of these names, each with an entry and a device.
    void makeChannels(const std::vector<std::wstring>& names) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            addProjector(L"P" + std::to_wstring(i), names[i]);
        }
        manager->initialize(false);
        log.clear();
        trace.clear();
    }

    [[nodiscard]] std::vector<std::wstring> channelNames() const {
        std::vector<std::wstring> names;
        for (const Channel& channel : manager->getChannels()) {
            names.push_back(channel.getName());
        }
        return names;
    }

    /// Where each log record comes from, as "Type::function in File.cpp: " and its text.
    [[nodiscard]] std::vector<std::string> located() const {
        std::vector<std::string> texts;
        for (const LogTrap::Record& record : log.records()) {
            const std::string file = record.file.substr(record.file.rfind('/') + 1);
            texts.push_back(record.type + "::" + record.function + " in " + file + ": " + record.message);
        }
        return texts;
    }

    ProjectorConfigDouble& entry(std::size_t index) { return *m_entries.at(index); }
    DeviceDouble& device(std::size_t index) { return *m_devices.at(index); }

    /// How log records of the manager begin in the trace.
    static inline const std::string INFO = "INFO Dravix.ScreenManager.ChannelManager: ";
    static inline const std::string WARN = "WARN Dravix.ScreenManager.ChannelManager: ";
    static inline const std::string ERROR = "ERROR Dravix.ScreenManager.ChannelManager: ";
    static inline const std::string FATAL = "FATAL Dravix.ScreenManager.ChannelManager: ";

    Trace trace;
    LogTrap log{log4cxx::Level::getAll(), &trace};
    ConfigManagerDouble config{&trace};
    DeviceManagerDouble devices{&trace};

private:
    std::vector<std::unique_ptr<ProjectorConfigDouble>> m_entries;
    std::vector<std::unique_ptr<DeviceDouble>> m_devices;
    Veltrani::DeviceFramework2::IDeviceManager* m_previous;

protected:
    // Last, so that it goes before what it uses.
    std::unique_ptr<ChannelManager> manager;
};

/// What a step throws. A step that throws nothing of this type fails the test.
template <class Fault, class Step>
Fault faultOf(Step&& step) {
    try {
        step();
    } catch (const Fault& fault) {
        return fault;
    }
    throw std::runtime_error("nothing was thrown");
}
