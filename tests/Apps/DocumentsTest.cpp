#include "DocumentBlocks.h"
#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace {

using documents::Block;
using documents::Lines;
using testing::Contains;
using testing::Gt;

/// A file of the examples that takes the place of one that a page speaks of and does not show.
struct StandIn {
    const char* name;
    const char* example;
};
constexpr StandIn STAND_INS[] = {{"display.xml", "planar-wall/display.xml"},
                                 {"scans/measured.obj", "curved-wall/wall-measured.obj"},
                                 {"data/scans/model.pcd", "curved-wall/wall-scan.pcd"},
                                 {"warp/left.txt", "warped-wall/left.map"},
                                 {"lenses/left.yml", "lens-cylinder/lens.yml"}};

/// A page with its files in a folder of its own, as somebody has them who follows it.
class FollowedPage {
public:
    explicit FollowedPage(std::string page) : m_page(std::move(page)), m_blocks(documents::blocksOf(m_page)) {
        for (const auto& [name, example] : STAND_INS) {
            m_folder.write(name, readme::text(std::string("examples/") + example));
        }
        for (const Block& block : m_blocks) {
            if (!block.file.empty()) {
                m_folder.write(block.file, here(block.text));
            }
        }
    }

    /// Checks every display that it shows, unless its own commands do.
    void checkDisplays() const {
        for (const Block& block : m_blocks) {
            if (block.isDisplay() && !isCheckedByCommand(block.file)) {
                const std::string file = block.file.empty() ? "shown.xml" : block.file;
                m_folder.write(file, here(block.text));
                const ProgramRun run = inFolder("screenmanager check '" + file + "'\n");
                EXPECT_EQ(run.exitCode, 0) << at(block) << run.output;
                EXPECT_THAT(documents::linesOf(run.output), Contains("No faults.")) << at(block);
            }
        }
    }

    /// Runs the commands that it shows, in their order.
    void runCommands() const {
        for (auto block = m_blocks.begin(); block != m_blocks.end(); ++block) {
            if (!block->isRun()) {
                continue;
            }
            const auto next = std::next(block);
            const std::string shown =
                next != m_blocks.end() && documents::isOutputOf(*block, *next) ? next->text : std::string();
            const bool warns = showsWarnings(shown);
            const ProgramRun run = inFolder(block->text);
            EXPECT_EQ(run.exitCode, warns ? 1 : 0) << at(*block) << run.output;
            if (block->hasCheck() && !warns) {
                EXPECT_THAT(documents::linesOf(run.output), Contains("No faults.")) << at(*block);
            }
            if (!shown.empty()) {
                EXPECT_TRUE(isShownBy(shown, run.output)) << at(*next) << "the commands print\n" << run.output;
            }
        }
    }

private:
    [[nodiscard]] bool isCheckedByCommand(const std::string& file) const {
        return !file.empty() && m_page != "README.md" &&
               std::any_of(m_blocks.begin(), m_blocks.end(), [&](const Block& block) {
                   return block.isRun() &&
                          ('\n' + block.text).find("\nscreenmanager check " + file + '\n') != std::string::npos;
               });
    }

    [[nodiscard]] std::string at(const Block& block) const {
        return m_page + ":" + std::to_string(block.firstLine) + ": ";
    }

    /// Files in a folder of data of the reader's machine are found in that of the page.
    [[nodiscard]] std::string here(std::string text) const {
        static const std::string DATA = "\"/data/";
        return text.find(DATA) == std::string::npos ? text
                                                    : readme::replaced(text, DATA, "\"" + m_folder.path() + "/data/");
    }

    /// Standard error comes with the output, as on a terminal. Stills are small: what they show is tested elsewhere.
    /// Warnings end a check with 1, so that no page shows a display that has any; what is printed is the same.
    [[nodiscard]] ProgramRun inFolder(const std::string& commands) const {
        const std::string setUp = "exec 2>&1\ncd '" + m_folder.path() + "'\nscreenmanager() { '" + programFile() +
                                  "' \"$@\" $(case \"$1\" in picture) echo --size 300x200;; check) echo --strict;; "
                                  "esac); }\n";
        return runProgram("/bin/bash", {"-e", "-c", setUp + commands});
    }

    /// Whether a page shows what a display that is not meant looks like.
    static bool showsWarnings(const std::string& output) {
        const Lines lines = documents::linesOf(output);
        return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
            return line == "1 warning:" || line.ends_with(" warnings:");
        });
    }

    /// The lines that say what a table is are the same each time; pages need not show them.
    static bool isShownBy(const std::string& shown, const std::string& output) {
        const Lines pattern = trimmed(shown);
        Lines lines = trimmed(output);
        lines.erase(std::remove_if(lines.begin(), lines.end(),
                                   [&](const std::string& line) {
                                       return line.starts_with("# ") &&
                                              std::find(pattern.begin(), pattern.end(), line) == pattern.end();
                                   }),
                    lines.end());
        return matches(pattern.begin(), pattern.end(), lines.begin(), lines.end());
    }

    /// Whether lines are those of a pattern, in which "..." stands for any number of lines.
    static bool matches(Lines::const_iterator pattern, Lines::const_iterator patternEnd, Lines::const_iterator line,
                        Lines::const_iterator end) {
        if (pattern == patternEnd) {
            return line == end;
        }
        if (*pattern == "...") {
            while (!matches(std::next(pattern), patternEnd, line, end)) {
                if (line == end) {
                    return false;
                }
                ++line;
            }
            return true;
        }
        return line != end && *pattern == *line && matches(std::next(pattern), patternEnd, std::next(line), end);
    }

    /// The lines of a text without blanks at their ends.
    static Lines trimmed(const std::string& text) {
        Lines lines = documents::linesOf(text);
        for (std::string& line : lines) {
            line.erase(line.find_last_not_of(' ') + 1);
        }
        return lines;
    }

    std::string m_page;
    std::vector<Block> m_blocks;
    TemporaryFolder m_folder;
};

/// Each page by itself, so that the sanitizers have time for the longest.
class DocumentsTest : public testing::TestWithParam<std::string> {};

TEST_P(DocumentsTest, ItsDisplaysPassStrictlyAndItsCommandsPrintWhatItShows) {
    const FollowedPage page(GetParam());
    page.checkDisplays();
    if (GetParam() != "README.md") {  // its commands have tests of their own
        page.runCommands();
    }
}

INSTANTIATE_TEST_SUITE_P(OfEveryPage, DocumentsTest, testing::ValuesIn(documents::pages()), [](const auto& page) {
    std::string name = page.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
});

TEST(Documents, ShowManyDisplaysAndCommands) {
    std::size_t displays = 0;
    std::size_t runs = 0;
    for (const std::string& page : documents::pages()) {
        for (const Block& block : documents::blocksOf(page)) {
            displays += block.isDisplay() ? 1 : 0;
            runs += block.isRun() ? 1 : 0;
        }
    }
    EXPECT_THAT(displays, Gt(10U));
    EXPECT_THAT(runs, Gt(10U));
}

}  // namespace
