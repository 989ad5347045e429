#include "DisplayLight/ProjectedLight.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportFiles/ContentPicture.h"
#include "ExportFiles/PngReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veltrani::DisplayLight {

namespace {

using DisplayBlend::BlendCurve;
using ExportFiles::ExportedChannelView;
using ExportFiles::ExportedDisplay;
using ExportFiles::ExportedFile;
using ExportFiles::PngParts;
using ExportFiles::PngPixels;
using Light = ProjectedLight::Light;

constexpr std::size_t COLOURS = 3;
constexpr std::uint16_t WHITE = 65535;
constexpr unsigned int WHITE_8 = 255;

[[noreturn]] void refuseView(const ExportedChannelView& view, const std::string& what) {
    throw VeltraniException(fromUtf8OrBytes(view.describe() + ": " + what));
}

std::string sizeText(std::size_t width, std::size_t height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

PngPixels read(const ExportedDisplay& display, const ExportedChannelView& view, const ExportedFile& file,
               PngParts parts) {
    PngPixels pixels = ExportFiles::pngPixels(display.bytesOf(file), display.pathOf(file), parts,
                                              ExportFiles::ContentPicture::MOST_PIXELS);
    const auto width = static_cast<std::size_t>(view.pixels[0]);
    const auto height = static_cast<std::size_t>(view.pixels[1]);
    if (pixels.width != width || pixels.height != height) {
        refuseView(view, display.pathOf(file) + ": found " + sizeText(pixels.width, pixels.height) + ", expected " +
                             sizeText(width, height) + ", those of the channel: export the display again");
    }
    return pixels;
}

/// Code values of 16 bits of a grey picture; `alpha` states opacities, which hold 1 - that.
std::vector<std::uint16_t> readGrey(const ExportedDisplay& display, const ExportedChannelView& view,
                                    const ExportedFile& file, bool isAlpha) {
    constexpr int DEEP = 16;
    const bool isDeep = file.bits == DEEP;
    const PngPixels pixels = read(display, view, file,
                                  isAlpha ? (isDeep ? PngParts::GREY_ALPHA_16 : PngParts::GREY_ALPHA_8)
                                          : (isDeep ? PngParts::GREY_16 : PngParts::GREY_8));
    constexpr std::uint16_t PER_CODE = WHITE / WHITE_8;
    const std::size_t step = isAlpha ? 2 : 1;
    std::vector<std::uint16_t> codes(pixels.width * pixels.height);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        const std::size_t place = step * i + step - 1;
        const auto code = static_cast<std::uint16_t>(isDeep ? pixels.codes16[place] : PER_CODE * pixels.codes8[place]);
        codes[i] = isAlpha ? static_cast<std::uint16_t>(WHITE - code) : code;
    }
    return codes;
}

/// The light of every code value of 16 bits.
std::vector<float> tableOf(const BlendCurve& curve, double residual) {
    std::vector<float> table(WHITE + std::size_t{1});
    for (std::size_t code = 0; code < table.size(); ++code) {
        table[code] = static_cast<float>(residual + (1 - residual) * curve.lightOf(static_cast<double>(code) / WHITE));
    }
    return table;
}

}  // namespace

PlayedPictures PlayedPictures::read(const ExportedDisplay& display, const ExportedChannelView& view) {
    const ExportedFile* const content = view.fileOf("content");
    if (content == nullptr) {
        refuseView(view, display.manifestPath() + ": it has no content: export the display with --content");
    }
    PlayedPictures pictures;
    PngPixels pixels = DisplayLight::read(display, view, *content, PngParts::ANY_AS_RGB_8);
    pictures.width = pixels.width;
    pictures.height = pixels.height;
    pictures.content = std::move(pixels.codes8);
    if (!view.blend) {
        return pictures;
    }
    const ExportedFile* const blend = view.fileOf("blend");
    if (blend == nullptr) {
        refuseView(view, display.manifestPath() + ": it names no file of its blend: export the display again");
    }
    pictures.factor = readGrey(display, view, *blend, view.blend->isAlpha);
    const ExportedFile* const lift = view.fileOf("lift");
    if (view.blend->hasLift && lift == nullptr) {
        refuseView(view, display.manifestPath() + ": it names no file of its black lift: export the display again");
    }
    if (view.blend->hasLift) {
        pictures.lift = readGrey(display, view, *lift, false);
    }
    return pictures;
}

ProjectedLight::ProjectedLight(const PlayedPictures& pictures, const BlendCurve& curve, double residual) {
    const std::vector<float> lightOf = tableOf(curve, residual);
    const std::vector<float> weightOf = tableOf(curve, 0);
    Level sharp{pictures.width, pictures.height, std::vector<Light>(pictures.width * pictures.height)};
    for (std::size_t i = 0; i < sharp.pixels.size(); ++i) {
        const unsigned int factor = pictures.factor.empty() ? WHITE : pictures.factor[i];
        const unsigned int lift = pictures.lift.empty() ? 0U : pictures.lift[i];
        for (std::size_t part = 0; part < COLOURS; ++part) {
            const unsigned int code = (pictures.content[COLOURS * i + part] * factor + WHITE_8 / 2) / WHITE_8 + lift;
            sharp.pixels[i][part] = lightOf[std::min<unsigned int>(code, WHITE)];
        }
        sharp.pixels[i][COLOURS] = weightOf[factor];
    }
    m_levels.push_back(std::move(sharp));
    while (std::min(m_levels.back().width, m_levels.back().height) > 1) {
        m_levels.push_back(m_levels.back().half());
    }
}

ProjectedLight::Level ProjectedLight::Level::half() const {
    // Where a side is odd, its last pixel counts twice: what is cut off is not seen, and sizes stay whole.
    Level smaller{(width + 1) / 2, (height + 1) / 2, {}};
    smaller.pixels.resize(smaller.width * smaller.height);
    for (std::size_t row = 0; row < smaller.height; ++row) {
        const Light* const above = &pixels[2 * row * width];
        const Light* const below = &pixels[std::min(2 * row + 1, height - 1) * width];
        for (std::size_t column = 0; column < smaller.width; ++column) {
            const std::size_t left = 2 * column;
            const std::size_t right = std::min(left + 1, width - 1);
            Light& mean = smaller.pixels[row * smaller.width + column];
            for (std::size_t part = 0; part < mean.size(); ++part) {
                mean[part] =
                    0.25F * ((above[left][part] + above[right][part]) + (below[left][part] + below[right][part]));
            }
        }
    }
    return smaller;
}

Light ProjectedLight::Level::at(const Point<double, 2>& picture) const {
    constexpr double MIDDLE = 0.5;
    const double right =
        std::clamp(picture[0] * static_cast<double>(width) - MIDDLE, 0.0, static_cast<double>(width - 1));
    const double down =
        std::clamp((1 - picture[1]) * static_cast<double>(height) - MIDDLE, 0.0, static_cast<double>(height - 1));
    const auto column = static_cast<std::size_t>(right);
    const auto row = static_cast<std::size_t>(down);
    const auto across = static_cast<float>(right - static_cast<double>(column));
    const auto along = static_cast<float>(down - static_cast<double>(row));
    const std::size_t next = std::min(column + 1, width - 1);
    const Light* const upper = &pixels[row * width];
    const Light* const lower = &pixels[std::min(row + 1, height - 1) * width];
    Light light;
    for (std::size_t part = 0; part < light.size(); ++part) {
        const float above = upper[column][part] + across * (upper[next][part] - upper[column][part]);
        const float below = lower[column][part] + across * (lower[next][part] - lower[column][part]);
        light[part] = above + along * (below - above);
    }
    return light;
}

Light ProjectedLight::at(const Point<double, 2>& picture, double footprint) const {
    if (!(footprint > 1)) {
        return m_levels.front().at(picture);
    }
    const double level = std::min(std::log2(footprint), static_cast<double>(m_levels.size() - 1));
    const auto finer = static_cast<std::size_t>(level);
    const std::size_t coarser = std::min(finer + 1, m_levels.size() - 1);
    const auto part = static_cast<float>(level - static_cast<double>(finer));
    Light light = m_levels[finer].at(picture);
    const Light other = m_levels[coarser].at(picture);
    for (std::size_t i = 0; i < light.size(); ++i) {
        light[i] += part * (other[i] - light[i]);
    }
    return light;
}

}  // namespace Veltrani::DisplayLight
