#include "Configuration/detail/FileNames.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Veltrani::ConfigurationDetail::FolderPath;
using Veltrani::ConfigurationDetail::FileNames::wayBetween;

FolderPath folder(const std::string& path) {
    return FolderPath::ofFile(Veltrani::fromUtf8(path + "/display.xml"));
}

TEST(FileNames, TheWayBetweenFoldersLeadsFromOneToTheOther) {
    const TemporaryFolder temporary;
    const std::string dome = temporary.makeFolder("shows/dome");
    const std::string wall = temporary.makeFolder("shows/wall/new");
    EXPECT_EQ(wayBetween(folder(wall), folder(dome)), "../../dome/");
    EXPECT_EQ(wayBetween(folder(temporary.path()), folder(dome)), "shows/dome/");
    EXPECT_EQ(wayBetween(folder(dome), folder(temporary.path())), "../../");
    EXPECT_EQ(wayBetween(folder(dome), folder(dome + "/../dome")), "");
    EXPECT_EQ(wayBetween(folder("/usr"), folder(dome)), std::filesystem::canonical(dome).string() + "/")
        << "nothing but the root is in common";
    EXPECT_EQ(wayBetween(folder(dome), folder("")), "/");
}

TEST(FileNames, LinksAreFollowed) {
    const TemporaryFolder temporary;
    const std::string real = temporary.makeFolder("a/b/real");
    std::filesystem::create_symlink(real, temporary.file("link"));
    EXPECT_EQ(wayBetween(folder(temporary.file("link")), folder(temporary.path())), "../../../")
        << "the way up leads from where the folder is";
    EXPECT_EQ(wayBetween(folder(temporary.file("link")), folder(real)), "");
}

TEST(FileNames, AFolderThatIsNotThereIsNamed) {
    const TemporaryFolder temporary;
    try {
        static_cast<void>(wayBetween(folder(temporary.file("gone")), folder(temporary.path())));
        ADD_FAILURE() << "nothing was refused";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(Veltrani::toUtf8(fault.message),
                  temporary.file("gone") + ": the folder cannot be used: No such file or directory");
    }
}

}  // namespace
