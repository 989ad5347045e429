#pragma once

#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/Device.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/PjlinkSettings.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DeviceFramework2Detail {

class PjlinkConversation;
struct PjlinkStep;

}  // namespace Veltrani::DeviceFramework2Detail

namespace Veltrani::DeviceFramework2 {

/// A projector that is controlled over the network by the PJLink standard, class 1 or 2.
///
/// What each command sends is listed in docs/devices.md, by the same rows as in `actions` of the source.
/// `RunFill50GrayTo`, `DisableWhiteLevelWarp`, `DisableWhiteLevelBlend` and `DisableBlackLevelBlend` are not in the
/// standard and send nothing: the first throws, the others log one warning per projector that its own warp and blend
/// must be off.
///
/// `supports` is false for these four, and for the class 2 commands of a class 1 projector. Fill parameters are
/// ignored. Each command is a session of its own, and every wait in it has a limit (`PjlinkSettings`). Every fault is a
/// `DeviceException` that names the projector, its address and the command; its cause is `NOT_NOW` when the projector
/// refused the command for the moment because it is not on. To talk with many projectors at the same time, see
/// `DeviceTalks`.
class PJLinkProjector : public Device {
public:
    /// Opens no connection. The snippet must have a host.
    PJLinkProjector(const DeviceSnippet& snippet, const PjlinkSettings& settings);
    ~PJLinkProjector() override;

    /// Connects, logs in and queries the class. Throws `DeviceException` when the projector does not answer; until this
    /// has succeeded it is taken for class 1.
    void contact();

    [[nodiscard]] bool supports(const Command& command) const override;
    void execute(const std::shared_ptr<Command>& command) override;

    [[nodiscard]] std::wstring getUID() const override;
    /// Returns the snippet in one line; with the host, even where a search found it.
    [[nodiscard]] std::wstring getDeviceSnippet() const override;
    /// Returns the MAC address.
    [[nodiscard]] std::wstring getUidSourceText() const override;
    /// "PJLink 192.0.2.10:4352"; never null.
    [[nodiscard]] const Location* getLocation() const override;
    [[nodiscard]] int getTypeCode() const override;

private:
    friend class DeviceTalks;

    struct Action;
    class Address;
    using Step = std::unique_ptr<DeviceFramework2Detail::PjlinkStep>;

    static const std::vector<Action>& actions();
    static const Action* actionFor(const Command& command);
    [[nodiscard]] std::wstring name() const;

    /// Returns the first step of a command; null when nothing is to be sent. Throws `DeviceException` with the cause
    /// alone for a command that the projector does not accept.
    Step begin(Command& command);
    /// Returns the first step of the contact.
    Step beginContact();
    /// Carries the steps out, waiting for each reply.
    void converse(Step step) const;
    /// Begins a session, without waiting for it.
    [[nodiscard]] std::unique_ptr<DeviceFramework2Detail::PjlinkConversation> connect() const;
    /// Returns the fault of a command, or of the contact when it is null, with everything that a message names.
    [[nodiscard]] DeviceException faultOf(const Command* command, const DeviceException& cause) const;

    Step readInput(GetActiveInputSignalIndex& command);
    Step readModel(GetModel& command);
    Step setInput(SetActiveInputSignalIndex& command);
    Step closeShutter(Device::Drawing::RunFillBlackTo& command);
    Step openShutter(Device::Drawing::RunClearTo& command);
    Step readInputs(std::function<Step(const std::vector<std::string>&)> then);
    void warnAboutCorrections(const Command& command);

    DeviceSnippet m_snippet;
    PjlinkSettings m_settings;
    std::unique_ptr<Address> m_address;
    int m_class = 1;
    char m_inputClass = '1';        ///< class of the input commands that the projector knows
    bool m_mutesWithSound = false;  ///< the shutter was last closed by `AVMT 31`
    bool m_warned = false;
};

}  // namespace Veltrani::DeviceFramework2
