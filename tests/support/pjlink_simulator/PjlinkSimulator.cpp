#include "support/pjlink_simulator/PjlinkSimulator.h"

#include "support/TestPaths.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>

namespace {

constexpr const char* JOURNAL = "journal";

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return ends;
}

}  // namespace

PjlinkSimulator::PjlinkSimulator(std::vector<std::string> options) {
    const std::string journalFile = m_folder.write(JOURNAL, "");
    options.insert(options.begin(), {simulatorFile(), "--journal", journalFile});
    std::vector<char*> arguments;
    for (std::string& option : options) {
        arguments.push_back(option.data());
    }
    arguments.push_back(nullptr);

    const auto input = makePipe();
    const auto output = makePipe();
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    const int fault = ::posix_spawn(&m_process, simulatorFile().c_str(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    m_input = input[1];
    m_output = output[0];
    if (fault != 0) {
        throw std::runtime_error("the simulator does not start");
    }
    readPorts();
}

PjlinkSimulator::~PjlinkSimulator() {
    ::close(m_input);
    ::close(m_output);
    if (m_process > 0) {
        ::waitpid(m_process, nullptr, 0);
    }
}

void PjlinkSimulator::readPorts() {
    std::string text;
    std::array<char, 512> buffer{};
    while (text.find("READY\n") == std::string::npos) {
        const ssize_t count = ::read(m_output, buffer.data(), buffer.size());
        if (count <= 0) {
            throw std::runtime_error("the simulator gave up: " + text);
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    std::istringstream words(text);
    std::string kind;
    for (int port = 0; words >> kind >> port;) {
        if (kind == "PROJECTOR") {
            m_ports.push_back(port);
        } else {
            m_searchPort = port;
        }
    }
}

std::vector<std::string> PjlinkSimulator::journal() const {
    std::vector<std::string> events;
    std::istringstream text(m_folder.read(JOURNAL));
    for (std::string line; std::getline(text, line);) {
        events.push_back(line);
    }
    return events;
}

std::vector<std::string> PjlinkSimulator::lines(std::size_t projector) const {
    const std::string prefix = "LINE " + std::to_string(projector) + ' ';
    std::vector<std::string> received;
    for (const std::string& event : journal()) {
        if (event.starts_with(prefix)) {
            received.push_back(event.substr(prefix.size()));
        }
    }
    return received;
}

int PjlinkSimulator::mostConnections() const {
    int most = 0;
    for (const std::string& event : journal()) {
        if (event.starts_with("OPEN ")) {
            most = std::max(most, std::stoi(event.substr(event.rfind(' '))));
        }
    }
    return most;
}

int PjlinkSimulator::mostConnectionsTogether() const {
    int now = 0;
    int most = 0;
    for (const std::string& event : journal()) {
        now += event.starts_with("OPEN ") ? 1 : event.starts_with("CLOSE ") ? -1 : 0;
        most = std::max(most, now);
    }
    return most;
}

void PjlinkSimulator::kill() {
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
    m_process = -1;
}
