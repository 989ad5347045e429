#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "Samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

/// Elements that setters of the geometry create, remove and refuse to touch.
namespace {

using Vector = Point<double, 3>;
using Table = std::vector<std::pair<double, double>>;
using Rail = std::vector<Vector>;
using testing::HasSubstr;
using testing::Not;

constexpr double PI = std::numbers::pi;
constexpr double DEGREE = PI / 180.0;

std::unique_ptr<XMLConfigFile> inLines(const std::string& elements) {
    return XMLConfigFile::parse(
        "<Display version=\"1\" lengthUnit=\"mm\" angleUnit=\"deg\">\n  <Units native=\"m\"/>\n" + elements +
            "</Display>\n",
        "cfg/display.xml");
}

std::unique_ptr<XMLConfigFile> oneProjector(const std::string& children = "") {
    return XMLConfigFile::parse(projectors("<Projector id='a'>" + children + "</Projector>"), "cfg/display.xml");
}

ProjectorConfig& entry(XMLConfigFile& config) {
    return *config.getProjectorConfig(L"a");
}

std::unique_ptr<XMLConfigFile> readAgain(const XMLConfigFile& config) {
    return XMLConfigFile::parse(config.text(), "cfg/display.xml");
}

/// The message of the fault; the document must be what it was before.
std::wstring refused(XMLConfigFile& config, const std::function<void()>& change) {
    const std::string before = config.text();
    std::wstring message = L"nothing was thrown";
    try {
        change();
    } catch (const VeltraniException& fault) {
        message = fault.message;
    }
    EXPECT_EQ(config.text(), before);
    return message;
}

TEST(GeometryElements, AMissingOneIsCreatedAtItsPlaceWithWhatItsGettersReturned) {
    const auto config = inLines(
        "  <Screen shape=\"Sphere\">\n    <EyePoint x=\"1000\" y=\"0\" z=\"0\"/> <!-- seat 1 -->\n    <Radius "
        "value=\"4000\"/>\n"
        "  </Screen>\n  <Projectors>\n    <Projector id=\"a\">\n      <Name>A</Name>\n      <!-- measured -->\n"
        "      <ScreenArea left=\"0\"/>\n      <v:Hours xmlns:v=\"urn:v\"/>\n    </Projector>\n  </Projectors>\n");
    entry(*config).setPosition({1.0, 0.25, 0.0});
    entry(*config).setFrustumLeft(-30 * DEGREE);
    entry(*config).setOrientationX(12.5 * DEGREE);
    entry(*config).setLayoutXMax(3.0);
    entry(*config).setProjectionModelName(L"Rectilinear");
    entry(*config).setCustomPlanarFile(L"warp.txt");
    config->getMutableScreenConfig()->setCentre({0.0, 0.0, 1.5});
    config->getMutableScreenConfig()->setAzimuth(-1.0 * PI, 0.5 * PI);
    EXPECT_EQ(config->text(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Display version=\"1\" lengthUnit=\"mm\" angleUnit=\"deg\">\n  <Units native=\"m\"/>\n"
              "  <Screen shape=\"Sphere\">\n    <EyePoint x=\"1000\" y=\"0\" z=\"0\"/> <!-- seat 1 -->\n"
              "    <Centre x=\"0\" y=\"0\" z=\"1500\"/>\n    <Radius value=\"4000\"/>\n"
              "    <Azimuth min=\"-180\" max=\"90\"/>\n  </Screen>\n  <Projectors>\n    <Projector id=\"a\">\n"
              "      <Name>A</Name>\n      <CustomPlanarMap file=\"warp.txt\"/>\n"
              "      <ProjectionModel name=\"Rectilinear\"/>\n"
              "      <Orientation z=\"0\" x=\"12.5\" y=\"0\"/>\n"
              "      <Frustum left=\"-30\" right=\"0\" bottom=\"0\" top=\"0\"/>\n"
              "      <Position x=\"1000\" y=\"250\" z=\"0\"/>\n      <!-- measured -->\n"
              "      <ScreenArea left=\"0\"/>\n      <Layout xMin=\"0\" xMax=\"3000\" yMin=\"0\" yMax=\"0\"/>\n"
              "      <v:Hours xmlns:v=\"urn:v\"/>\n    </Projector>\n  </Projectors>\n</Display>\n");
}

TEST(GeometryElements, OneWithoutAUnitAroundItStatesTheExactOne) {
    for (const std::string native : {"ft", "custom"}) {
        const auto config = XMLConfigFile::parse(
            "<Display version='1'><Units native='" + native +
                "'/><TargetData type='Spherical'/><Projectors><Projector id='a'/></Projectors></Display>",
            "t");
        entry(*config).setOrientationY(0.1);
        entry(*config).setPosition({0.1, 0.2, 0.3});
        entry(*config).setScreenTop(0.5);
        config->getMutableTargetLocatorConfig()->setYawTable({{0.1, 0.2}, {0.3, 0.4}});
        EXPECT_THAT(config->text(), HasSubstr("<Orientation z=\"0\" x=\"0\" y=\"0.1\" angleUnit=\"rad\"/><Position "
                                              "x=\"0.1\" y=\"0.2\" z=\"0.3\" lengthUnit=\"" +
                                              native + "\"/><ScreenArea top=\"0.5\"/>"));
        EXPECT_THAT(config->text(),
                    HasSubstr("<YawTable><Pair measured=\"0.1\" corrected=\"0.2\" angleUnit=\"rad\"/>"));
        EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getPosition(), (Vector{0.1, 0.2, 0.3}));
    }
}

TEST(GeometryElements, AnElementWithAUnitOfItsOwnKeepsIt) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "t");
    config->getMutableScreenConfig()->setRadius(4.25);
    config->getMutableScreenConfig()->setElevation(-0.25, 1.0);
    config->getMutableTargetLocatorConfig()->setMirrorPosition({0.001, 2.5, 0.1});
    EXPECT_EQ(config->text(),
              "" + replaced(replaced(replaced(fullConfiguration(), "<Radius value=\"400\"", "<Radius value=\"425\""),
                                     "min=\"-0.5\" max=\"1.25\"", "min=\"-0.25\" max=\"1\""),
                            "<Position x=\"0\" y=\"2500\"", "<Position x=\"1\" y=\"2500\""));
}

TEST(GeometryElements, AScreenBoundIsRemovedByItsSentinel) {
    const auto config = oneProjector("<ScreenArea left='0.25' right='1'/>");
    entry(*config).setScreenLeft(ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED);
    EXPECT_THAT(config->text(), HasSubstr("<ScreenArea right=\"1\"/>"));
    EXPECT_EQ(entry(*config).getScreenLeft(), -1000.0);
    EXPECT_EQ(entry(*config).getScreenRight(), 1.0);
    EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getScreenLeft(), -1000.0);
    entry(*config).setScreenBottom(-1000.0);
    EXPECT_THAT(config->text(), HasSubstr("<ScreenArea right=\"1\"/>"));
    entry(*config).setScreenLeft(0.5);
    EXPECT_THAT(config->text(), HasSubstr("<ScreenArea right=\"1\" left=\"0.5\"/>"));
}

TEST(GeometryElements, WhatStatesNoPlaceFollowsTheEyePoint) {
    const auto config = XMLConfigFile::parse(
        displayAround("<Screen shape='Sphere'><Radius value='1'/></Screen><TargetData type='Spherical'/><Projectors>"
                      "<Projector id='a'/><Projector id='b'><Position x='0' y='0' z='0'/></Projector></Projectors>"),
        "t");
    const Vector eye{1.0, 2.0, 3.0};
    config->getMutableScreenConfig()->setEyePoint(eye);
    const auto again = readAgain(*config);
    for (const XMLConfigFile* file : {config.get(), again.get()}) {
        EXPECT_EQ(file->getScreenConfig()->getEyePoint(), eye);
        EXPECT_EQ(file->getProjectorConfig(L"a")->getPosition(), eye);
        EXPECT_EQ(file->getProjectorConfig(L"b")->getPosition(), (Vector{}));
        EXPECT_EQ(file->getTargetLocatorConfig()->getTargetPosition(), eye);
    }
    EXPECT_EQ(config->addProjectorConfig(L"c")->getPosition(), eye);

    entry(*config).setPosition(eye);
    EXPECT_THAT(config->text(), Not(HasSubstr("<Position x=\"1\""))) << "it follows already";
    entry(*config).setPosition({1.0, 2.0, 4.0});
    config->getMutableScreenConfig()->setEyePoint({});
    EXPECT_EQ(entry(*config).getPosition(), (Vector{1.0, 2.0, 4.0}));
    EXPECT_EQ(config->getTargetLocatorConfig()->getTargetPosition(), (Vector{}));
}

TEST(GeometryElements, AModelFileIsWrittenRelativeToTheFolder) {
    const auto config = oneProjector("<ProjectionModel name='BrownConrady' file='lenses/left.yml'/>");
    const std::vector<std::array<std::wstring, 3>> rows{
        {L"BrownConrady:cfg/lenses/new & old.yml", L"lenses/new &amp; old.yml",
         L"BrownConrady:cfg/lenses/new & old.yml"},
        {L"Fisheye:lenses/other.yml", L"lenses/other.yml", L"Fisheye:cfg/lenses/other.yml"},
        {L"Fisheye:/data/lens:2.yml", L"/data/lens:2.yml", L"Fisheye:/data/lens:2.yml"},
        {L"Fisheye:cfg//lens.yml", L"lens.yml", L"Fisheye:cfg/lens.yml"},
        {L"Fisheye:\u00fc.yml", L"\u00fc.yml", L"Fisheye:cfg/\u00fc.yml"}};
    for (const auto& [wanted, written, held] : rows) {
        entry(*config).setProjectionModelName(wanted);
        EXPECT_EQ(entry(*config).getProjectionModelName(), held);
        EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getProjectionModelName(), held);
        EXPECT_THAT(config->text(), HasSubstr("file=\"" + Veltrani::toUtf8(written) + "\"/>"));
    }
    entry(*config).setProjectionModelName(L"Equidistant");
    EXPECT_THAT(config->text(), HasSubstr("<ProjectionModel name=\"Equidistant\"/>"));
    EXPECT_EQ(entry(*config).getProjectionModelName(), L"Equidistant");
}

TEST(GeometryElements, EmptyNamesRemoveModelAndMap) {
    const auto config = inLines(
        "  <Projectors>\n    <Projector id=\"a\">\n      <!-- warp of spring -->\n      <CustomPlanarMap file=\"w\"/>\n"
        "      <ProjectionModel name=\"M\"/> <!-- lens -->\n    </Projector>\n  </Projectors>\n");
    entry(*config).setCustomPlanarFile(L"");
    entry(*config).setProjectionModelName(L"");
    EXPECT_EQ(entry(*config).getCustomPlanarFile(), L"");
    EXPECT_EQ(entry(*config).getProjectionModelName(), L"");
    EXPECT_THAT(config->text(), HasSubstr("<Projector id=\"a\">\n      <!-- warp of spring -->\n      <!-- lens -->\n"
                                          "    </Projector>"));
}

TEST(GeometryElements, NamesThatTheFormatRefusesAreRefused) {
    const auto config = oneProjector();
    const auto model = [&](const std::wstring& name) {
        return refused(*config, [&] { entry(*config).setProjectionModelName(name); });
    };
    EXPECT_EQ(
        model(L":lens.yml"),
        L"Projector \"a\": <ProjectionModel> name: found \"\", expected a name without a colon; correct the name");
    EXPECT_EQ(model(L"Fisheye:"),
              L"Projector \"a\": <ProjectionModel> file: found \"\", expected a text that is not "
              L"empty; correct the name");
    EXPECT_EQ(model(L"Fisheye:\x01"),
              L"Projector \"a\": <ProjectionModel> file holds a character that a configuration "
              L"file cannot store");
    EXPECT_EQ(refused(*config, [&] { entry(*config).setCustomPlanarFile(L"\x01"); }),
              L"Projector \"a\": <CustomPlanarMap> file holds a character that a configuration file cannot store");
    EXPECT_EQ(entry(*config).getProjectionModelName(), L"");
    EXPECT_EQ(entry(*config).getCustomPlanarFile(), L"");
}

TEST(GeometryElements, WhatHoldsSomethingOfOthersIsNotRemoved) {
    const std::wstring expected =
        L": found comments, or elements or attributes of another program in it, expected nothing of others in what is "
        L"removed; remove it in the file";
    for (const std::string inside : {"<!-- mine -->", "<v:a xmlns:v='urn:v'/>"}) {
        const auto config = oneProjector("<CustomPlanarMap file='w'>" + inside + "</CustomPlanarMap>");
        EXPECT_EQ(refused(*config, [&] { entry(*config).setCustomPlanarFile(L""); }),
                  L"Projector \"a\": <CustomPlanarMap>" + expected);
        EXPECT_EQ(entry(*config).getCustomPlanarFile(), L"w");
        entry(*config).setCustomPlanarFile(L"x");
        EXPECT_THAT(config->text(), HasSubstr("<CustomPlanarMap file=\"x\">"));
    }
    const auto config = oneProjector("<ProjectionModel name='M' v:a='1' xmlns:v='urn:v'/>");
    EXPECT_EQ(refused(*config, [&] { entry(*config).setProjectionModelName(L""); }),
              L"Projector \"a\": <ProjectionModel>" + expected);
}

TEST(GeometryElements, LimitsAreSetTogetherAndInOrder) {
    const auto config = XMLConfigFile::parse(displayAround("<Screen shape='Sphere'><Radius value='4'/></Screen>"), "t");
    IScreenConfig& screen = *config->getMutableScreenConfig();
    screen.setAzimuth(2.0, 3.0);
    screen.setAzimuth(-3.0, -2.0);
    screen.setElevation(-PI / 2, 0.0);
    EXPECT_THAT(config->text(), HasSubstr("<Elevation min=\"-90\" max=\"0\"/>"));
    EXPECT_EQ(screen.getElevationMin(), -PI / 2);
    EXPECT_DOUBLE_EQ(screen.getAzimuthMax(), -2.0);
    EXPECT_EQ(
        refused(*config, [&] { screen.setAzimuth(1.0, 0.5); }),
        L"Screen: <Azimuth>: found min=\"1\" and max=\"0.5\" radians, expected min below max; exchange or correct "
        L"them");
    EXPECT_EQ(refused(*config, [&] { screen.setAzimuth(-4.0, 4.0); }).substr(0, 75),
              L"Screen: <Azimuth>: found min=\"-4\" and max=\"4\" radians, expected at most one");
    EXPECT_THAT(refused(*config, [&] { screen.setElevation(0.0, 2.0); }),
                HasSubstr(L"expected elevations from -90 to 90 degrees"));
    EXPECT_THAT(refused(*config, [&] { screen.setElevation(0.5, 0.5); }), HasSubstr(L"expected min below max"));
    screen.setAzimuth(-PI, PI);
    EXPECT_EQ(readAgain(*config)->getScreenConfig()->getAzimuthMax(), PI);
}

TEST(GeometryElements, TheNumbersOfOtherShapesAreRefused) {
    const auto flat =
        XMLConfigFile::parse(displayAround("<Screen shape='Flat'><Size width='4' height='3'/></Screen>"), "t");
    IScreenConfig& screen = *flat->getMutableScreenConfig();
    screen.setWidth(4.5);
    screen.setHeight(2.5);
    EXPECT_THAT(flat->text(), HasSubstr("<Size width=\"4.5\" height=\"2.5\"/>"));
    for (const auto& change :
         std::vector<std::function<void()>>{[&] { screen.setRadius(1.0); }, [&] { screen.setAzimuth(0.0, 1.0); },
                                            [&] { screen.setElevation(0.0, 1.0); },
                                            [&] {
                                                screen.setRails({{0, 0, 0}, {1, 0, 0}}, {{0, 0, 1}, {1, 0, 1}});
                                            }}) {
        EXPECT_THAT(refused(*flat, change),
                    HasSubstr(L": found shape=\"Flat\", expected a shape that has this number; "));
    }
    EXPECT_THAT(refused(*flat, [&] { screen.setHeight(-1.0); }), HasSubstr(L"<Size> height: found -1, expected"));
    const auto cylinder = XMLConfigFile::parse(
        displayAround("<Screen shape='Cylinder'><Size height='3'/><Radius value='5'/></Screen>"), "t");
    cylinder->getMutableScreenConfig()->setHeight(3.5);
    EXPECT_EQ(readAgain(*cylinder)->getScreenConfig()->getHeight(), 3.5);
    EXPECT_THAT(refused(*cylinder, [&] { cylinder->getMutableScreenConfig()->setWidth(1.0); }),
                HasSubstr(L"<Size> width: found shape=\"Cylinder\""));
}

TEST(GeometryElements, RailsGrowAndShrinkRowByRow) {
    const auto config = inLines(
        "  <Screen shape=\"Ruled\">\n    <LowerRail>\n      <!-- west -->\n      <Point x=\"0\" y=\"0\" z=\"0\"/>\n"
        "      <Point x=\"1\" y=\"0\" z=\"0\" lengthUnit=\"m\"/>\n    </LowerRail>\n"
        "    <UpperRail><Point x=\"0\" y=\"0\" z=\"2000\"/><Point x=\"1000\" y=\"0\" z=\"2000\"/></UpperRail>\n  "
        "</Screen>\n");
    IScreenConfig& screen = *config->getMutableScreenConfig();
    const std::string before = config->text();
    const Rail lower{{0.0, 0.5, 0.0}, {1.5, 0.0, 0.0}, {2.0, 0.0, 0.0}};
    const Rail upper{{0.0, 0.0, 2.0}, {1.0, 0.0, 2.0}, {2.0, 0.0, 2.5}};
    screen.setRails(lower, upper);
    EXPECT_THAT(
        config->text(),
        HasSubstr(
            "      <!-- west -->\n      <Point x=\"0\" y=\"500\" z=\"0\"/>\n"
            "      <Point x=\"1.5\" y=\"0\" z=\"0\" lengthUnit=\"m\"/>\n"
            "      <Point x=\"2000\" y=\"0\" z=\"0\"/>\n    </LowerRail>\n    <UpperRail><Point x=\"0\" y=\"0\" "
            "z=\"2000\"/><Point x=\"1000\" y=\"0\" z=\"2000\"/><Point x=\"2000\" y=\"0\" z=\"2500\"/></UpperRail>"));
    EXPECT_EQ(screen.getLowerRail(), lower);
    EXPECT_EQ(readAgain(*config)->getScreenConfig()->getUpperRail(), upper);
    screen.setRails({{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}}, {{0.0, 0.0, 2.0}, {1.0, 0.0, 2.0}});
    EXPECT_EQ(config->text(), before);

    EXPECT_EQ(refused(*config, [&] { screen.setRails(lower, {}); }),
              L"Screen: <UpperRail>: found 0 points, and 3 in <LowerRail>, expected equally many points on both rails, "
              L"at least two; add or remove points");
    EXPECT_THAT(refused(*config, [&] { screen.setRails({lower[0]}, {upper[0]}); }), HasSubstr(L"at least two"));
    EXPECT_THAT(refused(*config,
                        [&] {
                            screen.setRails(lower, {{0, 0, 0}, {0, 0, 0}, {0, 0, std::nan("")}});
                        }),
                HasSubstr(L"<Point> z: found nan"));
    EXPECT_EQ(screen.getLowerRail().size(), 2U);
}

TEST(GeometryElements, TablesGrowShrinkAndGo) {
    const auto config = inLines(
        "  <TargetData type=\"Spherical\">\n    <PitchTable>\n"
        "      <Pair measured=\"-20\" corrected=\"-20.25\"/>\n"
        "      <Pair measured=\"20\" corrected=\"20.5\"/>\n    </PitchTable>\n  </TargetData>\n");
    TargetLocatorConfig& target = *config->getMutableTargetLocatorConfig();
    const std::string before = config->text();
    target.setYawTable({{-60 * DEGREE, -61.5 * DEGREE}, {60 * DEGREE, 62 * DEGREE}});
    target.setPitchTable({{-20 * DEGREE, -20.25 * DEGREE}, {0.0, 0.0}, {20 * DEGREE, 20.5 * DEGREE}});
    EXPECT_THAT(config->text(), HasSubstr("  <TargetData type=\"Spherical\">\n    <YawTable>\n"
                                          "      <Pair measured=\"-60\" corrected=\"-61.5\"/>\n"
                                          "      <Pair measured=\"60\" corrected=\"62\"/>\n    </YawTable>\n"
                                          "    <PitchTable>\n      <Pair measured=\"-20\" corrected=\"-20.25\"/>\n"
                                          "      <Pair measured=\"0\" corrected=\"0\"/>\n"
                                          "      <Pair measured=\"20\" corrected=\"20.5\"/>\n    </PitchTable>\n"));
    EXPECT_EQ(readAgain(*config)->getTargetLocatorConfig()->getPitchTable(), target.getPitchTable());
    EXPECT_EQ(target.getYawTable().size(), 2U);
    target.setYawTable({});
    target.setPitchTable({{-20 * DEGREE, -20.25 * DEGREE}, {20 * DEGREE, 20.5 * DEGREE}});
    EXPECT_EQ(config->text(), before);
    EXPECT_TRUE(target.getYawTable().empty());

    EXPECT_EQ(refused(*config,
                      [&] {
                          target.setYawTable({{0.0, 0.0}});
                      }),
              L"Target data: <YawTable>: found 1 of <Pair>, expected at least 2; add <Pair>");
    EXPECT_EQ(refused(*config,
                      [&] {
                          target.setYawTable({{0.0, 1.0}, {1.0, 1.0}});
                      })
                  .substr(0, 84),
              L"Target data: <Pair> corrected: found 1, expected more than the 1 of the pair before;");
    EXPECT_THAT(refused(*config,
                        [&] {
                            target.setPitchTable({{0.0, 1.0}, {std::nan(""), 2.0}});
                        }),
                HasSubstr(L"<Pair> measured: found nan, expected an angle"));
}

TEST(GeometryElements, RowsThatHoldSomethingOfOthersAreNotRemoved) {
    const auto config = XMLConfigFile::parse(
        displayAround("<TargetData type='3D'><YawTable><Pair measured='0' corrected='0'/><Pair measured='1' "
                      "corrected='1'/><Pair measured='2' corrected='2'><!-- mine --></Pair></YawTable></TargetData>"),
        "t");
    TargetLocatorConfig& target = *config->getMutableTargetLocatorConfig();
    EXPECT_THAT(refused(*config,
                        [&] {
                            target.setYawTable({{0.0, 0.5}, {1.0, 1.5}});
                        }),
                HasSubstr(L"<Pair>: found comments"));
    EXPECT_THAT(refused(*config, [&] { target.setYawTable({}); }), HasSubstr(L"<YawTable>: found comments"));
    EXPECT_EQ(target.getYawTable().size(), 3U);
}

TEST(GeometryElements, AMirrorBeginsWithItsRadius) {
    const auto config = XMLConfigFile::parse(displayAround("<TargetData type='Spherical'/>"), "t");
    TargetLocatorConfig& target = *config->getMutableTargetLocatorConfig();
    EXPECT_EQ(
        refused(*config,
                [&] {
                    target.setMirrorPosition({1.0, 0.0, 0.0});
                }),
        L"Target data: <Mirror> radius: found no <Mirror>, expected one with a radius; set the radius of the mirror "
        L"first");
    EXPECT_THAT(refused(*config, [&] { target.setMirrorRadius(-1.0); }), HasSubstr(L"<Mirror> radius: found -1"));
    target.setMirrorRadius(3.5);
    target.setMirrorPosition({1.0, 0.0, 0.0});
    target.setMirrorOrientation({0.0, 90 * DEGREE, 0.0});
    EXPECT_THAT(config->text(), HasSubstr("<Mirror radius=\"3.5\">"));
    const auto again = readAgain(*config);
    EXPECT_EQ(again->getTargetLocatorConfig()->getMirrorPosition(), (Vector{1.0, 0.0, 0.0}));
    EXPECT_EQ(again->getTargetLocatorConfig()->getMirrorOrientation()[1], PI / 2);
}

TEST(GeometryElements, WhereThereIsNoScreenAndNoTargetDataThereIsNoRecordToChange) {
    const auto config = XMLConfigFile::parse(smallConfiguration(), "t");
    EXPECT_EQ(config->getMutableScreenConfig(), nullptr);
    EXPECT_EQ(config->getMutableTargetLocatorConfig(), nullptr);
    const auto full = XMLConfigFile::parse(fullConfiguration(), "t");
    EXPECT_EQ(full->getMutableScreenConfig(), full->getScreenConfig());
    EXPECT_EQ(full->getMutableTargetLocatorConfig(), full->getTargetLocatorConfig());
}

}  // namespace
