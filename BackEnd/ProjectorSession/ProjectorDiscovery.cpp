#include "ProjectorSession/ProjectorDiscovery.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceTalks.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/PJLinkProjector.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DisplayReport/basics/TextTable.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace Veltrani::ProjectorSession {

using namespace DeviceFramework2;

namespace {

/// The questions that are sent to one projector, one after another.
class Introduction {
public:
    explicit Introduction(DiscoveredProjector& found) : m_found(found) {}

    /// The next question; null when there is none left, or after a fault.
    std::shared_ptr<Command> next(const DeviceException* fault) {
        if (fault != nullptr) {
            m_found.fault = onOneLine(toUtf8(fault->message));
            return nullptr;
        }
        ++m_step;
        if (m_step == 1) {
            return m_name;
        }
        if (m_step == 2) {
            m_found.name = m_name->getResult();
            return m_model;
        }
        m_found.model = m_model->getResult();
        return nullptr;
    }

private:
    DiscoveredProjector& m_found;
    int m_step = 0;
    std::shared_ptr<GetProjectorName> m_name = std::make_shared<GetProjectorName>();
    std::shared_ptr<GetModel> m_model = std::make_shared<GetModel>();
};

std::string crowdedLine(const std::vector<std::string>& addresses) {
    const std::size_t more = addresses.size() - 1;
    const std::string others =
        more == 0 ? std::string() : " and " + std::to_string(more) + (more == 1 ? " other" : " others");
    return addresses.front() + others + " replied with more than " +
           std::to_string(PjlinkSearch::MOST_ANSWERS_PER_ADDRESS) +
           " MAC addresses, which no projector has; the rest was left out: add a projector there by its address";
}

std::string notAskedLine(std::size_t count, std::size_t all, const DiscoveryLimits& limits) {
    return std::to_string(count) + " of " + std::to_string(all) +
           " projectors that replied were not queried for name and model: that ends after " +
           std::to_string(limits.projectors) + " projectors and " + std::to_string(limits.time.count() / 1000) +
           " s; see who replies there, or add projectors by their address";
}

}  // namespace

ProjectorDiscovery::ProjectorDiscovery(DeviceManager::Settings settings, DisplayReport::Progress progress,
                                       DiscoveryLimits limits)
    : m_settings(std::move(settings)), m_progress(std::move(progress)), m_limits(limits) {}

Discovery ProjectorDiscovery::run() const {
    const auto heard = PjlinkSearch(m_settings.search).hear();
    Discovery discovery;
    for (const PjlinkSearch::Answer& answer : heard.answers) {
        const ProjectorAddress address{answer.host, m_settings.search.targetPort};
        discovery.projectors.push_back({answer.mac, address.text(), {}, {}, {}});
    }
    const std::size_t asked = std::min(discovery.projectors.size(), m_limits.projectors);
    const std::size_t unasked = discovery.projectors.size() - asked + introduce(discovery.projectors, asked);
    if (!heard.crowded.empty()) {
        discovery.leftOut.push_back(crowdedLine(heard.crowded));
    }
    if (heard.full) {
        discovery.leftOut.push_back("the search ended with " + std::to_string(PjlinkSearch::MOST_ANSWERS) +
                                    " replies; projectors that are missing can be added by their address");
    }
    if (unasked > 0) {
        discovery.leftOut.push_back(notAskedLine(unasked, discovery.projectors.size(), m_limits));
    }
    std::sort(discovery.projectors.begin(), discovery.projectors.end(),
              [](const auto& a, const auto& b) { return a.mac < b.mac; });
    return discovery;
}

std::size_t ProjectorDiscovery::introduce(std::vector<DiscoveredProjector>& projectors, std::size_t count) const {
    std::size_t done = 0;
    const auto report = [&] {
        if (m_progress) {
            m_progress(done, count);
        }
    };
    report();
    std::vector<std::unique_ptr<PJLinkProjector>> devices;
    DeviceTalks talks;
    for (std::size_t i = 0; i < count; ++i) {
        const auto address = ProjectorAddress::parse(projectors[i].address).value();
        const DeviceSnippet snippet{DeviceTypeManager::pjlinkTypeName(), projectors[i].mac, address.host, address.port};
        devices.push_back(std::make_unique<PJLinkProjector>(snippet, m_settings.pjlink));
        const auto introduction = std::make_shared<Introduction>(projectors[i]);
        talks.addContact(*devices.back(), [introduction, &done, &report](const DeviceException* fault) {
            auto question = introduction->next(fault);
            if (!question) {
                ++done;
                report();
            }
            return question;
        });
    }
    talks.run(m_limits.time);
    return count - done;
}

void ProjectorDiscovery::print(const std::vector<DiscoveredProjector>& projectors, std::ostream& out) {
    DisplayReport::TextTable table({"mac", "address", "name", "model"});
    for (const DiscoveredProjector& projector : projectors) {
        table.add({toUtf8(projector.mac.text()), projector.address, projector.name, projector.model});
    }
    table.print(out);
}

}  // namespace Veltrani::ProjectorSession
