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

/// The mean of two by two pixels each.
/// @param pixelAt light of a pixel by its number
template <class PixelAt>
std::vector<Light> halved(std::size_t width, std::size_t height, const PixelAt& pixelAt) {
    // Where a side is odd, its last pixel counts twice: what is cut off is not seen, and sizes stay whole.
    std::vector<Light> smaller;
    smaller.reserve(((width + 1) / 2) * ((height + 1) / 2));
    for (std::size_t row = 0; row < height; row += 2) {
        const std::size_t above = row * width;
        const std::size_t below = std::min(row + 1, height - 1) * width;
        for (std::size_t left = 0; left < width; left += 2) {
            const std::size_t right = std::min(left + 1, width - 1);
            const Light aboveLeft = pixelAt(above + left);
            const Light aboveRight = pixelAt(above + right);
            const Light belowLeft = pixelAt(below + left);
            const Light belowRight = pixelAt(below + right);
            Light& mean = smaller.emplace_back();
            for (std::size_t part = 0; part < mean.size(); ++part) {
                mean[part] = 0.25F * ((aboveLeft[part] + aboveRight[part]) + (belowLeft[part] + belowRight[part]));
            }
        }
    }
    return smaller;
}

/// Between the middles of the four nearest pixels.
/// @param pixelAt light of a pixel by its number
template <class PixelAt>
Light between(const Point<double, 2>& picture, std::size_t width, std::size_t height, const PixelAt& pixelAt) {
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
    const std::size_t lower = std::min(row + 1, height - 1);
    const Light aboveLeft = pixelAt(row * width + column);
    const Light aboveRight = pixelAt(row * width + next);
    const Light belowLeft = pixelAt(lower * width + column);
    const Light belowRight = pixelAt(lower * width + next);
    Light light;
    for (std::size_t part = 0; part < light.size(); ++part) {
        const float above = aboveLeft[part] + across * (aboveRight[part] - aboveLeft[part]);
        const float below = belowLeft[part] + across * (belowRight[part] - belowLeft[part]);
        light[part] = above + along * (below - above);
    }
    return light;
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

ProjectedLight::ProjectedLight(PlayedPictures pictures, const BlendCurve& curve, double residual)
    : m_pictures(std::move(pictures)), m_residual(static_cast<float>(residual)) {
    for (std::size_t code = 0; code <= WHITE; ++code) {
        m_lightOf.push_back(static_cast<float>(curve.lightOf(static_cast<double>(code) / WHITE)));
    }
    std::size_t wide = width();
    std::size_t high = height();
    while (std::min(wide, high) > 1) {
        std::vector<Light> means =
            m_levels.empty()
                ? halved(wide, high, [this](std::size_t pixel) { return lightOf(pixel); })
                : halved(wide, high, [&finer = m_levels.back().pixels](std::size_t i) { return finer[i]; });
        wide = (wide + 1) / 2;
        high = (high + 1) / 2;
        m_levels.push_back({wide, high, std::move(means)});
    }
}

Light ProjectedLight::lightOf(std::size_t pixel) const {
    const unsigned int factor = m_pictures.factor.empty() ? WHITE : m_pictures.factor[pixel];
    const float lift = m_pictures.lift.empty() ? 0.0F : m_lightOf[m_pictures.lift[pixel]];
    Light light;
    for (std::size_t part = 0; part < COLOURS; ++part) {
        const unsigned int content = m_pictures.content[COLOURS * pixel + part];
        const float blended = m_lightOf[(content * factor + WHITE_8 / 2) / WHITE_8];
        light[part] = m_residual + (1 - m_residual) * std::min(blended + lift, 1.0F);
    }
    light[COLOURS] = m_lightOf[factor];
    return light;
}

Light ProjectedLight::atLevel(std::size_t level, const Point<double, 2>& picture) const {
    if (level == 0) {
        return between(picture, width(), height(), [this](std::size_t pixel) { return lightOf(pixel); });
    }
    const Level& means = m_levels[level - 1];
    return between(picture, means.width, means.height, [&means](std::size_t i) { return means.pixels[i]; });
}

Light ProjectedLight::at(const Point<double, 2>& picture, double footprint) const {
    if (!(footprint > 1)) {
        return atLevel(0, picture);
    }
    const double level = std::min(std::log2(footprint), static_cast<double>(m_levels.size()));
    const auto finer = static_cast<std::size_t>(level);
    const std::size_t coarser = std::min(finer + 1, m_levels.size());
    const auto part = static_cast<float>(level - static_cast<double>(finer));
    Light light = atLevel(finer, picture);
    const Light other = atLevel(coarser, picture);
    for (std::size_t i = 0; i < light.size(); ++i) {
        light[i] += part * (other[i] - light[i]);
    }
    return light;
}

}  // namespace Veltrani::DisplayLight
