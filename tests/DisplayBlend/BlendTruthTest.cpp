// The light of all channels, added up at random places of whole displays from the code values that a file would hold.
#include "BlendDisplays.h"
#include "support/LightSums.h"
#include "support/Sanitizers.h"
#include "support/TestPaths.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <sstream>

namespace {

constexpr std::size_t PLACES = repetitions(std::size_t{100'000});
/// What quantisation to 8 bits may be off.
constexpr double MOST_OFF_8 = 0.02;
/// A part of the places: as many may lie where two neighbouring pixels differ too much for what lies between them.
constexpr double MOST_STEEP = 0.0015;
/// The same with the rims of shadows. The board of `ADomeWithAShadowAndADoor`, 0.8 m wide and 1 m high, hangs 3 m
/// before each projector, whose pixels are 1 / 1229 of a metre at one metre: its outline is 1470 pixels long there.
/// Each picture has its own outline of it, and the shadows of the two others, which look about as long from there. What
/// is linear is off between the two pixels that a rim goes between, and second differences see it one pixel further on
/// both sides: that are three pixels across it, and 4.2 on the slant. Three outlines of 1470 pixels, 4.2 wide, are
/// 0.008 of the 2.3 million pixels of a picture.
constexpr double MOST_STEEP_AT_RIMS = MOST_STEEP + 0.008;

class BlendTruthTest : public BlendDisplayTest {
protected:
    /// As files hold it, and back.
    template <class Code>
    static BlendPicture decoded(BlendPicture picture, const std::vector<Code>& codes, const BlendCurve& curve) {
        constexpr std::size_t WHITE = std::numeric_limits<Code>::max();
        std::vector<float> light;
        for (std::size_t code = 0; code <= WHITE; ++code) {
            light.push_back(static_cast<float>(curve.lightOf(static_cast<double>(code) / WHITE)));
        }
        for (std::size_t row = 0; row < picture.height; ++row) {
            for (std::size_t column = 0; column < picture.width; ++column) {
                picture.light[row * picture.width + column] =
                    light[codes[(picture.height - 1 - row) * picture.width + column]];
            }
        }
        return picture;
    }

    void expectOne(double mostSteep = MOST_STEEP) {
        const BlendCurve curve = BlendCurve::ofGamma(2.2);
        std::vector<BlendPicture> fine;
        std::vector<BlendPicture> coarse;
        for (const BlendPicture& picture : weights()) {
            fine.push_back(decoded(picture, picture.codes16(curve), curve));
            coarse.push_back(decoded(picture, picture.codes8(curve), curve));
        }
        const auto lights =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry())
                .lights;
        ASSERT_EQ(lights.size(), fine.size());
        const LightSums sums = LightSums::of(lights, fine, PLACES);
        const LightSums sums8 = LightSums::of(lights, coarse, PLACES);
        if (std::getenv("SM_BLEND_SUMS") != nullptr) {
            std::printf(
                "%zu places, %zu shared, %zu steep; off by %.2g, steep %.2g, beyond the bound %.2g; 8 bits %.2g; %s | "
                "%s\n",
                sums.places, sums.shared, sums.steep, sums.worst, sums.worstSteep, sums.worstBeyond, sums8.worst,
                sums.where.c_str(), sums.whereBeyond.c_str());
        }
        EXPECT_LT(sums.worst, LightSums::EVEN) << sums.where;
        EXPECT_LT(sums.worstBeyond, LightSums::EVEN) << sums.whereBeyond;
        EXPECT_LT(sums8.worst, MOST_OFF_8) << sums8.where;
        EXPECT_GT(sums.places, PLACES / 3) << "most places land";
        // A tenth of the places, under the sanitizers, is a small sample: a dozen counts, which vary by their root.
        const double most = mostSteep * static_cast<double>(sums.places);
        EXPECT_LT(static_cast<double>(sums.steep), IS_SANITIZED ? most + 4 * std::sqrt(most) : most);
        m_shared = sums.shared;
    }

    std::size_t m_shared = 0;
    static inline const std::string PROJECTORS = "<TargetData type='ProjectorCentric'/>";
    static inline const std::string MESH =
        "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='room.obj'/>"
        "<ImportOrientation up='Z' forward='Y'/></Screen>";
};

class BlendTruthOfExampleTest : public BlendTruthTest, public testing::WithParamInterface<const char*> {};

TEST_P(BlendTruthOfExampleTest, TheLightSumsToOne) {
    loadFile(sourceFolder() + "/examples/" + GetParam() + "/display.xml");
    expectOne();
}

INSTANTIATE_TEST_SUITE_P(Examples, BlendTruthOfExampleTest,
                         testing::Values("closed-cylinder", "cockpit", "collimated", "curved-wall", "cylinder", "dome",
                                         "lens-cylinder", "mesh-rays", "planar-wall", "spherical-dome", "warped-wall"),
                         [](const auto& tested) {
                             std::string name = tested.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// Five on the rim, each with the far side of the dome, and one for its top.
TEST_F(BlendTruthTest, APlanetarium) {
    if (IS_SANITIZED) {
        GTEST_SKIP() << "takes minutes there; the examples go the same ways with fewer channels";
    }
    std::string projectors = camera("Top", {0, 0, 0.2}, 0, 90, 40, 30);
    for (int i = 0; i < 5; ++i) {
        const double angle = 2 * std::numbers::pi * i / 5;
        projectors += camera("P" + std::to_string(i), {4.5 * std::sin(angle), 4.5 * std::cos(angle), 0.3},
                             72.0 * i + 180, 28, 38, 27);
    }
    load(
        "<Screen shape='Sphere'><Radius value='5'/><Azimuth min='-180' max='180'/><Elevation min='0' max='90'/>"
        "</Screen>",
        projectors, PROJECTORS);
    expectOne();
    EXPECT_GT(m_shared, PLACES / 10);
}

TEST_F(BlendTruthTest, ACylinderAllAround) {
    std::string projectors;
    for (int i = 0; i < 6; ++i) {
        projectors += camera("P" + std::to_string(i), {0, 0, 0}, 60.0 * i, 0, 35, 24);
    }
    load(
        "<Screen shape='Cylinder'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='0' z='0'/><Radius value='4'/>"
        "<Size height='3'/><Azimuth min='-180' max='180'/></Screen>",
        projectors, "<TargetData type='Spherical'/>");
    expectOne();
    EXPECT_GT(m_shared, PLACES / 20);
}

// Three walls and a floor; the pictures go around the corners.
TEST_F(BlendTruthTest, ACave) {
    m_folder.write("room.obj",
                   "v -2 -2 0\nv -2 2 0\nv -2 2 3\nv -2 -2 3\nv 2 2 0\nv 2 2 3\nv 2 -2 0\nv 2 -2 3\n"
                   "f 1 2 3\nf 1 3 4\nf 2 5 6\nf 2 6 3\nf 5 7 8\nf 5 8 6\nf 1 7 5\nf 1 5 2\n");
    load(MESH,
         camera("Left", {0.2, -1, 1.6}, -60, -2, 38, 24) + camera("Front", {0, -1, 1.6}, 0, -2, 38, 24) +
             camera("Right", {-0.2, -1, 1.6}, 60, -2, 38, 24) + camera("Floor", {0, 0.3, 3.4}, 0, -90, 30, 20),
         PROJECTORS);
    expectOne();
    EXPECT_GT(m_shared, PLACES / 10);
}

// Nearly on top of each other, for two eyes.
TEST_F(BlendTruthTest, AStereoWall) {
    load(displays::FLAT, camera("Left", {-0.2, 0, 1}, 0, 0, 26, 17) + camera("Right", {0.2, 0, 1}, 0, 0, 26, 17),
         PROJECTORS);
    expectOne();
    EXPECT_GT(m_shared, PLACES / 3);
}

TEST_F(BlendTruthTest, AWallWithAnInsetOverItsSeam) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1) + area("Inset", 0.35, 0.7, 0.3, 0.65));
    expectOne();
    EXPECT_GT(m_shared, PLACES / 3);
}

/// A dome of triangles with a door in it, and a board that hangs before it.
std::string domeWithADoorAndABoard() {
    constexpr int AROUND = 180;
    constexpr int UP = 45;
    std::string text;
    const auto vertex = [&text](double x, double y, double z) {
        text += "v " + std::to_string(x) + ' ' + std::to_string(y) + ' ' + std::to_string(z) + '\n';
    };
    for (int row = 0; row <= UP; ++row) {
        for (int column = 0; column <= AROUND; ++column) {
            const double azimuth = 2 * std::numbers::pi * column / AROUND;
            const double elevation = std::numbers::pi / 2 * 0.98 * row / UP;
            vertex(5 * std::cos(elevation) * std::sin(azimuth), 5 * std::cos(elevation) * std::cos(azimuth),
                   5 * std::sin(elevation));
        }
    }
    for (int row = 0; row < UP; ++row) {
        for (int column = 0; column < AROUND; ++column) {
            if (row < 12 && column >= 8 && column < 16) {
                continue;
            }
            const int first = row * (AROUND + 1) + column + 1;
            const std::string a = std::to_string(first);
            const std::string b = std::to_string(first + 1);
            const std::string c = std::to_string(first + AROUND + 2);
            const std::string d = std::to_string(first + AROUND + 1);
            text += "f " + a + ' ' + b + ' ' + c + "\nf " + a + ' ' + c + ' ' + d + '\n';
        }
    }
    vertex(-0.4, 3, 1.2);
    vertex(0.4, 3, 1.2);
    vertex(0.4, 3, 2.2);
    vertex(-0.4, 3, 2.2);
    return text + "f -4 -3 -2\nf -4 -2 -1\n";
}

TEST_F(BlendTruthTest, ADomeWithAShadowAndADoor) {
    if (IS_SANITIZED) {
        GTEST_SKIP()
            << "takes minutes there; BlendRasterTest and DisplayBlenderTest go the same ways with smaller shadows";
    }
    m_folder.write("room.obj", domeWithADoorAndABoard());
    load(MESH,
         camera("L", {-1.5, 0, 0.5}, 10, 25, 38, 26) + camera("R", {1.5, 0, 0.5}, -10, 25, 38, 26) +
             camera("C", {0, -1, 0.5}, 50, 25, 38, 26),
         PROJECTORS);
    expectOne(MOST_STEEP_AT_RIMS);
    EXPECT_GT(m_shared, PLACES / 5);
}

}  // namespace
