#pragma once

#include "Configuration/XMLConfigFile.h"
#include "DisplayBlend/BlendCurve.h"
#include "DisplayBlend/BlendPicture.h"
#include "DisplayBlend/DisplayBlender.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/coverage/DisplayLights.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// Displays whose blends are made and added up.
class BlendDisplayTest : public testing::Test {
protected:
    using P2 = Point<double, 2>;
    using P3 = Point<double, 3>;
    using BlendPicture = Veltrani::DisplayBlend::BlendPicture;
    using BlendCurve = Veltrani::DisplayBlend::BlendCurve;
    using DisplayBlender = Veltrani::DisplayBlend::DisplayBlender;
    using ChannelLight = Veltrani::DisplayReport::ChannelLight;

    ~BlendDisplayTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    void load(const std::string& screen, const std::string& projectors,
              const std::string& targets = "<TargetData type='PlanarBasic'/>") {
        loadFile(m_folder.write("display.xml", displays::text(screen, projectors, targets)));
    }

    void loadFile(const std::string& path) {
        m_config = XMLConfigFile::load(path);
        ASSERT_TRUE(Veltrani::DisplayReport::ScreenLoader::load(*m_config).empty());
    }

    /// A picture on a rectangle of the screen's coordinates.
    static std::string area(const std::string& id, double left, double right, double bottom, double top) {
        return displays::projector(id, "<ScreenArea left='" + std::to_string(left) + "' right='" +
                                           std::to_string(right) + "' bottom='" + std::to_string(bottom) + "' top='" +
                                           std::to_string(top) + "'/>");
    }

    /// A frustum in degrees, at a place and turned there.
    static std::string camera(const std::string& id, const P3& position, double z, double x, double halfWidth,
                              double halfHeight) {
        const auto text = [](double number) { return "'" + std::to_string(number) + "'"; };
        return displays::projector(id, "<Position x=" + text(position[0]) + " y=" + text(position[1]) +
                                           " z=" + text(position[2]) + "/><Orientation z=" + text(z) + " x=" + text(x) +
                                           " y='0'/><Frustum left=" + text(-halfWidth) + " right=" + text(halfWidth) +
                                           " bottom=" + text(-halfHeight) + " top=" + text(halfHeight) + "/>");
    }

    /// The same projectors with pictures of another size.
    static std::string sized(std::string projectors, int width, int height) {
        const std::string usual = "width='1920' height='1200'";
        const std::string wanted = "width='" + std::to_string(width) + "' height='" + std::to_string(height) + '\'';
        for (std::size_t at = 0; (at = projectors.find(usual, at)) != std::string::npos; at += wanted.size()) {
            projectors.replace(at, usual.size(), wanted);
        }
        return projectors;
    }

    [[nodiscard]] std::vector<BlendPicture> weights() const {
        const DisplayBlender blender(*m_config);
        std::vector<BlendPicture> all;
        for (std::size_t i = 0; i < blender.channels().size(); ++i) {
            EXPECT_EQ(blender.channels()[i].fault, "");
            all.push_back(blender.weights(i));
        }
        return all;
    }

    TemporaryFolder m_folder;
    LogTrap m_log{log4cxx::Level::getWarn()};
    std::unique_ptr<XMLConfigFile> m_config;
};
