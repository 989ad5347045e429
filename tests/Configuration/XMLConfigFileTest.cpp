#include "Configuration/XMLConfigFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Samples.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using Ids = std::vector<std::wstring>;

const std::string HEAD = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::unique_ptr<XMLConfigFile> abc() {
    return XMLConfigFile::parse(
        "<Display version=\"1\">\n  <Units native=\"m\"/>\n  <Projectors>\n    <!-- about a -->\n    <Projector "
        "id=\"a\"/>\n"
        "    <Projector id=\"b\"/> <!-- about b -->\n    <Projector id=\"c\"/>\n  </Projectors>\n</Display>",
        "t");
}

/// What stands between the tags of <Projectors>.
std::string entriesText(const XMLConfigFile& config) {
    const std::string text = config.text();
    const std::size_t begin = text.find("<Projectors>") + 12;
    return text.substr(begin, text.find("</Projectors>") - begin);
}

std::wstring refused(XMLConfigFile& config, const std::function<void()>& change) {
    const std::string before = config.text();
    const Ids ids = config.getProjectorConfigIds();
    std::wstring message = L"nothing was thrown";
    try {
        change();
    } catch (const VeltraniException& fault) {
        message = fault.message;
    }
    EXPECT_EQ(config.text(), before);
    EXPECT_EQ(config.getProjectorConfigIds(), ids);
    return message;
}

TEST(XMLConfigFile, ListsItsEntriesInOrder) {
    EXPECT_EQ(abc()->getProjectorConfigIds(), (Ids{L"a", L"b", L"c"}));
    EXPECT_TRUE(XMLConfigFile::parse(smallConfiguration(), "t")->getProjectorConfigIds().empty());
}

TEST(XMLConfigFile, AnEntryIsFoundByItsExactId) {
    const auto config = abc();
    EXPECT_EQ(config->getProjectorConfig(L"b")->getIdentity(), L"b");
    for (const std::wstring absent : {L"", L"B", L"b ", L"d"}) {
        EXPECT_EQ(config->getProjectorConfig(absent), nullptr);
    }
}

TEST(XMLConfigFile, RenamingKeepsTheEntryAndNotesTheOldId) {
    const auto config = abc();
    ProjectorConfig* const entry = config->getProjectorConfig(L"b");
    EXPECT_FALSE(config->mayHaveOldUIDs());
    EXPECT_TRUE(config->renameProjectorConfig(L"b", L"x"));
    EXPECT_TRUE(config->mayHaveOldUIDs());
    EXPECT_EQ(config->getProjectorConfig(L"x"), entry);
    EXPECT_EQ(config->getProjectorConfig(L"b"), nullptr);
    EXPECT_EQ(entry->getIdentity(), L"x");
    EXPECT_EQ(entry->getOldUID(), L"b");
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"a", L"x", L"c"}));
    EXPECT_TRUE(config->renameProjectorConfig(L"x", L"y"));
    EXPECT_EQ(entry->getOldUID(), L"x");
    const auto again = XMLConfigFile::parse(config->text(), "t");
    EXPECT_EQ(again->getProjectorConfig(L"y")->getOldUID(), L"x");
    EXPECT_TRUE(again->mayHaveOldUIDs());
}

TEST(XMLConfigFile, RenamingKeepsNameAndSection) {
    const auto config = abc();
    EXPECT_TRUE(config->renameProjectorConfig(L"a", L"x"));
    const auto again = XMLConfigFile::parse(config->text(), "t");
    for (const XMLConfigFile* file : {config.get(), again.get()}) {
        EXPECT_EQ(file->getProjectorConfig(L"x")->getName(), L"a");
        EXPECT_EQ(file->getProjectorConfig(L"x")->getSectionID(), L"a");
    }
}

TEST(XMLConfigFile, RenamingToTheSameIdIsTrueAndChangesNothing) {
    const auto config = abc();
    const std::string before = config->text();
    EXPECT_TRUE(config->renameProjectorConfig(L"b", L"b"));
    EXPECT_TRUE(config->renameProjectorConfig(L"absent", L"absent"));
    EXPECT_EQ(config->text(), before);
    EXPECT_EQ(config->getProjectorConfig(L"b")->getOldUID(), L"");
}

TEST(XMLConfigFile, RenamingToAnIdOfAnotherEntryIsFalse) {
    const auto config = abc();
    const std::string before = config->text();
    EXPECT_FALSE(config->renameProjectorConfig(L"b", L"a"));
    EXPECT_FALSE(config->renameProjectorConfig(L"absent", L"a"));
    EXPECT_EQ(config->text(), before);
}

TEST(XMLConfigFile, RenamingWhatIsNotThereIsRefused) {
    const auto config = abc();
    EXPECT_EQ(refused(*config, [&] { config->renameProjectorConfig(L"absent", L"x"); }),
              L"The projector \"absent\" cannot be renamed to \"x\": there is no such projector");
    EXPECT_EQ(refused(*config, [&] { config->renameProjectorConfig(L"a", L""); }),
              L"The projector \"a\" cannot be renamed to \"\": an id is never empty");
    EXPECT_EQ(refused(*config, [&] { config->renameProjectorConfig(L"a", L"\x02"); }),
              L"Projector \"a\": the new id holds a character that a configuration file cannot store");
    EXPECT_EQ(config->getProjectorConfig(L"a")->getOldUID(), L"");
}

TEST(XMLConfigFile, AnOldIdIsFreeAgain) {
    const auto config = abc();
    EXPECT_TRUE(config->renameProjectorConfig(L"a", L"x"));
    EXPECT_TRUE(config->renameProjectorConfig(L"b", L"a"));
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"x", L"a", L"c"}));
}

TEST(XMLConfigFile, MovesByOnePlace) {
    const auto config = abc();
    ProjectorConfig* const entry = config->getProjectorConfig(L"a");
    EXPECT_TRUE(config->moveProjectorConfig(L"a", 1));
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"b", L"a", L"c"}));
    EXPECT_EQ(config->getProjectorConfig(L"a"), entry);
    EXPECT_EQ(entriesText(*config),
              "\n    <Projector id=\"b\"/> <!-- about b -->\n    <!-- about a -->\n    <Projector id=\"a\"/>\n"
              "    <Projector id=\"c\"/>\n  ");
    EXPECT_TRUE(config->moveProjectorConfig(L"c", -1));
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"b", L"c", L"a"}));
    EXPECT_EQ(XMLConfigFile::parse(config->text(), "t")->getProjectorConfigIds(), (Ids{L"b", L"c", L"a"}));
}

TEST(XMLConfigFile, MovingThereAndBackRestoresTheFile) {
    const auto config = abc();
    const std::string before = config->text();
    for (const std::wstring id : {L"a", L"b"}) {
        EXPECT_TRUE(config->moveProjectorConfig(id, 1));
        EXPECT_NE(config->text(), before);
        EXPECT_TRUE(config->moveProjectorConfig(id, -1));
        EXPECT_EQ(config->text(), before);
    }
}

TEST(XMLConfigFile, EveryOtherMoveDoesNothing) {
    const auto config = abc();
    const std::string before = config->text();
    EXPECT_FALSE(config->moveProjectorConfig(L"a", -1));
    EXPECT_FALSE(config->moveProjectorConfig(L"c", 1));
    for (const int direction : {0, 2, -2, 2147483647, -2147483647 - 1}) {
        EXPECT_FALSE(config->moveProjectorConfig(L"b", direction));
    }
    EXPECT_FALSE(config->moveProjectorConfig(L"absent", 1));
    EXPECT_FALSE(config->moveProjectorConfig(L"absent", -1));
    EXPECT_EQ(config->text(), before);
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"a", L"b", L"c"}));
}

TEST(XMLConfigFile, RemovesAnEntryWithItsLine) {
    const auto config = abc();
    EXPECT_TRUE(config->removeProjectorConfig(L"a"));
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"b", L"c"}));
    EXPECT_EQ(config->getProjectorConfig(L"a"), nullptr);
    EXPECT_EQ(entriesText(*config),
              "\n    <!-- about a -->\n    <Projector id=\"b\"/> <!-- about b -->\n    <Projector id=\"c\"/>\n  ");
    EXPECT_FALSE(config->removeProjectorConfig(L"a"));
    EXPECT_TRUE(config->removeProjectorConfig(L"c"));
    EXPECT_TRUE(config->removeProjectorConfig(L"b"));
    EXPECT_TRUE(config->getProjectorConfigIds().empty());
    EXPECT_TRUE(XMLConfigFile::parse(config->text(), "t")->getProjectorConfigIds().empty());
}

TEST(XMLConfigFile, AddsAnEntryBehindTheOthers) {
    const auto config = abc();
    ProjectorConfig* const added = config->addProjectorConfig(L"d \u00e9\n");
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(config->getProjectorConfig(L"d \u00e9\n"), added);
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"a", L"b", L"c", L"d \u00e9\n"}));
    EXPECT_EQ(entriesText(*config).substr(entriesText(*config).find("<Projector id=\"c\"/>")),
              "<Projector id=\"c\"/>\n    <Projector id=\"d \u00e9&#10;\"/>\n  ");
    EXPECT_EQ(XMLConfigFile::parse(config->text(), "t")->getProjectorConfigIds(), config->getProjectorConfigIds());
}

TEST(XMLConfigFile, AddsTheListWhenThereIsNone) {
    const auto config = XMLConfigFile::parse("<Display version=\"1\">\n  <Units native=\"m\"/>\n</Display>", "t");
    config->addProjectorConfig(L"a")->setName(L"A");
    EXPECT_EQ(config->text(),
              HEAD +
                  "<Display version=\"1\">\n  <Units native=\"m\"/>\n  <Projectors>\n    <Projector id=\"a\">\n"
                  "      <Name>A</Name>\n    </Projector>\n  </Projectors>\n</Display>\n");
}

TEST(XMLConfigFile, AnIdIsAddedOnce) {
    const auto config = abc();
    EXPECT_EQ(refused(*config, [&] { config->addProjectorConfig(L"a"); }),
              L"A projector \"a\" is in the configuration already");
    EXPECT_EQ(refused(*config, [&] { config->addProjectorConfig(L""); }),
              L"A projector cannot be added with an empty id");
    EXPECT_EQ(refused(*config, [&] { config->addProjectorConfig(L"\x1f"); }),
              L"The id of a new projector holds a character that a configuration file cannot store");
}

TEST(XMLConfigFile, ARemovedIdCanBeAddedAgain) {
    const auto config = abc();
    EXPECT_TRUE(config->removeProjectorConfig(L"b"));
    EXPECT_NE(config->addProjectorConfig(L"b"), nullptr);
    EXPECT_EQ(config->getProjectorConfigIds(), (Ids{L"a", L"c", L"b"}));
}

TEST(XMLConfigFile, CommentsAndForeignContentSurviveEveryChange) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "t");
    EXPECT_TRUE(config->moveProjectorConfig(L"right", -1));
    EXPECT_TRUE(config->renameProjectorConfig(L"right", L"far right"));
    config->addProjectorConfig(L"third")->setDeviceSnippet(L"<Device/>");
    EXPECT_TRUE(config->removeProjectorConfig(L"far right"));
    const std::string text = config->text();
    for (const char* kept : {"<!-- The simulator dome of hall 2 -->", "<!-- the left one was replaced in spring -->",
                             "<!-- no device yet -->", "v:revision=\"7\"", "<v:LampHours>1234</v:LampHours>",
                             "<v:Notes><Free>anything</Free></v:Notes>", "xmlns:v=\"urn:example:vendor\""}) {
        EXPECT_NE(text.find(kept), std::string::npos) << kept;
    }
    EXPECT_EQ(XMLConfigFile::parse(text, "t")->getProjectorConfigIds(), (Ids{L"02000000000A", L"third"}));
}

TEST(XMLConfigFile, WhatNobodyChangedIsByteForByteTheSame) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "t");
    EXPECT_EQ(config->text(), fullConfiguration());
    config->addProjectorConfig(L"third");
    EXPECT_TRUE(config->removeProjectorConfig(L"third"));
    EXPECT_EQ(config->text(), fullConfiguration());
}

TEST(XMLConfigFile, PathsAreResolvedAgainstTheFolderOfTheName) {
    const auto pathOf = [](const std::string& name, const std::wstring& path) {
        return XMLConfigFile::parse(smallConfiguration(), name)->processPath(path);
    };
    EXPECT_EQ(pathOf("cfg/display.xml", L"a.obj"), L"cfg/a.obj");
    EXPECT_EQ(pathOf("cfg/display.xml", L""), L"cfg");
    EXPECT_EQ(pathOf("cfg/display.xml", L"/a.obj"), L"/a.obj");
    EXPECT_EQ(pathOf("display.xml", L"a.obj"), L"a.obj");
    EXPECT_EQ(pathOf("display.xml", L""), L"");
    EXPECT_EQ(pathOf("k\u00e4se/display.xml", L"%s.obj"), L"k\u00e4se/%s.obj");
}

TEST(XMLConfigFile, TenThousandProjectorsAreNoTroubleForIt) {
    std::string entries;
    for (int i = 0; i < 10000; ++i) {
        entries += "<Projector id=\"p" + std::to_string(i) +
                   "\"><Resolution width=\"1920\" height=\"1200\"/><Position x=\"1\" y=\"2\" z=\"3\"/></Projector>\n";
    }
    const auto start = std::chrono::steady_clock::now();
    const auto config = XMLConfigFile::parse(projectors(entries), "t");
    const Ids ids = config->getProjectorConfigIds();
    ASSERT_EQ(ids.size(), 10000U);
    for (const std::wstring& id : ids) {
        config->getProjectorConfig(id)->setName(L"n");
        ASSERT_TRUE(config->renameProjectorConfig(id, id + L"x"));
    }
    EXPECT_EQ(XMLConfigFile::parse(config->text(), "t")->getProjectorConfigIds().back(), L"p9999x");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
