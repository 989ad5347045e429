#include "DisplayReport/still/ScenePainter.h"

#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/still/SceneLegend.h"
#include "DisplayReport/still/StillLibrary.h"
#include "Scenes.h"
#include "still/Stills.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace Veltrani::DisplayReport;
using scenes::wall;
using testing::Contains;
using testing::Field;
using testing::Not;
using P3 = Point<double, 3>;

std::size_t opaqueTriangles(const Drawing& drawing) {
    return static_cast<std::size_t>(std::count_if(drawing.triangles.begin(), drawing.triangles.end(),
                                                  [](const auto& triangle) { return triangle.opacity >= 1; }));
}

/// A frustum from the eye by way of a mirror at y = 8.
ChannelFrustum mirrored() {
    ChannelFrustum frustum;
    frustum.edges = {{P3(), {-1, 8, 1}, {-2, 5, 1}}};
    frustum.rim = {{-2, 5, 1}, {0, 5, 1}, {0, 5, -1}};
    frustum.mirrorVertices = {{-1, 8, 1}, {1, 8, 1}, {1, 8, -1}};
    frustum.mirrorTriangles = {{0, 1, 2}};
    return frustum;
}

// The front view is symmetric, so the middle of the wall's left half lies at three eighths of its own width.
TEST(ScenePainter, TheChannelsPictureLiesOnItsHalfOfTheScreen) {
    const DisplayScene scene = wall();
    const Drawing drawing = ScenePainter("front", 500, 300).paint(scene);
    const PngImage image = stills::imageOf(drawing);
    const double left = (drawing.triangles[0].corners[0][0] + drawing.triangles[1].corners[0][0]) / 2;
    const double right = drawing.triangles[0].corners[1][0];
    const double down = (drawing.triangles[0].corners[1][1] + drawing.triangles[0].corners[2][1]) / 2;
    const auto at = [&](double part) {
        return image.at(static_cast<std::size_t>(left + (right - left) * part), static_cast<std::size_t>(down) + 9);
    };
    const auto lit = at(0.3);
    const auto dark = at(0.7);
    EXPECT_GT(lit[0] - lit[2], 60) << "orange";
    EXPECT_LT(std::abs(dark[0] - dark[2]), 30) << "the bare screen";
    EXPECT_EQ(image.at(499, 299), (PngImage::Colour{255, 255, 255}));
}

TEST(ScenePainter, AnEmptySceneIsAPictureToo) {
    for (const std::string& view : SceneCamera::views()) {
        const Drawing drawing = ScenePainter(view, 300, 200).paint({});
        EXPECT_EQ(stills::imageOf(drawing).bytes.size(), 3U * 300 * 200);
    }
}

TEST(ScenePainter, TheScreenIsOpaqueFromTheAudienceAndNotFromBehind) {
    DisplayScene scene = wall();
    EXPECT_EQ(opaqueTriangles(ScenePainter("front", 500, 300).paint(scene)), 2U);
    scene.eyes[0].point = {0, 9, 0};
    EXPECT_EQ(opaqueTriangles(ScenePainter("front", 500, 300).paint(scene)), 0U);
    scene.eyes.clear();
    EXPECT_EQ(opaqueTriangles(ScenePainter("front", 500, 300).paint(scene)), 2U) << "nobody looks";
}

TEST(ScenePainter, AScreenThatIsSeenByWayOfAMirrorHidesNoLight) {
    DisplayScene scene = wall();
    scene.mirror = SceneMirror{{0, 5, 0}, 3};
    EXPECT_EQ(opaqueTriangles(ScenePainter("front", 500, 300).paint(scene)), 0U);
}

TEST(ScenePainter, TheMirrorHasItsName) {
    DisplayScene scene = wall();
    EXPECT_THAT(ScenePainter("home", 800, 500).paint(scene).texts,
                Not(Contains(Field(&Drawing::Text::text, "mirror"))));
    scene.channels[0].frustum = mirrored();
    EXPECT_THAT(ScenePainter("home", 800, 500).paint(scene).texts, Contains(Field(&Drawing::Text::text, "mirror")));
}

TEST(ScenePainter, TheMeasuredScreenTakesThePlaceOfTheContent) {
    DisplayScene scene = wall();
    scene.surfaces.push_back(scene.surfaces[0]);
    scene.surfaces.back().name = "measured";
    scene.surfaces.back().triangles.pop_back();
    EXPECT_EQ(opaqueTriangles(ScenePainter("front", 500, 300).paint(scene)), 1U);
}

/// The wall with a shading: its left half dark, its right half lit by two.
DisplayScene shadedWall() {
    DisplayScene scene = wall();
    SceneShading shading;
    shading.vertices = {{-2, 5, -1}, {0, 5, -1}, {0, 5, 1}, {-2, 5, 1}, {0, 5, -1}, {2, 5, -1}, {2, 5, 1}, {0, 5, 1}};
    shading.regions = {{{}, 4, {{0, 1, 2}, {0, 2, 3}}}, {{0, 1}, 4, {{4, 5, 6}, {4, 6, 7}}}};
    shading.area = 8;
    scene.surfaces[0].shading = shading;
    return scene;
}

TEST(ScenePainter, TheScreenHasTheShadesOfItsLight) {
    const Drawing drawing = ScenePainter("front", 500, 300).paint(shadedWall());
    const PngImage image = stills::imageOf(drawing);
    double left = 1e9;
    double right = 0;
    for (const Drawing::Triangle& triangle : drawing.triangles) {
        EXPECT_EQ(triangle.opacity, 1) << "no cells of targets lie on it";
        for (const auto& corner : triangle.corners) {
            left = std::min(left, corner[0]);
            right = std::max(right, corner[0]);
        }
    }
    const double down = (drawing.triangles[0].corners[1][1] + drawing.triangles[0].corners[2][1]) / 2;
    const auto at = [&](double part) {
        return image.at(static_cast<std::size_t>(left + (right - left) * part), static_cast<std::size_t>(down) + 9);
    };
    const auto expectNear = [](const PngImage::Colour& found, const Colour& shade) {
        // Surfaces that are seen askew are a little darker.
        EXPECT_NEAR(found[0], shade.red, 12);
        EXPECT_NEAR(found[1], shade.green, 12);
        EXPECT_NEAR(found[2], shade.blue, 12);
    };
    expectNear(at(0.3), softShade(countColour(0)));
    expectNear(at(0.8), softShade(countColour(2)));
}

TEST(ScenePainter, ARimIsDrawnAsTheSceneHasIt) {
    DisplayScene scene = wall();
    scene.channels[0].targets.boundary.clear();
    const auto linesOf = [&scene](bool isDashed) {
        const auto lines = ScenePainter("front", 500, 300).paint(scene).lines;
        return std::count_if(lines.begin(), lines.end(), [=](const auto& line) { return line.isDashed == isDashed; });
    };
    const auto before = linesOf(false);
    scene.channels[0].frustum = ChannelFrustum{};
    scene.channels[0].frustum->rim = {{-2, 5, 1}, {0, 5, 1}, {0, 5, -1}};
    EXPECT_EQ(linesOf(false), before + 3);
    scene.channels[0].rimPieces = {PieceLook::WHOLE, PieceLook::NONE, PieceLook::DASHED};
    EXPECT_EQ(linesOf(false), before + 1);
    EXPECT_EQ(linesOf(true), 1);
}

TEST(ScenePainter, AnOutlineBeyondTheScreenIsDashed) {
    DisplayScene scene = wall();
    const auto dashed = [&scene] {
        const auto lines = ScenePainter("front", 500, 300).paint(scene).lines;
        return std::count_if(lines.begin(), lines.end(), [](const Drawing::Line& line) { return line.isDashed; });
    };
    EXPECT_EQ(dashed(), 0);
    scene.channels[0].beyond = {false, true, false, false};
    EXPECT_EQ(dashed(), 2) << "the lines to it and from it";
}

TEST(ScenePainter, AFrustumIsDrawnAlongItsEdgesAndItsRim) {
    DisplayScene scene = wall();
    const auto before = ScenePainter("front", 500, 300).paint(scene);
    scene.channels[0].frustum = mirrored();
    const auto after = ScenePainter("front", 500, 300).paint(scene);
    const Colour pale = mixed(scene.channels[0].colour, {255, 255, 255}, 0.25);
    const auto light = std::count_if(after.lines.begin(), after.lines.end(),
                                     [&pale](const auto& line) { return line.colour == pale; });
    // Two pieces of light in twelve parts each, three of the rim; the projector and a part of the mirror.
    EXPECT_EQ(light, 24 + 3);
    EXPECT_EQ(after.discs.size(), before.discs.size() + 1);
    EXPECT_EQ(after.triangles.size(), before.triangles.size() + 1);
}

// What was seen once: the title of a scale across one of its numbers.
TEST(ScenePainter, TextsOfTheScalesCoverNoOther) {
    for (const std::string& view : SceneCamera::views()) {
        const Drawing drawing = ScenePainter(view, 1600, 1000).paint(wall());
        int compared = 0;
        for (std::size_t a = 0; a < drawing.texts.size(); ++a) {
            for (std::size_t b = a + 1; b < drawing.texts.size(); ++b) {
                const Drawing::Text& one = drawing.texts[a];
                const Drawing::Text& other = drawing.texts[b];
                if (one.anchor != Drawing::Anchor::MIDDLE || other.anchor != Drawing::Anchor::MIDDLE) {
                    continue;
                }
                ++compared;
                const double across = (StillLibrary::get().width(one.text, one.size) +
                                       StillLibrary::get().width(other.text, other.size)) /
                                      2;
                EXPECT_TRUE(std::abs(one.right - other.right) >= across || std::abs(one.down - other.down) >= one.size)
                    << view << ": " << one.text << " and " << other.text;
            }
        }
        EXPECT_GT(compared, 10) << view;
    }
}

TEST(ScenePainter, AScaleThatIsSeenEndOnHasNoNumbers) {
    const auto front = ScenePainter("front", 1600, 1000).paint(wall()).texts;
    EXPECT_THAT(front, Contains(Field(&Drawing::Text::text, "x right [m]")));
    EXPECT_THAT(front, Not(Contains(Field(&Drawing::Text::text, "y forward [m]"))));
    const auto top = ScenePainter("top", 1600, 1000).paint(wall()).texts;
    EXPECT_THAT(top, Not(Contains(Field(&Drawing::Text::text, "z up [m]"))));
}

TEST(ScenePainter, NumbersFarFromTheOriginStayInsideThePicture) {
    const Drawing drawing = ScenePainter("home", 800, 500).paint(scenes::moved(wall(), {1e9, 1e9, 1e9}));
    int numbers = 0;
    for (const Drawing::Text& text : drawing.texts) {
        if (text.anchor == Drawing::Anchor::MIDDLE) {
            EXPECT_GE(text.right - StillLibrary::get().width(text.text, text.size) / 2, 0) << text.text;
            ++numbers;
        }
    }
    EXPECT_GT(numbers, 5);
}

TEST(ScenePainter, NothingIsDrawnThatIsNoPlace) {
    DisplayScene scene = scenes::moved(wall(), {1e9, -1e9, 1e9});
    scene.channels[0].frustum = mirrored();
    for (const std::string& view : SceneCamera::views()) {
        const Drawing drawing = ScenePainter(view, 500, 300).paint(scene);
        for (const Drawing::Line& line : drawing.lines) {
            EXPECT_TRUE(std::isfinite(norm(line.from)) && std::isfinite(norm(line.to))) << view;
        }
        for (const Drawing::Triangle& triangle : drawing.triangles) {
            EXPECT_TRUE(std::isfinite(norm(triangle.corners[0]))) << view;
        }
    }
}

TEST(ScenePainter, AFlatScreenIsOfOneShade) {
    DisplayScene scene = scenes::wall();
    SceneSurface& surface = scene.surfaces[0];
    surface.vertices.clear();
    surface.triangles.clear();
    for (std::uint32_t i = 0; i < 40; ++i) {
        const double left = -2 + 0.1 * i;
        surface.vertices.insert(surface.vertices.end(), {{left, 5, -1}, {left + 0.1, 5, -1}, {left + 0.1, 5, 1}});
        surface.triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    const Drawing drawing = ScenePainter("home", 1000, 600).paint(scene);
    std::vector<Drawing::Triangle> opaque;
    std::copy_if(drawing.triangles.begin(), drawing.triangles.end(), std::back_inserter(opaque),
                 [](const Drawing::Triangle& triangle) { return triangle.opacity == 1; });
    ASSERT_EQ(opaque.size(), 40U);
    for (const Drawing::Triangle& triangle : opaque) {
        EXPECT_EQ(triangle.colour, opaque.front().colour);
    }
}

// What lights a small picture is seen between its targets.
TEST(ScenePainter, TargetsThatStandCloseTogetherHaveSmallerDots) {
    const auto radiusOf = [](double share) {
        DisplayScene scene = scenes::wall();
        scene.channels[0].targets.grid.clear();
        for (int column = 0; column < 16; ++column) {
            for (int row = 0; row < 10; ++row) {
                scene.channels[0].targets.grid.push_back(
                    {column, row, {}, {share * (column / 7.5 - 1), 5, share * (row / 9.0 - 0.5)}});
            }
        }
        const Drawing drawing = ScenePainter("front", 1600, 1000).paint(scene);
        const auto dot = std::find_if(drawing.discs.begin(), drawing.discs.end(), [&](const Drawing::Disc& disc) {
            return disc.colour == mixed(scene.channels[0].colour, {0, 0, 0}, 0.25);
        });
        EXPECT_NE(dot, drawing.discs.end());
        return dot == drawing.discs.end() ? 0 : dot->radius;
    };
    EXPECT_NEAR(radiusOf(1), 2.6, 1e-9) << "there is room";
    EXPECT_LT(radiusOf(0.1), 1.3);
    EXPECT_GE(radiusOf(0.001), 0.5) << "they are still seen";
}

}  // namespace
