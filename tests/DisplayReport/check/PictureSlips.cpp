#include "Slips.h"

namespace sound {

namespace {

const char* const EQUAL_ANGLES = "left='-28' right='28' bottom='-15' top='15'";
const char* const FOCAL = "2170.4, 0., 958.1, 0., 2171.2, 607.3";
const char* const HD = "<Resolution width='1920' height='1200'/>";

// What was written wrongly, in which display, the change, and what must be reported.
const Slip SLIPS[] = {
    // lenses
    {"a lens of equal angles of one degree", "lenses", EQUAL_ANGLES, "left='-0.5' right='0.5' bottom='-0.3' top='0.3'",
     "channel Centre: the width of its Frustum is 1 degrees, where projectors have 8 to 140: check its unit, "
     "angleUnit=\"rad\" or \"deg\" [narrow-view]"},
    {"radians for degrees beside a lens", "lenses", EQUAL_ANGLES, "left='-0.49' right='0.49' bottom='-0.26' top='0.26'",
     "channel Centre: the height of its Frustum is 0.5 degrees, where projectors have 8 to 140: check its unit, "
     "angleUnit=\"rad\" or \"deg\" [narrow-view]"},
    {"a lens of equal angles on its side", "lenses", EQUAL_ANGLES, "left='-15' right='15' bottom='-28' top='28'",
     "channel Centre: the picture of its lens is 0.53571 times as wide as high, its picture of 1920 x 1200 pixels 1.6 "
     "times: exchange width and height of one of them; a projector on its side has y=\"90\" in its Orientation "
     "[picture-stretched]"},
    {"a calibrated lens of twice the focal length", "lenses", FOCAL, "4340.8, 0., 958.1, 0., 4342.4, 607.3",
     "channel Right: its lens sees 25.1 x 15.8 degrees, and the Frustum beside it, which is not used, has 50 x 30 (0.7 "
     "to 1.4 times as much is usual): check fx, fy and the size of the picture in its file, and that the file is that "
     "of this lens; correct the Frustum, or leave it out [lens-against-frustum]",
     "lens.yml"},
    {"a calibrated lens of half the focal length", "lenses", FOCAL, "1085.2, 0., 958.1, 0., 1085.6, 607.3",
     "channel Right: its lens sees 87.2 x 59.8 degrees, and the Frustum beside it, which is not used, has 50 x 30",
     "lens.yml"},
    {"twice the focal length without a frustum beside it", "bare-lenses", FOCAL, "4340.8, 0., 958.1, 0., 4342.4, 607.3",
     "channel Right: its lens sees 25.1 degrees to the sides, those of all others 50 to 56 (31.3 to 84.2 is usual "
     "beside "
     "them): check fx, fy and the size of the picture in its file, and that the file is that of this lens "
     "[lens-among-others]",
     "lens.yml"},
    {"half the focal length without a frustum beside it", "bare-lenses", FOCAL, "1085.2, 0., 958.1, 0., 1085.6, 607.3",
     "channel Right: its lens sees 87.2 degrees to the sides", "lens.yml"},
    {"a focal length in millimetres", "lenses", FOCAL, "21.704, 0., 958.1, 0., 21.712, 607.3", "[lens-against-frustum]",
     "lens.yml"},
    {"a point lost in one focal length", "planetarium", "0., 763.9, 1199.5", "0., 76.39, 1199.5",
     "channel Sky: the picture of its lens is 0.1 times as wide as high, its picture of 2400 x 2400 pixels 1 times: "
     "check fx, fy and the size of the picture in its file, and the Resolution [picture-stretched]",
     "fisheye.yml"},
    {"a fisheye of twice the focal length", "planetarium", "763.9", "1527.8",
     "channel Sky: its fisheye sees 90 x 90 degrees, where these lenses see 120 to 220: check fx, fy and the size of "
     "the picture in its file, all in pixels, and that the file is that of this lens [fisheye-view]",
     "fisheye.yml"},
    {"a fisheye of half the focal length", "planetarium", "763.9", "381.9",
     "channel Sky: its fisheye sees 354.4 x 354.4 degrees, where these lenses see 120 to 220", "fisheye.yml"},
    {"the middle of a lens, x and y exchanged", "lenses", FOCAL, "2170.4, 0., 607.3, 0., 2171.2, 958.1",
     "channel Right: the axis of its lens leaves the picture at pixel 607.3, 958.1 of 1920 x 1200, 18 % of the width "
     "and 30 % of the height off its middle (lens shift makes up to 40 % and 120 %): exchange cx and cy in its file "
     "[lens-off-centre]",
     "lens.yml"},
    {"a point lost in the middle of a lens", "lenses", "958.1", "95.81",
     "channel Right: the axis of its lens leaves the picture at pixel 95.81, 607.3 of 1920 x 1200, 45 % of the width "
     "and 0.6 % of the height off its middle (lens shift makes up to 40 % and 120 %): check cx and cy in its file "
     "[lens-off-centre]",
     "lens.yml"},
    // angles
    {"a decimal point too many below", "collimated", "bottom='-18' top='18'", "bottom='-1.8' top='18'",
     "channel Left: Frustum bottom is -1.8 deg and top 18, the same digits (to both sides alike would be 18): look for "
     "a decimal point that was lost, or is one too many [decimal-point]"},
    {"a decimal point too many to one side", "wall-rays", "left='-16' right='16'", "left='-16' right='0.16'",
     "channel Left: Frustum left is -16 deg and right 0.2, the same digits"},
    // the resolution
    {"no resolution of areas", "rows", HD, "",
     "channel Upper left: its picture has no size in pixels, which coverage, whole maps and some targets need: give it "
     "a Resolution [no-resolution]"},
    {"no resolution seen from an eye", "seated-dome", HD, "",
     "channel Left: its picture has no size in pixels, which coverage, whole maps and some targets need: give it a "
     "Resolution [no-resolution]"},
    {"a digit too few", "wall", "<Name>Centre</Name><Resolution width='1920'",
     "<Name>Centre</Name><Resolution width='192'", "channel Centre: its Resolution is 192 x 1200 pixels"},
    {"a digit too many", "mesh-wall", "<Name>Left</Name><Resolution width='1920'",
     "<Name>Left</Name><Resolution width='19200'", "look for a digit too many or too few [odd-aspect]"},
    {"one resolution turned", "wall", "<Name>Left</Name><Resolution width='1920' height='1200'/>",
     "<Name>Left</Name><Resolution width='1200' height='1920'/>",
     "channel Left: its picture has 1200 x 1920 pixels, those of all others 1920 x 1200, and its ScreenArea is 0.888 "
     "times as wide as high on the screen, as theirs are, 0.912 times (0.35625 times would be a picture on its side): "
     "exchange width and height of its Resolution [resolution-turned]"},
    {"one resolution turned among rays", "wall-rays", "<Name>Centre</Name><Resolution width='1920' height='1200'/>",
     "<Name>Centre</Name><Resolution width='1200' height='1920'/>",
     "channel Centre: its picture has 1200 x 1920 pixels, those of all others 1920 x 1200, and its Frustum is 1.5937 "
     "times as wide as high (tangents), as theirs are, 1.5937 times (0.62252 times would be a picture on its side): "
     "exchange width and height of its Resolution [resolution-turned]"},
    {"a turned resolution left among upright ones", "mixed-areas", "left='0.38' right='0.62'", "left='0.3' right='0.7'",
     "[resolution-turned]"},
    {"a few pixels among many", "wall", "<Name>Left</Name><Resolution width='1920' height='1200'/>",
     "<Name>Left</Name><Resolution width='640' height='480'/>",
     "channel Left: its picture has 640 x 480 pixels, and those of all others 1920 x 1200, where a fifth as many and "
     "more are usual: check its Resolution [few-pixels]"},
    {"a digit too many in both sides", "wall", "width='1920' height='1200'", "width='19200' height='12000'",
     "channel Left: its Resolution is 19200 x 12000 pixels, where pictures have 200 and more on the shorter side and "
     "16384 at most on the longer: look for a digit too many or too few [odd-resolution]"},
    // the shape of a picture
    {"all resolutions turned", "rows", HD, "<Resolution width='1200' height='1920'/>",
     "channel Upper left: its ScreenArea is 2.4 times as wide as high on the screen, its picture of 1200 x 1920 pixels "
     "0.625 times: exchange width and height of the Resolution, or check the ScreenArea, and Size, Radius and angles "
     "of the screen [area-stretched]"},
    {"width and height of the screen exchanged", "rows", "<Size width='6' height='2.5'/>",
     "<Size width='2.5' height='6'/>", "channel Upper left: its ScreenArea is 0.41667 times as wide as high"},
    {"a height of ten times", "cockpit", "bottom='0' top='1'", "bottom='0' top='0.1'", "[area-stretched]"},
    // pictures on one spot, and mirrored ones
    {"a focus as large as its picture", "focus", "left='-22' right='22' bottom='-10' top='10'",
     "left='-30' right='30' bottom='-13.5' top='13.5'",
     "channel Focus: its picture has the middle and the size of that of channel Wide, "},
    {"all names copied", "wall-rays", "<Name>Centre</Name>", "<Name>Left</Name>",
     "channel Left: 2 channels have this name, which should be of one alone, so the library calls this one Left_01: "
     "give each a name of its own [same-name]"},
    {"one area upright among mirrored ones", "mirrored-areas", "left='1' right='0.45'", "left='0.45' right='1'",
     "channel Left: ScreenArea left 0.55 lies beyond right 0, which mirrors the picture: exchange the two "
     "[edges-exchanged]"},
    {"edges of all frusta exchanged", "wall-rays", "left='-16' right='16'", "left='16' right='-16'",
     "channel Left: Frustum left 16 deg lies beyond right -16 deg, which mirrors the picture: exchange the two "
     "[edges-exchanged]"},
    {"mirrored areas, called otherwise", "mirrored-areas", "<Name>Left</Name>", "<Name>Port</Name>",
     "channels: ScreenArea left lies beyond right in all 2 of them, which mirrors every picture, as a screen that is "
     "lit from behind needs [mirrored-areas]"},
    {"mirrored areas turned by 180 degrees", "mirrored-areas", "bottom='0' top='1'", "bottom='1' top='0'",
     "channels: ScreenArea left lies beyond right, and bottom beyond top, in all 2 of them, which turns every picture "
     "by 180 degrees, as projectors that hang on their heads need [mirrored-areas]"},
    {"t that runs downwards for all", "wall", "bottom='0' top='1'", "bottom='1' top='0'",
     "channel Left: ScreenArea bottom 1 lies beyond top 0, which mirrors the picture: exchange the two "
     "[edges-exchanged]"},
    {"a rear wall that is not turned to its eye", "cave-rear", "<Orientation z='180' x='0' y='0'/>", "",
     "screen: all of it lies behind the eye point, up to y = -1.5 with the eye at y = 0, and +y is forward: check the "
     "signs of its y, and the EyePoint [behind-eye]"},
    {"a wall on its head", "wall", "<Size", "<Orientation z='0' x='0' y='180'/><Size",
     "screen: t runs downwards, so that pictures stand on their heads, at 5 of 5 places (0 is usual): check t of the "
     "texture coordinates, the Orientation, the rails, and up of ImportOrientation [mirrored-texture]"},
    {"an eye outside of its closed cylinder", "closed-cylinder", "<EyePoint x='0' y='0' z='1.6'/>",
     "<EyePoint x='0' y='-16' z='1.6'/>", "screen: the eye point sees "},
    // rails
    {"a digit too many in a height", "cockpit", "<Point x='0' y='2.2' z='2.2'/>", "<Point x='0' y='2.2' z='22'/>",
     "screen: the rails run at different paces: from point 2 to 3 the LowerRail goes 1.082 m, the UpperRail 19.949 m "
     "(up to 4 times as far is usual): check the digits of these points, and lengthUnit of both rails [uneven-rails]"},
    {"one rail in centimetres", "cockpit", "<UpperRail>", "<UpperRail lengthUnit='cm'>",
     "screen: the rails run at different paces: "},
    {"a digit too many at the end of a rail", "cockpit", "<Point x='1.9' y='0' z='2.1'/>",
     "<Point x='19' y='0' z='2.1'/>", "from point 4 to 5 the LowerRail goes 1.393 m, the UpperRail 17.781 m"},
    // sizes
    {"a size in inches, read in metres", "wall", "<Size width='6' height='2.5'/>", "<Size width='236' height='98.4'/>",
     "screen: it measures 236 m, and rooms hold screens of 0.3 to 150 m (beside a facade other lengths are a tenth of "
     "it and more, and the longest is 5.265 m): its numbers would be plausible in cm; check lengthUnit, or fileUnit "
     "for "
     "meshes [screen-size]"},
    {"metres, read in inches", "wall", "lengthUnit='m'", "lengthUnit='in'",
     "screen: it measures 0.1524 m, and rooms hold screens of 0.3 to 150 m (a model is seen from 0.25 m to 5 sizes "
     "away, and the eye point lies 0.127 m away): its numbers would be plausible in m, if cm is stated; check "
     "lengthUnit, or fileUnit for meshes [screen-size]"},
    {"millimetres, read in inches", "wall", "<Size width='6' height='2.5'/>", "<Size width='152.4' height='63.5'/>",
     "[screen-size]"},
    {"millimetres, read in feet", "wall", "<Size width='6' height='2.5'/>", "<Size width='1828.8' height='762'/>",
     "screen: it measures 1828.8 m, and rooms hold screens of 0.3 to 150 m: its numbers would be plausible in mm"},
    {"a facade seen from its roof", "facade", "z='1.7'", "z='67'",
     "(a facade is seen from the ground, and the eye point lies at a height of 67 m)"},
    {"a model without its eye", "model", "<EyePoint x='0' y='-0.2' z='0.1'/>", "",
     "screen: it measures 0.25 m, and rooms hold screens of 0.3 to 150 m (a model has an eye point before it)"},
};

}  // namespace

std::span<const Slip> slipsOfPictures() {
    return SLIPS;
}

}  // namespace sound
