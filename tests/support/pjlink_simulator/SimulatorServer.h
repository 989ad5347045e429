#pragma once

#include "SimulatedProjector.h"
#include "SimulatorOptions.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <fstream>
#include <list>
#include <memory>
#include <string>
#include <vector>

/// The sockets of the simulator, all on the loopback network, served by one loop.
class SimulatorServer {
public:
    explicit SimulatorServer(const SimulatorOptions& options);
    ~SimulatorServer();
    SimulatorServer(const SimulatorServer&) = delete;
    SimulatorServer& operator=(const SimulatorServer&) = delete;

    [[nodiscard]] std::vector<int> projectorPorts() const;
    [[nodiscard]] int searchPort() const;

    /// Serves until the standard input ends, or `longest` has passed: a test that died takes the simulator with it.
    void run(std::chrono::seconds longest);

private:
    using Clock = std::chrono::steady_clock;
    enum class Then { NOTHING, HALF_CLOSE, CLOSE, RESET };

    struct Output {
        Clock::time_point due;
        std::string bytes;
        Then then;
    };

    struct Connection {
        std::size_t projector;
        int descriptor;
        std::string received;
        int commands = 0;
        std::deque<Output> output;
        bool closed = false;
    };

    struct Listener {
        int descriptor;
        std::unique_ptr<SimulatedProjector> projector;
        int open = 0;
    };

    int bindFirst();
    [[nodiscard]] std::uint32_t addressOf(int projector) const;
    void stopListening();
    void note(const std::string& event);
    void accept(std::size_t projector);
    void read(Connection& connection);
    void take(Connection& connection, const std::string& line);
    void queue(Connection& connection, const std::string& bytes, Then then = Then::NOTHING);
    void flush(Connection& connection);
    void close(Connection& connection);
    void answerSearch();
    [[nodiscard]] int waitMilliseconds(Clock::time_point end) const;

    const SimulatorOptions& m_options;
    std::ofstream m_journal;
    std::vector<Listener> m_listeners;
    int m_search = -1;
    int m_commands = 0;
    bool m_dying = false;
    std::list<Connection> m_connections;
};
