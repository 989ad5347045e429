#include "Configuration/XMLConfigFile.h"
#include "DisplayBlend/BlendCurve.h"
#include "DisplayBlend/DisplayBlender.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayOfTwelve.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "KelvoScreen/MeshScreen.h"
#include "MeshRays.h"
#include "Ratio.h"
#include "ScreenManager/ScreenManager.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

/// The blends of twelve channels on a mesh of a million triangles, code values of 16 bits included, against the warps
/// of the same pictures, pixel by pixel. Every projector stands somewhere else: each sight is one of its own.

namespace {

using namespace Veltrani::DisplayBlend;
using namespace Veltrani::DisplayExport;
using Veltrani::DisplayReport::ChannelChoice;

constexpr double LIMIT = 1.5;
constexpr std::size_t PIXELS = std::size_t{1920} * 1200;

[[noreturn]] void stop(const char* why) {
    std::fprintf(stderr, "%s\n", why);
    std::exit(2);
}

void blendAll() {
    const auto config = displayOfTwelve();
    const DisplayBlender blender(*config);
    const BlendCurve curve = BlendCurve::ofGamma(BlendCurve::USUAL_GAMMA);
    std::size_t partly = 0;
    for (std::size_t i = 0; i < CHANNELS; ++i) {
        for (const std::uint16_t code : blender.weights(i).codes16(curve)) {
            partly += code < 65535 ? 1 : 0;
        }
    }
    if (partly < CHANNELS * PIXELS / 4) {
        stop("the pictures do not overlap as they should");
    }
}

void warpAll() {
    const auto config = displayOfTwelve();
    WarpRequest request;
    request.places = WarpRequest::Places::PIXELS;
    InputChoice choice;
    choice.kind = InputKind::EQUIRECTANGULAR;
    for (int i = 0; i < CHANNELS; ++i) {
        const ChannelSight sight(*config, ChannelChoice::of(*config, "P" + std::to_string(i)));
        const ContentInput input(*config, sight, choice);
        if (ChannelWarp::of(sight, input, request).count(WarpNode::State::MAPPED) != PIXELS) {
            stop("there are pixels that are not mapped");
        }
    }
}

ratio::Body timing(void (*step)()) {
    return [step](benchmark::State& state) {
        ratio::returnMemoryToSystem();
        for (auto _ : state) {
            step();
        }
    };
}

}  // namespace

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    const auto screen = std::make_shared<MeshScreen>(meshRays::bumpySphere(meshRays::CELLS_1M));
    ScreenManager::getInstance()->setScreenGeometry(screen);
    // The search structure is built by the first ray.
    (void)screen->intersect({}, {0.0, 1.0, 0.0});
    ratio::pair("blends_of_12_channels_mesh_1M", timing(blendAll), timing(warpAll), LIMIT);
    return ratio::run(argc, argv);
}
