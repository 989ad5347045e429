#include "DisplayFit/detail/ChannelSetup.h"

#include "Configuration/TargetLocatorConfig.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/ProjectorConfigDouble.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using testing::ElementsAre;
using Veltrani::DisplayFit::ChannelValues;
using Veltrani::DisplayFit::FittedValue;
using Veltrani::DisplayFit::SolvedGroups;

constexpr const char* AREA_TARGETS = "<TargetData type='PlanarBasic'/>";
constexpr const char* PROJECTOR_TARGETS = "<TargetData type='3D'/>";
constexpr const char* EYE_TARGETS = "<TargetData type='Spherical'><TargetPosition x='1' y='2' z='3'/></TargetData>";

class ChannelSetupTest : public testing::Test {
protected:
    ~ChannelSetupTest() override { ScreenManager::deleteInstance(); }

    void load(const char* targets) {
        m_config = displays::parsed(displays::FLAT, displays::projector("A", ""), targets);
        ScreenManager::getInstance()->setScreenGeometry(m_config.get(), true);
        m_projector.height = 1200;
        m_projector.screenLeft = 0.1;
        m_projector.screenRight = 0.4;
        m_projector.screenBottom = 0.2;
        m_projector.screenTop = 0.9;
        m_projector.frustumLeft = -0.5;
        m_projector.frustumRight = 0.4;
        m_projector.frustumBottom = -0.3;
        m_projector.frustumTop = 0.2;
        m_projector.position = {7, 8, 9};
        m_projector.orientationZ = 0.01;
        m_projector.orientationX = 0.02;
        m_projector.orientationY = 0.03;
    }
    [[nodiscard]] ChannelSetup setup() const { return {*m_config, *DisplayKind::of(*m_config), m_projector}; }
    [[nodiscard]] std::string refusal() const {
        const auto finding = setup().refusal();
        return finding ? finding->text : "";
    }
    static std::vector<std::string> namesIn(const std::vector<FittedValue>& values) {
        std::vector<std::string> names;
        for (const FittedValue& value : values) {
            names.push_back(value.name);
            EXPECT_EQ(value.before, value.after);
        }
        return names;
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;
    ProjectorConfigDouble m_projector{L"A"};
};

TEST_F(ChannelSetupTest, TheNumbersOfAChannelAreReadWhereTheyBelong) {
    load(PROJECTOR_TARGETS);
    const ChannelValues values = setup().values();
    EXPECT_EQ(values.position, (Point<double, 3>{7, 8, 9}));
    EXPECT_EQ(values.orientation, (Point<double, 3>{0.01, 0.02, 0.03}));
    EXPECT_EQ(values.frustum.left, -0.5);
    EXPECT_EQ(values.frustum.right, 0.4);
    EXPECT_EQ(values.frustum.bottom, -0.3);
    EXPECT_EQ(values.frustum.top, 0.2);
    EXPECT_EQ(values.area.left, 0.1);
    EXPECT_EQ(values.area.right, 0.4);
    EXPECT_EQ(values.area.bottom, 0.2);
    EXPECT_EQ(values.area.top, 0.9);
    EXPECT_FALSE(values.lens);
    EXPECT_EQ(setup().pixels(), (Point<double, 2>{1920, 1200}));
}

TEST_F(ChannelSetupTest, AnAreaIsCompleteAndHasAnExtent) {
    load(AREA_TARGETS);
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(setup().groups(), (SolvedGroups{false, false, false, false, true}));
    EXPECT_FALSE(setup().isPicture());
    EXPECT_THAT(namesIn(setup().list(setup().values())),
                ElementsAre("area left", "area right", "area bottom", "area top"));
    m_projector.screenLeft = 0.4;
    EXPECT_EQ(refusal(), "the area on the screen has no extent");
    m_projector.screenLeft = 0.5;
    EXPECT_EQ(refusal(), "") << "it may run from right to left";
    m_projector.screenTop = 0.2;
    EXPECT_EQ(refusal(), "the area on the screen has no extent");
    m_projector.screenTop = std::numeric_limits<double>::infinity();
    EXPECT_EQ(refusal(), "the area on the screen is not complete");
    m_projector.screenTop = 0.9;
    m_projector.screenBottom = ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED;
    EXPECT_EQ(refusal(), "the area on the screen is not complete");
}

TEST_F(ChannelSetupTest, AnAreaNeedsAScreenWithParameters) {
    load(AREA_TARGETS);
    ScreenManager::getInstance()->resetScreen();
    EXPECT_EQ(refusal(), "the screen has no 2D coordinates, in which the area could be found");
}

TEST_F(ChannelSetupTest, AFrustumLooksAheadAndSpansSomething) {
    load(PROJECTOR_TARGETS);
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(setup().groups(), (SolvedGroups{true, true, true, false, false}));
    EXPECT_TRUE(setup().isPicture());
    using Number = double ProjectorConfigDouble::*;
    for (const auto& [number, sound] :
         std::vector<std::pair<Number, double>>{{&ProjectorConfigDouble::frustumLeft, -0.5},
                                                {&ProjectorConfigDouble::frustumRight, 0.4},
                                                {&ProjectorConfigDouble::frustumBottom, -0.3},
                                                {&ProjectorConfigDouble::frustumTop, 0.2}}) {
        for (const double beside : {1.6, -1.6}) {
            m_projector.*number = beside;
            EXPECT_EQ(refusal(), "an edge of the frustum is 90 degrees or more to the side") << beside;
        }
        m_projector.*number = 1.5;
        EXPECT_EQ(refusal(), "");
        m_projector.*number = sound;
    }
    m_projector.frustumRight = -0.5;
    EXPECT_EQ(refusal(), "the frustum spans nothing");
    m_projector.frustumRight = 0.4;
    m_projector.frustumTop = -0.3;
    EXPECT_EQ(refusal(), "the frustum spans nothing");
    m_projector.frustumTop = 0.2;
    m_projector.orientationX = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(refusal(), "position and orientation are not finite");
    m_projector.orientationX = 0;
    m_projector.position = {0, std::numeric_limits<double>::infinity(), 0};
    EXPECT_EQ(refusal(), "position and orientation are not finite");
}

TEST_F(ChannelSetupTest, AProjectorLooksFromItsPlaceAndAnEyeFromThatOfTheDisplay) {
    load(PROJECTOR_TARGETS);
    EXPECT_EQ(setup().view().position, (Point<double, 3>{7, 8, 9}));
    EXPECT_THAT(namesIn(setup().list(setup().values())),
                ElementsAre("position x", "position y", "position z", "orientation z", "orientation x", "orientation y",
                            "frustum left", "frustum right", "frustum bottom", "frustum top"));
    load(EYE_TARGETS);
    EXPECT_EQ(setup().groups(), (SolvedGroups{false, true, true, false, false}));
    EXPECT_TRUE(setup().isPicture());
    EXPECT_FALSE(setup().shiftIsATurn());
    EXPECT_EQ(setup().view().position, m_config->getTargetLocatorConfig()->getTargetPosition());
    EXPECT_FALSE(setup().view().position == (Point<double, 3>{7, 8, 9}));
}

TEST_F(ChannelSetupTest, ALensIsNamedByItsModel) {
    load(PROJECTOR_TARGETS);
    m_projector.projectionModelName = L"Equidistant";
    EXPECT_EQ(refusal(), "");
    EXPECT_TRUE(setup().shiftIsATurn());
    EXPECT_EQ(setup().groups(), (SolvedGroups{true, true, true, false, false}));
    m_projector.projectionModelName = L"Rectilinear";
    EXPECT_FALSE(setup().shiftIsATurn());
    EXPECT_EQ(refusal(), "");
}

TEST_F(ChannelSetupTest, WhatIsSolvedOfTheNumbersFollowsFromTheirGroups) {
    load(PROJECTOR_TARGETS);
    const auto solvedBy = [this](const SolvedGroups& groups, bool isShiftHeld = false) {
        std::string text;
        for (const bool isSolved : setup().solved({groups, false, isShiftHeld})) {
            text += isSolved ? '1' : '0';
        }
        return text;
    };
    EXPECT_EQ(solvedBy({true, false, false, false, false}), "1110000000");
    EXPECT_EQ(solvedBy({false, true, false, false, false}), "0001110000");
    EXPECT_EQ(solvedBy({false, false, true, false, false}), "0000001111");
    EXPECT_EQ(solvedBy({false, false, true, false, false}, true), "0000001111") << "the edges move nevertheless";
    load(AREA_TARGETS);
    EXPECT_EQ(solvedBy({false, false, false, false, true}), "1111");
    EXPECT_EQ(solvedBy({true, true, true, true, false}), "0000");
}

}  // namespace
