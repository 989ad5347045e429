#include "DisplayReport/channels/ScreenLoader.h"

#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using P3 = Point<double, 3>;

// Upright in a file whose up is Z: 2000 wide, 1000 high.
const std::string UPRIGHT = "v 0 0 0\nv 2000 0 0\nv 0 0 1000\nf 1 2 3\n";
const std::string CLOUD =
    "VERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 1\nHEIGHT 1\nPOINTS 1\nDATA ascii\n"
    "0 0 1000\n";

class ScreenLoaderTest : public testing::Test {
protected:
    ~ScreenLoaderTest() override { ScreenManager::deleteInstance(); }

    std::vector<Fault> load(const std::string& screen) {
        m_folder.write("display.xml", displays::text(screen, ""));
        return ScreenLoader::load(*XMLConfigFile::load(m_folder.file("display.xml")));
    }

    static P3 hitAt(double x, double z) {
        const auto hits = ScreenManager::getInstance()->getScreenGeometry()->intersect({x, -9.0, z}, {x, 0.0, z});
        return hits.empty() ? P3{-1.0, -1.0, -1.0} : hits.first().point;
    }

    TemporaryFolder m_folder;
    LogTrap m_log;
};

TEST_F(ScreenLoaderTest, FilesOfAFlatScreenAreReadInTheirUnitAndByTheirAxes) {
    m_folder.write("measured.obj", UPRIGHT);
    m_folder.write("scan.pcd", CLOUD);
    for (const std::string& axes : {std::string(), std::string("<ImportOrientation up='Z' forward='Y'/>")}) {
        EXPECT_THAT(load("<Screen shape='Flat' fileUnit='mm'><Size width='4' height='2'/>" + axes +
                         "<MeasuredMesh file='measured.obj'/><ModelCloud file='scan.pcd'/></Screen>"),
                    IsEmpty());
        EXPECT_NEAR(hitAt(0.5, 0.25)[1], 0.0, 1e-9) << "it stands upright and measures two metres, with axes: " << axes;
        EXPECT_EQ(hitAt(1.5, 0.5), (P3{-1.0, -1.0, -1.0}));
        EXPECT_FLOAT_EQ(ScreenManager::getInstance()->getScreen().getModelPCD()->at(0).z, 1.0F);
    }
}

// The library leaves that to its caller: without it, up is Y and forward is Z in a file, and its unit is the native
// one.
TEST_F(ScreenLoaderTest, TheScreenManagerByItselfReadsThemSoForMeshesOnly) {
    m_folder.write("measured.obj", UPRIGHT);
    const std::string files = "<ImportOrientation up='Z' forward='Y'/><MeasuredMesh file='measured.obj'/></Screen>";
    m_folder.write("display.xml",
                   displays::text("<Screen shape='Flat' fileUnit='mm'><Size width='4' height='2'/>" + files, ""));
    const auto config = XMLConfigFile::load(m_folder.file("display.xml"));
    ScreenManager& manager = *ScreenManager::getInstance();
    manager.setScreenGeometry(config.get(), false);
    EXPECT_EQ(hitAt(0.5, 0.25), (P3{-1.0, -1.0, -1.0}));
    const auto fromAbove = manager.getScreenGeometry()->intersect({-500.0, 300.0, 5.0}, {-500.0, 300.0, 0.0});
    ASSERT_FALSE(fromAbove.empty()) << "it lies, and measures two kilometres";
    EXPECT_NEAR(fromAbove.first().point[2], 0.0, 1e-9);

    manager.getScreen().setScale(static_cast<float>(manager.getScaleFromXml(config.get())));
    const IScreenConfig& screen = *config->getScreenConfig();
    manager.getScreen().setImportTransformParams(screen.getImportOrientationParam1(),
                                                 screen.getImportOrientationParam2());
    manager.setScreenGeometry(config.get(), true);
    EXPECT_NEAR(hitAt(0.5, 0.25)[1], 0.0, 1e-9) << "handed on by the caller";
}

TEST_F(ScreenLoaderTest, NothingOfAnEarlierDisplayStays) {
    m_folder.write("measured.obj", UPRIGHT);
    EXPECT_THAT(load("<Screen shape='Flat'><Size width='4' height='2'/><MeasuredMesh file='measured.obj'/></Screen>"),
                IsEmpty());
    EXPECT_THAT(load("<Screen shape='Mesh'><ContentMesh file='gone.obj'/></Screen>"), SizeIs(1));
    EXPECT_EQ(ScreenManager::getInstance()->getScreenGeometry(), nullptr);
}

TEST_F(ScreenLoaderTest, AFaultOfTheContentMeshNamesItsFileAndLine) {
    m_folder.write("wall.obj", "v 0 0 0\nv 1,5 0 0\n");
    const auto faults = load("<Screen shape='Mesh'><ContentMesh file='wall.obj'/></Screen>");
    ASSERT_THAT(faults, SizeIs(1));
    EXPECT_EQ(faults[0].where, "content mesh");
    EXPECT_THAT(faults[0].what, testing::StartsWith(m_folder.file("wall.obj") + ": line 2: "));
}

TEST_F(ScreenLoaderTest, WhatCanBeLoadedIsLoaded) {
    m_folder.write("scan.pcd", CLOUD);
    const auto faults = load(
        "<Screen shape='Flat'><Size width='4' height='2'/><MeasuredMesh file='gone.obj'/>"
        "<ModelCloud file='scan.pcd'/></Screen>");
    ASSERT_THAT(faults, SizeIs(1));
    EXPECT_EQ(faults[0].where, "measured mesh");
    EXPECT_THAT(faults[0].what, HasSubstr("gone.obj"));
    EXPECT_NE(ScreenManager::getInstance()->getScreen().getModelPCD(), nullptr);
}

TEST_F(ScreenLoaderTest, AConfigurationWithoutAScreenIsAFault) {
    EXPECT_THAT(load(displays::FLAT), IsEmpty());
    EXPECT_THAT(load(""), SizeIs(1));
    EXPECT_EQ(ScreenManager::getInstance()->getScreenGeometry(), nullptr);
}

}  // namespace
