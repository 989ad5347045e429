#include "Common/Matrix.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/coverage/CoverageSurvey.h"
#include "DisplayReport/coverage/CoverageWriter.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/PictureWarp.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "EmbreeReference.h"
#include "KelvoScreen/MeshScreen.h"
#include "MeshRays.h"
#include "Ratio.h"
#include "ScreenManager/ScreenManager.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

/// What the commands `coverage`, `map --grid --format pfm` and `export` do behind the loading of the screen, a mesh of
/// a million triangles under twelve frusta, against one ray of Embree for every pixel of their pictures, and for the
/// map against the writing of as many bytes as well. The processor's time counts: Embree works on one core, and so do
/// the commands.

namespace {

using namespace Veltrani::DisplayReport;
using Vector = Point<double, 3>;

constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1200;
constexpr double COVERAGE_LIMIT = 0.5;
constexpr double MAP_LIMIT = 0.8;
constexpr double EXPORT_LIMIT = 0.8;
constexpr double RADIANS = std::numbers::pi / 180;
const Vector EYE{0.5, 1.0, 0.25};

/// Where a projector is turned to, degrees: about the vertical axis, and then up.
struct Heading {
    int z, x;
};

/// Eight around and four above them; each reaches half its angle to every side, so that neighbours overlap.
std::vector<Heading> headings() {
    std::vector<Heading> all;
    for (int i = 0; i < 8; ++i) {
        all.push_back({45 * i, 0});
    }
    for (int i = 0; i < 4; ++i) {
        all.push_back({90 * i, 45});
    }
    return all;
}

constexpr int HALF_ANGLE = 28;  // degrees

std::unique_ptr<XMLConfigFile> display() {
    std::string text =
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'>"
        "<Centre x='0' y='0' z='0'/><EyePoint x='0.5' y='1' z='0.25'/><Radius value='5'/></Screen>"
        "<TargetData type='Spherical'/><Projectors>";
    const std::string half = std::to_string(HALF_ANGLE);
    int number = 0;
    for (const auto& [z, x] : headings()) {
        const std::string id = "P" + std::to_string(++number);
        text += "<Projector id='" + id + "'><Resolution width='" + std::to_string(WIDTH) + "' height='" +
                std::to_string(HEIGHT) + "'/><Position x='0.5' y='1' z='0.25'/><Orientation z='" + std::to_string(z) +
                "' x='" + std::to_string(x) + "' y='0'/><Frustum left='-" + half + "' right='" + half + "' bottom='-" +
                half + "' top='" + half + "'/></Projector>";
    }
    return XMLConfigFile::parse(text + "</Projectors></Display>", "benchmark.xml");
}

/// Calls `take` with the hit of every pixel of a picture, row by row from the bottom.
template <class Take>
void castPicture(const EmbreeReference& embree, const Heading& heading, const Take& take) {
    const Matrix<double, 3> orientation = Veltrani::rotationZXY(heading.z * RADIANS, heading.x * RADIANS, 0.0);
    const double reach = std::tan(HALF_ANGLE * RADIANS);
    for (int row = 0; row < HEIGHT; ++row) {
        for (int column = 0; column < WIDTH; ++column) {
            const Vector direction{reach * (2 * (column + 0.5) / WIDTH - 1), 1.0,
                                   reach * (2 * (row + 0.5) / HEIGHT - 1)};
            take(embree.intersect({EYE, EYE + orientation * direction}));
        }
    }
}

/// A file that is there as long as this is.
class Result {
public:
    Result() : m_path(std::filesystem::temp_directory_path() / ("display-" + std::to_string(::getpid()) + ".out")) {}
    ~Result() {
        std::error_code gone;
        std::filesystem::remove(m_path, gone);
    }
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;

    [[nodiscard]] std::ofstream open() const { return std::ofstream(m_path, std::ios::binary); }
    [[nodiscard]] std::size_t size() const { return std::filesystem::file_size(m_path); }

private:
    std::filesystem::path m_path;
};

template <class Step>
ratio::Body timing(const Step& step) {
    return [step](benchmark::State& state) {
        ratio::returnMemoryToSystem();
        for (auto _ : state) {
            step();
        }
    };
}

void coverAll(const Result& result) {
    const auto config = display();
    const CoverageReport report = CoverageSurvey().of(*config);
    auto out = result.open();
    CoverageWriter::ofFormat("json")->write(report, {}, out);
    if (!report.complete() || report.overlaps.size() < 12) {
        std::fprintf(stderr, "the coverage is not what it should be\n");
        std::exit(2);
    }
}

void castAll(const EmbreeReference& embree) {
    std::size_t hits = 0;
    for (const Heading& heading : headings()) {
        castPicture(embree, heading, [&hits](const auto& hit) { hits += hit ? 1 : 0; });
    }
    if (hits != static_cast<std::size_t>(12) * WIDTH * HEIGHT) {
        std::fprintf(stderr, "%zu hits\n", hits);
        std::exit(2);
    }
}

void mapPicture(const Result& result) {
    const auto config = display();
    const ChannelChoice channel = ChannelChoice::of(*config, "P1");
    LayoutMapper map(*config, channel, false);
    const InputProjection input(*config, Panorama::FISHEYE);
    const PictureWarp warp = PictureWarp::atPixels(map, input, channel.pictureSize());
    auto out = result.open();
    WarpWriter::ofFormat("pfm")->write(warp, out);
    if (warp.missed() != 0) {
        std::fprintf(stderr, "%zu pixels are not mapped\n", warp.missed());
        std::exit(2);
    }
}

/// Three numbers of four bytes for each pixel, as the format has them.
void castPictureToFile(const EmbreeReference& embree, const Heading& heading, const Result& result) {
    std::vector<float> numbers;
    numbers.reserve(static_cast<std::size_t>(3) * WIDTH * HEIGHT);
    castPicture(embree, heading, [&numbers](const auto& hit) {
        for (std::size_t i = 0; i < 3; ++i) {
            numbers.push_back(hit ? static_cast<float>(hit->point[i]) : 0.0F);
        }
    });
    auto out = result.open();
    out.write(reinterpret_cast<const char*>(numbers.data()),
              static_cast<std::streamsize>(numbers.size() * sizeof(float)));
}

/// A frustum of its own for each channel, and where in it each pixel finds its content.
void exportAll(const Result& result) {
    namespace exports = Veltrani::DisplayExport;
    const auto config = display();
    std::size_t unmapped = 0;
    for (std::size_t i = 0; i < headings().size(); ++i) {
        const ChannelChoice channel = ChannelChoice::of(*config, "P" + std::to_string(i + 1));
        const exports::ChannelSight sight(*config, channel);
        const exports::ContentInput input(*config, sight, {});
        const auto warp = exports::ChannelWarp::of(sight, input, {.places = exports::WarpRequest::Places::PIXELS});
        unmapped += warp.nodes().size() - warp.count(exports::WarpNode::State::MAPPED);
        std::vector<float> numbers;
        auto out = result.open();
        for (std::size_t row = 0; row < warp.rows(); ++row) {
            numbers.clear();
            for (std::size_t column = 0; column < warp.columns(); ++column) {
                const exports::WarpNode& node = warp.at(column, row);
                numbers.insert(numbers.end(), {static_cast<float>(node.content[0]), static_cast<float>(node.content[1]),
                                               node.isUsable() ? 1.0F : 0.0F});
            }
            out.write(reinterpret_cast<const char*>(numbers.data()),
                      static_cast<std::streamsize>(numbers.size() * sizeof(float)));
        }
    }
    if (unmapped != 0) {
        std::fprintf(stderr, "%zu pixels are not mapped\n", unmapped);
        std::exit(2);
    }
}

void castAllToFile(const EmbreeReference& embree, const Result& result) {
    for (const Heading& heading : headings()) {
        castPictureToFile(embree, heading, result);
    }
}

}  // namespace

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    const auto screen = std::make_shared<MeshScreen>(meshRays::bumpySphere(meshRays::CELLS_1M));
    ScreenManager::getInstance()->setScreenGeometry(screen);
    // The search structure is built by the first ray.
    (void)screen->intersect({}, {0.0, 1.0, 0.0});
    const EmbreeReference embree(screen->mesh());
    const Result ours;
    const Result theirs;
    ratio::pair("coverage_of_12_frusta_mesh_1M", timing([&] { coverAll(ours); }), timing([&] { castAll(embree); }),
                COVERAGE_LIMIT);
    ratio::pair("map_grid_pfm_mesh_1M", timing([&] { mapPicture(ours); }),
                timing([&] { castPictureToFile(embree, headings().front(), theirs); }), MAP_LIMIT);
    ratio::pair("export_pfm_of_12_frusta_mesh_1M", timing([&] { exportAll(ours); }),
                timing([&] { castAllToFile(embree, theirs); }), EXPORT_LIMIT);
    return ratio::run(argc, argv);
}
