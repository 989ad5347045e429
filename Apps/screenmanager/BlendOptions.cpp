#include "BlendOptions.h"

#include "Common/DecimalText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "OptionList.h"

#include <algorithm>

namespace {

using namespace Veltrani::DisplayBlend;
using Veltrani::ExportFiles::BlackLevel;
using Veltrani::ExportFiles::BlendRequest;

constexpr const char* BLACK_LEVEL = "--black-level";
constexpr double PER_CENT = 0.01;

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
        std::vector<BlackLevel> levels(options.blackLevels.size());
        std::transform(options.blackLevels.begin(), options.blackLevels.end(), levels.begin(), blackLevelOf);
        request.residual = residualOf(config, levels);
    }
    return request;
}
