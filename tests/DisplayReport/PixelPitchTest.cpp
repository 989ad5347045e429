#include "DisplayReport/PixelPitch.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;

class PixelPitchTest : public LitDisplayTest {
protected:
    [[nodiscard]] PixelPitch only(int width = 1920, int height = 1200) const {
        return PixelPitch::of(*lights().at(0), width, height);
    }
};

TEST_F(PixelPitchTest, IsTheSameAllOverARectangleOfAFlatScreen) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>"));
    const double side = std::sqrt((2.0 / 1920) * (2.0 / 1200));
    EXPECT_NEAR(only().least, side, 1e-12);
    EXPECT_NEAR(only().most, side, 1e-12);
    EXPECT_EQ(only().measured, 33U * 21U);
}

TEST_F(PixelPitchTest, GrowsWithTheSlantOnAWall) {
    // A camera that is turned by 40 degrees, 3 m before the wall.
    load("<Screen shape='Flat'><Centre x='0' y='3' z='0'/><Size width='100' height='100'/></Screen>",
         camera("A", "-20", "20", "-10", "10", "<Orientation z='40' x='0' y='0'/>"), displays::PROJECTORS);
    // On a wall at distance d a ray with the tangent h that is turned by a meets x = d tan(a + atan h), and one with
    // the tangents h, v meets z = d v / (cos a - h sin a).
    const double a = radians(40);
    const double tangent = std::tan(radians(20));
    const auto side = [&](double h, double v) {
        const double dh = tangent / 1920;
        const double dv = std::tan(radians(10)) / 1200;
        const auto x = [&](double at) { return 3 * std::tan(a + std::atan(at)); };
        const auto z = [&](double at, double up) { return 3 * up / (std::cos(a) - at * std::sin(a)); };
        // Diagonals of the pixel around (h, v).
        const double rx = x(h + dh) - x(h - dh);
        const double rz = z(h + dh, v + dv) - z(h - dh, v - dv);
        const double fx = rx;
        const double fz = z(h + dh, v - dv) - z(h - dh, v + dv);
        return std::sqrt(std::abs(rx * fz - rz * fx) / 2);
    };
    const double edge = tangent * (1 - 1.0 / 1920);
    const double top = std::tan(radians(10)) * (1 - 1.0 / 1200);
    EXPECT_NEAR(only().least, side(-edge, 0), 1e-4 * side(-edge, 0));
    EXPECT_NEAR(only().most, side(edge, top), 1e-6 * side(edge, top));
}

TEST_F(PixelPitchTest, PixelsThatMissOrLieAcrossAnEdgeAreLeftOut) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    load(displays::MESH, camera("A", "-30", "30", "-30", "30"), displays::PROJECTORS);
    const PixelPitch pitch = only(64, 64);
    EXPECT_GT(pitch.measured, 0U);
    EXPECT_LT(pitch.measured, 33U * 21U);
    const double wall = 5 * 2 * std::tan(radians(30)) / 64;
    EXPECT_NEAR(pitch.most, wall, 1e-9) << "and no pixel from the panel to the wall";
    EXPECT_NEAR(pitch.least, wall / 2, 1e-9);
}

TEST_F(PixelPitchTest, APictureWithoutPixelsHasNone) {
    load(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    EXPECT_EQ(only(0, 0).measured, 0U);
    EXPECT_EQ(only(0, 1200).measured, 0U);
    EXPECT_EQ(only(1, 1).measured, 1U);
    EXPECT_NEAR(only(1, 1).most, std::sqrt(8.0), 1e-12);
    EXPECT_EQ(only(2, 1).measured, 2U);
}

}  // namespace
