#include "DisplayReport/still/DrawingWriter.h"

#include "DisplayReport/still/ScenePainter.h"
#include "Scenes.h"
#include "still/Stills.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using stills::fileOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// "wall" and "dome" in scripts of which no font has all.
const std::vector<std::string> NAMES{"Fläche", "Стена",  "τοῖχος", "حائط", "קיר",  "दीवार",
                                     "ผนัง",    "კედელი", "壁面",   "벽",   "ግድግዳ", "சுவர்"};

Drawing named(const std::vector<std::string>& names) {
    Drawing drawing;
    drawing.title = names.front();
    drawing.width = 300;
    drawing.height = 20 + 30 * static_cast<int>(names.size());
    for (const std::string& name : names) {
        drawing.texts.push_back({10, 30.0 * static_cast<double>(drawing.texts.size() + 1), name, 14, {}});
    }
    return drawing;
}

/// The elements of a document of one name: their attributes, and their text under "".
using Element = std::map<std::string, std::string>;

void collect(const xmlNode* node, const std::string& name, std::vector<Element>& elements) {
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_ELEMENT_NODE && reinterpret_cast<const char*>(node->name) == name) {
            Element element;
            for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
                element[reinterpret_cast<const char*>(attribute->name)] =
                    reinterpret_cast<const char*>(attribute->children->content);
            }
            xmlChar* const text = xmlNodeGetContent(node);
            element[""] = reinterpret_cast<const char*>(text);
            xmlFree(text);
            elements.push_back(element);
        }
        collect(node->children, name, elements);
    }
}

/// Empty for what is no XML.
std::vector<Element> elementsOf(const std::string& xml, const std::string& name) {
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "still.svg", nullptr, XML_PARSE_NONET), &xmlFreeDoc);
    std::vector<Element> elements;
    if (document) {
        collect(xmlDocGetRootElement(document.get()), name, elements);
    }
    return elements;
}

std::vector<std::string> textsOf(const std::string& svg) {
    std::vector<std::string> texts;
    for (const Element& element : elementsOf(svg, "text")) {
        texts.push_back(element.at(""));
    }
    return texts;
}

/// What the tools of another reader of PDF make of a file; none where they are not installed.
std::optional<std::string> readBy(const std::string& tool, const std::string& pdf) {
    const TemporaryFolder folder;
    const std::string file = folder.write("still.pdf", pdf);
    const std::string command = tool + " '" + file + "' " + (tool == "pdftotext" ? "-" : "") + " > '" +
                                folder.file("out") + "' 2> '" + folder.file("errors") + "'";
    if (std::system(command.c_str()) != 0) {
        return std::nullopt;
    }
    EXPECT_EQ(folder.read("errors"), "") << tool;
    return folder.read("out");
}

TEST(DrawingWriter, EveryFormatHasItsWriter) {
    EXPECT_THAT(DrawingWriter::formats(), ElementsAre("png", "svg", "pdf"));
    for (const std::string& format : DrawingWriter::formats()) {
        EXPECT_NE(DrawingWriter::ofFormat(format), nullptr) << format;
    }
}

TEST(DrawingWriter, OtherFormatsHaveNone) {
    EXPECT_EQ(DrawingWriter::ofFormat("bmp"), nullptr);
    EXPECT_EQ(DrawingWriter::ofFormat("PNG"), nullptr);
    EXPECT_EQ(DrawingWriter::ofFormat(""), nullptr);
}

TEST(DrawingWriter, AFileOfShapesShowsLessThanAFileOfPixels) {
    for (const char* format : {"svg", "pdf"}) {
        EXPECT_LT(DrawingWriter::ofFormat(format)->limits().triangles,
                  DrawingWriter::ofFormat("png")->limits().triangles);
        EXPECT_LT(DrawingWriter::ofFormat(format)->limits().points, DrawingWriter::ofFormat("png")->limits().points);
    }
}

TEST(DrawingWriter, EqualDrawingsGiveEqualBytesAndNoDate) {
    const Drawing drawing = ScenePainter("home", 800, 500).paint(scenes::wall());
    for (const std::string& format : DrawingWriter::formats()) {
        const std::string first = fileOf(drawing, format);
        static_cast<void>(fileOf(named(NAMES), format));
        EXPECT_TRUE(fileOf(drawing, format) == first) << format;
        EXPECT_THAT(first, Not(HasSubstr("Date"))) << format;
    }
}

TEST(DrawingWriter, AStreamThatTakesNoMoreGoesBad) {
    const Drawing drawing = ScenePainter("home", 800, 500).paint(scenes::wall());
    for (const std::string& format : DrawingWriter::formats()) {
        std::ostringstream out;
        out.setstate(std::ios::badbit);
        EXPECT_NO_THROW(DrawingWriter::ofFormat(format)->write(drawing, out)) << format;
        EXPECT_FALSE(out) << format;
    }
}

TEST(SvgDrawing, IsAWholeDocumentOfTheScene) {
    const std::string svg = fileOf(ScenePainter("home", 800, 500).paint(scenes::wall()), "svg");
    const auto root = elementsOf(svg, "svg");
    ASSERT_EQ(root.size(), 1U);
    EXPECT_EQ(root[0].at("viewBox"), "0 0 800 500");
    EXPECT_EQ(root[0].at("width"), "800px");
    EXPECT_EQ(elementsOf(svg, "title").at(0).at(""), "A <wall> & more");
    EXPECT_THAT(svg, Not(HasSubstr("nan")));
    EXPECT_TRUE(svg.ends_with("</svg>\n"));
    EXPECT_THAT(textsOf(svg), Contains("A <wall> & more"));
    EXPECT_THAT(textsOf(svg), Contains("Left"));
    EXPECT_GT(elementsOf(svg, "path").size(), 20U);
}

TEST(SvgDrawing, TextIsNeverMarkup) {
    Drawing drawing = named({"\"'<b>&amp;\xE2\x80\xA8\n</text>"});
    drawing.title = "</title><script>alert(1)</script>";
    const std::string svg = fileOf(drawing, "svg");
    EXPECT_EQ(elementsOf(svg, "title").at(0).at(""), drawing.title);
    EXPECT_TRUE(elementsOf(svg, "script").empty());
    EXPECT_TRUE(elementsOf(svg, "b").empty());
    EXPECT_THAT(textsOf(svg), ElementsAre("\"'<b>&amp;\\u2028\\n</text>"));
}

TEST(SvgDrawing, HoldsTextsOfEveryScriptAtTheirPlaces) {
    const std::string svg = fileOf(named(NAMES), "svg");
    EXPECT_EQ(textsOf(svg), NAMES);
    Drawing drawing = named({"wall"});
    drawing.texts[0].anchor = Drawing::Anchor::RIGHT;
    drawing.texts[0].right = 200;
    const Element text = elementsOf(fileOf(drawing, "svg"), "text").at(0);
    EXPECT_NEAR(std::stod(text.at("x")) + std::stod(text.at("textLength")), 200, 0.02);
    EXPECT_EQ(text.at("y"), "30");
}

TEST(SvgDrawing, WhatIsNotUtf8IsADocumentAllTheSame) {
    const std::string svg = fileOf(named({"a\xFF\xFE\x01\xEF\xBF\xBF"}), "svg");
    EXPECT_THAT(textsOf(svg), ElementsAre("a\\xff\\xfe\\x01\xEF\xBF\xBD"));
}

TEST(PdfDrawing, IsAPageWithTheTitleAndTheTexts) {
    const std::string pdf = fileOf(ScenePainter("home", 800, 500).paint(scenes::wall()), "pdf");
    EXPECT_THAT(pdf, StartsWith("%PDF-1.5"));
    const auto facts = readBy("pdfinfo", pdf);
    if (!facts) {
        GTEST_SKIP() << "poppler-utils is not installed";
    }
    EXPECT_THAT(*facts, HasSubstr("A <wall> & more"));
    EXPECT_THAT(*facts, HasSubstr("600 x 375 pts"));
    EXPECT_THAT(*facts, HasSubstr("Pages:           1\n"));
    EXPECT_THAT(*facts, Not(HasSubstr("Date")));
    const auto text = readBy("pdftotext", pdf);
    ASSERT_TRUE(text);
    EXPECT_THAT(*text, HasSubstr("Left"));
    EXPECT_THAT(*text, HasSubstr("x right [m]"));
}

// A character that no font has is drawn as a box with its number, which is no text.
TEST(PdfDrawing, HasLettersForEveryScript) {
    const auto text = readBy("pdftotext", fileOf(named(NAMES), "pdf"));
    if (!text) {
        GTEST_SKIP() << "poppler-utils is not installed";
    }
    for (const char* name : {"Fläche", "Стена", "τοῖχος", "კედელი", "壁面", "벽", "ግድግዳ"}) {
        EXPECT_THAT(*text, HasSubstr(name));
    }
    // These are put together from parts, which readers of PDF order in their own ways.
    for (const char* letter : {"ح", "ק", "द", "ผ", "ச"}) {
        EXPECT_THAT(*text, HasSubstr(letter));
    }
    EXPECT_THAT(*readBy("pdftotext", fileOf(named({"\xF4\x8F\xBF\xBD"}), "pdf")), Not(HasSubstr("\xF4\x8F")))
        << "a character that is none";
}

}  // namespace
