#include "ScreenManager/ScreenManager.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
#include "DravixDiagnostics/DravixDiagnostics.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/ObjLoadException.h"
#include "PcdSamples.h"
#include "ScreenFixture.h"
#include "ScreenManagerTestAccess.h"
#include "support/ConfigManagerDouble.h"
#include "support/ScreenConfigDouble.h"
#include "support/TemporaryFolder.h"
#include "support/UnitsConfigDouble.h"

#include <gmock/gmock.h>
#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <stdexcept>

namespace {

using Access = ScreenManagerTestAccess;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 0 1\nf 1 2 3\n";

class ScreenManagerTest : public ScreenFixture {
protected:
    ScreenManagerTest() {
        config.screen = &screen;
        config.units = &units;
        DravixDiagnostics::setDataDirectory(Veltrani::fromUtf8(folder.file("data")));
    }
    ~ScreenManagerTest() override { DravixDiagnostics::setDataDirectory(L""); }

    std::wstring write(const std::string& name, const std::string& content) const {
        return Veltrani::fromUtf8(folder.write(name, content));
    }
    void describeFlatScreen() {
        screen.shape = BaseConfig::SHAPE_FLAT;
        screen.width = 4.0;
        screen.height = 2.0;
    }
    void describeMesh() {
        screen.shape = BaseConfig::SHAPE_MESH;
        screen.contentMeshFile = write("dome.obj", TRIANGLE);
    }
    [[nodiscard]] bool archived(const std::string& name) const {
        return std::filesystem::exists(folder.file("data/screens/" + name));
    }
    /// The records with these words, as "LEVEL message".
    [[nodiscard]] std::vector<std::string> messagesWith(const std::string& words) const {
        std::vector<std::string> found;
        for (const std::string& message : log.messages()) {
            if (message.find(words) != std::string::npos) {
                found.push_back(message);
            }
        }
        return found;
    }

    TemporaryFolder folder;
    ScreenConfigDouble screen{&trace};
    UnitsConfigDouble units;
    ConfigManagerDouble config;
    ScreenManager& manager = *ScreenManager::getInstance();
};

TEST_F(ScreenManagerTest, TheInstanceIsMadeOnceAndSaysSo) {
    EXPECT_EQ(ScreenManager::getInstance(), &manager);
    EXPECT_THAT(log.records(), IsEmpty());
    ScreenManager::deleteInstance();
    EXPECT_FALSE(Access::hasInstance());
    ScreenManager* const next = ScreenManager::getInstance();
    ASSERT_THAT(log.messages(), ElementsAre("INFO ScreenManager::ScreenManager()"));
    EXPECT_EQ(log.records()[0].logger, "Dravix.ScreenManager.ScreenManager");
    EXPECT_EQ(log.records()[0].line, -1) << "a plain record has no location";
    EXPECT_EQ(Access::id(next->getScreen()), "Singular");
    EXPECT_EQ(next->getScreenGeometry(), nullptr);
}

TEST_F(ScreenManagerTest, DeletingTwiceIsHarmlessAndClearsTheScreen) {
    const auto geometry = installGeometry();
    ScreenManager::deleteInstance();
    EXPECT_EQ(geometry.use_count(), 1);
    ScreenManager::deleteInstance();
    EXPECT_FALSE(Access::hasInstance());
}

TEST_F(ScreenManagerTest, ConstantsAreThoseThatCallersKnow) {
    EXPECT_EQ(ScreenManager::CONTENT_SCREEN, 0);
    EXPECT_EQ(ScreenManager::MEASURED_SCREEN, 1);
    EXPECT_EQ(ScreenManager::PCD_SCREEN, 2);
    EXPECT_EQ(ScreenManager::k_FAILED_TO_LOAD_SCREEN_FILE, L"Failed to load screen file");
    EXPECT_EQ(ScreenManager::k_UNABLE_TO_LOAD, L"Unable to load");
}

TEST_F(ScreenManagerTest, EveryIdLeadsToTheOneScreen) {
    EXPECT_EQ(&manager.getScreen(StrongId<std::string, ScreenIdTag>("any")), &manager.getScreen());
}

TEST_F(ScreenManagerTest, GeometriesAreThoseOfTheScreen) {
    const auto content = installGeometry();
    EXPECT_EQ(manager.getScreenGeometry(), content);
    const auto measured = std::make_shared<ScreenGeometryDouble>();
    manager.getScreen().setMeasured(measured);
    EXPECT_EQ(manager.getScreenGeometry(), measured);
    EXPECT_EQ(manager.getContentModelScreenGeometry(), content);
    EXPECT_EQ(manager.getMeasuredScreenGeometry(), measured);
    manager.resetScreen();
    EXPECT_EQ(manager.getScreenGeometry(), nullptr);
    EXPECT_EQ(ScreenManager::getInstance(), &manager) << "the instance stays";
}

TEST_F(ScreenManagerTest, AReadyGeometryReplacesOneWithOtherDataOnly) {
    const auto first = installGeometry();
    first->recordTo(&trace);
    const auto same = std::make_shared<ScreenGeometryDouble>(&trace, "new");
    manager.setScreenGeometry(same);
    EXPECT_EQ(manager.getScreenGeometry(), first);
    EXPECT_THAT(trace.lines(), ElementsAre("new.getUniqueDataHash()", "geometry.getUniqueDataHash()"));

    const auto other = std::make_shared<ScreenGeometryDouble>();
    other->hash[19] = 1;
    manager.setScreenGeometry(other);
    EXPECT_EQ(manager.getScreenGeometry(), other);
    manager.setScreenGeometry(nullptr);
    EXPECT_EQ(manager.getScreenGeometry(), nullptr);
    manager.setScreenGeometry(nullptr);
    EXPECT_EQ(manager.getScreenGeometry(), nullptr);
}

TEST_F(ScreenManagerTest, TheContentRefreshesItselfFromTheDescription) {
    manager.updateScreenGeometry(&config);
    EXPECT_EQ(config.calls("getScreenConfig"), 0U) << "nothing without a content screen";
    const auto content = installGeometry();
    const auto measured = std::make_shared<ScreenGeometryDouble>();
    manager.getScreen().setMeasured(measured);
    manager.updateScreenGeometry(&config);
    EXPECT_THAT(trace.lines(), ElementsAre("geometry.updateGeometry(set)"));
    EXPECT_EQ(measured->calls("updateGeometry"), 0U);

    config.screen = nullptr;
    manager.updateScreenGeometry(&config);
    manager.updateScreenGeometry(nullptr);
    EXPECT_EQ(content->calls("updateGeometry"), 1U) << "nothing without a description";
}

TEST_F(ScreenManagerTest, AnUnchangedFlatScreenIsRebuiltOnlyByForce) {
    describeFlatScreen();
    manager.setScreenGeometry(&config, false);
    const auto first = manager.getScreenGeometry();
    EXPECT_EQ(first->getUniqueDataHash(), FlatScreen::calcUniqueDataHash(&screen));
    EXPECT_THAT(messagesWith("Successfully"), ElementsAre("INFO Successfully loaded Content screen: Flat"));

    log.clear();
    manager.setScreenGeometry(&config, false);
    EXPECT_EQ(manager.getScreenGeometry(), first);
    EXPECT_THAT(messagesWith("Successfully"), IsEmpty());

    manager.setScreenGeometry(&config, true);
    EXPECT_NE(manager.getScreenGeometry(), first);
    EXPECT_THAT(messagesWith("Successfully"), ElementsAre("INFO Successfully loaded Content screen: Flat"));

    const auto second = manager.getScreenGeometry();
    screen.width = 5.0;
    manager.setScreenGeometry(&config, false);
    EXPECT_NE(manager.getScreenGeometry(), second) << "a changed description rebuilds";
    EXPECT_FALSE(std::filesystem::exists(folder.file("data"))) << "there is no file to archive";
}

TEST_F(ScreenManagerTest, CreatingAFlatScreenTellsWhetherItWasRebuilt) {
    describeFlatScreen();
    EXPECT_TRUE(Access::createScreenIfDifferent(manager, &config, false));
    EXPECT_FALSE(Access::createScreenIfDifferent(manager, &config, false));
    EXPECT_TRUE(Access::createScreenIfDifferent(manager, &config, true));
    EXPECT_THAT(log.messages(), ElementsAre("INFO About to createScreenIfDifferent(Flat)...",
                                            "INFO About to createScreenIfDifferent(Flat)...",
                                            "INFO About to createScreenIfDifferent(Flat)..."));
    EXPECT_EQ(log.records()[0].line, -1) << "a plain record has no location";
}

TEST_F(ScreenManagerTest, AMeshIsReadAgainButKeptWhenItsBytesAreTheSame) {
    describeMesh();
    manager.setScreenGeometry(&config, false);
    const auto first = manager.getScreenGeometry();
    const std::string success = "INFO Successfully loaded Content screen: " + Veltrani::toUtf8(screen.contentMeshFile);
    EXPECT_THAT(messagesWith("Successfully"), ElementsAre(success));
    manager.setScreenGeometry(&config, false);
    EXPECT_EQ(manager.getScreenGeometry(), first);
    EXPECT_THAT(messagesWith("Successfully"), ElementsAre(success, success));
    manager.setScreenGeometry(&config, true);
    EXPECT_NE(manager.getScreenGeometry(), first);
}

TEST_F(ScreenManagerTest, TheMeasuredMeshIsForcedTogetherWithTheContent) {
    describeFlatScreen();
    screen.measuredMeshFile = write("measured.obj", TRIANGLE);
    manager.setScreenGeometry(&config, false);
    const auto first = manager.getMeasuredScreenGeometry();
    manager.setScreenGeometry(&config, false);
    EXPECT_EQ(manager.getMeasuredScreenGeometry(), first);
    manager.setScreenGeometry(&config, true);
    EXPECT_NE(manager.getMeasuredScreenGeometry(), first);
}

TEST_F(ScreenManagerTest, AMeshWithoutAFileIsADefaultFlatScreenWithoutARecord) {
    screen.shape = BaseConfig::SHAPE_MESH;
    manager.setScreenGeometry(&config, false);
    ASSERT_NE(manager.getScreenGeometry(), nullptr);
    EXPECT_EQ(manager.getScreenGeometry()->getUniqueDataHash(), FlatScreen().getUniqueDataHash());
    EXPECT_THAT(messagesWith("Successfully"), IsEmpty());
}

TEST_F(ScreenManagerTest, AFullDescriptionIsReadLoggedAndArchivedStepByStep) {
    describeMesh();
    screen.measuredMeshFile = write("measured.obj", TRIANGLE);
    screen.modelPcdFile = write("cloud.pcd", pcd::ascii({{1, 2, 3}}));
    screen.unitName = L"mm";
    trace.clear();
    manager.setScreenGeometry(&config, false);
    const auto record = [](const std::string& text) { return "INFO Dravix.ScreenManager.ScreenManager: " + text; };
    EXPECT_THAT(trace.lines(),
                ElementsAre("screen.getShape()", "screen.getShape()", "screen.getUnitName()", "screen.getShape()",
                            "screen.getImportOrientationParam1()", "screen.getImportOrientationParam2()",
                            "screen.getShape()", record("About to createScreenIfDifferent(Mesh)..."),
                            "screen.getContentMeshFile(0)", "screen.getContentMeshFile(0)",
                            record("Successfully loaded Content screen: " + folder.file("dome.obj")),
                            "screen.getContentMeshFile(0)", "screen.getMeasuredMeshFile(0)",
                            record("Successfully loaded Measured OBJ screen: " + folder.file("measured.obj")),
                            "screen.getModelPcdFile(0)",
                            record("Successfully loaded Point Cloud Data screen: " + folder.file("cloud.pcd"))));
    for (const char* name : {"dome.obj", "measured.obj", "cloud.pcd"}) {
        EXPECT_TRUE(archived(name)) << name;
    }
    for (std::size_t i = 1; i < log.records().size(); ++i) {
        EXPECT_THAT(log.records()[i].file, EndsWith("ScreenManager.cpp"));
        EXPECT_THAT(log.records()[i].function, HasSubstr("setScreenGeometry"));
        EXPECT_GT(log.records()[i].line, 0);
    }
    EXPECT_FLOAT_EQ(manager.getScreen().getScale(), 0.001F);
    EXPECT_FLOAT_EQ(manager.getScreen().getModelPCD()->at(0).z, 0.002F) << "the file is scaled, and its up is Y";
}

TEST_F(ScreenManagerTest, MeasuredAndCloudAreReadWhateverBecameOfTheContent) {
    describeFlatScreen();
    screen.measuredMeshFile = write("measured.obj", TRIANGLE);
    screen.modelPcdFile = write("cloud.pcd", pcd::ascii({{1, 2, 3}}));
    manager.setScreenGeometry(&config, false);
    const auto cloud = manager.getScreen().getModelPCD();
    log.clear();
    manager.setScreenGeometry(&config, false);
    EXPECT_THAT(messagesWith("Successfully"), SizeIs(2));
    EXPECT_NE(manager.getScreen().getModelPCD(), cloud) << "the cloud is read at every call";

    log.clear();
    screen.measuredMeshFile.clear();
    screen.modelPcdFile.clear();
    manager.setScreenGeometry(&config, false);
    EXPECT_EQ(manager.getMeasuredScreenGeometry(), nullptr);
    EXPECT_EQ(manager.getScreen().getModelPCD(), nullptr);
    EXPECT_THAT(messagesWith("Successfully"), IsEmpty());
}

TEST_F(ScreenManagerTest, WithDiagnosticsOffNothingIsArchivedUntilTheNextInstance) {
    describeMesh();
    screen.measuredMeshFile = write("measured.obj", TRIANGLE);
    screen.modelPcdFile = write("cloud.pcd", pcd::ascii({{1, 2, 3}}));
    manager.disableDiagnostics();
    manager.setScreenGeometry(&config, false);
    EXPECT_THAT(messagesWith("Successfully"), SizeIs(3));
    EXPECT_FALSE(std::filesystem::exists(folder.file("data")));

    ScreenManager::deleteInstance();
    ScreenManager::getInstance()->setScreenGeometry(&config, false);
    EXPECT_TRUE(archived("dome.obj"));
}

TEST_F(ScreenManagerTest, AFileThatCannotBeArchivedIsAFault) {
    describeMesh();
    folder.write("data", "a file where the folder should be");
    EXPECT_THROW(manager.setScreenGeometry(&config, false), VeltraniException);
    EXPECT_THAT(messagesWith("Loading screen geometry failed: Unable to archive file"), SizeIs(1));
    EXPECT_NE(manager.getScreenGeometry(), nullptr) << "what was done before stays";
}

TEST_F(ScreenManagerTest, AnUnknownShapeIsAWarningAndAnExceptionWithoutLocation) {
    screen.shape = L"100%s B\u00fchne";
    const std::string text =
        "ERROR: ScreenManager::createContentScreenIfDifferent(), screen type (100%s B\xc3\xbchne) not found";
    try {
        manager.setScreenGeometry(&config, false);
        FAIL() << "accepted";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(Veltrani::toUtf8(fault.message), text);
        EXPECT_EQ(fault.line, -1);
        EXPECT_EQ(fault.file, "");
    }
    ASSERT_THAT(log.messages(), ElementsAre("INFO About to createScreenIfDifferent(100%s B\xc3\xbchne)...",
                                            "WARN " + text, "WARN Loading screen geometry failed: " + text));
    EXPECT_EQ(log.records()[1].line, -1) << "a plain record has no location";
    EXPECT_GT(log.records()[2].line, 0);
    EXPECT_EQ(screen.calls("getMeasuredMeshFile"), 0U);
}

TEST_F(ScreenManagerTest, ShapeNamesAreComparedExactly) {
    for (const wchar_t* name : {L"flat", L"Flat ", L"Fla", L"MESH", L""}) {
        screen.shape = name;
        EXPECT_THROW(Access::createScreenIfDifferent(manager, &config, false), VeltraniException) << name;
    }
}

TEST_F(ScreenManagerTest, WithoutADescriptionTheShapeIsEmpty) {
    config.screen = nullptr;
    for (XMLConfigManager* service :
         {static_cast<XMLConfigManager*>(&config), static_cast<XMLConfigManager*>(nullptr)}) {
        log.clear();
        EXPECT_THROW(manager.setScreenGeometry(service, false), VeltraniException);
        EXPECT_THAT(
            messagesWith("Loading"),
            ElementsAre("WARN Loading screen geometry failed: ERROR: ScreenManager::createContentScreenIfDifferent(), "
                        "screen type () not found"));
    }
}

TEST_F(ScreenManagerTest, EveryKindOfFaultIsLoggedAndThrownOn) {
    describeFlatScreen();
    screen.throwFrom("getMeasuredMeshFile", VeltraniParseException(L"bad entry"));
    EXPECT_THROW(manager.setScreenGeometry(&config, false), VeltraniParseException);
    EXPECT_EQ(log.messages().back(), "WARN Loading screen geometry failed: bad entry");
    EXPECT_THAT(log.records().back().function, HasSubstr("setScreenGeometry"));
    EXPECT_NE(manager.getScreenGeometry(), nullptr) << "what was done before stays";

    screen.throwFrom("getMeasuredMeshFile", std::runtime_error("B\xc3\xbchne"));
    EXPECT_THROW(manager.setScreenGeometry(&config, false), std::runtime_error);
    EXPECT_EQ(log.messages().back(), "WARN Loading screen geometry failed: B\xc3\xbchne");

    screen.throwFrom("getMeasuredMeshFile", 7);
    EXPECT_THROW(manager.setScreenGeometry(&config, false), int);
    EXPECT_EQ(log.messages().back(), "WARN Loading screen geometry failed with an unknown exception");

    screen.throwFrom("getMeasuredMeshFile", VeltraniExceptionBase("a.cpp", 1, L"base"));
    EXPECT_THROW(manager.setScreenGeometry(&config, false), VeltraniExceptionBase);
    EXPECT_EQ(log.messages().back(), "WARN Loading screen geometry failed with an unknown exception");
}

TEST_F(ScreenManagerTest, FaultsOfTheFilesComeThroughAsTheyAre) {
    describeMesh();
    screen.contentMeshFile = write("faulty.obj", "v 1,5 0 0\n");
    EXPECT_THROW(manager.setScreenGeometry(&config, false), ObjLoadException);
    EXPECT_THAT(log.messages().back(), StartsWith("WARN Loading screen geometry failed: line 1: found \"1,5\""));

    screen.contentMeshFile = L"missing.obj";
    EXPECT_THROW(manager.setScreenGeometry(&config, false), VeltraniMissingFileException);
    EXPECT_EQ(log.messages().back(),
              "WARN Loading screen geometry failed: Unable to load screen file. Ensure the screen file missing.obj "
              "exists and is a valid .obj file.");

    describeFlatScreen();
    screen.modelPcdFile = L"missing.pcd";
    EXPECT_THROW(manager.setScreenGeometry(&config, false), VeltraniMissingFileException);
    EXPECT_EQ(log.messages().back(),
              "WARN Loading screen geometry failed: Unable to load Point Cloud Data file! Ensure the PCD file "
              "missing.pcd exists and is valid.");
}

TEST_F(ScreenManagerTest, ScaleAndAxesAreTakenForAMeshAlone) {
    describeFlatScreen();
    screen.unitName = L"mm";
    screen.importOrientationParam1 = L"Z";
    screen.importOrientationParam2 = L"Y";
    manager.setScaleFromXml(&config);
    manager.setOrientationXfFromXml(&config);
    EXPECT_EQ(manager.getScreen().getScale(), 1.0F);
    EXPECT_EQ(Access::importTransformParam1(manager.getScreen()), L"Y");

    describeMesh();
    manager.setScaleFromXml(&config);
    manager.setOrientationXfFromXml(&config);
    EXPECT_EQ(manager.getScreen().getScale(), 0.001F);
    EXPECT_EQ(Access::importTransformParam1(manager.getScreen()), L"Z");
    EXPECT_EQ(Access::importTransformParam2(manager.getScreen()), L"Y");
}

TEST_F(ScreenManagerTest, TheScaleIsNativeUnitsPerUnitOfTheScreen) {
    screen.unitName = L"ft";
    units.unitName = L"cm";
    EXPECT_DOUBLE_EQ(manager.getScaleFromXml(&config), 30.48);
    screen.unitName = L"none such";
    EXPECT_EQ(manager.getScaleFromXml(&config), 1.0);
    screen.unitName = L"mm";
    config.units = nullptr;
    EXPECT_EQ(manager.getScaleFromXml(&config), 1.0) << "without native units";
    config.units = &units;
    config.screen = nullptr;
    EXPECT_EQ(manager.getScaleFromXml(&config), 1.0) << "without a screen";
    EXPECT_EQ(manager.getScaleFromXml(nullptr), 1.0) << "without a configuration";
    EXPECT_EQ(screen.calls("getScale"), 0U) << "only a custom unit asks for the screen's own scale";
}

TEST_F(ScreenManagerTest, AScaleThatIsNotAboveZeroIsOne) {
    screen.unitName = L"custom";
    for (const double useless : {0.0, -0.0, -2.0, -std::numeric_limits<double>::infinity()}) {
        screen.scale = useless;
        EXPECT_EQ(manager.getScaleFromXml(&config), 1.0) << useless;
    }
    screen.scale = 2.5;
    EXPECT_EQ(manager.getScaleFromXml(&config), 2.5);
    screen.scale = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(manager.getScaleFromXml(&config), screen.scale);
    screen.scale = std::nan("");
    EXPECT_TRUE(std::isnan(manager.getScaleFromXml(&config))) << "a NaN is answered as it is";
}

TEST_F(ScreenManagerTest, RecordsAreOnlyMadeAtTheirLevel) {
    describeMesh();
    const LogTrap warnings(log4cxx::Level::getWarn());
    screen.recordTo(nullptr);
    manager.setScreenGeometry(&config, false);
    EXPECT_THAT(warnings.records(), IsEmpty());
    EXPECT_EQ(screen.calls("getContentMeshFile"), 2U) << "the text of the record was not built";
}

}  // namespace
