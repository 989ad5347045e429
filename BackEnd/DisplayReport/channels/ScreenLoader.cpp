#include "DisplayReport/channels/ScreenLoader.h"

#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "KelvoScreen/ObjLoadException.h"
#include "KelvoScreen/ScreenShape.h"
#include "ScreenManager/ScreenManager.h"

#include <functional>

namespace Veltrani::DisplayReport {

namespace {

bool isMesh(const IScreenConfig& screen) {
    return ScreenShape::isReadFromFile(&screen);
}

/// The screen manager leaves both alone for shapes that are given by numbers, although these may have a measured mesh
/// and a cloud too.
void stateUnitAndAxes(XMLConfigManager& config, const IScreenConfig& screen) {
    ScreenManager& manager = *ScreenManager::getInstance();
    manager.getScreen().setScale(static_cast<float>(manager.getScaleFromXml(&config)));
    manager.getScreen().setImportTransformParams(screen.getImportOrientationParam1(),
                                                 screen.getImportOrientationParam2());
}

/// Runs one step of loading a file; a fault is added and loading goes on.
void attempt(const std::string& where, const std::wstring& file, std::vector<Fault>& faults,
             const std::function<void(const std::wstring&)>& step) {
    try {
        step(file);
    } catch (const ObjLoadException&) {
        // The exception names the line; the file is known here.
        Fault fault = faultOf(where, std::current_exception());
        fault.what = toUtf8(file) + ": " + fault.what;
        faults.push_back(std::move(fault));
    } catch (...) {
        faults.push_back(faultOf(where, std::current_exception()));
    }
}

/// Tries each screen on its own, since the screen manager stopped at the first fault.
std::vector<Fault> loadOneByOne(const IScreenConfig& screen) {
    ScreenManager& manager = *ScreenManager::getInstance();
    std::vector<Fault> faults;
    if (isMesh(screen) && !manager.getContentModelScreenGeometry()) {
        attempt("content mesh", screen.getContentMeshFile(0), faults,
                [&](const std::wstring& file) { manager.getScreen().loadContent(file, false); });
    }
    attempt("measured mesh", screen.getMeasuredMeshFile(0), faults,
            [&](const std::wstring& file) { manager.getScreen().loadMeasured(file, false); });
    attempt("model cloud", screen.getModelPcdFile(0), faults,
            [&](const std::wstring& file) { manager.getScreen().loadModelPCD(file, false); });
    return faults;
}

}  // namespace

std::vector<Fault> ScreenLoader::load(XMLConfigManager& config) {
    ScreenManager& manager = *ScreenManager::getInstance();
    manager.resetScreen();
    const IScreenConfig* screen = config.getScreenConfig();
    if (screen == nullptr) {
        return {{"screen", "the configuration describes no screen: add a Screen element", {}}};
    }
    stateUnitAndAxes(config, *screen);
    try {
        manager.setScreenGeometry(&config, false);
        return {};
    } catch (...) {
        const Fault first = faultOf("screen", std::current_exception());
        std::vector<Fault> faults = loadOneByOne(*screen);
        const bool shapeFailed = !isMesh(*screen) && !manager.getContentModelScreenGeometry();
        if (shapeFailed || faults.empty()) {
            faults.insert(faults.begin(), first);
        }
        return faults;
    }
}

}  // namespace Veltrani::DisplayReport
