// The shared libraries that the program loads: few, until a display names a point cloud or a still is drawn.
#include "ProgramRun.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

const std::string WALL = sourceFolder() + "/examples/planar-wall/display.xml";

/// The files that the loader opens in a run; `arguments` are words of a shell.
std::vector<std::string> loadedBy(const std::string& arguments) {
    const ProgramRun run = runProgram(
        "/bin/sh",
        {"-c", "LD_DEBUG=files \"$0\" " + arguments + " 2>&1 | sed -n 's/.*calling init: //p'", programFile()});
    std::istringstream lines(run.output);
    std::vector<std::string> files;
    for (std::string file; std::getline(lines, file);) {
        files.push_back(file);
    }
    return files;
}

class CloudDisplay : public testing::Test {
protected:
    CloudDisplay() {
        m_folder.write("cloud.pcd",
                       "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 4\nHEIGHT 1\n"
                       "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 4\nDATA ascii\n0 0 0\n1 0 0\n0 1 0\n1 1 2\n");
    }

    const TemporaryFolder m_folder;
    const std::string m_display = m_folder.write(
        "display.xml",
        "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat' fileUnit='m'>"
        "<ModelCloud file='cloud.pcd'/><ImportOrientation up='Z' forward='Y'/>"
        "<Centre x='0' y='4' z='1'/><Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors>"
        "<Projector id='A'><ScreenArea left='0' right='1' bottom='0' top='1'/></Projector></Projectors></Display>");
};

TEST(LoadedLibraries, AreAtMostThirtyAndNoneOfPointCloudsAndStills) {
    for (const std::string& arguments :
         {std::string("--help"), std::string("picture --help"), "check '" + WALL + "'"}) {
        const std::vector<std::string> files = loadedBy(arguments);
        EXPECT_THAT(files, Contains(HasSubstr("libScreenManager.so"))) << arguments;
        EXPECT_THAT(files, Each(Not(AnyOf(HasSubstr("pcl"), HasSubstr("vtk"), HasSubstr("Clouds"))))) << arguments;
        EXPECT_THAT(files, Each(Not(AnyOf(HasSubstr("cairo"), HasSubstr("harfbuzz"), HasSubstr("Stills")))))
            << arguments;
        EXPECT_THAT(files, Each(Not(AnyOf(HasSubstr("ceres"), HasSubstr("Fit"))))) << arguments;
        if (!IS_SANITIZED) {
            EXPECT_LE(files.size(), 30U) << arguments;
        }
    }
}

/// Where the one of those files lies whose name starts so; empty for none.
fs::path placeOf(const std::string& name, const std::vector<std::string>& files) {
    const auto found = std::find_if(files.begin(), files.end(), [&](const std::string& file) {
        return fs::path(file).filename().string().starts_with(name);
    });
    return found == files.end() ? fs::path() : fs::path(*found);
}

/// A copy of the program and of its libraries, without the modules.
std::string withoutModules(const fs::path& copy) {
    const fs::path apps = fs::path(programFile()).parent_path().parent_path();
    fs::create_directories(copy / "screenmanager");
    fs::copy_file(programFile(), copy / "screenmanager" / "screenmanager");
    for (const std::string& file : loadedBy("--version")) {
        if (fs::path(file).filename().string().starts_with("libScreenManager")) {
            const fs::path library = fs::canonical(file);
            const fs::path folder = copy / fs::relative(library.parent_path(), fs::canonical(apps));
            fs::create_directories(folder);
            fs::copy_file(library, folder / fs::path(file).filename());
        }
    }
    return (copy / "screenmanager" / "screenmanager").string();
}

TEST_F(CloudDisplay, OpensTheModuleBesideTheLibrary) {
    const std::vector<std::string> files = loadedBy("check '" + m_display + "'");
    const fs::path module = placeOf("libScreenManagerClouds-", files);
    ASSERT_TRUE(module.is_absolute()) << module;
    EXPECT_EQ(module.parent_path(), fs::canonical(placeOf("libScreenManager.so", files)).parent_path());
    EXPECT_THAT(files, Contains(HasSubstr("libpcl_io")));
}

TEST_F(CloudDisplay, NamesTheModuleThatIsMissing) {
    const fs::path copy = m_folder.file("copy");
    const std::string program = withoutModules(copy);
    EXPECT_EQ(runProgram(program, {"check", WALL}).exitCode, 0);
    const ProgramRun run = runProgram(program, {"targets", m_display});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.errors,
                HasSubstr("Unable to load Point Cloud Data file! Ensure the PCD file " + m_folder.file("cloud.pcd")));
    EXPECT_THAT(run.errors, HasSubstr("Unable to open the module for point clouds " + copy.string() + "/"));
    EXPECT_THAT(run.errors, HasSubstr("No such file or directory"));
    EXPECT_THAT(run.errors, HasSubstr("install ScreenManager again"));
}

TEST(LoadedLibraries, OfStillsComeWithTheFirstStill) {
    const TemporaryFolder folder;
    const std::vector<std::string> files =
        loadedBy("picture '" + WALL + "' --size 200x200 -o '" + folder.file("still.png") + "'");
    const fs::path module = placeOf("libScreenManagerStills-", files);
    ASSERT_TRUE(module.is_absolute()) << module;
    EXPECT_EQ(module.parent_path(), fs::canonical(placeOf("libScreenManager.so", files)).parent_path());
    EXPECT_THAT(files, Contains(HasSubstr("libcairo")));
    EXPECT_THAT(files, Contains(HasSubstr("libharfbuzz")));
}

TEST(LoadedLibraries, OfStillsAreNamedWhereTheyAreMissing) {
    const TemporaryFolder folder;
    const fs::path copy = folder.file("copy");
    const ProgramRun run = runProgram(withoutModules(copy),
                                      {"picture", WALL, "--quiet", "-o", folder.write("still.png", "what was there")});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("Unable to open the module for stills " + copy.string() + "/"));
    EXPECT_THAT(run.errors, HasSubstr("No such file or directory"));
    EXPECT_THAT(run.errors, HasSubstr("install ScreenManager again"));
    EXPECT_EQ(folder.read("still.png"), "what was there");
}

}  // namespace
