#include "ExportFiles/ViewExport.h"

#include "support/Displays.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::ExportFiles::ExportView;

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
}

}  // namespace
