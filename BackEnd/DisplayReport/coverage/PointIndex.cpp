#include "DisplayReport/coverage/PointIndex.h"

#include <nanoflann.hpp>

#include <cmath>
#include <utility>

namespace Veltrani::DisplayReport {

/// The points, in the terms of the library that searches them.
struct PointIndex::Tree {
    explicit Tree(std::vector<Point<double, 3>> all) : points(std::move(all)) {}

    [[nodiscard]] std::size_t kdtree_get_point_count() const { return points.size(); }
    [[nodiscard]] double kdtree_get_pt(std::size_t i, std::size_t axis) const { return points[i][axis]; }
    /// The library finds the box itself.
    template <class Box>
    bool kdtree_get_bbox(Box& /*box*/) const {
        return false;
    }

    using Distance = nanoflann::L2_Simple_Adaptor<double, Tree, double, std::size_t>;
    using Search = nanoflann::KDTreeSingleIndexAdaptor<Distance, Tree, 3, std::size_t>;

    std::vector<Point<double, 3>> points;
    Search search{3, *this};
};

PointIndex::PointIndex(std::vector<Point<double, 3>> points) : m_tree(std::make_unique<Tree>(std::move(points))) {}

PointIndex::~PointIndex() = default;

std::optional<std::size_t> PointIndex::nearest(const Point<double, 3>& place) const {
    if (m_tree->points.empty() || !std::isfinite(norm(place))) {
        return std::nullopt;
    }
    std::size_t found = 0;
    double squared = 0;
    nanoflann::KNNResultSet<double, std::size_t> one(1);
    one.init(&found, &squared);
    m_tree->search.findNeighbors(one, &place[0], nanoflann::SearchParams());
    return found;
}

const Point<double, 3>& PointIndex::operator[](std::size_t i) const {
    return m_tree->points[i];
}

}  // namespace Veltrani::DisplayReport
