#include "ExportOptions.h"

#include "NumberOptions.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace {

using namespace Veltrani::DisplayExport;
using namespace Veltrani::ExportFiles;

constexpr int MOST_JOBS = 256;
constexpr InputKind USUAL_INPUT = InputKind::FRUSTUM;

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

/// An option that only matrices heed.
/// @param take is given the word
Option addOfMatrices(OptionList& line, ExportOptions& options, const char* name, const std::vector<std::string>& words,
                     const char* help, std::function<void(const std::string&)> take) {
    return line
        .addRead(
            name,
            [&options, name, take = std::move(take)](const std::string& word) {
                options.ofMatrices.emplace_back(name);
                take(word);
            },
            help)
        .oneOf(words);
}

void addConventionOptions(OptionList& line, ExportOptions& options) {
    RenderConvention& convention = options.request.convention;
    addOfMatrices(line, options, "--convention", RenderConvention::depthNames(),
                  "Depths of the projection matrix: opengl (default), direct3d or reversed-z",
                  [&convention](const std::string& name) {
                      convention.depth = RenderConvention::depthOf(name).value_or(convention.depth);
                  })
        .typeName("CONVENTION");
    addOfMatrices(line, options, "--world", RenderConvention::worldNames(),
                  "Axis of the engine that points up: z-up (default) or y-up",
                  [&convention](const std::string& name) {
                      convention.world = RenderConvention::worldOf(name).value_or(convention.world);
                  })
        .typeName("WORLD");
    addOfMatrices(line, options, "--handed", RenderConvention::handedNames(),
                  "Hand of the axes of the engine: right (default) or left",
                  [&convention](const std::string& name) {
                      convention.handed = RenderConvention::handedOf(name).value_or(convention.handed);
                  })
        .typeName("HAND");
    constexpr double FARTHEST = 1e12;
    const auto addPlane = [&](const char* name, const char* help, double& plane) {
        addBoundedNumber(line, name, {0, FARTHEST, true}, help, "LENGTH", [&options, name, &plane](double distance) {
            options.ofMatrices.emplace_back(name);
            plane = distance;
        });
    };
    addPlane("--near", "Near plane, native units (default 0.1)", convention.nearPlane);
    addPlane("--far", "Far plane, native units (default 1000)", convention.farPlane);
}

/// Refuses what has no effect on the formats that are written.
void requireHeededByFormats(const ExportOptions& options) {
    const ExportRequest& request = options.request;
    const InputOptions& input = options.input;
    if (std::none_of(request.formats.begin(), request.formats.end(), isOfNodes)) {
        const auto refuse = [](bool isGiven, const char* option, const char* formats) {
            if (isGiven) {
                OptionList::refuse(option,
                                   std::string("needs --format ") + formats + ": state it, or leave the option out");
            }
        };
        refuse(input.nodes.has_value() || input.hasAutoNodes, "--nodes", "mesh or obj");
        refuse(input.error.has_value(), "--error", "mesh or obj");
        refuse(input.isCut, "--wrap", "obj");
    }
    input.requireErrorHeeded(true);
    if (input.isCut &&
        std::find(request.formats.begin(), request.formats.end(), WarpFormat::MESH) != request.formats.end()) {
        OptionList::refuse("--wrap", "a mesh of rows and columns has no cut cells: choose --format obj");
    }
}

/// Fills what the options state together.
void complete(ExportOptions& options) {
    ExportRequest& request = options.request;
    checkBlendOptions(options.blend);
    options.input.requireHeeded(USUAL_INPUT, !options.eyes.empty());
    for (const std::string& option : options.ofMatrices) {
        options.input.requireHeeding(USUAL_INPUT, option, {InputKind::FRUSTUM, InputKind::CUBE});
    }
    request.input = options.input.choice(USUAL_INPUT);
    request.nodes = options.input.nodes;
    request.error = options.input.allowedError();
    request.seam = options.input.seam();
    std::transform(options.eyes.begin(), options.eyes.end(), std::back_inserter(options.eyePoints), eyeOf);
    if (!options.formats.empty()) {
        request.formats.clear();
    }
    for (const std::string& name : options.formats) {
        const auto format = warpFormatOf(name);
        if (format && std::find(request.formats.begin(), request.formats.end(), *format) == request.formats.end()) {
            request.formats.push_back(*format);
        }
    }
    requireHeededByFormats(options);
    if (!(request.convention.nearPlane < request.convention.farPlane)) {
        OptionList::refuse("--near", "the near plane lies before the far plane, see --far");
    }
}

}  // namespace

void addExportOptions(OptionList& line, ExportOptions& options) {
    addDisplayFile(line, options.file);
    addOutputOptions(line, options);
    (void)addInputOptions(line, options.input,
                          "What feeds a channel: frustum (default), fisheye, equirectangular, cube, layout or screen");
    line.add("--eye", options.eyes, "Where it is seen from, native units; may be given several times: stereo, seats")
        .oneValueEach()
        .typeName("X,Y,Z");
    addConventionOptions(line, options);
    (void)addWarpOptions(line, options.input, "Nodes of mesh and obj (default auto: the fewest that keep the error)");
    addBlendOptions(line, options.blend);
    line.whenComplete([&options] { complete(options); });
}
