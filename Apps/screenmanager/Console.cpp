#include "Console.h"

#include "Common/QuotedText.h"

#include <iostream>
#include <sstream>

using Veltrani::onOneLine;

void Console::say(const std::string& line) {
    // In one piece: the lines of several programs at one terminal stay apart.
    std::cerr << onOneLine(line) + '\n';
}

void Console::error(const std::string& line) {
    say(ERROR + line);
}

void Console::sayLines(const std::string& lines) {
    std::istringstream text(lines);
    std::string shown;
    for (std::string line; std::getline(text, line);) {
        shown += onOneLine(line) + '\n';
    }
    std::cerr << shown;
}

void Console::errorLines(const std::string& lines) {
    sayLines(ERROR + lines);
}

void Console::print(const std::string& line) {
    std::cout << onOneLine(line) << '\n';
}

ExitCode Console::finishOutput() {
    if (std::cout.flush()) {
        return EXIT_ALL_RIGHT;
    }
    error("standard output cannot be written");
    return EXIT_OUTPUT;
}
