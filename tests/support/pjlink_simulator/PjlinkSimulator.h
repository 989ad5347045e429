#pragma once

#include "support/TemporaryFolder.h"

#include <sys/types.h>

#include <string>
#include <vector>

/// A running simulator of PJLink projectors: the program beside the tests, started with the options given, ended with
/// this object.
class PjlinkSimulator {
public:
    /// @param options as on its command line, such as {"--class", "1"}. Throws `std::runtime_error` when it does not
    ///                start.
    explicit PjlinkSimulator(std::vector<std::string> options = {});
    ~PjlinkSimulator();
    PjlinkSimulator(const PjlinkSimulator&) = delete;
    PjlinkSimulator& operator=(const PjlinkSimulator&) = delete;

    [[nodiscard]] int port(std::size_t projector = 0) const { return m_ports.at(projector); }
    [[nodiscard]] int searchPort() const { return m_searchPort; }

    /// What happened so far, in order: "OPEN p n", "LINE p text", "CLOSE p n" (n: open connections of projector p
    /// afterwards), "SEARCH text". A line stands here before its reply is sent.
    [[nodiscard]] std::vector<std::string> journal() const;
    /// The command lines that one projector received.
    [[nodiscard]] std::vector<std::string> lines(std::size_t projector = 0) const;
    /// The most connections that any projector had at the same time.
    [[nodiscard]] int mostConnections() const;
    /// The most connections that all projectors together had at the same time.
    [[nodiscard]] int mostConnectionsTogether() const;

    /// Ends the process at once, as a power cut would.
    void kill();

private:
    void readPorts();

    TemporaryFolder m_folder;
    pid_t m_process = -1;
    int m_input = -1;   ///< its standard input, which ends it when closed
    int m_output = -1;  ///< its standard output
    std::vector<int> m_ports;
    int m_searchPort = 0;
};
