#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

namespace {

using testing::HasSubstr;

const std::string WALL = sourceFolder() + "/examples/planar-wall/display.xml";

class ExportOptions : public testing::Test {
protected:
    [[nodiscard]] ProgramRun exported(const std::vector<std::string>& options) const {
        std::vector<std::string> arguments{"export",     WALL,         "--output", m_output, "--channel",
                                           "Upper left", "--no-blend", "--force",  "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runScreenManager(arguments);
    }

    void expectRefused(const std::vector<std::string>& options, const std::string& message) const {
        const ProgramRun run = exported(options);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(options);
        EXPECT_THAT(run.errors, HasSubstr(message)) << testing::PrintToString(options);
        EXPECT_FALSE(std::filesystem::exists(m_output));
    }

    void expectTaken(const std::vector<std::string>& options) const {
        std::filesystem::create_directories(m_output);
        const ProgramRun run = exported(options);
        EXPECT_EQ(run.exitCode, 0) << testing::PrintToString(options) << run.errors;
    }

    const TemporaryFolder m_folder;
    const std::string m_output = m_folder.file("player");
};

TEST_F(ExportOptions, ThatDoNotGoTogetherAreRefused) {
    expectRefused({"--aperture", "200"}, "--aperture: needs --input fisheye");
    expectRefused({"--centre", "90,0"}, "--centre: needs --input equirectangular");
    expectRefused({"--input", "layout", "--axis", "0,0,1"}, "--axis: needs --input frustum or fisheye or cube");
    expectRefused({"--input", "fisheye", "--axis", "0,0"}, "\"0,0\" is not X,Y,Z");
    expectRefused({"--input", "fisheye", "--axis", "0,0,0"}, "points nowhere");
    expectRefused({"--input", "fisheye", "--aperture", "361"}, "is not above 0 to 360");
    expectRefused({"--input", "equirectangular", "--wrap"}, "choose --format obj");
    expectRefused({"--input", "equirectangular", "--centre", "0,91"}, "is not from -90 to 90");
    expectRefused({"--eye", "0,0,nan"}, "is not X,Y,Z");
    expectRefused({"--near", "10", "--far", "5"}, "the near plane lies before the far plane");
    expectRefused({"--format", "png"}, "png");
    expectRefused({"--jobs", "0"}, "--jobs");
    expectRefused({"--nodes", "1x5"}, "is not auto or COLUMNSxROWS");
    EXPECT_EQ(runScreenManager({"export", WALL}).exitCode, 2) << "without an output";
}

// Matrices are of what an engine renders: a frustum for each channel, or the faces of a cube.
TEST_F(ExportOptions, OfMatricesAreForWhatAnEngineRenders) {
    const std::vector<std::vector<std::string>> ofMatrices{
        {"--convention", "direct3d"}, {"--world", "y-up"}, {"--handed", "left"}, {"--near", "0.5"}, {"--far", "20"}};
    for (std::vector<std::string> options : ofMatrices) {
        const std::string message = options[0] + ": needs --input frustum or cube: state it, or leave the option out";
        for (const char* input : {"fisheye", "equirectangular", "layout", "screen"}) {
            std::vector<std::string> all{"--input", input};
            all.insert(all.end(), options.begin(), options.end());
            expectRefused(all, message);
        }
    }
    for (std::vector<std::string> options : ofMatrices) {
        options.insert(options.end(), {"--nodes", "3x3"});
        expectTaken(options);
        options.insert(options.end(), {"--input", "cube"});
        expectTaken(options);
    }
}

TEST_F(ExportOptions, OfNodesAreForFormatsThatHaveThem) {
    const std::string ofNodes = ": needs --format mesh or obj: state it, or leave the option out";
    for (const char* format : {"pfm", "pfm3d", "png16"}) {
        expectRefused({"--format", format, "--nodes", "9x7"}, "--nodes" + ofNodes);
        expectRefused({"--format", format, "--nodes", "auto"}, "--nodes" + ofNodes);
        expectRefused({"--format", format, "--error", "1"}, "--error" + ofNodes);
        expectRefused({"--format", format, "--input", "cube", "--wrap"},
                      "--wrap: needs --format obj: state it, or leave the option out");
    }
    expectRefused({"--nodes", "9x7", "--error", "1"},
                  "--error: chooses the nodes, which --nodes states: leave one of the two out");
    expectTaken({"--format", "pfm", "--format", "obj", "--nodes", "9x7"});
    expectTaken({"--nodes", "auto", "--error", "1"});
    expectTaken({"--format", "obj", "--error", "1"});
    expectTaken({"--format", "obj", "--input", "equirectangular", "--wrap", "--nodes", "9x7"});
}

TEST_F(ExportOptions, OfNumbersEndAtTheirBounds) {
    const std::vector<std::string> frustum{"--input", "frustum", "--nodes", "3x3"};
    const std::vector<std::string> fisheye{"--input", "fisheye", "--nodes", "3x3"};
    const std::vector<std::string> chosen{"--nodes", "auto"};
    const auto with = [](std::vector<std::string> others, const char* name, const char* value) {
        others.insert(others.end(), {name, value});
        return others;
    };
    for (const auto& [others, name, value, bounds] :
         std::vector<std::tuple<std::vector<std::string>, const char*, const char*, const char*>>{
             {frustum, "--roll", "-360.001", "--roll: is not from -360 to 360"},
             {frustum, "--roll", "360.001", "--roll: is not from -360 to 360"},
             {frustum, "--margin", "-0.001", "--margin: is not from 0 to 100"},
             {frustum, "--margin", "100.001", "--margin: is not from 0 to 100"},
             {fisheye, "--aperture", "0", "--aperture: is not above 0 to 360"},
             {fisheye, "--aperture", "360.001", "--aperture: is not above 0 to 360"},
             {chosen, "--error", "0", "--error: is not above 0 to 1000000"},
             {chosen, "--error", "1000001", "--error: is not above 0 to 1000000"},
             {frustum, "--near", "0", "--near: is not above 0 to 1000000000000"},
             {frustum, "--far", "1000000000001", "--far: is not above 0 to 1000000000000"}}) {
        expectRefused(with(others, name, value), bounds);
    }
    expectTaken(with(frustum, "--roll", "-360"));
    expectTaken(with(frustum, "--roll", "360"));
    expectTaken(with(frustum, "--margin", "0"));
    expectTaken(with(frustum, "--margin", "100"));
    expectTaken(with(fisheye, "--aperture", "360"));
    expectTaken(with(chosen, "--error", "1000000"));
    expectTaken(with(frustum, "--far", "1000000000000"));
}

}  // namespace
