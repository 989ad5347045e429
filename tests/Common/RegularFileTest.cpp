#include "Common/RegularFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <fstream>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Veltrani::RegularFile;

/// The message of the refusal, or "opened".
std::string refusal(const std::string& path) {
    try {
        const RegularFile file(path);
    } catch (const VeltraniMissingFileException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "opened";
}

TEST(RegularFile, ReadsEveryByte) {
    const TemporaryFolder folder;
    const std::string content("a\0b\r\n\xff", 6);
    RegularFile file(folder.write("bytes", content));
    EXPECT_EQ(file.size(), content.size());
    EXPECT_EQ(file.readAll(), content);
    EXPECT_EQ(file.readAll(), content) << "a second read starts over";
}

// The first free number, which is 0 in a process without a standard input, is a file like any other.
TEST(RegularFile, IsReadWithoutAStandardInput) {
    const TemporaryFolder folder;
    const std::string path = folder.write("bytes", "content");
    const int input = ::dup(STDIN_FILENO);
    ::close(STDIN_FILENO);
    std::string content;
    EXPECT_NO_THROW(content = RegularFile(path).readAll());
    EXPECT_EQ(content, "content");
    if (input >= 0) {
        ::dup2(input, STDIN_FILENO);
        ::close(input);
    }
}

TEST(RegularFile, AnEmptyFileIsRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(RegularFile(folder.write("empty", "")).readAll(), "");
}

TEST(RegularFile, AFileThatGrowsIsReadToItsEnd) {
    const TemporaryFolder folder;
    RegularFile file(folder.write("log", "first"));
    folder.write("log", "first and very much more");
    EXPECT_EQ(file.readAll(), "first and very much more");
}

TEST(RegularFile, AFileThatShrinksIsReadToItsEnd) {
    const TemporaryFolder folder;
    RegularFile file(folder.write("log", "first and very much more"));
    folder.write("log", "first");
    EXPECT_EQ(file.readAll(), "first");
}

TEST(RegularFile, ARemovedFileIsStillTheOneThatWasOpened) {
    const TemporaryFolder folder;
    const std::string path = folder.write("gone", "kept");
    RegularFile file(path);
    ASSERT_EQ(std::remove(path.c_str()), 0);
    EXPECT_EQ(file.readAll(), "kept");
}

TEST(RegularFile, RefusalsNameTheFileAndTheReason) {
    const TemporaryFolder folder;
    EXPECT_EQ(refusal(folder.file("missing")), folder.file("missing") + ": No such file or directory");
    EXPECT_EQ(refusal(folder.path()), folder.path() + ": is a directory, not a file");
    EXPECT_EQ(refusal("/dev/zero"), "/dev/zero: is a device, not a file");
    EXPECT_EQ(refusal(""), "the file name is empty");
    EXPECT_EQ(refusal(std::string("a\0b", 3)), "a: the file name contains a zero character");
}

TEST(RegularFile, APipeIsRefusedWithoutWaitingForAWriter) {
    const TemporaryFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(refusal(pipe), EndsWith("is a pipe, not a file"));
}

TEST(RegularFile, ANameOfFiveThousandCharactersIsRefusedWhole) {
    const std::string name = "/" + std::string(5000, 'n');
    EXPECT_THAT(refusal(name), StartsWith(name + ": "));
    EXPECT_THAT(refusal(name), HasSubstr("too long"));
}

TEST(RegularFile, NamesAreUtf8WhateverTheLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    const TemporaryFolder folder;
    EXPECT_EQ(RegularFile(folder.write("B\xc3\xbchne 100%s.txt", "content")).readAll(), "content");
}

TEST(RegularFile, ReadsAPieceAndStopsAtTheEnd) {
    const TemporaryFolder folder;
    const RegularFile file(folder.write("digits", "0123456789"));
    std::string piece(4, '-');
    EXPECT_EQ(file.readAt(3, piece.data(), 4), 4U);
    EXPECT_EQ(piece, "3456");
    EXPECT_EQ(file.readAt(8, piece.data(), 4), 2U);
    EXPECT_EQ(piece, "8956");
    EXPECT_EQ(file.readAt(11, piece.data(), 4), 0U);
}

// The names of the kernel are handed out a few at a time, as a network file system may hand out any file.
TEST(RegularFile, APieceThatIsHandedOutInPartsIsReadWhole) {
    const std::string path = "/proc/kallsyms";
    constexpr std::size_t COUNT = 50000;
    std::string expected(COUNT, '\0');
    std::ifstream stream(path, std::ios::binary);
    if (!stream.read(expected.data(), COUNT)) {
        GTEST_SKIP() << "there is no such file here";
    }
    std::string piece(COUNT, '\0');
    EXPECT_EQ(RegularFile(path).readAt(0, piece.data(), COUNT), COUNT);
    EXPECT_EQ(piece, expected);
}

TEST(RegularFile, IsReopenedWhateverStandsUnderItsNameByThen) {
    const TemporaryFolder folder;
    const std::string path = folder.write("swapped", "first");
    const RegularFile file(path);
    ASSERT_EQ(std::remove(path.c_str()), 0);
    folder.write("swapped", "second");
    EXPECT_EQ(RegularFile(file.nameForReopening()).readAll(), "first");
}

TEST(RegularFile, ReadsOneByteBeyondTheLimitAtMost) {
    const TemporaryFolder folder;
    const RegularFile file(folder.write("large", std::string(300000, 'z')));
    EXPECT_EQ(file.readAll(100000).size(), 100001U);
    EXPECT_EQ(file.readAll(300000).size(), 300000U);
    EXPECT_EQ(file.readAll(0).size(), 1U);
}

}  // namespace
