#include "Configuration/detail/XmlDisplayConfigs.h"

#include "Configuration/XMLConfigFile.h"
#include "Samples.h"

#include <gtest/gtest.h>

#include <memory>
#include <numbers>
#include <string>

namespace {

constexpr double PI = std::numbers::pi;
constexpr double DEGREE = PI / 180.0;

/// The configuration of one screen; it must outlive what it answers.
std::unique_ptr<XMLConfigFile> screenFile(const std::string& screen, const std::string& name = "cfg/display.xml") {
    return XMLConfigFile::parse(displayAround(screen), name);
}

TEST(XmlScreenConfig, ReadsEveryValue) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "/cfg/display.xml");
    const IScreenConfig* const screen = config->getScreenConfig();
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(screen->getShape(), L"Sphere");
    EXPECT_EQ(screen->getUnitName(), L"custom");
    EXPECT_EQ(screen->getScale(), 0.0254);
    EXPECT_EQ(screen->getAllowed(), L"eye-outside");
    EXPECT_EQ(screen->getEyePoint(), (Point<double, 3>{0.1, -0.2, 1.25}));
    EXPECT_EQ(screen->getCentre(), (Point<double, 3>{0.0, 0.0, 1.5}));
    EXPECT_DOUBLE_EQ(screen->getOrientation()[0], 10 * DEGREE);
    EXPECT_DOUBLE_EQ(screen->getOrientation()[1], -5 * DEGREE);
    EXPECT_DOUBLE_EQ(screen->getOrientation()[2], 2.5 * DEGREE);
    EXPECT_DOUBLE_EQ(screen->getRadius(), 4.0);
    EXPECT_DOUBLE_EQ(screen->getAzimuthMin(), -110 * DEGREE);
    EXPECT_DOUBLE_EQ(screen->getAzimuthMax(), 110 * DEGREE);
    EXPECT_EQ(screen->getElevationMin(), -0.5);
    EXPECT_EQ(screen->getElevationMax(), 1.25);
    EXPECT_EQ(screen->getContentMeshFile(0), L"");
    EXPECT_EQ(screen->getMeasuredMeshFile(0), L"/cfg/scans/measured.obj");
    EXPECT_EQ(screen->getModelPcdFile(0), L"/data/scans/model.pcd");
    EXPECT_EQ(screen->getImportOrientationParam1(), L"Y");
    EXPECT_EQ(screen->getImportOrientationParam2(), L"-Z");
}

TEST(XmlScreenConfig, ASphereIsWholeUnlessLimited) {
    const auto config = screenFile("<Screen shape='Sphere'><Radius value='4'/></Screen>");
    const IScreenConfig* const screen = config->getScreenConfig();
    EXPECT_EQ(screen->getAzimuthMin(), -PI);
    EXPECT_EQ(screen->getAzimuthMax(), PI);
    EXPECT_EQ(screen->getElevationMin(), -PI / 2);
    EXPECT_EQ(screen->getElevationMax(), PI / 2);
    EXPECT_EQ(screen->getCentre(), (Point<double, 3>{}));
    EXPECT_EQ(screen->getOrientation(), (Point<double, 3>{}));
    EXPECT_EQ(screen->getEyePoint(), (Point<double, 3>{}));
}

TEST(XmlScreenConfig, TheWholeSphereInDegreesIsExactlyTheDefault) {
    const auto config = screenFile(
        "<Screen shape='Sphere'><Radius value='4'/><Azimuth min='-180' max='180'/><Elevation min='-90' "
        "max='90'/></Screen>");
    EXPECT_EQ(config->getScreenConfig()->getAzimuthMin(), -PI);
    EXPECT_EQ(config->getScreenConfig()->getAzimuthMax(), PI);
    EXPECT_EQ(config->getScreenConfig()->getElevationMin(), -PI / 2);
    EXPECT_EQ(config->getScreenConfig()->getElevationMax(), PI / 2);
}

TEST(XmlScreenConfig, ACylinderHasNoElevation) {
    const auto config = screenFile("<Screen shape='Cylinder'><Radius value='5'/><Size height='3'/></Screen>");
    const IScreenConfig* const screen = config->getScreenConfig();
    EXPECT_EQ(screen->getRadius(), 5.0);
    EXPECT_EQ(screen->getHeight(), 3.0);
    EXPECT_EQ(screen->getWidth(), 0.0);
    EXPECT_EQ(screen->getAzimuthMin(), -PI);
    EXPECT_EQ(screen->getAzimuthMax(), PI);
    EXPECT_EQ(screen->getElevationMin(), 0.0);
    EXPECT_EQ(screen->getElevationMax(), 0.0);
}

TEST(XmlScreenConfig, AFlatScreenHasASize) {
    const auto config = screenFile("<Screen shape='Flat'><Size width='400' height='2.5' lengthUnit='cm'/></Screen>");
    const IScreenConfig* const screen = config->getScreenConfig();
    EXPECT_DOUBLE_EQ(screen->getWidth(), 4.0);
    EXPECT_DOUBLE_EQ(screen->getHeight(), 0.025);
    EXPECT_EQ(screen->getRadius(), 0.0);
    EXPECT_EQ(screen->getAzimuthMin(), 0.0);
    EXPECT_EQ(screen->getAzimuthMax(), 0.0);
}

TEST(XmlScreenConfig, RailsKeepTheirOrderAndUnits) {
    const auto config = screenFile(
        "<Screen shape='Ruled'><LowerRail lengthUnit='mm'><Point x='-1000' y='2000' z='0'/><Point x='1' y='2' z='3' "
        "lengthUnit='m'/></LowerRail><UpperRail><Point x='-1' y='2' z='2'/><Point x='1' y='2' "
        "z='2'/></UpperRail></Screen>");
    const auto lower = config->getScreenConfig()->getLowerRail();
    const auto upper = config->getScreenConfig()->getUpperRail();
    EXPECT_EQ(lower, (std::vector<Point<double, 3>>{{-1.0, 2.0, 0.0}, {1.0, 2.0, 3.0}}));
    EXPECT_EQ(upper, (std::vector<Point<double, 3>>{{-1.0, 2.0, 2.0}, {1.0, 2.0, 2.0}}));
}

TEST(XmlScreenConfig, FilesAreCountedFromZeroAndEmptyOutside) {
    const auto config =
        screenFile("<Screen shape='Mesh'><ContentMesh file='a.obj'/><ContentMesh file='/b.obj'/></Screen>");
    const IScreenConfig* const screen = config->getScreenConfig();
    EXPECT_EQ(screen->getContentMeshFile(0), L"cfg/a.obj");
    EXPECT_EQ(screen->getContentMeshFile(1), L"/b.obj");
    for (const int outside : {2, -1, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(screen->getContentMeshFile(outside), L"");
        EXPECT_EQ(screen->getMeasuredMeshFile(outside), L"");
        EXPECT_EQ(screen->getModelPcdFile(outside), L"");
    }
    EXPECT_EQ(screen->getMeasuredMeshFile(0), L"");
    EXPECT_EQ(screen->getModelPcdFile(0), L"");
}

TEST(XmlScreenConfig, FilesAreInTheWorldFrameAndNativeUnitUnlessStated) {
    const auto config = screenFile("<Screen shape='Mesh'/>");
    EXPECT_EQ(config->getScreenConfig()->getImportOrientationParam1(), L"Z");
    EXPECT_EQ(config->getScreenConfig()->getImportOrientationParam2(), L"Y");
    EXPECT_EQ(config->getScreenConfig()->getUnitName(), L"m");
    EXPECT_EQ(config->getScreenConfig()->getScale(), 1.0);
    EXPECT_EQ(config->getScreenConfig()->getAllowed(), L"");
}

TEST(XmlScreenConfig, LengthsDoNotDependOnTheUnitTheyAreWrittenIn) {
    const auto radius = [](const std::string& unit, const std::string& native, const std::string& value) {
        const auto config = XMLConfigFile::parse("<Display version='1'><Units native='" + native +
                                                     "'/><Screen shape='Sphere'>"
                                                     "<Radius value='" +
                                                     value + "' lengthUnit='" + unit + "'/></Screen></Display>",
                                                 "t");
        return config->getScreenConfig()->getRadius();
    };
    EXPECT_DOUBLE_EQ(radius("ft", "mm", "1"), 304.8);
    EXPECT_DOUBLE_EQ(radius("in", "mm", "12"), 304.8);
    EXPECT_DOUBLE_EQ(radius("m", "mm", "0.3048"), 304.8);
    EXPECT_DOUBLE_EQ(radius("cm", "mm", "30.48"), 304.8);
    EXPECT_EQ(radius("custom", "custom", "30.48"), 30.48);
}

TEST(XmlScreenConfig, ThereMayBeNone) {
    EXPECT_EQ(XMLConfigFile::parse(smallConfiguration(), "t")->getScreenConfig(), nullptr);
}

}  // namespace
