// A program of somebody else: blackens a projector.
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceManager.h"

#include <iostream>
#include <memory>

using namespace Veltrani::DeviceFramework2;

int main() {
    IDeviceManager* manager = DeviceManager::getInstance();  // opens no socket
    Device* projector =
        manager->createDevice(L"<Device type='PJLink' mac='02:00:00:00:00:01' host='127.0.0.1' port='1'/>", true, L"");
    if (projector == nullptr) {  // it does not reply, the log states why
        std::cout << "no projector\n";
        return 0;
    }
    projector->execute(std::make_shared<Device::Drawing::RunFillBlackTo>(5));
    manager->releaseDevice(projector);
}
