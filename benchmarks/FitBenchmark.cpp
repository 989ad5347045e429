#include "Common/Matrix.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/DisplayFitter.h"
#include "KelvoControl/Blend.h"
#include "Ratio.h"

#include <opencv2/calib3d.hpp>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// One channel of 1,000 points in general position, with pose, focal lengths, centre and five coefficients, against the
/// calibration of a camera by another library from the same start; and many channels against one.

namespace {

using namespace Veltrani::DisplayFit;

constexpr std::size_t POINT_COUNT = 1000;
constexpr std::size_t CHANNEL_COUNT = 24;
/// What is accepted; the aims are 0.3 and 1.0.
constexpr double CALIBRATION_LIMIT = 1.0;
constexpr double MANY_LIMIT = 1.05;
constexpr double NOISE_PIXELS = 0.5;

const std::string LENS_HEAD =
    "%YAML:1.0\n---\nimage_width: 1920\nimage_height: 1200\ncamera_matrix: !!opencv-matrix\n"
    "   rows: 3\n   cols: 3\n   dt: d\n   data: [ ";
const std::string LENS_MIDDLE =
    ", 0., 0., 1. ]\ndistortion_coefficients: !!opencv-matrix\n   rows: 5\n   cols: 1\n"
    "   dt: d\n   data: [ ";

std::string writeLens(const std::string& folder, const std::string& name, const std::string& camera,
                      const std::string& coefficients) {
    const std::string file = folder + "/" + name;
    std::ofstream(file) << LENS_HEAD << camera << LENS_MIDDLE << coefficients << " ]\n";
    return file;
}

std::string projector(std::size_t channel, const std::string& lens, const std::string& orientation,
                      const std::string& position) {
    return "<Projector id='P" + std::to_string(channel) +
           "'><Resolution width='1920' height='1200'/><ProjectionModel name='BrownConrady' file='" + lens + "'/>" +
           orientation + position + "</Projector>";
}

std::unique_ptr<XMLConfigFile> display(const std::string& projectors) {
    return XMLConfigFile::parse(
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><Radius "
        "value='9'/><Azimuth min='-180' max='180'/><Elevation min='-90' max='90'/></Screen><TargetData "
        "type='3D'/><Projectors>" +
            projectors + "</Projectors></Display>",
        "display.xml");
}

/// What both sides start from, and what was measured.
struct Task {
    std::unique_ptr<XMLConfigFile> one;
    std::unique_ptr<XMLConfigFile> many;
    std::vector<MeasuredPoint> points;
    std::vector<MeasuredPoint> pointsOfMany;
    std::vector<std::vector<cv::Point3f>> world{1};
    std::vector<std::vector<cv::Point2f>> pixels{1};
};

void measure(const ProjectorConfig& truth, Task& task) {
    const std::wstring name = truth.getProjectionModelName();
    const auto model = Blend::createProjectionModel(Viewport::of(truth, name), name, L"");
    std::mt19937 random(5);
    std::uniform_real_distribution<double> part(0, 1);
    std::normal_distribution<double> noise(0, NOISE_PIXELS);
    for (std::size_t i = 0; i < POINT_COUNT; ++i) {
        MeasuredPoint point;
        point.picture = {part(random), part(random)};
        Point<double, 3> direction;
        if (!model->unproject(point.picture, direction)) {
            std::abort();
        }
        point.world = truth.getPosition() + direction * ((2 + 4 * part(random)) / norm(direction));
        point.picture += Point<double, 2>{noise(random) / 1920, noise(random) / 1200};
        task.points.push_back(point);
        task.world[0].emplace_back(static_cast<float>(point.world[0]), static_cast<float>(point.world[1]),
                                   static_cast<float>(point.world[2]));
        task.pixels[0].emplace_back(static_cast<float>(point.picture[0] * 1920 - 0.5),
                                    static_cast<float>((1 - point.picture[1]) * 1200 - 0.5));
    }
    for (std::size_t channel = 0; channel < CHANNEL_COUNT; ++channel) {
        for (MeasuredPoint point : task.points) {
            point.channel = channel;
            task.pointsOfMany.push_back(point);
        }
    }
}

std::shared_ptr<Task> makeTask() {
    std::string folder = "/tmp/fit-benchmark-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        std::exit(2);
    }
    const std::string truthLens =
        writeLens(folder, "truth.yml", "2100.5, 0., 981.125, 0., 2105.25, 583.75", "-0.14, 0.08, 4e-4, -3e-4, -0.02");
    const std::string startLens =
        writeLens(folder, "start.yml", "2300., 0., 1000., 0., 2300., 600.", "0., 0., 0., 0., 0.");
    const auto truth =
        display(projector(0, truthLens, "<Orientation z='25' x='-8' y='4'/>", "<Position x='0.4' y='-1.1' z='1.9'/>"));
    const std::string orientation = "<Orientation z='27' x='-10' y='5'/>";
    const std::string position = "<Position x='0.6' y='-1.3' z='2'/>";
    auto task = std::make_shared<Task>();
    std::string projectors;
    for (std::size_t channel = 0; channel < CHANNEL_COUNT; ++channel) {
        projectors += projector(channel, startLens, orientation, position);
    }
    task->one = display(projector(0, startLens, orientation, position));
    task->many = display(projectors);
    measure(*truth->getProjectorConfig(L"P0"), *task);
    return task;
}

void fitted(benchmark::State& state, const XMLConfigFile& config, const std::vector<MeasuredPoint>& points,
            bool isRobust) {
    FitOptions options;
    options.isRobust = isRobust;
    const DisplayFitter fitter(options);
    for (auto _ : state) {
        const DisplayFitResult result = fitter.fit(config, points);
        if (result.outcome() == FitOutcome::UNUSABLE) {
            state.SkipWithError("nothing was solved");
        }
        benchmark::DoNotOptimize(result.channels.front().residualFactor);
    }
}

void calibrated(benchmark::State& state, const Task& task) {
    for (auto _ : state) {
        cv::Mat camera = (cv::Mat_<double>(3, 3) << 2300, 0, 1000, 0, 2300, 600, 0, 0, 1);
        cv::Mat distortion = cv::Mat::zeros(5, 1, CV_64F);
        std::vector<cv::Mat> turns;
        std::vector<cv::Mat> shifts;
        benchmark::DoNotOptimize(cv::calibrateCamera(task.world, task.pixels, {1920, 1200}, camera, distortion, turns,
                                                     shifts, cv::CALIB_USE_INTRINSIC_GUESS));
    }
}

}  // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    const std::shared_ptr<Task> task = makeTask();
    const auto reference = [task](benchmark::State& state) { calibrated(state, *task); };
    ratio::pair(
        "fit_plain", [task](benchmark::State& state) { fitted(state, *task->one, task->points, false); }, reference,
        CALIBRATION_LIMIT);
    ratio::pair(
        "fit_robust", [task](benchmark::State& state) { fitted(state, *task->one, task->points, true); }, reference,
        CALIBRATION_LIMIT);
    // The other side is one channel, as many times.
    ratio::pair(
        "fit_24_channels", [task](benchmark::State& state) { fitted(state, *task->many, task->pointsOfMany, true); },
        [task](benchmark::State& state) {
            const DisplayFitter fitter;
            for (auto _ : state) {
                for (std::size_t channel = 0; channel < CHANNEL_COUNT; ++channel) {
                    benchmark::DoNotOptimize(fitter.fit(*task->one, task->points).channels.size());
                }
            }
        },
        MANY_LIMIT);
    return ratio::run(argc, argv);
}
