#include "DisplayExport/PlaceFit.h"

#include "DisplayExport/ContentInput.h"

#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Places that are looked at: so many steps to each side, in so many parts of a step.
constexpr int STEPS = 2;
constexpr int PARTS = 4;

/// A plane through values over offsets from a place, by least squares.
class PlaneThrough {
public:
    void add(const P2& offset, const P3& value) {
        const P3 terms{1.0, offset[0], offset[1]};
        // Nearer places count for more: what is seen bends.
        const double weight = 1 / (1 + std::pow(dot(offset, offset), 2));
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t c = 0; c < 3; ++c) {
                m_products[r][c] += weight * terms[r] * terms[c];
            }
            m_values[r] += weight * terms[r] * value;
        }
    }

    [[nodiscard]] bool isEmpty() const { return !(m_products[0][0] > 0); }

    /// At offset zero. Places on a line leave the slope across it at nearly zero.
    [[nodiscard]] P3 here() const {
        constexpr double RIDGE = 1e-6;
        auto rows = m_products;
        rows[1][1] += RIDGE * rows[0][0];
        rows[2][2] += RIDGE * rows[0][0];
        const P3 first = cross(rows[1], rows[2]);
        const double determinant = dot(rows[0], first);
        const P3 second = cross(rows[2], rows[0]);
        const P3 third = cross(rows[0], rows[1]);
        // The first row of the inverse of a symmetric matrix.
        return (1 / determinant) * (first[0] * m_values[0] + second[0] * m_values[1] + third[0] * m_values[2]);
    }

private:
    std::array<P3, 3> m_products;
    std::array<P3, 3> m_values;
};

/// The places of the picture around one, with their offsets in steps.
std::pair<std::vector<P2>, std::vector<P2>> placesAround(const P2& picture, const P2& step) {
    std::vector<P2> offsets;
    std::vector<P2> places;
    for (int row = -STEPS * PARTS; row <= STEPS * PARTS; ++row) {
        for (int column = -STEPS * PARTS; column <= STEPS * PARTS; ++column) {
            const P2 offset{static_cast<double>(column) / PARTS, static_cast<double>(row) / PARTS};
            const P2 place{picture[0] + offset[0] * step[0], picture[1] + offset[1] * step[1]};
            if (place[0] >= 0 && place[0] <= 1 && place[1] >= 0 && place[1] <= 1) {
                offsets.push_back(offset);
                places.push_back(place);
            }
        }
    }
    return {offsets, places};
}

}  // namespace

SeenPlace PlaceFit::at(const P2& picture, const P2& step, WarpNode& node) const {
    const auto [offsets, places] = placesAround(picture, step);
    std::vector<SeenPlace> seen(places.size());
    m_sight.see(places, seen);
    const bool hasDirections = m_input.kind() != InputKind::LAYOUT && m_input.kind() != InputKind::SCREEN;
    PlaneThrough plane;
    PlaneThrough points;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const std::optional<InputPlace> content = m_input.place(places[i], seen[i]);
        const double length = norm(seen[i].direction);
        if (content) {
            points.add(offsets[i], seen[i].point);
        }
        if (content && hasDirections && length > 0) {
            plane.add(offsets[i], seen[i].direction * (1 / length));
        } else if (content) {
            plane.add(offsets[i], {content->at[0], content->at[1], 0.0});
        }
    }
    SeenPlace result;
    if (plane.isEmpty()) {
        node = WarpNode();
        return result;
    }
    const P3 here = plane.here();
    std::optional<InputPlace> place;
    result.point = points.here();
    if (hasDirections) {
        result.direction = here;
        if (!m_sight.isInMirror()) {
            // A point that is seen in that very direction.
            const double distance = dot(result.point - m_sight.eye(), here) / dot(here, here);
            result.point = m_sight.eye() + distance * here;
        }
        result.isSeen = true;
        place = m_input.placeBeyond(picture, result);
    } else {
        place = InputPlace{{here[0], here[1]}};
    }
    node = place ? WarpNode{place->at, place->face, WarpNode::State::CONTINUED} : WarpNode{};
    return result;
}

}  // namespace Veltrani::DisplayExport
