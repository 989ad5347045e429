#include "DisplayExport/RenderFrustum.h"

#include "Common/VeltraniException.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;
using Column = std::array<double, 4>;

/// As a program that knows nothing of ours multiplies the sixteen numbers of a file: row by row, with columns.
Column product(const Matrix<double, 4>& matrix, const Column& column) {
    Column result{};
    for (std::size_t i = 0; i < 16; ++i) {
        result[i / 4] += matrix.data()[i] * column[i % 4];
    }
    return result;
}

std::vector<RenderConvention> allConventions() {
    std::vector<RenderConvention> all;
    for (const std::string& depth : RenderConvention::depthNames()) {
        for (const std::string& world : RenderConvention::worldNames()) {
            for (const std::string& handed : RenderConvention::handedNames()) {
                all.push_back({*RenderConvention::depthOf(depth), *RenderConvention::worldOf(world),
                               *RenderConvention::handedOf(handed), 0.5, 80.0});
            }
        }
    }
    return all;
}

/// The worlds of engines, written out by hand from how each is described: where right, ahead and up are.
P3 inEngine(const RenderConvention& convention, const P3& world) {
    const double right = world[0];
    const double ahead = world[1];
    const double up = world[2];
    const bool isRightHanded = convention.handed == RenderConvention::Handed::RIGHT;
    if (convention.world == RenderConvention::World::Z_UP) {
        return isRightHanded ? P3{right, ahead, up} : P3{ahead, right, up};
    }
    return isRightHanded ? P3{right, up, -ahead} : P3{right, up, ahead};
}

RenderFrustum someFrustum() {
    return {ViewFrame::looking({0.3, -1.2, 1.7}, {0.4, 1.0, 0.35}, 0.2), -0.5, 0.9, -0.3, 0.7};
}

/// A point at an angle to the right and upwards of the axis of view is where the trigonometry of the angles has it.
TEST(RenderFrustum, ShowsThroughItsMatricesWhatItsPlaceStates) {
    const RenderFrustum frustum = someFrustum();
    std::mt19937 random(11);
    std::uniform_real_distribution<double> part(0, 1);
    ASSERT_EQ(allConventions().size(), 12U);
    for (const RenderConvention& convention : allConventions()) {
        const Matrix<double, 4> view = frustum.viewMatrix(convention);
        const Matrix<double, 4> projection = frustum.projectionMatrix(convention);
        for (int i = 0; i < 100; ++i) {
            const P2 place{part(random), part(random)};
            const double distance = 1 + 70 * part(random);
            const P3 point =
                frustum.view.eye + distance * (frustum.view.forward + (-0.5 + 1.4 * place[0]) * frustum.view.right +
                                               (-0.3 + place[1]) * frustum.view.up);
            const P3 there = inEngine(convention, point);
            const Column clip = product(projection, product(view, {there[0], there[1], there[2], 1}));
            EXPECT_NEAR((clip[0] / clip[3] + 1) / 2, place[0], 1e-9);
            EXPECT_NEAR((clip[1] / clip[3] + 1) / 2, place[1], 1e-9);
            EXPECT_NEAR(clip[3], distance, 1e-9);
            P2 ours;
            ASSERT_TRUE(frustum.placeOf(point - frustum.view.eye, ours));
            EXPECT_LT(norm(ours - place), 1e-9);
            EXPECT_LT(norm(cross(frustum.directionOf(place), point - frustum.view.eye)), 1e-9);
        }
    }
}

/// The eye of the engine stands in the origin and looks along the axis of its convention, in a frame that is turned and
/// never mirrored.
TEST(RenderFrustum, LooksAlongTheAxisOfItsConvention) {
    const RenderFrustum frustum = someFrustum();
    for (const RenderConvention& convention : allConventions()) {
        const Matrix<double, 4> view = frustum.viewMatrix(convention);
        const auto seen = [&](const P3& point) {
            const P3 there = inEngine(convention, point);
            return product(view, {there[0], there[1], there[2], 1});
        };
        const double ahead = convention.handed == RenderConvention::Handed::RIGHT ? -1 : 1;
        const Column eye = seen(frustum.view.eye);
        const Column front = seen(frustum.view.eye + frustum.view.forward);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(eye[i], 0, 1e-12);
            EXPECT_NEAR(front[i], i == 2 ? ahead : 0, 1e-12);
        }
        const P3 a{view(0, 0), view(0, 1), view(0, 2)};
        const P3 b{view(1, 0), view(1, 1), view(1, 2)};
        const P3 c{view(2, 0), view(2, 1), view(2, 2)};
        EXPECT_NEAR(dot(cross(a, b), c), 1, 1e-12);
    }
}

TEST(RenderFrustum, PutsItsPlanesWhereTheConventionHasThem) {
    const RenderFrustum frustum = someFrustum();
    for (const RenderConvention& convention : allConventions()) {
        const Matrix<double, 4> matrix = frustum.projectionMatrix(convention);
        const double ahead = convention.handed == RenderConvention::Handed::RIGHT ? -1 : 1;
        const Column near = product(matrix, {0, 0, ahead * 0.5, 1});
        const Column far = product(matrix, {0, 0, ahead * 80.0, 1});
        const bool isReversed = convention.depth == RenderConvention::Depth::REVERSED_Z;
        const double nearDepth = isReversed ? 1 : convention.depth == RenderConvention::Depth::OPENGL ? -1 : 0;
        EXPECT_NEAR(near[2] / near[3], nearDepth, 1e-12);
        EXPECT_NEAR(far[2] / far[3], isReversed ? 0 : 1, 1e-12);
    }
}

TEST(RenderFrustum, RefusesPlanesInTheWrongOrder) {
    const RenderFrustum frustum = someFrustum();
    for (const auto& [near, far] : std::vector<std::pair<double, double>>{{0, 1}, {-1, 1}, {2, 1}, {1, 1}}) {
        RenderConvention convention;
        convention.nearPlane = near;
        convention.farPlane = far;
        EXPECT_THROW((void)frustum.projectionMatrix(convention), VeltraniException) << near << " " << far;
    }
}

TEST(RenderFrustum, HasNoPlaceForWhatLiesBehind) {
    const RenderFrustum frustum = someFrustum();
    P2 place{7.0, 7.0};
    EXPECT_FALSE(frustum.placeOf(-frustum.view.forward, place));
    EXPECT_FALSE(frustum.placeOf(frustum.view.right, place));
    EXPECT_EQ(place, (P2{7.0, 7.0}));
}

}  // namespace
