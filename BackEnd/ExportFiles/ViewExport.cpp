#include "ExportFiles/ViewExport.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayReport/basics/ChannelPalette.h"
#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/basics/ReportHead.h"
#include "ExportFiles/TestPicture.h"
#include "ExportFiles/ViewJson.h"
#include "ExportFiles/WarpedContent.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <system_error>
#include <utility>

namespace Veltrani::ExportFiles {

namespace {

using DisplayExport::ChannelSight;
using DisplayExport::ChannelWarp;
using DisplayExport::ContentInput;
using DisplayExport::WarpNode;
using DisplayExport::WarpRequest;
using DisplayReport::jsonList;
using DisplayReport::JsonObject;

/// Letters and digits of ASCII; everything else is an underscore, and of many only the first.
std::string plainName(const std::string& name) {
    constexpr std::size_t LONGEST = 40;
    std::string plain;
    for (const char c : name) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (isPlain) {
            plain += c;
        } else if (!plain.empty() && plain.back() != '_') {
            plain += '_';
        }
    }
    plain = plain.substr(0, LONGEST);
    return plain.ends_with('_') ? plain.substr(0, plain.size() - 1) : plain;
}

/// The files of one view, one after the other.
class ViewFiles {
public:
    ViewFiles(std::string folder, std::string stem) : m_folder(std::move(folder)), m_stem(std::move(stem)) {}

    /// @param bits of a code value; 0 for files that have none
    void write(const std::string& kind, const std::string& ending, const std::function<void(std::ostream&)>& writer,
               int bits = 0) {
        const std::string name = m_stem + '.' + ending;
        const std::string path = m_folder + '/' + name;
        errno = 0;
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        if (out) {
            writer(out);
        }
        out.close();
        if (!out) {
            refuse(name);
        }
        beginBringingToDisk(path);
        JsonObject file;
        file.add("name", name).add("kind", kind);
        if (bits > 0) {
            file.add("bits", bits);
        }
        m_files.push_back(file.add("sha256", DisplayReport::ReportHead::source(path).sha256).text());
    }

    [[nodiscard]] std::string json() const {
        return jsonList(m_files, [](const std::string& file) { return file; });
    }

private:
    /// @param name of a file that could not be written, for the reason in `errno`
    [[noreturn]] static void refuse(const std::string& name) {
        const std::string reason = errno == 0 ? "the writing was broken off" : std::generic_category().message(errno);
        throw ViewExport::UnwrittenFile(fromUtf8OrBytes(
            name + " cannot be written: " + reason + ": make room on the disk, or name another folder with --output"));
    }

    /// Lets the disk begin while the next file is computed: what the whole folder waits for at last is then on it. A
    /// fault of the disk is met there.
    static void beginBringingToDisk(const std::string& path) {
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (file >= 0) {
            (void)::sync_file_range(file, 0, 0, SYNC_FILE_RANGE_WRITE);
            ::close(file);
        }
    }

    std::string m_folder;
    std::string m_stem;
    std::vector<std::string> m_files;  ///< as the manifest has them
};

bool contains(const std::vector<WarpFormat>& formats, WarpFormat format) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

bool hasSome(const std::vector<WarpFormat>& formats, bool ofNodes) {
    return std::any_of(formats.begin(), formats.end(),
                       [ofNodes](WarpFormat format) { return isOfNodes(format) == ofNodes; });
}

/// Several pieces of work, which count as long as each other.
class WorkSteps {
public:
    WorkSteps(const DisplayReport::Progress& whole, std::size_t count) : m_whole(whole), m_count(count) {}

    /// How far one of them is; this object must outlive it.
    [[nodiscard]] DisplayReport::Progress of(std::size_t step) const {
        return [this, step](std::size_t done, std::size_t total) {
            if (m_whole) {
                m_whole(step * total + done, m_count * total);
            }
        };
    }

private:
    const DisplayReport::Progress& m_whole;
    std::size_t m_count;
};

/// One view on its way into its files.
class ViewWork {
public:
    ViewWork(const XMLConfigManager& config, const ExportRequest& request, const DisplayBlend::DisplayBlender* blender,
             const ExportView& view, const std::string& folder)
        : m_request(request),
          m_blender(blender),
          m_view(view),
          m_sight(config, view.channel, view.eye, request.pulse),
          m_input(config, m_sight, request.input),
          m_strip{m_input.faces(), m_input.wrapsAround()},
          m_files(folder, view.stem()) {}

    ViewRecord work(const DisplayReport::Progress& whole) {
        const WorkSteps steps(whole, stepCount());
        std::size_t step = 0;
        std::string nodes = "null";
        std::string pixels = "null";
        const std::string blend = m_blender == nullptr ? "null" : writeBlends(steps, step);
        if (hasSome(m_request.formats, true)) {
            nodes = writeWarps(nodesAs(), steps.of(step++));
        }
        // Its memory is needed for the pixels.
        m_weights.reset();
        if (hasSome(m_request.formats, false)) {
            pixels = writeWarps(pixelsAs(), steps.of(step++));
        }
        if (m_request.hasTestPictures && m_view.eyeNumber == 1) {
            m_files.write("test picture", "test.png", [this](std::ostream& out) { testPicture().write(out); });
        }
        const std::string warning =
            m_isMapped ? std::string()
                       : title() + ": nothing of its picture is mapped: " + m_input.remedyForNothing(m_sight);
        return {JsonObject()
                    .addJson("channel", channelJson())
                    .addJson("eye", jsonOfPoint(m_sight.eye()))
                    .add("eyeNumber", m_view.eyeNumber)
                    .add("seenInMirror", m_sight.isInMirror())
                    .addJson("input", jsonOf(m_input, m_request.convention))
                    .addJson("nodes", nodes)
                    .addJson("pixels", pixels)
                    .addJson("blend", blend)
                    .addJson("warning", m_isMapped ? "null" : DisplayReport::jsonOf(warning))
                    .addJson("files", m_files.json())
                    .text(),
                title() + ": " + m_summary, warning};
    }

private:
    [[nodiscard]] WarpRequest nodesAs() const {
        WarpRequest warp;
        warp.places = m_request.nodes ? WarpRequest::Places::NODES : WarpRequest::Places::AUTO;
        warp.nodes = m_request.nodes.value_or(Point<int, 2>());
        warp.error = m_request.error;
        warp.forGrids = contains(m_request.formats, WarpFormat::MESH);
        warp.seam = m_request.seam;
        return warp;
    }

    [[nodiscard]] WarpRequest pixelsAs() const {
        WarpRequest warp;
        warp.places = WarpRequest::Places::PIXELS;
        warp.withPoints = contains(m_request.formats, WarpFormat::PFM_3D);
        return warp;
    }

    /// What people know the view by.
    [[nodiscard]] std::string title() const {
        return m_view.channel.describe() +
               (m_view.eyes > 1 ? ", eye " + std::to_string(m_view.eyeNumber) : std::string());
    }

    /// @return what the manifest states of them
    std::string writeBlends(const WorkSteps& steps, std::size_t& step) {
        const BlendRequest& request = *m_request.blend;
        const std::size_t channel = blendedChannel(*m_blender, toUtf8(m_view.channel.projector->getIdentity()));
        m_weights = m_blender->weights(channel, steps.of(step++));
        for (const int bits : request.bits) {
            m_files.write(
                "blend", endingOfBlend(request.use, bits),
                [&](std::ostream& out) { writeBlend(*m_weights, request.curve, request.use, bits, out); }, bits);
        }
        if (!request.residual.empty()) {
            const DisplayBlend::BlendPicture lift = m_blender->lift(channel, request.residual, steps.of(step++));
            for (const int bits : request.bits) {
                m_files.write(
                    "lift", "lift" + std::to_string(bits) + ".png",
                    [&](std::ostream& out) {
                        writeBlend(lift, request.curve, DisplayBlend::BlendUse::MULTIPLY, bits, out);
                    },
                    bits);
            }
        }
        return jsonOf(request, *m_blender, channel);
    }

    [[nodiscard]] std::size_t stepCount() const {
        const auto one = [](bool isNeeded) { return std::size_t{isNeeded ? 1U : 0U}; };
        return one(m_blender != nullptr) + one(m_blender != nullptr && !m_request.blend->residual.empty()) +
               one(hasSome(m_request.formats, true)) + one(hasSome(m_request.formats, false));
    }

    [[nodiscard]] NodeBrightness brightness() const {
        if (!m_weights) {
            return {};
        }
        return [this](const Point<double, 2>& picture) {
            return m_request.blend->curve.codeOf(m_weights->between(picture));
        };
    }

    /// Every format of these places, and the content unless nodes show it.
    /// @return what the manifest states of them
    std::string writeWarps(WarpRequest places, const DisplayReport::Progress& progress) {
        places.progress = progress;
        const ChannelWarp warp = ChannelWarp::of(m_sight, m_input, places);
        std::size_t broken = 0;
        for (const WarpFormat format : m_request.formats) {
            if (isOfNodes(format) == warp.reachesCorners()) {
                m_files.write(nameOf(format), endingOf(format), [&](std::ostream& out) {
                    broken = std::max(broken, writeWarp(format, warp, m_strip, out, brightness()));
                });
            }
        }
        const bool isShown = warp.reachesCorners() || !hasSome(m_request.formats, true);
        if (m_request.content != nullptr && isShown) {
            m_files.write("content", "content.png",
                          [&](std::ostream& out) { warpedContent(warp, m_strip, *m_request.content).write(out); });
        }
        m_isMapped = m_isMapped || warp.count(WarpNode::State::UNMAPPED) < warp.nodes().size();
        m_summary +=
            (m_summary.empty() ? "" : "; ") + summaryOf(warp, broken, contains(m_request.formats, WarpFormat::MESH));
        return jsonOf(warp, broken);
    }

    [[nodiscard]] TestPicture testPicture() const {
        const ProjectorConfig& projector = *m_view.channel.projector;
        return {m_view.channel.index + 1,
                toUtf8(projector.getName()),
                toUtf8(projector.getIdentity()),
                m_view.channel.pictureSize(),
                DisplayReport::channelColour(m_view.channel.index),
                m_view.targets};
    }

    [[nodiscard]] std::string channelJson() const {
        const ProjectorConfig& projector = *m_view.channel.projector;
        return JsonObject()
            .add("number", m_view.channel.index + 1)
            .add("name", toUtf8(projector.getName()))
            .add("projector", toUtf8(projector.getIdentity()))
            .addJson("pixels", jsonOfPoint(m_view.channel.pictureSize()))
            .text();
    }

    const ExportRequest& m_request;
    const DisplayBlend::DisplayBlender* m_blender;
    const ExportView& m_view;
    ChannelSight m_sight;
    ContentInput m_input;
    ContentStrip m_strip;
    ViewFiles m_files;
    std::optional<DisplayBlend::BlendPicture> m_weights;  ///< while the nodes are written
    std::string m_summary;
    bool m_isMapped = false;  ///< whether a warp maps anything
};

}  // namespace

std::string ExportView::stem() const {
    constexpr std::size_t TWO_DIGITS = 10;
    const std::size_t number = channel.index + 1;
    const std::string name = plainName(toUtf8(channel.projector->getName()));
    return (number < TWO_DIGITS ? "0" : "") + std::to_string(number) + (name.empty() ? "" : "-" + name) +
           (eyes > 1 ? "-eye" + std::to_string(eyeNumber) : std::string());
}

ViewExport::ViewExport(XMLConfigManager& config, const ExportRequest& request)
    : m_config(config),
      m_request(request),
      m_blender(request.blend ? std::make_unique<const DisplayBlend::DisplayBlender>(config) : nullptr) {}

std::vector<std::string> ViewExport::withoutLight() const {
    std::vector<std::string> channels;
    if (m_blender != nullptr) {
        for (const DisplayBlend::DisplayBlender::Channel& channel : m_blender->channels()) {
            if (!channel.lights) {
                channels.push_back("channel " + channel.name + " (" + channel.projectorId + "): " + channel.fault);
            }
        }
    }
    return channels;
}

ViewRecord ViewExport::write(const ExportView& view, const std::string& folder,
                             const DisplayReport::Progress& progress) const {
    return ViewWork(m_config, m_request, m_blender.get(), view, folder).work(progress);
}

}  // namespace Veltrani::ExportFiles
