#include "SimulatorOptions.h"

#include <functional>
#include <stdexcept>
#include <vector>

namespace {

struct Option {
    std::string name;
    std::string help;
    std::function<void(SimulatorOptions&, const std::string&)> set;
};

Option number(const std::string& name, int SimulatorOptions::*field, const std::string& help) {
    return {name, help,
            [field](SimulatorOptions& options, const std::string& value) { options.*field = std::stoi(value); }};
}

Option text(const std::string& name, std::string SimulatorOptions::*field, const std::string& help) {
    return {name, help, [field](SimulatorOptions& options, const std::string& value) { options.*field = value; }};
}

Option flag(const std::string& name, bool SimulatorOptions::*field, const std::string& help) {
    return {name, help,
            [field](SimulatorOptions& options, const std::string& value) { options.*field = value == "yes"; }};
}

void setLineEnd(SimulatorOptions& options, const std::string& value) {
    const std::map<std::string, std::string> ends{{"cr", "\r"}, {"lf", "\n"}, {"crlf", "\r\n"}, {"none", ""}};
    options.lineEnd = ends.at(value);
}

void setAnswer(SimulatorOptions& options, const std::string& value) {
    const auto equals = value.find('=');
    if (equals == std::string::npos) {
        throw std::invalid_argument("an answer is COMMAND=TEXT");
    }
    options.answers[value.substr(0, equals)] = value.substr(equals + 1);
}

const std::vector<Option>& allOptions() {
    static const std::vector<Option> OPTIONS{
        number("projectors", &SimulatorOptions::projectors, "how many, each with a port of its own"),
        number("port", &SimulatorOptions::port, "port of the first projector and of the search; the others follow"),
        number("class", &SimulatorOptions::commandClass, "1 or 2"),
        number("power", &SimulatorOptions::power, "0 standby, 1 on, 2 cooling, 3 warming up"),
        text("seed", &SimulatorOptions::seed, "seed of the login that is wanted"),
        text("digest", &SimulatorOptions::digest, "the login that is accepted"),
        text("greeting", &SimulatorOptions::greeting, "in place of the usual one; - for none"),
        {"line-end", "cr, lf, crlf or none", setLineEnd},
        number("delay", &SimulatorOptions::delay, "milliseconds before each answer"),
        number("split", &SimulatorOptions::split, "milliseconds between the bytes of an answer"),
        flag("half-close", &SimulatorOptions::halfClose, "yes: finish sending after the greeting"),
        number("close-after", &SimulatorOptions::closeAfter, "commands after which a connection is closed"),
        number("reset-after", &SimulatorOptions::resetAfter, "commands after which a connection is reset"),
        number("silent-after", &SimulatorOptions::silentAfter, "commands after which no answer comes"),
        text("silent-on", &SimulatorOptions::silentOn, "command that is never answered"),
        number("flood", &SimulatorOptions::flood, "bytes of lines that follow the greeting"),
        number("endless", &SimulatorOptions::endless, "bytes without a line end in place of each answer"),
        text("raw-answer", &SimulatorOptions::rawAnswer, "line in place of each answer"),
        number("die-after", &SimulatorOptions::dieAfter, "commands after which the program ends"),
        text("mac", &SimulatorOptions::mac, "MAC address that answers each search request, alone"),
        number("search-answers", &SimulatorOptions::searchAnswers, "answers to each search request"),
        number("search-hosts", &SimulatorOptions::searchHosts, "addresses that the answers come from in turn"),
        flag("search-noise", &SimulatorOptions::searchNoise, "yes: duplicates and junk among them"),
        flag("spread", &SimulatorOptions::spread, "yes: each projector at an address of its own, which can be found"),
        text("journal", &SimulatorOptions::journal, "file that receives one line per event"),
        {"answer", "COMMAND=TEXT, such as \"AVMT 11=ERR2\" or RRES=3840x2160; may be repeated", setAnswer}};
    return OPTIONS;
}

const Option& optionNamed(const std::string& argument) {
    for (const Option& option : allOptions()) {
        if (argument == "--" + option.name) {
            return option;
        }
    }
    throw std::invalid_argument("unknown option " + argument);
}

}  // namespace

SimulatorOptions SimulatorOptions::parse(int count, char** arguments) {
    SimulatorOptions options;
    for (int i = 1; i < count; i += 2) {
        const Option& option = optionNamed(arguments[i]);
        if (i + 1 == count) {
            throw std::invalid_argument("--" + option.name + " needs a value");
        }
        option.set(options, arguments[i + 1]);
    }
    return options;
}

std::string SimulatorOptions::usage() {
    std::string lines = "usage: pjlink_simulator [--OPTION VALUE]...   serves on 127.0.0.1 until its input ends\n";
    for (const Option& option : allOptions()) {
        lines += "  --" + option.name + "  " + option.help + '\n';
    }
    return lines;
}
