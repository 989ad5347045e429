// A program of somebody else: requests the power state of many projectors at the same time, in one thread.
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/DeviceTalks.h"
#include "DeviceFramework2/PJLinkProjector.h"

#include <iostream>
#include <memory>
#include <utility>
#include <vector>

using namespace Veltrani::DeviceFramework2;

int main() {
    std::vector<std::unique_ptr<PJLinkProjector>> projectors;
    for (const wchar_t* snippet : {L"<Device type='PJLink' mac='02:00:00:00:00:01' host='127.0.0.1' port='1'/>",
                                   L"<Device type='PJLink' mac='02:00:00:00:00:02' host='127.0.0.1' port='2'/>"}) {
        projectors.push_back(std::make_unique<PJLinkProjector>(DeviceSnippet::parse(snippet), PjlinkSettings()));
    }

    DeviceTalks talks;
    for (const auto& projector : projectors) {
        const auto question = std::make_shared<GetPowerState>();
        bool requested = false;
        talks.addContact(*projector, [=](const DeviceException* fault) mutable -> std::shared_ptr<Command> {
            if (fault != nullptr) {
                std::wcout << fault->message << L'\n';
            } else if (!std::exchange(requested, true)) {
                return question;
            } else {
                std::wcout << (question->getResult() == PowerState::ON ? L"on\n" : L"not on\n");
            }
            return nullptr;  // the talk is over
        });
    }
    talks.run();
}
