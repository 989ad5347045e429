#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "KelvoControl/ProjectionModel.h"
#include "PlanarMapText.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "TargetLocatorFixture.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <typeinfo>
#include <utility>

/// Which kind of locator a target-data type gives, and what is read from where, in which order.

namespace {

using Vector = Point<double, 3>;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Table = SphereTargetLocatorParams::HeadingTable;

constexpr const char* INCOMPLETE_AREA =
    "WARN ERROR:  TargetLocatorManager::checkOrCreateTargetLocator() - calibration file does not contain complete "
    "screen area information for channel";

const std::vector<std::string> TYPE_READ{"config.getTargetLocatorConfig()", "locators.getTargetDataType()"};
const std::vector<std::string> FRUSTUM_READ{"projector.getPosition()",      "projector.getFrustumTop()",
                                            "projector.getFrustumBottom()", "projector.getFrustumLeft()",
                                            "projector.getFrustumRight()",  "projector.getOrientationZ()",
                                            "projector.getOrientationX()",  "projector.getOrientationY()"};
/// For the cache, then for the answer.
const std::vector<std::string> IDENTITY_READ{"projector.getIdentity()", "projector.getIdentity()"};

using Lines = std::vector<std::string>;

Lines operator+(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

class TargetLocatorKindsTest : public TargetLocatorFixture {
protected:
    /// What every kind with a frustum has from the projector.
    static void expectFrustum(const SphereTargetLocatorParams& params) {
        EXPECT_EQ(params.angleTop, 0.31);
        EXPECT_EQ(params.angleBottom, -0.32);
        EXPECT_EQ(params.angleLeft, -0.43);
        EXPECT_EQ(params.angleRight, 0.44);
        EXPECT_EQ(params.rotationZ, 0.01);
        EXPECT_EQ(params.rotationX, 0.02);
        EXPECT_EQ(params.rotationY, 0.03);
    }
    /// Makes the projector one with a map file in the folder of the configuration.
    void giveMap(const std::string& text = planar_map::wholePicture(1920, 1080)) {
        config.folder = Veltrani::fromUtf8(folder.path());
        projector.customPlanarFile = L"map.txt";
        folder.write("map.txt", text);
    }

    const TemporaryFolder folder;
};

TEST_F(TargetLocatorKindsTest, EachTypeHasItsKind) {
    giveMap();
    const auto kindOf = [&](const std::wstring& type) -> std::string {
        const std::shared_ptr<const TargetLocator> locator = request(type);
        if (!locator) {
            return "none";
        }
        const TargetLocator& made = *locator;
        return typeid(made).name();
    };
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_PLANAR_BASIC), typeid(PlanarTargetLocator).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_PLANAR_ADVANCED), typeid(PlanarTargetLocator).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_SPHERICAL), typeid(SphereTargetLocator).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED), typeid(CollimatedTargetLocator).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_CUSTOM_PLANAR), typeid(CustomPlanarTargetLocator).name());
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC, BaseConfig::TARGET_DATA_3D}) {
        projector.projectionModelName = L"";
        EXPECT_EQ(kindOf(type), typeid(SphereTargetLocator).name()) << "without a model of its own";
        projector.projectionModelName = L"Rectilinear";
        EXPECT_EQ(kindOf(type), typeid(CustomProjectionTargetLocator).name());
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorKindsTest, PlanarReadsTheScreenAreaInTheOrderOfTheEntry) {
    const auto params = paramsOf<PlanarTargetLocatorParams>(request(BaseConfig::TARGET_DATA_PLANAR_BASIC));
    EXPECT_EQ(params.screenLeft, 0.1);
    EXPECT_EQ(params.screenRight, 0.9);
    EXPECT_EQ(params.screenTop, 0.8);
    EXPECT_EQ(params.screenBottom, 0.2);
    EXPECT_THAT(trace.lines(), ElementsAreArray(TYPE_READ +
                                                Lines{"projector.getScreenLeft()", "projector.getScreenRight()",
                                                      "projector.getScreenTop()", "projector.getScreenBottom()"} +
                                                IDENTITY_READ));
}

TEST_F(TargetLocatorKindsTest, AnyBoundThatIsNotConfiguredIsTwoWarningsInOrderAndLeavesTheCache) {
    const auto locator = request(BaseConfig::TARGET_DATA_PLANAR_BASIC);
    for (double* const bound :
         {&projector.screenLeft, &projector.screenRight, &projector.screenTop, &projector.screenBottom}) {
        const double before = *bound;
        *bound = -1000.0;
        log.clear();
        EXPECT_EQ(request(), nullptr);
        EXPECT_THAT(log.messages(), ElementsAre(INCOMPLETE_AREA, notFound("PlanarBasic")));
        *bound = before;
        EXPECT_EQ(request(), locator);
    }
    const LogTrap::Record& record = log.records().front();
    EXPECT_EQ(record.logger, "Dravix.ScreenManager.TargetLocatorManager");
    EXPECT_THAT(record.file, EndsWith("TargetLocatorManager.cpp"));
    EXPECT_THAT(record.function, HasSubstr("checkOrCreatePlanarTargetLocator"));
}

TEST_F(TargetLocatorKindsTest, AllFourBoundsAreReadBeforeOneIsMissed) {
    projector.screenLeft = ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED;
    request(BaseConfig::TARGET_DATA_PLANAR_ADVANCED);
    EXPECT_THAT(trace.lines(),
                ElementsAreArray(
                    TYPE_READ +
                    Lines{"projector.getScreenLeft()", "projector.getScreenRight()", "projector.getScreenTop()",
                          "projector.getScreenBottom()",
                          "WARN Dravix.ScreenManager.TargetLocatorManager: " + std::string(INCOMPLETE_AREA).substr(5),
                          "WARN Dravix.ScreenManager.TargetLocatorManager: " + notFound("PlanarAdvanced").substr(5)}));
}

TEST_F(TargetLocatorKindsTest, OnlyExactlyTheSentinelIsABoundThatIsNotConfigured) {
    for (const double bound : {-999.0, 1000.0, std::nextafter(-1000.0, 0.0), std::nextafter(-1000.0, -2000.0),
                               std::numeric_limits<double>::quiet_NaN()}) {
        projector.screenLeft = bound;
        EXPECT_NE(request(BaseConfig::TARGET_DATA_PLANAR_BASIC), nullptr) << bound;
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorKindsTest, SphereReadsTheFrustumAndSeesItFromTheTargetPositionWithoutTables) {
    const auto params = paramsOf<SphereTargetLocatorParams>(request(BaseConfig::TARGET_DATA_SPHERICAL));
    expectFrustum(params);
    EXPECT_EQ(params.eyepoint, (Vector{0.1, 0.2, 0.3}));
    EXPECT_THAT(params.pitchTable, IsEmpty());
    EXPECT_THAT(params.yawTable, IsEmpty());
    EXPECT_THAT(
        trace.lines(),
        ElementsAreArray(TYPE_READ + FRUSTUM_READ +
                         Lines{"config.getTargetLocatorConfig()", "locators.getTargetPosition()"} + IDENTITY_READ));
}

TEST_F(TargetLocatorKindsTest, CollimatedReadsTheMirrorThenTheEyeThenTheTables) {
    const auto params = paramsOf<CollimatedTargetLocatorParams>(request(BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED));
    expectFrustum(params);
    EXPECT_EQ(params.eyepoint, (Vector{0.1, 0.2, 0.3}));
    EXPECT_EQ(params.mirrorOrientation, (Vector{0.4, 0.5, 0.6}));
    EXPECT_EQ(params.mirrorPosition, (Vector{0.7, 0.8, 0.9}));
    EXPECT_EQ(params.mirrorRadius, 3.5);
    EXPECT_EQ(params.pitchTable, (Table{{0.0, 0.1}, {1.0, 1.1}}));
    EXPECT_EQ(params.yawTable, (Table{{0.0, 0.2}, {1.0, 1.2}, {2.0, 2.2}}));
    EXPECT_THAT(trace.lines(), ElementsAreArray(TYPE_READ + FRUSTUM_READ +
                                                Lines{"config.getTargetLocatorConfig()",
                                                      "locators.getMirrorOrientation()", "locators.getMirrorPosition()",
                                                      "locators.getMirrorRadius()", "locators.getTargetPosition()",
                                                      "locators.getPitchTable()", "locators.getYawTable()"} +
                                                IDENTITY_READ));
}

TEST_F(TargetLocatorKindsTest, EveryNumberOfAMirrorBuildsTheLocatorAgain) {
    auto last = request(BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED);
    const auto expectNew = [&](const char* what) {
        const auto fresh = request();
        EXPECT_NE(fresh, last) << what;
        EXPECT_EQ(request(), fresh) << what;
        last = fresh;
    };
    targetData.mirrorRadius = 3.6;
    expectNew("radius");
    targetData.yawTable.back().second = 2.3;
    expectNew("yaw");
    targetData.pitchTable.pop_back();
    expectNew("pitch");
    targetData.targetPosition[2] = 9.0;
    expectNew("eye");
    projector.frustumTop = 0.5;
    expectNew("frustum");
}

TEST_F(TargetLocatorKindsTest, ThePositionOfTheProjectorDoesNotRebuildWhatIsSeenFromTheTargetPosition) {
    const auto locator = request(BaseConfig::TARGET_DATA_SPHERICAL);
    projector.position = {7.0, 7.0, 7.0};
    EXPECT_EQ(request(), locator);
}

TEST_F(TargetLocatorKindsTest, TargetDataThatGoMeanwhileAreAFailure) {
    config.targetLocators = nullptr;
    TargetLocatorManager& manager = *TargetLocatorManager::getInstance();
    EXPECT_FALSE(ScreenManagerTestAccess::checkOrCreateSphereTargetLocator(manager, &config, &projector));
    EXPECT_FALSE(ScreenManagerTestAccess::checkOrCreateCollimatedTargetLocator(manager, &config, &projector));
    EXPECT_EQ(cacheSize(), 0U);
}

TEST_F(TargetLocatorKindsTest, CustomPlanarReadsTheResolutionAndTheFileOfTheProjector) {
    giveMap();
    projector.width = 800;
    projector.height = 600;
    const auto locator = request(BaseConfig::TARGET_DATA_CUSTOM_PLANAR);
    const auto params = paramsOf<CustomPlanarTargetLocatorParams>(locator);
    EXPECT_EQ(params.resolution, (Point<int, 2>{800, 600}));
    EXPECT_EQ(params.filename, Veltrani::fromUtf8(folder.file("map.txt")));
    EXPECT_THAT(trace.lines(), ElementsAreArray(TYPE_READ +
                                                Lines{"projector.getWidth()", "projector.getHeight()",
                                                      "projector.getCustomPlanarFile()", "config.processPath(\"\")",
                                                      "config.processPath(\"map.txt\")"} +
                                                IDENTITY_READ));
    EXPECT_EQ(request(), locator);
    projector.height = 601;
    EXPECT_NE(request(), locator);
}

TEST_F(TargetLocatorKindsTest, WithoutAFolderTheFileNameIsTakenAsItIs) {
    giveMap();
    config.folder.clear();
    projector.customPlanarFile = Veltrani::fromUtf8(folder.file("map.txt"));
    const auto params = paramsOf<CustomPlanarTargetLocatorParams>(request(BaseConfig::TARGET_DATA_CUSTOM_PLANAR));
    EXPECT_EQ(params.filename, projector.customPlanarFile);
    EXPECT_EQ(config.calls("processPath"), 1U) << "for the folder only";
}

TEST_F(TargetLocatorKindsTest, AProjectorWithoutAMapFileHasNoLocatorAndNothingIsCreatedOrErased) {
    const auto planar = request(BaseConfig::TARGET_DATA_PLANAR_BASIC);
    trace.clear();
    EXPECT_EQ(request(BaseConfig::TARGET_DATA_CUSTOM_PLANAR), nullptr);
    EXPECT_THAT(log.messages(), ElementsAre(notFound("CustomPlanar")));
    EXPECT_EQ(config.calls("processPath"), 0U);
    EXPECT_EQ(request(BaseConfig::TARGET_DATA_PLANAR_BASIC), planar);
}

TEST_F(TargetLocatorKindsTest, AMapFileThatIsMissingIsToldThenNotFoundAndTheOldLocatorGoes) {
    request(BaseConfig::TARGET_DATA_PLANAR_BASIC);
    giveMap();
    projector.customPlanarFile = L"none.txt";
    EXPECT_EQ(request(BaseConfig::TARGET_DATA_CUSTOM_PLANAR), nullptr);
    ASSERT_THAT(log.messages(), SizeIs(2));
    EXPECT_THAT(log.messages()[0], testing::StartsWith("INFO Failed creating target locator due to following error: "));
    EXPECT_THAT(log.messages()[0], HasSubstr("none.txt"));
    EXPECT_EQ(log.messages()[1], notFound("CustomPlanar"));
    EXPECT_EQ(cacheSize(), 0U);

    projector.customPlanarFile = L"map.txt";
    EXPECT_NE(request(), nullptr) << "a file that is there again serves again";
}

TEST_F(TargetLocatorKindsTest, AResolutionThatIsNotPositiveIsToldByItsText) {
    giveMap();
    projector.width = 0;
    EXPECT_EQ(request(BaseConfig::TARGET_DATA_CUSTOM_PLANAR), nullptr);
    EXPECT_THAT(log.messages(), ElementsAre("INFO Failed creating target locator due to following error: "
                                            "Must use positive values to define the resolution",
                                            notFound("CustomPlanar")));
}

TEST_F(TargetLocatorKindsTest, WithoutAModelAProjectorIsASphereSeenFromItsOwnPosition) {
    const auto params = paramsOf<SphereTargetLocatorParams>(request(BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC));
    expectFrustum(params);
    EXPECT_EQ(params.eyepoint, (Vector{1.0, 2.0, 3.0}));
    EXPECT_THAT(params.pitchTable, IsEmpty());
    EXPECT_THAT(params.yawTable, IsEmpty());
    EXPECT_THAT(trace.lines(), ElementsAreArray(TYPE_READ + Lines{"projector.getProjectionModelName()"} + FRUSTUM_READ +
                                                IDENTITY_READ));
}

TEST_F(TargetLocatorKindsTest, AModelIsMadeFromOrientationFrustumAndPosition) {
    projector.projectionModelName = L"Rectilinear";
    const auto params = paramsOf<CustomProjectionTargetLocatorParams>(request(BaseConfig::TARGET_DATA_3D));
    ASSERT_NE(params.projectionModel, nullptr);
    EXPECT_EQ(params.projectionModel->firstName(), L"Rectilinear");
    EXPECT_EQ(params.projectionModel->secondName(), L"");
    const Viewport& viewport = params.projectionModel->viewport();
    EXPECT_DOUBLE_EQ(viewport.ox, std::tan(-0.43));
    EXPECT_DOUBLE_EQ(viewport.sx, std::tan(0.44) - std::tan(-0.43));
    EXPECT_DOUBLE_EQ(viewport.oy, std::tan(-0.32));
    EXPECT_DOUBLE_EQ(viewport.sy, std::tan(0.31) - std::tan(-0.32));
    EXPECT_EQ(viewport.position, (Vector{1.0, 2.0, 3.0}));
    EXPECT_EQ(viewport.orientation, (Vector{0.01, 0.02, 0.03}));
    EXPECT_EQ(viewport.width, 1);
    EXPECT_EQ(viewport.height, 1);
    EXPECT_THAT(trace.lines(), ElementsAreArray(TYPE_READ +
                                                Lines{"projector.getProjectionModelName()",
                                                      "projector.getOrientationZ()", "projector.getOrientationX()",
                                                      "projector.getOrientationY()", "projector.getFrustumTop()",
                                                      "projector.getFrustumBottom()", "projector.getFrustumLeft()",
                                                      "projector.getFrustumRight()", "projector.getPosition()"} +
                                                IDENTITY_READ));
}

TEST_F(TargetLocatorKindsTest, EqualModelsAreOneLocatorAndAChangeOfResolutionAloneMakesNoOther) {
    projector.projectionModelName = L"Equidistant";
    const auto locator = request(BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC);
    ASSERT_NE(locator, nullptr);
    projector.width = 800;
    projector.height = 600;
    EXPECT_EQ(request(), locator);
    projector.frustumRight = 0.45;
    const auto wider = request();
    EXPECT_NE(wider, locator);
    projector.projectionModelName = L"Rectilinear";
    EXPECT_NE(request(), wider);
}

TEST_F(TargetLocatorKindsTest, AModelOfTheFrustumNeedsItsEdgesAhead) {
    projector.projectionModelName = L"Equidistant";
    const auto locator = request(BaseConfig::TARGET_DATA_3D);
    projector.frustumLeft = -1.75;
    try {
        static_cast<void>(request());
        ADD_FAILURE() << "the tangent of an angle behind would mirror the picture";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message,
                  L"Projection model Equidistant: the left edge of the frustum is at -100 degrees, expected less than "
                  L"90 to either side");
    }
    for (double* const edge : {&projector.frustumRight, &projector.frustumBottom, &projector.frustumTop}) {
        projector.frustumLeft = -0.43;
        const double good = std::exchange(*edge, 1.75);
        EXPECT_THROW(request(), VeltraniException);
        *edge = good;
    }
    EXPECT_EQ(request(), locator);
    projector.frustumLeft = -1.75;
    projector.projectionModelName = L"Fisheye:" + Veltrani::fromUtf8(folder.write("bad.yml", "nothing\n"));
    EXPECT_THROW(request(), VeltraniParseException) << "a calibrated lens has a picture of its own";
}

TEST_F(TargetLocatorKindsTest, AModelThatCannotBeMadeLeavesAsThrownWithTheCacheAsItWas) {
    projector.projectionModelName = L"Rectilinear";
    const auto locator = request(BaseConfig::TARGET_DATA_3D);
    projector.projectionModelName = L"Kaleidoscope";
    EXPECT_THROW(request(), VeltraniException);
    projector.projectionModelName = L"BrownConrady:" + Veltrani::fromUtf8(folder.file("none.yml"));
    EXPECT_THROW(request(), VeltraniMissingFileException);
    projector.projectionModelName = L"Fisheye:" + Veltrani::fromUtf8(folder.write("bad.yml", "nothing\n"));
    EXPECT_THROW(request(), VeltraniParseException);
    EXPECT_THAT(log.records(), IsEmpty());
    projector.projectionModelName = L"Rectilinear";
    EXPECT_EQ(request(), locator);
}

TEST_F(TargetLocatorKindsTest, WhatTheConfigurationThrowsPassesThroughForEveryKind) {
    giveMap();
    const auto expectThrown = [&](Recorder& who, const char* operation) {
        who.throwOnce(operation, VeltraniException(L"no entry"));
        EXPECT_THROW(request(), VeltraniException) << operation;
    };
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_SPHERICAL, BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED,
                                     BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC}) {
        const auto locator = request(type);
        for (const char* operation : {"getPosition", "getFrustumTop", "getOrientationY", "getIdentity"}) {
            expectThrown(projector, operation);
        }
        EXPECT_EQ(request(), locator);
    }
    const auto planar = request(BaseConfig::TARGET_DATA_CUSTOM_PLANAR);
    expectThrown(projector, "getWidth");
    expectThrown(projector, "getCustomPlanarFile");
    expectThrown(config, "processPath");
    EXPECT_EQ(request(), planar);
    EXPECT_THAT(log.records(), IsEmpty());
}

}  // namespace
