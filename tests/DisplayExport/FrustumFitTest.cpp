#include "DisplayExport/FrustumFit.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayExport/ChannelSight.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayExport;

constexpr double WIDE = 1.5;  // radians

class FrustumFitTest : public ExportDisplayTest {
protected:
    /// A wall of 4 by 2 metres around (0, 5, 1), lit by one picture on an area of it.
    void loadWall(const std::string& area = displays::WHOLE_AREA) {
        load(displays::FLAT, displays::projector("P1", area + "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
             "<TargetData type='PlanarBasic'/>");
    }

    [[nodiscard]] RenderFrustum fitted(const P3& eye, const P3& forward, double margin, double widest = WIDE) const {
        const ChannelSight sight(config(), channels()[0], eye);
        return fittedFrustum(sight, ViewFrame::looking(eye, forward), margin, widest);
    }

    static void expectFrustum(const RenderFrustum& frustum, double left, double right, double bottom, double top,
                              double mostOff = 1e-12) {
        EXPECT_NEAR(frustum.left, left, mostOff);
        EXPECT_NEAR(frustum.right, right, mostOff);
        EXPECT_NEAR(frustum.bottom, bottom, mostOff);
        EXPECT_NEAR(frustum.top, top, mostOff);
    }

    static constexpr P3 AHEAD{0.0, 1.0, 0.0};
};

/// From an eye that stands beside its middle, four metres before it: a tenth of the width and height on each side.
TEST_F(FrustumFitTest, AddsTheMarginOnEachSide) {
    loadWall();
    expectFrustum(fitted({1.0, 1.0, 0.5}, AHEAD, 0), -0.75, 0.25, -0.125, 0.375);
    expectFrustum(fitted({1.0, 1.0, 0.5}, AHEAD, 0.1), -0.85, 0.35, -0.175, 0.425);
}

/// The corners of a wall that is seen aslant reach furthest, each by the perspective of its own.
TEST_F(FrustumFitTest, HoldsTheCornersOfAWallThatIsSeenAslant) {
    loadWall();
    const P3 eye{-1.0, 2.0, 0.2};
    const ViewFrame view = ViewFrame::looking(eye, {0.5, 1.0, 0.1}, 0.3);
    const ChannelSight sight(config(), channels()[0], eye);
    double left = 1e9;
    double right = -1e9;
    double bottom = 1e9;
    double top = -1e9;
    for (const P3& corner : {P3{-2.0, 5.0, 0.0}, P3{2.0, 5.0, 0.0}, P3{-2.0, 5.0, 2.0}, P3{2.0, 5.0, 2.0}}) {
        const double ahead = dot(corner - eye, view.forward);
        left = std::min(left, dot(corner - eye, view.right) / ahead);
        right = std::max(right, dot(corner - eye, view.right) / ahead);
        bottom = std::min(bottom, dot(corner - eye, view.up) / ahead);
        top = std::max(top, dot(corner - eye, view.up) / ahead);
    }
    expectFrustum(fittedFrustum(sight, view, 0, WIDE), left, right, bottom, top);
}

/// A picture that ends beside the screen on all sides, and one whose every edge lies on it.
TEST_F(FrustumFitTest, EndsWhereTheLightDoes) {
    loadWall("<ScreenArea left='-0.5031' right='1.7' bottom='-0.3107' top='2.01'/>");
    expectFrustum(fitted({0.0, 0.0, 1.0}, AHEAD, 0), -0.4, 0.4, -0.2, 0.2, 1e-7);
    loadWall("<ScreenArea left='0.25' right='0.75' bottom='0.125' top='0.75'/>");
    expectFrustum(fitted({0.0, 0.0, 1.0}, AHEAD, 0), -0.2, 0.2, -0.15, 0.1);
    // From one edge of the screen to beyond the other one.
    loadWall("<ScreenArea left='0.3' right='1.7013' bottom='-1.2021' top='0.4'/>");
    expectFrustum(fitted({0.0, 0.0, 1.0}, AHEAD, 0), -0.16, 0.4, -0.2, -0.04, 1e-7);
}

/// A part of a sphere, whose edges bulge in the picture, furthest between the places of a coarse lattice: the sides to
/// an eye on a level with them, the lower edge to an eye below it and the upper one to an eye above it.
TEST_F(FrustumFitTest, HoldsTheBulgesOfCurvedEdges) {
    load(
        "<Screen shape='Sphere'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='0' z='0'/><Radius value='4'/>"
        "<Azimuth min='-50' max='50'/><Elevation min='-17.3' max='22.7'/></Screen>",
        displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
        "<TargetData type='PlanarBasic'/>");
    for (const P3& eye : {P3{0.3, -2.0, 0.0}, P3{0.3, -2.0, 2.5}, P3{-0.2, -2.0, -2.5}}) {
        const ViewFrame view = ViewFrame::looking(eye, {0.131, 1.0, 0.0});
        P2 lower{1e9, 1e9};
        P2 upper{-1e9, -1e9};
        const auto add = [&](double azimuth, double elevation) {
            const double a = azimuth * std::numbers::pi / 180;
            const double e = elevation * std::numbers::pi / 180;
            const P3 point{4 * std::sin(a) * std::cos(e), 4 * std::cos(a) * std::cos(e), 4 * std::sin(e)};
            const P3 seen = view.inFrame(point - eye);
            for (const std::size_t axis : {0U, 1U}) {
                lower[axis] = std::min(lower[axis], seen[2 * axis] / seen[1]);
                upper[axis] = std::max(upper[axis], seen[2 * axis] / seen[1]);
            }
        };
        for (int i = 0; i <= 10'000; ++i) {
            add(-50, -17.3 + 0.004 * i);
            add(50, -17.3 + 0.004 * i);
            add(-50 + 0.01 * i, -17.3);
            add(-50 + 0.01 * i, 22.7);
        }
        const ChannelSight sight(config(), channels()[0], eye);
        expectFrustum(fittedFrustum(sight, view, 0, WIDE), lower[0], upper[0], lower[1], upper[1], 3e-7);
    }
}

/// Seen edge-on, from beside the wall and from above it.
TEST_F(FrustumFitTest, HasAnExtentThoughThePictureHasNone) {
    loadWall();
    expectFrustum(fitted({-6.0, 5.0, 1.0}, {1.0, 0.0, 0.0}, 0), -1e-6, 1e-6, -0.25, 0.25);
    expectFrustum(fitted({0.0, 5.0, 6.0}, {0.0, 0.0, -1.0}, 0), -0.5, 0.5, -1e-6, 1e-6);
}

TEST_F(FrustumFitTest, RefusesWhatReachesTooFarToAnySide) {
    loadWall();
    const auto reach = [this](const P3& eye, double margin, double widest) -> std::string {
        try {
            static_cast<void>(fitted(eye, AHEAD, margin, widest));
        } catch (const VeltraniException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "accepted";
    };
    // Three metres to one of the sides, five ahead: 30.96 degrees; a tenth of the width makes it 34.2, of the
    // height 32.6.
    const double angle = std::atan2(3.0, 5.0);
    for (const P3& eye : {P3{1.0, 0.0, 1.0}, P3{-1.0, 0.0, 1.0}, P3{0.0, 0.0, 3.0}, P3{0.0, 0.0, -1.0}}) {
        EXPECT_EQ(reach(eye, 0, angle + 1e-9), "accepted") << eye;
        EXPECT_EQ(reach(eye, 0, angle),
                  "channel P1 (P1): its picture reaches 30.964 degrees from the direction of its frustum, which must "
                  "be less than 30.964: choose the input fisheye or cube, or state another direction")
            << eye;
        EXPECT_THAT(reach(eye, 0.1, angle + 1e-9),
                    testing::HasSubstr(eye[0] != 0 ? "reaches 34.216 degrees" : "reaches 32.619 degrees"))
            << eye;
    }
    EXPECT_THAT(reach({0.0, 10.0, 1.0}, 0, WIDE), testing::HasSubstr("reaches 180 degrees")) << "behind it";
}

TEST_F(FrustumFitTest, RefusesAPictureOfWhichNothingIsSeen) {
    loadWall("<ScreenArea left='1.5' right='2' bottom='0' top='1'/>");
    try {
        static_cast<void>(fitted({0.0, 0.0, 1.0}, AHEAD, 0));
        ADD_FAILURE() << "accepted";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message,
                  L"channel P1 (P1): nothing of its picture arrives on the screen: check its position, orientation and "
                  L"frustum, or its map, against the screen");
    }
}

}  // namespace
