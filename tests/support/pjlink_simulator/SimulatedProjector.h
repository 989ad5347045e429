#pragma once

#include "SimulatorOptions.h"

#include <optional>
#include <string>

/// One projector: its state, and its reply to each command line.
class SimulatedProjector {
public:
    explicit SimulatedProjector(const SimulatorOptions& options) : m_options(options), m_power(options.power) {}

    [[nodiscard]] std::string greeting() const;

    struct Answer {
        std::string line;    ///< without its end; empty for none
        bool close = false;  ///< the connection ends with it
    };

    /// @param first true for the first line of a connection, which carries the login
    [[nodiscard]] Answer answer(std::string line, bool first);

private:
    [[nodiscard]] std::string valueFor(char commandClass, const std::string& body, const std::string& parameter);
    [[nodiscard]] std::optional<std::string> scripted(char commandClass, const std::string& body,
                                                      const std::string& parameter) const;
    [[nodiscard]] std::string setMute(const std::string& parameter);
    [[nodiscard]] std::string setInput(const std::string& parameter);

    const SimulatorOptions& m_options;
    int m_power;
    std::string m_mute = "30";
    std::string m_input = "31";
};
