#include "Configuration/detail/XmlDisplayConfigs.h"

#include "Configuration/XMLConfigFile.h"
#include "Samples.h"

#include <gtest/gtest.h>

#include <numbers>
#include <string>

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;
using Table = std::vector<std::pair<double, double>>;

void expectNear(const Table& table, const Table& degrees) {
    ASSERT_EQ(table.size(), degrees.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        EXPECT_DOUBLE_EQ(table[i].first, degrees[i].first * DEGREE);
        EXPECT_DOUBLE_EQ(table[i].second, degrees[i].second * DEGREE);
    }
}

TEST(XmlTargetLocatorConfig, ReadsEveryValue) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "t");
    const TargetLocatorConfig* const target = config->getTargetLocatorConfig();
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->getTargetDataType(), L"SphericalCollimated");
    EXPECT_EQ(target->getTargetPosition(), (Point<double, 3>{0.0, 0.0, 1.3}));
    EXPECT_DOUBLE_EQ(target->getMirrorOrientation()[0], 1 * DEGREE);
    EXPECT_DOUBLE_EQ(target->getMirrorOrientation()[1], 2 * DEGREE);
    EXPECT_DOUBLE_EQ(target->getMirrorOrientation()[2], 3 * DEGREE);
    EXPECT_EQ(target->getMirrorPosition()[0], 0.0);
    EXPECT_DOUBLE_EQ(target->getMirrorPosition()[1], 2.5);
    EXPECT_DOUBLE_EQ(target->getMirrorPosition()[2], 0.1);
    EXPECT_EQ(target->getMirrorRadius(), 3.5);
    expectNear(target->getYawTable(), {{-60.0, -61.5}, {0.0, 0.0}, {60.0, 62.0}});
    expectNear(target->getPitchTable(), {{-20.0, -20.25}, {20.0, 20.5}});
}

TEST(XmlTargetLocatorConfig, TheTargetPositionIsTheEyePointUnlessStated) {
    const auto config = XMLConfigFile::parse(
        displayAround(
            "<TargetData type='Spherical'/><Screen shape='Sphere'><Radius value='1'/><EyePoint x='1' y='2' z='3'/>"
            "</Screen>"),
        "t");
    EXPECT_EQ(config->getTargetLocatorConfig()->getTargetPosition(), (Point<double, 3>{1.0, 2.0, 3.0}));
}

TEST(XmlTargetLocatorConfig, TheStatedPositionHoldsEvenAtTheOrigin) {
    const auto config = XMLConfigFile::parse(
        displayAround(
            "<TargetData type='Spherical'><TargetPosition x='0' y='0' z='0'/></TargetData><Screen shape='Sphere'>"
            "<Radius value='1'/><EyePoint x='1' y='2' z='3'/></Screen>"),
        "t");
    EXPECT_EQ(config->getTargetLocatorConfig()->getTargetPosition(), (Point<double, 3>{}));
}

TEST(XmlTargetLocatorConfig, WhatIsNotStatedIsNeutral) {
    const auto config = XMLConfigFile::parse(displayAround("<TargetData type='3D'/>"), "t");
    const TargetLocatorConfig* const target = config->getTargetLocatorConfig();
    EXPECT_EQ(target->getTargetPosition(), (Point<double, 3>{}));
    EXPECT_EQ(target->getMirrorOrientation(), (Point<double, 3>{}));
    EXPECT_EQ(target->getMirrorPosition(), (Point<double, 3>{}));
    EXPECT_EQ(target->getMirrorRadius(), 0.0);
    EXPECT_TRUE(target->getYawTable().empty());
    EXPECT_TRUE(target->getPitchTable().empty());
}

TEST(XmlTargetLocatorConfig, ThereMayBeNone) {
    EXPECT_EQ(XMLConfigFile::parse(smallConfiguration(), "t")->getTargetLocatorConfig(), nullptr);
}

}  // namespace
