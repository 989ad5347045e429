#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

std::string readme() {
    std::ifstream in(SM_SOURCE_DIR "/README.md", std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// What stands in the README between two texts.
std::string between(const std::string& text, const std::string& opening, const std::string& closing) {
    const auto start = text.find(opening);
    const auto begin = start + opening.size();
    const auto end = text.find(closing, begin);
    if (start == std::string::npos || end == std::string::npos) {
        throw std::runtime_error("the README has no " + opening + " ... " + closing);
    }
    return text.substr(begin, end - begin);
}

/// Replaces every occurrence, of which there must be one.
std::string replaced(std::string text, const std::string& from, const std::string& to) {
    auto found = text.find(from);
    if (found == std::string::npos) {
        throw std::runtime_error("the README does not say " + from);
    }
    for (; found != std::string::npos; found = text.find(from, found + to.size())) {
        text.replace(found, from.size(), to);
    }
    return text;
}

// The commands are run as they stand there, but for the places of the programs and for ports that are free; what they
// print must be what the README shows.
TEST(Readme, ItsCommandsForTwoProjectorsPrintWhatItSays) {
    const std::string section = between(readme(), "<!-- projectors: begin -->\n", "<!-- projectors: end -->");
    std::string commands = between(section, "```sh\n", "```\n");
    std::string output = between(section.substr(section.find(commands) + commands.size() + 4), "```\n", "```\n");

    const TemporaryFolder folder;
    commands = replaced(commands, "build/release/tests/support/pjlink_simulator/pjlink_simulator", SM_PJLINK_SIMULATOR);
    commands = replaced(commands, "build/release/Apps/screenmanager/screenmanager", SM_PROGRAM);
    commands = replaced(commands, " examples/", " " SM_SOURCE_DIR "/examples/");
    // The simulators end with the shell instead of living on after the test.
    commands = replaced(commands, "sleep 60 |", "tail --pid=$$ -s 0.1 -f /dev/null |");
    for (const char* port : {"14351", "14352"}) {
        const std::string freePort = std::to_string(PjlinkSimulator().port());
        commands = replaced(commands, port, freePort);
        output = replaced(output, port, freePort);
    }
    const ProgramRun run = runProgram("/bin/bash", {"-e", "-c", "cd '" + folder.path() + "'\n" + commands});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, output);
}

}  // namespace
