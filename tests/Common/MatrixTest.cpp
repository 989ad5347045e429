#include "Common/Matrix.h"

#include <gtest/gtest.h>
#include <Eigen/Geometry>

#include <cmath>
#include <numbers>
#include <random>

namespace {

using P3 = Point<double, 3>;

constexpr double ROUNDING = 1e-15;

TEST(Matrix, IsTheIdentityByDefault) {
    const Matrix<float, 4> m;
    for (std::size_t r = 0; r < 4; ++r) {
        for (std::size_t c = 0; c < 4; ++c) {
            EXPECT_EQ(m(r, c), r == c ? 1.0f : 0.0f);
        }
    }
}

TEST(Matrix, StoresRowAfterRow) {
    Matrix<double, 3> m;
    m(1, 2) = 7.0;
    EXPECT_EQ(m.data()[5], 7.0);
}

TEST(Matrix, ActsOnColumns) {
    Matrix<double, 3> m;
    m(0, 1) = 2.0;
    EXPECT_EQ((m * P3{1.0, 10.0, 100.0}), (P3{21.0, 10.0, 100.0}));
}

TEST(Matrix, TransposeExchangesRowsAndColumns) {
    Matrix<double, 3> m;
    m(0, 2) = 5.0;
    EXPECT_EQ(transpose(m)(2, 0), 5.0);
    EXPECT_EQ(transpose(m)(0, 2), 0.0);
}

TEST(Rotation, TurnsToTheRightUpAndOver) {
    const double quarter = std::numbers::pi / 2;
    const P3 forward{0.0, 1.0, 0.0};
    const P3 right{1.0, 0.0, 0.0};

    EXPECT_LT(norm(Veltrani::rotationZXY(quarter, 0, 0) * forward - P3{1.0, 0.0, 0.0}), ROUNDING);
    EXPECT_LT(norm(Veltrani::rotationZXY(0, quarter, 0) * forward - P3{0.0, 0.0, 1.0}), ROUNDING);
    EXPECT_LT(norm(Veltrani::rotationZXY(0, 0, quarter) * right - P3{0.0, 0.0, -1.0}), ROUNDING);
}

TEST(Rotation, TurnsAboutAnyAxis) {
    const Eigen::Vector3d axis(2.0 / 3, -1.0 / 3, 2.0 / 3);
    for (const double angle : {-2.0, 0.3, 1.0, 3.0}) {
        const Eigen::Matrix3d expected = Eigen::AngleAxisd(angle, axis).toRotationMatrix();
        const Matrix<double, 3> turned = Veltrani::rotation(angle, {axis.x(), axis.y(), axis.z()});
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t c = 0; c < 3; ++c) {
                EXPECT_NEAR(turned(r, c), expected(static_cast<int>(r), static_cast<int>(c)), ROUNDING) << angle;
            }
        }
    }
}

// Independent route: Eigen's quaternions. Catches a wrong order of the three factors and a wrong sign of the first.
TEST(Rotation, AgreesWithQuaternions) {
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> angle(-4.0, 4.0);
    for (int i = 0; i < 1000; ++i) {
        const double z = angle(random);
        const double x = angle(random);
        const double y = angle(random);
        const Eigen::Quaterniond q = Eigen::AngleAxisd(-z, Eigen::Vector3d::UnitZ()) *
                                     Eigen::AngleAxisd(x, Eigen::Vector3d::UnitX()) *
                                     Eigen::AngleAxisd(y, Eigen::Vector3d::UnitY());
        const Eigen::Matrix3d expected = q.toRotationMatrix();
        const Matrix<double, 3> actual = Veltrani::rotationZXY(z, x, y);
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_NEAR(actual(r, c), expected(static_cast<int>(r), static_cast<int>(c)), 4 * ROUNDING);
            }
        }
    }
}

TEST(Matrix, IsPrintedRowByRow) {
    EXPECT_EQ(testing::PrintToString(Matrix<double, 2>()), "[(1, 0), (0, 1)]");
}

}  // namespace
