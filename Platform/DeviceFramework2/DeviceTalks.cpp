#include "DeviceFramework2/DeviceTalks.h"

#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/PJLinkProjector.h"
#include "DeviceFramework2/detail/PjlinkConversation.h"

#include <poll.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace Veltrani::DeviceFramework2 {

using DeviceFramework2Detail::Deadline;
using DeviceFramework2Detail::PjlinkConversation;
using DeviceFramework2Detail::PjlinkStep;
using DeviceFramework2Detail::Socket;

namespace {

/// Descriptors that a process may have, of which the connections take one: the rest is for everything else that the
/// process has open.
constexpr rlim_t DESCRIPTORS_PER_CONNECTION = 4;

std::size_t mostConnections() {
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0) {
        return DeviceTalks::MOST_CONNECTIONS;
    }
    const rlim_t share = std::max<rlim_t>(files.rlim_cur / DESCRIPTORS_PER_CONNECTION, 1);
    return static_cast<std::size_t>(std::min<rlim_t>(share, DeviceTalks::MOST_CONNECTIONS));
}

}  // namespace

/// The course of one talk: contact and commands, each a conversation of its own.
struct DeviceTalks::Talk {
    enum class State { NOT_BEGUN, BEGUN, OVER };

    Talk(AbstractDevice& itsDevice, PJLinkProjector* itsProjector, bool withContact, Next itsNext)
        : device(itsDevice), projector(itsProjector), contact(withContact), next(std::move(itsNext)) {
        // Kept here: the callback at the end of the talk may destroy the projector.
        address = projector == nullptr ? std::wstring() : projector->getLocation()->getDescription();
    }

    void begin() {
        state = State::BEGUN;
        goOn(contact ? attempt([this] { connect(projector->beginContact()); }) : std::nullopt);
    }

    /// The socket is ready, or its wait is over.
    void handle(bool ready) {
        goOn(attempt([this, ready] {
            if (!ready) {
                conversation->expire();
            }
            conversation->proceed();
            sayMore();
        }));
    }

    AbstractDevice& device;
    PJLinkProjector* projector;  ///< the same device; null when it is not on the network
    bool contact;                ///< precedes the first command
    Next next;
    std::wstring address;  ///< empty when it is not on the network
    State state = State::NOT_BEGUN;
    std::unique_ptr<PjlinkConversation> conversation;  ///< null while nothing is waited for

private:
    /// Carries a part of the contact or of a command out, and returns its fault. A fault ends the conversation.
    template <class Part>
    std::optional<DeviceException> attempt(Part part) {
        try {
            part();
        } catch (const DeviceException& cause) {
            conversation.reset();
            return projector == nullptr ? cause : projector->faultOf(command.get(), cause);
        }
        return std::nullopt;
    }

    /// Proceeds from one command to the next, until one has to wait for its device or the talk is over.
    void goOn(std::optional<DeviceException> fault) {
        while (!conversation && state != State::OVER) {
            step.reset();
            command = next(fault ? &*fault : nullptr);
            if (command) {
                fault = attempt([this] { carryOut(*command); });
            } else {
                state = State::OVER;
            }
        }
    }

    void carryOut(Command& wanted) {
        if (projector == nullptr) {
            device.execute(command);
        } else {
            connect(projector->begin(wanted));
        }
    }

    void connect(std::unique_ptr<PjlinkStep> first) {
        step = std::move(first);
        if (step) {
            conversation = projector->connect();
        }
    }

    /// Sends the next request as soon as the projector is ready for it; without one the conversation is over.
    void sayMore() {
        while (conversation && conversation->isReady()) {
            if (const auto reply = conversation->takeReply()) {
                step = step->then(*reply);
            }
            if (step) {
                conversation->send(step->request);
            } else {
                conversation.reset();
            }
        }
    }

    std::shared_ptr<Command> command;  ///< under way; null during the contact
    std::unique_ptr<PjlinkStep> step;  ///< under way
};

DeviceTalks::DeviceTalks() = default;

DeviceTalks::~DeviceTalks() = default;

void DeviceTalks::add(AbstractDevice& device, Next next) {
    auto* const projector = dynamic_cast<PJLinkProjector*>(&device);
    m_talks.push_back(std::make_unique<Talk>(device, projector, false, std::move(next)));
}

void DeviceTalks::addContact(PJLinkProjector& projector, Next next) {
    m_talks.push_back(std::make_unique<Talk>(projector, &projector, true, std::move(next)));
}

void DeviceTalks::run(std::optional<std::chrono::milliseconds> limit) {
    const std::optional<Deadline> end = limit ? std::optional(Deadline(*limit)) : std::nullopt;
    beginTalks();
    for (auto talking = waitingTalks(); !talking.empty() && !(end && end->expired()); talking = waitingTalks()) {
        waitFor(talking, end ? end->remaining() : std::chrono::milliseconds::max());
        beginTalks();
    }
    m_talks.clear();
}

/// Begins every talk that may begin now, in order.
void DeviceTalks::beginTalks() {
    const std::size_t most = mostConnections();
    auto talking = waitingTalks();
    const auto isFree = [&](const Talk& talk) {
        return talk.projector == nullptr ||
               (talking.size() < most && std::none_of(talking.begin(), talking.end(), [&](const Talk* other) {
                    return other->address == talk.address;
                }));
    };
    for (const auto& talk : m_talks) {
        if (talk->state == Talk::State::NOT_BEGUN && isFree(*talk)) {
            talk->begin();
            if (talk->conversation) {
                talking.push_back(talk.get());
            }
        }
    }
}

/// Returns the talks that wait for their device. One that is between two conversations is never among the others: it
/// continues at once.
std::vector<DeviceTalks::Talk*> DeviceTalks::waitingTalks() const {
    std::vector<Talk*> found;
    for (const auto& talk : m_talks) {
        if (talk->conversation) {
            found.push_back(talk.get());
        }
    }
    return found;
}

/// Waits until something happens, at most `longest`, and continues the talks that it concerns.
void DeviceTalks::waitFor(const std::vector<Talk*>& talking, std::chrono::milliseconds longest) {
    std::vector<pollfd> watched;
    for (const Talk* talk : talking) {
        watched.push_back({talk->conversation->socket().descriptor(), talk->conversation->events(), 0});
        longest = std::min(longest, talk->conversation->deadline().remaining());
    }
    const int ready = ::poll(watched.data(), watched.size(), static_cast<int>(longest.count()));
    if (ready < 0 && errno != EINTR) {
        throw DeviceException(__FILE__, __LINE__, L"the wait for projectors failed: " + Socket::reason(errno));
    }
    for (std::size_t i = 0; i < talking.size(); ++i) {
        // What has arrived counts, however late it is read.
        const bool hasNews = ready > 0 && watched[i].revents != 0;
        if (hasNews || talking[i]->conversation->deadline().expired()) {
            talking[i]->handle(hasNews);
        }
    }
}

}  // namespace Veltrani::DeviceFramework2
