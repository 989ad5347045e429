#include "Configuration/Internal/FileAccess.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Veltrani::readFile;
using Veltrani::replaceFile;

constexpr std::size_t LIMIT = 1000;

std::string readFault(const std::string& path) {
    try {
        static_cast<void>(readFile(path, LIMIT));
    } catch (const VeltraniMissingFileException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "no fault";
}

std::string saveFault(const std::string& path) {
    try {
        replaceFile(path, "new");
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.file, "Platform/Configuration/Internal/FileAccess.cpp");
        return Veltrani::toUtf8(fault.message);
    }
    return "no fault";
}

std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

unsigned modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777U;
}

TEST(FileAccess, ReadsEveryByte) {
    const TemporaryFolder folder;
    EXPECT_EQ(readFile(folder.write("a", std::string("x\0\r\ny", 5)), LIMIT), std::string("x\0\r\ny", 5));
    EXPECT_EQ(readFile(folder.write("empty", ""), LIMIT), "");
    const std::string large(300000, 'z');
    EXPECT_EQ(readFile(folder.write("large", large), 300000), large);
}

TEST(FileAccess, ReadsOneByteBeyondTheLimitAtMost) {
    const TemporaryFolder folder;
    EXPECT_EQ(readFile(folder.write("a", std::string(300000, 'z')), 100000).size(), 100001U);
}

TEST(FileAccess, OnlyARegularFileIsRead) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    const std::string prefix = "Cannot read the configuration \"";
    EXPECT_EQ(readFault(folder.file("none")), prefix + folder.file("none") + "\": No such file or directory");
    EXPECT_EQ(readFault(folder.path()), prefix + folder.path() + "\": it is not a regular file");
    EXPECT_EQ(readFault(folder.file("pipe")), prefix + folder.file("pipe") + "\": it is not a regular file");
    EXPECT_EQ(readFault("/dev/zero"), prefix + "/dev/zero\": it is not a regular file");
    EXPECT_EQ(readFault(folder.write("file", "x") + "/below"),
              prefix + folder.file("file/below") + "\": Not a directory");
    EXPECT_EQ(readFault(""), prefix + "\": the path is empty");
}

TEST(FileAccess, StrangePathsAreMissingFiles) {
    const std::string longPath = std::string("/").append(5000, 'x');
    EXPECT_EQ(readFault(longPath), "Cannot read the configuration \"" + longPath + "\": File name too long");
    EXPECT_NE(readFault(std::string("a\0b", 3)).find("the path is not UTF-8 text"), std::string::npos);
    EXPECT_NE(readFault("caf\xe9").find("the path is not UTF-8 text"), std::string::npos);
    EXPECT_NE(saveFault("caf\xe9").find("the path is not UTF-8 text"), std::string::npos);
}

TEST(FileAccess, NamesAreOpenedByteForByteInTheCLocale) {
    const TemporaryFolder folder;
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    const std::string path = folder.write("B\u00fchne %s %n \u5c4f.xml", "x");
    EXPECT_EQ(readFile(path, LIMIT), "x");
    replaceFile(path, "y");
    EXPECT_EQ(readFile(path, LIMIT), "y");
    EXPECT_EQ(readFault(path + "%d\u00e9").find("Cannot read the configuration \"" + path + "%d\u00e9\""), 0U);
    std::setlocale(LC_ALL, previous.c_str());
}

TEST(FileAccess, ReplacesAFileAndLeavesNothingBeside) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old and longer");
    replaceFile(path, "new");
    EXPECT_EQ(folder.read("a"), "new");
    replaceFile(path, "");
    EXPECT_EQ(folder.read("a"), "");
    EXPECT_EQ(entriesOf(folder.path()), (std::vector<std::string>{"a"}));
}

TEST(FileAccess, MakesANewFileAsTheUserWouldGetIt) {
    const TemporaryFolder folder;
    const mode_t previous = ::umask(027);
    replaceFile(folder.file("a"), "new");
    ::umask(previous);
    EXPECT_EQ(folder.read("a"), "new");
    EXPECT_EQ(modeOf(folder.file("a")), 0640U);
}

TEST(FileAccess, TheModeIsKept) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old");
    for (const unsigned mode : {0600U, 0664U, 0755U}) {
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        replaceFile(path, "new");
        EXPECT_EQ(modeOf(path), mode);
    }
}

TEST(FileAccess, ASymbolicLinkStaysOne) {
    const TemporaryFolder folder;
    folder.makeFolder("real");
    folder.write("real/a", "old");
    ASSERT_EQ(::symlink("real/a", folder.file("link").c_str()), 0);
    ASSERT_EQ(::symlink(folder.file("link").c_str(), folder.file("link2").c_str()), 0);
    replaceFile(folder.file("link2"), "new");
    EXPECT_EQ(folder.read("real/a"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link2")));
    EXPECT_EQ(entriesOf(folder.file("real")), (std::vector<std::string>{"a"}));
}

TEST(FileAccess, ALinkToNothingYetIsFollowed) {
    const TemporaryFolder folder;
    ASSERT_EQ(::symlink("a", folder.file("link").c_str()), 0);
    replaceFile(folder.file("link"), "new");
    EXPECT_EQ(folder.read("a"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
}

TEST(FileAccess, ALinkToItselfIsAFault) {
    const TemporaryFolder folder;
    ASSERT_EQ(::symlink("link", folder.file("link").c_str()), 0);
    EXPECT_EQ(saveFault(folder.file("link")), "Cannot save the configuration \"" + folder.file("link") +
                                                  "\": Too many levels of symbolic links; the file was left as it was");
}

TEST(FileAccess, AFailedSaveLeavesEverythingAsItWas) {
    const TemporaryFolder folder;
    folder.makeFolder("folder");
    folder.write("file", "old");
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    const std::vector<std::string> before = entriesOf(folder.path());
    const auto message = [](const std::string& path, const std::string& cause) {
        return "Cannot save the configuration \"" + path + "\": " + cause + "; the file was left as it was";
    };
    EXPECT_EQ(saveFault(folder.file("folder")), message(folder.file("folder"), "it is not a regular file"));
    EXPECT_EQ(saveFault(folder.file("pipe")), message(folder.file("pipe"), "it is not a regular file"));
    EXPECT_EQ(saveFault("/dev/null"), message("/dev/null", "it is not a regular file"));
    EXPECT_EQ(saveFault(folder.file("file/below")), message(folder.file("file/below"), "Not a directory"));
    EXPECT_EQ(saveFault(folder.file("none/a")), message(folder.file("none/a"), "No such file or directory"));
    EXPECT_EQ(saveFault(""), message("", "the path is empty"));
    EXPECT_EQ(saveFault(std::string("/").append(5000, 'x')),
              message(std::string("/").append(5000, 'x'), "File name too long"));
    EXPECT_EQ(entriesOf(folder.path()), before);
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_TRUE(entriesOf(folder.file("folder")).empty());
}

/// Ends the process: 0 when the save failed as it should. A limit on the size of files stands for the full disk.
[[noreturn]] void saveWithoutRoom(const std::string& path) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000, 1000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    try {
        replaceFile(path, std::string(5000, 'x'));
    } catch (const VeltraniException& fault) {
        ::_exit(fault.message.find(L"File too large") == std::wstring::npos ? 2 : 0);
    }
    ::_exit(1);
}

TEST(FileAccess, AFullDiskLeavesTheOldFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old");
    EXPECT_EXIT(saveWithoutRoom(path), testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_EQ(entriesOf(folder.path()), (std::vector<std::string>{"a"}));
}

/// Ends the process: 0 when the save failed as it should. Nothing is protected from a privileged process, so it first
/// becomes a common one.
[[noreturn]] void saveUnprivileged(const std::string& path) {
    constexpr uid_t NOBODY = 65534;
    if (::geteuid() == 0 && ::setuid(NOBODY) != 0) {
        ::_exit(3);
    }
    try {
        replaceFile(path, "new");
    } catch (const VeltraniException& fault) {
        ::_exit(fault.message.find(L"Permission denied") == std::wstring::npos ? 2 : 0);
    }
    ::_exit(1);
}

TEST(FileAccess, AWriteProtectedFileIsNotReplaced) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    EXPECT_EXIT(saveUnprivileged(path), testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_EQ(entriesOf(folder.path()), (std::vector<std::string>{"a"}));
}

TEST(FileAccess, AFolderThatCannotBeWrittenIsAFault) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0555), 0);
    EXPECT_EXIT(saveUnprivileged(path), testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("a"), "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
}

TEST(FileAccess, ALeftoverOfAnEarlierCrashIsNoObstacle) {
    const TemporaryFolder folder;
    folder.write(".display-" + std::to_string(::getpid()) + "-0.tmp", "leftover");
    replaceFile(folder.file("a"), "new");
    EXPECT_EQ(folder.read("a"), "new");
    EXPECT_EQ(folder.read(".display-" + std::to_string(::getpid()) + "-0.tmp"), "leftover");
}

}  // namespace
