#include "Common/AtomicFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "SystemLock.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <deque>
#include <filesystem>
#include <functional>
#include <utility>

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

TEST(AtomicFile, ANameThatIsEmptyOrEndsEarlyIsAFault) {
    const TemporaryFolder folder;
    const std::string reason = "the file name is empty or contains a zero character";
    EXPECT_THAT(refusal(""), HasSubstr(reason));
    EXPECT_THAT(refusal(folder.file("a") + std::string("\0b", 2)), HasSubstr(reason));
    EXPECT_EQ(entries(folder), 0);
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

/// The names in a folder that temporary files have.
std::vector<std::string> temporaryFiles(const TemporaryFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        if (entry.path().filename().string().starts_with(".save-")) {
            names.push_back(entry.path().filename().string());
        }
    }
    return names;
}

/// Runs something in a process of its own that ends without cleaning up; what that returns.
int inOwnProcess(const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(work());
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Leaves a temporary file for the path, as a killed process does; its name.
std::string leaveBehind(const TemporaryFolder& folder, const std::string& name) {
    const std::vector<std::string> before = temporaryFiles(folder);
    const int code = inOwnProcess([&]() -> int {
        AtomicFile file(folder.file(name));
        file.write("half");
        ::_exit(0);  // without the end of its scope
    });
    EXPECT_EQ(code, 0);
    for (const std::string& file : temporaryFiles(folder)) {
        if (std::find(before.begin(), before.end(), file) == before.end()) {
            return file;
        }
    }
    ADD_FAILURE() << "nothing was left behind";
    return "";
}

TEST(AtomicFile, WhatAKilledWriterLeftBehindIsRemovedByTheNextOne) {
    const TemporaryFolder folder;
    folder.write("file", "old");
    leaveBehind(folder, "file");
    leaveBehind(folder, "other");
    EXPECT_THAT(temporaryFiles(folder), testing::SizeIs(2));
    EXPECT_EQ(refusal(folder.file("file")), "written");
    const std::string ofAnother = leaveBehind(folder, "another");
    EXPECT_EQ(refusal(folder.file("other")), "written");
    EXPECT_THAT(temporaryFiles(folder), testing::ElementsAre(ofAnother));
}

TEST(AtomicFile, ALeftoverIsFoundByEveryNameOfTheFile) {
    const TemporaryFolder folder;
    folder.write("file", "old");
    ASSERT_EQ(::symlink(folder.file("file").c_str(), folder.file("link").c_str()), 0);
    leaveBehind(folder, "link");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(refusal("file"), "written");
    std::filesystem::current_path(before);
    EXPECT_THAT(temporaryFiles(folder), testing::IsEmpty());
}

TEST(AtomicFile, WhatOnlyLooksLikeALeftoverIsNotTouched) {
    const TemporaryFolder folder;
    const std::string name = leaveBehind(folder, "file");
    const std::string start = name.substr(0, name.size() - 6);
    folder.write(".save-abcdef", "of an earlier version");
    folder.write(start + "abcde", "too short");
    folder.write(start + "abcdefg", "too long");
    folder.makeFolder(start + "folder");
    folder.write("precious", "kept");
    ASSERT_EQ(::symlink("precious", folder.file(start + "linked").c_str()), 0);
    ASSERT_EQ(::mkfifo(folder.file(start + "piped_").c_str(), 0600), 0);
    EXPECT_EQ(refusal(folder.file("file")), "written");
    EXPECT_THAT(temporaryFiles(folder),
                testing::UnorderedElementsAre(".save-abcdef", start + "abcde", start + "abcdefg", start + "folder",
                                              start + "linked", start + "piped_"));
    EXPECT_EQ(folder.read("precious"), "kept");
}

TEST(AtomicFile, TwoThatWriteForTheSameFileLeaveEachOtherAlone) {
    const TemporaryFolder folder;
    AtomicFile first(folder.file("file"));
    first.write("first");
    const int code = inOwnProcess([&] { return refusal(folder.file("file")) == "written" ? 0 : 1; });
    EXPECT_EQ(code, 0);
    AtomicFile second(folder.file("file"));
    second.write("second");
    EXPECT_THAT(temporaryFiles(folder), testing::SizeIs(2));
    first.commit();
    EXPECT_EQ(folder.read("file"), "first");
    second.commit();
    EXPECT_EQ(folder.read("file"), "second");
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, ManyWritersAtOnceAllSucceed) {
    constexpr int WRITERS = 4;
    constexpr int ROUNDS = 150;
    const TemporaryFolder folder;
    std::vector<pid_t> writers;
    for (int i = 0; i < WRITERS; ++i) {
        writers.push_back(::fork());
        if (writers.back() == 0) {
            for (int round = 0; round < ROUNDS; ++round) {
                if (refusal(folder.file("file")) != "written") {
                    ::_exit(1);
                }
            }
            ::_exit(0);
        }
    }
    for (const pid_t writer : writers) {
        int status = -1;
        EXPECT_EQ(::waitpid(writer, &status, 0), writer);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, ATemporaryFileThatIsRemovedBeforeItIsLockedIsMadeAnew) {
    for (const bool hasAnotherName : {false, true}) {
        const TemporaryFolder folder;
        systemLock::beforeNext = [&] {
            const std::string temporary = folder.file(temporaryFiles(folder).at(0));
            if (hasAnotherName) {
                std::filesystem::create_hard_link(temporary, folder.file("link"));
            }
            std::filesystem::remove(temporary);
            return 0;
        };
        EXPECT_EQ(refusal(folder.file("file")), "written") << hasAnotherName;
        EXPECT_FALSE(systemLock::beforeNext) << "it was removed";
        EXPECT_EQ(folder.read("file"), "x");
        EXPECT_THAT(temporaryFiles(folder), testing::IsEmpty());
    }
}

TEST(AtomicFile, ATemporaryFileInWhosePlaceAnotherStandsIsMadeAnew) {
    const TemporaryFolder folder;
    std::string name;
    systemLock::beforeNext = [&] {
        name = temporaryFiles(folder).at(0);
        std::filesystem::rename(folder.file(name), folder.file("moved"));
        folder.write(name, "of somebody else");
        return 0;
    };
    EXPECT_EQ(refusal(folder.file("file")), "written");
    EXPECT_EQ(folder.read("file"), "x");
    EXPECT_EQ(folder.read(name), "of somebody else");
}

TEST(AtomicFile, WhatIsCalledBeforeReplacingFindsTheOldFileAndMayKeepIt) {
    const TemporaryFolder folder;
    folder.write("file", "old");
    {
        AtomicFile file(folder.file("file"));
        file.write("new");
        const auto refuse = [&] { throw std::runtime_error(folder.read("file")); };
        try {
            file.commit(refuse);
            ADD_FAILURE() << "it was replaced";
        } catch (const std::runtime_error& fault) {
            EXPECT_STREQ(fault.what(), "old");
        }
    }
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, TheTemporaryFileIsCompleteAndLockedUntilItHasItsName) {
    const TemporaryFolder folder;
    AtomicFile file(folder.file("file"));
    file.write("new");
    bool isLocked = false;
    file.commit([&] {
        const std::string name = temporaryFiles(folder).at(0);
        EXPECT_EQ(folder.read(name), "new");
        const int descriptor = ::open(folder.file(name).c_str(), O_RDWR | O_CLOEXEC);
        isLocked = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        ::close(descriptor);
    });
    EXPECT_TRUE(isLocked);
}

TEST(AtomicFile, TheTargetIsWhereTheLinksLead) {
    const TemporaryFolder folder;
    ASSERT_EQ(::symlink("second", folder.file("first").c_str()), 0);
    ASSERT_EQ(::symlink("later", folder.file("second").c_str()), 0);
    EXPECT_EQ(AtomicFile(folder.file("first")).target(), folder.file("later"));
}

/// 0 when a call removes exactly the temporary files of those that are being written.
int removeAllAtOnce(const TemporaryFolder& folder) {
    constexpr int MORE_THAN_ARE_REMEMBERED = 100;
    for (int i = 0; i < MORE_THAN_ARE_REMEMBERED; ++i) {
        AtomicFile(folder.file("discarded"));
        refusal(folder.file("committed"));
    }
    std::deque<AtomicFile> files;
    for (int i = 0; i < 10; ++i) {
        files.emplace_back(folder.file("file " + std::to_string(i))).write("half");
    }
    if (temporaryFiles(folder).size() != 10) {
        return 2;
    }
    AtomicFile::removeTemporaryFiles();
    return temporaryFiles(folder).empty() && entries(folder) == 1 ? 0 : 3;
}

TEST(AtomicFile, ADyingProcessRemovesAllItsTemporaryFilesByOneCall) {
    const TemporaryFolder folder;
    EXPECT_EQ(inOwnProcess([&] { return removeAllAtOnce(folder); }), 0);
    EXPECT_EQ(folder.read("committed"), "x");
}

TEST(AtomicFile, WhatWasRemovedCannotBeCommitted) {
    const TemporaryFolder folder;
    folder.write("file", "old");
    const int code = inOwnProcess([&] {
        AtomicFile file(folder.file("file"));
        AtomicFile::removeTemporaryFiles();
        try {
            file.commit();
        } catch (const VeltraniException&) {
            return 0;
        }
        return 1;
    });
    EXPECT_EQ(code, 0);
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, AFolderThatCannotBeListedIsWrittenAllTheSame) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0333), 0);
    const int code = inOwnProcess([&] {
        constexpr uid_t NOBODY = 65534;
        if (::geteuid() == 0 && ::setuid(NOBODY) != 0) {
            return 2;
        }
        return refusal(folder.file("file")) == "written" ? 0 : 1;
    });
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(folder.read("file"), "x");
}

}  // namespace
