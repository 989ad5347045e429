#include "ProgramRun.h"
#include "support/TestPaths.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace {

constexpr int EXIT_CANNOT_START = 127;

void limit(int resource, rlim_t most) {
    const rlimit both{most, most};
    if (::setrlimit(static_cast<__rlimit_resource_t>(resource), &both) != 0) {
        ::_exit(EXIT_CANNOT_START);
    }
}

void redirect(int descriptor, const std::string& path, int flags) {
    const int file = ::open(path.c_str(), flags | O_CREAT, 0600);
    if (file < 0 || ::dup2(file, descriptor) < 0) {
        ::_exit(EXIT_CANNOT_START);
    }
}

}  // namespace

RunningProgram::RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                               RunConditions conditions)
    : m_conditions(std::move(conditions)) {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);

    m_process = ::fork();
    if (m_process < 0) {
        throw std::runtime_error("fork failed");
    }
    if (m_process == 0) {
        redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
        redirect(STDOUT_FILENO, m_conditions.output.empty() ? m_folder.file("output") : m_conditions.output, O_WRONLY);
        redirect(STDERR_FILENO, m_conditions.errors.empty() ? m_folder.file("errors") : m_conditions.errors, O_WRONLY);
        for (const auto& [name, value] : m_conditions.environment) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU, SIGXFSZ}) {
            ::signal(signal, signal == m_conditions.ignored ? SIG_IGN : SIG_DFL);
        }
        if (m_conditions.memory > 0) {
            limit(RLIMIT_AS, m_conditions.memory);
            limit(RLIMIT_CORE, 0);
        }
        ::execv(program.c_str(), argv.data());
        ::_exit(EXIT_CANNOT_START);
    }
}

RunningProgram::~RunningProgram() {
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
}

bool RunningProgram::isRunning() const {
    siginfo_t ended{};
    return ::waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid == 0;
}

void RunningProgram::send(int signal) const {
    if (::kill(m_process, signal) != 0) {
        throw std::runtime_error("kill failed");
    }
}

ProgramRun RunningProgram::finish() {
    int status = 0;
    if (::waitpid(std::exchange(m_process, -1), &status, 0) < 0) {
        throw std::runtime_error("waitpid failed");
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, m_conditions.output.empty() ? m_folder.read("output") : "",
            m_conditions.errors.empty() ? m_folder.read("errors") : "", WIFSIGNALED(status) ? WTERMSIG(status) : 0};
}

ProgramRun runProgramUnder(const RunConditions& conditions, const std::string& program,
                           const std::vector<std::string>& arguments) {
    return RunningProgram(program, arguments, conditions).finish();
}

ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment) {
    RunConditions conditions;
    conditions.environment = environment;
    return runProgramUnder(conditions, program, arguments);
}

PseudoTerminal::PseudoTerminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0) {
        throw std::runtime_error("there is no pseudo terminal");
    }
    m_device = ::ptsname(m_master);
    m_kept = ::open(m_device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
}

PseudoTerminal::~PseudoTerminal() {
    ::close(m_kept);
    ::close(m_master);
}

void PseudoTerminal::take() {
    std::array<char, 4096> bytes{};
    for (ssize_t count = 0; (count = ::read(m_master, bytes.data(), bytes.size())) > 0;) {
        m_shown.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

ProgramRun PseudoTerminal::run(const RunConditions& conditions, const std::string& program,
                               const std::vector<std::string>& arguments) {
    RunningProgram running(program, arguments, conditions);
    while (running.isRunning()) {
        take();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const ProgramRun run = running.finish();
    take();
    return run;
}

std::string tableOf(const std::string& output) {
    std::size_t begin = 0;
    int lines = 0;
    for (; output.compare(begin, 2, "# ") == 0; ++lines) {
        begin = output.find('\n', begin) + 1;
    }
    if (lines < 3 && !output.empty()) {
        throw std::runtime_error("not the head of a table: " + output.substr(0, 200));
    }
    return output.substr(begin);
}

ProgramRun runScreenManager(const std::vector<std::string>& arguments,
                            const std::map<std::string, std::string>& environment) {
    return runProgram(programFile(), arguments, environment);
}

ProgramRun runScreenManagerUnder(const RunConditions& conditions, const std::vector<std::string>& arguments) {
    return runProgramUnder(conditions, programFile(), arguments);
}

std::vector<std::string> commandsOfTheProgram() {
    std::istringstream help(runScreenManager({"--help"}).output);
    std::vector<std::string> commands;
    bool isList = false;
    for (std::string line; std::getline(help, line);) {
        if (isList && line.starts_with("  ") && line.size() > 2 && line[2] != ' ') {
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
        } else if (!line.starts_with(" ")) {
            isList = line == "Subcommands:";
        }
    }
    return commands;
}
