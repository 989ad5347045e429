#pragma once

#include "DeviceFramework2/IDeviceManager.h"
#include "DeviceFramework2/PjlinkSearch.h"
#include "DeviceFramework2/PjlinkSettings.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DeviceFramework2 {

class Command;
class DeviceTalks;
struct DeviceException;
struct DeviceSnippet;

/// The device manager: PJLink projectors and virtual ones.
///
/// Opens no socket on its own; `createDevice` of a real projector does. A snippet without a host makes it search for
/// the projector, which takes up to the time of `PjlinkSearchSettings`.
class DeviceManager : public IDeviceManager {
public:
    struct Settings {
        PjlinkSettings pjlink;
        PjlinkSearchSettings search;
    };

    /// Returns the manager of the process: one with the default settings, unless another one was set.
    [[nodiscard]] static IDeviceManager* getInstance();
    /// Puts another manager in its place, for instance a double; null too, for a system without one. Not owned. To
    /// restore the previous one, keep what `getInstance` returned before.
    static void setInstance(IDeviceManager* instance);

    DeviceManager();
    explicit DeviceManager(Settings settings);
    ~DeviceManager() override;

    [[nodiscard]] const Settings& settings() const { return m_settings; }

    /// Finds a device by the UID under which it was created, or by the id that it was bound to. A virtual projector
    /// without a MAC address has a made-up UID, which may be an entry's id: once it is bound, it is found by that id
    /// alone.
    AbstractDevice* getDevice(const std::wstring& configurationId) override;

    /// A device whose UID is already known is counted once more and returned, whatever its kind; a warning is logged
    /// when it is not of the kind that was requested. Throws `DeviceException`, with the cause in the log too, for a
    /// broken snippet and for a type that does not exist or contradicts `realDevice` or the snippet.
    Device* createDevice(const std::wstring& snippet, bool realDevice, const std::wstring& typeName) override;

    /// As `createDevice` for a real device, but throws a `DeviceException` with the reason when the device does not
    /// answer, and logs nothing.
    Device* connectDevice(const std::wstring& snippet);

    /// One of several devices that are connected at the same time.
    struct Connecting {
        std::wstring snippet;
        /// Called once with the device, counted for the caller, or with null and the fault that prevented the
        /// connection. Then, as in `DeviceTalks`, after each command that it returned; null ends the talk.
        std::function<std::shared_ptr<Command>(Device* device, const DeviceException* fault)> next;
    };

    /// As `connectDevice` for many devices, which takes as long as the slowest of them, with the first commands to each
    /// (`DeviceTalks`). Those without a host are searched for before, all in one search. A second snippet with the MAC
    /// address of an earlier one is a fault.
    void connectDevices(const std::vector<Connecting>& connecting);

    /// A device that this manager does not own is left alone, and a warning is logged.
    void releaseDevice(AbstractDevice* device) override;

    /// Returns false when this manager does not own the device or another one has the id.
    bool bindDevice(AbstractDevice* device, const std::wstring& configurationId) override;

    /// Returns the number of devices that exist.
    [[nodiscard]] std::size_t deviceCount() const;
    /// How often a device must still be released; 0 for one that this manager does not own.
    [[nodiscard]] int useCount(const AbstractDevice* device) const;

private:
    struct Entry;
    struct Visit;

    [[nodiscard]] Entry* findId(const std::wstring& id) const;
    [[nodiscard]] Entry* findDevice(const AbstractDevice* device) const;
    Device* createReal(const std::wstring& text);
    Device* createVirtual(const std::wstring& text);
    Device* countAgain(Entry& entry, bool realDevice);
    Device* add(std::unique_ptr<Device> device, bool realDevice);
    Device* connect(DeviceSnippet snippet);
    void begin(Visit& visit, DeviceTalks& talks);
    void searchHosts(std::vector<std::unique_ptr<Visit>>& visits) const;
    [[nodiscard]] std::string searchHost(const MacAddress& mac) const;
    std::wstring freshUid();

    Settings m_settings;
    std::vector<std::unique_ptr<Entry>> m_entries;
    int m_anonymous = 0;
};

}  // namespace Veltrani::DeviceFramework2
