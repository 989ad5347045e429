#include "DeviceFramework2/IDeviceManager.h"

namespace Veltrani::DeviceFramework2 {

bool IDeviceManager::bindDevice(AbstractDevice* /*device*/, const std::wstring& /*configurationId*/) {
    return false;
}

}  // namespace Veltrani::DeviceFramework2
