#include "Configuration/detail/FormatChecker.h"

#include "Samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string FLAT = "<Screen shape=\"Flat\"><Size width=\"4\" height=\"3\"/></Screen>";

TEST(FormatChecker, AcceptsEverySample) {
    for (const std::string& text : validConfigurations()) {
        EXPECT_THAT(faultsOf(text), IsEmpty()) << text;
    }
}

TEST(FormatChecker, AnotherRootIsAFault) {
    EXPECT_THAT(
        faultsOf("<Config/>"),
        ElementsAre("1: <Config>: found <Config>, expected <Display>; check that this is a display configuration"));
    EXPECT_THAT(
        faultsOf("<Display xmlns=\"urn:x\"/>"),
        ElementsAre("1: <Display>: found the namespace \"urn:x\", expected no namespace; remove the declaration of "
                    "a default namespace"));
}

TEST(FormatChecker, AnUnknownAttributeIsAFault) {
    EXPECT_THAT(
        faultsOf(displayAround("<Projectors><Projector id=\"a\" colour=\"red\"/></Projectors>")),
        ElementsAre("2: <Projector>: found the attribute \"colour\", expected one of id, section, oldId, allow, "
                    "lengthUnit, angleUnit; remove it or correct its name"));
    EXPECT_THAT(
        faultsOf(
            displayAround("<Projectors><Projector id=\"a\"><Name lengthUnit=\"m\">n</Name></Projector></Projectors>")),
        ElementsAre("2: <Name>: found the attribute \"lengthUnit\", expected none; remove it or correct its name"));
}

TEST(FormatChecker, AMissingAttributeIsAFault) {
    EXPECT_THAT(
        faultsOf(replaced(displayAround(FLAT), " height=\"3\"", "")),
        ElementsAre("2: <Size>: found no attribute \"height\", expected it with a length greater than 0 such as 2.5; "
                    "add height=\"...\""));
}

TEST(FormatChecker, AWrongValueIsAFault) {
    EXPECT_THAT(
        faultsOf(replaced(displayAround(FLAT), "\"3\"", "\"3,5\"")),
        ElementsAre(
            "2: <Size>: found height=\"3,5\", expected a length greater than 0 such as 2.5; correct the value"));
    EXPECT_THAT(
        faultsOf(replaced(displayAround(FLAT), "Flat", "flat")),
        ElementsAre("2: <Screen>: found shape=\"flat\", expected one of \"Flat\", \"Sphere\", \"Cylinder\", \"Ruled\", "
                    "\"Mesh\"; correct the value"));
    EXPECT_THAT(faultsOf(replaced(smallConfiguration(), "\"1\"", "\"2\"")),
                ElementsAre("1: <Display>: found version=\"2\", expected \"1\"; correct the value"));
}

TEST(FormatChecker, ANumberThatCannotBeRepresentedIsAFault) {
    EXPECT_THAT(
        faultsOf(replaced(displayAround(FLAT), "\"3\"", "\"1e999\"")),
        ElementsAre("2: <Size>: found height=\"1e999\", expected a length greater than 0 such as 2.5 that can be "
                    "represented; state a value of sensible size"));
    EXPECT_THAT(
        faultsOf(replaced(replaced(displayAround(FLAT), "\"3\"", "\"1e308\""), "native=\"m\"", "native=\"mm\"")),
        ElementsAre("2: <Size>: found height=\"1e308\", expected a length greater than 0 such as 2.5 that can be "
                    "represented in native units; state a value of sensible size"));
    EXPECT_THAT(
        faultsOf(projectors("<Projector id=\"a\"><Resolution width=\"3000000000\" height=\"1\"/></Projector>")),
        ElementsAre(
            "3: <Resolution>: found width=\"3000000000\", expected a whole number of pixels greater than 0 such "
            "as 1920 that can be represented; state a value of sensible size"));
    EXPECT_THAT(
        faultsOf("<Display version=\"1\" lengthUnit=\"mm\"><Units native=\"m\"/><Screen shape=\"Sphere\">"
                 "<Radius value=\"1e-323\"/></Screen></Display>"),
        ElementsAre("1: <Radius>: found value=\"1e-323\", expected a length greater than 0 such as 2.5 that can be "
                    "represented in native units; state a value of sensible size"));
}

TEST(FormatChecker, AnUnknownElementIsAFault) {
    EXPECT_THAT(
        faultsOf(displayAround("<Projector id=\"a\"/>")),
        ElementsAre("2: <Projector>: found this element in <Display>, expected one of <Units>, <Screen>, <TargetData>, "
                    "<Projectors>; remove it, correct its name or move it"));
    EXPECT_THAT(
        faultsOf(displayAround(replaced(FLAT, "</Screen>", "<Radius value=\"1\"/></Screen>"))),
        ElementsAre("2: <Radius>: found this element in <Screen>, expected one of <EyePoint>, <MeasuredMesh>, "
                    "<ModelCloud>, <ImportOrientation>, <Centre>, <Orientation>, <Size>; remove it, correct its name "
                    "or move it"));
    EXPECT_THAT(
        faultsOf(projectors("<Projector id=\"a\"><Name>a<b/></Name></Projector>")),
        ElementsAre("3: <b>: found this element in <Name>, expected none; remove it, correct its name or move it"));
}

TEST(FormatChecker, AMissingElementIsAFault) {
    EXPECT_THAT(faultsOf("<Display version=\"1\"/>"),
                ElementsAre("1: <Display>: found 0 of <Units>, expected exactly 1; add <Units>"));
    EXPECT_THAT(faultsOf(displayAround("<TargetData type=\"SphericalCollimated\"/>")),
                ElementsAre("2: <TargetData>: found 0 of <Mirror>, expected exactly 1; add <Mirror>"));
    EXPECT_THAT(
        faultsOf(displayAround("<TargetData type=\"Spherical\"><YawTable>\n<Pair measured=\"1\" corrected=\"1\"/>"
                               "</YawTable></TargetData>")),
        ElementsAre("2: <YawTable>: found 1 of <Pair>, expected at least 2; add <Pair>"));
}

TEST(FormatChecker, AnElementTooManyIsAFault) {
    EXPECT_THAT(
        faultsOf(displayAround(FLAT + "\n" + FLAT)),
        ElementsAre("3: <Screen>: found this element once more in <Display>, expected at most 1; remove all but one"));
}

TEST(FormatChecker, StrayTextIsAFault) {
    EXPECT_THAT(faultsOf(displayAround("\n\n  x\n y\n<!-- -->\n")),
                ElementsAre("4: <Display>: found the text \"x\\n y\\n\", expected elements only; remove the text or "
                            "make it a comment"));
    EXPECT_THAT(faultsOf(displayAround("\n<![CDATA[\nx]]>")),
                ElementsAre(testing::StartsWith("3: <Display>: found the text \"x\"")));
    EXPECT_THAT(faultsOf(displayAround("<![CDATA[ ]]><!-- x --><?x?>")), IsEmpty());
}

TEST(FormatChecker, AValueWithoutAUnitIsAFault) {
    EXPECT_THAT(
        faultsOf("<Display version=\"1\"><Units native=\"m\"/><Screen shape=\"Sphere\"><Radius value=\"1\"/>"
                 "<Azimuth min=\"1\" max=\"2\" angleUnit=\"rad\"/></Screen></Display>"),
        ElementsAre("1: <Radius>: found value=\"1\" without a unit, expected lengthUnit with one of \"mm\", \"cm\", "
                    "\"m\", \"in\", \"ft\", \"custom\"; state lengthUnit on the element or around it"));
    EXPECT_THAT(
        faultsOf("<Display version=\"1\"><Units native=\"m\"/><Projectors><Projector id=\"a\"><Orientation x=\"0\" "
                 "y=\"0\" z=\"1\"/></Projector></Projectors></Display>")
            .size(),
        3);
}

TEST(FormatChecker, AWrongUnitIsOneFaultHoweverManyValuesStandBelow) {
    EXPECT_THAT(
        faultsOf(replaced(fullConfiguration(), "angleUnit=\"deg\"", "angleUnit=\"grad\"")),
        ElementsAre("3: <Display>: found angleUnit=\"grad\", expected one of \"deg\", \"rad\"; correct the value"));
}

TEST(FormatChecker, TheCustomUnitStandsAlone) {
    EXPECT_THAT(
        faultsOf(replaced(displayAround(FLAT), "lengthUnit=\"m\"", "lengthUnit=\"custom\"")),
        ElementsAre("1: <Display>: found lengthUnit=\"custom\" beside another kind of native unit, expected \"custom\" "
                    "together with <Units native=\"custom\">, and only then; state the unit that the numbers are in, "
                    "here or in <Units>"));
    EXPECT_EQ(faultsOf(replaced(displayAround(FLAT), "native=\"m\"", "native=\"custom\"")).size(), 1U);
}

TEST(FormatChecker, AWrongShapeDoesNotBlameItsChildren) {
    EXPECT_EQ(faultsOf(replaced(fullConfiguration(), "shape=\"Sphere\"", "shape=\"Dome\"")).size(), 1U);
    EXPECT_EQ(faultsOf(replaced(fullConfiguration(), "shape=\"Sphere\"", "")).size(), 1U);
}

TEST(FormatChecker, AllFaultsAreReportedInOneGo) {
    std::string text = replaced(fullConfiguration(), "<Units native=\"m\"/>", "<Units native=\"yard\"/>");
    text = replaced(text, "x=\"0.1\"", "x=\"left\"");
    text = replaced(text, "file=\"scans/measured.obj\"", "name=\"scans/measured.obj\"");
    text = replaced(text, "id=\"right\"", "id=\"02000000000A\"");
    text = replaced(text, "<Pair measured=\"60\"", "<Pair measured=\"-60\"");
    text = replaced(text, "<v:LampHours>", "stray<v:LampHours>");
    text = replaced(text, "width=\"1920\"", "width=\"0\"");
    std::vector<std::string> lines;
    for (const std::string& fault : faultsOf(text)) {
        lines.push_back(fault.substr(0, fault.find(": found")));
    }
    const auto at = [&text](const std::string& words, const std::string& element) {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(text.rfind(words));
        return std::to_string(1 + std::count(text.begin(), end, '\n')) + ": <" + element + ">";
    };
    const std::string mesh = at("name=\"scans/measured.obj\"", "MeasuredMesh");
    EXPECT_THAT(lines, ElementsAre(at("native=\"yard\"", "Units"), at("x=\"left\"", "EyePoint"), mesh, mesh,
                                   at("measured=\"-60\"", "Pair"), at("width=\"0\"", "Resolution"),
                                   at("stray<v:", "Projector"), at("<Projector id=\"02000000000A\">", "Projector")));
}

TEST(FormatChecker, ForeignContentIsNotLookedAt) {
    EXPECT_THAT(
        faultsOf(
            "<Display version=\"1\" xmlns:v=\"urn:v\" v:version=\"2\" xml:lang=\"de\"><v:Units/><Units v:native=\"x\" "
            "native=\"m\"><v:x/></Units><v:Anything>text<Screen/></v:Anything></Display>"),
        IsEmpty());
}

TEST(FormatChecker, FaultsHaveTheirLineFarDown) {
    EXPECT_THAT(faultsOf(displayAround(std::string(70000, '\n') + "<Oops/>")),
                ElementsAre(testing::StartsWith("70002: <Oops>:")));
}

}  // namespace
