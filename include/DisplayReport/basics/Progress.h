#pragma once

#include <cstddef>
#include <functional>

namespace Veltrani::DisplayReport {

/// Receives how far a long piece of work is: so many of `total` equal pieces are done. It is called on the thread that
/// does the work, and what it throws ends the work.
using Progress = std::function<void(std::size_t done, std::size_t total)>;

}  // namespace Veltrani::DisplayReport
