#include "DisplayReport/check/ScreenCheck.h"

#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/basics/NamedFiles.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/check/DisplayDescription.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/ScreenShape.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <iterator>
#include <memory>

namespace Veltrani::DisplayReport {

namespace {

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
    const bool isMesh = ScreenShape::isReadFromFile(&screen);
    const std::wstring file = screen.getContentMeshFile(0);
    const std::string source = isMesh ? " (" + fileOr(file, "no file: a unit square stands in") + ")" : "";
    if (isMesh && file.empty()) {
        description.faults.push_back({"content mesh", "no file is given: add a ContentMesh element", {}});
    }
    description.facts.push_back({"screen", toUtf8(screen.getShape()) + source + ": " +
                                               (content ? geometryText(*content) : std::string("not built"))});
    if (!content) {
        return;
    }
    description.facts.push_back({"size", sizeText(extentOf(*content), unit)});
    if (!content->isValid()) {
        const std::wstring fault = content->faultOfShape();
        // A class from elsewhere may have more to object to than the shape that it is derived from.
        description.faults.push_back(
            {"screen", toUtf8(fault.empty() ? content->ScreenGeometry::faultOfShape() : fault), {}});
    }
}

void describeFiles(const IScreenConfig& screen, const std::string& unit, DisplayDescription& description) {
    const auto meshes = contentMeshesOf(screen);
    for (std::size_t i = 1; i < meshes.size(); ++i) {
        description.facts.push_back({"not used", toUtf8(meshes[i]) + ": a screen has one content mesh"});
    }
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
    const bool hasFiles = ScreenShape::isReadFromFile(&screen) || !screen.getMeasuredMeshFile(0).empty() ||
                          !screen.getModelPcdFile(0).empty();
    if (hasFiles && !screen.getUnitName().empty()) {
        description.facts.push_back({"file unit", toUtf8(screen.getUnitName())});
    }
}

void requireParameters(const XMLConfigManager& config, DisplayDescription& description) {
    const DisplayKind* const kind = DisplayKind::of(config);
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    if (kind == nullptr || !surface || kind->addressedBy != DisplayKind::Addressing::SCREEN_PARAMETERS) {
        return;
    }
    if (const std::string lack = missingParameters(*surface); !lack.empty()) {
        description.faults.push_back({"screen", lack, {}});
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
    std::vector<Fault> faults = ScreenLoader::load(config);
    std::move(faults.begin(), faults.end(), std::back_inserter(description.faults));
    describeContent(*screen, unit, description);
    requireParameters(config, description);
    describeFiles(*screen, unit, description);
}

}  // namespace Veltrani::DisplayReport
