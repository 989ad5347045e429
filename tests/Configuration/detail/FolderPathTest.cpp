#include "Configuration/detail/FolderPath.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::ConfigurationDetail::FolderPath;

TEST(FolderPath, IsWhatStandsBeforeTheLastSlash) {
    EXPECT_EQ(FolderPath::ofFile(L"a/b/c.xml").text(), L"a/b");
    EXPECT_EQ(FolderPath::ofFile(L"/a/c.xml").text(), L"/a");
    EXPECT_EQ(FolderPath::ofFile(L"./c.xml").text(), L".");
    EXPECT_EQ(FolderPath::ofFile(L"a//c.xml").text(), L"a");
    EXPECT_EQ(FolderPath::ofFile(L"/c.xml").text(), L"/");
    EXPECT_EQ(FolderPath::ofFile(L"//c.xml").text(), L"/");
    EXPECT_EQ(FolderPath::ofFile(L"c.xml").text(), L"");
    EXPECT_EQ(FolderPath::ofFile(L"").text(), L"");
}

TEST(FolderPath, ResolvesRelativeNames) {
    EXPECT_EQ(FolderPath::ofFile(L"cfg/display.xml").resolve(L"meshes/dome.obj"), L"cfg/meshes/dome.obj");
    EXPECT_EQ(FolderPath::ofFile(L"/cfg/display.xml").resolve(L"../dome.obj"), L"/cfg/../dome.obj");
    EXPECT_EQ(FolderPath::ofFile(L"/display.xml").resolve(L"dome.obj"), L"/dome.obj");
    EXPECT_EQ(FolderPath::ofFile(L"k\u00e4se/display.xml").resolve(L"B\u00fchne.obj"), L"k\u00e4se/B\u00fchne.obj");
}

TEST(FolderPath, AbsoluteNamesStay) {
    EXPECT_EQ(FolderPath::ofFile(L"cfg/display.xml").resolve(L"/data/dome.obj"), L"/data/dome.obj");
}

TEST(FolderPath, AnEmptyNameIsTheFolderItself) {
    EXPECT_EQ(FolderPath::ofFile(L"cfg/display.xml").resolve(L""), L"cfg");
    EXPECT_EQ(FolderPath().resolve(L""), L"");
}

TEST(FolderPath, WithoutAFolderNamesStay) {
    EXPECT_EQ(FolderPath::ofFile(L"display.xml").resolve(L"meshes/dome.obj"), L"meshes/dome.obj");
    EXPECT_EQ(FolderPath().resolve(L"a"), L"a");
}

TEST(FolderPath, ARelativeNameIsResolvedToTheSameFile) {
    const FolderPath folder = FolderPath::ofFile(L"cfg/display.xml");
    EXPECT_EQ(folder.relative(L"cfg/lenses/a.yml"), L"lenses/a.yml");
    EXPECT_EQ(folder.relative(L"cfg//a.yml"), L"a.yml");
    EXPECT_EQ(folder.relative(L"cfg/"), L"");
    EXPECT_EQ(folder.relative(L"cfgs/a.yml"), L"cfgs/a.yml") << "another folder";
    EXPECT_EQ(folder.relative(L"/data/a.yml"), L"/data/a.yml");
    EXPECT_EQ(FolderPath::ofFile(L"/display.xml").relative(L"/a.yml"), L"a.yml");
    EXPECT_EQ(FolderPath().relative(L"cfg/a.yml"), L"cfg/a.yml");
    EXPECT_EQ(FolderPath().relative(L"/a.yml"), L"/a.yml");
}

}  // namespace
