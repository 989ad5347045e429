#include "Configuration/detail/XmlProjectorConfig.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "Samples.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <numbers>
#include <string>

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

std::unique_ptr<XMLConfigFile> oneProjector(const std::string& children = "") {
    return XMLConfigFile::parse(projectors("<Projector id='a'>" + children + "</Projector>"), "cfg/display.xml");
}

std::unique_ptr<XMLConfigFile> readAgain(const XMLConfigFile& config) {
    return XMLConfigFile::parse(config.text(), "cfg/display.xml");
}

/// The message of the fault; the document must be what it was before.
std::wstring refused(XMLConfigFile& config, const std::function<void(ProjectorConfig&)>& change) {
    const std::string before = config.text();
    std::wstring message = L"nothing was thrown";
    try {
        change(*config.getProjectorConfig(L"a"));
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.file.rfind("Platform/Configuration/detail/", 0), 0U);
        message = fault.message;
    }
    EXPECT_EQ(config.text(), before);
    return message;
}

TEST(XmlProjectorConfig, ReadsEveryValue) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "cfg/display.xml");
    const ProjectorConfig* const left = config->getProjectorConfig(L"02000000000A");
    ASSERT_NE(left, nullptr);
    EXPECT_EQ(left->getIdentity(), L"02000000000A");
    EXPECT_EQ(left->getSectionID(), L"projector 1");
    EXPECT_EQ(left->getName(), L"Left & lower");
    EXPECT_EQ(left->getOldUID(), L"left");
    EXPECT_EQ(left->getAllowed(), L"misses-screen same-picture");
    EXPECT_EQ(left->getDeviceSnippet(),
              L"<Device type=\"PJLink\" mac=\"02:00:00:00:00:0a\" host=\"192.0.2.10\" port=\"4352\"/>");
    EXPECT_EQ(left->getWidth(), 1920);
    EXPECT_EQ(left->getHeight(), 1200);
    EXPECT_EQ(left->getPondOfMirror(0), 14);
    EXPECT_EQ(left->getPondOfMirror(1), 7);
    EXPECT_EQ(left->getPondOfMirror(2), 10);
    EXPECT_EQ(left->getPondOfMirror(3), 0);
    EXPECT_EQ(left->getCustomPlanarFile(), L"warp/left.txt") << "resolved by whoever asks";
    EXPECT_EQ(left->getProjectionModelName(), L"BrownConrady:cfg/lenses/left.yml");
    EXPECT_DOUBLE_EQ(left->getOrientationZ(), -35 * DEGREE);
    EXPECT_DOUBLE_EQ(left->getOrientationX(), 12.5 * DEGREE);
    EXPECT_DOUBLE_EQ(left->getOrientationY(), 0.25 * DEGREE);
    EXPECT_DOUBLE_EQ(left->getFrustumLeft(), -30 * DEGREE);
    EXPECT_DOUBLE_EQ(left->getFrustumRight(), 31 * DEGREE);
    EXPECT_DOUBLE_EQ(left->getFrustumBottom(), -20 * DEGREE);
    EXPECT_DOUBLE_EQ(left->getFrustumTop(), 19 * DEGREE);
    EXPECT_EQ(left->getPosition(), (Point<double, 3>{1.5, -0.5, 2.75}));
    EXPECT_EQ(left->getScreenLeft(), 0.0);
    EXPECT_EQ(left->getScreenRight(), 0.55);
    EXPECT_EQ(left->getScreenBottom(), -0.05);
    EXPECT_EQ(left->getScreenTop(), 1.05);
    EXPECT_EQ(left->getLayoutXMin(), -2.0);
    EXPECT_EQ(left->getLayoutXMax(), 0.25);
    EXPECT_EQ(left->getLayoutYMin(), 0.0);
    EXPECT_EQ(left->getLayoutYMax(), 1.5);
    EXPECT_EQ(left->getText(L"Note"), L"shift locked, lamp of spring");
    EXPECT_EQ(left->getText(L"Name"), L"Left & lower");
}

TEST(XmlProjectorConfig, WhatIsNotStatedIsNeutral) {
    const auto config = oneProjector();
    const ProjectorConfig* const projector = config->getProjectorConfig(L"a");
    EXPECT_EQ(projector->getSectionID(), L"a");
    EXPECT_EQ(projector->getName(), L"a");
    EXPECT_EQ(projector->getOldUID(), L"");
    EXPECT_EQ(projector->getAllowed(), L"");
    EXPECT_EQ(projector->getDeviceSnippet(), L"");
    EXPECT_EQ(projector->getWidth(), 0);
    EXPECT_EQ(projector->getHeight(), 0);
    EXPECT_EQ(projector->getPondOfMirror(3), 0);
    EXPECT_EQ(projector->getCustomPlanarFile(), L"");
    EXPECT_EQ(projector->getProjectionModelName(), L"");
    EXPECT_EQ(projector->getFrustumTop(), 0.0);
    EXPECT_EQ(projector->getPosition(), (Point<double, 3>{}));
    EXPECT_EQ(projector->getLayoutXMax(), 0.0);
    EXPECT_EQ(projector->getText(L"Note"), L"");
    for (const double bound : {projector->getScreenLeft(), projector->getScreenRight(), projector->getScreenTop(),
                               projector->getScreenBottom()}) {
        EXPECT_EQ(bound, -1000.0);
    }
}

TEST(XmlProjectorConfig, ItsFrustumIsSeenFromTheEyePointUnlessAPositionIsStatedEvenTheOrigin) {
    const auto config = XMLConfigFile::parse(
        displayAround("<Screen shape='Sphere'><Radius value='1'/><EyePoint x='1' y='2' z='3'/></Screen><Projectors>"
                      "<Projector id='a'/><Projector id='b'><Position x='0' y='0' z='0'/></Projector></Projectors>"),
        "t");
    EXPECT_EQ(config->getProjectorConfig(L"a")->getPosition(), (Point<double, 3>{1.0, 2.0, 3.0}));
    EXPECT_EQ(config->getProjectorConfig(L"b")->getPosition(), (Point<double, 3>{}));
    EXPECT_EQ(config->addProjectorConfig(L"c")->getPosition(), (Point<double, 3>{1.0, 2.0, 3.0}));
}

TEST(XmlProjectorConfig, EachScreenBoundIsItsOwn) {
    const auto config = oneProjector("<ScreenArea right='0.5' top='1'/>");
    const ProjectorConfig* const projector = config->getProjectorConfig(L"a");
    EXPECT_EQ(projector->getScreenLeft(), -1000.0);
    EXPECT_EQ(projector->getScreenRight(), 0.5);
    EXPECT_EQ(projector->getScreenBottom(), -1000.0);
    EXPECT_EQ(projector->getScreenTop(), 1.0);
}

TEST(XmlProjectorConfig, AModelWithoutAFileIsItsName) {
    EXPECT_EQ(oneProjector("<ProjectionModel name='Equidistant'/>")->getProjectorConfig(L"a")->getProjectionModelName(),
              L"Equidistant");
}

TEST(XmlProjectorConfig, NamesSurviveTheRoundTrip) {
    const auto config = oneProjector("<Name>old</Name>");
    for (const std::wstring name : {L"", L" left ", L"a\nb", L"\n", L"\ta\t", L"a\rb", L"a\r\nb", L"<&>\"'", L"]]>",
                                    L"&amp;", L"B\u00fchne \u5c4f \U0001f4fd", L"%s%n"}) {
        config->getProjectorConfig(L"a")->setName(name);
        EXPECT_EQ(config->getProjectorConfig(L"a")->getName(), name);
        EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getName(), name) << Veltrani::toUtf8(name);
    }
}

TEST(XmlProjectorConfig, AnEmptyNameIsNotTheId) {
    EXPECT_EQ(oneProjector("<Name/>")->getProjectorConfig(L"a")->getName(), L"");
}

TEST(XmlProjectorConfig, TextThatXmlCannotHoldIsRefused) {
    const auto config = oneProjector();
    for (const std::wstring& text :
         {std::wstring(L"a\x01"), std::wstring(1, L'\0'), std::wstring(1, static_cast<wchar_t>(0xD83D)),
          std::wstring(1, static_cast<wchar_t>(0xFFFF))}) {
        EXPECT_EQ(refused(*config, [&](ProjectorConfig& entry) { entry.setName(text); }),
                  L"Projector \"a\": the name holds a character that a configuration file cannot store");
        EXPECT_EQ(refused(*config, [&](ProjectorConfig& entry) { entry.setDeviceSnippet(text); }),
                  L"Projector \"a\": the device snippet holds a character that a configuration file cannot store");
    }
    EXPECT_EQ(config->getProjectorConfig(L"a")->getName(), L"a");
}

TEST(XmlProjectorConfig, SnippetsSurviveTheRoundTrip) {
    const auto config = oneProjector("<Device>old</Device>");
    for (const std::wstring snippet :
         {L"", L"<Device type=\"PJLink\" mac=\"02:00:00:00:00:01\"/>", L"text", L" \n ", L"<a/><b/>", L"x<a>&lt;</a>y",
          L"<!-- c -->", L"<v:a xmlns:v=\"urn:v\" v:b=\"1\"/>", L"<a xmlns=\"urn:v\"/>", L"<Device><Device/></Device>",
          L"<a b=\"\u00e9&#10;\">\u5c4f</a>"}) {
        config->getProjectorConfig(L"a")->setDeviceSnippet(snippet);
        EXPECT_EQ(config->getProjectorConfig(L"a")->getDeviceSnippet(), snippet);
        EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getDeviceSnippet(), snippet)
            << Veltrani::toUtf8(snippet);
    }
}

TEST(XmlProjectorConfig, TheSpellingOfASnippetIsNormalised) {
    const auto config = oneProjector();
    config->getProjectorConfig(L"a")->setDeviceSnippet(L"<Device  type='PJLink'></Device >");
    EXPECT_EQ(config->getProjectorConfig(L"a")->getDeviceSnippet(), L"<Device type=\"PJLink\"/>");
}

TEST(XmlProjectorConfig, ASnippetThatIsNoXmlIsRefused) {
    const auto config = oneProjector("<Device><old/></Device>");
    for (const std::wstring snippet : {L"<a>", L"</a>", L"a & b", L"<a b=c/>", L"<v:a/>", L"&undefined;",
                                       L"<!DOCTYPE a>", L"<?xml version='1.0'?><a/>", L"<", L"<!--", L"<![CDATA["}) {
        const std::wstring message = refused(*config, [&](ProjectorConfig& entry) { entry.setDeviceSnippet(snippet); });
        EXPECT_EQ(
            message.rfind(
                L"Projector \"a\": the device snippet is not well-formed XML: Projector \"a\": the device snippet:1: <",
                0),
            0U)
            << Veltrani::toUtf8(message);
    }
}

TEST(XmlProjectorConfig, ASnippetCannotBreakOutOfItsElement) {
    const auto config = oneProjector("<Device><old/></Device>");
    for (const std::wstring snippet : {L"</Device><Device>", L"</Device><Resolution width='1' height='1'/><Device>",
                                       L"</Device></Projector><Projector id='b'><Device>",
                                       L"</Device></Projector></Projectors><Projectors><Projector><Device>"}) {
        EXPECT_EQ(
            refused(*config, [&](ProjectorConfig& entry) { entry.setDeviceSnippet(snippet); }),
            L"Projector \"a\": the device snippet is not well-formed XML: it closes an element that it did not open");
    }
    EXPECT_NE(refused(*config,
                      [](ProjectorConfig& entry) {
                          entry.setDeviceSnippet(
                              L"</Device></Projector></Projectors></Display><Display><Projectors><Projector><Device>");
                      })
                  .find(L"is not well-formed XML"),
              std::wstring::npos);
}

TEST(XmlProjectorConfig, ASnippetThatTheFileCouldNotHoldIsRefused) {
    const auto config = oneProjector();
    const auto nested = [](int depth) {
        std::wstring text;
        for (int i = 0; i < depth; ++i) {
            text += L"<a>";
        }
        for (int i = 0; i < depth; ++i) {
            text += L"</a>";
        }
        return text;
    };
    EXPECT_NE(refused(*config, [&](ProjectorConfig& entry) { entry.setDeviceSnippet(nested(255)); }).find(L"depth"),
              std::wstring::npos);
    int depth = 255;
    const auto fits = [&] {
        try {
            config->getProjectorConfig(L"a")->setDeviceSnippet(nested(depth));
            return true;
        } catch (const VeltraniException&) {
            return false;
        }
    };
    while (!fits() && depth > 200) {
        --depth;
    }
    EXPECT_GT(depth, 240);
    EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getDeviceSnippet(),
              config->getProjectorConfig(L"a")->getDeviceSnippet());
}

TEST(XmlProjectorConfig, SizesAreWritten) {
    const auto config = oneProjector("<Resolution width='1' height='2'/>");
    config->getProjectorConfig(L"a")->setWidth(1920);
    config->getProjectorConfig(L"a")->setHeight(2147483647);
    const auto again = readAgain(*config);
    EXPECT_EQ(again->getProjectorConfig(L"a")->getWidth(), 1920);
    EXPECT_EQ(again->getProjectorConfig(L"a")->getHeight(), 2147483647);
}

TEST(XmlProjectorConfig, HalfAResolutionIsNotWritten) {
    const auto config = oneProjector();
    const std::string before = config->text();
    config->getProjectorConfig(L"a")->setWidth(1920);
    EXPECT_EQ(config->getProjectorConfig(L"a")->getWidth(), 1920);
    EXPECT_EQ(config->text(), before);
    config->getProjectorConfig(L"a")->setHeight(1200);
    EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getWidth(), 1920);
    EXPECT_EQ(readAgain(*config)->getProjectorConfig(L"a")->getHeight(), 1200);
}

TEST(XmlProjectorConfig, ASizeIsAboveZero) {
    const auto config = oneProjector();
    for (const int pixels : {0, -1, -2147483647 - 1}) {
        EXPECT_EQ(refused(*config, [&](ProjectorConfig& entry) { entry.setWidth(pixels); }),
                  L"Projector \"a\": the width is not a number of pixels above 0");
        EXPECT_EQ(refused(*config, [&](ProjectorConfig& entry) { entry.setHeight(pixels); }),
                  L"Projector \"a\": the height is not a number of pixels above 0");
    }
}

TEST(XmlProjectorConfig, PondOfMirrorSizesAreWritten) {
    const auto config = oneProjector();
    config->getProjectorConfig(L"a")->setPondOfMirror(3, 255);
    config->getProjectorConfig(L"a")->setPondOfMirror(0, 14);
    const auto again = readAgain(*config);
    EXPECT_EQ(again->getProjectorConfig(L"a")->getPondOfMirror(0), 14);
    EXPECT_EQ(again->getProjectorConfig(L"a")->getPondOfMirror(1), 0);
    EXPECT_EQ(again->getProjectorConfig(L"a")->getPondOfMirror(2), 0);
    EXPECT_EQ(again->getProjectorConfig(L"a")->getPondOfMirror(3), 255);
}

TEST(XmlProjectorConfig, ThereAreFourPondOfMirrorSizes) {
    const auto config = oneProjector();
    for (const int index : {-1, 4, 2147483647}) {
        const std::wstring expected =
            L"Projector \"a\": the pond-of-mirror index " + std::to_wstring(index) + L" is not one of 0 to 3";
        EXPECT_EQ(refused(*config, [&](ProjectorConfig& entry) { entry.setPondOfMirror(index, 1); }), expected);
        EXPECT_EQ(refused(*config, [&](ProjectorConfig& entry) { static_cast<void>(entry.getPondOfMirror(index)); }),
                  expected);
    }
}

TEST(XmlProjectorConfig, SettingWhatIsThereChangesNoByte) {
    const std::string text = replaced(fullConfiguration(), "width=\"1920\"", "width=\"001920\"");
    const auto config = XMLConfigFile::parse(
        replaced(text, "<Name>Left &amp; lower</Name>", "<Name>Left <!-- c -->&amp; lower</Name>"), "t");
    const std::string before = config->text();
    ProjectorConfig* const left = config->getProjectorConfig(L"02000000000A");
    left->setName(left->getName());
    left->setDeviceSnippet(left->getDeviceSnippet());
    left->setWidth(left->getWidth());
    left->setHeight(left->getHeight());
    for (int i = 0; i < 4; ++i) {
        left->setPondOfMirror(i, static_cast<unsigned char>(left->getPondOfMirror(i)));
    }
    EXPECT_EQ(config->text(), before);
}

TEST(XmlProjectorConfig, ChangesStandIndentedAtTheirPlaceInTheFile) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "t");
    ProjectorConfig* const right = config->getProjectorConfig(L"right");
    right->setName(L"Right");
    right->setPondOfMirror(0, 14);
    EXPECT_NE(config->text().find("        <Projector id=\"right\">\n"
                                  "            <Name>Right</Name>\n"
                                  "            <PondOfMirror sizes=\"14 0 0 0\"/>\n"
                                  "            <ScreenArea left=\"0.45\" right=\"1\"/>\n"
                                  "        </Projector> <!-- no device yet -->\n"),
              std::string::npos)
        << config->text();
}

}  // namespace
