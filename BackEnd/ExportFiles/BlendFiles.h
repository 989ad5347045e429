#pragma once

#include "DisplayBlend/BlendCurve.h"
#include "DisplayBlend/BlendPicture.h"
#include "DisplayBlend/DisplayBlender.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::ExportFiles {

/// How the blends of an export are made.
struct BlendRequest {
    DisplayBlend::BlendCurve curve = DisplayBlend::BlendCurve::ofGamma(DisplayBlend::BlendCurve::USUAL_GAMMA);
    DisplayBlend::BlendUse use = DisplayBlend::BlendUse::MULTIPLY;
    std::vector<int> bits{16, 8};  ///< each once
    /// By channel, as `DisplayBlender::channels` has them: its light when it shows black, as a part of its white.
    /// Empty: no lifts.
    std::vector<double> residual;
};

/// The residual light of a channel: what its projector shows for black.
struct BlackLevel {
    std::string channel;  ///< name or id, UTF-8; empty: of all that have none of their own
    double light = 0;     ///< part of white
};

/// What is stated, as `BlendRequest::residual` has it. Throws `VeltraniException`, naming the channel, for one that
/// does not exist, that has two black levels or none.
[[nodiscard]] std::vector<double> residualOf(const XMLConfigManager& config, const std::vector<BlackLevel>& levels);

/// Which channel of the blender has this id. Throws `VeltraniException` for one that has no blend, with the reason and
/// the remedy.
[[nodiscard]] std::size_t blendedChannel(const DisplayBlend::DisplayBlender& blender, const std::string& projectorId);

/// How the name of a file of such code values ends: "blend16.png", "alpha8.png".
[[nodiscard]] std::string endingOfBlend(DisplayBlend::BlendUse use, int bits);

/// Writes the code values of a picture of light as a PNG file: grey for factors and lifts, black with an opacity for
/// alpha. The file states no gamma. A stream that takes no more goes bad.
/// @param bits 16 or 8
void writeBlend(const DisplayBlend::BlendPicture& picture, const DisplayBlend::BlendCurve& curve,
                DisplayBlend::BlendUse use, int bits, std::ostream& out);

/// What a manifest states of the blend of a channel, as JSON.
/// @param channel of the blender
[[nodiscard]] std::string jsonOf(const BlendRequest& request, const DisplayBlend::DisplayBlender& blender,
                                 std::size_t channel);

}  // namespace Veltrani::ExportFiles
