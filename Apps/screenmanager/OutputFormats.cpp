#include "OutputFormats.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace {

/// How names of files end that hold a format.
struct Ending {
    const char* ending = "";
    const char* format = "";
};

constexpr std::array<Ending, 15> ENDINGS{{{".csv", "csv"},
                                          {".json", "json"},
                                          {".ply", "ply"},
                                          {".map", "mesh"},
                                          {".mesh", "mesh"},
                                          {".data", "mesh"},
                                          {".txt", "mesh"},
                                          {".txt", "text"},
                                          {".obj", "obj"},
                                          {".pfm", "pfm"},
                                          {".png", "png"},
                                          {".svg", "svg"},
                                          {".pdf", "pdf"},
                                          {".html", "html"},
                                          {".xml", "xml"}}};

std::string endingOf(const std::string& file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return ending;
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// "a, b or c".
std::string listed(const std::vector<std::string>& words) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
    }
    return text;
}

/// The endings of the formats, each once.
std::string endingsOf(const std::vector<std::string>& formats) {
    std::vector<std::string> endings;
    for (const Ending& known : ENDINGS) {
        if (contains(formats, known.format)) {
            endings.emplace_back(known.ending);
        }
    }
    return listed(endings);
}

}  // namespace

std::string OutputFormats::list() const {
    return listed(names);
}

std::string OutputFormats::chosen(const std::string& named, const std::string& output, const char* option) const {
    if (!named.empty()) {
        if (!contains(names, named)) {
            OptionList::refuse("--format", named + " is not " + list());
        }
        return named;
    }
    const std::string ending = endingOf(output);
    for (const Ending& known : ENDINGS) {
        if (ending == known.ending && contains(names, known.format)) {
            return known.format;
        }
    }
    if (!ending.empty()) {
        OptionList::refuse(option, output + " is named like no format of this command, " + list() +
                                       ": end its name in " + endingsOf(names) +
                                       (names.size() > 1 ? ", or state one with --format" : ""));
    }
    return names.front();
}

Option addFormat(OptionList& line, std::string& format, const std::string& help) {
    return line.add("--format", format, help.c_str()).typeName("FORMAT");
}

Option addFormat(OptionList& line, std::string& format, const OutputFormats& formats, bool hasOutput) {
    return addFormat(line, format,
                     formats.list() + (hasOutput ? " (default: as FILE is named, else " : " (default: ") +
                         formats.names.front() + ")")
        .oneOf(formats.names);
}

std::vector<Veltrani::DisplayReport::SourceFile> sourcesFor(const std::string& format,
                                                            const std::string& configurationFile) {
    return format == "json" ? Veltrani::DisplayReport::ReportHead::sourcesOf(configurationFile)
                            : std::vector<Veltrani::DisplayReport::SourceFile>();
}
