#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::StartsWith;

// The commands are run as they stand there, but for the places of the program and of the examples; what they print must
// be what the README shows.
TEST(Readme, ItsMapsOfEveryKindOfDisplayPrintWhatItSays) {
    const auto [commands, output] = readme::Section::named("maps");
    const TemporaryFolder folder;
    const ProgramRun run = runProgram("/bin/bash", {"-e", "-c", "cd '" + folder.path() + "'\n" + commands});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, output);
    EXPECT_THAT(folder.read("left.png"), StartsWith("\x89PNG\r\n"));
}

}  // namespace
