#include "DisplayReport/maps/ScreenMapper.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

const std::string FRUSTUM = "<Frustum left='-30' right='30' bottom='-20' top='20'/>";

class ScreenMapperTest : public testing::Test {
protected:
    ~ScreenMapperTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    /// Loads a display and its screen.
    void load(const std::string& screen, const std::string& projectors, const std::string& targets) {
        m_config = displays::parsed(screen, projectors, targets);
        ScreenManager::getInstance()->setScreenGeometry(m_config.get(), true);
        TargetLocatorManager::getInstance()->screenDefinitionChanged();
    }

    [[nodiscard]] std::unique_ptr<ScreenMapper> mapper(const std::string& channel = "A") const {
        return std::make_unique<ScreenMapper>(*m_config, ChannelChoice::of(*m_config, channel));
    }

    static std::optional<P2> back(ScreenMapper& map, const P3& place) {
        P2 picture{7, 7};
        if (!map.toPicture(place, picture)) {
            EXPECT_EQ(picture, (P2{7, 7})) << "untouched";
            return std::nullopt;
        }
        return picture;
    }

    static std::optional<P3> there(ScreenMapper& map, const P2& picture) {
        const std::array<P2, 1> from{picture};
        std::array<LayoutPoint, 1> to;
        map.toLayout(from, to);
        return to[0].isMapped ? std::optional(to[0].point) : std::nullopt;
    }

    [[nodiscard]] std::string faultOf(const std::string& channel = "A") const {
        try {
            static_cast<void>(mapper(channel));
        } catch (const VeltraniException& thrown) {
            return Veltrani::toUtf8(thrown.message);
        }
        return {};
    }

    LogTrap m_log;
    TemporaryFolder m_folder;
    std::unique_ptr<XMLConfigFile> m_config;
};

// Every kind, from their table. Oracle: the targets that its locator places.
TEST_F(ScreenMapperTest, ItsPlacesAreThoseOfTheTargetsOfEveryKind) {
    const std::string map = m_folder.write("a.map", displays::WHOLE_MAP);
    for (const DisplayKind& kind : DisplayKind::all()) {
        const std::string type = Veltrani::toUtf8(std::wstring(kind.type));
        SCOPED_TRACE(type);
        load(displays::SPHERE,
             displays::projector("A", displays::WHOLE_AREA + "<CustomPlanarMap file='" + map + "'/>" + FRUSTUM),
             "<TargetData type='" + type + "'>" + (kind.hasMirror() ? "<Mirror radius='2'/>" : "") + "</TargetData>");
        const auto channels = TargetPlacer(TargetPlan{6, 5, 0}).place(*m_config).channels;
        ASSERT_EQ(channels.size(), 1U);
        ASSERT_EQ(channels[0].fault, "");
        const auto mapping = mapper();
        int compared = 0;
        for (const GridTarget& target : channels[0].grid) {
            const auto place = there(*mapping, target.picture);
            ASSERT_TRUE(place.has_value());
            EXPECT_LT(norm(*place - target.point), 1e-7) << target.column << ' ' << target.row;
            const bool isWhereThePictureMeetsItself =
                kind.addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS &&
                (target.column == 0 || target.column == 5 || target.row == 0 || target.row == 4);
            const auto picture = back(*mapping, target.point);
            ASSERT_TRUE(picture.has_value()) << target.column << ' ' << target.row;
            if (!isWhereThePictureMeetsItself) {
                EXPECT_LT(norm(*picture - target.picture), 1e-6) << target.column << ' ' << target.row;
            }
            ++compared;
        }
        EXPECT_EQ(compared, 30);
    }
}

/// A wall of four by two metres at y = 5 from z = 0 to 2, whose left half A lights, mirrored, and whose right half B.
const std::string HALVES = displays::projector("A", "<ScreenArea left='0.5' right='0' bottom='0' top='1'/>") +
                           displays::projector("B", "<ScreenArea left='0.5' right='1' bottom='0' top='1'/>");

// Oracle: the numbers of the wall.
TEST_F(ScreenMapperTest, AnAreaOfAWallIsWhereItsBoundsSay) {
    load(displays::FLAT, HALVES, "<TargetData type='PlanarBasic'/>");
    const auto map = mapper();
    EXPECT_LT(norm(there(*map, {0.25, 0.75}).value() - P3{-0.5, 5, 1.5}), 1e-12);
    EXPECT_LT(norm(back(*map, {-0.5, 5, 1.5}).value() - P2{0.25, 0.75}), 1e-9);
    EXPECT_LT(norm(back(*map, {-2, 5, 0}).value() - P2{1, 0}), 1e-9) << "a corner";
    EXPECT_FALSE(back(*map, {0.5, 5, 1.5})) << "of B alone";
    EXPECT_FALSE(there(*map, {1.01, 0.5})) << "there is no light beside the picture";
    EXPECT_FALSE(there(*map, {std::numeric_limits<double>::quiet_NaN(), 0.5}));
    EXPECT_FALSE(back(*map, {0, std::numeric_limits<double>::infinity(), 0}));
}

TEST_F(ScreenMapperTest, APlaceOfFewDigitsIsTakenToTheScreenAndOneBesideItIsNot) {
    for (const std::string targets : {"<TargetData type='PlanarBasic'/>", "<TargetData type='Spherical'/>"}) {
        load(displays::SPHERE,
             displays::projector("A", "<ScreenArea left='0.4' right='0.6' bottom='0.4' top='0.6'/>" + FRUSTUM),
             targets);
        const auto map = mapper();
        const P3 exact = there(*map, {0.3, 0.6}).value();
        const P3 rounded{std::round(exact[0] * 1e4) / 1e4, std::round(exact[1] * 1e4) / 1e4,
                         std::round(exact[2] * 1e4) / 1e4};
        EXPECT_NE(rounded, exact);
        const auto found = back(*map, rounded);
        ASSERT_TRUE(found.has_value()) << targets;
        EXPECT_LT(norm(*found - P2{0.3, 0.6}), 1e-4) << targets;
        EXPECT_FALSE(back(*map, exact * 0.99)) << targets << ": in front of the screen";
        EXPECT_FALSE(back(*map, exact * -1.0)) << targets << ": behind the viewer";
    }
}

// A cylinder all around, cut open at +-180 degrees: two channels meet there, and each has its own edge.
TEST_F(ScreenMapperTest, AtTheSeamOfAScreenEachChannelHasItsOwnEdge) {
    load("<Screen shape='Cylinder'><Radius value='3'/><Size height='2'/><Azimuth min='-180' max='180'/></Screen>",
         displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>") +
             displays::projector("B", "<ScreenArea left='0.5' right='1' bottom='0' top='1'/>"),
         "<TargetData type='PlanarBasic'/>");
    const auto left = mapper("A");
    const auto right = mapper("B");
    const P3 seam = there(*left, {0, 0.5}).value();
    EXPECT_LT(norm(seam - there(*right, {1, 0.5}).value()), 1e-9) << "one place";
    EXPECT_LT(norm(back(*left, seam).value() - P2{0, 0.5}), 1e-6);
    EXPECT_LT(norm(back(*right, seam).value() - P2{1, 0.5}), 1e-6);
}

TEST_F(ScreenMapperTest, WhatItLacksIsNamed) {
    m_config = displays::parsed(displays::FLAT, HALVES, "<TargetData type='PlanarBasic'/>");
    ScreenManager::deleteInstance();
    EXPECT_THAT(faultOf(), HasSubstr("channel A (A): there is no screen on which its light could arrive"));
    load(displays::FLAT, displays::projector("A", ""), "<TargetData type='CustomPlanar'/>");
    EXPECT_THAT(faultOf(), HasSubstr("channel A (A): "));
    const std::string mesh = m_folder.write("wall.obj", "v -1 5 0\nv 1 5 0\nv 0 5 1\nf 1 2 3\n");
    load("<Screen shape='Mesh' fileUnit='m'><ContentMesh file='" + mesh +
             "'/><ImportOrientation up='Z' forward='Y'/></Screen>",
         HALVES, "<TargetData type='PlanarBasic'/>");
    EXPECT_THAT(faultOf(), HasSubstr("channel A (A): ")) << "a mesh without texture coordinates";
}

}  // namespace
