#include "BlendOptions.h"

#include "Common/DecimalText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "OptionList.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

using namespace Veltrani::DisplayBlend;
using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::ExportFiles::BlendRequest;

constexpr const char* BLACK_LEVEL = "--black-level";
constexpr double PER_CENT = 0.01;

/// A residual light, and whose it is.
struct BlackLevel {
    std::string channel;  ///< name or id; empty: of all that have none of their own
    double light = 0;     ///< part of white
};

/// The name may hold an equals sign; the number has none.
BlackLevel blackLevelOf(const std::string& text) {
    const auto equals = text.rfind('=');
    const bool isOfOne = equals != std::string::npos;
    const auto percent = Veltrani::parseFinite(isOfOne ? text.substr(equals + 1) : text);
    if ((isOfOne && equals == 0) || !percent || !(*percent >= 0) || !(*percent < 1 / PER_CENT)) {
        OptionList::refuse(BLACK_LEVEL,
                           "\"" + text +
                               "\" is not PERCENT or NAME=PERCENT: expected the light of black in per cent "
                               "of that of white, 0 or more and less than 100, such as 0.1");
    }
    return {isOfOne ? text.substr(0, equals) : std::string(), PER_CENT * *percent};
}

/// By the id of the projector, and "" for the rest.
std::map<std::string, double> lightsOf(const XMLConfigManager& config, const std::vector<std::string>& texts) {
    std::map<std::string, double> lights;
    for (const std::string& text : texts) {
        const BlackLevel level = blackLevelOf(text);
        const std::string id =
            level.channel.empty() ? std::string()
                                  : Veltrani::toUtf8(ChannelChoice::of(config, level.channel).projector->getIdentity());
        if (!lights.emplace(id, level.light).second) {
            throw VeltraniException(
                Veltrani::fromUtf8OrBytes("\"" + text + "\" states a black level a second time: state each once"));
        }
    }
    return lights;
}

std::vector<double> residualOf(const XMLConfigManager& config, const std::vector<std::string>& texts) {
    const std::map<std::string, double> lights = lightsOf(config, texts);
    std::vector<double> residual;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config.getProjectorConfig(id);
        if (projector == nullptr) {
            continue;
        }
        const auto own = lights.find(Veltrani::toUtf8(projector->getIdentity()));
        const auto found = own == lights.end() ? lights.find({}) : own;
        if (found == lights.end()) {
            throw VeltraniException(L"channel " + projector->getName() + L" (" + projector->getIdentity() +
                                    L") has no black level: state NAME=PERCENT for every channel of the display, or "
                                    L"PERCENT for the rest");
        }
        residual.push_back(found->second);
    }
    return residual;
}

}  // namespace

void addBlendOptions(OptionList& line, BlendOptions& options) {
    Option none = line.addFlag("--no-blend", options.areLeftOut, "Write no blends");
    line.addRead(
            "--blend-gamma",
            [&options](const std::string& name) {
                try {
                    options.curve = BlendCurve::named(name);
                } catch (const VeltraniException& fault) {
                    OptionList::refuse("--blend-gamma", Veltrani::toUtf8(fault.message));
                }
            },
            "Gamma of the projectors: a number, or srgb; 1 is linear (default 2.2)")
        .typeName("G|srgb")
        .excludes(none);
    line.add("--blend-bits", options.bits, "16 or 8; may be given several times (default: both)")
        .oneOf({"16", "8"})
        .oneValueEach()
        .typeName("BITS")
        .excludes(none);
    line.addFlag("--alpha", options.isAlpha, "Blends as the opacity of black instead of factors").excludes(none);
    line.add(BLACK_LEVEL, options.blackLevels,
             "Light of black in per cent of that of white, of all channels or of one: writes lifts, too; may be given "
             "several times")
        .oneValueEach()
        .typeName("PERCENT|NAME=PERCENT")
        .excludes(none);
}

void checkBlendOptions(const BlendOptions& options) {
    for (const std::string& text : options.blackLevels) {
        static_cast<void>(blackLevelOf(text));
    }
}

std::optional<BlendRequest> blendRequestOf(const XMLConfigManager& config, const BlendOptions& options) {
    if (options.areLeftOut) {
        return std::nullopt;
    }
    BlendRequest request;
    request.curve = options.curve;
    request.use = options.isAlpha ? BlendUse::ALPHA : BlendUse::MULTIPLY;
    if (!options.bits.empty()) {
        std::erase_if(request.bits, [&](int bits) {
            return std::find(options.bits.begin(), options.bits.end(), std::to_string(bits)) == options.bits.end();
        });
    }
    if (!options.blackLevels.empty()) {
        request.residual = residualOf(config, options.blackLevels);
    }
    return request;
}
