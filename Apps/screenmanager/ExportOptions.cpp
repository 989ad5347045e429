#include "ExportOptions.h"

#include "ColumnsByRows.h"
#include "Common/DecimalText.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <numbers>
#include <string_view>
#include <utility>

namespace {

using namespace Veltrani::DisplayExport;
using namespace Veltrani::ExportFiles;

constexpr double RADIANS_PER_DEGREE = std::numbers::pi / 180;
constexpr int MOST_JOBS = 256;
constexpr int MOST_NODES_IN_ROW = 1'000'000;
constexpr int MOST_INPUT_PIXELS = 65536;
constexpr long long MOST_INPUT_TOGETHER = 4'294'967'296;

/// Numbers with commas between them; none for anything else.
template <std::size_t N>
std::optional<Point<double, N>> numbersOf(std::string_view text) {
    Point<double, N> numbers;
    for (std::size_t i = 0; i < N; ++i) {
        const auto comma = text.find(',');
        const bool isLast = i + 1 == N;
        if ((comma == std::string_view::npos) != isLast) {
            return std::nullopt;
        }
        const auto number = Veltrani::parseFinite(text.substr(0, comma));
        if (!number) {
            return std::nullopt;
        }
        numbers[i] = *number;
        text.remove_prefix(isLast ? text.size() : comma + 1);
    }
    return numbers;
}

template <std::size_t N>
Point<double, N> requireNumbers(const std::string& option, const std::string& text, const std::string& form) {
    const auto numbers = numbersOf<N>(text);
    if (!numbers) {
        OptionList::refuse(option, "\"" + text + "\" is not " + form);
    }
    return *numbers;
}

/// A number within bounds, both included unless `above`.
struct Bounds {
    double least;
    double most;
    bool isAbove = false;  ///< the least one is not included
};

double requireWithin(const std::string& option, double value, const Bounds& bounds) {
    const bool isHigh = bounds.isAbove ? value > bounds.least : value >= bounds.least;
    if (!isHigh || !(value <= bounds.most)) {
        OptionList::refuse(option, std::string("is not ") + (bounds.isAbove ? "above " : "from ") +
                                       std::to_string(static_cast<long long>(bounds.least)) + " to " +
                                       std::to_string(static_cast<long long>(bounds.most)));
    }
    return value;
}

/// Adds an option whose value is a number within bounds.
void addBoundedNumber(OptionList& line, const char* name, const Bounds& bounds, const char* help, const char* form,
                      std::function<void(double)> take) {
    line.addNumber(
            name, [name, bounds, take = std::move(take)](double value) { take(requireWithin(name, value, bounds)); },
            help)
        .typeName(form);
}

void addOutputOptions(OptionList& line, ExportOptions& options) {
    line.add("-o,--output", options.output, "Folder to make").required().typeName("FOLDER");
    line.addFlag("--force", options.force, "Replace an earlier export, or fill an empty folder");
    line.add("--channel", options.channels, "One of the channels; may be given several times (default: all)")
        .oneValueEach()
        .typeName("NAME|ID");
    line.add("--jobs", options.jobs, "Processes that work at the same time (default: as many as there are cores)")
        .between(1, MOST_JOBS)
        .typeName("N");
    line.add("--format", options.formats, "mesh (default), obj, pfm, pfm3d or png16; may be given several times")
        .oneOf(warpFormatNames())
        .oneValueEach()
        .typeName("FORMAT");
    line.addFlag("--test-pictures", options.request.hasTestPictures,
                 "A picture for each projector: number, name, arrow, grid, targets at their pixels");
    line.add("--content", options.content, "Picture to bend for every channel, as its player would (PNG)")
        .typeName("FILE");
}

void addWarpOptions(OptionList& line, ExportOptions& options) {
    ExportRequest& request = options.request;
    line.addRead(
            "--nodes",
            [&request](const std::string& text) {
                if (text == "auto") {
                    request.nodes.reset();
                    return;
                }
                const auto nodes = ColumnsByRows::parse(text);
                constexpr long long MOST = static_cast<long long>(ChannelWarp::MOST_NODES);
                if (!nodes || !nodes->isWithin(2, MOST_NODES_IN_ROW, MOST)) {
                    OptionList::refuse("--nodes", "\"" + text +
                                                      "\" is not auto or COLUMNSxROWS, such as 97x61, with 2 to " +
                                                      std::to_string(MOST_NODES_IN_ROW) + " each and at most " +
                                                      std::to_string(MOST) + " nodes");
                }
                request.nodes = Point<int, 2>{nodes->columns, nodes->rows};
            },
            "Nodes of mesh and obj (default auto: the fewest that keep the error)")
        .typeName("auto|COLUMNSxROWS");
    constexpr double LARGEST_ERROR = 1e6;
    addBoundedNumber(line, "--error", {0, LARGEST_ERROR, true},
                     "What a player may be off between nodes, pixels of the input (default 0.25)", "PIXELS",
                     [&request](double error) { request.error = error; });
    line.addFlag("--wrap", options.isCut, "Cut cells where a panorama begins again, for players that do not repeat it");
}

void addInputOptions(OptionList& line, ExportOptions& options) {
    InputChoice& input = options.request.input;
    line.addRead(
            "--input", [&input](const std::string& name) { input.kind = inputKindOf(name).value_or(input.kind); },
            "What feeds a channel: frustum (default), fisheye, equirectangular, cube, layout or screen")
        .oneOf(inputKindNames())
        .typeName("INPUT");
    line.add("--eye", options.eyes, "Where it is seen from, native units; may be given several times: stereo, seats")
        .oneValueEach()
        .typeName("X,Y,Z");
    line.add("--axis", options.axis,
             "Direction of the middle of a frustum, a fisheye or a cube (default: of the frustum where its light is, "
             "else "
             "0,1,0)")
        .typeName("X,Y,Z");
    line.add("--centre", options.centre,
             "Azimuth and elevation of the middle of equirectangular, degrees (default 0,0)")
        .typeName("AZIMUTH,ELEVATION");
    addBoundedNumber(line, "--roll", {-360, 360}, "Turn about that direction, right down, degrees (default 0)",
                     "DEGREES", [&options](double degrees) {
                         options.hasRoll = true;
                         options.request.input.roll = RADIANS_PER_DEGREE * degrees;
                     });
    addBoundedNumber(line, "--aperture", {0, 360, true}, "Angle across the circle of a fisheye, degrees (default 180)",
                     "DEGREES", [&options](double degrees) {
                         options.hasAperture = true;
                         options.request.input.aperture = RADIANS_PER_DEGREE * degrees;
                     });
    addBoundedNumber(line, "--margin", {0, 100},
                     "Of a frustum on each side, per cent of its width or height (default 2)", "PERCENT",
                     [&options](double percent) {
                         constexpr double PER_CENT = 0.01;
                         options.hasMargin = true;
                         options.request.input.margin = PER_CENT * percent;
                     });
    addGridOption(line,
                  {.name = "--size",
                   .help = "Of the input, of one face of a cube, in pixels (default: as the manual page states)",
                   .form = "WIDTHxHEIGHT",
                   .example = "4096x4096",
                   .things = "pixels",
                   .fewest = 1,
                   .most = MOST_INPUT_PIXELS,
                   .mostTogether = MOST_INPUT_TOGETHER},
                  [&input](const ColumnsByRows& size) {
                      input.pixels = {size.columns, size.rows};
                  });
}

void addConventionOptions(OptionList& line, ExportOptions& options) {
    RenderConvention& convention = options.request.convention;
    line.addRead(
            "--convention",
            [&convention](const std::string& name) {
                convention.depth = RenderConvention::depthOf(name).value_or(convention.depth);
            },
            "Depths of the projection matrix: opengl (default), direct3d or reversed-z")
        .oneOf(RenderConvention::depthNames())
        .typeName("CONVENTION");
    line.addRead(
            "--world",
            [&convention](const std::string& name) {
                convention.world = RenderConvention::worldOf(name).value_or(convention.world);
            },
            "Axis of the engine that points up: z-up (default) or y-up")
        .oneOf(RenderConvention::worldNames())
        .typeName("WORLD");
    line.addRead(
            "--handed",
            [&convention](const std::string& name) {
                convention.handed = RenderConvention::handedOf(name).value_or(convention.handed);
            },
            "Hand of the axes of the engine: right (default) or left")
        .oneOf(RenderConvention::handedNames())
        .typeName("HAND");
    constexpr double FARTHEST = 1e12;
    addBoundedNumber(line, "--near", {0, FARTHEST, true}, "Near plane, native units (default 0.1)", "LENGTH",
                     [&convention](double plane) { convention.nearPlane = plane; });
    addBoundedNumber(line, "--far", {0, FARTHEST, true}, "Far plane, native units (default 1000)", "LENGTH",
                     [&convention](double plane) { convention.farPlane = plane; });
}

/// Refuses what only another input would heed.
void requireHeeded(const ExportOptions& options) {
    const InputKind kind = options.request.input.kind;
    const auto require = [kind](bool isGiven, const char* option, std::initializer_list<InputKind> kinds) {
        if (isGiven && std::find(kinds.begin(), kinds.end(), kind) == kinds.end()) {
            std::string names;
            for (const InputKind heeding : kinds) {
                names += (names.empty() ? "" : " or ") + nameOf(heeding);
            }
            OptionList::refuse(option, "needs --input " + names + ": leave it out");
        }
    };
    require(!options.axis.empty(), "--axis", {InputKind::FRUSTUM, InputKind::FISHEYE, InputKind::CUBE});
    require(!options.centre.empty(), "--centre", {InputKind::EQUIRECTANGULAR});
    require(options.hasRoll, "--roll",
            {InputKind::FRUSTUM, InputKind::FISHEYE, InputKind::EQUIRECTANGULAR, InputKind::CUBE});
    require(options.hasAperture, "--aperture", {InputKind::FISHEYE});
    require(options.hasMargin, "--margin", {InputKind::FRUSTUM});
    require(options.isCut, "--wrap", {InputKind::EQUIRECTANGULAR, InputKind::CUBE});
}

/// The direction that is stated; none where none is.
std::optional<Point<double, 3>> directionOf(const ExportOptions& options) {
    if (!options.axis.empty()) {
        const auto axis = requireNumbers<3>("--axis", options.axis, "X,Y,Z, such as 0,0,1");
        if (axis == Point<double, 3>()) {
            OptionList::refuse("--axis", "0,0,0 points nowhere");
        }
        return axis;
    }
    if (!options.centre.empty()) {
        const auto centre = requireNumbers<2>("--centre", options.centre, "AZIMUTH,ELEVATION in degrees, such as 90,0");
        constexpr double WHOLE_TURN = 360;
        constexpr double QUARTER_TURN = 90;
        requireWithin("--centre", centre[0], {-WHOLE_TURN, WHOLE_TURN});
        requireWithin("--centre", centre[1], {-QUARTER_TURN, QUARTER_TURN});
        const double azimuth = RADIANS_PER_DEGREE * centre[0];
        const double elevation = RADIANS_PER_DEGREE * centre[1];
        return Point<double, 3>{std::sin(azimuth) * std::cos(elevation), std::cos(azimuth) * std::cos(elevation),
                                std::sin(elevation)};
    }
    return std::nullopt;
}

/// Fills what the options state together.
void complete(ExportOptions& options) {
    ExportRequest& request = options.request;
    requireHeeded(options);
    request.input.direction = directionOf(options);
    for (const std::string& eye : options.eyes) {
        options.eyePoints.push_back(requireNumbers<3>("--eye", eye, "X,Y,Z, such as -0.03,0,1.2"));
    }
    if (!options.formats.empty()) {
        request.formats.clear();
    }
    for (const std::string& name : options.formats) {
        const auto format = warpFormatOf(name);
        if (format && std::find(request.formats.begin(), request.formats.end(), *format) == request.formats.end()) {
            request.formats.push_back(*format);
        }
    }
    request.seam = options.isCut ? Seam::CUT : Seam::CONTINUE;
    if (options.isCut &&
        std::find(request.formats.begin(), request.formats.end(), WarpFormat::MESH) != request.formats.end()) {
        OptionList::refuse("--wrap", "a mesh of rows and columns has no cut cells: choose --format obj");
    }
    if (!(request.convention.nearPlane < request.convention.farPlane)) {
        OptionList::refuse("--near", "the near plane lies before the far plane, see --far");
    }
}

}  // namespace

void addExportOptions(OptionList& line, ExportOptions& options) {
    addDisplayFile(line, options.file);
    addOutputOptions(line, options);
    addInputOptions(line, options);
    addConventionOptions(line, options);
    addWarpOptions(line, options);
    line.whenComplete([&options] { complete(options); });
}
