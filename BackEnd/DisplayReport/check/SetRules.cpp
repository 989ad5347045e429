#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

using Channels = std::vector<ChannelFacts>;

/// Reports a channel beside an earlier one; what either of them allows is left out.
void reportPair(const ChannelFacts& first, const ChannelFacts& second, FindingList& found, std::string_view rule,
                const std::string& what) {
    found.add(Rule::named(rule), second.where(), first.allowed() + " " + second.allowed(), what);
}

/// Calls `judge` with every pair of channels in the order of the file.
template <class Judge>
void forPairs(const Channels& channels, const Judge& judge) {
    for (std::size_t second = 1; second < channels.size(); ++second) {
        for (std::size_t first = 0; first < second; ++first) {
            judge(channels[first], channels[second]);
        }
    }
}

/// Channels that share a name, each once.
void judgeNames(const Channels& channels, FindingList& found) {
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const auto isNamesake = [&](const ChannelFacts& other) { return other.name() == channels[i].name(); };
        const auto all = std::count_if(channels.begin(), channels.end(), isNamesake);
        const auto here = channels.begin() + static_cast<std::ptrdiff_t>(i);
        const auto earlier = std::count_if(channels.begin(), here, isNamesake);
        if (earlier > 0) {
            const ChannelFacts& first = *std::find_if(channels.begin(), here, isNamesake);
            reportPair(first, channels[i], found, "same-name",
                       std::to_string(all) +
                           " channels have this name, which should be of one alone, so the library "
                           "calls this one " +
                           channels[i].name() + (earlier < 10 ? "_0" : "_") + std::to_string(earlier) +
                           ": give each a name of its own");
        }
    }
}

/// Everything that the kind makes a picture from, to be compared to the last digit.
std::vector<double> sourceNumbers(const DisplayKind& kind, const ChannelFacts& channel) {
    const ProjectorConfig& p = channel.projector();
    if (kind.source == DisplayKind::Source::SCREEN_AREA) {
        return {p.getScreenLeft(), p.getScreenRight(), p.getScreenBottom(), p.getScreenTop()};
    }
    if (kind.source == DisplayKind::Source::MAP_FILE) {
        return {};
    }
    const Point<double, 3> from = channel.view()->from;
    return {from[0],
            from[1],
            from[2],
            p.getOrientationZ(),
            p.getOrientationX(),
            p.getOrientationY(),
            p.getFrustumLeft(),
            p.getFrustumRight(),
            p.getFrustumBottom(),
            p.getFrustumTop()};
}

const char* sourceText(const DisplayKind& kind) {
    switch (kind.source) {
        case DisplayKind::Source::SCREEN_AREA:
            return "ScreenArea";
        case DisplayKind::Source::MAP_FILE:
            return "CustomPlanarMap";
        case DisplayKind::Source::FRUSTUM:
        case DisplayKind::Source::FRUSTUM_AND_MIRROR:
            return "Orientation and Frustum";
        case DisplayKind::Source::MODEL_OR_FRUSTUM:
            return "Position, Orientation and Frustum";
    }
    return "";
}

/// How two pictures lie on the screen.
struct Likeness {
    double apart = 0;         ///< their middles, native units
    double usual = 0;         ///< the least distance of neighbours, native units
    double timesAsLarge = 0;  ///< the second, of the first

    /// An inset is smaller, and a neighbour lies beside.
    [[nodiscard]] bool isNearlySame() const {
        constexpr double LARGER = 1.35;
        return apart < usual && timesAsLarge < LARGER && timesAsLarge > 1.0 / LARGER;
    }
};

/// Only of pictures that land.
Likeness likenessOf(const ChannelFacts& first, const ChannelFacts& second) {
    const Rule& rule = Rule::named("nearly-same-picture");
    constexpr double DIAGONALS_OF_SPREAD = 3.4641;  // of an evenly lit rectangle: the root of 12
    const double one = first.spreadOfLight();
    const double other = second.spreadOfLight();
    return {norm(first.middleOfLight() - second.middleOfLight()),
            rule.least * DIAGONALS_OF_SPREAD * std::min(one, other), one > 0 ? other / one : 0.0};
}

bool isNearlySame(const ChannelFacts& first, const ChannelFacts& second) {
    return !first.landings().empty() && !second.landings().empty() && likenessOf(first, second).isNearlySame();
}

/// What was found of two pictures in one place, and what would be usual.
std::string likenessText(const DisplayFacts& display, const ChannelFacts& first, const ChannelFacts& second) {
    const Likeness likeness = likenessOf(first, second);
    return "its picture has the middle and the size of that of " + first.where() + ", " +
           lengthText(likeness.apart, display.unit) + " apart and " + significantText(likeness.timesAsLarge) +
           " times as large (neighbours lie " + lengthText(likeness.usual, display.unit) +
           " apart and more, insets differ by 1.35 times and more)";
}

void judgeCopies(const DisplayFacts& display, const ChannelFacts& first, const ChannelFacts& second,
                 FindingList& found) {
    const DisplayKind& kind = *display.kind;
    if (!first.locator() || !second.locator()) {
        return;
    }
    const bool isMap = kind.source == DisplayKind::Source::MAP_FILE;
    const bool isSame = isMap ? first.projector().getCustomPlanarFile() == second.projector().getCustomPlanarFile()
                              : sourceNumbers(kind, first) == sourceNumbers(kind, second);
    if (isSame) {
        reportPair(
            first, second, found, "same-picture",
            std::string(sourceText(kind)) + " are those of " + first.where() +
                " to the last digit, so both light one picture: change the copy; projectors on top of each other "
                "are allowed by name");
    } else if (isNearlySame(first, second)) {
        reportPair(first, second, found, "nearly-same-picture",
                   likenessText(display, first, second) +
                       ": check what both state for copies, units and signs; projectors on top of each other are "
                       "allowed by name");
    } else if (kind.addressedBy == DisplayKind::Addressing::PROJECTOR &&
               first.projector().getPosition() == second.projector().getPosition()) {
        reportPair(first, second, found, "same-place",
                   "its Position is that of " + first.where() +
                       " to the last digit: state where each projector stands; without a Position it is the eye point");
    }
}

/// How a layout follows an area along one axis: position = start + scale times the bound.
struct Fit {
    double from;
    double to;
    double layoutFrom;
    double layoutTo;

    [[nodiscard]] double scale() const { return (layoutTo - layoutFrom) / (to - from); }
    [[nodiscard]] double start() const { return layoutFrom - scale() * from; }
};

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Of rectangles that follow one law, those that do not. With fewer than three no law shows.
void judgeLayoutAlong(const Channels& channels, FindingList& found, const char* axis,
                      Fit (*fitOf)(const ProjectorConfig&)) {
    const Rule& rule = Rule::named("layout-apart");
    std::vector<double> scales;
    std::vector<double> starts;
    for (const ChannelFacts& channel : channels) {
        const Fit fit = fitOf(channel.projector());
        if (channel.locator() && fit.to != fit.from && fit.layoutTo != fit.layoutFrom) {
            scales.push_back(fit.scale());
            starts.push_back(fit.start());
        }
    }
    if (scales.size() < 3) {
        return;
    }
    const double scale = medianOf(scales);
    const double start = medianOf(starts);
    const auto wayOff = [&](const Fit& fit) {
        return std::max(std::abs(fit.layoutFrom - start - scale * fit.from),
                        std::abs(fit.layoutTo - start - scale * fit.to)) /
               std::abs(scale);
    };
    const auto isOff = [&](const ChannelFacts& channel) {
        const Fit fit = fitOf(channel.projector());
        return channel.locator() && fit.layoutTo != fit.layoutFrom && wayOff(fit) > rule.most;
    };
    const auto off = std::count_if(channels.begin(), channels.end(), isOff);
    if (off == 0 || 3 * static_cast<std::size_t>(off) > channels.size()) {
        return;
    }
    for (const ChannelFacts& channel : channels) {
        const Fit fit = fitOf(channel.projector());
        if (isOff(channel)) {
            found.add(rule, channel.where(), channel.allowed(),
                      "its Layout runs from " + significantText(fit.layoutFrom) + " to " +
                          significantText(fit.layoutTo) + " along " + axis +
                          ", where its ScreenArea and the layouts of "
                          "the other channels have " +
                          significantText(start + scale * fit.from) + " to " + significantText(start + scale * fit.to) +
                          ": check Layout and ScreenArea");
        }
    }
}

void judgeLayouts(const DisplayFacts& display, FindingList& found) {
    if (display.kind->layout != DisplayKind::Layout::PLANE) {
        return;
    }
    judgeLayoutAlong(display.channels, found, "x", [](const ProjectorConfig& p) {
        return Fit{p.getScreenLeft(), p.getScreenRight(), p.getLayoutXMin(), p.getLayoutXMax()};
    });
    judgeLayoutAlong(display.channels, found, "y", [](const ProjectorConfig& p) {
        return Fit{p.getScreenBottom(), p.getScreenTop(), p.getLayoutYMin(), p.getLayoutYMax()};
    });
}

/// Directions given in radians and read as degrees lie within a few degrees of each other.
/// @return whether they do
bool judgeHeap(const DisplayFacts& display, FindingList& found) {
    const Rule& rule = Rule::named("heaped-pictures");
    std::vector<const ChannelView*> views;
    for (const ChannelFacts& channel : display.channels) {
        if (channel.view() != nullptr) {
            views.push_back(channel.view());
        }
    }
    if (views.size() < 3) {
        return false;
    }
    double apart = 0;
    double widest = 0;
    for (const ChannelView* view : views) {
        apart = std::max({apart, std::abs(view->heading.rightOf(views.front()->heading)),
                          std::abs(view->heading.elevation - views.front()->heading.elevation)});
        widest = std::max({widest, view->wide});
    }
    const bool isShifted = std::any_of(views.begin(), views.end(), [&](const ChannelView* view) {
        return norm(view->from - views.front()->from) > 0.1 * display.size ||
               norm(view->middle - views.front()->middle) > 2 * rule.most * widest;
    });
    const bool isHeaped = apart > 0 && apart < rule.most * widest && !isShifted;
    if (isHeaped) {
        found.add(rule, "channels", display.allowed,
                  "all " + std::to_string(views.size()) + " of them look within " + degreesText(apart) +
                      " degrees of each other, with fields of view of " + degreesText(widest) +
                      ": their Orientations were probably meant in radians; check angleUnit");
    }
    return isHeaped;
}

}  // namespace

void judgeSets(const DisplayFacts& display, FindingList& found) {
    judgeNames(display.channels, found);
    // What holds for all of them is reported once.
    const bool isHeaped = display.kind != nullptr && judgeHeap(display, found);
    forPairs(display.channels, [&](const ChannelFacts& first, const ChannelFacts& second) {
        if (display.kind != nullptr && !isHeaped) {
            judgeCopies(display, first, second, found);
        }
    });
    if (display.kind != nullptr) {
        judgeLayouts(display, found);
    }
}

}  // namespace Veltrani::DisplayReport
