#pragma once

#include "ScreenManager/ITargetLocatorProvider.h"

#include <log4cxx/logger.h>

#include <functional>
#include <map>
#include <string>

struct TargetLocatorParams;

namespace Veltrani::ScreenManagerDetail {

struct LocatorBuilders;

}  // namespace Veltrani::ScreenManagerDetail

/// Makes the target locators of all projectors and keeps them: one per projector, used again as long as what it was
/// built from stays the same.
///
///     const auto locator = TargetLocatorManager::getInstance()->getTargetLocator(config, projector);
///     if (locator) {
///         channel.setTargetLocator(locator);
///     }
///
/// The single instance appears with the first `getInstance` and goes with `deleteInstance`. Locators are shared: those
/// that were returned outlive their place in the cache and the manager itself. A caller that changes the screen calls
/// `screenDefinitionChanged`. Not safe to use from two threads at once.
class TargetLocatorManager : public ITargetLocatorProvider {
public:
    /// Returns the instance, made on the first call.
    static TargetLocatorManager* getInstance();
    /// Destroys the instance with its cache; nothing when there is none.
    static void deleteInstance();

    TargetLocatorManager(const TargetLocatorManager&) = delete;
    TargetLocatorManager& operator=(const TargetLocatorManager&) = delete;

    /// Returns the locator of a projector, of the kind that the target-data type of the configuration requires. The
    /// same object is returned as last time while nothing that it is built from has changed.
    ///
    /// Empty, with a warning, for an unknown type, without target data, for null arguments, for an entry that lacks
    /// what its kind needs, and for a locator that cannot be built. What the configuration or the projection model
    /// throws passes through and leaves the cache as it was.
    std::shared_ptr<const TargetLocator> getTargetLocator(const XMLConfigManager* config,
                                                          const ProjectorConfig* projector) override;

    /// Forgets every locator, so that each is built again at its next request.
    void screenDefinitionChanged();

private:
    friend struct Veltrani::ScreenManagerDetail::LocatorBuilders;
    friend struct ScreenManagerTestAccess;

    TargetLocatorManager();
    ~TargetLocatorManager() override;

    /// Keeps the cached locator of this name when its record equals `params`; else the one that `factory` makes (null
    /// when there is no memory for it) takes its place. An exception of the suite from the factory is logged, and as
    /// after null the cache then holds nothing under the name; other exceptions, that of an empty factory included,
    /// pass through and leave the cache as it was.
    /// @return whether the cache holds a locator for `params`
    bool checkOrCreateTargetLocator(std::wstring name, const TargetLocatorParams& params,
                                    std::function<TargetLocator*()> factory);

    // Each reads what its kind is built from and makes the cache hold such a locator; returns false when it cannot.
    bool checkOrCreatePlanarTargetLocator(const XMLConfigManager* config, const ProjectorConfig* projector);
    bool checkOrCreateSphereTargetLocator(const XMLConfigManager* config, const ProjectorConfig* projector);
    bool checkOrCreateCollimatedTargetLocator(const XMLConfigManager* config, const ProjectorConfig* projector);
    bool checkOrCreateCustomPlanarTargetLocator(const XMLConfigManager* config, const ProjectorConfig* projector);
    bool checkOrCreateCustomProjectionTargetLocator(const XMLConfigManager* config, const ProjectorConfig* projector);

    static TargetLocatorManager* m_pInstance;
    static log4cxx::LoggerPtr log;

    /// The locators by the identity of the projector.
    std::map<std::wstring, std::shared_ptr<const TargetLocator>> m_locators;
};
