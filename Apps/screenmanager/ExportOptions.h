#pragma once

#include "BlendOptions.h"
#include "Command.h"
#include "ExportFiles/ViewExport.h"
#include "InputOptions.h"

#include <string>
#include <vector>

/// What the command line of `export` states.
struct ExportOptions : CommandOptions {
    std::string file;                         ///< the configuration
    std::string output;                       ///< folder
    bool force = false;                       ///< whether an earlier export is replaced
    int jobs = 0;                             ///< processes at the same time; 0: as many as there are cores
    std::vector<std::string> channels;        ///< names or ids; empty: all
    std::vector<std::string> eyes;            ///< "x,y,z"; empty: that of each channel
    std::vector<Point<double, 3>> eyePoints;  ///< the same as points; filled when the line is complete
    std::string content;                      ///< PNG file; empty: none
    std::vector<std::string> formats;         ///< names; empty: the first
    std::vector<std::string> ofMatrices;      ///< the options that were stated of what matrices are made for
    InputOptions input;
    BlendOptions blend;
    Veltrani::ExportFiles::ExportRequest request;
};

/// Adds every option of the command, with the checks that need no display.
void addExportOptions(OptionList& line, ExportOptions& options);
