#include "Configuration/detail/MeaningChecker.h"

#include "Samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string sphere(const std::string& children, const std::string& attributes = "") {
    return displayAround("<Screen shape=\"Sphere\" " + attributes + "><Radius value=\"1\"/>\n" + children +
                         "</Screen>");
}

std::string table(const std::string& pairs) {
    return displayAround("<TargetData type=\"Spherical\"><PitchTable>\n" + pairs + "</PitchTable></TargetData>");
}

TEST(MeaningChecker, ScaleBelongsToTheCustomFileUnit) {
    EXPECT_THAT(faultsOf(sphere("", "fileUnit=\"custom\" scale=\"2\"")), IsEmpty());
    EXPECT_THAT(
        faultsOf(sphere("", "fileUnit=\"custom\"")),
        ElementsAre(
            "2: <Screen>: found fileUnit=\"custom\" without a scale, expected scale with the native units per unit "
            "of the files; add scale=\"...\""));
    const std::string expected =
        "2: <Screen>: found scale=\"2\" without fileUnit=\"custom\", expected no scale: the unit has its own; remove "
        "scale or "
        "set fileUnit=\"custom\"";
    EXPECT_THAT(faultsOf(sphere("", "fileUnit=\"mm\" scale=\"2\"")), ElementsAre(expected));
    EXPECT_THAT(faultsOf(sphere("", "scale=\"2\"")), ElementsAre(expected));
}

TEST(MeaningChecker, ImportAxesAreNotParallel) {
    for (const char* forward : {"Z", "-Z"}) {
        EXPECT_THAT(
            faultsOf(sphere("<ImportOrientation up=\"-Z\" forward=\"" + std::string(forward) + "\"/>")),
            ElementsAre("3: <ImportOrientation>: found up=\"-Z\" and forward=\"" + std::string(forward) +
                        "\", expected two axes that are not parallel; name the file's own up and forward axes"));
    }
    EXPECT_THAT(faultsOf(sphere("<ImportOrientation up=\"-Z\" forward=\"X\"/>")), IsEmpty());
}

TEST(MeaningChecker, LimitsAreInOrder) {
    EXPECT_THAT(
        faultsOf(sphere("<Azimuth min=\"10\" max=\"-10\"/>")),
        ElementsAre(
            "3: <Azimuth>: found min=\"10\" and max=\"-10\", expected min below max; exchange or correct them"));
    EXPECT_EQ(faultsOf(sphere("<Azimuth min=\"10\" max=\"10\"/>")).size(), 1U);
    EXPECT_EQ(faultsOf(sphere("<Elevation min=\"10\" max=\"10\"/>")).size(), 1U);
}

TEST(MeaningChecker, AnAzimuthSpansAtMostOneTurn) {
    for (const char* range : {"min=\"-180\" max=\"180\"", "min=\"0\" max=\"360\"", "min=\"10.1\" max=\"370.1\"",
                              "min=\"-3.141592653589793\" max=\"3.141592653589793\" angleUnit=\"rad\""}) {
        EXPECT_THAT(faultsOf(sphere("<Azimuth " + std::string(range) + "/>")), IsEmpty()) << range;
    }
    EXPECT_THAT(
        faultsOf(sphere("<Azimuth min=\"-180\" max=\"180.001\"/>")),
        ElementsAre(
            "3: <Azimuth>: found min=\"-180\" and max=\"180.001\", expected at most one full turn between them; "
            "correct the limits or the angleUnit"));
}

TEST(MeaningChecker, AnElevationEndsAtThePoles) {
    for (const char* range :
         {"min=\"-90\" max=\"90\"", "min=\"-1.5707963267948966\" max=\"1.5707963267948966\" angleUnit=\"rad\""}) {
        EXPECT_THAT(faultsOf(sphere("<Elevation " + std::string(range) + "/>")), IsEmpty()) << range;
    }
    EXPECT_THAT(
        faultsOf(sphere("<Elevation min=\"-90.001\" max=\"91\"/>")),
        ElementsAre("3: <Elevation>: found min=\"-90.001\", expected an elevation from -90 to 90 degrees; correct the "
                    "limit or the angleUnit",
                    "3: <Elevation>: found max=\"91\", expected an elevation from -90 to 90 degrees; correct the limit "
                    "or the angleUnit"));
}

TEST(MeaningChecker, RailsAreEquallyLong) {
    const std::string point = "<Point x=\"0\" y=\"1\" z=\"0\"/>";
    EXPECT_THAT(
        faultsOf(displayAround("<Screen shape=\"Ruled\"><LowerRail>" + point + point + "</LowerRail>\n<UpperRail>" +
                               point + point + point + "</UpperRail></Screen>")),
        ElementsAre(
            "3: <UpperRail>: found 3 points, and 2 in <LowerRail>, expected equally many points on both rails; add "
            "or remove points: each pair of points spans one ruling"));
}

TEST(MeaningChecker, TablesIncreaseInBothColumns) {
    EXPECT_THAT(faultsOf(table("<Pair measured=\"-1\" corrected=\"-2\"/><Pair measured=\"0\" corrected=\"0\"/>")),
                IsEmpty());
    EXPECT_THAT(
        faultsOf(table("<Pair measured=\"1\" corrected=\"1\"/>\n<Pair measured=\"1\" corrected=\"2\"/>")),
        ElementsAre(
            "4: <Pair>: found measured=\"1\", expected more than the \"1\" of the pair before; put the pairs into "
            "increasing order"));
    EXPECT_THAT(
        faultsOf(table("<Pair measured=\"1\" corrected=\"1\"/>\n<Pair measured=\"2\" corrected=\"0.5\"/>")),
        ElementsAre(
            "4: <Pair>: found corrected=\"0.5\", expected more than the \"1\" of the pair before; put the pairs into "
            "increasing order"));
    EXPECT_THAT(faultsOf(table(
                    "<Pair measured=\"60\" corrected=\"1\"/><Pair measured=\"2\" corrected=\"2\" angleUnit=\"rad\"/>")),
                IsEmpty())
        << "compared as angles, not as numbers";
}

TEST(MeaningChecker, IdsOccurOnce) {
    EXPECT_THAT(
        faultsOf(
            projectors("<Projector id=\"a\"/>\n<Projector id=\"b\"/>\n<Projector id=\"a\"/>\n<Projector id=\"a\"/>")),
        ElementsAre(
            "5: <Projector>: found id=\"a\" as at line 3, expected an id that no other projector has; give every "
            "projector its own id",
            "6: <Projector>: found id=\"a\" as at line 3, expected an id that no other projector has; give every "
            "projector its own id"));
    EXPECT_THAT(faultsOf(projectors("<Projector id=\"a\"/><Projector id=\"A\"/><Projector id=\" a\"/>")), IsEmpty());
}

TEST(MeaningChecker, TheBoundThatStandsForNoneIsAFault) {
    for (const char* bound : {"-1000", "-1e3", "-1000.0"}) {
        EXPECT_THAT(
            faultsOf(projectors("<Projector id=\"a\"><ScreenArea top=\"" + std::string(bound) + "\"/></Projector>")),
            ElementsAre("3: <ScreenArea>: found top=\"" + std::string(bound) +
                        "\", expected another number: this one stands for a bound that is not configured; leave the "
                        "attribute out instead"));
    }
}

TEST(MeaningChecker, MirroredAreasAreMeant) {
    EXPECT_THAT(faultsOf(projectors("<Projector id=\"a\"><ScreenArea left=\"1\" right=\"0\" bottom=\"1\" top=\"0\"/>"
                                    "<Frustum left=\"10\" right=\"-10\" bottom=\"10\" top=\"-10\"/>"
                                    "<Layout xMin=\"1\" xMax=\"0\" yMin=\"1\" yMax=\"1\"/></Projector>")),
                IsEmpty());
}

}  // namespace
