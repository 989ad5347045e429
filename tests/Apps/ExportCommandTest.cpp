#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/PngImage.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <thread>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::string EXAMPLES = sourceFolder() + "/examples/";
const std::string WALL = EXAMPLES + "planar-wall/display.xml";
const std::string DOME = EXAMPLES + "spherical-dome/display.xml";

class ExportCommand : public testing::Test {
protected:
    [[nodiscard]] ProgramRun exported(const std::string& file, std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{"export", file, "--output", m_output, "--nodes", "9x7", "--no-blend"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runScreenManager(arguments);
    }

    [[nodiscard]] Json manifest() const { return Json::parse(m_folder.read("player/manifest.json")); }

    /// The files of a folder with their contents.
    [[nodiscard]] static std::map<std::string, std::string> filesIn(const std::string& folder) {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::directory_iterator(folder)) {
            std::ifstream in(entry.path(), std::ios::binary);
            files[entry.path().filename().string()] = {std::istreambuf_iterator<char>(in), {}};
        }
        return files;
    }

    [[nodiscard]] std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }

    /// Starts an export that takes long, and waits until it is being written.
    void expectWholeAfter(int signal) const {
        RunningProgram program(programFile(), {"export", DOME, "--output", m_output, "--force", "--format", "mesh",
                                               "--nodes", "1500x1500", "--no-blend", "--quiet"});
        const auto isWriting = [this] {
            const std::set<std::string> found = names();
            return std::any_of(found.begin(), found.end(),
                               [](const std::string& name) { return name.starts_with(".player.export-"); });
        };
        while (!isWriting() && program.isRunning()) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ASSERT_TRUE(program.isRunning()) << "it was faster than the test, or failed";
        program.send(signal);
        EXPECT_EQ(program.finish().signal, signal);
    }

    const TemporaryFolder m_folder;
    const std::string m_output = m_folder.file("player");
};

TEST_F(ExportCommand, WritesAFolderThatItsManifestDescribes) {
    const ProgramRun run = exported(DOME, {"--format", "mesh", "--format", "obj", "--format", "png16"});
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "");
    const Json document = manifest();
    std::set<std::string> described{"manifest.json"};
    for (const Json& view : document["views"]) {
        for (const Json& file : view["files"]) {
            const std::string name = file["name"];
            described.insert(name);
            EXPECT_EQ(file["sha256"], runProgram("/usr/bin/sha256sum", {m_output + '/' + name}).output.substr(0, 64));
        }
    }
    std::set<std::string> found;
    for (const auto& [name, content] : filesIn(m_output)) {
        found.insert(name);
    }
    EXPECT_EQ(found, described);
    EXPECT_EQ(document["files"][0]["sha256"], runProgram("/usr/bin/sha256sum", {DOME}).output.substr(0, 64));
}

TEST_F(ExportCommand, TheManifestFitsItsSchemaForEveryInput) {
    const auto expectValid = [this](const std::string& file, std::vector<std::string> options) {
        options.insert(options.end(), {"--force", "--quiet"});
        fs::create_directories(m_output);
        const ProgramRun run = exported(file, options);
        ASSERT_EQ(run.exitCode, 0) << file << options[1] << run.errors;
        const ProgramRun validator =
            runProgram("/usr/bin/python3", {"-W", "ignore", "-m", "jsonschema", "-i", m_output + "/manifest.json",
                                            sourceFolder() + "/docs/schemas/export.schema.json"});
        EXPECT_EQ(validator.exitCode, 0) << file << validator.output << validator.errors;
        EXPECT_EQ(manifest()["views"][0]["input"]["kind"], options[1]);
    };
    for (const char* input : {"frustum", "fisheye", "equirectangular", "cube"}) {
        expectValid(DOME, {"--input", input, "--format", "obj", "--format", "pfm3d", "--eye", "0,0,1", "--eye",
                           "0.1,0,1", "--channel", "Left"});
        expectValid(WALL, {"--input", input, "--size", "512x256"});
    }
    expectValid(WALL, {"--input", "frustum", "--convention", "direct3d", "--world", "y-up", "--handed", "left"});
    expectValid(WALL, {"--input", "cube", "--convention", "reversed-z", "--near", "0.5", "--far", "90"});
    expectValid(WALL, {"--input", "layout"});
    expectValid(WALL, {"--input", "screen"});
}

TEST_F(ExportCommand, AsManyProcessesAsWantedWriteTheSame) {
    // The last one has the most pixels, and begins first.
    std::string text = readme::replaced(readme::text("examples/planar-wall/display.xml"), "1920\" height=\"1200\"",
                                        "192\" height=\"120\"");
    const std::size_t last = text.rfind("<Projector id=");
    text = text.substr(0, last) + readme::replaced(text.substr(last), "width=\"192\"", "width=\"300\"");
    const std::string file = m_folder.write("uneven.xml", text);
    const std::vector<std::string> formats{"--quiet", "--force", "--format", "pfm", "--format", "obj", "--jobs"};
    fs::create_directories(m_output);
    const auto writtenBy = [&](const char* jobs) {
        std::vector<std::string> options = formats;
        options.emplace_back(jobs);
        EXPECT_EQ(exported(file, options).exitCode, 0);
        return filesIn(m_output);
    };
    const auto alone = writtenBy("1");
    EXPECT_EQ(writtenBy("3"), alone);
    EXPECT_EQ(alone.size(), 13U) << "two of each of six channels, and the manifest";
    const Json document = manifest();
    EXPECT_EQ(document["views"][0]["channel"]["number"], 1);
    EXPECT_EQ(document["views"][5]["channel"]["pixels"][0], 300);
}

TEST_F(ExportCommand, TakesTheChannelsAndEyesThatAreNamed) {
    ASSERT_EQ(exported(DOME, {"--channel", "Right", "--channel", "Left", "--channel", "Left", "--eye", "0,0,1", "--eye",
                              "0.06,0,1"})
                  .exitCode,
              0);
    std::vector<std::string> views;
    const Json document = manifest();
    for (const Json& view : document["views"]) {
        views.push_back(view["channel"]["name"].get<std::string>() + view["eye"].dump());
    }
    EXPECT_THAT(views, ElementsAre("Left[0,0,1]", "Left[0.06,0,1]", "Right[0,0,1]", "Right[0.06,0,1]"));
}

TEST_F(ExportCommand, TheEarlierExportIsReplacedWithForceAlone) {
    ASSERT_EQ(exported(WALL).exitCode, 0);
    const auto before = filesIn(m_output);
    const ProgramRun refused = exported(WALL, {"--format", "obj"});
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_THAT(refused.errors, HasSubstr("exists: name a new folder with --output, or replace an earlier export with "
                                          "--force"));
    EXPECT_EQ(filesIn(m_output), before);
    EXPECT_EQ(exported(WALL, {"--format", "obj", "--force"}).exitCode, 0);
    EXPECT_EQ(filesIn(m_output).count("01-Upper_left.obj"), 1U);
    EXPECT_EQ(filesIn(m_output).count("01-Upper_left.mesh"), 0U);
    m_folder.write("player/notes.txt", "mine");
    EXPECT_EQ(exported(WALL, {"--force"}).exitCode, 4);
    EXPECT_EQ(m_folder.read("player/notes.txt"), "mine");
    EXPECT_THAT(names(), ElementsAre("player"));
}

TEST_F(ExportCommand, WhatCannotBeExportedLeavesNothing) {
    EXPECT_EQ(exported(EXAMPLES + "empty-wall/display.xml").exitCode, 1);
    EXPECT_EQ(exported(WALL, {"--channel", "Nowhere"}).exitCode, 2);
    EXPECT_EQ(exported(m_folder.file("gone.xml")).exitCode, 3);
    EXPECT_EQ(exported(WALL, {"--content", m_folder.file("gone.png")}).exitCode, 3);
    EXPECT_EQ(exported(DOME, {"--input", "layout"}).exitCode, 3);
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_EQ(runScreenManager({"export", WALL, "--output", m_folder.file("no/such/folder")}).exitCode, 4);
}

/// Four of the twelve channels of a closed cylinder lie behind a fisheye of 180 degrees.
TEST_F(ExportCommand, AChannelOfWhichNothingIsMappedIsReportedWithTheRemedy) {
    const std::string file = EXAMPLES + "closed-cylinder/display.xml";
    const ProgramRun run = exported(file, {"--input", "fisheye", "--quiet"});
    EXPECT_EQ(run.exitCode, 1);
    std::set<int> reported;
    for (const Json document = manifest(); const Json& view : document["views"]) {
        const std::string title = "channel " + view["channel"]["name"].get<std::string>() + " (" +
                                  view["channel"]["projector"].get<std::string>() + ")";
        const bool isUnmapped = view["nodes"]["mapped"] == 0;
        EXPECT_EQ(view["warning"].is_string(), isUnmapped) << title;
        if (isUnmapped) {
            reported.insert(view["channel"]["number"].get<int>());
            EXPECT_EQ(view["warning"], title +
                                           ": nothing of its picture is mapped: what it shows lies beyond the "
                                           "circle of the fisheye: state another --axis or a wider --aperture, or "
                                           "--input equirectangular");
            EXPECT_THAT(run.errors, HasSubstr("error: " + view["warning"].get<std::string>() + '\n'));
        } else {
            EXPECT_THAT(run.errors, testing::Not(HasSubstr(title)));
        }
    }
    EXPECT_THAT(reported, ElementsAre(1, 2, 11, 12));
    const ProgramRun validator =
        runProgram("/usr/bin/python3", {"-W", "ignore", "-m", "jsonschema", "-i", m_output + "/manifest.json",
                                        sourceFolder() + "/docs/schemas/export.schema.json"});
    EXPECT_EQ(validator.exitCode, 0) << validator.output << validator.errors;
    EXPECT_EQ(exported(file, {"--input", "equirectangular", "--force"}).exitCode, 0);
}

TEST_F(ExportCommand, AnExportOfNothingIsRefused) {
    const ProgramRun run = exported(EXAMPLES + "closed-cylinder/display.xml",
                                    {"--input", "fisheye", "--channel", "Channel 1", "--channel", "Channel 12"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("error: channel Channel 1 (020000000801): nothing of its picture is mapped"));
    EXPECT_THAT(run.errors, HasSubstr("error: no channel has anything that is mapped, and nothing was written\n"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(ExportCommand, AFrustumThatIsTooWideIsRefusedWithTheChannelAndTheRemedy) {
    const ProgramRun run = exported(DOME, {"--axis", "0,-1,0"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.errors, HasSubstr("channel Left (020000000501)"));
    EXPECT_THAT(run.errors, HasSubstr("fisheye"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(ExportCommand, AKilledRunLeavesTheOldFolderAndTheNextOneTidiesUp) {
    ASSERT_EQ(exported(DOME, {"--quiet"}).exitCode, 0);
    const auto before = filesIn(m_output);
    expectWholeAfter(SIGKILL);
    EXPECT_EQ(filesIn(m_output), before);
    EXPECT_EQ(names().size(), 2U) << "the half of a folder that a killed run leaves";
    // The children end with their parent, at once but not before it.
    for (int i = 0; i < 1000 && names().size() > 1; ++i) {
        ASSERT_EQ(exported(DOME, {"--quiet", "--force"}).exitCode, 0);
    }
    EXPECT_THAT(names(), ElementsAre("player"));
    EXPECT_EQ(filesIn(m_output), before);
}

TEST_F(ExportCommand, AnEndedRunLeavesNothing) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        fs::create_directories(m_output);
        expectWholeAfter(signal);
        EXPECT_THAT(names(), ElementsAre("player"));
        EXPECT_THAT(filesIn(m_output), IsEmpty());
    }
}

TEST_F(ExportCommand, ShowsTestPicturesAndContentOfTheSizeOfTheChannels) {
    const std::string content = m_folder.file("content.png");
    ASSERT_EQ(runScreenManager({"picture", DOME, "--size", "400x300", "-q", "-o", content}).exitCode, 0);
    ASSERT_EQ(exported(DOME, {"--test-pictures", "--content", content, "--channel", "Left", "--quiet"}).exitCode, 0);
    for (const char* name : {"player/01-Left.test.png", "player/01-Left.content.png"}) {
        const PngImage image = PngImage::read(m_folder.read(name));
        EXPECT_EQ(image.width, 1920U);
        EXPECT_EQ(image.height, 1200U);
    }
    std::vector<std::string> sources;
    const Json document = manifest();
    for (const Json& file : document["files"]) {
        sources.push_back(file["name"]);
    }
    EXPECT_THAT(sources, Contains(content));
}

TEST_F(ExportCommand, NeverReplacesTheContentThatItShows) {
    const std::string content = m_folder.file("content.png");
    ASSERT_EQ(runScreenManager({"picture", DOME, "--size", "400x300", "-q", "-o", content}).exitCode, 0);
    ASSERT_EQ(exported(DOME, {"--content", content, "--channel", "Left", "-q"}).exitCode, 0);
    const auto before = filesIn(m_output);
    const ProgramRun run =
        exported(DOME, {"--content", m_output + "/01-Left.content.png", "--channel", "Left", "--force"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("01-Left.content.png lies in the folder that would be replaced: name another"));
    EXPECT_EQ(filesIn(m_output), before);
}

// The numbers of the manifest and of the maps, worked out once more in another language.
TEST_F(ExportCommand, APointSeenThroughTheMatricesLandsWhereTheWarpSays) {
    std::string dome = readme::text("examples/spherical-dome/display.xml");
    dome = readme::replaced(readme::replaced(dome, "width=\"1920\"", "width=\"250\""), "height=\"1200\"",
                            "height=\"160\"");
    const std::string small = m_folder.write("small.xml", dome);
    const auto expectSame = [&](const std::vector<std::string>& convention, const std::string& input) {
        std::vector<std::string> options{"export",     small,       "--output",    m_output,    "--force", "--quiet",
                                         "--no-blend", "--input",   input,         "--near",    "0.25",    "--far",
                                         "40",         "--format",  "pfm",         "--format",  "pfm3d",   "--format",
                                         "png16",      "--channel", "Right",       "--channel", "Top",     "--eye",
                                         "0,0,1.2",    "--eye",     "-0.4,0.3,0.9"};
        options.insert(options.end(), convention.begin(), convention.end());
        ASSERT_EQ(runScreenManager(options).exitCode, 0);
        const ProgramRun run =
            runProgram("/usr/bin/python3", {sourceFolder() + "/tests/Apps/export_frusta.py", m_output});
        EXPECT_EQ(run.exitCode, 0) << testing::PrintToString(options) << run.output << run.errors;
        EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 4) << "two channels from two eyes";
    };
    fs::create_directories(m_output);
    for (const char* depth : {"opengl", "direct3d", "reversed-z"}) {
        for (const char* world : {"z-up", "y-up"}) {
            for (const char* handed : {"right", "left"}) {
                expectSame({"--convention", depth, "--world", world, "--handed", handed}, "frustum");
            }
        }
    }
    expectSame({}, "frustum");
    expectSame({"--convention", "reversed-z", "--world", "y-up", "--handed", "left"}, "cube");
}

// As a player does it, in another language: what lies between the nodes is what the pixels show.
TEST_F(ExportCommand, WhatLiesBetweenTheNodesIsWithinTheError) {
    const auto expectWithin = [this](const std::string& example, std::vector<std::string> options) {
        options.insert(options.begin(),
                       {"export", EXAMPLES + example + "/display.xml", "--output", m_output, "--force", "--quiet",
                        "--format", "obj", "--format", "mesh", "--format", "pfm", "--no-blend"});
        const ProgramRun run = runScreenManager(options);
        ASSERT_EQ(run.exitCode, 0) << example << run.errors;
        const ProgramRun seen =
            runProgram("/usr/bin/python3", {sourceFolder() + "/tests/Apps/export_warps.py", m_output});
        EXPECT_EQ(seen.exitCode, 0) << testing::PrintToString(options) << seen.output << seen.errors;
    };
    expectWithin("spherical-dome", {"--channel", "Top"});
    expectWithin("spherical-dome", {"--channel", "Left", "--input", "fisheye", "--axis", "0,0,1"});
    expectWithin("closed-cylinder", {"--channel", "Channel 1", "--input", "equirectangular", "--centre", "180,0"});
    expectWithin("lens-cylinder", {"--channel", "Centre"});
    expectWithin("warped-wall", {"--channel", "Left", "--input", "screen"});
    expectWithin("collimated", {"--channel", "Centre", "--input", "equirectangular"});
    expectWithin("planar-wall", {"--channel", "Upper left", "--eye", "1,0.5,1.7"});
}

}  // namespace
