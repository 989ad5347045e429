#include "DisplayLight/LitChannel.h"

#include "DisplayLight/ProjectedLight.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

namespace Veltrani::DisplayLight {

namespace {

using DisplayExport::ContentInput;
using DisplayExport::InputPlace;
using DisplayExport::SeenPlace;
using ExportFiles::ExportedChannelView;
using ExportFiles::ExportedDisplay;
using ExportFiles::PlayerWarp;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Of the lattice over a picture.
constexpr std::size_t COLUMNS = 65;
constexpr std::size_t ROWS = 41;
/// Pixels from one place to the next: farther apart they belong to two parts of the screen.
constexpr double LONGEST_STEP = 64;
/// Light that a channel has at least where its content is compared.
constexpr float LEAST_WEIGHT = 0.01F;
/// Of a face of a cube: what a player interpolates reaches that far over its edge.
constexpr double BEYOND_FACE = 0.01;

/// How many pixels of the projector a place covers, from one side to the other.
double footprintOf(std::span<const FoundPlace> found, std::size_t i, const PlaceGrid& grid,
                   const Point<int, 2>& pixels) {
    const std::size_t width = grid.width;
    const auto step = [&](std::size_t other) {
        const P2 way = found[other].picture - found[i].picture;
        const P2 inPixels{way[0] * pixels[0], way[1] * pixels[1]};
        const bool isNear = found[other].isLit && grid.isOnePart(i, other) && norm(inPixels) <= LONGEST_STEP;
        return isNear ? std::optional(inPixels) : std::nullopt;
    };
    const std::size_t column = i % width;
    auto across = column + 1 < width ? step(i + 1) : std::nullopt;
    across = !across && column > 0 ? step(i - 1) : across;
    auto along = i + width < found.size() ? step(i + width) : std::nullopt;
    along = !along && i >= width ? step(i - width) : along;
    if (!across || !along) {
        return across ? norm(*across) : along ? norm(*along) : 0;
    }
    return std::sqrt(std::abs((*across)[0] * (*along)[1] - (*across)[1] * (*along)[0]));
}

/// The content that is shown, on the face that the other one is on, minus that.
std::optional<P2> wayBetween(const ContentInput& input, const P2& shown, const InputPlace& belongs,
                             const P3& direction) {
    const auto faces = static_cast<double>(input.faces());
    P2 place{shown[0] * faces - belongs.face, shown[1]};
    if (input.faces() > 1 && !(place[0] >= -BEYOND_FACE && place[0] <= 1 + BEYOND_FACE)) {
        const double face = std::clamp(std::floor(shown[0] * faces), 0.0, faces - 1);
        const auto there = input.placeOnFace(direction, static_cast<std::uint8_t>(face));
        return there ? std::optional(P2{shown[0] * faces - face, shown[1]} - *there) : std::nullopt;
    }
    place = place - belongs.at;
    place[0] -= input.wrapsAround() ? std::round(place[0]) : 0;
    return place;
}

/// How far a place of the picture is moved by that, in pixels of the channel; none where the content stands still.
std::optional<double> pixelsOf(const PlayerWarp::Shown& shown, const P2& way, double faces,
                               const Point<int, 2>& pixels) {
    const P2 alongU{shown.alongU[0] * faces, shown.alongU[1]};
    const P2 alongV{shown.alongV[0] * faces, shown.alongV[1]};
    const double area = alongU[0] * alongV[1] - alongU[1] * alongV[0];
    if (!(std::abs(area) > 0)) {
        return std::nullopt;
    }
    const double u = (way[0] * alongV[1] - way[1] * alongV[0]) / area;
    const double v = (alongU[0] * way[1] - alongU[1] * way[0]) / area;
    return std::hypot(u * pixels[0], v * pixels[1]);
}

}  // namespace

LitChannel::LitChannel(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel,
                       const ExportedChannelView& view, const std::shared_ptr<const ScreenGeometry>& surface)
    : m_config(&config),
      m_view(&view),
      m_surface(surface),
      m_sight(std::make_unique<DisplayExport::ChannelSight>(config, channel,
                                                            view.isInMirror ? std::nullopt : std::optional(view.eye))),
      m_finder(PictureFinder::of(config, *m_sight, surface)) {
    measure();
}

void LitChannel::measure() {
    std::vector<P2> pictures;
    for (std::size_t row = 0; row < ROWS; ++row) {
        for (std::size_t column = 0; column < COLUMNS; ++column) {
            pictures.emplace_back(static_cast<double>(column) / (COLUMNS - 1), static_cast<double>(row) / (ROWS - 1));
        }
    }
    std::vector<SeenPlace> seen(pictures.size());
    m_sight->see(pictures, seen);
    double area = 0;
    std::size_t cells = 0;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        if (seen[i].isSeen) {
            m_directions.push_back(seen[i].direction);
        }
        const bool isCell =
            i % COLUMNS > 0 && i >= COLUMNS && seen[i].isSeen && seen[i - 1].isSeen && seen[i - COLUMNS].isSeen;
        if (isCell) {
            ++cells;
            area += norm(cross(seen[i].point - seen[i - 1].point, seen[i].point - seen[i - COLUMNS].point));
        }
    }
    const double pixelsOfCell =
        static_cast<double>(m_view->pixels[0]) / (COLUMNS - 1) * static_cast<double>(m_view->pixels[1]) / (ROWS - 1);
    m_pixel = cells > 0 ? std::sqrt(area / static_cast<double>(cells) / pixelsOfCell) : 0;
}

void LitChannel::addLight(const ExportedDisplay& exported, const PlaceGrid& grid, std::span<const FoundPlace> found,
                          bool isSharp, std::span<LitPlace> places) {
    const auto blend = m_view->blend.value_or(ExportFiles::ExportedBlend());
    const ProjectedLight light(PlayedPictures::read(exported, *m_view), blend.curve, blend.residual);
    m_weights.assign(places.size(), 0);
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (!found[i].isLit) {
            continue;
        }
        const double footprint = isSharp ? 0 : footprintOf(found, i, grid, m_view->pixels);
        const ProjectedLight::Light one = light.at(found[i].picture, footprint);
        for (std::size_t part = 0; part < places[i].light.size(); ++part) {
            places[i].light[part] += one[part];
        }
        m_weights[i] = one.back();
        places[i].weight += one.back();
        ++places[i].channels;
    }
}

void LitChannel::compare(const ExportedDisplay& exported, const PlaceGrid& grid, std::span<const FoundPlace> found,
                         double coarsest, std::span<LitPlace> places) const {
    const auto warp = PlayerWarp::read(exported, *m_view);
    if (!warp) {
        return;
    }
    const ContentInput input(*m_config, *m_sight, m_view->input, m_view->frustum);
    const double scale = coarsest > 0 ? m_pixel / coarsest : 1;
    for (std::size_t first = 0; first < found.size(); first += grid.width) {
        compareRow(*warp, input, grid, found, first, scale, places);
    }
}

void LitChannel::compareRow(const PlayerWarp& warp, const ContentInput& input, const PlaceGrid& grid,
                            std::span<const FoundPlace> found, std::size_t first, double scale,
                            std::span<LitPlace> places) const {
    std::vector<std::size_t> numbers;
    std::vector<P2> pictures;
    for (std::size_t i = first; i < first + grid.width; ++i) {
        if (found[i].isLit && m_weights[i] >= LEAST_WEIGHT) {
            numbers.push_back(i);
            pictures.push_back(found[i].picture);
        }
    }
    std::vector<SeenPlace> seen(pictures.size());
    m_sight->see(pictures, seen);
    for (std::size_t k = 0; k < numbers.size(); ++k) {
        LitPlace& place = places[numbers[k]];
        const auto belongs = input.place(pictures[k], seen[k]);
        const auto shown = belongs ? warp.shownAt(pictures[k]) : std::nullopt;
        place.lacksContent = place.lacksContent || (belongs && !shown);
        const auto way = shown ? wayBetween(input, shown->content, *belongs, seen[k].direction) : std::nullopt;
        const auto pixels =
            way ? pixelsOf(*shown, *way, static_cast<double>(input.faces()), m_view->pixels) : std::nullopt;
        if (pixels) {
            place.shift = std::max(place.shift, static_cast<float>(scale * *pixels));
        }
    }
}

}  // namespace Veltrani::DisplayLight
