// The results of the libraries for the tests of the Python module, as doubles: what is requested comes in by standard
// input, in rows of doubles, and goes out by standard output.
//
//   python_reference DISPLAY rays              ox oy oz dx dy dz -> x y z nx ny nz distance side hit
//   python_reference DISPLAY parameters        s t               -> x y z mapped
//   python_reference DISPLAY normals           x y z             -> nx ny nz
//   python_reference DISPLAY to-layout INDEX   u v               -> x y z mapped
//   python_reference DISPLAY from-layout INDEX x y z             -> u v mapped
//   python_reference DISPLAY outline INDEX SAMPLES               -> x y z
//   python_reference DISPLAY hash                                -> 20 numbers
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/LayoutMapFactory.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

template <std::size_t N>
bool read(Point<double, N>& row) {
    return std::fread(&row[0], sizeof(double), N, stdin) == N;
}

void write(double number) {
    std::fwrite(&number, sizeof(double), 1, stdout);
}

template <std::size_t N>
void write(const Point<double, N>& row) {
    for (std::size_t i = 0; i < N; ++i) {
        write(row[i]);
    }
}

/// Ray by ray, as no caller who has many of them would.
void castRays(const ScreenGeometry& screen) {
    P3 origin;
    P3 direction;
    while (read(origin) && read(direction)) {
        const IntersectionSet hits = screen.intersect(origin, origin + direction);
        const P3 point = hits.empty() ? P3() : hits.first().point;
        const P3 normal = hits.empty() ? P3() : screen.getScreenNormal(point);
        write(point);
        write(normal);
        write(hits.empty() ? 0.0 : hits.first().t * norm(direction));
        write(hits.empty() ? 0.0 : sideOfSurface(direction, normal));
        write(hits.empty() ? 0.0 : 1.0);
    }
}

void mapParameters(const ScreenGeometry& screen) {
    P2 st;
    while (read(st)) {
        P3 point;
        const bool isMapped = screen.mapInto3D(st, point, false);
        write(point);
        write(isMapped ? 1.0 : 0.0);
    }
}

void takeNormals(const ScreenGeometry& screen) {
    P3 place;
    while (read(place)) {
        write(screen.getScreenNormal(place));
    }
}

void mapToLayout(LayoutToChannelMap& map, std::size_t channel) {
    P2 picture;
    while (read(picture)) {
        P3 layout;
        const bool isMapped = map.mapChannelToLayout(picture, layout, channel);
        write(layout);
        write(isMapped ? 1.0 : 0.0);
    }
}

void mapFromLayout(LayoutToChannelMap& map, std::size_t channel) {
    P3 layout;
    while (read(layout)) {
        P2 picture;
        const bool isMapped = map.mapLayoutToChannel(layout, picture, channel);
        write(picture);
        write(isMapped ? 1.0 : 0.0);
    }
}

void placeOutline(const XMLConfigFile& config, std::size_t channel, int samples) {
    const ProjectorConfig* const projector = config.getProjectorConfig(config.getProjectorConfigIds().at(channel));
    const auto locator = TargetLocatorManager::getInstance()->getTargetLocator(&config, projector);
    for (const P3& point : locator->projectBoundaryOnTargetLocationSurface(samples)) {
        write(point);
    }
}

/// @param words what is requested, with its numbers
bool serve(XMLConfigFile& config, const std::vector<std::string>& words) {
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    const std::size_t channel = words.size() > 1 ? std::stoul(words[1]) : 0;
    const std::string& what = words[0];
    if (what == "rays") {
        castRays(*screen);
    } else if (what == "parameters") {
        mapParameters(*screen);
    } else if (what == "normals") {
        takeNormals(*screen);
    } else if (what == "to-layout") {
        mapToLayout(*LayoutMapFactory::create(&config, false).map, channel);
    } else if (what == "from-layout") {
        mapFromLayout(*LayoutMapFactory::create(&config, false).map, channel);
    } else if (what == "outline" && words.size() > 2) {
        placeOutline(config, channel, std::stoi(words[2]));
    } else if (what == "hash") {
        for (const unsigned char byte : screen->getUniqueDataHash()) {
            write(static_cast<double>(byte));
        }
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int count, char* arguments[]) {
    if (count < 3) {
        return 2;
    }
    const auto config = XMLConfigFile::load(arguments[1]);
    for (const auto& fault : Veltrani::DisplayReport::ScreenLoader::load(*config)) {
        std::cerr << fault << '\n';
        return 1;
    }
    const bool isServed = serve(*config, std::vector<std::string>(arguments + 2, arguments + count));
    TargetLocatorManager::deleteInstance();
    ScreenManager::deleteInstance();
    return isServed ? 0 : 2;
}
