#pragma once

#include "ExportFiles/BlendFiles.h"

#include <optional>
#include <string>
#include <vector>

class OptionList;
class XMLConfigManager;

/// What the command line states of blends.
struct BlendOptions {
    bool areLeftOut = false;
    bool isAlpha = false;
    std::vector<std::string> bits;         ///< "16", "8"; empty: both
    std::vector<std::string> blackLevels;  ///< "PERCENT", "NAME=PERCENT"; empty: no lifts
    Veltrani::DisplayBlend::BlendCurve curve =
        Veltrani::DisplayBlend::BlendCurve::ofGamma(Veltrani::DisplayBlend::BlendCurve::USUAL_GAMMA);
};

void addBlendOptions(OptionList& line, BlendOptions& options);

/// Calls `OptionList::refuse` for values that are wrong whatever the display.
void checkBlendOptions(const BlendOptions& options);

/// None where blends are left out. Throws `VeltraniException` for residual lights of a channel that the display does
/// not have, and where one of its channels has none.
[[nodiscard]] std::optional<Veltrani::ExportFiles::BlendRequest> blendRequestOf(const XMLConfigManager& config,
                                                                                const BlendOptions& options);
