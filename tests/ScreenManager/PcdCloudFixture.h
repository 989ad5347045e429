#pragma once

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ScreenManager/detail/PcdCloud.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <pcl/console/print.h>
#include <pcl/io/pcd_io.h>

#include <memory>
#include <optional>
#include <string>

/// Reads PCD files from their content, by `PcdCloud` and by the Point Cloud Library alone.
class PcdCloudFixture : public testing::Test {
protected:
    [[nodiscard]] std::shared_ptr<Veltrani::ScreenManagerDetail::PcdCloud::Cloud> load(
        const std::string& content) const {
        return Veltrani::ScreenManagerDetail::PcdCloud::read(Veltrani::RegularFile(folder.write("a.pcd", content)));
    }

    /// Why a file is refused; empty when it is read.
    [[nodiscard]] std::string refusal(const std::string& content) const {
        try {
            static_cast<void>(load(content));
        } catch (const VeltraniParseException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "";
    }

    /// What the library's own reader makes of a file; nothing when it refuses it.
    [[nodiscard]] std::optional<Veltrani::ScreenManagerDetail::PcdCloud::Cloud> readByLibrary(
        const std::string& content) const {
        Veltrani::ScreenManagerDetail::PcdCloud::Cloud cloud;
        const std::string path = folder.write("b.pcd", content);
        const auto level = pcl::console::getVerbosityLevel();
        pcl::console::setVerbosityLevel(pcl::console::L_ALWAYS);
        pcl::PCLPointCloud2 points;
        const int fault = pcl::PCDReader().read(path, points);
        // Of no points at all its conversion takes the address of the first one.
        if (fault == 0 && points.width > 0 && points.height > 0) {
            pcl::fromPCLPointCloud2(points, cloud);
        }
        pcl::console::setVerbosityLevel(level);
        return fault == 0 ? std::optional(cloud) : std::nullopt;
    }

    TemporaryFolder folder;
};
