#include "ScreenManager/TargetLocatorManager.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Common/VeltraniLogging.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "KelvoControl/Blend.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "ScreenManager/detail/LocatorBuilders.h"

using Veltrani::ScreenManagerDetail::LocatorBuilders;

TargetLocatorManager* TargetLocatorManager::m_pInstance = nullptr;
log4cxx::LoggerPtr TargetLocatorManager::log = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.TargetLocatorManager");

TargetLocatorManager* TargetLocatorManager::getInstance() {
    if (m_pInstance == nullptr) {
        m_pInstance = new TargetLocatorManager();
    }
    return m_pInstance;
}

void TargetLocatorManager::deleteInstance() {
    delete m_pInstance;
    m_pInstance = nullptr;
}

TargetLocatorManager::TargetLocatorManager() = default;

TargetLocatorManager::~TargetLocatorManager() = default;

std::shared_ptr<const TargetLocator> TargetLocatorManager::getTargetLocator(const XMLConfigManager* config,
                                                                            const ProjectorConfig* projector) {
    const bool asked = config != nullptr && projector != nullptr;
    const TargetLocatorConfig* const targetData = asked ? config->getTargetLocatorConfig() : nullptr;
    const std::wstring type = targetData != nullptr ? targetData->getTargetDataType() : std::wstring();
    const DisplayKind* const kind = targetData != nullptr ? DisplayKind::named(type) : nullptr;
    if (kind != nullptr && kind->makeLocator(*this, config, projector)) {
        return m_locators[projector->getIdentity()];
    }
    // Logged after the builder's own message, too: programs that read the logs look for this one.
    VELTRANI_LOG(log, Warn,
                 L"ERROR: TargetLocatorManager::getTargetLocator(), TargetLocator type (" + type + L") not found");
    return nullptr;
}

void TargetLocatorManager::screenDefinitionChanged() {
    // Planar locators are dropped, too, although they hold nothing of the screen: every holder of a locator is to see
    // that it is another one.
    m_locators.clear();
}

// Passed by value, as the callers' interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)
bool TargetLocatorManager::checkOrCreateTargetLocator(std::wstring name, const TargetLocatorParams& params,
                                                      std::function<TargetLocator*()> factory) {
    // NOLINTEND(performance-unnecessary-value-param)
    const auto cached = m_locators.find(name);
    // The handle is empty where an entry has changed its identity while its locator was built.
    if (cached != m_locators.end() && cached->second && params == cached->second->getTargetLocatorParams()) {
        return true;
    }
    std::shared_ptr<const TargetLocator> locator;
    try {
        locator.reset(factory());
    } catch (const VeltraniExceptionBase& fault) {
        // Converted through UTF-8, as everywhere where a description leaves the library: a description that is not
        // valid text is dropped whole.
        VELTRANI_LOG(log, Info,
                     L"Failed creating target locator due to following error: " +
                         Veltrani::fromUtf8(Veltrani::toUtf8(fault.fullDescription())));
    }
    // The new place is allocated before the old one is erased: when memory runs out, everything stays as it was.
    std::map<std::wstring, std::shared_ptr<const TargetLocator>> made;
    if (locator) {
        made.emplace(name, locator);
    }
    // Erased after a failure, too: a locator that no longer fits its projector must not come back.
    m_locators.erase(name);
    m_locators.merge(made);
    return locator != nullptr;
}

bool TargetLocatorManager::checkOrCreatePlanarTargetLocator(const XMLConfigManager* /*config*/,
                                                            const ProjectorConfig* projector) {
    PlanarTargetLocatorParams params;
    params.screenLeft = projector->getScreenLeft();
    params.screenRight = projector->getScreenRight();
    params.screenTop = projector->getScreenTop();
    params.screenBottom = projector->getScreenBottom();
    for (const double bound : {params.screenLeft, params.screenRight, params.screenTop, params.screenBottom}) {
        if (bound == ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED) {
            // Ends without the channel's name: intended, programs that read the logs match the whole text.
            VELTRANI_LOG(log, Warn,
                         L"ERROR:  TargetLocatorManager::checkOrCreateTargetLocator() - calibration file does not "
                         L"contain complete screen area information for channel");
            return false;
        }
    }
    return checkOrCreateTargetLocator(projector->getIdentity(), params,
                                      LocatorBuilders::factoryOf<PlanarTargetLocator>(params));
}

bool TargetLocatorManager::checkOrCreateSphereTargetLocator(const XMLConfigManager* config,
                                                            const ProjectorConfig* projector) {
    SphereTargetLocatorParams params;
    LocatorBuilders::readFrustum(*projector, params);
    const TargetLocatorConfig* const targetData = config->getTargetLocatorConfig();
    if (targetData == nullptr) {
        return false;
    }
    params.eyepoint = targetData->getTargetPosition();
    return checkOrCreateTargetLocator(projector->getIdentity(), params,
                                      LocatorBuilders::factoryOf<SphereTargetLocator>(params));
}

bool TargetLocatorManager::checkOrCreateCollimatedTargetLocator(const XMLConfigManager* config,
                                                                const ProjectorConfig* projector) {
    CollimatedTargetLocatorParams params;
    LocatorBuilders::readFrustum(*projector, params);
    const TargetLocatorConfig* const targetData = config->getTargetLocatorConfig();
    if (targetData == nullptr) {
        return false;
    }
    params.mirrorOrientation = targetData->getMirrorOrientation();
    params.mirrorPosition = targetData->getMirrorPosition();
    params.mirrorRadius = targetData->getMirrorRadius();
    params.eyepoint = targetData->getTargetPosition();
    params.pitchTable = targetData->getPitchTable();
    params.yawTable = targetData->getYawTable();
    return checkOrCreateTargetLocator(projector->getIdentity(), params,
                                      LocatorBuilders::factoryOf<CollimatedTargetLocator>(params));
}

bool TargetLocatorManager::checkOrCreateCustomPlanarTargetLocator(const XMLConfigManager* config,
                                                                  const ProjectorConfig* projector) {
    CustomPlanarTargetLocatorParams params;
    params.resolution[0] = projector->getWidth();
    params.resolution[1] = projector->getHeight();
    params.filename = projector->getCustomPlanarFile();
    if (params.filename.empty()) {
        return false;
    }
    if (!config->processPath(L"").empty()) {
        params.filename = config->processPath(params.filename);
    }
    return checkOrCreateTargetLocator(projector->getIdentity(), params,
                                      LocatorBuilders::factoryOf<CustomPlanarTargetLocator>(params));
}

bool TargetLocatorManager::checkOrCreateCustomProjectionTargetLocator(const XMLConfigManager* /*config*/,
                                                                      const ProjectorConfig* projector) {
    const std::wstring modelName = projector->getProjectionModelName();
    if (modelName.empty()) {
        SphereTargetLocatorParams params;
        LocatorBuilders::readFrustum(*projector, params);
        return checkOrCreateTargetLocator(projector->getIdentity(), params,
                                          LocatorBuilders::factoryOf<SphereTargetLocator>(params));
    }
    CustomProjectionTargetLocatorParams params;
    // The viewport has 1 x 1 pixels: rays do not depend on the size, and a change of the size alone is no reason to
    // build a locator again.
    params.projectionModel = Blend::createProjectionModel(Viewport::of(*projector, modelName), modelName, L"");
    return checkOrCreateTargetLocator(projector->getIdentity(), params,
                                      LocatorBuilders::factoryOf<CustomProjectionTargetLocator>(params));
}
