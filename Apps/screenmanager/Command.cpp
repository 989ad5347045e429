#include "Command.h"

#include "ColumnsByRows.h"

namespace {

/// Bounds that keep a slip of the keyboard from filling the memory.
constexpr int MOST_GRID_LINES = 10000;
constexpr long long MOST_GRID_TARGETS = 4'000'000;
constexpr int MOST_BOUNDARY_SAMPLES = 100000;

}  // namespace

void addDisplayFile(OptionList& line, std::string& file) {
    line.add("FILE", file, "Configuration of the display (XML)").required();
}

void addOutput(OptionList& line, std::string& output, const char* help) {
    line.add("-o,--output", output, help).typeName("FILE");
}

void addPlan(OptionList& line, Veltrani::DisplayReport::TargetPlan& plan) {
    addGridOption(line,
                  {.name = "--grid",
                   .help = "Targets per channel (default 16x10)",
                   .example = "16x10",
                   .things = "targets",
                   .fewest = 1,
                   .most = MOST_GRID_LINES,
                   .mostTogether = MOST_GRID_TARGETS},
                  [&plan](const ColumnsByRows& grid) {
                      plan.columns = grid.columns;
                      plan.rows = grid.rows;
                  });
    line.add("--boundary", plan.boundarySamples, "Samples per edge of the outline (default 16)")
        .between(0, MOST_BOUNDARY_SAMPLES)
        .typeName("N");
}
