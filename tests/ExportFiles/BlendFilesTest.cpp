#include "ExportFiles/BlendFiles.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/coverage/DisplayLights.h"
#include "ExportFiles/ViewExport.h"
#include "ExportedDisplays.h"
#include "support/GreyPngImage.h"
#include "support/LightSums.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <functional>
#include <sstream>

namespace {

using namespace Veltrani::ExportFiles;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Veltrani::DisplayBlend::BlendCurve;
using Veltrani::DisplayBlend::BlendPicture;
using Veltrani::DisplayBlend::BlendUse;
using Veltrani::DisplayReport::ChannelChoice;
using Json = nlohmann::json;

constexpr std::size_t PLACES = repetitions(std::size_t{100'000});
constexpr double MOST_OFF_8 = 0.02;

/// What a file of factors, of opacities or of lifts states in light, worked out beside the library.
BlendPicture lightOf(const GreyPngImage& image, const std::function<double(double)>& lightOfCode) {
    const double white = image.bits == 16 ? 65535 : 255;
    BlendPicture picture{image.width, image.height, std::vector<float>(image.width * image.height)};
    for (std::size_t down = 0; down < image.height; ++down) {
        for (std::size_t column = 0; column < image.width; ++column) {
            const std::size_t i = down * image.width + column;
            const double code = image.opacity.empty() ? image.grey[i] / white : 1 - image.opacity[i] / white;
            picture.light[(image.height - 1 - down) * image.width + column] = static_cast<float>(lightOfCode(code));
        }
    }
    return picture;
}

double ofGamma22(double code) {
    return std::pow(code, 2.2);
}

/// Every channel of a display, exported.
class BlendFilesOfDisplay : public testing::Test {
protected:
    ~BlendFilesOfDisplay() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    void load(const std::string& display) {
        m_config = XMLConfigFile::parse(display, "display.xml");
        ASSERT_TRUE(Veltrani::DisplayReport::ScreenLoader::load(*m_config).empty());
    }

    void loadExample(const std::string& name) {
        m_config = XMLConfigFile::load(sourceFolder() + "/examples/" + name + "/display.xml");
        ASSERT_TRUE(Veltrani::DisplayReport::ScreenLoader::load(*m_config).empty());
    }

    void exportAll() {
        m_request.nodes = Point<int, 2>{9, 7};
        const ViewExport exporter(*m_config, m_request);
        EXPECT_THAT(exporter.withoutLight(), testing::IsEmpty());
        for (const std::wstring& id : m_config->getProjectorConfigIds()) {
            const ChannelChoice channel = ChannelChoice::of(*m_config, Veltrani::toUtf8(id));
            m_views.push_back(Json::parse(exporter.write({channel, std::nullopt}, m_folder.path(), {}).json));
        }
    }

    /// The only file of a kind and depth of each channel.
    [[nodiscard]] std::vector<BlendPicture> read(const std::string& kind, int bits,
                                                 const std::function<double(double)>& lightOfCode) const {
        std::vector<BlendPicture> pictures;
        for (const Json& view : m_views) {
            for (const Json& file : view["files"]) {
                if (file["kind"] == kind && file["bits"] == bits) {
                    const GreyPngImage image = GreyPngImage::read(m_folder.read(file["name"]));
                    EXPECT_EQ(image.bits, bits);
                    pictures.push_back(lightOf(image, lightOfCode));
                }
            }
        }
        EXPECT_EQ(pictures.size(), m_views.size());
        return pictures;
    }

    [[nodiscard]] Veltrani::DisplayReport::ChannelLights lights() const {
        return Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry())
            .lights;
    }

    void expectOne(const std::function<double(double)>& lightOfCode) {
        const LightSums fine = LightSums::of(lights(), read("blend", 16, lightOfCode), PLACES);
        EXPECT_LT(fine.worst, LightSums::EVEN) << fine.where;
        EXPECT_LT(fine.worstBeyond, LightSums::EVEN) << fine.whereBeyond;
        EXPECT_GT(fine.shared, PLACES / 10);
        const LightSums coarse = LightSums::of(lights(), read("blend", 8, lightOfCode), PLACES);
        EXPECT_LT(coarse.worst, MOST_OFF_8) << coarse.where;
        EXPECT_GT(coarse.worst, fine.worst) << "it is the other depth";
    }

    const TemporaryFolder m_folder;
    const LogTrap m_log{log4cxx::Level::getWarn()};
    std::unique_ptr<XMLConfigFile> m_config;
    ExportRequest m_request;
    std::vector<Json> m_views;
};

/// Two channels that share a fifth of the wall in the middle.
const std::string PAIR =
    "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Centre x='0' y='5' z='1'/>"
    "<Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors>"
    "<Projector id='P1'><Name>Left</Name><Resolution width='320' height='240'/>"
    "<ScreenArea left='0' right='0.6' bottom='0' top='1'/><Layout xMin='0' xMax='2.4' yMin='0' yMax='2'/></Projector>"
    "<Projector id='P2'><Name>Right</Name><Resolution width='300' height='200'/>"
    "<ScreenArea left='0.4' right='1' bottom='0' top='1'/><Layout xMin='1.6' xMax='4' yMin='0' yMax='2'/></Projector>"
    "</Projectors></Display>";

TEST_F(BlendFilesOfDisplay, TheLightOfFactorsSumsToOne) {
    loadExample("planar-wall");
    m_request.blend.emplace();
    exportAll();
    expectOne(ofGamma22);
    EXPECT_EQ(m_views[0]["blend"]["use"], "factor");
    EXPECT_EQ(m_views[0]["blend"]["gamma"], 2.2);
    EXPECT_TRUE(m_views[0]["blend"]["lift"].is_null());
}

TEST_F(BlendFilesOfDisplay, TheLightOfOpacitiesSumsToOneByTheCurveOfSrgb) {
    loadExample("spherical-dome");
    m_request.blend.emplace();
    m_request.blend->use = BlendUse::ALPHA;
    m_request.blend->curve = BlendCurve::srgb();
    exportAll();
    expectOne([](double code) { return code <= 0.04045 ? code / 12.92 : std::pow((code + 0.055) / 1.055, 2.4); });
    EXPECT_EQ(m_views[3]["blend"]["use"], "alpha");
    EXPECT_EQ(m_views[3]["blend"]["gamma"], "srgb");
}

// In light: nothing is bent.
TEST_F(BlendFilesOfDisplay, LinearFactorsSumToOneAsTheyStand) {
    load(PAIR);
    m_request.blend.emplace();
    m_request.blend->curve = BlendCurve::ofGamma(1);
    exportAll();
    const auto pictures = read("blend", 16, [](double code) { return code; });
    const LightSums sums = LightSums::of(lights(), pictures, PLACES);
    EXPECT_LT(sums.worst, LightSums::EVEN) << sums.where;
    EXPECT_EQ(m_views[0]["blend"]["gamma"], 1);
}

TEST_F(BlendFilesOfDisplay, AMeshHasTheCodeValueAtEachNodeAsItsBrightness) {
    load(PAIR);
    m_request.blend.emplace();
    exportAll();
    const std::vector<BlendPicture> pictures = read("blend", 16, ofGamma22);
    std::istringstream mesh(m_folder.read("02-Right.mesh"));
    std::size_t type = 0;
    std::size_t columns = 0;
    std::size_t rows = 0;
    mesh >> type >> columns >> rows;
    ASSERT_EQ(columns * rows, 63U);
    std::size_t partly = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            double x = 0;
            double y = 0;
            double u = 0;
            double v = 0;
            double brightness = 0;
            mesh >> x >> y >> u >> v >> brightness;
            const double light = pictures[1].between({static_cast<double>(column) / 8, static_cast<double>(row) / 6});
            EXPECT_NEAR(brightness, std::pow(light, 1 / 2.2), 2e-4) << column << ' ' << row;
            partly += brightness > 0.01 && brightness < 0.99 ? 1 : 0;
        }
    }
    EXPECT_GE(partly, 14U) << "two columns of the overlap";
}

// One picture reaches further down and the other one further up: the outlines cross on two sides of each.
TEST_F(BlendFilesOfDisplay, TheManifestNamesTheCrossingsOfOutlines) {
    std::string display = PAIR;
    const std::string area = "right='1' bottom='0'";
    display.replace(display.find(area), area.size(), "right='1' bottom='0.25'");
    const std::string first = "right='0.6' bottom='0' top='1'";
    display.replace(display.find(first), first.size(), "right='0.6' bottom='0' top='0.8'");
    load(display);
    m_request.blend.emplace();
    exportAll();
    const Json crossings = m_views[0]["blend"]["crossings"];
    ASSERT_EQ(crossings.size(), 2U);
    EXPECT_NEAR(crossings[0][0].get<double>(), 1, 1e-9) << "the right side";
    EXPECT_NEAR(crossings[0][1].get<double>(), 0.25 / 0.8, 1e-5);
    EXPECT_NEAR(crossings[1][0].get<double>(), 0.4 / 0.6, 1e-5);
    EXPECT_NEAR(crossings[1][1].get<double>(), 1, 1e-9) << "the top";
}

// The right one has more of it, so that each channel has a lift of its own.
TEST_F(BlendFilesOfDisplay, LiftsBringTheBlackToThatOfTheOverlap) {
    load(PAIR);
    const std::vector<double> residual{0.002, 0.004};
    m_request.blend.emplace();
    m_request.blend->residual = residual;
    exportAll();
    EXPECT_NEAR(m_views[1]["blend"]["lift"]["residualPercent"].get<double>(), 0.4, 1e-9);
    EXPECT_NEAR(m_views[1]["blend"]["lift"]["blackPercent"].get<double>(), 0.6, 1e-9);
    for (const auto& [bits, most] : {std::pair{16, 2e-6}, std::pair{8, 3e-4}}) {
        const std::vector<BlendPicture> lifts = read("lift", bits, ofGamma22);
        // Places along the wall; Left has the left three fifths of it, Right the right ones.
        const auto blackAt = [&](double s) {
            double black = 0;
            if (s < 0.6) {
                black += residual[0] + (1 - residual[0]) * lifts[0].between({s / 0.6, 0.4});
            }
            if (s > 0.4) {
                black += residual[1] + (1 - residual[1]) * lifts[1].between({(s - 0.4) / 0.6, 0.4});
            }
            return black;
        };
        for (const double s : {0.05, 0.2, 0.35, 0.43, 0.46, 0.5, 0.54, 0.57, 0.65, 0.8, 0.95}) {
            EXPECT_NEAR(blackAt(s), 0.006, most) << s << ' ' << bits;
        }
        // The step of the residual light itself, next to where a picture ends.
        EXPECT_NEAR(blackAt(0.401), 0.006 + 0.004, 1e-4 + most);
        EXPECT_NEAR(blackAt(0.599), 0.006 + 0.002, 1e-4 + most);
        EXPECT_GT(lifts[0].at(10, 10), lifts[1].at(290, 10)) << "the darker one is raised by more";
    }
}

TEST_F(BlendFilesOfDisplay, WithoutBlendsThereAreNone) {
    load(PAIR);
    exportAll();
    EXPECT_TRUE(m_views[0]["blend"].is_null());
    EXPECT_EQ(m_views[0]["files"].size(), 1U) << "the mesh";
    EXPECT_THAT(m_folder.read("01-Left.mesh"), HasSubstr(" 1\n"));
}

TEST_F(BlendFilesOfDisplay, AChannelWithoutABlendIsRefusedWithTheReasonAndTheRemedy) {
    load(PAIR);
    const Veltrani::DisplayBlend::DisplayBlender blender(*m_config);
    EXPECT_EQ(blendedChannel(blender, "P2"), 1U);
    try {
        static_cast<void>(blendedChannel(blender, "P3"));
        ADD_FAILURE() << "accepted";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"it has no blend: the display has no record of it; leave blends out with --no-blend");
    }
}

std::string faultOfLevels(const std::vector<BlackLevel>& levels) {
    try {
        static_cast<void>(residualOf(*XMLConfigFile::parse(PAIR, "display.xml"), levels));
    } catch (const VeltraniException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "";
}

TEST(BlackLevels, AreThoseOfTheChannelOrOfTheRest) {
    const auto config = XMLConfigFile::parse(PAIR, "display.xml");
    EXPECT_THAT(residualOf(*config, {{"Left", 0.002}, {"P2", 0.004}}), ElementsAre(0.002, 0.004));
    EXPECT_THAT(residualOf(*config, {{"", 0.004}}), ElementsAre(0.004, 0.004));
    EXPECT_THAT(residualOf(*config, {{"", 0.004}, {"Right", 0.002}}), ElementsAre(0.004, 0.002));
    EXPECT_THAT(faultOfLevels({{"Left", 0.002}}),
                testing::StartsWith("channel Right (P2) has no black level: state one for every channel"));
    EXPECT_EQ(faultOfLevels({{"Left", 0.002}, {"P1", 0.002}}),
              "channel Left (P1): two black levels are stated: state one");
    EXPECT_EQ(faultOfLevels({{"", 0.002}, {"", 0.002}}),
              "the rest of the channels: two black levels are stated: state one");
    EXPECT_THAT(faultOfLevels({{"Middle", 0.002}}), HasSubstr("Middle"));
}

const BlendPicture STEPS{3, 2, {0.0F, 0.25F, 1.0F, 0.5F, 0.75F, 0.125F}};

std::string written(BlendUse use, int bits) {
    std::ostringstream out;
    writeBlend(STEPS, BlendCurve::ofGamma(2), use, bits, out);
    return out.str();
}

TEST(BlendFiles, FactorsAreGreyFromTheTopRow) {
    const GreyPngImage coarse = GreyPngImage::read(written(BlendUse::MULTIPLY, 8));
    EXPECT_THAT(coarse.grey, ElementsAre(180, 221, 90, 0, 128, 255));
    EXPECT_EQ(coarse.bits, 8);
    const GreyPngImage fine = GreyPngImage::read(written(BlendUse::MULTIPLY, 16));
    EXPECT_THAT(fine.grey, ElementsAre(46340, 56755, 23170, 0, 32768, 65535));
    EXPECT_EQ(fine.bits, 16);
}

TEST(BlendFiles, AlphaIsBlackWithWhatFactorsLack) {
    for (const int bits : {8, 16}) {
        const GreyPngImage factor = GreyPngImage::read(written(BlendUse::MULTIPLY, bits));
        const GreyPngImage alpha = GreyPngImage::read(written(BlendUse::ALPHA, bits));
        EXPECT_THAT(alpha.grey, testing::Each(0));
        ASSERT_EQ(alpha.opacity.size(), factor.grey.size());
        for (std::size_t i = 0; i < factor.grey.size(); ++i) {
            EXPECT_NEAR(factor.grey[i] + alpha.opacity[i], bits == 16 ? 65535 : 255, 1) << i;
        }
        EXPECT_THAT(written(BlendUse::ALPHA, bits), Not(HasSubstr("gAMA")));
    }
}

TEST(BlendFiles, AreNamedByTheirUseAndDepth) {
    EXPECT_EQ(endingOfBlend(BlendUse::MULTIPLY, 16), "blend16.png");
    EXPECT_EQ(endingOfBlend(BlendUse::ALPHA, 8), "alpha8.png");
}

}  // namespace
