#pragma once

#include "ScreenManager/ChannelManager.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/Screen.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <array>

/// Opens the private operations that have behaviour of their own.
struct ScreenManagerTestAccess {
    using Hash = Screen::Hash;

    static std::string id(const Screen& screen) { return screen.m_id.value(); }
    static std::wstring importTransformParam1(const Screen& screen) { return screen.m_importTransformParam1; }
    static std::wstring importTransformParam2(const Screen& screen) { return screen.m_importTransformParam2; }
    static void setImportTransformParamsSwapped(Screen& screen) {
        screen.setImportTransformParams(screen.m_importTransformParam2, screen.m_importTransformParam1);
    }
    static bool reservedFlag(const Screen& screen) { return screen.m_reservedFlag; }
    static void setReservedFlag(Screen& screen, bool flag) { screen.m_reservedFlag = flag; }
    static void updateModelPCDTimestamp(Screen& screen) { screen.updateModelPCDTimestamp(); }

    static bool loadMesh(Screen& screen, const std::wstring& path, std::shared_ptr<ScreenGeometry>& target,
                         bool force) {
        return screen.loadMesh(path, target, force);
    }
    static std::shared_ptr<ScreenGeometry> createMeshScreen(const std::wstring& path, const std::wstring& param1,
                                                            const std::wstring& param2, float scale, Hash& hash) {
        return Screen::createMeshScreen(path, param1, param2, scale, hash);
    }

    static bool createScreenIfDifferent(ScreenManager& manager, XMLConfigManager* config, bool force) {
        return manager.createScreenIfDifferent(config, force);
    }
    static std::wstring generateUniqueChannelName(const ChannelManager& manager, const std::wstring& base) {
        return manager.generateUniqueChannelName(base);
    }

    using HeadingTable = SphereTargetLocatorParams::HeadingTable;
    using Interpolate = decltype(&SphereTargetLocator::interpolate);
    static double interpolate(double x, const HeadingTable& table) {
        return SphereTargetLocator::interpolate(x, table);
    }
    static Point<double, 3> remapHeading(const Point<double, 3>& direction, const HeadingTable& pitchTable,
                                         const HeadingTable& yawTable) {
        return SphereTargetLocator::remapHeading(direction, pitchTable, yawTable);
    }
    static void remapRays(const SphereTargetLocator& locator, std::vector<Ray>& rays) { locator.remapRays(rays); }
    /// @param corners a, b, c and d
    static void createRays(const SphereTargetLocator& locator, std::vector<Ray>& boundary, std::vector<Ray>& centre,
                           const std::array<Point<double, 3>, 4>& corners, int samplesPerEdge) {
        locator.CreateRays(boundary, centre, corners[0], corners[1], corners[2], corners[3], samplesPerEdge);
    }
    static std::vector<Point<double, 3>> calculateBoundaryPoints(const SphereTargetLocator& locator,
                                                                 const std::array<Point<double, 3>, 4>& corners,
                                                                 int samplesPerEdge) {
        return locator.calculateBoundaryPoints(corners[0], corners[1], corners[2], corners[3], samplesPerEdge);
    }
    static bool reflect(const CollimatedTargetLocator& locator, const Ray& ray, Point<double, 3>& mirrorPoint,
                        Point<double, 3>& reflected) {
        return locator.GetRefDirectionAndMirrorIntersection(ray.first, ray.second, mirrorPoint, reflected);
    }

    static bool checkOrCreateTargetLocator(TargetLocatorManager& manager, const std::wstring& name,
                                           const TargetLocatorParams& params,
                                           const std::function<TargetLocator*()>& factory) {
        return manager.checkOrCreateTargetLocator(name, params, factory);
    }
    static bool checkOrCreateSphereTargetLocator(TargetLocatorManager& manager, const XMLConfigManager* config,
                                                 const ProjectorConfig* projector) {
        return manager.checkOrCreateSphereTargetLocator(config, projector);
    }
    static bool checkOrCreateCollimatedTargetLocator(TargetLocatorManager& manager, const XMLConfigManager* config,
                                                     const ProjectorConfig* projector) {
        return manager.checkOrCreateCollimatedTargetLocator(config, projector);
    }
    static const std::map<std::wstring, std::shared_ptr<const TargetLocator>>& cacheOf(
        const TargetLocatorManager& manager) {
        return manager.m_locators;
    }
    static bool hasTargetLocatorManager() { return TargetLocatorManager::m_pInstance != nullptr; }

    static bool hasInstance() { return ScreenManager::m_instance != nullptr; }
};
