#include "Common/FileLock.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "SystemLock.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

namespace {

using namespace std::chrono_literals;
using Veltrani::FileLock;

/// A lock of somebody else, taken by the system's call.
class ForeignLock {
public:
    explicit ForeignLock(const std::string& path) : m_descriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {
        m_isHeld = ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
    }
    ~ForeignLock() { ::close(m_descriptor); }
    ForeignLock(const ForeignLock&) = delete;
    ForeignLock& operator=(const ForeignLock&) = delete;

    [[nodiscard]] bool isHeld() const { return m_isHeld; }

private:
    int m_descriptor;
    bool m_isHeld;
};

std::string refusal(const std::string& path, std::chrono::milliseconds patience) {
    try {
        const FileLock lock(path, patience);
    } catch (const VeltraniException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "locked";
}

TEST(FileLock, IsHeldUntilTheEndOfTheScope) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "content");
    {
        const FileLock lock(path);
        EXPECT_TRUE(lock.isHeld());
        EXPECT_FALSE(ForeignLock(path).isHeld());
    }
    EXPECT_TRUE(ForeignLock(path).isHeld());
    EXPECT_EQ(folder.read("file"), "content");
}

TEST(FileLock, WhereNoFileIsNothingIsLockedOrMade) {
    const TemporaryFolder folder;
    const FileLock lock(folder.file("missing"));
    EXPECT_FALSE(lock.isHeld());
    EXPECT_FALSE(std::filesystem::exists(folder.file("missing")));
}

TEST(FileLock, RefusalsNameTheFileAndTheReason) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    const ForeignLock foreign(path);
    ASSERT_TRUE(foreign.isHeld());
    EXPECT_EQ(refusal(path, 20ms),
              "Unable to lock " + path + ": another program holds its lock; let that program finish, then try again");
    EXPECT_EQ(refusal(folder.path(), 20ms), "Unable to lock " + folder.path() + ": Is a directory");
}

TEST(FileLock, OnAFileSystemWithoutLocksNobodyIsRefused) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    for (const int reply : {ENOLCK, ENOSYS, EINVAL}) {
        systemLock::beforeNext = [reply] { return reply; };
        EXPECT_EQ(refusal(path, 0ms), "locked") << reply;
        EXPECT_FALSE(systemLock::beforeNext);
    }
}

TEST(FileLock, AnAttemptThatASignalInterruptsIsRepeated) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    systemLock::beforeNext = [] { return EINTR; };
    const FileLock lock(path, 0ms);
    EXPECT_FALSE(ForeignLock(path).isHeld());
}

// A service without standard input has its first files at 0.
TEST(FileLock, HoldsWithoutStandardInput) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    const int input = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    ::close(STDIN_FILENO);
    {
        errno = ENOENT;
        const FileLock lock(path, 0ms);
        EXPECT_TRUE(lock.isHeld());
        EXPECT_FALSE(ForeignLock(path).isHeld());
    }
    EXPECT_TRUE(ForeignLock(path).isHeld()) << "it is released as well";
    if (input >= 0) {
        ::dup2(input, STDIN_FILENO);
        ::close(input);
    }
}

/// True once the process has the file open.
bool hasOpen(pid_t process, const std::string& path) {
    std::error_code unknown;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd", unknown)) {
        if (std::filesystem::read_symlink(entry.path(), unknown) == path) {
            return true;
        }
    }
    return false;
}

TEST(FileLock, WhoWaitedForAFileThatWasReplacedLocksTheNewOne) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    std::array<int, 2> start{};
    ASSERT_EQ(::pipe2(start.data(), O_CLOEXEC), 0);
    // Forked before the file is open here, so that only the waiting itself opens it there.
    const pid_t waiting = ::fork();
    if (waiting == 0) {
        char byte = 0;
        if (::read(start[0], &byte, 1) != 1) {
            ::_exit(2);
        }
        const FileLock lock(path);
        ::_exit(lock.isHeld() && folder.read("file") == "new" && !ForeignLock(path).isHeld() ? 0 : 1);
    }
    ASSERT_GT(waiting, 0);
    std::optional<ForeignLock> foreign(path);
    ASSERT_TRUE(foreign->isHeld());
    ASSERT_EQ(::write(start[1], "x", 1), 1);
    while (!hasOpen(waiting, path)) {
        ASSERT_EQ(::waitpid(waiting, nullptr, WNOHANG), 0) << "it did not wait";
    }
    std::filesystem::rename(folder.write("newer", "new"), path);
    foreign.reset();
    int status = -1;
    ASSERT_EQ(::waitpid(waiting, &status, 0), waiting);
    EXPECT_EQ(status, 0);
    ::close(start[0]);
    ::close(start[1]);
}

}  // namespace
