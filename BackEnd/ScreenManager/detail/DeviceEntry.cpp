#include "ScreenManager/detail/DeviceEntry.h"

#include "Common/Utf8.h"
#include "Common/VeltraniLogging.h"
#include "Configuration/ProjectorConfig.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "KelvoControl/KelvoProjector.h"
#include "ScreenManager/detail/DeviceQuestion.h"

using Veltrani::DeviceFramework2::Device;
using Veltrani::DeviceFramework2::DeviceTypeManager;
using Veltrani::DeviceFramework2::GetFirmware;
using Veltrani::DeviceFramework2::GetNativeResolution;
using Veltrani::DeviceFramework2::Location;

namespace {

/// Of whom this is the part that describes devices.
const log4cxx::LoggerPtr LOGGER = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.ChannelManager");

constexpr int PONDS_OF_MIRROR = 4;
constexpr int SMALL_SIZE = 7;
constexpr int USUAL_SIZE = 14;
/// Some models come with two panels; this one takes the small size.
constexpr Point<int, 2> SMALL_PANEL{2048, 1080};

void logDevice(Device& device, const Location& place, const std::wstring& uid, const std::wstring& snippet,
               const log4cxx::spi::LocationInfo& operation) {
    VELTRANI_LOG_AT(operation, LOGGER, Info, L"addChannel() - Projector UID = [" + uid + L"]");
    // Asked for at any level of the log, so that a device without an answer shows it always.
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
