#include "ExportFiles/ExportedDisplay.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportFiles/ExportManifest.h"
#include "ExportFiles/PlayerWarp.h"
#include "ExportFiles/ViewExport.h"
#include "ExportedDisplays.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

namespace {

using namespace Veltrani::ExportFiles;
using namespace exported_displays;
using testing::AllOf;
using testing::HasSubstr;
using Json = nlohmann::json;
using P2 = Point<double, 2>;
using Veltrani::toUtf8;
using Veltrani::DisplayExport::InputKind;

class ExportedDisplayTest : public testing::Test {
protected:
    /// An export of the wall, in the folder.
    /// @param subfolder of it, to be made; any bytes
    void exportWall(const std::vector<WarpFormat>& formats, InputKind input = InputKind::SCREEN,
                    const std::string& subfolder = ".") {
        const ExportedChannel display(WALL);
        ExportRequest request;
        request.input.kind = input;
        request.formats = formats;
        const ViewExport exporter(display.config(), request);
        const std::string folder = m_folder.makeFolder(subfolder);
        const std::string view = exporter.write({display.choice(), std::nullopt}, folder, {}).json;
        m_folder.write(subfolder + "/manifest.json",
                       manifestOf(request, "m", {{"wall.xml", std::string(64, 'a')}}, {view}));
    }

    [[nodiscard]] Json manifest() const { return Json::parse(m_folder.read("manifest.json")); }

    static std::string faultOf(const std::string& text) {
        try {
            static_cast<void>(ExportedDisplay::parse(text, "manifest.json", "."));
        } catch (const VeltraniParseException& fault) {
            return toUtf8(fault.message);
        }
        return "";
    }

    TemporaryFolder m_folder;
};

TEST_F(ExportedDisplayTest, ReadsWhatAnExportHasWritten) {
    exportWall({WarpFormat::MESH, WarpFormat::PFM});
    const ExportedDisplay display = ExportedDisplay::read(m_folder.path());
    ASSERT_EQ(display.views().size(), 1U);
    const ExportedChannelView& view = display.views().front();
    EXPECT_EQ(view.describe(), "channel Left (P1)");
    EXPECT_EQ(view.pixels, (Point<int, 2>{32, 16}));
    EXPECT_EQ(view.number, 1U);
    EXPECT_EQ(view.eyeNumber, 1U);
    EXPECT_FALSE(view.isInMirror);
    EXPECT_EQ(view.input.kind, InputKind::SCREEN);
    EXPECT_EQ(view.input.pixels, (Point<int, 2>{4096, 4096}));
    EXPECT_FALSE(view.blend);
    EXPECT_EQ(view.fileOf("content"), nullptr);
    ASSERT_NE(view.fileOf("mesh"), nullptr);
    EXPECT_EQ(display.bytesOf(*view.fileOf("mesh")), m_folder.read("01-Left.mesh"));
    EXPECT_EQ(display.sources().front().name, "wall.xml");
}

TEST_F(ExportedDisplayTest, TakesTheNumbersOfItsInput) {
    exportWall({WarpFormat::MESH}, InputKind::FRUSTUM);
    const Json input = manifest()["views"][0]["input"];
    const ExportedDisplay display = ExportedDisplay::read(m_folder.path());
    const auto& frustum = display.views().front().frustum;
    EXPECT_EQ(frustum.left, input["frustum"]["tangents"]["left"].get<double>());
    EXPECT_EQ(frustum.top, input["frustum"]["tangents"]["top"].get<double>());
    EXPECT_EQ(frustum.view.forward[0], input["frustum"]["forward"][0].get<double>());
    EXPECT_EQ(frustum.view.eye[2], input["frustum"]["position"][2].get<double>());
}

TEST_F(ExportedDisplayTest, ReadsHowEachKindOfInputStands) {
    for (const InputKind kind : {InputKind::FISHEYE, InputKind::EQUIRECTANGULAR, InputKind::CUBE, InputKind::LAYOUT}) {
        exportWall({WarpFormat::PFM}, kind);
        Json document = manifest();
        Json& written = document["views"][0];
        written["eyeNumber"] = 2;
        written["seenInMirror"] = true;
        written["channel"]["number"] = 3;
        written["eye"] = {0.25, 0.5, 0.75};
        if (kind != InputKind::LAYOUT) {
            written["input"]["view"]["position"] = {1.5, 2.5, 3.5};
        }
        if (kind == InputKind::FISHEYE) {
            written["input"]["aperture"] = 6.25;
        }
        const ExportedDisplay display = ExportedDisplay::parse(document.dump(), "manifest.json", ".");
        const ExportedChannelView& view = display.views().front();
        EXPECT_EQ(view.input.kind, kind);
        EXPECT_EQ(view.input.pixels[0], written["input"]["pixels"][0].get<int>());
        EXPECT_EQ(view.input.pixels[1], written["input"]["pixels"][1].get<int>());
        EXPECT_EQ(view.wrapsAround, kind == InputKind::EQUIRECTANGULAR);
        EXPECT_EQ(view.number, 3U);
        EXPECT_EQ(view.eyeNumber, 2U);
        EXPECT_TRUE(view.isInMirror);
        EXPECT_EQ(view.eye, (Point<double, 3>{0.25, 0.5, 0.75}));
        if (kind != InputKind::LAYOUT) {
            EXPECT_EQ(view.frustum.view.eye, (Point<double, 3>{1.5, 2.5, 3.5}));
            EXPECT_EQ(view.frustum.view.forward, (Point<double, 3>{0.0, 1.0, 0.0}));
        }
        EXPECT_EQ(view.input.aperture == 6.25, kind == InputKind::FISHEYE);
    }
}

TEST_F(ExportedDisplayTest, EveryFormatOfAWarpShowsTheSame) {
    for (const WarpFormat format : {WarpFormat::MESH, WarpFormat::OBJ, WarpFormat::PFM, WarpFormat::PNG_16}) {
        exportWall({format});
        const ExportedDisplay display = ExportedDisplay::read(m_folder.path());
        const auto warp = PlayerWarp::read(display, display.views().front());
        ASSERT_TRUE(warp) << nameOf(format);
        for (const P2& place : {P2{0.5, 0.5}, P2{0.31, 0.07}, P2{0.02, 0.98}, P2{0.99, 0.25}}) {
            const auto shown = warp->shownAt(place);
            ASSERT_TRUE(shown) << nameOf(format) << place;
            // The picture fills the left three quarters of the screen.
            const double tolerance = format == WarpFormat::PNG_16 ? 1e-4 : 1e-6;
            EXPECT_NEAR(shown->content[0], 0.75 * place[0], tolerance) << nameOf(format);
            EXPECT_NEAR(shown->content[1], place[1], tolerance) << nameOf(format);
            EXPECT_NEAR(shown->alongU[0], 0.75, 100 * tolerance) << nameOf(format);
            EXPECT_NEAR(shown->alongU[1], 0, 100 * tolerance);
            EXPECT_NEAR(shown->alongV[0], 0, 100 * tolerance);
            EXPECT_NEAR(shown->alongV[1], 1, 100 * tolerance);
        }
    }
    exportWall({WarpFormat::PFM_3D});
    const ExportedDisplay display = ExportedDisplay::read(m_folder.path());
    EXPECT_FALSE(PlayerWarp::read(display, display.views().front()));
}

/// Names of folders are bytes: "caf\xE9" is one of an older encoding.
TEST_F(ExportedDisplayTest, LiesInAFolderOfAnyName) {
    for (const WarpFormat format : {WarpFormat::MESH, WarpFormat::OBJ, WarpFormat::PFM, WarpFormat::PNG_16}) {
        const std::string folder = "caf\xE9 " + nameOf(format);
        exportWall({format}, InputKind::SCREEN, folder);
        const ExportedDisplay display = ExportedDisplay::read(m_folder.file(folder));
        const auto warp = PlayerWarp::read(display, display.views().front());
        ASSERT_TRUE(warp) << nameOf(format);
        const auto shown = warp->shownAt({0.5, 0.5});
        ASSERT_TRUE(shown) << nameOf(format);
        EXPECT_NEAR(shown->content[0], 0.375, 1e-4) << nameOf(format);
    }
}

TEST_F(ExportedDisplayTest, OfSeveralFilesOfAKindTheDeepestIsTaken) {
    exportWall({WarpFormat::MESH});
    Json document = manifest();
    document["views"][0]["blend"] = {
        {"use", "alpha"}, {"gamma", "srgb"}, {"lift", {{"residualPercent", 0.5}, {"blackPercent", 1}}}};
    for (const int bits : {8, 16}) {
        document["views"][0]["files"].push_back({{"name", "b" + std::to_string(bits)},
                                                 {"kind", "blend"},
                                                 {"sha256", std::string(64, 'b')},
                                                 {"bits", bits}});
    }
    const ExportedDisplay display = ExportedDisplay::parse(document.dump(), "manifest.json", ".");
    const ExportedChannelView& view = display.views().front();
    EXPECT_EQ(view.fileOf("blend")->name, "b16");
    ASSERT_TRUE(view.blend);
    EXPECT_TRUE(view.blend->isAlpha);
    EXPECT_TRUE(view.blend->hasLift);
    EXPECT_EQ(view.blend->residual, 0.005);
    EXPECT_EQ(view.blend->curve.name(), "srgb");
}

TEST_F(ExportedDisplayTest, AFileThatWasChangedIsRefused) {
    exportWall({WarpFormat::MESH});
    const ExportedDisplay display = ExportedDisplay::read(m_folder.path());
    m_folder.write("01-Left.mesh", m_folder.read("01-Left.mesh") + " ");
    try {
        static_cast<void>(display.bytesOf(*display.views().front().fileOf("mesh")));
        FAIL();
    } catch (const VeltraniParseException& fault) {
        EXPECT_THAT(toUtf8(fault.message),
                    AllOf(HasSubstr("01-Left.mesh: was changed since it was exported: found the checksum "),
                          HasSubstr(", expected "), HasSubstr("export the display again")));
    }
    std::filesystem::remove(m_folder.file("01-Left.mesh"));
    EXPECT_THROW(static_cast<void>(display.bytesOf(*display.views().front().fileOf("mesh"))),
                 VeltraniMissingFileException);
    EXPECT_THROW(static_cast<void>(ExportedDisplay::read(m_folder.file("gone"))), VeltraniMissingFileException);
}

/// One place of a good manifest is broken each time.
TEST_F(ExportedDisplayTest, AWrongValueIsRefusedWithItsPlace) {
    exportWall({WarpFormat::MESH}, InputKind::FRUSTUM);
    const Json good = manifest();
    EXPECT_EQ(faultOf(good.dump()), "");
    struct Broken {
        const char* place;
        Json value;
        const char* message;
    };
    for (const Broken& broken : std::vector<Broken>{
             {"/schema", "screenmanager/fit", "manifest.json: schema: found \"screenmanager/fit\", expected "},
             {"/version", 2, "version: found 2, expected a whole number from 1 to 1"},
             {"/views", Json::array(), "views: found a list of 0, expected one view or more"},
             {"/views", 3, "views: found 3, expected a list"},
             {"/views/0/channel/pixels/0", 0, "views[0].channel.pixels[0]: found 0, expected a whole number from 1"},
             {"/views/0/channel/pixels/1", 1.5, "views[0].channel.pixels[1]: found 1.5, expected a whole number"},
             {"/views/0/channel/name", nullptr, "views[0].channel.name: found null, expected a text"},
             {"/views/0/eye", Json::array({1, 2}), "views[0].eye: found a list of 2, expected a list of three numbers"},
             {"/views/0/seenInMirror", "no", "views[0].seenInMirror: found \"no\", expected true or false"},
             {"/views/0/input/kind", "mirror", "views[0].input.kind: found \"mirror\", expected the kind of an input"},
             {"/views/0/input/frustum/up", Json::array({0, 0, 2}), "frustum: found an object, expected axes of length"},
             {"/views/0/input/frustum/right", Json::array({2, 0, 0}), "frustum: found an object, expected axes of"},
             {"/views/0/input/frustum/forward", Json::array({0, 0.5, 0}), "frustum: found an object, expected axes of"},
             {"/views/0/input/frustum/up", Json::array({0, 0, -1}), "expected axes of length 1 at right angles, up"},
             {"/views/0/input/frustum/tangents/bottom", 9, "tangents: found an object, expected left below right"},
             {"/views/0/input/frustum/tangents/left", 9, "tangents: found an object, expected left below right"},
             {"/views/0/files/0/name", "../x", "views[0].files[0].name: found \"../x\", expected the name of a file"},
             {"/views/0/files/0/name", ".x", "views[0].files[0].name: found \".x\""},
             {"/views/0/files/0/name", "", "views[0].files[0].name: found \"\", expected the name of a file"},
             {"/views/0/files/0/name", "a/b", "views[0].files[0].name: found \"a/b\", expected the name of a file"},
             {"/views/0/files/0/name", std::string("a\0b", 3), "expected the name of a file in the same folder"},
             {"/views/0/files/0/sha256", std::string(64, 'g'), "expected 64 hexadecimal digits"},
             {"/views/0/files/0/sha256", std::string(65, 'a'), "expected 64 hexadecimal digits"},
             {"/views/0/eyeNumber", 0, "views[0].eyeNumber: found 0, expected a whole number from 1 to"},
             {"/views/0/channel/number", 0, "views[0].channel.number: found 0, expected a whole number from 1 to"},
             {"/views/0/files/0/sha256", "12", "views[0].files[0].sha256: found \"12\", expected 64 hexadecimal"},
             {"/views/0/files/0/kind", "blend",
              "views[0].files[0]: found an object, expected an object with the member "
              "bits"},
             {"/views/0/blend", Json({{"use", "light"}}), "views[0].blend.use: found \"light\", expected \"factor\""},
             {"/views/0/blend", Json({{"use", "alpha"}, {"gamma", 9}}),
              "views[0].blend.gamma: found 9, expected a "
              "number from 0.2 to 5"},
             {"/views/0/blend", Json({{"use", "alpha"}, {"gamma", "x"}}), "blend.gamma: found \"x\", expected a gamma"},
             {"/views/0/blend", Json({{"use", "alpha"}, {"gamma", 1}, {"lift", {{"residualPercent", -1}}}}),
              "views[0].blend.lift.residualPercent: found -1, expected a number from 0"}}) {
        Json document = good;
        document[Json::json_pointer(broken.place)] = broken.value;
        const std::string fault = faultOf(document.dump());
        EXPECT_THAT(fault, HasSubstr(broken.message)) << broken.place;
        EXPECT_THAT(fault, HasSubstr(": export the display again"));
        EXPECT_EQ(fault.find('\n'), std::string::npos);
    }
    Json document = good;
    document["views"][0]["files"][0]["kind"] = "lift";
    for (const int bits : {7, 12, 17}) {
        document["views"][0]["files"][0]["bits"] = bits;
        EXPECT_THAT(faultOf(document.dump()), HasSubstr("bits: found " + std::to_string(bits))) << bits;
    }
    document["views"][0]["files"][0]["bits"] = 8;
    EXPECT_EQ(faultOf(document.dump()), "");
    document = good;
    document["files"][0]["sha256"] = nullptr;
    EXPECT_EQ(ExportedDisplay::parse(document.dump(), "manifest.json", ".").sources().front().sha256, "");
    EXPECT_THAT(faultOf("[1e309]"), HasSubstr("manifest.json: is no manifest: found a number beyond the range"));
    EXPECT_THAT(faultOf("{\"schema\":"), HasSubstr("manifest.json: is no manifest: found something else than JSON at "
                                                   "byte"));
}

TEST_F(ExportedDisplayTest, WarpsThatAreNoneAreRefused) {
    exportWall({WarpFormat::PFM});
    const ExportedDisplay display = ExportedDisplay::read(m_folder.path());
    const ExportedChannelView& view = display.views().front();
    const std::string good = display.bytesOf(*view.fileOf("pfm"));
    const auto faultOfWarp = [&view](const std::string& bytes, const std::string& format) {
        try {
            static_cast<void>(PlayerWarp::parse(bytes, "x.pfm", format, view));
        } catch (const VeltraniParseException& fault) {
            return toUtf8(fault.message);
        }
        return std::string();
    };
    EXPECT_EQ(faultOfWarp(good, "pfm"), "");
    for (std::size_t size = 0; size < good.size(); size += 7) {
        EXPECT_THAT(faultOfWarp(good.substr(0, size), "pfm"), HasSubstr("x.pfm: found ")) << size;
    }
    EXPECT_THAT(faultOfWarp("PF\n1 1\n-1.0\n" + std::string(12, '\0'), "pfm"), HasSubstr("another picture"));
    EXPECT_THAT(faultOfWarp("Pf\n1 1\n-1.0\n" + std::string(12, '\0'), "pfm"), HasSubstr("line 1, expected PF"));
    EXPECT_THAT(faultOfWarp("PF\n99999 99999\n-1.0\n", "pfm"), HasSubstr("line 2, expected width and height"));
    EXPECT_THAT(faultOfWarp("PF\n1 1\n1.0\n" + std::string(12, '\0'), "pfm"), HasSubstr("line 3, expected -1.0"));
    EXPECT_THAT(faultOfWarp("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", "obj"), HasSubstr("without a place in the input"));
    EXPECT_THAT(faultOfWarp("v 0 0\n", "obj"), HasSubstr("x.pfm: line 1"));
    EXPECT_THAT(faultOfWarp("2\n2 2\n", "mesh"), HasSubstr("x.pfm:2: node counts: found"));
    EXPECT_THAT(faultOfWarp("2\n2 2\n-1 -1 0 0 1\n1 -1 1 0 1\n-1 1 0 1 1\n1 1 1 1 1\npixels 5 5\n", "mesh"),
                HasSubstr("x.pfm: is of another picture than the channel's"));
    EXPECT_THAT(faultOfWarp("no picture", "png16"), HasSubstr("x.pfm: is no picture"));
}

}  // namespace
