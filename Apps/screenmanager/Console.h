#pragma once

#include <string>

/// The only way of a text to standard error, and of a single line to standard output.
///
/// What the program says holds names, ids, file names, values of files and answers of devices. Whatever in them steers
/// a terminal is spelled out here (see `Veltrani::onOneLine`), line feeds too: a line ends where the program ends it.
class Console {
public:
    Console() = delete;

    /// One line on standard error: "error: ...", "note: ...".
    static void say(const std::string& line);
    /// Lines on standard error, each with a line feed at its end: for texts whose foreign parts are on one line
    /// already.
    static void sayLines(const std::string& lines);
    /// One line on standard output.
    static void print(const std::string& line);
};
