#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/GreyPngImage.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string EXAMPLES = sourceFolder() + "/examples/";

class ExportBlends : public testing::Test {
protected:
    /// An example with small pictures.
    [[nodiscard]] std::string smallExample(const std::string& name) const {
        std::string text = readme::text("examples/" + name + "/display.xml");
        text = readme::replaced(text, "width=\"1920\"", "width=\"160\"");
        return m_folder.write("small.xml", readme::replaced(text, "height=\"1200\"", "height=\"100\""));
    }

    [[nodiscard]] ProgramRun exported(const std::string& file, std::vector<std::string> more) const {
        std::vector<std::string> arguments{"export", file, "--output", m_output, "--nodes", "9x7", "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runScreenManager(arguments);
    }

    /// Names of the files of the first channel, as the manifest has them.
    [[nodiscard]] std::vector<std::string> filesOfFirst() const {
        std::vector<std::string> files;
        const auto document = nlohmann::json::parse(m_folder.read("player/manifest.json"));
        for (const auto& file : document["views"][0]["files"]) {
            files.push_back(file["name"]);
        }
        return files;
    }

    void expectValid() const {
        const ProgramRun validator =
            runProgram("/usr/bin/python3", {"-W", "ignore", "-m", "jsonschema", "-i", m_output + "/manifest.json",
                                            sourceFolder() + "/docs/schemas/export.schema.json"});
        EXPECT_EQ(validator.exitCode, 0) << validator.output << validator.errors;
    }

    const TemporaryFolder m_folder;
    const std::string m_output = m_folder.file("player");
};

TEST_F(ExportBlends, AreWrittenUnlessLeftOutInTheDepthsAndUsesThatAreWanted) {
    const std::string file = smallExample("spherical-dome");
    const auto expectFiles = [&](const std::vector<std::string>& options, const std::vector<std::string>& files) {
        std::vector<std::string> all{"--force", "--channel", "Left"};
        all.insert(all.end(), options.begin(), options.end());
        const ProgramRun run = exported(file, all);
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_EQ(filesOfFirst(), files);
        for (const std::string& name : files) {
            EXPECT_TRUE(std::filesystem::exists(m_output + '/' + name)) << name;
        }
        expectValid();
    };
    std::filesystem::create_directories(m_output);
    expectFiles({}, {"01-Left.blend16.png", "01-Left.blend8.png", "01-Left.mesh"});
    expectFiles({"--blend-bits", "8", "--alpha"}, {"01-Left.alpha8.png", "01-Left.mesh"});
    expectFiles({"--blend-bits", "16", "--blend-gamma", "srgb", "--black-level", "0.2"},
                {"01-Left.blend16.png", "01-Left.lift16.png", "01-Left.mesh"});
    expectFiles({"--no-blend"}, {"01-Left.mesh"});
}

// The pictures of the others are those of the display, whichever are exported.
TEST_F(ExportBlends, OfOneChannelAreThoseOfTheWholeDisplay) {
    const std::string file = smallExample("spherical-dome");
    ASSERT_EQ(exported(file, {"--black-level", "0.1", "--jobs", "2"}).exitCode, 0);
    const std::string blend = m_folder.read("player/02-Centre.blend16.png");
    const std::string lift = m_folder.read("player/02-Centre.lift8.png");
    const GreyPngImage image = GreyPngImage::read(blend);
    EXPECT_EQ(image.width, 160U);
    EXPECT_EQ(image.height, 100U);
    EXPECT_GT(std::count(image.grey.begin(), image.grey.end(), 65535), 1000);
    EXPECT_LT(*std::min_element(image.grey.begin(), image.grey.end()), 3000);
    ASSERT_EQ(exported(file, {"--channel", "Centre", "--black-level", "0.1", "--force", "--jobs", "1"}).exitCode, 0);
    EXPECT_EQ(m_folder.read("player/02-Centre.blend16.png"), blend);
    EXPECT_EQ(m_folder.read("player/02-Centre.lift8.png"), lift);
}

TEST_F(ExportBlends, EachEyeHasItsOwn) {
    ASSERT_EQ(
        exported(smallExample("spherical-dome"), {"--eye", "0,0,1", "--eye", "0,0.1,1", "--channel", "Top"}).exitCode,
        0);
    EXPECT_EQ(m_folder.read("player/04-Top-eye1.blend16.png"), m_folder.read("player/04-Top-eye2.blend16.png"));
    expectValid();
}

TEST_F(ExportBlends, BlackLevelsAreOfAllChannelsOrOfOne) {
    ASSERT_EQ(exported(smallExample("spherical-dome"),
                       {"--black-level", "0.1", "--black-level", "Left=0.3", "--black-level", "020000000502=0.25"})
                  .exitCode,
              0);
    std::vector<double> residual;
    const auto document = nlohmann::json::parse(m_folder.read("player/manifest.json"));
    for (const auto& view : document["views"]) {
        residual.push_back(view["blend"]["lift"]["residualPercent"]);
    }
    EXPECT_THAT(residual, ElementsAre(testing::DoubleEq(0.3), testing::DoubleEq(0.25), testing::DoubleEq(0.1),
                                      testing::DoubleEq(0.1)));
}

TEST_F(ExportBlends, BadOptionsAreRefused) {
    const std::string expected = " is not PERCENT or NAME=PERCENT: expected the light of black in per cent";
    for (const auto& [options, message] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"--blend-gamma", "0.1"}, "\"0.1\": expected a number from 0.2 to 5, 1 for linear, or srgb"},
             {{"--blend-gamma", "sRGB"}, "\"sRGB\": expected a number"},
             {{"--blend-bits", "12"}, "--blend-bits: 12 not in {16,8}"},
             {{"--black-level", "100"}, "\"100\"" + expected},
             {{"--black-level=-1"}, "\"-1\"" + expected},
             {{"--black-level", "nan"}, "\"nan\"" + expected},
             {{"--black-level", "=1"}, "\"=1\"" + expected},
             {{"--black-level", "Left="}, "\"Left=\"" + expected},
             {{"--black-level", "1", "--black-level", "2"},
              "the rest of the channels: two black levels are stated: state one"},
             {{"--black-level", "Left=1", "--black-level", "Left=2"}, "channel Left (020000000501): two black levels"},
             {{"--black-level", "Nobody=1"}, "\"Nobody\" is no channel"},
             {{"--black-level", "Left=1"}, "channel Centre (020000000502) has no black level"},
             {{"--no-blend", "--alpha"}, "--no-blend excludes --alpha"},
             {{"--no-blend", "--black-level", "1"}, "--no-blend excludes --black-level"}}) {
        const ProgramRun run = exported(EXAMPLES + "spherical-dome/display.xml", options);
        EXPECT_EQ(run.exitCode, 2) << options.front();
        EXPECT_THAT(run.errors, HasSubstr(message));
    }
    EXPECT_FALSE(std::filesystem::exists(m_output));
}

}  // namespace
