#include "FitSession/MeasuredColumns.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/TableReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using Veltrani::DisplayReport::TableReader;
using Veltrani::FitSession::MeasuredColumns;

/// A table whose header is its current line.
struct HeaderOf {
    explicit HeaderOf(const std::string& text) : in(text) { EXPECT_TRUE(table.readHead()); }

    std::istringstream in;
    TableReader table{in, "points.csv", {"row", "write a row"}};
};

std::string refusalOfHeader(const std::string& header) {
    HeaderOf of(header);
    try {
        static_cast<void>(MeasuredColumns(of.table));
    } catch (const VeltraniParseException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "";
}

std::string refusalOfRow(const std::string& row) {
    HeaderOf of("channel,u,v,x,y,z\n" + row + "\n");
    const MeasuredColumns columns(of.table);
    EXPECT_TRUE(of.table.next());
    try {
        columns.refuseRow(of.table);
    } catch (const VeltraniParseException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
}

TEST(MeasuredColumns, AreFoundWhereverTheyStand) {
    HeaderOf of("note,Z,czz,cyz,cyy,cxz,cxy,cxx,Y,X,z,y,x,py,px,suv,mapped,SET,projector,Channel,,more\n");
    const MeasuredColumns columns(of.table);
    EXPECT_EQ(columns.count(), 22U);
    ASSERT_TRUE(columns.known && columns.point && columns.pixels && columns.covariance && columns.pictureDeviation &&
                columns.mapped && columns.set && columns.projector && columns.channel);
    EXPECT_THAT(*columns.known, ElementsAre(9, 8, 1));
    EXPECT_THAT(*columns.covariance, ElementsAre(7, 6, 5, 4, 3, 2));
    EXPECT_THAT(*columns.point, ElementsAre(12, 11, 10));
    EXPECT_THAT(*columns.pixels, ElementsAre(14, 13));
    EXPECT_THAT(*columns.pictureDeviation, ElementsAre(15));
    EXPECT_THAT(*columns.mapped, ElementsAre(16));
    EXPECT_THAT(*columns.set, ElementsAre(17));
    EXPECT_THAT(*columns.projector, ElementsAre(18));
    EXPECT_THAT(*columns.channel, ElementsAre(19));
    EXPECT_FALSE(columns.normalised || columns.deviations);
    EXPECT_THAT(columns.ignored(), ElementsAre("note", "more"));
    EXPECT_EQ(columns.describe(7), "column 8, cxx");
    EXPECT_EQ(columns.describe(1), "column 2, Z");
}

TEST(MeasuredColumns, WhatIsMissingOfAGroupIsNamed) {
    EXPECT_THAT(refusalOfHeader("channel,u,v,y\n"),
                EndsWith("expected all of the columns x,y,z or none of them; add x, z, or name that column so"));
    EXPECT_THAT(refusalOfHeader("u,v,x,y,z,cxx,czz\n"), EndsWith("; add cxy, cxz, cyy, cyz, or name that column so"));
    EXPECT_THAT(refusalOfHeader("u,x,y,z\n"), HasSubstr("all of the columns u,v or none of them; add v, or name"));
    EXPECT_THAT(refusalOfHeader("u,v,x,y,z,Z\n"), HasSubstr("all of the columns X,Y,Z or none of them; add X, Y, or"));
    EXPECT_THAT(refusalOfHeader("u,v,x,y,z,set,Set\n"),
                HasSubstr("expected the column set once; rename or remove the other one"));
}

TEST(MeasuredColumns, WhatExcludesOrNeedsEachOtherIsChecked) {
    EXPECT_EQ(refusalOfHeader("u,v,x,y,z\n"), "");
    EXPECT_EQ(refusalOfHeader("px,py,x,y,z,suv\n"), "");
    EXPECT_EQ(refusalOfHeader("u,v,x,y,z,suv,sx,sy,sz\n"), "");
    EXPECT_EQ(refusalOfHeader("x,y,z,X,Y,Z\n"), "") << "control points alone";
    EXPECT_EQ(refusalOfHeader("x,y,z,X,Y,Z,cxx,cxy,cxz,cyy,cyz,czz\n"), "");
    EXPECT_THAT(refusalOfHeader("x,y,z\n"),
                HasSubstr("expected the columns u,v or px,py of the places in the picture"));
    EXPECT_THAT(refusalOfHeader("u,v,X,Y,Z\n"), HasSubstr("; write x,y,z small"));
    EXPECT_THAT(refusalOfHeader("u,v\n"), HasSubstr("; name the columns in the first line, such as channel,u,v,x,y,z"));
    EXPECT_THAT(refusalOfHeader("x,y,z,X,Y,Z,suv\n"), HasSubstr("add the places in the picture, or remove suv"));
    EXPECT_THAT(refusalOfHeader("name\n"), HasSubstr("; name the columns in the first line")) << "no other separators";
    EXPECT_THAT(refusalOfHeader("u;v;x;y;z,note\n"), HasSubstr("; name the columns in the first line"));
}

TEST(MeasuredColumns, ARowOfAnotherNumberOfCellsIsRefusedWithItsCause) {
    const std::string expected = "expected 6 columns, as the header names them; ";
    EXPECT_THAT(refusalOfRow("A,0,0,1,2"), EndsWith(expected + MeasuredColumns::EXAMPLE));
    EXPECT_THAT(refusalOfRow("A;0;0;1;2;3"),
                EndsWith(expected + "write commas between the columns, and decimal points"));
    EXPECT_THAT(refusalOfRow("A;0,0"), EndsWith(expected + MeasuredColumns::EXAMPLE)) << "two cells";
    EXPECT_THAT(refusalOfRow("A"), EndsWith(expected + MeasuredColumns::EXAMPLE)) << "no other separators";
    EXPECT_THAT(refusalOfRow("A,0,5,0,5,1,2"), EndsWith(expected + "write decimal points: commas part the columns"));
    EXPECT_THAT(refusalOfRow("  # A,0,0"), EndsWith(expected + "remove the line: remarks stand above the header"));
    EXPECT_THAT(refusalOfRow("A,0 # 1"), EndsWith(expected + MeasuredColumns::EXAMPLE));
    EXPECT_THAT(refusalOfRow("\"A,0,0,1,2,3"), EndsWith(expected + MeasuredColumns::EXAMPLE)) << "an open quote";
}

}  // namespace
