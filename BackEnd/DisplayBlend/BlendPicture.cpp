#include "DisplayBlend/BlendPicture.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veltrani::DisplayBlend {

namespace {

/// Two neighbours along one side of a picture, and the part of the second one.
struct Neighbours {
    std::size_t first;
    std::size_t second;
    double part;

    Neighbours(double place, std::size_t count) {
        const double last = static_cast<double>(count) - 1;
        const double middle = std::clamp(place * static_cast<double>(count) - 0.5, 0.0, last);
        first = static_cast<std::size_t>(middle);
        second = std::min(first + 1, count - 1);
        part = middle - static_cast<double>(first);
    }
};

template <class Code>
std::vector<Code> codes(const BlendPicture& picture, const BlendCurve& curve, BlendUse use) {
    constexpr double WHITE = std::numeric_limits<Code>::max();
    std::vector<Code> all(picture.light.size());
    float last = 0;
    Code code = 0;
    bool isKnown = false;
    for (std::size_t row = 0; row < picture.height; ++row) {
        Code* to = all.data() + (picture.height - 1 - row) * picture.width;
        for (std::size_t column = 0; column < picture.width; ++column) {
            // Most pixels are as their neighbours: all white.
            if (const float light = picture.at(column, row); !isKnown || light != last) {
                const double value = curve.codeOf(light);
                code = static_cast<Code>(std::lround(WHITE * (use == BlendUse::ALPHA ? 1 - value : value)));
                last = light;
                isKnown = true;
            }
            *to++ = code;
        }
    }
    return all;
}

}  // namespace

double BlendPicture::between(const Point<double, 2>& picture) const {
    if (light.empty() || !(picture[0] == picture[0] && picture[1] == picture[1])) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const Neighbours u(picture[0], width);
    const Neighbours v(picture[1], height);
    const double below = at(u.first, v.first) * (1 - u.part) + at(u.second, v.first) * u.part;
    const double above = at(u.first, v.second) * (1 - u.part) + at(u.second, v.second) * u.part;
    return below * (1 - v.part) + above * v.part;
}

std::vector<std::uint16_t> BlendPicture::codes16(const BlendCurve& curve, BlendUse use) const {
    return codes<std::uint16_t>(*this, curve, use);
}

std::vector<std::uint8_t> BlendPicture::codes8(const BlendCurve& curve, BlendUse use) const {
    return codes<std::uint8_t>(*this, curve, use);
}

}  // namespace Veltrani::DisplayBlend
