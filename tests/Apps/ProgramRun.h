#pragma once

#include "support/TemporaryFolder.h"

#include <sys/types.h>

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

/// A program that runs beside the test, without standard input; killed at the end of the scope when it still runs.
class RunningProgram {
public:
    /// @param environment variables set on top of those of the test
    /// @param ignored a signal that it is started to ignore; all others have their usual effect, whatever the test
    ///                itself was started to ignore
    RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const std::map<std::string, std::string>& environment = {}, int ignored = 0);
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// False once it has ended.
    [[nodiscard]] bool isRunning() const;
    void send(int signal) const;
    /// Waits for its end.
    ProgramRun finish();

private:
    TemporaryFolder m_folder;
    pid_t m_process = -1;
};

/// Runs a program to its end, without standard input.
/// @param environment variables set on top of those of the test
ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment = {});

/// Runs the program under test.
ProgramRun runScreenManager(const std::vector<std::string>& arguments,
                            const std::map<std::string, std::string>& environment = {});
