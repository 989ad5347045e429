#pragma once

#include "KelvoControl/ProjectionModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

/// How a whole picture went through a model and back.
struct RoundTrip {
    int mapped = 0;
    int refused = 0;
    double worstPicture = 0;    ///< (u, v) -> direction -> layout point -> (u, v)
    double worstDirection = 0;  ///< and once more to the direction, as a unit vector

    /// Grid points over the whole picture, its edges and corners included; the layout points lie at various distances.
    explicit RoundTrip(const ProjectionModel& model, int steps = 40) {
        for (int row = 0; row <= steps; ++row) {
            for (int column = 0; column <= steps; ++column) {
                const Point<double, 2> uv{static_cast<double>(column) / steps, static_cast<double>(row) / steps};
                follow(model, uv, 0.5 + 0.1 * ((row * 7 + column) % 50));
            }
        }
    }

private:
    void follow(const ProjectionModel& model, const Point<double, 2>& uv, double distance) {
        Point<double, 3> direction;
        if (!model.unproject(uv, direction)) {
            ++refused;
            return;
        }
        ++mapped;
        const Point<double, 3> unit = direction * (1 / norm(direction));
        Point<double, 2> back;
        ASSERT_TRUE(model.projectNormalised(model.viewport().position + unit * distance, back))
            << uv[0] << " " << uv[1];
        worstPicture = std::max({worstPicture, std::abs(back[0] - uv[0]), std::abs(back[1] - uv[1])});
        Point<double, 3> again;
        ASSERT_TRUE(model.unproject(back, again)) << uv[0] << " " << uv[1];
        worstDirection = std::max(worstDirection, norm(again * (1 / norm(again)) - unit));
    }
};
