// Every format of a warp, read back as its description states it and interpolated as a player does, against the place
// on the screen that the light of the channel has by the way that measures its coverage.
#include "BelongingContent.h"
#include "DisplayExport/ChannelWarp.h"
#include "DisplayReport/maps/ScreenMapper.h"
#include "ExportDisplays.h"
#include "ExportFiles/WarpFile.h"
#include "support/Sanitizers.h"

#include <gtest/gtest.h>
#include <png.h>

#include <array>
#include <cstring>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <sstream>
#include <string_view>

namespace {

using namespace Veltrani::DisplayExport;
using namespace Veltrani::ExportFiles;
using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::DisplayReport::ScreenMapper;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr int PLACES = repetitions(100'000);  // of a display, in every format
// Pixels of the input. With less allowed a grid has more nodes, and the search for it takes longer.
constexpr double ERROR = IS_SANITIZED ? 2.0 : 0.25;
// Of displays with large pictures around a pole.
constexpr double LARGE_ERROR = 2.0;
// Of what is lit, in a format that has no parts of cells: those at a seam, an edge of a face or a pole.
constexpr double MOST_LOST = 0.02;
constexpr double MOST_LOST_AT_RIM = 0.1;

/// Contents that a player may show at a place of the picture, (u, v) in the whole file of the input: more than one
/// where players differ. Empty: it shows nothing.
using Shown = std::vector<P2>;

double cross2(const P2& a, const P2& b) {
    return a[0] * b[1] - a[1] * b[0];
}

/// A mesh of rows and columns: bilinear, and linear in halves.
class MeshPlayer {
public:
    explicit MeshPlayer(const std::string& text) {
        std::istringstream in(text);
        int kind = 0;
        in >> kind >> m_columns >> m_rows;
        EXPECT_EQ(kind, 2);
        m_nodes.resize(m_columns * m_rows);
        for (auto& [x, y, u, v, brightness] : m_nodes) {
            in >> x >> y >> u >> v >> brightness;
        }
        std::string pixels;
        in >> pixels;
        EXPECT_EQ(pixels, "pixels");
    }

    [[nodiscard]] std::size_t cellOf(const P2& place) const {
        double rest = 0;
        return along(place[1], m_rows, rest) * m_columns + along(place[0], m_columns, rest);
    }

    [[nodiscard]] Shown at(const P2& place) const {
        double x = 0;
        double y = 0;
        const std::size_t column = along(place[0], m_columns, x);
        const std::size_t row = along(place[1], m_rows, y);
        std::array<P2, 4> c;
        for (std::size_t i = 0; i < c.size(); ++i) {
            const auto& node = m_nodes[(row + i / 2) * m_columns + column + i % 2];
            if (node[4] < 0) {
                return {};
            }
            c[i] = {node[2], node[3]};
        }
        return {(1 - y) * ((1 - x) * c[0] + x * c[1]) + y * ((1 - x) * c[2] + x * c[3]),
                x >= y ? c[0] + x * (c[1] - c[0]) + y * (c[3] - c[1]) : c[0] + y * (c[2] - c[0]) + x * (c[3] - c[2])};
    }

private:
    static std::size_t along(double part, std::size_t count, double& rest) {
        const double cells = part * static_cast<double>(count - 1);
        const double cell = std::clamp(std::floor(cells), 0.0, static_cast<double>(count) - 2);
        rest = cells - cell;
        return static_cast<std::size_t>(cell);
    }

    std::size_t m_columns = 0;
    std::size_t m_rows = 0;
    std::vector<std::array<double, 5>> m_nodes;
};

/// Triangles: linear.
class ObjPlayer {
public:
    ObjPlayer(const std::string& text, double aspect) : m_buckets(SIDE * SIDE) {
        std::istringstream in(text);
        std::string line;
        std::vector<P2> corners;
        std::vector<P2> contents;
        while (std::getline(in, line)) {
            std::istringstream words(line.substr(std::min<std::size_t>(line.size(), 2)));
            double x = 0;
            double y = 0;
            if (line.starts_with("v ")) {
                words >> x >> y;
                corners.push_back({(x / aspect + 1) / 2, (y + 1) / 2});
            } else if (line.starts_with("vt")) {
                words >> x >> y;
                contents.push_back({x, y});
            } else if (line.starts_with("f ")) {
                Triangle triangle;
                for (auto& [picture, content] : triangle) {
                    std::size_t corner = 0;
                    std::size_t texture = 0;
                    char slash = 0;
                    words >> corner >> slash >> texture;
                    picture = corners.at(corner - 1);
                    content = contents.at(texture - 1);
                }
                add(triangle);
            }
        }
    }

    [[nodiscard]] Shown at(const P2& place) const {
        for (const std::size_t i : m_buckets[bucket(place[1]) * SIDE + bucket(place[0])]) {
            const auto& [a, b, c] = m_triangles[i];
            const double area = cross2(b.first - a.first, c.first - a.first);
            const double ofB = cross2(place - a.first, c.first - a.first) / area;
            const double ofC = cross2(b.first - a.first, place - a.first) / area;
            constexpr double EDGE = -1e-9;
            if (ofB >= EDGE && ofC >= EDGE && 1 - ofB - ofC >= EDGE) {
                return {a.second + ofB * (b.second - a.second) + ofC * (c.second - a.second)};
            }
        }
        return {};
    }

private:
    using Triangle = std::array<std::pair<P2, P2>, 3>;
    static constexpr std::size_t SIDE = 256;

    static std::size_t bucket(double along) {
        return static_cast<std::size_t>(std::clamp(along * SIDE, 0.0, SIDE - 1.0));
    }

    void add(const Triangle& triangle) {
        P2 lower = triangle[0].first;
        P2 upper = lower;
        for (const auto& corner : triangle) {
            for (std::size_t i = 0; i < 2; ++i) {
                lower[i] = std::min(lower[i], corner.first[i]);
                upper[i] = std::max(upper[i], corner.first[i]);
            }
        }
        for (std::size_t row = bucket(lower[1]); row <= bucket(upper[1]); ++row) {
            for (std::size_t column = bucket(lower[0]); column <= bucket(upper[0]); ++column) {
                m_buckets[row * SIDE + column].push_back(m_triangles.size());
            }
        }
        m_triangles.push_back(triangle);
    }

    std::vector<Triangle> m_triangles;
    std::vector<std::vector<std::size_t>> m_buckets;
};

/// One value for each pixel: what the middle of the pixel shows that a place lies in.
class PixelPlayer {
public:
    PixelPlayer(const std::string& file, const Point<int, 2>& pixels, WarpFormat format)
        : m_columns(static_cast<std::size_t>(pixels[0])), m_rows(static_cast<std::size_t>(pixels[1])) {
        format == WarpFormat::PFM ? readPfm(file) : readPng(file);
    }

    /// Where the middle of the pixel is that shows a place.
    static P2 middleOf(const P2& place, const Point<int, 2>& pixels) {
        const auto middle = [](double part, int count) { return (std::floor(part * count) + 0.5) / count; };
        return {middle(place[0], pixels[0]), middle(place[1], pixels[1])};
    }

    [[nodiscard]] Shown at(const P2& place) const {
        const auto number = [](double part, std::size_t count) {
            return static_cast<std::size_t>(part * static_cast<double>(count));
        };
        const auto& [u, v, mapped] = m_values[number(place[1], m_rows) * m_columns + number(place[0], m_columns)];
        return mapped > 0 ? Shown{{u, v}} : Shown{};
    }

private:
    void readPfm(const std::string& file) {
        const std::string head = "PF\n" + std::to_string(m_columns) + ' ' + std::to_string(m_rows) + "\n-1.0\n";
        ASSERT_EQ(file.substr(0, head.size()), head);
        ASSERT_EQ(file.size(), head.size() + m_columns * m_rows * 3 * sizeof(float));
        for (std::size_t i = 0; i < m_columns * m_rows; ++i) {
            std::array<float, 3> value{};
            std::memcpy(value.data(), file.data() + head.size() + i * sizeof(value), sizeof(value));
            m_values.push_back({value[0], value[1], value[2]});
        }
    }

    void readPng(const std::string& file) {
        constexpr std::size_t SIGNATURE = 8;
        ASSERT_EQ(png_sig_cmp(reinterpret_cast<const unsigned char*>(file.data()), 0, SIGNATURE), 0);
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        std::string_view rest(file);
        png_set_read_fn(png, &rest, [](png_structp reader, png_bytep to, std::size_t count) {
            auto* const from = static_cast<std::string_view*>(png_get_io_ptr(reader));
            std::memcpy(to, from->data(), count);
            from->remove_prefix(count);
        });
        png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
        EXPECT_EQ(png_get_image_width(png, info), m_columns);
        EXPECT_EQ(png_get_bit_depth(png, info), 16);
        // The first row is the top one, the first byte of a number the larger one.
        for (std::size_t row = m_rows; row-- > 0;) {
            const unsigned char* bytes = png_get_rows(png, info)[row];
            for (std::size_t column = 0; column < m_columns; ++column) {
                std::array<double, 3> value{};
                for (double& part : value) {
                    part = (256.0 * bytes[0] + bytes[1]) / 65535;
                    bytes += 2;
                }
                m_values.push_back(value);
            }
        }
        png_destroy_read_struct(&png, &info, nullptr);
    }

    std::size_t m_columns;
    std::size_t m_rows;
    std::vector<std::array<double, 3>> m_values;  ///< u, v, mapped; row by row from the bottom
};

struct Case {
    std::string display;
    InputKind kind;
    double up = 1;    ///< of the axis of a fisheye: 1 or -1
    int columns = 0;  ///< of a panorama in pixels, twice its rows; 0: as many as usual
    double error = ERROR;

    [[nodiscard]] std::string name() const {
        std::string text = display + "_" + nameOf(kind) + (up < 0 ? "_downwards" : "") +
                           (columns > 0 ? "_" + std::to_string(columns) : "");
        std::replace(text.begin(), text.end(), '-', '_');
        return text;
    }
};

std::ostream& operator<<(std::ostream& out, const Case& tested) {
    return out << tested.name();
}

class ExportedWarps : public ExportDisplayTest, public testing::WithParamInterface<Case> {
protected:
    /// A place of the picture whose light arrives.
    struct Lit {
        P2 picture;
        P3 point;
        P3 direction;  ///< in which it is seen
    };

    [[nodiscard]] static bool isMirrored() { return GetParam().display == "collimated"; }

    /// Pictures with pixels enough for what a pixel shows, and few enough for a test of all formats.
    void makeSmall() {
        // The resolution of a map file is its own.
        if (GetParam().display != "warped-wall") {
            for (const std::wstring& id : config().getProjectorConfigIds()) {
                config().getProjectorConfig(id)->setWidth(480);
                config().getProjectorConfig(id)->setHeight(300);
            }
        }
    }

    [[nodiscard]] std::vector<Lit> litPlaces(const ChannelChoice& channel, std::vector<P2> picture) const {
        std::vector<LayoutPoint> arrivals(picture.size());
        ScreenMapper(config(), channel).toLayout(picture, arrivals);
        std::vector<Lit> lit;
        for (std::size_t i = 0; i < picture.size(); ++i) {
            if (arrivals[i].isMapped) {
                const P3& point = arrivals[i].point;
                lit.push_back({picture[i], point,
                               isMirrored() ? belonging::TracedMirror().directionOf(point) : point - eyePoint()});
            }
        }
        return lit;
    }

    [[nodiscard]] double errorOf(const ChannelChoice& channel, const ContentInput& input, const P2& shown,
                                 const Lit& lit) const {
        // In a mirror, what is seen stands somewhere along the direction.
        const P3 point = isMirrored() ? input.view().eye + lit.direction : lit.point;
        switch (input.kind()) {
            case InputKind::LAYOUT:
                return belonging::errorOnLayout(config(), channel, input, shown, lit.picture);
            case InputKind::SCREEN:
                return belonging::errorOnScreen(input, shown, lit.point);
            case InputKind::CUBE: {
                // Six faces beside each other; what lies on the edge between two of them may count to either.
                double least = 1e9;
                for (const double nudge : {-1e-6, 1e-6}) {
                    const double face = std::clamp(std::floor(6 * shown[0] + nudge), 0.0, 5.0);
                    const InputPlace place{{6 * shown[0] - face, shown[1]}, static_cast<std::uint8_t>(face)};
                    least = std::min(least, belonging::errorOf(input, place, point, lit.direction));
                }
                return least;
            }
            case InputKind::FRUSTUM:
            case InputKind::FISHEYE:
            case InputKind::EQUIRECTANGULAR:
                break;
        }
        return belonging::errorOf(input, {shown, 0}, point, lit.direction);
    }

    /// Those that the input has content for: beyond the circle of a fisheye it has none.
    static std::vector<Lit> withContent(const ContentInput& input, std::vector<Lit> lit) {
        if (input.kind() != InputKind::LAYOUT && input.kind() != InputKind::SCREEN) {
            std::erase_if(lit, [&input](const Lit& place) { return !input.placeOf(place.direction).has_value(); });
        }
        return lit;
    }

    struct Found {
        std::size_t notShown = 0;
        double largest = 0;
    };

    template <class Player>
    [[nodiscard]] Found compare(const Player& player, const ChannelChoice& channel, const ContentInput& input,
                                const std::vector<Lit>& lit) const {
        Found found;
        for (const Lit& place : lit) {
            const Shown shown = player.at(place.picture);
            found.notShown += shown.empty() ? 1 : 0;
            for (const P2& content : shown) {
                const double error = errorOf(channel, input, content, place);
                found.largest = std::max(found.largest, error);
            }
        }
        return found;
    }

    static std::string written(const ChannelWarp& warp, const ContentInput& input, WarpFormat format,
                               std::size_t* broken = nullptr) {
        std::ostringstream out;
        const std::size_t lost = writeWarp(format, warp, {input.faces(), input.wrapsAround()}, out);
        if (broken != nullptr) {
            *broken = lost;
        }
        return out.str();
    }

    /// What is stated is the largest that there is, but for rounding.
    static double atMost(double stated) { return std::min(GetParam().error, stated * (1 + 1e-6) + 1e-6); }

    void expectInTriangles(const ChannelChoice& channel, const ContentInput& input, const ChannelSight& sight,
                           const std::vector<Lit>& lit) const {
        const ChannelWarp warp = ChannelWarp::of(sight, input, {.error = GetParam().error});
        const double aspect = static_cast<double>(warp.pixels()[0]) / warp.pixels()[1];
        const Found found = compare(ObjPlayer(written(warp, input, WarpFormat::OBJ), aspect), channel, input, lit);
        EXPECT_LE(found.largest, atMost(warp.error().largest)) << channel.describe();
        EXPECT_LE(found.notShown, warp.leftOutAtPoles() > 0 ? 1U : 0U) << channel.describe();
    }

    void expectInMesh(const ChannelChoice& channel, const ContentInput& input, const ChannelSight& sight,
                      const std::vector<Lit>& lit) const {
        const ChannelWarp warp = ChannelWarp::of(sight, input, {.error = GetParam().error, .forGrids = true});
        std::size_t broken = 0;
        const MeshPlayer player(written(warp, input, WarpFormat::MESH, &broken));
        const Found found = compare(player, channel, input, lit);
        EXPECT_LE(found.largest, atMost(warp.error().largestOfGrid)) << channel.describe();
        std::set<std::size_t> cells;
        for (const Lit& place : lit) {
            if (player.at(place.picture).empty()) {
                cells.insert(player.cellOf(place.picture));
            }
        }
        EXPECT_LE(cells.size(), broken) << channel.describe();
        // What is lost is small, but where a whole rim is one direction.
        const double most = GetParam().up < 0 ? MOST_LOST_AT_RIM : MOST_LOST;
        EXPECT_LE(static_cast<double>(found.notShown), most * static_cast<double>(lit.size())) << channel.describe();
    }

    void expectInPixels(const ChannelChoice& channel, const ContentInput& input, const ChannelWarp& warp,
                        const std::vector<Lit>& lit) const {
        std::vector<P2> pictures;
        for (const Lit& place : lit) {
            pictures.push_back(PixelPlayer::middleOf(place.picture, warp.pixels()));
        }
        const std::vector<Lit> middles = withContent(input, litPlaces(channel, pictures));
        for (const WarpFormat format : {WarpFormat::PFM, WarpFormat::PNG_16}) {
            const PixelPlayer player(written(warp, input, format), warp.pixels(), format);
            for (const Lit& place : lit) {
                EXPECT_FALSE(player.at(place.picture).empty()) << channel.describe() << ' ' << place.picture;
            }
            const Found found = compare(player, channel, input, middles);
            EXPECT_EQ(found.notShown, 0U) << channel.describe() << ' ' << nameOf(format);
            // Numbers of 32 bits, or half a step of 16 bits across and upwards.
            const P2 pixels{static_cast<double>(input.pixels()[0]) * static_cast<double>(input.faces()),
                            static_cast<double>(input.pixels()[1])};
            const double step = format == WarpFormat::PFM ? 1.2e-7 : 0.5 / 65535;
            EXPECT_LE(found.largest, 1.01 * step * norm(pixels) + 1e-5) << channel.describe() << ' ' << nameOf(format);
        }
    }
};

TEST_P(ExportedWarps, AskInEveryFormatForWhatBelongsToThePlace) {
    loadAny(GetParam().display);
    makeSmall();
    std::mt19937 random(31);
    std::uniform_real_distribution<double> part(0, 1);
    const auto all = channels();
    std::size_t lit = 0;
    for (const ChannelChoice& channel : all) {
        const ChannelSight sight(config(), channel);
        InputChoice choice = belonging::choiceOf(GetParam().kind, GetParam().up);
        if (GetParam().columns > 0) {
            choice.pixels = {GetParam().columns, GetParam().columns / 2};
        }
        const ContentInput input(config(), sight, choice);
        std::vector<P2> picture;
        for (int i = 0; i < PLACES / static_cast<int>(all.size()); ++i) {
            picture.emplace_back(part(random), part(random));
        }
        std::vector<Lit> places = litPlaces(channel, picture);
        lit += places.size();
        places = withContent(input, std::move(places));
        expectInTriangles(channel, input, sight, places);
        expectInMesh(channel, input, sight, places);
        expectInPixels(channel, input, ChannelWarp::of(sight, input, {.places = WarpRequest::Places::PIXELS}), places);
    }
    EXPECT_GT(lit, static_cast<std::size_t>(PLACES) / 10);
}

INSTANTIATE_TEST_SUITE_P(OwnDisplays, ExportedWarps,
                         testing::Values(Case{"planetarium", InputKind::FRUSTUM},
                                         Case{"planetarium", InputKind::FISHEYE},
                                         Case{"planetarium", InputKind::FISHEYE, -1, 0, LARGE_ERROR},
                                         Case{"planetarium", InputKind::EQUIRECTANGULAR, 1, 0, LARGE_ERROR},
                                         Case{"planetarium", InputKind::CUBE, 1, 0, LARGE_ERROR},
                                         Case{"round", InputKind::FRUSTUM}, Case{"round", InputKind::FISHEYE},
                                         Case{"round", InputKind::EQUIRECTANGULAR}, Case{"round", InputKind::CUBE},
                                         Case{"cave", InputKind::FRUSTUM}, Case{"cave", InputKind::EQUIRECTANGULAR},
                                         Case{"cave", InputKind::CUBE}, Case{"cave", InputKind::LAYOUT},
                                         Case{"cave", InputKind::SCREEN}, Case{"stereo-wall", InputKind::FRUSTUM},
                                         Case{"stereo-wall", InputKind::FISHEYE}, Case{"inset", InputKind::FRUSTUM},
                                         Case{"inset", InputKind::EQUIRECTANGULAR}, Case{"inset", InputKind::CUBE}),
                         [](const auto& tested) { return tested.param.name(); });

INSTANTIATE_TEST_SUITE_P(
    Examples, ExportedWarps,
    testing::Values(Case{"planar-wall", InputKind::FRUSTUM}, Case{"planar-wall", InputKind::LAYOUT},
                    Case{"planar-wall", InputKind::SCREEN}, Case{"curved-wall", InputKind::FRUSTUM},
                    Case{"curved-wall", InputKind::SCREEN}, Case{"curved-wall", InputKind::EQUIRECTANGULAR, 1, 6400},
                    Case{"curved-wall", InputKind::EQUIRECTANGULAR, 1, 10240}, Case{"collimated", InputKind::FRUSTUM},
                    Case{"collimated", InputKind::EQUIRECTANGULAR}, Case{"cylinder", InputKind::FRUSTUM},
                    Case{"cylinder", InputKind::LAYOUT}, Case{"dome", InputKind::FRUSTUM},
                    Case{"dome", InputKind::EQUIRECTANGULAR}, Case{"dome", InputKind::FISHEYE, -1, 0, LARGE_ERROR},
                    Case{"dome", InputKind::SCREEN}, Case{"spherical-dome", InputKind::FISHEYE},
                    Case{"spherical-dome", InputKind::EQUIRECTANGULAR}, Case{"warped-wall", InputKind::FRUSTUM},
                    Case{"warped-wall", InputKind::SCREEN}, Case{"lens-cylinder", InputKind::FRUSTUM},
                    Case{"lens-cylinder", InputKind::EQUIRECTANGULAR}, Case{"mesh-rays", InputKind::FRUSTUM},
                    Case{"mesh-rays", InputKind::CUBE}, Case{"cockpit", InputKind::FRUSTUM},
                    Case{"cockpit", InputKind::EQUIRECTANGULAR, 1, 0, LARGE_ERROR},
                    Case{"closed-cylinder", InputKind::EQUIRECTANGULAR}, Case{"closed-cylinder", InputKind::CUBE}),
    [](const auto& tested) { return tested.param.name(); });

}  // namespace
