// The triangles of an OBJ as a reader of somebody else finds them.
#include "ExportFiles/ObjWarp.h"

#include "ExportedDisplays.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <vtkDataArray.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkOBJReader.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

namespace {

using namespace Veltrani::ExportFiles;
using namespace exported_displays;
using Veltrani::DisplayExport::ChannelWarp;
using Veltrani::DisplayExport::InputKind;
using Veltrani::DisplayExport::Seam;

std::string objOf(const ChannelWarp& warp, const ContentStrip& strip) {
    std::ostringstream out;
    writeObj(warp, strip, out);
    return out.str();
}

/// A triangle with x, y of its corners, and their u, v.
using Corners = std::array<std::array<double, 4>, 3>;

std::vector<Corners> readByVtk(const std::string& text) {
    const TemporaryFolder folder;
    vtkNew<vtkOBJReader> reader;
    reader->SetFileName(folder.write("warp.obj", text).c_str());
    reader->Update();
    vtkPolyData* const mesh = reader->GetOutput();
    vtkDataArray* const inputs = mesh->GetPointData()->GetTCoords();
    std::vector<Corners> triangles;
    for (vtkIdType cell = 0; inputs != nullptr && cell < mesh->GetNumberOfCells(); ++cell) {
        vtkNew<vtkIdList> points;
        mesh->GetCellPoints(cell, points);
        EXPECT_EQ(points->GetNumberOfIds(), 3);
        Corners corners{};
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const vtkIdType point = points->GetId(static_cast<vtkIdType>(i));
            const double* const place = mesh->GetPoint(point);
            EXPECT_EQ(place[2], 0);
            corners[i] = {place[0], place[1], inputs->GetComponent(point, 0), inputs->GetComponent(point, 1)};
        }
        triangles.push_back(corners);
    }
    return triangles;
}

double areaOf(const Corners& t) {
    return ((t[1][0] - t[0][0]) * (t[2][1] - t[0][1]) - (t[1][1] - t[0][1]) * (t[2][0] - t[0][0])) / 2;
}

double sumOf(const std::vector<Corners>& triangles) {
    double sum = 0;
    for (const Corners& triangle : triangles) {
        EXPECT_GT(areaOf(triangle), -1e-9) << "counter-clockwise";
        sum += areaOf(triangle);
    }
    return sum;
}

TEST(ObjWarp, VtkFindsThePlaceOfEachCornerOnTheLayout) {
    const ExportedChannel wall(WALL);
    const auto triangles = readByVtk(objOf(wall.warp(InputKind::LAYOUT, nodes(4, 3)), {}));
    ASSERT_EQ(triangles.size(), 12U);
    EXPECT_NEAR(sumOf(triangles), 2 * 2 * 2, 1e-6) << "x from -2 to 2, y from -1 to 1";
    for (const Corners& triangle : triangles) {
        for (const auto& [x, y, u, v] : triangle) {
            // The picture is the whole of the layout, whose only rectangle is its own.
            EXPECT_NEAR(u, (x / 2 + 1) / 2, 1e-6);
            EXPECT_NEAR(v, (y + 1) / 2, 1e-6);
        }
    }
}

TEST(ObjWarp, IsTheSameInEveryLocale) {
    const ExportedChannel wall(WALL);
    const auto warp = wall.warp(InputKind::LAYOUT, nodes(2, 2));
    const std::string expected =
        "# x, y: place in the picture of the channel; vt: place in its input, (0, 0) bottom left\n"
        "v -2 -1 0\nvt 0 0\nv 2 -1 0\nvt 1 0\nv -2 1 0\nvt 0 1\nv 2 1 0\nvt 1 1\nf 1/1 2/2 4/4\nf 1/1 4/4 3/3\n";
    EXPECT_EQ(objOf(warp, {}), expected);
    const ForeignLocale german;
    EXPECT_EQ(objOf(warp, {}), expected);
}

/// The range of u in which the triangles lie.
std::array<double, 2> rangeOf(const std::vector<Corners>& triangles) {
    std::array<double, 2> range{1e9, -1e9};
    for (const Corners& triangle : triangles) {
        for (const auto& corner : triangle) {
            range = {std::min(range[0], corner[2]), std::max(range[1], corner[2])};
        }
    }
    return range;
}

TEST(ObjWarp, AcrossTheSeamATriangleGoesOnOrIsCut) {
    const ExportedChannel behind(BEHIND);
    const ContentStrip strip{1, true};
    auto request = nodes(8, 5);
    const auto whole = readByVtk(objOf(behind.warp(InputKind::EQUIRECTANGULAR, request), strip));
    request.seam = Seam::CUT;
    const auto cut = readByVtk(objOf(behind.warp(InputKind::EQUIRECTANGULAR, request), strip));
    EXPECT_NEAR(sumOf(whole), 8, 1e-6);
    EXPECT_NEAR(sumOf(cut), 8, 1e-6);
    EXPECT_GT(cut.size(), whole.size());
    const auto [left, right] = rangeOf(whole);
    EXPECT_TRUE(left < 0 || right > 1) << "it goes on past an edge: " << left << " to " << right;
    // 80 degrees of 360, as the tangents of the frustum have them.
    EXPECT_NEAR(right - left, 80.0 / 360, 1e-6);
    const auto [first, last] = rangeOf(cut);
    EXPECT_NEAR(first, 0, 1e-9);
    EXPECT_NEAR(last, 1, 1e-9);
    for (const Corners& triangle : cut) {
        const auto [least, most] = std::minmax({triangle[0][2], triangle[1][2], triangle[2][2]});
        EXPECT_LT(most - least, 0.1) << "none shows the whole panorama";
    }
}

/// A sphere whose channel looks straight up: its picture shows a pole, around which no neighbours fit on all sides.
const std::string ABOVE =
    "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'>"
    "<Centre x='0' y='0' z='0'/><Radius value='4'/></Screen><TargetData type='Spherical'/><Projectors>"
    "<Projector id='P1'><Name>Top</Name><Resolution width='40' height='20'/><Orientation z='7' x='85' y='0'/>"
    "<Frustum left='-50' right='50' bottom='-40' top='40'/></Projector></Projectors></Display>";

TEST(ObjWarp, AroundAPoleANodeHasAPlaceForEachOfItsSides) {
    const ExportedChannel above(ABOVE);
    const auto triangles = readByVtk(objOf(above.warp(InputKind::EQUIRECTANGULAR, nodes(14, 9)), {1, true}));
    EXPECT_NEAR(sumOf(triangles), 8, 1e-3) << "all but the pole";
    int beyond = 0;
    for (const Corners& triangle : triangles) {
        const auto [least, most] = std::minmax({triangle[0][2], triangle[1][2], triangle[2][2]});
        EXPECT_LE(most - least, 0.5 + 1e-9) << "none shows the panorama the long way round";
        beyond += least < 0 || most > 1 ? 1 : 0;
    }
    EXPECT_GT(beyond, 0);
}

TEST(ObjWarp, TheFacesOfACubeLieBesideEachOther) {
    const ExportedChannel behind(BEHIND);
    const auto triangles = readByVtk(objOf(behind.warp(InputKind::CUBE, nodes(8, 5)), {6, false}));
    EXPECT_NEAR(sumOf(triangles), 8, 1e-6);
    for (const Corners& triangle : triangles) {
        for (const auto& corner : triangle) {
            EXPECT_GE(corner[2], 3.0 / 6 - 1e-9) << "the back face is the fourth of six";
            EXPECT_LE(corner[2], 4.0 / 6 + 1e-9);
        }
    }
}

}  // namespace
