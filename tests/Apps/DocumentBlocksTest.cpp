// Whatever a page shows is run by a test: what no test would run is found here.
#include "DocumentBlocks.h"
#include "ProgramRun.h"
#include "support/TestPaths.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace {

using documents::Block;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A block that a test of its own runs, or compares with what it runs.
struct RunElsewhere {
    const char* page;
    const char* firstLine;
    const char* test;
};
constexpr RunElsewhere ELSEWHERE[] = {
    {"README.md", "bash scripts/first-light", "Readme.EveryFileThatItNamesExists"},
    {"README.md", "screenmanager check FILE", "DocumentBlocks.TheListOfCommandsIsThatOfTheProgram"},
    {"README.md", "# without the lines that begin", "Readme.ItsMapsOfEveryKindOfDisplayPrintWhatItSays"},
    {"README.md", "u,v,x,y,z,mapped", "Readme.ItsMapsOfEveryKindOfDisplayPrintWhatItSays"},
    {"README.md", "program=build/release/Apps", "Readme.ItsFitPrintsWhatItSays"},
    {"README.md", "result       good", "Readme.ItsFitPrintsWhatItSays"},
    {"README.md", "# the summary of every channel", "Readme.ItsExportsPrintWhatItSays"},
    {"README.md", "channel Left (020000000501)", "Readme.ItsExportsPrintWhatItSays"},
    {"README.md", "simulator=", "Readme.ItsCommandsForTwoProjectorsPrintWhatItSays"},
    {"README.md", "added 020000000001", "Readme.ItsCommandsForTwoProjectorsPrintWhatItSays"},
    {"README.md", "cmake --preset release", "install.pages"},
    {"README.md", "import matplotlib", "python.examples"},
    {"docs/python.md", "import matplotlib", "python.examples"},
    {"docs/python.md", "PYTHONPATH=", "python.examples"},
    {"docs/configuration.md", "<Display version=\"1\">", "ConfigurationDocument.ItsExamplesCanBeRead"},
    {"docs/configuration.md", "<locatingRules", "ConfigurationDocument.ItsRulesForAnEditorNameTheRootOfAConfiguration"},
    {"docs/devices.md", "<Device ", "DevicesDocument.ItsSnippetsAreRead"},
    {"docs/devices.md", "<Wrapper>", "DevicesDocument.ItsSnippetsAreRead"},
    {"docs/devices.md", "build/release/tests/support/pjlink_simulator", "DocumentBlocks.TheSimulatorOfProjectorsRuns"},
    {"docs/displays/axes.md", "            from above", "no code, a drawing"},
    {"docs/displays/axes.md", "cmake --build build/release --target documents", "install.pages"},
    {"docs/displays/collimated.md", "  from the right", "no code, a drawing"},
    {"docs/export-formats.md", "2                      rectangular", "WarpFile.AMeshHasItsNodesFromEdgeToEdge"},
    {"docs/export-formats.md", "v x y 0", "ObjWarp.VtkFindsThePlaceOfEachCornerOnTheLayout"},
    {"docs/export-formats.md", "player/", "ExportCommand.WritesAFolderThatItsManifestDescribes"},
    {"docs/first-display.md", "bash scripts/setup build", "install.pages"},
    {"docs/first-display.md", "cmake --install build/release --prefix", "install.pages"},
    {"docs/first-display.md", "mkdir my-display", "install.pages"},
    {"docs/first-display.md", "cmake_minimum_required", "install.pages"},
    {"docs/first-display.md", "cmake -S . -B build", "install.pages"},
    {"docs/reports-in-programs.md", "find_package", "install.pages"},
    {"docs/reports-in-programs.md", "336 targets", "install.consumer"},
    {"docs/writing-back.md", "<?xml version", "install.consumer"},
};

bool isRunElsewhere(const std::string& page, const Block& block) {
    return std::any_of(std::begin(ELSEWHERE), std::end(ELSEWHERE), [&](const RunElsewhere& other) {
        return page == other.page && block.text.starts_with(other.firstLine);
    });
}

/// Whether `DocumentsTest` runs a block, writes it as a file, or compares it with what the block above prints. Pieces
/// of C++ are held by `Documents.EveryPieceOfCppInThemIsBuilt`.
bool isRunWithItsPage(const std::string& page, const std::vector<Block>& blocks, std::size_t index) {
    const Block& block = blocks[index];
    if (block.kind == "cpp" || block.isDisplay() || (block.kind != "sh" && !block.file.empty())) {
        return true;
    }
    if (page == "README.md") {
        return false;
    }
    return block.isRun() || (index > 0 && blocks[index - 1].isRun() && documents::isOutputOf(blocks[index - 1], block));
}

TEST(DocumentBlocks, EveryBlockOfThePagesIsRunByATest) {
    for (const std::string& page : documents::pages()) {
        const std::vector<Block> blocks = documents::blocksOf(page);
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            EXPECT_TRUE(isRunWithItsPage(page, blocks, i) || isRunElsewhere(page, blocks[i]))
                << page << ':' << blocks[i].firstLine << ": no test runs\n"
                << blocks[i].text;
        }
    }
}

TEST(DocumentBlocks, EveryBlockThatIsRunElsewhereIsStillThere) {
    for (const RunElsewhere& other : ELSEWHERE) {
        const std::vector<Block> blocks = documents::blocksOf(other.page);
        EXPECT_TRUE(std::any_of(blocks.begin(), blocks.end(),
                                [&](const Block& block) { return block.text.starts_with(other.firstLine); }))
            << other.page << " has no block " << other.firstLine;
    }
}

TEST(DocumentBlocks, NoConfigurationCommandOrProgramIsIndentedInsteadOfFenced) {
    for (const std::string& page : documents::pages()) {
        for (const std::size_t line : documents::indentedCode(readme::text(page))) {
            ADD_FAILURE() << page << ':' << line << ": put this block between fences, with its language";
        }
    }
}

TEST(DocumentBlocks, IndentedCodeIsNoticedOfEveryKind) {
    for (const char* code :
         {"<Position x=\"0\" y=\"0\" z=\"2.5\"/>", "</Display>", "<!-- a note -->", "screenmanager check wall.xml",
          "sudo cmake --install build/release", "$ ls", "build/release/program --port 1", "LC_ALL=C screenmanager",
          "#include <string>", "find_package(ScreenManager)", "int main() {", "return 0;", "}  // namespace"}) {
        EXPECT_THAT(documents::indentedCode(std::string("Text:\n\n    ") + code + "\n"), ElementsAre(3)) << code;
        EXPECT_THAT(documents::indentedCode(std::string("Text:\n\n    words\n    ") + code + "\n"), ElementsAre(4))
            << code;
        EXPECT_THAT(documents::indentedCode(std::string("```\n    ") + code + "\n```\n"), IsEmpty()) << code;
    }
}

TEST(DocumentBlocks, AFencedBlockOfAListIsOneToo) {
    const auto blocks = documents::blocksIn("1. Check it:\n\n   ```sh\n   screenmanager check a.xml\n   ```\n");
    ASSERT_EQ(blocks.size(), 1U);
    EXPECT_EQ(blocks[0].kind, "sh");
    EXPECT_EQ(blocks[0].text, "screenmanager check a.xml\n");
    EXPECT_THAT(documents::indentedCode("- so:\n\n   ```cpp\n    int main() {\n   ```\n"), IsEmpty());
}

TEST(DocumentBlocks, FormulasAndListsMayBeIndented) {
    for (const char* text : {"left   = -atan((0.5 - H) / T)", "x y u v i              nx * ny nodes, x fastest",
                             "EyePoint = eye in the world - middle of the mirror in the world"}) {
        EXPECT_THAT(documents::indentedCode(std::string("Text:\n\n    ") + text + "\n"), IsEmpty()) << text;
    }
    EXPECT_THAT(documents::indentedCode("- a point\n  that goes on\n    with this;\n"), IsEmpty());
}

TEST(DocumentBlocks, TheListOfCommandsIsThatOfTheProgram) {
    const std::string help = runScreenManager({"--help"}).output;
    const std::vector<Block> blocks = documents::blocksOf("README.md");
    const auto list = std::find_if(blocks.begin(), blocks.end(), [](const Block& block) { return block.isRun(); });
    ASSERT_NE(list, blocks.end());
    const documents::Lines lines = documents::linesOf(list->text);
    EXPECT_GE(lines.size(), 10U);
    static const std::regex OPTION(" (--?[a-z]+)");
    for (const std::string& line : lines) {
        const std::string command = readme::between(line + ' ', "screenmanager ", " ");
        EXPECT_THAT(help, HasSubstr("\n  " + command + " ")) << line;
        const ProgramRun run = runScreenManager({command, "--help"});
        EXPECT_EQ(run.exitCode, 0) << line;
        for (std::sregex_iterator option(line.begin(), line.end(), OPTION), end; option != end; ++option) {
            EXPECT_THAT(run.output, HasSubstr((*option)[1].str())) << line;
        }
    }
}

TEST(DocumentBlocks, TheSimulatorOfProjectorsRuns) {
    std::string command = readme::between(readme::text("docs/devices.md"), "```sh\n", "```");
    command =
        readme::replaced(command, "build/release/tests/support/pjlink_simulator/pjlink_simulator", simulatorFile());
    const std::string freePort = std::to_string(PjlinkSimulator().port());
    const ProgramRun run = runProgram("/bin/bash", {"-e", "-c", readme::replaced(command, "14351", freePort)});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("PROJECTOR " + freePort));
}

}  // namespace
