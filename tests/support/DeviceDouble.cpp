#include "support/DeviceDouble.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/Commands.h"

namespace framework = Veltrani::DeviceFramework2;

namespace {

std::string textOf(const framework::Command& command) {
    if (const auto* fill = dynamic_cast<const framework::FillParameters*>(&command)) {
        return command.typeName() + " " + std::to_string(fill->getFillParameter());
    }
    if (const auto* input = dynamic_cast<const framework::SetActiveInputSignalIndex*>(&command)) {
        return command.typeName() + " " + std::to_string(input->getIndex());
    }
    return command.typeName();
}

template <class Question, class Answer>
void answer(framework::Command& command, const std::optional<Answer>& value) {
    if (auto* const question = dynamic_cast<Question*>(&command); question != nullptr && value) {
        question->setResult(*value);
    }
}

}  // namespace

DeviceDouble::DeviceDouble(const std::wstring& name, Trace* trace)
    : Recorder("device " + Veltrani::toUtf8(name), trace), uid(name) {}

bool DeviceDouble::supports(const framework::Command& command) const {
    recordLine("supports", textOf(command));
    return !refused.contains(command.typeName());
}

void DeviceDouble::execute(const std::shared_ptr<framework::Command>& command) {
    recordLine("execute", textOf(*command));
    answer<framework::GetFirmware>(*command, firmware);
    answer<framework::GetNativeResolution>(*command, nativeResolution);
    answer<framework::GetActiveInputSignalIndex>(*command, activeInput);
}

std::wstring DeviceDouble::getUID() const {
    record("getUID");
    return uid;
}

std::wstring DeviceDouble::getDeviceSnippet() const {
    record("getDeviceSnippet");
    return deviceSnippet;
}

std::wstring DeviceDouble::getUidSourceText() const {
    record("getUidSourceText");
    return uidSourceText;
}

const framework::Location* DeviceDouble::getLocation() const {
    record("getLocation");
    return locationDescription ? &m_place : nullptr;
}

int DeviceDouble::getTypeCode() const {
    record("getTypeCode");
    return typeCode;
}
