#pragma once

class XMLConfigManager;

namespace Veltrani::DisplayReport {

struct DisplayDescription;
struct DisplayFacts;

/// The part of the check that concerns the channels: what each will use, and what it lacks.
class ChannelCheck {
public:
    ChannelCheck() = delete;

    /// @param facts of the same configuration
    static void run(const XMLConfigManager& config, const DisplayFacts& facts, DisplayDescription& description);
};

}  // namespace Veltrani::DisplayReport
