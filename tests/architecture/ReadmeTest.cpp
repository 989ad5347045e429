#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <utility>

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

TEST(Documents, ThePagesOfTheLibraryShowTheProgramsThatAreBuiltAndRun) {
    for (const auto& [page, program] :
         {std::pair{"docs/target-locators.md", "locator.cpp"}, std::pair{"docs/devices.md", "talks.cpp"}}) {
        const std::string source = contents(std::string("tests/install/consumer/") + program);
        ASSERT_FALSE(source.empty()) << program;
        EXPECT_NE(contents(page).find("```cpp\n" + source + "```\n"), std::string::npos) << page << ", " << program;
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
            EXPECT_TRUE(fs::exists(entry.path().parent_path() / (*match)[1].str()))
                << entry.path() << ": " << (*match)[1];
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
