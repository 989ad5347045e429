#pragma once

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include "support/TestPaths.h"

/// The commands of the README and of other pages and what these say that they print, for tests that run them.
namespace readme {

/// The text of a page, named from the project's folder.
inline std::string text(const std::string& page = "README.md") {
    std::ifstream in(sourceFolder() + "/" + page, std::ios::binary);
    if (!in) {
        throw std::runtime_error(page + " cannot be read");
    }
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

/// What stands in a text between two others.
inline std::string between(const std::string& text, const std::string& opening, const std::string& closing) {
    const auto start = text.find(opening);
    const auto begin = start + opening.size();
    const auto end = text.find(closing, begin);
    if (start == std::string::npos || end == std::string::npos) {
        throw std::runtime_error("the page has no " + opening + " ... " + closing);
    }
    return text.substr(begin, end - begin);
}

/// Replaces every occurrence; there must be one.
inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
    auto found = text.find(from);
    if (found == std::string::npos) {
        throw std::runtime_error("the page does not say " + from);
    }
    for (; found != std::string::npos; found = text.find(from, found + to.size())) {
        text.replace(found, from.size(), to);
    }
    return text;
}

/// A section that has commands in one block and their output in the next.
struct Section {
    std::string commands;
    std::string output;

    /// The section between the comments "NAME: begin" and "NAME: end", its programs and examples found from anywhere.
    static Section named(const std::string& name) {
        const std::string section = between(text(), "<!-- " + name + ": begin -->\n", "<!-- " + name + ": end -->");
        const std::string commands = between(section, "```sh\n", "```\n");
        const std::string output =
            between(section.substr(section.find(commands) + commands.size() + 4), "```\n", "```\n");
        std::string runnable = replaced(commands, "build/release/Apps/screenmanager/screenmanager", programFile());
        runnable = replaced(runnable, " examples/", " " + sourceFolder() + "/examples/");
        return {runnable, output};
    }
};

}  // namespace readme
