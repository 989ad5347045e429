#include "SoundDisplays.h"

#include "DisplayParts.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace sound {

namespace {

using Files = std::vector<std::pair<std::string, std::string>>;

Display wall() {
    return {"wall",
            display(WALL, of("PlanarBasic"),
                    projector(1, "Left", area("0", "0.37", "0", "1") + layout("0", "2.22", "0", "2.5")) +
                        projector(2, "Centre", area("0.31", "0.69", "0", "1") + layout("1.86", "4.14", "0", "2.5")) +
                        projector(3, "Right", area("0.63", "1", "0", "1") + layout("3.78", "6", "0", "2.5"))),
            {}};
}

Display rows() {
    return {
        "rows",
        display(WALL, of("PlanarBasic"),
                projector(1, "Upper left", area("0", "0.55", "0.45", "1") + layout("0", "3.3", "1.125", "2.5")) +
                    projector(2, "Upper right", area("0.45", "1", "0.45", "1") + layout("2.7", "6", "1.125", "2.5")) +
                    projector(3, "Lower left", area("0", "0.55", "0", "0.55") + layout("0", "3.3", "0", "1.375")) +
                    projector(4, "Lower right", area("0.45", "1", "0", "0.55") + layout("2.7", "6", "0", "1.375"))),
        {}};
}

Display wallRays() {
    const std::string view = frustum("-16", "16", "-10.2", "10.2");
    return {"wall-rays",
            display(WALL, of("ProjectorCentric"),
                    projector(1, "Left", turned("0", "0", "0") + view + at("-1.8", "1", "1.7")) +
                        projector(2, "Centre", turned("0", "0", "0") + view + at("0", "1", "1.7")) +
                        projector(3, "Right", turned("0", "0", "0") + view + at("1.8", "1", "1.7"))),
            {}};
}

Display rearProjection() {
    const std::string view = frustum("-20", "20", "-12.8", "12.8");
    return {"rear-projection",
            display(WALL, of("ProjectorCentric"),
                    projector(1, "Left", turned("180", "0", "0") + view + at("-1.5", "9", "1.65")) +
                        projector(2, "Right", turned("180", "0", "0") + view + at("1.5", "9", "1.65"))),
            {}};
}

Display portrait() {
    const std::string view = frustum("-16", "16", "-10.2", "10.2");
    return {"portrait",
            display(WALL, of("ProjectorCentric"),
                    projector(1, "Left", turned("0", "0", "90") + view + at("-0.6", "1", "1.65")) +
                        projector(2, "Right", turned("0", "0", "90") + view + at("0.6", "1", "1.65"))),
            {}};
}

Display rolled() {
    const std::string view = frustum("-20", "20", "2", "27");
    return {"ceiling",
            display(WALL, of("ProjectorCentric"),
                    projector(1, "Left", turned("0", "0", "180") + view + at("-1.4", "1", "2.9")) +
                        projector(2, "Right", turned("0", "-2", "183") + view + at("1.4", "1", "2.9"))),
            {}};
}

Display inset() {
    return {
        "inset",
        display(
            WALL, of("3D"),
            projector(1, "Scene", turned("0", "0", "0") + frustum("-28", "28", "-14", "14") + at("0", "0", "1.65"),
                      "<Resolution width='3840' height='1800'/>") +
                projector(2, "Inset", turned("0", "0", "0") + frustum("-4", "4", "-2.5", "2.5") + at("0", "0", "1.9"))),
        {}};
}

Display cave() {
    return {"cave-wall",
            display("<Screen shape='Flat'><EyePoint x='0' y='0' z='1.6'/><Centre x='-1.5' y='0' z='1.25'/>"
                    "<Orientation z='-90' x='0' y='0'/><Size width='3' height='2.5'/></Screen>",
                    of("ProjectorCentric"),
                    projector(1, "Left wall front",
                              turned("90", "0", "0") + frustum("-20", "20", "-24", "24") + at("-4", "0.7", "1.25"),
                              "<Resolution width='1050' height='1300'/>") +
                        projector(2, "Left wall rear",
                                  turned("90", "0", "0") + frustum("-20", "20", "-24", "24") + at("-4", "-0.7", "1.25"),
                                  "<Resolution width='1050' height='1300'/>")),
            {}};
}

Display planetarium() {
    return {"planetarium",
            display("<Screen shape='Sphere'><EyePoint x='1' y='-2' z='1.2'/><Centre x='0' y='0' z='1.5'/>"
                    "<Radius value='6'/><Elevation min='0' max='90'/></Screen>",
                    of("ProjectorCentric"),
                    projector(1, "Sky",
                              "<ProjectionModel name='Fisheye' file='fisheye.yml'/>" + turned("0", "90", "0") +
                                  at("0", "0", "1.5"),
                              "<Resolution width='2400' height='2400'/>")),
            {{"fisheye.yml", FISHEYE}}};
}

Display closedCylinder() {
    std::string projectors;
    for (int i = 0; i < 8; ++i) {
        const double z = 45.0 * i - 180.0;
        const double radians = z * std::numbers::pi / 180.0;
        projectors += projector(
            i + 1, "Bay " + std::to_string(i + 1),
            turned(std::to_string(z), "0", "0") + frustum("-25", "25", "-16", "16") +
                at(std::to_string(-0.5 * std::sin(radians)), std::to_string(-0.5 * std::cos(radians)), "2.2"));
    }
    return {"closed-cylinder",
            display("<Screen shape='Cylinder'><EyePoint x='0' y='0' z='1.6'/><Centre x='0' y='0' z='2.2'/>"
                    "<Radius value='5'/><Size height='3'/></Screen>",
                    of("ProjectorCentric"), projectors),
            {}};
}

Display tableDome() {
    const std::string view = frustum("-10", "10", "-6.3", "6.3");
    return {"table-dome",
            display("<Screen shape='Sphere'><EyePoint x='0' y='-1.5' z='1.6'/><Centre x='0' y='0' z='0.8'/>"
                    "<Radius value='0.5'/><Elevation min='0' max='90'/></Screen>",
                    of("ProjectorCentric"),
                    projector(1, "West", turned("90", "-30", "0") + view + at("-2.2", "0", "2.3")) +
                        projector(2, "East", turned("-90", "-30", "0") + view + at("2.2", "0", "2.3")) +
                        projector(3, "South", turned("0", "-30", "0") + view + at("0", "-2.2", "2.3"))),
            {}};
}

Display cockpit() {
    return {"cockpit",
            display("<Screen shape='Ruled'><EyePoint x='0' y='0' z='1.35'/>"
                    "<LowerRail><Point x='-1.5' y='0' z='0.5'/><Point x='-1' y='1.3' z='0.5'/><Point x='0' y='1.7' "
                    "z='0.6'/><Point x='1' y='1.3' z='0.5'/><Point x='1.5' y='0' z='0.5'/></LowerRail>"
                    "<UpperRail><Point x='-1.9' y='0' z='2.1'/><Point x='-1.3' y='1.7' z='2.1'/><Point x='0' y='2.2' "
                    "z='2.2'/><Point x='1.3' y='1.7' z='2.1'/><Point x='1.9' y='0' z='2.1'/></UpperRail></Screen>",
                    of("PlanarAdvanced"),
                    projector(1, "Left window", area("0", "0.36", "0", "1") + layout("0", "2.16", "0", "1.6")) +
                        projector(2, "Windscreen", area("0.3", "0.7", "0", "1") + layout("1.8", "4.2", "0", "1.6")) +
                        projector(3, "Right window", area("0.64", "1", "0", "1") + layout("3.84", "6", "0", "1.6"))),
            {{"scan.pcd", cloud("-1.9 0 0.5", "1.9 2.2 2.2")}}};
}

Display collimated() {
    const std::string view = frustum("-26", "26", "-18", "18");
    return {"collimated",
            display("<Screen shape='Sphere'><EyePoint x='0' y='-0.3' z='-0.5'/><Centre x='0' y='0' z='1.9'/>"
                    "<Radius value='1.6'/><Azimuth min='-120' max='120'/><Elevation min='-60' max='60'/></Screen>",
                    "<TargetData type='SphericalCollimated'><Mirror radius='3'><Position x='0' y='0' "
                    "z='1.9'/></Mirror></TargetData>",
                    projector(1, "Left", turned("-40", "0", "0") + view) +
                        projector(2, "Centre", turned("0", "0", "0") + view) +
                        projector(3, "Right", turned("40", "0", "0") + view)),
            {}};
}

Display seatedDome() {
    const std::string view = frustum("-35", "35", "-22", "30");
    return {"seated-dome",
            display("<Screen shape='Sphere'><EyePoint x='0.3' y='-0.5' z='1.2'/><Centre x='0' y='0' z='1.6'/>"
                    "<Radius value='5'/><Azimuth min='-120' max='120'/><Elevation min='-35' max='90'/></Screen>",
                    of("Spherical"),
                    projector(1, "Left", turned("-55", "0", "0") + view) +
                        projector(2, "Centre", turned("0", "0", "0") + view) +
                        projector(3, "Right", turned("55", "0", "0") + view) +
                        projector(4, "Top", turned("0", "50", "0") + frustum("-40", "40", "-25", "30"))),
            {}};
}

/// One forward direction for all channels, each of which sees its own part beside it.
Display offAxisWall() {
    return {"off-axis-wall",
            display(WALL, of("Spherical"),
                    projector(1, "Left", frustum("-30.5", "-8", "-13.5", "13")) +
                        projector(2, "Centre", frustum("-12", "12", "-13.5", "13")) +
                        projector(3, "Right", frustum("8", "30.5", "-13.5", "13"))),
            {}};
}

/// How the mesh of a wall differs from the one that is meant.
struct WallChange {
    double radius = 4000;  ///< millimetres
    double height = 2400;
    bool isLying = false;     ///< y and z exchanged
    bool isMirrored = false;  ///< s from right to left
    bool isHanging = false;   ///< t downwards
    double aside = 0;
    double half = 70;  ///< degrees to either side
    double turn = 0;   ///< degrees to the right
};

/// A wall of 140 degrees around the eye; millimetres, y up, -z forward.
std::string curvedWall(const WallChange& wall) {
    constexpr int COLUMNS = 28;
    constexpr int ROWS = 4;
    std::ostringstream text;
    for (int row = 0; row <= ROWS; ++row) {
        for (int column = 0; column <= COLUMNS; ++column) {
            const double s = static_cast<double>(column) / COLUMNS;
            const double azimuth = (wall.turn + wall.half * (2.0 * s - 1.0)) * std::numbers::pi / 180.0;
            const double t = static_cast<double>(row) / ROWS;
            const double up = wall.height * t;
            const double back = -wall.radius * std::cos(azimuth);
            text << "v " << wall.radius * std::sin(azimuth) + wall.aside << ' ' << (wall.isLying ? back : up) << ' '
                 << (wall.isLying ? up : back) << "\nvt " << (wall.isMirrored ? 1 - s : s) << ' '
                 << (wall.isHanging ? 1 - t : t) << '\n';
        }
    }
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            const int a = row * (COLUMNS + 1) + column + 1;
            const int c = a + COLUMNS + 1;
            const auto corner = [](int i) { return std::to_string(i) + "/" + std::to_string(i); };
            text << "f " << corner(a) << ' ' << corner(a + 1) << ' ' << corner(c + 1) << '\n';
            text << "f " << corner(a) << ' ' << corner(c + 1) << ' ' << corner(c) << '\n';
        }
    }
    return text.str();
}

/// Those that the display names first, then those that a slip names in their place.
Files wallFiles() {
    return {{"wall.obj", curvedWall({})},
            {"measured.obj", curvedWall({.radius = 4020})},
            {"scan.pcd", cloud("-3759 0 -1368", "3759 2400 -4000")},
            {"mirrored.obj", curvedWall({.isMirrored = true})},
            {"hanging.obj", curvedWall({.isHanging = true})},
            {"lying.obj", curvedWall({.radius = 4020, .isLying = true})},
            {"metres.obj", curvedWall({.radius = 4.02, .height = 2.4})},
            {"beside.obj", curvedWall({.radius = 4020, .aside = 2500})},
            {"hanging-measured.obj", curvedWall({.radius = 4020, .isHanging = true})},
            {"half88.obj", curvedWall({.half = 88})},
            {"half95.obj", curvedWall({.half = 95})},
            {"turned58.obj", curvedWall({.turn = 58})},
            {"turned62.obj", curvedWall({.turn = 62})},
            {"undefined.pcd", cloud("nan nan nan", "nan nan nan")},
            {"surveyed.pcd", cloud("452100000 5411800000 2000", "452107500 5411802600 4400")}};
}

const std::string CURVED_WALL =
    "<Screen shape='Mesh' fileUnit='mm'><EyePoint x='0' y='0' z='1.2'/><ContentMesh file='wall.obj'/>"
    "<MeasuredMesh file='measured.obj'/><ModelCloud file='scan.pcd'/><ImportOrientation up='Y' forward='-Z'/></Screen>";

Display meshWall() {
    return {"mesh-wall",
            display(CURVED_WALL, of("PlanarAdvanced"),
                    projector(1, "Left", area("0", "0.37", "0", "1") + layout("0", "3.7", "0", "2.4")) +
                        projector(2, "Centre", area("0.31", "0.69", "0", "1") + layout("3.1", "6.9", "0", "2.4")) +
                        projector(3, "Right", area("0.63", "1", "0", "1") + layout("6.3", "10", "0", "2.4"))),
            wallFiles()};
}

Display meshRays() {
    const std::string view = frustum("-20", "20", "-12.8", "12.8");
    return {"mesh-rays",
            display(CURVED_WALL, of("3D"),
                    projector(1, "Left", turned("-26", "0", "0") + view + at("-0.6", "0", "1.2")) +
                        projector(2, "Right", turned("26", "0", "0") + view + at("0.6", "0", "1.2"))),
            wallFiles()};
}

/// A map that shows the screen between two bounds of s.
/// @param brightness below 0 for nodes that are not used
std::string map(const std::string& from, const std::string& to, const std::string& pixels = "1920 1200",
                const std::string& brightness = "1") {
    const std::string end = " " + brightness + "\n";
    return "2\n2 2\n-1.6 -1 " + from + " 0" + end + "1.6 -1 " + to + " 0" + end + "-1.6 1 " + from + " 1" + end +
           "1.6 1 " + to + " 1" + end + "pixels " + pixels + "\n";
}

Display warpedWall() {
    return {"warped-wall",
            display(WALL, of("CustomPlanar"),
                    projector(1, "Left", "<CustomPlanarMap file='left.map'/>") +
                        projector(2, "Right", "<CustomPlanarMap file='right.map'/>")),
            {{"left.map", map("0", "0.55")},
             {"right.map", map("0.45", "1")},
             {"other.map", map("0", "0.55", "1920 1080")},
             {"copy.map", map("0", "0.55")},
             {"mirrored.map", map("0.55", "0")},
             {"unused.map", map("0", "0.55", "1920 1200", "-1")},
             {"pixels.map", map("2112", "3168")}}};
}

Display floor() {
    const std::string view = frustum("-25", "25", "-16.2", "16.2");
    return {"floor",
            display("<Screen shape='Flat'><EyePoint x='0' y='-2' z='1.7'/><Centre x='0' y='0' z='0'/>"
                    "<Orientation z='0' x='-90' y='0'/><Size width='6' height='3.5'/></Screen>",
                    of("ProjectorCentric"),
                    projector(1, "Left", turned("0", "-90", "0") + view + at("-1.4", "0", "3.4")) +
                        projector(2, "Right", turned("0", "-90", "0") + view + at("1.4", "0", "3.4"))),
            {}};
}

}  // namespace

const std::vector<Display>& all() {
    static const std::vector<Display> DISPLAYS = [] {
        std::vector<Display> displays{wall(),      rows(),     wallRays(),   rearProjection(), portrait(),
                                      rolled(),    inset(),    cave(),       planetarium(),    closedCylinder(),
                                      tableDome(), cockpit(),  collimated(), seatedDome(),     offAxisWall(),
                                      meshWall(),  meshRays(), warpedWall(), floor()};
        for (Display& display : uncommon()) {
            displays.push_back(std::move(display));
        }
        return displays;
    }();
    return DISPLAYS;
}

const Display& named(const std::string& name) {
    const auto found =
        std::find_if(all().begin(), all().end(), [&](const Display& display) { return display.name == name; });
    if (found == all().end()) {
        throw std::out_of_range("no sound display is called " + name);
    }
    return *found;
}

}  // namespace sound
