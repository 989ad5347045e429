#include "DisplayReport/scene/ChannelFrustum.h"

#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "KelvoControl/Blend.h"
#include "KelvoControl/ProjectionModel.h"
#include "KelvoControl/Viewport.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/ProjectorConfigDouble.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using testing::IsEmpty;
using testing::SizeIs;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Of rays that meet nothing.
constexpr double REACH = 7;

class ChannelFrustumTest : public testing::Test {
protected:
    ~ChannelFrustumTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    static std::optional<ChannelFrustum> trace(XMLConfigFile& config) {
        EXPECT_THAT(ScreenLoader::load(config), IsEmpty());
        const ProjectorConfig* projector = config.getProjectorConfig(L"A");
        const auto locator = TargetLocatorManager::getInstance()->getTargetLocator(&config, projector);
        return FrustumTracer(locator.get(), *projector, REACH).trace();
    }

    static std::optional<ChannelFrustum> trace(const std::string& screen, const std::string& elements,
                                               const std::string& targets) {
        return trace(*displays::parsed(screen, displays::projector("A", elements), targets));
    }

    LogTrap m_log;
};

// Oracle: the corners of the frustum's picture, by the closed form of its plane and of the sphere.
TEST_F(ChannelFrustumTest, StartsAtTheEyeAndEndsOnTheSphere) {
    const auto frustum = trace(displays::SPHERE, "<Frustum left='-45' right='45' bottom='-45' top='45'/>",
                               "<TargetData type='Spherical'/>");
    ASSERT_TRUE(frustum.has_value());
    EXPECT_EQ(frustum->apex, P3());
    const double c = 5 / std::sqrt(3.0);
    const std::vector<P3> corners{{-c, c, c}, {c, c, c}, {c, c, -c}, {-c, c, -c}};
    ASSERT_EQ(frustum->edges.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        ASSERT_EQ(frustum->edges[i].size(), 2U);
        EXPECT_LE(norm(frustum->edges[i][1] - corners[i]), 1e-12);
    }
    EXPECT_EQ(frustum->rim.size(), 64U);
    EXPECT_THAT(frustum->mirrorTriangles, IsEmpty());
}

TEST_F(ChannelFrustumTest, FollowsTheModelOfItsLens) {
    const auto frustum = trace(displays::SPHERE,
                               "<ProjectionModel name='Equidistant'/><Orientation z='90' x='0' y='0'/><Frustum "
                               "left='-60' right='60' bottom='-30' top='30'/><Position x='1' y='0' z='0'/>",
                               "<TargetData type='ProjectorCentric'/>");
    ASSERT_TRUE(frustum.has_value());
    EXPECT_EQ(frustum->apex, (P3{1, 0, 0}));
    // Turned to the right: forward is +x. The top left corner is seen at yaw -60, pitch 30 degrees; so is no corner of
    // a plane.
    const double pi = std::numbers::pi;
    const P3 local{std::sin(-pi / 3) * std::cos(pi / 6), std::cos(-pi / 3) * std::cos(pi / 6), std::sin(pi / 6)};
    const P3 direction{local[1], -local[0], local[2]};
    const P3 offset = frustum->edges.at(0).at(1) - frustum->apex;
    EXPECT_LE(norm(offset * (1 / norm(offset)) - direction), 1e-12);
    EXPECT_NEAR(norm(frustum->edges[0][1]), 5, 1e-12);
}

// Two routes: rays go from the picture to the screen, the model back from the screen into the picture.
TEST_F(ChannelFrustumTest, TheModelSeesTheCornersOfAFrustumInTheCornersOfItsPicture) {
    const std::string lens = sourceFolder() + "/examples/lens-cylinder/lens.yml";
    const std::pair<std::string, std::wstring> models[] = {
        {"<ProjectionModel name='Equidistant'/>", L"Equidistant"},
        {"<ProjectionModel name='BrownConrady' file='" + lens + "'/>",
         L"BrownConrady:" + std::wstring(lens.begin(), lens.end())}};
    for (const auto& [element, name] : models) {
        const auto config = displays::parsed(
            displays::SPHERE,
            displays::projector("A", element + "<Orientation z='20' x='-10' y='5'/><Frustum left='-25' right='25' "
                                               "bottom='-15' top='15'/><Position x='0.5' y='-0.25' z='1'/>"),
            "<TargetData type='ProjectorCentric'/>");
        const auto frustum = trace(*config);
        ASSERT_TRUE(frustum.has_value());
        const auto model =
            Blend::createProjectionModel(Viewport::of(*config->getProjectorConfig(L"A"), name), name, L"");
        const P2 corners[] = {{0, 1}, {1, 1}, {1, 0}, {0, 0}};
        ASSERT_THAT(frustum->edges, SizeIs(4));
        for (std::size_t i = 0; i < 4; ++i) {
            P2 seen;
            ASSERT_TRUE(model->projectNormalised(frustum->edges[i].back(), seen));
            EXPECT_LE(norm(seen - corners[i]), 1e-9) << i;
        }
        ASSERT_THAT(frustum->rim, SizeIs(64));
        P2 seen;
        ASSERT_TRUE(model->projectNormalised(frustum->rim[8], seen));
        EXPECT_LE(norm(seen - P2{0.5, 1}), 1e-9) << "the middle of the upper edge";
    }
}

TEST_F(ChannelFrustumTest, GoesByWayOfTheMirrorAndIsReflectedThere) {
    const auto frustum = trace(displays::SPHERE, "<Frustum left='-20' right='20' bottom='-20' top='20'/>",
                               "<TargetData type='SphericalCollimated'><TargetPosition x='0' y='-0.3' z='-0.5'/>"
                               "<Mirror radius='3'><Position x='0' y='0' z='1.5'/></Mirror></TargetData>");
    ASSERT_TRUE(frustum.has_value());
    const P3 centre{0, 0, 1.5};
    EXPECT_EQ(frustum->apex, (P3{0, -0.3, 1.0}));
    const auto unit = [](const P3& way) { return way * (1 / norm(way)); };
    for (const auto& edge : frustum->edges) {
        ASSERT_EQ(edge.size(), 3U);
        EXPECT_NEAR(norm(edge[1] - centre), 3, 1e-12) << "on the mirror";
        EXPECT_NEAR(norm(edge[2]), 5, 1e-12) << "on the screen";
        // The law of reflection: the way in and the way out are alike to both sides of the normal.
        const P3 normal = unit(edge[1] - centre);
        const P3 in = unit(edge[1] - edge[0]);
        const P3 out = unit(edge[2] - edge[1]);
        EXPECT_LE(norm(out - (in - normal * (2 * dot(in, normal)))), 1e-6);
    }
    EXPECT_EQ(frustum->mirrorTriangles.size(), 2U * 12 * 12);
}

// From twice its radius a mirror is seen under 30 degrees to all sides: past the corners of this picture.
TEST_F(ChannelFrustumTest, OfAMirrorOnlyTheCellsThatAreMetWholeAreDrawn) {
    const auto frustum = trace(displays::SPHERE, "<Frustum left='-28' right='28' bottom='-20' top='20'/>",
                               "<TargetData type='SphericalCollimated'><TargetPosition x='0' y='-2' z='0'/>"
                               "<Mirror radius='1'><Position x='0' y='0' z='1.5'/></Mirror></TargetData>");
    ASSERT_TRUE(frustum.has_value());
    const double degree = std::numbers::pi / 180;
    const auto isMet = [&](int column, int row) {
        return std::hypot(std::tan(28 * degree) * (column / 6.0 - 1), std::tan(20 * degree) * (row / 6.0 - 1)) <
               std::tan(30 * degree);
    };
    std::size_t cells = 0;
    for (int row = 0; row < 12; ++row) {
        for (int column = 0; column < 12; ++column) {
            const bool isWhole =
                isMet(column, row) && isMet(column + 1, row) && isMet(column, row + 1) && isMet(column + 1, row + 1);
            cells += isWhole ? 1 : 0;
        }
    }
    ASSERT_LT(cells, 12U * 12);
    EXPECT_EQ(frustum->mirrorTriangles.size(), 2 * cells);
    for (const auto& triangle : frustum->mirrorTriangles) {
        for (const std::uint32_t corner : triangle) {
            EXPECT_NEAR(norm(frustum->mirrorVertices.at(corner) - P3{0, 0, 1.5}), 1, 1e-12);
        }
    }
}

TEST_F(ChannelFrustumTest, APlanarChannelHasTheFrustumOfItsConfiguration) {
    const auto frustum = trace(
        displays::FLAT,
        displays::WHOLE_AREA + "<Frustum left='-10' right='10' bottom='-5' top='5'/><Position x='0' y='0' z='1'/>",
        "<TargetData type='PlanarBasic'/>");
    ASSERT_TRUE(frustum.has_value());
    const double degree = std::numbers::pi / 180;
    const P3 corner{-5 * std::tan(10 * degree), 5, 1 + 5 * std::tan(5 * degree)};
    EXPECT_LE(norm(frustum->edges.at(0).at(1) - corner), 1e-12);
}

TEST_F(ChannelFrustumTest, APlanarChannelWithoutAFrustumHasNone) {
    EXPECT_FALSE(trace(displays::FLAT, displays::WHOLE_AREA, "<TargetData type='PlanarBasic'/>").has_value());
}

TEST_F(ChannelFrustumTest, RaysThatMissTheScreenEndAsFarAwayAsTheOthers) {
    // The wall reaches two metres to the left; the left half of this picture goes past it.
    const auto frustum = trace(
        displays::FLAT,
        displays::WHOLE_AREA + "<Frustum left='-40' right='10' bottom='-5' top='5'/><Position x='0' y='0' z='1'/>",
        "<TargetData type='PlanarBasic'/>");
    ASSERT_TRUE(frustum.has_value());
    double longest = 0;
    for (const P3& end : frustum->rim) {
        if (std::abs(end[1] - 5) < 1e-9 && end[0] >= -2) {
            longest = std::max(longest, norm(end - frustum->apex));
        }
    }
    EXPECT_NEAR(norm(frustum->edges.at(0).at(1) - frustum->apex), longest, 1e-9);
}

TEST_F(ChannelFrustumTest, WhereNothingIsMetRaysAreAsLongAsAsked) {
    const auto frustum = trace(displays::FLAT,
                               displays::WHOLE_AREA +
                                   "<Orientation z='180' x='0' y='0'/><Frustum left='-10' right='10' "
                                   "bottom='-5' top='5'/>",
                               "<TargetData type='PlanarBasic'/>");
    ASSERT_TRUE(frustum.has_value());
    for (const P3& end : frustum->rim) {
        EXPECT_NEAR(norm(end - frustum->apex), REACH, 1e-9);
        EXPECT_LT(end[1], 0) << "backwards";
    }
}

TEST_F(ChannelFrustumTest, WithoutALocatorTheConfigurationIsUsed) {
    ProjectorConfigDouble projector(L"A");
    projector.frustumLeft = -0.25;
    projector.frustumRight = 0.25;
    projector.frustumBottom = -0.125;
    projector.frustumTop = 0.125;
    const auto frustum = FrustumTracer(nullptr, projector, REACH).trace();
    ASSERT_TRUE(frustum.has_value());
    EXPECT_THAT(frustum->edges, SizeIs(4));
    projector.frustumRight = -0.25;
    EXPECT_FALSE(FrustumTracer(nullptr, projector, REACH).trace().has_value()) << "no extent";
}

TEST_F(ChannelFrustumTest, AProjectorThatIsNowhereHasNone) {
    ProjectorConfigDouble projector(L"A");
    projector.frustumLeft = projector.frustumBottom = -0.25;
    projector.frustumRight = projector.frustumTop = 0.25;
    projector.position = {NAN, 0, 0};
    EXPECT_FALSE(FrustumTracer(nullptr, projector, REACH).trace().has_value());
}

}  // namespace
