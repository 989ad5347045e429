#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Veltrani::DeviceFramework2 {

class AbstractDevice;
class Command;
struct DeviceException;
class PJLinkProjector;

/// Talks with many devices at the same time: they take as long as the slowest of them, not as long as all together.
///
///     DeviceTalks talks;
///     for (const auto& projector : projectors) {
///         talks.addContact(*projector, [](const DeviceException* fault) { return nullptr; });
///     }
///     talks.run();
///
/// One thread, which waits for all connections at once. Each device still has what it has by itself: its commands one
/// after another, a short session for each, the limits of its own settings, the same bytes and the same faults. Devices
/// at one network address take turns, in the order in which they were added, since a projector may take a single
/// connection. Devices that are not on the network carry their commands out at once.
class DeviceTalks {
public:
    /// Connections that are open at the same time; fewer where the process may have few open files, of which at most
    /// a quarter is used.
    static constexpr std::size_t MOST_CONNECTIONS = 64;

    /// Chooses the next command of one device; null ends its talk. Called when the talk begins and after each command,
    /// with the fault of what went before, or null when that succeeded. What it throws leaves `run`.
    using Next = std::function<std::shared_ptr<Command>(const DeviceException* fault)>;

    /// All talks are added before `run`.
    DeviceTalks();
    ~DeviceTalks();
    DeviceTalks(const DeviceTalks&) = delete;
    DeviceTalks& operator=(const DeviceTalks&) = delete;

    /// @param device must outlive its talk
    void add(AbstractDevice& device, Next next);
    /// As `add`, with a first contact (`PJLinkProjector::contact`) before the first command: `next` is called when that
    /// is over.
    void addContact(PJLinkProjector& projector, Next next);

    /// Returns when every talk has ended, or after `limit`: then the connections that are left are closed, and `next`
    /// is not called again for those talks.
    void run(std::optional<std::chrono::milliseconds> limit = std::nullopt);

private:
    struct Talk;

    void beginTalks();
    [[nodiscard]] std::vector<Talk*> waitingTalks() const;
    static void waitFor(const std::vector<Talk*>& talking, std::chrono::milliseconds longest);

    std::vector<std::unique_ptr<Talk>> m_talks;
};

}  // namespace Veltrani::DeviceFramework2
