#include "Layers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::string contents(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// Path in the repository and text of every source file that belongs to a layer.
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

TEST(IncludeDirection, AnUpwardIncludeIsFound) {
    EXPECT_THAT(
        layers::upwardIncludes("Common/Utf8.cpp", "#include \"Common/Utf8.h\"\n#include \"ScreenManager/Screen.h\"\n"),
        ElementsAre("Common/Utf8.cpp includes ScreenManager/Screen.h, which stands above it"));
    EXPECT_THAT(layers::upwardIncludes("Platform/Configuration/A.h", "  #  include \"KelvoScreen/FlatScreen.h\""),
                ElementsAre("Platform/Configuration/A.h includes KelvoScreen/FlatScreen.h, which stands above it"));
    EXPECT_THAT(layers::upwardIncludes("BackEnd/ScreenManager/Screen.cpp",
                                       "#include \"KelvoScreen/FlatScreen.h\"\n#include <map>\n"),
                IsEmpty());
}

TEST(IncludeDirection, EverySourceOfALayerIncludesDownwards) {
    const auto sources = layeredSources();
    ASSERT_GT(sources.size(), 40U);
    for (const auto& [path, text] : sources) {
        EXPECT_GE(layers::ofFile(path), 0) << path << " belongs to no layer";
        EXPECT_THAT(layers::upwardIncludes(path, text), IsEmpty());
    }
}

TEST(IncludeDirection, EverySourceIncludesItsOwnHeaderFirst) {
    const fs::path root = SM_SOURCE_DIR;
    int compared = 0;
    for (const auto& [path, text] : layeredSources()) {
        if (!path.ends_with(".cpp")) {
            continue;
        }
        const std::string stem = fs::path(path).stem().string() + ".h";
        bool hasHeader = false;
        for (const std::string& name : layers::quotedIncludes(text)) {
            hasHeader = hasHeader || fs::path(name).filename() == stem;
        }
        if (hasHeader) {
            EXPECT_EQ(fs::path(layers::quotedIncludes(text).front()).filename(), stem) << path;
            ++compared;
        }
    }
    EXPECT_GT(compared, 15);
}

TEST(IncludeDirection, PrivateDependenciesStayOutOfExportedHeaders) {
    for (const auto& [path, text] : layeredSources()) {
        const bool exported = (path.starts_with("include/") || path.starts_with("Platform/")) && path.ends_with(".h") &&
                              path.find("/detail/") == std::string::npos;
        if (!exported) {
            continue;
        }
        for (const char* dependency :
             {"<embree", "<libxml", "<openssl", "<utf8", "<CLI", "<nlohmann", "<pcl", "<Eigen"}) {
            EXPECT_EQ(text.find(std::string("#include ") + dependency), std::string::npos)
                << path << " exports " << dependency;
        }
        for (const std::string& name : layers::quotedIncludes(text)) {
            EXPECT_EQ(name.find("/detail/"), std::string::npos) << path << " includes " << name;
        }
    }
}

}  // namespace
