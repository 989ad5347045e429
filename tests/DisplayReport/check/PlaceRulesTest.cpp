// Where the screen lies around the eye.
#include "CheckedDisplays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> warningsOf(const sound::Display& display) {
    DisplayFolder folder;
    const DisplayDescription description = folder.checked(display);
    std::vector<std::string> texts;
    for (const Finding& finding : description.findings) {
        if (finding.severity != Severity::REMARK) {
            texts.push_back(finding.where + ": " + finding.what + " [" + finding.rule + "]");
        }
    }
    return texts;
}

sound::Display changedDisplay(const std::string& name, const std::string& from, const std::string& to) {
    sound::Display display = sound::named(name);
    display.text = changed(display.text, from, to);
    return display;
}

/// A cylinder around the eye with pictures all over it, by their areas.
sound::Display cylinder(const std::string& inside, const std::string& eye = "<EyePoint x='0' y='0' z='1.6'/>") {
    return {"cylinder",
            "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Cylinder'>" + eye +
                "<Centre x='0' y='0' z='1.6'/><Radius value='3.5'/><Size height='2.2'/>" + inside +
                "</Screen><TargetData type='PlanarBasic'/><Projectors>"
                "<Projector id='A' allow='area-stretched'><Resolution width='1920' height='1200'/><ScreenArea left='0' "
                "right='0.55' bottom='0' "
                "top='1'/><Layout xMin='0' xMax='5.5' yMin='0' yMax='2'/></Projector>"
                "<Projector id='B' allow='area-stretched'><Resolution width='1920' height='1200'/><ScreenArea "
                "left='0.45' right='1' bottom='0' "
                "top='1'/><Layout xMin='4.5' xMax='10' yMin='0' yMax='2'/></Projector></Projectors></Display>",
            {}};
}

TEST(TurnedScreens, ThatAreMeantSoAreLeftAlone) {
    for (const char* inside :
         {"<Azimuth min='-110' max='110'/>", "<Azimuth min='-90' max='90'/>", "<Azimuth min='-40' max='150'/>", "",
          "<Orientation z='180' x='0' y='0'/>", "<Azimuth min='0' max='360'/>", "<Azimuth min='60' max='120'/>",
          "<Orientation z='50' x='0' y='0'/><Azimuth min='-90' max='90'/>"}) {
        EXPECT_THAT(warningsOf(cylinder(inside)), IsEmpty()) << inside;
    }
    // A column is seen from outside, and a full dome has no opening.
    EXPECT_THAT(warningsOf(cylinder("<Azimuth min='90' max='270'/>", "<EyePoint x='0' y='-9' z='1.6'/>")),
                testing::Not(Contains(HasSubstr("[beside-forward]"))));
    EXPECT_THAT(warningsOf(changedDisplay("planetarium", "<Radius", "<Orientation z='180' x='0' y='0'/><Radius")),
                IsEmpty());
}

TEST(TurnedScreens, ThatTurnTheirBackAreReported) {
    for (const auto& [inside, where] :
         {std::pair("<Azimuth min='90' max='270'/>", "180 degrees to the right"),
          std::pair("<Azimuth min='0' max='220'/>", "110 degrees to the right"),
          std::pair("<Azimuth min='0' max='180'/>", "90 degrees to the right"),
          std::pair("<Azimuth min='-180' max='0'/>", "90 degrees to the left"),
          std::pair("<Orientation z='180' x='0' y='0'/><Azimuth min='-100' max='110'/>", "175 degrees to the left"),
          std::pair("<Orientation z='90' x='0' y='0'/><Azimuth min='-110' max='110'/>", "90 degrees to the right")}) {
        EXPECT_THAT(warningsOf(cylinder(inside)), Contains(HasSubstr(std::string("its middle ") + where + " of +y")))
            << inside;
    }
    EXPECT_THAT(warningsOf(cylinder("<Azimuth min='90' max='270'/>")),
                Contains("screen: it spans 180 degrees around its axis, with its middle 180 degrees to the right of "
                         "+y, which is forward: check its Azimuth and its Orientation [beside-forward]"));
}

TEST(TurnedScreens, AreReportedBeyondSixtyDegreesAndBetweenTwoSpans) {
    const auto isFound = [](const std::string& inside) {
        DisplayFolder folder;
        return rulesOf(folder.checked(cylinder(inside))).count("beside-forward") == 1;
    };
    EXPECT_FALSE(isFound("<Azimuth min='-30' max='149'/>"));
    EXPECT_TRUE(isFound("<Azimuth min='-30' max='151'/>"));
    EXPECT_FALSE(isFound("<Azimuth min='21' max='140'/>"));
    EXPECT_TRUE(isFound("<Azimuth min='19' max='141'/>"));
    EXPECT_TRUE(isFound("<Azimuth min='31' max='360'/>"));
    EXPECT_FALSE(isFound("<Azimuth min='29' max='360'/>"));
}

TEST(TurnedScreens, OfAMirrorAreReportedBesideThePictures) {
    for (const auto& [from, to, where] :
         {std::tuple("min='-120' max='120'/><Elevation", "min='0' max='240'/><Elevation", "120 degrees to the right"),
          std::tuple("<Radius value='1.6'/>", "<Radius value='1.6'/><Orientation z='180' x='0' y='0'/>",
                     "180 degrees to the ")}) {
        EXPECT_THAT(warningsOf(changedDisplay("collimated", from, to)),
                    Contains(testing::AllOf(HasSubstr("screen: it spans 240 degrees around its axis, with its middle " +
                                                      std::string(where)),
                                            HasSubstr("of where the pictures look: check Azimuth and Orientation of "
                                                      "the screen, and the Mirror [beside-forward]"))))
            << to;
    }
}

TEST(EyeHeight, IsReportedAboveAndBelowAnUprightScreen) {
    EXPECT_THAT(warningsOf(changedDisplay("cockpit", "z='1.35'", "z='13.5'")),
                Contains(HasSubstr("eye point: all of the upright screen lies 7")));
    EXPECT_THAT(
        warningsOf(changedDisplay("wall", "<EyePoint x='0' y='0' z='1.7'/>", "<EyePoint x='0' y='0' z='17'/>")),
        Contains("eye point: all of the upright screen lies 67.5 degrees and more below its horizon: check z of "
                 "the EyePoint, and the height of the screen [eye-off-height]"));
    EXPECT_THAT(
        warningsOf(changedDisplay("mesh-wall", "<EyePoint x='0' y='0' z='1.2'/>", "<EyePoint x='0' y='0' z='12'/>")),
        Contains(HasSubstr("[eye-off-height]")));
}

TEST(EyeHeight, OverATableOrBelowARingIsLeftAlone) {
    EXPECT_THAT(
        warningsOf(changedDisplay("floor", "<EyePoint x='0' y='-2' z='1.7'/>", "<EyePoint x='0' y='0' z='17'/>")),
        IsEmpty());
    EXPECT_THAT(warningsOf(changedDisplay("closed-cylinder", "<EyePoint x='0' y='0' z='1.6'/>",
                                          "<EyePoint x='0' y='0' z='-3'/>")),
                IsEmpty());
}

/// A dome of 5 m radius in a file with y up, or standing as it is meant, and three channels above the horizon.
sound::Display meshDome(const std::string& axes, const std::string& x, double half = 90) {
    constexpr int COLUMNS = 24;
    constexpr int ROWS = 8;
    std::ostringstream mesh;
    for (int row = 0; row <= ROWS; ++row) {
        for (int column = 0; column <= COLUMNS; ++column) {
            const double azimuth = 2.0 * std::numbers::pi * column / COLUMNS;
            const double fromPole = half * std::numbers::pi / 180.0 * (ROWS - row) / ROWS;
            mesh << "v " << 5 * std::sin(fromPole) * std::sin(azimuth) << ' ' << 5 * std::cos(fromPole) << ' '
                 << -5 * std::sin(fromPole) * std::cos(azimuth) << '\n';
        }
    }
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            const int a = row * (COLUMNS + 1) + column + 1;
            const int c = a + COLUMNS + 1;
            mesh << "f " << a << ' ' << a + 1 << ' ' << c + 1 << "\nf " << a << ' ' << c + 1 << ' ' << c << '\n';
        }
    }
    std::string projectors;
    for (const char* z : {"-60", "0", "60"}) {
        projectors += "<Projector id='" + std::string(z) +
                      "'><Resolution width='1920' height='1200'/><Orientation z='" + std::string(z) + "' x='" + x +
                      "' y='0'/><Frustum left='-35' right='35' bottom='-22' top='25'/>"
                      "</Projector>";
    }
    return {"mesh-dome",
            "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Mesh' fileUnit='m'>"
            "<EyePoint x='0' y='-0.5' z='0.3'/><ContentMesh file='dome.obj'/>" +
                axes + "</Screen><TargetData type='Spherical'/><Projectors>" + projectors + "</Projectors></Display>",
            {{"dome.obj", mesh.str()}}};
}

TEST(LyingDome, OfAFileWithoutAxesIsReported) {
    EXPECT_THAT(warningsOf(meshDome("<ImportOrientation up='Y' forward='-Z'/>", "25")), IsEmpty());
    EXPECT_THAT(warningsOf(meshDome("", "25")),
                Contains(testing::AllOf(HasSubstr("screen: the mesh is a dome that lies on its back: its pole points "
                                                  "forward, and about 4"),
                                        HasSubstr("% of it lie below the eye point, where no picture looks; state the "
                                                  "axes of the file, ImportOrientation up=\"Y\" forward=\"-Z\" for "
                                                  "most OBJ files [lying-mesh]"))));
    EXPECT_THAT(warningsOf(meshDome("", "25", 70)), Contains(HasSubstr("[lying-mesh]")));
}

/// A dome before the eye, as some simulators have it, is lit below the horizon as well.
TEST(LyingDome, ThatIsMeantToStandBeforeTheEyeIsLeftAlone) {
    EXPECT_THAT(warningsOf(meshDome("", "0")), testing::Not(Contains(HasSubstr("[lying-mesh]"))));
}

/// A closed wall of 4 m radius and 2.4 m height in a file with y up and -z forward, whose texture begins behind.
sound::Display closedMesh(const std::string& axes, const std::string& kind) {
    constexpr int COLUMNS = 48;
    std::ostringstream mesh;
    for (int column = 0; column <= COLUMNS; ++column) {
        const double s = static_cast<double>(column) / COLUMNS;
        const double azimuth = 2.0 * std::numbers::pi * (s - 0.5);
        for (const int up : {0, 1}) {
            mesh << "v " << 4 * std::sin(azimuth) << ' ' << 2.4 * up << ' ' << -4 * std::cos(azimuth) << "\nvt " << s
                 << ' ' << up << '\n';
        }
    }
    for (int i = 1; i < 2 * COLUMNS; i += 2) {
        const auto corner = [](int k) { return std::to_string(k) + "/" + std::to_string(k); };
        mesh << "f " << corner(i) << ' ' << corner(i + 2) << ' ' << corner(i + 3) << "\nf " << corner(i) << ' '
             << corner(i + 3) << ' ' << corner(i + 1) << '\n';
    }
    return {"closed-mesh",
            "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Mesh' fileUnit='m'>"
            "<EyePoint x='0.5' y='1' z='1.2'/><ContentMesh file='ring.obj'/>" +
                axes + "</Screen><TargetData type='" + kind +
                "'/><Projectors><Projector id='A' allow='area-stretched'><Resolution width='1920' "
                "height='1200'/><ScreenArea left='0' "
                "right='0.55' bottom='0' top='1'/><Layout xMin='0' xMax='5.5' yMin='0' yMax='2'/></Projector>"
                "<Projector id='B' allow='area-stretched'><Resolution width='1920' height='1200'/><ScreenArea "
                "left='0.45' right='1' bottom='0' "
                "top='1'/><Layout xMin='4.5' xMax='10' yMin='0' yMax='2'/></Projector></Projectors></Display>",
            {{"ring.obj", mesh.str()}}};
}

TEST(ClosedMesh, WhoseTextureIsTurnedAwayIsReported) {
    EXPECT_THAT(warningsOf(closedMesh("<ImportOrientation up='Y' forward='-Z'/>", "PlanarAdvanced")), IsEmpty());
    EXPECT_THAT(warningsOf(closedMesh("<ImportOrientation up='Y' forward='Z'/>", "PlanarAdvanced")),
                Contains(testing::AllOf(HasSubstr("screen: the middle of its texture, s 0.5, lies 17"),
                                        HasSubstr("of +y, which is forward: check forward of ImportOrientation, and "
                                                  "where the texture begins [beside-forward]"))));
    EXPECT_THAT(warningsOf(closedMesh("<ImportOrientation up='Y' forward='X'/>", "PlanarAdvanced")),
                Contains(HasSubstr("[beside-forward]")));
}

}  // namespace
