#include "DisplayReport/coverage/CoverageSurvey.h"

#include "LitDisplays.h"

#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;

class CoverageSurveyTest : public LitDisplayTest {
protected:
    [[nodiscard]] CoverageReport report() const { return CoverageSurvey().of(*m_config); }

    static std::string half(const std::string& id, const std::string& left, const std::string& right) {
        return displays::projector(id, "<ScreenArea left='" + left + "' right='" + right + "' bottom='0' top='1'/>");
    }
};

TEST_F(CoverageSurveyTest, MeasuresChannelsScreenAndOverlaps) {
    load(displays::FLAT, half("A", "0", "0.5") + half("B", "0.25", "0.75"));
    const CoverageReport found = report();
    EXPECT_EQ(found.unit, "m");
    EXPECT_EQ(found.fault, "");
    EXPECT_TRUE(found.complete());
    EXPECT_NEAR(found.screenArea, 8, 1e-9);
    ASSERT_EQ(found.channels.size(), 2U);
    EXPECT_EQ(found.channels[1].name, "B");
    EXPECT_NEAR(found.channels[1].area, 4, 4e-4);
    EXPECT_NEAR(found.channels[1].missed(), 0, 1e-12);
    const double side = std::sqrt(4.0 / (1920 * 1200));
    EXPECT_NEAR(found.channels[0].pitch.least, side, 1e-9);
    EXPECT_NEAR(found.channels[0].meanPitch(), side, 1e-4 * side);
    ASSERT_EQ(found.overlaps.size(), 1U);
    EXPECT_NEAR(found.overlaps[0].area, 2, 2e-4);
    EXPECT_NEAR(found.overlaps[0].partOfFirst, 0.5, 5e-5);
    EXPECT_NEAR(found.overlaps[0].partOfSecond, 0.5, 5e-5);
}

TEST_F(CoverageSurveyTest, ChannelsThatOnlyMeetDoNotOverlap) {
    load(displays::FLAT, half("A", "0", "0.5") + half("B", "0.5", "1"));
    EXPECT_TRUE(report().overlaps.empty());
    EXPECT_NEAR(report().areaLitBy(1), 8, 8e-4);
}

TEST_F(CoverageSurveyTest, AChannelWithoutALocatorKeepsItsPlace) {
    load(displays::FLAT, displays::projector("A", "") + half("B", "0.25", "0.75"));
    const CoverageReport found = report();
    ASSERT_EQ(found.channels.size(), 2U);
    EXPECT_THAT(found.channels[0].fault, HasSubstr("no screen area"));
    EXPECT_FALSE(found.channels[0].isLighting);
    EXPECT_TRUE(found.channels[1].isLighting);
    EXPECT_NEAR(found.channels[1].area, 4, 4e-4);
    EXPECT_FALSE(found.complete());
}

TEST_F(CoverageSurveyTest, AChannelThatMissesSaysSo) {
    load(displays::SPHERE, camera("A", "-10", "10", "-10", "10", "<Position x='0' y='50' z='0'/>"),
         displays::PROJECTORS);
    const CoverageReport found = report();
    EXPECT_FALSE(found.channels[0].isLighting);
    EXPECT_THAT(found.channels[0].fault, HasSubstr("nothing of its picture lies on the screen"));
    EXPECT_NEAR(found.areaLitBy(0), found.screenArea, 1e-9);
    load(displays::FLAT, half("A", "1.2", "1.4"));
    EXPECT_THAT(report().channels[0].fault, HasSubstr("it lies outside the screen"));
    load(displays::SPHERE, camera("A", "10", "10", "-10", "10"), displays::SPHERICAL);
    EXPECT_THAT(report().channels[0].fault, HasSubstr("it has no width or no height"));
}

TEST_F(CoverageSurveyTest, WithoutResolutionTheAreaIsMeasuredAndThePixelsAreNot) {
    load(displays::FLAT, "<Projector id='A'><Name>A</Name>" + displays::WHOLE_AREA + "</Projector>");
    const CoverageReport found = report();
    EXPECT_NEAR(found.channels[0].area, 8, 8e-4);
    EXPECT_TRUE(found.channels[0].isLighting);
    EXPECT_EQ(found.channels[0].pitch.measured, 0U);
    EXPECT_THAT(found.channels[0].fault, HasSubstr("give it a Resolution"));
}

TEST_F(CoverageSurveyTest, AMeshWithoutTextureCannotBeAddressedByAreas) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    load(displays::MESH, half("A", "0", "1"));
    const CoverageReport found = report();
    EXPECT_THAT(found.channels[0].fault, HasSubstr("The mesh has no 2D coordinates"));
    EXPECT_NEAR(found.areaLitBy(0), 17, 1e-9);
}

TEST_F(CoverageSurveyTest, AScreenThatIsNoneIsTold) {
    m_config = displays::parsed("", half("A", "0", "1"));
    EXPECT_EQ(report().fault, "there is no screen to light");
    m_folder.write("wall.obj", "v 0 0 0\n");
    m_config = displays::parsed(displays::MESH, half("A", "0", "1"));
    EXPECT_FALSE(ScreenLoader::load(*m_config).empty());
    EXPECT_EQ(report().fault, "there is no screen to light");
}

TEST_F(CoverageSurveyTest, WithoutProjectorsTheScreenIsDark) {
    load(displays::FLAT, "");
    const CoverageReport found = report();
    EXPECT_TRUE(found.channels.empty());
    EXPECT_NEAR(found.areaLitBy(0), 8, 1e-9);
}

TEST_F(CoverageSurveyTest, FarAwayAndVeryLargeDisplaysAreMeasuredAlike) {
    load("<Screen shape='Flat'><Centre x='1e9' y='-1e9' z='1e9'/><Size width='4000' height='2000'/></Screen>",
         half("A", "0", "0.5"));
    EXPECT_NEAR(report().channels[0].area, 4e6, 4e3);
    load(
        "<Screen shape='Sphere'><Radius value='1e9'/><Azimuth min='-180' max='180'/><Elevation min='-90' "
        "max='90'/></Screen>",
        camera("A", "-45", "45", "-45", "45"), displays::SPHERICAL);
    const double sixth = 4e18 * std::numbers::pi / 6;
    EXPECT_NEAR(report().channels[0].area, sixth, 1e-4 * sixth);
}

TEST_F(CoverageSurveyTest, ProgressGrowsToItsEnd) {
    load(displays::FLAT, half("A", "0", "0.5"));
    std::size_t last = 0;
    std::size_t all = 0;
    static_cast<void>(CoverageSurvey([&](std::size_t done, std::size_t total) {
                          EXPECT_GE(done, last);
                          EXPECT_LE(done, total);
                          last = done;
                          all = total;
                      }).of(*m_config));
    EXPECT_GT(10 * last, 9 * all);
}

TEST_F(CoverageSurveyTest, PiecesMakeUpTheScreen) {
    load(displays::FLAT, half("A", "0", "0.5"));
    std::vector<CoveredPiece> pieces;
    static_cast<void>(CoverageSurvey().keepPieces(pieces).of(*m_config));
    double lit = 0;
    for (const CoveredPiece& piece : pieces) {
        ASSERT_LE(piece.channels, 1U);
        const auto& [a, b, c] = piece.corners;
        lit += piece.channels == 1 ? norm(cross(b - a, c - a)) / 2 : 0.0;
    }
    EXPECT_NEAR(lit, 4, 4e-4);
}

TEST_F(CoverageSurveyTest, FacesThatCoincideOrHaveNoAreaChangeNothing) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    load(displays::MESH, camera("A", "-30", "30", "-30", "30"), displays::PROJECTORS);
    const CoverageReport once = report();
    std::string obj = displays::PANEL_OBJ;
    for (int i = 0; i < 3000; ++i) {
        obj += i % 2 == 0 ? "f 1 2 3\nf 5 6 7\nf 7 5 6\n" : "f 4 3 1\nf 1 1 3\nf 2 3 2\n";
    }
    m_folder.write("wall.obj", obj);
    load(displays::MESH, camera("A", "-30", "30", "-30", "30"), displays::PROJECTORS);
    const CoverageReport many = report();
    EXPECT_EQ(many.areaByCount, once.areaByCount);
    EXPECT_EQ(many.channels[0].landed, once.channels[0].landed);
    EXPECT_NEAR(many.channels[0].pitch.least, once.channels[0].pitch.least, 1e-15);
    EXPECT_NEAR(many.channels[0].pitch.most, once.channels[0].pitch.most, 1e-15);
}

}  // namespace
