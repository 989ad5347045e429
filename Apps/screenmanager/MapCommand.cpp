#include "MapCommand.h"

#include "Common/VeltraniException.h"
#include "Console.h"
#include "DisplayFile.h"
#include "DisplayReport/ChannelChoice.h"
#include "DisplayReport/LayoutMapper.h"
#include "DisplayReport/PictureWarp.h"
#include "DisplayReport/PointMapping.h"
#include "DisplayReport/PointReader.h"
#include "DisplayReport/WarpWriter.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <system_error>

namespace {

using namespace Veltrani::DisplayReport;
using Options = MapCommand::Options;

bool isLoud(const Options& options) {
    return options.verbosity != Verbosity::QUIET;
}

PointKind kindOf(const Options& options) {
    return options.toChannel ? PointKind::LAYOUT : PointKind::PICTURE;
}

/// Points that stand on the command line, or in a stream.
class PointInput {
public:
    explicit PointInput(const Options& options) : m_options(options) {}

    /// False when a point of the command line is none, which has been reported then.
    [[nodiscard]] bool parse() {
        for (const std::string& text : m_options.points) {
            const auto point = PointReader::parse(text, kindOf(m_options));
            if (!point) {
                Console::say("error: --point " + text + " is not " +
                             (m_options.toChannel ? "X,Y,Z, such as 1.5,4,-0.25" : "U,V, such as 0.5,0.25"));
                return false;
            }
            m_points.push_back(*point);
        }
        return true;
    }

    /// False when the file cannot be opened, which has been reported then.
    [[nodiscard]] bool open() {
        if (!m_points.empty()) {
            return true;
        }
        const bool isFile = !m_options.pointFile.empty() && m_options.pointFile != "-";
        if (isFile && !openFile()) {
            return false;
        }
        m_reader.emplace(isFile ? m_file : std::cin, name(), kindOf(m_options));
        return true;
    }

    [[nodiscard]] std::string name() const {
        return m_options.pointFile.empty() || m_options.pointFile == "-" ? "standard input" : m_options.pointFile;
    }

    bool next(Point<double, 3>& point) {
        if (m_reader) {
            return m_reader->next(point);
        }
        if (m_taken == m_points.size()) {
            return false;
        }
        point = m_points[m_taken++];
        return true;
    }

    /// How far the reading of a file is; nothing where nobody knows how long the input is.
    void showProgress(ProgressMeter& progress) const {
        constexpr std::size_t BYTES_PER_KILOBYTE = 1000;
        if (m_size > 0 && m_reader) {
            progress.update(m_reader->bytesRead() / BYTES_PER_KILOBYTE, m_size / BYTES_PER_KILOBYTE);
        }
    }

private:
    bool openFile() {
        const std::string& path = m_options.pointFile;
        std::error_code unknown;
        if (std::filesystem::is_directory(path, unknown)) {
            Console::say("error: " + path + ": Is a directory");
            return false;
        }
        errno = 0;
        m_file.open(path, std::ios::binary);
        if (!m_file) {
            Console::say("error: " + path + ": " + std::strerror(errno));
            return false;
        }
        const auto size = std::filesystem::is_regular_file(path, unknown) ? std::filesystem::file_size(path, unknown)
                                                                          : std::uintmax_t{0};
        m_size = unknown ? 0 : static_cast<std::size_t>(size);
        return true;
    }

    const Options& m_options;
    std::vector<Point<double, 3>> m_points;
    std::size_t m_taken = 0;
    std::ifstream m_file;
    std::size_t m_size = 0;
    std::optional<PointReader> m_reader;
};

/// Says what came of the points; answers an `ExitCode`.
int summarise(const PointMapping::Count& count, const ChannelChoice& channel, const Options& options) {
    if (count.points == 0) {
        Console::say("error: there are no points: give --point, --points or points on standard input");
        return EXIT_INCOMPLETE;
    }
    if (isLoud(options)) {
        Console::say(channel.describe() + ": " + std::to_string(count.mapped) + " of " + std::to_string(count.points) +
                     " points mapped to the " + (options.toChannel ? "channel" : "layout"));
    }
    return count.mapped > 0 ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

int mapPoints(LayoutMapper& map, PointInput& input, const ChannelChoice& channel, const Options& options) {
    if (!input.open()) {
        return EXIT_INPUT;
    }
    ResultFile result(options.output);
    if (!result.open()) {
        return EXIT_OUTPUT;
    }
    PointMapping::Count count;
    try {
        ProgressMeter progress(isLoud(options), "mapping points, kB");
        PointMapping mapping(map, kindOf(options), [&] { input.showProgress(progress); });
        count = mapping.run([&input](Point<double, 3>& point) { return input.next(point); }, result.stream());
    } catch (...) {
        // A pipe keeps what came before the fault; a file is left as it was.
        result.stream().flush();
        reportFailure(input.name(), std::current_exception());
        return EXIT_INPUT;
    }
    if (!result.commit()) {
        return EXIT_OUTPUT;
    }
    return summarise(count, channel, options);
}

PictureWarp warpOf(LayoutMapper& map, const InputProjection& input, const ChannelChoice& channel, bool hasNodes,
                   const Options& options) {
    ProgressMeter meter(isLoud(options), "mapping the picture, row");
    const auto progress = [&meter](std::size_t done, std::size_t total) { meter.update(done, total); };
    const Point<int, 2> pixels = channel.pictureSize();
    if (!hasNodes) {
        return PictureWarp::atPixels(map, input, pixels, progress);
    }
    const Point<int, 2> nodes =
        options.nodes ? Point<int, 2>{options.nodes->columns, options.nodes->rows} : pixels + Point<int, 2>{1, 1};
    return PictureWarp::atNodes(map, input, pixels, nodes, progress);
}

int mapGrid(LayoutMapper& map, const InputProjection& input, const ChannelChoice& channel, const Options& options) {
    const auto writer = WarpWriter::ofFormat(options.format);
    if (options.output.empty() && !writer->isText() && ::isatty(STDOUT_FILENO) == 1) {
        Console::say("error: a terminal cannot show " + options.format + ": name a file with --output");
        return EXIT_USAGE;
    }
    ResultFile result(options.output);
    if (!result.open()) {
        return EXIT_OUTPUT;
    }
    PictureWarp warp = warpOf(map, input, channel, writer->hasNodes(), options);
    if (warp.mapped() == 0) {
        Console::say("error: " + channel.describe() +
                     ": nothing of its picture is mapped, and nothing was written: check its position, " +
                     "orientation and frustum, or its map, against the screen");
        return EXIT_INCOMPLETE;
    }
    const std::size_t missed = warp.missed();
    const std::size_t cut = writer->hasNodes() && input.wrapsAround() ? warp.cutAtSeam() : 0;
    writer->write(warp, result.stream());
    if (!result.commit()) {
        return EXIT_OUTPUT;
    }
    if (isLoud(options)) {
        Console::say(channel.describe() + ": " + std::to_string(warp.columns()) + " x " + std::to_string(warp.rows()) +
                     (writer->hasNodes() ? " nodes, " : " pixels, ") + std::to_string(missed) + " not mapped" +
                     (cut > 0 ? ", " + std::to_string(cut) + " left out at the seam of the input" : ""));
    }
    return EXIT_ALL_RIGHT;
}

/// None when the display has no such channel, which has been reported then.
std::optional<ChannelChoice> chooseChannel(const XMLConfigFile& config, const Options& options) {
    try {
        return ChannelChoice::of(config, options.channel);
    } catch (...) {
        reportFailure("--channel", std::current_exception());
        return std::nullopt;
    }
}

/// True when the command line does not fit the display; reported then.
bool isMisused(const XMLConfigFile& config, const Options& options) {
    if (options.panorama && !InputProjection::hasPanorama(config)) {
        Console::say("error: --input chooses a panorama, and the input of this display is flat: leave it out");
        return true;
    }
    if (!options.output.empty() && !options.pointFile.empty() &&
        ResultFile::isSameFile(options.output, options.pointFile)) {
        Console::say("error: " + options.output + " is the file of points: name another file with --output");
        return true;
    }
    return ResultFile::replacesInput(options.output, config, options.file);
}

}  // namespace

int MapCommand::run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    const auto channel = chooseChannel(*config, options);
    PointInput input(options);
    if (!channel || isMisused(*config, options) || !input.parse()) {
        return EXIT_USAGE;
    }
    if (LayoutMapper::needsScreen(*config) && !DisplayFile::buildScreen(*config, options.file, options.verbosity)) {
        return EXIT_INPUT;
    }
    try {
        LayoutMapper map(*config, *channel, options.useCache);
        if (!options.grid) {
            return mapPoints(map, input, *channel, options);
        }
        return mapGrid(map, InputProjection(*config, options.panorama.value_or(Panorama::FISHEYE)), *channel, options);
    } catch (const VeltraniExceptionBase&) {
        reportFailure(options.file, std::current_exception());
        return EXIT_INPUT;
    }
}
