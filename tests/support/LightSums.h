#pragma once

#include "DisplayBlend/BlendPicture.h"
#include "DisplayReport/coverage/ChannelLight.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// The light of all channels at random places of their pictures, added up as it is read between pixels: linearly both
/// ways. Independent of how weights are made: only the ways of light are the library's.
///
/// A place where linear interpolation alone may be off by more than `EVEN` is steep: its sum is held against what
/// interpolation may be off, and it is counted. See `bendAt`.
struct LightSums {
    /// What the light may be off where it is not steep.
    static constexpr double EVEN = 0.001;
    std::size_t places = 0;   ///< that land
    std::size_t shared = 0;   ///< of these, by two channels and more
    std::size_t steep = 0;    ///< of these
    double worst = 0;         ///< difference from one where it is not steep
    double worstSteep = 0;    ///< the same where it is
    double worstBeyond = 0;   ///< of what steep places are off, the part beyond their bound
    std::string where;        ///< the worst: which channels put what light on it, from which pixel
    std::string whereBeyond;  ///< the same of the part beyond the bound

    using P2 = Point<double, 2>;
    using Picture = Veltrani::DisplayBlend::BlendPicture;
    using ChannelLight = Veltrani::DisplayReport::ChannelLight;

    /// @param pictures light of each channel, with its pixels
    static LightSums of(const Veltrani::DisplayReport::ChannelLights& lights, const std::vector<Picture>& pictures,
                        std::size_t wanted) {
        LightSums sums;
        std::mt19937 random(20);
        std::uniform_real_distribution<double> part(0, 1);
        for (std::size_t own = 0; own < lights.size(); ++own) {
            std::vector<P2> points;
            for (std::size_t i = 0; i < wanted / lights.size() + 1; ++i) {
                points.emplace_back(part(random), part(random));
            }
            sums.addFrom(own, points, lights, pictures);
        }
        return sums;
    }

    /// How far linear interpolation between pixels may be off around a picture point: as far as along the rows and
    /// along the columns of the four pixels around it, together.
    static double bendAt(const Picture& picture, const P2& point) {
        const auto first = [](double place, std::size_t count) {
            const auto last = static_cast<double>(count) - 1;
            return static_cast<std::ptrdiff_t>(std::clamp(place * static_cast<double>(count) - 0.5, 0.0, last));
        };
        const auto light = [&picture](std::ptrdiff_t x, std::ptrdiff_t y) {
            const auto at = [](std::ptrdiff_t place, std::size_t count) {
                return static_cast<std::size_t>(
                    std::clamp<std::ptrdiff_t>(place, 0, static_cast<std::ptrdiff_t>(count) - 1));
            };
            return static_cast<double>(picture.at(at(x, picture.width), at(y, picture.height)));
        };
        const std::ptrdiff_t column = first(point[0], picture.width);
        const std::ptrdiff_t row = first(point[1], picture.height);
        double across = 0;
        double upwards = 0;
        for (const std::ptrdiff_t beside : {0, 1}) {
            across = std::max(across, offBetween([&](std::ptrdiff_t i) { return light(column + i, row + beside); }));
            upwards = std::max(upwards, offBetween([&](std::ptrdiff_t i) { return light(column + beside, row + i); }));
        }
        return across + upwards;
    }

    /// How far what is linear between the samples 0 and 1 of a row may be off, by the second differences D(i) of the
    /// samples.
    ///
    /// - A function that goes on bending as it does between them, by f'' = D, is off by at most D / 8, in the middle.
    /// - With a kink between them, of which the part t lies behind it, the slope jumps by s: D(0) = (1 - t) s,
    ///   D(1) = t s, and at the kink it is off by t (1 - t) s, which is at most half of the larger one. The surface has
    ///   kinks, and so has the light beyond the middle of the outermost pixel, which is taken for that there.
    /// - A step by s between them gives D(0) = s and D(1) = -s, and may be off by s, next to the sample behind it.
    template <class Sample>
    static double offBetween(const Sample& sample) {
        const auto bend = [&sample](std::ptrdiff_t i) { return sample(i - 1) + sample(i + 1) - 2 * sample(i); };
        const double here = bend(0);
        const double next = bend(1);
        const double larger = std::max(std::abs(here), std::abs(next));
        constexpr double OF_A_STEP = 1;
        constexpr double OF_A_KINK = 0.5;
        constexpr double OF_A_BEND = 0.125;
        if (here * next < 0) {
            return OF_A_STEP * larger;
        }
        const double sign = here + next < 0 ? -1 : 1;
        const bool goesOn = std::min(sign * bend(-1), sign * bend(2)) >= 0.5 * larger;
        return (goesOn ? OF_A_BEND : OF_A_KINK) * larger;
    }

private:
    void addFrom(std::size_t own, const std::vector<P2>& points, const Veltrani::DisplayReport::ChannelLights& lights,
                 const std::vector<Picture>& pictures) {
        std::vector<ChannelLight::Landing> landings(points.size());
        lights[own]->land(points, landings);
        std::vector<Veltrani::DisplayReport::SurfacePoint> on;
        for (const ChannelLight::Landing& landing : landings) {
            on.push_back(landing.on);
        }
        std::vector<std::vector<ChannelLight::Reach>> reaches(lights.size(),
                                                              std::vector<ChannelLight::Reach>(on.size()));
        for (std::size_t other = 0; other < lights.size(); ++other) {
            lights[other]->reach(on, reaches[other]);
        }
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (!landings[i].hits) {
                continue;
            }
            double light = 0;
            double bend = 0;
            std::size_t lit = 0;
            std::ostringstream text;
            for (std::size_t other = 0; other < lights.size(); ++other) {
                const ChannelLight::Reach& reach = reaches[other][i];
                const P2 picture = other == own ? points[i] : reach.picture;
                const bool isInside = picture[0] >= 0 && picture[0] <= 1 && picture[1] >= 0 && picture[1] <= 1;
                if (other != own && !(reach.inSight && isInside && reach.side * landings[i].side >= 0)) {
                    continue;
                }
                ++lit;
                light += pictures[other].between(picture);
                bend += bendAt(pictures[other], picture);
                text << " channel " << other << " pixel " << picture[0] * static_cast<double>(pictures[other].width)
                     << ' ' << picture[1] * static_cast<double>(pictures[other].height) << " light "
                     << pictures[other].between(picture) << ';';
            }
            add(std::abs(light - 1), bend, lit, text.str());
        }
    }

    void add(double off, double bend, std::size_t lit, const std::string& text) {
        ++places;
        shared += lit > 1 ? 1 : 0;
        if (bend <= EVEN) {
            where = off > worst ? text : where;
            worst = std::max(worst, off);
            return;
        }
        ++steep;
        worstSteep = std::max(worstSteep, off);
        whereBeyond = off - bend > worstBeyond ? text : whereBeyond;
        worstBeyond = std::max(worstBeyond, off - bend);
    }
};
