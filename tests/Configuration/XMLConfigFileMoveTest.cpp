#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

/// Every element that names a file, with a relative and an absolute name, one in a namespace of somebody else, and
/// what must stay.
constexpr const char* DISPLAY = R"(<?xml version="1.0" encoding="UTF-8"?>
<Display xmlns:other="urn:other" version="1" lengthUnit="m" angleUnit="deg">
  <Units native="m"/>
  <Screen shape="Mesh" fileUnit="m">
    <ContentMesh file="meshes/dome.obj"/> <!-- file="meshes/dome.obj" -->
    <MeasuredMesh file="../measured.obj"/>
    <ModelCloud file="/scans/dome.pcd"/>
    <other:Backup file="dome.bak"/>
  </Screen>
  <TargetData type="CustomPlanar"/>
  <Projectors>
    <Projector id="left">
      <CustomPlanarMap file="left.map"/>
      <ProjectionModel name="BrownConrady" file="lenses/left.yml"/>
    </Projector>
  </Projectors>
</Display>
)";

std::string fileOfModel(const XMLConfigFile& config) {
    return Veltrani::toUtf8(config.getProjectorConfig(L"left")->getProjectionModelName());
}

class XMLConfigFileMove : public testing::Test {
protected:
    TemporaryFolder m_folder;
    std::string m_old = m_folder.write("shows/dome/display.xml", DISPLAY);
};

TEST_F(XMLConfigFileMove, RelativeNamesLeadToTheSameFilesFromAnotherFolder) {
    m_folder.makeFolder("fitted");
    const auto moved = XMLConfigFile::load(m_old)->movedTo(m_folder.file("fitted/new.xml"));
    std::string expected = DISPLAY;
    for (const auto& [before, after] :
         {std::pair("<ContentMesh file=\"", "<ContentMesh file=\"../shows/dome/"),
          std::pair("<MeasuredMesh file=\"", "<MeasuredMesh file=\"../shows/dome/"),
          std::pair("<CustomPlanarMap file=\"", "<CustomPlanarMap file=\"../shows/dome/"),
          std::pair("\"BrownConrady\" file=\"", "\"BrownConrady\" file=\"../shows/dome/")}) {
        const std::size_t place = expected.find(before);
        ASSERT_NE(place, std::string::npos) << before;
        expected.replace(place, std::string(before).size(), after);
    }
    EXPECT_EQ(moved->text(), expected) << "nothing else changes";
    EXPECT_EQ(fileOfModel(*moved), "BrownConrady:" + m_folder.file("fitted/../shows/dome/lenses/left.yml"));
    EXPECT_TRUE(std::filesystem::equivalent(m_folder.file("fitted/../shows/dome"), m_folder.file("shows/dome")));
}

TEST_F(XMLConfigFileMove, WithinTheFolderNothingChanges) {
    const auto config = XMLConfigFile::load(m_old);
    const auto moved = config->movedTo(m_folder.file("shows/dome/new.xml"));
    EXPECT_EQ(moved->text(), config->text());
    EXPECT_EQ(fileOfModel(*moved), fileOfModel(*config));
    moved->save(m_folder.file("shows/dome/new.xml"));
    EXPECT_EQ(m_folder.read("shows/dome/new.xml"), config->text());
}

TEST_F(XMLConfigFileMove, ChangesMoveAlongAndTheOldOneStays) {
    m_folder.makeFolder("fitted");
    const auto config = XMLConfigFile::load(m_old);
    config->getProjectorConfig(L"left")->setName(L"Left");
    const std::string before = config->text();
    const auto moved = config->movedTo(m_folder.file("fitted/new.xml"));
    EXPECT_EQ(moved->getProjectorConfig(L"left")->getName(), L"Left");
    moved->getProjectorConfig(L"left")->setName(L"Right");
    EXPECT_EQ(config->text(), before);
    EXPECT_EQ(m_folder.read("shows/dome/display.xml"), DISPLAY);
}

TEST_F(XMLConfigFileMove, AFolderThatIsNotThereIsRefused) {
    const auto config = XMLConfigFile::load(m_old);
    EXPECT_THROW(static_cast<void>(config->movedTo(m_folder.file("gone/new.xml"))), VeltraniException);
}

}  // namespace
