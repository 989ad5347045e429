#pragma once

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>
#include <Eigen/Geometry>

#include <iosfwd>
#include <memory>
#include <string>

namespace pcl {
struct PCLPointCloud2;
}  // namespace pcl

namespace Veltrani::ScreenManagerDetail {

/// What is done by the shared libraries of the Point Cloud Library, opened with the first cloud.
///
/// Its reader of PCD files brings a visualisation stack of some sixty shared libraries into the process, which most
/// displays never need. The code that calls it is therefore in a module of its own beside the library of this class;
/// the types of clouds are headers alone. The messages of the Point Cloud Library stay off the console: the faults
/// among them are reported by exceptions and results.
class CloudLibrary {
public:
    using Cloud = pcl::PointCloud<pcl::PointXYZ>;

    CloudLibrary() = default;
    CloudLibrary(const CloudLibrary&) = delete;
    CloudLibrary& operator=(const CloudLibrary&) = delete;
    virtual ~CloudLibrary() = default;

    /// Opens the module by its absolute path at the first call; it stays open. Throws `VeltraniException` with the
    /// path, the reason and a remedy when it cannot be opened, `std::bad_alloc` when memory runs out; the next call
    /// tries again.
    [[nodiscard]] static const CloudLibrary& get();

    /// Reads all fields of a binary PCD file as they are; the place of the sensor goes into `sensor`. Returns 0 when
    /// all is right; else `errno` is ENOMEM when memory ran out, and is left alone by the Point Cloud Library
    /// otherwise.
    [[nodiscard]] virtual int read(const std::string& utf8Path, pcl::PCLPointCloud2& points, Cloud& sensor) const = 0;
    /// Reads all fields of a text in the same way. The stream must not fail before its end: the reader would wait for
    /// ever, or repeat a line.
    [[nodiscard]] virtual int readText(std::istream& text, pcl::PCLPointCloud2& points, Cloud& sensor) const = 0;
    /// Takes the single-precision coordinates of points that were read.
    virtual void convert(const pcl::PCLPointCloud2& points, Cloud& cloud) const = 0;
    /// Applies `world_from_file` to every finite point in place.
    virtual void transform(Cloud& cloud, const Eigen::Affine3f& world_from_file) const = 0;
    /// Returns the largest eigenvalue of the covariance of the points. Throws `pcl::InitFailedException` without a
    /// cloud or for fewer than 3 points.
    [[nodiscard]] virtual float largestEigenvalue(const std::shared_ptr<Cloud>& cloud) const = 0;
};

}  // namespace Veltrani::ScreenManagerDetail
