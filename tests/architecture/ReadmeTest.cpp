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

// The consumer is built and run by a test of its own, so the program in the README is too.
TEST(Readme, ItsProgramIsTheOneThatIsBuiltAndRun) {
    const std::string readme = contents("README.md");
    const std::string opening = "```cpp\n";
    const auto start = readme.find(opening);
    ASSERT_NE(start, std::string::npos);
    const auto body = start + opening.size();
    EXPECT_EQ(readme.substr(body, readme.find("```", body) - body), contents("tests/install/consumer/main.cpp"));
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
