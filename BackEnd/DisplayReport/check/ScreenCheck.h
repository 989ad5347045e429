#pragma once

class XMLConfigManager;

namespace Veltrani::DisplayReport {

struct DisplayDescription;

/// The part of the check that concerns the screen: content, measured mesh and model cloud.
class ScreenCheck {
public:
    ScreenCheck() = delete;

    /// Loads the three screens of the configuration into the `ScreenManager`, whatever becomes of each, and adds what
    /// they are and what is wrong with them.
    static void run(XMLConfigManager& config, DisplayDescription& description);
};

}  // namespace Veltrani::DisplayReport
