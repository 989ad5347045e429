#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "Samples.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace {

/// Everything that a configuration answers, as comparable values.
struct Answers {
    std::vector<std::wstring> texts;
    std::vector<double> numbers;
    bool operator==(const Answers&) const = default;

    void add(const Point<double, 3>& point) { numbers.insert(numbers.end(), {point[0], point[1], point[2]}); }
};

void addScreen(Answers& answers, const IScreenConfig& screen) {
    answers.texts.insert(answers.texts.end(),
                         {screen.getShape(), screen.getContentMeshFile(0), screen.getContentMeshFile(1),
                          screen.getMeasuredMeshFile(0), screen.getModelPcdFile(0), screen.getImportOrientationParam1(),
                          screen.getImportOrientationParam2(), screen.getUnitName()});
    answers.add(screen.getEyePoint());
    answers.add(screen.getCentre());
    answers.add(screen.getOrientation());
    for (const auto& rail : {screen.getLowerRail(), screen.getUpperRail()}) {
        for (const auto& point : rail) {
            answers.add(point);
        }
    }
    answers.numbers.insert(answers.numbers.end(), {screen.getScale(), screen.getRadius(), screen.getWidth(),
                                                   screen.getHeight(), screen.getAzimuthMin(), screen.getAzimuthMax(),
                                                   screen.getElevationMin(), screen.getElevationMax()});
}

void addTarget(Answers& answers, const TargetLocatorConfig& target) {
    answers.texts.push_back(target.getTargetDataType());
    answers.add(target.getTargetPosition());
    answers.add(target.getMirrorOrientation());
    answers.add(target.getMirrorPosition());
    answers.numbers.push_back(target.getMirrorRadius());
    for (const auto& table : {target.getYawTable(), target.getPitchTable()}) {
        for (const auto& pair : table) {
            answers.numbers.insert(answers.numbers.end(), {pair.first, pair.second});
        }
    }
}

void addProjector(Answers& answers, const ProjectorConfig& entry) {
    answers.texts.insert(
        answers.texts.end(),
        {entry.getIdentity(), entry.getSectionID(), entry.getName(), entry.getOldUID(), entry.getDeviceSnippet(),
         entry.getCustomPlanarFile(), entry.getProjectionModelName(), entry.getText(L"Note"), entry.getAllowed()});
    answers.add(entry.getPosition());
    for (int i = 0; i < 4; ++i) {
        answers.numbers.push_back(entry.getPondOfMirror(i));
    }
    answers.numbers.insert(
        answers.numbers.end(),
        {static_cast<double>(entry.getWidth()), static_cast<double>(entry.getHeight()), entry.getOrientationZ(),
         entry.getOrientationX(), entry.getOrientationY(), entry.getFrustumTop(), entry.getFrustumBottom(),
         entry.getFrustumLeft(), entry.getFrustumRight(), entry.getScreenLeft(), entry.getScreenRight(),
         entry.getScreenTop(), entry.getScreenBottom(), entry.getLayoutXMin(), entry.getLayoutXMax(),
         entry.getLayoutYMin(), entry.getLayoutYMax()});
}

Answers answersOf(const XMLConfigFile& config) {
    Answers answers;
    answers.texts.push_back(config.getNativeUnitsConfig()->getUnitName());
    if (config.getScreenConfig() != nullptr) {
        addScreen(answers, *config.getScreenConfig());
    }
    if (config.getTargetLocatorConfig() != nullptr) {
        addTarget(answers, *config.getTargetLocatorConfig());
    }
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        addProjector(answers, *config.getProjectorConfig(id));
    }
    return answers;
}

std::size_t entriesOf(const std::string& folder) {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
        ++count;
    }
    return count;
}

TEST(XMLConfigFileSave, EveryValueSurvivesTheRoundTrip) {
    const TemporaryFolder folder;
    for (const std::string& text : validConfigurations()) {
        const std::string path = folder.write("display.xml", text);
        const auto config = XMLConfigFile::load(path);
        const Answers before = answersOf(*config);
        config->save(path);
        EXPECT_TRUE(answersOf(*XMLConfigFile::load(path)) == before) << text;
        EXPECT_EQ(folder.read("display.xml"), config->text());
    }
}

TEST(XMLConfigFileSave, EveryChangeSurvivesTheRoundTrip) {
    const TemporaryFolder folder;
    const auto config = XMLConfigFile::load(folder.write("display.xml", fullConfiguration()));
    ProjectorConfig* const right = config->getProjectorConfig(L"right");
    right->setName(L" right\n");
    right->setDeviceSnippet(L"<Device type=\"PJLink\"/>");
    right->setWidth(2048);
    right->setHeight(1080);
    right->setPondOfMirror(2, 7);
    EXPECT_TRUE(config->renameProjectorConfig(L"right", L"02000000000B"));
    EXPECT_TRUE(config->moveProjectorConfig(L"02000000000B", -1));
    config->addProjectorConfig(L"third")->setName(L"\u5c4f");
    config->save(folder.file("display.xml"));
    const auto again = XMLConfigFile::load(folder.file("display.xml"));
    EXPECT_TRUE(answersOf(*again) == answersOf(*config));
    EXPECT_EQ(again->getProjectorConfigIds(), (std::vector<std::wstring>{L"02000000000B", L"02000000000A", L"third"}));
}

TEST(XMLConfigFileSave, DoublesSurviveExactly) {
    const TemporaryFolder folder;
    const std::vector<std::pair<std::string, double>> values{{"0.1", 0.1},
                                                             {"1.7976931348623157e308", 1.7976931348623157e308},
                                                             {"4.9406564584124654e-324", 4.9406564584124654e-324},
                                                             {"0.30000000000000004", 0.1 + 0.2},
                                                             {"-123456789.12345679", -123456789.12345679}};
    for (const auto& [text, value] : values) {
        const std::string path =
            folder.write("a.xml", projectors("<Projector id=\"a\"><ScreenArea left=\"" + text + "\"/><Position x=\"" +
                                             text + "\" y=\"0\" z=\"0\"/></Projector>"));
        XMLConfigFile::load(path)->save(path);
        const auto config = XMLConfigFile::load(path);
        EXPECT_EQ(config->getProjectorConfig(L"a")->getScreenLeft(), value);
        EXPECT_EQ(config->getProjectorConfig(L"a")->getPosition()[0], value);
        EXPECT_NE(folder.read("a.xml").find("\"" + text + "\""), std::string::npos) << "the text itself";
    }
}

TEST(XMLConfigFileSave, SavingElsewhereKeepsTheFolder) {
    const TemporaryFolder folder;
    const auto config = XMLConfigFile::load(folder.write("one/display.xml", smallConfiguration()));
    const std::wstring base = config->processPath(L"");
    folder.makeFolder("two");
    config->save(folder.file("two/display.xml"));
    EXPECT_EQ(config->processPath(L""), base);
}

TEST(XMLConfigFileSave, AFailedSaveLeavesTheOldFileAndNothingBeside) {
    const TemporaryFolder folder;
    const auto config = XMLConfigFile::load(folder.write("display.xml", fullConfiguration()));
    config->addProjectorConfig(L"third");
    for (const std::string& path : {folder.file("display.xml/below"), folder.file("none/display.xml"), folder.path(),
                                    std::string(), std::string("/dev/full"), std::string("/").append(5000, 'x')}) {
        EXPECT_THROW(config->save(path), VeltraniException) << path;
    }
    EXPECT_EQ(folder.read("display.xml"), fullConfiguration());
    EXPECT_EQ(entriesOf(folder.path()), 1U);
}

TEST(XMLConfigFileSave, WhatCouldNotBeReadAgainIsNotWritten) {
    const TemporaryFolder folder;
    const auto config = XMLConfigFile::load(folder.write("display.xml", fullConfiguration()));
    config->addProjectorConfig(std::wstring(11'000'000, L'x'));  // longer than the parser lets an attribute be
    try {
        config->save(folder.file("display.xml"));
        FAIL() << "nothing was thrown";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message.rfind(L"The configuration cannot be saved, it could not be read again: ", 0), 0U);
    }
    EXPECT_EQ(folder.read("display.xml"), fullConfiguration());
}

}  // namespace
