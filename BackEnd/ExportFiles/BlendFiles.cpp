#include "ExportFiles/BlendFiles.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/basics/PngEncoding.h"
#include "DisplayReport/channels/ChannelChoice.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Veltrani::ExportFiles {

namespace {

using DisplayBlend::BlendCurve;
using DisplayBlend::BlendPicture;
using DisplayBlend::BlendUse;
using DisplayBlend::DisplayBlender;
using DisplayReport::JsonObject;
using DisplayReport::PngForm;

constexpr int DEEP_BITS = 16;
constexpr double PER_CENT = 100;

/// Writes codes as they are, or as the opacity of black.
template <class Code>
void writeCodes(const BlendPicture& picture, std::vector<Code> codes, BlendUse use, std::ostream& out) {
    PngForm form{picture.width, picture.height, PngForm::Parts::GREY, static_cast<int>(8 * sizeof(Code))};
    if (use == BlendUse::ALPHA) {
        form.parts = PngForm::Parts::GREY_ALPHA;
        std::vector<Code> pairs(2 * codes.size());
        for (std::size_t i = 0; i < codes.size(); ++i) {
            pairs[2 * i + 1] = codes[i];
        }
        codes = std::move(pairs);
    }
    encodePng(form, codes.data(), out);
}

/// A gamma as a number, the curve of sRGB by its name.
std::string jsonOfCurve(const BlendCurve& curve) {
    const std::string name = curve.name();
    return name == BlendCurve::srgb().name() ? DisplayReport::jsonOf(name) : name;
}

}  // namespace

std::vector<double> residualOf(const XMLConfigManager& config, const std::vector<BlackLevel>& levels) {
    std::map<std::string, double> lights;  // by the id of the projector, and "" for the rest
    for (const BlackLevel& level : levels) {
        std::string id;
        std::string of = "the rest of the channels";
        if (!level.channel.empty()) {
            const auto channel = DisplayReport::ChannelChoice::of(config, level.channel);
            id = toUtf8(channel.projector->getIdentity());
            of = channel.describe();
        }
        if (!lights.emplace(id, level.light).second) {
            throw VeltraniException(fromUtf8OrBytes(of + ": two black levels are stated: state one"));
        }
    }
    std::vector<double> residual;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config.getProjectorConfig(id);
        if (projector == nullptr) {
            continue;
        }
        const auto own = lights.find(toUtf8(projector->getIdentity()));
        const auto found = own == lights.end() ? lights.find({}) : own;
        if (found == lights.end()) {
            throw VeltraniException(L"channel " + projector->getName() + L" (" + projector->getIdentity() +
                                    L") has no black level: state one for every channel of the display, or one for "
                                    L"the rest of them");
        }
        residual.push_back(found->second);
    }
    return residual;
}

std::size_t blendedChannel(const DisplayBlender& blender, const std::string& projectorId) {
    const auto& channels = blender.channels();
    const auto found = std::find_if(channels.begin(), channels.end(), [&](const DisplayBlender::Channel& channel) {
        return channel.projectorId == projectorId;
    });
    if (found == channels.end() || !found->fault.empty()) {
        const std::string reason = found == channels.end() ? "the display has no record of it" : found->fault;
        throw VeltraniException(fromUtf8OrBytes("it has no blend: " + reason + "; leave blends out with --no-blend"));
    }
    return static_cast<std::size_t>(found - channels.begin());
}

std::string endingOfBlend(BlendUse use, int bits) {
    return (use == BlendUse::ALPHA ? "alpha" : "blend") + std::to_string(bits) + ".png";
}

void writeBlend(const BlendPicture& picture, const BlendCurve& curve, BlendUse use, int bits, std::ostream& out) {
    if (bits == DEEP_BITS) {
        writeCodes(picture, picture.codes16(curve, use), use, out);
    } else {
        writeCodes(picture, picture.codes8(curve, use), use, out);
    }
}

std::string jsonOf(const BlendRequest& request, const DisplayBlender& blender, std::size_t channel) {
    std::string lift = "null";
    if (!request.residual.empty()) {
        lift = JsonObject()
                   .add("residualPercent", PER_CENT * request.residual.at(channel))
                   .add("blackPercent", PER_CENT * blender.liftedBlack(request.residual))
                   .text();
    }
    return JsonObject()
        .add("use", std::string(request.use == BlendUse::ALPHA ? "alpha" : "factor"))
        .addJson("gamma", jsonOfCurve(request.curve))
        .addJson("lift", lift)
        .addJson("crossings", DisplayReport::jsonList(blender.channels().at(channel).crossings,
                                                      [](const Point<double, 2>& picture) {
                                                          return '[' + DisplayReport::jsonOf(picture[0]) + ',' +
                                                                 DisplayReport::jsonOf(picture[1]) + ']';
                                                      }))
        .text();
}

}  // namespace Veltrani::ExportFiles
