#pragma once

#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/detail/ElementReader.h"

#include <libxml/tree.h>

#include <string>
#include <utility>
#include <vector>

namespace Veltrani {

/// The `<TargetData>` of a checked document, read once.
class XmlTargetLocatorConfig : public TargetLocatorConfig {
public:
    /// @param eyePoint where the targets are placed for when the element states no position of its own
    XmlTargetLocatorConfig(const xmlNode* targetData, const ElementReader& reader, const Point<double, 3>& eyePoint);

    [[nodiscard]] std::wstring getTargetDataType() const override { return m_type; }
    [[nodiscard]] Point<double, 3> getTargetPosition() const override { return m_position; }
    [[nodiscard]] Point<double, 3> getMirrorOrientation() const override { return m_mirrorOrientation; }
    [[nodiscard]] Point<double, 3> getMirrorPosition() const override { return m_mirrorPosition; }
    [[nodiscard]] double getMirrorRadius() const override { return m_mirrorRadius; }
    [[nodiscard]] std::vector<std::pair<double, double>> getYawTable() const override { return m_yawTable; }
    [[nodiscard]] std::vector<std::pair<double, double>> getPitchTable() const override { return m_pitchTable; }

private:
    std::wstring m_type;
    Point<double, 3> m_position;
    Point<double, 3> m_mirrorOrientation;
    Point<double, 3> m_mirrorPosition;
    double m_mirrorRadius = 0.0;
    std::vector<std::pair<double, double>> m_yawTable;
    std::vector<std::pair<double, double>> m_pitchTable;
};

}  // namespace Veltrani
