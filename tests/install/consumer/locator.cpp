// A program of somebody else: places a grid of targets on every channel of a display, by the locator of its kind.
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "ScreenManager/Channel.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <iostream>
#include <map>

// locator DISPLAY.xml
int main(int count, char* arguments[]) {
    if (count != 2) {
        return 2;
    }
    const auto config = XMLConfigFile::load(arguments[1]);
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    TargetLocatorManager::getInstance()->screenDefinitionChanged();  // after every change of the screen

    for (const std::wstring& id : config->getProjectorConfigIds()) {
        ProjectorConfig* const projector = config->getProjectorConfig(id);
        const auto locator = TargetLocatorManager::getInstance()->getTargetLocator(config.get(), projector);
        if (!locator) {  // the log states why
            continue;
        }
        Channel channel(projector->getName(), projector, id, 0, 0);
        channel.setTargetLocator(locator);
        std::map<Point<int, 2>, Point<double, 3>> grid;
        channel.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 16, 10, grid);
        std::cout << channel.getChannelId().value() << ": " << grid.size() << " targets, the first at "
                  << grid.begin()->second << '\n';
    }
    TargetLocatorManager::deleteInstance();
    ScreenManager::deleteInstance();
}
