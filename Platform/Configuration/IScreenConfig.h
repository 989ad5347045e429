#pragma once

#include "Common/Point.h"
#include "Configuration/FixedRecord.h"

#include <string>
#include <vector>

/// The description of the physical screen.
///
/// World frame: +x right, +y forward, +z up, right-handed; lengths in native units (those of `IUnitsConfig`), angles in
/// radians. Only the mesh and cloud files are in the screen's own unit (`getUnitName`, `getScale`) and are scaled on
/// load. Getters that a shape does not use return their neutral value.
///
/// The setters change what the getters of the same name return; `docs/writing-back.md` states the rules of an
/// `XMLConfigFile`. Unless a record implements them they throw `VeltraniException`.
class IScreenConfig {
public:
    virtual ~IScreenConfig() = default;

    /// One of `BaseConfig::SHAPE_*`.
    [[nodiscard]] virtual std::wstring getShape() const = 0;

    /// File names, resolved against the folder of the configuration; empty when there is none at that index (0 is the
    /// first).
    [[nodiscard]] virtual std::wstring getContentMeshFile(int index) const = 0;
    [[nodiscard]] virtual std::wstring getMeasuredMeshFile(int index) const = 0;
    [[nodiscard]] virtual std::wstring getModelPcdFile(int index) const = 0;

    /// The up and the forward axis of the mesh and cloud files: "X", "-X", "Y", "-Y", "Z" or "-Z".
    [[nodiscard]] virtual std::wstring getImportOrientationParam1() const = 0;
    [[nodiscard]] virtual std::wstring getImportOrientationParam2() const = 0;

    /// Unit of the mesh and cloud files, as `UnitConversionTable` names it.
    [[nodiscard]] virtual std::wstring getUnitName() const = 0;
    /// Native units per unit of the files; read only when the unit is "custom".
    [[nodiscard]] virtual double getScale() const = 0;

    /// The place from which the audience looks.
    [[nodiscard]] virtual Point<double, 3> getEyePoint() const = 0;

    /// Centre of a sphere; centre of the axis of a cylinder; centre of a flat rectangle.
    [[nodiscard]] virtual Point<double, 3> getCentre() const { return {}; }
    /// Angles about Z (sign reversed), X and Y, as `Veltrani::rotationZXY` takes them.
    [[nodiscard]] virtual Point<double, 3> getOrientation() const { return {}; }
    /// Radius of a sphere or a cylinder.
    [[nodiscard]] virtual double getRadius() const { return 0.0; }
    /// Width of a flat rectangle.
    [[nodiscard]] virtual double getWidth() const { return 0.0; }
    /// Height of a flat rectangle or of a cylinder.
    [[nodiscard]] virtual double getHeight() const { return 0.0; }
    /// Limits of a sphere or cylinder in its own, unrotated frame: azimuth = atan2(x, y), elevation = asin(z / r).
    [[nodiscard]] virtual double getAzimuthMin() const { return 0.0; }
    [[nodiscard]] virtual double getAzimuthMax() const { return 0.0; }
    [[nodiscard]] virtual double getElevationMin() const { return 0.0; }
    [[nodiscard]] virtual double getElevationMax() const { return 0.0; }
    /// The two rails of a ruled surface, point by point from left to right; equally many points on both.
    [[nodiscard]] virtual std::vector<Point<double, 3>> getLowerRail() const { return {}; }
    [[nodiscard]] virtual std::vector<Point<double, 3>> getUpperRail() const { return {}; }
    /// The rules of the check that the screen is allowed to break, with blanks between their names; empty where it
    /// states none.
    [[nodiscard]] virtual std::wstring getAllowed() const { return {}; }

    virtual void setEyePoint(const Point<double, 3>& /*position*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The eye point");
    }
    virtual void setCentre(const Point<double, 3>& /*position*/) { Veltrani::refuseChangeOfFixedRecord(L"The centre"); }
    /// @param angles about Z (sign reversed), X and Y
    virtual void setOrientation(const Point<double, 3>& /*angles*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The orientation");
    }
    virtual void setRadius(double /*length*/) { Veltrani::refuseChangeOfFixedRecord(L"The radius"); }
    virtual void setWidth(double /*length*/) { Veltrani::refuseChangeOfFixedRecord(L"The width"); }
    virtual void setHeight(double /*length*/) { Veltrani::refuseChangeOfFixedRecord(L"The height"); }
    virtual void setAzimuth(double /*min*/, double /*max*/) { Veltrani::refuseChangeOfFixedRecord(L"The azimuth"); }
    virtual void setElevation(double /*min*/, double /*max*/) { Veltrani::refuseChangeOfFixedRecord(L"The elevation"); }
    /// Both rails at once: they have equally many points.
    virtual void setRails(const std::vector<Point<double, 3>>& /*lower*/,
                          const std::vector<Point<double, 3>>& /*upper*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The rails");
    }
};
