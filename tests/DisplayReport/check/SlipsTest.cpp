// Everyday slips: each is one change to a display that is sound, and must be reported.
#include "CheckedDisplays.h"
#include "DisplayReport/check/Rule.h"
#include "Slips.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace {

using namespace Veltrani::DisplayReport;
using sound::Slip;
using testing::Contains;
using testing::HasSubstr;

// What was written wrongly, in which display, the change, and what must be reported.
const Slip SLIPS[] = {
    // units
    {"a percentage for a part", "wall", "right='0.37'", "right='37'",
     "channel Left: ScreenArea right is 37, and the screen runs from 0 to 1: write 0.37 if this is a percentage "
     "[area-off-screen]"},
    {"pixels for a part", "wall", "left='0.63' right='1'", "left='1210' right='1920'",
     "channel Right: ScreenArea right is 1920, and the screen runs from 0 to 1: divide pixels"},
    {"millimetres for metres", "wall", "<Size width='6' height='2.5'/>", "<Size width='6000' height='2500'/>",
     "screen: it measures 6000 m, and rooms hold screens of 0.3 to 150 m: its numbers would be plausible in mm; check "
     "lengthUnit, or fileUnit for meshes [screen-size]"},
    {"metres stated as millimetres", "wall", "lengthUnit='m'", "lengthUnit='mm'",
     "it measures 0.006 m, and rooms hold screens of 0.3 to 150 m: its numbers would be plausible in m, if mm is "
     "stated"},
    {"the size in centimetres", "wall", "<Size width='6' height='2.5'/>", "<Size width='600' height='250'/>",
     "its numbers would be plausible in cm"},
    {"a radius in millimetres", "planetarium", "<Radius value='6'/>", "<Radius value='6000'/>", "plausible in mm"},
    {"a table dome in the wrong unit", "table-dome", "<Radius value='0.5'/>", "<Radius lengthUnit='mm' value='0.5'/>",
     "screen: it measures 0.001 m"},
    {"a mesh in millimetres, read in metres", "mesh-wall", "fileUnit='mm'", "fileUnit='m'",
     "plausible in mm; check lengthUnit, or fileUnit for meshes [screen-size]"},
    {"a mesh in millimetres, read in inches", "mesh-wall", "fileUnit='mm'", "fileUnit='in'", "[screen-size]"},
    {"the eye in millimetres", "wall", "z='1.7'", "z='1700'",
     "eye point: it lies 1698.357 m away from the middle of a screen of 6 m: check its lengthUnit [far-from-screen]"},
    {"the eye in centimetres", "wall-rays", "<EyePoint x='0' y='0' z='1.7'/>", "<EyePoint x='0' y='0' z='170'/>",
     "eye point: it lies 168.424 m away"},
    {"the target position in millimetres", "seated-dome", "<TargetData type='Spherical'/>",
     "<TargetData type='Spherical'><TargetPosition x='300' y='-500' z='1200'/></TargetData>",
     "target position: it lies 1332"},
    {"a position in millimetres", "wall-rays", "<Position x='-1.8' y='1' z='1.7'/>",
     "<Position x='-1800' y='1000' z='1700'/>", "channel Left: its Position lies 2667"},
    {"a position in centimetres", "wall-rays", "<Position x='1.8' y='1' z='1.7'/>",
     "<Position x='180' y='100' z='170'/>", "channel Right: its Position lies 264.134 m away"},
    {"a mirror in millimetres", "collimated", "radius='3'", "radius='3000'",
     "mirror: its radius is 3000 m before a screen of 3.2 m: check its lengthUnit [mirror-size]"},
    {"a mirror in the wrong unit", "collimated", "radius='3'", "radius='0.03'", "mirror: its radius is 0.03 m"},
    {"one layout in millimetres", "wall", "xMin='1.86' xMax='4.14'", "xMin='1860' xMax='4140'",
     "channel Centre: its Layout runs from 1860 to 4140 along x, where its ScreenArea and the layouts of the other "
     "channels have 1.86 to 4.14: check Layout and ScreenArea [layout-apart]"},
    // degrees and radians
    {"radians for degrees in a frustum", "wall-rays", "left='-16' right='16' bottom='-10.2' top='10.2'",
     "left='-0.28' right='0.28' bottom='-0.178' top='0.178'",
     "channel Left: the width of its Frustum is 0.6 degrees, where projectors have 8 to 140: check its unit"},
    {"radians for degrees in one frustum", "inset", "left='-4' right='4' bottom='-2.5' top='2.5'",
     "left='-0.07' right='0.07' bottom='-0.044' top='0.044'", "[narrow-view]"},
    {"degrees for radians everywhere", "wall-rays", "angleUnit='deg'", "angleUnit='rad'",
     "channel Left, frustum: an edge is at"},
    {"radians for degrees in the azimuth", "seated-dome", "<Azimuth min='-120' max='120'/>",
     "<Azimuth min='-2.09' max='2.09'/>",
     "screen: Azimuth spans 4.2 degrees, and round screens 10 and more: check its angleUnit [narrow-shape]"},
    {"radians for degrees in the elevation", "planetarium", "<Elevation min='0' max='90'/>",
     "<Elevation min='0' max='1.5708'/>", "screen: Elevation spans 1.6 degrees"},
    {"degrees for radians in an orientation", "mesh-rays", "<Orientation z='-26'",
     "<Orientation angleUnit='rad' z='-26'", "channel Left: Orientation z is -1489.7 degrees, more than a turn"},
    {"degrees for radians of the screen", "wall", "<Size", "<Orientation angleUnit='rad' z='0' x='0' y='10'/><Size",
     "screen: Orientation y is 573 degrees"},
    {"degrees for radians of a mirror", "collimated", "<Position x='0' y='0' z='1.9'/>",
     "<Orientation angleUnit='rad' z='0' x='-30' y='0'/><Position x='0' y='0' z='1.9'/>",
     "mirror: Orientation x is -1718.9 degrees"},
    // signs and turns
    {"an orientation up for down", "table-dome", "z='0' x='-30'", "z='0' x='30'",
     "channel South: nothing of its picture lands on the screen: the middle of its picture looks 59.6 degrees above "
     "the screen's middle: check x of its Orientation"},
    {"a projector that looks backwards", "wall-rays",
     "<Orientation z='0' x='0' y='0'/><Frustum left='-16' right='16' "
     "bottom='-10.2' top='10.2'/><Position x='1.8'",
     "<Orientation z='180' x='0' y='0'/><Frustum left='-16' right='16' bottom='-10.2' top='10.2'/><Position x='1.8'",
     "channel Right: nothing of its picture lands on the screen"},
    {"a quarter turn to the right", "wall-rays", "<Orientation z='0' x='0' y='0'/>",
     "<Orientation z='90' x='0' y='0'/>",
     "channel Centre: nothing of its picture lands on the screen: the middle of its picture looks 90 degrees to the "
     "right "
     "of the screen's middle: check z of its Orientation, and its Position [looks-away]"},
    {"looks aside", "wall-rays", "<Orientation z='0' x='0' y='0'/>", "<Orientation z='-37' x='0' y='0'/>",
     "channel Centre: 52 % of its picture misses the screen (at most 35 % is usual): the middle of its picture looks "
     "37"},
    {"looks above", "wall-rays", "<Orientation z='0' x='0' y='0'/>", "<Orientation z='0' x='19' y='0'/>",
     "degrees above the screen's middle: check x of its Orientation, and its Position [misses-screen]"},
    {"a floor lit upwards", "floor", "<Orientation z='0' x='-90' y='0'/><Frustum",
     "<Orientation z='0' x='90' y='0'/><Frustum", "channel Left: nothing of its picture lands"},
    {"a projector below its floor", "floor", "<Position x='1.4' y='0' z='3.4'/>", "<Position x='1.4' y='0' z='-3.4'/>",
     "channel Right: nothing of its picture lands"},
    {"a fisheye that looks ahead", "planetarium", "x='90' y='0'", "x='0' y='0'",
     "screen: about 41 % of it is lit by no channel"},
    {"a fisheye that looks down", "planetarium", "x='90' y='0'", "x='-90' y='0'",
     "channel Sky: 80 % of its picture misses the screen (at most 55 % is usual)"},
    {"a ceiling mount without its roll", "ceiling", "x='0' y='180'", "x='0' y='0'", "channel Left: "},
    {"a rear projector in front of its wall", "rear-projection", "x='-1.5' y='9'", "x='-1.5' y='1'",
     "channel Left: nothing of its picture lands"},
    {"a rear projector beside its wall", "rear-projection", "x='-1.5' y='9'", "x='-3' y='9'",
     "its Position lies on the far side of the screen, seen from the eye, and only 52 % of its picture lands there"},
    {"a projector in its wall", "wall-rays", "<Position x='0' y='1' z='1.7'/>", "<Position x='0' y='4.95' z='1.7'/>",
     "channel Centre: its Position lies 0.05 m from the screen, inside its surface: check its Position, and the Centre "
     "of the screen [inside-surface]"},
    {"a projector behind its wall", "wall-rays", "<Position x='0' y='1' z='1.7'/>", "<Position x='0' y='9' z='1.7'/>",
     "channel Centre: nothing of its picture lands"},
    {"a wall behind its eye", "wall", "<Centre x='0' y='5'", "<Centre x='0' y='-5'",
     "screen: all of it lies behind the eye point, up to y = -5 with the eye at y = 0, and +y is forward: check the "
     "signs "
     "of its y, and the EyePoint [behind-eye]"},
    {"an eye behind its wall", "wall", "<EyePoint x='0' y='0'", "<EyePoint x='0' y='9'", "[behind-eye]"},
    {"a cave wall lit away from", "cave-wall", "<Orientation z='90'", "<Orientation z='-90'",
     "channel Left wall front: nothing of its picture lands"},
    {"the top channel looks down", "seated-dome", "x='50'", "x='-50'", "channel Top: "},
    {"a mesh forward for backward", "mesh-wall", "forward='-Z'", "forward='Z'",
     "and +y is forward: check forward of ImportOrientation, and the EyePoint [behind-eye]"},
    {"a turn left out in one of many", "seated-dome", "z='-55'", "z='0'",
     "channel Centre: Orientation and Frustum are those of channel Left"},
    {"one turn in radians", "seated-dome", "z='-55'", "z='-0.96'",
     "copies, units and signs; projectors on top of each other are allowed by name [nearly-same-picture]"},
    {"a roll for a turn", "seated-dome", "z='-55' x='0' y='0'", "z='0' x='0' y='-55'", "[nearly-same-picture]"},
    {"an eye of a mirror in the room", "collimated", "<EyePoint x='0' y='-0.3' z='-0.5'/>",
     "<EyePoint x='0' y='-0.3' z='1.4'/>",
     "eye point: it lies 1.432 m from the middle of the mirror, beside which it is stated, and 0.5831 m if these are "
     "coordinates of the room: subtract the Position of the Mirror [eye-in-room]"},
    {"the diameter of a mirror", "collimated", "radius='3'", "radius='6'",
     "mirror: its radius is 6 m, 3.75 times that of the screen, where a mirror of twice the screen's radius"},
    {"the diameter of the screen of a mirror", "collimated", "<Radius value='1.6'/>", "<Radius value='3.2'/>",
     "mirror: its radius is 3 m, 0.9375 times that of the screen"},
    {"a mirror turned its back", "collimated", "<Position x='0' y='0' z='1.9'/>",
     "<Orientation z='180' x='0' y='0'/><Position x='0' y='0' z='1.9'/>",
     "channel Left: nothing of its picture lands on the screen: check the Mirror"},
    {"a mirror without its place", "collimated", "<Position x='0' y='0' z='1.9'/>", "",
     "channel Centre: nothing of its picture lands on the screen: check the Mirror"},
    {"signs lost of all channels", "seated-dome", "bottom='-22'", "bottom='22'",
     "channel Left: its Frustum is 8.0798 times as wide as high (tangents), its picture of 1920 x 1200 pixels 1.6 "
     "times: check the four angles of the Frustum and the Resolution [view-stretched]"},
    {"radians for degrees in all turns", "collimated", "40' x='0' y='0'", "0.7' x='0' y='0'",
     "channels: all 3 of them look within 1.4 degrees of each other, with fields of view of 52: their Orientations "
     "were probably meant in radians; check angleUnit [heaped-pictures]"},
    // axes
    {"a mesh forward to the right", "mesh-wall", "forward='-Z'", "forward='X'",
     "screen: it spans 140 degrees around the eye point, with its middle 90 degrees to the left of +y, which is "
     "forward: check forward of ImportOrientation, and the EyePoint [beside-forward]"},
    {"a mesh forward to the left", "mesh-rays", "forward='-Z'", "forward='-X'", "[beside-forward]"},
    {"a mesh without axes", "mesh-wall", "<ImportOrientation up='Y' forward='-Z'/>", "",
     "screen: the mesh lies on its back: "},
    {"a mesh with z up", "mesh-rays", "up='Y' forward='-Z'", "up='Z' forward='Y'", "[lying-mesh]"},
    {"a mesh upside down", "mesh-wall", "up='Y' forward='-Z'", "up='-Y' forward='-Z'",
     "screen: t runs downwards, so that pictures stand on their heads"},
    {"a mesh on its side", "mesh-wall", "up='Y' forward='-Z'", "up='X' forward='-Z'",
     "screen: s runs up or down, so that pictures lie on their sides, at 5 of 5 places (0 is usual): check up of "
     "ImportOrientation, and the Orientation [mirrored-texture]"},
    {"a wall turned its back", "wall", "<Size", "<Orientation z='180' x='0' y='0'/><Size",
     "screen: s runs to the left as the eye point sees the screen, so that pictures are mirrored"},
    {"a wall upside down", "wall", "<Size", "<Orientation z='0' x='0' y='180'/><Size", "screen: t runs downwards"},
    {"a wall seen from its edge", "wall", "<Size", "<Orientation z='90' x='0' y='0'/><Size",
     "screen: the eye point lies in the plane of the screen, 0 degrees beside it"},
    {"an eye in the plane of the wall", "wall", "<EyePoint x='0' y='0'", "<EyePoint x='0' y='5'", "[edge-on]"},
    {"a measured mesh in other axes", "mesh-wall", "measured.obj", "lying.obj", "measured mesh: its middle lies "},
    {"a measured mesh in another unit", "mesh-wall", "measured.obj", "metres.obj", "measured mesh: it is 0.001"},
    {"a measured mesh of another place", "mesh-rays", "measured.obj", "beside.obj",
     "measured mesh: its middle lies 2.5 m away from that of the content screen"},
    {"a mirrored texture", "mesh-wall", "'wall.obj'", "'mirrored.obj'", "screen: s runs to the left"},
    {"a measured texture from the top", "mesh-wall", "measured.obj", "hanging-measured.obj",
     "measured mesh: t runs downwards, so that pictures stand on their heads"},
    {"the measured mesh for the content", "mesh-wall", "'wall.obj'", "'measured.obj'",
     "measured mesh: it is the file of the content mesh: name the mesh that was measured, or leave "
     "MeasuredMesh out [same-file]"},
    {"the content mesh for the measured one", "mesh-rays", "measured.obj", "wall.obj", "[same-file]"},
    {"a texture from the top", "mesh-wall", "'wall.obj'", "'hanging.obj'", "screen: t runs downwards"},
    {"a cloud without a point", "mesh-wall", "scan.pcd", "undefined.pcd",
     "model cloud: none of its 2 points is finite: check the export of the scan [empty-cloud]"},
    {"a cloud in national coordinates", "mesh-rays", "scan.pcd", "surveyed.pcd",
     "lose more than 1 mm in single precision: move its origin to the room [single-precision]"},
    {"rails of another height", "cockpit", "z='2.1'", "z='0.1'",
     "screen: the UpperRail lies below the LowerRail at 4 of 5 points: exchange the two [rails-exchanged]"},
    {"one rail from right to left", "cockpit",
     "<Point x='-1.5' y='0' z='0.5'/><Point x='-1' y='1.3' z='0.5'/><Point x='0' y='1.7' z='0.6'/><Point x='1' y='1.3' "
     "z='0.5'/><Point x='1.5' y='0' z='0.5'/>",
     "<Point x='1.5' y='0' z='0.5'/><Point x='1' y='1.3' z='0.5'/><Point x='0' y='1.7' z='0.6'/><Point x='-1' y='1.3' "
     "z='0.5'/><Point x='-1.5' y='0' z='0.5'/>",
     "screen: the rails run against each other between 2 of 4 pairs of points, first between points 2 and 3: reverse "
     "the order of one of them [twisted-rails]"},
    {"two points of a rail exchanged", "cockpit", "<Point x='-1' y='1.3' z='0.5'/><Point x='0' y='1.7' z='0.6'/>",
     "<Point x='0' y='1.7' z='0.6'/><Point x='-1' y='1.3' z='0.5'/>",
     "first between points 2 and 3: check order and signs of the points of both rails"},
    {"a sign lost in a rail", "cockpit", "<Point x='-1' y='1.3' z='0.5'/>", "<Point x='1' y='1.3' z='0.5'/>",
     "[twisted-rails]"},
    {"a digit too many in a rail", "cockpit", "<Point x='-1' y='1.3' z='0.5'/>", "<Point x='-1' y='13' z='0.5'/>",
     "[twisted-rails]"},
    {"an eye outside of its dome", "planetarium", "x='1' y='-2' z='1.2'", "x='1' y='-20' z='1.2'",
     "screen: the eye point sees 2.6 % of what is lit from the inside"},
    {"an eye outside of its cylinder", "closed-cylinder", "<EyePoint x='0' y='0'", "<EyePoint x='8' y='0'",
     "screen: the eye point sees "},
    {"a digit too many in the eye", "closed-cylinder", "<EyePoint x='0' y='0' z='1.6'/>",
     "<EyePoint x='0' y='0' z='16'/>",
     "eye point: all of the upright screen lies 67.9 degrees and more below its horizon"},
    // left for right, up for down
    {"edges of an area exchanged", "wall", "left='0.31' right='0.69'", "left='0.69' right='0.31'",
     "channel Centre: ScreenArea left 0.69 lies beyond right 0.31, which mirrors the picture: exchange the two "
     "[edges-exchanged]"},
    {"bottom and top of an area exchanged", "rows", "left='0' right='0.55' bottom='0.45' top='1'",
     "left='0' right='0.55' bottom='1' top='0.45'", "channel Upper left: ScreenArea bottom 1 lies beyond top 0.45"},
    {"edges of a layout exchanged", "wall", "xMin='3.78' xMax='6'", "xMin='6' xMax='3.78'",
     "channel Right: its Layout runs from 6 to 3.78 along x and from 0 to 2.5 along y, and maps need xMin below xMax"},
    {"bottom and top of a layout exchanged", "cockpit", "xMax='6' yMin='0' yMax='1.6'", "xMax='6' yMin='1.6' yMax='0'",
     "channel Right window: its Layout runs from 3.84 to 6 along x and from 1.6 to 0 along y"},
    {"no layout", "wall", "<Layout xMin='3.78' xMax='6' yMin='0' yMax='2.5'/>", "",
     "channel Right: it has no Layout, which maps of this display need: give it one with xMin, xMax, yMin and yMax "
     "[no-layout]"},
    {"edges of a frustum exchanged", "off-axis-wall", "left='-30.5' right='-8'", "left='-8' right='-30.5'",
     "channel Left: Frustum left -8 deg lies beyond right -30.5 deg"},
    {"bottom and top of a frustum exchanged", "seated-dome", "bottom='-25' top='30'", "bottom='30' top='-25'",
     "channel Top: Frustum bottom 30 deg lies beyond top -25 deg"},
    {"left named right", "rows", "<Name>Upper left</Name>", "<Name>Upper right side</Name>",
     "channel Upper right side: its picture lies "},
    {"lower named upper", "rows", "<Name>Lower left</Name>", "<Name>Upper left, inner</Name>",
     "channel Upper left, inner: its picture lies "},
    {"left where right is", "seated-dome", "z='-55'", "z='45'", "channel Left: its picture lies "},
    {"left where right is, in a mirror", "collimated", "z='-40'", "z='35'", "channel Left: its picture lies "},
    // the picture
    {"half a frustum", "wall-rays", "left='-16' right='16'", "left='0' right='16'",
     "channel Left: its Frustum is 0.79"},
    {"whole angles for half ones", "wall-rays", "left='-16' right='16'", "left='-32' right='32'",
     "[picture-stretched]"},
    {"a sign lost", "mesh-rays", "left='-20' right='20'", "left='12' right='20'", "[picture-stretched]"},
    {"all signs lost", "mesh-rays", "left='-20' right='20'", "left='20' right='20'",
     "frustum: it has no width or no height: give the channel a Frustum"},
    {"a frustum on its side", "wall-rays", "left='-16' right='16' bottom='-10.2' top='10.2'",
     "left='-10.2' right='10.2' bottom='-16' top='16'",
     "exchange width and height of one of them; a projector on its side has y=\"90\" in its Orientation"},
    {"a resolution on its side", "portrait", "width='1920' height='1200'", "width='1200' height='1920'",
     "[picture-stretched]"},
    {"no resolution", "wall-rays", "<Resolution width='1920' height='1200'/>", "",
     "channel Left: its picture has no size in pixels, which coverage, whole maps and some targets need"},
    {"a map of another resolution", "warped-wall", "left.map", "other.map",
     "channel Left: map other.map was made for 1920 x 1080 pixels, and its picture has 1920 x 1200"},
    {"a resolution that the map does not have", "warped-wall", "width='1920' height='1200'",
     "width='1280' height='800'", "[other-resolution]"},
    {"a map that is mirrored", "warped-wall", "left.map", "mirrored.map",
     "channel Left: map mirrored.map mirrors the picture: s grows to the left, or t downwards; check the columns s and "
     "t of the file; projectors behind the screen are allowed by name [mirrored-map]"},
    {"a lens of another resolution", "planetarium", "width='2400' height='2400'", "width='1920' height='1200'",
     "channel Sky: its lens was calibrated for 2400 x 2400 pixels, and its picture has 1920 x 1200: take the file of "
     "this projector, or correct the Resolution [other-resolution]"},
    {"twice the resolution of its lens", "planetarium", "width='2400' height='2400'", "width='4800' height='4800'",
     "[other-resolution]"},
    {"feet for metres", "wall-rays", "<Size width='6' height='2.5'/>", "<Size width='19.7' height='8.2'/>",
     "screen: about 95 % of it is lit by no channel (at most 90 % is usual): check the size of the screen, and the "
     "fields of view [mostly-dark]"},
    {"a field of view of one degree", "mesh-rays", "left='-20' right='20' bottom='-12.8' top='12.8'",
     "left='-0.5' right='0.5' bottom='-0.32' top='0.32'", "channel Left: the width of its Frustum is 1 degrees"},
    {"an overlap that is too narrow", "wall", "right='0.37'", "right='0.32'",
     "channel Centre: it shares 2.5 % of its picture with channel Left, which leaves little to blend (4 % and more is "
     "usual) [narrow-overlap]"},
    {"a map without nodes", "warped-wall", "right.map", "unused.map", "channel Right: map unused.map has no used node"},
    {"a map in pixels", "warped-wall", "right.map", "pixels.map",
     "channel Right: nothing of its picture lands on the screen: check its map"},
    // an entry copied
    {"an area copied", "rows", "left='0' right='0.55' bottom='0' top='0.55'",
     "left='0' right='0.55' bottom='0.45' top='1'",
     "channel Lower left: ScreenArea are those of channel Upper left to the last digit"},
    {"a layout copied", "wall", "xMin='3.78' xMax='6'", "xMin='0' xMax='2.22'",
     "channel Right: its Layout runs from 0 to 2.22 along x"},
    {"a channel copied", "wall-rays", "<Position x='1.8'", "<Position x='0'",
     "channel Right: Position, Orientation and Frustum are those of channel Centre to the last digit"},
    {"a position copied", "mesh-rays", "<Position x='0.6'", "<Position x='-0.6'",
     "channel Right: its Position is that of channel Left to the last digit"},
    {"an orientation copied", "seated-dome", "z='55'", "z='-55'",
     "channel Right: Orientation and Frustum are those of channel Left to the last digit"},
    {"a map copied under another name", "warped-wall", "right.map", "copy.map",
     "channel Right: its picture has the middle and the size of that of channel Left"},
    {"a position left out", "wall-rays", "<Position x='-1.8' y='1' z='1.7'/>", "",
     "channel Centre: its picture has the middle and the size of that of channel Left"},
    {"an orientation copied in a cylinder", "closed-cylinder", "z='0.000000'", "z='45.000000'",
     "channel Bay 6: its picture has the middle and the size of that of channel Bay 5"},
    {"an area copied and hardly changed", "rows", "left='0' right='0.55' bottom='0' top='0.55'",
     "left='0' right='0.54' bottom='0.45' top='1'", "channel Lower left: its picture has the middle"},
    {"a map of another projector", "warped-wall", "right.map", "left.map",
     "channel Right: CustomPlanarMap are those of channel Left"},
    {"a name copied", "wall", "<Name>Right</Name>", "<Name>Left</Name>",
     "channel Left: 2 channels have this name, which should be of one alone, so the library calls this one Left_01"},
    {"a MAC address copied", "wall", "02:00:00:00:00:03", "02:00:00:00:00:01",
     "channel Right: its device has the MAC address 02:00:00:00:00:01 of channel Left"},
    {"a MAC address copied, spelled otherwise", "wall", "02:00:00:00:00:03", "02-00-00-00-00-01", "[same-device]"},
    {"a port that is none", "wall", "port='4352'", "port='435200'",
     "attribute port: found \"435200\", expected a whole number from 1 to 65535; correct the Device element of the "
     "entry [broken-device]"},
    {"half a MAC address", "wall", "mac='02:00:00:00:00:02'", "mac='02:00:00'",
     "channel Centre: its device cannot be contacted by this program: Device snippet without a MAC address"},
    {"a name for an address", "wall", "host='192.0.2.2'", "host='projector'",
     "attribute host: found \"projector\", expected an IPv4 or IPv6 address"},
    {"a type misspelt", "wall", "type='PJLink' mac='02:00:00:00:00:02'", "type='PjLink' mac='02:00:00:00:00:02'",
     "attribute type: found \"PjLink\", expected PJLink; correct the Device element of the entry [other-device]"},
    {"an address copied", "wall", "192.0.2.3", "192.0.2.1",
     "channel Right: its device has the address 192.0.2.1:4352 of channel Left"},
    // the kind
    {"projectors where the eye is meant", "seated-dome", "Spherical", "ProjectorCentric", "[same-place]"},
    {"a position that has no effect", "seated-dome", "<Name>Left</Name>",
     "<Name>Left</Name><Position x='2' y='-1' z='3'/>",
     "channel Left: its Position lies 2.526 m away from the eye point"},
    {"an area that has no effect", "seated-dome", "<Name>Left</Name>",
     "<Name>Left</Name><ScreenArea left='0' right='1' bottom='0' top='1'/>",
     "channel Left: displays of the kind Spherical do not use what it states: ScreenArea [without-effect]"},
    {"the place of a projector beside a mirror", "collimated", "<Name>Left</Name>",
     "<Name>Left</Name><Position x='2' y='-2' z='3'/>",
     "channel Left: displays of the kind SphericalCollimated do not use what it states: Position [without-effect]"},
    {"a lens that has no effect", "seated-dome", "<Name>Top</Name>",
     "<Name>Top</Name><ProjectionModel name='Rectilinear'/>", "do not use what it states: ProjectionModel"},
    {"a mirror that has no effect", "seated-dome", "<TargetData type='Spherical'/>",
     "<TargetData type='Spherical'><Mirror radius='3'/></TargetData>",
     "target data: displays of the kind Spherical do not use what it states: Mirror"},
    {"a target position of another seat", "seated-dome", "<TargetData type='Spherical'/>",
     "<TargetData type='Spherical'><TargetPosition x='0' y='0' z='1.2'/></TargetData>",
     "target position: it lies 0.5831 m away from the EyePoint of the screen: targets are placed from the one and maps "
     "are made from the other; leave TargetPosition out, or correct one of them [target-not-eye]"},
    {"places that have no effect", "warped-wall", "<Name>Left</Name>",
     "<Name>Left</Name><Orientation z='10' x='0' y='0'/><Frustum left='-10' right='10' bottom='-5' top='5'/><Position "
     "x='3' y='4' z='5'/>",
     "channel Left: displays of the kind CustomPlanar do not use what it states: Orientation, Frustum, Position"},
    {"heading tables of a mirror", "collimated", "</TargetData>",
     "<YawTable><Pair measured='-90' corrected='-89.5'/><Pair measured='90' corrected='89.5'/></YawTable></TargetData>",
     "target data: its heading tables bend targets and outlines; layout maps do not follow them [tables-not-in-maps]"},
    {"a unit that the program alone follows", "cockpit", "<EyePoint x='0' y='0' z='1.35'/>",
     "<EyePoint x='0' y='0' z='1.35'/><ModelCloud file='scan.pcd'/>",
     "screen: unit and axes of its files hold in this program"},
    {"a rule misspelt", "wall", "<Projector id='P01'>", "<Projector id='P01' allow='mises-screen'>",
     "channel Left: it allows \"mises-screen\", which no rule is called: expected some of edges-exchanged"},
};

TEST(SoundDisplays, AreManyAndOfDifferentNames) {
    std::set<std::string> names;
    for (const sound::Display& display : sound::all()) {
        names.insert(display.name);
    }
    EXPECT_GE(names.size(), 15U);
    EXPECT_EQ(names.size(), sound::all().size());
}

TEST(SoundDisplays, HaveNeitherFaultsNorWarnings) {
    for (const sound::Display& display : sound::all()) {
        DisplayFolder folder;
        const DisplayDescription description = folder.checked(display);
        EXPECT_EQ(description.count(Severity::FAULT) + description.count(Severity::WARNING), 0U)
            << display.name << ": " << testing::PrintToString(reported(description));
    }
}

/// Those of this file and those about pictures.
std::vector<Slip> allSlips() {
    std::vector<Slip> all(std::begin(SLIPS), std::end(SLIPS));
    const auto more = sound::slipsOfPictures();
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

DisplayDescription slipped(const Slip& slip) {
    sound::Display display = sound::named(slip.display);
    if (slip.file == nullptr) {
        display.text = changed(display.text, slip.from, slip.to);
    }
    for (auto& [name, content] : display.files) {
        if (slip.file != nullptr && name == slip.file) {
            content = changed(content, slip.from, slip.to);
        }
    }
    DisplayFolder folder;
    return folder.checked(display);
}

TEST(Slips, AreManyAndChangeWhatIsThere) {
    EXPECT_GE(allSlips().size(), 60U);
    for (const Slip& slip : allSlips()) {
        EXPECT_NE(std::string(slip.from), slip.to) << slip;
    }
}

TEST(Slips, AreReportedAndNeedEveryRule) {
    std::set<std::string> found{"odd-one-out"};  // its slips are those of GroupRulesTest
    for (const Slip& slip : allSlips()) {
        const DisplayDescription description = slipped(slip);
        EXPECT_THAT(reported(description), Contains(HasSubstr(slip.expected))) << slip;
        found.merge(rulesOf(description));
    }
    for (const Rule& rule : Rule::all()) {
        EXPECT_EQ(found.count(std::string(rule.name)), 1U) << "no slip needs " << rule.name;
    }
}

}  // namespace
