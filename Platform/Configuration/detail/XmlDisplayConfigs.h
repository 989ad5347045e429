#pragma once

#include "Configuration/IScreenConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/FolderPath.h"

#include <libxml/tree.h>

#include <string>
#include <utility>
#include <vector>

// The records of what a display has once, read from a checked document: its units, its screen and the data of its
// targets.
namespace Veltrani::ConfigurationDetail {

/// The `<Units>` of a checked document.
class XmlUnitsConfig : public IUnitsConfig {
public:
    explicit XmlUnitsConfig(const xmlNode* units);

    [[nodiscard]] std::wstring getUnitName() const override { return m_unitName; }

private:
    std::wstring m_unitName;
};

/// The `<Screen>` of a checked document, read once.
class XmlScreenConfig : public IScreenConfig {
public:
    /// @param nativeUnit name of the native unit: that of the files, too, when the screen states none
    XmlScreenConfig(const xmlNode* screen, const ElementReader& reader, const FolderPath& folder,
                    std::wstring nativeUnit);

    [[nodiscard]] std::wstring getShape() const override { return m_shape; }
    [[nodiscard]] std::wstring getContentMeshFile(int index) const override;
    [[nodiscard]] std::wstring getMeasuredMeshFile(int index) const override;
    [[nodiscard]] std::wstring getModelPcdFile(int index) const override;
    [[nodiscard]] std::wstring getImportOrientationParam1() const override { return m_up; }
    [[nodiscard]] std::wstring getImportOrientationParam2() const override { return m_forward; }
    [[nodiscard]] std::wstring getUnitName() const override { return m_fileUnit; }
    [[nodiscard]] double getScale() const override { return m_scale; }
    [[nodiscard]] Point<double, 3> getEyePoint() const override { return m_eyePoint; }
    [[nodiscard]] Point<double, 3> getCentre() const override { return m_centre; }
    [[nodiscard]] Point<double, 3> getOrientation() const override { return m_orientation; }
    [[nodiscard]] double getRadius() const override { return m_radius; }
    [[nodiscard]] double getWidth() const override { return m_width; }
    [[nodiscard]] double getHeight() const override { return m_height; }
    [[nodiscard]] double getAzimuthMin() const override { return m_azimuthMin; }
    [[nodiscard]] double getAzimuthMax() const override { return m_azimuthMax; }
    [[nodiscard]] double getElevationMin() const override { return m_elevationMin; }
    [[nodiscard]] double getElevationMax() const override { return m_elevationMax; }
    [[nodiscard]] std::vector<Point<double, 3>> getLowerRail() const override { return m_lowerRail; }
    [[nodiscard]] std::vector<Point<double, 3>> getUpperRail() const override { return m_upperRail; }
    [[nodiscard]] std::wstring getAllowed() const override { return m_allowed; }

private:
    void readFiles(const xmlNode* screen, const ElementReader& reader, const FolderPath& folder);
    void readShape(const xmlNode* screen, const ElementReader& reader);
    void readLimits(const xmlNode* screen, const ElementReader& reader);

    std::wstring m_shape;
    std::wstring m_allowed;
    std::vector<std::wstring> m_contentMeshes;
    std::vector<std::wstring> m_measuredMeshes;
    std::vector<std::wstring> m_modelClouds;
    std::wstring m_up;
    std::wstring m_forward;
    std::wstring m_fileUnit;
    double m_scale = 1.0;
    Point<double, 3> m_eyePoint;
    Point<double, 3> m_centre;
    Point<double, 3> m_orientation;
    double m_radius = 0.0;
    double m_width = 0.0;
    double m_height = 0.0;
    double m_azimuthMin = 0.0;
    double m_azimuthMax = 0.0;
    double m_elevationMin = 0.0;
    double m_elevationMax = 0.0;
    std::vector<Point<double, 3>> m_lowerRail;
    std::vector<Point<double, 3>> m_upperRail;
};

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

}  // namespace Veltrani::ConfigurationDetail
