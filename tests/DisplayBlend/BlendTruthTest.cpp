// The light of all channels, added up at random places of whole displays from the code values that a file would hold.
#include "BlendDisplays.h"
#include "support/Sanitizers.h"
#include "support/TestPaths.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <sstream>

namespace {

constexpr std::size_t PLACES = repetitions(std::size_t{100'000});
constexpr double MOST_OFF_16 = 0.001;
constexpr double MOST_OFF_8 = 0.02;
/// Pixels: nearer to where two pictures end at once, where outlines cross, no rule is kept.
constexpr double CROSSING = 12.0;
/// A part of the places: as many may lie at crossings, and as many next to a border of a shadow or a rim, where what is
/// interpolated between two pixels lies on two parts of the screen.
constexpr double MOST_EXEMPT = 0.02;

class BlendTruthTest : public BlendDisplayTest {
protected:
    using Reach = ChannelLight::Reach;
    using Landing = ChannelLight::Landing;

    /// What was found at the places of one display.
    struct Sums {
        std::size_t measured = 0;
        std::size_t shared = 0;  ///< by two channels and more
        std::size_t crossings = 0;
        std::size_t torn = 0;
        double worst16 = 0;
        double worst8 = 0;
        std::string where;  ///< the worst: which channels put what light on it, from which pixel
    };

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

    /// Pixels to the nearest edge of the picture.
    static double toEdge(const P2& picture, const BlendPicture& pixels) {
        const double across = std::min(picture[0], 1 - picture[0]) * static_cast<double>(pixels.width);
        return std::min(across, std::min(picture[1], 1 - picture[1]) * static_cast<double>(pixels.height));
    }

    /// Whether the four pixels around a picture point land next to each other.
    static bool isWhole(const ChannelLight& light, const P2& picture, const BlendPicture& pixels) {
        const auto middle = [](double place, std::size_t count, int further) {
            const double first = std::floor(place * static_cast<double>(count) - 0.5) + further;
            return (std::clamp(first, 0.0, static_cast<double>(count) - 1) + 0.5) / static_cast<double>(count);
        };
        std::array<P2, 5> around{picture};
        for (int i = 0; i < 4; ++i) {
            around[static_cast<std::size_t>(i) + 1] = {middle(picture[0], pixels.width, i % 2),
                                                       middle(picture[1], pixels.height, i / 2)};
        }
        std::array<Landing, 5> landings;
        light.land(around, landings);
        for (const Landing& landing : landings) {
            if (!landing.hits || landing.side != landings[0].side) {
                return false;
            }
        }
        const auto way = [&](std::size_t from, std::size_t to) {
            return norm(landings[from].on.place - landings[to].on.place);
        };
        // A pixel under a low angle is ten times as long as it is wide.
        double step = std::numeric_limits<double>::infinity();
        for (const double side : {way(1, 2), way(1, 3), way(2, 4), way(3, 4)}) {
            // Beyond the outermost middles two of them are one.
            step = side > 0 ? std::min(step, side) : step;
        }
        return std::max({way(0, 1), way(0, 2), way(0, 3), way(0, 4)}) <= 20 * step;
    }

    /// Whether a shadow or a rim ends the light near a place that belongs to a picture point.
    static bool isNearABorder(const ChannelLight& light, const P2& picture, const P3& place,
                              const BlendPicture& pixels) {
        const double u = CROSSING / static_cast<double>(pixels.width);
        const double v = CROSSING / static_cast<double>(pixels.height);
        const std::array<P2, 4> around{picture + P2{u, 0}, picture - P2{u, 0}, picture + P2{0, v}, picture - P2{0, v}};
        std::array<Landing, 4> landings;
        light.land(around, landings);
        double nearest = std::numeric_limits<double>::infinity();
        double farthest = 0;
        for (const Landing& landing : landings) {
            const double way = landing.hits ? norm(landing.on.place - place) : std::numeric_limits<double>::infinity();
            nearest = std::min(nearest, way);
            farthest = std::max(farthest, way);
        }
        return farthest > 20 * nearest;
    }

    /// Whether a place at the edge of one picture, moved inwards, is at the edge of another one.
    static bool isNextToAnEdge(std::size_t own, P2 picture, const Veltrani::DisplayReport::ChannelLights& lights,
                               const std::vector<BlendPicture>& pixels) {
        if (toEdge(picture, pixels[own]) > CROSSING) {
            return false;
        }
        const P2 margin{CROSSING / static_cast<double>(pixels[own].width),
                        CROSSING / static_cast<double>(pixels[own].height)};
        for (std::size_t axis = 0; axis < 2; ++axis) {
            picture[axis] = std::clamp(picture[axis], margin[axis], 1 - margin[axis]);
        }
        const Landing landing = lights[own]->landingOf(picture);
        for (std::size_t other = 0; other < lights.size() && landing.hits; ++other) {
            P2 there;
            if (other != own && lights[other]->findPicture(landing.on, there) &&
                std::abs(toEdge(there, pixels[other])) < 2 * CROSSING) {
                return true;
            }
        }
        return false;
    }

    void measure(Sums& sums) const {
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
        std::mt19937 random(20);
        std::uniform_real_distribution<double> part(0, 1);
        for (std::size_t own = 0; own < lights.size(); ++own) {
            std::vector<P2> pictures;
            for (std::size_t i = 0; i < PLACES / lights.size() + 1; ++i) {
                pictures.emplace_back(part(random), part(random));
            }
            measureFrom(own, pictures, lights, fine, coarse, sums);
        }
    }

    static void measureFrom(std::size_t own, const std::vector<P2>& pictures,
                            const Veltrani::DisplayReport::ChannelLights& lights, const std::vector<BlendPicture>& fine,
                            const std::vector<BlendPicture>& coarse, Sums& sums) {
        std::vector<Landing> landings(pictures.size());
        lights[own]->land(pictures, landings);
        std::vector<Veltrani::DisplayReport::SurfacePoint> points;
        for (const Landing& landing : landings) {
            points.push_back(landing.on);
        }
        std::vector<std::vector<Reach>> reaches(lights.size(), std::vector<Reach>(points.size()));
        for (std::size_t other = 0; other < lights.size(); ++other) {
            lights[other]->reach(points, reaches[other]);
        }
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (!landings[i].hits) {
                continue;
            }
            double light16 = 0;
            double light8 = 0;
            int lit = 0;
            int nearEdge = 0;
            bool whole = true;
            std::ostringstream where;
            for (std::size_t other = 0; other < lights.size(); ++other) {
                const Reach& reach = reaches[other][i];
                const P2 picture = other == own ? pictures[i] : reach.picture;
                const bool isLit = other == own || (reach.inSight && reach.side * landings[i].side >= 0 &&
                                                    toEdge(picture, fine[other]) >= 0);
                const double inside = reach.hasPicture ? toEdge(picture, fine[other]) : -2 * CROSSING;
                nearEdge += std::abs(inside) < CROSSING ||
                                    (inside > 0 && isNearABorder(*lights[other], picture, points[i].place, fine[other]))
                                ? 1
                                : 0;
                if (isLit) {
                    ++lit;
                    whole = whole && isWhole(*lights[other], picture, fine[other]);
                    light16 += fine[other].between(picture);
                    light8 += coarse[other].between(picture);
                    where << " channel " << other << " pixel " << picture[0] * static_cast<double>(fine[other].width)
                          << ' ' << picture[1] * static_cast<double>(fine[other].height) << " light "
                          << fine[other].between(picture) << ';';
                }
            }
            // Some kinds of maps end with the picture: a place next to it shows whether its edge is near.
            if (nearEdge > 1 || isNextToAnEdge(own, pictures[i], lights, fine)) {
                ++sums.crossings;
            } else if (!whole) {
                ++sums.torn;
            } else {
                ++sums.measured;
                sums.shared += lit > 1 ? 1 : 0;
                sums.where = std::abs(light16 - 1) > sums.worst16 ? where.str() : sums.where;
                sums.worst16 = std::max(sums.worst16, std::abs(light16 - 1));
                sums.worst8 = std::max(sums.worst8, std::abs(light8 - 1));
            }
        }
    }

    void expectOne() const {
        Sums sums;
        measure(sums);
        EXPECT_LT(sums.worst16, MOST_OFF_16) << sums.where;
        EXPECT_LT(sums.worst8, MOST_OFF_8);
        const double all = static_cast<double>(sums.measured + sums.crossings + sums.torn);
        EXPECT_GT(all, PLACES / 3) << "most places land";
        EXPECT_LT(static_cast<double>(sums.crossings), MOST_EXEMPT * all);
        EXPECT_LT(static_cast<double>(sums.torn), MOST_EXEMPT * all);
        RecordProperty("shared", static_cast<int>(sums.shared));
        if (std::getenv("SM_BLEND_SUMS") != nullptr) {
            std::printf("%zu places, %zu shared, %zu at crossings, %zu torn; off by %.2g and %.2g\n", sums.measured,
                        sums.shared, sums.crossings, sums.torn, sums.worst16, sums.worst8);
        }
        m_shared = sums.shared;
    }

    mutable std::size_t m_shared = 0;
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
                         [](const auto& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// Five on the rim, each with the far side of the dome, and one for its top.
TEST_F(BlendTruthTest, APlanetarium) {
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
    m_folder.write("room.obj", domeWithADoorAndABoard());
    load(MESH,
         camera("L", {-1.5, 0, 0.5}, 10, 25, 38, 26) + camera("R", {1.5, 0, 0.5}, -10, 25, 38, 26) +
             camera("C", {0, -1, 0.5}, 50, 25, 38, 26),
         PROJECTORS);
    expectOne();
    EXPECT_GT(m_shared, PLACES / 5);
}

}  // namespace
