#pragma once

#include <memory>

class ProjectorConfig;
class TargetLocator;
class XMLConfigManager;

/// The interface from which other parts of the suite get target locators.
class ITargetLocatorProvider {
public:
    ITargetLocatorProvider() = default;
    ITargetLocatorProvider(const ITargetLocatorProvider&) = default;
    ITargetLocatorProvider& operator=(const ITargetLocatorProvider&) = default;

    /// Returns the locator of a projector; empty when the configuration does not describe one.
    virtual std::shared_ptr<const TargetLocator> getTargetLocator(const XMLConfigManager* config,
                                                                  const ProjectorConfig* projector) = 0;

    virtual ~ITargetLocatorProvider();
};
