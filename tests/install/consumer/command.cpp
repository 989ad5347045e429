// A program of somebody else: a command that no projector of the libraries knows.
#include "DeviceFramework2/Command.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/PJLinkProjector.h"

#include <iostream>
#include <string>

using namespace Veltrani::DeviceFramework2;

/// Hours that the lamp has been on.
class GetLampHours : public GetCommand<int> {
public:
    [[nodiscard]] std::string typeName() const override { return "GetLampHours"; }
};

int main() {
    const PJLinkProjector projector(
        DeviceSnippet::parse(L"<Device type='PJLink' mac='02:00:00:00:00:01' host='127.0.0.1' port='1'/>"),
        PjlinkSettings());
    const GetLampHours command;
    std::cout << command.typeName() << (projector.supports(command) ? " is" : " is not") << " supported\n";
}
