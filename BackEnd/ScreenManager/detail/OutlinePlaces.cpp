#include "ScreenManager/detail/OutlinePlaces.h"

#include <cstdint>

namespace Veltrani::ScreenManagerDetail {

namespace {

using Places = std::vector<Point<double, 2>>;

/// Added up, not multiplied out, from here to the last of these two functions: whether an edge gets a sample at its far
/// end depends on the rounding of the sum.
template <class Place>
void walkUp(double step, Places& border, Place&& place) {
    double t = 0.0;
    do {
        border.push_back(place(t));
        t += step;
    } while (t < 1.0);
}

template <class Place>
void walkDown(double step, Places& border, Place&& place) {
    double t = 1.0;
    do {
        border.push_back(place(t));
        t -= step;
    } while (t > 0.0);
}

}  // namespace

std::vector<Point<double, 2>> borderOfPicture(int samplesPerEdge) {
    using Normalised = Point<double, 2>;
    Places border;
    if (samplesPerEdge <= 0) {
        return border;
    }
    const double step = 1.0 / samplesPerEdge;
    walkUp(step, border, [](double t) { return Normalised{t, 0.0}; });
    walkUp(step, border, [](double t) { return Normalised{1.0, t}; });
    walkDown(step, border, [](double t) { return Normalised{t, 1.0}; });
    walkDown(step, border, [](double t) { return Normalised{0.0, t}; });
    return border;
}

std::vector<Point<double, 2>> borderOfPixels(const Point<int, 2>& resolution, int samplesPerEdge) {
    // Calculated in wide integers: a step past the last pixel may leave the range of an int.
    const std::int64_t width = resolution[0];
    const std::int64_t height = resolution[1];
    const std::int64_t stepX = samplesPerEdge > 1 ? width / (std::int64_t{samplesPerEdge} - 1) : 0;
    const std::int64_t stepY = samplesPerEdge > 1 ? height / (std::int64_t{samplesPerEdge} - 1) : 0;
    Places border;
    if (stepX < 1 || stepY < 1) {
        return border;  // an edge that makes no step would never end
    }
    for (std::int64_t x = 0; x < width; x += stepX) {
        border.emplace_back(x, 0);
    }
    for (std::int64_t y = 0; y < height; y += stepY) {
        border.emplace_back(width - 1, y);
    }
    for (std::int64_t x = width - 1; x >= 0; x -= stepX) {
        border.emplace_back(x, height - 1);
    }
    for (std::int64_t y = height - 1; y >= 0; y -= stepY) {
        border.emplace_back(0, y);
    }
    return border;
}

}  // namespace Veltrani::ScreenManagerDetail
