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
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::Contains;
using testing::Gt;
using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) {
    std::istringstream in(text);
    Lines lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// What stands between two fences of a page.
struct Block {
    std::string kind;  ///< the word behind the first fence: xml, sh, ...; empty for none
    std::string text;
    std::string file;           ///< "Written as `wall.xml`" in the paragraph above names it; empty for none
    std::size_t firstLine = 0;  ///< of the first fence, from 1
    std::size_t lastLine = 0;   ///< of the last one

    /// Whether it is a whole display: the least file that can be read has no projectors, which `check` reports.
    [[nodiscard]] bool isDisplay() const {
        return kind == "xml" && text.find("<Display") != std::string::npos &&
               text.find("<Projector ") != std::string::npos;
    }
    [[nodiscard]] bool isRun() const { return kind == "sh" && text.starts_with("screenmanager "); }
    [[nodiscard]] bool hasCheck() const {
        return isRun() && ('\n' + text).find("\nscreenmanager check ") != std::string::npos;
    }
};

/// The file that the paragraph directly above a line, counted from 0, says that the block is written as.
std::string fileNamedAbove(const Lines& lines, std::size_t fence) {
    std::size_t end = fence;
    while (end > 0 && lines[end - 1].empty()) {
        --end;
    }
    std::size_t begin = end;
    while (begin > 0 && !lines[begin - 1].empty() && !lines[begin - 1].starts_with("```")) {
        --begin;
    }
    std::string paragraph;
    for (std::size_t i = begin; i < end; ++i) {
        paragraph += lines[i] + ' ';
    }
    static const std::regex NAME("ritten as `([^`/ ]+)`");
    std::smatch match;
    return std::regex_search(paragraph, match, NAME) ? match[1].str() : std::string();
}

std::vector<Block> blocksOf(const std::string& page) {
    const Lines lines = linesOf(readme::text(page));
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!lines[i].starts_with("```")) {
            continue;
        }
        Block block{lines[i].substr(3), "", fileNamedAbove(lines, i), i + 1};
        for (++i; i < lines.size() && !lines[i].starts_with("```"); ++i) {
            block.text += lines[i] + '\n';
        }
        block.lastLine = i + 1;
        blocks.push_back(block);
    }
    return blocks;
}

/// The README and every page below docs/, named from the project's folder.
std::vector<std::string> pages() {
    std::vector<std::string> found{"README.md"};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceFolder() + "/docs")) {
        if (entry.path().extension() == ".md") {
            found.push_back(std::filesystem::relative(entry.path(), sourceFolder()).string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

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
    explicit FollowedPage(std::string page) : m_page(std::move(page)), m_blocks(blocksOf(m_page)) {
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
                EXPECT_THAT(linesOf(run.output), Contains("No faults.")) << at(block);
            }
        }
    }

    /// Runs the commands that it shows, in their order.
    void runCommands() const {
        for (auto block = m_blocks.begin(); block != m_blocks.end(); ++block) {
            if (!block->isRun()) {
                continue;
            }
            const ProgramRun run = inFolder(block->text);
            EXPECT_EQ(run.exitCode, 0) << at(*block) << run.output;
            if (block->hasCheck()) {
                EXPECT_THAT(linesOf(run.output), Contains("No faults.")) << at(*block);
            }
            const auto next = std::next(block);
            if (next != m_blocks.end() && next->kind.empty() && next->firstLine <= block->lastLine + 2) {
                EXPECT_TRUE(isShownBy(next->text, run.output)) << at(*next) << "the commands print\n" << run.output;
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

    static bool isShownBy(const std::string& shown, const std::string& output) {
        const Lines pattern = trimmed(shown);
        const Lines lines = trimmed(output);
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
        Lines lines = linesOf(text);
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

INSTANTIATE_TEST_SUITE_P(OfEveryPage, DocumentsTest, testing::ValuesIn(pages()), [](const auto& page) {
    std::string name = page.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
});

TEST(Documents, ShowManyDisplaysAndCommands) {
    std::size_t displays = 0;
    std::size_t runs = 0;
    for (const std::string& page : pages()) {
        for (const Block& block : blocksOf(page)) {
            displays += block.isDisplay() ? 1 : 0;
            runs += block.isRun() ? 1 : 0;
        }
    }
    EXPECT_THAT(displays, Gt(10U));
    EXPECT_THAT(runs, Gt(10U));
}

}  // namespace
