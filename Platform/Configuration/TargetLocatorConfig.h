#pragma once

#include "Common/Point.h"
#include "Configuration/FixedRecord.h"

#include <string>
#include <utility>
#include <vector>

/// What the target locators of all channels have in common. Lengths in native units, angles in radians.
///
/// The setters change what the getters of the same name return; `docs/writing-back.md` states the rules of an
/// `XMLConfigFile`. Unless a record implements them they throw `VeltraniException`.
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

    virtual void setTargetPosition(const Point<double, 3>& /*position*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The target position");
    }
    /// @param angles about Z (sign reversed), X and Y
    virtual void setMirrorOrientation(const Point<double, 3>& /*angles*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The orientation of the mirror");
    }
    virtual void setMirrorPosition(const Point<double, 3>& /*position*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The position of the mirror");
    }
    virtual void setMirrorRadius(double /*length*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The radius of the mirror");
    }
    /// @param pairs both angles increasing from pair to pair; none at all for no table
    virtual void setYawTable(const std::vector<std::pair<double, double>>& /*pairs*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The yaw table");
    }
    virtual void setPitchTable(const std::vector<std::pair<double, double>>& /*pairs*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The pitch table");
    }
};
