#include "DeviceFramework2/Commands.h"

namespace Veltrani::DeviceFramework2 {

std::string GetFirmware::typeName() const {
    return "GetFirmware";
}

std::string GetNativeResolution::typeName() const {
    return "GetNativeResolution";
}

std::string GetActiveInputSignalIndex::typeName() const {
    return "GetActiveInputSignalIndex";
}

std::string GetPowerState::typeName() const {
    return "GetPowerState";
}

std::string GetPictureMute::typeName() const {
    return "GetPictureMute";
}

std::string GetProjectorName::typeName() const {
    return "GetProjectorName";
}

std::string GetModel::typeName() const {
    return "GetModel";
}

std::string SetActiveInputSignalIndex::typeName() const {
    return "SetActiveInputSignalIndex";
}

std::string Device::Drawing::RunFillBlackTo::typeName() const {
    return "RunFillBlackTo";
}

std::string Device::Drawing::RunFill50GrayTo::typeName() const {
    return "RunFill50GrayTo";
}

std::string Device::Drawing::RunClearTo::typeName() const {
    return "RunClearTo";
}

std::string Device::Geometry::DisableWhiteLevelWarp::typeName() const {
    return "DisableWhiteLevelWarp";
}

std::string Device::Geometry::DisableWhiteLevelBlend::typeName() const {
    return "DisableWhiteLevelBlend";
}

std::string Device::Geometry::DisableBlackLevelBlend::typeName() const {
    return "DisableBlackLevelBlend";
}

}  // namespace Veltrani::DeviceFramework2
