#include "PlanOptions.h"

#include "ColumnsByRows.h"

#include <string>

namespace {

using Veltrani::DisplayReport::TargetPlan;

/// Bounds that keep a slip of the keyboard from filling the memory.
constexpr int MOST_GRID_LINES = 10000;
constexpr long long MOST_GRID_TARGETS = 4'000'000;
constexpr int MOST_BOUNDARY_SAMPLES = 100000;

/// Reads "COLUMNSxROWS"; throws the error of CLI11 for anything else.
void readGrid(const std::string& text, TargetPlan& plan) {
    const auto grid = ColumnsByRows::parse(text);
    if (!grid || !grid->isWithin(1, MOST_GRID_LINES, MOST_GRID_TARGETS)) {
        throw CLI::ValidationError("--grid", "\"" + text + "\" is not COLUMNSxROWS, such as 16x10, with 1 to " +
                                                 std::to_string(MOST_GRID_LINES) + " each and at most " +
                                                 std::to_string(MOST_GRID_TARGETS) + " targets");
    }
    plan.columns = grid->columns;
    plan.rows = grid->rows;
}

}  // namespace

void addPlanOptions(CLI::App& command, TargetPlan& plan) {
    command
        .add_option_function<std::string>(
            "--grid", [&plan](const std::string& text) { readGrid(text, plan); }, "Targets per channel (default 16x10)")
        ->type_name("COLUMNSxROWS");
    command.add_option("--boundary", plan.boundarySamples, "Samples per edge of the outline (default 16)")
        ->check(CLI::Range(0, MOST_BOUNDARY_SAMPLES))
        ->type_name("N");
}
