#pragma once

#include "Common/Point.h"

#include <string>
#include <utility>
#include <vector>

/// What the target locators of all channels have in common. Lengths in native units, angles in radians.
class TargetLocatorConfig {
public:
    virtual ~TargetLocatorConfig() = default;

    /// One of `BaseConfig::TARGET_DATA_*`.
    [[nodiscard]] virtual std::wstring getTargetDataType() const = 0;
    /// The eye point that the targets are placed for.
    [[nodiscard]] virtual Point<double, 3> getTargetPosition() const = 0;
    /// The spherical mirror of a collimated display: angles about Z (sign reversed), X and Y; position; radius.
    [[nodiscard]] virtual Point<double, 3> getMirrorOrientation() const = 0;
    [[nodiscard]] virtual Point<double, 3> getMirrorPosition() const = 0;
    [[nodiscard]] virtual double getMirrorRadius() const = 0;
    /// Pairs (measured angle, corrected angle), measured angles strictly increasing; empty when headings are not
    /// corrected.
    [[nodiscard]] virtual std::vector<std::pair<double, double>> getYawTable() const = 0;
    [[nodiscard]] virtual std::vector<std::pair<double, double>> getPitchTable() const = 0;
};
