#pragma once

#include "support/TemporaryFolder.h"

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// A finished run of a program.
struct ProgramRun {
    int exitCode = -1;   ///< -1 when it was ended by a signal
    std::string output;  ///< standard output
    std::string errors;  ///< standard error
    int signal = 0;      ///< that ended it; 0 for none
};

/// What a run of a program finds, beyond its arguments.
struct RunConditions {
    std::map<std::string, std::string> environment = {};  ///< set on top of that of the test
    std::string output = "";                              ///< file or device for standard output; empty: it is kept
    std::size_t memory = 0;                               ///< bytes of address space; 0: as many as the test has
    int ignored = 0;          ///< a signal that it is started to ignore; all others that end it have their usual effect
    std::string errors = "";  ///< file or device for standard error; empty: it is kept
};

/// A program that runs beside the test, without standard input; killed at the end of the scope when it still runs.
class RunningProgram {
public:
    RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                   RunConditions conditions = {});
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// False once it has ended.
    [[nodiscard]] bool isRunning() const;
    void send(int signal) const;
    [[nodiscard]] pid_t process() const { return m_process; }
    /// Waits for its end.
    ProgramRun finish();

private:
    TemporaryFolder m_folder;
    RunConditions m_conditions;
    pid_t m_process = -1;
};

/// Runs a program to its end, without standard input.
ProgramRun runProgramUnder(const RunConditions& conditions, const std::string& program,
                           const std::vector<std::string>& arguments);
/// @param environment variables set on top of those of the test
ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment = {});

/// A terminal that nobody sits at, for programs that behave otherwise there.
class PseudoTerminal {
public:
    PseudoTerminal();
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /// The device that a program writes to.
    [[nodiscard]] const std::string& device() const { return m_device; }
    /// Runs a program to its end and takes off the screen what it shows meanwhile.
    ProgramRun run(const RunConditions& conditions, const std::string& program,
                   const std::vector<std::string>& arguments);
    /// What has been written to it, line ends as CR LF.
    [[nodiscard]] const std::string& shown() const { return m_shown; }
    /// Takes off the screen what has been written, for a writer that is not run by this.
    void take();

private:
    int m_master = -1;
    int m_kept = -1;  ///< the other end, so that what was written stays when a program closes it
    std::string m_device;
    std::string m_shown;
};

/// A table without the lines in front of it that say what it is; at least three of them have to be there.
std::string tableOf(const std::string& output);

/// Runs the program under test.
ProgramRun runScreenManager(const std::vector<std::string>& arguments,
                            const std::map<std::string, std::string>& environment = {});
ProgramRun runScreenManagerUnder(const RunConditions& conditions, const std::vector<std::string>& arguments);

/// The commands that the help of the program lists.
std::vector<std::string> commandsOfTheProgram();
