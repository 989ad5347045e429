// What the pages of the display kinds quote of `check` under "First mistakes" is what it prints: each mistake is made
// in the display that the page shows.
#include "DocumentBlocks.h"
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <string>

namespace {

using testing::HasSubstr;

struct Mistake {
    const char* page;     ///< below docs/displays/
    const char* display;  ///< a file that the page shows, and which is checked
    const char* changed;  ///< the file in which the mistake is made
    const char* from;     ///< a regular expression that is found there
    const char* to;
    const char* quote;  ///< as the page has it
};

constexpr const char* WHOLE_SCREEN = R"re(<Screen [^]*</Screen>)re";
constexpr const char* BARE_MESH =
    R"(<Screen shape="Mesh"><EyePoint x="0" y="0" z="1.2"/><ContentMesh file="bare.obj"/></Screen>)";

constexpr Mistake MISTAKES[] = {
    {"3d.md", "wall.xml", "wall.xml", "fileUnit=\"m\"", "fileUnit=\"mm\"", "it measures 0.006928 m"},
    {"3d.md", "wall.xml", "wall.obj", "v (\\S+) (\\S+) (\\S+)", "v $1 $3 -$2", "the mesh lies on its back"},
    {"3d.md", "wall.xml", "wall.xml", "forward=\"Y\"", "forward=\"-Y\"", "all of it lies behind the eye point"},
    {"collimated.md", "cockpit.xml", "cockpit.xml", "y=\"-0.3\" z=\"-0.5\"", "y=\"-0.3\" z=\"1.4\"",
     "subtract the Position of the Mirror"},
    {"collimated.md", "cockpit.xml", "cockpit.xml", "<Position [^>]*>", "",
     "nothing of its picture lands on the screen"},
    {"collimated.md", "cockpit.xml", "cockpit.xml", "radius=\"3\"", "radius=\"6\"",
     "check both radii, which are no diameters"},
    {"collimated.md", "cockpit.xml", "cockpit.xml", "radius=\"3\"", "radius=\"1.6\"",
     "check both radii, which are no diameters"},
    {"collimated.md", "cockpit.xml", "cockpit.xml", "y=\"-0.3\" z=\"-0.5\"", "y=\"-300\" z=\"-500\"",
     "it lies 585.381 m away"},
    {"collimated.md", "cockpit.xml", "cockpit.xml", "<Mirror [^]*</Mirror>", "",
     "found 0 of `<Mirror>`, expected exactly 1"},
    {"custom-planar.md", "wall.xml", "left.map", "0.2 1([^]*)0.1 1([^]*)0.8 1([^]*)0.9 1",
     "0.8 1$010.9 1$020.2 1$030.1 1", "map left.map mirrors the picture"},
    {"custom-planar.md", "wall.xml", "left.map", "0.([89]) (\\S+ 1\n)", "3.$1 $2", "its picture misses the screen"},
    {"custom-planar.md", "wall.xml", "wall.xml", "width=\"1920\"", "width=\"960\"",
     "map left.map was made for 1920 x 1200 pixels"},
    {"custom-planar.md", "wall.xml", "wall.xml", "left.map", "displays/left.map", "No such file or directory"},
    {"custom-planar.md", "wall.xml", "wall.xml", WHOLE_SCREEN, BARE_MESH, "The mesh has no 2D coordinates"},
    {"planar.md", "wall.xml", "wall.xml", "right=\"0.55\"", "right=\"55\"",
     "ScreenArea right is 55, and the screen runs from 0 to 1"},
    {"planar.md", "wall.xml", "wall.xml", "<Layout [^>]*>", "", "it has no Layout, which maps of this display need"},
    {"planar.md", "wall.xml", "wall.xml", "<ScreenArea [^>]*>", "", "no screen area"},
    {"planar.md", "wall.xml", "wall.xml", "bottom=\"0\" top=\"1\"", "bottom=\"1\" top=\"0\"",
     "ScreenArea bottom 1 lies beyond top 0, which mirrors the picture"},
    {"planar.md", "wall.xml", "wall.xml", WHOLE_SCREEN, BARE_MESH, "The mesh has no 2D coordinates"},
    {"planar.md", "wall.xml", "wall.xml", "<Centre x=\"0\" y=\"4\"",
     "<EyePoint x=\"0\" y=\"0\" z=\"1.2\"/><Centre x=\"0\" y=\"-4\"",
     "s runs to the left as the eye point sees the screen"},
    {"projector-centric.md", "wall.xml", "wall.xml", "left=\"-22.6199\" right=\"22.6199\"",
     "left=\"-45.2398\" right=\"45.2398\"", "its Frustum is 3.8721 times as wide as high"},
    {"projector-centric.md", "wall.xml", "wall.xml", "bottom=\"0\" top=\"27.5128\"", "bottom=\"-27.5128\" top=\"0\"",
     "its picture misses the screen"},
    {"projector-centric.md", "wall.xml", "wall.xml", "<Resolution [^>]*>", "", "its picture has no size in pixels"},
    {"spherical.md", "dome.xml", "dome.xml", "<Orientation z=\"-60\"",
     "<Position x=\"1\" y=\"1\" z=\"3\"/><Orientation z=\"-60\"", "its Position lies 2.871 m away from the eye point"},
    {"spherical.md", "dome.xml", "dome.xml", "left=\"-35\" right=\"35\"", "left=\"35\" right=\"-35\"",
     "which mirrors the picture"},
    {"spherical.md", "dome.xml", "dome.xml", "z=\"-60\"([^]*)z=\"60\"", "z=\"61\"$1z=\"-60\"",
     "its picture lies 60.8 degrees to the right of the middle of all pictures"},
    {"spherical.md", "dome.xml", "dome.xml", "y=\"-1\" z=\"1.2\"", "y=\"-1000\" z=\"1200\"",
     "nothing of its picture lands on the screen"},
};

std::string without(std::string text, char sign) {
    std::erase(text, sign);
    return text;
}

TEST(DocumentMistakes, LeadToWhatThePagesQuote) {
    for (const Mistake& mistake : MISTAKES) {
        const TemporaryFolder folder;
        folder.write("bare.obj", "v -3 4 0.5\nv 3 4 0.5\nv 3 4 2.5\nv -3 4 2.5\nf 1 2 3 4\n");
        bool isMade = false;
        for (const documents::Block& block : documents::blocksOf(std::string("docs/displays/") + mistake.page)) {
            const bool isChanged = block.file == mistake.changed;
            const std::string text =
                isChanged ? std::regex_replace(block.text, std::regex(mistake.from), mistake.to) : block.text;
            isMade = isMade || (isChanged && text != block.text);
            if (!block.file.empty()) {
                folder.write(block.file, text);
            }
        }
        EXPECT_TRUE(isMade) << mistake.page << ": " << mistake.from;
        const ProgramRun run = runScreenManager({"check", folder.file(mistake.display)});
        EXPECT_THAT(run.output, HasSubstr(without(mistake.quote, '`'))) << mistake.page << ": " << mistake.from;
    }
}

TEST(DocumentMistakes, EveryQuoteOfCheckIsTried) {
    static const std::regex QUOTE(R"re(`check`[^|"]*"([^"]+)")re");
    std::size_t quotes = 0;
    for (const std::string& page : documents::pages()) {
        const std::string text = readme::text(page);
        const std::size_t mistakes = text.find("\n## First mistakes\n");
        const std::string table = mistakes == std::string::npos ? std::string() : text.substr(mistakes);
        for (std::sregex_iterator quote(table.begin(), table.end(), QUOTE), end; quote != end; ++quote) {
            const std::string quoted = (*quote)[1].str();
            EXPECT_TRUE(std::any_of(std::begin(MISTAKES), std::end(MISTAKES),
                                    [&](const Mistake& mistake) {
                                        return page == std::string("docs/displays/") + mistake.page &&
                                               quoted == mistake.quote;
                                    }))
                << page << " quotes \"" << quoted << '"';
            ++quotes;
        }
    }
    EXPECT_GE(quotes, 20U);
}

}  // namespace
