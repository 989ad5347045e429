#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

// The commands are run as they stand there, but for the places of the program and of the examples.
TEST(Readme, ItsExportsPrintWhatItSays) {
    const auto [commands, output] = readme::Section::named("export");
    const TemporaryFolder folder;
    const ProgramRun run = runProgram("/bin/bash", {"-e", "-c", "cd '" + folder.path() + "'\n" + commands});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, output);
    for (const char* file : {"player/01-Left.obj", "planetarium/04-Top.test.png", "stereo/04-Lower_left-eye2.pfm"}) {
        EXPECT_TRUE(std::filesystem::exists(folder.file(file))) << file;
    }
}

}  // namespace
