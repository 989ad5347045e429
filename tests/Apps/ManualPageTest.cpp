#include "ProgramRun.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace {

std::set<std::string> longOptions(const std::string& text) {
    static const std::regex OPTION("--[a-z]+");
    return {std::sregex_token_iterator(text.begin(), text.end(), OPTION), std::sregex_token_iterator()};
}

TEST(ManualPage, IsWellFormed) {
    const ProgramRun run =
        runProgram("/bin/sh", {"-c", "MANROFFSEQ='' MANWIDTH=100 man --warnings -E UTF-8 -l -Tutf8 -Z " SM_SOURCE_DIR
                                     "/docs/screenmanager.1 > /dev/null"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
}

TEST(ManualPage, NamesEveryOptionOfTheHelp) {
    const ProgramRun page = runProgram(
        "/bin/sh", {"-c", "MANWIDTH=200 man -E ascii -l " SM_SOURCE_DIR "/docs/screenmanager.1 | sed 's/.\x08//g'"});
    ASSERT_EQ(page.exitCode, 0);
    std::set<std::string> options;
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"check", "--help"},
                                                      {"targets", "--help"},
                                                      {"map", "--help"},
                                                      {"coverage", "--help"},
                                                      {"view", "--help"},
                                                      {"picture", "--help"},
                                                      {"channels", "--help"},
                                                      {"prepare", "--help"},
                                                      {"discover", "--help"},
                                                      {"add", "--help"}}) {
        options.merge(longOptions(runScreenManager(arguments).output));
    }
    ASSERT_GE(options.size(), 7U);
    const std::set<std::string> documented = longOptions(page.output);
    for (const std::string& option : options) {
        EXPECT_TRUE(documented.count(option) == 1) << option << " is missing in the manual page";
    }
    for (const std::string& option : documented) {
        EXPECT_TRUE(options.count(option) == 1) << option << " is in the manual page alone";
    }
}

}  // namespace
