#include "ExportFiles/ExportFolder.h"

#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;
using Veltrani::ExportFiles::ExportFolder;

constexpr const char* MANIFEST_TEXT =
    R"({"schema":"screenmanager/export","views":[{"files":[{"name":"01.mesh"},{"name":"01.obj"}]}]})";

class ExportFolders : public testing::Test {
protected:
    static void fill(const ExportFolder& folder, const std::string& text) {
        std::ofstream(folder.file("manifest.json")) << MANIFEST_TEXT;
        std::ofstream(folder.file("01.mesh")) << text;
    }

    [[nodiscard]] std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }

    /// An export as it was made before.
    void makeExport(const std::string& text) const {
        ExportFolder folder(m_target, fs::exists(m_target));
        fill(folder, text);
        folder.commit();
    }

    void expectRefused(bool replaces, const std::wstring& what) const {
        const std::set<std::string> before = names();
        try {
            const ExportFolder folder(m_target, replaces);
            ADD_FAILURE() << "it may be replaced";
        } catch (const VeltraniException& fault) {
            EXPECT_THAT(fault.message, HasSubstr(what));
        }
        EXPECT_EQ(names(), before);
    }

    const TemporaryFolder m_folder;
    const std::string m_target = m_folder.file("player");
};

TEST_F(ExportFolders, ANameWithoutAPlaceIsRefusedWithTheRemedy) {
    const auto refusalOf = [](const std::string& path) -> std::wstring {
        try {
            const ExportFolder folder(path, true);
        } catch (const VeltraniException& fault) {
            return fault.message;
        }
        return L"";
    };
    EXPECT_EQ(refusalOf(""), L"\"\": is no name of a folder");
    EXPECT_THAT(refusalOf(m_folder.file("no/player")),
                HasSubstr(L"no/player: no folder can be made there: No such file or directory; make the folder that is "
                          L"to hold it first"));
    m_folder.write("file", "");
    EXPECT_THAT(refusalOf(m_folder.file("file/player")), testing::EndsWith(L"made there: Not a directory"));
}

TEST_F(ExportFolders, AppearWhole) {
    {
        ExportFolder folder(m_target, false);
        fill(folder, "new");
        EXPECT_FALSE(fs::exists(m_target));
        folder.commit();
        EXPECT_EQ(m_folder.read("player/01.mesh"), "new");
    }
    EXPECT_THAT(names(), ElementsAre("player"));
}

TEST_F(ExportFolders, AreNotThereUnlessCommitted) {
    {
        const ExportFolder folder(m_target, false);
        fill(folder, "new");
        EXPECT_EQ(names().size(), 1U);
    }
    EXPECT_THAT(names(), ElementsAre());
}

TEST_F(ExportFolders, AnEarlierExportIsReplacedAsAWholeWhereThatIsWanted) {
    makeExport("old");
    std::ofstream(m_target + "/01.obj") << "of the old export alone";
    expectRefused(false, L"or replace an earlier export with --force");
    {
        ExportFolder folder(m_target, true);
        fill(folder, "new");
        EXPECT_EQ(m_folder.read("player/01.mesh"), "old");
        folder.commit();
    }
    EXPECT_EQ(m_folder.read("player/01.mesh"), "new");
    EXPECT_FALSE(fs::exists(m_target + "/01.obj"));
    EXPECT_THAT(names(), ElementsAre("player"));
}

TEST_F(ExportFolders, AnEarlierExportStaysWithoutACommit) {
    makeExport("old");
    {
        const ExportFolder folder(m_target, true);
        fill(folder, "new");
    }
    EXPECT_EQ(m_folder.read("player/01.mesh"), "old");
    EXPECT_THAT(names(), ElementsAre("player"));
}

TEST_F(ExportFolders, AnEmptyFolderIsFilledWhereThatIsWanted) {
    fs::create_directory(m_target);
    expectRefused(false, L"exists");
    makeExport("new");
    EXPECT_EQ(m_folder.read("player/01.mesh"), "new");
}

TEST_F(ExportFolders, WhatIsNoExportIsNeverReplaced) {
    m_folder.write("player/display.xml", "<Display/>");
    expectRefused(true, L"is no earlier export");
    m_folder.write("player/manifest.json", "{\"schema\":\"screenmanager/check\",\"views\":[]}");
    expectRefused(true, L"is no earlier export");
    m_folder.write("player/manifest.json", "[[[[");
    expectRefused(true, L"is no earlier export");
    m_folder.write("player/manifest.json", MANIFEST_TEXT);
    expectRefused(true, L"holds display.xml, which the export in it does not name");
    EXPECT_EQ(m_folder.read("player/display.xml"), "<Display/>");
}

TEST_F(ExportFolders, WhatIsNoNameInAManifestNamesNoFile) {
    m_folder.write("player/manifest.json",
                   R"({"schema":"screenmanager/export","views":[{"files":[{"name":5},{},7]},3,{"files":4},{}]})");
    m_folder.write("player/01.mesh", "old");
    expectRefused(true, L"holds 01.mesh, which the export in it does not name");
    fs::remove(m_target + "/01.mesh");
    makeExport("new");
    EXPECT_EQ(m_folder.read("player/01.mesh"), "new");
}

TEST_F(ExportFolders, AFolderInAnExportIsNotOfTheExport) {
    makeExport("old");
    fs::create_directory(m_target + "/01.obj");
    expectRefused(true, L"holds 01.obj");
}

TEST_F(ExportFolders, WhatAppearsMeanwhileIsNotReplaced) {
    makeExport("old");
    ExportFolder folder(m_target, true);
    fill(folder, "new");
    m_folder.write("player/notes.txt", "mine");
    EXPECT_THROW(folder.commit(), VeltraniException);
    EXPECT_EQ(m_folder.read("player/notes.txt"), "mine");
    ExportFolder other(m_folder.file("other"), false);
    fill(other, "new");
    m_folder.write("other/notes.txt", "mine");
    EXPECT_THROW(other.commit(), VeltraniException);
    EXPECT_EQ(m_folder.read("other/notes.txt"), "mine");
}

TEST_F(ExportFolders, AFileIsNoFolder) {
    m_folder.write("player", "a file");
    expectRefused(true, L"is no folder");
    EXPECT_EQ(m_folder.read("player"), "a file");
}

TEST_F(ExportFolders, ALinkStaysOne) {
    makeExport("old");
    fs::create_directory_symlink(m_target, m_folder.file("link"));
    {
        ExportFolder folder(m_folder.file("link"), true);
        fill(folder, "new");
        folder.commit();
    }
    EXPECT_TRUE(fs::is_symlink(m_folder.file("link")));
    EXPECT_EQ(m_folder.read("player/01.mesh"), "new");
}

TEST_F(ExportFolders, WhatAKilledProcessLeftIsRemovedAndWhatIsBeingFilledIsNot) {
    m_folder.write(".player.export-abcdef/01.mesh", "half");
    m_folder.write(".player.export-longer-name/01.mesh", "of somebody else");
    m_folder.write(".player.export-locked/01.mesh", "being filled");
    const int lock = ::open(m_folder.file(".player.export-locked").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    makeExport("new");
    EXPECT_THAT(names(), UnorderedElementsAre("player", ".player.export-longer-name", ".player.export-locked"));
    ::close(lock);
}

TEST_F(ExportFolders, TwoForOnePlaceDoNotDisturbEachOther) {
    ExportFolder first(m_target, false);
    fill(first, "first");
    ExportFolder second(m_target, false);
    fill(second, "second");
    first.commit();
    EXPECT_THROW(second.commit(), VeltraniException);
    EXPECT_EQ(m_folder.read("player/01.mesh"), "first");
}

TEST_F(ExportFolders, ANameOfAnyLengthWillDo) {
    const std::string name(255, 'x');
    {
        ExportFolder folder(m_folder.file(name), false);
        fill(folder, "new");
        folder.commit();
    }
    EXPECT_EQ(m_folder.read(name + "/01.mesh"), "new");
}

TEST_F(ExportFolders, WithoutAPlaceToLieInTheyAreRefused) {
    EXPECT_THROW(ExportFolder(m_folder.file("gone/player"), false), VeltraniException);
    EXPECT_THROW(ExportFolder("", false), VeltraniException);
}

}  // namespace
