#pragma once

#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/Device.h"
#include "DeviceFramework2/VirtualProjectorSnippet.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace Veltrani::DeviceFramework2 {

/// A simulated projector, offline: it stands in for one that cannot be reached. Nothing is ever sent anywhere.
///
/// It accepts every command of the framework and records it. Its firmware text states that it is simulated. Its snippet
/// and its UID text are those of the real projector, unchanged, so that a configuration that is saved meanwhile still
/// leads to the real one.
class VirtualProjector : public Device {
public:
    /// A command that was sent, and its parameter if it has one.
    struct SentCommand {
        std::string typeName;
        std::optional<int> parameter;

        friend bool operator==(const SentCommand&, const SentCommand&) = default;
    };

    /// The number of commands that are recorded; older ones are dropped.
    static constexpr std::size_t LONGEST_HISTORY = 1000;

    /// @param uid the identity of the real projector, or another unique one when the snippet wraps none
    VirtualProjector(const VirtualProjectorSnippet& snippet, const std::wstring& uid);

    /// Returns false only for commands that do not belong to this framework.
    [[nodiscard]] bool supports(const Command& command) const override;
    /// Throws `DeviceException` for null, for a command that is not supported, and for a negative input.
    void execute(const std::shared_ptr<Command>& command) override;

    [[nodiscard]] std::wstring getUID() const override;
    [[nodiscard]] std::wstring getDeviceSnippet() const override;
    [[nodiscard]] std::wstring getUidSourceText() const override;
    /// "Virtual projector <UID>"; never null.
    [[nodiscard]] const Location* getLocation() const override;
    [[nodiscard]] int getTypeCode() const override;

    /// What was sent, oldest first.
    [[nodiscard]] const std::deque<SentCommand>& sentCommands() const { return m_sent; }

private:
    class Place : public Location {
    public:
        explicit Place(const std::wstring& uid) : m_description(L"Virtual projector " + uid) {}
        [[nodiscard]] std::wstring getDescription() const override { return m_description; }

    private:
        std::wstring m_description;
    };

    [[nodiscard]] static std::optional<int> parameterOf(const Command& command);
    void answer(Command& command);

    VirtualProjectorSnippet m_snippet;
    std::wstring m_uid;
    Place m_place;
    int m_input;
    bool m_black = false;
    std::deque<SentCommand> m_sent;
};

}  // namespace Veltrani::DeviceFramework2
