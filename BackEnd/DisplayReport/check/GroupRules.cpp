#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

/// Where fewer are alike, one that is not says nothing.
constexpr std::size_t A_GROUP = 3;

using Group = std::vector<const ChannelFacts*>;

/// The channels that are described by a view.
Group viewedChannels(const DisplayFacts& display) {
    Group group;
    for (const ChannelFacts& channel : display.channels) {
        if (channel.view() != nullptr) {
            group.push_back(&channel);
        }
    }
    return group;
}

bool isSameFrustum(const ChannelFacts& one, const ChannelFacts& other) {
    const ProjectorConfig& a = one.projector();
    const ProjectorConfig& b = other.projector();
    return a.getFrustumLeft() == b.getFrustumLeft() && a.getFrustumRight() == b.getFrustumRight() &&
           a.getFrustumBottom() == b.getFrustumBottom() && a.getFrustumTop() == b.getFrustumTop();
}

/// Between two angles, 0 to half a turn.
double between(double one, double other) {
    return std::abs(std::remainder(one - other, 2 * std::numbers::pi));
}

/// One picture on its head among others that stand alike. Of projectors, which may hang beside standing ones, only one
/// that has the frustum of another: where it hangs, its picture lies on the other side of the lens.
void judgeRolls(const DisplayFacts& display, FindingList& found) {
    constexpr double ALIKE = 10.0 * DEGREE;
    const Group group = viewedChannels(display);
    const bool isFromEye = display.kind->addressedBy == DisplayKind::Addressing::EYE;
    for (const ChannelFacts* const one : group) {
        const auto isOpposite = [one](const ChannelFacts* other) {
            return other == one || between(other->view()->roll, one->view()->roll) > std::numbers::pi - ALIKE;
        };
        const auto isLike = [one](const ChannelFacts* other) { return other != one && isSameFrustum(*one, *other); };
        if (group.size() < A_GROUP || !std::all_of(group.begin(), group.end(), isOpposite) ||
            (!isFromEye && std::none_of(group.begin(), group.end(), isLike))) {
            continue;
        }
        const ChannelFacts* const other = group.front() == one ? group.back() : group.front();
        found.add(Rule::named("odd-one-out"), one->where(), one->allowed(),
                  "its picture is rolled by " + degreesText(one->view()->roll) + " degrees, those of the other " +
                      std::to_string(group.size() - 1) + " channels by " + degreesText(other->view()->roll) +
                      ": it stands on its head; check y of its Orientation");
    }
}

/// A channel of a row, with the steps to its neighbours.
struct Step {
    const ChannelFacts* from;
    const ChannelFacts* to;
    double turn;  ///< radians, to the right
};

/// The steps of a row to the right; around the eye, the last one leads back to the first.
std::vector<Step> stepsOf(Group row) {
    std::sort(row.begin(), row.end(), [](const ChannelFacts* one, const ChannelFacts* other) {
        return one->view()->heading.azimuth < other->view()->heading.azimuth;
    });
    std::vector<Step> steps;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const ChannelFacts* const next = row[(i + 1) % row.size()];
        const double turn = next->view()->heading.azimuth - row[i]->view()->heading.azimuth;
        steps.push_back({row[i], next, i + 1 < row.size() ? turn : turn + 2 * std::numbers::pi});
    }
    return steps;
}

/// In a row of equal steps, one channel beside its place makes one step longer by what the next one is shorter.
void judgeRow(const Group& row, FindingList& found) {
    constexpr double EVEN = 0.02;
    constexpr double UNEVEN = 0.1;
    std::vector<Step> steps = stepsOf(row);
    std::vector<double> turns;
    for (const Step& step : steps) {
        turns.push_back(step.turn);
    }
    std::nth_element(turns.begin(), turns.begin() + static_cast<std::ptrdiff_t>(turns.size() / 2), turns.end());
    const double usual = turns[turns.size() / 2];
    const bool isRing = steps.back().turn < 2 * usual;
    if (!isRing) {
        steps.pop_back();
    }
    const auto isEven = [usual](const Step& step) { return std::abs(step.turn - usual) < EVEN * usual; };
    const auto even = static_cast<std::size_t>(std::count_if(steps.begin(), steps.end(), isEven));
    for (std::size_t i = 0; i + (isRing ? 0 : 1) < steps.size(); ++i) {
        const Step& before = steps[i];
        const Step& behind = steps[(i + 1) % steps.size()];
        const double beside = 0.5 * (before.turn - behind.turn);
        if (even + 2 == steps.size() && even >= 2 && std::abs(beside) > UNEVEN * usual && !isEven(before) &&
            !isEven(behind) && std::abs(before.turn + behind.turn - 2 * usual) < 2 * EVEN * usual) {
            found.add(Rule::named("odd-one-out"), before.to->where(), before.to->allowed(),
                      "it looks " + sidewaysText(beside) +
                          " of the middle between its neighbours, where all others "
                          "are " +
                          degreesText(usual) + " degrees apart: check z of its Orientation");
            return;
        }
    }
}

void judgeRows(const DisplayFacts& display, FindingList& found) {
    constexpr double LEVEL = 1.0 * DEGREE;
    constexpr std::size_t A_ROW = 4;
    Group left = viewedChannels(display);
    while (left.size() >= A_ROW) {
        const ChannelFacts* const first = left.front();
        const auto other = std::partition(left.begin(), left.end(), [first](const ChannelFacts* one) {
            return std::abs(one->view()->heading.elevation - first->view()->heading.elevation) < LEVEL &&
                   isSameFrustum(*one, *first);
        });
        const Group row(left.begin(), other);
        if (row.size() >= A_ROW) {
            judgeRow(row, found);
        }
        left.erase(left.begin(), other);
    }
}

/// A projector that stands much nearer to the screen than others of its kind.
void judgeThrows(const DisplayFacts& display, FindingList& found) {
    constexpr double NEAR = 0.25;
    for (const ChannelFacts* const one : viewedChannels(display)) {
        std::vector<double> others;
        for (const ChannelFacts& other : display.channels) {
            if (&other != one && other.throwDistance() > 0 && isSameFrustum(*one, other)) {
                others.push_back(other.throwDistance());
            }
        }
        const bool isNear = others.size() + 1 >= A_GROUP && one->throwDistance() > 0 &&
                            one->throwDistance() < NEAR * *std::min_element(others.begin(), others.end());
        // What is inside of the surface is found as such.
        const bool isInside =
            display.metres > 0 && one->throwDistance() * display.metres < Rule::named("inside-surface").least;
        if (isNear && !isInside) {
            found.add(Rule::named("inside-surface"), one->where(), one->allowed(),
                      "its Position lies " + lengthText(one->throwDistance(), display.unit) +
                          " from the screen, those of the other channels with its Frustum " +
                          lengthText(*std::min_element(others.begin(), others.end()), display.unit) +
                          " and more: check its Position");
        }
    }
}

/// Above 0 for a projector that lights the surface from where its normals point to, below 0 from the other side; 0
/// where it does neither by far.
int litSideOf(const ScreenGeometry& surface, const ChannelFacts& channel) {
    constexpr std::size_t STEP = 17;
    constexpr double BY_FAR = 0.9;
    int sum = 0;
    int count = 0;
    for (std::size_t i = 0; i < channel.landings().size(); i += STEP) {
        const Point<double, 3>& place = channel.landings()[i];
        sum += dot(surface.getScreenNormal(place), channel.view()->from - place) > 0 ? 1 : -1;
        ++count;
    }
    return std::abs(sum) > BY_FAR * count ? (sum > 0 ? 1 : -1) : 0;
}

void judgeLitSides(const DisplayFacts& display, FindingList& found) {
    std::vector<std::pair<const ChannelFacts*, int>> sides;
    for (const ChannelFacts* const one : viewedChannels(display)) {
        if (!one->landings().empty()) {
            sides.emplace_back(one, litSideOf(*display.surface, *one));
        }
    }
    for (const auto& [one, side] : sides) {
        const auto isOther = [one = one, side = side](const auto& other) {
            return other.first == one || other.second == -side;
        };
        if (sides.size() >= A_GROUP && side != 0 && std::all_of(sides.begin(), sides.end(), isOther)) {
            found.add(Rule::named("inside-surface"), one->where(), one->allowed(),
                      "it lights the screen from the other side than the other " + std::to_string(sides.size() - 1) +
                          " channels do: check its Position, and z of its Orientation");
        }
    }
}

/// The middle of a channel's area along one axis, and that of its layout.
using Middles = Point<double, 2> (*)(const ProjectorConfig&);

/// Areas from left to right whose layouts run from right to left, or from above to below.
void judgeLayoutOrder(const DisplayFacts& display, Middles middles, const char* area, const char* layout,
                      FindingList& found) {
    Point<double, 2> sum;
    for (const ChannelFacts& channel : display.channels) {
        sum = sum + middles(channel.projector());
    }
    const Point<double, 2> middle = sum * (1.0 / static_cast<double>(display.channels.size()));
    double product = 0;
    Point<double, 2> squares;
    for (const ChannelFacts& channel : display.channels) {
        const Point<double, 2> off = middles(channel.projector()) - middle;
        product += off[0] * off[1];
        squares = squares + Point<double, 2>{off[0] * off[0], off[1] * off[1]};
    }
    constexpr double CLEAR = 0.9;
    if (product < -CLEAR * std::sqrt(squares[0] * squares[1]) && squares[0] > 0 && squares[1] > 0) {
        found.add(Rule::named("layout-apart"), "channels", display.allowed,
                  std::string("their ScreenAreas run ") + area + " where their Layouts run " + layout +
                      ", so that each shows the part of another: check the order of the Layouts, whose x runs to the "
                      "right and y upwards");
    }
}

void judgeLayoutOrders(const DisplayFacts& display, FindingList& found) {
    if (display.kind->layout != DisplayKind::Layout::PLANE ||
        display.kind->source != DisplayKind::Source::SCREEN_AREA || display.channels.size() < 2) {
        return;
    }
    judgeLayoutOrder(
        display,
        [](const ProjectorConfig& p) {
            return Point<double, 2>{p.getScreenLeft() + p.getScreenRight(), p.getLayoutXMin() + p.getLayoutXMax()};
        },
        "to the right", "to the left", found);
    judgeLayoutOrder(
        display,
        [](const ProjectorConfig& p) {
            return Point<double, 2>{p.getScreenBottom() + p.getScreenTop(), p.getLayoutYMin() + p.getLayoutYMax()};
        },
        "upwards", "downwards", found);
}

/// How far s rises to the right of a picture of width 1, and t upwards, on the mean of the map; 0 where it has nothing.
Point<double, 2> runOf(const ChannelFacts& channel) {
    if (!channel.locator() || LocatorKind::of(*channel.locator()).path != LocatorKind::Path::MAP_FILE) {
        return {};
    }
    const auto& map = static_cast<const CustomPlanarTargetLocator&>(*channel.locator()).getTransform();
    constexpr int STEPS = 20;
    const Point<double, 2> size = map.pictureSize();
    const auto screenOf = [&](double u, double v, Point<double, 2>& st) {
        return map.mapChannel2DToScreen2D({size[0] * u / STEPS, size[1] * v / STEPS}, st);
    };
    Point<double, 2> sum;
    for (int row = 0; row < STEPS; ++row) {
        for (int column = 0; column < STEPS; ++column) {
            Point<double, 2> here;
            Point<double, 2> right;
            Point<double, 2> up;
            if (screenOf(column, row, here) && screenOf(column + 1, row, right) && screenOf(column, row + 1, up)) {
                sum = sum + Point<double, 2>{right[0] - here[0], up[1] - here[1]} * (1.0 / STEPS);
            }
        }
    }
    return sum;
}

/// A projector may hang, and its map then turns the picture; beside maps that do not, a turned file is one by mistake.
void judgeMapTurns(const DisplayFacts& display, FindingList& found) {
    constexpr double CLEAR = 0.05;
    const ChannelFacts* upright = nullptr;
    std::vector<const ChannelFacts*> turned;
    for (const ChannelFacts& channel : display.channels) {
        const Point<double, 2> run = runOf(channel);
        if (run[0] > CLEAR && run[1] > CLEAR) {
            upright = &channel;
        } else if (run[0] < -CLEAR && run[1] < -CLEAR) {
            turned.push_back(&channel);
        }
    }
    for (const ChannelFacts* const one : turned) {
        if (upright != nullptr) {
            found.add(Rule::named("mirrored-map"), one->where(), one->allowed() + " " + upright->allowed(),
                      "map " + toUtf8(one->projector().getCustomPlanarFile()) +
                          " turns its picture by 180 degrees, that of " + upright->where() +
                          " does not: check the order of its nodes; a projector that hangs beside a standing one is "
                          "allowed by name");
        }
    }
}

}  // namespace

void judgeGroups(const DisplayFacts& display, FindingList& found) {
    if (display.kind == nullptr) {
        return;
    }
    judgeRolls(display, found);
    judgeRows(display, found);
    judgeLayoutOrders(display, found);
    judgeMapTurns(display, found);
    if (display.isMeasured && display.kind->addressedBy == DisplayKind::Addressing::PROJECTOR) {
        judgeThrows(display, found);
        judgeLitSides(display, found);
    }
}

}  // namespace Veltrani::DisplayReport
