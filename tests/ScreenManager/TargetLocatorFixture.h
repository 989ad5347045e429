#pragma once

#include "Configuration/BaseConfig.h"
#include "ScreenFixture.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "ScreenManagerTestAccess.h"
#include "support/ConfigManagerDouble.h"
#include "support/TargetLocatorConfigDouble.h"

#include <memory>
#include <string>

/// A fresh manager of target locators, and a configuration of doubles with one projector, every number of which is
/// another one.
class TargetLocatorFixture : public ScreenFixture {
protected:
    TargetLocatorFixture() {
        TargetLocatorManager::deleteInstance();
        config.targetLocators = &targetData;
        config.projectors = {&projector};
        targetData.targetDataType = BaseConfig::TARGET_DATA_PLANAR_BASIC;
        targetData.targetPosition = {0.1, 0.2, 0.3};
        targetData.mirrorOrientation = {0.4, 0.5, 0.6};
        targetData.mirrorPosition = {0.7, 0.8, 0.9};
        targetData.mirrorRadius = 3.5;
        targetData.pitchTable = {{0.0, 0.1}, {1.0, 1.1}};
        targetData.yawTable = {{0.0, 0.2}, {1.0, 1.2}, {2.0, 2.2}};
        projector.position = {1.0, 2.0, 3.0};
        projector.frustumTop = 0.31;
        projector.frustumBottom = -0.32;
        projector.frustumLeft = -0.43;
        projector.frustumRight = 0.44;
        projector.orientationZ = 0.01;
        projector.orientationX = 0.02;
        projector.orientationY = 0.03;
        projector.screenLeft = 0.1;
        projector.screenRight = 0.9;
        projector.screenTop = 0.8;
        projector.screenBottom = 0.2;
    }
    ~TargetLocatorFixture() override { TargetLocatorManager::deleteInstance(); }

    std::shared_ptr<const TargetLocator> request() {
        return TargetLocatorManager::getInstance()->getTargetLocator(&config, &projector);
    }
    /// As for a projector whose data is of this type.
    std::shared_ptr<const TargetLocator> request(const std::wstring& type) {
        targetData.targetDataType = type;
        return request();
    }
    /// The record of a locator as that of a kind; a failed test when it is of another one.
    template <class Params>
    static Params paramsOf(const std::shared_ptr<const TargetLocator>& locator) {
        const auto* const params = locator ? dynamic_cast<const Params*>(&locator->getTargetLocatorParams()) : nullptr;
        EXPECT_NE(params, nullptr);
        return params != nullptr ? *params : Params();
    }
    static std::size_t cacheSize() {
        return ScreenManagerTestAccess::cacheOf(*TargetLocatorManager::getInstance()).size();
    }
    static std::string notFound(const std::string& type) {
        return "WARN ERROR: TargetLocatorManager::getTargetLocator(), TargetLocator type (" + type + ") not found";
    }

    ConfigManagerDouble config{&trace};
    TargetLocatorConfigDouble targetData{&trace};
    ProjectorConfigDouble projector{L"P1", &trace};
};
