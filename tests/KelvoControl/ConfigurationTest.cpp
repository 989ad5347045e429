#include "KelvoControl/Configuration.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
#include "support/ConfigManagerDouble.h"
#include "support/ScreenConfigDouble.h"
#include "support/SuiteFault.h"
#include "support/TargetLocatorConfigDouble.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using Vector = Point<double, 3>;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const std::vector<std::wstring> TYPES_WITHOUT_MODELS{
    BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_PLANAR_ADVANCED, BaseConfig::TARGET_DATA_SPHERICAL,
    BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED, BaseConfig::TARGET_DATA_CUSTOM_PLANAR};
const std::vector<std::wstring> TYPES_WITH_MODELS{BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC,
                                                  BaseConfig::TARGET_DATA_3D};

class ConfigurationTest : public testing::Test {
protected:
    ConfigurationTest() {
        config.projectors = {&first, &second};
        config.screen = &screen;
        config.targetLocators = &targetData;
        screen.eyePoint = {0.5, -1.0, 1.5};
        targetData.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL;
        first.frustumTop = 0.375;
        first.frustumBottom = -0.125;
        first.frustumLeft = -0.5;
        first.frustumRight = 0.25;
        first.orientationZ = 0.3;
        first.orientationX = -0.2;
        first.orientationY = 0.1;
        first.position = {1.0, 2.0, 3.0};
        first.width = 1920;
        first.height = 1200;
        second.frustumTop = second.frustumRight = 0.5;
        second.frustumBottom = second.frustumLeft = -0.5;
    }

    [[nodiscard]] static const Blend& blendOf(const KelvoControl::Configuration& table, const std::wstring& id) {
        return table.getProjectors().at(KelvoProjectorUID(id))->getBlend();
    }
    /// The model of the first projector; empty when it has none.
    [[nodiscard]] std::shared_ptr<ProjectionModel> firstModel() const {
        return blendOf(KelvoControl::Configuration(&config), L"P1").getProjectionModel();
    }
    [[nodiscard]] std::string fault() const {
        return suiteFaultOf([&] { const KelvoControl::Configuration table(&config); });
    }
    [[nodiscard]] static std::unique_ptr<KelvoProjector> projectorOf(const std::shared_ptr<const Blend>& blend) {
        return std::make_unique<KelvoProjector>(blend);
    }

    Trace trace;
    ConfigManagerDouble config;
    ScreenConfigDouble screen;
    TargetLocatorConfigDouble targetData;
    ProjectorConfigDouble first{L"P1"};
    ProjectorConfigDouble second{L"P2"};
    const TemporaryFolder folder;
};

TEST_F(ConfigurationTest, ByDefaultAndWithoutAConfigurationItIsEmpty) {
    EXPECT_THAT(KelvoControl::Configuration().getProjectors(), IsEmpty());
    EXPECT_THAT(KelvoControl::Configuration(nullptr).getProjectors(), IsEmpty());
}

TEST_F(ConfigurationTest, EveryConfiguredProjectorHasAnEntryUnderItsId) {
    const KelvoControl::Configuration table(&config);
    ASSERT_THAT(table.getProjectors(), SizeIs(2));
    EXPECT_EQ(table.getProjectors().begin()->first.value(), L"P1");
    EXPECT_EQ(table.getProjectors().rbegin()->first.value(), L"P2");
    EXPECT_EQ(blendOf(table, L"P2").getSphericalBlendExtents().ox, std::tan(-0.5));
}

TEST_F(ConfigurationTest, TheFrustumIsThatOfTheEntrySeenFromTheEyePointOfTheScreen) {
    const KelvoControl::Configuration table(&config);
    const Frustum& frustum = blendOf(table, L"P1").getSphericalBlendExtents();
    EXPECT_EQ(frustum.ox, std::tan(-0.5));
    EXPECT_EQ(frustum.sx, std::tan(0.25) - std::tan(-0.5));
    EXPECT_EQ(frustum.oy, std::tan(-0.125));
    EXPECT_EQ(frustum.sy, std::tan(0.375) - std::tan(-0.125));
    EXPECT_EQ(frustum.origin, (Vector{0.5, 3.0, 1.5})) << "from the eye point to the projector";
    EXPECT_EQ(frustum.R, Veltrani::rotationZXY(0.3, -0.2, 0.1));
    EXPECT_EQ(frustum.Rinv, transpose(frustum.R));
    EXPECT_EQ(frustum.position, (Vector{1.0, 2.0, 3.0}));
    EXPECT_EQ(frustum.orientation, (Vector{0.3, -0.2, 0.1}));
    EXPECT_EQ(frustum.width, 1920);
    EXPECT_EQ(frustum.height, 1200);
}

TEST_F(ConfigurationTest, AProjectorAtTheEyePointHasItsFrustumAtTheOrigin) {
    first.position = screen.eyePoint;
    const KelvoControl::Configuration table(&config);
    EXPECT_EQ(blendOf(table, L"P1").getSphericalBlendExtents().origin, Vector());
}

TEST_F(ConfigurationTest, WithoutAScreenTheEyeIsAtTheOriginOfTheWorld) {
    config.screen = nullptr;
    const KelvoControl::Configuration table(&config);
    EXPECT_EQ(blendOf(table, L"P1").getSphericalBlendExtents().origin, (Vector{1.0, 2.0, 3.0}));
}

TEST_F(ConfigurationTest, AnIdWithoutARecordHasNoEntry) {
    class Incomplete : public ConfigManagerDouble {
    public:
        ProjectorConfig* getProjectorConfig(const std::wstring& id) const override {
            return id == L"P1" ? nullptr : ConfigManagerDouble::getProjectorConfig(id);
        }
    };
    Incomplete incomplete;
    incomplete.projectors = config.projectors;
    const KelvoControl::Configuration table(&incomplete);
    ASSERT_THAT(table.getProjectors(), SizeIs(1));
    EXPECT_EQ(table.getProjectors().begin()->first.value(), L"P2");
}

TEST_F(ConfigurationTest, ASecondRecordOfTheSameIdTakesThePlaceOfTheFirst) {
    second.identity = L"P1";
    EXPECT_THAT(KelvoControl::Configuration(&config).getProjectors(), SizeIs(1));
}

TEST_F(ConfigurationTest, EverythingIsReadOnceInTheOrderOfTheProjectors) {
    for (Recorder* const recorder : std::initializer_list<Recorder*>{&config, &screen, &targetData, &first}) {
        recorder->recordTo(&trace);
    }
    config.projectors = {&first};
    const KelvoControl::Configuration table(&config);
    EXPECT_THAT(
        trace.lines(),
        ElementsAre("config.getTargetLocatorConfig()", "locators.getTargetDataType()", "config.getScreenConfig()",
                    "screen.getEyePoint()", "config.getProjectorConfigIds()", "config.getProjectorConfig(\"P1\")",
                    "projector.getProjectionModelName()", "projector.getOrientationZ()", "projector.getOrientationX()",
                    "projector.getOrientationY()", "projector.getFrustumTop()", "projector.getFrustumBottom()",
                    "projector.getFrustumLeft()", "projector.getFrustumRight()", "projector.getPosition()",
                    "projector.getWidth()", "projector.getHeight()"));
}

TEST_F(ConfigurationTest, ADisplayThroughModelsGetsTheRectilinearOneOfItsFrustumUnlessItNamesAnother) {
    for (const std::wstring& type : TYPES_WITH_MODELS) {
        targetData.targetDataType = type;
        first.projectionModelName = L"";
        const auto rectilinear = firstModel();
        ASSERT_NE(rectilinear, nullptr);
        EXPECT_EQ(rectilinear->firstName(), L"Rectilinear");
        first.projectionModelName = L"Equidistant";
        const auto named = firstModel();
        ASSERT_NE(named, nullptr);
        EXPECT_EQ(named->firstName(), L"Equidistant");
    }
}

TEST_F(ConfigurationTest, TheModelHasTheViewportOfTheFrustumWithItsPixels) {
    targetData.targetDataType = BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC;
    const KelvoControl::Configuration table(&config);
    const Frustum& frustum = blendOf(table, L"P1").getSphericalBlendExtents();
    const auto model = blendOf(table, L"P1").getProjectionModel();
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->viewport().position, frustum.position);
    EXPECT_EQ(model->viewport().orientation, frustum.orientation);
    EXPECT_EQ(model->viewport().width, 1920);
    EXPECT_EQ(model->viewport().height, 1200);
    // Two routes to one direction, to the last bit.
    for (const auto& [u, v] : {std::pair{0.0, 0.0}, std::pair{0.3, 0.9}, std::pair{1.0, 1.0}}) {
        Vector direction;
        ASSERT_TRUE(model->unproject({u, v}, direction));
        const Vector ahead{frustum.ox + frustum.sx * u, 1.0, frustum.oy + frustum.sy * v};
        EXPECT_EQ(direction, frustum.R * ahead);
    }
}

TEST_F(ConfigurationTest, OtherDisplaysHaveNoModelUnlessTheyNameOne) {
    for (const std::wstring& type : TYPES_WITHOUT_MODELS) {
        targetData.targetDataType = type;
        first.projectionModelName = L"";
        EXPECT_EQ(firstModel(), nullptr);
        first.projectionModelName = L"Rectilinear";
        EXPECT_NE(firstModel(), nullptr);
    }
    config.targetLocators = nullptr;
    first.projectionModelName = L"";
    EXPECT_EQ(firstModel(), nullptr) << "without target data no kind is known to need one";
}

TEST_F(ConfigurationTest, OtherDisplaysMayHaveNeitherFrustumNorPixels) {
    targetData.targetDataType = BaseConfig::TARGET_DATA_PLANAR_BASIC;
    ProjectorConfigDouble plain(L"P3");
    plain.width = plain.height = 0;
    config.projectors = {&plain};
    const KelvoControl::Configuration table(&config);
    EXPECT_EQ(blendOf(table, L"P3").getSphericalBlendExtents().sx, 0.0);
}

TEST_F(ConfigurationTest, ALensFileIsReadWhereItIsUsed) {
    const std::wstring file = Veltrani::fromUtf8(folder.write("lens.yml", CalibrationText().yaml()));
    first.projectionModelName = L"BrownConrady:" + file;
    for (const std::wstring& type : TYPES_WITH_MODELS) {
        targetData.targetDataType = type;
        const auto model = firstModel();
        ASSERT_NE(model, nullptr);
        EXPECT_EQ(model->firstName(), first.projectionModelName) << "as it is configured";
        EXPECT_EQ(model->secondName(), L"");
    }
}

TEST_F(ConfigurationTest, ALensFileIsNotLookedAtWhereItIsNotUsed) {
    for (const std::string& name : {folder.file("nowhere.yml"), folder.write("bad.yml", "no calibration")}) {
        first.projectionModelName = L"BrownConrady:" + Veltrani::fromUtf8(name);
        for (const std::wstring& type : TYPES_WITHOUT_MODELS) {
            targetData.targetDataType = type;
            EXPECT_EQ(firstModel(), nullptr);
        }
    }
}

TEST_F(ConfigurationTest, AFaultyModelIsToldWithItsProjectorAndKeepsItsKind) {
    targetData.targetDataType = BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC;
    first.projectionModelName = L"Fisheye:" + Veltrani::fromUtf8(folder.file("nowhere.yml"));
    EXPECT_THAT(fault(), AllOf(StartsWith("missing: Projector \"P1\": "), HasSubstr("nowhere.yml")));
    first.projectionModelName = L"Fisheye:" + Veltrani::fromUtf8(folder.write("bad.yml", "no calibration"));
    EXPECT_THAT(fault(), AllOf(StartsWith("parse: Projector \"P1\": "), HasSubstr("bad.yml")));
    first.projectionModelName = L"Rectilinaer";
    EXPECT_THAT(fault(), StartsWith("general: Projector \"P1\": Unknown projection model \"Rectilinaer\""));
    targetData.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL;
    EXPECT_THAT(fault(), StartsWith("general: Projector \"P1\": Unknown projection model"))
        << "a name that no display has is a fault in each";
}

TEST_F(ConfigurationTest, AFrustumThatSpansNothingOrAPictureWithoutPixelsIsNoModel) {
    targetData.targetDataType = BaseConfig::TARGET_DATA_3D;
    first.frustumRight = first.frustumLeft;
    EXPECT_THAT(fault(), AllOf(StartsWith("general: Projector \"P1\": "), HasSubstr("spans nothing")));
    first.frustumRight = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(fault(), HasSubstr("the right edge of the frustum"));
    first.frustumRight = 0.25;
    first.width = 0;
    EXPECT_THAT(fault(), HasSubstr("0 x 1200 pixels"));
}

TEST_F(ConfigurationTest, AnEdgeThatIsNotAheadIsRefusedForAModelOfTheFrustumAlone) {
    targetData.targetDataType = BaseConfig::TARGET_DATA_3D;
    first.frustumLeft = -1.75;
    EXPECT_EQ(
        fault(),
        "general: Projector \"P1\": Projection model Rectilinear: the left edge of the frustum is at -100 degrees, "
        "expected less than 90 to either side");
    first.projectionModelName =
        L"BrownConrady:" + Veltrani::fromUtf8(folder.write("lens.yml", CalibrationText().yaml()));
    EXPECT_EQ(fault(), "") << "a calibrated lens has a picture of its own";
    targetData.targetDataType = BaseConfig::TARGET_DATA_PLANAR_BASIC;
    EXPECT_EQ(fault(), "") << "and a display without lenses has none";
}

TEST_F(ConfigurationTest, WhatTheConfigurationThrowsPassesThrough) {
    config.throwFrom("getProjectorConfig", std::runtime_error("broken"), 1);
    EXPECT_THROW(KelvoControl::Configuration{&config}, std::runtime_error);
}

TEST_F(ConfigurationTest, AnAddedEntryIsOwned) {
    auto blend = std::make_shared<const Blend>(Frustum());
    {
        KelvoControl::Configuration table;
        auto projector = projectorOf(blend);
        const KelvoProjector* const added = projector.get();
        table.add(KelvoProjectorUID(L"P1"), std::move(projector));
        ASSERT_THAT(table.getProjectors(), SizeIs(1));
        EXPECT_EQ(table.getProjectors().at(KelvoProjectorUID(L"P1")), added);
        EXPECT_EQ(blend.use_count(), 2);
    }
    EXPECT_EQ(blend.use_count(), 1) << "it goes with the table";
}

TEST_F(ConfigurationTest, AnAddedEntryTakesThePlaceOfTheOneBeforeWhichDies) {
    const auto before = std::make_shared<const Blend>(Frustum());
    const auto after = std::make_shared<const Blend>(Frustum());
    KelvoControl::Configuration table;
    table.add(KelvoProjectorUID(L"P1"), projectorOf(before));
    table.add(KelvoProjectorUID(L"P1"), projectorOf(after));
    EXPECT_THAT(table.getProjectors(), SizeIs(1));
    EXPECT_EQ(&blendOf(table, L"P1"), after.get());
    EXPECT_EQ(before.use_count(), 1);
}

TEST_F(ConfigurationTest, AddingNothingChangesNothing) {
    KelvoControl::Configuration table;
    table.add(KelvoProjectorUID(L"P1"), nullptr);
    EXPECT_THAT(table.getProjectors(), IsEmpty());
    const auto blend = std::make_shared<const Blend>(Frustum());
    table.add(KelvoProjectorUID(L"P1"), projectorOf(blend));
    table.add(KelvoProjectorUID(L"P1"), nullptr);
    EXPECT_EQ(&blendOf(table, L"P1"), blend.get());
}

}  // namespace
