#pragma once

#include "Common/Point.h"
#include "Configuration/FixedRecord.h"

#include <string>

/// The configuration entry of one projector. Owned by the configuration; stays valid and identical while the entry is
/// renamed or moved, and is destroyed when it is removed. Lengths in native units, angles in radians.
///
/// The setters of the geometry change what the getters of the same name return; `docs/writing-back.md` states the rules
/// of an `XMLConfigFile`. Unless a record implements them they throw `VeltraniException`.
class ProjectorConfig {
public:
    virtual ~ProjectorConfig() = default;

    /// The configuration id: unique in the configuration, equal to the UID of the projector once it has been found.
    [[nodiscard]] virtual std::wstring getIdentity() const = 0;
    /// The entry's own label in the configuration file, used in messages.
    [[nodiscard]] virtual std::wstring getSectionID() const = 0;
    [[nodiscard]] virtual std::wstring getName() const = 0;
    virtual void setName(const std::wstring& name) = 0;
    /// The id before the last rename; empty when the entry was never renamed.
    [[nodiscard]] virtual std::wstring getOldUID() const = 0;
    /// The description of the device, an XML text that the device framework reads.
    [[nodiscard]] virtual std::wstring getDeviceSnippet() const = 0;
    virtual void setDeviceSnippet(const std::wstring& snippet) = 0;
    /// Size of the picture in pixels.
    [[nodiscard]] virtual int getWidth() const = 0;
    virtual void setWidth(int pixels) = 0;
    [[nodiscard]] virtual int getHeight() const = 0;
    virtual void setHeight(int pixels) = 0;
    /// @param index 0 to 3; others throw `VeltraniException`
    virtual void setPondOfMirror(int index, unsigned char size) = 0;
    [[nodiscard]] virtual int getPondOfMirror(int index) const = 0;
    /// Name of the custom planar map file as configured (see `XMLConfigManager::processPath`); empty when there is
    /// none.
    [[nodiscard]] virtual std::wstring getCustomPlanarFile() const = 0;
    /// Name of the projection model, "Name" or "Name:file" with the file already resolved; empty when there is none.
    [[nodiscard]] virtual std::wstring getProjectionModelName() const = 0;
    /// Orientation, as `Veltrani::rotationZXY` takes its angles.
    [[nodiscard]] virtual double getOrientationZ() const = 0;
    [[nodiscard]] virtual double getOrientationX() const = 0;
    [[nodiscard]] virtual double getOrientationY() const = 0;
    /// Angles of the picture's edges against the forward direction.
    [[nodiscard]] virtual double getFrustumTop() const = 0;
    [[nodiscard]] virtual double getFrustumBottom() const = 0;
    [[nodiscard]] virtual double getFrustumLeft() const = 0;
    [[nodiscard]] virtual double getFrustumRight() const = 0;
    [[nodiscard]] virtual Point<double, 3> getPosition() const = 0;
    /// The screen area that the channel covers, in the screen's normalised 2D parameters; -1000.0 where not configured.
    [[nodiscard]] virtual double getScreenLeft() const = 0;
    [[nodiscard]] virtual double getScreenRight() const = 0;
    [[nodiscard]] virtual double getScreenTop() const = 0;
    [[nodiscard]] virtual double getScreenBottom() const = 0;
    /// The channel's rectangle in the planar layout.
    [[nodiscard]] virtual double getLayoutXMin() const = 0;
    [[nodiscard]] virtual double getLayoutXMax() const = 0;
    [[nodiscard]] virtual double getLayoutYMin() const = 0;
    [[nodiscard]] virtual double getLayoutYMax() const = 0;
    /// The text of a child element that has no operation of its own here, such as "Note". Empty where the entry has no
    /// such element, and for records that are not made from a file.
    [[nodiscard]] virtual std::wstring getText(const std::wstring& /*element*/) const { return {}; }
    /// The rules of the check that the entry allows to be broken, with blanks between their names. Empty where it
    /// states none, and for records that are not made from a file.
    [[nodiscard]] virtual std::wstring getAllowed() const { return {}; }

    virtual void setPosition(const Point<double, 3>& /*position*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The position");
    }
    virtual void setOrientationZ(double /*angle*/) { Veltrani::refuseChangeOfFixedRecord(L"The orientation"); }
    virtual void setOrientationX(double /*angle*/) { Veltrani::refuseChangeOfFixedRecord(L"The orientation"); }
    virtual void setOrientationY(double /*angle*/) { Veltrani::refuseChangeOfFixedRecord(L"The orientation"); }
    virtual void setFrustumTop(double /*angle*/) { Veltrani::refuseChangeOfFixedRecord(L"The frustum"); }
    virtual void setFrustumBottom(double /*angle*/) { Veltrani::refuseChangeOfFixedRecord(L"The frustum"); }
    virtual void setFrustumLeft(double /*angle*/) { Veltrani::refuseChangeOfFixedRecord(L"The frustum"); }
    virtual void setFrustumRight(double /*angle*/) { Veltrani::refuseChangeOfFixedRecord(L"The frustum"); }
    /// `SCREEN_BOUND_NOT_CONFIGURED` removes a bound.
    virtual void setScreenLeft(double /*bound*/) { Veltrani::refuseChangeOfFixedRecord(L"The screen area"); }
    virtual void setScreenRight(double /*bound*/) { Veltrani::refuseChangeOfFixedRecord(L"The screen area"); }
    virtual void setScreenTop(double /*bound*/) { Veltrani::refuseChangeOfFixedRecord(L"The screen area"); }
    virtual void setScreenBottom(double /*bound*/) { Veltrani::refuseChangeOfFixedRecord(L"The screen area"); }
    virtual void setLayoutXMin(double /*length*/) { Veltrani::refuseChangeOfFixedRecord(L"The layout"); }
    virtual void setLayoutXMax(double /*length*/) { Veltrani::refuseChangeOfFixedRecord(L"The layout"); }
    virtual void setLayoutYMin(double /*length*/) { Veltrani::refuseChangeOfFixedRecord(L"The layout"); }
    virtual void setLayoutYMax(double /*length*/) { Veltrani::refuseChangeOfFixedRecord(L"The layout"); }
    /// @param name "Name" or "Name:file"; empty for no model
    virtual void setProjectionModelName(const std::wstring& /*name*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The projection model");
    }
    /// @param file stored as it is; empty for no map
    virtual void setCustomPlanarFile(const std::wstring& /*file*/) {
        Veltrani::refuseChangeOfFixedRecord(L"The custom planar map");
    }

    /// What a bound of the screen area returns when it is not configured.
    static constexpr double SCREEN_BOUND_NOT_CONFIGURED = -1000.0;
};
