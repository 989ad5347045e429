#include "ScreenManager/detail/ChannelDevices.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Common/VeltraniLogging.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DravixDiagnostics/DravixDiagnostics.h"
#include "KelvoControl/KelvoProjector.h"

using Veltrani::DeviceFramework2::Device;
using Veltrani::DeviceFramework2::DeviceTypeManager;
using Veltrani::DeviceFramework2::GetFirmware;
using Veltrani::DeviceFramework2::GetNativeResolution;
using Veltrani::DeviceFramework2::IDeviceManager;
using Veltrani::DeviceFramework2::Location;

namespace Veltrani::ScreenManagerDetail {

namespace {

/// The logger of the `ChannelManager`, of which this is the part that talks to the devices.
const log4cxx::LoggerPtr LOGGER = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.ChannelManager");

constexpr int PONDS_OF_MIRROR = 4;
constexpr int SMALL_SIZE = 7;
constexpr int USUAL_SIZE = 14;
/// Some models come with two panels; this one takes the small size.
constexpr Point<int, 2> SMALL_PANEL{2048, 1080};

void logDevice(Device& device, const Location& place, const std::wstring& uid, const std::wstring& snippet,
               const log4cxx::spi::LocationInfo& operation) {
    VELTRANI_LOG_AT(operation, LOGGER, Info, L"addChannel() - Projector UID = [" + uid + L"]");
    // Requested at any level of the log, so that a device that does not answer always shows it.
    if (const auto firmware = askDevice<GetFirmware>(&device)) {
        VELTRANI_LOG_AT(operation, LOGGER, Info,
                        L"addChannel() - Projector Firmware = [" + Veltrani::fromUtf8(*firmware) + L"]");
    }
    VELTRANI_LOG_AT(operation, LOGGER, Info, L"addChannel() - Location desc = [" + place.getDescription() + L"]");
    VeltraniLogging::multiLineLog(LOGGER, L"addChannel() - Device snippet = ", snippet);
}

void setPondsOfMirror(ProjectorConfig& entry, int size) {
    for (int i = 0; i < PONDS_OF_MIRROR; ++i) {
        entry.setPondOfMirror(i, static_cast<unsigned char>(size));
    }
}

}  // namespace

ProjectorBinding::ProjectorBinding(XMLConfigManager* config, IDeviceManager* deviceManager, bool replaceMissing,
                                   const log4cxx::spi::LocationInfo& operation)
    : m_config(config), m_deviceManager(deviceManager), m_replaceMissing(replaceMissing), m_operation(operation) {}

ProjectorBinding::Result ProjectorBinding::bind(const std::wstring& id, ProjectorConfig& entry) const {
    Device* const device = acquire(id, entry);
    std::wstring uid;
    const bool renamed = releaseOnFault(*m_deviceManager, device, [&] {
        const std::wstring identity = entry.getIdentity();
        uid = Veltrani::DeviceFramework2::createMACAddressDeviceUIDFromDeviceSnippet(identity,
                                                                                     device->getUidSourceText());
        return m_config->renameProjectorConfig(id, uid);
    });
    if (!renamed) {
        m_deviceManager->releaseDevice(device);
        VELTRANI_LOG_AT(m_operation, LOGGER, Error,
                        id + L" is replaced by " + uid +
                            L" which is already in the config.  Quorvane does not support projector swapping");
        throw ChannelSwapException(id, uid);
    }
    releaseOnFault(*m_deviceManager, device, [&] { entry.setDeviceSnippet(device->getDeviceSnippet()); });
    return {device, uid};
}

Device* ProjectorBinding::acquire(const std::wstring& id, const ProjectorConfig& entry) const {
    try {
        Device* const device = DravixDiagnostics::doVirtualLoad() ? createVirtual(id, entry) : createConfigured(entry);
        if (device == nullptr) {
            throw ChannelInitializationException(entry.getSectionID());
        }
        return device;
    } catch (const ChannelInitializationException&) {
        VELTRANI_LOG_AT(m_operation, LOGGER, Error, L"AddDevice threw ChannelInitializationException for " + id);
        if (!m_replaceMissing) {
            throw;
        }
        return replace(id, entry, L"Virtual replace failed for ");
    } catch (...) {
        VELTRANI_LOG_AT(m_operation, LOGGER, Error, L"Exception occured when adding " + id);
        if (!m_replaceMissing) {
            throw ChannelInitializationException(entry.getSectionID());
        }
        return replace(id, entry, L"Virtual replace (2) failed for ");
    }
}

Device* ProjectorBinding::createConfigured(const ProjectorConfig& entry) const {
    const std::wstring snippet = entry.getDeviceSnippet();
    return m_deviceManager != nullptr ? m_deviceManager->createDevice(snippet, true, std::wstring()) : nullptr;
}

Device* ProjectorBinding::createVirtual(const std::wstring& id, const ProjectorConfig& entry) const {
    VELTRANI_LOG_AT(m_operation, LOGGER, Warn, L"Replacing projector " + id + L"with (offline) virtual projector");
    std::wstring snippet = L"<Wrapper><Projector Width='" + std::to_wstring(entry.getWidth());
    snippet += L"' Height='" + std::to_wstring(entry.getHeight());
    snippet += L"'>" + entry.getDeviceSnippet() + L"</Projector></Wrapper>";
    return m_deviceManager != nullptr
               ? m_deviceManager->createDevice(snippet, false, DeviceTypeManager::virtualProjectorTypeName())
               : nullptr;
}

/// @param failure what is logged, before the id, when there is no virtual projector either
Device* ProjectorBinding::replace(const std::wstring& id, const ProjectorConfig& entry,
                                  const std::wstring& failure) const {
    Device* const device = createVirtual(id, entry);
    if (device == nullptr) {
        VELTRANI_LOG_AT(m_operation, LOGGER, Error, failure + id);
        throw ChannelInitializationException(entry.getSectionID());
    }
    return device;
}

void DeviceEntry::store(Device& device, const std::wstring& uid, ProjectorConfig& entry,
                        const log4cxx::spi::LocationInfo& operation) {
    const std::wstring snippet = device.getDeviceSnippet();
    if (const Location* const place = device.getLocation()) {
        logDevice(device, *place, uid, snippet, operation);
    }
    entry.setDeviceSnippet(snippet);
    setPondsOfMirror(entry, pondOfMirrorSize(&device));
    entry.setName(KelvoProjector::suggestNameForChannel(&device));
    if (const auto resolution = askDevice<GetNativeResolution>(&device)) {
        entry.setWidth((*resolution)[0]);
        entry.setHeight((*resolution)[1]);
    }
}

int DeviceEntry::pondOfMirrorSize(Device* device) {
    const Point<int, 2> resolution = askDevice<GetNativeResolution>(device).value_or(Point<int, 2>{0, 0});
    const int typeCode = device != nullptr ? device->getTypeCode() : DeviceTypeManager::NO_TYPE_CODE;
    switch (typeCode) {
        case 55:
        case 68:
            return resolution == SMALL_PANEL ? SMALL_SIZE : USUAL_SIZE;
        case 64:
            return 10;
        case 65:
            return 14;
        case 66:
            return 0;
        default:
            return USUAL_SIZE;
    }
}

}  // namespace Veltrani::ScreenManagerDetail
