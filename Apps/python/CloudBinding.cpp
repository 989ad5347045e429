#include "Arrays.h"
#include "Bindings.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <memory>

namespace py = pybind11;

namespace {

py::object cloud(DisplayState& display) {
    const std::shared_ptr<const Screen::PointCloud> points = inEntry(&display, [&] { return display.cloud(); });
    if (!points) {
        return py::none();
    }
    ResultRows<float> rows({static_cast<py::ssize_t>(points->size()), 3});
    for (std::size_t i = 0; i < points->size(); ++i) {
        const pcl::PointXYZ& point = (*points)[i];
        rows.set(i, Point<float, 3>{point.x, point.y, point.z});
    }
    return rows.array();
}

}  // namespace

void bindClouds(DisplayClass& display) {
    display.def("cloud", &cloud);
}
