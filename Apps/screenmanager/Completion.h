#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

/// What completes the commands and options of the program in a shell, and the values of options that have few of them:
/// a script, made from the command line itself. Everything else is completed as names of files.
class Completion {
public:
    /// @param program with its commands; must outlive this
    explicit Completion(const CLI::App& program) : m_program(&program) {}

    /// "bash", "zsh", "fish".
    [[nodiscard]] static std::vector<std::string> shells();
    /// For one of these shells.
    [[nodiscard]] std::string script(const std::string& shell) const;

private:
    [[nodiscard]] std::string bash() const;
    [[nodiscard]] std::string zsh() const;
    [[nodiscard]] std::string fish() const;

    const CLI::App* m_program;
};
