#include "DeviceFramework2/DeviceManager.h"

#include "Common/VeltraniLogging.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/DeviceTalks.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/PJLinkProjector.h"
#include "DeviceFramework2/VirtualProjector.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace Veltrani::DeviceFramework2 {

namespace {

const log4cxx::LoggerPtr LOGGER = log4cxx::Logger::getLogger(L"Dravix.DeviceFramework2.DeviceManager");

/// Empty until `setInstance` has been called; null is a valid choice, too.
std::optional<IDeviceManager*>& chosenInstance() {
    static std::optional<IDeviceManager*> chosen;
    return chosen;
}

void requireType(bool realDevice, const std::wstring& typeName) {
    const std::wstring expected =
        realDevice ? DeviceTypeManager::pjlinkTypeName() : DeviceTypeManager::virtualProjectorTypeName();
    if (!typeName.empty() && typeName != expected) {
        throw DeviceException(__FILE__, __LINE__,
                              L"Device type \"" + typeName + L"\": the type of a " +
                                  (realDevice ? L"real" : L"simulated") + L" device is " + expected);
    }
}

/// @param others replies of other projectors to the search
DeviceException notFound(const MacAddress& mac, std::size_t others) {
    return {
        __FILE__, __LINE__,
        L"PJLink projector " + mac.uid() + L" did not answer the search (" + std::to_wstring(others) + L" others did)"};
}

}  // namespace

struct DeviceManager::Entry {
    std::unique_ptr<Device> device;
    bool real = false;
    int count = 1;
    bool anonymous = false;  ///< the UID is made up, and may be the id of an entry of another device
    std::wstring boundId{};  ///< empty until the device is bound

    [[nodiscard]] bool isCalled(const std::wstring& id) const {
        if (!boundId.empty() && boundId == id) {
            return true;
        }
        return (!anonymous || boundId.empty()) && device->getUID() == id;
    }
};

IDeviceManager* DeviceManager::getInstance() {
    if (chosenInstance()) {
        return *chosenInstance();
    }
    static DeviceManager standard;
    return &standard;
}

void DeviceManager::setInstance(IDeviceManager* instance) {
    chosenInstance() = instance;
}

DeviceManager::DeviceManager() = default;

DeviceManager::DeviceManager(Settings settings) : m_settings(std::move(settings)) {}

DeviceManager::~DeviceManager() = default;

AbstractDevice* DeviceManager::getDevice(const std::wstring& configurationId) {
    Entry* entry = findId(configurationId);
    return entry == nullptr ? nullptr : entry->device.get();
}

Device* DeviceManager::createDevice(const std::wstring& snippet, bool realDevice, const std::wstring& typeName) {
    try {
        requireType(realDevice, typeName);
        return realDevice ? createReal(snippet) : createVirtual(snippet);
    } catch (const DeviceException& fault) {
        // Callers report to their users which entry failed, not why.
        VELTRANI_LOG(LOGGER, Error, L"createDevice: " + fault.message);
        throw;
    }
}

void DeviceManager::releaseDevice(AbstractDevice* device) {
    if (device == nullptr) {
        return;
    }
    Entry* entry = findDevice(device);
    if (entry == nullptr) {
        VELTRANI_LOG(LOGGER, Warn, L"releaseDevice: the device is none of this manager's, or was released before");
        return;
    }
    if (--entry->count == 0) {
        m_entries.erase(std::find_if(m_entries.begin(), m_entries.end(),
                                     [entry](const auto& candidate) { return candidate.get() == entry; }));
    }
}

bool DeviceManager::bindDevice(AbstractDevice* device, const std::wstring& configurationId) {
    Entry* entry = findDevice(device);
    const Entry* present = findId(configurationId);
    if (entry == nullptr || configurationId.empty() || (present != nullptr && present != entry)) {
        return false;
    }
    entry->boundId = configurationId;
    return true;
}

std::size_t DeviceManager::deviceCount() const {
    return m_entries.size();
}

int DeviceManager::useCount(const AbstractDevice* device) const {
    const Entry* entry = findDevice(device);
    return entry == nullptr ? 0 : entry->count;
}

DeviceManager::Entry* DeviceManager::findId(const std::wstring& id) const {
    for (const auto& entry : m_entries) {
        if (entry->isCalled(id)) {
            return entry.get();
        }
    }
    return nullptr;
}

DeviceManager::Entry* DeviceManager::findDevice(const AbstractDevice* device) const {
    for (const auto& entry : m_entries) {
        if (entry->device.get() == device) {
            return entry.get();
        }
    }
    return nullptr;
}

Device* DeviceManager::connectDevice(const std::wstring& snippet) {
    return connect(DeviceSnippet::parse(snippet));
}

Device* DeviceManager::createReal(const std::wstring& text) {
    const DeviceSnippet snippet = DeviceSnippet::parse(text);
    try {
        return connect(snippet);
    } catch (const DeviceException& fault) {
        VELTRANI_LOG(LOGGER, Warn, L"createDevice: " + fault.message);
        return nullptr;
    }
}

Device* DeviceManager::connect(DeviceSnippet snippet) {
    if (Entry* known = findId(snippet.mac.uid())) {
        return countAgain(*known, true);
    }
    if (snippet.host.empty()) {
        snippet.host = searchHost(snippet.mac);
    }
    auto projector = std::make_unique<PJLinkProjector>(snippet, m_settings.pjlink);
    projector->contact();
    return add(std::move(projector), true);
}

/// One device on its way into the manager.
struct DeviceManager::Visit {
    const Connecting& connecting;
    DeviceSnippet snippet;
    std::unique_ptr<PJLinkProjector> projector{};  ///< until the first contact has succeeded
    Device* device = nullptr;                      ///< from then on
    bool over = false;

    void fail(const DeviceException& fault) {
        over = true;
        static_cast<void>(connecting.next(nullptr, &fault));
    }
};

void DeviceManager::connectDevices(const std::vector<Connecting>& connecting) {
    std::vector<std::unique_ptr<Visit>> visits;
    std::set<MacAddress> wanted;
    for (const Connecting& one : connecting) {
        try {
            const DeviceSnippet snippet = DeviceSnippet::parse(one.snippet);
            if (!wanted.insert(snippet.mac).second) {
                throw DeviceException(__FILE__, __LINE__,
                                      L"PJLink projector " + snippet.mac.uid() + L" is stated twice");
            }
            visits.push_back(std::make_unique<Visit>(Visit{one, snippet}));
        } catch (const DeviceException& fault) {
            static_cast<void>(one.next(nullptr, &fault));
        }
    }
    searchHosts(visits);
    DeviceTalks talks;
    for (const auto& visit : visits) {
        if (!visit->over) {
            begin(*visit, talks);
        }
    }
    talks.run();
}

void DeviceManager::begin(Visit& visit, DeviceTalks& talks) {
    if (Entry* known = findId(visit.snippet.mac.uid())) {
        visit.device = countAgain(*known, true);
        talks.add(*visit.device,
                  [&visit](const DeviceException* fault) { return visit.connecting.next(visit.device, fault); });
        return;
    }
    try {
        visit.projector = std::make_unique<PJLinkProjector>(visit.snippet, m_settings.pjlink);
    } catch (const DeviceException& fault) {
        visit.fail(fault);
        return;
    }
    talks.addContact(*visit.projector, [this, &visit](const DeviceException* fault) -> std::shared_ptr<Command> {
        if (visit.projector && fault != nullptr) {
            visit.fail(*fault);
            return nullptr;
        }
        if (visit.projector) {
            visit.device = add(std::move(visit.projector), true);
        }
        return visit.connecting.next(visit.device, fault);
    });
}

/// One search for all that have no host: the port at which replies arrive can be held only once.
void DeviceManager::searchHosts(std::vector<std::unique_ptr<Visit>>& visits) const {
    std::map<MacAddress, Visit*> missing;
    for (const auto& visit : visits) {
        if (!visit->over && visit->snippet.host.empty() && findId(visit->snippet.mac.uid()) == nullptr) {
            missing[visit->snippet.mac] = visit.get();
        }
    }
    if (missing.empty()) {
        return;
    }
    try {
        const auto answers = PjlinkSearch(m_settings.search).run([&](const PjlinkSearch::Answer& answer) {
            if (const auto found = missing.find(answer.mac); found != missing.end()) {
                found->second->snippet.host = answer.host;
                missing.erase(found);
            }
            return missing.empty();
        });
        for (const auto& [mac, visit] : missing) {
            visit->fail(notFound(mac, answers.size()));
        }
    } catch (const DeviceException& fault) {
        for (const auto& [mac, visit] : missing) {
            visit->fail(fault);
        }
    }
}

Device* DeviceManager::createVirtual(const std::wstring& text) {
    const VirtualProjectorSnippet snippet = VirtualProjectorSnippet::parse(text);
    const auto mac = DeviceSnippet::macAddressIn(snippet.wrapped);
    if (Entry* known = mac ? findId(mac->uid()) : nullptr) {
        return countAgain(*known, false);
    }
    Device* const device = add(std::make_unique<VirtualProjector>(snippet, mac ? mac->uid() : freshUid()), false);
    m_entries.back()->anonymous = !mac;
    return device;
}

Device* DeviceManager::countAgain(Entry& entry, bool realDevice) {
    ++entry.count;
    if (entry.real != realDevice) {
        VELTRANI_LOG(LOGGER, Warn,
                     L"createDevice: " + entry.device->getUID() + L" is in use as a " +
                         (entry.real ? L"real" : L"virtual") + L" projector and stays one until it is released");
    }
    return entry.device.get();
}

Device* DeviceManager::add(std::unique_ptr<Device> device, bool realDevice) {
    m_entries.push_back(std::make_unique<Entry>(Entry{std::move(device), realDevice}));
    return m_entries.back()->device.get();
}

std::string DeviceManager::searchHost(const MacAddress& mac) const {
    const auto isWanted = [&](const PjlinkSearch::Answer& answer) { return answer.mac == mac; };
    const auto answers = PjlinkSearch(m_settings.search).run(isWanted);
    if (answers.empty() || !isWanted(answers.back())) {
        throw notFound(mac, answers.size());
    }
    return answers.back().host;
}

/// Returns an identity for a virtual projector whose entry never had a device.
std::wstring DeviceManager::freshUid() {
    std::wstring uid;
    do {
        uid = L"virtual-" + std::to_wstring(++m_anonymous);
    } while (findId(uid) != nullptr);
    return uid;
}

}  // namespace Veltrani::DeviceFramework2
