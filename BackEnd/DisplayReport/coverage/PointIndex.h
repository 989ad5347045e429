#pragma once

#include "Common/Point.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace Veltrani::DisplayReport {

/// Finds the nearest of many points, in a tree that is built once.
class PointIndex {
public:
    /// @param points finite
    explicit PointIndex(std::vector<Point<double, 3>> points);
    ~PointIndex();
    PointIndex(const PointIndex&) = delete;
    PointIndex& operator=(const PointIndex&) = delete;

    /// The place in the list of the point that is nearest; none when there are no points, or for a NaN.
    [[nodiscard]] std::optional<std::size_t> nearest(const Point<double, 3>& place) const;
    [[nodiscard]] const Point<double, 3>& operator[](std::size_t i) const;

private:
    struct Tree;
    std::unique_ptr<Tree> m_tree;
};

}  // namespace Veltrani::DisplayReport
