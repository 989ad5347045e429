#include "ProgramRun.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

std::set<std::string> longOptions(const std::string& text) {
    static const std::regex OPTION("--[a-z]+(-[a-z]+)*");
    return {std::sregex_token_iterator(text.begin(), text.end(), OPTION), std::sregex_token_iterator()};
}

TEST(ManualPage, IsWellFormed) {
    const ProgramRun run =
        runProgram("/bin/sh", {"-c", "MANROFFSEQ='' MANWIDTH=100 man --warnings -E UTF-8 -l -Tutf8 -Z " +
                                         sourceFolder() + "/docs/screenmanager.1 > /dev/null"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
}

TEST(ManualPage, ShowsNothingButCommandsAsExamples) {
    std::ifstream page(sourceFolder() + "/docs/screenmanager.1");
    bool isExample = false;
    int commands = 0;
    for (std::string line, before; std::getline(page, line); before = line) {
        if (line == ".nf") {
            EXPECT_EQ(before, ".RS");
            isExample = true;
        } else if (line == ".fi") {
            EXPECT_TRUE(isExample);
            isExample = false;
        } else if (isExample) {
            ++commands;
            EXPECT_TRUE(line.starts_with("screenmanager ")) << line;
        } else if (before == ".RE") {
            EXPECT_TRUE(line == ".PP" || line.starts_with(".SH")) << "no new paragraph: " << line;
        }
    }
    EXPECT_FALSE(isExample);
    EXPECT_GE(commands, 8);
}

/// The plain words in bold that begin a line of a section, each once, in their order.
/// @param onlyHeads those of its paragraphs alone
std::vector<std::string> boldWords(const std::string& section, bool onlyHeads) {
    static const std::regex WORD("\\.BI? ([a-z]+).*");
    std::ifstream page(sourceFolder() + "/docs/screenmanager.1");
    std::vector<std::string> words;
    bool isInside = false;
    std::smatch match;
    for (std::string line, before; std::getline(page, line); before = line) {
        isInside = line.starts_with(".SH ") ? line == ".SH " + section : isInside;
        if (isInside && (before == ".TP" || !onlyHeads) && std::regex_match(line, match, WORD) &&
            match[1] != "screenmanager" && std::find(words.begin(), words.end(), match[1]) == words.end()) {
            words.push_back(match[1]);
        }
    }
    return words;
}

TEST(ManualPage, ListsTheCommandsOfTheHelpInTheirOrder) {
    const std::vector<std::string> commands = commandsOfTheProgram();
    ASSERT_GE(commands.size(), 10U);
    EXPECT_EQ(boldWords("SYNOPSIS", false), commands);
    EXPECT_EQ(boldWords("COMMANDS", true), commands);
}

TEST(ManualPage, NamesEveryOptionOfTheHelp) {
    const ProgramRun page = runProgram("/bin/sh", {"-c", "MANWIDTH=200 man -E ascii -l " + sourceFolder() +
                                                             "/docs/screenmanager.1 | sed 's/.\x08//g'"});
    ASSERT_EQ(page.exitCode, 0);
    std::set<std::string> options;
    options.merge(longOptions(runScreenManager({"--help"}).output));
    for (const std::string& command : commandsOfTheProgram()) {
        options.merge(longOptions(runScreenManager({command, "--help"}).output));
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
