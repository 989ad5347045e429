// What the commands that show a display make of configurations that hardly can be shown: a page and stills that say so.
#include "ProgramRun.h"
#include "support/PngImage.h"
#include "support/TemporaryFolder.h"

#include <libxml/parser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int ALL_RIGHT = 0;
constexpr int INCOMPLETE = 1;
constexpr int WRONG_INPUT = 3;

const std::string FLAT = "<Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen>";
const std::string AREA = "<ScreenArea left='0' right='1' bottom='0' top='1'/>";
const std::string RESOLUTION = "<Resolution width='1920' height='1200'/>";
const std::string PLANAR = "<TargetData type='PlanarBasic'/>";

std::string projector(const std::string& name, const std::string& elements) {
    return "<Projector id='A'><Name>" + name + "</Name>" + elements + "</Projector>";
}

std::string display(const std::string& screen, const std::string& projectors, const std::string& targets = PLANAR) {
    return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>" + screen + targets +
           "<Projectors>" + projectors + "</Projectors></Display>";
}

bool isWellFormed(const std::string& xml) {
    xmlDoc* const document = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "still.svg", nullptr,
                                           XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    const bool isRead = document != nullptr;
    xmlFreeDoc(document);
    return isRead;
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

/// What all the ways of showing a display gave.
struct Shown {
    std::string page;
    nlohmann::json data;  ///< of the page
    std::string svg;
    PngImage png;

    [[nodiscard]] std::vector<std::string> notes() const { return data.at("notes").get<std::vector<std::string>>(); }
};

class OddDisplaysTest : public testing::Test {
protected:
    /// Shows it in every way, each of which must end with that exit code and leave a whole file.
    Shown show(const std::string& configuration, int exitCode) {
        const std::string file = m_folder.write("display.xml", configuration);
        for (const auto& [command, output] :
             {std::pair("view", "page.html"), std::pair("picture", "still.svg"), std::pair("picture", "still.png")}) {
            std::vector<std::string> arguments{command, file, "-o", m_folder.file(output), "--quiet"};
            if (arguments[0] == "picture") {
                arguments.insert(arguments.end(), {"--size", "800x500"});
            }
            const ProgramRun run = runScreenManager(arguments);
            EXPECT_EQ(run.exitCode, exitCode) << output << run.errors;
        }
        Shown shown{
            m_folder.read("page.html"), {}, m_folder.read("still.svg"), PngImage::read(m_folder.read("still.png"))};
        EXPECT_EQ(count(shown.page, "<script"), 2U);
        EXPECT_EQ(count(shown.page, "</script>"), 2U);
        EXPECT_TRUE(shown.page.ends_with("</html>\n"));
        EXPECT_TRUE(isWellFormed(shown.svg));
        EXPECT_THAT(shown.svg, Not(HasSubstr("nan")));
        const std::string start = "id=\"scene\">";
        const auto from = shown.page.find(start) + start.size();
        shown.data = nlohmann::json::parse(shown.page.substr(from, shown.page.find("</script>", from) - from));
        return shown;
    }

    /// A page and stills that say it, without being whole.
    Shown expectSaid(const std::string& configuration, const std::string& note) {
        Shown shown = show(configuration, INCOMPLETE);
        EXPECT_THAT(shown.notes(), Contains(HasSubstr(note)));
        EXPECT_THAT(shown.svg, HasSubstr(note));
        return shown;
    }

    /// A display of which every place is one that can be drawn, the channel's targets among them.
    static void expectChannelShown(const Shown& shown) {
        EXPECT_EQ(shown.data.at("channels").at(0).at("cells").get<std::string>().size(), (160U * 8 + 2) / 3 * 4);
        EXPECT_GT(shown.png.count({173, 119, 0}, 30), 500U) << "its outline and targets";
    }

    /// Refused by every command with that message; no file is left.
    void expectRefused(const std::string& configuration, const std::string& message) {
        const std::string file = m_folder.write("display.xml", configuration);
        for (const auto& [command, output] : {std::pair("view", "page.html"), std::pair("picture", "still.png")}) {
            const ProgramRun run = runScreenManager({command, file, "-o", m_folder.file(output)});
            EXPECT_EQ(run.exitCode, WRONG_INPUT) << command;
            EXPECT_THAT(run.errors, HasSubstr(message)) << command;
            EXPECT_FALSE(std::filesystem::exists(m_folder.file(output))) << command;
        }
    }

    TemporaryFolder m_folder;
};

TEST_F(OddDisplaysTest, NoScreen) {
    const Shown shown = expectSaid(display("", projector("A", RESOLUTION + AREA)), "describes no screen");
    EXPECT_THAT(shown.data.at("surfaces"), IsEmpty());
    EXPECT_THAT(shown.notes(), Contains("channel A: there is no screen to place targets on"));
}

TEST_F(OddDisplaysTest, NoChannel) {
    const Shown shown = expectSaid(display(FLAT, ""), "there is no channel to show");
    EXPECT_EQ(shown.data.at("surfaces").size(), 1U);
    EXPECT_THAT(shown.data.at("channels"), IsEmpty());
}

TEST_F(OddDisplaysTest, NothingAtAll) {
    const Shown shown = expectSaid("<Display version='1'><Units native='m'/></Display>", "describes no screen");
    EXPECT_THAT(shown.notes(), Contains(HasSubstr("no projectors")));
}

TEST_F(OddDisplaysTest, AnAreaBesideTheScreen) {
    expectSaid(display(FLAT, projector("A", RESOLUTION + "<ScreenArea left='5' right='6' bottom='0' top='1'/>")),
               "channel A: left 5 right 6 bottom 0 top 1: it lies outside the screen");
}

TEST_F(OddDisplaysTest, RaysThatHitNothing) {
    const Shown shown = expectSaid(
        display(FLAT,
                projector("A", RESOLUTION + "<Orientation z='180' x='0' y='0'/><Frustum left='-20' right='20' "
                                            "bottom='-12' top='12'/>"),
                "<TargetData type='3D'/>"),
        "channel A: none of its grid targets lies on the screen");
    EXPECT_FALSE(shown.data.at("channels").at(0).at("frustum").is_null()) << "its light is shown all the same";
}

TEST_F(OddDisplaysTest, AProjectorWithoutAResolution) {
    expectChannelShown(
        expectSaid(display(FLAT, projector("A", AREA)), "channel A: its picture has no size: 0 x 0 pixels"));
}

TEST_F(OddDisplaysTest, AResolutionOfZeroIsRefused) {
    expectRefused(display(FLAT, projector("A", "<Resolution width='0' height='0'/>" + AREA)),
                  "<Resolution>: found width=\"0\"");
}

TEST_F(OddDisplaysTest, NumbersThatAreNoneAreRefused) {
    for (const char* number : {"nan", "inf", "-inf", "1e999", "NaN"}) {
        expectRefused(display("<Screen shape='Flat'><Centre x='" + std::string(number) +
                                  "' y='5' z='1'/><Size width='4' height='2'/></Screen>",
                              projector("A", RESOLUTION + AREA)),
                      "<Centre>: found x=\"" + std::string(number) + "\"");
    }
}

TEST_F(OddDisplaysTest, AnEyePointAtABillion) {
    const Shown shown = expectSaid(
        display("<Screen shape='Flat'><EyePoint x='1e9' y='0' z='0'/><Centre x='0' y='5' z='1'/><Size width='4' "
                "height='2'/></Screen>",
                projector("A", RESOLUTION + AREA)),
        "the eye point lies too far from the screen to be drawn");
    EXPECT_LT(shown.data.at("scale").get<double>(), 10) << "the screen fills the picture";
    EXPECT_THAT(shown.data.at("eyes"), IsEmpty());
    expectChannelShown(shown);
}

TEST_F(OddDisplaysTest, AProjectorAtABillion) {
    const Shown shown =
        expectSaid(display(FLAT, projector("A", RESOLUTION + AREA +
                                                    "<Frustum left='-20' right='20' bottom='-12' top='12'/>"
                                                    "<Position x='0' y='-1e9' z='1'/>")),
                   "channel A: its frustum lies too far from the screen to be drawn");
    EXPECT_TRUE(shown.data.at("channels").at(0).at("frustum").is_null());
    expectChannelShown(shown);
}

TEST_F(OddDisplaysTest, EverythingAtABillion) {
    const Shown shown = show(
        display("<Screen shape='Flat'><EyePoint x='1e9' y='1e9' z='1e9'/><Centre x='1e9' y='1000000005' z='1e9'/><Size "
                "width='4' height='2'/></Screen>",
                projector("A", RESOLUTION + AREA)),
        ALL_RIGHT);
    EXPECT_LT(shown.data.at("scale").get<double>(), 10);
    EXPECT_EQ(shown.data.at("eyes").size(), 1U);
    expectChannelShown(shown);
}

TEST_F(OddDisplaysTest, AScreenOfABillion) {
    const Shown shown =
        show(display("<Screen shape='Flat'><Centre x='0' y='5e9' z='0'/><Size width='4e9' height='2e9'/></Screen>",
                     projector("A", RESOLUTION + AREA)),
             ALL_RIGHT);
    EXPECT_THAT(shown.notes(), IsEmpty());
    expectChannelShown(shown);
}

TEST_F(OddDisplaysTest, PlacesBeyondAllNumbers) {
    const Shown shown =
        expectSaid(display("<Screen shape='Flat'><Centre x='1e300' y='5' z='1'/><Size width='4' height='2'/></Screen>",
                           projector("A", RESOLUTION + AREA)),
                   "the content screen has no surface that can be drawn");
    EXPECT_THAT(shown.notes(), Contains(HasSubstr("targets are not places in space")));
}

/// A name, and how it is written in the configuration.
struct OddName {
    const char* what;
    std::string name;
    std::string written;
};

void PrintTo(const OddName& name, std::ostream* out) {
    *out << name.what;
}

class OddNamesTest : public OddDisplaysTest, public testing::WithParamInterface<OddName> {};

TEST_P(OddNamesTest, IsTextInThePageAndInTheStill) {
    const Shown shown = show(display(FLAT, projector(GetParam().written, RESOLUTION + AREA)), ALL_RIGHT);
    EXPECT_EQ(shown.data.at("channels").at(0).at("name"), GetParam().name);
    EXPECT_EQ(count(shown.page, "<!--"), 0U);
    EXPECT_EQ(count(shown.page, "harm()"), 2 * count(GetParam().name, "harm()"))
        << "twice, among the data: in the legend and in the list of channels";
    EXPECT_EQ(count(shown.svg, "<script"), 0U);
    EXPECT_EQ(count(shown.svg, "<img"), 0U);
    expectChannelShown(shown);
}

INSTANTIATE_TEST_SUITE_P(
    Names, OddNamesTest,
    testing::Values(OddName{"Quotes", "\"'`\" onload=\"harm()", "&quot;&#39;`&quot; onload=&quot;harm()"},
                    OddName{"AngleBrackets", "<img src=x onerror=harm()>", "&lt;img src=x onerror=harm()&gt;"},
                    OddName{"EndOfScript", "</script><script>harm()</script>",
                            "&lt;/script&gt;&lt;script&gt;harm()&lt;/script&gt;"},
                    OddName{"StartOfComment", "<!--<script>harm()", "&lt;!--&lt;script&gt;harm()"},
                    OddName{"LineSeparator", "a\xE2\x80\xA8harm()\xE2\x80\xA9", "a&#x2028;harm()&#x2029;"},
                    OddName{"LineBreaks", "a\nharm()\r\tb", "a&#10;harm()&#13;&#9;b"},
                    OddName{"Entities", "&lt;&amp;&#60;", "&amp;lt;&amp;amp;&amp;#60;"},
                    OddName{"EndOfCharacterData", "]]>harm()", "]]&gt;harm()"},
                    OddName{"OtherDirection", "\xE2\x80\xAEharm()", "&#x202E;harm()"}),
    [](const auto& name) { return name.param.what; });

}  // namespace
