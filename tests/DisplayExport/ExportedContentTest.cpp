#include "DisplayExport/ChannelWarp.h"

#include "BelongingContent.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayReport/maps/ScreenMapper.h"
#include "ExportDisplays.h"
#include "support/Sanitizers.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <ostream>
#include <random>

namespace {

using namespace Veltrani::DisplayExport;
using belonging::choiceOf;
using belonging::errorOf;
using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::DisplayReport::ScreenMapper;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr int PLACES = repetitions(100'000);  // of a display
// Pixels of the input. With less allowed a grid has more nodes, and the search for it takes longer.
constexpr double ERROR = IS_SANITIZED ? 2.0 : 0.25;

/// A player that knows nothing but the triangles of a warp: finds the one around a place of the picture and
/// interpolates in it.
class Player {
public:
    explicit Player(const ChannelWarp& warp) : m_buckets(SIDE * SIDE) {
        warp.forEachPiece([this](const WarpPiece& piece) {
            P2 lower = piece.corners[0].picture;
            P2 upper = lower;
            for (const WarpCorner& corner : piece.corners) {
                for (std::size_t i = 0; i < 2; ++i) {
                    lower[i] = std::min(lower[i], corner.picture[i]);
                    upper[i] = std::max(upper[i], corner.picture[i]);
                }
            }
            for (std::size_t row = bucket(lower[1]); row <= bucket(upper[1]); ++row) {
                for (std::size_t column = bucket(lower[0]); column <= bucket(upper[0]); ++column) {
                    m_buckets[row * SIDE + column].push_back(m_pieces.size());
                }
            }
            m_pieces.push_back(piece);
        });
    }

    [[nodiscard]] std::optional<InputPlace> shownAt(const P2& place) const {
        for (const std::size_t i : m_buckets[bucket(place[1]) * SIDE + bucket(place[0])]) {
            const auto& [a, b, c] = m_pieces[i].corners;
            const double area = cross2(b.picture - a.picture, c.picture - a.picture);
            const double ofB = cross2(place - a.picture, c.picture - a.picture) / area;
            const double ofC = cross2(b.picture - a.picture, place - a.picture) / area;
            constexpr double EDGE = -1e-9;
            if (ofB >= EDGE && ofC >= EDGE && 1 - ofB - ofC >= EDGE) {
                return InputPlace{a.content + ofB * (b.content - a.content) + ofC * (c.content - a.content),
                                  m_pieces[i].face};
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] const std::vector<WarpPiece>& pieces() const { return m_pieces; }

private:
    static constexpr std::size_t SIDE = 128;

    static std::size_t bucket(double along) {
        return static_cast<std::size_t>(std::clamp(along * SIDE, 0.0, SIDE - 1.0));
    }
    static double cross2(const P2& a, const P2& b) { return a[0] * b[1] - a[1] * b[0]; }

    std::vector<WarpPiece> m_pieces;
    std::vector<std::vector<std::size_t>> m_buckets;
};

struct Case {
    std::string display;
    InputKind kind;
    P3 eyeOffset{};        ///< from the eye point of the display to another eye
    double error = ERROR;  ///< pixels of the input
    double up = 1;         ///< direction of the axis of a fisheye: 1 or -1

    [[nodiscard]] std::string name() const {
        const double aside = eyeOffset[0];
        std::string text = display + "_" + nameOf(kind) +
                           (aside < 0   ? "_left"
                            : aside > 0 ? "_right"
                                        : "") +
                           (error > ERROR ? "_coarse" : "") + (up < 0 ? "_downwards" : "");
        std::replace(text.begin(), text.end(), '-', '_');
        return text;
    }
};

std::ostream& operator<<(std::ostream& out, const Case& tested) {
    return out << tested.name();
}

class ExportedContent : public ExportDisplayTest, public testing::WithParamInterface<Case> {
protected:
    struct Result {
        int lit = 0;
        int notShown = 0;
        double largest = 0;
        double leftOut = 0;  ///< pixels of the channel
        std::size_t nodes = 0;
    };

    Result compare(const ChannelChoice& channel, const ContentInput& input, const ChannelSight& sight, Seam seam,
                   std::mt19937& random, int places) {
        const ChannelWarp warp = ChannelWarp::of(sight, input, {.error = GetParam().error, .seam = seam});
        const Player player(warp);
        ScreenMapper mapper(config(), channel);
        Result result;
        result.leftOut = warp.areaLeftOutAtPoles() * warp.pixels()[0] * warp.pixels()[1];
        EXPECT_EQ(result.leftOut > 0, warp.leftOutAtPoles() > 0);
        result.nodes = warp.nodes().size();
        EXPECT_LE(warp.error().largest, GetParam().error);
        std::uniform_real_distribution<double> part(0, 1);
        for (int i = 0; i < places; ++i) {
            const P2 place{part(random), part(random)};
            LayoutPoint arrival;
            mapper.toLayout({&place, 1}, {&arrival, 1});
            if (!arrival.isMapped) {
                continue;
            }
            ++result.lit;
            const auto shown = player.shownAt(place);
            if (!shown) {
                ++result.notShown;
            } else {
                result.largest =
                    std::max(result.largest, errorOf(input, *shown, arrival.point, arrival.point - input.view().eye));
            }
        }
        return result;
    }
};

/// A place of the screen requests the content that belongs there, whatever feeds the display.
TEST_P(ExportedContent, IsWhatBelongsToThePlaceOnTheScreen) {
    loadAny(GetParam().display);
    const auto all = channels();
    std::mt19937 random(19);
    int lit = 0;
    int notShown = 0;
    for (const ChannelChoice& channel : all) {
        const ChannelSight sight(config(), channel, eyePoint() + GetParam().eyeOffset);
        const ContentInput input(config(), sight, choiceOf(GetParam().kind, GetParam().up));
        EXPECT_EQ(input.view().eye, eyePoint() + GetParam().eyeOffset);
        for (const Seam seam : {Seam::CONTINUE, Seam::CUT}) {
            if (seam == Seam::CUT && !input.wrapsAround()) {
                continue;
            }
            const Result result = compare(channel, input, sight, seam, random, PLACES / static_cast<int>(all.size()));
            EXPECT_LE(result.largest, GetParam().error) << channel.describe() << ", " << result.nodes << " nodes";
            lit += result.lit;
            notShown += result.notShown;
            EXPECT_LE(result.leftOut, 0.02) << channel.describe();
            EXPECT_TRUE(result.notShown == 0 || result.leftOut > 0) << channel.describe() << ' ' << result.notShown;
        }
    }
    EXPECT_GT(lit, PLACES / 10);
    EXPECT_LE(notShown, 1);
}

class ExportedPixels : public ExportedContent {};

/// Every pixel has what belongs to its middle, and every lit place lies in a pixel that has something.
TEST_P(ExportedPixels, HaveWhatBelongsToTheirMiddles) {
    loadAny(GetParam().display);
    std::mt19937 random(23);
    std::uniform_real_distribution<double> part(0, 1);
    int lit = 0;
    for (const ChannelChoice& channel : channels()) {
        const ChannelSight sight(config(), channel);
        const ContentInput input(config(), sight, choiceOf(GetParam().kind));
        const ChannelWarp warp = ChannelWarp::of(sight, input, {.places = WarpRequest::Places::PIXELS});
        ScreenMapper mapper(config(), channel);
        const auto arrivalAt = [&mapper](const P2& place) {
            LayoutPoint arrival;
            mapper.toLayout({&place, 1}, {&arrival, 1});
            return arrival;
        };
        for (int i = 0; i < 5000; ++i) {
            const P2 place{part(random), part(random)};
            const auto column = static_cast<std::size_t>(place[0] * static_cast<double>(warp.columns()));
            const auto row = static_cast<std::size_t>(place[1] * static_cast<double>(warp.rows()));
            const WarpNode& pixel = warp.at(column, row);
            if (arrivalAt(place).isMapped) {
                ++lit;
                EXPECT_TRUE(pixel.isUsable()) << channel.describe() << ' ' << place;
            }
            const LayoutPoint middle = arrivalAt(warp.pictureOf(column, row));
            EXPECT_EQ(middle.isMapped, pixel.state == WarpNode::State::MAPPED);
            if (middle.isMapped) {
                EXPECT_LT(errorOf(input, {pixel.content, pixel.face}, middle.point, middle.point - eyePoint()), 1e-6);
            }
        }
    }
    EXPECT_GT(lit, 1000);
}

INSTANTIATE_TEST_SUITE_P(Pixels, ExportedPixels,
                         testing::Values(Case{"inset", InputKind::FRUSTUM},
                                         Case{"planetarium", InputKind::EQUIRECTANGULAR},
                                         Case{"round", InputKind::CUBE}, Case{"warped-wall", InputKind::FRUSTUM}),
                         [](const auto& tested) { return tested.param.name(); });

class ExportedMirror : public ExportDisplayTest {};

/// The content that a place requests is seen in the direction whose ray, reflected in the mirror, arrives where the
/// light of that place does.
TEST_F(ExportedMirror, RequestsWhatIsSeenInIt) {
    loadAny("collimated");
    const belonging::TracedMirror mirror;
    std::mt19937 random(29);
    std::uniform_real_distribution<double> part(0, 1);
    int lit = 0;
    for (const ChannelChoice& channel : channels()) {
        const ChannelSight sight(config(), channel);
        const ContentInput input(config(), sight, {});
        const ChannelWarp warp = ChannelWarp::of(sight, input, {});
        EXPECT_LE(warp.error().largest, ERROR);
        const Player player(warp);
        ScreenMapper mapper(config(), channel);
        for (int i = 0; i < PLACES / 3; ++i) {
            const P2 place{part(random), part(random)};
            LayoutPoint arrival;
            mapper.toLayout({&place, 1}, {&arrival, 1});
            if (!arrival.isMapped) {
                continue;
            }
            ++lit;
            const auto shown = player.shownAt(place);
            ASSERT_TRUE(shown) << place;
            const auto seen = [&](const P2& content) {
                return mirror.seenIn(input.frustum()->directionOf(content), arrival.point);
            };
            const P3 there = seen(shown->at);
            const double pixel = std::min(norm(seen(shown->at + P2{1.0 / input.pixels()[0], 0.0}) - there),
                                          norm(seen(shown->at + P2{0.0, 1.0 / input.pixels()[1]}) - there));
            // Pixels are not square on the screen.
            EXPECT_LE(norm(there - arrival.point), 2 * ERROR * pixel + 1e-9) << channel.describe() << ' ' << place;
        }
    }
    EXPECT_GT(lit, PLACES / 10);
}

INSTANTIATE_TEST_SUITE_P(Frusta, ExportedContent,
                         testing::Values(Case{"planetarium", InputKind::FRUSTUM}, Case{"round", InputKind::FRUSTUM},
                                         Case{"cave", InputKind::FRUSTUM}, Case{"stereo-wall", InputKind::FRUSTUM},
                                         Case{"stereo-wall", InputKind::FRUSTUM, {-0.0325, 0.0, 0.0}},
                                         Case{"stereo-wall", InputKind::FRUSTUM, {0.0325, 0.0, 0.0}},
                                         Case{"inset", InputKind::FRUSTUM}, Case{"planar-wall", InputKind::FRUSTUM},
                                         Case{"curved-wall", InputKind::FRUSTUM}, Case{"cylinder", InputKind::FRUSTUM},
                                         Case{"dome", InputKind::FRUSTUM}, Case{"spherical-dome", InputKind::FRUSTUM},
                                         Case{"warped-wall", InputKind::FRUSTUM},
                                         Case{"lens-cylinder", InputKind::FRUSTUM},
                                         Case{"mesh-rays", InputKind::FRUSTUM}, Case{"cockpit", InputKind::FRUSTUM},
                                         Case{"closed-cylinder", InputKind::FRUSTUM}),
                         [](const auto& tested) { return tested.param.name(); });

INSTANTIATE_TEST_SUITE_P(
    Panoramas, ExportedContent,
    testing::Values(Case{"planetarium", InputKind::FISHEYE}, Case{"planetarium", InputKind::EQUIRECTANGULAR},
                    Case{"planetarium", InputKind::CUBE}, Case{"round", InputKind::EQUIRECTANGULAR},
                    Case{"round", InputKind::CUBE}, Case{"round", InputKind::CUBE, {}, 2.5},
                    Case{"closed-cylinder", InputKind::EQUIRECTANGULAR}, Case{"cave", InputKind::EQUIRECTANGULAR},
                    Case{"cave", InputKind::CUBE}, Case{"planar-wall", InputKind::FISHEYE},
                    Case{"dome", InputKind::FISHEYE}, Case{"dome", InputKind::EQUIRECTANGULAR},
                    Case{"dome", InputKind::FISHEYE, {}, ERROR, -1},
                    Case{"spherical-dome", InputKind::FISHEYE, {}, ERROR, -1},
                    Case{"planetarium", InputKind::FISHEYE, {}, ERROR, -1}),
    [](const auto& tested) { return tested.param.name(); });

}  // namespace
