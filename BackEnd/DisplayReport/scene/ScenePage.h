#pragma once

#include <iosfwd>

namespace Veltrani::DisplayReport {

struct DisplayScene;

/// Writes a scene as one HTML page that shows it in three dimensions: it opens from a disk and contacts no network.
///
/// Names can hold anything: they reach the page as data, and its policy runs no script but its own.
class ScenePage {
public:
    ScenePage() = delete;

    static void write(const DisplayScene& scene, std::ostream& out);
};

}  // namespace Veltrani::DisplayReport
