#include "ExportFiles/WarpFile.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/basics/PfmRows.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "ExportFiles/ObjWarp.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Veltrani::ExportFiles {

using DisplayExport::ChannelWarp;
using DisplayExport::WarpNode;

namespace {

struct FormatRow {
    WarpFormat format;
    const char* name;
    const char* ending;
    bool isOfNodes;
};

constexpr std::array<FormatRow, 5> FORMAT_ROWS{{{WarpFormat::MESH, "mesh", "mesh", true},
                                                {WarpFormat::OBJ, "obj", "obj", true},
                                                {WarpFormat::PFM, "pfm", "pfm", false},
                                                {WarpFormat::PFM_3D, "pfm3d", "points.pfm", false},
                                                {WarpFormat::PNG_16, "png16", "warp.png", false}}};

const FormatRow& rowOf(WarpFormat format) {
    return *std::find_if(FORMAT_ROWS.begin(), FORMAT_ROWS.end() - 1,
                         [format](const FormatRow& row) { return row.format == format; });
}

void requireFitting(WarpFormat format, const ChannelWarp& warp) {
    if (isOfNodes(format) != warp.reachesCorners()) {
        throw VeltraniException(isOfNodes(format) ? L"A mesh is written from nodes, and the warp has pixels"
                                                  : L"A map of pixels is written from pixels, and the warp has nodes");
    }
    if (format == WarpFormat::PFM_3D && warp.points().size() != warp.nodes().size()) {
        throw VeltraniException(L"A map of points is written from points, and the warp has none");
    }
}

std::size_t writeMesh(const ChannelWarp& warp, const ContentStrip& strip, std::ostream& out,
                      const NodeBrightness& brightness) {
    std::size_t broken = 0;
    const std::vector<WarpNode> nodes = warp.gridNodes(broken);
    DisplayReport::WarpWriter::ofFormat("mesh")->write(ChannelWarpGrid(warp, nodes, strip, brightness), out);
    return broken;
}

std::string countText(std::size_t count, const std::string& what) {
    return count == 0 ? "" : ", " + std::to_string(count) + ' ' + what;
}

void writePoints(const ChannelWarp& warp, std::ostream& out) {
    constexpr float NONE = std::numeric_limits<float>::quiet_NaN();
    DisplayReport::PfmRows rows(out, warp.columns(), warp.rows());
    for (std::size_t i = 0; i < warp.nodes().size(); ++i) {
        const Point<double, 3>& point = warp.points()[i];
        if (warp.nodes()[i].isUsable()) {
            rows.add(static_cast<float>(point[0]), static_cast<float>(point[1]), static_cast<float>(point[2]));
        } else {
            rows.add(NONE, NONE, NONE);
        }
    }
}

}  // namespace

std::optional<WarpFormat> warpFormatOf(const std::string& name) {
    for (const FormatRow& row : FORMAT_ROWS) {
        if (name == row.name) {
            return row.format;
        }
    }
    return std::nullopt;
}

std::string nameOf(WarpFormat format) {
    return rowOf(format).name;
}

std::vector<std::string> warpFormatNames() {
    std::vector<std::string> names;
    for (const FormatRow& row : FORMAT_ROWS) {
        names.emplace_back(row.name);
    }
    return names;
}

std::string endingOf(WarpFormat format) {
    return rowOf(format).ending;
}

bool isOfNodes(WarpFormat format) {
    return rowOf(format).isOfNodes;
}

std::size_t writeWarp(WarpFormat format, const ChannelWarp& warp, const ContentStrip& strip, std::ostream& out,
                      const NodeBrightness& brightness) {
    requireFitting(format, warp);
    switch (format) {
        case WarpFormat::MESH:
            return writeMesh(warp, strip, out, brightness);
        case WarpFormat::OBJ:
            writeObj(warp, strip, out);
            break;
        case WarpFormat::PFM:
        case WarpFormat::PNG_16:
            DisplayReport::WarpWriter::ofFormat(nameOf(format))->write(ChannelWarpGrid(warp, warp.nodes(), strip), out);
            break;
        case WarpFormat::PFM_3D:
            writePoints(warp, out);
            break;
    }
    return 0;
}

std::string summaryOf(const ChannelWarp& warp, std::size_t broken, bool isInGrid) {
    const double largest = isInGrid ? std::max(warp.error().largest, warp.error().largestOfGrid) : warp.error().largest;
    return std::to_string(warp.columns()) + " x " + std::to_string(warp.rows()) +
           (warp.reachesCorners() ? " nodes" : " pixels") +
           countText(warp.count(WarpNode::State::UNMAPPED), "not mapped") +
           countText(broken, broken == 1 ? "cell left out of the mesh" : "cells left out of the mesh") +
           countText(warp.leftOutAtPoles(), "left out at a pole") +
           (warp.error().places > 0 ? ", within " + DisplayReport::significantText(largest) + " pixels of the input"
                                    : std::string());
}

}  // namespace Veltrani::ExportFiles
