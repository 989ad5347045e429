#include "DisplayParts.h"
#include "SoundDisplays.h"

#include <cmath>
#include <numbers>

namespace sound {

namespace {

/// A calibrated lens of 48 degrees with a visible barrel.
const std::string BARREL =
    "%YAML:1.0\n---\nimage_width: 1920\nimage_height: 1200\ncamera_matrix: !!opencv-matrix\n   rows: 3\n   cols: 3\n"
    "   dt: d\n   data: [ 2170.4, 0., 958.1, 0., 2171.2, 607.3, 0., 0., 1. ]\n"
    "distortion_coefficients: !!opencv-matrix\n   rows: 5\n   cols: 1\n   dt: d\n   data: [ -1.42e-01, 8.7e-02, "
    "4.1e-04, -2.6e-04, -1.9e-02 ]\n";

/// @param right the frustum beside the calibrated lens
Display lensesWith(const std::string& name, const std::string& right) {
    return {name,
            display("<Screen shape='Cylinder'><EyePoint x='0' y='0' z='1.6'/><Centre x='0' y='0' z='1.6'/>"
                    "<Radius value='3.5'/><Size height='2.2'/><Azimuth min='-110' max='110'/></Screen>",
                    of("ProjectorCentric"),
                    projector(1, "Left",
                              turned("-50", "0", "0") + frustum("-25", "25", "-15", "13") + at("-0.4", "0.3", "1.9")) +
                        projector(2, "Centre",
                                  "<ProjectionModel name='Equidistant'/>" + turned("0", "0", "0") +
                                      frustum("-28", "28", "-15", "15") + at("0", "0.2", "1.9")) +
                        projector(3, "Right",
                                  "<ProjectionModel name='BrownConrady' file='lens.yml'/>" + turned("50", "0", "0") +
                                      right + at("0.4", "0.3", "1.9"))),
            {{"lens.yml", BARREL}}};
}

Display lenses() {
    return lensesWith("lenses", frustum("-25", "25", "-15", "15"));
}

Display bareLenses() {
    return lensesWith("bare-lenses", "");
}

/// A calibrated lens of half the width shows the middle of another picture more finely.
Display lensInset() {
    Display inset = bareLenses();
    inset.name = "lens-inset";
    std::string& text = inset.text;
    text.replace(text.find("z='50'"), 6, "z='0' ");
    text.replace(text.find("x='0.4' y='0.3'"), 15, "x='0.1' y='0.3'");
    text.replace(text.find("<Name>Right"), 11, "<Name>Inset");
    std::string& lens = inset.files.front().second;
    lens.replace(lens.find("2170.4"), 6, "4340.8");
    lens.replace(lens.find("2171.2"), 6, "4342.4");
    return inset;
}

const char* const DOME =
    "<Screen shape='Sphere'><EyePoint x='0' y='-2' z='1.2'/><Centre x='0' y='0' z='1.5'/><Radius value='6'/>"
    "<Elevation min='0' max='90'/></Screen>";

/// The circle of the lens fills the height, and ends before the sides do.
Display cutFisheye() {
    std::string lens = FISHEYE;
    lens.replace(lens.find("image_width: 2400"), 17, "image_width: 3840");
    lens.replace(lens.find("1199.5, 0., 763.9"), 17, "1919.5, 0., 763.9");
    return {"cut-fisheye",
            display(DOME, of("ProjectorCentric"),
                    projector(1, "Sky",
                              "<ProjectionModel name='Fisheye' file='fisheye.yml'/>" + turned("0", "90", "0") +
                                  at("0", "0", "1.5"),
                              "<Resolution width='3840' height='2400'/>")),
            {{"fisheye.yml", lens}}};
}

Display equalAngles() {
    return {"equal-angles",
            display(DOME, of("ProjectorCentric"),
                    projector(1, "Sky",
                              "<ProjectionModel name='Equidistant'/>" + turned("0", "90", "0") +
                                  frustum("-89", "89", "-89", "89") + at("0", "0", "1.5"),
                              "<Resolution width='2400' height='2400'/>")),
            {}};
}

/// A projector on its side in the middle, whose picture is on its side, too.
Display mixedAreas() {
    return {"mixed-areas",
            display(WALL, of("PlanarBasic"),
                    projector(1, "Left", area("0", "0.4", "0", "1") + layout("0", "2.4", "0", "2.5")) +
                        projector(2, "Middle", area("0.38", "0.62", "0", "1") + layout("2.28", "3.72", "0", "2.5"),
                                  "<Resolution width='1200' height='1920'/>") +
                        projector(3, "Right", area("0.6", "1", "0", "1") + layout("3.6", "6", "0", "2.5"))),
            {}};
}

Display mixedRays() {
    const std::string view = frustum("-16", "16", "-10.2", "10.2");
    return {"mixed-rays",
            display(WALL, of("ProjectorCentric"),
                    projector(1, "Left", turned("0", "0", "0") + view + at("-1.8", "1", "1.7")) +
                        projector(2, "Centre",
                                  turned("0", "0", "0") + frustum("-10.2", "10.2", "-16", "16") + at("0", "1", "1.7"),
                                  "<Resolution width='1200' height='1920'/>") +
                        projector(3, "Right", turned("0", "0", "0") + view + at("1.8", "1", "1.7"))),
            {}};
}

Display caveRear() {
    return {"cave-rear",
            display("<Screen shape='Flat'><EyePoint x='0' y='0' z='1.6'/><Centre x='0' y='-1.5' z='1.25'/>"
                    "<Orientation z='180' x='0' y='0'/><Size width='3' height='2.5'/></Screen>",
                    of("PlanarBasic"),
                    projector(1, "Back", area("0", "1", "0", "1") + layout("0", "3", "0", "2.5"),
                              "<Resolution width='1600' height='1300'/>")),
            {}};
}

Display mirroredAreas() {
    return {"mirrored-areas",
            display(WALL, of("PlanarBasic"),
                    projector(1, "Left", area("0.55", "0", "0", "1") + layout("0", "3.3", "0", "2.5")) +
                        projector(2, "Right", area("1", "0.45", "0", "1") + layout("2.7", "6", "0", "2.5"))),
            {}};
}

/// Four projectors around a column that people walk around.
Display column() {
    std::string projectors;
    for (int i = 0; i < 4; ++i) {
        const double z = 90.0 * i;
        const double radians = z * std::numbers::pi / 180.0;
        projectors += projector(
            i + 1, "Side " + std::to_string(i + 1),
            turned(std::to_string(z), "0", "0") + frustum("-13", "13", "-8.3", "8.3") +
                at(std::to_string(-8.0 * std::sin(radians)), std::to_string(-8.0 * std::cos(radians)), "2.2"));
    }
    return {"column",
            display("<Screen shape='Cylinder'><EyePoint x='0' y='-8' z='1.6'/><Centre x='0' y='0' z='2.2'/>"
                    "<Radius value='2'/><Size height='3'/></Screen>",
                    of("ProjectorCentric"), projectors),
            {}};
}

Display facade() {
    const std::string fine = "<Resolution width='3840' height='2400'/>";
    return {
        "facade",
        display("<Screen shape='Flat'><EyePoint x='0' y='0' z='1.7'/><Centre x='0' y='90' z='20'/>"
                "<Size width='180' height='40'/></Screen>",
                of("PlanarBasic"),
                projector(1, "West", area("0", "0.37", "0", "1") + layout("0", "66.6", "0", "40"), fine) +
                    projector(2, "Middle", area("0.31", "0.69", "0", "1") + layout("55.8", "124.2", "0", "40"), fine) +
                    projector(3, "East", area("0.63", "1", "0", "1") + layout("113.4", "180", "0", "40"), fine)),
        {}};
}

Display model() {
    return {"model",
            display("<Screen shape='Flat'><EyePoint x='0' y='-0.2' z='0.1'/><Centre x='0' y='0.2' z='0.1'/>"
                    "<Size width='0.25' height='0.16'/></Screen>",
                    of("ProjectorCentric"),
                    projector(1, "Pico",
                              turned("0", "0", "0") + frustum("-20", "20", "-12.8", "12.8") + at("0", "-0.12", "0.1"))),
            {}};
}

/// Two projectors in a stack, one of which lights the middle more finely.
Display focus() {
    const std::string wide = "<Resolution width='3840' height='1600'/>";
    return {
        "focus",
        display(WALL, of("ProjectorCentric"),
                projector(1, "Wide", turned("0", "0", "0") + frustum("-31", "31", "-14", "14") + at("0", "0", "1.65"),
                          wide) +
                    projector(2, "Focus",
                              turned("0", "0", "0") + frustum("-22", "22", "-10", "10") + at("0", "0", "1.66"), wide)),
        {}};
}

Display anamorphic() {
    return {
        "anamorphic",
        display(WALL, of("ProjectorCentric"),
                projector(1, "Wide", turned("0", "0", "0") + frustum("-28", "28", "-12", "12") + at("0", "0", "1.65"),
                          "<Resolution width='1920' height='1080'/>")),
        {}};
}

}  // namespace

std::vector<Display> uncommon() {
    return {lenses(),   bareLenses(),    lensInset(), cutFisheye(), equalAngles(), mixedAreas(), mixedRays(),
            caveRear(), mirroredAreas(), column(),    facade(),     model(),       focus(),      anamorphic()};
}

}  // namespace sound
