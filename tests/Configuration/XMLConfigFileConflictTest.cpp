#include "Common/Utf8.h"
#include "Configuration/ConfigurationChangedException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "Samples.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// What became of a save.
struct Outcome {
    enum Kind { SAVED, CHANGED, REMOVED, REFUSED };
    Kind kind = SAVED;
    std::string message;
};

Outcome save(const XMLConfigFile& config, const std::string& path) {
    try {
        config.save(path);
        return {Outcome::SAVED, ""};
    } catch (const ConfigurationChangedException& fault) {
        return {fault.isRemoved ? Outcome::REMOVED : Outcome::CHANGED, Veltrani::toUtf8(fault.message)};
    } catch (const VeltraniException& fault) {
        return {Outcome::REFUSED, Veltrani::toUtf8(fault.message)};
    }
}

/// Puts a file in the place of another, as most editors do.
void replace(const TemporaryFolder& folder, const std::string& name, const std::string& content) {
    fs::rename(folder.write(name + ".new", content), folder.file(name));
}

class XMLConfigFileConflict : public testing::Test {
protected:
    [[nodiscard]] std::ptrdiff_t entries() const {
        return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
    }

    /// Expects that a save to the path is refused as somebody else's change, which stays.
    void expectChanged(const std::string& to, const std::string& content) {
        const std::ptrdiff_t before = entries();
        const Outcome outcome = save(*config, to);
        EXPECT_EQ(outcome.kind, Outcome::CHANGED);
        EXPECT_EQ(outcome.message, to + ": the file was changed by somebody else after it had been read, and was not "
                                        "replaced; read it again, then repeat the change");
        EXPECT_EQ(folder.read(fs::path(to).filename().string()), content);
        EXPECT_EQ(entries(), before) << "nothing beside it";
    }
    void expectRemoved(const std::string& to) {
        const Outcome outcome = save(*config, to);
        EXPECT_EQ(outcome.kind, Outcome::REMOVED);
        EXPECT_EQ(outcome.message, to + ": the file was removed by somebody else after it had been read, and was not "
                                        "made anew; bring it back, read it again, then repeat the change");
        EXPECT_FALSE(fs::exists(to));
    }

    TemporaryFolder folder;
    std::string path = folder.write("display.xml", smallConfiguration());
    std::unique_ptr<XMLConfigFile> config = XMLConfigFile::load(path);
};

TEST_F(XMLConfigFileConflict, TheSecondOfTwoDoesNotOverwriteTheFirst) {
    const auto other = XMLConfigFile::load(path);
    other->addProjectorConfig(L"theirs");
    other->save(path);
    config->addProjectorConfig(L"ours");
    expectChanged(path, other->text());
    expectChanged(path, other->text());
}

TEST_F(XMLConfigFileConflict, AnEditCountsWhateverTheSystemSaysOfTheFile) {
    // In place, as long as before, with the old time: only the content tells.
    std::string edited = smallConfiguration();
    edited.replace(edited.find("Units"), 5, "units");
    ASSERT_EQ(edited.size(), smallConfiguration().size());
    const fs::file_time_type time = fs::last_write_time(path);
    folder.write("display.xml", edited);
    fs::last_write_time(path, time);
    expectChanged(path, edited);
    for (const std::string& content : {std::string(), smallConfiguration() + "\n", smallConfiguration().substr(1)}) {
        replace(folder, "display.xml", content);
        expectChanged(path, content);
    }
}

TEST_F(XMLConfigFileConflict, TheSameBytesAreTheSameFile) {
    replace(folder, "display.xml", smallConfiguration());
    fs::last_write_time(path, fs::last_write_time(path) + std::chrono::hours(1));
    config->addProjectorConfig(L"ours");
    EXPECT_EQ(save(*config, path).kind, Outcome::SAVED);
    EXPECT_EQ(folder.read("display.xml"), config->text());
}

TEST_F(XMLConfigFileConflict, AnObjectSavesAsOftenAsItLikes) {
    for (const wchar_t* id : {L"one", L"two", L"three"}) {
        config->addProjectorConfig(id);
        EXPECT_EQ(save(*config, path).kind, Outcome::SAVED);
        EXPECT_EQ(save(*config, path).kind, Outcome::SAVED);
    }
    EXPECT_EQ(folder.read("display.xml"), config->text());
    folder.write("display.xml", smallConfiguration());  // what it once was is a change by now
    expectChanged(path, smallConfiguration());
}

TEST_F(XMLConfigFileConflict, ARemovedFileDoesNotComeBack) {
    fs::remove(path);
    expectRemoved(path);
    EXPECT_EQ(entries(), 0);
    folder.write("display.xml", smallConfiguration());
    EXPECT_EQ(save(*config, path).kind, Outcome::SAVED) << "once it is there again";
    fs::rename(path, folder.file("moved.xml"));
    expectRemoved(path);
}

TEST_F(XMLConfigFileConflict, ACopyOnTheWayDoesNotForgetWhatWasRead) {
    EXPECT_EQ(save(*config, folder.file("backup.xml")).kind, Outcome::SAVED);
    EXPECT_EQ(save(*config, path).kind, Outcome::SAVED);
    EXPECT_EQ(save(*config, folder.file("backup.xml")).kind, Outcome::SAVED);
    folder.write("display.xml", fullConfiguration());
    expectChanged(path, fullConfiguration());
}

TEST_F(XMLConfigFileConflict, WhereItWasSavedItIsAtHomeToo) {
    const std::string copy = folder.file("copy.xml");
    EXPECT_EQ(save(*config, copy).kind, Outcome::SAVED);
    folder.write("copy.xml", fullConfiguration());
    expectChanged(copy, fullConfiguration());
    fs::remove(copy);
    expectRemoved(copy);
}

TEST_F(XMLConfigFileConflict, AnyOtherFileIsReplaced) {
    const std::string other = folder.write("other.xml", "whatever it holds");
    EXPECT_EQ(save(*config, other).kind, Outcome::SAVED);
    EXPECT_EQ(folder.read("other.xml"), config->text());
    folder.write("display.xml", fullConfiguration());
    EXPECT_EQ(save(*XMLConfigFile::parse(smallConfiguration(), path), path).kind, Outcome::SAVED)
        << "nothing was read from it";
    EXPECT_EQ(folder.read("display.xml"), config->text());
}

TEST_F(XMLConfigFileConflict, AFileIsKnownByEveryNameThatLeadsToIt) {
    ASSERT_EQ(::symlink("display.xml", folder.file("link.xml").c_str()), 0);
    ASSERT_EQ(::symlink(folder.path().c_str(), folder.file("way").c_str()), 0);
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    folder.write("display.xml", fullConfiguration());
    for (const std::string& name :
         {std::string("display.xml"), std::string("./display.xml"), std::string("way/way/display.xml"),
          folder.file("link.xml"), folder.file("way/link.xml")}) {
        EXPECT_EQ(save(*config, name).kind, Outcome::CHANGED) << name;
    }
    fs::remove(path);
    for (const std::string& name : {std::string("display.xml"), folder.file("way/link.xml")}) {
        EXPECT_EQ(save(*config, name).kind, Outcome::REMOVED) << name;
    }
    fs::current_path(before);
}

TEST_F(XMLConfigFileConflict, ANameThatLeadsElsewhereByNowIsAChange) {
    folder.write("next/display.xml", fullConfiguration());
    ASSERT_EQ(::symlink("display.xml", folder.file("link.xml").c_str()), 0);
    ASSERT_EQ(::symlink(".", folder.file("current").c_str()), 0);
    for (const std::string& name : {folder.file("link.xml"), folder.file("current/display.xml")}) {
        config = XMLConfigFile::load(name);
        EXPECT_EQ(save(*config, name).kind, Outcome::SAVED);
        EXPECT_EQ(save(*config, path).kind, Outcome::SAVED);
        const std::string link = name == folder.file("link.xml") ? name : folder.file("current");
        fs::remove(link);
        ASSERT_EQ(::symlink(link == name ? "next/display.xml" : "next", link.c_str()), 0);
        EXPECT_EQ(save(*config, name).kind, Outcome::CHANGED) << name;
        EXPECT_EQ(folder.read("next/display.xml"), fullConfiguration());
        EXPECT_EQ(save(*config, path).kind, Outcome::SAVED) << "where it was read from nothing has changed";
    }
}

TEST_F(XMLConfigFileConflict, AFileWithSeveralNamesIsRefused) {
    fs::create_hard_link(path, folder.file("second.xml"));
    config->addProjectorConfig(L"ours");
    for (const std::string& name : {path, folder.file("second.xml")}) {
        const Outcome outcome = save(*config, name);
        EXPECT_EQ(outcome.kind, Outcome::REFUSED);
        EXPECT_EQ(outcome.message, name +
                                       ": the file has 2 names (hard links), which a save would part, and was not "
                                       "replaced; save to another path, or rename a copy over it, which parts "
                                       "them, then repeat the change");
    }
    EXPECT_TRUE(fs::equivalent(path, folder.file("second.xml")));
    EXPECT_EQ(folder.read("display.xml"), smallConfiguration());
    EXPECT_EQ(entries(), 2);
    fs::rename(folder.write("copy.xml", smallConfiguration()), path);
    EXPECT_EQ(save(*config, path).kind, Outcome::SAVED) << "what the message says";
}

/// The exit code of a process that does some work.
int finish(pid_t process) {
    int status = -1;
    return ::waitpid(process, &status, 0) == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Edits the file under its lock while somebody waits to replace it; 1 when nobody does.
int editUnderLock(const TemporaryFolder& folder, int descriptor) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (std::chrono::steady_clock::now() < end) {
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            if (entry.path().filename().string().starts_with(".save-")) {
                // Who does not wait has replaced it by then.
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                folder.write("display.xml", fullConfiguration());
                ::close(descriptor);
                return 0;
            }
        }
    }
    return 1;
}

TEST_F(XMLConfigFileConflict, ASaveWaitsForWhoeverHoldsTheLock) {
    const int locked = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(locked, LOCK_EX), 0);
    const pid_t editor = ::fork();
    if (editor == 0) {
        ::_exit(editUnderLock(folder, locked));
    }
    ::close(locked);  // the lock is the other process' alone now
    expectChanged(path, fullConfiguration());
    EXPECT_EQ(finish(editor), 0);
}

/// Adds entries, each in a save of its own, and reads the file again whenever somebody was faster.
int addEntries(const std::string& path, const std::wstring& prefix, int count) {
    for (int i = 0; i < count;) {
        const auto config = XMLConfigFile::load(path);
        config->addProjectorConfig(prefix + std::to_wstring(i));
        const Outcome outcome = save(*config, path);
        if (outcome.kind == Outcome::SAVED) {
            ++i;
        } else if (outcome.kind != Outcome::CHANGED) {
            return 1;
        }
    }
    return 0;
}

TEST_F(XMLConfigFileConflict, ManyProcessesLoseNoChangeOfEachOther) {
    constexpr int PROCESSES = 4;
    constexpr int ENTRIES = 25;
    const std::size_t before = config->getProjectorConfigIds().size();
    std::vector<pid_t> processes;
    for (int i = 0; i < PROCESSES; ++i) {
        processes.push_back(::fork());
        if (processes.back() == 0) {
            ::_exit(addEntries(path, L"process " + std::to_wstring(i) + L" entry ", ENTRIES));
        }
    }
    for (const pid_t process : processes) {
        EXPECT_EQ(finish(process), 0);
    }
    EXPECT_EQ(XMLConfigFile::load(path)->getProjectorConfigIds().size(), before + PROCESSES * ENTRIES);
    EXPECT_EQ(entries(), 1);
}

}  // namespace
