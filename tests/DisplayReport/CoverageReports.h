#pragma once

#include "DisplayReport/coverage/CoverageReport.h"

/// A report for the tests of its writers: a channel that lights, one without pixels, one without light.
inline Veltrani::DisplayReport::CoverageReport sampleCoverage() {
    using namespace Veltrani::DisplayReport;
    CoverageReport report;
    report.unit = "m";
    report.screenArea = 8;
    report.areaByCount = {2, 4, 1.5, 0.5};
    ChannelCoverage left;
    left.name = std::string("Left, \"upper\"\nrow");
    left.projectorId = std::string("AB");
    left.width = 1920;
    left.height = 1200;
    left.area = 4;
    left.landed = 0.8;
    left.pitch = {0.001, 0.0025, 3};
    left.isLighting = true;
    ChannelCoverage bare;
    bare.name = std::string("Bare");
    bare.projectorId = std::string("CD");
    bare.area = 4;
    bare.landed = 1;
    bare.isLighting = true;
    bare.fault = std::string("its resolution is not known");
    ChannelCoverage dark;
    dark.name = std::string("Dark");
    dark.projectorId = std::string("EF");
    dark.width = 800;
    dark.height = 600;
    dark.fault = std::string("no screen area");
    report.channels = {left, bare, dark};
    report.overlaps = {{0, 1, 2, 0.25, 0.5}};
    return report;
}
