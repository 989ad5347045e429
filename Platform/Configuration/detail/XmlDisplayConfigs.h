#pragma once

#include "Configuration/IScreenConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/ElementWriter.h"
#include "Configuration/detail/FolderPath.h"

#include <libxml/tree.h>

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The records of what a display has once, read from a checked document: its units, its screen and the data of its
// targets.
namespace Veltrani::ConfigurationDetail {

/// What the records of one document share.
struct DisplayContext {
    DisplayContext(const ElementReader& readerOfDocument, FolderPath folderOfFile)
        : reader(readerOfDocument), folder(std::move(folderOfFile)) {}

    ElementReader reader;
    FolderPath folder;
    Point<double, 3> eyePoint;  ///< of the screen; what states no place of its own follows it
};

/// The attributes of a place and of an orientation, in the order of their points.
inline constexpr std::array<const char*, 3> POSITION_NAMES{"x", "y", "z"};
inline constexpr std::array<const char*, 3> ORIENTATION_NAMES{"z", "x", "y"};

/// @param current lives until the changes are written
[[nodiscard]] std::vector<NumberChange> changesOfPoint(const std::array<const char*, 3>& names,
                                                       Point<double, 3>& current, const Point<double, 3>& wanted);

/// The `<Units>` of a checked document.
class XmlUnitsConfig : public IUnitsConfig {
public:
    explicit XmlUnitsConfig(const xmlNode* units);

    [[nodiscard]] std::wstring getUnitName() const override { return m_unitName; }

private:
    std::wstring m_unitName;
};

/// The `<Screen>` of a checked document: read once, every change written through to the document.
class XmlScreenConfig : public IScreenConfig {
public:
    /// @param display lives longer; receives the eye point
    /// @param nativeUnit name of the native unit: that of the files, too, when the screen states none
    XmlScreenConfig(xmlNode* screen, DisplayContext& display, std::wstring nativeUnit);

    [[nodiscard]] std::wstring getShape() const override { return m_shape; }
    [[nodiscard]] std::wstring getContentMeshFile(int index) const override;
    [[nodiscard]] std::wstring getMeasuredMeshFile(int index) const override;
    [[nodiscard]] std::wstring getModelPcdFile(int index) const override;
    [[nodiscard]] std::wstring getImportOrientationParam1() const override { return m_up; }
    [[nodiscard]] std::wstring getImportOrientationParam2() const override { return m_forward; }
    [[nodiscard]] std::wstring getUnitName() const override { return m_fileUnit; }
    [[nodiscard]] double getScale() const override { return m_scale; }
    [[nodiscard]] Point<double, 3> getEyePoint() const override { return m_display.eyePoint; }
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

    void setEyePoint(const Point<double, 3>& position) override;
    void setCentre(const Point<double, 3>& position) override;
    void setOrientation(const Point<double, 3>& angles) override;
    void setRadius(double length) override;
    void setWidth(double length) override;
    void setHeight(double length) override;
    void setAzimuth(double min, double max) override;
    void setElevation(double min, double max) override;
    void setRails(const std::vector<Point<double, 3>>& lower, const std::vector<Point<double, 3>>& upper) override;

private:
    void readFiles();
    void readShape();
    void readLimits();
    [[nodiscard]] ElementWriter writer() const;

    xmlNode* m_screen;
    DisplayContext& m_display;
    std::wstring m_shape;
    std::wstring m_allowed;
    std::vector<std::wstring> m_contentMeshes;
    std::vector<std::wstring> m_measuredMeshes;
    std::vector<std::wstring> m_modelClouds;
    std::wstring m_up;
    std::wstring m_forward;
    std::wstring m_fileUnit;
    double m_scale = 1.0;
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

/// The `<TargetData>` of a checked document: read once, every change written through to the document.
class XmlTargetLocatorConfig : public TargetLocatorConfig {
public:
    using Table = std::vector<std::pair<double, double>>;

    /// @param display lives longer; the targets are placed for its eye point unless the element states another place
    XmlTargetLocatorConfig(xmlNode* targetData, const DisplayContext& display);

    [[nodiscard]] std::wstring getTargetDataType() const override { return m_type; }
    [[nodiscard]] Point<double, 3> getTargetPosition() const override {
        return m_position.value_or(m_display.eyePoint);
    }
    [[nodiscard]] Point<double, 3> getMirrorOrientation() const override { return m_mirrorOrientation; }
    [[nodiscard]] Point<double, 3> getMirrorPosition() const override { return m_mirrorPosition; }
    [[nodiscard]] double getMirrorRadius() const override { return m_mirrorRadius; }
    [[nodiscard]] Table getYawTable() const override { return m_yawTable; }
    [[nodiscard]] Table getPitchTable() const override { return m_pitchTable; }

    void setTargetPosition(const Point<double, 3>& position) override;
    void setMirrorOrientation(const Point<double, 3>& angles) override;
    void setMirrorPosition(const Point<double, 3>& position) override;
    void setMirrorRadius(double length) override;
    void setYawTable(const Table& pairs) override { writeTable("YawTable", m_yawTable, pairs); }
    void setPitchTable(const Table& pairs) override { writeTable("PitchTable", m_pitchTable, pairs); }

private:
    void writeMirror(const char* child, const std::array<const char*, 3>& names, Point<double, 3>& current,
                     const Point<double, 3>& wanted);
    void writeTable(const char* name, Table& current, const Table& wanted);
    void requireFollowing(const RowForm& form, const StatedRow& before, const StatedRow& row) const;
    [[nodiscard]] ElementWriter writer() const;

    xmlNode* m_targetData;
    const DisplayContext& m_display;
    std::wstring m_type;
    std::optional<Point<double, 3>> m_position;  // none: the eye point
    Point<double, 3> m_mirrorOrientation;
    Point<double, 3> m_mirrorPosition;
    double m_mirrorRadius = 0.0;
    Table m_yawTable;
    Table m_pitchTable;
};

}  // namespace Veltrani::ConfigurationDetail
