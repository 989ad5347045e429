#pragma once

#include "Common/Point.h"
#include "DeviceFramework2/CmdResultNotAvailableException.h"
#include "DeviceFramework2/Command.h"
#include "DeviceFramework2/Device.h"

#include <optional>
#include <string>
#include <utility>

/// The commands of the device framework.
namespace Veltrani::DeviceFramework2 {

/// A command with a result.
template <class Result>
class GetCommand : public Command {
public:
    /// Called by the device.
    void setResult(Result result) { m_result = std::move(result); }

    /// Throws `CmdResultNotAvailableException`, naming the command, until a device has stored a result.
    [[nodiscard]] const Result& getResult() const {
        if (!m_result) {
            throw CmdResultNotAvailableException(typeName());
        }
        return *m_result;
    }

private:
    std::optional<Result> m_result;
};

/// The version of the projector's software, UTF-8.
class GetFirmware : public GetCommand<std::string> {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// Width and height of the panel in pixels.
class GetNativeResolution : public GetCommand<Point<int, 2>> {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// The input that is shown, as an index into the projector's own list of inputs; 0 is the first.
class GetActiveInputSignalIndex : public GetCommand<int> {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// The state of the lamp or light source.
enum class PowerState {
    STANDBY,     ///< off: carries out very few commands
    ON,          ///< shows a picture
    COOLING,     ///< on its way to standby
    WARMING_UP,  ///< on its way to on
};

/// The state of the lamp or light source of the projector.
class GetPowerState : public GetCommand<PowerState> {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// Whether the picture is muted: true while it is black, whatever the input signal is.
class GetPictureMute : public GetCommand<bool> {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// The name that the owner gave to the projector, UTF-8; may be empty.
class GetProjectorName : public GetCommand<std::string> {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// Maker and model, UTF-8, with a blank between them.
class GetModel : public GetCommand<std::string> {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// Shows another input.
class SetActiveInputSignalIndex : public Command {
public:
    /// @param index into the projector's own list of inputs; 0 is the first
    explicit SetActiveInputSignalIndex(int index) : m_index(index) {}

    [[nodiscard]] int getIndex() const { return m_index; }
    [[nodiscard]] std::string typeName() const override;

private:
    int m_index;
};

/// A command that fills the picture. The device defines the meaning of the parameter: most have none and ignore it.
class FillParameters : public Command {
public:
    explicit FillParameters(int fillParameter) : m_fillParameter(fillParameter) {}

    [[nodiscard]] int getFillParameter() const { return m_fillParameter; }

private:
    int m_fillParameter;
};

/// Shows a black picture.
class Device::Drawing::RunFillBlackTo : public FillParameters {
public:
    using FillParameters::FillParameters;
    [[nodiscard]] std::string typeName() const override;
};

/// Shows a picture of half grey.
class Device::Drawing::RunFill50GrayTo : public FillParameters {
public:
    using FillParameters::FillParameters;
    [[nodiscard]] std::string typeName() const override;
};

/// Shows the input signal again.
class Device::Drawing::RunClearTo : public FillParameters {
public:
    using FillParameters::FillParameters;
    [[nodiscard]] std::string typeName() const override;
};

/// Switches the geometric correction of the picture off.
class Device::Geometry::DisableWhiteLevelWarp : public Command {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// Switches the dimming of the overlap with the neighbours off.
class Device::Geometry::DisableWhiteLevelBlend : public Command {
public:
    [[nodiscard]] std::string typeName() const override;
};

/// Switches the lifting of black outside the overlap off.
class Device::Geometry::DisableBlackLevelBlend : public Command {
public:
    [[nodiscard]] std::string typeName() const override;
};

}  // namespace Veltrani::DeviceFramework2
