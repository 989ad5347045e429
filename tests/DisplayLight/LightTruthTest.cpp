// A checkerboard that is exported, played and added up: what is read off the screen is what belongs there.
#include "AddedLight.h"
#include "DisplayLight/EyeGrid.h"
#include "DisplayReport/coverage/DisplayLights.h"
#include "DisplayReport/coverage/ParameterLight.h"
#include "ScreenCoordinates.h"
#include "support/Sanitizers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <optional>

namespace {

constexpr double PI = std::numbers::pi;
/// Values that are read off each display, and places at which what is lit is compared with the coverage.
constexpr std::size_t VALUES = repetitions(std::size_t{100'000});
/// Of a first picture of the eye, by which it is seen how much of one is lit.
constexpr std::size_t WIDTH = 250;
constexpr std::size_t HEIGHT = 200;
/// A part of the places whose light may be off by more than a thousandth: as far as seventeen pixels around the
/// crossings of outlines, of which a display has two or three for each of its pictures. A quarter of a circle of
/// seventeen pixels is 227 of the two million of a picture; the rest is for overlaps that are narrower than that.
constexpr double MOST_UNEVEN = 0.0015;
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
        // A panorama has up to a hundred million pixels, all made of the codes of one row and one column.
        const auto codes = [](int count) {
            std::vector<unsigned char> all;
            for (int i = 0; i < count; ++i) {
                all.push_back(static_cast<unsigned char>(std::lround(codeAt(i + 0.5))));
            }
            return all;
        };
        const std::vector<unsigned char> rightwards = codes(width);
        const std::vector<unsigned char> upwards = codes(height);
        std::vector<unsigned char> all(std::size_t{3} * rightwards.size() * upwards.size());
        unsigned char* next = all.data();
        for (int row = 0; row < height; ++row) {
            const unsigned char up = upwards[static_cast<std::size_t>(height - 1 - row)];
            const unsigned char* right = rightwards.data();
            for (int column = 0; column < width; ++column) {
                *next++ = *right++;
                *next++ = up;
                *next++ = (column / HALF + row / HALF) % 2 == 0 ? 255 : 0;
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
        /// Pixels of the input that the coarsest projector has in one, at least.
        double pixel = std::numeric_limits<double>::infinity();
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
            const double pixel = picture.coarsestPixel * m_radians[i] * perRadian;
            if (!(pixel > 0)) {
                continue;
            }
            found.pixel = std::min(found.pixel, pixel);
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

    /// A picture of about so many lit places; without errors, at the middle of each place.
    void choosePlaces(double lit) {
        const auto figures = this->lit(WIDTH, HEIGHT).figures();
        const double larger = std::sqrt(lit / static_cast<double>(figures.lit));
        m_width = static_cast<std::size_t>(larger * static_cast<double>(WIDTH));
        m_height = static_cast<std::size_t>(larger * static_cast<double>(HEIGHT));
    }

    /// Measures at which angle the eye sees a native unit at each place of the picture.
    /// @return the columns of a panorama whose pixels are about those of the coarsest projector, or larger ones
    int measure(int mostColumns) {
        const LitPicture picture = lit(m_width, m_height);
        const P3& eye = picture.view.frame().eye;
        const Veltrani::DisplayLight::EyePlaces seen(config(), channels().front(),
                                                     ScreenManager::getInstance()->getScreenGeometry(), eye);
        const auto grid = Veltrani::DisplayLight::EyeGrid::of(picture.view, seen);
        const bool hasMirror = manifest()["views"][0]["seenInMirror"].get<bool>();
        double sum = 0;
        double count = 0;
        for (std::size_t i = 0; i < grid.places.size(); ++i) {
            m_radians.push_back(hasMirror ? inMirror(picture, grid.places, i) : 1 / norm(grid.places[i].point - eye));
            if (grid.places[i].isSeen && m_radians.back() > 0) {
                sum += 1 / m_radians.back();
                ++count;
            }
        }
        // Whole checks all around, and from pole to pole.
        constexpr double CHECKS = 4 * SoftChecks::HALF;
        const double wanted = 2 * PI * sum / count / picture.coarsestPixel;
        return static_cast<int>(CHECKS * std::round(std::min<double>(wanted, mostColumns) / CHECKS));
    }

    /// The angle of a native unit there, by the next place to the right; 0 where it is not known.
    template <class Places>
    static double inMirror(const LitPicture& picture, const Places& places, std::size_t i) {
        const std::size_t next = (i + 1) % picture.view.width() == 0 ? i - 1 : i + 1;
        if (!places[i].isSeen || !places[next].isSeen) {
            return 0;
        }
        const P3 here = directionOf(picture, i);
        const P3 there = directionOf(picture, next);
        const double angle = std::atan2(norm(cross(here, there)), dot(here, there));
        return angle / norm(places[next].point - places[i].point);
    }

    std::size_t m_width = 0;
    std::size_t m_height = 0;
    std::vector<double> m_radians;  ///< by place, per native unit
};

struct Shown {
    const char* display;
    const char* format;
    /// Of the panorama. With the pixels of the projector that of a narrow display would take half a minute to be
    /// warped; with larger ones its checks are larger, and as much is read off it.
    int mostColumns = 16000;

    friend void PrintTo(const Shown& shown, std::ostream* out) {
        *out << shown.display << " as " << shown.format << ", " << shown.mostColumns;
    }
};

constexpr int COARSE = 6400;
constexpr int FINER = 10'240;

class LightTruthOfDisplayTest : public LightTruthTest, public testing::WithParamInterface<Shown> {};

TEST_P(LightTruthOfDisplayTest, WhatIsReadOffTheScreenBelongsThere) {
    loadAny(GetParam().display);
    // The size of the coarsest pixel is found with any content.
    ExportRequest any;
    any.input.kind = InputKind::EQUIRECTANGULAR;
    any.content = white();
    any.nodes = Point<int, 2>{9, 9};
    exportAll(any);
    // Of some places neither columns nor rows are read, since they turn there; of most both. In small pictures, as
    // those under the sanitizers, more of them lie at an edge.
    choosePlaces((IS_SANITIZED ? 2.5 : 2.1) * VALUES);
    const int columns = measure(GetParam().mostColumns);
    exportChecks(columns, *Veltrani::ExportFiles::warpFormatOf(GetParam().format));
    const LitPicture picture = lit(m_width, m_height, true);
    const Found found = read(picture, columns);
    const auto figures = picture.figures();
    EXPECT_LE(found.worst, MOST_OFF) << found.largest << " pixels of the input, stated " << found.stated;
    EXPECT_GE(found.read, VALUES);
    EXPECT_EQ(figures.withoutContent, 0U);
    // What is measured from the warps is what is read off the screen.
    EXPECT_LE(figures.largestShift, 2 * found.stated / found.pixel + MOST_OFF);
    std::size_t uneven = 0;
    for (const LitPlace& place : picture.places) {
        uneven += place.channels > 0 && std::abs(place.weight - 1) > 0.001F ? 1 : 0;
    }
    EXPECT_LT(static_cast<double>(uneven), MOST_UNEVEN * static_cast<double>(figures.lit))
        << "where outlines cross alone";
    if (std::getenv("SM_LIGHT_FIGURES") != nullptr) {
        std::printf(
            "%d columns, %zu read, off by %.3g of the input, %.3g stated, %.3g beyond; %zu uneven, %zu lit, %zu "
            "unlit, %zu without content, shift %.3g\n",
            columns, found.read, found.largest, found.stated, found.worst, uneven, figures.lit, figures.unlit,
            figures.withoutContent, figures.largestShift);
    }
}

/// In the name of a test.
std::string wordOf(std::string name) {
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

// Under the sanitizers those with few channels: most of the time goes into their exports.
INSTANTIATE_TEST_SUITE_P(Displays, LightTruthOfDisplayTest,
                         testing::Values(Shown{"cave", "mesh"}, Shown{"inset", "mesh"}),
                         [](const auto& tested) { return wordOf(tested.param.display); });

INSTANTIATE_TEST_SUITE_P(MoreDisplays, LightTruthOfDisplayTest,
                         testing::ValuesIn(IS_SANITIZED ? std::vector<Shown>{}
                                                        : std::vector<Shown>{{"planetarium", "obj"},
                                                                             {"round", "obj"},
                                                                             {"stereo-wall", "mesh"},
                                                                             {"curved-wall", "mesh"},
                                                                             {"closed-cylinder", "obj", COARSE},
                                                                             {"cockpit", "mesh", COARSE},
                                                                             {"collimated", "mesh", COARSE},
                                                                             {"cylinder", "mesh", COARSE},
                                                                             {"dome", "pfm", COARSE},
                                                                             {"lens-cylinder", "mesh", COARSE},
                                                                             {"mesh-rays", "mesh", COARSE},
                                                                             {"planar-wall", "mesh", COARSE},
                                                                             {"spherical-dome", "obj", COARSE},
                                                                             {"warped-wall", "mesh", COARSE}}),
                         [](const auto& tested) { return wordOf(tested.param.display); });

// Every pixel has a value of its own: what is off is so by the addition of the light alone, and by the 8 bits of the
// content. These hold a place to a fortieth of a pixel of the panorama, which is to be no larger than two of the
// projector's for that.
INSTANTIATE_TEST_SUITE_P(PixelByPixel, LightTruthOfDisplayTest,
                         testing::ValuesIn(IS_SANITIZED ? std::vector<Shown>{}
                                                        : std::vector<Shown>{{"curved-wall", "pfm", FINER}}),
                         [](const auto& tested) { return wordOf(tested.param.display); });

/// Nothing is dark that the measurement of the coverage finds lit, and nothing lit that it finds dark.
class LitLikeCoverageTest : public LightTruthTest, public testing::WithParamInterface<const char*> {
protected:
    using ChannelLights = Veltrani::DisplayReport::ChannelLights;
    using SurfacePoint = Veltrani::DisplayReport::SurfacePoint;

    static std::ptrdiff_t countAt(const ChannelLights& lights, const SurfacePoint& point) {
        return std::count_if(lights.begin(), lights.end(),
                             [&point](const auto& light) { return light->lights(point); });
    }

    /// Whether a channel begins or ends as near to it as rounding goes: the coordinates of a place are known to a
    /// billionth of the screen, and its place in a picture to a ten-thousandth of a pixel.
    static bool isOnAnOutline(const ChannelLights& lights, const ScreenGeometry& surface, const SurfacePoint& point) {
        constexpr double NEAR = 1e-7;
        for (const P2& way : {P2{-NEAR, 0.0}, P2{NEAR, 0.0}, P2{0.0, -NEAR}, P2{0.0, NEAR}}) {
            SurfacePoint beside = point;
            beside.parameters = point.parameters + way;
            if (surface.mapInto3D(beside.parameters, beside.place, false) &&
                countAt(lights, beside) != countAt(lights, point)) {
                return true;
            }
        }
        return false;
    }
};

TEST_P(LitLikeCoverageTest, HasNoGap) {
    loadAny(GetParam());
    ExportRequest any;
    any.input.kind = InputKind::EQUIRECTANGULAR;
    any.content = white();
    any.nodes = Point<int, 2>{9, 9};
    exportAll(any);
    choosePlaces(1.05 * VALUES);
    const LitPicture picture = lit(m_width, m_height);
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    const auto lights = Veltrani::DisplayReport::DisplayLights::of(config(), surface).lights;
    const Veltrani::DisplayLight::EyePlaces eye(config(), channels().front(), surface, picture.view.frame().eye);
    const auto grid = Veltrani::DisplayLight::EyeGrid::of(picture.view, eye);
    // An eye does not see the coordinates of the screen, by which its areas are told apart.
    const bool isLaidOut =
        dynamic_cast<const Veltrani::DisplayReport::ParameterLight*>(lights.front().get()) != nullptr;
    auto coordinates = isLaidOut ? std::optional<ScreenCoordinates>(surface) : std::nullopt;
    std::size_t lit = 0;
    std::size_t unknown = 0;
    std::size_t onOutlines = 0;
    for (std::size_t i = 0; i < picture.places.size(); ++i) {
        if (!grid.places[i].isSeen) {
            continue;
        }
        const auto st = coordinates ? coordinates->of(grid.places[i].point) : std::nullopt;
        if (coordinates && !st) {
            ++unknown;
            continue;
        }
        const SurfacePoint point{grid.places[i].point, st.value_or(P2()), st.has_value()};
        const auto count = countAt(lights, point);
        if (picture.places[i].channels != count && st && isOnAnOutline(lights, *surface, point)) {
            ++onOutlines;
            continue;
        }
        EXPECT_EQ(picture.places[i].channels, count) << grid.places[i].point << ' ' << point.parameters;
        lit += count > 0 ? 1 : 0;
    }
    EXPECT_GE(lit, VALUES);
    EXPECT_LE(unknown, lit / 10'000);
    EXPECT_LE(onOutlines, lit / 1000);
    if (std::getenv("SM_LIGHT_FIGURES") != nullptr) {
        std::printf("%zu lit, %zu unknown, %zu on outlines\n", lit, unknown, onOutlines);
    }
}

INSTANTIATE_TEST_SUITE_P(Displays, LitLikeCoverageTest, testing::Values("collimated", "inset", "curved-wall"),
                         [](const auto& tested) { return wordOf(tested.param); });

INSTANTIATE_TEST_SUITE_P(
    MoreDisplays, LitLikeCoverageTest,
    testing::ValuesIn(IS_SANITIZED
                          ? std::vector<const char*>{}
                          : std::vector<const char*>{"planetarium", "round", "cave", "stereo-wall", "closed-cylinder",
                                                     "cockpit", "cylinder", "dome", "lens-cylinder", "mesh-rays",
                                                     "planar-wall", "spherical-dome", "warped-wall"}),
    [](const auto& tested) { return wordOf(tested.param); });

}  // namespace
