#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr double MOST_BYTES = 64;

/// What a process takes for each pixel of the picture that it exports.
class ExportMemory : public testing::Test {
protected:
    void SetUp() override {
        if (IS_SANITIZED) {
            GTEST_SKIP() << "sanitizers have memory of their own";
        }
        ASSERT_EQ(runScreenManager({"picture", m_source + "/display.xml", "--size", "400x300", "-q", "-o", m_content})
                      .exitCode,
                  0);
        fs::copy(m_source, m_folder.file("display"));
        fs::create_directories(m_output);
    }

    /// The largest memory of any process of a run, in bytes.
    [[nodiscard]] static double memoryOf(const std::vector<std::string>& arguments) {
        std::vector<std::string> all{"-c",
                                     "import resource, subprocess, sys\n"
                                     "code = subprocess.run(sys.argv[1:]).returncode\n"
                                     "print(1024 * resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)\n"
                                     "sys.exit(code)",
                                     programFile()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ProgramRun run = runProgram("/usr/bin/python3", all);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        return std::stod(run.output);
    }

    /// @param nodes whether there are as many of them as the picture has corners of pixels
    [[nodiscard]] double memoryAt(int width, int height, const std::vector<std::string>& options, bool nodes) const {
        const std::string text = readme::text("examples/lens-cylinder/display.xml");
        const auto sized = [](const char* side, int pixels) { return side + ("=\"" + std::to_string(pixels)) + '"'; };
        const std::string file =
            m_folder.write("display/display.xml",
                           readme::replaced(readme::replaced(text, sized("width", WIDTH), sized("width", width)),
                                            sized("height", HEIGHT), sized("height", height)));
        std::vector<std::string> arguments{"export",  file,        "--output", m_output, "--force",
                                           "--quiet", "--channel", "Left",     "--jobs", "1"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        if (nodes) {
            arguments.insert(arguments.end(),
                             {"--nodes", std::to_string(width + 1) + 'x' + std::to_string(height + 1)});
        }
        return memoryOf(arguments);
    }

    [[nodiscard]] double bytesPerPixel(const std::vector<std::string>& options, bool nodes = false) const {
        const double large = memoryAt(WIDTH, HEIGHT, options, nodes);
        const double small = memoryAt(WIDTH / PARTS, HEIGHT / PARTS, options, nodes);
        return (large - small) / (WIDTH * HEIGHT * (1 - 1.0 / (PARTS * PARTS)));
    }

    static constexpr int WIDTH = 1920;
    static constexpr int HEIGHT = 1200;
    static constexpr int PARTS = 10;
    const std::string m_source = sourceFolder() + "/examples/lens-cylinder";
    const TemporaryFolder m_folder;
    const std::string m_content = m_folder.file("content.png");
    const std::string m_output = m_folder.file("player");
};

TEST_F(ExportMemory, IsBoundedForAllThatIsWrittenTogether) {
    EXPECT_LE(bytesPerPixel({"--format", "mesh", "--format", "obj", "--format", "pfm", "--format", "pfm3d", "--format",
                             "png16", "--test-pictures", "--content", m_content, "--black-level", "0.1", "--alpha"}),
              MOST_BYTES);
}

TEST_F(ExportMemory, IsBoundedForAContentThatPixelsShow) {
    EXPECT_LE(bytesPerPixel({"--no-blend", "--format", "pfm", "--format", "pfm3d", "--format", "png16", "--content",
                             m_content, "--input", "fisheye"}),
              MOST_BYTES);
}

TEST_F(ExportMemory, IsBoundedForBlendsAndLiftsAlone) {
    EXPECT_LE(bytesPerPixel({"--black-level", "0.1", "--alpha"}), MOST_BYTES);
    EXPECT_LE(bytesPerPixel({"--blend-bits", "16"}), MOST_BYTES);
}

TEST_F(ExportMemory, IsBoundedForAsManyNodesAsPixels) {
    const std::vector<std::string> options{"--format", "mesh", "--format", "obj", "--input", "equirectangular"};
    EXPECT_LE(bytesPerPixel(options, true), MOST_BYTES);
}

}  // namespace
