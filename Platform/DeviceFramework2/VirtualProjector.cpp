#include "DeviceFramework2/VirtualProjector.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceTypeManager.h"

namespace Veltrani::DeviceFramework2 {

namespace {

constexpr const char* SIMULATED = "simulated (virtual projector)";

template <class... Kinds>
bool isOneOf(const Command& command) {
    return ((dynamic_cast<const Kinds*>(&command) != nullptr) || ...);
}

}  // namespace

VirtualProjector::VirtualProjector(const VirtualProjectorSnippet& snippet, const std::wstring& uid)
    : m_snippet(snippet), m_uid(uid), m_place(uid), m_input(snippet.input) {}

bool VirtualProjector::supports(const Command& command) const {
    return isOneOf<GetFirmware, GetNativeResolution, GetActiveInputSignalIndex, GetPowerState, GetPictureMute,
                   GetProjectorName, GetModel, SetActiveInputSignalIndex, Drawing::RunFillBlackTo,
                   Drawing::RunFill50GrayTo, Drawing::RunClearTo, Geometry::DisableWhiteLevelWarp,
                   Geometry::DisableWhiteLevelBlend, Geometry::DisableBlackLevelBlend>(command);
}

void VirtualProjector::execute(const std::shared_ptr<Command>& command) {
    if (!command) {
        throw DeviceException(__FILE__, __LINE__, m_place.getDescription() + L": no command was given");
    }
    const std::wstring name = m_place.getDescription() + L", command " + fromUtf8OrBytes(command->typeName());
    if (!supports(*command)) {
        throw DeviceException(__FILE__, __LINE__, name + L": not supported");
    }
    const std::optional<int> parameter = parameterOf(*command);
    if (isOneOf<SetActiveInputSignalIndex>(*command) && *parameter < 0) {
        throw DeviceException(__FILE__, __LINE__,
                              name + L": input index " + std::to_wstring(*parameter) + L" is negative");
    }
    answer(*command);
    m_sent.push_back({command->typeName(), parameter});
    if (m_sent.size() > LONGEST_HISTORY) {
        m_sent.pop_front();
    }
}

std::wstring VirtualProjector::getUID() const {
    return m_uid;
}

std::wstring VirtualProjector::getDeviceSnippet() const {
    return m_snippet.wrapped;
}

std::wstring VirtualProjector::getUidSourceText() const {
    return m_snippet.wrapped;
}

const Location* VirtualProjector::getLocation() const {
    return &m_place;
}

int VirtualProjector::getTypeCode() const {
    return DeviceTypeManager::NO_TYPE_CODE;
}

std::optional<int> VirtualProjector::parameterOf(const Command& command) {
    if (const auto* fill = dynamic_cast<const FillParameters*>(&command)) {
        return fill->getFillParameter();
    }
    if (const auto* input = dynamic_cast<const SetActiveInputSignalIndex*>(&command)) {
        return input->getIndex();
    }
    return std::nullopt;
}

void VirtualProjector::answer(Command& command) {
    if (auto* firmware = dynamic_cast<GetFirmware*>(&command)) {
        firmware->setResult(SIMULATED);
    } else if (auto* resolution = dynamic_cast<GetNativeResolution*>(&command)) {
        resolution->setResult({m_snippet.width, m_snippet.height});
    } else if (auto* input = dynamic_cast<GetActiveInputSignalIndex*>(&command)) {
        input->setResult(m_input);
    } else if (auto* power = dynamic_cast<GetPowerState*>(&command)) {
        power->setResult(PowerState::ON);
    } else if (auto* mute = dynamic_cast<GetPictureMute*>(&command)) {
        mute->setResult(m_black);
    } else if (auto* name = dynamic_cast<GetProjectorName*>(&command)) {
        name->setResult(toUtf8(m_place.getDescription()));
    } else if (auto* model = dynamic_cast<GetModel*>(&command)) {
        model->setResult(SIMULATED);
    } else if (isOneOf<Drawing::RunFillBlackTo, Drawing::RunFill50GrayTo, Drawing::RunClearTo>(command)) {
        m_black = isOneOf<Drawing::RunFillBlackTo>(command);
    } else if (const auto* selected = dynamic_cast<const SetActiveInputSignalIndex*>(&command)) {
        m_input = selected->getIndex();
    }
}

}  // namespace Veltrani::DeviceFramework2
