#include "DisplayFit/detail/ScreenPlane.h"

#include "ScreenManager/ScreenManager.h"
#include "support/LogTrap.h"
#include "support/ScreenGeometryDouble.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

using Veltrani::DisplayFitDetail::ScreenPlane;
using Place = Point<double, 3>;

/// Two unit vectors across each other and across the direction.
void expectAcross(const ScreenPlane& plane, const Place& direction) {
    EXPECT_NEAR(norm(plane.first()), 1, 1e-14);
    EXPECT_NEAR(norm(plane.second()), 1, 1e-14);
    EXPECT_NEAR(dot(plane.first(), plane.second()), 0, 1e-14);
    EXPECT_NEAR(dot(plane.first(), direction), 0, 1e-13);
    EXPECT_NEAR(dot(plane.second(), direction), 0, 1e-13);
}

TEST(ScreenPlane, LiesAcrossADirectionOfAnyLength) {
    const Place point{1, 2, 3};
    for (const Place& direction :
         {Place{0, 1, 0}, Place{3, 0, 0}, Place{0, 0, 7}, Place{0, 0, -2}, Place{1, -2, 0.5}, Place{0.1, 0.2, 5}}) {
        const ScreenPlane plane = ScreenPlane::across(point, direction);
        expectAcross(plane, direction);
        EXPECT_EQ(plane.at({0, 0}), point);
        EXPECT_LT(norm(plane.at({2, -3}) - point - plane.first() * 2 + plane.second() * 3), 1e-14);
    }
    expectAcross(ScreenPlane::across(point, {0, 0, 0}), {0, 1, 0});
}

TEST(ScreenPlane, StepsChangeTwoValuesAsWanted) {
    const ScreenPlane plane = ScreenPlane::across({1, 2, 3}, {1, -2, 0.5});
    const std::array<Place, 2> gradients{Place{3, 1, -2}, Place{0.5, 2, 4}};
    const Point<double, 2> step = plane.solve(gradients, {7, -5});
    const Place moved = plane.at(step) - plane.at({0, 0});
    EXPECT_NEAR(dot(gradients[0], moved), 7, 1e-12);
    EXPECT_NEAR(dot(gradients[1], moved), -5, 1e-12);
}

TEST(ScreenPlane, LinesMeetItUnlessTheyRunAlongIt) {
    const Place point{1, 5, 3};
    const ScreenPlane plane = ScreenPlane::across(point, {0, 2, 0});
    Point<double, 2> along;
    // From (0, 1, 0), two along x and one up for each along y: four of these lead to (8, 5, 4).
    ASSERT_TRUE(plane.meet({0, 1, 0}, {4, 2, 2}, along));
    EXPECT_LT(norm(plane.at(along) - Place{8, 5, 4}), 1e-12);
    for (const double length : {0.01, 1.0, 1000.0}) {
        EXPECT_TRUE(plane.meet({0, 1, 0}, Place{1, 0.002, 0} * length, along)) << length;
        EXPECT_TRUE(plane.meet({0, 1, 0}, Place{1, -0.002, 0} * length, along)) << length;
        EXPECT_FALSE(plane.meet({0, 1, 0}, Place{1, 0.0005, 0} * length, along)) << length;
    }
    EXPECT_FALSE(plane.meet({0, 1, 0}, {0, 0, 0}, along));
}

class ScreenPlaneAt : public testing::Test {
protected:
    ~ScreenPlaneAt() override { ScreenManager::deleteInstance(); }

    void install(const Place& normal) {
        const auto screen = std::make_shared<ScreenGeometryDouble>();
        screen->normal = normal;
        ScreenManager::getInstance()->resetScreen();
        ScreenManager::getInstance()->setScreenGeometry(screen);
    }

    LogTrap m_log;
    Place m_point{1, 2, 3};
    Place m_viewer{1, -2, 6};
};

TEST_F(ScreenPlaneAt, WithoutAScreenItLiesAcrossTheView) {
    expectAcross(ScreenPlane::at(m_point, m_viewer), m_point - m_viewer);
}

TEST_F(ScreenPlaneAt, FollowsTheScreenFromEitherSide) {
    const Place normal{0.6, 0, 0.8};
    install(normal);
    expectAcross(ScreenPlane::at(m_point, m_viewer), normal);
    expectAcross(ScreenPlane::at(m_point, m_point + normal * 2 + Place{0, 3, 0}), normal);
    expectAcross(ScreenPlane::at(m_point, m_point - normal * 2 + Place{0, 3, 0}), normal);
}

TEST_F(ScreenPlaneAt, WhereTheScreenIsSeenFromItsEdgeItLiesAcrossTheView) {
    const Place normal{1, 0, 0};
    install(normal);
    const Place beside = m_point + Place{0.0005, -1, 0};
    expectAcross(ScreenPlane::at(m_point, beside), m_point - beside);
    expectAcross(ScreenPlane::at(m_point, m_point + Place{0.002, -1, 0}), normal);
}

TEST_F(ScreenPlaneAt, WhereTheScreenHasNoNormalItLiesAcrossTheView) {
    for (const Place& none : {Place{0, 0, 0}, Place{0.6, 0, 0.7}, Place{6, 0, 8}}) {
        install(none);
        expectAcross(ScreenPlane::at(m_point, m_viewer), m_point - m_viewer);
    }
}

}  // namespace
