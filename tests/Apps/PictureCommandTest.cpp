#include "ProgramRun.h"
#include "support/PngImage.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string EXAMPLES = sourceFolder() + "/examples/";
const std::string DOME = EXAMPLES + "spherical-dome/display.xml";

std::string contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(PictureCommand, DrawsEveryExampleInTheColoursOfItsChannels) {
    const TemporaryFolder folder;
    for (const char* example : {"closed-cylinder", "cockpit", "collimated", "curved-wall", "cylinder", "dome",
                                "lens-cylinder", "mesh-rays", "planar-wall", "spherical-dome", "warped-wall"}) {
        const std::string file = folder.file("display.png");
        const ProgramRun run =
            runScreenManager({"picture", EXAMPLES + example + "/display.xml", "-o", file, "--size", "480x300"});
        EXPECT_EQ(run.exitCode, 0) << example << run.errors;
        const PngImage image = PngImage::read(folder.read("display.png"));
        ASSERT_EQ(image.width, 480U);
        ASSERT_EQ(image.height, 300U);
        // The outlines, a quarter darker than the colours of the list.
        EXPECT_GT(image.count({173, 119, 0}, 30), 40U) << example;
        EXPECT_GT(image.count({65, 135, 175}, 30), 40U) << example;
    }
}

TEST(PictureCommand, TheNameOfTheFileTellsTheFormat) {
    const TemporaryFolder folder;
    ASSERT_EQ(runScreenManager({"picture", DOME, "-o", folder.file("a.svg")}).exitCode, 0);
    EXPECT_THAT(folder.read("a.svg"), StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg "));
    EXPECT_THAT(folder.read("a.svg"), HasSubstr(">Centre</text>"));
    EXPECT_THAT(folder.read("a.svg"), HasSubstr(">2 Centre</text>")) << "on its picture";
    ASSERT_EQ(runScreenManager({"picture", DOME, "-o", folder.file("a.PDF")}).exitCode, 0);
    EXPECT_THAT(folder.read("a.PDF"), StartsWith("%PDF-1.5"));
    ASSERT_EQ(runScreenManager({"picture", DOME, "-o", folder.file("pdf")}).exitCode, 0);
    EXPECT_EQ(PngImage::read(folder.read("pdf")).width, 1600U) << "a name without an ending";
    ASSERT_EQ(runScreenManager({"picture", DOME, "-o", folder.file("a.svg"), "--format", "png", "--size", "300x200"})
                  .exitCode,
              0);
    EXPECT_EQ(PngImage::read(folder.read("a.svg")).width, 300U);
}

TEST(PictureCommand, EqualDisplaysGiveEqualFilesWhateverTheUserPrefers) {
    const TemporaryFolder folder;
    const std::string fonts =
        folder.write("fonts.conf",
                     "<fontconfig><alias binding='strong'><family>DejaVu Sans</family><prefer><family>DejaVu Sans Mono"
                     "</family></prefer></alias><dir>/usr/share/fonts</dir></fontconfig>");
    for (const char* format : {"png", "svg", "pdf"}) {
        const std::vector<std::string> arguments{"picture", DOME, "-q", "--size", "600x400", "--format", format};
        const ProgramRun usual = runScreenManager(arguments);
        ASSERT_EQ(usual.exitCode, 0) << usual.errors;
        const ProgramRun other = runScreenManager(arguments, {{"FONTCONFIG_FILE", fonts},
                                                              {"LANG", "sr_RS.UTF-8"},
                                                              {"LANGUAGE", "sr:ja"},
                                                              {"PANGO_LANGUAGE", "ja"},
                                                              {"HOME", folder.file("nowhere")}});
        EXPECT_TRUE(other.output == usual.output) << format;
        EXPECT_EQ(other.errors, "");
    }
}

TEST(PictureCommand, NamesMayBeOfAnyScriptAndLength) {
    const TemporaryFolder folder;
    std::string display = contents(DOME);
    const std::string name = "<Name>Left</Name>";
    ASSERT_NE(display.find(name), std::string::npos);
    std::string longName;
    for (int i = 0; i < 20000; ++i) {
        longName += "ग्वाल壁벽";
    }
    for (const std::string& other : {std::string("قبة 左の壁 왼쪽"), longName, std::string("a&#x9;b &#x202e;c")}) {
        std::string changed = display;
        changed.replace(changed.find(name), name.size(), "<Name>" + other + "</Name>");
        const std::string file = folder.write("display.xml", changed);
        for (const char* format : {"png", "svg", "pdf"}) {
            const ProgramRun run = runScreenManager({"picture", file, "-q", "--size", "600x400", "--format", format});
            EXPECT_EQ(run.exitCode, 0) << run.errors;
            EXPECT_EQ(run.errors, "") << "drawing libraries have nothing to say";
        }
    }
}

TEST(PictureCommand, WrongWishesAreRefused) {
    EXPECT_EQ(runScreenManager({"picture", DOME, "--view", "below"}).exitCode, 2);
    EXPECT_EQ(runScreenManager({"picture", DOME, "--size", "10x10"}).exitCode, 2);
    EXPECT_EQ(runScreenManager({"picture", DOME, "--format", "bmp"}).exitCode, 2);
}

TEST(PictureCommand, NothingToDrawIsAPictureThatSaysSo) {
    const TemporaryFolder folder;
    const std::string file = folder.write("display.xml", "<Display version='1'><Units native='m'/></Display>");
    const ProgramRun run = runScreenManager({"picture", file, "--format", "svg"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, HasSubstr("describes no screen"));
}

/// The axes of an example, as SVG.
std::string axesOf(const std::string& example, const std::string& channel) {
    std::vector<std::string> arguments{"picture", EXAMPLES + example + "/display.xml", "--quiet", "--axes", "--format",
                                       "svg"};
    if (!channel.empty()) {
        arguments.insert(arguments.end(), {"--channel", channel});
    }
    const ProgramRun run = runScreenManager(arguments);
    EXPECT_EQ(run.exitCode, 0) << example << run.errors;
    return run.output;
}

std::string text(const std::string& label) {
    return ">" + label + "</text>";
}

TEST(PictureCommand, DrawsTheAxesOfKindsThatAreAddressedByTheScreen) {
    for (const char* example : {"planar-wall", "curved-wall", "warped-wall"}) {
        const std::string drawing = axesOf(example, "");
        for (const char* label : {"+x", "+y", "+z", "s = 1", "t = 1", "u = 1", "v = 1"}) {
            EXPECT_THAT(drawing, HasSubstr(text(label))) << example;
        }
        EXPECT_THAT(drawing, Not(HasSubstr(">view of "))) << example;
    }
}

/// The labels of one channel, by the numbers of its example.
struct ChannelAxes {
    const char* example;
    const char* channel;
    std::vector<std::string> labels;
};

TEST(PictureCommand, DrawsTheAxesOfKindsWithRays) {
    const std::vector<ChannelAxes> displays{
        {"spherical-dome",
         "Left",
         {"view of Left", "z -55", "x 0", "y 0", "left -35", "right +35", "bottom -22", "top +30"}},
        {"collimated",
         "Right",
         {"view of Right", "mirror +x", "mirror +y", "mirror +z", "mirror radius 3", "z +40", "left -26", "top +18"}},
        {"lens-cylinder", "Centre", {"view of Centre", "z 0", "left -28", "right +28", "bottom -15", "top +15"}},
        {"lens-cylinder", "Right", {"view of Right", "z +50", "edges from the file of its lens"}},
        {"mesh-rays", "Left", {"view of Left", "z -26", "left -20", "right +20", "bottom -12", "top +12"}}};
    for (const ChannelAxes& display : displays) {
        const std::string drawing = axesOf(display.example, display.channel);
        for (const char* label : {"+x", "+y", "+z", "u = 1", "v = 1"}) {
            EXPECT_THAT(drawing, HasSubstr(text(label))) << display.example;
        }
        for (const std::string& label : display.labels) {
            EXPECT_THAT(drawing, HasSubstr(text(label))) << display.example;
        }
        EXPECT_THAT(drawing, Not(HasSubstr(text("s = 1")))) << display.example;
    }
    EXPECT_THAT(axesOf("lens-cylinder", "Right"), Not(HasSubstr(text("left -25")))) << "the file states the edges";
}

TEST(PictureCommand, DrawsTheAxesOfTheNamedChannelAlone) {
    const std::string drawing = axesOf("spherical-dome", "Top");
    EXPECT_THAT(drawing, HasSubstr(text("view of Top")));
    EXPECT_THAT(drawing, Not(HasSubstr(text("view of Left"))));
    EXPECT_EQ(runScreenManager({"picture", DOME, "--axes", "--channel", "Nobody"}).exitCode, 2);
    EXPECT_EQ(runScreenManager({"picture", DOME, "--channel", "Top"}).exitCode, 2) << "of what?";
    EXPECT_THAT(runScreenManager({"picture", DOME, "--format", "svg"}).output, Not(HasSubstr(text("+x"))));
}

// The picture that opens the README shows what the program draws. Compilers may round a pixel on an edge differently.
TEST(PictureCommand, ThePictureOfTheReadmeIsItsOwn) {
    EXPECT_THAT(contents(sourceFolder() + "/README.md"), HasSubstr("](docs/spherical-dome.png)"));
    const TemporaryFolder folder;
    ASSERT_EQ(runProgram("/bin/sh", {"-c", "cd " + sourceFolder() + " && " + programFile() +
                                               " picture examples/spherical-dome/display.xml -o '" +
                                               folder.file("dome.png") + "'"})
                  .exitCode,
              0);
    const PngImage drawn = PngImage::read(folder.read("dome.png"));
    const PngImage kept = PngImage::read(contents(sourceFolder() + "/docs/spherical-dome.png"));
    ASSERT_EQ(drawn.bytes.size(), kept.bytes.size());
    std::size_t different = 0;
    for (std::size_t i = 0; i < drawn.bytes.size(); ++i) {
        different += std::abs(drawn.bytes[i] - kept.bytes[i]) > 2 ? 1 : 0;
    }
    EXPECT_LT(different, drawn.bytes.size() / 1000);
}

}  // namespace
