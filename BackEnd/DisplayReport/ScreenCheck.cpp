#include "DisplayReport/ScreenCheck.h"

#include "Common/Utf8.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/DisplayDescription.h"
#include "DisplayReport/GeometryText.h"
#include "DisplayReport/NumberText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <functional>
#include <memory>

namespace Veltrani::DisplayReport {

namespace {

/// Runs one step of loading; a fault is added and the check goes on.
void attempt(const std::string& where, DisplayDescription& description, const std::function<void()>& step) {
    try {
        step();
    } catch (...) {
        description.faults.push_back(faultOf(where, std::current_exception()));
    }
}

/// Loads all three screens. The screen manager stops at the first fault, so after one each is tried on its own.
void loadScreens(XMLConfigManager& config, const IScreenConfig& screen, DisplayDescription& description) {
    ScreenManager& manager = *ScreenManager::getInstance();
    manager.resetScreen();
    const bool isMesh = screen.getShape() == BaseConfig::SHAPE_MESH;
    try {
        manager.setScreenGeometry(&config, false);
        return;
    } catch (...) {
        if (!isMesh && !manager.getContentModelScreenGeometry()) {
            description.faults.push_back(faultOf("screen", std::current_exception()));
        }
    }
    if (isMesh && !manager.getContentModelScreenGeometry()) {
        attempt("content mesh", description,
                [&] { manager.getScreen().loadContent(screen.getContentMeshFile(0), false); });
    }
    attempt("measured mesh", description,
            [&] { manager.getScreen().loadMeasured(screen.getMeasuredMeshFile(0), false); });
    attempt("model cloud", description, [&] { manager.getScreen().loadModelPCD(screen.getModelPcdFile(0), false); });
}

std::string fileOr(const std::wstring& file, const std::string& none) {
    return file.empty() ? none : toUtf8(file);
}

Extent cloudExtent(const Screen::PointCloud& cloud) {
    Extent extent;
    for (const pcl::PointXYZ& point : cloud) {
        extent.add({point.x, point.y, point.z});
    }
    return extent;
}

/// "cloud.pcd: 4000 points, 7.5 x 2.6 x 2.4 m (right x forward x up)"
std::string cloudText(const std::wstring& file, const std::string& unit) {
    const auto cloud = ScreenManager::getInstance()->getScreen().getModelPCD();
    if (!cloud) {
        return toUtf8(file) + ": not loaded";
    }
    const std::string undefined = cloud->is_dense ? "" : ", some of them undefined";
    return toUtf8(file) + ": " + std::to_string(cloud->size()) + " points" + undefined + ", " +
           sizeText(cloudExtent(*cloud), unit);
}

void describeContent(const IScreenConfig& screen, const std::string& unit, DisplayDescription& description) {
    const auto content = ScreenManager::getInstance()->getContentModelScreenGeometry();
    const bool isMesh = screen.getShape() == BaseConfig::SHAPE_MESH;
    const std::string source =
        isMesh ? " (" + fileOr(screen.getContentMeshFile(0), "no file: a unit square stands in") + ")" : "";
    description.facts.push_back({"screen", toUtf8(screen.getShape()) + source + ": " +
                                               (content ? geometryText(*content) : std::string("not built"))});
    if (!content) {
        return;
    }
    description.facts.push_back({"size", sizeText(extentOf(*content), unit)});
    if (!content->isValid()) {
        description.faults.push_back({"screen", "its shape has no extent or a number that is not finite", {}});
    }
}

void describeFiles(const IScreenConfig& screen, const std::string& unit, DisplayDescription& description) {
    if (const std::wstring file = screen.getMeasuredMeshFile(0); !file.empty()) {
        const auto measured = ScreenManager::getInstance()->getMeasuredScreenGeometry();
        description.facts.push_back(
            {"measured", toUtf8(file) + ": " +
                             (measured ? geometryText(*measured) + ", " + sizeText(extentOf(*measured), unit)
                                       : std::string("not loaded"))});
    }
    if (const std::wstring file = screen.getModelPcdFile(0); !file.empty()) {
        description.facts.push_back({"cloud", cloudText(file, unit)});
    }
    const bool hasFiles = screen.getShape() == BaseConfig::SHAPE_MESH || !screen.getMeasuredMeshFile(0).empty() ||
                          !screen.getModelPcdFile(0).empty();
    if (hasFiles && !screen.getUnitName().empty()) {
        description.facts.push_back({"file unit", toUtf8(screen.getUnitName())});
    }
}

}  // namespace

void ScreenCheck::run(XMLConfigManager& config, DisplayDescription& description) {
    const IScreenConfig* screen = config.getScreenConfig();
    if (screen == nullptr) {
        description.facts.push_back({"screen", "not configured"});
        description.faults.push_back({"screen", "the configuration describes no screen: add a Screen element", {}});
        return;
    }
    const IUnitsConfig* units = config.getNativeUnitsConfig();
    const std::string unit = units == nullptr ? "" : toUtf8(units->getUnitName());
    ScreenManager::getInstance()->disableDiagnostics();
    loadScreens(config, *screen, description);
    describeContent(*screen, unit, description);
    describeFiles(*screen, unit, description);
}

}  // namespace Veltrani::DisplayReport
