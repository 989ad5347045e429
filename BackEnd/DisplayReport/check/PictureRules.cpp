#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoControl/ProjectionModel.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

namespace Veltrani::DisplayReport {

namespace {

/// Width to height of the frustum, as tangents.
double frustumRatio(const ProjectorConfig& p) {
    return std::abs((std::tan(p.getFrustumRight()) - std::tan(p.getFrustumLeft())) /
                    (std::tan(p.getFrustumTop()) - std::tan(p.getFrustumBottom())));
}

/// Width to height of the picture of a lens: that of the part around its axis, where every lens shows shapes as they
/// are, scaled up to the whole. Nothing where the lens has no light there.
std::optional<double> lensRatio(const ProjectionModel& lens, const ChannelFacts& channel) {
    constexpr double STEP = 0.01;
    const std::optional<Point<double, 2>> axis = channel.axisInPicture();
    if (!axis) {
        return std::nullopt;
    }
    const auto apart = [&](const Point<double, 2>& step) {
        Point<double, 3> before;
        Point<double, 3> behind;
        const bool isLit = lens.unproject(*axis - step, before) && lens.unproject(*axis + step, behind);
        return isLit ? std::atan2(norm(cross(before, behind)), dot(before, behind)) : 0.0;
    };
    const double wide = apart({STEP, 0.0});
    const double high = apart({0.0, STEP});
    return wide > 0 && high > 0 ? std::optional(wide / high) : std::nullopt;
}

/// An area of the screen, its bounds in order and cut off at the edges of the screen.
struct Area {
    explicit Area(const ProjectorConfig& p)
        : left(cut(std::min(p.getScreenLeft(), p.getScreenRight()))),
          right(cut(std::max(p.getScreenLeft(), p.getScreenRight()))),
          bottom(cut(std::min(p.getScreenBottom(), p.getScreenTop()))),
          top(cut(std::max(p.getScreenBottom(), p.getScreenTop()))) {}

    static double cut(double bound) { return std::clamp(bound, 0.0, 1.0); }

    double left;
    double right;
    double bottom;
    double top;
};

/// The way over the surface between two places, native units; what it has no points for is left out.
double wayOver(const ScreenGeometry& surface, const Point<double, 2>& from, const Point<double, 2>& to) {
    constexpr int STEPS = 16;
    double way = 0;
    Point<double, 3> before;
    bool hasBefore = surface.mapInto3D(from, before, false);
    for (int step = 1; step <= STEPS; ++step) {
        Point<double, 3> here;
        const bool hasHere = surface.mapInto3D(from + (to - from) * (static_cast<double>(step) / STEPS), here, false);
        way += hasBefore && hasHere ? norm(here - before) : 0.0;
        before = here;
        hasBefore = hasHere;
    }
    return way;
}

/// Width to height of a part of the screen. Nothing where that is no rectangle at all, as around the pole of a dome.
std::optional<double> areaRatio(const ScreenGeometry& surface, const ProjectorConfig& p) {
    constexpr double MOST_TAPER = 3.0;
    const Area area(p);
    const double across = 0.5 * (area.left + area.right);
    const double up = 0.5 * (area.bottom + area.top);
    const double wide = wayOver(surface, {area.left, up}, {area.right, up});
    const double high = wayOver(surface, {across, area.bottom}, {across, area.top});
    const double above = wayOver(surface, {area.left, area.top}, {area.right, area.top});
    const double below = wayOver(surface, {area.left, area.bottom}, {area.right, area.bottom});
    const bool isTapered = std::max(above, below) > MOST_TAPER * std::min(above, below);
    return wide > 0 && high > 0 && !isTapered ? std::optional(wide / high) : std::nullopt;
}

/// Width to height of the picture of a channel as its kind makes it; nothing where that is not known. A map is made for
/// the pixels of its picture.
std::optional<double> shapeOf(const DisplayFacts& display, const ChannelFacts& channel) {
    if (channel.view() != nullptr) {
        return channel.lens() != nullptr ? lensRatio(*channel.lens(), channel) : frustumRatio(channel.projector());
    }
    const bool hasArea = channel.locator() && display.kind->source == DisplayKind::Source::SCREEN_AREA;
    return hasArea && display.surface && display.surface->isParameterised()
               ? areaRatio(*display.surface, channel.projector())
               : std::nullopt;
}

bool hasPixels(const ProjectorConfig& p) {
    return p.getWidth() > 0 && p.getHeight() > 0;
}

double ratioOfPixels(const ProjectorConfig& p) {
    return static_cast<double>(p.getWidth()) / p.getHeight();
}

std::string pixelsText(const ProjectorConfig& p) {
    return std::to_string(p.getWidth()) + " x " + std::to_string(p.getHeight());
}

void judgeResolution(const ChannelCase& c) {
    const ProjectorConfig& p = c.projector;
    const Rule& size = Rule::named("odd-resolution");
    const int shorter = std::min(p.getWidth(), p.getHeight());
    const int longer = std::max(p.getWidth(), p.getHeight());
    const std::string found = "its Resolution is " + pixelsText(p) + " pixels, where ";
    const std::string remedy = ": look for a digit too many or too few";
    if (!hasPixels(p)) {
        c.report("no-resolution",
                 "its picture has no size in pixels, which coverage, whole maps and some targets need: give it a "
                 "Resolution");
    } else if (shorter >= size.least && longer > Rule::named("odd-aspect").most * shorter) {
        c.report("odd-aspect", found + "one side is at most 8 times as long as the other" + remedy);
    } else if (shorter < size.least || longer > size.most) {
        c.report(size.name,
                 found + "pictures have 200 and more on the shorter side and 16384 at most on the longer" + remedy);
    }
}

/// What a shape is measured in, as it is reported.
std::string shapeText(const ChannelFacts& channel, double shape) {
    const std::string times = " is " + significantText(shape) + " times as wide as high";
    if (channel.view() == nullptr) {
        return "its ScreenArea" + times + " on the screen";
    }
    return channel.lens() != nullptr ? "the picture of its lens" + times : "its Frustum" + times + " (tangents)";
}

std::string stretchRemedy(const ChannelFacts& channel, double shape) {
    const double pixels = ratioOfPixels(channel.projector());
    if (channel.view() == nullptr) {
        return "exchange width and height of the Resolution, or check the ScreenArea, and Size, Radius and angles of "
               "the screen";
    }
    if (channel.lens() != nullptr && channel.lens()->calibratedSize()[0] > 0) {
        return "check fx, fy and the size of the picture in its file, and the Resolution";
    }
    return (shape < 1.0) != (pixels < 1.0)
               ? "exchange width and height of one of them; a projector on its side has y=\"90\" in its Orientation"
               : "check the four angles of the Frustum and the Resolution";
}

void judgeStretch(const ChannelCase& c) {
    using Addressing = DisplayKind::Addressing;
    const std::optional<double> shape = shapeOf(c.display, c.channel);
    if (!shape || !hasPixels(c.projector)) {
        return;
    }
    const Addressing by = c.display.kind->addressedBy;
    const Rule& rule = Rule::named(by == Addressing::SCREEN_PARAMETERS ? "area-stretched"
                                   : by == Addressing::EYE             ? "view-stretched"
                                                                       : "picture-stretched");
    const double pixels = ratioOfPixels(c.projector);
    if (*shape < rule.least * pixels || *shape > rule.most * pixels) {
        c.report(rule.name, shapeText(c.channel, *shape) + ", its picture of " + pixelsText(c.projector) + " pixels " +
                                significantText(pixels) + " times: " + stretchRemedy(c.channel, *shape));
    }
}

bool isSameSize(const ProjectorConfig& a, const ProjectorConfig& b) {
    return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight();
}

/// One channel among others that all have one resolution; null where no channel is alone in this.
const ChannelFacts* loneChannel(const std::vector<ChannelFacts>& channels) {
    if (channels.size() < 3) {
        return nullptr;
    }
    const auto isAlone = [&](const ChannelFacts& one) {
        const ChannelFacts& other = &one == &channels.front() ? channels.back() : channels.front();
        return std::all_of(channels.begin(), channels.end(), [&](const ChannelFacts& channel) {
            return (&channel == &one) != isSameSize(channel.projector(), other.projector());
        });
    };
    const auto found = std::find_if(channels.begin(), channels.end(), isAlone);
    return found == channels.end() ? nullptr : &*found;
}

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// A projector on its side among others has a picture on its side; a resolution alone that is turned is a slip.
void judgeTurned(const DisplayFacts& display, const ChannelFacts& lone, const ProjectorConfig& others,
                 FindingList& found) {
    const ProjectorConfig& p = lone.projector();
    const std::optional<double> shape = shapeOf(display, lone);
    std::vector<double> shapes;
    for (const ChannelFacts& channel : display.channels) {
        const std::optional<double> theirs = &channel == &lone ? std::nullopt : shapeOf(display, channel);
        if (theirs) {
            shapes.push_back(*theirs);
        }
    }
    if (!shape || shapes.empty() || p.getWidth() != others.getHeight() || p.getHeight() != others.getWidth()) {
        return;
    }
    const double upright = medianOf(shapes);
    const double turned = upright / ratioOfPixels(others) * ratioOfPixels(p);
    if (std::abs(std::log(*shape / upright)) < std::abs(std::log(*shape / turned))) {
        found.add(Rule::named("resolution-turned"), lone.where(), lone.allowed(),
                  "its picture has " + pixelsText(p) + " pixels, those of all others " + pixelsText(others) + ", and " +
                      shapeText(lone, *shape) + ", as theirs are, " + significantText(upright) + " times (" +
                      significantText(turned) +
                      " times would be a picture on its side): exchange width and height of its Resolution");
    }
}

/// A picture of far fewer pixels among equal ones. One of more pixels may be an inset.
void judgeFewPixels(const ChannelFacts& lone, const ProjectorConfig& others, FindingList& found) {
    const Rule& rule = Rule::named("few-pixels");
    const auto countOf = [](const ProjectorConfig& p) { return static_cast<double>(p.getWidth()) * p.getHeight(); };
    if (countOf(lone.projector()) < rule.least * countOf(others)) {
        found.add(rule, lone.where(), lone.allowed(),
                  "its picture has " + pixelsText(lone.projector()) + " pixels, and those of all others " +
                      pixelsText(others) + ", where a fifth as many and more are usual: check its Resolution");
    }
}

}  // namespace

void judgePictures(const DisplayFacts& display, FindingList& found) {
    for (const ChannelFacts& channel : display.channels) {
        const ChannelCase c{display, channel, channel.projector(), found};
        judgeResolution(c);
        if (display.kind != nullptr) {
            judgeStretch(c);
        }
    }
    const ChannelFacts* const lone = loneChannel(display.channels);
    if (lone == nullptr) {
        return;
    }
    const ChannelFacts& other = lone == &display.channels.front() ? display.channels.back() : display.channels.front();
    if (hasPixels(lone->projector()) && hasPixels(other.projector())) {
        judgeFewPixels(*lone, other.projector(), found);
        if (display.kind != nullptr) {
            judgeTurned(display, *lone, other.projector(), found);
        }
    }
}

}  // namespace Veltrani::DisplayReport
