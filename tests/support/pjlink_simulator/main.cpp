// A projector on loopback that speaks PJLink, as well or as badly as its command line says. It prints its ports, then a
// line "READY", and serves until its standard input ends.
//
// It shares no code with the driver under test, not even the digest: the accepted login is given to it.
#include "SimulatorOptions.h"
#include "SimulatorServer.h"

#include <exception>
#include <iostream>

int main(int count, char** arguments) {
    constexpr std::chrono::seconds LONGEST_RUN(300);
    try {
        const SimulatorOptions options = SimulatorOptions::parse(count, arguments);
        SimulatorServer server(options);
        for (const int port : server.projectorPorts()) {
            std::cout << "PROJECTOR " << port << '\n';
        }
        std::cout << "SEARCH " << server.searchPort() << "\nREADY" << std::endl;
        server.run(LONGEST_RUN);
    } catch (const std::exception& fault) {
        std::cerr << "pjlink_simulator: " << fault.what() << '\n' << SimulatorOptions::usage();
        return 1;
    }
    return 0;
}
