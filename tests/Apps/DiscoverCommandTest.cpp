#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace {

using namespace projector_displays;
using testing::ContainsRegex;
using testing::HasSubstr;

/// A search always lasts this long, and each step of the control may take as long: enough for a machine that is loaded.
const std::string SEARCH_TIME = "3";

/// Searches on loopback, where a simulator answers the question and serves its control on one port.
ProgramRun discover(const PjlinkSimulator& simulator, std::vector<std::string> options = {},
                    const std::string& time = SEARCH_TIME) {
    options.insert(options.begin(), {"discover", "--broadcast", "127.0.0.1:" + std::to_string(simulator.searchPort()),
                                     "--timeout", time});
    return runScreenManager(options);
}

TEST(DiscoverCommand, ListsWhoAnswersWithNameAndModel) {
    const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:0a", "--answer", "NAME=B\xc3\xbchne \x1b[31m"});
    const ProgramRun run = discover(simulator);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.errors, "searching for 3 s\n");
    EXPECT_THAT(run.output, ContainsRegex("^mac +address +name +model\n"));
    EXPECT_THAT(run.output, HasSubstr("02:00:00:00:00:0A  127.0.0.1:" + std::to_string(simulator.port()) +
                                      "  B\xc3\xbchne  [31m  Loopback SIM-2\n"));
}

TEST(DiscoverCommand, EveryProjectorIsListedOnce) {
    const PjlinkSimulator simulator({"--search-answers", "3", "--search-noise", "yes"});
    const ProgramRun run = discover(simulator, {"--quiet"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 4);
    EXPECT_THAT(run.output, ContainsRegex("00:01 .*\n.*00:02 .*\n.*00:03 "));
}

TEST(DiscoverCommand, ForgedAnswersAreLeftOutAndNamedInOneLine) {
    const PjlinkSimulator simulator({"--search-answers", "500"});
    const ProgramRun run = discover(simulator, {"--quiet"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 5) << "the head and four";
    EXPECT_EQ(run.errors,
              "error: 127.0.0.1 replied with more than 4 MAC addresses, which no projector has; the rest was left out: "
              "add a projector there by its address\n");
}

TEST(DiscoverCommand, NobodyIsAFaultWithTheRemedy) {
    const ProgramRun run = discover(PjlinkSimulator(), {}, IMPATIENT);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors,
                HasSubstr("error: no projector replied; projectors of PJLink class 1 never do: use their address\n"));
}

TEST(DiscoverCommand, AProjectorThatDoesNotTellItsNameIsListedAllTheSame) {
    const PjlinkSimulator simulator({"--mac", mac(1), "--seed", "61fa922e", "--digest", "x"});
    const ProgramRun run = discover(simulator);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, HasSubstr("02:00:00:00:00:01  127.0.0.1:"));
    EXPECT_THAT(run.errors, HasSubstr("it wants a password and none is configured"));
}

TEST(DiscoverCommand, ASearchPortThatAnotherProgramHoldsIsNamedWithTheRemedy) {
    // Answers come to the standard port. Where it is taken already, binding it here fails, and it is as busy.
    const int other = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in standard{};
    standard.sin_family = AF_INET;
    standard.sin_port = htons(4352);
    static_cast<void>(::bind(other, reinterpret_cast<const sockaddr*>(&standard), sizeof standard));
    const ProgramRun run = runScreenManager({"discover", "--timeout", IMPATIENT});
    ::close(other);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, HasSubstr("0.0.0.0:4352: Address already in use. Give the address of each projector"));
}

TEST(DiscoverCommand, AFullDiskExitsWithFour) {
    const PjlinkSimulator simulator({"--mac", mac(1)});
    const ProgramRun run = runProgram(
        "/bin/sh", {"-c", programFile() + " discover --timeout " + SEARCH_TIME +
                              " --broadcast 127.0.0.1:" + std::to_string(simulator.port()) + " > /dev/full"});
    EXPECT_EQ(run.exitCode, 4);
}

}  // namespace
