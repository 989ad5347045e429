#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

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
    EXPECT_EQ(completed({"targets", "display.xml", "--format", ""}), "csv json ply\n");
    EXPECT_EQ(completed({"check", "--format", "j"}), "json\n");
    EXPECT_EQ(completed({"--completion", ""}), "bash zsh fish\n");
}

TEST(CommandLine, TheShellCompletesEveryOptionOfTheHelp) {
    static const std::regex OPTION("--[a-z]+(-[a-z]+)*");
    for (const std::string& command : commandsOfTheProgram()) {
        const std::string help = runScreenManager({command, "--help"}).output;
        const std::string offered = completed({command, "-"});
        for (std::sregex_iterator option(help.begin(), help.end(), OPTION), end; option != end; ++option) {
            EXPECT_THAT(offered + " ", testing::ContainsRegex(option->str() + "[ \n]")) << command;
        }
    }
}

/// A zsh on a terminal of its own, in which a line is typed and completed; prints what it has become between "<<" and
/// ">>".
constexpr const char* TYPE_IN_ZSH = R"(
zmodload zsh/zpty
zpty shell zsh -f -i
await() { local shown; while zpty -r shell shown && [[ $shown != *$1* ]]; do :; done; print -rn -- $shown }
zpty -w shell 'PROMPT=; fpath=("$FUNCTIONS" $fpath); autoload -Uz compinit; compinit -u -D; stty -echo
show() { print -r -- "<<$BUFFER>>"; BUFFER= }; zle -N show; bindkey "^Xp" show; print rea""dy'
await ready > /dev/null
zpty -w -n shell "$LINE"$'\t\C-xp'
await '>>'
zpty -d shell
)";

/// What zsh makes of the beginning of a command line, by its own completion with the script that the program prints.
std::string completedInZsh(const std::string& line) {
    const TemporaryFolder folder;
    folder.write("_screenmanager", runScreenManager({"--completion", "zsh"}).output);
    folder.write("display.xml", "");
    const ProgramRun run = runProgram("/bin/sh", {"-c", "cd '" + folder.path() + "' && exec zsh -f -c \"$TYPE\""},
                                      {{"TYPE", TYPE_IN_ZSH}, {"FUNCTIONS", folder.path()}, {"LINE", line}});
    EXPECT_EQ(run.errors, "");
    const auto begin = run.output.find("<<");
    const auto end = run.output.find(">>");
    return begin == std::string::npos || end == std::string::npos ? run.output
                                                                  : run.output.substr(begin + 2, end - begin - 2);
}

TEST(CommandLine, ZshCompletesCommandsOptionsAndFiles) {
    EXPECT_EQ(completedInZsh("screenmanager cov"), "screenmanager coverage ");
    EXPECT_EQ(completedInZsh("screenmanager --verb"), "screenmanager --verbose ");
    EXPECT_EQ(completedInZsh("screenmanager targets --f"), "screenmanager targets --format ");
    EXPECT_EQ(completedInZsh("screenmanager -q map display.xml --po"), "screenmanager -q map display.xml --point");
    EXPECT_EQ(completedInZsh("screenmanager map disp"), "screenmanager map display.xml ");
    EXPECT_EQ(completedInZsh("screenmanager check --format j"), "screenmanager check --format json ");
    EXPECT_EQ(completedInZsh("screenmanager --completion f"), "screenmanager --completion fish ");
    EXPECT_EQ(completedInZsh("screenmanager check --po"), "screenmanager check --po") << "an option of another command";
}

/// What fish offers at the end of a command line, one per line with its description.
std::string completedInFish(const std::string& line) {
    const TemporaryFolder folder;
    const std::string script = folder.write("screenmanager.fish", runScreenManager({"--completion", "fish"}).output);
    const ProgramRun run =
        runProgram("/usr/bin/fish", {"--no-config", "-c", "source '" + script + "'; complete -C '" + line + "'"},
                   {{"HOME", folder.path()}});
    EXPECT_EQ(run.errors, "");
    return run.output;
}

TEST(CommandLine, FishCompletesCommandsAndTheirOptions) {
    EXPECT_EQ(completedInFish("screenmanager cov").substr(0, 9), "coverage\t");
    EXPECT_THAT(completedInFish("screenmanager targets --f"), StartsWith("--format\t"));
    const std::string offered = completedInFish("screenmanager -q map display.xml --po");
    EXPECT_THAT(offered, HasSubstr("--point\t"));
    EXPECT_THAT(offered, HasSubstr("--points\t"));
    EXPECT_EQ(completedInFish("screenmanager check --po"), "") << "an option of another command";
    EXPECT_THAT(completedInFish("screenmanager check --format j"), StartsWith("json\t"));
    EXPECT_THAT(completedInFish("screenmanager --verbose cov"), StartsWith("coverage\t")) << "behind a flag";
    EXPECT_THAT(completedInFish("screenmanager --log cov"), Not(HasSubstr("coverage\t"))) << "the value of an option";
    EXPECT_THAT(completedInFish("screenmanager targets --format "),
                testing::ContainsRegex("^csv\t.*\njson\t.*\nply\t"));
    EXPECT_THAT(completedInFish("screenmanager --completion z"), StartsWith("zsh\t"));
}

TEST(CommandLine, EveryShellIsGivenEveryCommandAndOption) {
    static const std::regex OPTION("--([a-z]+(?:-[a-z]+)*)");
    const std::string zsh = runScreenManager({"--completion", "zsh"}).output;
    const std::string fish = runScreenManager({"--completion", "fish"}).output;
    for (const std::string& command : commandsOfTheProgram()) {
        EXPECT_THAT(zsh, HasSubstr("'" + command + ":"));
        EXPECT_THAT(fish, HasSubstr(" -a " + command + " -d "));
        std::string help = runScreenManager({command, "--help"}).output;
        help.resize(help.find("Example:"));
        for (std::sregex_iterator option(help.begin(), help.end(), OPTION), end; option != end; ++option) {
            EXPECT_THAT(zsh, HasSubstr(option->str())) << command;
            EXPECT_THAT(fish, HasSubstr(" -l " + option->str(1))) << command;
        }
    }
    EXPECT_EQ(runScreenManager({"--completion"}).output, runScreenManager({"--completion", "bash"}).output);
    EXPECT_EQ(runScreenManager({"--completion", "tcsh"}).exitCode, 2);
}

TEST(CommandLine, OnlyTheHelpOfCommandsWithAnOutputSaysThatItsNameStatesTheFormat) {
    std::vector<std::string> named;
    for (const std::string& command : commandsOfTheProgram()) {
        const std::string help =
            std::regex_replace(runScreenManager({command, "--help"}).output, std::regex("\\s+"), " ");
        if (help.find("(default: as FILE is named") != std::string::npos) {
            EXPECT_THAT(help, HasSubstr("--output FILE")) << command;
            named.push_back(command);
        }
    }
    EXPECT_THAT(named, testing::UnorderedElementsAre("coverage", "map", "picture", "targets"));
}

// As a reader takes it over, where there is no display of that name; the search goes to nobody and is short.
TEST(CommandLine, TheHelpOfEachCommandHasAnExampleThatIsAccepted) {
    for (const std::string& command : commandsOfTheProgram()) {
        const std::string help = runScreenManager({command, "--help"}).output;
        const std::string begin = "\nExample: screenmanager " + command;
        ASSERT_THAT(help, HasSubstr(begin));
        std::string line = help.substr(help.find(begin) + begin.size());
        line.resize(line.find('\n'));
        if (command == "discover") {
            ASSERT_EQ(line, " --timeout 10");
            line = " --timeout 0.05 --broadcast 127.0.0.1:1";
        }
        const TemporaryFolder folder;
        const ProgramRun run =
            runProgram("/bin/sh", {"-c", "cd '" + folder.path() + "' && '" + programFile() + "' " + command + line});
        EXPECT_EQ(run.exitCode, command == "discover" ? 1 : 3) << command << line << run.errors << run.output;
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
