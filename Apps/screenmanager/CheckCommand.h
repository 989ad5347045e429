#pragma once

#include <string>

/// `screenmanager check FILE`: describes a display and everything that is wrong with it, on standard output.
class CheckCommand {
public:
    CheckCommand() = delete;

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const std::string& file);
};
