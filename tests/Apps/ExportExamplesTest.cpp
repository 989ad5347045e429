// Every example at the size of its own pictures: what the manifest describes is there, as it describes it, and says the
// same in every format.
#include "ProgramRun.h"
#include "ReadmeText.h"
#include "support/DeepPngImage.h"
#include "support/GreyPngImage.h"
#include "support/PngImage.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <numbers>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using testing::UnorderedElementsAre;

const std::string EXAMPLES = sourceFolder() + "/examples/";

constexpr const char* NAMES[] = {"closed-cylinder", "cockpit",        "collimated", "curved-wall",
                                 "cylinder",        "dome",           "mesh-rays",  "planar-wall",
                                 "lens-cylinder",   "spherical-dome", "warped-wall"};

/// A picture whose colours state their place: red grows to the right, green upwards, and blue swings so often that a
/// pixel of the input beside the right one shows.
struct Content {
    static constexpr std::size_t WIDTH = 1024;
    static constexpr std::size_t HEIGHT = 512;
    static constexpr double SWINGS = 20;
    static constexpr double SWING = 60;
    /// Of blue, per width or height of the picture.
    static constexpr double STEEPEST = 2 * std::numbers::pi * SWINGS * SWING;

    static std::array<double, 3> at(double u, double v) {
        const double turn = 2 * std::numbers::pi * SWINGS;
        return {255 * u, 255 * v, 127.5 + SWING * (std::sin(turn * u) + std::cos(turn * v))};
    }

    static void write(const std::string& path) {
        std::vector<unsigned char> bytes;
        for (std::size_t down = 0; down < HEIGHT; ++down) {
            for (std::size_t right = 0; right < WIDTH; ++right) {
                for (const double part :
                     at((static_cast<double>(right) + 0.5) / WIDTH, 1 - (static_cast<double>(down) + 0.5) / HEIGHT)) {
                    bytes.push_back(static_cast<unsigned char>(std::lround(part)));
                }
            }
        }
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = WIDTH;
        image.height = HEIGHT;
        image.format = PNG_FORMAT_RGB;
        if (png_image_write_to_file(&image, path.c_str(), 0, bytes.data(), 0, nullptr) == 0) {
            throw std::runtime_error("cannot write " + path);
        }
    }
};

/// A float map: the rows stand from the bottom.
class FloatMap {
public:
    explicit FloatMap(std::string bytes) : m_bytes(std::move(bytes)) {
        char end = 0;
        if (std::sscanf(m_bytes.c_str(), "PF\n%zu %zu\n-1.0%c", &m_width, &m_height, &end) != 3 || end != '\n') {
            throw std::runtime_error("not a float map");
        }
        m_first = m_bytes.find("-1.0\n") + 5;
        if (m_bytes.size() != m_first + 12 * m_width * m_height) {
            throw std::runtime_error("a float map of another size");
        }
    }

    [[nodiscard]] std::size_t width() const { return m_width; }
    [[nodiscard]] std::size_t height() const { return m_height; }
    [[nodiscard]] std::array<float, 3> at(std::size_t column, std::size_t row) const {
        std::array<float, 3> values{};
        std::memcpy(values.data(), m_bytes.data() + m_first + 12 * (row * m_width + column), sizeof values);
        return values;
    }

private:
    std::string m_bytes;
    std::size_t m_width = 0;
    std::size_t m_height = 0;
    std::size_t m_first = 0;
};

class ExportOfExample : public testing::TestWithParam<const char*> {
protected:
    /// The example, or under the sanitizers, which look for other faults, one with small pictures.
    [[nodiscard]] std::string display() const {
        const std::string own = EXAMPLES + GetParam();
        if (!IS_SANITIZED) {
            return own + "/display.xml";
        }
        // With its neighbours, whose files it may name.
        fs::copy(EXAMPLES, m_folder.file("examples"), fs::copy_options::recursive);
        const std::string text = readme::text(std::string("examples/") + GetParam() + "/display.xml");
        return m_folder.write(std::string("examples/") + GetParam() + "/display.xml",
                              readme::replaced(readme::replaced(text, "width=\"1920\"", "width=\"96\""),
                                               "height=\"1200\"", "height=\"60\""));
    }

    [[nodiscard]] std::string fileOf(const Json& view, const std::string& kind, int bits = 0) const {
        for (const Json& file : view["files"]) {
            if (file["kind"] == kind && file.value("bits", 0) == bits) {
                return m_folder.read("player/" + file["name"].get<std::string>());
            }
        }
        throw std::runtime_error("no file of the kind " + kind);
    }

    void expectValid() const {
        const ProgramRun validator =
            runProgram("/usr/bin/python3", {"-W", "ignore", "-m", "jsonschema", "-i", m_output + "/manifest.json",
                                            sourceFolder() + "/docs/schemas/export.schema.json"});
        EXPECT_EQ(validator.exitCode, 0) << validator.output << validator.errors;
    }

    /// Nothing else is in the folder, and every file has the bytes that the manifest means.
    void expectDescribed(const Json& manifest) const {
        std::map<std::string, std::string> described;
        for (const Json& view : manifest["views"]) {
            for (const Json& file : view["files"]) {
                described[file["name"]] = file["sha256"];
            }
        }
        std::vector<std::string> arguments{"-b"};
        std::set<std::string> others;
        for (const auto& entry : fs::directory_iterator(m_output)) {
            const std::string name = entry.path().filename().string();
            if (described.contains(name)) {
                arguments.push_back(entry.path().string());
            } else {
                others.insert(name);
            }
        }
        EXPECT_EQ(others, std::set<std::string>{"manifest.json"});
        ASSERT_EQ(arguments.size(), described.size() + 1) << "a file is missing";
        std::istringstream sums(runProgram("/usr/bin/sha256sum", arguments).output);
        std::size_t count = 0;
        for (std::string sum, path; sums >> sum >> path; ++count) {
            EXPECT_EQ(sum, described.at(fs::path(path.substr(1)).filename().string())) << path;
        }
        EXPECT_EQ(count, described.size());
    }

    /// The white middle of a cross on the pixel of each target, and nothing around it.
    void expectTargets(const Json& view, const Json& channel) const {
        const PngImage image = PngImage::read(fileOf(view, "test picture"));
        ASSERT_EQ(image.width, view["channel"]["pixels"][0].get<std::size_t>());
        ASSERT_EQ(image.height, view["channel"]["pixels"][1].get<std::size_t>());
        const auto pixelOf = [](double part, std::size_t count) {
            return std::min(static_cast<std::size_t>(std::floor(part * static_cast<double>(count))), count - 1);
        };
        constexpr PngImage::Colour WHITE{255, 255, 255};
        std::size_t inside = 0;
        for (const Json& target : channel["grid"]) {
            const std::size_t right = pixelOf(target["u"], image.width);
            const std::size_t down = image.height - 1 - pixelOf(target["v"], image.height);
            EXPECT_EQ(image.at(right, down), WHITE) << target;
            if (right > 1 && right + 2 < image.width && down > 1 && down + 2 < image.height && !IS_SANITIZED) {
                EXPECT_EQ(image.at(right + 1, down), PngImage::Colour()) << target;
                EXPECT_EQ(image.at(right, down - 1), PngImage::Colour()) << target;
                ++inside;
            }
        }
        EXPECT_GT(channel["grid"].size(), 50U);
        EXPECT_TRUE(inside > 30 || IS_SANITIZED);
    }

    /// What a place shows is the content there, whichever file states which place that is.
    void expectSameEverywhere(const Json& view) const {
        const FloatMap places(fileOf(view, "pfm"));
        const DeepPngImage steps = DeepPngImage::read(fileOf(view, "png16"));
        const PngImage shown = PngImage::read(fileOf(view, "content"));
        ASSERT_EQ(places.width(), shown.width);
        ASSERT_EQ(places.height(), shown.height);
        ASSERT_EQ(steps.width, shown.width);
        ASSERT_EQ(steps.height, shown.height);
        const double pixels = std::max(view["nodes"]["error"]["largest"].get<double>(), 0.25);
        const double allowed =
            1.2 + Content::STEEPEST * pixels /
                      std::min(view["input"]["pixels"][0].get<double>(), view["input"]["pixels"][1].get<double>());
        std::size_t compared = 0;
        std::size_t mapped = 0;
        constexpr std::size_t STRIDE = IS_SANITIZED ? 1 : 9;
        for (std::size_t row = 0; row < shown.height; row += STRIDE) {
            for (std::size_t column = 0; column < shown.width; column += STRIDE) {
                const auto [u, v, isMapped] = places.at(column, row);
                const auto step = steps.at(column, shown.height - 1 - row);
                ASSERT_EQ(step[2], isMapped > 0 ? 65535 : 0);
                mapped += isMapped > 0 ? 1 : 0;
                // At the very edge there is no neighbour to mix with.
                constexpr double EDGE = 0.5 / Content::HEIGHT;
                if (isMapped > 0 && std::min({u, v, 1 - u, 1 - v}) > EDGE) {
                    ASSERT_NEAR(step[0], 65535.0 * u, 0.51);
                    ASSERT_NEAR(step[1], 65535.0 * v, 0.51);
                    const auto wanted = Content::at(u, v);
                    const auto colour = shown.at(column, shown.height - 1 - row);
                    for (std::size_t part = 0; part < wanted.size(); ++part) {
                        ASSERT_NEAR(colour[part], wanted[part], allowed) << column << ' ' << row << ' ' << part;
                    }
                    ++compared;
                }
            }
        }
        EXPECT_GT(compared, shown.width * shown.height / STRIDE / STRIDE / 2);
        const auto stated = view["pixels"]["mapped"].get<double>() + view["pixels"]["continued"].get<double>();
        EXPECT_NEAR(static_cast<double>(mapped * STRIDE * STRIDE), stated, 0.01 * stated);
    }

    void expectBlends(const Json& view) const {
        const GreyPngImage deep = GreyPngImage::read(fileOf(view, "blend", 16));
        const GreyPngImage coarse = GreyPngImage::read(fileOf(view, "blend", 8));
        EXPECT_EQ(deep.bits, 16);
        EXPECT_EQ(coarse.bits, 8);
        ASSERT_EQ(deep.width, view["channel"]["pixels"][0].get<std::size_t>());
        ASSERT_EQ(deep.height, view["channel"]["pixels"][1].get<std::size_t>());
        ASSERT_EQ(deep.grey.size(), coarse.grey.size());
        for (std::size_t i = 0; i < deep.grey.size(); i += 101) {
            ASSERT_NEAR(deep.grey[i] / 257.0, coarse.grey[i], 0.51);
        }
    }

    const TemporaryFolder m_folder;
    const std::string m_output = m_folder.file("player");
};

TEST_P(ExportOfExample, IsWholeAndSaysTheSameInEveryFile) {
    const std::string file = display();
    const std::string content = m_folder.file("content.png");
    Content::write(content);
    const ProgramRun run = runScreenManager({"export", file, "--output", m_output, "--quiet", "--jobs", "2",
                                             "--test-pictures", "--content", content, "--format", "mesh", "--format",
                                             "obj", "--format", "pfm", "--format", "png16"});
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const Json manifest = Json::parse(m_folder.read("player/manifest.json"));
    expectValid();
    expectDescribed(manifest);
    const Json targets = Json::parse(runScreenManager({"targets", file, "--quiet", "--format", "json"}).output);
    ASSERT_EQ(manifest["views"].size(), targets["channels"].size()) << "every channel";
    for (std::size_t i = 0; i < manifest["views"].size(); ++i) {
        const Json& view = manifest["views"][i];
        SCOPED_TRACE(view["channel"]["name"].get<std::string>());
        EXPECT_EQ(view["channel"]["projector"], targets["channels"][i]["projector"]);
        EXPECT_EQ(view["channel"]["pixels"], IS_SANITIZED ? Json({96, 60}) : Json({1920, 1200}));
        std::vector<std::string> kinds;
        std::transform(view["files"].begin(), view["files"].end(), std::back_inserter(kinds),
                       [](const Json& one) { return one["kind"]; });
        EXPECT_THAT(kinds,
                    UnorderedElementsAre("blend", "blend", "mesh", "obj", "pfm", "png16", "content", "test picture"));
        expectTargets(view, targets["channels"][i]);
        expectSameEverywhere(view);
        expectBlends(view);
    }
}

// Every kind of display has blends, mirrors included, whatever feeds it.
TEST_P(ExportOfExample, IsFedByAPanoramaToo) {
    const ProgramRun run = runScreenManager({"export", display(), "--output", m_output, "--quiet", "--input",
                                             "equirectangular", "--nodes", "9x7", "--blend-bits", "8"});
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const Json manifest = Json::parse(m_folder.read("player/manifest.json"));
    expectValid();
    expectDescribed(manifest);
    for (const Json& view : manifest["views"]) {
        EXPECT_EQ(view["input"]["kind"], "equirectangular");
        EXPECT_EQ(view["files"].size(), 2U);
        EXPECT_EQ(GreyPngImage::read(fileOf(view, "blend", 8)).width, view["channel"]["pixels"][0].get<std::size_t>());
        EXPECT_THAT(fileOf(view, "mesh"), testing::StartsWith("2\n9 7\n"));
    }
}

INSTANTIATE_TEST_SUITE_P(Examples, ExportOfExample, testing::ValuesIn(NAMES), [](const auto& example) {
    std::string name = example.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(ExportOfExamples, NoneIsLeftOut) {
    std::set<std::string> found;
    for (const auto& entry : fs::directory_iterator(EXAMPLES)) {
        // The wall to which projectors are still to be added has nothing to export.
        if (fs::exists(entry.path() / "display.xml") && entry.path().filename() != "empty-wall") {
            found.insert(entry.path().filename().string());
        }
    }
    EXPECT_EQ(found, std::set<std::string>(std::begin(NAMES), std::end(NAMES)));
}

}  // namespace
