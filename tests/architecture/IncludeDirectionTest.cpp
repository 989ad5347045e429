// Who includes whom, where names lie, and how large files are: held for every source in the repository.
#include "Layers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::ptrdiff_t LONGEST_SOURCE = 400;
constexpr std::ptrdiff_t LONGEST_HEADER = 300;

std::string contents(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// Path in the repository and text of every source file that belongs to a library.
std::vector<std::pair<std::string, std::string>> layeredSources() {
    const fs::path root = SM_SOURCE_DIR;
    std::vector<std::pair<std::string, std::string>> sources;
    for (const char* top : {"include", "Common", "Platform", "BackEnd", "Apps"}) {
        for (const auto& entry : fs::recursive_directory_iterator(root / top)) {
            const std::string extension = entry.path().extension().string();
            if (extension == ".h" || extension == ".cpp") {
                sources.emplace_back(fs::relative(entry.path(), root).generic_string(), contents(entry.path()));
            }
        }
    }
    return sources;
}

TEST(IncludeDirection, WhatIsNotAllowedIsFound) {
    using layers::faultsOf;
    EXPECT_THAT(faultsOf("Common/Utf8.cpp", "#include \"Common/Utf8.h\"\n#include \"ScreenManager/Screen.h\"\n"),
                ElementsAre("Common/Utf8.cpp includes ScreenManager/Screen.h, which Common may not use"));
    EXPECT_THAT(faultsOf("Platform/DeviceFramework2/A.h", "  #  include \"Configuration/IScreenConfig.h\""),
                ElementsAre("Platform/DeviceFramework2/A.h includes Configuration/IScreenConfig.h, which "
                            "DeviceFramework2 may not use"));
    EXPECT_THAT(faultsOf("Platform/KelvoControl/A.cpp", "#include \"KelvoScreen/detail/RayProbe.h\""),
                ElementsAre("Platform/KelvoControl/A.cpp includes KelvoScreen/detail/RayProbe.h, which is private"));
    EXPECT_THAT(
        faultsOf("include/ScreenManager/A.h", "#include \"ScreenManager/detail/PcdText.h\"\n#include <pcl/a.h>"),
        ElementsAre("include/ScreenManager/A.h includes ScreenManager/detail/PcdText.h, which is private",
                    "include/ScreenManager/A.h includes <pcl/a.h>, which is private"));
    EXPECT_THAT(faultsOf("BackEnd/DisplayReport/basics/A.cpp", "#include <embree3/rtcore.h>\n#include <png.h>"),
                ElementsAre("BackEnd/DisplayReport/basics/A.cpp includes <embree3/rtcore.h>, which "
                            "DisplayReport/basics may not use"));
    EXPECT_THAT(faultsOf("BackEnd/DisplayReport/still/A.cpp",
                         "#include \"DisplayReport/scene/B.h\"\n#include \"DisplayReport/coverage/C.h\"\n"),
                ElementsAre("BackEnd/DisplayReport/still/A.cpp includes DisplayReport/coverage/C.h, which "
                            "DisplayReport/still may not use"));
    EXPECT_THAT(faultsOf("BackEnd/ScreenManager/Screen.cpp",
                         "#include \"KelvoScreen/FlatScreen.h\"\n#include <map>\n#include <pcl/common/pca.h>\n"),
                IsEmpty());
}

TEST(IncludeDirection, TheTableItselfPointsDownwards) {
    std::set<std::string_view> lower;
    for (const layers::Library& library : layers::all()) {
        for (const std::string_view used : library.mayUse) {
            EXPECT_TRUE(lower.contains(used)) << library.name << " uses " << used;
            EXPECT_FALSE(library.name.starts_with(std::string(used) + '/'))
                << library.name << " uses the whole of " << used;
        }
        lower.insert(library.name);
        // A library of rooms may be named as a whole by those above it.
        lower.insert(library.name.substr(0, library.name.find('/')));
    }
}

TEST(IncludeDirection, EverySourceIncludesWhatTheTableAllows) {
    std::map<std::string_view, int> files;
    for (const auto& [path, text] : layeredSources()) {
        const layers::Library* const library = layers::ofFile(path);
        ASSERT_NE(library, nullptr) << path << " belongs to no library";
        ++files[library->name];
        EXPECT_THAT(layers::faultsOf(path, text), IsEmpty());
    }
    EXPECT_EQ(files.size(), layers::all().size()) << "a library without sources";
}

// What the table allows and nobody uses would hide the first wrong use.
TEST(IncludeDirection, TheTableAllowsNothingThatIsNotUsed) {
    std::map<std::string_view, std::set<std::string>> used;
    for (const auto& [path, text] : layeredSources()) {
        for (const auto& names : {layers::quotedIncludes(text), layers::systemIncludes(text)}) {
            for (const std::string& name : names) {
                used[layers::ofFile(path)->name].insert(name.substr(0, name.find('/')));
            }
        }
    }
    for (const layers::Library& library : layers::all()) {
        for (const auto& names : {library.packages, library.exports}) {
            for (const std::string_view package : names) {
                EXPECT_TRUE(used[library.name].contains(std::string(package))) << library.name << ": " << package;
            }
        }
    }
}

TEST(IncludeDirection, EverySourceIncludesItsOwnHeaderFirst) {
    const auto sources = layeredSources();
    std::set<std::string> headers;
    for (const auto& [path, text] : sources) {
        headers.insert(fs::path(path).filename().string());
    }
    for (const auto& [path, text] : sources) {
        const std::string header = fs::path(path).stem().string() + ".h";
        if (path.ends_with(".cpp") && headers.contains(header)) {
            const std::vector<std::string> names = layers::quotedIncludes(text);
            ASSERT_FALSE(names.empty()) << path;
            EXPECT_EQ(fs::path(names.front()).filename(), header) << path;
        }
    }
}

// One spelling for all libraries: what is private can be recognised wherever it is used.
TEST(Namespaces, WhatIsPrivateLiesInTheOneOfItsLibrary) {
    static const std::regex DEFINITION(R"re(^(class|struct|enum class) \w+[^;]*\{)re");
    int definitions = 0;
    for (const auto& [path, text] : layeredSources()) {
        if (path.find("/detail/") == std::string::npos || !path.ends_with(".h")) {
            continue;
        }
        const std::string expected = "namespace Veltrani::" + std::string(layers::ofFile(path)->name) + "Detail";
        std::string current;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("namespace ") || line.starts_with("}  // namespace")) {
                current = line.starts_with('}') ? "" : line;
            } else if (std::regex_search(line, DEFINITION)) {
                EXPECT_TRUE(current.starts_with(expected)) << path << ": " << line << " lies in \"" << current << '"';
                ++definitions;
            }
        }
    }
    EXPECT_GT(definitions, 100);
}

TEST(Sizes, NoFileIsAHall) {
    for (const auto& [path, text] : layeredSources()) {
        const std::ptrdiff_t lines = std::count(text.begin(), text.end(), '\n');
        EXPECT_LE(lines, path.ends_with(".h") ? LONGEST_HEADER : LONGEST_SOURCE) << path;
    }
}

}  // namespace
