#include "SimulatedProjector.h"

#include <set>

namespace {

constexpr std::size_t DIGEST_LENGTH = 32;
constexpr std::size_t LONGEST_COMMAND = 135;  // without the carriage return
constexpr int POWER_ON = 1;

const std::set<std::string> CLASS_2_ONLY{"SVER", "RRES", "SNUM", "INNM", "FREZ"};
const std::string INPUTS = "11 12 31 32 5A";

}  // namespace

std::string SimulatedProjector::greeting() const {
    if (!m_options.greeting.empty()) {
        return m_options.greeting == "-" ? "" : m_options.greeting;
    }
    return m_options.seed.empty() ? "PJLINK 0" : "PJLINK 1 " + m_options.seed;
}

SimulatedProjector::Answer SimulatedProjector::answer(std::string line, bool first) {
    if (first && !m_options.seed.empty()) {
        // Case matters: a real projector compares text.
        if (line.substr(0, DIGEST_LENGTH) != m_options.digest) {
            return {"PJLINK ERRA", true};
        }
        line.erase(0, DIGEST_LENGTH);
    }
    const bool wellFormed = line.size() > 7 && line.size() <= LONGEST_COMMAND && line[0] == '%' && line[6] == ' ';
    if (!wellFormed) {
        return {};
    }
    const std::string body = line.substr(2, 4);
    return {line.substr(0, 6) + '=' + valueFor(line[1], body, line.substr(7)), false};
}

std::optional<std::string> SimulatedProjector::scripted(char commandClass, const std::string& body,
                                                        const std::string& parameter) const {
    for (const std::string& key : {body + ' ' + parameter, body, commandClass + body}) {
        const auto found = m_options.answers.find(key);
        if (found != m_options.answers.end()) {
            return found->second;
        }
    }
    return std::nullopt;
}

std::string SimulatedProjector::valueFor(char commandClass, const std::string& body, const std::string& parameter) {
    if (auto value = scripted(commandClass, body, parameter)) {
        return *value;
    }
    const bool needsClass2 = CLASS_2_ONLY.count(body) != 0;
    if (commandClass > '0' + m_options.commandClass || (needsClass2 && commandClass != '2')) {
        return "ERR1";
    }
    if (body == "CLSS") {
        return std::to_string(m_options.commandClass);
    }
    if (body == "SVER") {
        return "1.02.003";
    }
    if (body == "RRES") {
        return "1920x1200";
    }
    if (body == "POWR") {
        return std::to_string(m_power);
    }
    if (body == "NAME") {
        return "Simulator";
    }
    if (body == "INF1") {
        return "Loopback";
    }
    if (body == "INF2") {
        return "SIM-" + std::to_string(m_options.commandClass);
    }
    if (body != "AVMT" && body != "INPT" && body != "INST") {
        return "ERR1";
    }
    if (m_power != POWER_ON) {
        return "ERR3";
    }
    if (body == "INST") {
        return commandClass == '2' ? INPUTS : "11 12 31 32";
    }
    if (body == "AVMT") {
        return parameter == "?" ? m_mute : setMute(parameter);
    }
    return parameter == "?" ? m_input : setInput(parameter);
}

std::string SimulatedProjector::setMute(const std::string& parameter) {
    if (!std::set<std::string>{"10", "11", "20", "21", "30", "31"}.count(parameter)) {
        return "ERR2";
    }
    m_mute = parameter;
    return "OK";
}

std::string SimulatedProjector::setInput(const std::string& parameter) {
    if (parameter.size() != 2 || (INPUTS + ' ').find(parameter + ' ') == std::string::npos) {
        return "ERR2";
    }
    m_input = parameter;
    return "OK";
}
