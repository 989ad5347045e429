#include "DisplayReport/still/DrawingWriter.h"

#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/ScenePainter.h"
#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string svgOf(const Drawing& drawing) {
    std::ostringstream out;
    DrawingWriter::ofFormat("svg")->write(drawing, out);
    return out.str();
}

/// A black sheet over everything at half nearness.
Drawing sheet() {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.triangles = {{{{{-100, -100, 0.5}, {400, -100, 0.5}, {-100, 400, 0.5}}}, {0, 0, 0}, 1}};
    return drawing;
}

TEST(SvgDrawingWriter, TextIsNeverMarkup) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.title = "</title><script>alert(1)</script>";
    drawing.texts = {{5, 5, "\"'<b>&amp;\xE2\x80\xA8\n</text>", 10, {}, Drawing::Anchor::LEFT}};
    const std::string svg = svgOf(drawing);
    EXPECT_THAT(svg, HasSubstr("<title>&lt;/title&gt;&lt;script&gt;alert(1)&lt;/script&gt;</title>"));
    EXPECT_THAT(svg, Not(HasSubstr("<script")));
    EXPECT_THAT(svg, Not(HasSubstr("<b>")));
    EXPECT_THAT(svg, HasSubstr("&lt;b&gt;&amp;amp;"));
}

TEST(SvgDrawingWriter, AWholeSceneIsAWholeFile) {
    const std::string svg = svgOf(ScenePainter("home", 800, 500).paint(scenes::wall()));
    EXPECT_THAT(svg, StartsWith("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 800 500\""));
    EXPECT_THAT(svg, HasSubstr("A &lt;wall&gt; &amp; more</title>"));
    EXPECT_THAT(svg, Not(HasSubstr("nan")));
    EXPECT_THAT(svg, Not(HasSubstr("inf")));
    EXPECT_TRUE(svg.ends_with("</svg>\n"));
}

TEST(SvgDrawingWriter, PlacesAreGivenToAHundredthOfAPixel) {
    Drawing drawing;
    drawing.discs = {{{1.23456, -0.001, 1}, {1, 2, 3}, 2.5}};
    EXPECT_THAT(svgOf(drawing), HasSubstr("<circle cx=\"1.23\" cy=\"0\" r=\"2.5\" fill=\"#010203\"/>"));
}

TEST(SvgDrawingWriter, WhatAnOpaqueSheetHidesIsLeftOut) {
    Drawing drawing = sheet();
    drawing.discs = {{{50, 50, 0.4}, {255, 0, 0}, 3}, {{60, 50, 0.6}, {0, 255, 0}, 3}};
    drawing.lines = {{{10, 50, 0.4}, {20, 50, 0.4}, {0, 0, 255}, 1}, {{10, 60, 0.6}, {20, 60, 0.6}, {0, 255, 255}, 1}};
    const std::string svg = svgOf(drawing);
    EXPECT_THAT(svg, Not(HasSubstr("#ff0000")));
    EXPECT_THAT(svg, HasSubstr("#00ff00"));
    EXPECT_THAT(svg, Not(HasSubstr("#0000ff")));
    EXPECT_THAT(svg, HasSubstr("#00ffff"));
}

// What was seen once: a coarse triangle of the screen drawn over the finer cells of a picture that lies on it.
TEST(SvgDrawingWriter, WhatLiesOnASurfaceIsDrawnAfterIt) {
    Drawing drawing = sheet();
    drawing.triangles[0].corners[0][2] = 0.9;  // in its middle 0.63, at the cell 0.607
    drawing.triangles.push_back({{{{80, 80, 0.61}, {90, 80, 0.61}, {80, 90, 0.61}}}, {255, 0, 0}, 0.5});
    const std::string svg = svgOf(drawing);
    ASSERT_THAT(svg, HasSubstr("#ff0000"));
    EXPECT_GT(svg.find("#ff0000"), svg.find("#000000"));
}

TEST(SvgDrawingWriter, NearerSheetsAreDrawnLater) {
    Drawing drawing = sheet();
    drawing.triangles.push_back({{{{10, 10, 0.2}, {30, 10, 0.2}, {10, 30, 0.2}}}, {255, 0, 0}, 1});
    const std::string svg = svgOf(drawing);
    EXPECT_LT(svg.find("#ff0000"), svg.find("#000000"));
}

TEST(SvgDrawingWriter, TextsAreAnchored) {
    Drawing drawing;
    for (const auto anchor : {Drawing::Anchor::LEFT, Drawing::Anchor::MIDDLE, Drawing::Anchor::RIGHT}) {
        drawing.texts.push_back({50, 50, "a", 7.2, {}, anchor});
    }
    const std::string svg = svgOf(drawing);
    EXPECT_THAT(svg, HasSubstr("font-size=\"10\" fill=\"#000000\">a<"));
    EXPECT_THAT(svg, HasSubstr("text-anchor=\"middle\">a<"));
    EXPECT_THAT(svg, HasSubstr("text-anchor=\"end\">a<"));
}

}  // namespace
