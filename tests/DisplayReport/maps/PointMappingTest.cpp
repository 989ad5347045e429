#include "DisplayReport/maps/PointMapping.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "support/Displays.h"
#include "support/ForeignLocale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using P3 = Point<double, 3>;

class PointMappingTest : public testing::Test {
protected:
    PointMapping::Count run(PointKind kind, const std::string& text, PointFormat format = PointFormat::CSV) {
        std::istringstream in(text);
        PointReader reader(in, "in", kind);
        PointMapping mapping(
            m_map, kind, [this] { ++m_calls; }, format);
        return mapping.run([&reader](P3& point) { return reader.next(point); }, m_out);
    }

    std::unique_ptr<XMLConfigFile> m_config =
        displays::parsed(displays::FLAT, displays::projector("A", "<Layout xMin='1' xMax='2' yMin='0' yMax='4'/>"));
    LayoutMapper m_map{*m_config, ChannelChoice::of(*m_config, "A"), false};
    std::ostringstream m_out;
    int m_calls = 0;
};

TEST_F(PointMappingTest, WritesOneLinePerPointAndMarksMisses) {
    const auto count = run(PointKind::PICTURE, "0.5,0.25\n2,0\n0.1,1\n");
    EXPECT_EQ(m_out.str(), "u,v,x,y,z,mapped\n0.5,0.25,1.5,1,0,1\n2,0,,,,0\n0.1,1,1.1,4,0,1\n");
    EXPECT_EQ(count.points, 3U);
    EXPECT_EQ(count.mapped, 2U);
    EXPECT_GE(m_calls, 1);
}

TEST_F(PointMappingTest, GoesTheOtherWay) {
    const ForeignLocale german;
    const auto count = run(PointKind::LAYOUT, "1.5,1,77\n9,9,9\n");
    EXPECT_EQ(m_out.str(), "x,y,z,u,v,mapped\n1.5,1,77,0.5,0.25,1\n9,9,9,,,0\n");
    EXPECT_EQ(count.points, 2U);
    EXPECT_EQ(count.mapped, 1U);
}

TEST_F(PointMappingTest, WritesAnObjectWithNullsForMisses) {
    using Json = nlohmann::json;
    run(PointKind::PICTURE, "0.5,0.25\n2,0\n", PointFormat::JSON);
    const Json there = Json::parse(m_out.str())["points"];
    EXPECT_EQ(there, Json::parse(R"([{"u":0.5,"v":0.25,"x":1.5,"y":1.0,"z":0.0,"mapped":true},
                                     {"u":2.0,"v":0.0,"x":null,"y":null,"z":null,"mapped":false}])"));
    m_out.str("");
    run(PointKind::LAYOUT, "1.5,1,77\n9,9,9\n", PointFormat::JSON);
    EXPECT_EQ(Json::parse(m_out.str())["points"],
              Json::parse(R"([{"u":0.5,"v":0.25,"x":1.5,"y":1.0,"z":77.0,"mapped":true},
                              {"u":null,"v":null,"x":9.0,"y":9.0,"z":9.0,"mapped":false}])"));
    m_out.str("");
    run(PointKind::PICTURE, "", PointFormat::JSON);
    EXPECT_EQ(Json::parse(m_out.str())["points"], Json::array());
}

TEST_F(PointMappingTest, WithoutPointsThereIsAHeaderAlone) {
    EXPECT_EQ(run(PointKind::PICTURE, "").points, 0U);
    EXPECT_EQ(m_out.str(), "u,v,x,y,z,mapped\n");
}

TEST_F(PointMappingTest, WhatCameBeforeAFaultIsWritten) {
    EXPECT_THROW(run(PointKind::PICTURE, "0.5,0.25\n0.5;0.25\n0,0\n"), VeltraniParseException);
    EXPECT_EQ(m_out.str(), "u,v,x,y,z,mapped\n0.5,0.25,1.5,1,0,1\n");
}

TEST_F(PointMappingTest, ManyPointsStayInOrder) {
    std::string text;
    constexpr int POINTS = 5000;  // some batches and a part of one
    for (int i = 0; i < POINTS; ++i) {
        const std::string v = std::to_string(i) + "e-4";
        text += "0," + v + '\n';
    }
    EXPECT_EQ(run(PointKind::PICTURE, text).mapped, 5000U);
    std::istringstream lines(m_out.str());
    std::string line;
    std::getline(lines, line);
    for (int i = 0; i < POINTS; ++i) {
        ASSERT_TRUE(std::getline(lines, line));
        ASSERT_EQ(std::stod(line.substr(2)), std::stod(std::to_string(i) + "e-4")) << line;
    }
    EXPECT_FALSE(std::getline(lines, line));
    EXPECT_EQ(m_calls, 3);
}

std::unique_ptr<XMLConfigFile> displayOf(const std::string& type) {
    return displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA),
                            "<TargetData type='" + type + "'/>");
}

TEST(PointSpaces, ATableIsWhatItStates) {
    using enum PointSpace;
    const ReportHead nothing{.frame = ""};
    for (const std::string type : {"PlanarBasic", "CustomPlanar", "Spherical", "3D"}) {
        SCOPED_TRACE(type);
        const auto config = displayOf(type);
        EXPECT_EQ(PointMapping::spaceOf(nothing, *config), LAYOUT);
        EXPECT_EQ(PointMapping::spaceOf(nothing, *config, SCREEN), SCREEN);
        EXPECT_EQ(PointMapping::spaceOf(PointMapping::headOf(*config), *config), LAYOUT);
        EXPECT_EQ(PointMapping::spaceOf(PointMapping::headOf(*config, SCREEN), *config), SCREEN);
        EXPECT_EQ(PointMapping::spaceOf(ReportHead{"targets", "m"}, *config), SCREEN);
    }
    // Where the layout is the world, both are points of one frame.
    const auto dome = displayOf("Spherical");
    EXPECT_EQ(PointMapping::spaceOf(ReportHead{"targets", "m"}, *dome, LAYOUT), LAYOUT);
    EXPECT_EQ(PointMapping::spaceOf(ReportHead{"survey", "m"}, *dome), LAYOUT);
    EXPECT_EQ(PointMapping::spaceOf(ReportHead{"survey", "m"}, *displayOf("PlanarBasic")), SCREEN);
}

TEST(PointSpaces, ATableThatContradictsTheDisplayIsRefused) {
    using enum PointSpace;
    const auto wall = displayOf("PlanarBasic");
    const auto refusal = [](const ReportHead& table, const XMLConfigFile& config, std::optional<PointSpace> stated) {
        try {
            static_cast<void>(PointMapping::spaceOf(table, config, stated));
        } catch (const VeltraniException& thrown) {
            return Veltrani::toUtf8(thrown.message);
        }
        return std::string();
    };
    EXPECT_THAT(refusal(ReportHead{"targets", "m"}, *wall, LAYOUT), testing::HasSubstr("are no layout points"));
    EXPECT_THAT(refusal(PointMapping::headOf(*wall), *wall, SCREEN), testing::HasSubstr("are no places on the screen"));
    EXPECT_THAT(refusal(PointMapping::headOf(*wall), *displayOf("3D"), {}), testing::HasSubstr("of another kind"));
    EXPECT_THAT(refusal(ReportHead{"targets", "mm"}, *wall, {}),
                testing::HasSubstr("lengths of this table are in mm, those of the display in m: convert them"));
    EXPECT_EQ(refusal(ReportHead{"targets", ""}, *wall, {}), "") << "a unit that is not known is believed";
}

TEST_F(PointMappingTest, AnOutputThatTakesNoMoreEndsIt) {
    m_out.setstate(std::ios::badbit);
    int asked = 0;
    PointMapping mapping(m_map, PointKind::PICTURE);
    const auto count = mapping.run(
        [&asked](P3& point) {
            point = {};
            return ++asked > 0;
        },
        m_out);
    EXPECT_EQ(count.points, 0U);
    EXPECT_EQ(asked, 0);
}

}  // namespace
