#include "DisplayExport/ContentInput.h"

#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayExport/FrustumFit.h"
#include "DisplayReport/basics/NumberText.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr double PI = std::numbers::pi;
/// Radians: what rounding adds to a direction on the edge of a fisheye.
constexpr double EDGE_TOLERANCE = 1e-9;
/// On a side of an input: more than any picture has.
constexpr int MOST_PIXELS = 1'000'000;

constexpr std::array<std::pair<const char*, InputKind>, 6> KINDS{{{"frustum", InputKind::FRUSTUM},
                                                                  {"fisheye", InputKind::FISHEYE},
                                                                  {"equirectangular", InputKind::EQUIRECTANGULAR},
                                                                  {"cube", InputKind::CUBE},
                                                                  {"layout", InputKind::LAYOUT},
                                                                  {"screen", InputKind::SCREEN}}};
constexpr std::array<const char*, 6> FACES{"right", "left", "front", "back", "top", "bottom"};

bool hasDirections(InputKind kind) {
    return kind != InputKind::LAYOUT && kind != InputKind::SCREEN;
}

/// The rectangle of a channel on the layout plane, or of all of them.
struct Rectangle {
    P2 lower, upper;

    [[nodiscard]] bool hasExtent() const { return lower[0] < upper[0] && lower[1] < upper[1]; }
};

Rectangle rectangleOf(const ProjectorConfig& projector) {
    return {{projector.getLayoutXMin(), projector.getLayoutYMin()},
            {projector.getLayoutXMax(), projector.getLayoutYMax()}};
}

/// A channel without a rectangle shows nothing of the layout.
Rectangle layoutOf(const XMLConfigManager& config) {
    constexpr double FARTHEST = std::numeric_limits<double>::max();
    Rectangle all{{FARTHEST, FARTHEST}, {-FARTHEST, -FARTHEST}};
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config.getProjectorConfig(id);
        if (projector != nullptr && rectangleOf(*projector).hasExtent()) {
            const Rectangle one = rectangleOf(*projector);
            for (std::size_t i = 0; i < P2::size(); ++i) {
                all.lower[i] = std::min(all.lower[i], one.lower[i]);
                all.upper[i] = std::max(all.upper[i], one.upper[i]);
            }
        }
    }
    return all;
}

bool hasLayoutPlane(const XMLConfigManager& config) {
    const DisplayKind* const kind = DisplayKind::of(config);
    return kind != nullptr && kind->layout == DisplayKind::Layout::PLANE;
}

/// The frusta of the faces of a cube, in the order of `CubeFace`.
std::vector<RenderFrustum> facesOf(const ViewFrame& front) {
    const auto face = [&front](const P3& right, const P3& forward, const P3& up) {
        return RenderFrustum{{front.eye, right, forward, up}, -1, 1, -1, 1};
    };
    const auto& [eye, right, forward, up] = front;
    return {face(-forward, right, up),  face(forward, -right, up), face(right, forward, up),
            face(-right, -forward, up), face(right, up, -forward), face(right, -up, forward)};
}

/// Refuses an input that the display or the channel does not have.
void requireAddressing(const XMLConfigManager& config, const ChannelSight& sight, InputKind kind) {
    if (kind == InputKind::LAYOUT && !hasLayoutPlane(config)) {
        sight.channel().refuse("its display has no layout plane: choose another input");
    }
    if (kind == InputKind::SCREEN && !sight.hasScreenCoordinates()) {
        sight.channel().refuse("its picture is not placed by the 2D coordinates of the screen: choose another input");
    }
}

void requireNumbers(const ChannelSight& sight, const InputChoice& choice) {
    if (!(choice.aperture > 0 && choice.aperture <= 2 * PI)) {
        sight.channel().refuse("the aperture of a fisheye is above 0 and at most 360 degrees");
    }
    if (!(choice.margin >= 0 && choice.margin <= 1)) {
        sight.channel().refuse("the margin of a frustum is 0 to 1 of its width and height on each side");
    }
    const auto [least, most] = std::minmax(choice.pixels[0], choice.pixels[1]);
    if (least < 1 || most > MOST_PIXELS) {
        sight.channel().refuse("the input has a size of " + std::to_string(choice.pixels[0]) + " x " +
                               std::to_string(choice.pixels[1]) + " pixels: state 1 to " + std::to_string(MOST_PIXELS) +
                               " for both");
    }
}

ViewFrame viewOf(const ChannelSight& sight, const InputChoice& choice) {
    constexpr P3 AHEAD{0.0, 1.0, 0.0};
    if (choice.direction || choice.kind != InputKind::FRUSTUM) {
        return ViewFrame::looking(sight.eye(), choice.direction.value_or(AHEAD), choice.roll);
    }
    const std::optional<P3> mean = sight.meanDirection();
    if (!mean) {
        sight.channel().refuse(
            "what is seen of its picture has no mean direction, because nothing is seen or it lies all around: check "
            "its position, orientation and frustum against the screen, or choose the input fisheye or cube");
    }
    return ViewFrame::looking(sight.eye(), *mean, choice.roll);
}

}  // namespace

std::optional<InputKind> inputKindOf(const std::string& name) {
    const auto found =
        std::find_if(KINDS.begin(), KINDS.end(), [&name](const auto& known) { return name == known.first; });
    return found == KINDS.end() ? std::nullopt : std::optional(found->second);
}

std::string nameOf(InputKind kind) {
    return std::find_if(KINDS.begin(), KINDS.end(), [kind](const auto& known) { return kind == known.second; })->first;
}

std::vector<std::string> inputKindNames() {
    std::vector<std::string> names;
    names.reserve(KINDS.size());
    for (const auto& [name, kind] : KINDS) {
        names.emplace_back(name);
    }
    return names;
}

std::string nameOf(CubeFace face) {
    return FACES[static_cast<std::size_t>(face)];
}

ContentInput::ContentInput(const XMLConfigManager& config, const ChannelSight& sight, const InputChoice& choice)
    : m_choice(choice) {
    requireAddressing(config, sight, m_choice.kind);
    if (m_choice.kind == InputKind::LAYOUT) {
        setPlane(config, sight);
    }
    if (m_choice.pixels == Point<int, 2>()) {
        m_choice.pixels = usualPixels(config, sight, m_choice.kind);
    }
    requireNumbers(sight, m_choice);
    if (hasDirections(m_choice.kind)) {
        m_frustum.view = viewOf(sight, m_choice);
    }
    if (m_choice.kind == InputKind::FRUSTUM) {
        m_frustum = fittedFrustum(sight, m_frustum.view, m_choice.margin, WIDEST_FRUSTUM);
    }
    if (m_choice.kind == InputKind::CUBE) {
        m_faces = facesOf(m_frustum.view);
    }
}

ContentInput::ContentInput(const XMLConfigManager& config, const ChannelSight& sight, const InputChoice& choice,
                           const RenderFrustum& stated)
    : m_choice(choice), m_frustum(stated) {
    requireAddressing(config, sight, m_choice.kind);
    requireNumbers(sight, m_choice);
    if (m_choice.kind == InputKind::LAYOUT) {
        setPlane(config, sight);
    }
    if (m_choice.kind == InputKind::CUBE) {
        m_faces = facesOf(m_frustum.view);
    }
}

void ContentInput::setPlane(const XMLConfigManager& config, const ChannelSight& sight) {
    const Rectangle own = rectangleOf(*sight.channel().projector);
    const Rectangle all = layoutOf(config);
    if (!own.hasExtent()) {
        sight.channel().refuse(
            "its layout rectangle has no extent: give the channel a Layout with xMin below xMax and yMin below yMax");
    }
    for (std::size_t i = 0; i < P2::size(); ++i) {
        const double extent = all.upper[i] - all.lower[i];
        m_start[i] = (own.lower[i] - all.lower[i]) / extent;
        m_size[i] = (own.upper[i] - own.lower[i]) / extent;
    }
}

std::optional<RenderFrustum> ContentInput::frustum() const {
    return kind() == InputKind::FRUSTUM ? std::optional(m_frustum) : std::nullopt;
}

std::optional<RenderFrustum> ContentInput::frustumOf(CubeFace face) const {
    return kind() == InputKind::CUBE ? std::optional(m_faces[static_cast<std::size_t>(face)]) : std::nullopt;
}

std::optional<InputPlace> ContentInput::place(const P2& picture, const SeenPlace& seen) const {
    if (!seen.isSeen) {
        return std::nullopt;
    }
    switch (kind()) {
        case InputKind::LAYOUT:
            return InputPlace{{m_start[0] + m_size[0] * picture[0], m_start[1] + m_size[1] * picture[1]}};
        case InputKind::SCREEN:
            return InputPlace{seen.screen};
        case InputKind::FRUSTUM:
        case InputKind::FISHEYE:
        case InputKind::EQUIRECTANGULAR:
        case InputKind::CUBE:
            break;
    }
    return placeOf(seen.direction, Edge::ENDS);
}

std::optional<InputPlace> ContentInput::placeBeyond(const P2& picture, const SeenPlace& seen) const {
    return seen.isSeen && hasDirections(kind()) ? placeOf(seen.direction, Edge::GOES_ON) : place(picture, seen);
}

std::optional<P2> ContentInput::placeOnFace(const P3& direction, std::uint8_t face) const {
    P2 place;
    const bool isOn = face < m_faces.size() && m_faces[face].placeOf(direction, place);
    return isOn ? std::optional(place) : std::nullopt;
}

std::optional<InputPlace> ContentInput::placeOf(const P3& direction) const {
    return hasDirections(kind()) ? placeOf(direction, Edge::ENDS) : std::nullopt;
}

std::optional<InputPlace> ContentInput::placeOf(const P3& direction, Edge edge) const {
    const P3 seen = m_frustum.view.inFrame(direction);
    if (!(dot(seen, seen) > 0)) {
        return std::nullopt;
    }
    InputPlace place;
    if (kind() == InputKind::FRUSTUM) {
        return m_frustum.placeOf(direction, place.at) ? std::optional(place) : std::nullopt;
    }
    if (kind() == InputKind::FISHEYE) {
        const double aside = std::hypot(seen[0], seen[2]);
        const double angle = std::atan2(aside, seen[1]);
        if (edge == Edge::ENDS && !(angle <= m_choice.aperture / 2 + EDGE_TOLERANCE)) {
            return std::nullopt;
        }
        const double perUnit = aside > 0 ? angle / m_choice.aperture / aside : 0;
        return InputPlace{{0.5 + perUnit * seen[0], 0.5 + perUnit * seen[2]}};
    }
    if (kind() == InputKind::EQUIRECTANGULAR) {
        return InputPlace{{0.5 + std::atan2(seen[0], seen[1]) / (2 * PI),
                           0.5 + std::atan2(seen[2], std::hypot(seen[0], seen[1])) / PI}};
    }
    // The face that the direction points to most.
    const P3 size{std::abs(seen[0]), std::abs(seen[1]), std::abs(seen[2])};
    const std::size_t axis = size[1] >= size[0] && size[1] >= size[2] ? 1 : size[0] >= size[2] ? 0 : 2;
    place.face = static_cast<std::uint8_t>(2 * axis + (seen[axis] > 0 ? 0 : 1));
    return m_faces[place.face].placeOf(direction, place.at) ? std::optional(place) : std::nullopt;
}

std::vector<P3> ContentInput::poles() const {
    if (kind() == InputKind::EQUIRECTANGULAR) {
        return {view().up, -view().up};
    }
    return kind() == InputKind::FISHEYE ? std::vector<P3>{-view().forward} : std::vector<P3>();
}

double ContentInput::distance(const P2& from, const P2& to) const {
    P2 way = to - from;
    if (wrapsAround()) {
        way[0] = (way[0] - std::round(way[0])) * std::cos((from[1] - 0.5) * PI);
    } else if (kind() == InputKind::FISHEYE) {
        way = shrunkAroundBack(from - P2{0.5, 0.5}, way);
    }
    // Not std::hypot: pixels neither overflow nor vanish when squared, and searches for nodes come here most.
    return norm(P2{way[0] * pixels()[0], way[1] * pixels()[1]});
}

P2 ContentInput::shrunkAroundBack(const P2& fromMiddle, const P2& way) const {
    const double aside = norm(fromMiddle);
    const double angle = aside * m_choice.aperture;
    if (!(angle > PI / 2)) {
        return way;
    }
    const P2 outwards = (1 / aside) * fromMiddle;
    const P2 around{-outwards[1], outwards[0]};
    return dot(way, outwards) * outwards + std::max(0.0, std::sin(angle)) * dot(way, around) * around;
}

std::string ContentInput::remedyForNothing(const ChannelSight& sight) const {
    constexpr int PER_SIDE = 33;
    std::vector<P2> picture;
    for (int row = 0; row < PER_SIDE; ++row) {
        for (int column = 0; column < PER_SIDE; ++column) {
            picture.emplace_back((column + 0.5) / PER_SIDE, (row + 0.5) / PER_SIDE);
        }
    }
    std::vector<SeenPlace> seen(picture.size());
    sight.see(picture, seen);
    if (std::none_of(seen.begin(), seen.end(), [](const SeenPlace& place) { return place.isSeen; })) {
        return REMEDY_UNLIT;
    }
    return kind() == InputKind::FRUSTUM
               ? "what it shows lies behind the direction of the frustum: state another --axis, or none"
               : "what it shows lies beyond the circle of the fisheye: state another --axis or a wider --aperture, or "
                 "--input equirectangular";
}

Point<int, 2> ContentInput::usualPixels(const XMLConfigManager& config, const ChannelSight& sight, InputKind kind) {
    constexpr int ALONG = 4096;
    switch (kind) {
        case InputKind::FRUSTUM:
            return sight.channel().pictureSize();
        case InputKind::EQUIRECTANGULAR:
            return {2 * ALONG, ALONG};
        case InputKind::CUBE:
            return {ALONG / 2, ALONG / 2};
        case InputKind::LAYOUT: {
            const Rectangle all = layoutOf(config);
            const P2 size = all.upper - all.lower;
            const double longer = std::max(size[0], size[1]);
            const auto pixels = [longer](double side) {
                return std::max(1, static_cast<int>(std::lround(ALONG * side / longer)));
            };
            return {pixels(size[0]), pixels(size[1])};
        }
        case InputKind::FISHEYE:
        case InputKind::SCREEN:
            break;
    }
    return {ALONG, ALONG};
}

}  // namespace Veltrani::DisplayExport
