#include "KelvoControl/KelvoProjector.h"

#include "Common/VeltraniException.h"
#include "DeviceFramework2/Device.h"

#include <utility>

KelvoProjector::KelvoProjector(std::shared_ptr<const Blend> blend) : m_blend(std::move(blend)) {
    if (m_blend == nullptr) {
        throw VeltraniException(__FILE__, __LINE__, L"A projector of the channel maps needs its blend");
    }
}

const Blend& KelvoProjector::getBlend() const {
    return *m_blend;
}

std::wstring KelvoProjector::suggestNameForChannel(const Veltrani::DeviceFramework2::Device* device) {
    if (device == nullptr) {
        return {};
    }
    const Veltrani::DeviceFramework2::Location* const location = device->getLocation();
    const std::wstring description = location != nullptr ? location->getDescription() : std::wstring();
    return description.empty() ? device->getUID() : description;
}
