#include "DisplayLight/LitSurface.h"

#include "AddedLight.h"
#include "DisplayReport/coverage/DisplayLights.h"

#include <algorithm>
#include <cmath>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::DisplayLight::LitSurface;

constexpr std::size_t PLACES = 20'000;

std::string small(const std::string& id, const std::string& elements) {
    return "<Projector id='" + id + "'><Name>" + id + "</Name><Resolution width='400' height='250'/>" + elements +
           "</Projector>";
}

std::string area(const std::string& id, double left, double right) {
    return small(id, "<ScreenArea left='" + std::to_string(left) + "' right='" + std::to_string(right) +
                         "' bottom='0' top='1'/>");
}

const std::string WALL =
    "<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='5' z='0'/><Size width='4' "
    "height='2'/></Screen>";
const std::string BASIC = "<TargetData type='PlanarBasic'/>";
const std::string PROJECTORS = "<TargetData type='ProjectorCentric'/>";

class LitSurfaceTest : public AddedLightTest {
protected:
    /// Exports and adds up a content that is the same everywhere.
    LitSurface litAllOver(InputKind kind, unsigned char code) {
        ExportRequest request;
        request.input.kind = kind;
        request.content = std::make_shared<const ContentPicture>(2, 2, std::vector<unsigned char>(12, code));
        request.nodes = Point<int, 2>{9, 9};
        exportAll(request);
        return litSurface();
    }

    [[nodiscard]] LitSurface litSurface(std::size_t places = PLACES) const {
        return LightSum(config(), ExportedDisplay::read(m_player)).surface(places);
    }

    static std::vector<int> sidesOf(const LitSurface& surface) {
        std::vector<int> sides;
        for (const auto& [seen, places] : surface.sides) {
            sides.push_back(seen);
        }
        return sides;
    }

    static std::size_t litOf(const std::vector<LitPlace>& places, int channels) {
        return static_cast<std::size_t>(
            std::count_if(places.begin(), places.end(), [=](const auto& place) { return place.channels == channels; }));
    }
};

/// Of a wall by its numbers, and of one that is a mesh with the same coordinates.
TEST_F(LitSurfaceTest, TwoPicturesAddUpWhereTheyOverlap) {
    const std::string mesh = m_files.write(
        "wall.obj",
        "v -2 5 -1\nv 2 5 -1\nv 2 5 1\nv -2 5 1\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 1/1 2/2 3/3\nf 1/1 3/3 4/4\n");
    for (const std::string& screen :
         {WALL, "<Screen shape='Mesh' fileUnit='m'><EyePoint x='0' y='0' z='0'/><ContentMesh file='" + mesh +
                    "'/><ImportOrientation up='Z' forward='Y'/></Screen>"}) {
        load(screen, area("A", 0, 0.6) + area("B", 0.4, 1), BASIC);
        const LitSurface lit = litAllOver(InputKind::SCREEN, 128);
        const double one = std::pow(128 / 255.0, 2.2);
        ASSERT_THAT(sidesOf(lit), ElementsAre(0)) << "screen coordinates know no side";
        std::size_t doubled = 0;
        const std::vector<LitPlace>& places = lit.sides.at(0);
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (!lit.chart.grid.places[i].isSeen) {
                ASSERT_FALSE(places[i].isOnScreen);
                continue;
            }
            const double s = lit.chart.grid.places[i].point[0] / 4 + 0.5;
            if (std::min(std::abs(s - 0.4), std::abs(s - 0.6)) > 1e-9) {
                const int count = s > 0.4 && s < 0.6 ? 2 : 1;
                ASSERT_EQ(places[i].channels, count) << s;
                ASSERT_NEAR(places[i].light[1], count * one, 1e-4);
                ASSERT_FLOAT_EQ(places[i].weight, static_cast<float>(count));
                // Into single precision and back.
                ASSERT_LT(places[i].shift, 0.01F);
                doubled += count == 2 ? 1 : 0;
            }
        }
        EXPECT_NEAR(static_cast<double>(doubled), 0.2 * static_cast<double>(litOf(places, 1) + doubled), 0.01 * PLACES);
        EXPECT_THAT(lit.notes, ElementsAre(HasSubstr("no blends")));
    }
}

TEST_F(LitSurfaceTest, EachSideOfASheetShowsItsOwnLight) {
    const std::string front = small("Front",
                                    "<Position x='0' y='0' z='0'/><Orientation z='0' x='0' y='0'/><Frustum left='-15' "
                                    "right='15' bottom='-9' top='9'/>");
    const std::string back = small("Back",
                                   "<Position x='0' y='10' z='0'/><Orientation z='180' x='0' y='0'/><Frustum "
                                   "left='-9' right='9' bottom='-5' top='5'/>");
    load(WALL, front + back, PROJECTORS);
    LitSurface lit = litAllOver(InputKind::EQUIRECTANGULAR, 255);
    ASSERT_THAT(sidesOf(lit), ElementsAre(-1, 1));
    const auto part = [](double across, double along) {
        return 4 * std::tan(across) * std::tan(along) * 25 / 8 * PLACES;
    };
    const double degree = std::acos(-1) / 180;
    // The wall's normal points away from the eye, which looks along it.
    EXPECT_NEAR(static_cast<double>(litOf(lit.sides.at(1), 1)), part(15 * degree, 9 * degree), 0.02 * PLACES);
    EXPECT_NEAR(static_cast<double>(litOf(lit.sides.at(-1), 1)), part(9 * degree, 5 * degree), 0.02 * PLACES);
    // With the one behind alone, light goes through: the eye sees it.
    load(WALL, back, PROJECTORS);
    lit = litAllOver(InputKind::EQUIRECTANGULAR, 255);
    EXPECT_THAT(sidesOf(lit), ElementsAre(1));
    EXPECT_THAT(lit.notes, testing::Contains(HasSubstr("rear projection")));
}

// What the middle of the view shows is dark.
TEST_F(LitSurfaceTest, AScreenThatIsLitFromBehindIsKnownByAnyPartOfIt) {
    const auto back = [](const std::string& id, const std::string& x) {
        return small(id, "<Position x='" + x +
                             "' y='10' z='0'/><Orientation z='180' x='0' y='0'/><Frustum left='-5' "
                             "right='5' bottom='-5' top='5'/>");
    };
    load(WALL, back("Left", "-1.4") + back("Right", "1.4"), PROJECTORS);
    const LitSurface lit = litAllOver(InputKind::EQUIRECTANGULAR, 255);
    EXPECT_THAT(sidesOf(lit), ElementsAre(1));
    EXPECT_THAT(lit.notes, testing::Contains(HasSubstr("rear projection")));
}

TEST_F(LitSurfaceTest, LightOfBothKindsOfSideIsMerged) {
    LitSurface lit;
    lit.chart.grid.width = 1;
    lit.chart.grid.places.resize(1);
    lit.chart.grid.places[0].isSeen = true;
    lit.side(0)[0].weight = 0.25F;
    lit.side(1)[0].weight = 0.5F;
    lit.side(0)[0].channels = 1;
    lit.side(1)[0].channels = 2;
    lit.side(0)[0].light = {0.125F, 0.25F, 0.5F};
    lit.side(1)[0].light = {0.5F, 0.25F, 0.0F};
    lit.side(0)[0].shift = 0.75F;
    lit.side(1)[0].shift = 0.5F;
    lit.side(0)[0].lacksContent = true;
    lit.mergeSides();
    ASSERT_THAT(sidesOf(lit), ElementsAre(-1, 1));
    EXPECT_FLOAT_EQ(lit.sides.at(-1)[0].weight, 0.25F);
    EXPECT_FLOAT_EQ(lit.sides.at(-1)[0].shift, 0.75F);
    EXPECT_THAT(lit.sides.at(-1)[0].light, ElementsAre(0.125F, 0.25F, 0.5F));
    EXPECT_TRUE(lit.sides.at(-1)[0].isOnScreen);
    const LitPlace& place = lit.sides.at(1)[0];
    EXPECT_FLOAT_EQ(place.weight, 0.75F);
    EXPECT_EQ(place.channels, 3);
    EXPECT_THAT(place.light, ElementsAre(0.625F, 0.5F, 0.5F));
    EXPECT_FLOAT_EQ(place.shift, 0.75F) << "the worse one";
    EXPECT_TRUE(place.lacksContent);
}

TEST_F(LitSurfaceTest, WhatIsAlikeOnBothSidesOrOnOneAloneStaysApart) {
    LitSurface dark;
    dark.chart.grid.width = 1;
    dark.chart.grid.places.resize(2);
    dark.mergeSides();
    ASSERT_THAT(sidesOf(dark), ElementsAre(0)) << "of a surface without light both sides are dark";
    EXPECT_EQ(dark.sides.at(0).size(), 2U);
    LitSurface front = dark;
    front.sides.clear();
    front.side(1)[0].weight = 0.5F;
    front.mergeSides();
    EXPECT_THAT(sidesOf(front), ElementsAre(1));
    front.side(-1)[1].weight = 0.25F;
    front.mergeSides();
    ASSERT_THAT(sidesOf(front), ElementsAre(-1, 1));
    EXPECT_EQ(front.sides.at(1)[1].weight, 0);
}

/// Codes of the curve with gamma 1.
TEST_F(LitSurfaceTest, APixelBesideATriangleIsTheMeanOfTwoWithinIt) {
    LitSurface lit;
    lit.curve = BlendCurve::ofGamma(1);
    lit.chart.grid.width = 2;
    lit.chart.grid.places.resize(4);
    lit.chart.grid.places[0].isSeen = true;
    lit.chart.grid.places[1].isSeen = true;
    lit.chart.seams.push_back({2, 0, 1});
    lit.chart.step = 0.25;
    lit.side(1)[0].light = {10 / 255.0F, 100 / 255.0F, 0.0F};
    lit.side(1)[1].light = {21 / 255.0F, 40 / 255.0F, 1.0F};
    lit.side(1)[0].channels = 1;
    lit.side(1)[3].light = {1, 1, 1};
    const auto scene = lit.scene("");
    EXPECT_THAT(scene.sides.at(0).shown.colours, ElementsAre(10, 100, 0, 21, 40, 255, 16, 70, 128, 0, 0, 0));
    EXPECT_EQ(scene.sides.at(0).shown.width, 2U);
    EXPECT_EQ(scene.sides.at(0).shown.height, 2U);
    EXPECT_EQ(scene.facts[0], "2 x 2 places, one every 0.25: what is smaller is shown as its mean");
    EXPECT_EQ(scene.facts[1], "places: 1 lit, 1 on the screen not lit");
}

TEST_F(LitSurfaceTest, APageHasPicturesOfOneSizeAndStatesHowFineTheyAre) {
    load(WALL, area("A", 0, 1), BASIC);
    const auto scene = litAllOver(InputKind::SCREEN, 128).scene("m");
    ASSERT_EQ(scene.sides.size(), 1U);
    const auto& side = scene.sides[0];
    for (const auto* picture : {&side.shown, &side.shift, &side.unevenness}) {
        EXPECT_EQ(picture->width, 200U);
        EXPECT_EQ(picture->height, 100U);
        EXPECT_EQ(picture->colours.size(), 3U * 200 * 100);
    }
    EXPECT_EQ(side.shown.colours[0], 128);
    EXPECT_EQ(side.shift.colours[0], 0);
    EXPECT_NEAR(side.unevenness.colours[0], 128, 1);
    EXPECT_THAT(scene.facts[0], AllOf(HasSubstr("200 x 100 places"), HasSubstr("0.02 m")));
    EXPECT_EQ(scene.facts[1], "places: 20000 lit, 0 on the screen not lit");
    EXPECT_EQ(scene.coordinates.size(), scene.vertices.size());
}

/// Another route: the measurement of the coverage, place by place; and the picture of the eye, where it sees the place.
class LitSurfaceOfDisplayTest : public LitSurfaceTest, public testing::WithParamInterface<const char*> {};

TEST_P(LitSurfaceOfDisplayTest, IsLitLikeTheCoverageAndThePicture) {
    loadAny(GetParam());
    const LitSurface lit = litAllOver(InputKind::EQUIRECTANGULAR, 200);
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    const auto lights = Veltrani::DisplayReport::DisplayLights::of(config(), surface).lights;
    const LitPicture picture = this->lit(400, 250, false, false);
    const P3 eye = picture.view.frame().eye;
    std::size_t compared = 0;
    std::size_t seenAlike = 0;
    std::size_t seen = 0;
    for (const auto& [side, places] : lit.sides) {
        for (std::size_t i = 0; i < places.size(); i += 7) {
            const auto& place = lit.chart.grid.places[i];
            if (!place.isSeen) {
                continue;
            }
            const bool hasParameters = !lit.chart.grid.parameters.empty();
            const Veltrani::DisplayReport::SurfacePoint point{
                place.point, hasParameters ? lit.chart.grid.parameters[i] : P2(), hasParameters};
            const auto count = std::count_if(lights.begin(), lights.end(),
                                             [&point](const auto& light) { return light->lights(point); });
            ASSERT_EQ(places[i].channels, count) << place.point;
            ++compared;
            const auto at = picture.view.placeOf(place.point - eye);
            const bool isInPicture = at && (*at)[0] >= 0 && (*at)[1] >= 0 &&
                                     (*at)[0] < static_cast<double>(picture.view.width()) &&
                                     (*at)[1] < static_cast<double>(picture.view.height());
            if (isInPicture && !channels().empty()) {
                const auto pixel =
                    static_cast<std::size_t>((*at)[1]) * picture.view.width() + static_cast<std::size_t>((*at)[0]);
                ++seen;
                seenAlike += std::abs(picture.places[pixel].weight - places[i].weight) < 0.01F ? 1 : 0;
            }
        }
    }
    EXPECT_GT(compared, PLACES / 20);
    const bool isMirror = std::string(GetParam()) == "collimated";
    if (!isMirror) {
        // Borders fall between the two grids.
        EXPECT_GT(static_cast<double>(seenAlike), 0.95 * static_cast<double>(seen));
        EXPECT_GT(seen, compared / 4);
    }
}

INSTANTIATE_TEST_SUITE_P(Displays, LitSurfaceOfDisplayTest,
                         testing::Values("planetarium", "round", "cave", "collimated", "curved-wall", "lens-cylinder",
                                         "warped-wall", "mesh-rays"),
                         [](const auto& tested) {
                             std::string name = tested.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
