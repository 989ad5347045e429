#include "DeviceFramework2/PJLinkProjector.h"

#include "Common/Utf8.h"
#include "Common/VeltraniLogging.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/PjlinkSession.h"
#include "DeviceFramework2/detail/PjlinkValues.h"

#include <algorithm>

namespace Veltrani::DeviceFramework2 {

namespace {

using Outcome = PjlinkReply::Outcome;

const log4cxx::LoggerPtr LOGGER = log4cxx::Logger::getLogger(L"Dravix.DeviceFramework2.PJLinkProjector");

const std::string QUESTION = "?";

[[noreturn]] void fail(const std::wstring& reason) {
    throw DeviceException(__FILE__, __LINE__, reason);
}

[[noreturn]] void failWith(const PjlinkRequest& request, const PjlinkReply& reply) {
    const std::wstring value = reply.outcome == Outcome::VALUE ? L" \"" + readable(reply.value) + L"\"" : L"";
    fail(request.text() + L": " + PjlinkReply::describe(reply.outcome) + value);
}

std::string valueOf(const PjlinkRequest& request, const PjlinkReply& reply) {
    if (reply.outcome != Outcome::VALUE) {
        failWith(request, reply);
    }
    return reply.value;
}

std::string askValue(PjlinkSession& session, const PjlinkRequest& request) {
    return valueOf(request, session.ask(request));
}

/// What a reader made of a value, or the fault that it made nothing of it.
template <class Value>
Value understood(const std::optional<Value>& value, const PjlinkRequest& request, const std::string& text) {
    if (!value) {
        fail(request.text() + L": its answer \"" + readable(text) + L"\" cannot be understood");
    }
    return *value;
}

/// The shutter by one parameter, or by the other when the projector does not take the first. Answers the one it took.
std::string setShutter(PjlinkSession& session, const std::string& first, const std::string& second) {
    PjlinkRequest request{'1', "AVMT", first};
    PjlinkReply reply = session.ask(request);
    if (reply.outcome == Outcome::BAD_PARAMETER) {
        request.parameter = second;
        reply = session.ask(request);
    }
    if (reply.outcome != Outcome::DONE) {
        failWith(request, reply);
    }
    return request.parameter;
}

}  // namespace

/// Where the projector is.
class PJLinkProjector::Address : public Location {
public:
    explicit Address(const Endpoint& place) : endpoint(place) {}

    [[nodiscard]] std::wstring getDescription() const override { return L"PJLink " + fromUtf8(endpoint.text()); }

    const Endpoint endpoint;
};

/// What a command does. One without a session is never sent anywhere.
struct PJLinkProjector::Action {
    using InSession = void (*)(PJLinkProjector&, PjlinkSession&, Command&);

    bool (*matches)(const Command&);
    int leastClass;
    InSession inSession;
    void (*locally)(PJLinkProjector&, const Command&);

    template <class Kind, void (PJLinkProjector::*RUN)(PjlinkSession&, Kind&)>
    static Action sent(int leastClass) {
        return {&isA<Kind>, leastClass,
                [](PJLinkProjector& projector, PjlinkSession& session, Command& command) {
                    (projector.*RUN)(session, dynamic_cast<Kind&>(command));
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
    static const std::vector<Action> ACTIONS{Action::sent<GetFirmware, &PJLinkProjector::readFirmware>(2),
                                             Action::sent<GetNativeResolution, &PJLinkProjector::readResolution>(2),
                                             Action::sent<GetActiveInputSignalIndex, &PJLinkProjector::readInput>(1),
                                             Action::sent<GetPowerState, &PJLinkProjector::readPower>(1),
                                             Action::sent<GetPictureMute, &PJLinkProjector::readMute>(1),
                                             Action::sent<GetProjectorName, &PJLinkProjector::readName>(1),
                                             Action::sent<GetModel, &PJLinkProjector::readModel>(1),
                                             Action::sent<SetActiveInputSignalIndex, &PJLinkProjector::setInput>(1),
                                             Action::sent<Drawing::RunFillBlackTo, &PJLinkProjector::closeShutter>(1),
                                             Action::sent<Drawing::RunClearTo, &PJLinkProjector::openShutter>(1),
                                             Action::onlyWarns<Geometry::DisableWhiteLevelWarp>(),
                                             Action::onlyWarns<Geometry::DisableWhiteLevelBlend>(),
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
        PjlinkSession session(m_address->endpoint, getUID(), m_settings);
        readClass(session);
    } catch (const DeviceException& fault) {
        throw DeviceException(__FILE__, __LINE__, name() + L", first contact: " + fault.message);
    }
}

bool PJLinkProjector::isNotNow(const DeviceException& fault) {
    return fault.message.ends_with(PjlinkReply::describe(Outcome::NOT_NOW));
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
        const Action* action = actionFor(*command);
        if (action == nullptr) {
            fail(L"the PJLink standard has no such command");
        }
        if (action->inSession == nullptr) {
            action->locally(*this, *command);
            return;
        }
        if (m_class < action->leastClass) {
            fail(L"it needs PJLink class " + std::to_wstring(action->leastClass) + L", the projector has class " +
                 std::to_wstring(m_class));
        }
        PjlinkSession session(m_address->endpoint, getUID(), m_settings);
        action->inSession(*this, session, *command);
    } catch (const DeviceException& fault) {
        throw DeviceException(__FILE__, __LINE__,
                              name() + L", command " + fromUtf8(command->typeName()) + L": " + fault.message);
    }
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

void PJLinkProjector::readClass(PjlinkSession& session) {
    const PjlinkRequest request{'1', "CLSS", QUESTION};
    const PjlinkReply reply = session.ask(request);
    // Projectors that do not know the question are older than class 2.
    const std::string value = reply.outcome == Outcome::UNKNOWN_COMMAND ? "1" : valueOf(request, reply);
    m_class = understood(PjlinkValues::commandClass(value), request, value);
    m_inputClass = m_class == 2 ? '2' : '1';
}

void PJLinkProjector::readFirmware(PjlinkSession& session, GetFirmware& command) {
    command.setResult(toUtf8(readable(askValue(session, {'2', "SVER", QUESTION}))));
}

void PJLinkProjector::readResolution(PjlinkSession& session, GetNativeResolution& command) {
    // The recommended resolution is that of the panel; IRES would be that of the incoming signal.
    const PjlinkRequest request{'2', "RRES", QUESTION};
    const std::string value = askValue(session, request);
    command.setResult(understood(PjlinkValues::resolution(value), request, value));
}

void PJLinkProjector::readPower(PjlinkSession& session, GetPowerState& command) {
    const PjlinkRequest request{'1', "POWR", QUESTION};
    const std::string value = askValue(session, request);
    command.setResult(understood(PjlinkValues::power(value), request, value));
}

void PJLinkProjector::readMute(PjlinkSession& session, GetPictureMute& command) {
    const PjlinkRequest request{'1', "AVMT", QUESTION};
    const std::string value = askValue(session, request);
    command.setResult(understood(PjlinkValues::pictureMute(value), request, value));
}

void PJLinkProjector::readName(PjlinkSession& session, GetProjectorName& command) {
    command.setResult(toUtf8(readable(askValue(session, {'1', "NAME", QUESTION}))));
}

void PJLinkProjector::readModel(PjlinkSession& session, GetModel& command) {
    const std::string maker = toUtf8(readable(askValue(session, {'1', "INF1", QUESTION})));
    const std::string model = toUtf8(readable(askValue(session, {'1', "INF2", QUESTION})));
    command.setResult(maker.empty() || model.empty() ? maker + model : maker + ' ' + model);
}

std::vector<std::string> PJLinkProjector::readInputs(PjlinkSession& session) {
    PjlinkRequest request{m_inputClass, "INST", QUESTION};
    PjlinkReply reply = session.ask(request);
    if (reply.outcome == Outcome::UNKNOWN_COMMAND && m_inputClass == '2') {
        m_inputClass = request.commandClass = '1';
        reply = session.ask(request);
    }
    const std::string value = valueOf(request, reply);
    return understood(PjlinkValues::inputs(value), request, value);
}

void PJLinkProjector::readInput(PjlinkSession& session, GetActiveInputSignalIndex& command) {
    const std::vector<std::string> inputs = readInputs(session);
    const PjlinkRequest request{m_inputClass, "INPT", QUESTION};
    const std::string value = askValue(session, request);
    const std::string input = understood(PjlinkValues::input(value), request, value);
    const auto position = std::find(inputs.begin(), inputs.end(), input);
    if (position == inputs.end()) {
        fail(L"it shows input " + fromUtf8(input) + L", which is not in its own list of inputs");
    }
    command.setResult(static_cast<int>(position - inputs.begin()));
}

void PJLinkProjector::setInput(PjlinkSession& session, SetActiveInputSignalIndex& command) {
    const std::vector<std::string> inputs = readInputs(session);
    const int index = command.getIndex();
    if (index < 0 || static_cast<std::size_t>(index) >= inputs.size()) {
        fail(L"input index " + std::to_wstring(index) + L": the projector has " + std::to_wstring(inputs.size()) +
             L" inputs, 0 is the first");
    }
    const PjlinkRequest request{m_inputClass, "INPT", inputs[static_cast<std::size_t>(index)]};
    const PjlinkReply reply = session.ask(request);
    if (reply.outcome != Outcome::DONE) {
        failWith(request, reply);
    }
}

void PJLinkProjector::closeShutter(PjlinkSession& session, Drawing::RunFillBlackTo&) {
    m_mutesWithSound = setShutter(session, "11", "31") == "31";
}

void PJLinkProjector::openShutter(PjlinkSession& session, Drawing::RunClearTo&) {
    setShutter(session, m_mutesWithSound ? "30" : "10", m_mutesWithSound ? "10" : "30");
    m_mutesWithSound = false;
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
