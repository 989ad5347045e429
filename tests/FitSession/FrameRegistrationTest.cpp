#include "FitSession/FrameRegistration.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <Eigen/Core>
#include <Eigen/Eigenvalues>

#include <numbers>
#include <random>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Veltrani::FitSession::ControlPoint;
using Veltrani::FitSession::FrameRegistration;
using Veltrani::FitSession::MeasuredPoint;
using Veltrani::FitSession::MeasuredPoints;
using Veltrani::FitSession::Registration;
using Veltrani::FitSession::RegistrationKind;
using P3 = Point<double, 3>;

/// A frame whose place in the display is known.
struct Station {
    double scale = 1;
    Matrix<double, 3> rotation = Veltrani::rotationZXY(2.1, -0.4, 0.8);
    P3 translation{120, -35, 4};

    /// In the frame of the station.
    [[nodiscard]] P3 measured(const P3& known) const {
        return transpose(rotation) * (known - translation) * (1 / scale);
    }
    [[nodiscard]] std::vector<ControlPoint> controls(const std::vector<P3>& known, const std::string& set = "") const {
        std::vector<ControlPoint> controls;
        for (const P3& place : known) {
            controls.push_back({set, measured(place), place, static_cast<int>(controls.size()) + 2});
        }
        return controls;
    }
};

const std::vector<P3> MARKS{{-3, 4, 0}, {3, 4, 0.5}, {3, 5, 3}, {-2, 3.5, 2.5}, {0, 0, 0}};

std::string refusalOf(const std::vector<ControlPoint>& controls, RegistrationKind kind = RegistrationKind::RIGID) {
    try {
        static_cast<void>(FrameRegistration::of("east", controls, kind));
    } catch (const VeltraniException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "nothing was refused";
}

TEST(FrameRegistration, TheFrameOfAStationIsFoundFromExactMarks) {
    const Station station;
    const Registration found = FrameRegistration::of("", station.controls(MARKS), RegistrationKind::RIGID);
    EXPECT_EQ(found.scale, 1);
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_NEAR(found.translation[row], station.translation[row], 1e-11);
        for (std::size_t column = 0; column < 3; ++column) {
            EXPECT_NEAR(found.rotation(row, column), station.rotation(row, column), 1e-13);
        }
    }
    EXPECT_LT(found.rms, 1e-12);
    EXPECT_THAT(found.remarks, IsEmpty());
    const P3 elsewhere{7, -2, 9};
    EXPECT_LT(norm(found.displayFromStation(station.measured(elsewhere)) - elsewhere), 1e-11);
}

TEST(FrameRegistration, ASimilarityFindsTheScaleToo) {
    Station station;
    station.scale = 1.0003;
    const auto controls = station.controls(MARKS);
    const Registration found = FrameRegistration::of("", controls, RegistrationKind::SIMILARITY);
    EXPECT_NEAR(found.scale, 1.0003, 1e-13);
    EXPECT_LT(found.rms, 1e-12);
    const Registration rigid = FrameRegistration::of("", controls, RegistrationKind::RIGID);
    EXPECT_EQ(rigid.scale, 1);
    EXPECT_GT(rigid.rms, 1e-4) << "three tenths of a millimetre in each metre stay";
}

/// The rotation of smallest squared deviations by another route: the eigenvector of a symmetric 4 x 4 matrix is its
/// quaternion (B. Horn, "Closed-form solution of absolute orientation using unit quaternions", 1987).
Eigen::Matrix3d rotationByQuaternion(const std::vector<ControlPoint>& controls) {
    Eigen::Vector3d meanMeasured = Eigen::Vector3d::Zero();
    Eigen::Vector3d meanKnown = Eigen::Vector3d::Zero();
    const auto vectorOf = [](const P3& p) { return Eigen::Vector3d(p[0], p[1], p[2]); };
    for (const ControlPoint& control : controls) {
        meanMeasured += vectorOf(control.measured) / static_cast<double>(controls.size());
        meanKnown += vectorOf(control.known) / static_cast<double>(controls.size());
    }
    Eigen::Matrix3d s = Eigen::Matrix3d::Zero();
    for (const ControlPoint& control : controls) {
        s += (vectorOf(control.measured) - meanMeasured) * (vectorOf(control.known) - meanKnown).transpose();
    }
    Eigen::Matrix4d n;
    n << s(0, 0) + s(1, 1) + s(2, 2), s(1, 2) - s(2, 1), s(2, 0) - s(0, 2), s(0, 1) - s(1, 0),  //
        s(1, 2) - s(2, 1), s(0, 0) - s(1, 1) - s(2, 2), s(0, 1) + s(1, 0), s(2, 0) + s(0, 2),   //
        s(2, 0) - s(0, 2), s(0, 1) + s(1, 0), s(1, 1) - s(0, 0) - s(2, 2), s(1, 2) + s(2, 1),   //
        s(0, 1) - s(1, 0), s(2, 0) + s(0, 2), s(1, 2) + s(2, 1), s(2, 2) - s(0, 0) - s(1, 1);
    const Eigen::Vector4d q = Eigen::SelfAdjointEigenSolver<Eigen::Matrix4d>(n).eigenvectors().col(3);
    const double w = q[0];
    const double x = q[1];
    const double y = q[2];
    const double z = q[3];
    Eigen::Matrix3d rotation;
    rotation << w * w + x * x - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + w * y),  //
        2 * (x * y + w * z), w * w - x * x + y * y - z * z, 2 * (y * z - w * x),          //
        2 * (x * z - w * y), 2 * (y * z + w * x), w * w - x * x - y * y + z * z;
    return rotation;
}

TEST(FrameRegistration, NoisyMarksGiveTheRotationThatQuaternionsGive) {
    std::mt19937 random(20240517);
    std::normal_distribution<double> noise(0, 0.005);
    std::uniform_real_distribution<double> angle(-std::numbers::pi, std::numbers::pi);
    for (int round = 0; round < 50; ++round) {
        Station station;
        station.rotation = Veltrani::rotationZXY(angle(random), angle(random), angle(random));
        auto controls = station.controls(MARKS);
        for (ControlPoint& control : controls) {
            control.measured += P3{noise(random), noise(random), noise(random)};
        }
        const Registration found = FrameRegistration::of("", controls, RegistrationKind::RIGID);
        const Eigen::Matrix3d expected = rotationByQuaternion(controls);
        double squared = 0;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                EXPECT_NEAR(found.rotation(row, column),
                            expected(static_cast<Eigen::Index>(row), static_cast<Eigen::Index>(column)), 1e-12)
                    << "round " << round;
            }
        }
        for (const ControlPoint& control : controls) {
            const P3 deviation = found.displayFromStation(control.measured) - control.known;
            squared += dot(deviation, deviation);
        }
        EXPECT_NEAR(found.rms, std::sqrt(squared / static_cast<double>(controls.size())), 1e-12);
        EXPECT_EQ(found.deviations.size(), controls.size());
    }
}

TEST(FrameRegistration, MarksThatDetermineNoFrameAreRefused) {
    const Station station;
    EXPECT_THAT(refusalOf(station.controls({MARKS[0], MARKS[1]})),
                AllOf(StartsWith("control points of set \"east\": found 2, expected at least 3 rows with X, Y, Z"),
                      HasSubstr("; measure marks")));
    EXPECT_THAT(refusalOf(station.controls({MARKS[0], MARKS[0], MARKS[0]})), HasSubstr("all lie at one place; "));
    EXPECT_THAT(refusalOf(station.controls({{0, 0, 0}, {1, 2, 3}, {2, 4, 6}, {-1, -2, -3.0001}})),
                HasSubstr("lie on a line, about which the frame could turn; choose at least 3"));
}

TEST(FrameRegistration, WhatTheMarksDoNotShowIsRemarked) {
    const Station station;
    const Registration three =
        FrameRegistration::of("", station.controls({MARKS[0], MARKS[1], MARKS[2]}), RegistrationKind::RIGID);
    EXPECT_THAT(three.remarks,
                testing::ElementsAre(StartsWith("The control points lie on one plane: a mirrored frame would not show"),
                                     StartsWith("Three control points barely check each other")));
}

TEST(FrameRegistration, AWrongUnitAMirroredFrameAndMixedUpMarksAreNamed) {
    Station inches;
    inches.scale = 0.0254;
    EXPECT_THAT(refusalOf(inches.controls(MARKS)),
                AllOf(HasSubstr("X, Y, Z are 0.0254 times as far apart as x, y, z; write both in one unit")));
    auto mirrored = Station().controls(MARKS);
    for (ControlPoint& control : mirrored) {
        control.measured[1] *= -1;
    }
    EXPECT_THAT(refusalOf(mirrored), HasSubstr("one frame is the mirror image of the other; reverse one axis"));
    auto mixed = Station().controls(MARKS);
    std::swap(mixed[0].known, mixed[1].known);
    EXPECT_THAT(refusalOf(mixed), HasSubstr("the marks of lines 2 and 3 are exchanged; exchange their X, Y, Z"));
    mixed = Station().controls(MARKS);
    for (std::size_t i = 1; i < mixed.size(); ++i) {
        std::swap(mixed[i].known, mixed[i - 1].known);
    }
    EXPECT_THAT(refusalOf(mixed), HasSubstr("check which mark is which"));
}

TEST(FrameRegistration, EachSetMovesByItsOwnFrameWithItsCovariances) {
    Station east;
    Station west;
    west.rotation = Veltrani::rotationZXY(-0.3, 0.1, 0);
    west.scale = 2;
    MeasuredPoints points;
    const P3 place{1, 4, 2};
    for (const auto& [name, station] : {std::pair("east", east), std::pair("west", west)}) {
        MeasuredPoint point;
        point.set = name;
        point.world = station.measured(place);
        Matrix<double, 3> covariance;
        covariance(2, 2) = 9;
        point.covariance = covariance;
        points.points.push_back(point);
        for (const ControlPoint& control : station.controls(MARKS, name)) {
            points.controls.push_back(control);
        }
    }
    const auto frames = FrameRegistration::apply(points, RegistrationKind::SIMILARITY);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].set, "east");
    EXPECT_NEAR(frames[1].scale, 2, 1e-12);
    for (const MeasuredPoint& point : points.points) {
        EXPECT_LT(norm(point.world - place), 1e-11) << point.set;
    }
    // The third axis of the station is the one of 3 standard deviations, twice as long where lengths are doubled.
    for (const auto& [point, rotation, scale] :
         {std::tuple(points.points[0], east.rotation, 1.0), std::tuple(points.points[1], west.rotation, 2.0)}) {
        const P3 axis = rotation * P3{0, 0, 1};
        EXPECT_NEAR(dot(axis, *point.covariance * axis), 9 * scale * scale, 1e-10);
        const P3 across = rotation * P3{1, 0, 0};
        EXPECT_NEAR(dot(across, *point.covariance * across), scale * scale, 1e-10);
        EXPECT_NEAR(dot(axis, *point.covariance * across), 0, 1e-10);
    }
}

TEST(FrameRegistration, ASetWithoutMarksIsRefusedAndNothingMoves) {
    MeasuredPoints points;
    points.points.resize(2);
    points.points[0].set = "east";
    points.points[0].world = {1, 2, 3};
    points.points[1].set = "west";
    points.controls = Station().controls(MARKS, "east");
    try {
        FrameRegistration::apply(points, RegistrationKind::RIGID);
        ADD_FAILURE() << "nothing was refused";
    } catch (const VeltraniException& fault) {
        EXPECT_THAT(
            Veltrani::toUtf8(fault.message),
            StartsWith(
                "control points of set \"west\": found 0, expected at least 3 rows with X, Y, Z of this set; there "
                "are such rows of \"east\": write the same name"));
    }
    EXPECT_EQ(points.points[0].world, (P3{1, 2, 3}));
}

/// Eight marks that lie all over a room, with noise of a total station.
std::vector<ControlPoint> noisyMarks(const Station& station, unsigned seed) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> noise(0, 1e-3);
    std::uniform_real_distribution<double> place(-3, 3);
    std::vector<P3> known;
    for (int i = 0; i < 8; ++i) {
        known.push_back({place(random), place(random), place(random)});
    }
    auto controls = station.controls(known);
    for (ControlPoint& control : controls) {
        control.measured += P3{noise(random), noise(random), noise(random)};
    }
    return controls;
}

// At one part in a thousand, for the worst of eight marks.
TEST(FrameRegistration, NoiseIsNoContradiction) {
    int accused = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        const auto controls = noisyMarks(Station(), seed);
        accused +=
            static_cast<int>(FrameRegistration::of("", controls, RegistrationKind::RIGID).contradiction.has_value());
    }
    EXPECT_LE(accused, 12);
}

TEST(FrameRegistration, AMarkThatContradictsTheOthersIsNamed) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        auto controls = noisyMarks(Station(), seed);
        controls[seed % 8].known += P3{0.012, 0.016, 0};
        for (const RegistrationKind kind : {RegistrationKind::RIGID, RegistrationKind::SIMILARITY}) {
            const Registration found = FrameRegistration::of("", controls, kind);
            ASSERT_TRUE(found.contradiction) << "seed " << seed;
            EXPECT_EQ(found.contradiction->line, controls[seed % 8].line) << "seed " << seed;
            EXPECT_NEAR(found.contradiction->distance, 0.02, 0.01);
            EXPECT_LT(found.contradiction->rmsOfOthers, 3e-3);
        }
    }
}

TEST(FrameRegistration, AMarkThatIsOffByLittleIsOfNoImportance) {
    auto controls = Station().controls(MARKS);
    controls[2].known += P3{0.002, 0, 0};
    EXPECT_FALSE(FrameRegistration::of("", controls, RegistrationKind::RIGID).contradiction)
        << "the others agree to rounding";
    controls[2].known += P3{0.01, 0, 0};
    EXPECT_TRUE(FrameRegistration::of("", controls, RegistrationKind::RIGID).contradiction);
    const auto three = Station().controls({MARKS[0], MARKS[1], MARKS[2]});
    EXPECT_FALSE(FrameRegistration::of("", three, RegistrationKind::RIGID).contradiction);
}

TEST(FrameRegistration, MarksThatAreFarOffAreRefusedWithTheirLines) {
    auto controls = Station().controls(MARKS);
    controls[3].known[0] += 1;
    EXPECT_THAT(refusalOf(controls), AllOf(HasSubstr(": without line 5 the others agree to "),
                                           HasSubstr("; measure again there, correct X, Y, Z, or name the station")));
    controls = noisyMarks(Station(), 1);
    controls[0].measured[1] += 2;
    controls[5].measured[2] -= 3;
    EXPECT_THAT(refusalOf(controls), HasSubstr(": without lines 2 and 7 the others agree to 0.00"));
}

TEST(FrameRegistration, MarksOfTwoStationsInOneSetAreToldApart) {
    Station other;
    other.rotation = Veltrani::rotationZXY(-0.7, 0.1, 0);
    other.translation = {-20, 8, 1};
    auto controls = Station().controls(MARKS);
    for (ControlPoint control : other.controls(MARKS)) {
        control.line += 5;
        controls.push_back(control);
    }
    EXPECT_THAT(refusalOf(controls),
                AllOf(HasSubstr("those of lines 2, 3, 4, 5 and 6 agree with each other, and so do those of lines 7, 8, "
                                "9, 10 and 11, as if measured from two stations"),
                      HasSubstr("; name the station of each row in a column set")));
}

}  // namespace
