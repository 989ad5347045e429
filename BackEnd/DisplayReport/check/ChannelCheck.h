#pragma once

class XMLConfigManager;

namespace Veltrani::DisplayReport {

struct DisplayDescription;

/// The part of the check that concerns the channels: what each will use, and what it lacks.
class ChannelCheck {
public:
    ChannelCheck() = delete;

    static void run(const XMLConfigManager& config, DisplayDescription& description);
};

}  // namespace Veltrani::DisplayReport
