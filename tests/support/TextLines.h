#pragma once

#include <sstream>
#include <string>
#include <vector>

/// The lines of a text, without what ends them.
inline std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}
