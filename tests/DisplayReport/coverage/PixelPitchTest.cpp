#include "DisplayReport/coverage/PixelPitch.h"

#include "DisplayReport/coverage/CoverageSurvey.h"
#include "LitDisplays.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

namespace {

using namespace Veltrani::DisplayReport;

class PixelPitchTest : public LitDisplayTest {
protected:
    [[nodiscard]] PixelPitch only(int width = 1920, int height = 1200) const {
        return measuredPitch(*lights().at(0), width, height);
    }

    /// With the hints of the whole survey, of the only channel.
    [[nodiscard]] PixelPitch surveyed() const { return CoverageSurvey().of(*m_config).channels.at(0).pitch; }

    /// Where a picture point lands, if it does.
    using Landing = std::function<std::optional<P3>(const P2&)>;

    /// The least and the greatest of all pixels whose corners land, one by one.
    static std::pair<double, double> ofAll(const Landing& landing, int width, int height) {
        double least = std::numeric_limits<double>::infinity();
        double most = 0;
        std::vector<std::optional<P3>> below;
        for (int row = 0; row <= height; ++row) {
            std::vector<std::optional<P3>> here;
            for (int column = 0; column <= width; ++column) {
                here.push_back(landing({static_cast<double>(column) / width, static_cast<double>(row) / height}));
                if (row == 0 || column == 0) {
                    continue;
                }
                const auto left = static_cast<std::size_t>(column - 1);
                if (below[left] && below[left + 1] && here[left] && here[left + 1]) {
                    const P3 rising = *here[left + 1] - *below[left];
                    const P3 falling = *below[left + 1] - *here[left];
                    const double side = std::sqrt(norm(cross(rising, falling)) / 2);
                    least = std::min(least, side);
                    most = std::max(most, side);
                }
            }
            below = here;
        }
        return {least, most};
    }

    static void expectRight(const PixelPitch& found, const std::pair<double, double>& expected) {
        EXPECT_NEAR(found.least, expected.first, PROMISED * expected.first);
        EXPECT_NEAR(found.most, expected.second, PROMISED * expected.second);
    }

    /// The direction of a picture point of a camera that looks along y, by the angles of its frustum in degrees.
    static P3 directionOf(const P2& picture, double left, double right, double bottom, double top) {
        const auto between = [](double from, double to, double part) {
            return std::tan(radians(from)) + (std::tan(radians(to)) - std::tan(radians(from))) * part;
        };
        return {between(left, right, picture[0]), 1.0, between(bottom, top, picture[1])};
    }

    /// A third of what is promised.
    static constexpr double PROMISED = 3e-4;
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
    EXPECT_LT(pitch.measured, 64U * 64U);
    const double wall = 5 * 2 * std::tan(radians(30)) / 64;
    EXPECT_NEAR(pitch.most, wall, 1e-9) << "and no pixel from the panel to the wall";
    EXPECT_NEAR(pitch.least, wall / 2, 1e-9);
}

TEST_F(PixelPitchTest, IsGreatestWhereRaysMeetASphereFromItsMiddleStraight) {
    load(displays::SPHERE, camera("A", "-70", "75.3", "-61", "70"), displays::SPHERICAL);
    // A pixel around the tangents h, v fills a solid angle of dh dv / (1 + h^2 + v^2)^(3/2).
    const double left = std::tan(radians(-70));
    const double bottom = std::tan(radians(-61));
    const double dh = (std::tan(radians(75.3)) - left) / 1920;
    const double dv = (std::tan(radians(70)) - bottom) / 1200;
    const auto side = [&](int column, int row) {
        const double h = left + (column + 0.5) * dh;
        const double v = bottom + (row + 0.5) * dv;
        return 5 * std::sqrt(dh * dv) * std::pow(1 + h * h + v * v, -0.75);
    };
    const double most = side(static_cast<int>(-left / dh), static_cast<int>(-bottom / dv));
    EXPECT_NEAR(only().most, most, 1e-4 * most);
    const double least = side(1919, 1199);
    EXPECT_NEAR(only().least, least, 1e-4 * least);
}

TEST_F(PixelPitchTest, IsThatOfAllPixelsOffTheMiddleOfASphere) {
    load(displays::SPHERE, camera("A", "-60", "55", "-50", "58", "<Position x='2' y='-1.3' z='3.1'/>"),
         displays::PROJECTORS);
    const P3 eye{2, -1.3, 3.1};
    const auto landing = [&](const P2& picture) -> std::optional<P3> {
        const P3 ray = directionOf(picture, -60, 55, -50, 58);
        const double a = dot(ray, ray);
        const double b = dot(ray, eye);
        return eye + ray * ((-b + std::sqrt(b * b - a * (dot(eye, eye) - 25))) / a);
    };
    expectRight(only(960, 600), ofAll(landing, 960, 600));
}

TEST_F(PixelPitchTest, IsThatOfAllPixelsThroughALensThatDistorts) {
    m_folder.write("lens.yml",
                   "%YAML:1.0\n---\nimage_width: 1920\nimage_height: 1200\n"
                   "camera_matrix: !!opencv-matrix\n   rows: 3\n   cols: 3\n   dt: d\n"
                   "   data: [1300., 0., 700., 0., 1300., 420., 0., 0., 1.]\n"
                   "distortion_coefficients: !!opencv-matrix\n   rows: 1\n   cols: 5\n   dt: d\n"
                   "   data: [-0.11, 0.03, 0.001, -0.002, 0.]\n");
    load("<Screen shape='Flat'><Centre x='0' y='5' z='0'/><Size width='40' height='40'/></Screen>",
         displays::projector(
             "A", "<ProjectionModel name='BrownConrady' file='lens.yml'/><Orientation z='13' x='-9' y='4'/>"),
         displays::PROJECTORS);
    const auto all = lights();
    const auto landing = [&all](const P2& picture) {
        const ChannelLight::Landing found = all.at(0)->landingOf(picture);
        return found.hits ? std::optional(found.on.place) : std::nullopt;
    };
    expectRight(only(960, 600), ofAll(landing, 960, 600));
}

TEST_F(PixelPitchTest, IsThatOfAllPixelsInTheSharpEndOfAMesh) {
    // A triangle that ends far away, in a place of its own in the picture.
    const P3 a{-2.1, 4, -1.3};
    const P3 b{3.7, 11, 0.83};
    const P3 c{-2.3, 4.1, 0.4};
    m_folder.write("wall.obj", "v -2.1 4 -1.3\nv 3.7 11 0.83\nv -2.3 4.1 0.4\nf 1 2 3\n");
    load(displays::MESH, camera("A", "-35", "35", "-25", "25"), displays::PROJECTORS);
    const P3 normal = cross(b - a, c - a);
    const auto landing = [&](const P2& picture) -> std::optional<P3> {
        const P3 ray = directionOf(picture, -35, 35, -25, 25);
        const P3 place = ray * (dot(a, normal) / dot(ray, normal));
        const auto isInside = [&](const P3& from, const P3& to) {
            return dot(cross(to - from, place - from), normal) >= 0;
        };
        return isInside(a, b) && isInside(b, c) && isInside(c, a) ? std::optional(place) : std::nullopt;
    };
    expectRight(surveyed(), ofAll(landing, 1920, 1200));
}

TEST_F(PixelPitchTest, APanelBetweenThePointsOfTheLatticeIsMeasured) {
    // 4 cm at half the distance of the wall, where the lattice has a point every 9 cm.
    m_folder.write("wall.obj",
                   "v -4 5 -4\nv 4 5 -4\nv 4 5 4\nv -4 5 4\nf 1 2 3\nf 1 3 4\n"
                   "v 0.31 2.5 0.43\nv 0.35 2.5 0.43\nv 0.35 2.5 0.47\nv 0.31 2.5 0.47\nf 5 6 7\nf 5 7 8\n");
    load(displays::MESH, camera("A", "-30", "30", "-20", "20"), displays::PROJECTORS);
    const double wall = 5 * std::sqrt(2 * std::tan(radians(30)) / 1920 * 2 * std::tan(radians(20)) / 1200);
    EXPECT_NEAR(surveyed().least, wall / 2, 1e-9);
    EXPECT_NEAR(surveyed().most, wall, 1e-9);
}

TEST_F(PixelPitchTest, PixelsAcrossAFoldAreLeftOut) {
    // Two walls that come nearer on both sides of a fold at x = 0.0131, 20 degrees each.
    const double slope = std::tan(radians(20));
    const auto line = [&](double x) {
        const std::string xy = std::to_string(x) + " " + std::to_string(5 - slope * std::abs(x - 0.0131));
        return "v " + xy + " -2\nv " + xy + " 2\n";
    };
    m_folder.write("wall.obj", line(-2) + line(0.0131) + line(2) + "f 1 3 4\nf 1 4 2\nf 3 5 6\nf 3 6 4\n");
    load(displays::MESH, camera("A", "-6", "6", "-4", "4"), displays::PROJECTORS);
    // On either wall y + side * slope * x is the same all over.
    const auto wall = [&](double side) -> Landing {
        return [=](const P2& picture) -> std::optional<P3> {
            const P3 ray = directionOf(picture, -6, 6, -4, 4);
            const P3 place = ray * ((5 + side * slope * 0.0131) / (ray[1] + side * slope * ray[0]));
            return side * (place[0] - 0.0131) >= 0 ? std::optional(place) : std::nullopt;
        };
    };
    const auto left = ofAll(wall(-1), 1920, 1200);
    const auto right = ofAll(wall(1), 1920, 1200);
    expectRight(surveyed(), {std::min(left.first, right.first), std::max(left.second, right.second)});
}

TEST_F(PixelPitchTest, OfAPictureWhosePixelsAllBendTheyAreMeasuredAllTheSame) {
    load(displays::SPHERE, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0.25' top='0.75'/>"));
    // Eight pixels of 45 by 45 degrees, all alike.
    const auto place = [](double azimuth, double elevation) {
        return P3{std::cos(radians(elevation)) * std::sin(radians(azimuth)),
                  std::cos(radians(elevation)) * std::cos(radians(azimuth)), std::sin(radians(elevation))} *
               5.0;
    };
    const double side = std::sqrt(norm(cross(place(45, 45) - place(0, 0), place(45, 0) - place(0, 45))) / 2);
    EXPECT_EQ(only(4, 2).measured, 8U);
    EXPECT_NEAR(only(4, 2).least, side, 1e-12);
    EXPECT_NEAR(only(4, 2).most, side, 1e-12);
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
