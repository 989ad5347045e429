#include "DisplayBlend/detail/BlendRaster.h"

#include "BlendDisplays.h"
#include "support/LightSums.h"
#include "support/Sanitizers.h"

#include <utility>

namespace {

using namespace Veltrani::DisplayBlendDetail;

/// Light: how far pixels between places that were worked out may be off, a hundredth of a pixel of another picture
/// included.
constexpr double MOST_OFF = 3e-4;
constexpr std::size_t PIXELS = repetitions(std::size_t{4000});

class BlendRasterTest : public BlendDisplayTest {
protected:
    /// What a pixel weighs, looked up and worked out for it alone.
    static double weightOf(const ChannelFields& fields, std::size_t own, const P2& picture, const PlaceSamples& samples,
                           std::size_t i) {
        const P3& place = samples.landings[i].on.place;
        const double share = fields.shareOf(own, fields.potential(own, picture, place));
        double sum = share;
        for (std::size_t other = 0; other < fields.size(); ++other) {
            if (other != own && samples.isLit(other, i)) {
                sum += fields.shareOf(other, fields.potential(other, samples.reaches[other][i].picture, place));
            }
        }
        return share / sum;
    }

    using Pixels = std::vector<std::pair<std::size_t, std::size_t>>;  // column and row

    static Pixels randomPixels(std::mt19937& random, const Point<int, 2>& size) {
        Pixels pixels;
        for (std::size_t i = 0; i < PIXELS; ++i) {
            const std::size_t column = random() % static_cast<std::size_t>(size[0]);
            pixels.emplace_back(column, random() % static_cast<std::size_t>(size[1]));
        }
        return pixels;
    }

    /// Some that lie next to the sides of the picture.
    static Pixels pixelsAtSides(std::mt19937& random, const Point<int, 2>& size) {
        Pixels pixels = randomPixels(random, size);
        for (std::size_t i = 0; i < PIXELS; ++i) {
            constexpr std::size_t BESIDE = 4;
            auto& [column, row] = pixels[i];
            std::size_t& across = i % 2 == 0 ? column : row;
            const std::size_t end = static_cast<std::size_t>(size[i % 2]) - 1;
            across = i % 4 < 2 ? across % BESIDE : end - across % BESIDE;
        }
        return pixels;
    }

    /// Pixels of every channel are what each would be by itself.
    void expectExact(const Point<int, 2>& size = {1920, 1200},
                     Pixels (*choose)(std::mt19937&, const Point<int, 2>&) = &randomPixels) {
        auto display =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry());
        m_lights = std::move(display.lights);
        m_pictures.clear();
        const ChannelFields fields(m_lights, std::vector<Point<int, 2>>(m_lights.size(), size));
        std::mt19937 random(7);
        std::size_t partly = 0;
        for (std::size_t own = 0; own < fields.size(); ++own) {
            const BlendPicture& weights = m_pictures.emplace_back(
                BlendRaster(fields, own)
                    .picture([](const PixelLight& light) { return static_cast<float>(light.parts.front().weight); },
                             1.0F, {}));
            std::vector<P2> pictures;
            std::vector<float> found;
            for (const auto& [column, row] : choose(random, size)) {
                pictures.push_back(
                    {(static_cast<double>(column) + 0.5) / size[0], (static_cast<double>(row) + 0.5) / size[1]});
                found.push_back(weights.at(column, row));
            }
            PlaceSamples samples;
            fields.sampler().sample(own, pictures, samples);
            for (std::size_t i = 0; i < PIXELS; ++i) {
                if (samples.lands(i)) {
                    const double expected = weightOf(fields, own, pictures[i], samples, i);
                    EXPECT_NEAR(found[i], expected, MOST_OFF) << own << ' ' << pictures[i];
                    partly += expected < 1 ? 1 : 0;
                }
            }
        }
        EXPECT_GT(partly, PIXELS / 10) << "there is something to interpolate";
    }

    Veltrani::DisplayReport::ChannelLights m_lights;
    std::vector<BlendPicture> m_pictures;  ///< by channel
};

TEST_F(BlendRasterTest, PixelsOfAWallAreWhatEachWouldBeAlone) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 0.61) + area("B", 0.43, 1, 0, 1) + area("Inset", 0.3, 0.5, 0.3, 0.7));
    expectExact();
}

// Of one pixel, of less than a square, and of squares with a rest each way.
TEST_F(BlendRasterTest, PixelsOfSmallPicturesAreWhatEachWouldBeAlone) {
    load(displays::FLAT, area("A", 0, 0.7, 0, 0.9) + area("B", 0.2, 1, 0.1, 1));
    for (const Point<int, 2>& size : {Point<int, 2>{1, 1}, Point<int, 2>{7, 3}, Point<int, 2>{8, 17},
                                      Point<int, 2>{16, 32}, Point<int, 2>{25, 9}, Point<int, 2>{41, 50}}) {
        expectExact(size);
    }
}

/// A value is made of the channels that light a pixel, its own first; where there is no other one it is that of one
/// alone.
TEST_F(BlendRasterTest, AValueIsMadeOfAllThatLightAPixel) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1) + area("C", 0.45, 0.55, 0.4, 0.6));
    const auto lights =
        Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry()).lights;
    const ChannelFields fields(lights, std::vector<Point<int, 2>>(3, {200, 120}));
    std::size_t mostParts = 0;
    std::size_t shades = 0;
    std::vector<std::size_t> rows;
    const BlendPicture picture = BlendRaster(fields, 1).picture(
        [&](const PixelLight& light) {
            ++shades;
            EXPECT_EQ(light.parts.front().channel, 1U);
            double sum = 0;
            for (const PixelLight::Part& part : light.parts) {
                sum += part.weight;
            }
            EXPECT_NEAR(sum, 1, 1e-12);
            mostParts = std::max(mostParts, light.parts.size());
            return static_cast<float>(light.parts.front().weight);
        },
        0.25F,
        [&](std::size_t done, std::size_t all) {
            EXPECT_EQ(all, 120U);
            rows.push_back(done);
        });
    EXPECT_EQ(mostParts, 3U);
    EXPECT_GT(shades, 0U);
    EXPECT_LT(shades, 200 * 120U) << "not pixel by pixel";
    EXPECT_EQ(picture.at(150, 60), 0.25F);
    EXPECT_EQ(picture.at(199, 119), 0.25F);
    EXPECT_THAT(rows, testing::ElementsAre(0, 16, 32, 48, 64, 80, 96, 112, 120));
}

// Pictures that share hardly more than a pixel: a wall of four, one in each corner.
TEST_F(BlendRasterTest, SeamsOfAPixelAreBlended) {
    for (const double shared : {0.6, 1.4, 1.9, 3.0}) {
        const double across = 0.25 * shared / 1920;
        const double upwards = 0.25 * shared / 1200;
        load(displays::FLAT,
             area("A", 0, 0.5 + across, 0, 0.5 + upwards) + area("B", 0.5 - across, 1, 0, 0.5 + upwards) +
                 area("C", 0, 0.5 + across, 0.5 - upwards, 1) + area("D", 0.5 - across, 1, 0.5 - upwards, 1));
        expectExact({1920, 1200}, &pixelsAtSides);
    }
}

TEST_F(BlendRasterTest, PixelsOfADomeAreWhatEachWouldBeAlone) {
    load(displays::SPHERE,
         camera("L", {-1, 0, 0.5}, 18, 20, 38, 26) + camera("R", {1, 0, 0.5}, -18, 20, 38, 26) +
             camera("T", {0, 0, 0}, 0, 60, 30, 30),
         "<TargetData type='ProjectorCentric'/>");
    expectExact();
}

// Pictures that go around the corner of a room; nothing throws a shadow on anything. The further the cameras are turned
// apart the narrower is the overlap at the corner, and the steeper are the weights.
class BlendAtAKinkTest : public BlendRasterTest, public testing::WithParamInterface<int> {};

TEST_P(BlendAtAKinkTest, PixelsAreWhatEachWouldBeAlone) {
    m_folder.write("corner.obj",
                   "v -3 2 -2\nv 0 5 -2\nv 0 5 2\nv -3 2 2\nv 3 2 -2\nv 3 2 2\nf 1 2 3\nf 1 3 4\nf 2 5 6\nf 2 6 3\n");
    load(
        "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='corner.obj'/>"
        "<ImportOrientation up='Z' forward='Y'/></Screen>",
        camera("L", {-1, 0, 0}, GetParam(), 0, 30, 20) + camera("R", {1, 0, 0}, -GetParam(), 0, 30, 20),
        "<TargetData type='ProjectorCentric'/>");
    expectExact();
    const LightSums sums = LightSums::of(m_lights, m_pictures, repetitions(std::size_t{100'000}));
    EXPECT_LT(sums.worst, LightSums::EVEN) << sums.where;
    EXPECT_LT(sums.worstBeyond, LightSums::EVEN) << sums.whereBeyond;
    EXPECT_GT(sums.shared, sums.places / 10);
}

INSTANTIATE_TEST_SUITE_P(Turns, BlendAtAKinkTest, testing::Values(5, 13, -13));

// A wall of two planes, and a board that throws shadows on it: what is linear in one place is bent in the next.
// Along the rims every pixel is looked up by itself, which takes the sanitizers long: a quarter of the pixels each way
// goes the same ways.
TEST_F(BlendRasterTest, PixelsAtKinksAndShadowsAreWhatEachWouldBeAlone) {
    const Point<int, 2> size = IS_SANITIZED ? Point<int, 2>{480, 300} : Point<int, 2>{1920, 1200};
    m_folder.write("wall.obj",
                   "v -3 4 -2\nv 0.2 5 -2\nv 0.2 5 2\nv -3 4 2\nv 3 4 -2\nv 3 4 2\n"
                   "v -0.3 3 -0.5\nv 0.3 3 -0.5\nv 0.3 3 0.5\nv -0.3 3 0.5\n"
                   "f 1 2 3\nf 1 3 4\nf 2 5 6\nf 2 6 3\nf 7 8 9\nf 7 9 10\n");
    load(
        "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='wall.obj'/>"
        "<ImportOrientation up='Z' forward='Y'/></Screen>",
        sized(camera("L", {-1.5, 0, 0}, 0, 0, 35, 20) + camera("R", {1.5, 0, 0}, 0, 0, 35, 20), size[0], size[1]),
        "<TargetData type='ProjectorCentric'/>");
    expectExact(size);
}

}  // namespace
