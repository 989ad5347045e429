#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cxx/defaultconfigurator.h>
#include <log4cxx/logmanager.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>

/// What lies in the working folder may come from anybody: the program is not led by it.

namespace {

using testing::StartsWith;

const std::string EXAMPLES = sourceFolder() + "/examples/";

/// Every command, as far as it goes without projectors.
const std::vector<std::vector<std::string>> COMMANDS{
    {"--version"},
    {"--help"},
    {"map", "--help"},
    {"no-such-command"},
    {"check", EXAMPLES + "planar-wall/display.xml"},
    {"targets", EXAMPLES + "planar-wall/display.xml"},
    {"map", EXAMPLES + "planar-wall/display.xml", "--channel", "Lower left", "--point", "0.5,0.5"},
    {"coverage", EXAMPLES + "empty-wall/display.xml"},
    {"view", EXAMPLES + "empty-wall/display.xml"},
    {"picture", EXAMPLES + "empty-wall/display.xml"},
    {"fit", EXAMPLES + "empty-wall/display.xml", "--points", "no-such-file.csv", "-o", "no-such-file.xml"},
    {"channels", EXAMPLES + "empty-wall/display.xml"},
    {"prepare", EXAMPLES + "empty-wall/display.xml", "clear"},
    {"discover", "--timeout", "0.01", "--broadcast", "127.0.0.1"},
    {"add", "no-such-file.xml", "127.0.0.1:1", "--timeout", "0.01"},
};

/// Runs a command in a folder.
ProgramRun runIn(const std::string& folder, const std::vector<std::string>& command,
                 const std::map<std::string, std::string>& environment = {}) {
    std::vector<std::string> arguments{"-c", "cd \"$0\" && exec \"$@\"", folder};
    arguments.insert(arguments.end(), command.begin(), command.end());
    return runProgram("/bin/sh", arguments, environment);
}

ProgramRun runScreenManagerIn(const std::string& folder, const std::vector<std::string>& arguments,
                              const std::map<std::string, std::string>& environment = {}) {
    std::vector<std::string> command{programFile()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runIn(folder, command, environment);
}

/// A folder with configurations of log4cxx, each of which empties a file of the user.
class LogConfiguration : public testing::Test {
protected:
    LogConfiguration() { restore(); }

    void restore() const { folder.write("user/victim.txt", PRECIOUS); }
    [[nodiscard]] std::string victim() const { return folder.read("user/victim.txt"); }
    [[nodiscard]] std::string hostile() const { return folder.file("hostile"); }

    void write(const std::string& name) const {
        const std::string path = folder.file("user/victim.txt");
        folder.write("hostile/" + name,
                     name.ends_with("xml")
                         ? "<?xml version='1.0'?>\n"
                           "<log4j:configuration xmlns:log4j='http://jakarta.apache.org/log4j/'>"
                           "<appender name='victim' class='org.apache.log4j.FileAppender'><param name='File' value='" +
                               path +
                               "'/><param name='Append' value='false'/>"
                               "<layout class='org.apache.log4j.SimpleLayout'/></appender>"
                               "<root><priority value='all'/><appender-ref ref='victim'/></root></log4j:configuration>"
                         : "log4j.rootLogger=ALL, victim\n"
                           "log4j.appender.victim=org.apache.log4j.FileAppender\n"
                           "log4j.appender.victim.File=" +
                               path +
                               "\nlog4j.appender.victim.Append=false\n"
                               "log4j.appender.victim.layout=org.apache.log4j.SimpleLayout\n");
    }

    void expectUntouchedByAllCommands(const std::map<std::string, std::string>& environment = {}) const {
        for (const std::vector<std::string>& command : COMMANDS) {
            const ProgramRun run = runScreenManagerIn(hostile(), command, environment);
            EXPECT_NE(run.exitCode, -1) << command.front();
            EXPECT_EQ(victim(), PRECIOUS) << command.front();
            restore();
        }
    }

    static inline const std::string PRECIOUS = "precious\n";
    static inline const std::vector<std::string> NAMES{"log4cxx.xml", "log4cxx.properties", "log4j.xml",
                                                       "log4j.properties"};
    TemporaryFolder folder;
};

TEST_F(LogConfiguration, InTheWorkingFolderIsNotObeyedByAnyCommand) {
    for (const std::string& name : NAMES) {
        write(name);
    }
    expectUntouchedByAllCommands();
}

TEST_F(LogConfiguration, OfAnyNameIsNotObeyed) {
    for (const std::string& name : NAMES) {
        const TemporaryFolder alone;
        write(name);
        alone.write(name, folder.read("hostile/" + name));
        EXPECT_EQ(runScreenManagerIn(alone.path(), {"--version"}).exitCode, 0);
        EXPECT_EQ(victim(), PRECIOUS) << name;
        restore();
    }
}

TEST_F(LogConfiguration, InTheEnvironmentIsNotObeyedByAnyCommand) {
    write("log.properties");
    expectUntouchedByAllCommands({{"LOG4CXX_CONFIGURATION", folder.file("hostile/log.properties")},
                                  {"log4j.configuration", folder.file("hostile/log.properties")}});
}

// The control of the tests above: the same files, obeyed.
TEST_F(LogConfiguration, EmptiesAFileWhenTheSearchIsBroughtBack) {
    for (const std::string& name : NAMES) {
        const TemporaryFolder alone;
        write(name);
        alone.write(name, folder.read("hostile/" + name));
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            if (::chdir(alone.path().c_str()) == 0) {
                log4cxx::DefaultConfigurator::configure(log4cxx::LogManager::getLoggerRepository());
            }
            ::_exit(0);
        }
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        EXPECT_EQ(victim(), "") << name;
        restore();
    }
}

/// The libraries that the loader finds for the program, by the names that it searches for.
std::vector<std::string> librariesOfTheProgram() {
    const ProgramRun run =
        runProgram("/bin/sh", {"-c", "ldd \"$0\" | sed -n 's/^[[:space:]]*\\([^ ]*\\) => .*/\\1/p'", programFile()});
    std::istringstream lines(run.output);
    std::vector<std::string> names;
    for (std::string name; std::getline(lines, name);) {
        names.push_back(name);
    }
    return names;
}

TEST(WorkingFolder, IsNotSearchedForLibraries) {
    const std::vector<std::string> names = librariesOfTheProgram();
    EXPECT_THAT(names, testing::Contains(StartsWith("liblog4cxx.so")));
    EXPECT_GE(names.size(), 20U);
    const TemporaryFolder folder;
    for (const std::string& name : names) {
        folder.write(name, "");
    }
    const ProgramRun run = runScreenManagerIn(folder.path(), {"--version"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, StartsWith("screenmanager "));
    EXPECT_EQ(run.errors, "");
}

}  // namespace
