#include "DisplayReport/still/PicturePainter.h"

#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/still/NearnessMap.h"
#include "DisplayReport/still/SceneLegend.h"
#include "DisplayReport/still/StillLibrary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;

constexpr Colour BLACK{0, 0, 0};
constexpr double DARKER = 0.5;
constexpr double THICK = 2.6;
/// Length of the arrow as a share of the picture's height, and the least one that is seen, in heights of a letter.
constexpr double ARROW_SHARE = 0.3;
constexpr double SHORTEST_ARROW = 0.8;
/// Length of the lines of the arrow's head in heights of a letter, and their angle from the arrow.
constexpr double HEAD_LENGTH = 1.0;
constexpr double HEAD_ANGLE = 28 * std::numbers::pi / 180;
/// Free space around words, in heights of a letter.
constexpr double AROUND = 0.4;
/// The most places of a picture that its name is tried at.
constexpr std::size_t MOST_WAYS = 60;
/// The longest name on a picture, in heights of a letter; the legend has all of it.
constexpr double LONGEST_NAME = 14;

}  // namespace

PicturePainter::PicturePainter(const DisplayScene& scene, const SceneCamera& camera, const SceneLegend& legend,
                               double pixel)
    : m_scene(scene), m_camera(camera), m_legend(legend), m_pixel(pixel) {}

void PicturePainter::addTo(Drawing& drawing) {
    m_taken = TakenAreas(drawing);
    const NearnessMap nearest(drawing);
    for (const std::size_t number : smallestFirst()) {
        addChannel(drawing, nearest, number);
    }
}

std::vector<std::size_t> PicturePainter::smallestFirst() const {
    std::vector<std::pair<double, std::size_t>> order;
    for (std::size_t number = 0; number < m_scene.channels.size(); ++number) {
        // Whole pixels: of pictures of one size the first is named first.
        order.emplace_back(std::round(widthInPicture(m_scene.channels[number])), number);
    }
    std::sort(order.begin(), order.end());
    std::vector<std::size_t> numbers;
    for (const auto& [width, number] : order) {
        numbers.push_back(number);
    }
    return numbers;
}

double PicturePainter::labelSize() const {
    return 0.9 * m_legend.letterSize();
}

std::optional<Drawing::Place> PicturePainter::placed(const P3& world) const {
    auto place = m_camera.place(world);
    if (place) {
        (*place)[1] += m_legend.sceneTop();
    }
    return place;
}

void PicturePainter::addChannel(Drawing& drawing, const NearnessMap& nearest, std::size_t number) {
    const SceneChannel& channel = m_scene.channels[number];
    const std::string label = labelOf(channel, number);
    const double size = labelSize();
    const double width = StillLibrary::get().width(label, size) + 2 * AROUND * size;
    const std::vector<Drawing::Place> way = chosen(channel, nearest, width);
    if (way.empty()) {
        return;
    }
    const Drawing::Place& place = way.front();
    m_taken.add(areaAt(place, width));
    for (std::size_t i = 1; i < way.size(); ++i) {
        m_taken.add(PaperArea::around(way[i - 1], way[i], THICK * m_pixel));
    }
    const Colour dark = mixed(channel.colour, BLACK, DARKER);
    addArrow(drawing, way, dark);
    drawing.texts.push_back(
        {place[0], place[1] + size / 2, label, size, mixed(dark, BLACK, DARKER), Drawing::Anchor::MIDDLE, true});
}

PaperArea PicturePainter::areaAt(const Drawing::Place& middle, double width) const {
    const double half = (0.5 + AROUND) * labelSize();
    return {middle[0] - width / 2, middle[1] - half, middle[0] + width / 2, middle[1] + half};
}

bool PicturePainter::isFree(const std::vector<Drawing::Place>& way) const {
    for (std::size_t i = 1; i < way.size(); ++i) {
        if (!m_taken.isFree(PaperArea::around(way[i - 1], way[i], THICK * m_pixel))) {
            return false;
        }
    }
    return true;
}

std::vector<Drawing::Place> PicturePainter::chosen(const SceneChannel& channel, const NearnessMap& nearest,
                                                   double width) const {
    std::vector<Drawing::Place> best;
    bool areWordsFree = false;
    for (const Way& way : waysOf(channel)) {
        const std::vector<Drawing::Place> seen = shown(way, nearest);
        if (seen.empty() || seen.front()[0] < width / 2 || seen.front()[0] > m_legend.sceneWidth() - width / 2) {
            continue;
        }
        const bool isFreeHere = m_taken.isFree(areaAt(seen.front(), width));
        if (isFreeHere && isFree(seen)) {
            return seen;
        }
        if (best.empty() || (isFreeHere && !areWordsFree)) {
            best = seen;
            areWordsFree = isFreeHere;
        }
    }
    return best;
}

std::string PicturePainter::labelOf(const SceneChannel& channel, std::size_t number) const {
    const std::string name = SceneLegend::fitting(channel.targets.name, LONGEST_NAME * labelSize(), labelSize());
    std::string label = numberText(number) + " " + name;
    const bool isTooWide = StillLibrary::get().width(label, labelSize()) > widthInPicture(channel);
    return isTooWide || name.empty() ? numberText(number) : label;
}

double PicturePainter::widthInPicture(const SceneChannel& channel) const {
    double least = std::numeric_limits<double>::infinity();
    double most = -least;
    const auto add = [&](const P3& point) {
        if (const auto place = m_camera.place(point)) {
            least = std::min(least, (*place)[0]);
            most = std::max(most, (*place)[0]);
        }
    };
    for (const GridTarget& target : channel.targets.grid) {
        add(target.point);
    }
    for (const P3& point : channel.targets.boundary) {
        add(point);
    }
    return most - least;
}

std::vector<PicturePainter::Way> PicturePainter::waysOf(const SceneChannel& channel) const {
    const std::vector<GridTarget>& grid = channel.targets.grid;
    std::vector<std::size_t> order(grid.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    // From the middle of the picture outwards; a little below it, so that the arrow is in its middle.
    constexpr Point<double, 2> BEST{0.5, 0.6};
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return norm(grid[a].picture - BEST) < norm(grid[b].picture - BEST);
    });
    order.resize(std::min(order.size(), MOST_WAYS));
    std::vector<Way> ways;
    if (!channel.upMark.empty()) {
        ways.push_back(channel.upMark.front());
    }
    for (const std::size_t target : order) {
        ways.push_back(wayUp(channel, target));
    }
    if (ways.empty() && channel.frustum && !channel.frustum->rim.empty()) {
        P3 middle;
        for (const P3& point : channel.frustum->rim) {
            middle += point * (1.0 / static_cast<double>(channel.frustum->rim.size()));
        }
        const auto& left = channel.frustum->leftEdge;
        ways.push_back({middle});
        if (left.size() > 1) {
            ways.back().push_back(middle + (left.back() - left.front()) * ARROW_SHARE);
        }
    }
    return ways;
}

PicturePainter::Way PicturePainter::wayUp(const SceneChannel& channel, std::size_t target) const {
    const GridTarget& start = channel.targets.grid[target];
    std::vector<const GridTarget*> above;
    for (const GridTarget& other : channel.targets.grid) {
        const double up = other.picture[1] - start.picture[1];
        if (other.column == start.column && up > 0) {
            above.push_back(&other);
        }
    }
    std::sort(above.begin(), above.end(), [](const auto* a, const auto* b) { return a->picture[1] < b->picture[1]; });
    Way way{start.point};
    for (const GridTarget* next : above) {
        const bool isLongEnough = way.size() > 1 && next->picture[1] - start.picture[1] > ARROW_SHARE;
        if (isLongEnough) {
            break;
        }
        way.push_back(next->point);
    }
    return way;
}

std::vector<Drawing::Place> PicturePainter::shown(const Way& way, const NearnessMap& nearest) const {
    std::vector<Drawing::Place> places;
    for (const P3& point : way) {
        const auto place = placed(point);
        if (!place || !nearest.shows(*place)) {
            break;
        }
        places.push_back(*place);
    }
    return places;
}

void PicturePainter::addArrow(Drawing& drawing, const std::vector<Drawing::Place>& way, const Colour& colour) const {
    const Drawing::Place& tip = way.back();
    const Drawing::Place& before = way.size() > 1 ? way[way.size() - 2] : way.back();
    const auto flatLength = [](const Drawing::Place& a, const Drawing::Place& b) {
        return std::hypot(b[0] - a[0], b[1] - a[1]);
    };
    if (flatLength(way.front(), tip) < SHORTEST_ARROW * labelSize()) {
        return;
    }
    for (std::size_t i = 1; i < way.size(); ++i) {
        drawing.lines.push_back({way[i - 1], way[i], colour, THICK * m_pixel});
    }
    const double heading = std::atan2(before[1] - tip[1], before[0] - tip[0]);
    const double length = HEAD_LENGTH * m_legend.letterSize();
    for (const double side : {-HEAD_ANGLE, HEAD_ANGLE}) {
        const Drawing::Place end{tip[0] + length * std::cos(heading + side), tip[1] + length * std::sin(heading + side),
                                 tip[2]};
        drawing.lines.push_back({tip, end, colour, THICK * m_pixel});
    }
}

double targetSpacing(const SceneChannel& channel, const SceneCamera& camera, int step) {
    std::map<std::pair<int, int>, Drawing::Place> places;
    for (const GridTarget& target : channel.targets.grid) {
        if (const auto place = camera.place(target.point)) {
            places.emplace(std::pair(target.column, target.row), *place);
        }
    }
    double least = std::numeric_limits<double>::infinity();
    for (const auto& [across, down] : {std::pair(step, 0), std::pair(0, step)}) {
        std::vector<double> distances;
        for (const auto& [cell, place] : places) {
            if (const auto next = places.find({cell.first + across, cell.second + down}); next != places.end()) {
                distances.push_back(std::hypot(next->second[0] - place[0], next->second[1] - place[1]));
            }
        }
        if (!distances.empty()) {
            const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
            std::nth_element(distances.begin(), middle, distances.end());
            least = std::min(least, *middle);
        }
    }
    return least;
}

}  // namespace Veltrani::DisplayReport
