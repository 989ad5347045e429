#include "DisplayReport/check/Rule.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace Veltrani::DisplayReport {

namespace {

constexpr Severity FAULT = Severity::FAULT;
constexpr Severity WARNING = Severity::WARNING;
constexpr Severity REMARK = Severity::REMARK;
constexpr double NONE = std::numeric_limits<double>::infinity();

constexpr auto ALL = Rule::Light::NEEDED;
constexpr auto UNLESS_FROM_EYE = Rule::Light::NEEDED_UNLESS_FROM_EYE;

constexpr std::array RULES{
    Rule{"no-resolution", FAULT, -NONE, NONE,
         "coverage, whole maps and some targets count the pixels of every picture"},
    Rule{"same-device", FAULT, -NONE, NONE, "one projector cannot be two channels"},
    Rule{"empty-map", FAULT, -NONE, NONE, "a map without a used node places nothing"},
    Rule{"empty-cloud", FAULT, -NONE, NONE, "a cloud without a finite point has no place"},
    Rule{"no-layout", FAULT, -NONE, NONE, "maps of a planar display refuse a channel without a rectangle"},
    Rule{"broken-device", FAULT, -NONE, NONE, "commands that contact projectors refuse such an entry"},
    Rule{"unknown-rule", FAULT, -NONE, NONE, "a misspelt name would silence nothing"},

    Rule{"edges-exchanged", WARNING, -NONE, NONE,
         "right lies right of left, top above bottom; mirrored pictures exist"},
    Rule{"area-off-screen", WARNING, -1.0, 2.0,
         "bounds of an area: one whole screen beyond its edges, where 0.2 occurs"},
    Rule{"narrow-view", WARNING, 3.0, 160.0, "field of view in degrees: projectors have 8 to 140"},
    Rule{"decimal-point", WARNING, -NONE, NONE,
         "bounds of a frustum to both sides of forward, one exactly 10 or 100 times the other: none occurs"},
    Rule{"fisheye-view", WARNING, 100.0, 250.0,
         "field of view in degrees, at least along the longer side, at most along the shorter: 120 to 220 occur"},
    Rule{"lens-against-frustum", WARNING, 0.7, 1.4,
         "field of view of a calibrated lens in fields of the Frustum beside it: 0.98 to 1.04 occur"},
    Rule{"lens-among-others", WARNING, 0.6, 1.7,
         "width of the picture of a calibrated lens, in those of all others, which see much the same: 0.97 occurs",
         ALL},
    Rule{"lens-off-centre", WARNING, 0.0, 0.4,
         "principal point of a calibrated lens beside the middle, in pictures; upwards and downwards three times that"},
    Rule{
        "picture-stretched", WARNING, 0.8, 1.45,
        "width to height of the picture of a frustum or a lens against that of the pixels: 17 % occurs, and anamorphic "
        "lenses widen by 33 to 41 %"},
    Rule{"view-stretched", WARNING, 0.55, 1.8,
         "the same where the frustum is a part of the view from the eye, which a warp fits into the picture"},
    Rule{"area-stretched", WARNING, 0.45, 2.2,
         "width to height of the area on the screen, which a warp fits into the picture, against that of the pixels: "
         "0.55 to 1.5 occur"},
    Rule{"odd-resolution", WARNING, 200.0, 16384.0,
         "pixels on the shorter and on the longer side: no picture in use has fewer or more"},
    Rule{"odd-aspect", WARNING, 1.0, 8.0,
         "how often the shorter side fits into the longer one: banners of outputs have 7"},
    Rule{"resolution-turned", WARNING, -NONE, NONE,
         "one channel has width and height of all others exchanged, and its picture lies as theirs do"},
    Rule{"few-pixels", WARNING, 0.2, NONE, "pixels of one channel in those of all others, which are equal"},
    Rule{"other-resolution", WARNING, -NONE, NONE,
         "a map and a calibrated lens hold for the picture that they were made for"},
    Rule{"mirrored-map", WARNING, -NONE, NONE, "s grows to the right and t upwards in a map file; from behind not"},
    Rule{"other-device", WARNING, -NONE, NONE,
         "a device that this program cannot contact, or an address that no projector has"},
    Rule{"large-angle", WARNING, -360.0, 360.0, "degrees: an orientation needs no more than a turn"},
    Rule{"looks-away", WARNING, -NONE, NONE, "no line of sight of the picture meets the screen", ALL},
    Rule{"misses-screen", WARNING, 0.65, 1.0, "part of the picture on the screen: sound displays have 0.76 and more",
         ALL},
    Rule{"wide-misses-screen", WARNING, 0.45, 1.0,
         "the same for a lens that sees more than 120 degrees: the circle of a fisheye takes half of a wide picture",
         ALL},
    Rule{"inside-surface", WARNING, 0.1, 0.9,
         "throw in metres; and the part of the picture that must land of a projector behind its screen", ALL},
    Rule{"far-from-screen", WARNING, 0.0, 20.0,
         "distance in sizes of the screen: the longest throws in use are ten pictures"},
    Rule{"position-not-eye", WARNING, 0.0, 0.01,
         "in sizes of the screen: a channel seen from the eye has no position of its own"},
    Rule{"same-place", WARNING, -NONE, NONE, "two projectors cannot stand in one place to the last digit"},
    Rule{"same-name", WARNING, -NONE, NONE, "the library calls the second channel Name_01"},
    Rule{"same-picture", WARNING, -NONE, NONE, "two channels state one picture to the last digit"},
    Rule{"nearly-same-picture", WARNING, 0.1, NONE,
         "middles of two pictures, in diagonals of the smaller one: neighbours are half a picture apart", ALL},
    Rule{"name-against-place", WARNING, 0.0, 5.0, "degrees seen from the eye: names with left are to the left",
         UNLESS_FROM_EYE},
    Rule{"layout-apart", WARNING, 0.0, 0.1,
         "in sizes of the layout: one channel's rectangle does not lie where its area does, as all others do"},
    Rule{"odd-one-out", WARNING, -NONE, NONE,
         "one of three and more on its head; one of a row beside its place by a tenth of the step, others by 2 %"},
    Rule{"heaped-pictures", WARNING, 0.0, 0.1,
         "three and more directions within a tenth of a field of view light one spot: degrees for radians"},

    Rule{"screen-size", WARNING, 0.3, 150.0,
         "largest extent in metres; from 0.1 for models and up to 500 for facades, where the other lengths fit"},
    Rule{"mirror-size", WARNING, 0.1, 20.0, "radius in sizes of the screen that it shows: 0.9 in collimated displays"},
    Rule{"mirror-focus", WARNING, 1.25, 3.0,
         "radius of the mirror in radii of a spherical screen: twice shows the picture far away, 1.9 occurs"},
    Rule{"eye-in-room", WARNING, 0.6, NONE,
         "distance from the mirror's middle, if the eye were stated in the room, against that beside the mirror"},
    Rule{"target-not-eye", WARNING, 0.0, 0.01, "in sizes of the screen: targets and maps have one eye"},
    Rule{"narrow-shape", WARNING, 10.0, NONE, "degrees of a round screen: radians for degrees give 6.3 at most"},
    Rule{"eye-outside", WARNING, 0.5, 1.0, "part of what is lit that the eye sees from the inside of a round screen",
         ALL},
    Rule{"behind-eye", WARNING, -NONE, NONE, "+y is forward: nothing of the screen is"},
    Rule{"beside-forward", WARNING, 0.0, 60.0,
         "degrees: a mesh or round screen that spans more than 120 of them around the eye has its middle ahead"},
    Rule{"eye-off-height", WARNING, -45.0, 60.0,
         "degrees above the horizon: a wall may lie below one who looks at it or above, but not straight so"},
    Rule{"edge-on", WARNING, 0.05, NONE, "sine of the angle under which the eye sees a flat screen"},
    Rule{"lying-mesh", WARNING, 0.0, 0.5, "part of the surface's normals that is vertical while none points forward"},
    Rule{"measured-apart", WARNING, 0.15, 1.5,
         "shift in sizes of the screen, and ratio of the sizes: a part that is not scanned shifts the middle"},
    Rule{"mirrored-texture", WARNING, -NONE, NONE, "s grows to the right and t upwards as the eye sees the screen"},
    Rule{"rails-exchanged", WARNING, -NONE, NONE, "the upper rail lies above the lower one"},
    Rule{"uneven-rails", WARNING, 0.0, 4.0,
         "steps of one rail in those of the other, which run side by side: 1.4 occurs"},
    Rule{"twisted-rails", WARNING, -NONE, NONE, "rails run side by side: where one turns back, the surface folds"},
    Rule{"same-file", WARNING, -NONE, NONE, "what was measured is not what was designed"},
    Rule{"mostly-dark", WARNING, 0.0, 0.9, "part of the screen that no channel lights, coarsely: 0.81 occurs", ALL},

    Rule{"mirrored-areas", REMARK, -NONE, NONE,
         "all channels mirror their pictures, as a screen lit from behind needs"},
    Rule{"without-effect", REMARK, -NONE, NONE, "values that the kind of target data does not use"},
    Rule{"dark-parts", REMARK, 0.0, 0.02, "part of the screen that no channel lights, coarsely", ALL},
    Rule{"narrow-overlap", REMARK, 0.04, NONE, "part of the picture: blending needs some pixels", ALL},
    Rule{"program-only", REMARK, -NONE, NONE, "unit and axes of files that the library does not follow by itself"},
    Rule{"tables-not-in-maps", REMARK, -NONE, NONE, "heading tables bend targets, not layout maps"},
    Rule{"single-precision", REMARK, -NONE, 8192.0, "metres: beyond, the numbers of a cloud step by a millimetre"},
};

}  // namespace

std::span<const Rule> Rule::all() {
    return RULES;
}

const Rule& Rule::named(std::string_view name) {
    const auto* const found =
        std::find_if(RULES.begin(), RULES.end(), [&](const Rule& rule) { return rule.name == name; });
    if (found == RULES.end()) {
        throw std::logic_error("no rule is called " + std::string(name));
    }
    return *found;
}

bool Rule::canBeAllowed(std::string_view name) {
    return std::any_of(RULES.begin(), RULES.end(),
                       [&](const Rule& rule) { return rule.name == name && rule.canBeAllowed(); });
}

std::string Rule::namesToAllow() {
    std::string names;
    for (const Rule& rule : RULES) {
        if (rule.canBeAllowed()) {
            names += (names.empty() ? "" : ", ") + std::string(rule.name);
        }
    }
    return names;
}

}  // namespace Veltrani::DisplayReport
