#include "DisplayReport/check/ScreenCheck.h"

#include "DisplayReport/check/DisplayDescription.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::string TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 0 1\nf 1 2 3\n";
const std::string CLOUD =
    "VERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 4\nHEIGHT 1\nVIEWPOINT 0 0 0 1 0 0 "
    "0\nPOINTS 4\n"
    "DATA ascii\n0 0 0\n1 0 0\n2 0 0\n3 0 0\n";

class ScreenCheckTest : public testing::Test {
protected:
    ~ScreenCheckTest() override { ScreenManager::deleteInstance(); }

    DisplayDescription checked(const std::string& screen, const std::string& targets = "<TargetData type='3D'/>") {
        m_folder.write("display.xml", displays::text(screen, "", targets));
        const auto config = XMLConfigFile::load(m_folder.file("display.xml"));
        DisplayDescription description;
        ScreenCheck::run(*config, description);
        return description;
    }

    static std::string fact(const DisplayDescription& description, const std::string& label) {
        for (const DisplayFact& entry : description.facts) {
            if (entry.label == label) {
                return entry.value;
            }
        }
        return "(none)";
    }

    static std::string mesh(const std::string& elements) {
        return "<Screen shape='Mesh' fileUnit='m'><ImportOrientation up='Z' forward='Y'/>" + elements + "</Screen>";
    }

    TemporaryFolder m_folder;
    LogTrap m_log;
};

TEST_F(ScreenCheckTest, DescribesAFlatScreen) {
    const auto description = checked(displays::FLAT);
    EXPECT_EQ(fact(description, "screen"), "Flat: given by its numbers");
    EXPECT_EQ(fact(description, "size"), "4 x 0 x 2 m (right x forward x up)");
    EXPECT_THAT(description.faults, IsEmpty());
}

TEST_F(ScreenCheckTest, DescribesMeshMeasuredMeshAndCloud) {
    m_folder.write("wall.obj", TRIANGLE);
    m_folder.write("measured.obj", TRIANGLE + "f 1 3 2\n");
    m_folder.write("scan.pcd", CLOUD);
    const auto description =
        checked(mesh("<ContentMesh file='wall.obj'/><MeasuredMesh file='measured.obj'/><ModelCloud file='scan.pcd'/>"));
    EXPECT_THAT(fact(description, "screen"), HasSubstr("wall.obj): 1 triangle without texture coordinates"));
    EXPECT_EQ(fact(description, "size"), "1 x 0 x 1 m (right x forward x up)");
    EXPECT_THAT(fact(description, "measured"), HasSubstr("measured.obj: 2 triangles without texture coordinates"));
    EXPECT_THAT(fact(description, "cloud"), HasSubstr("scan.pcd: 4 points, 3 x 0 x 0 m (right x forward x up)"));
    EXPECT_THAT(description.faults, IsEmpty());
}

TEST_F(ScreenCheckTest, EveryFaultIsToldWithItsCause) {
    m_folder.write("wall.obj", "v 0 0 0\nv 1 0 0\nv 0 0 oops\nf 1 2 3\n");
    m_folder.write("measured.obj", "v 0 0 0\nf 1 2 3\n");
    m_folder.write("scan.pcd", "");
    const auto description =
        checked(mesh("<ContentMesh file='wall.obj'/><MeasuredMesh file='measured.obj'/><ModelCloud file='scan.pcd'/>"));
    ASSERT_THAT(description.faults, SizeIs(3));
    EXPECT_EQ(description.faults[0].where, "content mesh");
    EXPECT_THAT(description.faults[0].what, HasSubstr("line 3"));
    EXPECT_EQ(description.faults[1].where, "measured mesh");
    EXPECT_THAT(description.faults[1].what, HasSubstr("Unable to load measured screen file."));
    EXPECT_THAT(description.faults[1].causes, Contains(HasSubstr("line 2")));
    EXPECT_EQ(description.faults[2].where, "model cloud");
    EXPECT_THAT(description.faults[2].what, HasSubstr("Unable to load Point Cloud Data file!"));
    EXPECT_THAT(description.faults[2].causes, Contains(HasSubstr("empty")));
    EXPECT_THAT(fact(description, "measured"), HasSubstr("not loaded"));
    EXPECT_THAT(fact(description, "cloud"), HasSubstr("not loaded"));
}

TEST_F(ScreenCheckTest, CausesThatTheLibraryFoldsIntoOneTextAreToldApart) {
    const auto causes = [this](const std::string& file) {
        const auto description = checked(mesh("<ContentMesh file='" + file + "'/>"));
        EXPECT_THAT(description.faults, SizeIs(1)) << file;
        return description.faults.empty() ? std::vector<std::string>() : description.faults[0].causes;
    };
    m_folder.write("WALL.OBJ", TRIANGLE);
    m_folder.write("points.obj", "v 0 0 0\np 1\n");
    m_folder.write("line.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n");
    m_folder.makeFolder("folder.obj");
    EXPECT_THAT(causes("missing.obj"), Contains(HasSubstr("No such file")));
    EXPECT_THAT(causes("folder.obj"), Contains(HasSubstr("directory")));
    EXPECT_THAT(causes("WALL.OBJ"), Contains(HasSubstr("does not end in \".obj\"")));
    EXPECT_THAT(causes("points.obj"), Contains(HasSubstr("no faces")));
    EXPECT_THAT(causes("line.obj"), Contains(HasSubstr("area")));
}

TEST_F(ScreenCheckTest, AMeshWithoutTextureCoordinatesIsAFaultOfAPlanarDisplay) {
    m_folder.write("wall.obj", TRIANGLE);
    const std::string screen = mesh("<ContentMesh file='wall.obj'/>");
    const auto description = checked(screen, "<TargetData type='PlanarBasic'/>");
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_EQ(description.faults[0].where, "screen");
    EXPECT_THAT(description.faults[0].what, HasSubstr("export it with a texture coordinate at every corner"));
    EXPECT_THAT(checked(screen, "<TargetData type='Spherical'/>").faults, IsEmpty());
}

TEST_F(ScreenCheckTest, AMeshScreenWithoutAFileIsAFault) {
    const auto description = checked(mesh(""));
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_EQ(description.faults[0].where, "content mesh");
    EXPECT_EQ(fact(description, "screen"), "Mesh (no file: a unit square stands in): given by its numbers");
}

TEST_F(ScreenCheckTest, FurtherContentMeshesAreToldAsUnused) {
    m_folder.write("wall.obj", TRIANGLE);
    const auto description =
        checked(mesh("<ContentMesh file='wall.obj'/><ContentMesh file='gone.obj'/>"), "<TargetData type='Spherical'/>");
    EXPECT_THAT(fact(description, "not used"), HasSubstr("gone.obj: a screen has one content mesh"));
}

TEST_F(ScreenCheckTest, AConfigurationWithoutAScreenIsAFault) {
    const auto description = checked("");
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_EQ(description.faults[0].where, "screen");
}

}  // namespace
