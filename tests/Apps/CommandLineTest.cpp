#include "ProgramRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(CommandLine, HelpNamesEveryCommandAndExitsWithZero) {
    const ProgramRun run = runScreenManager({"--help"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, HasSubstr("check"));
    EXPECT_THAT(run.output, HasSubstr("targets"));
    EXPECT_THAT(run.output, HasSubstr("Exit codes:"));
    EXPECT_EQ(run.errors, "");
}

TEST(CommandLine, EachCommandHasItsHelp) {
    EXPECT_THAT(runScreenManager({"targets", "--help"}).output, HasSubstr("COLUMNSxROWS"));
    EXPECT_EQ(runScreenManager({"check", "--help"}).exitCode, 0);
}

TEST(CommandLine, TellsItsVersion) {
    EXPECT_THAT(runScreenManager({"--version"}).output, StartsWith("screenmanager "));
}

TEST(CommandLine, AWrongCommandLineExitsWithTwoAndSaysWhatIsWrong) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> wrong{
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
    };
    for (const auto& [arguments, expected] : wrong) {
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 2) << expected;
        EXPECT_THAT(run.errors, HasSubstr(expected));
        EXPECT_EQ(run.output, "") << expected;
    }
}

}  // namespace
