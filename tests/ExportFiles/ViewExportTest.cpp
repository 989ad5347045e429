#include "ExportFiles/ViewExport.h"

#include "DisplayReport/basics/ReportHead.h"
#include "ExportFiles/TestPicture.h"
#include "ExportedDisplays.h"
#include "support/Displays.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <optional>
#include <set>
#include <sstream>

namespace {

using namespace Veltrani::ExportFiles;
using exported_displays::BEHIND;
using exported_displays::ExportedChannel;
using testing::ElementsAre;
using testing::HasSubstr;
using Json = nlohmann::json;
using Veltrani::DisplayExport::InputKind;
using Veltrani::DisplayReport::ChannelChoice;

/// What the files of a channel with this name begin with, of the second of two channels.
std::string stemOf(const std::string& name, std::size_t eye = 1, std::size_t eyes = 1) {
    const auto config = displays::parsed(
        displays::FLAT, "<Projector id='P1'/><Projector id='P2'><Name>" + name + "</Name></Projector>");
    return ExportView{ChannelChoice::of(*config, "P2"), std::nullopt, eye, eyes}.stem();
}

TEST(ViewExport, NamesItsFilesInAsciiByNumberAndName) {
    EXPECT_EQ(stemOf("Left"), "02-Left");
    EXPECT_EQ(stemOf("Lower left"), "02-Lower_left");
    EXPECT_EQ(stemOf("a / b"), "02-a_b") << "of many others only the first";
    EXPECT_EQ(stemOf("../../etc/passwd"), "02-etc_passwd");
    EXPECT_EQ(stemOf("Gr\xC3\xB6\xC3\x9F"
                     "e"),
              "02-Gr_e");
    EXPECT_EQ(stemOf("end?"), "02-end");
    EXPECT_EQ(stemOf("\xE6\x9D\xB1"), "02");
    EXPECT_EQ(stemOf("."), "02");
    EXPECT_EQ(stemOf(std::string(300, 'x')), "02-" + std::string(40, 'x'));
    EXPECT_EQ(stemOf("Left", 2, 2), "02-Left-eye2");
    EXPECT_EQ(stemOf("Left", 1, 2), "02-Left-eye1");
    EXPECT_EQ(stemOf("azAZ09"), "02-azAZ09");
    EXPECT_EQ(stemOf("`{@[/:"), "02") << "those beside letters and digits";
    EXPECT_EQ(stemOf("_b"), "02-b");
}

TEST(ViewExport, NumbersItsFilesWithTwoDigits) {
    const auto config = displays::parsed(displays::FLAT, "<Projector id='P1'/>");
    const auto* const projector = config->getProjectorConfig(L"P1");
    EXPECT_EQ((ExportView{{8, projector}, std::nullopt}.stem()), "09-P1");
    EXPECT_EQ((ExportView{{9, projector}, std::nullopt}.stem()), "10-P1");
}

/// Two channels on a wall, of which the second one has the right part.
const std::string PAIR =
    "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><EyePoint x='1' y='2' z='3'/>"
    "<Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors>"
    "<Projector id='P0'><Name>Left</Name><Resolution width='32' height='16'/>"
    "<ScreenArea left='0' right='0.6' bottom='0' top='1'/></Projector>"
    "<Projector id='P1'><Name>Right</Name><Resolution width='24' height='16'/>"
    "<ScreenArea left='0.4' right='1' bottom='0' top='1'/></Projector></Projectors></Display>";

class ViewExports : public testing::Test {
protected:
    /// The view of the channel P1, written with nothing but what is wanted.
    ViewRecord write(std::size_t eye = 1, std::size_t eyes = 1, const std::string& display = PAIR) {
        const ExportedChannel channel(display);
        const ViewExport exporter(channel.config(), m_request);
        m_withoutLight = exporter.withoutLight();
        const std::optional<Point<double, 3>> place =
            eyes > 1 ? std::optional(Point<double, 3>{0.5, 1.0, 1.5}) : std::nullopt;
        return exporter.write({channel.choice(), place, eye, eyes, {}}, m_folder.path(), m_progress);
    }

    /// Kinds and names of the files that a record states, whose checksums are right.
    [[nodiscard]] std::vector<std::string> filesOf(const ViewRecord& record) const {
        std::vector<std::string> files;
        const Json json = Json::parse(record.json);
        for (const Json& file : json["files"]) {
            const std::string name = file["name"];
            EXPECT_EQ(file["sha256"], Veltrani::DisplayReport::ReportHead::source(m_folder.file(name)).sha256);
            files.push_back(file["kind"].get<std::string>() + ' ' + name +
                            (file.contains("bits") ? ' ' + std::to_string(file["bits"].get<int>()) : ""));
        }
        return files;
    }

    static std::shared_ptr<const ContentPicture> grey() {
        return std::make_shared<const ContentPicture>(1, 1, std::vector<unsigned char>{9, 9, 9});
    }

    TemporaryFolder m_folder;
    ExportRequest m_request;
    Veltrani::DisplayReport::Progress m_progress;
    std::vector<std::string> m_withoutLight;
};

TEST_F(ViewExports, StateWhatTheyAreOf) {
    m_request.input.kind = InputKind::SCREEN;
    m_request.nodes = Point<int, 2>{3, 2};
    const ViewRecord record = write();
    EXPECT_THAT(record.summary, testing::StartsWith("channel Right (P1): 3 x 2 nodes, within "));
    EXPECT_EQ(record.warning, "");
    Json json = Json::parse(record.json);
    EXPECT_EQ(json["channel"], (Json{{"number", 2}, {"name", "Right"}, {"projector", "P1"}, {"pixels", {24, 16}}}));
    EXPECT_EQ(json["eye"], (Json{1, 2, 3}));
    EXPECT_EQ(json["eyeNumber"], 1);
    EXPECT_EQ(json["seenInMirror"], false);
    EXPECT_EQ(json["nodes"]["size"], (Json{3, 2}));
    EXPECT_TRUE(json["pixels"].is_null());
    EXPECT_TRUE(json["blend"].is_null());
    EXPECT_TRUE(json["warning"].is_null());
    EXPECT_THAT(filesOf(record), ElementsAre("mesh 02-Right.mesh"));
    const ViewRecord second = write(2, 2);
    EXPECT_THAT(second.summary, testing::StartsWith("channel Right (P1), eye 2: 3 x 2 nodes, within "));
    EXPECT_EQ(Json::parse(second.json)["eye"], (Json{0.5, 1.0, 1.5}));
    EXPECT_EQ(Json::parse(second.json)["eyeNumber"], 2);
}

TEST_F(ViewExports, HaveTheirContentOnceAndTestPicturesForTheFirstEye) {
    m_request.input.kind = InputKind::SCREEN;
    m_request.content = grey();
    m_request.hasTestPictures = true;
    m_request.formats = {WarpFormat::PFM, WarpFormat::OBJ};
    const ViewRecord both = write();
    EXPECT_THAT(filesOf(both), ElementsAre("obj 02-Right.obj", "content 02-Right.content.png", "pfm 02-Right.pfm",
                                           "test picture 02-Right.test.png"));
    EXPECT_EQ(Json::parse(both.json)["pixels"]["size"], (Json{24, 16}));
    EXPECT_THAT(both.summary, testing::EndsWith(" pixels of the input; 24 x 16 pixels"));
    m_request.formats = {WarpFormat::PFM_3D};
    EXPECT_THAT(filesOf(write(2, 2)),
                ElementsAre("pfm3d 02-Right-eye2.points.pfm", "content 02-Right-eye2.content.png"));
    m_request.hasTestPictures = false;
    m_request.content = nullptr;
    EXPECT_THAT(filesOf(write()), ElementsAre("pfm3d 02-Right.points.pfm"));
}

TEST_F(ViewExports, HaveATestPictureWithNumberNameAndColourOfTheirChannel) {
    m_request.hasTestPictures = true;
    write();
    std::ostringstream expected;
    const TestPicture right{2, "Right", "P1", {24, 16}, Veltrani::DisplayReport::channelColour(1), {}};
    right.write(expected);
    EXPECT_TRUE(m_folder.read("02-Right.test.png") == expected.str());
    TestPicture other = right;
    other.number = 1;
    std::ostringstream differs;
    other.write(differs);
    EXPECT_FALSE(differs.str() == expected.str()) << "a picture of this size shows the number";
}

TEST_F(ViewExports, CountTheirWorkFromTheBeginningToTheEnd) {
    m_request.input.kind = InputKind::SCREEN;
    m_request.formats = {WarpFormat::MESH, WarpFormat::PFM};
    m_request.blend.emplace();
    m_request.blend->residual = {0.001, 0.002};
    double last = 0;
    std::set<int> quarters;
    m_progress = [&](std::size_t done, std::size_t total) {
        ASSERT_LE(done, total);
        const double part = static_cast<double>(done) / static_cast<double>(total);
        EXPECT_GE(part, last);
        last = part;
        quarters.insert(static_cast<int>(4 * part));
    };
    EXPECT_THAT(filesOf(write()), ElementsAre("blend 02-Right.blend16.png 16", "blend 02-Right.blend8.png 8",
                                              "lift 02-Right.lift16.png 16", "lift 02-Right.lift8.png 8",
                                              "mesh 02-Right.mesh", "pfm 02-Right.pfm"));
    EXPECT_EQ(last, 1);
    EXPECT_THAT(quarters, testing::IsSupersetOf({1, 2, 3}));
    EXPECT_THAT(m_withoutLight, testing::IsEmpty());
    // Without lifts there is less to do.
    m_request.blend->residual.clear();
    last = 0;
    static_cast<void>(write());
    EXPECT_EQ(last, 1);
    m_request.blend.reset();
    m_request.formats = {WarpFormat::PFM};
    last = 0;
    static_cast<void>(write());
    EXPECT_EQ(last, 1);
}

TEST_F(ViewExports, WarnOfAChannelOfWhichNothingIsMapped) {
    m_request.input.kind = InputKind::FISHEYE;
    m_request.formats = {WarpFormat::PFM};
    const ViewRecord record = write(1, 1, BEHIND);
    EXPECT_EQ(record.summary, "channel Back (P1): 40 x 20 pixels, 800 not mapped");
    EXPECT_THAT(record.warning, testing::StartsWith("channel Back (P1): nothing of its picture is mapped: "));
    EXPECT_EQ(Json::parse(record.json)["warning"], record.warning);
}

TEST_F(ViewExports, AFileThatCannotBeWrittenIsNamed) {
    m_request.input.kind = InputKind::SCREEN;
    const ExportedChannel channel(PAIR);
    try {
        static_cast<void>(
            ViewExport(channel.config(), m_request).write({channel.choice(), std::nullopt}, m_folder.file("gone"), {}));
        ADD_FAILURE() << "it was written";
    } catch (const ViewExport::UnwrittenFile& fault) {
        EXPECT_THAT(fault.message,
                    testing::StartsWith(L"02-Right.mesh cannot be written: No such file or directory: "));
    }
}

// The channel has a picture and no part of the screen: the others do not know of its light.
TEST_F(ViewExports, NameTheChannelsWhoseLightIsNotKnown) {
    m_request.input.kind = InputKind::SCREEN;
    m_request.blend.emplace();
    std::string display = PAIR;
    const std::string area = "<ScreenArea left='0' right='0.6' bottom='0' top='1'/>";
    display.erase(display.find(area), area.size());
    static_cast<void>(write(1, 1, display));
    EXPECT_THAT(m_withoutLight, ElementsAre(testing::StartsWith("channel Left (P0): ")));
}

}  // namespace
