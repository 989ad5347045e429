#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

std::string contents(const std::string& path) {
    std::ifstream in(std::string(SM_SOURCE_DIR "/") + path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// The first piece of C++ in a page.
std::string programIn(const std::string& page) {
    const std::string text = contents(page);
    const std::string opening = "```cpp\n";
    const auto start = text.find(opening);
    if (start == std::string::npos) {
        return {};
    }
    const auto body = start + opening.size();
    return text.substr(body, text.find("```", body) - body);
}

/// The lines of a text without the blanks before them, so that a piece compares with a program that indents it.
std::string unindented(const std::string& text) {
    std::istringstream in(text);
    std::string lines = "\n";
    for (std::string line; std::getline(in, line);) {
        lines += line.substr(std::min(line.find_first_not_of(' '), line.size())) + '\n';
    }
    return lines;
}

/// What stands between the fences of C++ of a page, unindented.
std::vector<std::string> piecesOfCpp(const std::string& page) {
    const std::string text = unindented(contents(page));
    const std::string opening = "\n```cpp\n";
    std::vector<std::string> pieces;
    for (auto start = text.find(opening); start != std::string::npos; start = text.find(opening, start + 1)) {
        const auto body = start + opening.size();
        pieces.push_back("\n" + text.substr(body, text.find("```", body) - body));
    }
    return pieces;
}

/// The programs that are built against an installation, and the source with the table of what a projector is sent.
std::string builtSources() {
    std::string sources = unindented(contents("Platform/DeviceFramework2/PJLinkProjector.cpp"));
    for (const auto& entry : std::filesystem::directory_iterator(SM_SOURCE_DIR "/tests/install/consumer")) {
        if (entry.path().extension() == ".cpp") {
            sources += unindented(contents(std::filesystem::relative(entry.path(), SM_SOURCE_DIR).string()));
        }
    }
    return sources;
}

std::vector<std::string> pages() {
    std::vector<std::string> found{"README.md"};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SM_SOURCE_DIR "/docs")) {
        if (entry.path().extension() == ".md") {
            found.push_back(std::filesystem::relative(entry.path(), SM_SOURCE_DIR).string());
        }
    }
    return found;
}

// The consumers are built and run by a test of their own, so the programs in the pages are too.
TEST(Readme, ItsProgramIsTheOneThatIsBuiltAndRun) {
    EXPECT_EQ(programIn("README.md"), contents("tests/install/consumer/main.cpp"));
}

TEST(Readme, TheProgramWithReportsIsTheOneThatIsBuiltAndRun) {
    EXPECT_EQ(programIn("docs/reports-in-programs.md"), contents("tests/install/consumer/reports.cpp"));
}

TEST(Documents, ThePagesOfTheLibraryShowTheProgramsThatAreBuiltAndRun) {
    for (const auto& [page, program] :
         {std::pair{"docs/target-locators.md", "locator.cpp"}, std::pair{"docs/devices.md", "talks.cpp"},
          std::pair{"docs/devices.md", "devices.cpp"}, std::pair{"docs/channels.md", "channels.cpp"},
          std::pair{"docs/layout-maps.md", "maps.cpp"}, std::pair{"docs/writing-back.md", "writing_back.cpp"}}) {
        const std::string source = contents(std::string("tests/install/consumer/") + program);
        ASSERT_FALSE(source.empty()) << program;
        EXPECT_NE(contents(page).find("```cpp\n" + source + "```\n"), std::string::npos) << page << ", " << program;
    }
}

// A row of a table that no other program can write stands in the source that the page names.
TEST(Documents, EveryPieceOfCppInThemIsBuilt) {
    const std::string built = builtSources();
    std::size_t pieces = 0;
    for (const std::string& page : pages()) {
        for (const std::string& piece : piecesOfCpp(page)) {
            EXPECT_NE(built.find(piece), std::string::npos) << page << " shows what no program has:\n" << piece;
            ++pieces;
        }
    }
    EXPECT_GE(pieces, 10U);
}

TEST(Documents, EveryProgramThatTheyShowIsBuiltAndRun) {
    const std::string list = contents("tests/install/consumer/CMakeLists.txt");
    const std::string runs = contents("tests/install/RunConsumer.cmake");
    for (const auto& entry : std::filesystem::directory_iterator(SM_SOURCE_DIR "/tests/install/consumer")) {
        if (entry.path().extension() == ".cpp") {
            const std::string source = entry.path().stem().string();
            const std::string program = source == "main" ? "consumer" : source;
            EXPECT_TRUE(std::regex_search(list, std::regex("\\b" + program + "\\b"))) << program;
            EXPECT_NE(runs.find("/build/" + program + "\""), std::string::npos) << program;
        }
    }
}

TEST(Documents, EveryFileThatAPageNamesExists) {
    namespace fs = std::filesystem;
    static const std::regex LINK(R"re(\]\(([^)#: ]+)(#[^)]*)?\))re");
    int links = 0;
    for (const auto& entry : fs::recursive_directory_iterator(SM_SOURCE_DIR "/docs")) {
        if (entry.path().extension() != ".md") {
            continue;
        }
        const std::string page = contents(fs::relative(entry.path(), SM_SOURCE_DIR).string());
        for (std::sregex_iterator match(page.begin(), page.end(), LINK), end; match != end; ++match) {
            // A drawing is made with the documents, by a command that its page shows.
            const std::string name = (*match)[1].str();
            EXPECT_TRUE(fs::exists(entry.path().parent_path() / name) ||
                        page.find(" -o " + name + "\n") != std::string::npos)
                << entry.path() << ": " << name;
            ++links;
        }
    }
    EXPECT_GE(links, 20);
}

TEST(Readme, EveryFileThatItNamesExists) {
    const std::string readme = contents("README.md");
    static const std::regex LINK(R"re(\]\(([^)#]+)\)|bash (scripts/[a-z-]+))re");
    int links = 0;
    for (std::sregex_iterator match(readme.begin(), readme.end(), LINK), end; match != end; ++match) {
        const std::string file = (*match)[1].matched ? (*match)[1].str() : (*match)[2].str();
        EXPECT_TRUE(std::filesystem::exists(std::string(SM_SOURCE_DIR "/") + file)) << file;
        ++links;
    }
    EXPECT_GE(links, 4);
}

}  // namespace
