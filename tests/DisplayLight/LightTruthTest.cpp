// A checkerboard that is exported, played and added up: what is read off the screen is what belongs there.
#include "AddedLight.h"
#include "DisplayLight/EyeGrid.h"
#include "DisplayReport/coverage/DisplayLights.h"
#include "support/Sanitizers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>

namespace {

constexpr double PI = std::numbers::pi;
/// Places of a picture of the eye.
constexpr std::size_t WIDTH = IS_SANITIZED ? 160 : 500;
constexpr std::size_t HEIGHT = IS_SANITIZED ? 125 : 400;
/// Pixels of the coarsest projector, beyond what the export states.
constexpr double MOST_OFF = 0.05;

/// A panorama whose red counts its columns and whose green its rows, to and fro every `HALF` pixels, in steps of whole
/// code values: soft checks, in which a shift of a hundredth of a pixel is seen.
struct SoftChecks {
    static constexpr int HALF = 8;
    static constexpr int STEP = 20;
    static constexpr int LEAST = 60;

    int width;
    int height;

    /// @param along pixels from the left or the bottom edge
    static double codeAt(double along) {
        const double within = std::fmod(along, 2.0 * HALF);
        return LEAST + STEP * (within <= HALF ? within : 2 * HALF - within);
    }
    /// Pixels to where it turns.
    static double toTurn(double along) { return std::abs(along - HALF * std::round(along / HALF)); }
    /// Code values for a pixel more.
    static double slopeAt(double along) { return std::fmod(along, 2.0 * HALF) <= HALF ? STEP : -STEP; }

    [[nodiscard]] std::vector<unsigned char> colours() const {
        std::vector<unsigned char> all;
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                const double up = height - 1 - row + 0.5;
                const double right = column + 0.5;
                all.push_back(static_cast<unsigned char>(std::lround(codeAt(right))));
                all.push_back(static_cast<unsigned char>(std::lround(codeAt(up))));
                all.push_back((column / HALF + row / HALF) % 2 == 0 ? 255 : 0);
            }
        }
        return all;
    }
};

class LightTruthTest : public AddedLightTest {
protected:
    /// What was found on one display.
    struct Found {
        std::size_t read = 0;
        double worst = 0;    ///< pixels of the coarsest projector beyond what is stated
        double stated = 0;   ///< pixels of the input
        double largest = 0;  ///< pixels of the input
    };

    /// @param columns of the panorama: its pixels are about those of the coarsest projector
    void exportChecks(int columns, WarpFormat format) {
        const SoftChecks checks{columns, columns / 2};
        ExportRequest request;
        request.input.kind = InputKind::EQUIRECTANGULAR;
        request.input.pixels = {checks.width, checks.height};
        request.content = std::make_shared<const ContentPicture>(
            static_cast<std::size_t>(checks.width), static_cast<std::size_t>(checks.height), checks.colours());
        request.formats = {format};
        exportAll(request);
        addBlendsOfTheDisplay(1);
    }

    [[nodiscard]] double statedError() const {
        double largest = 0;
        const Json document = manifest();
        for (const Json& view : document["views"]) {
            if (!view["nodes"].is_null() && !view["nodes"]["error"].is_null()) {
                largest = std::max(largest, view["nodes"]["error"]["largest"].get<double>());
            }
        }
        return largest;
    }

    [[nodiscard]] Found read(const LitPicture& picture, int columns) const {
        Found found;
        found.stated = statedError();
        const double perRadian = columns / (2 * PI);
        for (std::size_t i = 0; i < picture.places.size(); ++i) {
            const LitPlace& place = picture.places[i];
            if (isAtAnEdge(picture, i)) {
                continue;
            }
            const P3 direction = directionOf(picture, i);
            const double level = std::hypot(direction[0], direction[1]);
            const double elevation = std::atan2(direction[2], level);
            const double right = (std::atan2(direction[0], direction[1]) / (2 * PI) + 0.5) * columns;
            const double up = (elevation / PI + 0.5) * columns / 2;
            // Of the input.
            const double pixel = picture.coarsestPixel / m_distances[i] * perRadian;
            const double margin = 0.5 + 1.5 * pixel / std::cos(elevation) + found.stated;
            const auto off = [&](double along, float light) {
                return (255 * light - SoftChecks::codeAt(along)) / SoftChecks::slopeAt(along);
            };
            const auto take = [&](double pixels) {
                ++found.read;
                found.largest = std::max(found.largest, std::abs(pixels));
                found.worst = std::max(found.worst, (std::abs(pixels) - found.stated) / pixel);
            };
            if (SoftChecks::toTurn(right) > margin) {
                take(off(right, place.light[0]) * std::cos(elevation));
            }
            if (SoftChecks::toTurn(up) > margin) {
                take(off(up, place.light[1]));
            }
        }
        return found;
    }

    /// Next to the edge of a picture its outermost half pixel shows what its middle has.
    static bool isAtAnEdge(const LitPicture& picture, std::size_t i) {
        const auto width = static_cast<std::ptrdiff_t>(picture.view.width());
        const auto place = static_cast<std::ptrdiff_t>(i);
        for (const std::ptrdiff_t step :
             {-width - 1, -width, -width + 1, std::ptrdiff_t{-1}, std::ptrdiff_t{1}, width - 1, width, width + 1}) {
            const std::ptrdiff_t other = place + step;
            const bool isIn = other >= 0 && other < static_cast<std::ptrdiff_t>(picture.places.size());
            if (!isIn || picture.places[static_cast<std::size_t>(other)].channels != picture.places[i].channels) {
                return true;
            }
        }
        return picture.places[i].channels == 0;
    }

    /// From the eye to the places of a picture of that size, native units; with a panorama of such columns that the
    /// pixels of the coarsest projector are about its own.
    int measure() {
        const LitPicture picture = lit(WIDTH, HEIGHT);
        const P3& eye = picture.view.frame().eye;
        const Veltrani::DisplayLight::EyePlaces seen(config(), channels().front(),
                                                     ScreenManager::getInstance()->getScreenGeometry(), eye);
        double sum = 0;
        double lit = 0;
        for (const auto& place : Veltrani::DisplayLight::EyeGrid::of(picture.view, seen).places) {
            m_distances.push_back(norm(place.point - eye));
            sum += place.isSeen ? m_distances.back() : 0;
            lit += place.isSeen ? 1 : 0;
        }
        // Whole checks all around, and from pole to pole.
        constexpr double CHECKS = 4 * SoftChecks::HALF;
        return static_cast<int>(CHECKS * std::round(2 * PI * sum / lit / picture.coarsestPixel / CHECKS));
    }

    std::vector<double> m_distances;
};

struct Shown {
    const char* display;
    const char* format;
};

class LightTruthOfDisplayTest : public LightTruthTest, public testing::WithParamInterface<Shown> {};

TEST_P(LightTruthOfDisplayTest, WhatIsReadOffTheScreenBelongsThere) {
    loadAny(GetParam().display);
    // The size of the coarsest pixel is found with any content.
    ExportRequest any;
    any.input.kind = InputKind::EQUIRECTANGULAR;
    any.content = white();
    any.nodes = Point<int, 2>{9, 9};
    exportAll(any);
    const int columns = measure();
    exportChecks(columns, *Veltrani::ExportFiles::warpFormatOf(GetParam().format));
    const LitPicture picture = lit(WIDTH, HEIGHT, true);
    const Found found = read(picture, columns);
    const auto figures = picture.figures();
    EXPECT_LE(found.worst, MOST_OFF) << found.largest << " pixels of the input, stated " << found.stated;
    EXPECT_GT(found.read, WIDTH * HEIGHT / 10);
    EXPECT_LE(figures.withoutContent, figures.lit / 1000) << "around a pole alone";
    // What is measured from the warps is what is read off the screen.
    EXPECT_LE(figures.largestShift, 2 * found.stated + MOST_OFF);
    std::size_t uneven = 0;
    for (const LitPlace& place : picture.places) {
        uneven += place.channels > 0 && std::abs(place.weight - 1) > 0.001F ? 1 : 0;
    }
    EXPECT_LT(static_cast<double>(uneven), 0.02 * static_cast<double>(figures.lit)) << "where outlines cross alone";
    if (std::getenv("SM_LIGHT_FIGURES") != nullptr) {
        std::printf(
            "%d columns, %zu read, off by %.3g of the input, %.3g stated, %.3g beyond; %zu uneven, %zu lit, %zu "
            "unlit, %zu without content, shift %.3g\n",
            columns, found.read, found.largest, found.stated, found.worst, uneven, figures.lit, figures.unlit,
            figures.withoutContent, figures.largestShift);
    }
}

INSTANTIATE_TEST_SUITE_P(Displays, LightTruthOfDisplayTest,
                         testing::Values(Shown{"planetarium", "obj"}, Shown{"round", "obj"}, Shown{"cave", "mesh"},
                                         Shown{"inset", "mesh"}, Shown{"curved-wall", "mesh"}),
                         [](const auto& tested) {
                             std::string name = tested.param.display;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

/// Nothing is dark that the measurement of the coverage finds lit, and nothing lit that it finds dark.
class LitLikeCoverageTest : public LightTruthTest, public testing::WithParamInterface<const char*> {};

TEST_P(LitLikeCoverageTest, HasNoGap) {
    loadAny(GetParam());
    ExportRequest any;
    any.input.kind = InputKind::EQUIRECTANGULAR;
    any.content = white();
    any.nodes = Point<int, 2>{9, 9};
    exportAll(any);
    const LitPicture picture = lit(IS_SANITIZED ? 60 : 200, IS_SANITIZED ? 40 : 125);
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    const auto lights = Veltrani::DisplayReport::DisplayLights::of(config(), surface).lights;
    const Veltrani::DisplayLight::EyePlaces eye(config(), channels().front(), surface, picture.view.frame().eye);
    const auto grid = Veltrani::DisplayLight::EyeGrid::of(picture.view, eye);
    std::size_t lit = 0;
    for (std::size_t i = 0; i < picture.places.size(); ++i) {
        if (!grid.places[i].isSeen) {
            continue;
        }
        const Veltrani::DisplayReport::SurfacePoint point{grid.places[i].point, {}, false};
        const auto count =
            std::count_if(lights.begin(), lights.end(), [&point](const auto& light) { return light->lights(point); });
        EXPECT_EQ(picture.places[i].channels, count) << grid.places[i].point;
        lit += count > 0 ? 1 : 0;
    }
    EXPECT_GT(lit, picture.places.size() / 10);
}

INSTANTIATE_TEST_SUITE_P(Displays, LitLikeCoverageTest,
                         testing::Values("collimated", "planetarium", "inset", "lens-cylinder"),
                         [](const auto& tested) {
                             std::string name = tested.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
