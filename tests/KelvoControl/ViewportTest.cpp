#include "KelvoControl/Viewport.h"

#include "Common/VeltraniException.h"
#include "support/ProjectorConfigDouble.h"

#include <gmock/gmock.h>

#include <cmath>

namespace {

TEST(Viewport, ByDefaultItIsOneByOnePixelAtTheOrigin) {
    const Viewport viewport;
    EXPECT_EQ(viewport.ox, 0);
    EXPECT_EQ(viewport.oy, 0);
    EXPECT_EQ(viewport.sx, 1);
    EXPECT_EQ(viewport.sy, 1);
    EXPECT_EQ(viewport.position, (Point<double, 3>{}));
    EXPECT_EQ(viewport.orientation, (Point<double, 3>{}));
    EXPECT_EQ(viewport.width, 1);
    EXPECT_EQ(viewport.height, 1);
}

TEST(Viewport, TheExtentsOfAFrustumAreTangents) {
    const Viewport viewport = Viewport::fromFrustumAngles(-0.5, 0.25, -0.125, 0.375);
    EXPECT_EQ(viewport.ox, std::tan(-0.5));
    EXPECT_EQ(viewport.sx, std::tan(0.25) - std::tan(-0.5));
    EXPECT_EQ(viewport.oy, std::tan(-0.125));
    EXPECT_EQ(viewport.sy, std::tan(0.375) - std::tan(-0.125));
    EXPECT_EQ(viewport.width, 1);
}

TEST(Viewport, OfAProjectorItHasFrustumOrientationAndPositionButNotTheSize) {
    Trace trace;
    ProjectorConfigDouble projector(L"P1", &trace);
    projector.frustumTop = 0.375;
    projector.frustumBottom = -0.125;
    projector.frustumLeft = -0.5;
    projector.frustumRight = 0.25;
    projector.orientationZ = 0.1;
    projector.orientationX = 0.2;
    projector.orientationY = 0.3;
    projector.position = {1.0, 2.0, 3.0};
    const Viewport viewport = Viewport::of(projector, L"");
    const Viewport frustum = Viewport::fromFrustumAngles(-0.5, 0.25, -0.125, 0.375);
    EXPECT_EQ(viewport.ox, frustum.ox);
    EXPECT_EQ(viewport.oy, frustum.oy);
    EXPECT_EQ(viewport.sx, frustum.sx);
    EXPECT_EQ(viewport.sy, frustum.sy);
    EXPECT_EQ(viewport.orientation, (Point<double, 3>{0.1, 0.2, 0.3}));
    EXPECT_EQ(viewport.position, (Point<double, 3>{1.0, 2.0, 3.0}));
    EXPECT_EQ(viewport.width, 1);
    EXPECT_EQ(viewport.height, 1);
    EXPECT_THAT(trace.lines(), testing::ElementsAre("projector.getOrientationZ()", "projector.getOrientationX()",
                                                    "projector.getOrientationY()", "projector.getFrustumTop()",
                                                    "projector.getFrustumBottom()", "projector.getFrustumLeft()",
                                                    "projector.getFrustumRight()", "projector.getPosition()"));
}

TEST(Viewport, OfAModelOfTheFrustumItsEdgesLieAhead) {
    ProjectorConfigDouble projector(L"P1");
    for (double* const edge :
         {&projector.frustumLeft, &projector.frustumRight, &projector.frustumBottom, &projector.frustumTop}) {
        for (const double angle : {1.6, -1.6, M_PI / 2, std::nan("")}) {
            *edge = angle;
            EXPECT_THROW(static_cast<void>(Viewport::of(projector, L"Equidistant")), VeltraniException);
            EXPECT_THROW(static_cast<void>(Viewport::of(projector, L"Equidistant:")), VeltraniException);
            EXPECT_NO_THROW(static_cast<void>(Viewport::of(projector, L"")));
            EXPECT_NO_THROW(static_cast<void>(Viewport::of(projector, L"Fisheye:lens.yml")));
            // Whoever makes the model says what is wrong with these.
            EXPECT_NO_THROW(static_cast<void>(Viewport::of(projector, L"Fisheye")));
            EXPECT_NO_THROW(static_cast<void>(Viewport::of(projector, L"Equidisant")));
        }
        *edge = 1.5;
        EXPECT_NO_THROW(static_cast<void>(Viewport::of(projector, L"Equidistant")));
    }
}

TEST(Viewport, IsPrintedWithAllItsNumbers) {
    Viewport viewport;
    viewport.position = {1.0, 2.0, 3.0};
    viewport.orientation = {0.5, 0.0, 0.0};
    viewport.width = 1920;
    viewport.height = 1200;
    EXPECT_EQ(testing::PrintToString(viewport),
              "extents (0, 1, 0, 1), position (1, 2, 3), orientation (0.5, 0, 0), 1920 x 1200 pixels");
}

}  // namespace
