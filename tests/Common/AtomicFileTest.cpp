#include "Common/AtomicFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Veltrani::AtomicFile;

std::ptrdiff_t entries(const TemporaryFolder& folder) {
    return std::distance(std::filesystem::directory_iterator(folder.path()), std::filesystem::directory_iterator());
}

std::string refusal(const std::string& path) {
    try {
        AtomicFile file(path);
        file.write("x");
        file.commit();
    } catch (const VeltraniException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "written";
}

TEST(AtomicFile, WritesANewFile) {
    const TemporaryFolder folder;
    AtomicFile file(folder.file("new"));
    file.write("first ");
    file.write("second");
    file.commit();
    EXPECT_EQ(folder.read("new"), "first second");
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, TheOldFileStaysUntilTheCommit) {
    const TemporaryFolder folder;
    folder.write("file", "old");
    AtomicFile file(folder.file("file"));
    file.write("new");
    EXPECT_EQ(folder.read("file"), "old");
    file.commit();
    EXPECT_EQ(folder.read("file"), "new");
}

TEST(AtomicFile, WithoutACommitNothingIsLeftBehind) {
    const TemporaryFolder folder;
    folder.write("file", "old");
    {
        AtomicFile file(folder.file("file"));
        file.write("new");
    }
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, KeepsThePermissionsOfTheReplacedFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    AtomicFile file(path);
    file.commit();
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & ALLPERMS, 0640U);
}

TEST(AtomicFile, ASymbolicLinkStaysOne) {
    const TemporaryFolder folder;
    folder.write("real", "old");
    ASSERT_EQ(::symlink("real", folder.file("link").c_str()), 0);
    AtomicFile file(folder.file("link"));
    file.write("new");
    file.commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_EQ(folder.read("real"), "new");
}

TEST(AtomicFile, RefusalsNameTheFileAndTheReason) {
    const TemporaryFolder folder;
    folder.write("plain", "");
    EXPECT_EQ(refusal(folder.file("missing/file")),
              "Unable to write " + folder.file("missing/file") + ": No such file or directory");
    EXPECT_EQ(refusal(folder.file("plain/file")), "Unable to write " + folder.file("plain/file") + ": Not a directory");
    EXPECT_EQ(refusal(folder.path()), "Unable to write " + folder.path() + ": it exists and is not a regular file");
    EXPECT_EQ(refusal("/dev/null"), "Unable to write /dev/null: it exists and is not a regular file");
    EXPECT_THAT(refusal(""), StartsWith("Unable to write "));
    EXPECT_THAT(refusal("/" + std::string(5000, 'n')), HasSubstr("too long"));
}

TEST(AtomicFile, ANameAsLongAsNamesCanBeIsWritten) {
    const TemporaryFolder folder;
    EXPECT_EQ(refusal(folder.file(std::string(255, 'n'))), "written");
}

TEST(AtomicFile, ARelativeNameIsWrittenInTheCurrentFolder) {
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(refusal("relative"), "written");
    std::filesystem::current_path(before);
    EXPECT_EQ(folder.read("relative"), "x");
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, ALinkToNothingYetIsFollowed) {
    const TemporaryFolder folder;
    ASSERT_EQ(::symlink("later", folder.file("link").c_str()), 0);
    EXPECT_EQ(refusal(folder.file("link")), "written");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_EQ(folder.read("later"), "x");
}

TEST(AtomicFile, ALinkToItselfIsAFault) {
    const TemporaryFolder folder;
    ASSERT_EQ(::symlink("link", folder.file("link").c_str()), 0);
    EXPECT_EQ(refusal(folder.file("link")),
              "Unable to write " + folder.file("link") + ": Too many levels of symbolic links");
}

TEST(AtomicFile, ANewFileIsAsTheProcessMakesItsOthers) {
    const TemporaryFolder folder;
    const mode_t before = ::umask(027);
    EXPECT_EQ(refusal(folder.file("new")), "written");
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat(folder.file("new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & ALLPERMS, 0640U);
}

/// Ends the process: 0 when writing failed as it should. A limit on the size of files stands for the full disk.
[[noreturn]] void writeWithoutRoom(const std::string& path) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000, 1000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    try {
        AtomicFile file(path);
        file.write(std::string(5000, 'x'));
        file.commit();
    } catch (const VeltraniException& fault) {
        ::_exit(fault.message.find(L"File too large") == std::wstring::npos ? 2 : 0);
    }
    ::_exit(1);
}

TEST(AtomicFile, AFullDiskLeavesTheOldFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    EXPECT_EXIT(writeWithoutRoom(path), testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_EQ(entries(folder), 1);
}

/// Ends the process: 0 when writing failed as it should. Nothing is protected from a privileged process, so it first
/// becomes a common one.
[[noreturn]] void writeUnprivileged(const std::string& path) {
    constexpr uid_t NOBODY = 65534;
    if (::geteuid() == 0 && ::setuid(NOBODY) != 0) {
        ::_exit(3);
    }
    ::_exit(refusal(path).find("Permission denied") == std::string::npos ? 2 : 0);
}

TEST(AtomicFile, AWriteProtectedFileIsNotReplaced) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    EXPECT_EXIT(writeUnprivileged(path), testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, AFolderThatCannotBeWrittenIsAFault) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0555), 0);
    EXPECT_EXIT(writeUnprivileged(path), testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("file"), "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
}

}  // namespace
