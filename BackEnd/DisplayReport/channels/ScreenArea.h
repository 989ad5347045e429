#pragma once

#include <string>

class ProjectorConfig;

namespace Veltrani::DisplayReport {

/// The part of the screen that a channel covers, in the screen's normalised 2D parameters.
struct ScreenArea {
    double left = 0;
    double right = 0;
    double bottom = 0;
    double top = 0;

    /// True when all four bounds are configured.
    [[nodiscard]] bool complete() const;
    /// What keeps targets from being placed by it, and what to do; empty when nothing does.
    [[nodiscard]] std::string fault() const;
    /// "left 0 right 0.5 bottom 0 top 1"; "no screen area" without any bound; "screen area without top" without some.
    [[nodiscard]] std::string describe() const;
};

[[nodiscard]] ScreenArea screenAreaOf(const ProjectorConfig& projector);

}  // namespace Veltrani::DisplayReport
