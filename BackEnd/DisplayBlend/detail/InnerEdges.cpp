#include "DisplayBlend/detail/InnerEdges.h"

#include <algorithm>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

namespace {

constexpr int STEP = 8;  // pixels
/// Of a step, until its end is known to far less than a pixel.
constexpr int HALVINGS = 24;
/// A part of the side: its very ends lie on two sides, and rounding may put them beside the screen.
constexpr double END = 1e-6;
/// A part of the side, more than edges that count as the same lie apart: an outline that does not go on as far beside a
/// border ends with it, at the corner of the picture or where the screen ends.
constexpr double BESIDE = 1e-5;

P2 placeOn(EdgeField::Side side, double along) {
    switch (side) {
        case EdgeField::LEFT:
            return {0.0, along};
        case EdgeField::RIGHT:
            return {1.0, along};
        case EdgeField::BOTTOM:
            return {along, 0.0};
        case EdgeField::TOP:
            return {along, 1.0};
    }
    return {};
}

/// One side of one picture.
class PictureSide {
public:
    PictureSide(const PlaceSampler& sampler, std::size_t channel, EdgeField::Side side)
        : m_sampler(sampler), m_channel(channel), m_side(side) {}

    /// Whether each place lies inside another picture.
    std::vector<bool> areInner(const std::vector<double>& places) {
        std::vector<P2> picture;
        for (const double along : places) {
            picture.push_back(placeOn(m_side, along));
        }
        m_sampler.sample(m_channel, picture, m_samples);
        std::vector<bool> inner;
        for (std::size_t i = 0; i < places.size(); ++i) {
            bool isInner = false;
            for (std::size_t other = 0; other < m_samples.reaches.size() && !isInner; ++other) {
                isInner = other != m_channel && m_samples.lands(i) && m_samples.isInside(other, i);
            }
            inner.push_back(isInner);
        }
        return inner;
    }

    [[nodiscard]] bool lands(double along) const {
        const P2 picture = placeOn(m_side, along);
        return m_sampler.land(m_channel, {&picture, 1}).front().hits;
    }

    /// Where it changes between two places of which the first one is as stated, and the second one is not.
    double border(double from, double to, bool isInner) {
        for (int i = 0; i < HALVINGS; ++i) {
            const double middle = (from + to) / 2;
            (areInner({middle}).front() == isInner ? from : to) = middle;
        }
        return (from + to) / 2;
    }

private:
    const PlaceSampler& m_sampler;
    std::size_t m_channel;
    EdgeField::Side m_side;
    PlaceSamples m_samples;
};

}  // namespace

std::vector<P2> addInnerSides(const PlaceSampler& sampler, std::size_t channel, const Point<int, 2>& pixels,
                              EdgeField& field) {
    std::vector<P2> crossings;
    for (const EdgeField::Side side : {EdgeField::LEFT, EdgeField::RIGHT, EdgeField::BOTTOM, EdgeField::TOP}) {
        const int length = side == EdgeField::LEFT || side == EdgeField::RIGHT ? pixels[1] : pixels[0];
        const int steps = std::max(2, length / STEP);
        std::vector<double> places;
        for (int i = 0; i <= steps; ++i) {
            places.push_back(std::clamp(static_cast<double>(i) / steps, END, 1 - END));
        }
        PictureSide own(sampler, channel, side);
        const std::vector<bool> inner = own.areInner(places);
        double start = 0;
        for (std::size_t i = 1; i < places.size(); ++i) {
            if (inner[i] == inner[i - 1]) {
                continue;
            }
            const double border = own.border(places[i - 1], places[i], inner[i - 1]);
            if (inner[i - 1]) {
                field.addSide(side, start, border);
            }
            const bool isAtACorner = std::min(border, 1 - border) < BESIDE;
            if (!isAtACorner && own.lands(inner[i] ? border - BESIDE : border + BESIDE)) {
                crossings.push_back(placeOn(side, border));
            }
            start = border;
        }
        if (inner.back()) {
            field.addSide(side, start, 1);
        }
    }
    return crossings;
}

}  // namespace Veltrani::DisplayBlendDetail
