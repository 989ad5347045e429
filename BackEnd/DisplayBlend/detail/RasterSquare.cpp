#include "DisplayBlend/detail/RasterSquare.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

namespace {

/// By what part the share of a channel changes when its place moves by `way` is at most this times `way p^(1/2)`: next
/// to a long edge, where p is 1 / d^2, it is 2; next to the end of one it is 4.
constexpr double STEEPEST = 4.0;
/// How far a place is off between two corners, at most, as a multiple of what the middle corner of three is off from
/// the middle of the outer ones: with a kink next to one of the three, twice. Without a kink it is a quarter.
constexpr double AT_A_KINK = 2.0;

/// How far the corners between those at the ends of their rows and columns are from the middles of these, at most.
template <class At>
double offMiddles(const At& at) {
    const auto off = [&at](std::size_t column, std::size_t row, std::size_t right, std::size_t up) {
        return norm(at(column, row) - (at(column - right, row - up) + at(column + right, row + up)) * 0.5);
    };
    return std::max({off(1, 0, 1, 0), off(1, 2, 1, 0), off(0, 1, 0, 1), off(2, 1, 0, 1), off(1, 1, 1, 0)});
}

/// A channel that lights a square.
struct Lighting {
    std::size_t channel = 0;
    double off = 0;  ///< native units: how far its places may be off
};

/// How much the weight of the first one of several changes when they are off by so much.
double changeOf(const std::vector<double>& shares, const std::vector<double>& parts) {
    double sum = 0;
    double change = 0;
    for (std::size_t i = 0; i < shares.size(); ++i) {
        sum += shares[i];
    }
    for (std::size_t i = 0; i < shares.size() && sum > 0.0; ++i) {
        const double weight = i == 0 ? 1 - shares[0] / sum : shares[i] / sum;
        change += shares[0] / sum * weight * parts[i];
    }
    return change;
}

}  // namespace

double RasterSquare::weightOff(const ChannelFields& fields, std::size_t channel,
                               std::span<const std::size_t> lighting) const {
    const auto cornerAt = [this](std::size_t column, std::size_t row) -> const RasterCorner& {
        return corners[row * SIDE + column];
    };
    // Only the edges of shadows are measured from the places themselves.
    const bool hasShadows =
        fields.hasShadows(channel) || std::any_of(lighting.begin(), lighting.end(),
                                                  [&fields](std::size_t other) { return fields.hasShadows(other); });
    const double placesOff =
        hasShadows ? offMiddles([&](std::size_t column, std::size_t row) { return cornerAt(column, row).place(); })
                   : 0.0;
    std::vector<Lighting> all{{channel, fields.hasShadows(channel) ? placesOff : 0.0}};
    for (const std::size_t other : lighting) {
        const P2& size = fields.pictureSize(other);
        const double off = offMiddles([&](std::size_t column, std::size_t row) {
            const P2& picture = cornerAt(column, row).reach(other).picture;
            return P2{picture[0] * size[0], picture[1] * size[1]};
        });
        all.push_back({other, off + (fields.hasShadows(other) ? placesOff : 0.0)});
    }
    double most = 0;
    std::vector<double> shares;
    std::vector<double> parts;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        shares.clear();
        parts.clear();
        for (const Lighting& one : all) {
            const std::size_t column = i % SIDE;
            const std::size_t row = i / SIDE;
            const P2 picture = one.channel == channel
                                   ? P2{x[column] / fields.pixels(channel)[0], y[row] / fields.pixels(channel)[1]}
                                   : corners[i].reach(one.channel).picture;
            const double potential = fields.potential(one.channel, picture, corners[i].place());
            shares.push_back(isInPicture(picture) ? fields.shareOf(one.channel, potential) : 0.0);
            parts.push_back(shares.back() > 0.0 ? STEEPEST * AT_A_KINK * one.off * std::sqrt(potential) : 0.0);
        }
        most = std::max(most, changeOf(shares, parts));
    }
    return most;
}

}  // namespace Veltrani::DisplayBlendDetail
