#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayLight/LightSum.h"
#include "DisplayOfTwelve.h"
#include "EmbreeReference.h"
#include "ExportFiles/ExportManifest.h"
#include "ExportFiles/ViewExport.h"
#include "KelvoScreen/MeshScreen.h"
#include "MeshRays.h"
#include "Ratio.h"
#include "ScreenManager/ScreenManager.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

/// The light of twelve channels of 1920 x 1200 pixels on a mesh of a million triangles, added up for a picture of as
/// many pixels, the reading of their files, blends of 16 bits among them, included, against the rays alone: one for
/// each place that the eye sees, and one for each channel that lights it. The time of ours is stated beside the ratio:
/// it is to stay below three seconds.

namespace {

using namespace Veltrani::DisplayReport;
using namespace Veltrani::DisplayLight;
using namespace Veltrani::ExportFiles;

constexpr double LIMIT = 3.0;
constexpr std::size_t WIDTH = 1920;
constexpr std::size_t HEIGHT = 1200;

[[noreturn]] void stopLight(const char* why) {
    std::fprintf(stderr, "%s\n", why);
    std::exit(2);
}

/// A folder with the pictures of all channels, as long as this is there.
class Exported {
public:
    explicit Exported(XMLConfigFile& config)
        : m_path(std::filesystem::temp_directory_path() / ("light-" + std::to_string(::getpid()))) {
        std::filesystem::create_directory(m_path);
        ExportRequest request;
        request.input.kind = Veltrani::DisplayExport::InputKind::EQUIRECTANGULAR;
        request.nodes = Point<int, 2>{65, 41};
        request.content = std::make_shared<const ContentPicture>(64, 32, std::vector<unsigned char>(64 * 32 * 3, 90));
        request.blend.emplace();
        const ViewExport exporter(config, request);
        std::vector<std::string> views;
        for (int i = 0; i < CHANNELS; ++i) {
            const ExportView view{ChannelChoice::of(config, "P" + std::to_string(i)), std::nullopt};
            views.push_back(exporter.write(view, m_path.string(), {}).json);
        }
        std::ofstream(m_path / "manifest.json") << manifestOf(request, "m", {}, views);
    }
    ~Exported() {
        std::error_code gone;
        std::filesystem::remove_all(m_path, gone);
    }
    Exported(const Exported&) = delete;
    Exported& operator=(const Exported&) = delete;

    [[nodiscard]] std::string path() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

LitPicture addUp(const XMLConfigFile& config, const std::string& folder) {
    LightRequest request;
    request.width = WIDTH;
    request.height = HEIGHT;
    return LightSum(config, ExportedDisplay::read(folder)).picture(request);
}

void castAll(const EmbreeReference& embree, const LitPicture& picture) {
    std::size_t met = 0;
    for (std::size_t i = 0; i < picture.places.size(); ++i) {
        const auto direction =
            picture.view.directionOf({static_cast<double>(i % WIDTH) + 0.5, static_cast<double>(i / WIDTH) + 0.5});
        if (!direction) {
            continue;
        }
        const auto hit = embree.intersect({{}, *direction});
        for (int channel = 0; hit && channel < picture.places[i].channels; ++channel) {
            met += embree.intersect({{0.1 * channel, 0.1, 0.1}, hit->point}) ? 1 : 0;
        }
    }
    if (met < WIDTH * HEIGHT / 4) {
        stopLight("too little of the picture is lit");
    }
}

}  // namespace

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    const TriangleMesh mesh = meshRays::bumpySphere(meshRays::CELLS_1M);
    const auto screen = std::make_shared<MeshScreen>(mesh);
    ScreenManager::getInstance()->setScreenGeometry(screen);
    const auto config = displayOfTwelve();
    const Exported exported(*config);
    const EmbreeReference embree(mesh);
    const LitPicture picture = addUp(*config, exported.path());
    ratio::pair(
        "light_of_12_channels_mesh_1M",
        [&](benchmark::State& state) {
            ratio::returnMemoryToSystem();
            for (auto _ : state) {
                benchmark::DoNotOptimize(addUp(*config, exported.path()).places.data());
            }
        },
        [&](benchmark::State& state) {
            ratio::returnMemoryToSystem();
            for (auto _ : state) {
                castAll(embree, picture);
            }
        },
        LIMIT);
    return ratio::run(argc, argv);
}
