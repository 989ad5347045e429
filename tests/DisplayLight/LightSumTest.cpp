#include "DisplayLight/LightSum.h"

#include "AddedLight.h"

#include <algorithm>
#include <cmath>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

/// A channel with a picture of 400 x 250 pixels.
std::string small(const std::string& id, const std::string& elements) {
    return "<Projector id='" + id + "'><Name>" + id + "</Name><Resolution width='400' height='250'/>" + elements +
           "</Projector>";
}

std::string area(const std::string& id, double left, double right) {
    return small(id, "<ScreenArea left='" + std::to_string(left) + "' right='" + std::to_string(right) +
                         "' bottom='0' top='1'/>");
}

/// A wall around the direction of view: four metres wide and two high, five metres ahead of the eye in the origin.
const std::string WALL =
    "<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='5' z='0'/><Size width='4' "
    "height='2'/></Screen>";
const std::string BASIC = "<TargetData type='PlanarBasic'/>";
const std::string PROJECTORS = "<TargetData type='ProjectorCentric'/>";

class LightSumTest : public AddedLightTest {
protected:
    /// Two pictures that overlap in the middle fifth.
    void loadTwo() { load(WALL, area("A", 0, 0.6) + area("B", 0.4, 1), BASIC); }

    static ExportRequest requestOf(InputKind kind, std::shared_ptr<const ContentPicture> content) {
        ExportRequest request;
        request.input.kind = kind;
        request.content = std::move(content);
        return request;
    }

    /// Weights by the part of the overlap that lies to the left, in light; the curve makes code values of them.
    static Factors across(const BlendCurve& curve, double (*weightOfA)(double), double (*weightOfB)(double)) {
        return [=](std::size_t channel, const Point<int, 2>& pixels) {
            std::vector<std::uint16_t> codes;
            for (int i = 0; i < pixels[0] * pixels[1]; ++i) {
                const double u = (i % pixels[0] + 0.5) / pixels[0];
                const double s = channel == 0 ? 0.6 * u : 0.4 + 0.6 * u;
                const double part = std::clamp((s - 0.4) / 0.2, 0.0, 1.0);
                const double weight = channel == 0 ? weightOfA(part) : weightOfB(part);
                codes.push_back(static_cast<std::uint16_t>(std::lround(65535 * curve.codeOf(weight))));
            }
            return codes;
        };
    }

    /// (s, t) of what a place of a picture shows of the wall.
    static P2 onWall(const LitPicture& picture, std::size_t place) {
        const P3 direction = directionOf(picture, place);
        return {0.5 + 5 * direction[0] / direction[1] / 4, 0.5 + 5 * direction[2] / direction[1] / 2};
    }
};

TEST_F(LightSumTest, TheWeightsOfTwoPicturesAddUpAsTheirFormulasDo) {
    loadTwo();
    exportAll(requestOf(InputKind::SCREEN, white()));
    const BlendCurve curve = BlendCurve::ofGamma(2.2);
    addBlends(across(
                  curve, [](double part) { return (1 - part) * (1 - part); }, [](double part) { return part * part; }),
              2.2);
    const LitPicture picture = lit(400, 250);
    std::size_t measured = 0;
    double worst = 0;
    double darkest = 1;
    for (std::size_t i = 0; i < picture.places.size(); ++i) {
        const LitPlace& place = picture.places[i];
        const P2 at = onWall(picture, i);
        const bool isOn = at[0] >= 0 && at[0] <= 1 && at[1] >= 0 && at[1] <= 1;
        EXPECT_EQ(place.isOnScreen, isOn) << at;
        EXPECT_EQ(place.channels, isOn ? (at[0] > 0.4 && at[0] < 0.6 ? 2 : 1) : 0) << at;
        const double part = std::clamp((at[0] - 0.4) / 0.2, 0.0, 1.0);
        // What is interpolated between two pixels of the edge knows nothing of the kink there.
        const bool isKink = std::abs(at[0] - 0.4) < 0.003 || std::abs(at[0] - 0.6) < 0.003;
        if (isOn && !isKink) {
            const double sum = part * part + (1 - part) * (1 - part);
            worst = std::max({worst, std::abs(place.weight - sum), std::abs(place.light[1] - sum)});
            darkest = std::min<double>(darkest, place.weight);
            ++measured;
        }
    }
    EXPECT_GT(measured, 50'000U);
    EXPECT_LT(worst, 3e-4);
    EXPECT_NEAR(darkest, 0.5, 1e-3) << "in the middle of the overlap";
    EXPECT_THAT(picture.notes, IsEmpty());
}

TEST_F(LightSumTest, LinearWeightsAddUpToOneAndEveryFormOfAFileStatesThem) {
    loadTwo();
    struct Form {
        Json gamma;
        int bits;
        bool isAlpha;
        double tolerance;
    };
    for (const Form& form : {Form{2.2, 16, false, 3e-4}, Form{"srgb", 16, true, 3e-4}, Form{1, 16, false, 1e-4},
                             Form{2.2, 8, false, 0.02}, Form{1.8, 8, true, 0.02}}) {
        exportAll(requestOf(InputKind::SCREEN, white()));
        const BlendCurve curve =
            form.gamma.is_string() ? BlendCurve::srgb() : BlendCurve::ofGamma(form.gamma.get<double>());
        addBlends(across(
                      curve, [](double part) { return 1 - part; }, [](double part) { return part; }),
                  form.gamma, form.bits, form.isAlpha);
        const LitPicture picture = lit(200, 125);
        for (const LitPlace& place : picture.places) {
            ASSERT_NEAR(place.weight, place.isOnScreen ? 1 : 0, form.tolerance) << form.gamma << form.bits;
            ASSERT_NEAR(place.light[0], place.isOnScreen ? 1 : 0, form.tolerance);
        }
        EXPECT_LT(picture.figures().mostLight, form.tolerance);
        EXPECT_GT(picture.figures().mostLight, 0) << "nothing is exact";
    }
}

TEST_F(LightSumTest, WithoutBlendsLightAddsUpAndIsShownAsWhite) {
    loadTwo();
    // Code 128 of gamma 2.2.
    exportAll(requestOf(InputKind::SCREEN,
                        std::make_shared<const ContentPicture>(2, 2, std::vector<unsigned char>(12, 128))));
    const LitPicture picture = lit(200, 125);
    EXPECT_THAT(picture.notes, testing::ElementsAre(HasSubstr("no blends")));
    const double one = std::pow(128 / 255.0, 2.2);
    const auto shown = picture.shown();
    for (std::size_t i = 0; i < picture.places.size(); ++i) {
        const LitPlace& place = picture.places[i];
        ASSERT_NEAR(place.light[2], place.channels * one, 1e-4);
        ASSERT_FLOAT_EQ(place.weight, place.channels);
        const std::size_t down = picture.view.height() - 1 - i / picture.view.width();
        const int code = shown.colours[3 * (down * picture.view.width() + i % picture.view.width())];
        if (place.channels > 0) {
            ASSERT_NEAR(code, place.channels == 1 ? 128 : 255 * std::pow(2 * one, 1 / 2.2), 1);
        }
    }
    EXPECT_NEAR(picture.figures().mostLight, 1, 1e-6);
    EXPECT_EQ(picture.figures().tooBright, 0U);
    exportAll(requestOf(InputKind::SCREEN, white()));
    const auto all = static_cast<double>(picture.figures().lit);
    EXPECT_NEAR(static_cast<double>(lit(200, 125).figures().tooBright), 0.2 * all, 0.02 * all);
}

TEST_F(LightSumTest, ALiftAndResidualLightRaiseTheBlack) {
    load(WALL, area("A", 0, 1), BASIC);
    exportAll(requestOf(InputKind::SCREEN,
                        std::make_shared<const ContentPicture>(1, 1, std::vector<unsigned char>{0, 0, 255})));
    addBlends(
        [](std::size_t /*channel*/, const Point<int, 2>& pixels) {
            return std::vector<std::uint16_t>(static_cast<std::size_t>(pixels[0] * pixels[1]), 32768);
        },
        2);
    addLift(0, std::vector<std::uint16_t>(400 * 250, 6554), 3);
    const LitPicture picture = lit(100, 60);
    const LitPlace& middle = picture.places[30 * 100 + 50];
    EXPECT_NEAR(middle.light[0], 0.03 + 0.97 * 0.1 * 0.1, 1e-4);
    EXPECT_NEAR(middle.light[2], 0.03 + 0.97 * (0.5 * 0.5 + 0.1 * 0.1), 1e-4);
    EXPECT_NEAR(middle.weight, 0.25, 1e-4);
}

// What raises the black raises every other tone by as much light, so that no tone shows where a picture ends.
TEST_F(LightSumTest, WithLiftsAGreyIsAsEvenAsTheBlack) {
    loadTwo();
    constexpr double RESIDUAL = 0.003;
    const BlendCurve curve = BlendCurve::ofGamma(2.2);
    const Veltrani::DisplayBlend::DisplayBlender blender(config());
    for (const int code : {0, 128, 200}) {
        exportAll(
            requestOf(InputKind::SCREEN, std::make_shared<const ContentPicture>(
                                             2, 2, std::vector<unsigned char>(12, static_cast<unsigned char>(code)))));
        addBlendsOfTheDisplay(2.2);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            addLift(channel, blender.lift(channel, {RESIDUAL, RESIDUAL}).codes16(curve), 100 * RESIDUAL);
        }
        const double even = 2 * RESIDUAL + (1 - RESIDUAL) * std::pow(code / 255.0, 2.2);
        const LitPicture picture = lit(400, 250);
        std::size_t measured = 0;
        for (std::size_t i = 0; i < picture.places.size(); ++i) {
            const double s = onWall(picture, i)[0];
            // The lift ends over the outer eighths of the overlap.
            const bool isEven = s < 0.399 || (s > 0.425 && s < 0.575) || s > 0.601;
            if (picture.places[i].isOnScreen && isEven) {
                ASSERT_NEAR(picture.places[i].light[0], even, 2e-4) << code << ' ' << s;
                ++measured;
            }
        }
        EXPECT_GT(measured, 40'000U);
    }
}

TEST_F(LightSumTest, AShadowIsDark) {
    const std::string room =
        m_files.write("room.obj",
                      "v -2 5 -2\nv 2 5 -2\nv 2 5 2\nv -2 5 2\nv -0.5 2.5 -0.5\nv 0.5 2.5 -0.5\nv 0.5 2.5 0.5\n"
                      "v -0.5 2.5 0.5\nf 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n");
    // The projector in the origin, the eye beside it: it sees a part of the shadow of the board.
    load("<Screen shape='Mesh' fileUnit='m'><EyePoint x='1.5' y='0' z='0'/><ContentMesh file='" + room +
             "'/>"
             "<ImportOrientation up='Z' forward='Y'/></Screen>",
         small("P",
               "<Position x='0' y='0' z='0'/><Orientation z='0' x='0' y='0'/><Frustum left='-30' right='30' "
               "bottom='-30' top='30'/>"),
         PROJECTORS);
    exportAll(requestOf(InputKind::EQUIRECTANGULAR, white()));
    const LitPicture picture = lit(300, 300);
    std::size_t dark = 0;
    std::size_t onBoard = 0;
    for (std::size_t i = 0; i < picture.places.size(); ++i) {
        const P3 direction = directionOf(picture, i);
        const P3 board = P3{1.5, 0, 0} + direction * (2.5 / direction[1]);
        const P3 wall = P3{1.5, 0, 0} + direction * (5 / direction[1]);
        const double besideBoard = 0.5 - std::max(std::abs(board[0]), std::abs(board[2]));
        const double besideShadow = 1 - std::max(std::abs(wall[0]), std::abs(wall[2]));
        const double besideWall = 2 - std::max(std::abs(wall[0]), std::abs(wall[2]));
        if (std::min({std::abs(besideBoard), std::abs(besideShadow), std::abs(besideWall)}) < 1e-6) {
            continue;
        }
        const bool isLit = besideBoard > 0 || (besideWall > 0 && besideShadow < 0);
        ASSERT_EQ(picture.places[i].channels > 0, isLit) << wall;
        dark += !isLit && picture.places[i].isOnScreen ? 1 : 0;
        onBoard += besideBoard > 0 ? 1 : 0;
    }
    EXPECT_GT(dark, 3000U);
    EXPECT_GT(onBoard, 3000U);
}

/// A sheet with a projector on each side.
TEST_F(LightSumTest, TheSidesOfASheetAreApart) {
    const std::string front = small("Front",
                                    "<Position x='0' y='0' z='0'/><Orientation z='0' x='0' y='0'/><Frustum left='-15' "
                                    "right='15' bottom='-10' top='10'/>");
    const std::string back = small("Back",
                                   "<Position x='0' y='10' z='0'/><Orientation z='180' x='0' y='0'/><Frustum "
                                   "left='-15' right='15' bottom='-10' top='10'/>");
    load(WALL, front + back, PROJECTORS);
    exportAll(requestOf(InputKind::EQUIRECTANGULAR, white()));
    LitPicture picture = lit(100, 60);
    EXPECT_EQ(picture.places[30 * 100 + 50].channels, 1) << "the eye stands before it";
    EXPECT_THAT(picture.notes, testing::ElementsAre(HasSubstr("no blends")));
    // With the one behind alone, the screen is one for rear projection.
    load(WALL, back, PROJECTORS);
    exportAll(requestOf(InputKind::EQUIRECTANGULAR, white()));
    picture = lit(100, 60);
    EXPECT_EQ(picture.places[30 * 100 + 50].channels, 1);
    EXPECT_THAT(picture.notes, testing::Contains(HasSubstr("rear projection")));
}

TEST_F(LightSumTest, AContentThatIsMovedIsFoundByItsErrors) {
    loadTwo();
    ExportRequest request = requestOf(InputKind::SCREEN, white());
    request.formats = {WarpFormat::OBJ};
    exportAll(request);
    EXPECT_LT(lit(200, 125, true).figures().largestShift, 1e-6);
    // As if the projectors had been turned since: the picture lies a hundredth of the screen, and 4 % of it higher.
    load(WALL,
         small("A", "<ScreenArea left='0.01' right='0.61' bottom='0.04' top='1.04'/>") +
             small("B", "<ScreenArea left='0.41' right='1.01' bottom='0.04' top='1.04'/>"),
         BASIC);
    const LitPicture moved = lit(200, 125, true);
    const auto figures = moved.figures();
    const double pixels = std::hypot(0.01 / 0.6 * 400, 0.04 * 250);
    EXPECT_NEAR(figures.largestShift, pixels, 1e-3);
    EXPECT_NEAR(figures.meanShift, pixels, 1e-3);
    EXPECT_EQ(figures.shifted, figures.compared);
    EXPECT_EQ(figures.withoutContent, 0U);
    EXPECT_NEAR(moved.coarsestPixel, std::sqrt(4 * 0.6 / 400 * 2 / 250), 1e-6);
}

/// A hole in a warp of nodes is a place without content.
TEST_F(LightSumTest, LitPlacesWithoutContentAreCounted) {
    loadTwo();
    ExportRequest request = requestOf(InputKind::SCREEN, white());
    request.formats = {WarpFormat::MESH};
    request.nodes = Point<int, 2>{11, 11};
    exportAll(request);
    Json document = manifest();
    Json& file = document["views"][0]["files"][0];
    const std::string path = m_player + '/' + file["name"].get<std::string>();
    std::ifstream in(path);
    std::string text;
    std::size_t number = 0;
    for (std::string line; std::getline(in, line); ++number) {
        // The node in the middle, behind two lines.
        text += (number == 2 + 60 ? line.substr(0, line.rfind(' ')) + " -1" : line) + '\n';
    }
    in.close();
    std::ofstream(path) << text;
    file["sha256"] = Veltrani::DisplayReport::ReportHead::source(path).sha256;
    writeManifest(document);
    const auto figures = lit(300, 150, true).figures();
    // Four of the hundred cells of a picture that fills 0.6 of the screen.
    const double expected = 0.04 * 0.6 * static_cast<double>(figures.lit);
    EXPECT_NEAR(static_cast<double>(figures.withoutContent), expected, 0.1 * expected);
}

// The second one has a picture on more of the wall.
TEST_F(LightSumTest, TheCoarsestProjectorIsNamedAndEachOneIsCounted) {
    load(WALL, area("A", 0, 0.3) + area("B", 0.3, 1), BASIC);
    exportAll(requestOf(InputKind::FRUSTUM, white()));
    LightRequest request;
    request.width = 20;
    request.height = 12;
    std::vector<std::pair<std::size_t, std::size_t>> calls;
    request.progress = [&calls](std::size_t done, std::size_t total) { calls.emplace_back(done, total); };
    const std::vector<std::pair<std::size_t, std::size_t>> expected{{1, 2}, {2, 2}};
    const LightSum sum(config(), ExportedDisplay::read(m_player));
    const LitPicture picture = sum.picture(request);
    EXPECT_EQ(picture.coarsest, "channel B (B)");
    EXPECT_NEAR(picture.coarsestPixel, std::sqrt(4 * 0.7 / 400 * 2 / 250), 1e-6);
    EXPECT_EQ(calls, expected);
    EXPECT_THAT(picture.notes, testing::Contains(HasSubstr("the input is a frustum: each channel shows the whole")));
    calls.clear();
    EXPECT_EQ(sum.surface(1000, request.progress).coarsest, "channel B (B)");
    EXPECT_EQ(calls, expected);
    load(WALL, area("A", 0, 1), BASIC);
    exportAll(requestOf(InputKind::FRUSTUM, white()));
    EXPECT_THAT(lit(20, 12).notes, testing::Each(testing::Not(HasSubstr("frustum")))) << "of one channel alone";
}

TEST_F(LightSumTest, TheViewOfTheFirstEyeIsTaken) {
    loadTwo();
    exportAll(requestOf(InputKind::SCREEN, white()));
    Json document = manifest();
    Json other = document["views"][0];
    other["eyeNumber"] = 2;
    other["channel"]["pixels"] = {7, 5};
    document["views"].insert(document["views"].begin(), other);
    writeManifest(document);
    EXPECT_EQ(faultOfSum(), "");
}

TEST_F(LightSumTest, MeansAreShownOfWhatIsSmallerThanAPixelOfTheEye) {
    load(WALL, area("A", 0, 1), BASIC);
    // Every second line is white.
    std::vector<unsigned char> lines;
    for (int i = 0; i < 400 * 3; ++i) {
        lines.push_back(i / 3 % 2 == 0 ? 255 : 0);
    }
    ExportRequest request = requestOf(InputKind::SCREEN, std::make_shared<const ContentPicture>(400, 1, lines));
    request.formats = {WarpFormat::PFM};
    exportAll(request);
    const LitPicture picture = lit(60, 40, false, false);
    EXPECT_NEAR(picture.places[20 * 60 + 30].light[0], 0.5, 0.02);
    EXPECT_NEAR(picture.places[20 * 60 + 30].weight, 1, 1e-5);
}

TEST_F(LightSumTest, WhatDoesNotBelongTogetherIsRefused) {
    loadTwo();
    exportAll(requestOf(InputKind::SCREEN, white()));
    const Json good = manifest();
    Json bad = good;
    bad["views"].erase(1);
    writeManifest(bad);
    EXPECT_THAT(faultOfSum(), AllOf(HasSubstr("manifest.json: has nothing of channel B (B), a channel of the display"),
                                    HasSubstr("without --channel")));
    bad = good;
    bad["views"][1]["channel"]["projector"] = "C";
    bad["views"].push_back(good["views"][1]);
    writeManifest(bad);
    EXPECT_THAT(faultOfSum(), HasSubstr("has channel B (C), and the display has no such channel"));
    bad = good;
    bad["views"][1]["channel"]["pixels"] = {400, 251};
    writeManifest(bad);
    EXPECT_THAT(faultOfSum(), HasSubstr("found pictures of 400 x 251 pixels, expected 400 x 250 pixels"));
    bad = good;
    auto& files = bad["views"][0]["files"];
    files.erase(std::find_if(files.begin(), files.end(), [](const Json& file) { return file["kind"] == "content"; }));
    writeManifest(bad);
    EXPECT_THAT(faultOfSum(), HasSubstr("channel A (A): " + m_player +
                                        "/manifest.json: it has no content: export the display with --content"));
    bad = good;
    bad["views"][0]["blend"] = {{"use", "factor"}, {"gamma", 2.2}, {"lift", nullptr}};
    writeManifest(bad);
    EXPECT_THAT(faultOfSum(), HasSubstr("names no file of its blend"));
    writeManifest(good);
    addBlends(
        [](std::size_t, const Point<int, 2>& pixels) {
            return std::vector<std::uint16_t>(static_cast<std::size_t>(pixels[0] * pixels[1]), 65535);
        },
        1);
    bad = manifest();
    bad["views"][0]["blend"]["lift"] = {{"residualPercent", 1}};
    writeManifest(bad);
    EXPECT_THAT(faultOfSum(), HasSubstr("names no file of its black lift"));
    writeManifest(good);
    EXPECT_EQ(faultOfSum(), "");
}

}  // namespace
