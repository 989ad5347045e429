// Every limit of a rule, from both sides: the number beside it that is still sound, and the one that is not.
#include "CheckedDisplays.h"
#include "DisplayParts.h"
#include "DisplayReport/check/Rule.h"
#include "support/Displays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::Not;

/// One change of a sound display by two numbers that lie on the two sides of a limit.
struct Border {
    const char* rule;
    const char* display;
    const char* from;
    const char* inside;          ///< must not be found
    const char* outside;         ///< must be found
    const char* file = nullptr;  ///< the file that is changed; the configuration where null
};

std::ostream& operator<<(std::ostream& out, const Border& border) {
    return out << border.rule << ": " << border.outside;
}

const char* const WALL_VIEW = "left='-16' right='16' bottom='-10.2' top='10.2'";
const char* const CLOUD = "-3759 0 -1368\n3759 2400 -4000";

const Border BORDERS[] = {
    {"area-off-screen", "wall", "left='0' right='0.37'", "left='-1' right='0.37'", "left='-1.01' right='0.37'"},
    {"area-off-screen", "wall", "left='0.63' right='1'", "left='0.63' right='2'", "left='0.63' right='2.01'"},
    {"narrow-view", "wall-rays", WALL_VIEW, "left='-2.5' right='2.5' bottom='-1.51' top='1.51'",
     "left='-2.5' right='2.5' bottom='-1.49' top='1.49'"},
    {"narrow-view", "wall-rays", WALL_VIEW, "left='-79.5' right='79.5' bottom='-70' top='70'",
     "left='-80.5' right='80.5' bottom='-70' top='70'"},
    // Width to height 1.6; the tangent of 10.2 degrees is 0.17993.
    {"picture-stretched", "wall-rays", WALL_VIEW, "left='-22.5' right='22.5' bottom='-10.2' top='10.2'",
     "left='-22.8' right='22.8' bottom='-10.2' top='10.2'"},
    {"picture-stretched", "wall-rays", WALL_VIEW, "left='-13.2' right='13.2' bottom='-10.2' top='10.2'",
     "left='-12.8' right='12.8' bottom='-10.2' top='10.2'"},
    // From -22 to 30 degrees the tangents span 0.98138.
    {"view-stretched", "seated-dome", "left='-35' right='35'", "left='-54.5' right='54.5'", "left='-55' right='55'"},
    {"view-stretched", "seated-dome", "left='-35' right='35'", "left='-23.8' right='23.8'",
     "left='-22.9' right='22.9'"},
    {"odd-resolution", "wall", "<Name>Centre</Name><Resolution width='1920'",
     "<Name>Centre</Name><Resolution width='200'", "<Name>Centre</Name><Resolution width='199'"},
    {"odd-resolution", "wall-rays", "width='1920' height='1200'", "width='16384' height='10240'",
     "width='16385' height='10240'"},
    // 2,304,000 pixels: a fifth are 460,800.
    {"few-pixels", "wall", "<Name>Centre</Name><Resolution width='1920' height='1200'",
     "<Name>Centre</Name><Resolution width='768' height='600'",
     "<Name>Centre</Name><Resolution width='767' height='600'"},
    // The areas are 2.4 times as wide as high.
    {"area-stretched", "rows", "width='1920' height='1200'", "width='1095' height='1000'",
     "width='1085' height='1000'"},
    {"area-stretched", "rows", "width='1920' height='1200'", "width='5320' height='1000'",
     "width='5350' height='1000'"},
    // 2400 pixels are 180 degrees of arc at a focal length of 763.9.
    {"fisheye-view", "planetarium", "763.9", "1374", "1376", "fisheye.yml"},
    {"fisheye-view", "planetarium", "763.9", "551", "549", "fisheye.yml"},
    // By an iteration of its own: the lens sees 48.836 degrees.
    {"lens-against-frustum", "lenses", "left='-25' right='25' bottom='-15' top='15'",
     "left='-34' right='34' bottom='-22' top='22'", "left='-35' right='35' bottom='-22' top='22'"},
    {"lens-against-frustum", "lenses", "left='-25' right='25' bottom='-15' top='15'",
     "left='-17.5' right='17.5' bottom='-15' top='15'", "left='-17.4' right='17.4' bottom='-15' top='15'"},
    // By the same iteration: the limits are at focal lengths of 3468 and 1139.9.
    {"lens-among-others", "bare-lenses", "2170.4", "3450", "3485", "lens.yml"},
    {"lens-among-others", "bare-lenses", "2170.4", "1150", "1130", "lens.yml"},
    {"lens-off-centre", "lenses", "958.1", "192", "191", "lens.yml"},
    {"lens-off-centre", "lenses", "607.3", "2039", "2041", "lens.yml"},
    // By hand: the lower rail goes 1.0817 m to its middle, the upper one 4.301 and 4.397 m.
    {"uneven-rails", "cockpit", "<Point x='0' y='2.2' z='2.2'/>", "<Point x='0' y='1.7' z='6.2'/>",
     "<Point x='0' y='1.7' z='6.3'/>"},
    {"odd-aspect", "wall", "<Name>Centre</Name><Resolution width='1920' height='1200'",
     "<Name>Centre</Name><Resolution width='1600' height='200'",
     "<Name>Centre</Name><Resolution width='1601' height='200'"},
    {"large-angle", "wall-rays", "<Orientation z='0'", "<Orientation z='360'", "<Orientation z='361'"},
    {"large-angle", "wall-rays", "<Orientation z='0'", "<Orientation z='-360'", "<Orientation z='-361'"},
    // Of 25 columns, 17 and 16 land.
    {"misses-screen", "wall", "left='0' right='0.37'", "left='0' right='1.5'", "left='0' right='1.6'"},
    // The circle of the lens, 0.785 of the picture, times the square of the part of it that is above.
    {"wide-misses-screen", "planetarium", "<Elevation min='0' max='90'/>", "<Elevation min='19' max='90'/>",
     "<Elevation min='25' max='90'/>"},
    {"inside-surface", "inset", "<Position x='0' y='0' z='1.9'/>", "<Position x='0' y='4.89' z='1.9'/>",
     "<Position x='0' y='4.91' z='1.9'/>"},
    // Half a picture is 1.456 m wide: 2 and 3 of 25 columns miss.
    {"inside-surface", "rear-projection", "x='-1.5' y='9'", "x='-1.806' y='9'", "x='-1.864' y='9'"},
    {"far-from-screen", "wall", "<EyePoint x='0' y='0' z='1.7'/>", "<EyePoint x='0' y='0' z='121.4'/>",
     "<EyePoint x='0' y='0' z='121.7'/>"},
    {"position-not-eye", "seated-dome", "<Name>Left</Name>", "<Name>Left</Name><Position x='0.39' y='-0.5' z='1.2'/>",
     "<Name>Left</Name><Position x='0.41' y='-0.5' z='1.2'/>"},
    {"target-not-eye", "seated-dome", "<TargetData type='Spherical'/>",
     "<TargetData type='Spherical'><TargetPosition x='0.39' y='-0.5' z='1.2'/></TargetData>",
     "<TargetData type='Spherical'><TargetPosition x='0.41' y='-0.5' z='1.2'/></TargetData>"},
    // To the right of the one that is called the centre.
    {"name-against-place", "seated-dome", "z='-55'", "z='4.9'", "z='5.1'"},
    {"layout-apart", "wall", "xMin='3.78' xMax='6'", "xMin='4.33' xMax='6'", "xMin='4.43' xMax='6'"},
    // The diagonal of a picture is 3.58 m; its copy lies 0.4 and 0.33 m lower.
    {"nearly-same-picture", "rows", "left='0' right='0.55' bottom='0' top='0.55'",
     "left='0' right='0.55' bottom='0.29' top='0.84'", "left='0' right='0.55' bottom='0.318' top='0.868'"},
    {"screen-size", "wall", "<Size width='6' height='2.5'/>", "<Size width='0.31' height='0.2'/>",
     "<Size width='0.29' height='0.2'/>"},
    {"screen-size", "wall", "<Size width='6' height='2.5'/>", "<Size width='149' height='2.5'/>",
     "<Size width='151' height='2.5'/>"},
    {"mirror-size", "collimated", "radius='3'", "radius='0.33'", "radius='0.31'"},
    {"mirror-size", "collimated", "radius='3'", "radius='63.5'", "radius='64.5'"},
    {"mirror-focus", "collimated", "radius='3'", "radius='2.01'", "radius='1.99'"},
    {"mirror-focus", "collimated", "radius='3'", "radius='4.79'", "radius='4.81'"},
    // The mirror stands 1.9 m high: (1.9 - z) / z is 0.624 and 0.570.
    {"eye-in-room", "collimated", "<EyePoint x='0' y='-0.3' z='-0.5'/>", "<EyePoint x='0' y='0' z='1.17'/>",
     "<EyePoint x='0' y='0' z='1.21'/>"},
    {"narrow-shape", "seated-dome", "min='-120' max='120'", "min='-5.1' max='5.1'", "min='-4.9' max='4.9'"},
    // Counted by a script of its own: it sees 0.55 and 0.46 of the places.
    {"eye-outside", "planetarium", "<EyePoint x='1' y='-2' z='1.2'/>", "<EyePoint x='0' y='-7' z='0.85'/>",
     "<EyePoint x='0' y='-7' z='1'/>"},
    {"beside-forward", "mesh-wall", "'wall.obj'/><MeasuredMesh file='measured.obj'/>", "'turned58.obj'/>",
     "'turned62.obj'/>"},
    // Upper and lower rim are 5 m away and 3.7 and 0.7 m high.
    {"eye-off-height", "closed-cylinder", "<EyePoint x='0' y='0' z='1.6'/>", "<EyePoint x='0' y='0' z='8.6'/>",
     "<EyePoint x='0' y='0' z='8.8'/>"},
    {"eye-off-height", "closed-cylinder", "<EyePoint x='0' y='0' z='1.6'/>", "<EyePoint x='0' y='0' z='-7.8'/>",
     "<EyePoint x='0' y='0' z='-8.1'/>"},
    {"edge-on", "wall", "<EyePoint x='0' y='0' z='1.7'/>", "<EyePoint x='10' y='4.48' z='1.7'/>",
     "<EyePoint x='10' y='4.52' z='1.7'/>"},
    // By hand: of a wall that spans twice the angle a, 1/2 + sin(2 a) / (4 a) looks up: 0.474 and 0.511.
    {"lying-mesh", "mesh-wall",
     "<ContentMesh file='wall.obj'/><MeasuredMesh file='measured.obj'/><ModelCloud file='scan.pcd'/><ImportOrientation "
     "up='Y' forward='-Z'/>",
     "<ContentMesh file='half95.obj'/>", "<ContentMesh file='half88.obj'/>"},
    // The screen measures 8.317 m from corner to corner.
    {"measured-apart", "mesh-wall", CLOUD, "-2529 0 -1368\n4989 2400 -4000", "-2499 0 -1368\n5019 2400 -4000",
     "scan.pcd"},
    {"measured-apart", "mesh-wall", CLOUD, "-5601 -588 -723\n5601 2988 -4645", "-5676 -612 -697\n5676 3012 -4671",
     "scan.pcd"},
    {"measured-apart", "mesh-wall", CLOUD, "-2543 388 -1794\n2543 2012 -3574", "-2468 412 -1820\n2468 1988 -3548",
     "scan.pcd"},
    {"mostly-dark", "wall-rays", "<Size width='6' height='2.5'/>", "<Size width='12' height='6'/>",
     "<Size width='12' height='8'/>"},
    {"dark-parts", "rows", "left='0.45' right='1' bottom='0' top='0.55'",
     "left='0.45' right='0.98' bottom='0' top='0.55'", "left='0.45' right='0.94' bottom='0' top='0.55'"},
    {"narrow-overlap", "wall", "left='0' right='0.37'", "left='0' right='0.3275'", "left='0' right='0.324'"},
    {"single-precision", "mesh-wall", CLOUD, "8180000 0 -1368\n8190000 2400 -4000",
     "8180000 0 -1368\n8194000 2400 -4000", "scan.pcd"},
};

std::set<std::string> rulesWith(const Border& border, const char* to) {
    sound::Display display = sound::named(border.display);
    if (border.file == nullptr) {
        display.text = changed(display.text, border.from, to);
    }
    for (auto& [name, content] : display.files) {
        if (border.file != nullptr && name == border.file) {
            content = changed(content, border.from, to);
        }
    }
    DisplayFolder folder;
    return rulesOf(folder.checked(display));
}

TEST(Borders, HaveASoundAndAnUnsoundSide) {
    for (const Border& border : BORDERS) {
        EXPECT_THAT(rulesWith(border, border.inside), Not(Contains(border.rule))) << border << " inside";
        EXPECT_THAT(rulesWith(border, border.outside), Contains(border.rule)) << border << " outside";
    }
}

TEST(Borders, AreTestedForEveryRuleThatHasALimit) {
    std::set<std::string> tested{"heaped-pictures"};  // below
    for (const Border& border : BORDERS) {
        tested.insert(border.rule);
    }
    for (const Rule& rule : Rule::all()) {
        if (std::isfinite(rule.least) || std::isfinite(rule.most)) {
            EXPECT_EQ(tested.count(std::string(rule.name)), 1U) << rule.name;
        }
    }
}

/// Three channels from one eye, to both sides of the forward direction by this many degrees.
std::set<std::string> rulesOfThree(const std::string& left, const std::string& right) {
    std::string projectors;
    for (const std::string& z : {left, std::string("0"), right}) {
        projectors += displays::projector("P" + z, "<Orientation z='" + z +
                                                       "' x='0' y='0'/>"
                                                       "<Frustum left='-26' right='26' bottom='-17' top='17'/>");
    }
    DisplayFolder folder;
    return rulesOf(
        folder.checked({"three", displays::text(displays::SPHERE, projectors, "<TargetData type='Spherical'/>"), {}}));
}

TEST(Borders, ThreeDirectionsWithinATenthOfAFieldOfViewAreAHeap) {
    EXPECT_THAT(rulesOfThree("-2.55", "2.55"), Contains("heaped-pictures"));
    EXPECT_THAT(rulesOfThree("-2.65", "2.65"), Not(Contains("heaped-pictures")));
    EXPECT_THAT(rulesOfThree("0", "0"), Not(Contains("heaped-pictures"))) << "projectors in a stack";
}

/// Neither targets nor maps look at the positions of a display with a mirror.
TEST(Borders, PositionsBesideAMirrorMayLieAnywhere) {
    sound::Display display = sound::named("collimated");
    display.text = changed(display.text, "<Name>Left</Name>", "<Name>Left</Name><Position x='2' y='-2' z='3000'/>");
    DisplayFolder folder;
    const DisplayDescription description = folder.checked(display);
    EXPECT_EQ(description.count(Severity::WARNING), 0U) << testing::PrintToString(reported(description));
    EXPECT_EQ(rulesOf(description).count("without-effect"), 1U);
}

/// A facade of 170 x 10 m, 13 m from the origin, whose picture has a layout of 10 m by this height around zero.
std::set<std::string> rulesOfTallLayout(const std::string& half) {
    return rulesOf(DisplayFolder().checked(
        {"tall",
         sound::display(
             "<Screen shape='Flat'><EyePoint x='0' y='0' z='1.7'/><Centre x='0' y='12' z='5'/><Size "
             "width='170' height='10'/></Screen>",
             sound::of("PlanarBasic"),
             sound::projector(1, "All", sound::area("0", "1", "0", "1") + sound::layout("0", "10", "-" + half, half))),
         {}}));
}

// A tenth of the screen is 17 m.
TEST(Borders, OtherLengthsBesideAFacadeAreLayoutsBothWays) {
    EXPECT_EQ(rulesOfTallLayout("8.6").count("screen-size"), 0U);
    EXPECT_EQ(rulesOfTallLayout("8.4").count("screen-size"), 1U);
}

}  // namespace
