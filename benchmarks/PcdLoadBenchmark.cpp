#include "Common/Utf8.h"
#include "KelvoScreen/OBJScreen.h"
#include "Ratio.h"
#include "ScreenManager/Screen.h"

#include <pcl/common/transforms.h>
#include <pcl/io/pcd_io.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

/// The load of a point cloud through a screen, against the reader and the transform of the Point Cloud Library called
/// directly on the same file.

namespace {

constexpr std::size_t POINT_COUNT = 5'000'000;

/// A binary file of random points, removed at the end.
class CloudFile {
public:
    CloudFile() : m_path((std::filesystem::temp_directory_path() / "pcd-load-XXXXXX").string()) {
        const int descriptor = ::mkstemp(m_path.data());
        if (descriptor < 0) {
            throw std::runtime_error("cannot make " + m_path);
        }
        ::close(descriptor);
        std::mt19937 generator(1);
        std::uniform_real_distribution<float> uniform(-10, 10);
        Screen::PointCloud cloud;
        cloud.reserve(POINT_COUNT);
        for (std::size_t i = 0; i < POINT_COUNT; ++i) {
            cloud.push_back({uniform(generator), uniform(generator), uniform(generator)});
        }
        if (pcl::PCDWriter().writeBinary(m_path, cloud) != 0) {
            throw std::runtime_error("cannot write " + m_path);
        }
    }
    ~CloudFile() { std::remove(m_path.c_str()); }
    CloudFile(const CloudFile&) = delete;
    CloudFile& operator=(const CloudFile&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

const std::string& path() {
    static const CloudFile file;
    return file.path();
}

void loadThroughScreen(benchmark::State& state) {
    const std::wstring file = Veltrani::fromUtf8(path());
    for (auto _ : state) {
        state.PauseTiming();
        ratio::returnMemoryToSystem();
        Screen screen;
        screen.setScale(0.5F);
        state.ResumeTiming();
        screen.loadModelPCD(file, false);
        benchmark::DoNotOptimize(screen.getModelPCD()->points.data());
        state.PauseTiming();
        screen.clearScreens();
        state.ResumeTiming();
    }
}

void loadDirectly(benchmark::State& state) {
    const Matrix<float, 4> matrix = OBJScreen::getTransformMatrix(L"Y", L"Z", 0.5F);
    Eigen::Affine3f transform;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            transform(r, c) = matrix.data()[4 * r + c];
        }
    }
    for (auto _ : state) {
        state.PauseTiming();
        ratio::returnMemoryToSystem();
        auto cloud = pcl::make_shared<Screen::PointCloud>();
        state.ResumeTiming();
        if (pcl::PCDReader().read(path(), *cloud) != 0) {
            state.SkipWithError("cannot read the file");
        }
        pcl::transformPointCloud(*cloud, *cloud, transform, true);
        benchmark::DoNotOptimize(cloud->points.data());
        state.PauseTiming();
        cloud.reset();
        state.ResumeTiming();
    }
}

}  // namespace

int main(int argc, char** argv) {
    constexpr double LIMIT = 1.10;
    path();  // written before anything is timed
    ratio::pair("load of 5 million points", loadThroughScreen, loadDirectly, LIMIT);
    return ratio::run(argc, argv);
}
