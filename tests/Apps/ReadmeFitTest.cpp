#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

// The commands are run as they stand there, but for the places of the program and of the examples; what they print must
// be what the README shows.
TEST(Readme, ItsFitPrintsWhatItSays) {
    const auto [commands, output] = readme::Section::named("fit");
    const TemporaryFolder folder;
    const ProgramRun run = runProgram("/bin/bash", {"-e", "-c", "cd '" + folder.path() + "'\n" + commands});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, output);
}

}  // namespace
