#include "ExportFiles/ExportManifest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace Veltrani::ExportFiles;
using Json = nlohmann::json;
using Veltrani::DisplayExport::Seam;

TEST(ExportManifest, StatesWhatWasRequestedAndWhatItWasMadeFrom) {
    ExportRequest request;
    request.formats = {WarpFormat::OBJ, WarpFormat::PNG_16};
    request.error = 0.125;
    const std::string sum(64, 'a');
    const std::string text = manifestOf(request, "ft", {{"wall.xml", sum}, {"gone.obj", ""}}, {"{\"a\":1}", "[2]"});
    EXPECT_EQ(text.find('\n'), text.size() - 1) << "one line";
    const Json json = Json::parse(text);
    EXPECT_EQ(json["schema"], "screenmanager/export");
    EXPECT_EQ(json["version"], 1);
    EXPECT_EQ(json["units"]["length"], "ft");
    EXPECT_EQ(json["angles"], "radians");
    EXPECT_EQ(json["files"],
              (Json{{{"name", "wall.xml"}, {"sha256", sum}}, {{"name", "gone.obj"}, {"sha256", nullptr}}}));
    EXPECT_EQ(json["convention"]["depth"], "opengl");
    EXPECT_EQ(json["formats"], (Json{"obj", "png16"}));
    EXPECT_EQ(json["error"], 0.125);
    EXPECT_EQ(json["views"], (Json{{{"a", 1}}, Json::array({2})}));
}

TEST(ExportManifest, NamesHowItsInputGoesOnAtItsSeam) {
    ExportRequest request;
    EXPECT_EQ(Json::parse(manifestOf(request, "", {}, {}))["seam"], "continued");
    request.seam = Seam::CUT;
    const Json json = Json::parse(manifestOf(request, "", {}, {}));
    EXPECT_EQ(json["seam"], "cut");
    EXPECT_TRUE(json["units"]["length"].is_null()) << "where it is not known";
    EXPECT_EQ(json["views"], Json::array());
}

/// What would turn the direction of writing of a terminal.
TEST(ExportManifest, SteersNoTerminal) {
    const std::string text = manifestOf(ExportRequest(), "m", {}, {"{\"name\":\"a\xE2\x80\xAE\"}"});
    EXPECT_EQ(text.find('\xE2'), std::string::npos);
    EXPECT_EQ(Json::parse(text)["views"][0]["name"], "a\xE2\x80\xAE");
}

}  // namespace
