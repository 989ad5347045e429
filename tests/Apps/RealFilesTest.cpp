// Real meshes and scans from outside the project; skipped unless their folder is named when configuring
// (SM_EXTRA_DATA).
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using testing::HasSubstr;

const std::string DATA = extraData();

class RealFiles : public testing::Test {
protected:
    void SetUp() override {
        if (DATA.empty()) {
            GTEST_SKIP() << "SM_EXTRA_DATA is not set";
        }
    }

    /// A display of two channels on these files.
    std::string display(const std::string& mesh, const std::string& cloud) const {
        return m_folder.write(
            "display.xml",
            "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' fileUnit='m'><ContentMesh "
            "file='" +
                DATA + "/" + mesh + "'/><ModelCloud file='" + DATA + "/" + cloud +
                "'/><ImportOrientation up='Y' forward='Z'/></Screen><TargetData type='PlanarBasic'/><Projectors>"
                "<Projector id='A'><Resolution width='1920' height='1200'/><ScreenArea left='0' right='0.5' bottom='0' "
                "top='1'/>"
                "<Layout xMin='0' xMax='1' yMin='0' yMax='1'/></Projector>"
                "<Projector id='B'><Resolution width='1920' height='1200'/><ScreenArea left='0.5' right='1' bottom='0' "
                "top='1'/>"
                "<Layout xMin='1' xMax='2' yMin='0' yMax='1'/></Projector>"
                "</Projectors></Display>");
    }

    TemporaryFolder m_folder;
};

TEST_F(RealFiles, AMeshWithTextureCoordinatesGivesTargets) {
    const std::string file = display("spot.obj", "room_scan1.pcd");
    const ProgramRun run = runScreenManager({"targets", file});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    // Its texture islands do not cover the whole square: of 448 targets some miss.
    EXPECT_GT(std::count(run.output.begin(), run.output.end(), '\n'), 200);
    const ProgramRun check = runScreenManager({"check", file});
    EXPECT_EQ(check.exitCode, 0) << check.output;
    EXPECT_THAT(check.output, HasSubstr("5856 triangles with texture coordinates"));
    EXPECT_THAT(check.output, HasSubstr("112586 points"));
}

TEST_F(RealFiles, AMeshWithoutThemEndsInTwoWarningsPerChannelAndNoTargets) {
    const ProgramRun run = runScreenManager({"targets", display("stanford-bunny.obj", "bun0.pcd")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(tableOf(run.output), "channel,projector,kind,column,row,u,v,x,y,z\n");
    const std::string grid =
        "warning: Attempt to call ScreenManager::getScreenMatrix() with no parameterization in "
        "projectOnTargetLocationSurface\n";
    const std::string boundary =
        "warning: Attempt to call ScreenGeometry::mapInto3D() with no parameterization in "
        "projectBoundaryOnTargetLocationSurface\n";
    EXPECT_THAT(run.errors, testing::StartsWith(grid + boundary + grid + boundary));
}

TEST_F(RealFiles, EveryScanLoadsAsAModelCloud) {
    for (const auto& [cloud, points] : {std::pair<const char*, const char*>{"bun0.pcd", "397 points"},
                                        {"milk_color.pcd", "13704 points"},
                                        {"room_scan1.pcd", "112586 points"}}) {
        const ProgramRun run = runScreenManager({"check", display("spot.obj", cloud)});
        EXPECT_EQ(run.exitCode, 0) << run.output;
        EXPECT_THAT(run.output, HasSubstr(points));
    }
}

TEST_F(RealFiles, OddMeshesAreReadOrRefusedWithTheirLine) {
    for (const auto& [mesh, expected] : {std::pair<const char*, const char*>{"cube-vertexcol.obj", "12 triangles"},
                                         {"leading-decimal-dot-issue-201.obj", "1 triangle"},
                                         {"issue-161-inconsistent-f.obj", "12 triangles without texture coordinates"},
                                         {"invalid-face-definition.obj", "line 15"},
                                         {"invalid-relative-texture-index.obj", "line 2"},
                                         {"invalid-relative-vertex-index.obj", "line 1"},
                                         {"issue-140-zero-face-idx.obj", "line 16"},
                                         {"line-prim.obj", "because: "},
                                         {"points-prim.obj", "because: "}}) {
        const ProgramRun run = runScreenManager({"check", display("odd-obj/" + std::string(mesh), "bun0.pcd")});
        EXPECT_THAT(run.output, HasSubstr(expected)) << mesh << run.output;
    }
}

}  // namespace
