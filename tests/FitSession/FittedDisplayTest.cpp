#include "FitSession/FittedDisplay.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ConfigurationChangedException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/FitResult.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::LensNumbers;
using Veltrani::DisplayFit::ChannelFit;
using Veltrani::DisplayFit::ChannelValues;
using Veltrani::FitSession::FittedDisplay;
using P3 = Point<double, 3>;

constexpr const char* DISPLAY = R"(<?xml version="1.0" encoding="UTF-8"?>
<Display version="1" lengthUnit="mm" angleUnit="deg">
  <Units native="m"/>
  <TargetData type="ProjectorCentric"/>
  <Projectors>
    <Projector id="a/b">
      <ProjectionModel name="BrownConrady" file="lens.yml"/> <!-- of the maker -->
      <Orientation z="10.0" x="0" y="0"/>
      <Position x="0" y="0" z="1900"/>
    </Projector>
    <Projector id="right">
      <ScreenArea left="0" right="1" bottom="0" top="1"/>
      <Frustum left="-20" right="20" bottom="-12" top="12"/>
    </Projector>
  </Projectors>
</Display>
)";

LensNumbers lens() {
    LensNumbers lens;
    lens.imageWidth = 1920;
    lens.imageHeight = 1200;
    lens.fx = lens.fy = 2000;
    lens.cx = 960;
    lens.cy = 600;
    lens.distortion = {-0.1, 0.05, 0, 0, 0};
    return lens;
}

/// As a fit returns it that has solved what `solved` says.
ChannelFit fitOf(const XMLConfigFile& config, const char* id, const Veltrani::DisplayFit::SolvedGroups& solved) {
    ChannelFit fit;
    fit.projectorId = id;
    fit.solved = solved;
    fit.isSolved = true;
    fit.before = ChannelValues::of(*config.getProjectorConfig(Veltrani::fromUtf8(id)));
    fit.after = fit.before;
    fit.after.position = {0.5, -0.25, 2};
    fit.after.orientation = {0.25, 0.125, -0.0625};
    fit.after.frustum = {-0.375, 0.375, -0.25, 0.25};
    fit.after.area = {0.125, 0.875, 0.0625, 0.9375};
    return fit;
}

class FittedDisplayTest : public testing::Test {
protected:
    [[nodiscard]] std::vector<std::string> files(const std::string& folder = "dome") const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.file(folder))) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    TemporaryFolder m_folder;
    std::string m_file = m_folder.write("dome/display.xml", DISPLAY);
    std::string m_lensFile = m_folder.write("dome/lens.yml", Veltrani::FitSession::LensFile::textOf(lens()));
    std::unique_ptr<XMLConfigFile> m_config = XMLConfigFile::load(m_file);
};

TEST_F(FittedDisplayTest, PutsInWhatWasSolvedAndNothingElse) {
    FittedDisplay fitted(*m_config, "", m_file);
    fitted.take(fitOf(*m_config, "right", {.orientation = true, .frustum = true}));
    fitted.save();
    EXPECT_EQ(fitted.path(), m_file);
    EXPECT_THAT(fitted.lensFiles(), IsEmpty());
    const auto saved = XMLConfigFile::load(m_file);
    const ProjectorConfig& right = *saved->getProjectorConfig(L"right");
    EXPECT_NEAR(right.getOrientationZ(), 0.25, 1e-16);
    EXPECT_NEAR(right.getOrientationX(), 0.125, 1e-16);
    EXPECT_NEAR(right.getOrientationY(), -0.0625, 1e-16);
    EXPECT_NEAR(right.getFrustumLeft(), -0.375, 1e-16);
    EXPECT_NEAR(right.getFrustumRight(), 0.375, 1e-16);
    EXPECT_NEAR(right.getFrustumBottom(), -0.25, 1e-16);
    EXPECT_NEAR(right.getFrustumTop(), 0.25, 1e-16);
    EXPECT_EQ(right.getPosition(), (P3{0, 0, 0})) << "held";
    EXPECT_EQ(right.getScreenLeft(), 0) << "held";
    EXPECT_THAT(m_folder.read("dome/display.xml"), HasSubstr("<!-- of the maker -->\n      <Orientation z=\"10.0\""));
    EXPECT_THAT(files(), ElementsAre("display.xml", "lens.yml"));
}

TEST_F(FittedDisplayTest, KeepsLensFilesForAConfigurationThatIsSavedLater) {
    {
        FittedDisplay fitted(*m_config, "", m_file);
        ChannelFit fit = fitOf(*m_config, "a/b", {.frustum = true, .distortion = true});
        fit.after.lens = lens();
        fitted.take(fit);
        fitted.keep();
    }
    EXPECT_THAT(files(), ElementsAre("display-a_b.yml", "display.xml", "lens.yml"));
    EXPECT_EQ(m_folder.read("dome/display.xml"), DISPLAY) << "not written yet";
    m_config->save(m_file);
    EXPECT_THAT(m_folder.read("dome/display.xml"), HasSubstr("file=\"display-a_b.yml\""));
}

TEST_F(FittedDisplayTest, PutsInPositionsAndAreas) {
    FittedDisplay fitted(*m_config, "", m_file);
    fitted.take(fitOf(*m_config, "right", {.position = true, .area = true}));
    EXPECT_EQ(m_config->getProjectorConfig(L"right")->getPosition(), (P3{0.5, -0.25, 2}));
    EXPECT_EQ(m_config->getProjectorConfig(L"right")->getScreenLeft(), 0.125);
    EXPECT_EQ(m_config->getProjectorConfig(L"right")->getScreenRight(), 0.875);
    EXPECT_EQ(m_config->getProjectorConfig(L"right")->getScreenBottom(), 0.0625);
    EXPECT_EQ(m_config->getProjectorConfig(L"right")->getScreenTop(), 0.9375);
    EXPECT_NEAR(m_config->getProjectorConfig(L"right")->getFrustumLeft(), -20 * 3.14159265358979 / 180, 1e-12)
        << "held";
}

TEST_F(FittedDisplayTest, WhatWasNotSolvedChangesNothing) {
    ChannelFit fit = fitOf(*m_config, "right", {.position = true});
    fit.isSolved = false;
    const std::string before = m_config->text();
    FittedDisplay fitted(*m_config, "", m_file);
    fitted.take(fit);
    EXPECT_EQ(m_config->text(), before);
}

TEST_F(FittedDisplayTest, ALensGetsAFileOfItsOwnBesideTheNewConfiguration) {
    m_folder.makeFolder("fitted");
    ChannelFit fit = fitOf(*m_config, "a/b", {.orientation = true, .frustum = true, .distortion = true});
    fit.after.lens = lens();
    fit.after.lens->fx = 1999.5;
    FittedDisplay fitted(*m_config, m_folder.file("fitted/new.xml"), m_file);
    fitted.take(fit);
    EXPECT_THAT(fitted.lensFiles(), ElementsAre(m_folder.file("fitted/new-a_b.yml")));
    EXPECT_FALSE(std::filesystem::exists(m_folder.file("fitted/new.xml"))) << "the lens comes first";
    fitted.save();
    EXPECT_THAT(files("fitted"), ElementsAre("new-a_b.yml", "new.xml"));
    const auto saved = XMLConfigFile::load(m_folder.file("fitted/new.xml"));
    const ProjectorConfig& left = *saved->getProjectorConfig(L"a/b");
    EXPECT_EQ(LensNumbers::of(left.getProjectionModelName()), fit.after.lens);
    EXPECT_THAT(saved->text(),
                HasSubstr("<ProjectionModel name=\"BrownConrady\" file=\"new-a_b.yml\"/> <!-- of the maker"));
    EXPECT_EQ(m_folder.read("dome/display.xml"), DISPLAY) << "the old set is as it was";
    EXPECT_EQ(m_folder.read("dome/lens.yml"), Veltrani::FitSession::LensFile::textOf(lens()));
}

TEST_F(FittedDisplayTest, ALensThatIsHeldIsNamedFromTheNewFolder) {
    m_folder.makeFolder("fitted");
    ChannelFit fit = fitOf(*m_config, "a/b", {.orientation = true});
    fit.after.lens = lens();
    FittedDisplay fitted(*m_config, m_folder.file("fitted/new.xml"), m_file);
    fitted.take(fit);
    fitted.save();
    EXPECT_THAT(m_folder.read("fitted/new.xml"), HasSubstr("file=\"../dome/lens.yml\""));
    EXPECT_TRUE(LensNumbers::of(
        XMLConfigFile::load(m_folder.file("fitted/new.xml"))->getProjectorConfig(L"a/b")->getProjectionModelName()));
}

TEST_F(FittedDisplayTest, WithoutASaveNothingIsLeft) {
    {
        FittedDisplay fitted(*m_config, m_folder.file("dome/new.xml"), m_file);
        ChannelFit fit = fitOf(*m_config, "a/b", {.distortion = true});
        fit.after.lens = lens();
        fitted.take(fit);
        EXPECT_THAT(files(), ElementsAre("display.xml", "lens.yml", "new-a_b.yml"));
    }
    EXPECT_THAT(files(), ElementsAre("display.xml", "lens.yml"));
    EXPECT_EQ(m_folder.read("dome/display.xml"), DISPLAY);
}

TEST_F(FittedDisplayTest, AChangeOfSomebodyElseIsNotLost) {
    FittedDisplay fitted(*m_config, "", m_file);
    ChannelFit fit = fitOf(*m_config, "a/b", {.distortion = true});
    fit.after.lens = lens();
    fitted.take(fit);
    const std::string changed = m_folder.write("dome/display.xml", std::string(DISPLAY) + "<!-- changed -->\n");
    EXPECT_THROW(fitted.save(), ConfigurationChangedException);
    EXPECT_EQ(m_folder.read("dome/display.xml"), std::string(DISPLAY) + "<!-- changed -->\n");
}

TEST_F(FittedDisplayTest, ALensThatStaysAsItWasGetsNoFile) {
    const std::string before = m_config->text();
    FittedDisplay fitted(*m_config, "", m_file);
    ChannelFit fit = fitOf(*m_config, "a/b", {.frustum = true, .distortion = true});
    fit.before.lens = fit.after.lens = lens();
    fitted.take(fit);
    EXPECT_FALSE(fitted.isChanged());
    EXPECT_EQ(m_config->text(), before);
    EXPECT_THAT(fitted.lensFiles(), IsEmpty());
    fit.after.lens->cy += 1e-9;
    fitted.take(fit);
    EXPECT_TRUE(fitted.isChanged());
    EXPECT_THAT(fitted.lensFiles(), ElementsAre(m_folder.file("dome/display-a_b.yml")));
}

TEST_F(FittedDisplayTest, ValuesThatRoundToWhatIsThereChangeNothing) {
    FittedDisplay fitted(*m_config, "", m_file);
    ChannelFit fit = fitOf(*m_config, "right", {.orientation = true, .frustum = true});
    fit.after = fit.before;
    fitted.take(fit);
    EXPECT_FALSE(fitted.isChanged());
    fit.after.frustum.top += 1e-9;
    fitted.take(fit);
    EXPECT_TRUE(fitted.isChanged());
}

// What stands before the first dot of a name, and dots of folders, are no ending.
TEST_F(FittedDisplayTest, LensFilesAreNamedAfterTheConfigurationWithoutItsEnding) {
    m_folder.makeFolder("a.b");
    const auto lensOf = [this](const std::string& path) {
        FittedDisplay fitted(*m_config, m_folder.file(path), m_file);
        ChannelFit fit = fitOf(*m_config, "a/b", {.distortion = true});
        fit.after.lens = lens();
        fitted.take(fit);
        return fitted.lensFiles().at(0).substr(m_folder.file("").size());
    };
    EXPECT_EQ(lensOf("a.b/c"), "a.b/c-a_b.yml");
    EXPECT_EQ(lensOf("a.b/c.xml"), "a.b/c-a_b.yml");
    EXPECT_EQ(lensOf("a.b/c.old.xml"), "a.b/c.old-a_b.yml");
    EXPECT_EQ(lensOf("a.b/.xml"), "a.b/.xml-a_b.yml");
    EXPECT_EQ(lensOf(".xml"), ".xml-a_b.yml");
    EXPECT_EQ(lensOf("a.b/c."), "a.b/c-a_b.yml");
}

}  // namespace
