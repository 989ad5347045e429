#pragma once

#include "../DisplayExport/ExportDisplays.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayBlend/BlendCurve.h"
#include "DisplayBlend/DisplayBlender.h"
#include "DisplayLight/LightSum.h"
#include "DisplayReport/basics/ReportHead.h"
#include "ExportFiles/ExportManifest.h"
#include "ExportFiles/ViewExport.h"
#include "support/GreyPngFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Displays that are exported, and whose light is added up from the files alone.
class AddedLightTest : public ExportDisplayTest {
protected:
    using Json = nlohmann::json;
    using BlendCurve = Veltrani::DisplayBlend::BlendCurve;
    using ContentPicture = Veltrani::ExportFiles::ContentPicture;
    using ExportedDisplay = Veltrani::ExportFiles::ExportedDisplay;
    using ExportRequest = Veltrani::ExportFiles::ExportRequest;
    using InputKind = Veltrani::DisplayExport::InputKind;
    using LightRequest = Veltrani::DisplayLight::LightRequest;
    using LightSum = Veltrani::DisplayLight::LightSum;
    using LitPicture = Veltrani::DisplayLight::LitPicture;
    using LitPlace = Veltrani::DisplayLight::LitPlace;
    using WarpFormat = Veltrani::ExportFiles::WarpFormat;
    /// Code values of 16 bits of the blend of a channel, row by row from the top.
    using Factors = std::function<std::vector<std::uint16_t>(std::size_t channel, const Point<int, 2>& pixels)>;

    static std::shared_ptr<const ContentPicture> white() {
        return std::make_shared<const ContentPicture>(2, 2, std::vector<unsigned char>(12, 255));
    }

    /// Writes the folder of an export without blends.
    void exportAll(const ExportRequest& request) {
        namespace fs = std::filesystem;
        m_player = m_files.file("player");
        fs::remove_all(m_player);
        fs::create_directory(m_player);
        const Veltrani::ExportFiles::ViewExport exporter(config(), request);
        std::vector<std::string> views;
        for (const auto& channel : channels()) {
            views.push_back(exporter.write({channel, std::nullopt}, m_player, {}).json);
        }
        writeManifest(Json::parse(Veltrani::ExportFiles::manifestOf(request, "m", {}, views)));
    }

    /// Adds a blend to each channel of it.
    void addBlends(const Factors& factors, const Json& gamma, int bits = 16, bool isAlpha = false) {
        Json document = manifest();
        for (std::size_t i = 0; i < document["views"].size(); ++i) {
            Json& view = document["views"][i];
            view["blend"] = {{"use", isAlpha ? "alpha" : "factor"}, {"gamma", gamma}, {"lift", nullptr}};
            addFile(view, "blend", i, factors(i, pixelsOf(view)), bits, isAlpha);
        }
        writeManifest(document);
    }

    /// The blends of the display, as a player is to have them.
    void addBlendsOfTheDisplay(double gamma) {
        const Veltrani::DisplayBlend::DisplayBlender blender(config());
        addBlends(
            [&](std::size_t channel, const Point<int, 2>& /*pixels*/) {
                return blender.weights(channel).codes16(BlendCurve::ofGamma(gamma));
            },
            gamma);
    }

    /// Adds a black lift to a channel that has a blend.
    void addLift(std::size_t channel, const std::vector<std::uint16_t>& codes, double residualPercent) {
        Json document = manifest();
        Json& view = document["views"][channel];
        view["blend"]["lift"] = {{"residualPercent", residualPercent}, {"blackPercent", 2 * residualPercent}};
        addFile(view, "lift", channel, codes, 16, false);
        writeManifest(document);
    }

    [[nodiscard]] Json manifest() const {
        std::ifstream in(m_player + "/manifest.json");
        return Json::parse(in);
    }
    void writeManifest(const Json& document) const { std::ofstream(m_player + "/manifest.json") << document; }

    [[nodiscard]] LitPicture lit(std::size_t width, std::size_t height, bool hasErrors = false,
                                 bool isSharp = true) const {
        LightRequest request;
        request.width = width;
        request.height = height;
        request.hasErrors = hasErrors;
        request.isSharp = isSharp;
        return LightSum(config(), ExportedDisplay::read(m_player)).picture(request);
    }

    /// The direction from the eye that the middle of a place shows.
    static P3 directionOf(const LitPicture& picture, std::size_t place) {
        const std::size_t width = picture.view.width();
        return *picture.view.directionOf(
            {static_cast<double>(place % width) + 0.5, static_cast<double>(place / width) + 0.5});
    }

    /// What is thrown when the light is added up.
    [[nodiscard]] std::string faultOfSum() const {
        try {
            static_cast<void>(lit(20, 20));
        } catch (const VeltraniExceptionBase& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "";
    }

    std::string m_player;
    TemporaryFolder m_files;

private:
    static Point<int, 2> pixelsOf(const Json& view) {
        return {view["channel"]["pixels"][0], view["channel"]["pixels"][1]};
    }

    void addFile(Json& view, const std::string& kind, std::size_t channel, const std::vector<std::uint16_t>& codes,
                 int bits, bool isAlpha) const {
        const Point<int, 2> pixels = pixelsOf(view);
        const std::string name = std::to_string(channel) + "." + kind + ".png";
        std::vector<std::uint16_t> written;
        for (const std::uint16_t code : codes) {
            const int most = bits == 16 ? 65535 : 255;
            const auto own = static_cast<int>(std::lround(code / 65535.0 * most));
            if (isAlpha) {
                written.push_back(0);
            }
            written.push_back(static_cast<std::uint16_t>(isAlpha ? most - own : own));
        }
        GreyPngFile{static_cast<std::size_t>(pixels[0]), static_cast<std::size_t>(pixels[1]), bits, isAlpha}.write(
            m_player + '/' + name, written);
        view["files"].push_back({{"name", name},
                                 {"kind", kind},
                                 {"sha256", Veltrani::DisplayReport::ReportHead::source(m_player + '/' + name).sha256},
                                 {"bits", bits}});
    }
};
