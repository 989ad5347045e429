// A program of somebody else: where the middle and the lower edge of a channel's picture lie, and the way back.
#include "Configuration/XMLConfigFile.h"
#include "ScreenManager/LayoutMapFactory.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <iostream>
#include <vector>

// maps DISPLAY.xml
int main(int count, char* arguments[]) {
    if (count != 2) {
        return 2;
    }
    const auto config = XMLConfigFile::load(arguments[1]);
    // First: some kinds take the screen when they are made.
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    constexpr bool USE_CACHE = false;
    constexpr std::size_t CHANNEL = 0;
    {
        // The map, and the table that it refers to.
        const LayoutMap made = LayoutMapFactory::create(config.get(), USE_CACHE);
        Point<double, 3> layout;
        Point<double, 2> picture;
        if (made.map->mapChannelToLayout({0.5, 0.5}, layout, CHANNEL) &&
            made.map->mapLayoutToChannel(layout, picture, CHANNEL)) {
            std::cout << "the middle lies at " << layout << ", where " << picture << " is shown\n";
        }

        const std::vector<Point<double, 2>> edge{{0.0, 0.0}, {0.5, 0.0}, {1.0, 0.0}};
        std::vector<LayoutPoint> row(edge.size());
        made.map->mapChannelPointsToLayout(edge, row, CHANNEL);
        for (const LayoutPoint& place : row) {
            std::cout << (place.isMapped ? "mapped to " : "not mapped, still ") << place.point << '\n';
        }
    }
    TargetLocatorManager::deleteInstance();
    ScreenManager::deleteInstance();
}
