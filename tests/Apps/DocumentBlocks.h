#pragma once

#include "ReadmeText.h"
#include "support/TextLines.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

/// The pages of the documents, and the blocks of configurations, commands and programs that they show.
namespace documents {

using Lines = std::vector<std::string>;

using ::linesOf;

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
    [[nodiscard]] bool isRun() const {
        return kind == "sh" && (text.starts_with("screenmanager ") || text.starts_with("awk "));
    }
    [[nodiscard]] bool hasCheck() const {
        return isRun() && ('\n' + text).find("\nscreenmanager check ") != std::string::npos;
    }
};

/// Whether a line is a fence, which is indented in a list.
inline bool isFence(const std::string& line) {
    return line.compare(std::min(line.find_first_not_of(' '), line.size()), 3, "```") == 0;
}

/// The file that the paragraph directly above a line, counted from 0, says that the block is written as.
inline std::string fileNamedAbove(const Lines& lines, std::size_t fence) {
    std::size_t end = fence;
    while (end > 0 && lines[end - 1].empty()) {
        --end;
    }
    std::size_t begin = end;
    while (begin > 0 && !lines[begin - 1].empty() && !isFence(lines[begin - 1])) {
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

inline std::vector<Block> blocksIn(const std::string& text) {
    const Lines lines = linesOf(text);
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!isFence(lines[i])) {
            continue;
        }
        const std::size_t indentation = lines[i].find('`');
        Block block{lines[i].substr(indentation + 3), "", fileNamedAbove(lines, i), i + 1};
        for (++i; i < lines.size() && !isFence(lines[i]); ++i) {
            block.text +=
                lines[i].substr(std::min({indentation, lines[i].find_first_not_of(' '), lines[i].size()})) + '\n';
        }
        block.lastLine = i + 1;
        blocks.push_back(block);
    }
    return blocks;
}

inline std::vector<Block> blocksOf(const std::string& page) {
    return blocksIn(readme::text(page));
}

/// Whether a block is what another one prints, which stands directly above it.
inline bool isOutputOf(const Block& commands, const Block& output) {
    return commands.kind == "sh" && output.kind.empty() && output.firstLine <= commands.lastLine + 2;
}

/// Whether a line is one of a configuration, a command, a program, a CMake file or of what `check` prints.
inline bool isCode(const std::string& line) {
    static const std::regex XML(R"re(^\s*</?[A-Za-z!?])re");
    static const std::regex COMMAND(R"re(^\s*(\$ \S|(\./|build/|scripts/|~/|\$HOME/|\w+=\S+\s+\w)|)re"
                                    R"re((sudo|screenmanager|cmake|ctest|bash|git|man|mkdir|cd|export)\s))re");
    static const std::regex CMAKE(R"re(^\s*(find_package|project|cmake_\w+|add_\w+|target_\w+|set)\()re");
    static const std::regex CPP(R"re(^\s*#include\b|[;{}]\s*(//.*)?$)re");
    static const std::regex FINDING(R"re(\[[a-z]+-[a-z-]+\]$|^\s*(Not judged:|channel \S+: \d))re");
    return std::regex_search(line, FINDING) || std::regex_search(line, XML) || std::regex_search(line, COMMAND) ||
           std::regex_search(line, CMAKE) || std::regex_search(line, CPP);
}

/// The lines, from 1, of a text that are code in blocks which are indented instead of fenced, so that no test runs
/// them.
inline std::vector<std::size_t> indentedCode(const std::string& text) {
    std::vector<std::size_t> found;
    bool isFenced = false;
    bool mayBegin = true;  // an indented line behind a paragraph continues that
    const Lines lines = linesOf(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        isFenced = isFenced != isFence(line);
        const bool isIndented = line.starts_with("    ") || line.starts_with("\t");
        if (!isFenced && isIndented && mayBegin && isCode(line)) {
            found.push_back(i + 1);
        }
        mayBegin = line.find_first_not_of(" \t") == std::string::npos || (mayBegin && isIndented);
    }
    return found;
}

/// The README and every page below docs/, named from the project's folder.
inline std::vector<std::string> pages() {
    std::vector<std::string> found{"README.md"};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceFolder() + "/docs")) {
        if (entry.path().extension() == ".md") {
            found.push_back(std::filesystem::relative(entry.path(), sourceFolder()).string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace documents
