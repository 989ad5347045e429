// The module that is opened with the first cloud: every call into the shared libraries of the Point Cloud Library.
#include "ScreenManager/detail/CloudLibrary.h"

#include <pcl/PCLPointCloud2.h>
#include <pcl/common/pca.h>
#include <pcl/common/transforms.h>
#include <pcl/console/print.h>
#include <pcl/conversions.h>
#include <pcl/io/pcd_io.h>

#include <istream>

namespace Veltrani::ScreenManagerDetail {

namespace {

/// Keeps the messages of the Point Cloud Library off the console.
class Quiet {
public:
    Quiet() { pcl::console::setVerbosityLevel(pcl::console::L_ALWAYS); }
    ~Quiet() { pcl::console::setVerbosityLevel(m_level); }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    pcl::console::VERBOSITY_LEVEL m_level = pcl::console::getVerbosityLevel();
};

class Module : public CloudLibrary {
public:
    [[nodiscard]] int read(const std::string& utf8Path, pcl::PCLPointCloud2& points, Cloud& sensor) const override {
        const Quiet quiet;
        int version = 0;
        return pcl::PCDReader().read(utf8Path, points, sensor.sensor_origin_, sensor.sensor_orientation_, version);
    }

    [[nodiscard]] int readText(std::istream& text, pcl::PCLPointCloud2& points, Cloud& sensor) const override {
        const Quiet quiet;
        pcl::PCDReader reader;
        int version = 0;
        int kind = 0;
        unsigned int data = 0;
        const int fault =
            reader.readHeader(text, points, sensor.sensor_origin_, sensor.sensor_orientation_, version, kind, data);
        if (fault != 0) {
            return fault;
        }
        text.seekg(data);
        return reader.readBodyASCII(text, points, version);
    }

    void convert(const pcl::PCLPointCloud2& points, Cloud& cloud) const override {
        const Quiet quiet;
        if (points.width == 0 || points.height == 0) {
            // The library takes the address of the first point.
            cloud.header = points.header;
            cloud.width = points.width;
            cloud.height = points.height;
            cloud.is_dense = points.is_dense == 1;
            cloud.points.clear();
            return;
        }
        pcl::fromPCLPointCloud2(points, cloud);
    }

    void transform(Cloud& cloud, const Eigen::Affine3f& world_from_file) const override {
        const Quiet quiet;
        pcl::transformPointCloud(cloud, cloud, world_from_file, true);
    }

    [[nodiscard]] float largestEigenvalue(const std::shared_ptr<Cloud>& cloud) const override {
        const Quiet quiet;
        pcl::PCA<pcl::PointXYZ> analysis;
        analysis.setInputCloud(cloud);
        return analysis.getEigenValues()[0];
    }
};

}  // namespace

}  // namespace Veltrani::ScreenManagerDetail

extern "C" const Veltrani::ScreenManagerDetail::CloudLibrary* SM_CLOUD_MODULE_FUNCTION();

/// Returns the entry of the module; its name carries the version.
extern "C" const Veltrani::ScreenManagerDetail::CloudLibrary* SM_CLOUD_MODULE_FUNCTION() {
    static const Veltrani::ScreenManagerDetail::Module module;
    return &module;
}
