#include "KelvoScreen/RuledSurfaceScreen.h"

#include "Configuration/BaseConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/RuledOracle.h"
#include "KelvoScreen/RuledSurfaces.h"
#include "KelvoScreen/ShapeChecks.h"
#include "KelvoScreen/SphericalScreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

namespace {

using Vector = Point<double, 3>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

TEST(RuledSurfaceScreen, MapsAlongTheRailsAndUpTheRulings) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    const oracle::RuledOracle truth(config);
    const std::vector<double> seams = ruled::seams(config);
    for (std::size_t i = 0; i + 1 < seams.size(); ++i) {
        for (const double u : {0.0, 0.3, 1.0}) {
            for (const double t : {0.0, 0.25, 1.0}) {
                Vector out;
                ASSERT_TRUE(screen.mapInto3D({seams[i] + u * (seams[i + 1] - seams[i]), t}, out, false));
                EXPECT_LE(norm(oracle::exact(out) - truth.at(i, u, t)), 1e-14L) << i << ' ' << u << ' ' << t;
            }
        }
    }
    Vector out;
    ASSERT_TRUE(screen.mapInto3D({0.0, 0.0}, out, false));
    EXPECT_EQ(out, config.lowerRail.front());
    ASSERT_TRUE(screen.mapInto3D({1.0, 1.0}, out, false));
    EXPECT_EQ(out, config.upperRail.back());
}

TEST(RuledSurfaceScreen, AGridIsEvenHoweverUnevenlyTheRailsWereMeasured) {
    ScreenConfigDouble config = ruled::rectangle();
    config.lowerRail = {{-2.0, 5.0, 0.0}, {-1.9, 5.0, 0.0}, {-1.0, 5.0, 0.0}, {2.0, 5.0, 0.0}};
    config.upperRail = {{-2.0, 5.0, 2.0}, {-1.9, 5.0, 2.0}, {-1.0, 5.0, 2.0}, {2.0, 5.0, 2.0}};
    const RuledSurfaceScreen screen(&config);
    for (int i = 0; i <= 8; ++i) {
        Vector out;
        ASSERT_TRUE(screen.mapInto3D({i / 8.0, 0.5}, out, false));
        EXPECT_LE(norm(out - Vector{-2 + i * 0.5, 5.0, 1.0}), 1e-14);
    }
}

TEST(RuledSurfaceScreen, ARectangleAgreesWithTheFlatScreen) {
    const ScreenConfigDouble config = ruled::rectangle();
    const RuledSurfaceScreen ruledScreen(&config);
    ScreenConfigDouble flatConfig;
    flatConfig.centre = {0.0, 5.0, 1.0};
    flatConfig.width = 4;
    flatConfig.height = 2;
    const FlatScreen flat(&flatConfig);
    oracle::Random random(51);
    int hitting = 0;
    for (int i = 0; i < 500; ++i) {
        const Point<double, 2> st{random.uniform(-1, 2), random.uniform(-1, 2)};
        Vector ours;
        Vector theirs;
        ASSERT_TRUE(ruledScreen.mapInto3D(st, ours, true));
        ASSERT_TRUE(flat.mapInto3D(st, theirs, true));
        EXPECT_LE(norm(ours - theirs), 1e-14);
        EXPECT_LE(norm(ruledScreen.getScreenNormal(ours) - flat.getScreenNormal(theirs)), 1e-14);
        const Vector from = random.inCube();
        const IntersectionSet hit = ruledScreen.intersect(from, ours);
        ASSERT_EQ(hit.size(), flat.intersect(from, ours).size());
        hitting += hit.empty() ? 0 : 1;
        for (const int sign : {-1, 1}) {
            const IntersectionSet a = ruledScreen.intersectExtrapolatedWithSpecifiedNormal(from, ours, sign);
            const IntersectionSet b = flat.intersectExtrapolatedWithSpecifiedNormal(from, ours, sign);
            ASSERT_EQ(a.size(), b.size());
            ASSERT_EQ(a.size(), sign == 1 ? 1U : 0U);
            if (sign == 1) {
                EXPECT_LE(norm(a.first().point - b.first().point), 1e-12);
            }
        }
    }
    EXPECT_GT(hitting, 30);
}

TEST(RuledSurfaceScreen, OutsideItMapsOnlyWhenExtrapolating) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    const oracle::RuledOracle truth(config);
    const std::vector<double> seams = ruled::seams(config);
    const Vector before{7.0, 8.0, 9.0};
    const auto expectBeyond = [&](double s, double t, std::size_t patch, double u) {
        Vector out = before;
        EXPECT_FALSE(screen.mapInto3D({s, t}, out, false));
        EXPECT_EQ(out, before) << "untouched";
        ASSERT_TRUE(screen.mapInto3D({s, t}, out, true));
        EXPECT_LE(norm(oracle::exact(out) - truth.at(patch, u, t)), 1e-13L);
    };
    expectBeyond(0.5 * (seams[3] + seams[4]), 1.5, 3, 0.5);
    expectBeyond(0.5 * (seams[3] + seams[4]), -4, 3, 0.5);
    expectBeyond(-0.1, 0.5, 0, -0.1 / seams[1]);
    expectBeyond(1.1, 0.5, 6, 1 + 0.1 / (1 - seams[6]));
    Vector out = before;
    EXPECT_FALSE(screen.mapInto3D({0.5, 1e7}, out, true)) << "the continuation ends somewhere";
    EXPECT_FALSE(screen.mapInto3D({-1e7, 0.5}, out, true));
    for (const double bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
        EXPECT_FALSE(screen.mapInto3D({bad, 0.5}, out, true));
        EXPECT_FALSE(screen.mapInto3D({0.5, bad}, out, true));
        EXPECT_FALSE(screen.mapInto3D({bad, 0.5}, out, false));
    }
    EXPECT_EQ(out, before);
}

TEST(RuledSurfaceScreen, UpToABillionthOutsideIsTheEdge) {
    const ScreenConfigDouble config = ruled::cockpit();
    Vector out;
    ASSERT_TRUE(RuledSurfaceScreen(&config).mapInto3D({1 + 1e-9, -1e-9}, out, false));
    EXPECT_EQ(out, config.lowerRail.back());
}

TEST(RuledSurfaceScreen, AroundAClosedRingThereAreNoSides) {
    const ScreenConfigDouble config = ruled::ring();
    const RuledSurfaceScreen ring(&config);
    for (const double s : {0.1, 0.5, 0.9}) {
        Vector inside;
        Vector further;
        Vector before;
        ASSERT_TRUE(ring.mapInto3D({s, 0.3}, inside, false));
        ASSERT_TRUE(ring.mapInto3D({s + 1, 0.3}, further, true));
        ASSERT_TRUE(ring.mapInto3D({s - 1, 0.3}, before, true));
        EXPECT_LE(norm(inside - further), 1e-13);
        EXPECT_LE(norm(inside - before), 1e-13);
        EXPECT_FALSE(ring.mapInto3D({s + 1, 0.3}, inside, false));
    }
}

TEST(RuledSurfaceScreen, NormalsAreUpwardsCrossRightAtTheNearestPoint) {
    for (const auto& [name, config] : ruled::surfaces()) {
        SCOPED_TRACE(name);
        const RuledSurfaceScreen screen(&config);
        const oracle::RuledOracle truth(config);
        const std::vector<double> seams = ruled::seams(config);
        oracle::Random random(52);
        for (int i = 0; i < 300; ++i) {
            const std::size_t patch = random.below(truth.patchCount());
            const double u = random.uniform(0.05, 0.95);
            const double t = random.uniform(0.05, 0.95);
            Vector place;
            ASSERT_TRUE(screen.mapInto3D({seams[patch] + u * (seams[patch + 1] - seams[patch]), t}, place, false));
            const oracle::Exact expected = truth.normal(patch, u, t);
            EXPECT_LE(norm(oracle::exact(screen.getScreenNormal(place)) - expected), 1e-12L) << "on the surface, " << i;
            const Vector near = place + 1e-3 * screen.getScreenNormal(place);
            EXPECT_LE(norm(oracle::exact(screen.getScreenNormal(near)) - expected), 1e-9L) << "above it, " << i;
        }
    }
}

TEST(RuledSurfaceScreen, TheNormalIsThatOfTheNearestPointFromAnywhere) {
    for (const auto& [name, config] : ruled::surfaces()) {
        SCOPED_TRACE(name);
        const RuledSurfaceScreen screen(&config);
        const oracle::RuledOracle truth(config);
        oracle::Random random(53);
        int checked = 0;
        for (int i = 0; i < 100; ++i) {
            const Vector point = 1.5 * random.inCube() + Vector{0.0, 1.5, 0.0};
            const Vector normal = screen.getScreenNormal(point);
            ASSERT_NEAR(norm(normal), 1, 1e-12);
            // Where the nearest point is inside a patch, it lies along the normal.
            const long double distance = truth.distance(point);
            const double nearest = static_cast<double>(distance);
            for (const double sign : {-1.0, 1.0}) {
                if (distance > 1e-3L && truth.distance(point + sign * nearest * normal) < 1e-9L) {
                    ++checked;
                }
            }
        }
        RecordProperty(name, checked);
        EXPECT_GT(checked, 10);
    }
}

TEST(RuledSurfaceScreen, AnEyeInFrontSeesTheSideOfTheNormal) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    const std::vector<Ray> rays{{{0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}}, {{0.0, 9.0, 0.0}, {0.0, 8.0, 0.0}}};
    std::vector<SurfaceHit> hits(2);
    screen.intersectRays(rays, hits);
    EXPECT_EQ(hits[0].side, 1);
    EXPECT_EQ(hits[1].side, -1);
    EXPECT_LE(norm(hits[0].point - hits[1].point), 1e-14);
}

/// The place of (s, t) on the rails, prolonged, without the library.
Vector prolonged(const ScreenConfigDouble& config, const Point<double, 2>& st) {
    const std::vector<double> seams = ruled::seams(config);
    std::size_t patch = 0;
    while (patch + 2 < seams.size() && st[0] > seams[patch + 1]) {
        ++patch;
    }
    const long double u = (st[0] - static_cast<long double>(seams[patch])) / (seams[patch + 1] - seams[patch]);
    const oracle::Exact place = oracle::RuledOracle(config).at(patch, u, st[1]);
    return {static_cast<double>(place[0]), static_cast<double>(place[1]), static_cast<double>(place[2])};
}

TEST(RuledSurfaceScreen, TheContinuationProlongsTheRulingsAndTheSides) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    const Vector eye{0.1, -0.2, 0.1};
    oracle::Random random(54);
    for (int i = 0; i < 400; ++i) {
        const double across = random.uniform(0.05, 0.95);
        const double vertically = random.uniform(0.01, 0.5);
        const double sideways = random.uniform(0.001, 0.1);
        const std::array<Point<double, 2>, 4> beyond{Point<double, 2>{across, 1 + vertically},
                                                     {across, -vertically},
                                                     {1 + sideways, across},
                                                     {-sideways, across}};
        const Point<double, 2>& st = beyond[static_cast<std::size_t>(i) % 4];
        SCOPED_TRACE(testing::Message() << "at " << st[0] << ' ' << st[1]);
        const Vector aim = prolonged(config, st);
        EXPECT_TRUE(screen.intersect(eye, aim).empty());
        const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(eye, aim, 1);
        ASSERT_GE(hits.size(), 1U);
        EXPECT_LE(norm(hits.first().point - aim), 1e-12);
        EXPECT_NEAR(hits.first().t, 1, 1e-12);
        EXPECT_EQ(sideOfSurface(aim - eye, screen.getScreenNormal(hits.first().point)), 1);
        // Prolonged patches may meet the ray again, far behind the aim.
        for (std::size_t j = 1; j < hits.size(); ++j) {
            EXPECT_GT(hits[j].t, 1.5);
            EXPECT_LE(oracle::lineDistance(eye, aim, hits[j].point), 1e-11L);
        }
    }
}

TEST(RuledSurfaceScreen, AHitOfTheSurfaceItselfBeatsItsContinuation) {
    // The first patch, prolonged to the left, stands between the eye and the last one, and shows it the same side.
    ScreenConfigDouble config = ruled::rectangle();
    config.lowerRail = {{3.0, 2.0, -1.0}, {6.0, 2.5, -1.0}, {-3.0, 8.0, -1.0}, {3.0, 8.0, -1.0}};
    config.upperRail = {{3.0, 2.0, 1.0}, {6.0, 2.5, 1.0}, {-3.0, 8.0, 1.0}, {3.0, 8.0, 1.0}};
    const RuledSurfaceScreen screen(&config);
    const Vector eye{0.0, 0.0, 0.0};
    const IntersectionSet level = screen.intersectExtrapolatedWithSpecifiedNormal(eye, {0.5, 8.0, 0.0}, 1);
    ASSERT_EQ(level.size(), 1U);
    EXPECT_LE(norm(level.first().point - Vector{0.5, 8.0, 0.0}), 1e-14) << "on the last patch";
    const IntersectionSet above = screen.intersectExtrapolatedWithSpecifiedNormal(eye, {0.5, 8.0, 4.0}, 1);
    ASSERT_EQ(above.size(), 2U) << "above all rails only continuations are left";
    EXPECT_LT(above.first().point[1], 2);
}

TEST(RuledSurfaceScreen, OutlinesAChannelPastItsEdges) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    const Vector eye{0.0, 0.0, 0.0};
    const std::vector<Ray> boundary{{eye, {-0.3, 1.0, 0.6}}, {eye, {0.3, 1.0, 0.6}}, {eye, {0.3, 1.0, -0.6}}};
    const std::vector<Vector> outline = screen.intersectChannelBoundary(boundary, {{eye, {0.0, 1.0, 0.0}}});
    ASSERT_EQ(outline.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(screen.intersect(boundary[i].first, boundary[i].second).empty()) << "past an edge";
        EXPECT_LE(oracle::lineDistance(boundary[i].first, boundary[i].second, outline[i]), 1e-13L);
    }
}

TEST(RuledSurfaceScreen, OneWithoutAnAreaIsNotValidAndNeverHit) {
    const std::vector<std::function<void(ScreenConfigDouble&)>> faults{
        [](ScreenConfigDouble& c) { c.lowerRail.clear(); },
        [](ScreenConfigDouble& c) { c.upperRail.pop_back(); },
        [](ScreenConfigDouble& c) {
            c.lowerRail.resize(1);
            c.upperRail.resize(1);
        },
        [](ScreenConfigDouble& c) { c.lowerRail = c.upperRail; },
        [](ScreenConfigDouble& c) { c.lowerRail[3][1] = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.upperRail[0][2] = INFINITE; },
        [](ScreenConfigDouble& c) { c.upperRail[0][2] = 1e200; },
        [](ScreenConfigDouble& c) {
            std::fill(c.lowerRail.begin(), c.lowerRail.end(), c.lowerRail[0]);
            std::fill(c.upperRail.begin(), c.upperRail.end(), c.upperRail[0]);
        },
        [](ScreenConfigDouble& c) {
            for (std::size_t i = 0; i < c.lowerRail.size(); ++i) {
                c.lowerRail[i] = {0.1 * static_cast<double>(i), 0.2 * static_cast<double>(i), 0.0};
                c.upperRail[i] = c.lowerRail[i] + Vector{0.1, 0.2, 0.0};
            }
        },
    };
    shapes::expectNotValid<RuledSurfaceScreen>(ruled::cockpit(), faults);
}

TEST(RuledSurfaceScreen, PointsRepeatedOnBothRailsAddNothing) {
    const ScreenConfigDouble config = ruled::cockpit();
    ScreenConfigDouble repeated = config;
    repeated.lowerRail.insert(repeated.lowerRail.begin() + 3, repeated.lowerRail[3]);
    repeated.upperRail.insert(repeated.upperRail.begin() + 3, repeated.upperRail[3]);
    repeated.lowerRail.push_back(repeated.lowerRail.back());
    repeated.upperRail.push_back(repeated.upperRail.back());
    const RuledSurfaceScreen plain(&config);
    const RuledSurfaceScreen doubled(&repeated);
    for (const double s : {0.0, 0.2, 0.41, 0.9, 1.0}) {
        Vector a;
        Vector b;
        ASSERT_TRUE(plain.mapInto3D({s, 0.5}, a, false));
        ASSERT_TRUE(doubled.mapInto3D({s, 0.5}, b, false));
        EXPECT_EQ(a, b);
        EXPECT_EQ(doubled.intersect({0.0, 0.0, 0.0}, a).size(), 1U);
    }
    EXPECT_NE(plain.getUniqueDataHash(), doubled.getUniqueDataHash()) << "the descriptions differ all the same";
}

TEST(RuledSurfaceScreen, PointsRepeatedToRoundingAddNothingWhereverTheyAre) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen plain(&config);
    for (const std::size_t place : {0U, 3U, 7U}) {
        for (const double dust : {5e-324, 6e-17, -6e-17, 2e-16}) {
            SCOPED_TRACE(testing::Message() << "point " << place << ", " << dust << " beside it, twice");
            ScreenConfigDouble dusty = config;
            for (auto* rail : {&dusty.lowerRail, &dusty.upperRail}) {
                for (int i = 1; i <= 2; ++i) {
                    const Vector point = rail->at(place) + Vector{i * dust, -i * dust, 0.0};
                    rail->insert(rail->begin() + static_cast<std::ptrdiff_t>(place + (place == 7 ? 1 : 0)), point);
                }
            }
            const RuledSurfaceScreen screen(&dusty);
            for (const double s : {0.0, 0.2, ruled::seams(config)[3], 0.9, 1.0}) {
                Vector expected;
                Vector out;
                ASSERT_TRUE(plain.mapInto3D({s, 0.5}, expected, false));
                ASSERT_TRUE(screen.mapInto3D({s, 0.5}, out, false)) << s;
                EXPECT_LE(norm(out - expected), 1e-14) << s;
                EXPECT_EQ(screen.intersect({0.0, 0.0, 0.0}, out).size(), 1U) << s;
            }
        }
    }
}

TEST(RuledSurfaceScreen, ALastSegmentOfDustLeavesTheLastColumn) {
    ScreenConfigDouble config = ruled::rectangle();
    for (auto* rail : {&config.lowerRail, &config.upperRail}) {
        *rail = {{-2.0, 5.0, rail->front()[2]}, {0.0, 5.0, rail->front()[2]}, {6e-17, 5.0, rail->front()[2]}};
    }
    const RuledSurfaceScreen screen(&config);
    Vector out;
    ASSERT_TRUE(screen.mapInto3D({1.0, 0.5}, out, false));
    EXPECT_LE(norm(out - Vector{6e-17, 5.0, 1.0}), 1e-15);
}

TEST(RuledSurfaceScreen, ARingClosesThoughItsEndsAreRoundedDifferently) {
    ScreenConfigDouble config = ruled::ring();
    config.lowerRail.back()[0] += 2.4e-16;
    config.upperRail.back()[1] -= 4.4e-16;
    const RuledSurfaceScreen ring(&config);
    Vector inside;
    Vector further;
    ASSERT_TRUE(ring.mapInto3D({0.1, 0.3}, inside, false));
    ASSERT_TRUE(ring.mapInto3D({1.1, 0.3}, further, true));
    EXPECT_LE(norm(inside - further), 1e-13);
    ASSERT_TRUE(ring.mapInto3D({0.0, 0.3}, inside, false));
    EXPECT_EQ(ring.intersect({0.1, 0.1, 0.0}, inside).size(), 1U) << "the seam, once";
}

TEST(RuledSurfaceScreen, NoDescriptionGivesAScreenThatIsNotValid) {
    const RuledSurfaceScreen screen(nullptr);
    shapes::expectNothing(screen);
    EXPECT_EQ(screen.getUniqueDataHash(), RuledSurfaceScreen::calcUniqueDataHash(nullptr));
}

TEST(RuledSurfaceScreen, TheHashFollowsEveryNumberOfTheDescription) {
    std::vector<shapes::Number> numbers;
    const ScreenConfigDouble config = ruled::cockpit();
    for (auto rail : {&ScreenConfigDouble::lowerRail, &ScreenConfigDouble::upperRail}) {
        for (std::size_t point = 0; point < config.lowerRail.size(); ++point) {
            for (std::size_t i = 0; i < 3; ++i) {
                numbers.push_back([=](ScreenConfigDouble& c) -> double& { return (c.*rail)[point][i]; });
            }
        }
    }
    EXPECT_EQ(numbers.size(), 48U);
    shapes::expectHashFollows<RuledSurfaceScreen>(config, numbers);
}

TEST(RuledSurfaceScreen, AHashTellsWhereOneRailEndsAndTheOtherBegins) {
    ScreenConfigDouble config = ruled::cockpit();
    const auto before = RuledSurfaceScreen::calcUniqueDataHash(&config);
    config.upperRail.insert(config.upperRail.begin(), config.lowerRail.back());
    config.lowerRail.pop_back();
    EXPECT_NE(RuledSurfaceScreen::calcUniqueDataHash(&config), before);
}

TEST(RuledSurfaceScreen, HashesOfDifferentKindsNeverCollide) {
    ScreenConfigDouble config = ruled::cockpit();
    config.radius = config.width = config.height = 1;
    const std::set<std::array<unsigned char, 20>> hashes{
        FlatScreen::calcUniqueDataHash(&config), SphericalScreen::calcUniqueDataHash(&config),
        CylinderScreen::calcUniqueDataHash(&config), RuledSurfaceScreen::calcUniqueDataHash(&config)};
    EXPECT_EQ(hashes.size(), 4U);
    const std::set<std::array<unsigned char, 20>> withoutDescription{
        FlatScreen::calcUniqueDataHash(nullptr), SphericalScreen::calcUniqueDataHash(nullptr),
        CylinderScreen::calcUniqueDataHash(nullptr), RuledSurfaceScreen::calcUniqueDataHash(nullptr)};
    EXPECT_EQ(withoutDescription.size(), 4U);
}

TEST(RuledSurfaceScreen, UpdatesFromARuledSurfaceOnly) {
    shapes::expectUpdates<RuledSurfaceScreen>(ruled::cockpit(), BaseConfig::SHAPE_MESH,
                                              [](ScreenConfigDouble& c) { c.upperRail.back()[2] = 2; });
}

TEST(RuledSurfaceScreen, SamplesARowAndDropsWhatIsOutside) {
    shapes::expectRow<RuledSurfaceScreen>(ruled::cockpit());
}

}  // namespace
