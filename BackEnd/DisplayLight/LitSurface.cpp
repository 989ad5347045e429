#include "DisplayLight/LitSurface.h"

#include "Common/QuotedText.h"
#include "DisplayLight/LitReport.h"
#include "DisplayReport/basics/NumberText.h"

#include <algorithm>

namespace Veltrani::DisplayLight {

namespace {

using DisplayReport::PngPicture;
using LitColours::Colour;

constexpr std::size_t PARTS = 3;

/// A picture of the places of one side.
template <class ColourOf>
PngPicture painted(const SurfaceChart& chart, const std::vector<LitPlace>& places, const ColourOf& colourOf) {
    PngPicture picture{chart.grid.width, chart.grid.rows(), std::vector<unsigned char>(PARTS * places.size())};
    const auto at = [&picture](std::size_t place) { return picture.colours.data() + PARTS * place; };
    for (std::size_t i = 0; i < places.size(); ++i) {
        // What shows nothing stays black, which takes no room in the file.
        if (places[i].isOnScreen) {
            const Colour colour = colourOf(places[i]);
            std::copy(colour.begin(), colour.end(), at(i));
        }
    }
    for (const auto& [place, one, other] : chart.seams) {
        for (std::size_t part = 0; part < PARTS; ++part) {
            at(place)[part] = static_cast<unsigned char>((at(one)[part] + at(other)[part] + 1) / 2);
        }
    }
    return picture;
}

void add(const LitPlace& more, LitPlace& place) {
    for (std::size_t part = 0; part < place.light.size(); ++part) {
        place.light[part] += more.light[part];
    }
    place.weight += more.weight;
    place.shift = std::max(place.shift, more.shift);
    place.channels = static_cast<std::uint16_t>(place.channels + more.channels);
    place.lacksContent = place.lacksContent || more.lacksContent;
}

}  // namespace

std::vector<LitPlace>& LitSurface::side(int seen) {
    const auto [entry, isNew] = sides.try_emplace(seen);
    if (isNew) {
        entry->second.resize(chart.grid.places.size());
        for (std::size_t i = 0; i < entry->second.size(); ++i) {
            entry->second[i].isOnScreen = chart.grid.places[i].isSeen;
        }
    }
    return entry->second;
}

void LitSurface::mergeSides() {
    const auto both = sides.find(0);
    if (sides.empty()) {
        static_cast<void>(side(0));
    }
    if (both == sides.end() || sides.size() == 1) {
        return;
    }
    for (const int seen : {-1, 1}) {
        std::vector<LitPlace>& places = side(seen);
        for (std::size_t i = 0; i < places.size(); ++i) {
            add(both->second[i], places[i]);
        }
    }
    sides.erase(both);
}

DisplayReport::SceneLight LitSurface::scene(const std::string& unit) const {
    DisplayReport::SceneLight scene;
    scene.vertices = chart.vertices;
    scene.coordinates = chart.coordinates;
    scene.triangles = chart.triangles;
    std::vector<LitPlace> all;
    for (const auto& [seen, places] : sides) {
        scene.sides.push_back(
            {seen, painted(chart, places, [this](const LitPlace& place) { return LitColours::shown(place, curve); }),
             painted(chart, places, LitColours::shift), painted(chart, places, LitColours::unevenness)});
        all.insert(all.end(), places.begin(), places.end());
    }
    scene.facts = {std::to_string(chart.grid.width) + " x " + std::to_string(chart.grid.rows()) +
                   " places, one every " + DisplayReport::significantText(chart.step) + (unit.empty() ? "" : " ") +
                   onOneLine(unit) + ": what is smaller is shown as its mean"};
    const std::vector<std::string> lines = LitReport::linesOf(LitFigures::of(all), *this, unit);
    scene.facts.insert(scene.facts.end(), lines.begin(), lines.end());
    return scene;
}

}  // namespace Veltrani::DisplayLight
