#pragma once

#include "ScreenManager/ChannelManager.h"
#include "ScreenManager/Screen.h"
#include "ScreenManager/ScreenManager.h"

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
    static bool hasInstance() { return ScreenManager::m_instance != nullptr; }
};
