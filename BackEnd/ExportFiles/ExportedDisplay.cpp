#include "ExportFiles/ExportedDisplay.h"

#include "Common/QuotedText.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportFiles/ExportFolder.h"
#include "ExportFiles/JsonValue.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace Veltrani::ExportFiles {

namespace {

using DisplayBlend::BlendCurve;
using DisplayExport::InputKind;
using DisplayExport::RenderFrustum;
using DisplayExport::ViewFrame;
using Json = nlohmann::json;

constexpr double ANY = std::numeric_limits<double>::max();
constexpr int MOST_CHANNELS = 1'000'000;
constexpr double PER_CENT = 100;
/// No manifest of a display that there is has a thousandth of it.
constexpr std::size_t LARGEST_MANIFEST = std::size_t{64} << 20U;
constexpr std::size_t LARGEST_FILE = std::size_t{2} << 30U;

[[noreturn]] void refuseFile(const std::string& path, const std::string& what) {
    throw VeltraniParseException(fromUtf8OrBytes(path + ": " + what));
}

bool isHexadecimal(const std::string& text) {
    constexpr std::size_t DIGITS = 64;
    return text.size() == DIGITS && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

/// A name without a way to another folder.
std::string nameOfFile(const JsonValue& value) {
    std::string name = value.text();
    if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos ||
        name.find('\0') != std::string::npos) {
        value.refuse("the name of a file in the same folder");
    }
    return name;
}

ExportedFile fileOf(const JsonValue& value) {
    ExportedFile file{nameOfFile(value.at("name")), value.at("kind").text(), value.at("sha256").text(), 0};
    if (!isHexadecimal(file.sha256)) {
        value.at("sha256").refuse("64 hexadecimal digits");
    }
    if (file.kind == "blend" || file.kind == "lift") {
        constexpr int SHALLOW = 8;
        constexpr int DEEP = 16;
        file.bits = value.at("bits").whole(SHALLOW, DEEP);
        if (file.bits != SHALLOW && file.bits != DEEP) {
            value.at("bits").refuse("8 or 16");
        }
    }
    return file;
}

BlendCurve curveOf(const JsonValue& value) {
    constexpr double LEAST = 0.2;
    constexpr double MOST = 5;
    if (value.isText()) {
        if (value.text() != "srgb") {
            value.refuse("a gamma from 0.2 to 5, or \"srgb\"");
        }
        return BlendCurve::srgb();
    }
    return BlendCurve::ofGamma(value.number(LEAST, MOST));
}

ExportedBlend blendOf(const JsonValue& value) {
    ExportedBlend blend;
    const std::string use = value.at("use").text();
    if (use != "factor" && use != "alpha") {
        value.at("use").refuse("\"factor\" or \"alpha\"");
    }
    blend.isAlpha = use == "alpha";
    blend.curve = curveOf(value.at("gamma"));
    const JsonValue lift = value.at("lift");
    blend.hasLift = !lift.isNull();
    if (blend.hasLift) {
        blend.residual = lift.at("residualPercent").number(0, PER_CENT) / PER_CENT;
    }
    return blend;
}

/// Three axes of length one at right angles to each other, to what a file keeps of them.
ViewFrame frameOf(const JsonValue& value) {
    const ViewFrame frame{value.at("position").point(), value.at("right").point(), value.at("forward").point(),
                          value.at("up").point()};
    constexpr double ROUNDING = 1e-6;
    const auto isUnit = [](const Point<double, 3>& axis) { return std::abs(norm(axis) - 1) < ROUNDING; };
    if (!isUnit(frame.right) || !isUnit(frame.forward) || !isUnit(frame.up) ||
        !(norm(cross(frame.right, frame.forward) - frame.up) < ROUNDING)) {
        value.refuse("axes of length 1 at right angles, up being right x forward");
    }
    return frame;
}

/// @param value the member "frustum" of an input
RenderFrustum frustumOf(const JsonValue& value) {
    const JsonValue tangents = value.at("tangents");
    const RenderFrustum frustum{frameOf(value), tangents.at("left").number(-ANY, ANY),
                                tangents.at("right").number(-ANY, ANY), tangents.at("bottom").number(-ANY, ANY),
                                tangents.at("top").number(-ANY, ANY)};
    if (!(frustum.left < frustum.right && frustum.bottom < frustum.top)) {
        tangents.refuse("left below right and bottom below top");
    }
    return frustum;
}

void readInput(const JsonValue& value, ExportedChannelView& view) {
    const auto kind = DisplayExport::inputKindOf(value.at("kind").text());
    if (!kind) {
        value.at("kind").refuse("the kind of an input");
    }
    view.input.kind = *kind;
    view.input.pixels = value.at("pixels").pixels();
    view.wrapsAround = value.at("wrapsAround").truth();
    if (*kind == InputKind::FRUSTUM) {
        view.frustum = frustumOf(value.at("frustum"));
    } else if (*kind != InputKind::LAYOUT && *kind != InputKind::SCREEN) {
        view.frustum.view = frameOf(value.at("view"));
    }
    if (*kind == InputKind::FISHEYE) {
        view.input.aperture = value.at("aperture").number(0, 2 * std::numbers::pi);
    }
}

ExportedChannelView viewOf(const JsonValue& value) {
    ExportedChannelView view;
    const JsonValue channel = value.at("channel");
    view.number = static_cast<std::size_t>(channel.at("number").whole(1, MOST_CHANNELS));
    view.name = channel.at("name").text();
    view.projectorId = channel.at("projector").text();
    view.pixels = channel.at("pixels").pixels();
    view.eye = value.at("eye").point();
    view.eyeNumber = static_cast<std::size_t>(value.at("eyeNumber").whole(1, MOST_CHANNELS));
    view.isInMirror = value.at("seenInMirror").truth();
    readInput(value.at("input"), view);
    // Exports of earlier versions have no blends.
    if (value.has("blend") && !value.at("blend").isNull()) {
        view.blend = blendOf(value.at("blend"));
    }
    for (const JsonValue& file : value.at("files").items()) {
        view.files.push_back(fileOf(file));
    }
    return view;
}

/// Throws for a text that is no JSON, with its place.
Json parsed(std::string_view manifest, const std::string& name) {
    try {
        return Json::parse(manifest);
    } catch (const Json::parse_error& error) {
        refuseFile(name, "is no manifest: found something else than JSON at byte " + std::to_string(error.byte) +
                             ", expected the manifest.json of an export: name the folder of one");
    } catch (const Json::out_of_range&) {
        refuseFile(name,
                   "is no manifest: found a number beyond the range of doubles, expected the manifest.json of an "
                   "export: name the folder of one");
    }
}

}  // namespace

std::string ExportedChannelView::describe() const {
    return "channel " + name + " (" + projectorId + ")";
}

const ExportedFile* ExportedChannelView::fileOf(std::string_view kind) const {
    const ExportedFile* best = nullptr;
    for (const ExportedFile& file : files) {
        if (file.kind == kind && (best == nullptr || file.bits > best->bits)) {
            best = &file;
        }
    }
    return best;
}

ExportedDisplay ExportedDisplay::read(const std::string& utf8Folder) {
    const std::string path = utf8Folder + '/' + ExportFolder::MANIFEST;
    const std::string text = RegularFile(path).readAll(LARGEST_MANIFEST);
    if (text.size() > LARGEST_MANIFEST) {
        refuseFile(path, "is no manifest: it has more than " + std::to_string(LARGEST_MANIFEST) +
                             " bytes: name the folder of an export");
    }
    return parse(text, path, utf8Folder);
}

ExportedDisplay ExportedDisplay::parse(std::string_view manifest, const std::string& name,
                                       const std::string& utf8Folder) {
    const Json json = parsed(manifest, name);
    const JsonValue document(json, name + ": ");
    if (document.at("schema").text() != "screenmanager/export") {
        document.at("schema").refuse("\"screenmanager/export\"");
    }
    static_cast<void>(document.at("version").whole(1, 1));
    ExportedDisplay display;
    display.m_folder = utf8Folder;
    display.m_manifest = name;
    for (const JsonValue& source : document.at("files").items()) {
        const JsonValue digest = source.at("sha256");
        display.m_sources.push_back({source.at("name").text(), digest.isNull() ? std::string() : digest.text()});
    }
    for (const JsonValue& view : document.at("views").items()) {
        display.m_views.push_back(viewOf(view));
    }
    if (display.m_views.empty()) {
        document.at("views").refuse("one view or more");
    }
    return display;
}

std::string ExportedDisplay::bytesOf(const ExportedFile& file) const {
    const std::string path = pathOf(file);
    std::string bytes = RegularFile(path).readAll(LARGEST_FILE);
    if (bytes.size() > LARGEST_FILE) {
        refuseFile(path, "is larger than " + std::to_string(LARGEST_FILE) + " bytes: export the display again");
    }
    const std::string found = DisplayReport::ReportHead::source(path).sha256;
    if (found != file.sha256) {
        refuseFile(path, "was changed since it was exported: found the checksum " + found + ", expected " +
                             file.sha256 + " as in " + ExportFolder::MANIFEST + ": export the display again");
    }
    return bytes;
}

}  // namespace Veltrani::ExportFiles
