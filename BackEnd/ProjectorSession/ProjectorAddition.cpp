#include "ProjectorSession/ProjectorAddition.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "ScreenManager/ChannelManager.h"

namespace Veltrani::ProjectorSession {

using namespace DeviceFramework2;

namespace {

[[noreturn]] void refuse(const ProjectorConfig& entry, const std::wstring& what) {
    throw VeltraniException(what + L" is there already: entry " + entry.getIdentity() + L", channel \"" +
                            entry.getName() + L"\"");
}

void requireNew(const XMLConfigFile& config, const MacAddress& mac) {
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const entry = config.getProjectorConfig(id);
        const std::wstring uid = createMACAddressDeviceUIDFromDeviceSnippet(id, entry->getDeviceSnippet());
        if (id == mac.uid() || uid == mac.uid()) {
            refuse(*entry, L"the projector " + mac.text());
        }
    }
}

void requireNew(const XMLConfigFile& config, const std::optional<ProjectorAddress>& address) {
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const entry = config.getProjectorConfig(id);
        if (address && ProjectorAddress::ofText(entry->getDeviceSnippet()) == address) {
            refuse(*entry, L"a projector at " + fromUtf8(address->text()));
        }
    }
}

void requireNewName(const XMLConfigFile& config, const std::wstring& name) {
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const entry = config.getProjectorConfig(id);
        if (!name.empty() && entry->getName() == name) {
            refuse(*entry, L"the name \"" + name + L"\"");
        }
    }
}

}  // namespace

ProjectorAddition::Added ProjectorAddition::add(const Target& target) const {
    // What can be seen without the projector goes first.
    requireNew(m_config, target.address);
    requireNewName(m_config, target.name);
    const MacAddress mac = target.mac ? *target.mac : macAt(target.address.value());
    requireNew(m_config, mac);
    Device* const device = connect(mac, target);
    if (target.mac && target.address) {
        requireSame(mac, *target.address, device);
    }
    ChannelManager channels(&m_config);
    channels.setDeviceManager(&m_devices);
    addChannel(channels, device);

    Channel channel = channels.getChannelInfo(channels.getChannelIndexByID(mac.uid()));
    if (!target.name.empty()) {
        channel.setName(target.name);
    }
    const Location* const place = device->getLocation();
    return {mac.uid(), channel.getName(), place == nullptr ? std::wstring() : place->getDescription(),
            channel.getConfig()->getWidth(), channel.getConfig()->getHeight()};
}

/// Sends a search to this one address: the reply to a search is the only one in which a projector states its MAC
/// address. Returns nothing without a reply.
std::optional<MacAddress> ProjectorAddition::askMac(const ProjectorAddress& address) const {
    PjlinkSearchSettings settings = m_devices.settings().search;
    settings.targets = {address.host};
    settings.targetPort = address.port;
    settings.ownPort = PjlinkSearchSettings::ownPortFor(address.port);
    const auto isIt = [&](const PjlinkSearch::Answer& answer) { return answer.host == address.host; };
    const auto answers = PjlinkSearch(settings).run(isIt);
    return answers.empty() || !isIt(answers.back()) ? std::nullopt : std::optional(answers.back().mac);
}

/// A MAC address that a user states is compared with the one that the projector reports, where it does: from class 2
/// on. Elsewhere it is taken at the user's word.
void ProjectorAddition::requireSame(const MacAddress& mac, const ProjectorAddress& address, Device* device) const {
    std::optional<MacAddress> told;
    try {
        const bool tells = address.isIpv4() && device->supports(GetFirmware());
        told = tells ? askMac(address) : std::nullopt;
    } catch (const DeviceException&) {
        // No search can be made here, for instance because the port is in use: that is what --mac is for.
        told.reset();
    }
    if (told && *told != mac) {
        m_devices.releaseDevice(device);
        throw VeltraniException(L"the projector at " + fromUtf8(address.text()) + L" has the MAC address " +
                                told->text() + L", not " + mac.text() + L"; correct --mac, or leave it out");
    }
}

MacAddress ProjectorAddition::macAt(const ProjectorAddress& address) const {
    const std::wstring place = fromUtf8(address.text());
    if (!address.isIpv4()) {
        throw VeltraniException(L"the projector at " + place +
                                L" cannot be asked for its MAC address over IPv6; state it with --mac");
    }
    const auto mac = askMac(address);
    if (!mac) {
        throw VeltraniException(L"the projector at " + place +
                                L" does not report its MAC address; check that it has power and that its network " +
                                L"control is switched on; if it has PJLink class 1, state the address with --mac");
    }
    return *mac;
}

/// An entry that was added this moment holds nothing but what can be set.
void ProjectorAddition::repeat(const ProjectorConfig& entry, const std::wstring& statedName, XMLConfigFile& newer) {
    constexpr int PONDS_OF_MIRROR = 4;
    // The same projector has the same address and often the same name: what it is goes first.
    requireNew(newer, MacAddress::parse(entry.getIdentity()).value());
    requireNew(newer, ProjectorAddress::ofText(entry.getDeviceSnippet()));
    requireNewName(newer, statedName);

    ProjectorConfig& added = *newer.addProjectorConfig(entry.getIdentity());
    added.setDeviceSnippet(entry.getDeviceSnippet());
    for (int i = 0; i < PONDS_OF_MIRROR; ++i) {
        added.setPondOfMirror(i, static_cast<unsigned char>(entry.getPondOfMirror(i)));
    }
    added.setName(entry.getName());
    if (entry.getWidth() > 0 && entry.getHeight() > 0) {
        added.setWidth(entry.getWidth());
        added.setHeight(entry.getHeight());
    }
}

Device* ProjectorAddition::connect(const MacAddress& mac, const Target& target) const {
    const bool located = target.address.has_value();
    const DeviceSnippet snippet{DeviceTypeManager::pjlinkTypeName(), mac, located ? target.address->host : "",
                                located ? target.address->port : m_devices.settings().search.targetPort};
    Device* const device = m_devices.connectDevice(snippet.text());
    try {
        requireNew(m_config, ProjectorAddress::of(DeviceSnippet::parse(device->getDeviceSnippet())));
        m_config.addProjectorConfig(mac.uid());
    } catch (...) {
        m_devices.releaseDevice(device);
        throw;
    }
    return device;
}

/// The device belongs to its channel afterwards, and is given back when there is none.
void ProjectorAddition::addChannel(ChannelManager& channels, Device* device) const {
    try {
        channels.addChannel(device, &m_devices);
    } catch (const DeviceException& fault) {
        m_devices.releaseDevice(device);
        throw DeviceException(__FILE__, __LINE__,
                              fault.message + L"; nothing was added: see to the projector, then add it again");
    } catch (...) {
        m_devices.releaseDevice(device);
        throw;
    }
}

}  // namespace Veltrani::ProjectorSession
