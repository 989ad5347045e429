#include "KelvoControl/Configuration.h"

#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "KelvoControl/Blend.h"
#include "KelvoControl/detail/LensModel.h"

#include <string>
#include <utility>

namespace KelvoControl {

namespace {

bool projectsThroughModels(const XMLConfigManager& config) {
    const TargetLocatorConfig* const targetData = config.getTargetLocatorConfig();
    const std::wstring type = targetData != nullptr ? targetData->getTargetDataType() : std::wstring();
    return type == BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC || type == BaseConfig::TARGET_DATA_3D;
}

Point<double, 3> eyePointOf(const XMLConfigManager& config) {
    const IScreenConfig* const screen = config.getScreenConfig();
    return screen != nullptr ? screen->getEyePoint() : Point<double, 3>();
}

/// Returns the name of the model that an entry requires; empty for none.
std::wstring modelNameOf(const ProjectorConfig& projector, bool isUsed) {
    const std::wstring name = projector.getProjectionModelName();
    if (isUsed) {
        return name.empty() ? L"Rectilinear" : name;
    }
    // A file that is missing must not stop a display that has no use for it.
    const bool hasFile = !Veltrani::KelvoControlDetail::LensName::of(name, L"").file.empty();
    return hasFile ? std::wstring() : name;
}

std::shared_ptr<const Blend> blendOf(const ProjectorConfig& projector, bool usesModels,
                                     const Point<double, 3>& eyePoint) {
    const std::wstring modelName = modelNameOf(projector, usesModels);
    Viewport viewport = Viewport::of(projector, modelName);
    viewport.width = projector.getWidth();
    viewport.height = projector.getHeight();
    const auto model = modelName.empty() ? nullptr : Blend::createProjectionModel(viewport, modelName, L"");
    return std::make_shared<const Blend>(Frustum::of(viewport, eyePoint), model);
}

}  // namespace

Configuration::Configuration() = default;

Configuration::Configuration(const XMLConfigManager* config) {
    if (config == nullptr) {
        return;
    }
    const bool usesModels = projectsThroughModels(*config);
    const Point<double, 3> eyePoint = eyePointOf(*config);
    for (const std::wstring& id : config->getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config->getProjectorConfig(id);
        if (projector == nullptr) {
            continue;
        }
        try {
            add(id, std::make_unique<KelvoProjector>(blendOf(*projector, usesModels, eyePoint)));
        } catch (VeltraniExceptionBase& fault) {
            fault.message.insert(0, L"Projector \"" + id + L"\": ");
            throw;
        }
    }
}

Configuration::~Configuration() = default;

void Configuration::add(const KelvoProjectorUID& uid, std::unique_ptr<KelvoProjector> projector) {
    if (!projector) {
        return;
    }
    // Both places are found before either is filled: without memory for them no pointer to a dead entry is left.
    std::unique_ptr<KelvoProjector>& owner = m_owned[uid];
    m_projectors[uid] = projector.get();
    owner = std::move(projector);
}

const std::map<KelvoProjectorUID, KelvoProjector*>& Configuration::getProjectors() const {
    return m_projectors;
}

}  // namespace KelvoControl
