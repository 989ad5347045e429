#include "DisplayLight/EyeView.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Veltrani::DisplayLight {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr double PI = std::numbers::pi;
/// Of the picture, on each side.
constexpr double MARGIN = 0.02;
/// Below that, directions all around cancel out.
constexpr double LEAST_MEAN = 1e-3;

P3 meanOf(std::span<const P3> directions) {
    P3 sum;
    for (const P3& direction : directions) {
        const double length = norm(direction);
        sum += length > 0 ? direction * (1 / length) : P3();
    }
    return norm(sum) > LEAST_MEAN * static_cast<double>(directions.size()) ? sum : P3{0.0, 1.0, 0.0};
}

double angleBetween(const P3& a, const P3& b) {
    return std::atan2(norm(cross(a, b)), dot(a, b));
}

/// A panorama stands upright; where its middle is, seen from above, is all that the mean determines.
P3 levelled(const P3& direction) {
    const P3 level{direction[0], direction[1], 0.0};
    return norm(level) > LEAST_MEAN * norm(direction) ? level : P3{0.0, 1.0, 0.0};
}

}  // namespace

EyeView EyeView::around(const P3& eye, std::span<const P3> directions, std::size_t width, std::size_t height) {
    EyeView view;
    view.m_width = width;
    view.m_height = height;
    P3 mean = meanOf(directions);
    double widest = 0;
    for (const P3& direction : directions) {
        widest = std::max(widest, angleBetween(mean, direction));
    }
    view.m_kind = widest <= WIDEST_FLAT ? Kind::FLAT : widest <= WIDEST_FISHEYE ? Kind::FISHEYE : Kind::PANORAMA;
    mean = view.m_kind == Kind::PANORAMA ? levelled(mean) : mean;
    view.m_frame = DisplayExport::ViewFrame::looking(eye, mean);
    P2 lower;
    P2 upper;
    for (const P3& direction : directions) {
        if (const auto even = view.evenOf(view.m_frame.inFrame(direction))) {
            for (std::size_t i = 0; i < 2; ++i) {
                lower[i] = std::min(lower[i], (*even)[i]);
                upper[i] = std::max(upper[i], (*even)[i]);
            }
        }
    }
    if (view.m_kind == Kind::PANORAMA) {
        lower[0] = -PI;
        upper[0] = PI;
    }
    const P2 size{static_cast<double>(width), static_cast<double>(height)};
    // Of a panorama the whole turn fills the width, so that what lies on its seam is shown once.
    const double across = view.m_kind == Kind::PANORAMA ? 1 : 1 - 2 * MARGIN;
    view.m_scale = std::min(across * size[0] / std::max(upper[0] - lower[0], LEAST_MEAN),
                            (1 - 2 * MARGIN) * size[1] / std::max(upper[1] - lower[1], LEAST_MEAN));
    view.m_middle = size * 0.5 - (lower + upper) * (0.5 * view.m_scale);
    return view;
}

std::optional<P2> EyeView::evenOf(const P3& seen) const {
    const double aside = std::hypot(seen[0], seen[2]);
    if (!(aside > 0 || std::abs(seen[1]) > 0)) {
        return std::nullopt;
    }
    switch (m_kind) {
        case Kind::FLAT:
            return seen[1] > 0 ? std::optional(P2{seen[0] / seen[1], seen[2] / seen[1]}) : std::nullopt;
        case Kind::FISHEYE: {
            const double perUnit = aside > 0 ? std::atan2(aside, seen[1]) / aside : 0;
            return P2{perUnit * seen[0], perUnit * seen[2]};
        }
        case Kind::PANORAMA:
            break;
    }
    return P2{std::atan2(seen[0], seen[1]), std::atan2(seen[2], std::hypot(seen[0], seen[1]))};
}

std::optional<P3> EyeView::directionOf(const P2& place) const {
    const P2 even = (place - m_middle) * (1 / m_scale);
    switch (m_kind) {
        case Kind::FLAT:
            return m_frame.inWorld({even[0], 1.0, even[1]});
        case Kind::FISHEYE: {
            const double angle = norm(even);
            if (!(angle <= PI)) {
                return std::nullopt;
            }
            const double perUnit = angle > 0 ? std::sin(angle) / angle : 1;
            return m_frame.inWorld({perUnit * even[0], std::cos(angle), perUnit * even[1]});
        }
        case Kind::PANORAMA:
            break;
    }
    if (!(std::abs(even[0]) <= PI && std::abs(even[1]) <= PI / 2)) {
        return std::nullopt;
    }
    const double level = std::cos(even[1]);
    return m_frame.inWorld({level * std::sin(even[0]), level * std::cos(even[0]), std::sin(even[1])});
}

std::optional<P2> EyeView::placeOf(const P3& direction) const {
    const std::optional<P2> even = evenOf(m_frame.inFrame(direction));
    return even ? std::optional(m_middle + *even * m_scale) : std::nullopt;
}

double EyeView::turn() const {
    return m_kind == Kind::PANORAMA ? 2 * PI * m_scale : 0;
}

}  // namespace Veltrani::DisplayLight
