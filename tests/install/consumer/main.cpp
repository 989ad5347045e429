// A program of somebody else: reads a configuration, builds its screen and places the corners of one channel.
#include "Configuration/XMLConfigFile.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/ScreenManager.h"

#include <iostream>

int main() {
    const auto config = XMLConfigFile::parse(
        "<Display version='1' lengthUnit='m'><Units native='m'/>"
        "<Screen shape='Flat'><Centre x='2' y='0' z='1.25'/><Size width='4' height='2.5'/></Screen></Display>",
        "consumer.xml");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);

    const PlanarTargetLocator locator(PlanarTargetLocatorParams(0.0, 1.0, 0.0, 1.0));
    for (const Point<double, 3>& corner : locator.projectBoundaryOnTargetLocationSurface(1)) {
        std::cout << "corner " << corner[0] << ' ' << corner[1] << ' ' << corner[2] << '\n';
    }
    ScreenManager::deleteInstance();
}
