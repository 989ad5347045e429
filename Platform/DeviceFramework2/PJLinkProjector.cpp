#include "DeviceFramework2/PJLinkProjector.h"

#include "Common/Utf8.h"
#include "Common/VeltraniLogging.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/PjlinkConversation.h"
#include "DeviceFramework2/detail/PjlinkValues.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace Veltrani::DeviceFramework2 {

using DeviceFramework2Detail::Endpoint;
using DeviceFramework2Detail::PjlinkConversation;
using DeviceFramework2Detail::PjlinkReply;
using DeviceFramework2Detail::PjlinkRequest;
using DeviceFramework2Detail::PjlinkSession;
using DeviceFramework2Detail::PjlinkStep;
using DeviceFramework2Detail::PjlinkValues;
using DeviceFramework2Detail::readable;

namespace {

using Outcome = PjlinkReply::Outcome;
using Step = std::unique_ptr<PjlinkStep>;

const log4cxx::LoggerPtr LOGGER = log4cxx::Logger::getLogger(L"Dravix.DeviceFramework2.PJLinkProjector");

const std::string QUESTION = "?";
constexpr std::nullptr_t DONE = nullptr;

[[noreturn]] void fail(const std::wstring& reason, DeviceException::Cause cause = DeviceException::Cause::DEVICE) {
    throw DeviceException(__FILE__, __LINE__, reason, cause);
}

[[noreturn]] void failWith(const PjlinkRequest& request, const PjlinkReply& reply) {
    const std::wstring value = reply.outcome == Outcome::VALUE ? L" \"" + readable(reply.value) + L"\"" : L"";
    fail(request.text() + L": " + PjlinkReply::describe(reply.outcome) + value,
         reply.outcome == Outcome::NOT_NOW ? DeviceException::Cause::NOT_NOW : DeviceException::Cause::DEVICE);
}

std::string valueOf(const PjlinkRequest& request, const PjlinkReply& reply) {
    if (reply.outcome != Outcome::VALUE) {
        failWith(request, reply);
    }
    return reply.value;
}

/// Returns the value that a reader found, or throws the fault of a value that it could not read.
template <class Value>
Value understood(const std::optional<Value>& value, const PjlinkRequest& request, const std::string& text) {
    if (!value) {
        fail(request.text() + L": its answer \"" + readable(text) + L"\" cannot be understood");
    }
    return *value;
}

/// @param then receives the request and the reply, and returns the next step
template <class Then>
Step stepOf(const PjlinkRequest& request, Then then) {
    return std::make_unique<PjlinkStep>(
        PjlinkStep{request, [request, then](const PjlinkReply& reply) -> Step { return then(request, reply); }});
}

/// A query whose only acceptable reply is a value.
/// @param then receives the request and the value, and returns the next step
template <class Then>
Step ask(const PjlinkRequest& request, Then then) {
    return stepOf(request, [then](const PjlinkRequest& asked, const PjlinkReply& reply) -> Step {
        return then(asked, valueOf(asked, reply));
    });
}

/// A query whose value is read by `read` and becomes the result of a command.
template <class Question, class Read>
Step askFor(Question& command, const PjlinkRequest& request, Read read) {
    return ask(request, [&command, read](const PjlinkRequest& asked, const std::string& value) {
        command.setResult(understood(read(value), asked, value));
        return DONE;
    });
}

std::string textOf(const std::string& value) {
    return toUtf8(readable(value));
}

std::optional<std::string> readText(const std::string& value) {
    return textOf(value);
}

/// Sets the shutter by one parameter, or by the other when the projector does not accept the first.
/// @param then receives the parameter that the projector accepted
template <class Then>
Step setShutter(const std::string& first, const std::string& second, Then then) {
    const auto finish = [then](const PjlinkRequest& request, const PjlinkReply& reply) {
        if (reply.outcome != Outcome::DONE) {
            failWith(request, reply);
        }
        then(request.parameter);
        return DONE;
    };
    return stepOf({'1', "AVMT", first},
                  [finish, second](const PjlinkRequest& request, const PjlinkReply& reply) -> Step {
                      if (reply.outcome == Outcome::BAD_PARAMETER) {
                          return stepOf({'1', "AVMT", second}, finish);
                      }
                      return finish(request, reply);
                  });
}

}  // namespace

/// The address of the projector.
class PJLinkProjector::Address : public Location {
public:
    explicit Address(const Endpoint& place) : endpoint(place) {}

    [[nodiscard]] std::wstring getDescription() const override { return L"PJLink " + fromUtf8(endpoint.text()); }

    const Endpoint endpoint;
};

/// What a command does. A command without a session is never sent.
struct PJLinkProjector::Action {
    bool (*matches)(const Command&);
    int leastClass;
    Step (*inSession)(PJLinkProjector&, const Action&, Command&);
    void (*locally)(PJLinkProjector&, const Command&);
    PjlinkRequest question{};  ///< the request of a query with one value

    /// A query with one value, which `READ` understands: nothing else needs to be written for it.
    /// @param leastClass the least class of the standard that has it, which is sent with it
    template <class Question, auto READ>
    static Action asked(int leastClass, const std::string& name) {
        return {&isA<Question>,
                leastClass,
                [](PJLinkProjector&, const Action& action, Command& command) {
                    return askFor(dynamic_cast<Question&>(command), action.question, READ);
                },
                nullptr,
                {static_cast<char>('0' + leastClass), name, QUESTION}};
    }

    template <class Kind, Step (PJLinkProjector::*FIRST_STEP)(Kind&)>
    static Action sent(int leastClass) {
        return {&isA<Kind>, leastClass,
                [](PJLinkProjector& projector, const Action&, Command& command) {
                    return (projector.*FIRST_STEP)(dynamic_cast<Kind&>(command));
                },
                nullptr};
    }

    template <class Kind>
    static Action onlyWarns() {
        return {&isA<Kind>, 1, nullptr,
                [](PJLinkProjector& projector, const Command& command) { projector.warnAboutCorrections(command); }};
    }

private:
    template <class Kind>
    static bool isA(const Command& command) {
        return dynamic_cast<const Kind*>(&command) != nullptr;
    }
};

const std::vector<PJLinkProjector::Action>& PJLinkProjector::actions() {
    static const std::vector<Action> ACTIONS{
        Action::asked<GetFirmware, readText>(2, "SVER"),
        // The recommended resolution is that of the panel; IRES would be that of the incoming signal.
        Action::asked<GetNativeResolution, PjlinkValues::resolution>(2, "RRES"),
        Action::sent<GetActiveInputSignalIndex, &PJLinkProjector::readInput>(1),
        Action::asked<GetPowerState, PjlinkValues::power>(1, "POWR"),
        Action::asked<GetPictureMute, PjlinkValues::pictureMute>(1, "AVMT"),
        Action::asked<GetProjectorName, readText>(1, "NAME"), Action::sent<GetModel, &PJLinkProjector::readModel>(1),
        Action::sent<SetActiveInputSignalIndex, &PJLinkProjector::setInput>(1),
        Action::sent<Drawing::RunFillBlackTo, &PJLinkProjector::closeShutter>(1),
        Action::sent<Drawing::RunClearTo, &PJLinkProjector::openShutter>(1),
        Action::onlyWarns<Geometry::DisableWhiteLevelWarp>(), Action::onlyWarns<Geometry::DisableWhiteLevelBlend>(),
        Action::onlyWarns<Geometry::DisableBlackLevelBlend>()};
    return ACTIONS;
}

const PJLinkProjector::Action* PJLinkProjector::actionFor(const Command& command) {
    const auto& all = actions();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Action& action) { return action.matches(command); });
    return found == all.end() ? nullptr : &*found;
}

PJLinkProjector::PJLinkProjector(const DeviceSnippet& snippet, const PjlinkSettings& settings)
    : m_snippet(snippet), m_settings(settings) {
    const auto endpoint = Endpoint::parse(snippet.host, snippet.port);
    if (!endpoint) {
        fail(L"PJLink projector " + snippet.mac.uid() + L": no usable address is given");
    }
    m_address = std::make_unique<Address>(*endpoint);
}

PJLinkProjector::~PJLinkProjector() = default;

std::wstring PJLinkProjector::name() const {
    return L"PJLink projector " + getUID() + L" at " + fromUtf8(m_address->endpoint.text());
}

void PJLinkProjector::contact() {
    try {
        converse(beginContact());
    } catch (const DeviceException& cause) {
        throw faultOf(nullptr, cause);
    }
}

bool PJLinkProjector::supports(const Command& command) const {
    const Action* action = actionFor(command);
    return action != nullptr && action->inSession != nullptr && m_class >= action->leastClass;
}

void PJLinkProjector::execute(const std::shared_ptr<Command>& command) {
    if (!command) {
        fail(name() + L": no command was given");
    }
    try {
        converse(begin(*command));
    } catch (const DeviceException& cause) {
        throw faultOf(command.get(), cause);
    }
}

PJLinkProjector::Step PJLinkProjector::begin(Command& command) {
    const Action* action = actionFor(command);
    if (action == nullptr) {
        fail(L"the PJLink standard has no such command");
    }
    if (action->inSession == nullptr) {
        action->locally(*this, command);
        return DONE;
    }
    if (m_class < action->leastClass) {
        fail(L"it needs PJLink class " + std::to_wstring(action->leastClass) + L", the projector has class " +
             std::to_wstring(m_class));
    }
    return action->inSession(*this, *action, command);
}

void PJLinkProjector::converse(Step step) const {
    if (step) {
        PjlinkSession session(m_address->endpoint, getUID(), m_settings);
        while (step) {
            step = step->then(session.ask(step->request));
        }
    }
}

std::unique_ptr<PjlinkConversation> PJLinkProjector::connect() const {
    return std::make_unique<PjlinkConversation>(m_address->endpoint, getUID(), m_settings);
}

DeviceException PJLinkProjector::faultOf(const Command* command, const DeviceException& cause) const {
    const std::wstring work = command == nullptr ? L"first contact" : L"command " + fromUtf8(command->typeName());
    return {__FILE__, __LINE__, name() + L", " + work + L": " + cause.message, cause.cause};
}

std::wstring PJLinkProjector::getUID() const {
    return m_snippet.mac.uid();
}

std::wstring PJLinkProjector::getDeviceSnippet() const {
    return m_snippet.text();
}

std::wstring PJLinkProjector::getUidSourceText() const {
    return m_snippet.mac.text();
}

const Location* PJLinkProjector::getLocation() const {
    return m_address.get();
}

int PJLinkProjector::getTypeCode() const {
    return DeviceTypeManager::NO_TYPE_CODE;
}

PJLinkProjector::Step PJLinkProjector::beginContact() {
    return stepOf({'1', "CLSS", QUESTION}, [this](const PjlinkRequest& request, const PjlinkReply& reply) {
        // Projectors that do not know the query are older than class 2.
        const std::string value = reply.outcome == Outcome::UNKNOWN_COMMAND ? "1" : valueOf(request, reply);
        m_class = understood(PjlinkValues::commandClass(value), request, value);
        m_inputClass = m_class == 2 ? '2' : '1';
        return DONE;
    });
}

PJLinkProjector::Step PJLinkProjector::readModel(GetModel& command) {
    return ask({'1', "INF1", QUESTION}, [&command](const PjlinkRequest&, const std::string& made) {
        return askFor(command, {'1', "INF2", QUESTION}, [maker = textOf(made)](const std::string& value) {
            const std::string model = textOf(value);
            return std::optional(maker.empty() || model.empty() ? maker + model : maker + ' ' + model);
        });
    });
}

PJLinkProjector::Step PJLinkProjector::readInputs(std::function<Step(const std::vector<std::string>&)> then) {
    const auto read = [then = std::move(then)](const PjlinkRequest& request, const PjlinkReply& reply) {
        const std::string value = valueOf(request, reply);
        return then(understood(PjlinkValues::inputs(value), request, value));
    };
    return stepOf({m_inputClass, "INST", QUESTION},
                  [this, read](const PjlinkRequest& request, const PjlinkReply& reply) {
                      if (reply.outcome == Outcome::UNKNOWN_COMMAND && m_inputClass == '2') {
                          m_inputClass = '1';
                          return stepOf({m_inputClass, "INST", QUESTION}, read);
                      }
                      return read(request, reply);
                  });
}

PJLinkProjector::Step PJLinkProjector::readInput(GetActiveInputSignalIndex& command) {
    return readInputs([this, &command](const std::vector<std::string>& inputs) {
        return askFor(command, {m_inputClass, "INPT", QUESTION}, [inputs](const std::string& value) {
            const auto input = PjlinkValues::input(value);
            const auto position = std::find(inputs.begin(), inputs.end(), input.value_or(""));
            if (input && position == inputs.end()) {
                fail(L"it shows input " + fromUtf8(*input) + L", which is not in its own list of inputs");
            }
            return input ? std::optional(static_cast<int>(position - inputs.begin())) : std::nullopt;
        });
    });
}

PJLinkProjector::Step PJLinkProjector::setInput(SetActiveInputSignalIndex& command) {
    return readInputs([this, index = command.getIndex()](const std::vector<std::string>& inputs) {
        if (index < 0 || static_cast<std::size_t>(index) >= inputs.size()) {
            fail(L"input index " + std::to_wstring(index) + L": the projector has " + std::to_wstring(inputs.size()) +
                 L" inputs, 0 is the first");
        }
        const std::string& input = inputs[static_cast<std::size_t>(index)];
        return stepOf({m_inputClass, "INPT", input}, [](const PjlinkRequest& request, const PjlinkReply& reply) {
            if (reply.outcome != Outcome::DONE) {
                failWith(request, reply);
            }
            return DONE;
        });
    });
}

PJLinkProjector::Step PJLinkProjector::closeShutter(Drawing::RunFillBlackTo&) {
    return setShutter("11", "31", [this](const std::string& taken) { m_mutesWithSound = taken == "31"; });
}

PJLinkProjector::Step PJLinkProjector::openShutter(Drawing::RunClearTo&) {
    return setShutter(m_mutesWithSound ? "30" : "10", m_mutesWithSound ? "10" : "30",
                      [this](const std::string&) { m_mutesWithSound = false; });
}

void PJLinkProjector::warnAboutCorrections(const Command& command) {
    if (!m_warned) {
        m_warned = true;
        VELTRANI_LOG(LOGGER, Warn,
                     name() + L", command " + fromUtf8(command.typeName()) +
                         L": not in the PJLink standard, nothing was sent. Make sure that the projector's own warp " +
                         L"and blend are switched off");
    }
}

}  // namespace Veltrani::DeviceFramework2
