#include "ProgramRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

using WrongLines = std::vector<std::pair<std::vector<std::string>, std::string>>;

/// Every line ends in the exit code 2 and a message that holds the text beside it.
void expectRefused(const WrongLines& lines) {
    for (const auto& [arguments, expected] : lines) {
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 2) << expected;
        EXPECT_THAT(run.errors, HasSubstr(expected));
        EXPECT_EQ(run.output, "") << expected;
    }
}

TEST(CommandLine, HelpNamesEveryCommandAndExitsWithZero) {
    const ProgramRun run = runScreenManager({"--help"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, HasSubstr("check"));
    for (const char* command : {"targets", "map", "channels", "prepare", "discover", "add"}) {
        EXPECT_THAT(run.output, HasSubstr(command));
    }
    EXPECT_THAT(run.output, HasSubstr("Exit codes:"));
    EXPECT_EQ(run.errors, "");
}

TEST(CommandLine, AMisspeltCommandIsAnsweredWithAllThatThereAre) {
    const std::vector<std::string> commands = commandsOfTheProgram();
    ASSERT_GE(commands.size(), 10U);
    std::string names = commands.front();
    for (std::size_t i = 1; i < commands.size(); ++i) {
        names += (i + 1 == commands.size() ? " or " : ", ") + commands[i];
    }
    EXPECT_EQ(runScreenManager({"chek"}).errors,
              "\"chek\" is not a command: " + names + ". Run with --help for more.\n");
}

TEST(CommandLine, EachCommandHasItsHelp) {
    EXPECT_THAT(runScreenManager({"targets", "--help"}).output, HasSubstr("COLUMNSxROWS"));
    EXPECT_EQ(runScreenManager({"check", "--help"}).exitCode, 0);
}

TEST(CommandLine, TellsItsVersion) {
    EXPECT_THAT(runScreenManager({"--version"}).output, StartsWith("screenmanager "));
}

/// What bash completes at the end of a command line, by the script that the program prints.
/// @param words of the line behind the program's name, the last one begun
std::string completed(const std::vector<std::string>& words) {
    const TemporaryFolder folder;
    const std::string script = folder.write("completion", runScreenManager({"--completion"}).output);
    std::string line = "screenmanager";
    for (const std::string& word : words) {
        line += " '" + word + "'";
    }
    const ProgramRun run = runProgram("/bin/bash", {"-c", ". '" + script + "'; COMP_WORDS=(" + line +
                                                              "); COMP_CWORD=" + std::to_string(words.size()) +
                                                              "; _screenmanager; echo \"${COMPREPLY[*]}\""});
    EXPECT_EQ(run.errors, "");
    return run.output;
}

TEST(CommandLine, TheShellCompletesCommandsAndTheirOptions) {
    EXPECT_EQ(completed({"c"}), "check coverage channels\n");
    EXPECT_EQ(completed({"targets", "--f"}), "--format\n");
    EXPECT_EQ(completed({"-q", "map", "display.xml", "--po"}), "--point --points\n");
    EXPECT_EQ(completed({"map", "disp"}), "\n") << "the shell completes names of files";
}

TEST(CommandLine, TheShellCompletesEveryOptionOfTheHelp) {
    static const std::regex OPTION("--[a-z]+");
    for (const std::string& command : commandsOfTheProgram()) {
        const std::string help = runScreenManager({command, "--help"}).output;
        const std::string offered = completed({command, "-"});
        for (std::sregex_iterator option(help.begin(), help.end(), OPTION), end; option != end; ++option) {
            EXPECT_THAT(offered + " ", testing::ContainsRegex(option->str() + "[ \n]")) << command;
        }
    }
}

TEST(CommandLine, HelpAndVersionThatCannotBeWrittenAreAFault) {
    std::vector<std::vector<std::string>> all{{"--help"}, {"--version"}, {"--completion"}};
    for (const std::string& command : commandsOfTheProgram()) {
        all.push_back({command, "--help"});
    }
    ASSERT_GE(all.size(), 12U);
    for (const std::vector<std::string>& arguments : all) {
        const ProgramRun run = runScreenManagerUnder({{}, "/dev/full", 0}, arguments);
        EXPECT_EQ(run.exitCode, 4) << arguments[0];
        EXPECT_EQ(run.errors, "error: standard output cannot be written\n") << arguments[0];
    }
}

TEST(CommandLine, AWrongCommandLineExitsWithTwoAndSaysWhatIsWrong) {
    expectRefused({
        {{}, "subcommand"},
        {{"chek", "a.xml"}, "chek"},
        {{"check"}, "FILE"},
        {{"check", "a.xml", "b.xml"}, "b.xml"},
        {{"targets", "a.xml", "--format", "xls"}, "xls"},
        {{"targets", "a.xml", "--grid", "16"}, "\"16\" is not COLUMNSxROWS"},
        {{"targets", "a.xml", "--grid", "0x4"}, "\"0x4\" is not COLUMNSxROWS"},
        {{"targets", "a.xml", "--grid", "4x4x4"}, "\"4x4x4\" is not COLUMNSxROWS"},
        {{"targets", "a.xml", "--grid", "-4x4"}, "is not COLUMNSxROWS"},
        {{"targets", "a.xml", "--grid", "10000x10000"}, "at most 4000000 targets"},
        {{"targets", "a.xml", "--grid", "99999999999x1"}, "is not COLUMNSxROWS"},
        {{"targets", "a.xml", "--boundary", "-1"}, "-1"},
        {{"targets", "a.xml", "--boundary", "many"}, "many"},
        {{"--quiet", "--verbose", "check", "a.xml"}, "--quiet"},
    });
}

TEST(CommandLine, WaitsAndSearchAddressesAreChecked) {
    expectRefused({
        {{"channels", "a.xml", "--timeout", "0"}, "0 s is not a wait of 0.01 to 3600 s"},
        {{"channels", "a.xml", "--timeout", "nan"}, "nan s is not a wait"},
        {{"channels", "a.xml", "--timeout", "1e99"}, "1e+99 s is not a wait"},
        {{"discover", "--timeout", "soon"}, "--timeout"},
        {{"discover", "--broadcast", "::1"}, "\"::1\" is not an IPv4 address"},
        {{"discover", "--broadcast", "127.0.0.1:0"}, "is not an IPv4 address"},
    });
}

TEST(CommandLine, ProjectorsAndStatesAreChecked) {
    expectRefused({
        {{"prepare", "a.xml"}, "STATE"},
        {{"prepare", "a.xml", "grey"}, "grey"},
        {{"add", "a.xml", "projector.example"}, "\"projector.example\" is neither an IP address"},
        {{"add", "a.xml", "00:00:00:00:00:00"}, "nor a MAC address"},
        {{"add", "a.xml", "192.0.2.1", "--mac", "02:00"}, "\"02:00\" is not a MAC address"},
        {{"add", "a.xml", "020000000001", "--mac", "02:00:00:00:00:02"}, "state different MAC addresses"},
        {{"add", "--mac", "02:00:00:00:00:02", "a.xml", "020000000001"}, "state different MAC addresses"},
        {{"add", "a.xml", "192.0.2.1", "--name", "\xff"}, "a name has at least one character"},
    });
}

}  // namespace
