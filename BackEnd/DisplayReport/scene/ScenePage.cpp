#include "DisplayReport/scene/ScenePage.h"

#include "Common/OpensslFault.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/Base64.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/scene/SceneAxes.h"
#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/scene/ViewerScript.h"

#include <openssl/evp.h>
#include <openssl/sha.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

using Json = nlohmann::ordered_json;
using P3 = Point<double, 3>;

/// Graphics processors count in single precision: places are given from the middle of the picture, in its size.
class Normal {
public:
    explicit Normal(const Extent& frame)
        : m_centre(frame.minimum() + frame.size() * 0.5), m_scale(std::max(norm(frame.size()), SMALLEST)) {}

    [[nodiscard]] const P3& centre() const { return m_centre; }
    [[nodiscard]] double scale() const { return m_scale; }

    /// Three numbers per point.
    [[nodiscard]] std::string text(const std::vector<P3>& points) const {
        std::vector<float> numbers;
        numbers.reserve(points.size() * 3);
        for (const P3& point : points) {
            const P3 place = (point - m_centre) * (1 / m_scale);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                numbers.push_back(static_cast<float>(place[axis]));
            }
        }
        return base64Of(numbers);
    }

private:
    /// The size that a frame around a single point counts as; native units.
    static constexpr double SMALLEST = 1e-9;

    P3 m_centre;
    double m_scale;
};

template <std::size_t N>
std::string indexText(const std::vector<std::array<std::uint32_t, N>>& indices) {
    std::vector<std::uint32_t> numbers;
    numbers.reserve(indices.size() * N);
    for (const auto& group : indices) {
        numbers.insert(numbers.end(), group.begin(), group.end());
    }
    return base64Of(numbers);
}

/// As they are: these are read off the page.
std::string exactPoints(const std::vector<P3>& points) {
    std::vector<double> numbers;
    numbers.reserve(points.size() * 3);
    for (const P3& point : points) {
        numbers.insert(numbers.end(), {point[0], point[1], point[2]});
    }
    return base64Of(numbers);
}

Json coordinates(const P3& point) {
    return {point[0], point[1], point[2]};
}

template <class Items, class ToJson>
Json listOf(const Items& items, ToJson&& toJson) {
    Json list = Json::array();
    for (const auto& item : items) {
        list.push_back(toJson(item));
    }
    return list;
}

/// Of a channel, as they are drawn. Null where there are none.
Json jsonOf(const std::vector<SceneResidual>& residuals, const ResidualScale& scale, const std::string& unit,
            const Normal& normal) {
    std::vector<P3> points;
    std::vector<float> offsets;
    std::vector<double> picture;
    std::vector<float> pixels;
    std::vector<std::uint32_t> lines;
    std::vector<std::uint8_t> outliers;
    for (const SceneResidual& residual : residuals) {
        points.push_back(residual.point);
        const P3 offset = drawnResidual(residual.offset, scale.onScreen, scale.longestOnScreen).first;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            offsets.push_back(static_cast<float>(offset[axis] / normal.scale()));
        }
        const auto way = drawnResidual(residual.pixels, scale.inPicture, scale.longestInPicture).first;
        pixels.insert(pixels.end(), {static_cast<float>(way[0]), static_cast<float>(way[1])});
        picture.insert(picture.end(), {residual.picture[0], residual.picture[1]});
        lines.push_back(static_cast<std::uint32_t>(residual.line));
        outliers.push_back(residual.isOutlier ? 1 : 0);
    }
    return residuals.empty() ? Json()
                             : Json{{"points", normal.text(points)},
                                    {"offsets", base64Of(offsets)},
                                    {"picture", base64Of(picture)},
                                    {"pixels", base64Of(pixels)},
                                    {"lines", base64Of(lines)},
                                    {"outliers", base64Of(outliers)},
                                    {"facts", residualFacts(residuals, unit)}};
}

/// In single precision: a picture has far fewer pixels than that distinguishes.
Json jsonOf(const PictureLattice& lattice, const Normal& normal) {
    std::vector<std::uint8_t> lands(lattice.lands.begin(), lattice.lands.end());
    return {{"columns", lattice.columns},
            {"rows", lattice.rows},
            {"places", normal.text(lattice.places)},
            {"lands", base64Of(lands)}};
}

Json coloursText(const std::vector<Colour>& colours) {
    Json list = Json::array();
    for (const Colour& colour : colours) {
        list.push_back(hexText(colour));
    }
    return list;
}

Json legendJson(const SceneShading& shading, ShadeBy by, const std::vector<std::string>& names) {
    Json list = Json::array();
    for (const ShadeEntry& entry : legendOf(shading, by, names)) {
        list.push_back({{"text", entry.text},
                        {"colours", coloursText(entry.colours)},
                        {"channel", entry.channel ? Json(*entry.channel) : Json()}});
    }
    return list;
}

Json jsonOf(const SceneShading& shading, const std::vector<std::string>& names, const Normal& normal) {
    Json regions = Json::array();
    for (const ShadedRegion& region : shading.regions) {
        if (!region.triangles.empty()) {
            regions.push_back({{"channels", region.channels}, {"triangles", indexText(region.triangles)}});
        }
    }
    return {{"vertices", normal.text(shading.vertices)},
            {"regions", std::move(regions)},
            {"byCount", legendJson(shading, ShadeBy::COUNT, names)},
            {"byChannel", legendJson(shading, ShadeBy::CHANNEL, names)}};
}

/// The file of a picture, as a page can hold it.
std::string fileText(const PngPicture& picture) {
    std::ostringstream file;
    picture.write(file);
    return base64(std::as_bytes(std::span(file.view())));
}

Json jsonOf(const SceneLight& light, const Normal& normal) {
    std::vector<float> coordinates;
    for (const Point<double, 2>& place : light.coordinates) {
        coordinates.insert(coordinates.end(), {static_cast<float>(place[0]), static_cast<float>(place[1])});
    }
    return {{"vertices", normal.text(light.vertices)},
            {"coordinates", base64Of(coordinates)},
            {"triangles", indexText(light.triangles)},
            {"facts", light.facts},
            {"sides", listOf(light.sides, [](const SceneLight::Side& side) {
                 return Json{{"seen", side.seen},
                             {"shown", fileText(side.shown)},
                             {"shift", fileText(side.shift)},
                             {"unevenness", fileText(side.unevenness)}};
             })}};
}

std::vector<std::string> namesOf(const DisplayScene& scene) {
    std::vector<std::string> names;
    for (const SceneChannel& channel : scene.channels) {
        names.push_back(channel.targets.name);
    }
    return names;
}

Json jsonOf(const SceneSurface& surface, const std::vector<std::string>& names, const Normal& normal) {
    return {{"name", surface.name},
            {"shading", surface.shading ? jsonOf(*surface.shading, names, normal) : Json()},
            {"text", surface.text},
            {"vertices", normal.text(surface.vertices)},
            {"triangles", indexText(surface.triangles)},
            {"border", indexText(surface.border)}};
}

Json jsonOf(const ChannelFrustum& frustum, const Normal& normal) {
    Json edges = Json::array();
    for (const auto& edge : frustum.edges) {
        edges.push_back(normal.text(edge));
    }
    return {{"apex", coordinates(frustum.apex)},
            {"edges", std::move(edges)},
            {"rim", normal.text(frustum.rim)},
            {"mirrorVertices", normal.text(frustum.mirrorVertices)},
            {"mirrorTriangles", indexText(frustum.mirrorTriangles)}};
}

Json jsonOf(const SceneChannel& channel, const DisplayScene& scene, const Normal& normal) {
    std::vector<P3> points;
    std::vector<std::int32_t> cells;
    std::vector<double> picture;
    for (const GridTarget& target : channel.targets.grid) {
        points.push_back(target.point);
        cells.insert(cells.end(), {target.column, target.row});
        picture.insert(picture.end(), {target.picture[0], target.picture[1]});
    }
    const std::vector<std::uint8_t> beyond(channel.beyond.begin(), channel.beyond.end());
    std::vector<std::uint8_t> rimPieces;
    for (const PieceLook look : channel.rimPieces) {
        rimPieces.push_back(static_cast<std::uint8_t>(look));
    }
    return {{"name", channel.targets.name},
            {"projector", channel.targets.projectorId},
            {"colour", hexText(channel.colour)},
            {"width", channel.width},
            {"height", channel.height},
            {"fault", channel.targets.fault},
            {"remark", channel.targets.remark},
            {"placed", channel.placed},
            {"samples", channel.samples},
            {"outlineStep", scene.outlineStep},
            {"gridMissed", channel.targets.gridMissed},
            {"boundaryMissed", channel.targets.boundaryMissed},
            {"points", normal.text(points)},
            {"exactPoints", exactPoints(points)},
            {"cells", base64Of(cells)},
            {"picture", base64Of(picture)},
            {"boundary", normal.text(channel.targets.boundary)},
            {"exactBoundary", exactPoints(channel.targets.boundary)},
            {"beyond", base64Of(beyond)},
            {"rimPieces", base64Of(rimPieces)},
            {"upMark", listOf(channel.upMark, [&](const std::vector<P3>& line) { return normal.text(line); })},
            {"lattice", jsonOf(channel.lattice, normal)},
            {"residuals", scene.residuals ? jsonOf(channel.residuals, *scene.residuals, scene.unit, normal) : Json()},
            {"frustum", channel.frustum ? jsonOf(*channel.frustum, normal) : Json()}};
}

Json jsonOf(const SceneAxes& scales, const SceneAxes::Edges& edges) {
    Json axes = Json::array();
    for (std::size_t number = 0; number < scales.axes.size(); ++number) {
        const SceneAxes::Axis& axis = scales.axes[number];
        Json ticks = Json::array();
        for (const SceneAxes::Tick& tick : axis.ticks) {
            ticks.push_back({{"value", tick.value}, {"text", tick.text}});
        }
        axes.push_back({{"title", axis.title},
                        {"start", coordinates(edges.starts[number])},
                        {"end", coordinates(edges.ends[number])},
                        {"outwards", coordinates(edges.outwards[number])},
                        {"ticks", std::move(ticks)}});
    }
    return {{"minimum", coordinates(scales.box.minimum())},
            {"maximum", coordinates(scales.box.maximum())},
            {"axes", std::move(axes)}};
}

/// What an eye looks at.
P3 middleOfScreen(const DisplayScene& scene, const Normal& normal) {
    const Extent core = scene.core();
    return core.empty() ? normal.centre() : core.minimum() + core.size() * 0.5;
}

/// By number of channels, the last one for more.
std::vector<Colour> countColours() {
    std::vector<Colour> colours;
    for (std::size_t count = 0; count <= MOST_COUNTED; ++count) {
        colours.push_back(countColour(count));
    }
    return colours;
}

Json jsonOf(const DisplayScene& scene) {
    const Extent frame = scene.frame();
    const Normal normal(frame);
    const std::vector<std::string> names = namesOf(scene);
    Json document = {
        {"title", scene.title},
        {"unit", scene.unit},
        {"unitInMillimetres", scene.unitInMillimetres},
        {"columns", scene.plan.columns},
        {"rows", scene.plan.rows},
        {"targetStep", scene.targetStep},
        {"centre", coordinates(normal.centre())},
        {"scale", normal.scale()},
        {"countColours", coloursText(countColours())},
        {"channelColours", DIFFERENT_CHANNEL_COLOURS},
        {"home", coordinates(SceneCamera::directionOf("home", scene))},
        {"middle", coordinates(middleOfScreen(scene, normal))},
        {"notes", scene.notes},
        {"surfaces",
         listOf(scene.surfaces, [&](const SceneSurface& surface) { return jsonOf(surface, names, normal); })},
        {"cloud", scene.cloud ? Json{{"points", normal.text(scene.cloud->points)}} : Json()},
        {"channels",
         listOf(scene.channels, [&](const SceneChannel& channel) { return jsonOf(channel, scene, normal); })},
        {"residuals", scene.residuals
                          ? Json{{"onScreen", scene.residuals->onScreen}, {"inPicture", scene.residuals->inPicture}}
                          : Json()},
        {"light", scene.light ? jsonOf(*scene.light, normal) : Json()},
        {"eyes", listOf(scene.eyes,
                        [](const ScenePlace& eye) {
                            return Json{{"name", eye.name}, {"point", coordinates(eye.point)}};
                        })},
        {"axes", jsonOf(SceneAxes::of(frame, scene.unit),
                        SceneAxes::edgesFor(frame, SceneCamera::directionOf("home", scene)))}};
    document["mirror"] =
        scene.mirror ? Json{{"centre", coordinates(scene.mirror->centre)}, {"radius", scene.mirror->radius}} : Json();
    return document;
}

/// A text in which others stand for some of its characters.
std::string written(const std::string& text, const std::map<char, std::string_view>& others) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        const auto other = others.find(c);
        result += other == others.end() ? std::string_view(&c, 1) : other->second;
    }
    return result;
}

/// The text without any character that means something to a reader of HTML. In JSON these stand in strings alone.
std::string dataText(const Json& document) {
    constexpr int NO_INDENT = -1;
    constexpr bool ASCII = true;
    return written(document.dump(NO_INDENT, ' ', ASCII, Json::error_handler_t::replace),
                   {{'<', "\\u003c"}, {'>', "\\u003e"}, {'&', "\\u0026"}});
}

/// A text as it is written between tags.
std::string escaped(const std::string& text) {
    return written(text, {{'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&#39;"}});
}

/// What a policy names a script by.
std::string digestOf(std::string_view script) {
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    if (EVP_Q_digest(opensslContext(), "SHA256", nullptr, script.data(), script.size(), digest.data(), nullptr) != 1) {
        throwIfOpensslLacksMemory();
        throw VeltraniException(L"The page needs SHA-256, which is not available: check the OpenSSL configuration");
    }
    return "sha256-" + base64(std::as_bytes(std::span(digest)));
}

}  // namespace

void ScenePage::write(const DisplayScene& scene, std::ostream& out) {
    const std::string_view script = viewerScript();
    out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        << "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src '" << digestOf(script)
        << "'; style-src 'unsafe-inline'; img-src data:; base-uri 'none'; form-action 'none'\">\n"
        << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        << "<title>" << escaped(scene.title) << "</title>\n</head>\n<body>\n"
        << "<noscript>This page shows a display in three dimensions: allow scripts for it.</noscript>\n"
        << "<script type=\"application/json\" id=\"scene\">" << dataText(jsonOf(scene)) << "</script>\n"
        << "<script>" << script << "</script>\n</body>\n</html>\n";
}

}  // namespace Veltrani::DisplayReport
