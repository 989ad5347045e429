#include "InputOptions.h"

#include "ColumnsByRows.h"
#include "NumberOptions.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayExport;

constexpr double RADIANS_PER_DEGREE = std::numbers::pi / 180;
constexpr double USUAL_ERROR = 0.25;
constexpr int MOST_NODES_IN_ROW = 1'000'000;
constexpr int MOST_INPUT_PIXELS = 65536;
constexpr long long MOST_INPUT_TOGETHER = 4'294'967'296;

void readNodes(InputOptions& options, const std::string& text) {
    options.nodes.reset();
    options.hasAutoNodes = text == "auto";
    if (options.hasAutoNodes) {
        return;
    }
    const auto nodes = ColumnsByRows::parse(text);
    constexpr long long MOST = static_cast<long long>(ChannelWarp::MOST_NODES);
    if (!nodes || !nodes->isWithin(2, MOST_NODES_IN_ROW, MOST)) {
        OptionList::refuse("--nodes", "\"" + text + "\" is not auto or COLUMNSxROWS, such as 97x61, with 2 to " +
                                          std::to_string(MOST_NODES_IN_ROW) + " each and at most " +
                                          std::to_string(MOST) + " nodes");
    }
    options.nodes = Point<int, 2>{nodes->columns, nodes->rows};
}

Option addSize(OptionList& line, InputOptions& options) {
    return addGridOption(line,
                         {.name = "--size",
                          .help = "Of the input, of one face of a cube, in pixels (default: as the manual page states)",
                          .form = "WIDTHxHEIGHT",
                          .example = "4096x4096",
                          .things = "pixels",
                          .fewest = 1,
                          .most = MOST_INPUT_PIXELS,
                          .mostTogether = MOST_INPUT_TOGETHER},
                         [&options](const ColumnsByRows& size) {
                             options.pixels = Point<int, 2>{size.columns, size.rows};
                         });
}

}  // namespace

bool InputOptions::hasMore() const {
    return !axis.empty() || !centre.empty() || roll || aperture || margin || pixels || hasAutoNodes || error || isCut;
}

void InputOptions::requireHeeded(std::optional<InputKind> usual, bool hasEye) const {
    const auto require = [&](bool isGiven, const char* option, std::initializer_list<InputKind> heeding) {
        if (isGiven) {
            requireHeeding(usual, option, heeding);
        }
    };
    const auto seen = {InputKind::FRUSTUM, InputKind::FISHEYE, InputKind::EQUIRECTANGULAR, InputKind::CUBE};
    require(hasEye, "--eye", seen);
    require(!axis.empty(), "--axis", {InputKind::FRUSTUM, InputKind::FISHEYE, InputKind::CUBE});
    require(!centre.empty(), "--centre", {InputKind::EQUIRECTANGULAR});
    require(roll.has_value(), "--roll", seen);
    require(aperture.has_value(), "--aperture", {InputKind::FISHEYE});
    require(margin.has_value(), "--margin", {InputKind::FRUSTUM});
    require(isCut, "--wrap", {InputKind::EQUIRECTANGULAR, InputKind::CUBE});
    (void)direction();
}

void InputOptions::requireHeeding(std::optional<InputKind> usual, const std::string& option,
                                  std::initializer_list<InputKind> heeding) const {
    const std::optional<InputKind> input = kind ? kind : usual;
    if (input && std::find(heeding.begin(), heeding.end(), *input) != heeding.end()) {
        return;
    }
    std::string names;
    for (const InputKind one : heeding) {
        names += (names.empty() ? "" : " or ") + nameOf(one);
    }
    OptionList::refuse(option, "needs --input " + names + ": state it, or leave the option out");
}

void InputOptions::requireErrorHeeded(bool areUsuallyAuto) const {
    if (!error || hasAutoNodes) {
        return;
    }
    if (nodes) {
        OptionList::refuse("--error", "chooses the nodes, which --nodes states: leave one of the two out");
    }
    if (!areUsuallyAuto) {
        OptionList::refuse("--error", "needs --nodes auto: state it, or leave the option out");
    }
}

std::optional<Point<double, 3>> InputOptions::direction() const {
    if (!axis.empty()) {
        const auto stated = requireNumbers<3>("--axis", axis, "X,Y,Z, such as 0,0,1");
        if (stated == Point<double, 3>()) {
            OptionList::refuse("--axis", axis + " points nowhere");
        }
        return stated;
    }
    if (!centre.empty()) {
        const auto stated = requireNumbers<2>("--centre", centre, "AZIMUTH,ELEVATION in degrees, such as 90,0");
        constexpr double WHOLE_TURN = 360;
        constexpr double QUARTER_TURN = 90;
        const double azimuth = RADIANS_PER_DEGREE * requireWithin("--centre", stated[0], {-WHOLE_TURN, WHOLE_TURN});
        const double elevation =
            RADIANS_PER_DEGREE * requireWithin("--centre", stated[1], {-QUARTER_TURN, QUARTER_TURN});
        return Point<double, 3>{std::sin(azimuth) * std::cos(elevation), std::cos(azimuth) * std::cos(elevation),
                                std::sin(elevation)};
    }
    return std::nullopt;
}

InputChoice InputOptions::choice(InputKind usual) const {
    InputChoice choice;
    choice.kind = kind.value_or(usual);
    choice.direction = direction();
    choice.roll = roll.value_or(choice.roll);
    choice.aperture = aperture.value_or(choice.aperture);
    choice.margin = margin.value_or(choice.margin);
    choice.pixels = pixels.value_or(choice.pixels);
    return choice;
}

Seam InputOptions::seam() const {
    return isCut ? Seam::CUT : Seam::CONTINUE;
}

double InputOptions::allowedError() const {
    return error.value_or(USUAL_ERROR);
}

std::vector<Option> addInputOptions(OptionList& line, InputOptions& options, const char* inputHelp) {
    std::vector<Option> added;
    added.push_back(
        line.addRead(
                "--input", [&options](const std::string& name) { options.kind = inputKindOf(name); }, inputHelp)
            .oneOf(inputKindNames())
            .typeName("INPUT"));
    added.push_back(line.add("--axis", options.axis,
                             "Direction of the middle of a frustum, a fisheye or a cube (default: of the frustum where "
                             "its light is, else 0,1,0)")
                        .typeName("X,Y,Z"));
    added.push_back(line.add("--centre", options.centre,
                             "Azimuth and elevation of the middle of equirectangular, degrees (default 0,0)")
                        .typeName("AZIMUTH,ELEVATION"));
    added.push_back(addBoundedNumber(line, "--roll", {-360, 360},
                                     "Turn about that direction, right down, degrees (default 0)", "DEGREES",
                                     [&options](double degrees) { options.roll = RADIANS_PER_DEGREE * degrees; }));
    added.push_back(addBoundedNumber(line, "--aperture", {0, 360, true},
                                     "Angle across the circle of a fisheye, degrees (default 180)", "DEGREES",
                                     [&options](double degrees) { options.aperture = RADIANS_PER_DEGREE * degrees; }));
    constexpr double PER_CENT = 0.01;
    added.push_back(addBoundedNumber(line, "--margin", {0, 100},
                                     "Of a frustum on each side, per cent of its width or height (default 2)",
                                     "PERCENT", [&options](double percent) { options.margin = PER_CENT * percent; }));
    added.push_back(addSize(line, options));
    return added;
}

std::vector<Option> addWarpOptions(OptionList& line, InputOptions& options, const char* nodesHelp) {
    std::vector<Option> added;
    added.push_back(line.addRead(
                            "--nodes", [&options](const std::string& text) { readNodes(options, text); }, nodesHelp)
                        .typeName("auto|COLUMNSxROWS"));
    constexpr double LARGEST_ERROR = 1e6;
    added.push_back(addBoundedNumber(line, "--error", {0, LARGEST_ERROR, true},
                                     "What a player may be off between nodes, pixels of the input (default 0.25)",
                                     "PIXELS", [&options](double error) { options.error = error; }));
    added.push_back(line.addFlag("--wrap", options.isCut,
                                 "Cut cells where a panorama begins again, for players that do not repeat it"));
    return added;
}

Point<double, 3> eyeOf(const std::string& text) {
    return requireNumbers<3>("--eye", text, "X,Y,Z, such as -0.03,0,1.2");
}
