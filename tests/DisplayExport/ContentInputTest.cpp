#include "DisplayExport/ContentInput.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <tuple>

namespace {

using namespace Veltrani::DisplayExport;
using testing::HasSubstr;

constexpr double DEGREE = std::numbers::pi / 180;

std::string messageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const VeltraniException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "nothing was thrown";
}

class ContentInputTest : public ExportDisplayTest {
protected:
    /// A wall around (0, 5, 1), 4 by 2, by one channel over all of it or a part.
    void loadWall(const std::string& area = displays::WHOLE_AREA, const std::string& eye = "x='0' y='0' z='1'") {
        load("<Screen shape='Flat'><EyePoint " + eye +
                 "/><Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen>",
             displays::projector("Left", area + "<Layout xMin='0' xMax='3' yMin='0' yMax='2'/>") +
                 displays::projector("Right", area + "<Layout xMin='2' xMax='6' yMin='1' yMax='2'/>"),
             "<TargetData type='PlanarBasic'/>");
    }

    [[nodiscard]] InputPlace placeAt(const ContentInput& input, const ChannelSight& sight, const P2& picture) const {
        SeenPlace seen;
        sight.see({&picture, 1}, {&seen, 1});
        const auto place = input.place(picture, seen);
        EXPECT_TRUE(place);
        return place.value_or(InputPlace());
    }
};

/// The tangents of a wall that the eye looks at squarely: 2 / 5 to the sides, 1 / 5 up and down.
TEST_F(ContentInputTest, FitsAFrustumTightlyAroundAWall) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput tight(config(), sight, {.margin = 0});
    const RenderFrustum frustum = tight.frustum().value();
    EXPECT_NEAR(frustum.left, -0.4, 1e-9);
    EXPECT_NEAR(frustum.right, 0.4, 1e-9);
    EXPECT_NEAR(frustum.bottom, -0.2, 1e-9);
    EXPECT_NEAR(frustum.top, 0.2, 1e-9);
    const RenderFrustum usual = ContentInput(config(), sight, {}).frustum().value();
    EXPECT_NEAR(usual.right, 0.4 + 0.02 * 0.8, 1e-9);
    EXPECT_NEAR(usual.bottom, -0.2 - 0.02 * 0.4, 1e-9);
    EXPECT_EQ(tight.pixels(), (Point<int, 2>{1920, 1200}));
}

/// An eye beside the middle has a frustum that is not symmetric about a stated direction.
TEST_F(ContentInputTest, FitsAnOffAxisFrustumFromAnotherEye) {
    loadWall();
    const ChannelSight sight(config(), channels()[0], P3{1.0, 1.0, 0.5});
    const ContentInput input(config(), sight, {.direction = P3{0.0, 1.0, 0.0}, .margin = 0});
    const RenderFrustum frustum = input.frustum().value();
    EXPECT_NEAR(frustum.left, -3.0 / 4, 1e-9);
    EXPECT_NEAR(frustum.right, 1.0 / 4, 1e-9);
    EXPECT_NEAR(frustum.bottom, -0.5 / 4, 1e-9);
    EXPECT_NEAR(frustum.top, 1.5 / 4, 1e-9);
    EXPECT_EQ(frustum.view.eye, (P3{1.0, 1.0, 0.5}));
}

/// Light that falls beside the screen takes no part of the frustum.
TEST_F(ContentInputTest, HoldsWhatIsLitAndNoMore) {
    loadWall("<ScreenArea left='-0.503' right='1.7' bottom='-0.31' top='2'/>");
    const ChannelSight sight(config(), channels()[0]);
    const RenderFrustum frustum =
        ContentInput(config(), sight, {.direction = P3{0.0, 1.0, 0.0}, .margin = 0}).frustum().value();
    EXPECT_NEAR(frustum.left, -0.4, 1e-6);
    EXPECT_NEAR(frustum.right, 0.4, 1e-6);
    EXPECT_NEAR(frustum.bottom, -0.2, 1e-6);
    EXPECT_NEAR(frustum.top, 0.2, 1e-6);
}

TEST_F(ContentInputTest, RefusesAFrustumThatIsTooWide) {
    loadWall(displays::WHOLE_AREA, "x='0' y='4.7' z='1'");
    const ChannelSight sight(config(), channels()[0]);
    // atan(2 / 0.3) is 81.5 degrees.
    const std::string message = messageOf([&] {
        (void)ContentInput(config(), sight, {.direction = P3{0.0, 1.0, 0.0}});
    });
    EXPECT_THAT(message, HasSubstr("channel Left (Left)"));
    EXPECT_THAT(message, HasSubstr("81.4"));
    EXPECT_THAT(message, HasSubstr("fisheye or cube"));
    EXPECT_EQ(messageOf([&] { (void)ContentInput(config(), sight, {.kind = InputKind::CUBE}); }), "nothing was thrown");
}

TEST_F(ContentInputTest, RefusesAChannelOfWhichNothingIsLit) {
    loadWall("<ScreenArea left='1.5' right='2' bottom='0' top='1'/>");
    const ChannelSight sight(config(), channels()[0]);
    EXPECT_THAT(messageOf([&] { (void)ContentInput(config(), sight, {}); }), HasSubstr("nothing"));
    EXPECT_THAT(messageOf([&] {
                    (void)ContentInput(config(), sight, {.direction = P3{0.0, 1.0, 0.0}});
                }),
                HasSubstr("nothing of its picture arrives"));
}

/// A picture that ends next to the screen lights nothing, whatever lies beyond its edges.
TEST_F(ContentInputTest, NamesThePictureAsTheCauseWhereItEndsBesideTheScreen) {
    InputChoice behind{.kind = InputKind::FISHEYE, .direction = P3{0.0, -1.0, 0.0}};
    for (const char* const area :
         {"left='0' right='1' bottom='-1.002' top='-0.002'", "left='0' right='1' bottom='1.002' top='2.002'",
          "left='-1.002' right='-0.002' bottom='0' top='1'", "left='1.002' right='2.002' bottom='0' top='1'"}) {
        loadWall(std::string("<ScreenArea ") + area + "/>");
        const ChannelSight sight(config(), channels()[0]);
        EXPECT_EQ(ContentInput(config(), sight, behind).remedyForNothing(sight), ContentInput::REMEDY_UNLIT) << area;
    }
    loadWall("<ScreenArea left='0' right='1' bottom='-0.9' top='0.1'/>");
    const ChannelSight sight(config(), channels()[0]);
    EXPECT_THAT(ContentInput(config(), sight, behind).remedyForNothing(sight), HasSubstr("the circle of the fisheye"));
}

/// The edge of the circle belongs to it, whatever rounding makes of a direction there.
TEST_F(ContentInputTest, AFisheyeHoldsItsOwnEdge) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const P3 axis = P3{0.3, 0.5, 0.8} * (1 / norm(P3{0.3, 0.5, 0.8}));
    const P3 right = cross(axis, P3{0.0, 0.0, 1.0}) * (1 / norm(cross(axis, P3{0.0, 0.0, 1.0})));
    const P3 up = cross(right, axis);
    int rounded = 0;
    for (const double aperture : {180.0, 150.0, 121.0, 300.0}) {
        const InputChoice fisheye{.kind = InputKind::FISHEYE, .direction = axis, .aperture = aperture * DEGREE};
        const ContentInput input(config(), sight, fisheye);
        const double edge = fisheye.aperture / 2;
        for (int i = 0; i < 360; ++i) {
            const double azimuth = (i + 0.3) * DEGREE;
            const auto at = [&](double angle) {
                return 4.7 * (std::sin(angle) * (std::cos(azimuth) * right + std::sin(azimuth) * up) +
                              std::cos(angle) * axis);
            };
            const P3 direction = at(edge);
            rounded +=
                std::atan2(std::hypot(dot(direction, right), dot(direction, up)), dot(direction, axis)) > edge ? 1 : 0;
            const auto place = input.placeOf(direction);
            ASSERT_TRUE(place) << aperture << ' ' << i;
            EXPECT_NEAR(std::hypot(place->at[0] - 0.5, place->at[1] - 0.5), 0.5, 1e-12);
            EXPECT_TRUE(input.placeOf(at(edge - 1e-7)));
            EXPECT_FALSE(input.placeOf(at(edge + 1e-7)));
        }
    }
    EXPECT_GT(rounded, 100) << "directions that lie beyond the edge by rounding";
}

/// Behind the axis, pixels count around the middle by the sine of the angle, as the rim is all one direction at last;
/// outwards, and before that, they count as they are.
TEST_F(ContentInputTest, APixelAtTheRimOfAFullFisheyeCountsByWhatItShows) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput input(config(), sight,
                             {.kind = InputKind::FISHEYE, .aperture = 360 * DEGREE, .pixels = {3600, 3600}});
    // Ten pixels are a degree.
    for (const auto& [degrees, part] : {std::pair<double, double>{30, 1}, {90, 1}, {150, 0.5}, {180, 0}}) {
        for (const double azimuth : {0.0, 40.0, 200.0}) {
            const P2 outwards{std::cos(azimuth * DEGREE), std::sin(azimuth * DEGREE)};
            const P2 around{-outwards[1], outwards[0]};
            const P2 from = P2{0.5, 0.5} + degrees / 360 * outwards;
            EXPECT_NEAR(input.distance(from, from + 2.0 / 3600 * outwards), 2, 1e-9);
            EXPECT_NEAR(input.distance(from, from + 2.0 / 3600 * around), 2 * part, 1e-9) << degrees;
        }
    }
}

TEST_F(ContentInputTest, RefusesNumbersOutOfRange) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const auto refused = [&](const InputChoice& choice) {
        return messageOf([&] { (void)ContentInput(config(), sight, choice); });
    };
    EXPECT_THAT(refused({.kind = InputKind::FISHEYE, .aperture = 0}), HasSubstr("aperture"));
    EXPECT_THAT(refused({.kind = InputKind::FISHEYE, .aperture = 7}), HasSubstr("360"));
    EXPECT_THAT(refused({.margin = -0.1}), HasSubstr("margin"));
    EXPECT_THAT(refused({.margin = std::numeric_limits<double>::quiet_NaN()}), HasSubstr("margin"));
    EXPECT_THAT(refused({.pixels = {0, 7}}), HasSubstr("0 x 7"));
    EXPECT_THAT(refused({.pixels = {7, 0}}), HasSubstr("7 x 0"));
    EXPECT_THAT(refused({.pixels = {1, 1'000'001}}), HasSubstr("1 x 1000001"));
    EXPECT_EQ(refused({.pixels = {1'000'000, 1}}), "nothing was thrown");
    EXPECT_THAT(refused({.margin = 1.01}), HasSubstr("margin"));
    EXPECT_EQ(refused({.margin = 1}), "nothing was thrown");
    EXPECT_EQ(refused({.kind = InputKind::FISHEYE, .aperture = 360 * DEGREE}), "nothing was thrown");
    EXPECT_THAT(refused({.direction = P3()}), HasSubstr("direction"));
}

/// As the frames of the pages have it: the front is in the middle, what is above it above.
TEST_F(ContentInputTest, PlacesDirectionsInPanoramas) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput round(config(), sight, {.kind = InputKind::EQUIRECTANGULAR});
    const auto at = [](const ContentInput& input, const P3& direction) { return input.placeOf(direction)->at; };
    EXPECT_LT(norm(at(round, {0.0, 2.0, 0.0}) - P2{0.5, 0.5}), 1e-12);
    EXPECT_LT(norm(at(round, {1.0, 0.0, 0.0}) - P2{0.75, 0.5}), 1e-12);
    EXPECT_LT(norm(at(round, {0.0, 1.0, 1.0}) - P2{0.5, 0.75}), 1e-12);
    const ContentInput turned(config(), sight, {.kind = InputKind::EQUIRECTANGULAR, .direction = P3{1.0, 0.0, 0.0}});
    EXPECT_LT(norm(at(turned, {0.0, 1.0, 0.0}) - P2{0.25, 0.5}), 1e-12);

    const ContentInput fisheye(config(), sight,
                               {.kind = InputKind::FISHEYE, .direction = P3{0.0, 0.0, 1.0}, .aperture = 220 * DEGREE});
    EXPECT_LT(norm(at(fisheye, {0.0, 0.0, 1.0}) - P2{0.5, 0.5}), 1e-12);
    EXPECT_LT(norm(at(fisheye, {0.0, 1.0, 0.0}) - P2{0.5, 0.5 + 90.0 / 220}), 1e-12);
    EXPECT_LT(norm(at(fisheye, {1.0, 0.0, 0.0}) - P2{0.5 - 90.0 / 220, 0.5}), 1e-12);
    EXPECT_FALSE(fisheye.placeOf({0.0, 0.5, -1.0}));
    // Half a turn of roll: the front at the bottom, as planetariums have it.
    const ContentInput rolled(config(), sight,
                              {.kind = InputKind::FISHEYE, .direction = P3{0.0, 0.0, 1.0}, .roll = 180 * DEGREE});
    EXPECT_LT(norm(at(rolled, {0.0, 1.0, 0.0}) - P2{0.5, 0.0}), 1e-12);
    EXPECT_LT(norm(at(rolled, {1.0, 0.0, 0.0}) - P2{1.0, 0.5}), 1e-12);
}

TEST_F(ContentInputTest, PlacesDirectionsOnTheFacesOfACube) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput cube(config(), sight, {.kind = InputKind::CUBE});
    const auto expectAt = [&cube](const P3& direction, CubeFace face, const P2& place) {
        const auto found = cube.placeOf(direction);
        ASSERT_TRUE(found);
        EXPECT_EQ(static_cast<CubeFace>(found->face), face) << nameOf(face);
        EXPECT_LT(norm(found->at - place), 1e-12) << nameOf(face) << ' ' << found->at;
        EXPECT_EQ(cube.placeOnFace(direction, found->face), found->at);
    };
    expectAt({0.5, 1.0, 0.25}, CubeFace::FRONT, {0.75, 0.625});
    expectAt({1.0, -0.5, 0.25}, CubeFace::RIGHT, {0.75, 0.625});
    expectAt({-0.5, -1.0, 0.25}, CubeFace::BACK, {0.75, 0.625});
    expectAt({-1.0, 0.5, 0.25}, CubeFace::LEFT, {0.75, 0.625});
    expectAt({0.5, -0.25, 1.0}, CubeFace::TOP, {0.75, 0.625});
    expectAt({0.5, 0.25, -1.0}, CubeFace::BOTTOM, {0.75, 0.625});
    EXPECT_FALSE(cube.placeOnFace({0.0, -1.0, 0.0}, static_cast<std::uint8_t>(CubeFace::FRONT)));
    // On edges and corners the front and the back come first, the top and the bottom last.
    expectAt({1.0, 1.0, 1.0}, CubeFace::FRONT, {1.0, 1.0});
    expectAt({0.5, 1.0, 1.0}, CubeFace::FRONT, {0.75, 1.0});
    expectAt({1.0, 0.0, 1.0}, CubeFace::RIGHT, {0.5, 1.0});
    EXPECT_FALSE(cube.placeOf({}));
}

TEST_F(ContentInputTest, HasTheLayoutAndTheScreenOfPlanarDisplays) {
    loadWall("<ScreenArea left='0.2' right='0.6' bottom='0' top='0.5'/>");
    const ChannelSight sight(config(), channels()[1]);
    const ContentInput layout(config(), sight, {.kind = InputKind::LAYOUT});
    EXPECT_LT(norm(placeAt(layout, sight, {0.25, 0.5}).at - P2{3.0 / 6, 1.5 / 2}), 1e-12);
    EXPECT_EQ(layout.pixels(), (Point<int, 2>{4096, 1365}));
    const ContentInput screen(config(), sight, {.kind = InputKind::SCREEN});
    EXPECT_LT(norm(placeAt(screen, sight, {0.25, 0.5}).at - P2{0.3, 0.25}), 1e-12);
}

/// The layout begins and ends with its rectangles, wherever they lie; a channel without one has no part in it.
TEST_F(ContentInputTest, HasTheLayoutOfAllRectangles) {
    const auto loadLayouts = [this](const std::string& first, const std::string& second) {
        load(displays::FLAT,
             displays::projector("P1", displays::WHOLE_AREA + "<Layout " + first + "/>") +
                 displays::projector("P2", displays::WHOLE_AREA + "<Layout " + second + "/>") +
                 displays::projector("P3", displays::WHOLE_AREA),
             "<TargetData type='PlanarBasic'/>");
    };
    const auto layoutOf = [this](std::size_t channel) {
        const ChannelSight sight(config(), channels()[channel]);
        return ContentInput(config(), sight, {.kind = InputKind::LAYOUT});
    };
    loadLayouts("xMin='2' xMax='3' yMin='10' yMax='14'", "xMin='3' xMax='4' yMin='11' yMax='18'");
    const SeenPlace seen{{}, {0.0, 1.0, 0.0}, {}, false, true};
    for (const auto& [channel, picture, place] : {std::tuple(0U, P2{0.0, 0.0}, P2{0.0, 0.0}),
                                                  {0U, P2{1.0, 1.0}, P2{0.5, 0.5}},
                                                  {1U, P2{0.0, 0.0}, P2{0.5, 0.125}},
                                                  {1U, P2{1.0, 1.0}, P2{1.0, 1.0}},
                                                  {1U, P2{1.5, 0.5}, P2{1.25, 0.5625}}}) {
        EXPECT_LT(norm(layoutOf(channel).place(picture, seen)->at - place), 1e-12) << channel << ' ' << picture;
        EXPECT_LT(norm(layoutOf(channel).placeBeyond(picture, seen)->at - place), 1e-12) << channel << ' ' << picture;
        EXPECT_FALSE(layoutOf(channel).place(picture, SeenPlace()));
    }
    EXPECT_EQ(layoutOf(0).pixels(), (Point<int, 2>{1024, 4096})) << "along the longer side";
    EXPECT_FALSE(layoutOf(0).placeOf({0.0, 1.0, 0.0}));
    EXPECT_FALSE(layoutOf(0).frustum());
    EXPECT_TRUE(layoutOf(0).poles().empty());
    EXPECT_THAT(messageOf([&] { (void)layoutOf(2); }), HasSubstr("its layout rectangle has no extent"));
    loadLayouts("xMin='0' xMax='10000' yMin='0' yMax='1'", "xMin='0' xMax='1' yMin='2' yMax='2'");
    EXPECT_EQ(layoutOf(0).pixels(), (Point<int, 2>{4096, 1}));
    EXPECT_THAT(messageOf([&] { (void)layoutOf(1); }), HasSubstr("has no extent"));
    loadLayouts("xMin='0' xMax='1' yMin='0' yMax='1'", "xMin='2' xMax='2' yMin='0' yMax='1'");
    EXPECT_THAT(messageOf([&] { (void)layoutOf(1); }), HasSubstr("has no extent"));
}

/// As an export stated it, whatever the display gives now.
TEST_F(ContentInputTest, IsMadeOfWhatAnExportStated) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const RenderFrustum stated{ViewFrame::looking({1.0, 2.0, 3.0}, {1.0, 1.0, 0.0}), -0.5, 0.25, -0.125, 0.75};
    const auto input = [&](InputKind kind) {
        return ContentInput(config(), sight, {.kind = kind, .pixels = {100, 50}}, stated);
    };
    const ContentInput frustum = input(InputKind::FRUSTUM);
    EXPECT_EQ(frustum.frustum()->left, -0.5);
    EXPECT_EQ(frustum.frustum()->top, 0.75);
    EXPECT_EQ(frustum.view().eye, (P3{1.0, 2.0, 3.0}));
    EXPECT_FALSE(frustum.frustumOf(CubeFace::FRONT));
    const ContentInput cube = input(InputKind::CUBE);
    EXPECT_EQ(cube.faces(), 6U);
    EXPECT_FALSE(cube.frustum());
    EXPECT_LT(norm(cube.frustumOf(CubeFace::FRONT)->view.forward - stated.view.forward), 1e-15);
    EXPECT_LT(norm(cube.frustumOf(CubeFace::BACK)->view.forward + stated.view.forward), 1e-15);
    EXPECT_EQ(cube.frustumOf(CubeFace::TOP)->left, -1);
    EXPECT_FALSE(cube.placeOnFace({1.0, 1.0, 0.0}, 6));
    EXPECT_FALSE(frustum.placeOnFace({1.0, 1.0, 0.0}, 0));
    EXPECT_EQ(input(InputKind::LAYOUT).place({0.5, 0.5}, {{}, {}, {}, false, true})->at, (P2{0.25, 0.5}));
    EXPECT_THAT(frustum.remedyForNothing(sight), HasSubstr("behind the direction of the frustum"));
}

/// Across the seam of a panorama, and less where its rows are shorter on the sphere.
TEST_F(ContentInputTest, PixelsOfAPanoramaCountByWhatTheyShow) {
    loadWall();
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput round(config(), sight, {.kind = InputKind::EQUIRECTANGULAR, .pixels = {1000, 500}});
    EXPECT_NEAR(round.distance({0.95, 0.5}, {0.05, 0.5}), 100, 1e-9);
    EXPECT_NEAR(round.distance({0.05, 0.5}, {0.95, 0.5}), 100, 1e-9);
    EXPECT_NEAR(round.distance({0.25, 0.5}, {0.5, 0.75}), std::hypot(250, 125), 1e-9);
    EXPECT_NEAR(round.distance({0.25, 0.75}, {0.5, 0.75}), 250 * std::sqrt(0.5), 1e-9) << "up by 45 degrees";
    EXPECT_NEAR(round.distance({0.25, 5.0 / 6}, {0.26, 5.0 / 6}), 5, 1e-9) << "up by 60 degrees";
    EXPECT_NEAR(round.distance({0.25, 1.0 / 6}, {0.26, 1.0 / 6}), 5, 1e-9);
    const ContentInput cube(config(), sight, {.kind = InputKind::CUBE, .pixels = {1000, 500}});
    EXPECT_NEAR(cube.distance({0.95, 0.5}, {0.05, 0.7}), std::hypot(900, 100), 1e-9);
}

TEST_F(ContentInputTest, RefusesInputsThatTheDisplayDoesNotHave) {
    loadAny("round");
    const ChannelSight sight(config(), channels()[0]);
    EXPECT_THAT(messageOf([&] { (void)ContentInput(config(), sight, {.kind = InputKind::LAYOUT}); }),
                HasSubstr("no layout plane"));
    EXPECT_THAT(messageOf([&] { (void)ContentInput(config(), sight, {.kind = InputKind::SCREEN}); }),
                HasSubstr("not placed by the 2D coordinates"));
}

/// The eye sees the mirror in the direction of the frustum's own rays, turned as the mirror is.
TEST_F(ContentInputTest, SeesACollimatedDisplayInTheMirror) {
    load(
        "<Screen shape='Sphere'><EyePoint x='0' y='-0.3' z='-0.5'/><Centre x='0' y='0' z='1.9'/><Radius "
        "value='1.6'/><Azimuth min='-120' max='120'/><Elevation min='-60' max='60'/></Screen>",
        exportDisplays::standing("Centre", "x='0' y='-0.3' z='-0.5'", "z='20' x='5'", 20, 12),
        "<TargetData type='SphericalCollimated'><Mirror radius='3'><Position x='0' y='0' "
        "z='1.9'/></Mirror></TargetData>");
    const ChannelSight sight(config(), channels()[0]);
    EXPECT_TRUE(sight.isInMirror());
    EXPECT_LT(norm(sight.eye() - P3{0.0, -0.3, 1.4}), 1e-12);
    const Matrix<double, 3> orientation = Veltrani::rotationZXY(20 * DEGREE, 5 * DEGREE, 0);
    int seenPlaces = 0;
    for (int i = 0; i < 81; ++i) {
        const P2 picture{(i % 9) / 8.0, (i / 9) / 8.0};
        SeenPlace seen;
        sight.see({&picture, 1}, {&seen, 1});
        if (seen.isSeen) {
            ++seenPlaces;
            const P3 expected = orientation * P3{(2 * picture[0] - 1) * std::tan(20 * DEGREE), 1.0,
                                                 (2 * picture[1] - 1) * std::tan(12 * DEGREE)};
            EXPECT_LT(norm(cross(seen.direction, expected)), 1e-9);
            EXPECT_GT(dot(seen.direction, expected), 0);
        }
    }
    EXPECT_GT(seenPlaces, 40);
    EXPECT_THAT(messageOf([&] {
                    (void)ChannelSight(config(), channels()[0], P3{0.0, 0.0, 1.4});
                }),
                HasSubstr("mirror"));
    // Its frustum is that of the channel itself, in the frame of its own axis.
    const P3 axis = orientation * P3{0.0, 1.0, 0.0};
    const RenderFrustum frustum = ContentInput(config(), sight, {.direction = axis, .margin = 0}).frustum().value();
    EXPECT_NEAR(frustum.right, std::tan(20 * DEGREE), 0.02);
}

TEST(InputKind, HasAName) {
    for (const std::string& name : inputKindNames()) {
        EXPECT_EQ(nameOf(inputKindOf(name).value()), name);
    }
    EXPECT_EQ(inputKindNames().size(), 6U);
    EXPECT_FALSE(inputKindOf("Fisheye"));
}

}  // namespace
