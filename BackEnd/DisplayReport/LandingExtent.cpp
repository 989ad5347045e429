#include "DisplayReport/LandingExtent.h"

#include "DisplayReport/ChannelLight.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

constexpr std::size_t COLUMNS = 128;
constexpr std::size_t ROWS = 80;

}  // namespace

Extent landingExtentOf(const ChannelLight& light) {
    Extent extent;
    std::vector<Point<double, 2>> picture(COLUMNS + 1);
    std::vector<ChannelLight::Landing> landings(COLUMNS + 1);
    for (std::size_t row = 0; row <= ROWS; ++row) {
        for (std::size_t column = 0; column <= COLUMNS; ++column) {
            picture[column] = {static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS};
        }
        light.land(picture, landings);
        for (const ChannelLight::Landing& landing : landings) {
            if (landing.hits) {
                extent.add(landing.on.place);
            }
        }
    }
    return extent;
}

}  // namespace Veltrani::DisplayReport
