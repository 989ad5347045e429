#pragma once

#include <map>
#include <string>
#include <vector>

/// A finished run of a program.
struct ProgramRun {
    int exitCode = -1;   ///< -1 when it was ended by a signal
    std::string output;  ///< standard output
    std::string errors;  ///< standard error
};

/// Runs a program to its end, without standard input.
/// @param environment variables set on top of those of the test
ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment = {});

/// Runs the program under test.
ProgramRun runScreenManager(const std::vector<std::string>& arguments,
                            const std::map<std::string, std::string>& environment = {});
