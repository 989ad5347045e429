#include "DisplayLight/LightSum.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayLight/LitChannel.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayLight {

namespace {

using DisplayReport::ChannelChoice;
using ExportFiles::ExportedChannelView;
using ExportFiles::ExportedDisplay;

/// The coarse picture that shows which side is seen is that much smaller.
constexpr std::size_t COARSER = 8;
/// Of a picture of the eye, where none is to be drawn.
constexpr std::size_t USUAL_WIDTH = 1600;
constexpr std::size_t USUAL_HEIGHT = 1000;

[[noreturn]] void refuseExport(const ExportedDisplay& exported, const std::string& what) {
    throw VeltraniException(fromUtf8OrBytes(exported.manifestPath() + ": " + what));
}

std::shared_ptr<const ScreenGeometry> currentScreen() {
    auto screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        throw VeltraniException(L"The display has no screen that light could fall on: add a Screen element");
    }
    return screen;
}

std::vector<ChannelChoice> channelsOf(const XMLConfigManager& config) {
    std::vector<ChannelChoice> channels;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        if (const ProjectorConfig* const projector = config.getProjectorConfig(id)) {
            channels.push_back({channels.size(), projector});
        }
    }
    return channels;
}

/// That of the first eye.
const ExportedChannelView& viewOf(const ExportedDisplay& exported, const ChannelChoice& channel) {
    const std::string id = toUtf8(channel.projector->getIdentity());
    const auto& views = exported.views();
    const auto found = std::find_if(views.begin(), views.end(), [&id](const ExportedChannelView& view) {
        return view.eyeNumber == 1 && view.projectorId == id;
    });
    if (found == views.end()) {
        refuseExport(exported, "has nothing of " + channel.describe() +
                                   ", a channel of the display: export all of its channels, without --channel");
    }
    const Point<int, 2> size = channel.pictureSize();
    if (size != found->pixels) {
        const auto text = [](const Point<int, 2>& pixels) {
            return std::to_string(pixels[0]) + " x " + std::to_string(pixels[1]) + " pixels";
        };
        refuseExport(exported, channel.describe() + ": found pictures of " + text(found->pixels) + ", expected " +
                                   text(size) + ", the resolution of the channel: export the display again");
    }
    return *found;
}

void requireKnown(const ExportedDisplay& exported, const std::vector<ChannelChoice>& channels) {
    for (const ExportedChannelView& view : exported.views()) {
        const bool isKnown = std::any_of(channels.begin(), channels.end(), [&view](const ChannelChoice& channel) {
            return toUtf8(channel.projector->getIdentity()) == view.projectorId;
        });
        if (!isKnown) {
            refuseExport(exported, "has " + view.describe() +
                                       ", and the display has no such channel: name an export of this display");
        }
    }
}

}  // namespace

struct LightSum::Parts {
    Parts(const XMLConfigManager& managed, ExportedDisplay display)
        : config(managed), exported(std::move(display)), surface(currentScreen()) {
        const std::vector<ChannelChoice> all = channelsOf(config);
        requireKnown(exported, all);
        for (const ChannelChoice& channel : all) {
            channels.push_back(channel);
            views.push_back(&viewOf(exported, channel));
        }
    }

    const XMLConfigManager& config;
    ExportedDisplay exported;
    std::shared_ptr<const ScreenGeometry> surface;
    std::vector<ChannelChoice> channels;
    std::vector<const ExportedChannelView*> views;  ///< as many
};

namespace {

/// Whether channels light only what the eye does not see.
SeenSide sideOf(const std::vector<LitChannel>& channels, const EyePlaces& eye,
                std::span<const Point<double, 3>> directions, const EyeView& view) {
    const auto coarse = [](std::size_t side) { return std::max<std::size_t>(side / COARSER, 1); };
    const EyeGrid grid =
        EyeGrid::of(EyeView::around(view.frame().eye, directions, coarse(view.width()), coarse(view.height())), eye);
    const auto isLitFrom = [&](SeenSide side) {
        return std::any_of(channels.begin(), channels.end(), [&](const LitChannel& channel) {
            std::vector<FoundPlace> found;
            channel.finder().find(grid, side, found);
            return std::any_of(found.begin(), found.end(), [](const FoundPlace& place) { return place.isLit; });
        });
    };
    return !isLitFrom(SeenSide::LIT) && isLitFrom(SeenSide::BEHIND) ? SeenSide::BEHIND : SeenSide::LIT;
}

/// The places whose light arrives from that side; false when there are none.
bool keepSide(const std::vector<FoundPlace>& found, int side, std::vector<FoundPlace>& kept) {
    const auto isOf = [side](const FoundPlace& place) { return place.isLit && place.side == side; };
    if (std::none_of(found.begin(), found.end(), isOf)) {
        return false;
    }
    kept.resize(found.size());
    std::transform(found.begin(), found.end(), kept.begin(),
                   [&isOf](const FoundPlace& place) { return isOf(place) ? place : FoundPlace(); });
    return true;
}

void addNotes(const std::vector<LitChannel>& channels, SeenSide side, LitDisplay& display) {
    const auto hasBlend = [](const LitChannel& channel) { return channel.view().blend.has_value(); };
    if (std::none_of(channels.begin(), channels.end(), hasBlend)) {
        display.notes.emplace_back("the export has no blends: where pictures overlap their light adds up as it is");
    }
    if (side == SeenSide::BEHIND) {
        display.notes.emplace_back(
            "the eye sees the screen from behind, where no channel reaches: it counts as one for rear projection");
    }
    if (!channels.empty() && channels.front().view().input.kind == DisplayExport::InputKind::FRUSTUM &&
        channels.size() > 1) {
        display.notes.emplace_back(
            "the input is a frustum: each channel shows the whole content, and overlaps show two pictures; export "
            "with another --input for one picture");
    }
}

}  // namespace

LightSum::LightSum(const XMLConfigManager& config, ExportedDisplay exported)
    : m_parts(std::make_unique<const Parts>(config, std::move(exported))) {}

LightSum::~LightSum() = default;

/// The channels of a display, lit.
struct LightSum::Lamps {
    /// @param display receives what is known of it
    Lamps(const Parts& parts, LitDisplay& display) {
        for (std::size_t i = 0; i < parts.channels.size(); ++i) {
            const LitChannel& channel =
                channels.emplace_back(parts.config, parts.channels[i], *parts.views[i], parts.surface);
            directions.insert(directions.end(), channel.directions().begin(), channel.directions().end());
            if (channel.pixel() > display.coarsestPixel) {
                display.coarsestPixel = channel.pixel();
                display.coarsest = parts.channels[i].describe();
            }
        }
        if (directions.empty()) {
            refuseExport(parts.exported, "nothing of the display is lit: see screenmanager check");
        }
        display.curve = parts.views.front()->blend.value_or(ExportFiles::ExportedBlend()).curve;
    }

    [[nodiscard]] EyeView view(std::size_t width, std::size_t height) const {
        return EyeView::around(channels.front().sight().eye(), directions, width, height);
    }
    [[nodiscard]] EyePlaces eye(const Parts& parts) const {
        return {parts.config, parts.channels.front(), parts.surface, channels.front().sight().eye()};
    }

    std::vector<LitChannel> channels;
    std::vector<Point<double, 3>> directions;  ///< from the eye, of what they light
};

LitPicture LightSum::picture(const LightRequest& request) const {
    LitPicture picture;
    Lamps lamps(*m_parts, picture);
    const EyePlaces eye = lamps.eye(*m_parts);
    picture.view = lamps.view(request.width, request.height);
    const SeenSide side = sideOf(lamps.channels, eye, lamps.directions, picture.view);
    addNotes(lamps.channels, side, picture);
    const EyeGrid grid = EyeGrid::of(picture.view, eye);
    picture.places.resize(grid.places.size());
    for (std::size_t i = 0; i < grid.places.size(); ++i) {
        picture.places[i].isOnScreen = grid.places[i].isSeen;
    }
    std::vector<FoundPlace> found;
    for (std::size_t i = 0; i < lamps.channels.size(); ++i) {
        LitChannel& channel = lamps.channels[i];
        channel.finder().find(grid, side, found);
        channel.addLight(m_parts->exported, grid, found, request.isSharp, picture.places);
        if (request.hasErrors) {
            channel.compare(m_parts->exported, grid, found, picture.coarsestPixel, picture.places);
        }
        if (request.progress) {
            request.progress(i + 1, lamps.channels.size());
        }
    }
    return picture;
}

LitSurface LightSum::surface(std::size_t mostPlaces, const DisplayReport::Progress& progress) const {
    LitSurface surface;
    Lamps lamps(*m_parts, surface);
    const SeenSide side =
        sideOf(lamps.channels, lamps.eye(*m_parts), lamps.directions, lamps.view(USUAL_WIDTH, USUAL_HEIGHT));
    addNotes(lamps.channels, side, surface);
    surface.chart = SurfaceChart::of(m_parts->surface, mostPlaces);
    const PlaceGrid& grid = surface.chart.grid;
    std::vector<FoundPlace> found;
    std::vector<FoundPlace> ofSide;
    for (std::size_t i = 0; i < lamps.channels.size(); ++i) {
        LitChannel& channel = lamps.channels[i];
        channel.finderForPlaces(!grid.parameters.empty())->findPlaces(grid, side, found);
        for (const int arriving : {-1, 0, 1}) {
            if (!keepSide(found, arriving, ofSide)) {
                continue;
            }
            const int seen = side == SeenSide::LIT ? arriving : -arriving;
            const std::span<LitPlace> places = surface.side(seen);
            channel.addLight(m_parts->exported, grid, ofSide, false, places);
            channel.compare(m_parts->exported, grid, ofSide, surface.coarsestPixel, places);
        }
        if (progress) {
            progress(i + 1, lamps.channels.size());
        }
    }
    surface.mergeSides();
    return surface;
}

}  // namespace Veltrani::DisplayLight
