#include "DisplayLight/LitChannel.h"

#include "AddedLight.h"
#include "DisplayLight/ProjectedLight.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <random>

namespace {

using Veltrani::DisplayExport::InputKind;
using Veltrani::DisplayLight::FoundPlace;
using Veltrani::DisplayLight::LitChannel;
using Veltrani::DisplayLight::PlaceGrid;
using Veltrani::DisplayLight::PlayedPictures;
using Veltrani::DisplayLight::ProjectedLight;

constexpr int WIDTH = 64;
constexpr int HEIGHT = 40;
constexpr double DEGREE = std::numbers::pi / 180;

/// A wall of 4 by 2 m, five metres ahead of the eye in the origin.
const std::string WALL =
    "<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='5' z='0'/><Size width='4' "
    "height='2'/></Screen>";
const std::string BALL =
    "<Screen shape='Sphere'><EyePoint x='0' y='0' z='0'/><Radius value='4'/><Azimuth min='-180' max='180'/>"
    "<Elevation min='-90' max='90'/></Screen>";
const std::string BASIC = "<TargetData type='PlanarBasic'/>";

std::string channel(const std::string& elements) {
    return "<Projector id='P'><Name>P</Name><Resolution width='64' height='40'/>" + elements + "</Projector>";
}

class LitChannelTest : public AddedLightTest {
protected:
    void exportAs(InputKind kind, WarpFormat format, const std::shared_ptr<const ContentPicture>& content) {
        ExportRequest request;
        request.input.kind = kind;
        request.formats = {format};
        request.content = content;
        request.error = 0.05;
        exportAll(request);
        m_exported.emplace(ExportedDisplay::read(m_player));
    }

    [[nodiscard]] LitChannel litChannel() const {
        return {config(), channels().front(), m_exported->views().front(),
                ScreenManager::getInstance()->getScreenGeometry()};
    }

    /// What each place shows of the channel, for places whose pictures are given.
    [[nodiscard]] std::vector<LitPlace> compared(const std::vector<FoundPlace>& found, double coarsest = 0) const {
        PlaceGrid grid;
        grid.width = found.size();
        grid.places.resize(found.size());
        std::vector<LitPlace> places(found.size());
        LitChannel channel = litChannel();
        channel.addLight(*m_exported, grid, found, true, places);
        channel.compare(*m_exported, grid, found, coarsest, places);
        return places;
    }

    std::optional<ExportedDisplay> m_exported;
};

FoundPlace foundAt(double u, double v) {
    return {{u, v}, 0, true};
}

// A picture of 10 by 2 * 5 tan 40 m, of which the wall takes the middle: the nodes of 65 x 41 on it are counted.
TEST_F(LitChannelTest, MeasuresItsPixelWhereItsLightLands) {
    load(WALL,
         channel("<Position x='0' y='0' z='0'/><Orientation z='0' x='0' y='0'/><Frustum left='-45' right='45' "
                 "bottom='-40' top='40'/>"),
         "<TargetData type='ProjectorCentric'/>");
    exportAs(InputKind::EQUIRECTANGULAR, WarpFormat::PFM, white());
    const LitChannel lit = litChannel();
    const double height = 10 * std::tan(40 * DEGREE);
    EXPECT_NEAR(lit.pixel(), std::sqrt(10.0 / WIDTH * height / HEIGHT), 1e-9);
    std::size_t onWall = 0;
    for (int i = 0; i < 65 * 41; ++i) {
        const double x = 10 * (i % 65 / 64.0 - 0.5);
        const double z = height * (i / 65 / 40.0 - 0.5);
        onWall += std::abs(x) <= 2 && std::abs(z) <= 1 ? 1 : 0;
    }
    ASSERT_EQ(lit.directions().size(), onWall);
    for (const P3& direction : lit.directions()) {
        EXPECT_LE(std::abs(direction[0] / direction[1]), 0.4 + 1e-9);
        EXPECT_LE(std::abs(direction[2] / direction[1]), 0.2 + 1e-9);
    }
}

/// Places whose pictures are moved by known ways from one to the next.
class LitFootprintTest : public LitChannelTest {
protected:
    void SetUp() override {
        load(WALL, channel(displays::WHOLE_AREA), BASIC);
        std::mt19937 random(3);
        std::vector<unsigned char> colours(std::size_t{3} * 16 * 10);
        std::generate(colours.begin(), colours.end(), [&random] { return static_cast<unsigned char>(random() % 256); });
        exportAs(InputKind::SCREEN, WarpFormat::PFM, std::make_shared<const ContentPicture>(16, 10, colours));
    }

    /// Whether a place of a grid shows what the pixels of the channel show as far as so many of them.
    void expectFootprints(const PlaceGrid& grid, const std::vector<FoundPlace>& found, std::size_t count,
                          const std::vector<double>& footprints, bool isSharp = false) const {
        std::vector<LitPlace> places(count);
        LitChannel channel = litChannel();
        channel.addLight(*m_exported, grid, std::span(found).first(count), isSharp, places);
        const ProjectedLight light(PlayedPictures::read(*m_exported, m_exported->views().front()),
                                   BlendCurve::ofGamma(2.2), 0);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(places[i].channels, found[i].isLit ? 1 : 0);
            const auto expected = found[i].isLit ? light.at(found[i].picture, footprints[i]) : ProjectedLight::Light{};
            for (std::size_t part = 0; part < 3; ++part) {
                EXPECT_NEAR(places[i].light[part], expected[part], 1e-6) << i;
            }
            EXPECT_NEAR(places[i].weight, expected[3], 1e-6);
        }
    }

    /// Of 3 by 2 places, one to the right is moved by (3, 1) pixels, one upwards by (-2, 2.5).
    static PlaceGrid sixPlaces() {
        PlaceGrid grid;
        grid.width = 3;
        grid.places.resize(6);
        return grid;
    }
    static std::vector<FoundPlace> sixPictures() {
        std::vector<FoundPlace> found;
        for (int i = 0; i < 6; ++i) {
            const double right = i % 3;
            const double up = std::floor(i / 3.0);
            found.push_back(foundAt((20.3 + 3 * right - 2 * up) / WIDTH, (15.2 + right + 2.5 * up) / HEIGHT));
        }
        // Beyond the places that are given.
        found.push_back(foundAt(0.9, 0.9));
        return found;
    }
};

TEST_F(LitFootprintTest, IsTheAreaBetweenAPlaceAndThoseBesideIt) {
    const double both = std::sqrt(3 * 2.5 + 1 * 2);
    expectFootprints(sixPlaces(), sixPictures(), 6, std::vector<double>(6, both));
    expectFootprints(sixPlaces(), sixPictures(), 6, std::vector<double>(6, 0), true);
}

TEST_F(LitFootprintTest, IsTheOnlyWayThereIs) {
    const double across = std::sqrt(10.0);
    const double along = std::sqrt(4 + 6.25);
    PlaceGrid grid = sixPlaces();
    grid.parts = {1, 1, 1, 2, 2, 2};
    expectFootprints(grid, sixPictures(), 6, std::vector<double>(6, across));
    grid.parts = {1, 2, 3, 1, 2, 3};
    expectFootprints(grid, sixPictures(), 6, std::vector<double>(6, along));
    grid.parts = {1, 2, 3, 4, 5, 6};
    expectFootprints(grid, sixPictures(), 6, std::vector<double>(6, 0));
    // Neither does what is not lit count.
    std::vector<FoundPlace> found = sixPictures();
    for (const std::size_t dark : {0U, 2U, 4U}) {
        found[dark].isLit = false;
    }
    expectFootprints(sixPlaces(), found, 6, std::vector<double>(6, 0));
    found = sixPictures();
    found[4].isLit = false;
    const double both = std::sqrt(3 * 2.5 + 1 * 2);
    expectFootprints(sixPlaces(), found, 6, {both, across, both, along, 0, along});
}

TEST_F(LitFootprintTest, WhatLiesFarApartInThePictureIsNotBesideEachOther) {
    PlaceGrid grid;
    grid.width = 2;
    grid.places.resize(2);
    expectFootprints(grid, {foundAt(0, 0.5), foundAt(1, 0.5)}, 2, {64, 64});
    expectFootprints(grid, {foundAt(0, 0.4), foundAt(1, 0.5)}, 2, {0, 0});
}

/// The picture of the channel is moved on the screen after it was exported.
class LitShiftTest : public LitChannelTest {
protected:
    static std::string area(double right, double up) {
        return "<ScreenArea left='" + std::to_string(right) + "' right='" + std::to_string(0.5 + right) + "' bottom='" +
               std::to_string(up) + "' top='" + std::to_string(1 + up) + "'/>";
    }
};

TEST_F(LitShiftTest, IsStatedInPixelsOfTheCoarsestProjector) {
    load(WALL, channel(area(0, 0)), BASIC);
    exportAs(InputKind::SCREEN, WarpFormat::OBJ, white());
    load(WALL, channel(area(0.25, -0.125)), BASIC);
    const double pixels = std::hypot(0.25 / 0.5 * WIDTH, 0.125 * HEIGHT);
    const double pixel = litChannel().pixel();
    EXPECT_NEAR(compared({foundAt(0.5, 0.5)}, pixel)[0].shift, pixels, 1e-3);
    EXPECT_NEAR(compared({foundAt(0.5, 0.5)}, 4 * pixel)[0].shift, pixels / 4, 1e-3);
    EXPECT_NEAR(compared({foundAt(0.5, 0.5)})[0].shift, pixels, 1e-3) << "those of its own";
    EXPECT_NEAR(pixel, std::sqrt(2.0 / WIDTH * 2 / HEIGHT), 1e-9);
}

TEST_F(LitShiftTest, IsMeasuredWhereTheChannelIsSeenAlone) {
    load(WALL, channel(area(0, 0)), BASIC);
    exportAs(InputKind::SCREEN, WarpFormat::OBJ, white());
    // Half of the picture hides, a line of it shows a fiftieth of the light.
    addBlends(
        [](std::size_t /*channel*/, const Point<int, 2>& pixels) {
            std::vector<std::uint16_t> codes;
            for (int i = 0; i < pixels[0] * pixels[1]; ++i) {
                codes.push_back(static_cast<std::uint16_t>(i % WIDTH < 32 ? 0 : i % WIDTH < 48 ? 1311 : 65535));
            }
            return codes;
        },
        1);
    m_exported.emplace(ExportedDisplay::read(m_player));
    FoundPlace dark = foundAt(0.9, 0.5);
    dark.isLit = false;
    const auto places = compared({foundAt(0.25, 0.5), foundAt(0.6, 0.5), foundAt(0.9, 0.5), dark});
    EXPECT_EQ(places[0].shift, -1);
    EXPECT_NEAR(places[1].shift, 0, 1e-4);
    EXPECT_NEAR(places[2].shift, 0, 1e-4);
    EXPECT_EQ(places[3].shift, -1);
    EXPECT_EQ(places[0].channels, 1);
    EXPECT_EQ(places[3].channels, 0);
}

/// A projector in the middle of a ball that is turned to the right after its export.
class LitTurnTest : public LitShiftTest, public testing::WithParamInterface<InputKind> {
protected:
    static constexpr double SIDES = 40 * DEGREE;
    static constexpr double HEIGHTS = 45 * DEGREE;

    void turnTo(double heading) {
        load(BALL,
             channel("<Orientation z='" + std::to_string(heading) +
                     "' x='0' y='0'/><Frustum left='-40' right='40' bottom='-45' top='45'/>"),
             "<TargetData type='Spherical'/>");
    }

    /// How far what belongs to a place lies from it in the picture as it was, pixels.
    static double shiftOf(const P2& picture, double turn) {
        const double x = std::tan(SIDES) * (2 * picture[0] - 1);
        const double z = std::tan(HEIGHTS) * (2 * picture[1] - 1);
        const double ahead = std::cos(turn) - x * std::sin(turn);
        const double right = (x * std::cos(turn) + std::sin(turn)) / ahead;
        return std::hypot((right - x) / std::tan(SIDES) / 2 * WIDTH, (z / ahead - z) / std::tan(HEIGHTS) / 2 * HEIGHT);
    }
};

// The picture shows the edge between two faces of a cube and the faces above and below it, or the seam of a panorama.
TEST_P(LitTurnTest, ShowsHowFarItWentAcrossEdgesOfTheInput) {
    // What a warp of a node for each pixel leaves between them, pixels.
    constexpr double NODES = 0.02;
    const double heading = GetParam() == InputKind::CUBE ? 45 : 180;
    turnTo(heading);
    exportAs(GetParam(), WarpFormat::OBJ, white());
    std::vector<FoundPlace> found;
    for (int row = 0; row < 20; ++row) {
        for (int column = 0; column < 32; ++column) {
            found.push_back(foundAt((column + 0.4) / 32, (row + 0.7) / 20));
        }
    }
    for (const LitPlace& place : compared(found)) {
        EXPECT_NEAR(place.shift, 0, NODES);
        EXPECT_FALSE(place.lacksContent);
    }
    // By more than what a face shows beyond its edge, too; slopes are then those beside the place.
    for (const double turn : {0.5, 3.0}) {
        turnTo(heading + turn);
        const auto places = compared(found);
        for (std::size_t i = 0; i < places.size(); ++i) {
            const double expected = shiftOf(found[i].picture, turn * DEGREE);
            EXPECT_NEAR(places[i].shift, expected, 0.06 * turn * expected + NODES) << found[i].picture;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Inputs, LitTurnTest, testing::Values(InputKind::CUBE, InputKind::EQUIRECTANGULAR),
                         [](const auto& tested) { return Veltrani::DisplayExport::nameOf(tested.param); });

}  // namespace
