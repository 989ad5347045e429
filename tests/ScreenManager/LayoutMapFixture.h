#pragma once

#include "Configuration/BaseConfig.h"
#include "ScreenFixture.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/ConfigManagerDouble.h"
#include "support/TargetLocatorConfigDouble.h"

#include <gmock/gmock.h>

#include <limits>

/// A configuration of doubles with two projectors, and results that are told apart from answers.
class LayoutMapFixture : public ScreenFixture {
protected:
    LayoutMapFixture() {
        TargetLocatorManager::deleteInstance();
        config.projectors = {&first, &second};
        config.targetLocators = &targetData;
    }
    ~LayoutMapFixture() override { TargetLocatorManager::deleteInstance(); }

    static constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
    static constexpr Point<double, 2> NO_CHANNEL{-7.0, -8.0};
    static constexpr Point<double, 3> NO_LAYOUT{-7.0, -8.0, -9.0};

    ConfigManagerDouble config{&trace};
    TargetLocatorConfigDouble targetData{&trace};
    ProjectorConfigDouble first{L"P1", &trace};
    ProjectorConfigDouble second{L"P2", &trace};
    Point<double, 2> channel = NO_CHANNEL;
    Point<double, 3> layout = NO_LAYOUT;
};

/// A configuration that lists a projector without having a record of it.
class IncompleteConfigDouble : public ConfigManagerDouble {
public:
    IncompleteConfigDouble(const ConfigManagerDouble& complete, std::wstring missingId)
        : ConfigManagerDouble(complete), m_missingId(std::move(missingId)) {}

    ProjectorConfig* getProjectorConfig(const std::wstring& id) const override {
        ProjectorConfig* const found = ConfigManagerDouble::getProjectorConfig(id);
        return id == m_missingId ? nullptr : found;
    }

private:
    std::wstring m_missingId;
};
