#include "DisplayReport/coverage/LandingExtent.h"

#include "DisplayReport/coverage/ChannelLight.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

constexpr std::size_t COLUMNS = 128;
constexpr std::size_t ROWS = 80;

using Landings = std::vector<ChannelLight::Landing>;

/// The way from one landing to the next; nothing where one of them misses.
double wayBetween(const ChannelLight::Landing& from, const ChannelLight::Landing& to) {
    return from.hits && to.hits ? norm(to.on.place - from.on.place) : 0.0;
}

void landRow(const ChannelLight& light, std::size_t row, std::vector<Point<double, 2>>& picture, Landings& landings) {
    for (std::size_t column = 0; column <= COLUMNS; ++column) {
        picture[column] = {static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS};
    }
    light.land(picture, landings);
}

}  // namespace

LandingExtent LandingExtent::of(const ChannelLight& light) {
    LandingExtent extent;
    std::vector<Point<double, 2>> picture(COLUMNS + 1);
    Landings below(COLUMNS + 1);
    Landings here(COLUMNS + 1);
    std::vector<double> heights(COLUMNS + 1);
    double width = 0;
    for (std::size_t row = 0; row <= ROWS; ++row) {
        landRow(light, row, picture, here);
        double widthOfRow = 0;
        for (std::size_t column = 0; column <= COLUMNS; ++column) {
            widthOfRow += column > 0 ? wayBetween(here[column - 1], here[column]) : 0.0;
            heights[column] += row > 0 ? wayBetween(below[column], here[column]) : 0.0;
            if (here[column].hits) {
                extent.box.add(here[column].on.place);
            }
        }
        width = std::max(width, widthOfRow);
        below.swap(here);
    }
    extent.narrow = std::min(width, *std::max_element(heights.begin(), heights.end()));
    return extent;
}

}  // namespace Veltrani::DisplayReport
