#include "Configuration/BaseConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/RuledSurfaces.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <iomanip>
#include <limits>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// Every operation of a screen, on every kind of screen.

namespace {

using Vector = Point<double, 3>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// One description with the numbers of every kind.
ScreenConfigDouble description() {
    ScreenConfigDouble config = ruled::rectangle();
    config.centre = {0.0, 1.0, 0.5};
    config.orientation = {0.1, -0.05, 0.02};
    config.radius = 4;
    config.width = 5;
    config.height = 3;
    config.azimuthMin = -0.9;
    config.azimuthMax = 1.1;
    config.elevationMin = -0.4;
    config.elevationMax = 0.9;
    return config;
}

ScreenConfigDouble twisted() {
    ScreenConfigDouble config = description();
    config.lowerRail = {{-2.0, 4.0, -1.0}, {0.0, 5.0, -1.0}, {2.0, 4.5, -1.0}};
    config.upperRail = {{-2.5, 3.5, 2.0}, {0.2, 4.5, 2.5}, {2.0, 3.0, 2.0}};
    return config;
}

template <class Screen>
std::unique_ptr<ScreenGeometry> described(const ScreenConfigDouble& config) {
    return std::make_unique<Screen>(&config);
}

std::string objText(const TriangleMesh& mesh) {
    std::ostringstream text;
    text << std::setprecision(17);
    for (const Vector& v : mesh.vertices) {
        text << "v " << v[0] << ' ' << v[1] << ' ' << v[2] << '\n';
    }
    for (const Point<double, 2>& st : mesh.textureCoordinates) {
        text << "vt " << st[0] << ' ' << st[1] << '\n';
    }
    for (const TriangleMesh::Triangle& t : mesh.triangles) {
        text << 'f';
        for (const std::uint32_t corner : t) {
            text << ' ' << corner + 1 << '/' << corner + 1;
        }
        text << '\n';
    }
    return text.str();
}

std::unique_ptr<ScreenGeometry> readMesh() {
    const ScreenConfigDouble config = twisted();
    std::istringstream text(objText(meshes::sampled(RuledSurfaceScreen(&config), 12, 7)));
    auto screen = std::make_unique<OBJScreen>(L"Z", L"Y", 1.0F);
    screen->deserialize(text);
    return screen;
}

struct Kind {
    std::string name;
    std::function<std::unique_ptr<ScreenGeometry>()> make;
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> all{
        {"Flat", [] { return described<FlatScreen>(description()); }},
        {"Spherical", [] { return described<SphericalScreen>(description()); }},
        {"Cylinder", [] { return described<CylinderScreen>(description()); }},
        {"Ruled", [] { return described<RuledSurfaceScreen>(twisted()); }},
        {"Mesh",
         [] {
             const ScreenConfigDouble config = description();
             return std::make_unique<MeshScreen>(meshes::sampled(SphericalScreen(&config), 20, 10));
         }},
        {"Obj", readMesh},
    };
    return all;
}

/// In front of all of them, on the side against the normal: inside the dome and the cylinder.
const Vector EYE{0.2, 0.3, 0.4};

class ScreenKinds : public testing::TestWithParam<Kind> {
protected:
    [[nodiscard]] const ScreenGeometry& screen() const { return *m_screen; }

    [[nodiscard]] Vector mapped(double s, double t) const {
        Vector out;
        EXPECT_TRUE(screen().mapInto3D({s, t}, out, false)) << s << ' ' << t;
        return out;
    }

private:
    std::unique_ptr<ScreenGeometry> m_screen = GetParam().make();
};

/// Edges and corners, places on the lines of the meshes, and others.
const std::vector<double> PARAMETERS = {0.0, 0.1, 0.3, 1.0 / 3, 0.5, 0.77, 0.9, 1.0};

TEST_P(ScreenKinds, IsValid) {
    EXPECT_TRUE(screen().isValid());
}

TEST_P(ScreenKinds, TheRayToAMappedPointHitsItHoweverLongItIs) {
    for (const double s : PARAMETERS) {
        for (const double t : PARAMETERS) {
            const Vector point = mapped(s, t);
            for (const double length : {1.0, 0.25, 3.0}) {
                const IntersectionSet hits = screen().intersect(EYE, EYE + length * (point - EYE));
                ASSERT_FALSE(hits.empty()) << s << ' ' << t;
                EXPECT_LE(norm(hits.first().point - point), 1e-13) << s << ' ' << t;
                EXPECT_NEAR(hits.first().t, 1 / length, 1e-13);
            }
        }
    }
}

TEST_P(ScreenKinds, WhatIsBehindTheOriginOrNoRayIsNotHit) {
    const Vector point = mapped(0.5, 0.5);
    EXPECT_TRUE(screen().intersect(EYE, EYE - (point - EYE)).empty());
    EXPECT_TRUE(screen().intersect(EYE, EYE).empty());
    for (std::size_t i = 0; i < 3; ++i) {
        Vector broken = point;
        broken[i] = NOT_A_NUMBER;
        EXPECT_TRUE(screen().intersect(EYE, broken).empty());
        EXPECT_TRUE(screen().intersect(broken, point).empty());
        EXPECT_TRUE(screen().intersectExtrapolatedWithSpecifiedNormal(EYE, broken, 1).empty());
    }
}

TEST_P(ScreenKinds, JustPastItsEdgesOnlyTheContinuationIsHit) {
    for (const double along : {0.2, 0.5, 0.8}) {
        for (const Point<double, 2>& edge : {Point<double, 2>{0.0, along}, {1.0, along}, {along, 0.0}, {along, 1.0}}) {
            const Vector onEdge = mapped(edge[0], edge[1]);
            const Vector inside = mapped(0.5 + 0.98 * (edge[0] - 0.5), 0.5 + 0.98 * (edge[1] - 0.5));
            const Vector beyond = onEdge + 0.1 * (onEdge - inside);
            EXPECT_TRUE(screen().intersect(EYE, beyond).empty()) << edge[0] << ' ' << edge[1];
            const IntersectionSet hits = screen().intersectExtrapolatedWithSpecifiedNormal(EYE, beyond, 1);
            ASSERT_FALSE(hits.empty()) << edge[0] << ' ' << edge[1];
            EXPECT_LE(norm(hits.first().point - onEdge), 0.05);
            EXPECT_TRUE(screen().intersectExtrapolatedWithSpecifiedNormal(EYE, beyond, 0).empty());
        }
    }
}

TEST_P(ScreenKinds, NormalsHaveUnitLengthAndPointAwayFromTheEye) {
    for (const double s : PARAMETERS) {
        for (const double t : PARAMETERS) {
            const Vector point = mapped(s, t);
            const Vector normal = screen().getScreenNormal(point);
            EXPECT_NEAR(norm(normal), 1, 1e-14);
            EXPECT_EQ(sideOfSurface(point - EYE, normal), 1) << s << ' ' << t;
        }
    }
}

TEST_P(ScreenKinds, TheContinuationKeepsTheWantedSideAndRealHits) {
    const Vector point = mapped(0.4, 0.6);
    const IntersectionSet real = screen().intersect(EYE, point);
    const IntersectionSet continued = screen().intersectExtrapolatedWithSpecifiedNormal(EYE, point, 1);
    ASSERT_FALSE(continued.empty());
    EXPECT_EQ(continued.first().point, real.first().point);
    const Vector behind = point + (point - EYE) * 0.25;
    const IntersectionSet back = screen().intersectExtrapolatedWithSpecifiedNormal(behind, point, -1);
    ASSERT_FALSE(back.empty());
    EXPECT_LE(norm(back.first().point - point), 1e-13);
    for (const int side : {-1, 0}) {
        const IntersectionSet other = screen().intersectExtrapolatedWithSpecifiedNormal(EYE, point, side);
        EXPECT_TRUE(other.empty() || norm(other.first().point - point) > 0.1) << "the real hit is on side 1";
    }
}

TEST_P(ScreenKinds, MapsAllOfTheUnitSquareAndABillionthMore) {
    for (const double t : PARAMETERS) {
        EXPECT_LE(norm(mapped(-1e-9, t) - mapped(0, t)), 1e-8);
        EXPECT_LE(norm(mapped(1 + 1e-9, t) - mapped(1, t)), 1e-8);
        EXPECT_LE(norm(mapped(t, -1e-9) - mapped(t, 0)), 1e-8);
        EXPECT_LE(norm(mapped(t, 1 + 1e-9) - mapped(t, 1)), 1e-8);
        Vector out{7.0, 8.0, 9.0};
        for (const Point<double, 2>& outside : {Point<double, 2>{-2e-9, t}, {1 + 2e-9, t}, {t, -2e-9}, {t, 1 + 2e-9}}) {
            EXPECT_FALSE(screen().mapInto3D(outside, out, false));
        }
        EXPECT_FALSE(screen().mapInto3D({NOT_A_NUMBER, t}, out, true));
        EXPECT_EQ(out, (Vector{7.0, 8.0, 9.0})) << "untouched";
    }
}

TEST_P(ScreenKinds, MapsOnPastItsEdgesWithoutAStep) {
    for (const double along : {0.2, 0.5, 0.8}) {
        for (const Point<double, 2>& edge : {Point<double, 2>{0.0, along}, {1.0, along}, {along, 0.0}, {along, 1.0}}) {
            const double s = edge[0] + 1e-4 * (2 * edge[0] - 1) * (edge[0] == along ? 0 : 1);
            const double t = edge[1] + 1e-4 * (2 * edge[1] - 1) * (edge[1] == along ? 0 : 1);
            Vector beyond;
            ASSERT_TRUE(screen().mapInto3D({s, t}, beyond, true)) << s << ' ' << t;
            const double step = norm(beyond - mapped(edge[0], edge[1]));
            EXPECT_GT(step, 1e-5);
            EXPECT_LT(step, 2e-3);
        }
    }
}

TEST_P(ScreenKinds, ARowHoldsWhatItsColumnsMapTo) {
    ScreenGeometry::Grid grid;
    screen().sampleHorizontally(0.25, 0.2, 1.0, 4, 7, grid, false);
    ASSERT_EQ(grid.size(), 4U) << "the last column ends a bit above 1";
    for (int i = 0; i < 4; ++i) {
        Vector expected;
        ASSERT_TRUE(screen().mapInto3D({((1.0 - 0.2) * i) / 3 + 0.2, 0.25}, expected, false));
        EXPECT_EQ((grid[{i, 7}]), expected);
    }
}

TEST_P(ScreenKinds, OutlinesAChannelInTheOrderOfItsRays) {
    std::vector<Ray> boundary;
    std::vector<Vector> expected;
    for (const Point<double, 2>& st : {Point<double, 2>{0.2, 0.2}, {0.8, 0.2}, {0.8, 0.7}, {0.2, 0.7}}) {
        expected.push_back(mapped(st[0], st[1]));
        boundary.emplace_back(EYE, expected.back());
    }
    const Vector middle = mapped(0.5, 0.5);
    const Vector behind = EYE - (middle - EYE);
    for (const std::vector<Ray>& centre : {std::vector<Ray>{{EYE, middle}}, {}, {{EYE, behind}}}) {
        const std::vector<Vector> outline = screen().intersectChannelBoundary(boundary, centre);
        ASSERT_EQ(outline.size(), expected.size());
        for (std::size_t i = 0; i < outline.size(); ++i) {
            EXPECT_LE(norm(outline[i] - expected[i]), 1e-13);
        }
    }
    EXPECT_TRUE(screen().intersectChannelBoundary({{EYE, behind}}, {{EYE, behind}}).empty()) << "nothing is hit";
}

TEST_P(ScreenKinds, ABatchAnswersLikeItsRays) {
    std::vector<Ray> rays;
    for (const double s : PARAMETERS) {
        rays.emplace_back(EYE, mapped(s, 0.3));
        rays.emplace_back(EYE, EYE - (mapped(s, 0.6) - EYE));
    }
    std::vector<SurfaceHit> hits(rays.size());
    screen().intersectRays(rays, hits);
    for (std::size_t i = 0; i < rays.size(); ++i) {
        const IntersectionSet expected = screen().intersect(rays[i].first, rays[i].second);
        ASSERT_EQ(hits[i].hit, !expected.empty());
        if (hits[i].hit) {
            EXPECT_EQ(hits[i].point, expected.first().point);
            EXPECT_EQ(hits[i].t, expected.first().t);
            EXPECT_LE(norm(hits[i].normal - screen().getScreenNormal(expected.first().point)), 1e-14);
            EXPECT_EQ(hits[i].side, 1);
        }
    }
}

TEST_P(ScreenKinds, EqualOnesHaveEqualHashesAndNoneIsZero) {
    EXPECT_EQ(screen().getUniqueDataHash(), GetParam().make()->getUniqueDataHash());
    EXPECT_NE(screen().getUniqueDataHash(), (std::array<unsigned char, 20>{}));
}

TEST_P(ScreenKinds, StaysAsItIsForNoAndForAnotherDescription) {
    const std::unique_ptr<ScreenGeometry> changing = GetParam().make();
    changing->updateGeometry(nullptr);
    ScreenConfigDouble other = description();
    other.radius = 9;
    other.width = 9;
    other.lowerRail.front()[2] -= 1;
    const std::vector<std::pair<std::string, std::wstring>> own{{"Flat", BaseConfig::SHAPE_FLAT},
                                                                {"Spherical", BaseConfig::SHAPE_SPHERE},
                                                                {"Cylinder", BaseConfig::SHAPE_CYLINDER},
                                                                {"Ruled", BaseConfig::SHAPE_RULED},
                                                                {"Mesh", L""},
                                                                {"Obj", L""}};
    for (const std::wstring& shape : {BaseConfig::SHAPE_FLAT, BaseConfig::SHAPE_SPHERE, BaseConfig::SHAPE_CYLINDER,
                                      BaseConfig::SHAPE_RULED, BaseConfig::SHAPE_MESH}) {
        for (const auto& [name, ownShape] : own) {
            if (name == GetParam().name && shape != ownShape) {
                other.shape = shape;
                changing->updateGeometry(&other);
                EXPECT_EQ(changing->getUniqueDataHash(), screen().getUniqueDataHash());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, ScreenKinds, testing::ValuesIn(kinds()),
                         [](const auto& instance) { return instance.param.name; });

TEST(ScreenKindHashes, TheSameNumbersInAnotherKindAreAnotherScreen) {
    const ScreenConfigDouble config = description();
    const std::set<std::array<unsigned char, 20>> hashes{FlatScreen::calcUniqueDataHash(&config),
                                                         SphericalScreen::calcUniqueDataHash(&config),
                                                         CylinderScreen::calcUniqueDataHash(&config),
                                                         RuledSurfaceScreen::calcUniqueDataHash(&config),
                                                         MeshScreen(meshes::wall(5, 3, 1, 1)).getUniqueDataHash(),
                                                         MeshScreen::calcUniqueDataHash("")};
    EXPECT_EQ(hashes.size(), 6U);
}

TEST(ScreenKindHashes, WithoutADescriptionEachKindHasItsOwn) {
    const std::set<std::array<unsigned char, 20>> hashes{
        FlatScreen::calcUniqueDataHash(nullptr), SphericalScreen::calcUniqueDataHash(nullptr),
        CylinderScreen::calcUniqueDataHash(nullptr), RuledSurfaceScreen::calcUniqueDataHash(nullptr),
        MeshScreen(TriangleMesh{}).getUniqueDataHash()};
    EXPECT_EQ(hashes.size(), 5U);
}

TEST(ScreenKindHashes, EachNumberThatAKindReadsChangesItsHashAndNoOther) {
    const ScreenConfigDouble config = description();
    using Numbers = std::vector<std::function<double&(ScreenConfigDouble&)>>;
    Numbers all;
    for (double ScreenConfigDouble::*member :
         {&ScreenConfigDouble::radius, &ScreenConfigDouble::width, &ScreenConfigDouble::height,
          &ScreenConfigDouble::azimuthMin, &ScreenConfigDouble::azimuthMax, &ScreenConfigDouble::elevationMin,
          &ScreenConfigDouble::elevationMax}) {
        all.emplace_back([member](ScreenConfigDouble& c) -> double& { return c.*member; });
    }
    for (std::size_t i = 0; i < 3; ++i) {
        all.emplace_back([i](ScreenConfigDouble& c) -> double& { return c.centre[i]; });
        all.emplace_back([i](ScreenConfigDouble& c) -> double& { return c.orientation[i]; });
        for (std::size_t k = 0; k < config.lowerRail.size(); ++k) {
            all.emplace_back([i, k](ScreenConfigDouble& c) -> double& { return c.lowerRail[k][i]; });
            all.emplace_back([i, k](ScreenConfigDouble& c) -> double& { return c.upperRail[k][i]; });
        }
    }
    const auto changes = [&](const auto& hash) {
        std::size_t count = 0;
        for (const auto& number : all) {
            ScreenConfigDouble changed = config;
            number(changed) = std::nextafter(number(changed), 100);
            count += hash(&changed) != hash(&config) ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(changes(FlatScreen::calcUniqueDataHash), 8U) << "place, width, height";
    EXPECT_EQ(changes(SphericalScreen::calcUniqueDataHash), 11U) << "place, radius, four limits";
    EXPECT_EQ(changes(CylinderScreen::calcUniqueDataHash), 10U) << "place, radius, two limits, height";
    EXPECT_EQ(changes(RuledSurfaceScreen::calcUniqueDataHash), 6 * config.lowerRail.size()) << "both rails";
}

}  // namespace
