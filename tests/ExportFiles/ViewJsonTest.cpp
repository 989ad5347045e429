#include "ExportFiles/ViewJson.h"

#include "ExportedDisplays.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;
using namespace exported_displays;
using Veltrani::ExportFiles::jsonOf;
using Json = nlohmann::json;
using P3 = Point<double, 3>;

constexpr double DEGREE = std::numbers::pi / 180;

std::vector<double> numbersOf(const Json& json) {
    return json.get<std::vector<double>>();
}

void expectNear(const Json& found, const std::vector<double>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(found[i].get<double>(), expected[i], 1e-12) << i;
    }
}

Json inputOf(const std::string& display, const InputChoice& choice) {
    const ExportedChannel channel(display);
    const ChannelSight sight(channel.config(), channel.choice());
    return Json::parse(jsonOf(ContentInput(channel.config(), sight, choice), RenderConvention()));
}

// The view stands at (1, 2, 3), looks along +x and has z up; the formula of its projection is that of OpenGL.
TEST(ViewJson, AFrustumHasItsAnglesAndItsMatricesRowByRow) {
    RenderFrustum frustum;
    frustum.view = ViewFrame::looking({1.0, 2.0, 3.0}, {1.0, 0.0, 0.0});
    frustum.left = -0.5;
    frustum.right = 1;
    frustum.bottom = -0.25;
    frustum.top = 0.75;
    RenderConvention convention;
    convention.nearPlane = 2;
    convention.farPlane = 6;
    const Json json = Json::parse(jsonOf(frustum, convention));
    EXPECT_EQ(numbersOf(json["position"]), (std::vector<double>{1, 2, 3}));
    EXPECT_NEAR(json["orientation"]["z"].get<double>(), 90 * DEGREE, 1e-12);
    EXPECT_NEAR(json["orientation"]["x"].get<double>(), 0, 1e-12);
    EXPECT_NEAR(json["orientation"]["y"].get<double>(), 0, 1e-12);
    expectNear(json["right"], {0, -1, 0});
    expectNear(json["forward"], {1, 0, 0});
    expectNear(json["up"], {0, 0, 1});
    EXPECT_EQ(json["tangents"], (Json{{"left", -0.5}, {"right", 1.0}, {"bottom", -0.25}, {"top", 0.75}}));
    EXPECT_NEAR(json["angles"]["left"].get<double>(), -std::atan(0.5), 1e-12);
    EXPECT_NEAR(json["angles"]["right"].get<double>(), 45 * DEGREE, 1e-12);
    EXPECT_NEAR(json["angles"]["bottom"].get<double>(), -std::atan(0.25), 1e-12);
    EXPECT_NEAR(json["angles"]["top"].get<double>(), std::atan(0.75), 1e-12);
    expectNear(json["viewMatrix"], {0, -1, 0, 2, 0, 0, 1, -3, -1, 0, 0, 1, 0, 0, 0, 1});
    expectNear(json["projectionMatrix"],
               {2 / 1.5, 0, 0.5 / 1.5, 0, 0, 2, 0.5, 0, 0, 0, -8.0 / 4, -2 * 6 * 2 / 4.0, 0, 0, -1, 0});
}

/// The angles of an orientation, each by its own name.
TEST(ViewJson, AViewThatIsTurnedEachWayNamesItsAngles) {
    RenderFrustum frustum;
    // Azimuth 30 degrees to the right, elevation 20 degrees, rolled by 10.
    const P3 forward{std::sin(30 * DEGREE) * std::cos(20 * DEGREE), std::cos(30 * DEGREE) * std::cos(20 * DEGREE),
                     std::sin(20 * DEGREE)};
    frustum.view = ViewFrame::looking({}, forward, 10 * DEGREE);
    const Json json = Json::parse(jsonOf(frustum, RenderConvention()));
    EXPECT_NEAR(json["orientation"]["z"].get<double>(), 30 * DEGREE, 1e-12);
    EXPECT_NEAR(json["orientation"]["x"].get<double>(), 20 * DEGREE, 1e-12);
    EXPECT_NEAR(json["orientation"]["y"].get<double>(), 10 * DEGREE, 1e-12);
}

TEST(ViewJson, EachKindOfInputStatesWhatItHas) {
    InputChoice choice;
    for (const InputKind kind : {InputKind::FRUSTUM, InputKind::FISHEYE, InputKind::EQUIRECTANGULAR, InputKind::CUBE,
                                 InputKind::LAYOUT, InputKind::SCREEN}) {
        choice.kind = kind;
        choice.aperture = 3;
        choice.pixels = {640, 480};
        const Json json = inputOf(WALL, choice);
        EXPECT_EQ(json["kind"], nameOf(kind));
        EXPECT_EQ(json["pixels"], (Json{640, 480}));
        EXPECT_EQ(json["wrapsAround"], kind == InputKind::EQUIRECTANGULAR) << nameOf(kind);
        const bool isSeen = kind != InputKind::LAYOUT && kind != InputKind::SCREEN;
        EXPECT_EQ(json["view"].is_object(), isSeen) << nameOf(kind);
        EXPECT_EQ(json["view"].is_null(), !isSeen) << nameOf(kind);
        EXPECT_EQ(json["aperture"], kind == InputKind::FISHEYE ? Json(3.0) : Json()) << nameOf(kind);
        EXPECT_EQ(json["frustum"].is_object(), kind == InputKind::FRUSTUM) << nameOf(kind);
        EXPECT_EQ(json["faces"].is_array(), kind == InputKind::CUBE) << nameOf(kind);
    }
}

TEST(ViewJson, ACubeHasSixFacesWithTheirDirections) {
    InputChoice choice;
    choice.kind = InputKind::CUBE;
    const Json faces = inputOf(WALL, choice)["faces"];
    ASSERT_EQ(faces.size(), 6U);
    struct Face {
        const char* name;
        std::vector<double> forward;
        std::vector<double> up;
    };
    const std::array<Face, 6> expected{Face{"right", {1, 0, 0}, {0, 0, 1}}, {"left", {-1, 0, 0}, {0, 0, 1}},
                                       {"front", {0, 1, 0}, {0, 0, 1}},     {"back", {0, -1, 0}, {0, 0, 1}},
                                       {"top", {0, 0, 1}, {0, -1, 0}},      {"bottom", {0, 0, -1}, {0, 1, 0}}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(faces[i]["name"], expected[i].name);
        expectNear(faces[i]["frustum"]["forward"], expected[i].forward);
        expectNear(faces[i]["frustum"]["up"], expected[i].up);
        EXPECT_NEAR(faces[i]["frustum"]["angles"]["right"].get<double>(), 45 * DEGREE, 1e-12);
    }
}

TEST(ViewJson, AWarpStatesItsNodesAndItsErrorWhereOneWasMeasured) {
    const ExportedChannel behind(BEHIND);
    const ChannelWarp warp = behind.warp(InputKind::EQUIRECTANGULAR, nodes(9, 5));
    const Json json = Json::parse(jsonOf(warp, 77));
    EXPECT_EQ(json["size"], (Json{9, 5}));
    EXPECT_EQ(json["mapped"], 45);
    EXPECT_EQ(json["continued"], 0);
    EXPECT_EQ(json["unmapped"], 0);
    EXPECT_EQ(json["leftOutOfGrids"], 77);
    EXPECT_EQ(json["leftOutAtPoles"], 0);
    EXPECT_EQ(json["partLeftOutAtPoles"], 0);
    ASSERT_TRUE(json["error"].is_object());
    EXPECT_GT(warp.error().places, 0U);
    EXPECT_EQ(json["error"]["largest"], warp.error().largest);
    EXPECT_EQ(json["error"]["largestOfGrid"], warp.error().largestOfGrid);
    EXPECT_EQ(json["error"]["places"], warp.error().places);
    EXPECT_EQ(json["error"]["beyond"], warp.error().beyond);
    EXPECT_EQ(json["error"]["leftOut"], warp.error().leftOut);
    const Json ofPixels = Json::parse(jsonOf(behind.warp(InputKind::EQUIRECTANGULAR, pixels(false)), 0));
    EXPECT_EQ(ofPixels["size"], (Json{40, 20}));
    EXPECT_TRUE(ofPixels["error"].is_null());
}

TEST(ViewJson, AConventionIsStatedInItsWords) {
    RenderConvention convention;
    convention.depth = RenderConvention::Depth::REVERSED_Z;
    convention.world = RenderConvention::World::Y_UP;
    convention.handed = RenderConvention::Handed::LEFT;
    convention.nearPlane = 0.25;
    convention.farPlane = 50;
    Json json = Json::parse(jsonOf(convention));
    EXPECT_NE(json["matrices"].get<std::string>().find("row-major"), std::string::npos);
    json.erase("matrices");
    EXPECT_EQ(json,
              (Json{{"depth", "reversed-z"}, {"world", "y-up"}, {"handed", "left"}, {"near", 0.25}, {"far", 50}}));
}

}  // namespace
