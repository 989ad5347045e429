#include "DisplayLight/ProjectedLight.h"

#include "AddedLight.h"

#include <cmath>

namespace {

using Veltrani::DisplayBlend::BlendCurve;
using Veltrani::DisplayLight::PlayedPictures;
using Veltrani::DisplayLight::ProjectedLight;
using Light = ProjectedLight::Light;
using P2 = Point<double, 2>;

const BlendCurve LINEAR = BlendCurve::ofGamma(1);

void expectLight(const Light& found, const std::array<double, 4>& expected, double tolerance = 1e-6) {
    for (std::size_t part = 0; part < found.size(); ++part) {
        EXPECT_NEAR(found[part], expected[part], tolerance) << "part " << part;
    }
}

/// One pixel.
Light lightOf(const PlayedPictures& pictures, const BlendCurve& curve, double residual) {
    return ProjectedLight(pictures, curve, residual).at({0.5, 0.5});
}

TEST(ProjectedLight, IsContentTimesFactorWithTheLiftOverTheResidualLight) {
    // 51 / 255 is a fifth; the factor is half of 65535 but for rounding.
    expectLight(lightOf({1, 1, {0, 51, 255}, {}, {}}, BlendCurve::ofGamma(2), 0), {0, 0.04, 1, 1});
    expectLight(lightOf({1, 1, {0, 51, 255}, {32768}, {}}, BlendCurve::ofGamma(2), 0), {0, 0.01, 0.25, 0.25}, 2e-5);
    expectLight(lightOf({1, 1, {0, 51, 255}, {32768}, {6554}}, BlendCurve::ofGamma(2), 0.5), {0.505, 0.51, 0.63, 0.25},
                2e-5);
    // More than white is none.
    expectLight(lightOf({1, 1, {51, 204, 255}, {}, {26214}}, LINEAR, 0.25), {0.7, 1, 1, 1});
}

// A player has code values of 16 bits, rounded to the nearest one.
TEST(ProjectedLight, ProductsOfCodesAreRounded) {
    const auto codeOf = [](std::uint8_t content, std::uint16_t factor) {
        return 65535 * lightOf({1, 1, {content, content, content}, {factor}, {}}, LINEAR, 0)[1];
    };
    EXPECT_NEAR(codeOf(1, 200), 1, 1e-3);
    EXPECT_NEAR(codeOf(1, 127), 0, 1e-3);
    EXPECT_NEAR(codeOf(1, 128), 1, 1e-3);
    EXPECT_NEAR(codeOf(100, 51000), 20000, 1e-2);
}

/// Grey of pixels as parts of white, row by row from the top, in codes that hold it exactly.
PlayedPictures greys(std::size_t width, std::size_t height, const std::vector<int>& codes) {
    PlayedPictures pictures{width, height, {}, {}, {}};
    for (const int code : codes) {
        pictures.content.insert(pictures.content.end(), 3, static_cast<std::uint8_t>(code));
        pictures.factor.push_back(static_cast<std::uint16_t>(65535));
    }
    return pictures;
}

double codeAt(const ProjectedLight& light, const P2& place, double footprint = 0) {
    const Light found = light.at(place, footprint);
    EXPECT_EQ(found[0], found[2]);
    return 255.0 * found[0];
}

TEST(ProjectedLight, BetweenTheMiddlesOfPixelsItIsLinearBothWays) {
    const ProjectedLight light(greys(3, 2, {0, 40, 200, 80, 100, 180}), LINEAR, 0);
    EXPECT_EQ(light.width(), 3U);
    EXPECT_EQ(light.height(), 2U);
    // The upper row is the first one.
    EXPECT_NEAR(codeAt(light, {0.5 / 3, 0.75}), 0, 1e-4);
    EXPECT_NEAR(codeAt(light, {2.5 / 3, 0.75}), 200, 1e-4);
    EXPECT_NEAR(codeAt(light, {1.5 / 3, 0.25}), 100, 1e-4);
    EXPECT_NEAR(codeAt(light, {0.75 / 3, 0.75}), 10, 1e-4);
    EXPECT_NEAR(codeAt(light, {2.0 / 3, 0.75}), 120, 1e-4);
    EXPECT_NEAR(codeAt(light, {2.25 / 3, 0.25}), 160, 1e-4);
    EXPECT_NEAR(codeAt(light, {0.5 / 3, 0.625}), 20, 1e-4);
    EXPECT_NEAR(codeAt(light, {1.25 / 3, 0.375}), 0.75 * 95 + 0.25 * 30, 1e-4);
    // Beyond the outermost middles it is as there.
    EXPECT_NEAR(codeAt(light, {0.0, 1.0}), 0, 1e-4);
    EXPECT_NEAR(codeAt(light, {1.0, 1.0}), 200, 1e-4);
    EXPECT_NEAR(codeAt(light, {0.0, 0.0}), 80, 1e-4);
    EXPECT_NEAR(codeAt(light, {1.0, 0.0}), 180, 1e-4);
    EXPECT_NEAR(codeAt(light, {1.0, 0.5}), 190, 1e-4);
    const ProjectedLight column(greys(1, 4, {0, 100, 200, 40}), LINEAR, 0);
    EXPECT_NEAR(codeAt(column, {0.5, 0.75}), 50, 1e-4);
    EXPECT_NEAR(codeAt(column, {0.5, 0.5}), 150, 1e-4);
    const ProjectedLight row(greys(4, 1, {0, 100, 200, 40}), LINEAR, 0);
    EXPECT_NEAR(codeAt(row, {0.25, 0.5}), 50, 1e-4);
    EXPECT_NEAR(codeAt(row, {0.5, 0.5}), 150, 1e-4);
}

/// A footprint of two pixels sees a picture of half the size, one of four that of a quarter: here averaged by hand.
TEST(ProjectedLight, AFootprintSeesTheMeanOfWhatItCovers) {
    const ProjectedLight light(greys(4, 6, {0,  8,  16, 24,   //
                                            4,  12, 20, 28,   //
                                            40, 48, 56, 64,   //
                                            80, 0,  8,  240,  //
                                            12, 16, 20, 24,   //
                                            0,  4,  8,  12}),
                               LINEAR, 0);
    const ProjectedLight halves(greys(2, 3, {6, 22, 42, 92, 8, 16}), LINEAR, 0);
    // Of an odd side the last row counts twice.
    const ProjectedLight quarters(greys(1, 2, {(6 + 22 + 42 + 92) / 4, (8 + 16) / 2}), LINEAR, 0);
    ASSERT_EQ((6 + 22 + 42 + 92) % 4, 2);
    for (const double u : {0.1, 0.25, 0.45, 0.6, 0.8, 1.0}) {
        for (const double v : {0.0, 0.2, 0.35, 0.5, 0.75, 0.9}) {
            const double pixel = codeAt(light, {u, v});
            const double half = codeAt(halves, {u, v});
            const double quarter = codeAt(quarters, {u, v}) + 0.5 * std::clamp(2 * v - 0.5, 0.0, 1.0);
            EXPECT_EQ(codeAt(light, {u, v}, 0.3), pixel) << "less than a pixel is one";
            EXPECT_EQ(codeAt(light, {u, v}, 1), pixel);
            EXPECT_NEAR(codeAt(light, {u, v}, 2), half, 1e-4);
            EXPECT_NEAR(codeAt(light, {u, v}, 4), quarter, 1e-4);
            EXPECT_NEAR(codeAt(light, {u, v}, std::sqrt(2.0)), (pixel + half) / 2, 1e-4);
            EXPECT_NEAR(codeAt(light, {u, v}, 2 * std::pow(2, 0.25)), 0.75 * half + 0.25 * quarter, 1e-4);
            EXPECT_NEAR(codeAt(light, {u, v}, 1000), quarter, 1e-4) << "there is no coarser one";
        }
    }
}

TEST(ProjectedLight, OfAnOddSideTheLastPixelCountsTwice) {
    const ProjectedLight light(greys(3, 3, {0, 8, 20, 16, 24, 40, 100, 120, 200}), LINEAR, 0);
    EXPECT_NEAR(codeAt(light, {0.25, 0.75}, 2), 12, 1e-4);
    EXPECT_NEAR(codeAt(light, {0.75, 0.75}, 2), 30, 1e-4);
    EXPECT_NEAR(codeAt(light, {0.25, 0.25}, 2), 110, 1e-4);
    EXPECT_NEAR(codeAt(light, {0.75, 0.25}, 2), 200, 1e-4);
    EXPECT_NEAR(codeAt(light, {0.3, 0.6}, 4), (12 + 30 + 110 + 200) / 4.0, 1e-4);
    // A line has no means.
    const ProjectedLight line(greys(1, 4, {0, 100, 200, 40}), LINEAR, 0);
    EXPECT_NEAR(codeAt(line, {0.5, 0.875}, 4), 0, 1e-4);
}

/// Pictures of an export whose channel has 8 x 5 pixels.
class PlayedPicturesTest : public AddedLightTest {
protected:
    void SetUp() override {
        load(displays::FLAT,
             "<Projector id='A'><Name>A</Name><Resolution width='8' height='5'/>" + displays::WHOLE_AREA +
                 "</Projector>",
             "<TargetData type='PlanarBasic'/>");
        ExportRequest request;
        request.input.kind = InputKind::SCREEN;
        request.content = white();
        exportAll(request);
    }

    [[nodiscard]] std::string faultOfReading() const {
        try {
            const ExportedDisplay exported = ExportedDisplay::read(m_player);
            static_cast<void>(PlayedPictures::read(exported, exported.views().front()));
        } catch (const VeltraniExceptionBase& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "";
    }

    /// Replaces the content by a white one of another size.
    void writeContent(std::size_t width, std::size_t height) {
        Json document = manifest();
        for (Json& file : document["views"][0]["files"]) {
            if (file["kind"] == "content") {
                const std::string path = m_player + '/' + file["name"].get<std::string>();
                std::ofstream out(path, std::ios::binary);
                Veltrani::DisplayReport::PngPicture{width, height, std::vector<unsigned char>(3 * width * height, 255)}
                    .write(out);
                out.close();
                file["sha256"] = Veltrani::DisplayReport::ReportHead::source(path).sha256;
            }
        }
        writeManifest(document);
    }
};

TEST_F(PlayedPicturesTest, OfAnotherSizeThanTheChannelsAreRefused) {
    EXPECT_EQ(faultOfReading(), "");
    writeContent(8, 5);
    EXPECT_EQ(faultOfReading(), "");
    writeContent(8, 4);
    EXPECT_THAT(faultOfReading(),
                testing::HasSubstr("found 8 x 4 pixels, expected 8 x 5 pixels, those of the channel"));
    writeContent(9, 5);
    EXPECT_THAT(faultOfReading(), testing::HasSubstr("found 9 x 5 pixels, expected 8 x 5 pixels"));
}

TEST_F(PlayedPicturesTest, OfABlendHoldFactorsWhateverItsForm) {
    std::vector<std::uint16_t> codes;
    for (int i = 0; i < 40; ++i) {
        codes.push_back(static_cast<std::uint16_t>(257 * 6 * i));
    }
    const auto factors = [&codes](std::size_t /*channel*/, const Point<int, 2>& /*pixels*/) { return codes; };
    const Json plain = manifest();
    for (const int bits : {8, 16}) {
        for (const bool isAlpha : {false, true}) {
            writeManifest(plain);
            addBlends(factors, 1, bits, isAlpha);
            const ExportedDisplay exported = ExportedDisplay::read(m_player);
            const PlayedPictures pictures = PlayedPictures::read(exported, exported.views().front());
            EXPECT_EQ(pictures.width, 8U);
            EXPECT_EQ(pictures.height, 5U);
            EXPECT_EQ(pictures.content, std::vector<std::uint8_t>(120, 255));
            EXPECT_EQ(pictures.factor, codes) << bits << ' ' << isAlpha;
            EXPECT_TRUE(pictures.lift.empty());
        }
    }
    addLift(0, codes, 1);
    const ExportedDisplay exported = ExportedDisplay::read(m_player);
    EXPECT_EQ(PlayedPictures::read(exported, exported.views().front()).lift, codes);
}

}  // namespace
