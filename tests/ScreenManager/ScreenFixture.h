#pragma once

#include "ScreenManager/ScreenManager.h"
#include "support/LogTrap.h"
#include "support/ScreenGeometryDouble.h"
#include "support/Trace.h"

#include <gtest/gtest.h>

#include <memory>

/// Starts and ends without a screen manager, and catches every log record.
class ScreenFixture : public testing::Test {
protected:
    ScreenFixture() {
        ScreenManager::deleteInstance();
        ScreenManager::getInstance();
        log.clear();
        trace.clear();
    }
    ~ScreenFixture() override { ScreenManager::deleteInstance(); }

    /// Makes a double the content screen of the manager.
    std::shared_ptr<ScreenGeometryDouble> installGeometry() {
        auto geometry = std::make_shared<ScreenGeometryDouble>(&trace);
        ScreenManager::getInstance()->setScreenGeometry(geometry);
        return geometry;
    }

    Trace trace;
    LogTrap log{log4cxx::Level::getAll(), &trace};
};
