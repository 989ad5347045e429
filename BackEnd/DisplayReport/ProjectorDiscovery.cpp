#include "DisplayReport/ProjectorDiscovery.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/PJLinkProjector.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DisplayReport/TextTable.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace Veltrani::DisplayReport {

using namespace DeviceFramework2;

namespace {

template <class Question>
std::string answerOf(Device& device) {
    const auto question = std::make_shared<Question>();
    device.execute(question);
    return question->getResult();
}

}  // namespace

ProjectorDiscovery::ProjectorDiscovery(DeviceManager::Settings settings, Progress progress)
    : m_settings(std::move(settings)), m_progress(std::move(progress)) {}

std::vector<DiscoveredProjector> ProjectorDiscovery::run() const {
    auto answers = PjlinkSearch(m_settings.search).run();
    std::sort(answers.begin(), answers.end(), [](const auto& a, const auto& b) { return a.mac < b.mac; });
    std::vector<DiscoveredProjector> projectors;
    projectors.reserve(answers.size());
    for (const PjlinkSearch::Answer& answer : answers) {
        if (m_progress) {
            m_progress(projectors.size(), answers.size());
        }
        projectors.push_back(ask(answer));
    }
    return projectors;
}

DiscoveredProjector ProjectorDiscovery::ask(const PjlinkSearch::Answer& answer) const {
    const DeviceSnippet snippet{DeviceTypeManager::pjlinkTypeName(), answer.mac, answer.host,
                                m_settings.search.targetPort};
    DiscoveredProjector found{answer.mac, ProjectorAddress{answer.host, snippet.port}.text(), {}, {}, {}};
    try {
        PJLinkProjector projector(snippet, m_settings.pjlink);
        projector.contact();
        found.name = answerOf<GetProjectorName>(projector);
        found.model = answerOf<GetModel>(projector);
    } catch (const DeviceException& fault) {
        found.fault = printable(toUtf8(fault.message));
    }
    return found;
}

void ProjectorDiscovery::print(const std::vector<DiscoveredProjector>& projectors, std::ostream& out) {
    TextTable table({"mac", "address", "name", "model"});
    for (const DiscoveredProjector& projector : projectors) {
        table.add({toUtf8(projector.mac.text()), projector.address, projector.name, projector.model});
    }
    table.print(out);
}

}  // namespace Veltrani::DisplayReport
