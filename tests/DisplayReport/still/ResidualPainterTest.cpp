#include "DisplayReport/still/ResidualPainter.h"

#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/still/ChannelPicturePainter.h"
#include "DisplayReport/still/SceneLegend.h"
#include "DisplayReport/still/ScenePainter.h"
#include "Scenes.h"
#include "still/Stills.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::Not;

constexpr double NOWHERE = std::numeric_limits<double>::quiet_NaN();
constexpr int WIDTH = 1600;
constexpr int HEIGHT = 1000;

/// The wall with an inlier, an outlier of line 17 and a point without a vector.
DisplayScene measuredWall(double factor) {
    DisplayScene scene = scenes::wall();
    scene.channels[0].targets.projectorId = "A";
    const SceneResidual inlier{{0.25, 0.5}, {-1.5, 5, 0}, {10, 0}, {0.01, 0, 0}, false, 2};
    const SceneResidual outlier{{0.5, 0.25}, {-1, 5, -0.5}, {0, 900}, {0, 0, 0.9}, true, 17};
    const SceneResidual lost{{0.75, 0.5}, {-0.5, 5, 0}, {NOWHERE, NOWHERE}, {NOWHERE, NOWHERE, NOWHERE}, false, 3};
    ResidualCollector(factor).addTo(scene, {{{"A", {inlier, outlier, lost}}}});
    return scene;
}

/// What residuals add to a drawing.
struct Marks {
    std::vector<Drawing::Line> vectors;  ///< of inliers, whole
    std::vector<Drawing::Line> dashed;
    std::size_t dots = 0;
    std::vector<std::string> texts;
};

/// Those that stand over everything else.
Marks marksOf(const Drawing& drawing) {
    Marks marks;
    for (const Drawing::Line& line : drawing.lines) {
        if (line.from[2] > 1e6) {
            (line.isDashed ? marks.dashed : marks.vectors).push_back(line);
        }
    }
    marks.dots = static_cast<std::size_t>(std::count_if(drawing.discs.begin(), drawing.discs.end(),
                                                        [](const auto& disc) { return disc.centre[2] > 1e6; }));
    for (const Drawing::Text& text : drawing.texts) {
        marks.texts.push_back(text.text);
    }
    return marks;
}

double lengthOf(const Drawing::Line& line) {
    return std::hypot(line.to[0] - line.from[0], line.to[1] - line.from[1]);
}

// Seen from the front all of the wall is equally far: lengths on it are proportional to lengths in the drawing. Its
// left half is 2 wide.
TEST(ResidualPainter, VectorsAreAsLongAsTheFactorStates) {
    const DisplayScene scene = measuredWall(20);
    const Drawing drawing = ScenePainter("front", WIDTH, HEIGHT).paint(scene);
    const SceneCamera camera(scene, "front", SceneLegend(WIDTH, HEIGHT, scene).sceneWidth(),
                             SceneLegend(WIDTH, HEIGHT, scene).sceneHeight());
    const double unit = (*camera.place({1, 5, 0}))[0] - (*camera.place({0, 5, 0}))[0];
    const Marks marks = marksOf(drawing);
    // The inlier, two bars of the outlier that is cut, and its cross.
    ASSERT_EQ(marks.vectors.size(), 5U);
    EXPECT_NEAR(lengthOf(marks.vectors[0]), 0.2 * unit, 1e-6);
    EXPECT_GT(marks.vectors[0].to[0], marks.vectors[0].from[0]) << "to the right";
    ASSERT_EQ(marks.dashed.size(), 1U);
    EXPECT_NEAR(lengthOf(marks.dashed[0]), 0.15 * std::sqrt(20.0) * unit, 1e-6) << "cut";
    EXPECT_LT(marks.dashed[0].to[1], marks.dashed[0].from[1]) << "upwards";
    EXPECT_EQ(marks.dots, 2U) << "the point without a vector has a dot";
    EXPECT_THAT(marks.texts, Contains("17"));
    EXPECT_THAT(marks.texts, Contains("residuals after the fit, drawn 20 times as long"));
    EXPECT_THAT(marks.texts, Contains("outlier, with its line of the table"));
}

// The bar of the key: its length in the drawing over the factor, in the units of the middle of the scene, is its text.
TEST(ResidualPainter, TheScaleBarIsAsLongAsItSays) {
    const DisplayScene scene = measuredWall(20);
    const Drawing drawing = ScenePainter("front", WIDTH, HEIGHT).paint(scene);
    const SceneLegend legend(WIDTH, HEIGHT, scene);
    const SceneCamera camera(scene, "front", legend.sceneWidth(), legend.sceneHeight());
    const auto text = std::find_if(drawing.texts.begin(), drawing.texts.end(),
                                   [](const auto& one) { return one.text.ends_with(" m in the middle"); });
    ASSERT_NE(text, drawing.texts.end());
    const double stated = std::stod(text->text);
    const auto bar = std::find_if(drawing.boxes.begin(), drawing.boxes.end(), [&](const auto& box) {
        return box.top < text->down && box.top > text->down - 2 * text->size && box.width > 10;
    });
    ASSERT_NE(bar, drawing.boxes.end());
    EXPECT_NEAR(bar->width, stated * 20 * camera.magnification(), 1e-6);
    EXPECT_GT(bar->width, 20);
}

// The boxes of a line of the key from left to right, as their ends.
std::vector<std::pair<double, double>> symbolsOf(const Drawing& drawing, const Drawing::Text& text) {
    std::vector<std::pair<double, double>> ends;
    for (const Drawing::Box& box : drawing.boxes) {
        const double middle = box.top + box.height / 2;
        if (middle < text.down && middle > text.down - text.size && box.left < text.right && box.width < 100) {
            ends.emplace_back(box.left, box.left + box.width);
        }
    }
    std::sort(ends.begin(), ends.end());
    return ends;
}

// An outlier is known by its dashes: they stand apart, are equally long, and no symbol reaches its words.
TEST(ResidualPainter, TheSymbolsOfTheKeyStandBesideTheirWords) {
    const Drawing drawing = ScenePainter("front", WIDTH, HEIGHT).paint(measuredWall(20));
    std::map<std::string, std::vector<std::pair<double, double>>> symbols;
    for (const Drawing::Text& text : drawing.texts) {
        if (text.text == "from measured to fitted place" || text.text == "cut: it is longer" ||
            text.text == "outlier, with its line of the table") {
            symbols[text.text] = symbolsOf(drawing, text);
            ASSERT_FALSE(symbols[text.text].empty()) << text.text;
            for (const auto& [left, right] : symbols[text.text]) {
                EXPECT_LT(right, text.right) << text.text;
            }
        }
    }
    ASSERT_EQ(symbols.size(), 3U);
    const auto cross = std::find_if(drawing.texts.begin(), drawing.texts.end(),
                                    [](const auto& one) { return one.text == "\xc3\x97"; });
    ASSERT_NE(cross, drawing.texts.end());
    const auto words = std::find_if(drawing.texts.begin(), drawing.texts.end(), [&](const auto& one) {
        return one.text == "outlier, with its line of the table" && one.down == cross->down;
    });
    ASSERT_NE(words, drawing.texts.end()) << "the cross stands on their line";
    EXPECT_GT(cross->size, words->size);
    EXPECT_LT(cross->size, 2 * words->size);
    const auto& dashes = symbols["outlier, with its line of the table"];
    ASSERT_EQ(dashes.size(), 2U);
    EXPECT_LT(dashes[0].second, dashes[1].first);
    EXPECT_NEAR(dashes[0].second - dashes[0].first, dashes[1].second - dashes[1].first, 1e-9);
}

TEST(ResidualPainter, ASceneWithoutResidualsStaysAsItIs) {
    const Marks marks = marksOf(ScenePainter("front", WIDTH, HEIGHT).paint(scenes::wall()));
    EXPECT_TRUE(marks.vectors.empty() && marks.dashed.empty());
    EXPECT_THAT(marks.texts, Not(Contains(testing::StartsWith("residuals"))));
}

TEST(ResidualPainter, TargetsGiveWay) {
    const auto discs = [](const DisplayScene& scene) {
        return ScenePainter("front", WIDTH, HEIGHT).paint(scene).discs.size();
    };
    EXPECT_EQ(discs(measuredWall(20)), discs(scenes::wall()) - 4 + 2) << "four targets, two dots";
}

// The picture of 1920 x 1200: a vector of 10 pixels, 20 times as long, is 200 pixels of it; the outlier is cut at 15 %
// of the diagonal.
TEST(ChannelPicturePainter, VectorsStandAtTheirPlacesInThePicture) {
    const Drawing drawing = ChannelPicturePainter(WIDTH, HEIGHT).paint(measuredWall(20), 0);
    // The frame is drawn first: its triangles.
    ASSERT_EQ(drawing.triangles.size(), 2U);
    const double left = drawing.triangles[0].corners[0][0];
    const double bottom = drawing.triangles[0].corners[0][1];
    const double scale = (drawing.triangles[0].corners[1][0] - left) / 1920;
    EXPECT_NEAR(bottom - drawing.triangles[1].corners[2][1], 1200 * scale, 1e-9) << "pixels are square";
    const Marks marks = marksOf(drawing);
    ASSERT_EQ(marks.vectors.size(), 5U);
    EXPECT_NEAR(marks.vectors[0].from[0], left + 0.25 * 1920 * scale, 1e-9);
    EXPECT_NEAR(marks.vectors[0].from[1], bottom - 0.5 * 1200 * scale, 1e-9);
    EXPECT_NEAR(lengthOf(marks.vectors[0]), 200 * scale, 1e-9);
    ASSERT_EQ(marks.dashed.size(), 1U);
    EXPECT_NEAR(lengthOf(marks.dashed[0]), 0.15 * std::hypot(1920, 1200) * scale, 1e-9);
    EXPECT_LT(marks.dashed[0].to[1], marks.dashed[0].from[1]) << "+v is up";
    EXPECT_EQ(marks.dots, 2U);
    EXPECT_THAT(marks.texts, Contains("17"));
    EXPECT_THAT(marks.texts, Contains("A <wall> & more: residuals in the picture of Left"));
    EXPECT_THAT(marks.texts, Contains("pixels of its picture, from the bottom left corner"));
    EXPECT_THAT(marks.texts, Contains("3 measured points, 1 outlier"));
    EXPECT_EQ(stills::imageOf(drawing).width, static_cast<std::size_t>(WIDTH));
}

// Every number of the scales stands outside of the picture of 1920 x 1200 beside a line that crosses it at so many
// pixels.
TEST(ChannelPicturePainter, TheScalesHaveALineAtEachOfTheirNumbers) {
    const Drawing drawing = ChannelPicturePainter(WIDTH, HEIGHT).paint(measuredWall(20), 0);
    const double left = drawing.triangles[0].corners[0][0];
    const double bottom = drawing.triangles[0].corners[0][1];
    const double right = drawing.triangles[0].corners[1][0];
    const double top = drawing.triangles[1].corners[2][1];
    const double scale = (right - left) / 1920;
    const auto hasLine = [&](double x0, double y0, double x1, double y1) {
        return std::any_of(drawing.lines.begin(), drawing.lines.end(), [&](const Drawing::Line& line) {
            return std::hypot(line.from[0] - x0, line.from[1] - y0) < 1e-6 &&
                   std::hypot(line.to[0] - x1, line.to[1] - y1) < 1e-6;
        });
    };
    int below = 0;
    int beside = 0;
    for (const Drawing::Text& text : drawing.texts) {
        // The legend has numbers above the picture, and the outlier has that of its line in it.
        const bool isNumber = text.text.find_first_not_of("0123456789") == std::string::npos;
        if (!isNumber || text.down < top - text.size || text.text == "17") {
            continue;
        }
        const double pixels = std::stod(text.text);
        if (text.anchor == Drawing::Anchor::MIDDLE) {
            EXPECT_NEAR(text.right, left + scale * pixels, 1e-6);
            EXPECT_GT(text.down - text.size, bottom) << text.text;
            EXPECT_TRUE(hasLine(text.right, bottom, text.right, top)) << text.text;
            ++below;
        } else {
            const double down = bottom - scale * pixels;
            EXPECT_EQ(text.anchor, Drawing::Anchor::RIGHT);
            EXPECT_LT(text.right, left) << text.text;
            EXPECT_GT(text.right, left - 2 * text.size) << text.text;
            EXPECT_NEAR(text.down - text.size / 2, down, 1e-6) << text.text;
            EXPECT_TRUE(hasLine(left, down, right, down)) << text.text;
            ++beside;
        }
    }
    EXPECT_GE(below, 5);
    EXPECT_GE(beside, 3);
    EXPECT_TRUE(hasLine(left, bottom, right, bottom) && hasLine(right, bottom, right, top) &&
                hasLine(right, top, left, top) && hasLine(left, top, left, bottom))
        << "a frame around it";
}

TEST(ChannelPicturePainter, AChannelWithoutPointsSaysSo) {
    DisplayScene scene = measuredWall(20);
    scene.channels.push_back(scene.channels[0]);
    scene.channels[1].residuals.clear();
    const Marks marks = marksOf(ChannelPicturePainter(400, 300).paint(scene, 1));
    EXPECT_TRUE(marks.vectors.empty());
    EXPECT_THAT(marks.texts, Contains(testing::StartsWith("the report has no measured point")));
}

TEST(ChannelPicturePainter, SmallAndOddPicturesAreDrawn) {
    DisplayScene scene = measuredWall(1);
    for (const auto& [width, height] : {std::pair(1, 1), std::pair(3, 4000), std::pair(0, 0), std::pair(10000, 7)}) {
        scene.channels[0].width = width;
        scene.channels[0].height = height;
        EXPECT_EQ(stills::imageOf(ChannelPicturePainter(200, 200).paint(scene, 0)).height, 200U);
    }
}

}  // namespace
