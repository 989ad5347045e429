// A program of somebody else: measures a display, places its targets, and writes the warp of its first channel.
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/check/DisplayCheck.h"
#include "DisplayReport/coverage/CoverageSurvey.h"
#include "DisplayReport/coverage/CoverageWriter.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/PictureWarp.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "DisplayReport/targets/TargetWriter.h"
#include "ScreenManager/ScreenManager.h"

#include <fstream>
#include <iomanip>
#include <iostream>

using namespace Veltrani::DisplayReport;

// reports DISPLAY.xml FOLDER
int main(int count, char* arguments[]) {
    if (count != 3) {
        return 2;
    }
    const std::string folder = arguments[2];
    const auto config = XMLConfigFile::load(arguments[1]);
    for (const Fault& fault : ScreenLoader::load(*config)) {
        std::cerr << fault.where << ": " << sentenceOf(fault) << '\n';
        return 1;
    }

    const TargetSurvey targets = TargetPlacer({.columns = 8, .rows = 5, .boundarySamples = 4}).place(*config);
    std::ofstream table(folder + "/targets.csv", std::ios::binary);
    TargetWriter::ofFormat("csv")->write(targets, table);
    std::cout << targets.placed() << " targets on " << targets.channels.size() << " channels\n";

    const CoverageReport coverage = CoverageSurvey().of(*config);
    std::ofstream areas(folder + "/coverage.json", std::ios::binary);
    CoverageWriter::ofFormat("json")->write(coverage, {}, areas);
    std::cout << std::fixed << std::setprecision(1) << 100 * coverage.partOfScreen(coverage.areaLitByAtLeast(1))
              << " % of the screen is lit, " << 100 * coverage.partOfScreen(coverage.areaLitByAtLeast(2))
              << " % by several channels\n";

    const ChannelChoice channel = ChannelChoice::of(*config, targets.channels.front().name);
    LayoutMapper map(*config, channel, false);
    const InputProjection input(*config, Panorama::FISHEYE);
    const PictureWarp warp = PictureWarp::atNodes(map, input, channel.pictureSize(), {17, 11});
    std::ofstream mesh(folder + "/warp.txt", std::ios::binary);
    WarpWriter::ofFormat("mesh")->write(warp, mesh);
    std::cout << channel.describe() << ": " << warp.mapped() << " nodes of its warp\n";

    const DisplayDescription description = DisplayCheck::ofConfiguration(*config);
    std::cout << description.faults.size() << " faults\n";
    ScreenManager::deleteInstance();
    return table.flush() && areas.flush() && mesh.flush() ? 0 : 1;
}
