#pragma once

#include "Common/Point.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// The screen coordinates of places on a surface, by Newton's method on `mapInto3D` alone.
class ScreenCoordinates {
public:
    using P2 = Point<double, 2>;
    using P3 = Point<double, 3>;

    /// @param surface not null
    explicit ScreenCoordinates(std::shared_ptr<const ScreenGeometry> surface) : m_surface(std::move(surface)) {
        for (std::size_t row = 0; row <= ROWS; ++row) {
            for (std::size_t column = 0; column <= COLUMNS; ++column) {
                const P2 st{static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS};
                P3 point;
                if (m_surface->mapInto3D(st, point, false)) {
                    m_nodes.emplace_back(st, point);
                }
            }
        }
        m_same = SAME * norm(m_nodes.back().second - m_nodes.front().second);
    }

    /// None where it does not arrive. Places beside each other are best looked for one after the other.
    std::optional<P2> of(const P3& place) {
        auto found = from(m_last, place);
        if (!found) {
            const auto nearest = std::min_element(m_nodes.begin(), m_nodes.end(), [&](const auto& a, const auto& b) {
                return norm(a.second - place) < norm(b.second - place);
            });
            found = from(nearest->first, place);
        }
        m_last = found.value_or(m_last);
        return found;
    }

private:
    // Kinks of a screen lie at simple parts of it: none of the nodes does.
    static constexpr std::size_t COLUMNS = 97;
    static constexpr std::size_t ROWS = 47;
    static constexpr int MOST_STEPS = 20;
    static constexpr double SAME = 1e-9;  ///< of the size of the screen: rounding
    static constexpr double STEP = 1e-6;  ///< of a derivative

    [[nodiscard]] std::optional<P2> from(P2 st, const P3& place) const {
        for (int i = 0; i < MOST_STEPS; ++i) {
            P3 here;
            if (!m_surface->mapInto3D(st, here, false)) {
                return std::nullopt;
            }
            const P3 rest = place - here;
            if (norm(rest) <= m_same) {
                return st;
            }
            const auto alongS = along(st, here, 0);
            const auto alongT = along(st, here, 1);
            const double ss = dot(alongS, alongS);
            const double tt = dot(alongT, alongT);
            const double between = dot(alongS, alongT);
            const double area = ss * tt - between * between;
            if (!(area > 0)) {
                return std::nullopt;
            }
            st[0] += (tt * dot(alongS, rest) - between * dot(alongT, rest)) / area;
            st[1] += (ss * dot(alongT, rest) - between * dot(alongS, rest)) / area;
            st = {std::clamp(st[0], 0.0, 1.0), std::clamp(st[1], 0.0, 1.0)};
        }
        return std::nullopt;
    }

    /// The derivative, towards the middle of the screen; zero where the surface ends.
    [[nodiscard]] P3 along(P2 st, const P3& here, std::size_t axis) const {
        const double step = st[axis] > 0.5 ? -STEP : STEP;
        st[axis] += step;
        P3 there;
        return m_surface->mapInto3D(st, there, false) ? (there - here) * (1 / step) : P3();
    }

    std::shared_ptr<const ScreenGeometry> m_surface;
    std::vector<std::pair<P2, P3>> m_nodes;
    double m_same = 0;
    P2 m_last{0.5, 0.5};
};
