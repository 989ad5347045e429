#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

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

// The consumers are built and run by a test of their own, so the programs in the pages are too.
TEST(Readme, ItsProgramIsTheOneThatIsBuiltAndRun) {
    EXPECT_EQ(programIn("README.md"), contents("tests/install/consumer/main.cpp"));
}

TEST(Readme, TheProgramWithReportsIsTheOneThatIsBuiltAndRun) {
    EXPECT_EQ(programIn("docs/reports-in-programs.md"), contents("tests/install/consumer/reports.cpp"));
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
