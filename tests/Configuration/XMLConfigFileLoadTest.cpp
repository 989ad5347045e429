#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "Samples.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <clocale>
#include <string>

namespace {

TEST(XMLConfigFileLoad, ReadsAFileAndItsFolder) {
    const TemporaryFolder folder;
    const auto config = XMLConfigFile::load(folder.write("B\u00fchne %s/display %n.xml", fullConfiguration()));
    const std::wstring base = Veltrani::fromUtf8(folder.file("B\u00fchne %s"));
    EXPECT_EQ(config->processPath(L""), base);
    EXPECT_EQ(config->getScreenConfig()->getMeasuredMeshFile(0), base + L"/scans/measured.obj");
}

TEST(XMLConfigFileLoad, AFolderWhoseNameIsNotUtf8IsRefused) {
    const TemporaryFolder folder;
    const std::string path = folder.write("caf\xe9/display.xml", "<Display version='1'><Units native='m'/></Display>");
    try {
        static_cast<void>(XMLConfigFile::load(path));
        FAIL() << "loaded";
    } catch (const VeltraniMissingFileException& refusal) {
        EXPECT_THAT(Veltrani::toUtf8(refusal.message), testing::EndsWith("is not UTF-8: rename it"));
    }
}

TEST(XMLConfigFileLoad, WhatIsNoFileIsMissing) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    for (const std::string& path :
         {folder.file("none.xml"), folder.path(), folder.file("pipe"), std::string("/dev/zero"),
          std::string("/").append(5000, 'x'), std::string(), std::string("a\0b", 3), std::string("\xff")}) {
        EXPECT_THROW(static_cast<void>(XMLConfigFile::load(path)), VeltraniMissingFileException) << path;
    }
}

TEST(XMLConfigFileLoad, AFaultNamesThePathAndTheLine) {
    const TemporaryFolder folder;
    const std::string path = folder.write("\u5c4f %s.xml", displayAround("<Oops/>"));
    try {
        static_cast<void>(XMLConfigFile::load(path));
        FAIL() << "nothing was thrown";
    } catch (const VeltraniParseException& fault) {
        EXPECT_EQ(Veltrani::toUtf8(fault.message).rfind(path + ":2: <Oops>: found ", 0), 0U);
    }
}

TEST(XMLConfigFileLoad, AnEmptyFileIsAFault) {
    const TemporaryFolder folder;
    EXPECT_THROW(static_cast<void>(XMLConfigFile::load(folder.write("a.xml", ""))), VeltraniParseException);
}

TEST(XMLConfigFileLoad, NeitherTheCLocaleNorAForeignOneMatters) {
    const TemporaryFolder folder;
    const std::string path =
        folder.write("B\u00fchne.xml", replaced(fullConfiguration(), "Left &amp; lower", "B\u00fchne"));
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    const ForeignLocale german;
    const auto config = XMLConfigFile::load(path);
    EXPECT_EQ(config->getScreenConfig()->getScale(), 0.0254);
    ProjectorConfig* const left = config->getProjectorConfig(L"02000000000A");
    EXPECT_EQ(left->getName(), L"B\u00fchne");
    EXPECT_EQ(left->getScreenRight(), 0.55);
    left->setWidth(12345678);
    config->save(path);
    EXPECT_NE(folder.read("B\u00fchne.xml").find("width=\"12345678\""), std::string::npos);
    EXPECT_EQ(XMLConfigFile::load(path)->getProjectorConfig(L"02000000000A")->getWidth(), 12345678);
    std::setlocale(LC_ALL, previous.c_str());
}

TEST(XMLConfigFileLoad, EveryPrefixIsOneClearFault) {
    const std::string text = fullConfiguration();
    const std::size_t whole = text.rfind('>') + 1;
    for (std::size_t size = 0; size < whole; ++size) {
        const std::vector<std::string> faults = faultsOf(text.substr(0, size));
        ASSERT_EQ(faults.size(), 1U) << "at " << size;
        ASSERT_NE(faults[0].find(": found "), std::string::npos) << faults[0];
        ASSERT_NE(faults[0].find(", expected "), std::string::npos) << faults[0];
    }
    EXPECT_TRUE(faultsOf(text.substr(0, whole)).empty());
}

/// The text is either read, and then its own text is read as the same, or refused with well-formed messages.
bool isReadOrRefused(const std::string& text) {
    std::unique_ptr<XMLConfigFile> config;
    try {
        config = XMLConfigFile::parse(text, "test.xml");
    } catch (const VeltraniParseException& fault) {
        EXPECT_EQ(fault.message.rfind(L"test.xml:", 0), 0U);
        return false;
    }
    EXPECT_EQ(XMLConfigFile::parse(config->text(), "test.xml")->text(), config->text());
    return true;
}

TEST(XMLConfigFileLoad, EveryFlippedByteIsReadOrRefused) {
    const std::string text = displayAround(
        "<Screen shape=\"Flat\"><Size width=\"4\" height=\"2.5\"/></Screen>"
        "<Projectors><Projector id=\"a\"><Name>n</Name></Projector></Projectors>");
    int read = 0;
    int refused = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string broken = text;
            broken[i] = static_cast<char>(static_cast<unsigned char>(broken[i]) ^ (1U << static_cast<unsigned>(bit)));
            ++(isReadOrRefused(broken) ? read : refused);
        }
    }
    EXPECT_GT(read, 15);
    EXPECT_GT(refused, 1000);
}

TEST(XMLConfigFileLoad, EveryDroppedOrDoubledByteIsReadOrRefused) {
    const std::string text = fullConfiguration();
    int refused = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        refused += isReadOrRefused(std::string(text).erase(i, 1)) ? 0 : 1;
        refused += isReadOrRefused(std::string(text).insert(i, 1, text[i])) ? 0 : 1;
    }
    EXPECT_GT(refused, 1000);
}

TEST(XMLConfigFileLoad, ThousandsOfFaultsAreCountedInOneGo) {
    std::string entries;
    for (int i = 0; i < 10000; ++i) {
        entries += "<Projector/>\n";
    }
    const std::string text = projectors(entries);
    try {
        static_cast<void>(XMLConfigFile::parse(text, "t"));
        FAIL() << "nothing was thrown";
    } catch (const VeltraniParseException& fault) {
        EXPECT_EQ(fault.message.substr(fault.message.rfind(L'\n')), L"\n(and 9000 more faults)");
    }
}

}  // namespace
