#include "DravixDiagnostics/DravixDiagnostics.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <iterator>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class DravixDiagnosticsTest : public testing::Test {
protected:
    void TearDown() override {
        DravixDiagnostics::setDataDirectory(L"");
        DravixDiagnostics::setVirtualLoad(false);
    }

    void collectIn(const std::string& name) {
        DravixDiagnostics::setDataDirectory(Veltrani::fromUtf8(folder.file(name)));
    }

    static void archive(const std::string& path) {
        DravixDiagnostics::archiveFileToDataSubDirectory(Veltrani::fromUtf8(path));
    }

    /// The message of the refusal, or "archived".
    static std::string refusal(const std::string& path) {
        try {
            archive(path);
        } catch (const VeltraniException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "archived";
    }

    [[nodiscard]] std::size_t entriesIn(const std::string& name) const {
        const std::filesystem::directory_iterator entries(folder.file(name));
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    TemporaryFolder folder;
};

TEST_F(DravixDiagnosticsTest, VirtualLoadIsOffAtFirstAndFollowsItsSwitch) {
    EXPECT_FALSE(DravixDiagnostics::doVirtualLoad());
    DravixDiagnostics::setVirtualLoad(true);
    EXPECT_TRUE(DravixDiagnostics::doVirtualLoad());
    DravixDiagnostics::setVirtualLoad(false);
    EXPECT_FALSE(DravixDiagnostics::doVirtualLoad());
}

TEST_F(DravixDiagnosticsTest, WithoutADataDirectoryNothingIsDone) {
    EXPECT_EQ(refusal(folder.file("missing.obj")), "archived") << "not even a missing file is a fault";
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(DravixDiagnosticsTest, AnEmptyDataDirectoryTurnsCollectingOffAgain) {
    collectIn("data");
    DravixDiagnostics::setDataDirectory(L"");
    archive(folder.write("dome.obj", "v 0 0 0\n"));
    EXPECT_FALSE(std::filesystem::exists(folder.file("data")));
}

TEST_F(DravixDiagnosticsTest, CopiesIntoTheScreensFolderAndMakesWhatIsMissing) {
    const std::string content("v 0 0 0\r\n\0\xff", 11);
    const std::string source = folder.write("in/dome.obj", content);
    collectIn("a/b/data");
    archive(source);
    EXPECT_EQ(folder.read("a/b/data/screens/dome.obj"), content);
    EXPECT_EQ(folder.read("in/dome.obj"), content);
    EXPECT_EQ(entriesIn("a/b/data/screens"), 1U) << "nothing is left beside the copy";
}

TEST_F(DravixDiagnosticsTest, AFileOfSeveralBlocksIsCopiedWhole) {
    std::string content(3'000'001, 'x');
    for (std::size_t i = 0; i < content.size(); i += 7) {
        content[i] = static_cast<char>(i);
    }
    collectIn("data");
    archive(folder.write("scan.pcd", content));
    EXPECT_EQ(folder.read("data/screens/scan.pcd"), content);
}

TEST_F(DravixDiagnosticsTest, AnEmptyFileIsCopied) {
    collectIn("data");
    archive(folder.write("empty.pcd", ""));
    EXPECT_EQ(folder.read("data/screens/empty.pcd"), "");
}

TEST_F(DravixDiagnosticsTest, ANewCopyReplacesTheEarlierOne) {
    collectIn("data");
    archive(folder.write("in/dome.obj", "a longer first content"));
    archive(folder.write("in/dome.obj", "second"));
    EXPECT_EQ(folder.read("data/screens/dome.obj"), "second");
}

TEST_F(DravixDiagnosticsTest, AFileArchivedOntoItselfStays) {
    collectIn("data");
    archive(folder.write("data/screens/dome.obj", "content"));
    EXPECT_EQ(folder.read("data/screens/dome.obj"), "content");
}

TEST_F(DravixDiagnosticsTest, AFileArchivedOntoALinkToItselfStays) {
    const std::string source = folder.write("dome.obj", "content");
    folder.makeFolder("data/screens");
    std::filesystem::create_symlink(source, folder.file("data/screens/dome.obj"));
    collectIn("data");
    archive(source);
    EXPECT_EQ(folder.read("dome.obj"), "content");
    EXPECT_EQ(folder.read("data/screens/dome.obj"), "content");
}

TEST_F(DravixDiagnosticsTest, NamesAreUtf8WhateverTheLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    collectIn("Daten \xe6\x98\xa0");
    archive(folder.write("B\xc3\xbchne 100%s.obj", "content"));
    EXPECT_EQ(folder.read("Daten \xe6\x98\xa0/screens/B\xc3\xbchne 100%s.obj"), "content");
}

TEST_F(DravixDiagnosticsTest, AMissingFileIsNamedWithItsTargetAndTheReason) {
    collectIn("data");
    const std::string source = folder.file("missing 100%s.obj");
    EXPECT_EQ(refusal(source), "Unable to archive file " + source + " to " +
                                   folder.file("data/screens/missing 100%s.obj") + ": " + source +
                                   ": No such file or directory");
}

TEST_F(DravixDiagnosticsTest, AnUnusableDataDirectoryIsAFault) {
    const std::string source = folder.write("dome.obj", "content");
    folder.write("data", "a file where the folder should be");
    collectIn("data");
    EXPECT_THAT(refusal(source), AllOf(StartsWith("Unable to archive file " + source),
                                       HasSubstr(folder.file("data/screens")), EndsWith("Not a directory")));
}

TEST_F(DravixDiagnosticsTest, ADataDirectoryThatIsNoTextIsAFault) {
    constexpr wchar_t SURROGATE = 0xd800;
    const std::string source = folder.write("dome.obj", "content");
    DravixDiagnostics::setDataDirectory(std::wstring(1, SURROGATE));
    EXPECT_THROW(archive(source), VeltraniException);
}

TEST_F(DravixDiagnosticsTest, AFolderOrANameWithoutAFileIsAFault) {
    collectIn("data");
    EXPECT_THAT(refusal(folder.makeFolder("in")), EndsWith("is a directory, not a file"));
    EXPECT_THAT(refusal(folder.path() + "/"), EndsWith("is a directory, not a file"));
    EXPECT_THAT(refusal(""), EndsWith("the file name is empty"));
    EXPECT_THAT(refusal("/" + std::string(5000, 'n')), HasSubstr("too long"));
    EXPECT_EQ(entriesIn("data/screens"), 0U);
}

TEST_F(DravixDiagnosticsTest, AnEarlierCopySurvivesAFailedOne) {
    collectIn("data");
    archive(folder.write("dome.obj", "content"));
    EXPECT_NE(refusal(folder.file("in/dome.obj")), "archived");
    EXPECT_EQ(folder.read("data/screens/dome.obj"), "content");
    EXPECT_EQ(entriesIn("data/screens"), 1U);
}

}  // namespace
