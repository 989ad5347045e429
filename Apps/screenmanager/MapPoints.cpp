#include "MapPoints.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/PointReader.h"
#include "DisplayReport/maps/ScreenMapper.h"
#include "FailureReport.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace {

using namespace Veltrani::DisplayReport;

using Points = std::vector<Point<double, 3>>;

/// The points of the command line. None when one of them is no point, which has been reported then.
std::optional<Points> parsePoints(const MapOptions& options) {
    Points points;
    for (const std::string& text : options.points) {
        const auto point = PointReader::parse(text, options.pointKind());
        if (!point) {
            Console::error("--point " + text + " is not " +
                           (options.toChannel ? "X,Y,Z, such as 1.5,4,-0.25" : "U,V, such as 0.5,0.25"));
            return std::nullopt;
        }
        points.push_back(*point);
    }
    return points;
}

/// The points of the command line, else those of the file or of standard input. None when the file cannot be opened,
/// which has been reported then.
std::optional<PointInput> openPoints(const Points& points, const MapOptions& options) {
    if (!points.empty()) {
        return PointInput::ofPoints(points);
    }
    if (options.readsStandardInput()) {
        return PointInput::ofStream(std::cin, options.pointSource(), options.pointKind());
    }
    try {
        return PointInput::ofFile(options.pointFile, options.pointKind());
    } catch (const std::runtime_error& fault) {
        Console::error(options.pointFile + ": " + fault.what());
        return std::nullopt;
    }
}

/// How far the reading of a file is; nothing where the length of the input is not known.
void showProgress(const PointInput& input, ProgressMeter& progress) {
    constexpr std::size_t BYTES_PER_KILOBYTE = 1000;
    if (input.size() > 0) {
        progress.update(input.bytesRead() / BYTES_PER_KILOBYTE, input.size() / BYTES_PER_KILOBYTE);
    }
}

/// "; 96 rows of other channels and 64 without x, y, z passed over", or nothing.
std::string passedOverText(const PointReader::PassedOver& rows, const MapOptions& options) {
    const std::string ofOthers = rows.ofOthers > 0 ? std::to_string(rows.ofOthers) + " rows of other channels" : "";
    const std::string withoutPlace = rows.withoutPlace > 0
                                         ? std::to_string(rows.withoutPlace) + (ofOthers.empty() ? " rows" : "") +
                                               " without " + (options.toChannel ? "x, y, z" : "u, v")
                                         : "";
    const std::string both = ofOthers + (ofOthers.empty() || withoutPlace.empty() ? "" : " and ") + withoutPlace;
    return both.empty() ? "" : "; " + both + " passed over";
}

/// Reports what came of the points; returns an `ExitCode`.
int summarise(const PointMapping::Count& count, const PointReader::PassedOver& rows, PointSpace space,
              const ChannelChoice& channel, const MapOptions& options) {
    if (count.points == 0) {
        const std::string passedOver = passedOverText(rows, options);
        Console::error(passedOver.empty() ? "there are no points: give --point, --points or points on standard input"
                                          : channel.describe() + ": there are no points of it in " +
                                                options.pointSource() + passedOver);
        return EXIT_INCOMPLETE;
    }
    if (options.isTalkative()) {
        Console::say(channel.describe() + ": " + std::to_string(count.mapped) + " of " + std::to_string(count.points) +
                     " points mapped to the " +
                     (options.toChannel             ? "channel"
                      : space == PointSpace::SCREEN ? "screen"
                                                    : "layout") +
                     passedOverText(rows, options));
        if (count.mapped == 0 && options.toChannel && space == PointSpace::LAYOUT) {
            Console::say(
                "note: x, y, z were layout points; for places on the screen, as targets prints them, state "
                "--xyz screen");
        }
    }
    return count.mapped > 0 ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

[[noreturn]] void failReading(const MapOptions& options, const std::error_code& reason) {
    throw VeltraniException(Veltrani::fromUtf8OrBytes(
        options.pointSource() + ": cannot be read to its end: " + reason.message() +
        "; check the disk or the network that it comes from, and that it is a file of points"));
}

/// Calls `read`; throws where the input ends because it cannot be read any further.
template <class Read>
auto readFrom(const MapOptions& options, Read&& read) {
    errno = 0;
    try {
        return read();
    } catch (const std::system_error& fault) {
        failReading(options, fault.code());
    }
}

ReportHead headOf(const XMLConfigFile& config, PointSpace space, const Points& points, const MapOptions& options) {
    ReportHead head = PointMapping::headOf(config, space);
    head.files = sourcesFor(options.format, options.file);
    if (!head.files.empty() && points.empty() && !options.readsStandardInput()) {
        head.files.push_back(ReportHead::source(options.pointFile));
    }
    return head;
}

PointFormat formatOf(const MapOptions& options) {
    return options.format == "json" ? PointFormat::JSON : PointFormat::CSV;
}

/// Maps all points of the input and writes them.
int mapAll(PointMap& map, PointInput& input, PointSpace space, ReportHead head, const ChannelChoice& channel,
           const MapOptions& options) {
    ResultFile result(options.output);
    if (!result.open()) {
        return EXIT_OUTPUT;
    }
    PointMapping::Count count;
    try {
        ProgressMeter progress(options.isTalkative(), "mapping points, kB");
        PointMapping mapping(
            map, options.pointKind(), [&] { showProgress(input, progress); }, formatOf(options), std::move(head));
        const auto next = [&](Point<double, 3>& point) {
            const bool isThere = readFrom(options, [&] { return input.next(point); });
            if (!isThere && options.readsStandardInput() && std::ferror(stdin) != 0) {
                failReading(options, {errno, std::generic_category()});
            }
            return isThere;
        };
        count = mapping.run(next, result.stream());
    } catch (...) {
        // A pipe keeps what came before the fault; a file is left as it was.
        result.stream().flush();
        reportFailure(options.pointSource(), std::current_exception());
        return EXIT_INPUT;
    }
    if (!result.commit()) {
        return EXIT_OUTPUT;
    }
    return summarise(count, input.passedOver(), space, channel, options);
}

/// What x, y, z are; none where the points contradict the display, which has been reported then.
std::optional<PointSpace> spaceOf(PointInput& input, const XMLConfigFile& config, const MapOptions& options) {
    try {
        const ReportHead table = readFrom(options, [&input] { return input.head(); });
        return options.toChannel ? PointMapping::spaceOf(table, config, options.space)
                                 : options.space.value_or(PointSpace::LAYOUT);
    } catch (...) {
        reportFailure(options.pointSource(), std::current_exception());
        return std::nullopt;
    }
}

std::unique_ptr<PointMap> mapOf(XMLConfigFile& config, const ChannelChoice& channel, PointSpace space,
                                const MapOptions& options) {
    if (space == PointSpace::SCREEN) {
        return std::make_unique<ScreenMapper>(config, channel);
    }
    return std::make_unique<LayoutMapper>(config, channel, options.useCache);
}

}  // namespace

int mapPoints(XMLConfigFile& config, const ChannelChoice& channel, const MapOptions& options) {
    const auto points = parsePoints(options);
    if (!points) {
        return EXIT_USAGE;
    }
    std::optional<PointInput> input = openPoints(*points, options);
    if (!input) {
        return EXIT_INPUT;
    }
    input->takeOnly(Veltrani::toUtf8(channel.projector->getIdentity()));
    const auto space = spaceOf(*input, config, options);
    if (!space) {
        return EXIT_INPUT;
    }
    const bool needsScreen = *space == PointSpace::SCREEN || LayoutMapper::needsScreen(config);
    if (needsScreen && !DisplayFile::buildScreen(config, options.file, options.verbosity)) {
        return EXIT_INPUT;
    }
    const auto map = mapOf(config, channel, *space, options);
    return mapAll(*map, *input, *space, headOf(config, *space, *points, options), channel, options);
}
