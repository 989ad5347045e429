#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The commands are run as they stand there, but for the places of the programs and for ports that are free; what they
// print must be what the README shows.
TEST(Readme, ItsCommandsForTwoProjectorsPrintWhatItSays) {
    auto [commands, output] = readme::Section::named("projectors");
    const TemporaryFolder folder;
    commands =
        readme::replaced(commands, "build/release/tests/support/pjlink_simulator/pjlink_simulator", simulatorFile());
    // The simulators end with the shell instead of living on after the test.
    commands = readme::replaced(commands, "sleep 60 |", "tail --pid=$$ -s 0.1 -f /dev/null |");
    for (const char* port : {"14351", "14352"}) {
        const std::string freePort = std::to_string(PjlinkSimulator().port());
        commands = readme::replaced(commands, port, freePort);
        output = readme::replaced(output, port, freePort);
    }
    const ProgramRun run = runProgram("/bin/bash", {"-e", "-c", "cd '" + folder.path() + "'\n" + commands});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, output);
}

}  // namespace
