#include "DisplayBlend/DisplayBlender.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayBlend/detail/BlendRaster.h"
#include "DisplayBlend/detail/ChannelFields.h"
#include "DisplayBlend/detail/CrossingDim.h"
#include "DisplayReport/coverage/DisplayLights.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Veltrani::DisplayBlend {

namespace {

using DisplayBlendDetail::BlendRaster;
using DisplayBlendDetail::ChannelFields;
using DisplayBlendDetail::PixelLight;
using DisplayReport::DisplayLights;

std::shared_ptr<const ScreenGeometry> currentScreen() {
    auto screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        throw VeltraniException(__FILE__, __LINE__, L"There is no screen to blend pictures on");
    }
    return screen;
}

std::vector<DisplayBlender::Channel> describe(const XMLConfigManager& config, const DisplayLights& display) {
    std::vector<DisplayBlender::Channel> channels;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config.getProjectorConfig(id);
        if (projector == nullptr) {
            continue;
        }
        DisplayBlender::Channel channel;
        channel.projectorId = toUtf8(projector->getIdentity());
        channel.name = toUtf8(projector->getName());
        channel.width = std::max(projector->getWidth(), 0);
        channel.height = std::max(projector->getHeight(), 0);
        channel.fault = display.faults[channels.size()];
        channel.lights = channel.fault.empty();
        if (channel.fault.empty() && (channel.width == 0 || channel.height == 0)) {
            channel.fault = "its resolution is not known: give it a Resolution";
        }
        channels.push_back(std::move(channel));
    }
    return channels;
}

std::vector<Point<int, 2>> pixelsOf(const std::vector<DisplayBlender::Channel>& channels,
                                    const std::vector<std::size_t>& places) {
    std::vector<Point<int, 2>> pixels;
    for (const std::size_t place : places) {
        pixels.push_back({channels[place].width, channels[place].height});
    }
    return pixels;
}

}  // namespace

struct DisplayBlender::Parts {
    explicit Parts(const XMLConfigManager& config)
        : display(DisplayLights::of(config, currentScreen())),
          channels(describe(config, display)),
          fields(display.lights, pixelsOf(channels, display.places)) {
        for (std::size_t i = 0; i < display.places.size(); ++i) {
            channels[display.places[i]].crossings = fields.crossings(i);
        }
    }

    /// The number of a channel among those whose light is known.
    [[nodiscard]] std::size_t lightOf(std::size_t channel) const {
        const Channel& own = channels.at(channel);
        if (!own.fault.empty()) {
            throw VeltraniException(
                __FILE__, __LINE__,
                fromUtf8OrBytes("channel " + own.name + " (" + own.projectorId + ") has no blend: " + own.fault));
        }
        return static_cast<std::size_t>(std::find(display.places.begin(), display.places.end(), channel) -
                                        display.places.begin());
    }

    /// By light.
    [[nodiscard]] std::vector<double> known(const std::vector<double>& residual) const {
        if (residual.size() != channels.size()) {
            throw VeltraniException(__FILE__, __LINE__,
                                    L"There are " + std::to_wstring(residual.size()) + L" residual lights for " +
                                        std::to_wstring(channels.size()) + L" channels: give one for each");
        }
        std::vector<double> light;
        for (const std::size_t place : display.places) {
            if (!(residual[place] >= 0.0 && residual[place] < 1.0)) {
                throw VeltraniException(__FILE__, __LINE__,
                                        L"The residual light of channel " + fromUtf8OrBytes(channels[place].name) +
                                            L" is " + std::to_wstring(100 * residual[place]) +
                                            L" per cent of its white: expected 0 or more and less than 100");
            }
            light.push_back(residual[place]);
        }
        return light;
    }

    DisplayLights display;
    std::vector<Channel> channels;
    ChannelFields fields;
};

DisplayBlender::DisplayBlender(const XMLConfigManager& config) : m_parts(std::make_unique<Parts>(config)) {}

DisplayBlender::~DisplayBlender() = default;

const std::vector<DisplayBlender::Channel>& DisplayBlender::channels() const {
    return m_parts->channels;
}

BlendPicture DisplayBlender::weights(std::size_t channel, const DisplayReport::Progress& progress) const {
    const auto shade = [](const PixelLight& light) { return static_cast<float>(light.parts.front().weight); };
    const std::size_t own = m_parts->lightOf(channel);
    BlendPicture picture = BlendRaster(m_parts->fields, own).picture(shade, 1.0F, progress);
    DisplayBlendDetail::dimCrossings(picture, m_parts->fields.crossings(own));
    return picture;
}

BlendPicture DisplayBlender::lift(std::size_t channel, const std::vector<double>& residual,
                                  const DisplayReport::Progress& progress) const {
    const std::size_t own = m_parts->lightOf(channel);
    const std::vector<double> blacks = m_parts->known(residual);
    const ChannelFields& fields = m_parts->fields;
    const double most = fields.mostResidual(blacks);
    // A projector shows its residual light and, of the rest up to its white, what the code value states.
    const double range = 1 - blacks[own];
    const auto shade = [&](const PixelLight& light) {
        double black = 0;
        for (const PixelLight::Part& part : light.parts) {
            black += blacks[part.channel] * ChannelFields::presenceOf(part.weight);
        }
        return static_cast<float>(light.parts.front().weight * std::clamp((most - black) / range, 0.0, 1.0));
    };
    const auto alone = static_cast<float>(std::clamp((most - blacks[own]) / range, 0.0, 1.0));
    return BlendRaster(fields, own).picture(shade, alone, progress);
}

double DisplayBlender::liftedBlack(const std::vector<double>& residual) const {
    return m_parts->fields.mostResidual(m_parts->known(residual));
}

}  // namespace Veltrani::DisplayBlend
